#pragma once
// Progress of envline batch on standard error: a bar with counts, elapsed
// and remaining time on a terminal, a line per tool otherwise, nothing with
// --quiet. The bar is the module's progress display with a terminal view.
#include <string>

#include "ui/batch_tasks.h"

namespace cli {

enum class ProgressStyle { kNone, kBar, kLines };
// kBar when standard error is a terminal, kLines otherwise, kNone when quiet.
ProgressStyle ChooseProgressStyle(bool quiet);

// Installs the terminal view of the progress display for its life and
// prints what happens to each tool.
class BatchProgressPrinter {
 public:
  BatchProgressPrinter(ProgressStyle style, std::string verb);
  ~BatchProgressPrinter();
  BatchProgressPrinter(const BatchProgressPrinter&) = delete;
  BatchProgressPrinter& operator=(const BatchProgressPrinter&) = delete;

  void OnTool(const BatchToolEvent& event);

 private:
  ProgressStyle m_style;
  std::string m_verb;
};

}  // namespace cli
