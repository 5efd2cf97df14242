// The module loaded as a host loads it: through the dynamic linker (dlopen)
// and its entry point, with drawings open before and after.
#include <gtest/gtest.h>

#include <algorithm>

#include "host/db/operations.h"
#include "host/ed/command_line.h"
#include "host/ed/command_stack.h"
#include "host/ed/document.h"
#include "host/ed/editor.h"
#include "host/ed/host_commands.h"
#include "host/ed/messages.h"
#include "host/ed/rx_app.h"
#include "host/ed/services.h"

namespace {

using host::ed::commandLine;
using host::ed::TextInput;

struct CommandLog : AcEditorReactor {
  std::vector<std::string> started;
  void commandWillStart(const char* n) override { started.push_back(n); }
  long cleanUps() const { return std::count(started.begin(), started.end(), "DELCONSTRAINT"); }
};

// A drawing with a block of two lines inserted once, a generic object of
// each kind the constraint clean-up removes (one tied to a line), and one
// it keeps.
struct Drawing {
  AcApDocument* doc = nullptr;
  AcDbObjectId ref, line, group, dependency, network;
};

AcDbObjectId addGeneric(AcDbDatabase* db, const char* kind, const char* key) {
  AcDbDictionary* nod = nullptr;
  db->getNamedObjectsDictionary(nod, AcDb::kForWrite);
  AcDbObjectId id;
  auto* obj = new AcDbGenericObject(kind);
  nod->setAt(key, obj, id);
  obj->close();
  nod->close();
  return id;
}

Drawing openDrawing(const std::string& name) {
  Drawing d;
  d.doc = acDocManager->openDocument(std::make_unique<AcDbDatabase>(), name);
  AcDbDatabase* db = d.doc->database();
  AcDbObjectId block;
  {
    AcDbBlockTable* table = nullptr;
    db->getBlockTable(table, AcDb::kForWrite);
    auto* rec = new AcDbBlockTableRecord;
    rec->setName("B");
    table->add(block, rec);
    rec->close();
    table->close();
  }
  AcDbObjectId piece;
  host::appendEntity(db, new AcDbLine({0, 0, 0}, {5, 0, 0}), piece, block);
  host::appendEntity(db, new AcDbLine({5, 0, 0}, {5, 5, 0}), piece, block);
  host::appendEntity(db, new AcDbBlockReference({10, 10, 0}, block), d.ref);
  d.group = addGeneric(db, "ACDBASSOC2DCONSTRAINTGROUP", "G");
  d.dependency = addGeneric(db, "ACDBASSOCGEOMDEPENDENCY", "D");
  d.network = addGeneric(db, "ACDBASSOCNETWORK", "N");
  auto* line = new AcDbLine({0, 20, 0}, {5, 20, 0});
  host::appendEntity(db, line, d.line);
  AcDbObjectPointer<AcDbLine> tied(d.line, AcDb::kForWrite);
  tied->extras().persistentReactors.append(d.dependency);
  return d;
}

class ModuleTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    // A drawing open before the module loads.
    s_before = openDrawing("before.dxf");
    std::string error;
    ASSERT_TRUE(acrxDynamicLinker->loadModule(ENVLINE_MODULE_PATH, error)) << error;
  }
  void TearDown() override {
    commandLine().setInput(nullptr);
    host::ed::takeMessages();
  }
  static Drawing s_before;
};
Drawing ModuleTest::s_before;

TEST_F(ModuleTest, EntryPointRegistersTheCommandsInOrderAndUnlocksTheModule) {
  std::vector<std::string> names;
  for (const AcEdCommand* c : acedRegCmds->commandsOfGroup("VKEncircleLine")) {
    names.push_back(c->globalName());
    EXPECT_STREQ(c->globalName(), c->localName());
    EXPECT_EQ(c->commandFlags(), ACRX_CMD_MODAL);
    EXPECT_EQ(c->functionCode(), -1);
  }
  EXPECT_EQ(names, (std::vector<std::string>{"VkTestToolDesign", "VKTOOLDESIGNProfileAuto3D",
                                             "VKTOOLDESIGNProfilesAuto3D"}));
  EXPECT_TRUE(acrxDynamicLinker->isAppMDIAware(ENVLINE_MODULE_PATH));
  EXPECT_FALSE(acrxDynamicLinker->isApplicationLocked(ENVLINE_MODULE_PATH));
  // Loading again keeps the one copy; unloading removes nothing.
  std::string error;
  EXPECT_TRUE(acrxDynamicLinker->loadModule(ENVLINE_MODULE_PATH, error));
  EXPECT_EQ(acedRegCmds->commandsOfGroup("VKEncircleLine").size(), 3u);
  EXPECT_TRUE(acrxDynamicLinker->unloadModule(ENVLINE_MODULE_PATH));
  EXPECT_EQ(acedRegCmds->commandsOfGroup("VKEncircleLine").size(), 3u);
  EXPECT_EQ(commandLine().runCommand("vktesttooldesign"), host::ed::CommandResult::kOk);
}

TEST_F(ModuleTest, EachDialogCommandKeepsOneWindowRecentredUntilItIsDestroyed) {
  auto& dialogs = host::ed::headlessDialogService();
  for (const int resource : {186, 188}) {
    const char* command = resource == 186 ? "VKTOOLDESIGNProfileAuto3D" : "VKTOOLDESIGNProfilesAuto3D";
    const std::size_t before = dialogs.windows().size();
    commandLine().runCommand(command);
    commandLine().runCommand(command);
    ASSERT_EQ(dialogs.windows().size(), before + 1) << command;
    auto window = dialogs.liveWindow(resource);
    ASSERT_TRUE(window);
    EXPECT_EQ(window->centred, 2);
    EXPECT_TRUE(window->visible);
    window->visible = false;  // the user hides it; the command shows it again
    commandLine().runCommand(command);
    EXPECT_TRUE(window->visible);
    EXPECT_EQ(window->centred, 3);
    // Closed by the user: the next command makes a fresh dialog.
    window->window->destroy();
    EXPECT_FALSE(dialogs.liveWindow(resource));
    commandLine().runCommand(command);
    EXPECT_EQ(dialogs.windows().size(), before + 2);
    EXPECT_TRUE(dialogs.liveWindow(resource)->visible);
  }
}

// EXPLODE through the command line: the first modification of the working
// drawing afterwards runs the constraint clean-up, once.
TEST_F(ModuleTest, ExplodeRunsTheConstraintCleanUpOnceInTheWorkingDrawing) {
  CommandLog log;
  acedEditor->addReactor(&log);
  acDocManager->activateDocument(s_before.doc);
  TextInput script({"EXPLODE", "H " + s_before.ref.handle().toHex(), "", "ERASE", "W 9,9 16,16", ""});
  commandLine().setInput(&script);
  EXPECT_TRUE(commandLine().runInput());
  EXPECT_EQ(log.started, (std::vector<std::string>{"EXPLODE", "DELCONSTRAINT", "ERASE"}));
  EXPECT_TRUE(s_before.ref.isErased());
  EXPECT_TRUE(s_before.group.isErased());
  EXPECT_TRUE(s_before.dependency.isErased());
  EXPECT_FALSE(s_before.network.isErased());
  AcDbObjectPointer<AcDbLine> line(s_before.line, AcDb::kForRead);
  EXPECT_TRUE(line->extrasIfAny()->persistentReactors.isEmpty());
  acedEditor->removeReactor(&log);
}

TEST_F(ModuleTest, OnlyTheExactNameArmsTheCleanUpAndOnlyTheWorkingDrawingFiresIt) {
  CommandLog log;
  acedEditor->addReactor(&log);
  acDocManager->activateDocument(s_before.doc);
  AcDbObjectId id;
  for (const char* name : {"explode", "_EXPLODE", ".EXPLODE", "EXPLODE "}) {
    acedEditor->notifyCommandWillStart(name);
    host::appendEntity(s_before.doc->database(), new AcDbLine({0, 0, 0}, {1, 1, 0}), id);
    commandLine().runQueued();
  }
  EXPECT_EQ(log.cleanUps(), 0);

  // Armed, then a change in a drawing that is not the working one: nothing;
  // the next change in the working drawing fires it.
  Drawing other = openDrawing("other.dxf");  // now current
  acedEditor->notifyCommandWillStart("EXPLODE");
  host::appendEntity(s_before.doc->database(), new AcDbLine({0, 0, 0}, {2, 2, 0}), id);
  commandLine().runQueued();
  EXPECT_EQ(log.cleanUps(), 0);
  acDocManager->activateDocument(s_before.doc);
  host::appendEntity(s_before.doc->database(), new AcDbLine({0, 0, 0}, {3, 3, 0}), id);
  host::appendEntity(s_before.doc->database(), new AcDbLine({0, 0, 0}, {4, 4, 0}), id);
  commandLine().runQueued();
  EXPECT_EQ(log.cleanUps(), 1);
  acDocManager->closeDocument(other.doc);
  acedEditor->removeReactor(&log);
}

}  // namespace
