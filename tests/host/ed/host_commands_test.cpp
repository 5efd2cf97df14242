// The host's commands run from a script: open, explode, erase, layers, zoom,
// save under a new name, close; the saved file read back.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/ed/command_line.h"
#include "host/ed/document.h"
#include "host/ed/editor.h"
#include "host/ed/editor_input.h"
#include "host/ed/messages.h"

namespace {

using host::ed::commandLine;
using host::ed::TextInput;

struct Saves : AcEditorReactor {
  std::vector<std::string> events;
  void beginSave(AcDbDatabase*, const char* f) override { events.push_back(std::string("begin ") + f); }
  void saveComplete(AcDbDatabase*, const char* f) override { events.push_back(std::string("done ") + f); }
};

int countKind(const AcDbDatabase* db, const AcRxClass* cls) {
  int n = 0;
  for (const AcDbObjectId id : host::allEntities(db)) {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    n += e && e->isKindOf(cls);
  }
  return n;
}

TEST(HostCommands, AScriptOpensExplodesSwitchesLayersZoomsAndSavesAsANewFile) {
  const std::string sample = std::string(ENVLINE_SOURCE_DIR) + "/samples/step_drill.dxf";
  const auto dir = std::filesystem::temp_directory_path() / "envline_host_commands";
  std::filesystem::create_directories(dir);
  const std::string out = (dir / "exploded.dxf").string();
  std::filesystem::remove(out);
  Saves saves;
  acedEditor->addReactor(&saves);
  TextInput script({"OPEN", sample, "EXPLODE", "A", "", "LAYER", "OFF", "图框", "", "ZOOM", "W", "0,0", "100,50",
                    "SAVEAS", out, "CLOSE"},
                   "t.scr");
  commandLine().setInput(&script);
  host::ed::takeMessages();
  const bool ok = commandLine().runInput();
  const std::string printed = host::ed::takeMessages();
  EXPECT_TRUE(ok) << printed;
  EXPECT_TRUE(acDocManager->documents().empty());
  EXPECT_EQ(saves.events, (std::vector<std::string>{"begin " + out, "done " + out}));
  acedEditor->removeReactor(&saves);
  commandLine().setInput(nullptr);

  // The sample's frame (a block reference) is gone, its pieces are there, the
  // frame's layer is off; the sample itself is untouched.
  host::dxf::DxfDrawing saved, original;
  host::dxf::Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfFile(out, saved, diag)) << diag.error;
  ASSERT_TRUE(host::dxf::readDxfFile(sample, original, diag)) << diag.error;
  EXPECT_EQ(countKind(saved.database.get(), AcDbBlockReference::desc()), 0);
  EXPECT_GT(countKind(original.database.get(), AcDbBlockReference::desc()), 0);
  EXPECT_GT(host::allEntities(saved.database.get()).length(), host::allEntities(original.database.get()).length());
  AcDbObjectId frameLayer;
  ASSERT_EQ(host::findLayer(saved.database.get(), "图框", frameLayer), Acad::eOk);
  AcDbObjectPointer<AcDbLayerTableRecord> layer(frameLayer, AcDb::kForRead);
  EXPECT_TRUE(layer->isOff());
}

TEST(HostCommands, CloseAsksBeforeDroppingChangesAndEscKeepsTheDrawing) {
  const std::string sample = std::string(ENVLINE_SOURCE_DIR) + "/samples/step_drill.dxf";
  Saves saves;
  acedEditor->addReactor(&saves);
  // Enter and an unknown answer ask again; Esc keeps the drawing; No drops
  // the changes without writing anything.
  TextInput script({"OPEN", sample, "ERASE", "A", "", "CLOSE", "", "maybe", "ESC", "ZOOM", "E", "CLOSE", "n"}, "t.scr");
  commandLine().setInput(&script);
  host::ed::takeMessages();
  commandLine().runInput();
  const std::string printed = host::ed::takeMessages();
  EXPECT_TRUE(acDocManager->documents().empty()) << printed;
  EXPECT_NE(printed.find("Save changes to " + sample + "? [Yes/No]"), std::string::npos) << printed;
  EXPECT_NE(printed.find("Yes or No, please."), std::string::npos) << printed;
  EXPECT_EQ(script.lineNumber(), 13);  // ZOOM ran on the drawing that Esc kept
  EXPECT_TRUE(saves.events.empty());
  acedEditor->removeReactor(&saves);
  commandLine().setInput(nullptr);
}

TEST(HostCommands, FailuresAreReportedAndZoomFollowsTheWindow) {
  acDocManager->openDocument(std::make_unique<AcDbDatabase>(), "z.dxf");
  TextInput script({"ZOOM", "W", "0,0", "100,50", "OPEN", "/nonexistent/x.dxf"}, "t.scr");
  commandLine().setInput(&script);
  host::ed::takeMessages();
  EXPECT_FALSE(commandLine().runInput());
  EXPECT_NE(host::ed::takeMessages().find("/nonexistent/x.dxf"), std::string::npos);
  const AcDbViewTableRecord view = host::ed::currentView(acDocManager->curDocument());
  EXPECT_DOUBLE_EQ(view.centerPoint().x, 50);
  EXPECT_DOUBLE_EQ(view.width(), 100);
  EXPECT_DOUBLE_EQ(view.height(), 50);
  acDocManager->closeDocument(acDocManager->curDocument());
  commandLine().setInput(nullptr);
}

// A line tied to a constraint group through a dependency, the group listed
// by the drawing's association network: DELCONSTRAINT removes group and
// dependency, and the saved drawing names neither (the network's list and
// count lose the group, the line's reactors the dependency).
TEST(HostCommands, DelConstraintLeavesNoReferenceToWhatItRemoved) {
  auto tags = [](std::initializer_list<const char*> items) {
    std::string text;
    for (const char* t : items) text += std::string(t) + "\n";
    return text;
  };
  const std::string dxf =
      tags({"0", "SECTION", "2", "HEADER", "9", "$ACADVER", "1", "AC1015", "9", "$HANDSEED", "5", "F004", "0",
            "ENDSEC", "0", "SECTION", "2", "ENTITIES", "0", "LINE", "5", "2F", "102", "{ACAD_REACTORS", "330",
            "F003", "102", "}", "100", "AcDbEntity", "8", "0", "100", "AcDbLine", "10", "0", "20", "0", "30", "0",
            "11", "10", "21", "0", "31", "0", "0", "ENDSEC", "0", "SECTION", "2", "OBJECTS", "0", "DICTIONARY",
            "5", "C", "330", "0", "100", "AcDbDictionary", "3", "ACAD_ASSOCNETWORK", "350", "F001", "0",
            "ACDBASSOCNETWORK", "5", "F001", "330", "C", "100", "AcDbAssocAction", "90", "2", "90", "0", "330",
            "0", "360", "0", "90", "0", "90", "0", "90", "0", "90", "0", "100", "AcDbAssocNetwork", "90", "0",
            "90", "1", "90", "1", "360", "F002", "90", "0", "0", "ACDBASSOC2DCONSTRAINTGROUP", "5", "F002", "330",
            "F001", "100", "AcDbAssocAction", "90", "2", "90", "0", "330", "F001", "360", "F003", "100",
            "AcDbAssoc2dConstraintGroup", "90", "0", "0", "ACDBASSOCGEOMDEPENDENCY", "5", "F003", "330", "F002",
            "100", "AcDbAssocDependency", "90", "2", "330", "F002", "330", "2F", "0", "ENDSEC", "0", "EOF"});
  const auto dir = std::filesystem::temp_directory_path() / "envline_host_commands";
  std::filesystem::create_directories(dir);
  const std::string in = (dir / "constrained.dxf").string(), out = (dir / "unconstrained.dxf").string();
  std::ofstream(in) << dxf;
  TextInput script({"OPEN", in, "DELCONSTRAINT", "A", "", "SAVEAS", out, "CLOSE"}, "t.scr");
  commandLine().setInput(&script);
  host::ed::takeMessages();
  const bool ok = commandLine().runInput();
  const std::string printed = host::ed::takeMessages();
  commandLine().setInput(nullptr);
  ASSERT_TRUE(ok) << printed;
  EXPECT_NE(printed.find("2 constraint object(s) deleted."), std::string::npos) << printed;
  std::stringstream saved;
  saved << std::ifstream(out).rdbuf();
  const std::string text = saved.str();
  EXPECT_EQ(text.find("F002"), std::string::npos) << text;
  EXPECT_EQ(text.find("F003"), std::string::npos) << text;
  EXPECT_NE(text.find("AcDbAssocNetwork\n 90\n0\n 90\n1\n 90\n0\n 90\n0\n"), std::string::npos) << text;
  host::dxf::DxfDrawing again;
  host::dxf::Diagnostics diag;
  EXPECT_TRUE(host::dxf::readDxfFile(out, again, diag)) << diag.error;
}

}  // namespace
