// envline convert: load a drawing and save it, by default in the version read.
#include <cstdio>

#include "app/cli/arguments.h"
#include "app/cli/commands.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/encoding.h"

namespace cli {

namespace {
const char* kHelp =
    "usage: envline convert IN.dxf -o OUT.dxf [--version R2000|R2004|R2007|R2010|R2013|R2018]\n"
    "                       [--codepage ANSI_936|ANSI_1252|...]\n"
    "\n"
    "Reads a drawing (ASCII or binary, R12 to R2018) and writes it as ASCII DXF.\n"
    "Without --version the drawing keeps its version and everything in it is\n"
    "written back as it was read. With --version it is converted; data the\n"
    "target version cannot hold is left out with a warning that says what.\n"
    "Versions before R2007 hold text in one code page: the drawing's own when\n"
    "it holds all the text, else one that does (ANSI_936 for Chinese);\n"
    "--codepage chooses it. Characters the page cannot hold are written as\n"
    "\\U+ escapes, with a warning.\n"
    "The input file is never changed: -o naming it is refused.\n";
}

int runConvert(const Args& args) {
  std::string in, out, version, codePage;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "-h" || a == "--help") {
      std::fputs(kHelp, stdout);
      return 0;
    }
    if ((a == "-o" || a == "--output") && i + 1 < args.size()) out = args[++i];
    else if (a == "--version" && i + 1 < args.size()) version = args[++i];
    else if (a == "--codepage" && i + 1 < args.size()) codePage = args[++i];
    else if (!a.empty() && a[0] != '-' && in.empty()) in = a;
    else {
      std::fprintf(stderr, "envline convert: unexpected argument '%s'\n%s", a.c_str(), kHelp);
      return 2;
    }
  }
  if (in.empty() || out.empty()) {
    std::fprintf(stderr, "envline convert: an input file and -o OUT.dxf are required\n%s", kHelp);
    return 2;
  }
  if (SameFile(in, out)) {
    std::fprintf(stderr, "envline convert: -o names the input drawing; the input is never overwritten\n");
    return 2;
  }
  if (!version.empty() && !host::dxf::findVersion(version)) {
    std::fprintf(stderr, "envline convert: unknown version '%s' (use R2000, R2004, R2007, R2010, R2013 or R2018)\n",
                 version.c_str());
    return 2;
  }
  if (!codePage.empty() && host::dxf::iconvName(codePage).empty()) {
    std::fprintf(stderr, "envline convert: unknown code page '%s' (e.g. ANSI_936, ANSI_1252)\n", codePage.c_str());
    return 2;
  }
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfFile(in, drawing, diag)) {
    std::fprintf(stderr, "envline convert: %s\n", diag.error.c_str());
    return 1;
  }
  host::dxf::WriteOptions options;
  options.acadVer = version;
  options.codePage = codePage;
  if (!host::dxf::writeDxfFile(out, drawing, options, diag)) {
    std::fprintf(stderr, "envline convert: %s\n", diag.error.c_str());
    return 1;
  }
  for (const auto& w : diag.warnings) std::fprintf(stderr, "warning: %s\n", w.c_str());
  const auto* v = host::dxf::findVersion(options.acadVer.empty() ? drawing.info.acadVer : options.acadVer);
  std::printf("%s -> %s (%s)\n", in.c_str(), out.c_str(), v ? v->release : drawing.info.acadVer.c_str());
  return 0;
}

}  // namespace cli
