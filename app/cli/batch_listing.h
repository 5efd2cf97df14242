#pragma once
// What envline batch shows of a drawing's tasks: the lists as text (the
// dialog's columns), as JSON, and the rows of a run's report.
#include <map>
#include <string>
#include <vector>

#include "app/cli/json.h"
#include "output/batch_report.h"
#include "ui/batch_tasks.h"

namespace cli {

// The task list with each task's tools under it, in the dialog's columns.
std::string TaskListText(const CBatchTaskList& tasks);
// A task's parameters, one "label value" per line.
std::string ParamsText(const CEncircleCalInfo& info);

void TaskListJson(Json& j, const CBatchTaskList& tasks);
void ParamsJson(Json& j, const CEncircleCalInfo& info);
void ToolEventJson(Json& j, const BatchToolEvent& e, bool exporting);

// What a run or an export did to one tool, gathered over the command.
struct ToolRecord {
  double seconds = 0;
  std::vector<std::string> files;
  std::optional<double> volume;
};
using ToolRecords = std::map<const CBatchToolInfo*, ToolRecord>;

// One report row per tool of the tasks, in list order.
std::vector<BatchReportRow> ReportRows(const std::vector<CBatchTaskInfo*>& tasks, const ToolRecords& records);

}  // namespace cli
