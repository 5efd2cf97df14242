#include "ui/progress_dialog.h"

#include <chrono>
#include <climits>
#include <cmath>
#include <cstdio>

const char* const kProgressCaption = "任务进度";
const char* const kProgressTitle = "执行进度";

std::int64_t WallClockSeconds() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

namespace {
// A view that shows nothing, for when no front end installed one.
class NoProgressView : public ProgressView {
 public:
  void SetTitle(const std::string&) override {}
  void SetRange(int, int) override {}
  void SetPosition(int) override {}
  void SetText(const std::string&) override {}
  void PumpMessages() override {}
};

int ClampToInt(double value) {
  if (std::isnan(value)) return 0;
  if (value >= static_cast<double>(INT_MAX)) return INT_MAX;
  if (value <= static_cast<double>(INT_MIN)) return INT_MIN;
  return static_cast<int>(value);  // truncates toward zero
}
}  // namespace

CDialogProgress::CDialogProgress(std::unique_ptr<ProgressView> view, ProgressClock clock)
    : m_view(view ? std::move(view) : std::make_unique<NoProgressView>()), m_clock(std::move(clock)) {}

void CDialogProgress::OnInitDialog() {
  m_view->SetRange(0, 100);
  m_tStart = m_clock();
  m_bStarted = true;
  m_view->SetTitle(kProgressTitle);
}

void CDialogProgress::Update(int total, int done, int failed, double weight) {
  m_view->SetRange(0, BarRange(total));
  m_view->SetPosition(done);
  const std::int64_t elapsed = m_clock() - m_tStart;
  const int remaining = EstimateRemaining(elapsed, total, done, weight);
  m_view->SetText(ProgressText(total, done, failed, elapsed, remaining));
  m_view->ShowCounts(total, done, failed, static_cast<int>(elapsed), remaining);
  m_nFailed = failed;
}

void CDialogProgress::SetTitle(const std::string& title) { m_view->SetTitle(title); }

void CDialogProgress::DestroyWindow() {
  // The summary is composed and dropped: a run ends without one.
  [[maybe_unused]] const std::string summary = ProgressSummary(m_nSummaryTotal, m_nFailed, m_clock() - m_tStart);
  m_view.reset(new NoProgressView);
}

std::string ProgressText(int total, int done, int failed, std::int64_t elapsed, int remaining) {
  char text[256];
  std::snprintf(text, sizeof text, "\n总计：%d个 当前处理:第%d个\n失败：%d个 成功：%d个\n已经用时：%d秒 预计还需：%d秒\n", total,
                done, failed, done - failed, static_cast<int>(elapsed), remaining);
  return text;
}

std::string ProgressSummary(int total, int failed, std::int64_t elapsed) {
  char text[256];
  std::snprintf(text, sizeof text, "\n总计：%d个 失败：%d个 成功：%d个 用时：%d秒 平均：%.3f秒/个\n", total, failed,
                total - failed, static_cast<int>(elapsed), static_cast<double>(elapsed) / total);
  return text;
}

int EstimateRemaining(std::int64_t elapsed, int total, int done, double weight) {
  if (done == 0) return 0;
  const double product = static_cast<double>(elapsed * static_cast<std::int64_t>(total));
  const int remaining = ClampToInt(product / done - static_cast<double>(elapsed));
  return ClampToInt(remaining * weight);
}

int BarRange(int total) { return static_cast<std::uint16_t>(total); }

namespace {
struct ProgressFront {
  ProgressViewFactory factory;
  ProgressClock clock = WallClockSeconds;
};

ProgressFront& Front() {
  static ProgressFront front;
  return front;
}

// The module's one progress display; null while none is shown.
std::unique_ptr<CDialogProgress>& Holder() {
  static std::unique_ptr<CDialogProgress> holder;
  return holder;
}
}  // namespace

void SetProgressViewFactory(ProgressViewFactory factory, ProgressClock clock) {
  Front().factory = std::move(factory);
  Front().clock = clock ? std::move(clock) : WallClockSeconds;
}

void OpenProgress() {
  auto& holder = Holder();
  if (holder) holder->DestroyWindow();
  const ProgressFront& front = Front();
  holder = std::make_unique<CDialogProgress>(front.factory ? front.factory() : nullptr, front.clock);
  holder->OnInitDialog();
}

void StepProgress(int total, int done, double weight) {
  CDialogProgress* progress = Holder().get();
  if (!progress) return;
  progress->View().PumpMessages();
  progress->Update(total, done, 0, weight);
}

void SetProgressTitle(const std::string& title) {
  if (CDialogProgress* progress = Holder().get()) progress->SetTitle(title);
}

void CloseProgress() {
  auto& holder = Holder();
  if (!holder) return;
  holder->DestroyWindow();
  holder.reset();
}

CDialogProgress* CurrentProgress() { return Holder().get(); }
