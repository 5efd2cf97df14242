#include "app/cli/console.h"

#include <cstdio>

#include "app/cli/json.h"

namespace cli {

Console Console::scan(std::string command, const std::vector<std::string>& args) {
  Console c;
  c.command = std::move(command);
  for (const std::string& a : args) {
    if (a == "--json") c.json = true;
    else if (a == "--quiet" || a == "-q") c.quiet = true;
    else if (a == "--verbose" || a == "-v") c.verbose = true;
  }
  return c;
}

bool Console::isFlag(const std::string& a) {
  return a == "--json" || a == "--quiet" || a == "-q" || a == "--verbose" || a == "-v";
}

int Console::fail(int code, const std::string& message) const {
  std::fprintf(stderr, "envline%s%s: %s\n", command.empty() ? "" : " ", command.c_str(), message.c_str());
  if (json) {
    Json j;
    ErrorJson(j, command, message, code);
    std::printf("%s\n", j.str().c_str());
    std::fflush(stdout);
  }
  return code;
}

int Console::usage(const std::string& message) const {
  if (!json) std::fprintf(stderr, "envline %s: %s\n(run 'envline %s --help' for the options)\n", command.c_str(),
                          message.c_str(), command.c_str());
  else fail(2, message);
  return 2;
}

void Console::warn(const std::string& text) const {
  if (!quiet) std::fprintf(stderr, "warning: %s\n", text.c_str());
}

void Console::detail(const std::string& text) const {
  if (verbose) std::fprintf(stderr, "%s\n", text.c_str());
}

std::string MsText(std::chrono::steady_clock::time_point t) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.1f ms",
                std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t).count());
  return buf;
}

void ErrorJson(Json& j, const std::string& command, const std::string& message, int code) {
  j.beginObject().key("command").value(command).key("status").value("error").key("message").value(message);
  j.key("exit_code").value(code).endObject();
}

}  // namespace cli
