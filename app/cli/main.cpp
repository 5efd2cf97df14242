// envline: the command-line front end.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "host/db/operations.h"

namespace {

const char* kUsage =
    "envline - envelope lines of rotational cutting tools from their 2D drawings\n"
    "\n"
    "Usage:\n"
    "  envline info FILE.dxf [--json]\n"
    "                       what a drawing holds: version, code page, units,\n"
    "                       extents, entities by kind and layer, blocks,\n"
    "                       linetypes and the tool frames with their numbers\n"
    "  envline outline DRAWING.dxf -o OUT.dxf [selection] --centre X,Y|auto [options]\n"
    "                       the tool's envelope line, written into the drawing\n"
    "  envline export DRAWING.dxf... --dir DIR [--formats sat,step,stl] [options]\n"
    "                       outlines to solid files named by tool number\n"
    "  envline batch DRAWING.dxf SUBCOMMAND [ARGS] [-o OUT.dxf | --in-place]\n"
    "                       batch tasks kept in the drawing: tasks, new-task,\n"
    "                       add-tool, add-frames, params, run, export, ...\n"
    "  envline outline A.dxf B.dxf ... --out-dir DIR [selection] --centre auto\n"
    "                       the same for several drawings, each to DIR\n"
    "  envline convert IN.dxf -o OUT.dxf [--version R2000..R2018]\n"
    "                       load and save a drawing (a round trip by default)\n"
    "  envline gui [DRAWING.dxf ...]\n"
    "                       the desktop window (envline-gui) with the drawings\n"
    "  envline run SCRIPT [DRAWING.dxf...] [-o OUT.dxf | --out-dir DIR | --in-place]\n"
    "                       the headless host: load the module, open the\n"
    "                       drawings and run a script of commands and answers\n"
    "  envline smoke        build a small tool drawing in memory, explode it and\n"
    "                       report what the drawing host sees (a self-check)\n"
    "  envline --version    print the version\n"
    "  envline --help       print this help\n"
    "\n"
    "\n"
    "Every command takes --json (one JSON document on standard output, an error\n"
    "too: status, message, exit_code), --quiet (only errors) and --verbose (also\n"
    "what each step did, on standard error), and every option also as\n"
    "--option=value. No command writes a drawing it reads unless --in-place.\n"
    "Exit codes: 0 done, 1 a file cannot be read or written, 2 bad usage,\n"
    "3 no result (no outline made, nothing exported, some tools failed).\n"
    "\n"
    "A first session:\n"
    "  envline info drill.dxf                      what is in it: layers, frames, centre lines\n"
    "  envline outline drill.dxf -o drill_out.dxf --window 0,-20,120,20 --centre auto --png drill.png\n"
    "  envline export drill_out.dxf --dir solids --formats sat,step\n"
    "\n"
    "Run 'envline COMMAND --help' for a command's options and examples.\n";

// A stepped shaft drawn as a block, inserted twice (once mirrored about the
// axis): the same operations the outline engine relies on.
int smoke() {
  AcDbDatabase db;
  AcDbObjectId blockId;
  {
    AcDbBlockTable* table = nullptr;
    db.getBlockTable(table, AcDb::kForWrite);
    auto* block = new AcDbBlockTableRecord;
    block->setName("SHAFT");
    table->add(blockId, block);
    block->close();
    table->close();
  }
  const AcGePoint3d profile[] = {{0, 0, 0}, {0, 5, 0}, {20, 5, 0}, {22, 3, 0}, {40, 3, 0}, {40, 0, 0}};
  for (std::size_t i = 0; i + 1 < std::size(profile); ++i) {
    AcDbObjectId id;
    host::appendEntity(&db, new AcDbLine(profile[i], profile[i + 1]), id, blockId);
  }
  AcDbObjectId arcId;
  host::appendEntity(&db, new AcDbArc(AcGePoint3d(30, 3, 0), 1.0, 0.0, 3.141592653589793), arcId, blockId);

  AcDbObjectId upper, lower;
  host::appendEntity(&db, new AcDbBlockReference(AcGePoint3d(0, 0, 0), blockId), upper);
  auto* mirrored = new AcDbBlockReference(AcGePoint3d(0, 0, 0), blockId);
  mirrored->setScaleFactors({1, -1, 1});
  host::appendEntity(&db, mirrored, lower);

  int lines = 0, arcs = 0;
  AcDbExtents all;
  for (const AcDbObjectId ref : {upper, lower}) {
    AcDbObjectIdArray pieces;
    host::explodeEntity(ref, pieces, true);
    for (const AcDbObjectId id : pieces) {
      AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
      if (!ent) continue;
      lines += ent->isKindOf(AcDbLine::desc());
      arcs += ent->isKindOf(AcDbArc::desc());
      AcDbExtents e;
      if (ent->getGeomExtents(e) == Acad::eOk) all.addExt(e);
    }
  }
  std::printf("model space: %d entities (%d lines, %d arcs)\n", host::allEntities(&db).length(), lines, arcs);
  std::printf("extents: (%.3f, %.3f) - (%.3f, %.3f)\n", all.minPoint().x, all.minPoint().y, all.maxPoint().x,
              all.maxPoint().y);
  const bool ok = lines == 10 && arcs == 2 && all.maxPoint().y == 5 && all.minPoint().y == -5;
  std::printf("%s\n", ok ? "drawing host: ok" : "drawing host: unexpected result");
  return ok ? 0 : 1;
}

// Starts the desktop window, found beside this program (installed) or in
// the build tree's app/gui; returns only when it cannot be started.
int gui(int argc, char** argv) {
  namespace fs = std::filesystem;
  std::error_code ec;
  const fs::path self = fs::read_symlink("/proc/self/exe", ec);
  for (const fs::path& candidate : {self.parent_path() / "envline-gui", self.parent_path() / ".." / "gui" / "envline-gui"}) {
    if (ec || !fs::exists(candidate)) continue;
    std::vector<char*> args{const_cast<char*>("envline-gui")};
    for (int i = 2; i < argc; ++i) args.push_back(argv[i]);
    args.push_back(nullptr);
    execv(candidate.c_str(), args.data());
  }
  std::fprintf(stderr, "envline gui: envline-gui was not found beside %s\n", self.c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || !std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h")) {
    std::fputs(kUsage, stdout);
    return argc < 2 ? 2 : 0;
  }
  const std::string command = argv[1];
  if (command == "--version") {
    std::puts("envline 0.1.0");
    return 0;
  }
  // Every option also as --opt=value.
  cli::Args rest;
  for (int i = 2; i < argc; ++i) {
    const std::string a = argv[i];
    const std::size_t eq = a.find('=');
    if (a.size() > 2 && a.compare(0, 2, "--") == 0 && eq != std::string::npos && eq > 2) {
      rest.push_back(a.substr(0, eq));
      rest.push_back(a.substr(eq + 1));
    } else {
      rest.push_back(a);
    }
  }
  if (command == "smoke") return smoke();
  if (command == "gui") return gui(argc, argv);
  if (command == "convert") return cli::runConvert(rest);
  if (command == "info") return cli::runInfo(rest);
  if (command == "outline") return cli::runOutline(rest);
  if (command == "export") return cli::runExport(rest);
  if (command == "batch") return cli::runBatch(rest);
  if (command == "run") return cli::runScript(rest);
  cli::Console::scan("", rest).fail(2, "unknown command '" + command + "' (see envline --help)");
  return 2;
}
