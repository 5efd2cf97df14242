#include "app/cli/batch_progress.h"

#include <unistd.h>

#include <cstdio>

#include "shell/batch_task.h"
#include "ui/progress_dialog.h"

namespace cli {

namespace {

// The progress display drawn as one line that is redrawn in place.
class TerminalBar : public ProgressView {
 public:
  ~TerminalBar() override {
    if (m_drawn) std::fputs("\r\033[K", stderr);
  }
  void SetTitle(const std::string& title) override { m_title = title; }
  void SetRange(int, int) override {}
  void SetPosition(int) override {}
  void SetText(const std::string&) override {}
  void PumpMessages() override {}
  void ShowCounts(int total, int done, int /*failed*/, int elapsed, int remaining) override {
    constexpr int kWidth = 30;
    const int filled = total > 0 ? done * kWidth / total : 0;
    std::string bar(static_cast<std::size_t>(filled), '#');
    bar.resize(kWidth, '.');
    std::fprintf(stderr, "\r\033[K[%s] %d/%d  %ds elapsed", bar.c_str(), done, total, elapsed);
    if (done > 0) std::fprintf(stderr, ", %ds left", remaining);
    std::fflush(stderr);
    m_drawn = true;
  }

 private:
  std::string m_title;
  bool m_drawn = false;
};

}  // namespace

ProgressStyle ChooseProgressStyle(bool quiet) {
  if (quiet) return ProgressStyle::kNone;
  return ::isatty(STDERR_FILENO) ? ProgressStyle::kBar : ProgressStyle::kLines;
}

BatchProgressPrinter::BatchProgressPrinter(ProgressStyle style, std::string verb)
    : m_style(style), m_verb(std::move(verb)) {
  if (m_style == ProgressStyle::kBar) SetProgressViewFactory([] { return std::make_unique<TerminalBar>(); });
}

BatchProgressPrinter::~BatchProgressPrinter() {
  if (m_style == ProgressStyle::kBar) SetProgressViewFactory(nullptr);
}

void BatchProgressPrinter::OnTool(const BatchToolEvent& e) {
  if (m_style == ProgressStyle::kNone) return;
  if (m_style == ProgressStyle::kBar) {
    // Only what went wrong interrupts the bar.
    if (!e.ok) std::fprintf(stderr, "\r\033[K%s\n", e.problem.c_str());
    return;
  }
  const bool exporting = m_verb == "export";
  std::string state;
  if (e.skipped) state = "passed over (no outline)";
  else state = BatchStateText(exporting ? e.tool->m_nExportState : e.tool->m_nExecState, exporting);
  std::fprintf(stderr, "%s %s / %s (%d/%d): %s, %.2f s%s%s\n", m_verb.c_str(), e.task->m_strName.c_str(),
               e.tool->m_strName.c_str(), e.index + 1, e.count, state.c_str(), e.seconds, e.ok ? "" : " - ",
               e.ok ? "" : e.problem.c_str());
  std::fflush(stderr);
}

}  // namespace cli
