// The batch controller on a drawing whose tasks are already set up: runs and
// exports every task with the progress display shown as a window would show
// it, prints per-tool times, and measures what the progress display costs
// per step so that its share of the run can be stated.
//
// usage: batch_controller_bench DRAWING.dxf OUTPUT_FOLDER [--qt]
// With --qt the display is the Qt progress window (run it under Xvfb or
// with QT_QPA_PLATFORM=offscreen).
#include <time.h>

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
#include "ui/qt/dialog_views.h"

#include <QApplication>
#include <QLabel>

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

// Time spent in the display, on the wall clock and in this thread's CPU
// time (the machine may be shared: the CPU time is what the display itself
// costs); the first event pump of each window and the others apart.
struct DisplayTime {
  double wall = 0, cpu = 0, firstPump = 0, pumps = 0;
  int pumpCount = 0;
};
DisplayTime g_display;

double ThreadCpuSeconds() {
  timespec ts{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) + 1e-9 * static_cast<double>(ts.tv_nsec);
}

// Adds the time f takes to the display's time; returns the wall time.
template <class F>
double Timed(F f) {
  const auto start = std::chrono::steady_clock::now();
  const double cpu = ThreadCpuSeconds();
  f();
  const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  g_display.wall += wall;
  g_display.cpu += ThreadCpuSeconds() - cpu;
  return wall;
}

// Forwards to a view and adds up the time its calls take during the run;
// the view is made (and a window shown) inside the timing too.
class TimedView : public ProgressView {
 public:
  template <class Make>
  explicit TimedView(Make make) {
    Timed([&] { m_inner = make(); });
  }
  void SetTitle(const std::string& t) override { Timed([&] { m_inner->SetTitle(t); }); }
  void SetRange(int l, int u) override { Timed([&] { m_inner->SetRange(l, u); }); }
  void SetPosition(int p) override { Timed([&] { m_inner->SetPosition(p); }); }
  void SetText(const std::string& t) override { Timed([&] { m_inner->SetText(t); }); }
  void PumpMessages() override {
    const double wall = Timed([&] { m_inner->PumpMessages(); });
    // The first pump of a window draws it for the first time.
    (m_pumped++ ? g_display.pumps : g_display.firstPump) += wall;
    g_display.pumpCount += m_pumped > 1;
  }

 private:
  std::unique_ptr<ProgressView> m_inner;
  int m_pumped = 0;
};

double Seconds(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

}  // namespace

int main(int argc, char** argv) {
  const bool qt = argc == 4 && std::string(argv[3]) == "--qt";
  if (argc != 3 && !qt) {
    std::fprintf(stderr, "usage: batch_controller_bench DRAWING.dxf OUTPUT_FOLDER [--qt]\n");
    return 2;
  }
  int qtArgc = 1;
  std::unique_ptr<QApplication> app;
  if (qt) app = std::make_unique<QApplication>(qtArgc, argv);
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
  // The progress window opens over the desktop window, which is on the
  // screen before any batch runs (with Chinese text in its menus): the start
  // of Qt's window system and fonts is the program's, not the display's.
  std::unique_ptr<QWidget> desktop;
  double qtStart = 0;
  if (qt) {
    const auto s = Clock::now();
    desktop = std::make_unique<QLabel>("刀具  批量生成包络线  包络线计算");
    desktop->resize(800, 600);
    desktop->show();
    QApplication::processEvents();
    qtStart = Seconds(s);
  }
  SetProgressViewFactory([qt]() -> std::unique_ptr<ProgressView> {
    if (qt) return std::make_unique<TimedView>([] { return std::make_unique<ui::qt::ProgressWindow>(); });
    return std::make_unique<TimedView>([] { return std::make_unique<TextView>(); });
  });

  std::vector<double> runTimes, exportTimes;
  int steps = 0;
  const double cpuStart = ThreadCpuSeconds();
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
  const double runCpu = ThreadCpuSeconds() - cpuStart;
  // The display's time during the run and export only, not in the loop below.
  const DisplayTime inRun = g_display;
  steps = 2 * tools + static_cast<int>(tasks.size());  // the run steps once more per task, at 0

  // The display on its own: open, the steps of a run of this size, close.
  const int kRepeats = qt ? 5 : 200;
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
  std::printf("controller (%s progress display): %d tools in %zu tasks, %d not done\n",
              qt ? "Qt window" : "text", tools, tasks.size(), failed);
  std::printf("  run      %8.3f s total, per tool %6.1f ms mean, %6.1f ms worst\n", run, runMean * 1e3, runWorst * 1e3);
  std::printf("  export   %8.3f s total, per tool %6.1f ms mean, %6.1f ms worst (SAT + STEP)\n", exported,
              expMean * 1e3, expWorst * 1e3);
  std::printf("  progress %8.4f s in the display during run + export (%d steps), %.3f %% of them (target <= 1 %%);\n"
              "           %.4f s of this thread's CPU time, %.3f %% of the run's;\n"
              "           %.1f us per step in a tight loop of steps\n",
              inRun.wall, steps, 100 * inRun.wall / (run + exported), inRun.cpu,
              100 * inRun.cpu / std::max(1e-9, runCpu), perStep * 1e6);
  std::printf("           of which %.4f s in the first event pump of each window (drawing it), %.4f s in the\n"
              "           other pumps (%.1f us each)\n",
              inRun.firstPump, inRun.pumps, 1e6 * inRun.pumps / std::max(1, inRun.pumpCount));
  if (qt)
    std::printf("           (not counted: %.4f s for Qt's first window of the process, the desktop window's)\n", qtStart);
  acDocManagerPtr()->closeDocument(doc);
  return failed ? 3 : 0;
}
