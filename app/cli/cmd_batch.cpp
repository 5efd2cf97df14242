// envline batch: the batch tasks kept in a drawing, listed, edited, run and
// exported from the command line with the batch dialog's rules.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <set>

#include "app/cli/arguments.h"
#include "app/cli/batch_command.h"
#include "app/cli/commands.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/ed/document.h"
#include "shell/task_store.h"

namespace cli {

using namespace batch;

namespace batch {

int Usage(const Options& o, const std::string& m) { return o.con.usage(m); }

bool Changes(const Options& o) {
  if (o.sub == "tasks") return false;
  if (o.sub == "params") return !o.edits.empty() || o.side || o.removeDashed || o.verticalEnds;
  return true;
}

}  // namespace batch

namespace {
const char* kHelp =
    "usage: envline batch DRAWING.dxf SUBCOMMAND [ARGS] [-o OUT.dxf | --in-place] [--json] [--quiet] [--verbose]\n"
    "\n"
    "The batch tasks kept inside a drawing: each task has its outline parameters\n"
    "and a list of tools (entities and a centre point), with an execution and an\n"
    "export state each (未开始, 已完成, 生成错误 / 导出错误).\n"
    "\n"
    "  tasks                          list tasks and tools with their states\n"
    "  new-task NAME                  a new task with the default parameters\n"
    "  add-tool TASK --window X1,Y1,X2,Y2 | --crossing X1,Y1,X2,Y2 | --handles H,...\n"
    "           --centre X,Y|auto [--name N]\n"
    "                                 one tool; named by --name, else by the tool number\n"
    "                                 of the drawing frame around it, else 0001\n"
    "  add-frames TASK                one tool per tagged drawing frame: the entities\n"
    "                                 inside it, its tool number, the centre line in it\n"
    "  params TASK [--side upper|lower] [--remove-dashed yes|no] [--vertical-ends yes|no]\n"
    "              [--point-tol T] [--line-tol T] [--fine-tol T] [--step S] [--break-length L]\n"
    "                                 show or set a task's parameters\n"
    "  run [TASK...]                  compute every tool (of all tasks when none named)\n"
    "  export [TASK...] --dir DIR [--formats sat,step,stl] [--orient drawing|z]\n"
    "                                 the solid of every computed tool, DIR/NAME.sat ...\n"
    "  delete-task TASK               the task, its tools and their outlines\n"
    "  delete-tool TASK TOOL          the tool and its outline\n"
    "  erase-outlines [TASK...]       the outlines of the tasks' tools\n"
    "\n"
    "TASK and TOOL are names, or numbers from 1 as 'tasks' lists them.\n"
    "  -o OUT.dxf, --in-place         where the drawing goes after a change (required\n"
    "                                 for every subcommand that changes it)\n"
    "  --report FILE.xlsx|FILE.csv    run and export: a row per tool with its states,\n"
    "                                 outline, solid, files and time\n"
    "  --json                         a machine-readable result on standard output (an\n"
    "                                 error as an object with status, message, exit_code)\n"
    "  --quiet                        no progress or warnings on standard error\n"
    "  --verbose                      also reading and writing the drawing, with times\n"
    "\n"
    "The drawing is written after a run or export also when some tools failed\n"
    "(exit 3): it keeps their states (生成错误, 导出错误) for the next run.\n"
    "Exit codes: 0 every tool succeeded, 3 some failed, 2 bad usage or an unknown\n"
    "task or tool, 1 unreadable input or unwritable output.\n"
    "\n"
    "Examples:\n"
    "  envline batch sheet.dxf new-task 铣刀 -o work.dxf\n"
    "  envline batch work.dxf add-frames 铣刀 --in-place        one tool per tagged frame\n"
    "  envline batch work.dxf run --in-place --report run.csv\n"
    "  envline batch work.dxf export 铣刀 --dir solids --formats sat,step --in-place\n"
    "  envline batch work.dxf tasks --json\n";

std::optional<int> YesNo(const std::string& v) {
  if (v == "yes" || v == "1" || v == "true") return 1;
  if (v == "no" || v == "0" || v == "false") return 0;
  return std::nullopt;
}

// Parses the arguments; returns 0 to go on, -1 after help, else the exit code.
int Parse(const Args& args, Options& o) {
  o.con = Console::scan("batch", args);
  const std::map<std::string, int> editFlags = {{"--point-tol", 1007}, {"--line-tol", 1022}, {"--fine-tol", 1024},
                                                {"--step", 1023},      {"--break-length", 1026}};
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto value = [&]() -> const std::string* { return i + 1 < args.size() ? &args[++i] : nullptr; };
    std::vector<double> v;
    if (a == "-h" || a == "--help") {
      std::fputs(kHelp, stdout);
      return -1;
    } else if (a == "-o" || a == "--output") {
      const std::string* s = value();
      if (!s) return Usage(o, "-o needs a file name");
      o.output = *s;
    } else if (a == "--in-place") {
      o.inPlace = true;
    } else if (Console::isFlag(a)) {
      o.json = o.con.json;
      o.quiet = o.con.quiet;
    } else if (a == "--report") {
      const std::string* s = value();
      if (!s) return Usage(o, "--report needs FILE.xlsx or FILE.csv");
      o.report = *s;
    } else if (a == "--window" || a == "--crossing") {
      const std::string* s = value();
      if (!s || !SplitNumbers(*s, v, 4)) return Usage(o, a + " needs X1,Y1,X2,Y2");
      (a == "--window" ? o.window : o.crossing) = std::array<double, 4>{v[0], v[1], v[2], v[3]};
    } else if (a == "--handles") {
      const std::string* s = value();
      if (!s) return Usage(o, "--handles needs H1,H2,...");
      o.handles = SplitList(*s);
    } else if (a == "--centre" || a == "--center") {
      const std::string* s = value();
      if (s && *s == "auto") o.autoCentre = true;
      else if (s && SplitNumbers(*s, v, 2)) o.centre = AcGePoint3d(v[0], v[1], 0);
      else return Usage(o, "--centre needs X,Y or auto");
    } else if (a == "--name") {
      const std::string* s = value();
      if (!s) return Usage(o, "--name needs a name");
      o.name = *s;
      o.hasName = true;
    } else if (editFlags.count(a)) {
      const std::string* s = value();
      if (!s) return Usage(o, a + " needs a number");
      o.edits[editFlags.at(a)] = *s;
    } else if (a == "--side") {
      const std::string* s = value();
      if (!s || (*s != "upper" && *s != "lower")) return Usage(o, "--side is upper or lower");
      o.side = *s == "lower" ? 1 : 0;
    } else if (a == "--remove-dashed" || a == "--vertical-ends") {
      const std::string* s = value();
      const auto yes = s ? YesNo(*s) : std::nullopt;
      if (!yes) return Usage(o, a + " is yes or no");
      (a == "--remove-dashed" ? o.removeDashed : o.verticalEnds) = yes;
    } else if (a == "--dir") {
      const std::string* s = value();
      if (!s) return Usage(o, "--dir needs a folder");
      o.dir = *s;
    } else if (a == "--formats") {
      const std::string* s = value();
      if (!s) return Usage(o, "--formats needs a list");
      o.exportOptions.formats.clear();
      for (const std::string& f : SplitList(*s)) {
        if (f != "sat" && f != "step" && f != "stl") return Usage(o, "unknown format '" + f + "' (sat, step, stl)");
        o.exportOptions.formats.insert(f);
      }
    } else if (a == "--orient") {
      const std::string* s = value();
      if (!s || (*s != "drawing" && *s != "z")) return Usage(o, "--orient is drawing or z");
      o.exportOptions.orientation = *s == "z" ? SolidOrientation::kAxisZ : SolidOrientation::kDrawing;
    } else if (!a.empty() && a[0] == '-' && a.size() > 1) {
      return Usage(o, "unknown option '" + a + "'");
    } else if (o.input.empty()) {
      o.input = a;
    } else if (o.sub.empty()) {
      o.sub = a;
    } else {
      o.positional.push_back(a);
    }
  }
  static const std::set<std::string> kSubs = {"tasks", "new-task", "add-tool", "add-frames", "params", "run",
                                              "export", "delete-task", "delete-tool", "erase-outlines"};
  if (o.input.empty()) return Usage(o, "a drawing file is required");
  if (o.sub.empty()) return Usage(o, "a subcommand is required (tasks, new-task, add-tool, ...)");
  if (!kSubs.count(o.sub)) return Usage(o, "unknown subcommand '" + o.sub + "'");
  if (!o.output.empty() && o.inPlace) return Usage(o, "-o and --in-place exclude each other");
  if (const std::string clash = StdoutClash(o.json, {o.output, o.report}); !clash.empty()) return Usage(o, clash);
  if (Changes(o) && o.output.empty() && !o.inPlace)
    return Usage(o, "'" + o.sub + "' changes the drawing: give -o OUT.dxf or --in-place");
  if (!o.inPlace && !o.output.empty() && SameFile(o.input, o.output))
    return Usage(o, "-o names the input drawing; give --in-place to write into it");
  if (o.inPlace) o.output = o.input;
  const std::size_t n = o.positional.size();
  const bool oneTask = o.sub == "new-task" || o.sub == "add-tool" || o.sub == "add-frames" || o.sub == "params" ||
                       o.sub == "delete-task";
  if (oneTask && n != 1) return Usage(o, "'" + o.sub + "' takes one task");
  if (o.sub == "delete-tool" && n != 2) return Usage(o, "'delete-tool' takes a task and a tool");
  if (o.sub == "tasks" && n != 0) return Usage(o, "'tasks' takes no arguments");
  if (o.sub == "add-tool") {
    if (int(o.window.has_value()) + int(o.crossing.has_value()) + int(!o.handles.empty()) != 1)
      return Usage(o, "add-tool needs one of --window, --crossing or --handles");
    if (!o.centre && !o.autoCentre) return Usage(o, "add-tool needs --centre X,Y or --centre auto");
  }
  if (o.sub == "export" && o.dir.empty()) return Usage(o, "export needs --dir DIR");
  if (!o.report.empty() && o.sub != "run" && o.sub != "export") return Usage(o, "--report goes with run or export");
  if (!o.report.empty() && SameFile(o.input, o.report))
    return Usage(o, "'" + o.report + "' is the input drawing; a report never overwrites it");
  o.exportOptions.folder = o.dir;
  return 0;
}

}  // namespace

int runBatch(const Args& args) {
  Options o;
  if (const int code = Parse(args, o); code != 0) return code < 0 ? 0 : code;
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  auto clock = std::chrono::steady_clock::now();
  if (!host::dxf::readDxfFile(o.input, drawing, diag)) return o.con.fail(1, diag.error);
  o.con.detail("read " + o.input + " in " + MsText(clock));
  AcDbDatabase* db = drawing.database.get();
  AcApDocument* doc = acDocManagerPtr()->openBorrowedDocument(db, o.input);
  struct CloseDoc {
    AcApDocument* doc;
    ~CloseDoc() { acDocManagerPtr()->closeDocument(doc); }
  } closeDoc{doc};

  std::vector<std::string> warnings;
  CBatchTaskList tasks;
  LoadTaskList(db, tasks, warnings);  // no store: an empty list
  Json j;
  j.beginObject().key("command").value(o.sub).key("drawing").value(o.input);
  const int code = RunSubcommand(o, tasks, db, j, warnings);
  if (code == 1 || code == 2) return code;

  if (Changes(o)) {
    if (!SaveTaskList(db, tasks, warnings)) {
      for (const auto& w : warnings) std::fprintf(stderr, "envline batch: %s\n", w.c_str());
      return o.con.fail(1, "the tasks cannot be kept in the drawing; " + o.output + " is not written");
    }
    clock = std::chrono::steady_clock::now();
    if (!host::dxf::writeDxfFile(o.output, drawing, {}, diag)) return o.con.fail(1, diag.error);
    o.con.detail("wrote " + o.output + " in " + MsText(clock));
  }
  for (const auto& w : diag.warnings) warnings.push_back(w);
  if (o.json) {
    j.key("output");
    if (Changes(o)) j.value(o.output);
    else j.null();
    j.key("exit_code").value(code).key("warnings").beginArray();
    for (const auto& w : warnings) j.value(w);
    j.endArray().endObject();
    std::printf("%s\n", j.str().c_str());
  } else {
    for (const auto& w : warnings) o.con.warn(w);
  }
  return code;
}

}  // namespace cli
