// The batch dialog without its window, on the sample sheet of three framed
// tools: the lists, every button with its messages, selections and points
// answered from a script, modal dialogs answered by a scripted runner, and
// the store saved into the drawing file and read back.
#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <functional>

#include "../engine/tool_drawings.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/ed/command_line.h"
#include "host/ed/document.h"
#include "host/ed/editor_input.h"
#include "shell/knife_diagram_factory.h"
#include "shell/task_store.h"
#include "ui/bulk_gen_encircle_line_dlg.h"
#include "ui/module_dialog.h"
#include "util/entity_utils.h"

namespace {

using host::ed::queuedAnswers;

// Answers the modal dialogs as a user would: each answer edits the dialog
// and says whether OK was pressed; OK is refused as the views refuse it.
class ScriptedRunner : public BatchModalRunner {
 public:
  std::deque<std::function<bool(CInputNameDlg&)>> names;
  std::deque<std::function<bool(CEncircleParaSetDlg&)>> params;
  std::vector<std::string> proposed;  // the names the dialog was opened with

  bool RunNameDialog(CInputNameDlg& dlg) override {
    proposed.push_back(dlg.m_strName);
    if (names.empty()) return false;
    auto answer = names.front();
    names.pop_front();
    return answer(dlg) && !dlg.OnOK();
  }
  bool RunParaSetDialog(CEncircleParaSetDlg& dlg) override {
    if (params.empty()) return false;
    auto answer = params.front();
    params.pop_front();
    return answer(dlg) && !dlg.OnOK(dlg.EditTexts());
  }
};

std::function<bool(CInputNameDlg&)> Name(std::string name) {
  return [name](CInputNameDlg& d) {
    d.m_strName = name;
    return true;
  };
}
std::function<bool(CInputNameDlg&)> Untouched() {
  return [](CInputNameDlg&) { return true; };
}

class BatchDialog : public testing::Test {
 protected:
  void SetUp() override {
    host::dxf::Diagnostics diag;
    ASSERT_TRUE(host::dxf::readDxfFile(std::string(ENVLINE_SOURCE_DIR) + "/samples/tool_sheet.dxf", m_drawing, diag));
    m_doc = acDocManagerPtr()->openBorrowedDocument(m_drawing.database.get(), "tool_sheet.dxf");
    queuedAnswers().clear();
    m_dir = std::filesystem::temp_directory_path() /
            ("envline_batch_dialog_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    std::filesystem::remove_all(m_dir);
  }
  void TearDown() override {
    host::ed::commandLine().setInput(nullptr);
    CKnifeDiagramFactory::Instance().DropTaskStore(db());
    acDocManagerPtr()->closeDocument(m_doc);
    std::filesystem::remove_all(m_dir);
  }
  AcDbDatabase* db() const { return m_drawing.database.get(); }
  CBatchTaskList& store() { return *CKnifeDiagramFactory::Instance().GetTaskStore(db()); }

  // Answers the next prompts of the command line with these lines.
  void Answer(std::vector<std::string> lines) {
    m_input = std::make_unique<host::ed::TextInput>(std::move(lines));
    host::ed::commandLine().setInput(m_input.get());
  }
  std::vector<std::string> Messages() {
    auto m = queuedAnswers().messages();
    queuedAnswers().clear();
    return m;
  }
  void NewTask(const std::string& name) {
    m_runner.names.push_back(Name(name));
    m_dlg.OnNewTask();
  }
  // Adds the tool inside the window, picking the centre.
  void AddTool(const std::string& window, const std::string& centre) {
    Answer({"W " + window, "", centre});
    m_dlg.OnAddTool();
  }

  host::dxf::DxfDrawing m_drawing;
  AcApDocument* m_doc = nullptr;
  std::unique_ptr<host::ed::TextInput> m_input;
  ScriptedRunner m_runner;
  CBulkGenEncircleLineDlg m_dlg{m_runner};
  std::filesystem::path m_dir;
};

TEST_F(BatchDialog, ListsColumnsAndButtons) {
  EXPECT_EQ(CBulkGenEncircleLineDlg::TaskColumns(), (std::vector<std::string>{"序号", "任务名称", "执行状态", "导出状态"}));
  EXPECT_EQ(CBulkGenEncircleLineDlg::ToolColumns(), (std::vector<std::string>{"序号", "刀具名称", "执行状态", "导出状态"}));
  EXPECT_EQ(CBulkGenEncircleLineDlg::TaskColumnWidths(), (std::vector<int>{12, 37, 25, 25}));
  EXPECT_EQ(CBulkGenEncircleLineDlg::ToolColumnWidths(), (std::vector<int>{10, 49, 20, 20}));
  std::set<int> ids;
  for (const auto& b : CBulkGenEncircleLineDlg::Buttons()) ids.insert(b.nId);
  EXPECT_EQ(ids, (std::set<int>{1018, 1019, 1020, 1022, 1024, 1025, 1032, 1033, 1034, 1035, 1036, 1037, 1038, 1039}));
  EXPECT_FALSE(m_dlg.Press(1017));
}

TEST_F(BatchDialog, NewTasksTakeAnyNameButAnEmptyOne) {
  NewTask("铣刀");
  NewTask("   ");  // blanks are a name
  m_runner.names.push_back(Name(""));
  m_dlg.OnNewTask();  // refused: nothing added
  ASSERT_EQ(m_dlg.TaskRows().size(), 2u);
  EXPECT_EQ(m_dlg.TaskRows()[0], (CBulkGenEncircleLineDlg::Row{"1", "铣刀", "未开始", "未开始"}));
  EXPECT_EQ(m_dlg.TaskRows()[1][1], "   ");
  EXPECT_EQ(store()[0].m_calInfo.m_dStep, 0.3);  // default parameters
}

TEST_F(BatchDialog, AddingAToolNeedsExactlyOneTaskAndNamesItByItsFrame) {
  NewTask("A");
  NewTask("B");
  AddTool("-8,-13 118,21", "50,0");
  EXPECT_EQ(Messages(), std::vector<std::string>{"请选择一条任务数据"});
  m_dlg.SelectTasks({0, 1});
  AddTool("-8,-13 118,21", "50,0");
  EXPECT_EQ(Messages(), std::vector<std::string>{"请选择一条任务数据"});
  EXPECT_TRUE(store()[0].m_vecTools.empty());

  m_dlg.SelectTasks({1});
  AddTool("-8,-13 118,21", "50,0");
  ASSERT_EQ(m_dlg.ToolRows().size(), 1u);
  EXPECT_EQ(m_dlg.ToolRows()[0], (CBulkGenEncircleLineDlg::Row{"1", "T-1001", "未开始", "未开始"}));
  const CBatchToolInfo& tool = store()[1].m_vecTools[0];
  EXPECT_EQ(tool.m_ptCenter, AcGePoint3d(50, 0, 0));
  EXPECT_GT(tool.m_arrEntityIds.length(), 10);
  EXPECT_TRUE(Messages().empty());

  // Outside every frame: the user is told and asked, "0001" proposed.
  tooltest::DrawTool(db(), {{{2000, 0, 0}, {2000, 5, 0}, {2040, 5, 0}, {2040, 0, 0}}});
  m_runner.names.push_back(Untouched());
  AddTool("1990,-20 2050,20", "2020,0");
  EXPECT_EQ(Messages(), std::vector<std::string>{"未获取到图框中刀具编号，请手动输入"});
  EXPECT_EQ(m_runner.proposed.back(), "0001");
  EXPECT_EQ(m_dlg.ToolRows()[1][1], "0001");

  // An empty selection or a cancelled point adds nothing.
  Answer({""});
  m_dlg.OnAddTool();
  Answer({"W -8,-13 118,21", "", "^C"});
  m_dlg.OnAddTool();
  EXPECT_EQ(m_dlg.ToolRows().size(), 2u);
}

TEST_F(BatchDialog, RunComputeAndExportWithTheirMessages) {
  NewTask("A");
  m_dlg.SelectTasks({0});
  AddTool("-8,-13 118,21", "50,0");
  AddTool("192,-14 318,22", "250,0");
  m_dlg.SelectTasks({});
  m_dlg.OnRunTasks();
  m_dlg.OnExportTasks();
  m_dlg.OnComputeOutline();
  EXPECT_EQ(Messages(), (std::vector<std::string>{"请选择任务数据", "请选择任务数据", "请选择刀具数据"}));

  m_dlg.SelectTasks({0});
  m_dlg.OnRunTasks();
  EXPECT_EQ(Messages(), std::vector<std::string>{"执行任务结束"});
  EXPECT_EQ(m_dlg.TaskRows()[0][2], "已完成");
  EXPECT_EQ(m_dlg.ToolRows()[1][2], "已完成");

  m_dlg.SelectTools({1});
  const AcDbObjectId before = store()[0].m_vecTools[1].m_idOutline;
  m_dlg.OnComputeOutline();
  EXPECT_EQ(Messages(), std::vector<std::string>{"计算包络线成功"});
  EXPECT_TRUE(before.isErased());
  EXPECT_EQ(util::SelectAllOnLayer("TempEncircleLine").length(), 2);

  m_dlg.OnExportTool();  // no folder chosen
  EXPECT_EQ(Messages(), std::vector<std::string>{"请选择导出路径"});
  queuedAnswers().queueFolder(m_dir.string());
  std::filesystem::create_directories(m_dir);
  m_dlg.OnExportTool();
  EXPECT_EQ(Messages(), std::vector<std::string>{"导出三维文件成功"});
  EXPECT_TRUE(std::filesystem::exists(m_dir / "T-1003.sat"));
  EXPECT_EQ(m_dlg.ToolRows()[1][3], "已完成");
  EXPECT_EQ(m_dlg.ToolRows()[0][3], "未开始");

  queuedAnswers().queueFolder(m_dir.string());
  m_dlg.OnExportTasks();
  EXPECT_EQ(Messages(), std::vector<std::string>{"导出结束"});
  EXPECT_EQ(m_dlg.TaskRows()[0][3], "已完成");
  EXPECT_TRUE(std::filesystem::exists(m_dir / "T-1001.sat"));
  EXPECT_TRUE(util::SelectAllOnLayer("EncircleLine3D").isEmpty());  // no solid stays

  // A tool whose outline is gone cannot be exported alone.
  m_dlg.OnEraseOutline();
  m_dlg.OnExportTool();
  EXPECT_EQ(Messages(), std::vector<std::string>{"请先计算包络线"});
}

TEST_F(BatchDialog, ParametersAreEditedOnOneTask) {
  NewTask("A");
  m_dlg.OnParamSet();
  EXPECT_EQ(Messages(), std::vector<std::string>{"请选择一条任务数据"});
  m_dlg.SelectTasks({0});
  store()[0].m_calInfo.m_nAxisDir = 2;
  store()[0].m_calInfo.m_tolLine.setEqualVector(0.5);
  bool shownLower = false;
  m_runner.params.push_back([&](CEncircleParaSetDlg& d) {
    shownLower = d.m_nSide == 1;
    d.m_dStep = 0.2;
    return true;
  });
  m_dlg.OnParamSet();
  EXPECT_TRUE(shownLower);
  EXPECT_EQ(store()[0].m_calInfo.m_nAxisDir, 1);
  EXPECT_EQ(store()[0].m_calInfo.m_dStep, 0.2);
  EXPECT_EQ(store()[0].m_calInfo.m_tolLine.equalVector(), 0.001);
  m_runner.params.push_back([](CEncircleParaSetDlg& d) {
    d.m_dStep = 9;
    return false;  // cancelled
  });
  m_dlg.OnParamSet();
  EXPECT_EQ(store()[0].m_calInfo.m_dStep, 0.2);
}

TEST_F(BatchDialog, HighlightingAndDeleting) {
  NewTask("A");
  m_dlg.SelectTasks({0});
  AddTool("-8,-13 118,21", "50,0");
  AddTool("192,-14 318,22", "250,0");
  m_dlg.OnHighlightTool();
  EXPECT_EQ(Messages(), std::vector<std::string>{"请选择刀具数据"});
  m_dlg.SelectTools({0});
  m_dlg.OnHighlightTool();
  EXPECT_EQ(host::ed::highlightedEntities(db()).length(), store()[0].m_vecTools[0].m_arrEntityIds.length());
  m_dlg.OnClearHighlight();
  EXPECT_TRUE(host::ed::highlightedEntities(db()).isEmpty());

  m_dlg.OnRunTasks();
  Messages();
  const AcDbObjectId first = store()[0].m_vecTools[0].m_idOutline;
  m_dlg.SelectTools({0});
  m_dlg.OnHighlightOutline();
  EXPECT_TRUE(host::ed::highlightedEntities(db()).contains(first));
  m_dlg.OnDeleteTool();  // the tool and its outline
  EXPECT_TRUE(first.isErased());
  ASSERT_EQ(m_dlg.ToolRows().size(), 1u);
  EXPECT_EQ(m_dlg.ToolRows()[0][1], "T-1003");
  const AcDbObjectId second = store()[0].m_vecTools[0].m_idOutline;
  m_dlg.OnDeleteTask();
  EXPECT_TRUE(second.isErased());
  EXPECT_TRUE(m_dlg.TaskRows().empty());
  EXPECT_TRUE(m_dlg.ToolRows().empty());
}

TEST_F(BatchDialog, TheModuleDialogAsksOnTheCommandLineWithoutAWindow) {
  CBulkGenEncircleLineDlg* dlg = ShowModuleDialog<CBulkGenEncircleLineDlg>();
  ASSERT_NE(dlg, nullptr);
  EXPECT_EQ(CBulkGenEncircleLineDlg::ModulePointer(), dlg);
  ShowModuleDialog<CBulkGenEncircleLineDlg>();  // the same dialog, shown again
  EXPECT_EQ(CBulkGenEncircleLineDlg::ModulePointer(), dlg);
  const auto window = host::ed::headlessDialogService().liveWindow(CBulkGenEncircleLineDlg::IDD);
  ASSERT_TRUE(window);
  EXPECT_EQ(window->shown, 2);
  Answer({"命令行任务"});
  dlg->OnNewTask();
  Answer({""});  // Enter with no proposal: refused
  dlg->OnNewTask();
  EXPECT_EQ(Messages(), std::vector<std::string>{"名称不能为空"});
  ASSERT_EQ(dlg->TaskRows().size(), 1u);
  EXPECT_EQ(dlg->TaskRows()[0][1], "命令行任务");
  dlg->SelectTasks({0});
  tooltest::DrawTool(db(), {{{2000, 0, 0}, {2000, 5, 0}, {2040, 5, 0}, {2040, 0, 0}}});
  Answer({"W 1990,-20 2050,20", "", "2020,0", ""});  // Enter takes the proposal
  dlg->OnAddTool();
  ASSERT_EQ(dlg->ToolRows().size(), 1u);
  EXPECT_EQ(dlg->ToolRows()[0][1], "0001");
  const int refreshed = dlg->RefreshCount();
  dlg->Refresh();
  EXPECT_EQ(dlg->RefreshCount(), refreshed + 1);
  dlg->destroyWindow();  // the module forgets it
  EXPECT_EQ(CBulkGenEncircleLineDlg::ModulePointer(), nullptr);
  Messages();
}

TEST_F(BatchDialog, TheStoreIsSavedAndReadBackWithTheStates) {
  NewTask("保存");
  m_dlg.SelectTasks({0});
  AddTool("-8,-13 118,21", "50,0");
  AddTool("192,-14 318,22", "250,0");
  store()[0].m_vecTools[1].m_arrEntityIds.setLogicalLength(0);  // this one fails
  m_dlg.OnRunTasks();
  ASSERT_TRUE(CKnifeDiagramFactory::Instance().SaveTaskStore(db()));
  std::filesystem::create_directories(m_dir);
  const std::string path = (m_dir / "saved.dxf").string();
  host::dxf::Diagnostics diag;
  ASSERT_TRUE(host::dxf::writeDxfFile(path, m_drawing, {}, diag)) << diag.error;

  host::dxf::DxfDrawing again;
  ASSERT_TRUE(host::dxf::readDxfFile(path, again, diag)) << diag.error;
  CBatchTaskList tasks;
  std::vector<std::string> warnings;
  ASSERT_TRUE(LoadTaskList(again.database.get(), tasks, warnings));
  ASSERT_EQ(tasks.size(), 1u);
  EXPECT_EQ(tasks[0].m_strName, "保存");
  EXPECT_EQ(tasks[0].m_nExecState, kBatchError);
  ASSERT_EQ(tasks[0].m_vecTools.size(), 2u);
  EXPECT_EQ(tasks[0].m_vecTools[0].m_nExecState, kBatchDone);
  EXPECT_FALSE(tasks[0].m_vecTools[0].m_idOutline.isNull());
  EXPECT_EQ(tasks[0].m_vecTools[1].m_nExecState, kBatchError);
  EXPECT_EQ(tasks[0].m_vecTools[0].m_arrEntityIds.length(), store()[0].m_vecTools[0].m_arrEntityIds.length());
}

}  // namespace
