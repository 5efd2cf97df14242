#pragma once
// How every subcommand talks to its user. Results go to standard output,
// warnings and errors to standard error. --json makes standard output one
// JSON document, an error included ({"command", "status": "error",
// "message", "exit_code"}); --quiet leaves only errors; --verbose adds what
// each step did and how long it took (on standard error, so that standard
// output stays the same).
#include <chrono>
#include <string>
#include <vector>

namespace cli {

class Json;

struct Console {
  std::string command;  // "outline", as in "envline outline: ..."
  bool json = false, quiet = false, verbose = false;

  // Finds --json, --quiet (-q) and --verbose (-v) anywhere in args, so that
  // an error in an argument before them is already reported as asked.
  static Console scan(std::string command, const std::vector<std::string>& args);
  // Whether a is one of those flags (the parsers accept and skip them).
  static bool isFlag(const std::string& a);

  // An error: "envline COMMAND: message" on standard error and, with
  // --json, the error object on standard output. Returns code.
  int fail(int code, const std::string& message) const;
  // A usage error (exit 2) that points to the command's --help.
  int usage(const std::string& message) const;
  // "warning: text" on standard error, unless --quiet.
  void warn(const std::string& text) const;
  // A step's detail on standard error, only with --verbose.
  void detail(const std::string& text) const;
  // Whether plain text results go to standard output.
  bool text() const { return !json && !quiet; }
};

// "12.3 ms" since t, for --verbose.
std::string MsText(std::chrono::steady_clock::time_point t);

// The error object --json prints, written into j (for a list of results).
void ErrorJson(Json& j, const std::string& command, const std::string& message, int code);

}  // namespace cli
