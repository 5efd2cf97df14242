#include "ui/bulk_gen_encircle_line_dlg.h"

#include <algorithm>
#include <memory>

#include "host/db/operations.h"
#include "host/ed/document.h"
#include "host/ed/editor_input.h"
#include "shell/knife_diagram_factory.h"
#include "ui/batch_tasks.h"
#include "ui/single_outline_run.h"

const char* const kSelectTaskData = "请选择任务数据";
const char* const kSelectOneTask = "请选择一条任务数据";
const char* const kSelectToolData = "请选择刀具数据";
const char* const kRunTasksEnded = "执行任务结束";
const char* const kSelectExportPath = "请选择导出路径";
const char* const kExportEnded = "导出结束";
const char* const kExport3dFailed = "导出三维文件失败";
const char* const kExport3dSucceeded = "导出三维文件成功";
const char* const kSelectToolObjects = "请选择需要计算轮廓的对象，右键结束选择";
const char* const kSelectCentrePoint = "请选择中心点，右键结束选择";

namespace {

std::vector<std::string> Split(const std::string& text) {
  std::vector<std::string> parts;
  std::size_t pos = 0;
  for (std::size_t semi; (semi = text.find(';', pos)) != std::string::npos; pos = semi + 1)
    parts.push_back(text.substr(pos, semi - pos));
  parts.push_back(text.substr(pos));
  return parts;
}

std::vector<int> Widths(const std::string& text) {
  std::vector<int> widths;
  for (const std::string& w : Split(text)) widths.push_back(std::stoi(w));
  return widths;
}

void SetHighlight(AcDbObjectId id, bool on) {
  AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
  if (!ent) return;
  if (on) ent->highlight();
  else ent->unhighlight();
}

// Hides the dialog while the user picks in the drawing and shows it again
// on every way out.
class HiddenWhilePicking {
 public:
  explicit HiddenWhilePicking(host::ed::ModelessDialog& dlg) : m_dlg(dlg) { m_dlg.hideWindow(); }
  ~HiddenWhilePicking() { m_dlg.showWindow(); }
  HiddenWhilePicking(const HiddenWhilePicking&) = delete;
  HiddenWhilePicking& operator=(const HiddenWhilePicking&) = delete;

 private:
  host::ed::ModelessDialog& m_dlg;
};

}  // namespace

namespace {
BatchModalRunner*& InstalledRunner() {
  static BatchModalRunner* runner = nullptr;
  return runner;
}
}  // namespace

bool CommandLineModalRunner::RunNameDialog(CInputNameDlg& dlg) {
  std::string name;
  const std::string prompt = std::string(CInputNameDlg::kLabel) + (dlg.m_strName.empty() ? "" : " <" + dlg.m_strName + ">") + " ";
  if (host::ed::getString(prompt, name) != RTNORM) return false;
  if (!name.empty()) dlg.m_strName = name;
  if (const auto refused = dlg.OnOK()) {
    host::ed::messageBox(*refused);
    return false;
  }
  return true;
}

bool CommandLineModalRunner::RunParaSetDialog(CEncircleParaSetDlg&) { return false; }

void SetBatchModalRunner(BatchModalRunner* runner) { InstalledRunner() = runner; }

BatchModalRunner& BatchModalRunnerInUse() {
  static CommandLineModalRunner commandLine;
  return InstalledRunner() ? *InstalledRunner() : commandLine;
}

CBulkGenEncircleLineDlg::CBulkGenEncircleLineDlg() : host::ed::ModelessDialog(IDD), m_runner(nullptr) {}

CBulkGenEncircleLineDlg::CBulkGenEncircleLineDlg(BatchModalRunner& runner)
    : host::ed::ModelessDialog(IDD), m_runner(&runner) {}

CBulkGenEncircleLineDlg*& CBulkGenEncircleLineDlg::ModulePointer() {
  static CBulkGenEncircleLineDlg* dialog = nullptr;
  return dialog;
}

void CBulkGenEncircleLineDlg::postNcDestroy() {
  if (ModulePointer() != this) return;  // a dialog the module does not own stays its owner's
  ModulePointer() = nullptr;
  delete this;
}

const std::vector<CBulkGenEncircleLineDlg::Button>& CBulkGenEncircleLineDlg::Buttons() {
  using D = CBulkGenEncircleLineDlg;
  static const std::vector<Button> buttons = {
      {1018, "新建任务", &D::OnNewTask},          {1020, "删除任务", &D::OnDeleteTask},
      {1019, "执行任务", &D::OnRunTasks},         {1035, "导出3D(多)", &D::OnExportTasks},
      {1025, "删除包络线(多)", &D::OnEraseOutlines}, {1024, "参数设置", &D::OnParamSet},
      {1022, "新增刀具", &D::OnAddTool},          {1032, "删除刀具", &D::OnDeleteTool},
      {1033, "高亮刀具", &D::OnHighlightTool},    {1037, "计算包络线", &D::OnComputeOutline},
      {1034, "高亮包络线", &D::OnHighlightOutline}, {1036, "导出3D(单)", &D::OnExportTool},
      {1039, "删除包络线(单)", &D::OnEraseOutline}, {1038, "取消所有高亮", &D::OnClearHighlight},
  };
  return buttons;
}

std::vector<std::string> CBulkGenEncircleLineDlg::TaskColumns() { return Split("序号;任务名称;执行状态;导出状态"); }
std::vector<int> CBulkGenEncircleLineDlg::TaskColumnWidths() { return Widths("12;37;25;25"); }
std::vector<std::string> CBulkGenEncircleLineDlg::ToolColumns() { return Split("序号;刀具名称;执行状态;导出状态"); }
std::vector<int> CBulkGenEncircleLineDlg::ToolColumnWidths() { return Widths("10;49;20;20"); }

CBatchTaskList* CBulkGenEncircleLineDlg::Store() const {
  return CKnifeDiagramFactory::Instance().GetWorkingTaskStore();
}

CBatchTaskInfo* CBulkGenEncircleLineDlg::ToolTask() const {
  CBatchTaskList* store = Store();
  if (!store || m_toolTask < 0 || m_toolTask >= static_cast<int>(store->size())) return nullptr;
  return &(*store)[m_toolTask];
}

std::vector<CBulkGenEncircleLineDlg::Row> CBulkGenEncircleLineDlg::TaskRows() const {
  std::vector<Row> rows;
  if (const CBatchTaskList* store = Store())
    for (std::size_t i = 0; i < store->size(); ++i) {
      const CBatchTaskInfo& t = (*store)[i];
      rows.push_back({std::to_string(i + 1), t.m_strName, BatchStateText(t.m_nExecState, false),
                      BatchStateText(t.m_nExportState, true)});
    }
  return rows;
}

std::vector<CBulkGenEncircleLineDlg::Row> CBulkGenEncircleLineDlg::ToolRows() const {
  std::vector<Row> rows;
  if (const CBatchTaskInfo* task = ToolTask())
    for (std::size_t i = 0; i < task->m_vecTools.size(); ++i) {
      const CBatchToolInfo& t = task->m_vecTools[i];
      rows.push_back({std::to_string(i + 1), t.m_strName, BatchStateText(t.m_nExecState, false),
                      BatchStateText(t.m_nExportState, true)});
    }
  return rows;
}

void CBulkGenEncircleLineDlg::SelectTasks(std::vector<int> rows) {
  const int count = Store() ? static_cast<int>(Store()->size()) : 0;
  std::erase_if(rows, [&](int r) { return r < 0 || r >= count; });
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  m_selTasks = rows;
  const int toolTask = rows.empty() ? -1 : rows.front();
  if (toolTask != m_toolTask) m_selTools.clear();
  m_toolTask = toolTask;
  Changed();
}

void CBulkGenEncircleLineDlg::SelectTools(std::vector<int> rows) {
  const CBatchTaskInfo* task = ToolTask();
  const int count = task ? static_cast<int>(task->m_vecTools.size()) : 0;
  std::erase_if(rows, [&](int r) { return r < 0 || r >= count; });
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  m_selTools = rows;
  Changed();
}

void CBulkGenEncircleLineDlg::Refresh() {
  ++m_refreshCount;
  m_selTasks.clear();
  m_selTools.clear();
  m_toolTask = -1;
  Changed();
}

void CBulkGenEncircleLineDlg::Changed() {
  if (m_onChanged) m_onChanged();
}

void CBulkGenEncircleLineDlg::Message(const std::string& text) { host::ed::messageBox(text); }

std::vector<CBatchTaskInfo*> CBulkGenEncircleLineDlg::SelectedTaskRecords() const {
  std::vector<CBatchTaskInfo*> tasks;
  CBatchTaskList* store = Store();
  if (!store) return tasks;
  for (int r : m_selTasks)
    if (r < static_cast<int>(store->size())) tasks.push_back(&(*store)[r]);
  return tasks;
}

CBatchTaskInfo* CBulkGenEncircleLineDlg::OneSelectedTask() {
  const auto tasks = SelectedTaskRecords();
  if (tasks.size() != 1) {
    Message(kSelectOneTask);
    return nullptr;
  }
  return tasks.front();
}

CBatchToolInfo* CBulkGenEncircleLineDlg::SelectedTool() {
  CBatchTaskInfo* task = ToolTask();
  if (!task || m_selTools.empty() || m_selTools.front() >= static_cast<int>(task->m_vecTools.size())) {
    Message(kSelectToolData);
    return nullptr;
  }
  return &task->m_vecTools[m_selTools.front()];
}

bool CBulkGenEncircleLineDlg::Press(int nId) {
  for (const Button& b : Buttons())
    if (b.nId == nId) {
      (this->*b.handler)();
      return true;
    }
  return false;
}

void CBulkGenEncircleLineDlg::OnNewTask() {
  CInputNameDlg dlg;
  if (!Runner().RunNameDialog(dlg)) return;
  CBatchTaskList* store = Store();
  if (!store) return;
  CBatchTaskInfo task;
  task.m_strName = dlg.m_strName;
  store->push_back(task);
  Changed();
}

void CBulkGenEncircleLineDlg::OnDeleteTask() {
  CBatchTaskList* store = Store();
  if (!store || m_selTasks.empty()) return;
  AcAxDocLock lock(AcAp::kWrite);
  // Deleting a task erases its tools' outlines too: nothing would name them any more.
  for (auto it = m_selTasks.rbegin(); it != m_selTasks.rend(); ++it) {
    for (CBatchToolInfo& tool : (*store)[*it].m_vecTools) EraseToolOutline(tool);
    store->erase(store->begin() + *it);
  }
  m_selTasks.clear();
  m_selTools.clear();
  m_toolTask = -1;
  Changed();
}

void CBulkGenEncircleLineDlg::OnRunTasks() {
  const auto tasks = SelectedTaskRecords();
  if (tasks.empty()) return Message(kSelectTaskData);
  RunTasks(tasks, [this](const BatchToolEvent&) { Changed(); });
  Changed();
  Message(kRunTasksEnded);
}

void CBulkGenEncircleLineDlg::OnExportTasks() {
  const auto tasks = SelectedTaskRecords();
  if (tasks.empty()) return Message(kSelectTaskData);
  const std::string folder = host::ed::askFolder(kSelectExportPath);
  if (folder.empty()) return Message(kSelectExportPath);
  BatchExportOptions options;
  options.folder = folder;
  ExportTasks(tasks, options, [this](const BatchToolEvent&) { Changed(); });
  Changed();
  Message(kExportEnded);
}

void CBulkGenEncircleLineDlg::OnAddTool() {
  CBatchTaskInfo* task = OneSelectedTask();
  if (!task) return;
  AcArray<AcDbObjectId> ids;
  AcGePoint3d centre;
  std::string name;
  {
    HiddenWhilePicking hidden(*this);
    if (host::ed::getSelection(kSelectToolObjects, ids) != RTNORM || ids.isEmpty()) return;
    if (host::ed::getPoint(kSelectCentrePoint, centre) != RTNORM) return;
    name = FrameToolNumber(ids);
  }
  if (name.empty()) {
    Message(kNoFrameToolNumber);
    CInputNameDlg dlg;
    dlg.m_strName = kProposedToolName;
    if (!Runner().RunNameDialog(dlg)) return;
    name = dlg.m_strName;
  }
  task->m_vecTools.push_back(NewToolItem(name, centre, ids));
  Changed();
}

void CBulkGenEncircleLineDlg::OnDeleteTool() {
  CBatchTaskInfo* task = ToolTask();
  if (!task || m_selTools.empty()) return Message(kSelectToolData);
  AcAxDocLock lock(AcAp::kWrite);
  // A deleted tool's outline goes with it.
  for (auto it = m_selTools.rbegin(); it != m_selTools.rend(); ++it) {
    EraseToolOutline(task->m_vecTools[*it]);
    task->m_vecTools.erase(task->m_vecTools.begin() + *it);
  }
  m_selTools.clear();
  Changed();
}

void CBulkGenEncircleLineDlg::OnHighlightTool() {
  CBatchToolInfo* tool = SelectedTool();
  if (!tool) return;
  for (AcDbObjectId id : tool->m_arrEntityIds) SetHighlight(id, true);
  acedUpdateDisplay();
}

void CBulkGenEncircleLineDlg::OnComputeOutline() {
  CBatchToolInfo* tool = SelectedTool();
  if (!tool) return;
  const bool ok = ComputeTool(*tool, ToolTask()->m_calInfo);
  Changed();
  Message(ok ? kOutlineSucceeded : kOutlineFailed);
}

void CBulkGenEncircleLineDlg::OnHighlightOutline() {
  CBatchToolInfo* tool = SelectedTool();
  if (!tool) return;
  if (tool->m_idOutline.isNull()) return Message(kComputeOutlineFirst);
  SetHighlight(tool->m_idOutline, true);
  acedUpdateDisplay();
}

void CBulkGenEncircleLineDlg::OnExportTool() {
  CBatchToolInfo* tool = SelectedTool();
  if (!tool) return;
  if (tool->m_idOutline.isNull()) return Message(kComputeOutlineFirst);
  const std::string folder = host::ed::askFolder(kSelectExportPath);
  if (folder.empty()) return Message(kSelectExportPath);
  BatchExportOptions options;
  options.folder = folder;
  std::set<std::string> usedNames;
  BatchToolEvent event;
  const bool ok = ExportTool(*tool, options, usedNames, event);
  EraseExportLayer();
  // The export of one tool records its success only.
  if (ok) tool->m_nExportState = kBatchDone;
  Changed();
  Message(ok ? kExport3dSucceeded : kExport3dFailed);
}

void CBulkGenEncircleLineDlg::OnClearHighlight() {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  for (AcDbObjectId id : host::ed::highlightedEntities(db)) SetHighlight(id, false);
  acedUpdateDisplay();
}

void CBulkGenEncircleLineDlg::OnParamSet() {
  CBatchTaskInfo* task = OneSelectedTask();
  if (!task) return;
  CEncircleParaSetDlg dlg;
  dlg.m_info = task->m_calInfo;
  dlg.OnInitDialog();
  if (Runner().RunParaSetDialog(dlg)) task->m_calInfo = dlg.m_info;
}

void CBulkGenEncircleLineDlg::OnEraseOutlines() {
  const auto tasks = SelectedTaskRecords();
  if (tasks.empty()) return Message(kSelectTaskData);
  AcAxDocLock lock(AcAp::kWrite);
  for (CBatchTaskInfo* task : tasks)
    for (CBatchToolInfo& tool : task->m_vecTools) EraseToolOutline(tool);
  acedUpdateDisplay();
  Changed();
}

void CBulkGenEncircleLineDlg::OnEraseOutline() {
  CBatchToolInfo* tool = SelectedTool();
  if (!tool) return;
  AcAxDocLock lock(AcAp::kWrite);
  EraseToolOutline(*tool);
  acedUpdateDisplay();
  Changed();
}
