// The batch controller on a drawing whose tasks are already set up: runs and
// exports every task with the progress display shown as a window would show
// it, prints per-tool times, and measures what the progress display costs
// per step so that its share of the run can be stated.
//
// usage: batch_controller_bench DRAWING.dxf OUTPUT_FOLDER
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "host/dxf/dxf_file.h"
#include "host/ed/document.h"
#include "shell/task_store.h"
#include "ui/batch_tasks.h"
#include "ui/progress_dialog.h"

namespace {

using Clock = std::chrono::steady_clock;

// Keeps what a window would draw: the title, the bar and the text.
class TextView : public ProgressView {
 public:
  void SetTitle(const std::string& t) override { m_title = t; }
  void SetRange(int, int u) override { m_upper = u; }
  void SetPosition(int p) override { m_pos = p; }
  void SetText(const std::string& t) override { m_text = t; }
  void PumpMessages() override {}

 private:
  std::string m_title, m_text;
  int m_upper = 0, m_pos = 0;
};

double Seconds(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: batch_controller_bench DRAWING.dxf OUTPUT_FOLDER\n");
    return 2;
  }
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfFile(argv[1], drawing, diag)) {
    std::fprintf(stderr, "%s\n", diag.error.c_str());
    return 1;
  }
  AcApDocument* doc = acDocManagerPtr()->openBorrowedDocument(drawing.database.get(), argv[1]);
  std::vector<std::string> warnings;
  CBatchTaskList tasks;
  LoadTaskList(drawing.database.get(), tasks, warnings);
  std::vector<CBatchTaskInfo*> all;
  int tools = 0;
  for (CBatchTaskInfo& t : tasks) {
    all.push_back(&t);
    tools += static_cast<int>(t.m_vecTools.size());
  }
  SetProgressViewFactory([] { return std::make_unique<TextView>(); });

  std::vector<double> runTimes, exportTimes;
  int steps = 0;
  auto start = Clock::now();
  RunTasks(all, [&](const BatchToolEvent& e) { runTimes.push_back(e.seconds); });
  const double run = Seconds(start);
  BatchExportOptions options;
  options.folder = argv[2];
  std::filesystem::create_directories(options.folder);
  options.formats = {"sat", "step"};
  start = Clock::now();
  ExportTasks(all, options, [&](const BatchToolEvent& e) { exportTimes.push_back(e.seconds); });
  const double exported = Seconds(start);
  steps = 2 * tools + static_cast<int>(tasks.size());  // the run steps once more per task, at 0

  // The display on its own: open, the steps of a run of this size, close.
  constexpr int kRepeats = 200;
  start = Clock::now();
  for (int r = 0; r < kRepeats; ++r) {
    OpenProgress();
    for (int i = 0; i < tools; ++i) StepProgress(tools, i);
    CloseProgress();
  }
  const double perStep = Seconds(start) / (kRepeats * static_cast<double>(tools));

  auto stats = [](const std::vector<double>& v, double& mean, double& worst) {
    mean = worst = 0;
    for (double s : v) mean += s, worst = std::max(worst, s);
    mean = v.empty() ? 0 : mean / static_cast<double>(v.size());
  };
  double runMean, runWorst, expMean, expWorst;
  stats(runTimes, runMean, runWorst);
  stats(exportTimes, expMean, expWorst);
  int failed = 0;
  for (const CBatchTaskInfo& t : tasks)
    for (const CBatchToolInfo& tool : t.m_vecTools) failed += tool.m_nExecState != 1 || tool.m_nExportState != 1;
  std::printf("controller: %d tools in %zu tasks, %d not done\n", tools, tasks.size(), failed);
  std::printf("  run      %8.3f s total, per tool %6.1f ms mean, %6.1f ms worst\n", run, runMean * 1e3, runWorst * 1e3);
  std::printf("  export   %8.3f s total, per tool %6.1f ms mean, %6.1f ms worst (SAT + STEP)\n", exported,
              expMean * 1e3, expWorst * 1e3);
  std::printf("  progress %8.3f us per step, %d steps = %.4f s, %.3f %% of run + export (target <= 1 %%)\n",
              perStep * 1e6, steps, perStep * steps, 100 * perStep * steps / (run + exported));
  acDocManagerPtr()->closeDocument(doc);
  return failed ? 3 : 0;
}
