#include "output/batch_report.h"

#include <xlsxwriter.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "host/base/safe_write.h"

namespace {

std::string JoinFiles(const std::vector<std::string>& files) {
  std::string joined;
  for (const std::string& f : files) joined += (joined.empty() ? "" : "; ") + f;
  return joined;
}

std::string Number(double value, int digits) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

std::string CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

}  // namespace

const std::vector<std::string>& BatchReportColumns() {
  static const std::vector<std::string> columns = {"任务名称", "刀具名称", "执行状态", "导出状态", "顶点数",
                                                   "轮廓长度", "轮廓面积", "实体体积", "导出文件", "用时(秒)"};
  return columns;
}

bool WriteBatchReport(const std::string& path, const std::vector<BatchReportRow>& rows, std::string& error) {
  const std::string ext = Lower(std::filesystem::path(path).extension().string());
  if (ext == ".xlsx") return WriteBatchReportXlsx(path, rows, error);
  if (ext == ".csv") return WriteBatchReportCsv(path, rows, error);
  error = path + ": a report is written as .xlsx or .csv";
  return false;
}

bool WriteBatchReportCsv(const std::string& path, const std::vector<BatchReportRow>& rows, std::string& error) {
  std::ostringstream out;
  // The byte order mark lets spreadsheet programs see UTF-8.
  out << "\xEF\xBB\xBF";
  const auto& columns = BatchReportColumns();
  for (std::size_t i = 0; i < columns.size(); ++i) out << (i ? "," : "") << columns[i];
  out << "\r\n";
  for (const BatchReportRow& r : rows) {
    out << CsvField(r.task) << ',' << CsvField(r.tool) << ',' << r.execState << ',' << r.exportState << ','
        << (r.nVertices ? std::to_string(*r.nVertices) : "") << ',' << (r.dLength ? Number(*r.dLength, 6) : "")
        << ',' << (r.dArea ? Number(*r.dArea, 6) : "") << ',' << (r.dVolume ? Number(*r.dVolume, 6) : "") << ','
        << CsvField(JoinFiles(r.files)) << ',' << Number(r.dSeconds, 3) << "\r\n";
  }
  return host::writeFileSafely(path, out.str(), error);
}

bool WriteBatchReportXlsx(const std::string& path, const std::vector<BatchReportRow>& rows, std::string& error) {
  // The library writes the workbook by name: into the safe write's
  // temporary file, then committed.
  host::SafeFile file(path);
  if (!file.open(error)) return false;
  lxw_workbook* book = workbook_new(file.tempPath().c_str());
  if (!book) {
    error = path + ": cannot create the report";
    return false;
  }
  lxw_worksheet* sheet = workbook_add_worksheet(book, "批量生成包络线");
  lxw_format* head = workbook_add_format(book);
  format_set_bold(head);
  lxw_format* real = workbook_add_format(book);
  format_set_num_format(real, "0.000");
  const auto& columns = BatchReportColumns();
  const double widths[] = {16, 16, 10, 10, 8, 12, 12, 14, 60, 10};
  for (lxw_col_t c = 0; c < columns.size(); ++c) {
    worksheet_write_string(sheet, 0, c, columns[c].c_str(), head);
    worksheet_set_column(sheet, c, c, widths[c], nullptr);
  }
  lxw_row_t row = 1;
  for (const BatchReportRow& r : rows) {
    worksheet_write_string(sheet, row, 0, r.task.c_str(), nullptr);
    worksheet_write_string(sheet, row, 1, r.tool.c_str(), nullptr);
    worksheet_write_string(sheet, row, 2, r.execState.c_str(), nullptr);
    worksheet_write_string(sheet, row, 3, r.exportState.c_str(), nullptr);
    if (r.nVertices) worksheet_write_number(sheet, row, 4, *r.nVertices, nullptr);
    if (r.dLength) worksheet_write_number(sheet, row, 5, *r.dLength, real);
    if (r.dArea) worksheet_write_number(sheet, row, 6, *r.dArea, real);
    if (r.dVolume) worksheet_write_number(sheet, row, 7, *r.dVolume, real);
    const std::string files = JoinFiles(r.files);
    if (!files.empty()) worksheet_write_string(sheet, row, 8, files.c_str(), nullptr);
    worksheet_write_number(sheet, row, 9, r.dSeconds, real);
    ++row;
  }
  worksheet_freeze_panes(sheet, 1, 0);
  const lxw_error status = workbook_close(book);
  if (status != LXW_NO_ERROR) {
    error = path + ": " + lxw_strerror(status);
    return false;
  }
  return file.commit(error);
}
