// envline run: the headless host. Loads the module through its entry point,
// opens the drawings and runs a script of commands and answers.

#include <cstdio>
#include <memory>

#include "app/cli/commands.h"
#include "host/ed/command_line.h"
#include "host/ed/document.h"
#include "host/ed/host_commands.h"
#include "host/ed/messages.h"
#include "host/ed/rx_app.h"

namespace cli {
namespace {

const char* kRunUsage =
    "Usage: envline run SCRIPT [DRAWING.dxf...]\n"
    "\n"
    "Loads the envline module into the headless host, opens the drawings (the\n"
    "last one current) and runs SCRIPT: one command or answer per line, as a\n"
    "drafting host runs script files.\n"
    "  a command name          OPEN, SAVE, SAVEAS, CLOSE, EXPLODE, ERASE, ZOOM,\n"
    "                          LAYER, LAYON, LAYOFF, DELCONSTRAINT and the\n"
    "                          module's commands (prefixes _ and . allowed)\n"
    "  a selection answer      W x1,y1 x2,y2 | C x1,y1 x2,y2 | A | P | H h1 h2 ...\n"
    "  a point                 x,y or x,y,z\n"
    "  an empty line           Enter (ends a selection)\n"
    "  ESC                     cancels the prompt\n"
    "Prompts and messages go to standard output. The exit status is 1 when a\n"
    "command is unknown or fails or the script ends inside a prompt.\n"
    "Nothing is written unless the script saves; CLOSE of a modified drawing\n"
    "asks whether to save it (Y or N; ESC keeps it open).\n";

}  // namespace

int runScript(const Args& args) {
  if (args.empty() || args[0] == "--help" || args[0] == "-h") {
    std::fputs(kRunUsage, args.empty() ? stderr : stdout);
    return args.empty() ? 2 : 0;
  }
  std::unique_ptr<host::ed::TextInput> script;
  std::string error;
  if (!host::ed::TextInput::fromFile(args[0], script, error)) {
    std::fprintf(stderr, "envline run: %s\n", error.c_str());
    return 2;
  }
  host::ed::setMessageSink([](const std::string& text) {
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
  });
  const std::string module = host::ed::findModule("ENVLINE_MODULE", "libenvline_module.so", ENVLINE_MODULE_PATH);
  if (!acrxDynamicLinkerPtr()->loadModule(module, error)) {
    std::fprintf(stderr, "envline run: the module did not load: %s\n", error.c_str());
    return 2;
  }
  for (std::size_t i = 1; i < args.size(); ++i) {
    if (!host::ed::openDrawing(args[i], error)) {
      std::fprintf(stderr, "envline run: %s\n", error.c_str());
      return 1;
    }
  }
  host::ed::commandLine().setInput(script.get());
  const bool ok = host::ed::commandLine().runInput();
  host::ed::commandLine().setInput(nullptr);
  // Drawings still open are closed without saving.
  while (!acDocManagerPtr()->documents().empty())
    acDocManagerPtr()->closeDocument(acDocManagerPtr()->documents().back().get());
  std::fflush(stdout);
  return ok ? 0 : 1;
}

}  // namespace cli
