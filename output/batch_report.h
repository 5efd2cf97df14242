#pragma once
// The report of a batch run, one row per tool, as an Excel workbook (.xlsx)
// or as comma-separated text (.csv, UTF-8), chosen by the file's extension.
#include <optional>
#include <string>
#include <vector>

struct BatchReportRow {
  std::string task;
  std::string tool;
  std::string execState;    // as the batch list shows it: "已完成", "生成错误", ...
  std::string exportState;
  std::optional<int> nVertices;      // of the outline; none without one
  std::optional<double> dLength;     // the outline's length, arcs included
  std::optional<double> dArea;       // the area it encloses
  std::optional<double> dVolume;     // of the revolved solid; none when not exported
  std::vector<std::string> files;    // written by the export
  double dSeconds = 0;               // computing and exporting the tool
};

// The column titles, in order.
const std::vector<std::string>& BatchReportColumns();

// Writes the report beside the target and renames it into place; false with
// a message naming the file when it cannot be written or the extension is
// neither .xlsx nor .csv.
bool WriteBatchReport(const std::string& path, const std::vector<BatchReportRow>& rows, std::string& error);
bool WriteBatchReportXlsx(const std::string& path, const std::vector<BatchReportRow>& rows, std::string& error);
bool WriteBatchReportCsv(const std::string& path, const std::vector<BatchReportRow>& rows, std::string& error);
