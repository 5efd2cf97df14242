#pragma once
// The progress display "任务进度" without its window: counts, elapsed time
// and the estimate of the time left, for the batch run and export. The batch
// loops reach it only through OpenProgress, StepProgress and CloseProgress,
// which act on the one progress display of the module.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

// What shows the progress: a window, a bar on a terminal, plain lines.
class ProgressView {
 public:
  virtual ~ProgressView() = default;
  virtual void SetTitle(const std::string& title) = 0;
  virtual void SetRange(int lower, int upper) = 0;
  virtual void SetPosition(int position) = 0;
  virtual void SetText(const std::string& text) = 0;
  // The numbers of the text, for views that lay them out their own way.
  virtual void ShowCounts(int /*total*/, int /*done*/, int /*failed*/, int /*elapsed*/, int /*remaining*/) {}
  // Handles every event waiting for the user interface, so that it stays
  // responsive between the items of a long loop.
  virtual void PumpMessages() = 0;
};

// Now, in whole seconds.
using ProgressClock = std::function<std::int64_t()>;
std::int64_t WallClockSeconds();

class CDialogProgress {
 public:
  explicit CDialogProgress(std::unique_ptr<ProgressView> view, ProgressClock clock = WallClockSeconds);

  // Range 0..100, start time, the title "执行进度".
  void OnInitDialog();
  // Shows total, done, failed and the estimate; the bar's range is cut to
  // 16 bits as a progress bar holds it.
  void Update(int total, int done, int failed, double weight);
  void SetTitle(const std::string& title);
  // Composes the summary of the run (it is not shown) and closes the view.
  void DestroyWindow();

  ProgressView& View() { return *m_view; }
  bool Started() const { return m_bStarted; }
  int Failed() const { return m_nFailed; }

 private:
  std::unique_ptr<ProgressView> m_view;
  ProgressClock m_clock;
  std::int64_t m_tStart = 0;
  bool m_bStarted = false;
  int m_nSummaryTotal = 0;  // read by the summary; nothing sets it
  int m_nFailed = 0;
};

// The text under the bar and the (unshown) summary of a run.
std::string ProgressText(int total, int done, int failed, std::int64_t elapsed, int remaining);
std::string ProgressSummary(int total, int failed, std::int64_t elapsed);
// Seconds left: elapsed × total / done − elapsed, scaled by the weight. At
// done = 0 there is nothing to estimate from and 0 is shown.
int EstimateRemaining(std::int64_t elapsed, int total, int done, double weight);
// The upper end of the bar's range as a 16-bit range message carries it.
int BarRange(int total);

// Makes the view of the module's progress display; the front end installs
// it (none: the progress is kept without being shown).
using ProgressViewFactory = std::function<std::unique_ptr<ProgressView>()>;
void SetProgressViewFactory(ProgressViewFactory factory, ProgressClock clock = WallClockSeconds);

// The module's progress display. Steps before opening or after closing do
// nothing; each step first pumps the view's waiting messages and passes 0
// failures.
void OpenProgress();
void StepProgress(int total, int done, double weight = 1.0);
void SetProgressTitle(const std::string& title);
void CloseProgress();
// The open progress display, or null.
CDialogProgress* CurrentProgress();

extern const char* const kProgressCaption;  // "任务进度"
extern const char* const kProgressTitle;    // "执行进度"
