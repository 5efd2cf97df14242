// The editor: documents and their reactors and locks, the command stack and
// the command line with scripted input.
#include <gtest/gtest.h>

#include <thread>

#include "host/db/operations.h"
#include "host/ed/command_line.h"
#include "host/ed/command_stack.h"
#include "host/ed/document.h"
#include "host/ed/editor.h"
#include "host/ed/editor_input.h"
#include "host/ed/messages.h"
#include "host/ed/services.h"

namespace {

using host::ed::CommandLine;
using host::ed::commandLine;
using host::ed::TextInput;

struct Recorder : AcEditorReactor, AcApDocManagerReactor {
  std::vector<std::string> events;
  void commandWillStart(const char* n) override { events.push_back(std::string("start ") + n); }
  void commandEnded(const char* n) override { events.push_back(std::string("end ") + n); }
  void commandFailed(const char* n) override { events.push_back(std::string("failed ") + n); }
  void commandCancelled(const char* n) override { events.push_back(std::string("cancelled ") + n); }
  void databaseToBeDestroyed(AcDbDatabase*) override { events.push_back("db destroyed"); }
  void documentCreated(AcApDocument* d) override { events.push_back("created " + d->fileName()); }
  void documentToBeActivated(AcApDocument* d) override { events.push_back("activate " + d->fileName()); }
  void documentToBeDestroyed(AcApDocument* d) override { events.push_back("destroy " + d->fileName()); }
};

// Closes every document a test left open.
struct EditorTest : ::testing::Test {
  void TearDown() override {
    while (!acDocManager->documents().empty()) acDocManager->closeDocument(acDocManager->documents().back().get());
    commandLine().setInput(nullptr);
    acedRegCmds->removeGroup("TEST");
    host::ed::takeMessages();
  }
};

void noop() {}
int g_runs = 0;
void counted() { ++g_runs; }

TEST_F(EditorTest, CommandsKeepRegistrationOrderAndAreFoundWithPrefixes) {
  ASSERT_EQ(acedRegCmds->addCommand("TEST", "Zeta", "Zeta", ACRX_CMD_MODAL, noop), Acad::eOk);
  ASSERT_EQ(acedRegCmds->addCommand("TEST", "Alpha", "Alfa", ACRX_CMD_MODAL, counted), Acad::eOk);
  ASSERT_EQ(acedRegCmds->addCommand("TEST", "Mid", "Mid", ACRX_CMD_MODAL, noop), Acad::eOk);
  EXPECT_EQ(acedRegCmds->addCommand("TEST", "alpha", "other", ACRX_CMD_MODAL, noop), Acad::eDuplicateKey);
  std::vector<std::string> names;
  for (const AcEdCommand* c : acedRegCmds->commandsOfGroup("TEST")) names.push_back(c->globalName());
  EXPECT_EQ(names, (std::vector<std::string>{"Zeta", "Alpha", "Mid"}));

  EXPECT_EQ(acedRegCmds->lookupLocalCmd("ALFA")->functionAddr(), &counted);
  EXPECT_EQ(acedRegCmds->lookupGlobalCmd("alpha")->functionAddr(), &counted);
  EXPECT_EQ(acedRegCmds->lookupCmd("_ALPHA")->functionAddr(), &counted);  // "_": global name
  EXPECT_EQ(acedRegCmds->lookupCmd("alfa")->functionAddr(), &counted);
  EXPECT_EQ(acedRegCmds->lookupCmd("_alfa"), nullptr);  // the local name is not a global one
  EXPECT_EQ(acedRegCmds->lookupCmd("._ALPHA"), acedRegCmds->lookupCmd("_ALPHA"));
  EXPECT_EQ(acedRegCmds->lookupCmd("_."), nullptr);

  g_runs = 0;
  EXPECT_EQ(commandLine().runCommand("_.alpha"), host::ed::CommandResult::kOk);
  EXPECT_EQ(g_runs, 1);
  EXPECT_EQ(acedRegCmds->removeGroup("TEST"), Acad::eOk);
  EXPECT_EQ(acedRegCmds->lookupCmd("alpha"), nullptr);
}

// A command that asks for a point and queues more text for its document.
void askPoint() {
  ads_point p;
  if (acedGetPoint(nullptr, "Point: ", p) != RTNORM) return commandLine().cancelCommand();
  acutPrintf("got %g,%g\n", p[0], p[1]);
  acDocManager->sendStringToExecute(acDocManager->curDocument(), "_COUNTED\n", true, false, false);
}

TEST_F(EditorTest, ScriptsAnswerPromptsAndQueuedTextRunsAfterTheCommand) {
  Recorder rec;
  acedEditor->addReactor(&rec);
  acDocManager->openDocument(std::make_unique<AcDbDatabase>(), "a.dxf");
  acedRegCmds->addCommand("TEST", "ASKPOINT", "ASKPOINT", ACRX_CMD_MODAL, askPoint);
  acedRegCmds->addCommand("TEST", "COUNTED", "COUNTED", ACRX_CMD_MODAL, counted);
  g_runs = 0;
  TextInput script({"askpoint", "nonsense", "3,4", "", "ASKPOINT", "^C"}, "t.scr");
  commandLine().setInput(&script);
  host::ed::takeMessages();
  EXPECT_TRUE(commandLine().runInput());
  const std::string out = host::ed::takeMessages();
  EXPECT_NE(out.find("Point: nonsense"), std::string::npos) << out;
  EXPECT_NE(out.find("got 3,4"), std::string::npos) << out;
  EXPECT_EQ(g_runs, 1);
  EXPECT_EQ(rec.events, (std::vector<std::string>{"start ASKPOINT", "end ASKPOINT", "start COUNTED",
                                                   "end COUNTED", "start ASKPOINT", "cancelled ASKPOINT"}));
  acedEditor->removeReactor(&rec);
}

TEST_F(EditorTest, UnknownCommandsAndInputEndingInsideAPromptFail) {
  acDocManager->openDocument(std::make_unique<AcDbDatabase>(), "a.dxf");
  acedRegCmds->addCommand("TEST", "ASKPOINT", "ASKPOINT", ACRX_CMD_MODAL, askPoint);
  {
    TextInput script({"", "FROBNICATE"}, "t.scr");
    commandLine().setInput(&script);
    host::ed::takeMessages();
    EXPECT_FALSE(commandLine().runInput());
    EXPECT_NE(host::ed::takeMessages().find("t.scr:2: Unknown command \"FROBNICATE\"."), std::string::npos);
  }
  {
    Recorder rec;
    acedEditor->addReactor(&rec);
    TextInput script({"ASKPOINT"}, "t.scr");
    commandLine().setInput(&script);
    EXPECT_FALSE(commandLine().runInput());
    EXPECT_NE(host::ed::takeMessages().find("input ended while ASKPOINT"), std::string::npos);
    EXPECT_EQ(rec.events.back(), "failed ASKPOINT");
    acedEditor->removeReactor(&rec);
  }
}

TEST_F(EditorTest, DocumentsTellTheirReactorsAndEndWithTheirDatabase) {
  Recorder rec;
  acDocManager->addReactor(&rec);
  acedEditor->addReactor(&rec);
  AcApDocument* a = acDocManager->openDocument(std::make_unique<AcDbDatabase>(), "a.dxf");
  AcApDocument* b = acDocManager->openDocument(std::make_unique<AcDbDatabase>(), "b.dxf");
  EXPECT_EQ(acdbHostApplicationServices()->workingDatabase(), b->database());
  acDocManager->activateDocument(a);
  EXPECT_EQ(acdbHostApplicationServices()->workingDatabase(), a->database());

  std::vector<AcApDocument*> walked;
  for (auto it = acDocManager->newAcApDocumentIterator(); !it->done(); it->step()) walked.push_back(it->document());
  EXPECT_EQ(walked, (std::vector<AcApDocument*>{a, b}));

  EXPECT_FALSE(b->isModified());
  AcDbObjectId id;
  host::appendEntity(b->database(), new AcDbLine({0, 0, 0}, {1, 0, 0}), id);
  EXPECT_TRUE(b->isModified());
  EXPECT_FALSE(a->isModified());

  acDocManager->closeDocument(a);
  EXPECT_EQ(acDocManager->curDocument(), b);
  EXPECT_EQ(rec.events, (std::vector<std::string>{"activate a.dxf", "created a.dxf", "activate b.dxf", "created b.dxf",
                                                   "activate a.dxf", "destroy a.dxf", "db destroyed",
                                                   "activate b.dxf"}));
  acDocManager->removeReactor(&rec);
  acedEditor->removeReactor(&rec);
}

TEST_F(EditorTest, AWriteLockExcludesASecondWriter) {
  AcApDocument* doc = acDocManager->openDocument(std::make_unique<AcDbDatabase>(), "a.dxf");
  {
    AcAxDocLock mine(AcAp::kWrite);
    ASSERT_EQ(mine.lockStatus(), Acad::eOk);
    AcAxDocLock nested(AcAp::kWrite);  // the same thread nests
    EXPECT_EQ(nested.lockStatus(), Acad::eOk);
    Acad::ErrorStatus other = Acad::eOk, otherRead = Acad::eOk;
    std::thread([&] {
      AcAxDocLock theirs(doc, AcAp::kWrite);
      other = theirs.lockStatus();
      AcAxDocLock reader(doc, AcAp::kRead);
      otherRead = reader.lockStatus();
    }).join();
    EXPECT_EQ(other, Acad::eLockViolation);
    EXPECT_EQ(otherRead, Acad::eLockViolation);
    EXPECT_EQ(doc->lockMode(), AcAp::kWrite);
  }
  EXPECT_EQ(doc->lockMode(), AcAp::kNotLocked);
  {
    AcAxDocLock exclusive(AcAp::kXWrite);
    ASSERT_EQ(exclusive.lockStatus(), Acad::eOk);
    AcAxDocLock again(AcAp::kWrite);
    EXPECT_EQ(again.lockStatus(), Acad::eLockViolation);
  }
  Acad::ErrorStatus afterwards = Acad::eLockViolation;
  std::thread([&] {
    AcAxDocLock theirs(doc, AcAp::kWrite);
    afterwards = theirs.lockStatus();
  }).join();
  EXPECT_EQ(afterwards, Acad::eOk);
  EXPECT_EQ(acDocManager->unlockDocument(doc), Acad::eNotApplicable);
}

TEST_F(EditorTest, QueuedAnswersServeMessageBoxesAndSavePaths) {
  auto& q = host::ed::queuedAnswers();
  q.clear();
  EXPECT_EQ(host::ed::messageBox("导出成功"), host::ed::kIdOk);
  q.queueMessageAnswer(host::ed::kIdNo);
  EXPECT_EQ(host::ed::messageBox("sure?", host::ed::kMbYesNo), host::ed::kIdNo);
  host::ed::SaveFileRequest req{"title", "T1", "sat", "", true};
  EXPECT_EQ(host::ed::askSavePath(req), "");  // nothing queued: cancelled
  q.queueSavePath("/tmp/x/part");
  q.queueSavePath("/tmp/x.y/part.stp");
  EXPECT_EQ(host::ed::askSavePath(req), "/tmp/x/part.sat");
  EXPECT_EQ(host::ed::askSavePath(req), "/tmp/x.y/part.stp");
  EXPECT_EQ(q.messages(), (std::vector<std::string>{"导出成功", "sure?"}));
}

struct CountingDialog : host::ed::ModelessDialog {
  explicit CountingDialog(bool* gone) : ModelessDialog(186), m_gone(gone) {}
  void postNcDestroy() override {
    *m_gone = true;
    delete this;
  }
  bool* m_gone;
};

TEST_F(EditorTest, HeadlessDialogWindowsRecordTheirState) {
  bool gone = false;
  auto* dlg = new CountingDialog(&gone);
  ASSERT_TRUE(dlg->create());
  dlg->centreWindow();
  dlg->showWindow();
  auto rec = host::ed::headlessDialogService().liveWindow(186);
  ASSERT_TRUE(rec);
  EXPECT_TRUE(rec->visible);
  EXPECT_EQ(rec->centred, 1);
  dlg->hideWindow();
  EXPECT_FALSE(dlg->isVisible());
  dlg->destroyWindow();
  EXPECT_TRUE(gone);
  EXPECT_TRUE(rec->destroyed);
  EXPECT_FALSE(host::ed::headlessDialogService().liveWindow(186));
}

}  // namespace
