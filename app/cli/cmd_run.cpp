// envline run: the headless host. Loads the module through its entry point,
// opens the drawings and runs a script of commands and answers.

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>

#include "app/cli/arguments.h"
#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "app/cli/json.h"
#include "host/ed/command_line.h"
#include "host/ed/document.h"
#include "host/ed/host_commands.h"
#include "host/ed/messages.h"
#include "host/ed/rx_app.h"

namespace cli {
namespace {

const char* kRunUsage =
    "Usage: envline run SCRIPT [DRAWING.dxf...] [-o OUT.dxf | --out-dir DIR | --in-place]\n"
    "                   [--json] [--quiet] [--verbose]\n"
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
    "\n"
    "Nothing is written unless the script saves, and a drawing the run read is\n"
    "never overwritten unless --in-place: SAVE of a drawing given here writes to\n"
    "  -o OUT.dxf              (one drawing)\n"
    "  --out-dir DIR           DIR/NAME.dxf for each drawing NAME.dxf\n"
    "  --in-place              the drawing itself (and SAVEAS may name a drawing read)\n"
    "and without one of them SAVE of such a drawing, or SAVEAS naming a drawing\n"
    "the run read, fails with the reason. CLOSE of a modified drawing asks\n"
    "whether to save it (Y or N; ESC keeps it open), and its Y obeys the same rule.\n"
    "\n"
    "  --json                  one JSON object on standard output: status, exit_code,\n"
    "                          the files written and the transcript of prompts and\n"
    "                          messages (an error: status, message, exit_code)\n"
    "  --quiet                 no transcript; a failure's last message on standard error\n"
    "  --verbose               also the module loaded, the drawings opened and the\n"
    "                          files written, on standard error\n"
    "\n"
    "Prompts and messages go to standard output. Exit codes: 0 the script ran,\n"
    "1 a command is unknown or fails, a drawing cannot be read, or the script\n"
    "ends inside a prompt; 2 bad usage.\n"
    "\n"
    "Examples:\n"
    "  envline run samples/explode_frame.scr          (OPEN, EXPLODE, SAVEAS a new file)\n"
    "  envline run explode.scr drill.dxf -o drill_exploded.dxf   (the script ends with SAVE)\n"
    "  envline run explode.scr a.dxf b.dxf --out-dir exploded/\n";

}  // namespace

int runScript(const Args& args) {
  const Console con = Console::scan("run", args);
  std::string scriptPath, output, outDir;
  std::vector<std::string> drawings;
  bool inPlace = false;
  if (args.empty()) return con.usage("a script is required");
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--help" || a == "-h") {
      std::fputs(kRunUsage, stdout);
      return 0;
    } else if (Console::isFlag(a)) {
      continue;
    } else if (a == "-o" || a == "--output" || a == "--out-dir") {
      if (i + 1 >= args.size() || args[i + 1].empty()) return con.usage(a + " needs a name");
      (a == "--out-dir" ? outDir : output) = args[++i];
    } else if (a == "--in-place") {
      inPlace = true;
    } else if (!a.empty() && a[0] != '-') {
      (scriptPath.empty() ? scriptPath : drawings.emplace_back()) = a;
    } else {
      return con.usage("unexpected argument '" + a + "'");
    }
  }
  if (scriptPath.empty()) return con.usage("a script is required");
  if (int(!output.empty()) + int(!outDir.empty()) + int(inPlace) > 1)
    return con.usage("-o, --out-dir and --in-place exclude each other");
  if (const std::string clash = StdoutClash(con.json, {output}); !clash.empty()) return con.usage(clash);
  if (!output.empty() && drawings.size() != 1) return con.usage("-o goes with one drawing (use --out-dir for several)");
  // Where SAVE of each drawing given here goes.
  std::map<std::string, std::string> saveTo;
  for (const std::string& d : drawings) {
    const std::string out = !output.empty()   ? output
                            : !outDir.empty() ? (std::filesystem::path(outDir) / std::filesystem::path(d).filename()).string()
                                              : std::string();
    if (out.empty()) continue;
    for (const std::string& other : drawings)
      if (SameFile(other, out)) return con.usage("'" + out + "' is an input drawing; give --in-place to write into it");
    for (const auto& [in, earlier] : saveTo)
      if (SameFile(earlier, out)) return con.usage("two drawings would both be saved to '" + out + "'");
    saveTo[d] = out;
  }
  if (!outDir.empty()) {
    std::error_code ec;
    std::filesystem::create_directories(outDir, ec);
    if (!std::filesystem::is_directory(outDir)) return con.fail(1, outDir + ": cannot make the folder");
  }
  std::unique_ptr<host::ed::TextInput> script;
  std::string error;
  if (!host::ed::TextInput::fromFile(scriptPath, script, error)) return con.fail(2, error);

  // The transcript: on standard output as it happens, or kept for --json
  // and --quiet.
  std::string transcript;
  const bool live = con.text();
  host::ed::setMessageSink([&](const std::string& text) {
    if (live) {
      std::fputs(text.c_str(), stdout);
      std::fflush(stdout);
    } else {
      transcript += text;
    }
  });
  // Drawings this run read (given here or opened by the script) are not
  // overwritten unless --in-place; files it wrote may be written again.
  std::vector<std::string> read = drawings, written;
  host::ed::setSaveRule([&](const std::string& fileName, std::string& target, std::string& why) {
    for (const auto& [in, out] : saveTo)
      if (SameFile(target, in) && SameFile(fileName, in)) target = out;
    if (!inPlace) {
      std::vector<std::string> protectedFiles = read;
      for (const auto& doc : acDocManagerPtr()->documents()) protectedFiles.push_back(doc->fileName());
      bool ours = false;
      for (const std::string& w : written) ours = ours || SameFile(w, target);
      for (const std::string& p : protectedFiles)
        if (!ours && SameFile(p, target)) {
          why = target + " is a drawing this run read; it is not overwritten (give envline run -o, --out-dir or "
                         "--in-place)";
          return false;
        }
    }
    written.push_back(target);
    con.detail("writing " + target);
    return true;
  });
  struct Reset {
    ~Reset() {
      host::ed::setSaveRule(nullptr);
      host::ed::setMessageSink(nullptr);
    }
  } reset;

  const std::string module = host::ed::findModule("ENVLINE_MODULE", "libenvline_module.so", ENVLINE_MODULE_PATH);
  if (!acrxDynamicLinkerPtr()->loadModule(module, error)) return con.fail(2, "the module did not load: " + error);
  con.detail("loaded " + module);
  for (const std::string& d : drawings) {
    if (!host::ed::openDrawing(d, error)) return con.fail(1, error);
    con.detail("opened " + d);
  }
  host::ed::commandLine().setInput(script.get());
  const bool ok = host::ed::commandLine().runInput();
  host::ed::commandLine().setInput(nullptr);
  // Drawings still open are closed without saving.
  while (!acDocManagerPtr()->documents().empty())
    acDocManagerPtr()->closeDocument(acDocManagerPtr()->documents().back().get());
  std::fflush(stdout);
  const int code = ok ? 0 : 1;
  if (con.json) {
    Json j;
    j.beginObject().key("command").value("run").key("status").value(ok ? "ok" : "failed").key("exit_code").value(code);
    j.key("script").value(scriptPath).key("drawings").beginArray();
    for (const std::string& d : drawings) j.value(d);
    j.endArray().key("written").beginArray();
    for (const std::string& w : written) j.value(w);
    j.endArray().key("transcript").value(transcript).endObject();
    std::printf("%s\n", j.str().c_str());
  } else if (!ok && !live) {
    // --quiet: the message that ended the run, the last line that is no prompt.
    std::string last, line;
    for (std::size_t i = 0; i <= transcript.size(); ++i) {
      if (i < transcript.size() && transcript[i] != '\n') {
        line += transcript[i];
        continue;
      }
      if (!line.empty() && line.rfind("Command:", 0) != 0) last = line;
      line.clear();
    }
    std::fprintf(stderr, "envline run: %s\n", last.c_str());
  }
  return code;
}

}  // namespace cli
