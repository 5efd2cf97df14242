// envline convert: load a drawing and save it, by default in the version read.
#include <chrono>
#include <cstdio>

#include "app/cli/arguments.h"
#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "app/cli/json.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/encoding.h"

namespace cli {

namespace {
const char* kHelp =
    "usage: envline convert IN.dxf -o OUT.dxf [--version R2000|R2004|R2007|R2010|R2013|R2018]\n"
    "                       [--codepage ANSI_936|ANSI_1252|...] [--json] [--quiet] [--verbose]\n"
    "\n"
    "Reads a drawing (ASCII or binary, R12 to R2018) and writes it as ASCII DXF.\n"
    "Without --version the drawing keeps its version and everything in it is\n"
    "written back as it was read. With --version it is converted; data the\n"
    "target version cannot hold is left out with a warning that says what.\n"
    "Versions before R2007 hold text in one code page: the drawing's own when\n"
    "it holds all the text, else one that does (ANSI_936 for Chinese);\n"
    "--codepage chooses it. Characters the page cannot hold are written as\n"
    "\\U+ escapes, with a warning.\n"
    "The input file is never changed: -o naming it is refused.\n"
    "\n"
    "  --json      the result as one JSON object on standard output (also an error:\n"
    "              status, message, exit_code)\n"
    "  --quiet     nothing but errors; --verbose: what was read and written, with times\n"
    "\n"
    "Exit codes: 0 written, 2 bad usage, 1 unreadable input or unwritable output.\n"
    "\n"
    "Examples:\n"
    "  envline convert drill.dxf -o drill_copy.dxf          the round trip: same version\n"
    "  envline convert drill.dxf -o drill_r2000.dxf --version R2000\n"
    "  envline convert sheet.dxf -o sheet_gbk.dxf --version R2004 --codepage ANSI_936\n";
}

int runConvert(const Args& args) {
  const Console con = Console::scan("convert", args);
  std::string in, out, version, codePage;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "-h" || a == "--help") {
      std::fputs(kHelp, stdout);
      return 0;
    }
    if (Console::isFlag(a)) continue;
    if ((a == "-o" || a == "--output") && i + 1 < args.size()) out = args[++i];
    else if (a == "--version" && i + 1 < args.size()) version = args[++i];
    else if (a == "--codepage" && i + 1 < args.size()) codePage = args[++i];
    else if (!a.empty() && a[0] != '-' && in.empty()) in = a;
    else return con.usage("unexpected argument '" + a + "'");
  }
  if (in.empty() || out.empty()) return con.usage("an input file and -o OUT.dxf are required");
  if (const std::string clash = StdoutClash(con.json, {out}); !clash.empty()) return con.usage(clash);
  if (SameFile(in, out)) return con.usage("-o names the input drawing; the input is never overwritten");
  if (!version.empty() && !host::dxf::findVersion(version))
    return con.usage("unknown version '" + version + "' (use R2000, R2004, R2007, R2010, R2013 or R2018)");
  if (!codePage.empty() && host::dxf::iconvName(codePage).empty())
    return con.usage("unknown code page '" + codePage + "' (e.g. ANSI_936, ANSI_1252)");
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  auto clock = std::chrono::steady_clock::now();
  if (!host::dxf::readDxfFile(in, drawing, diag)) return con.fail(1, diag.error);
  con.detail("read " + in + " in " + MsText(clock));
  host::dxf::WriteOptions options;
  options.acadVer = version;
  options.codePage = codePage;
  clock = std::chrono::steady_clock::now();
  if (!host::dxf::writeDxfFile(out, drawing, options, diag)) return con.fail(1, diag.error);
  con.detail("wrote " + out + " in " + MsText(clock));
  const auto* v = host::dxf::findVersion(options.acadVer.empty() ? drawing.info.acadVer : options.acadVer);
  const std::string release = v ? v->release : drawing.info.acadVer;
  if (con.json) {
    Json j;
    j.beginObject().key("command").value("convert").key("status").value("ok").key("exit_code").value(0);
    j.key("input").value(in).key("output").value(out).key("version").value(release);
    j.key("warnings").beginArray();
    for (const auto& w : diag.warnings) j.value(w);
    j.endArray().endObject();
    std::printf("%s\n", j.str().c_str());
    return 0;
  }
  for (const auto& w : diag.warnings) con.warn(w);
  if (con.text()) std::printf("%s -> %s (%s)\n", in.c_str(), out.c_str(), release.c_str());
  return 0;
}

}  // namespace cli
