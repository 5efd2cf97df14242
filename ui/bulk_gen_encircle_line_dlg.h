#pragma once
// The batch dialog "批量生成包络线" without its window: the task and tool
// lists with their columns and state texts, the selection in each, and the
// fourteen buttons with their messages. The tasks live in the working
// drawing's task store; the dialog only shows and edits them. Messages,
// selections, points and folders go through the host's editor services;
// the two modal dialogs through the runner the view gives.
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "host/ed/services.h"
#include "shell/batch_task.h"
#include "ui/input_name_dialog.h"
#include "ui/para_set_dialog.h"

// Runs the modal dialogs the batch dialog opens: true when closed with OK.
class BatchModalRunner {
 public:
  virtual ~BatchModalRunner() = default;
  virtual bool RunNameDialog(CInputNameDlg& dlg) = 0;
  virtual bool RunParaSetDialog(CEncircleParaSetDlg& dlg) = 0;
};

// Without a window: the name is asked on the command line ("名称:", Enter
// takes the proposal); the parameters are left as they are (cancel).
class CommandLineModalRunner : public BatchModalRunner {
 public:
  bool RunNameDialog(CInputNameDlg& dlg) override;
  bool RunParaSetDialog(CEncircleParaSetDlg& dlg) override;
};

// The runner of the module's dialogs: the desktop window installs its views'
// runner; null restores the command-line runner.
void SetBatchModalRunner(BatchModalRunner* runner);
BatchModalRunner& BatchModalRunnerInUse();

class CBulkGenEncircleLineDlg : public host::ed::ModelessDialog {
 public:
  static constexpr int IDD = 188;
  static constexpr int kResourceId = IDD;
  static constexpr const char* kCaption = "批量生成包络线";
  static constexpr int kTaskGrid = 1017;
  static constexpr int kToolGrid = 1021;

  using Row = std::array<std::string, 4>;
  struct Button {
    int nId;
    const char* caption;
    void (CBulkGenEncircleLineDlg::*handler)();
  };

  // With the module's runner, or with the given one.
  CBulkGenEncircleLineDlg();
  explicit CBulkGenEncircleLineDlg(BatchModalRunner& runner);

  // The module's one batch dialog; null when none is open. Cleared when its
  // window is destroyed.
  static CBulkGenEncircleLineDlg*& ModulePointer();

  // The buttons in the dialog's order, with their control ids.
  static const std::vector<Button>& Buttons();
  // Column titles and relative widths of the two grids.
  static std::vector<std::string> TaskColumns();  // "序号;任务名称;执行状态;导出状态"
  static std::vector<int> TaskColumnWidths();     // "12;37;25;25"
  static std::vector<std::string> ToolColumns();  // "序号;刀具名称;执行状态;导出状态"
  static std::vector<int> ToolColumnWidths();     // "10;49;20;20"

  // The rows the grids show: the working drawing's tasks, and the tools of
  // the task the tool grid was filled from.
  std::vector<Row> TaskRows() const;
  std::vector<Row> ToolRows() const;
  // Selected rows, from 0. Selecting tasks refills the tool grid from the
  // first selected task.
  void SelectTasks(std::vector<int> rows);
  void SelectTools(std::vector<int> rows);
  const std::vector<int>& SelectedTasks() const { return m_selTasks; }
  const std::vector<int>& SelectedTools() const { return m_selTools; }
  int ToolListTask() const { return m_toolTask; }

  // Reloads the lists from the working drawing's store (another drawing
  // became active, or the store was loaded).
  virtual void Refresh();
  int RefreshCount() const { return m_refreshCount; }
  // Called whenever the lists' contents or selections change.
  void SetChangedCallback(std::function<void()> callback) { m_onChanged = std::move(callback); }

  // The buttons.
  void OnNewTask();        // 1018 "新建任务"
  void OnDeleteTask();     // 1020 "删除任务"
  void OnRunTasks();       // 1019 "执行任务"
  void OnExportTasks();    // 1035 "导出3D(多)"
  void OnAddTool();        // 1022 "新增刀具"
  void OnDeleteTool();     // 1032 "删除刀具"
  void OnHighlightTool();  // 1033 "高亮刀具"
  void OnComputeOutline(); // 1037 "计算包络线"
  void OnHighlightOutline();  // 1034 "高亮包络线"
  void OnExportTool();     // 1036 "导出3D(单)"
  void OnClearHighlight(); // 1038 "取消所有高亮"
  void OnParamSet();       // 1024 "参数设置"
  void OnEraseOutlines();  // 1025 "删除包络线(多)"
  void OnEraseOutline();   // 1039 "删除包络线(单)"
  // Runs the button with this control id; false for an unknown id.
  bool Press(int nId);

 protected:
  // The module's dialog deletes itself and is forgotten.
  void postNcDestroy() override;

 private:
  CBatchTaskList* Store() const;
  CBatchTaskInfo* ToolTask() const;
  // The selected tasks that exist, in list order.
  std::vector<CBatchTaskInfo*> SelectedTaskRecords() const;
  // The one selected task, or null after "请选择一条任务数据".
  CBatchTaskInfo* OneSelectedTask();
  // The first selected tool, or null after "请选择刀具数据".
  CBatchToolInfo* SelectedTool();
  BatchModalRunner& Runner() const { return m_runner ? *m_runner : BatchModalRunnerInUse(); }
  void Changed();
  void Message(const std::string& text);

  BatchModalRunner* m_runner;  // null: the module's runner
  std::vector<int> m_selTasks, m_selTools;
  int m_toolTask = -1;  // the task whose tools the tool grid shows
  std::function<void()> m_onChanged;
  int m_refreshCount = 0;
};

extern const char* const kSelectTaskData;      // "请选择任务数据"
extern const char* const kSelectOneTask;       // "请选择一条任务数据"
extern const char* const kSelectToolData;      // "请选择刀具数据"
extern const char* const kRunTasksEnded;       // "执行任务结束"
extern const char* const kSelectExportPath;    // "请选择导出路径"
extern const char* const kExportEnded;         // "导出结束"
extern const char* const kExport3dFailed;      // "导出三维文件失败"
extern const char* const kExport3dSucceeded;   // "导出三维文件成功"
extern const char* const kSelectToolObjects;   // "请选择需要计算轮廓的对象，右键结束选择"
extern const char* const kSelectCentrePoint;   // "请选择中心点，右键结束选择"
