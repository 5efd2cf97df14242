#include "app/cli/batch_listing.h"

#include <algorithm>
#include <cstdio>

#include "app/cli/arguments.h"

#include "output/outline_report.h"
#include "ui/para_set_dialog.h"

namespace cli {

namespace {

std::string HandleOf(AcDbObjectId id) { return id.isNull() || id.isErased() ? std::string() : id.handle().toHex(); }

// Columns padded by the width they take on a terminal, so that Chinese
// names and state texts line up with the others.
constexpr std::size_t kToolIndent = 4;  // tools are listed under their task

struct Columns {
  std::size_t number = 5, name = 21, state = 9;
};

std::string Row(const Columns& c, const std::string& number, const std::string& name, const std::string& exec,
                const std::string& exported, std::size_t indent) {
  // An indented row's name column is narrower, so that the state columns of
  // tasks and tools line up.
  return std::string(indent, ' ') + PadToWidth(number, c.number) + PadToWidth(name, c.name - indent) +
         PadToWidth(exec, c.state) + exported + "\n";
}

std::string Row(const Columns& c, std::size_t index, const std::string& name, std::int32_t exec,
                std::int32_t exported, std::size_t indent) {
  return Row(c, std::to_string(index + 1), name, BatchStateText(exec, false), BatchStateText(exported, true), indent);
}

}  // namespace

std::string TaskListText(const CBatchTaskList& tasks) {
  if (tasks.empty()) return "no batch tasks in this drawing\n";
  Columns c;
  for (const CBatchTaskInfo& t : tasks) {
    c.name = std::max(c.name, DisplayWidth(t.m_strName) + 1);
    for (const CBatchToolInfo& tool : t.m_vecTools)
      c.name = std::max(c.name, DisplayWidth(tool.m_strName) + 1 + kToolIndent);
  }
  std::string text = Row(c, "序号", "任务名称", "执行状态", "导出状态", 0);
  for (std::size_t i = 0; i < tasks.size(); ++i) {
    const CBatchTaskInfo& t = tasks[i];
    text += Row(c, i, t.m_strName, t.m_nExecState, t.m_nExportState, 0);
    if (!t.m_vecTools.empty()) text += Row(c, "序号", "刀具名称", "执行状态", "导出状态", kToolIndent);
    for (std::size_t k = 0; k < t.m_vecTools.size(); ++k) {
      const CBatchToolInfo& tool = t.m_vecTools[k];
      text += Row(c, k, tool.m_strName, tool.m_nExecState, tool.m_nExportState, kToolIndent);
    }
  }
  return text;
}

std::string ParamsText(const CEncircleCalInfo& info) {
  CEncircleParaSetDlg dlg;
  dlg.m_info = info;
  dlg.OnInitDialog();
  std::string text = std::string("计算方位：") + (dlg.m_nSide ? "下半边" : "上半边") + "\n";
  text += std::string("排除虚线：") + (dlg.m_nRemoveDashed ? "是" : "否") + "\n";
  text += std::string("左右包络线是否竖直：") + (dlg.m_nVerticalEnds ? "是" : "否") + "\n";
  const auto texts = dlg.EditTexts();
  for (const auto& edit : CEncircleParaSetDlg::Edits()) text += std::string(edit.label) + texts.at(edit.nControl) + "\n";
  return text;
}

void ParamsJson(Json& j, const CEncircleCalInfo& info) {
  j.beginObject()
      .key("side").value(info.m_nAxisDir != 0 ? "lower" : "upper")
      .key("remove_dashed").value(info.m_bRemoveDashed)
      .key("vertical_ends").value(info.m_bVerticalEnds)
      .key("point_tol").value(info.m_tolPoint.equalPoint())
      .key("line_tol").value(info.m_tolLine.equalPoint())
      .key("fine_tol").value(info.m_tolFine.equalPoint())
      .key("step").value(info.m_dStep)
      .key("break_length").value(info.m_dBreakLength)
      .endObject();
}

void TaskListJson(Json& j, const CBatchTaskList& tasks) {
  j.beginArray();
  for (std::size_t i = 0; i < tasks.size(); ++i) {
    const CBatchTaskInfo& t = tasks[i];
    j.beginObject().key("number").value(static_cast<int>(i + 1)).key("name").value(t.m_strName);
    j.key("exec_state").value(t.m_nExecState).key("exec_text").value(BatchStateText(t.m_nExecState, false));
    j.key("export_state").value(t.m_nExportState).key("export_text").value(BatchStateText(t.m_nExportState, true));
    j.key("params");
    ParamsJson(j, t.m_calInfo);
    j.key("tools").beginArray();
    for (std::size_t k = 0; k < t.m_vecTools.size(); ++k) {
      const CBatchToolInfo& tool = t.m_vecTools[k];
      j.beginObject().key("number").value(static_cast<int>(k + 1)).key("name").value(tool.m_strName);
      j.key("centre").beginArray().value(tool.m_ptCenter.x).value(tool.m_ptCenter.y).endArray();
      j.key("entities").value(tool.m_arrEntityIds.length());
      j.key("outline");
      if (const std::string h = HandleOf(tool.m_idOutline); h.empty()) j.null();
      else j.value(h);
      j.key("exec_state").value(tool.m_nExecState).key("exec_text").value(BatchStateText(tool.m_nExecState, false));
      j.key("export_state").value(tool.m_nExportState).key("export_text").value(BatchStateText(tool.m_nExportState, true));
      j.endObject();
    }
    j.endArray().endObject();
  }
  j.endArray();
}

void ToolEventJson(Json& j, const BatchToolEvent& e, bool exporting) {
  j.beginObject().key("task").value(e.task->m_strName).key("tool").value(e.tool->m_strName);
  j.key("ok").value(e.ok).key("seconds").value(e.seconds);
  j.key("state").value(exporting ? e.tool->m_nExportState : e.tool->m_nExecState);
  if (exporting) j.key("skipped").value(e.skipped);
  if (!e.problem.empty()) j.key("problem").value(e.problem);
  if (exporting) {
    j.key("files").beginArray();
    for (const std::string& f : e.files) j.value(f);
    j.endArray();
    j.key("volume");
    if (e.volume) j.value(*e.volume);
    else j.null();
  } else {
    j.key("outline");
    if (const std::string h = HandleOf(e.tool->m_idOutline); h.empty()) j.null();
    else j.value(h);
  }
  j.endObject();
}

std::vector<BatchReportRow> ReportRows(const std::vector<CBatchTaskInfo*>& tasks, const ToolRecords& records) {
  std::vector<BatchReportRow> rows;
  for (const CBatchTaskInfo* task : tasks) {
    for (const CBatchToolInfo& tool : task->m_vecTools) {
      BatchReportRow row;
      row.task = task->m_strName;
      row.tool = tool.m_strName;
      row.execState = BatchStateText(tool.m_nExecState, false);
      row.exportState = BatchStateText(tool.m_nExportState, true);
      OutlineReport outline;
      if (!tool.m_idOutline.isNull() && MakeOutlineReport(tool.m_idOutline, outline)) {
        row.nVertices = static_cast<int>(outline.vertices.size());
        row.dLength = outline.dLength;
        row.dArea = outline.dArea;
      }
      if (const auto it = records.find(&tool); it != records.end()) {
        row.dSeconds = it->second.seconds;
        row.files = it->second.files;
        row.dVolume = it->second.volume;
      }
      rows.push_back(row);
    }
  }
  return rows;
}

}  // namespace cli
