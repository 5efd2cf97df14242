#pragma once
// The subcommands of envline; each takes the arguments after its name and
// returns the process exit code.
#include <string>
#include <vector>

namespace cli {
using Args = std::vector<std::string>;
int runSmoke(const Args& args);
int runConvert(const Args& args);
int runInfo(const Args& args);
int runOutline(const Args& args);
int runExport(const Args& args);
int runBatch(const Args& args);
int runScript(const Args& args);
}  // namespace cli
