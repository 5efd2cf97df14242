// The batch report as a workbook and as comma-separated text, read back by
// openpyxl and Python's csv module.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "output/batch_report.h"

namespace {

std::vector<BatchReportRow> Rows() {
  BatchReportRow done{"铣刀任务", "T-0001", "已完成", "已完成", 12, 101.25, 40.5, 900.125,
                      {"/tmp/out/T-0001.sat", "/tmp/out/T-0001.step"}, 0.5};
  BatchReportRow failed{"铣刀任务", "名称, \"引号\"", "生成错误", "未开始", {}, {}, {}, {}, {}, 0.25};
  return {done, failed};
}

std::filesystem::path TempDir() {
  auto dir = std::filesystem::temp_directory_path() / ("batch_report_" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  return dir;
}

// Runs a Python check; the script prints "ok" on success.
std::string Python(const std::string& script) {
  const auto dir = TempDir();
  const auto file = dir / "check.py";
  std::ofstream(file) << script;
  const std::string out = (dir / "check.out").string();
  const int rc = std::system(("/usr/bin/python3 " + file.string() + " > " + out + " 2>&1").c_str());
  std::stringstream text;
  text << std::ifstream(out).rdbuf();
  return rc == 0 ? text.str() : "exit " + std::to_string(rc) + ": " + text.str();
}

TEST(BatchReport, WorkbookReadsBackWithChineseIntact) {
  if (std::system("/usr/bin/python3 -c 'import openpyxl' 2>/dev/null") != 0) GTEST_SKIP() << "no python3-openpyxl";
  const auto path = TempDir() / "报告.xlsx";
  std::string error;
  ASSERT_TRUE(WriteBatchReport(path.string(), Rows(), error)) << error;
  const std::string result = Python(
      "import openpyxl\n"
      "ws = openpyxl.load_workbook(r'''" + path.string() + "''').active\n"
      "rows = [[c.value for c in r] for r in ws.iter_rows()]\n"
      "assert ws.title == '批量生成包络线', ws.title\n"
      "assert rows[0] == ['任务名称','刀具名称','执行状态','导出状态','顶点数','轮廓长度','轮廓面积','实体体积','导出文件','用时(秒)'], rows[0]\n"
      "assert rows[1] == ['铣刀任务','T-0001','已完成','已完成',12,101.25,40.5,900.125,'/tmp/out/T-0001.sat; /tmp/out/T-0001.step',0.5], rows[1]\n"
      "assert rows[2] == ['铣刀任务','名称, \"引号\"','生成错误','未开始',None,None,None,None,None,0.25], rows[2]\n"
      "assert len(rows) == 3\n"
      "print('ok')\n");
  EXPECT_EQ(result, "ok\n");
}

TEST(BatchReport, CsvReadsBackWithQuotingAndChinese) {
  const auto path = TempDir() / "report.CSV";
  std::string error;
  ASSERT_TRUE(WriteBatchReport(path.string(), Rows(), error)) << error;
  const std::string result = Python(
      "import csv\n"
      "rows = list(csv.reader(open(r'''" + path.string() + "''', encoding='utf-8-sig', newline='')))\n"
      "assert rows[0][0] == '任务名称' and rows[0][9] == '用时(秒)', rows[0]\n"
      "assert rows[1][:5] == ['铣刀任务','T-0001','已完成','已完成','12'], rows[1]\n"
      "assert float(rows[1][7]) == 900.125 and rows[1][8] == '/tmp/out/T-0001.sat; /tmp/out/T-0001.step', rows[1]\n"
      "assert rows[2][1] == '名称, \"引号\"' and rows[2][4:8] == ['','','',''], rows[2]\n"
      "print('ok')\n");
  EXPECT_EQ(result, "ok\n");
}

TEST(BatchReport, RefusesOtherExtensionsAndUnwritableFolders) {
  std::string error;
  EXPECT_FALSE(WriteBatchReport((TempDir() / "report.txt").string(), Rows(), error));
  EXPECT_NE(error.find("report.txt"), std::string::npos);
  for (const char* name : {"/nonexistent-folder/r.xlsx", "/nonexistent-folder/r.csv"}) {
    error.clear();
    EXPECT_FALSE(WriteBatchReport(name, Rows(), error));
    EXPECT_NE(error.find(name), std::string::npos) << error;
  }
}

}  // namespace
