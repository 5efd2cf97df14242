#include <cstdio>

#include "app/cli/commands.h"

namespace cli {
int runInfo(const Args&) {
  std::fputs("envline info: not built yet\n", stderr);
  return 1;
}
}  // namespace cli
