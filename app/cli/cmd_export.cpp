// envline export: outlines in a drawing to solids (SAT, STEP, STL), named
// by the tool numbers of their drawing frames.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <set>

#include "app/cli/arguments.h"
#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "app/cli/json.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/ed/document.h"
#include "output/solid_export.h"
#include "output/units.h"

namespace cli {

namespace {
const char* kHelp =
    "usage: envline export DRAWING.dxf... --dir DIR [--handles H1,...] [--formats sat,step,stl]\n"
    "                      [--delete-outline] [--keep-solid] [--orient drawing|z] [--stl-tolerance T]\n"
    "                      [--units U] [-o OUT.dxf | --out-dir DIR2] [--write-on-failure]\n"
    "                      [--json] [--quiet] [--verbose]\n"
    "\n"
    "Revolves outlines (the polylines --handles names, or else every polyline on\n"
    "layer TempEncircleLine) about their axis, the longest edge whose ends have\n"
    "equal y, and writes each solid to DIR, named by the tool number of the\n"
    "drawing frame that holds the outline (outline_<handle> outside any frame;\n"
    "a name already used, by this drawing or an earlier one, adds _<handle>).\n"
    "Outlines without such an edge are passed over. Several drawings are\n"
    "exported one after the other into the same DIR.\n"
    "\n"
    "  --formats LIST        any of sat, step, stl (default sat)\n"
    "  --orient drawing|z    where the solid lies: as drawn (default), or with the\n"
    "                        tool's axis along +Z and its left end at the origin\n"
    "  --stl-tolerance T     chordal tolerance of the STL mesh (0.01 mm)\n"
    "  --units U             the drawing's unit (mm, cm, m, inch, ft, ...) instead of\n"
    "                        its $INSUNITS; the files carry millimetres\n"
    "  --delete-outline      erase the exported outlines from the drawing\n"
    "  --keep-solid          keep the solids in the drawing (written with -o)\n"
    "  -o OUT.dxf            write the drawing afterwards (the input is never changed)\n"
    "  --out-dir DIR2        with several drawings: each written to DIR2 under its name\n"
    "  --write-on-failure    write the drawing also when some outline was not exported\n"
    "                        (exit 3); without it such a run writes no drawing\n"
    "  --json                the result as JSON on standard output (an array for several\n"
    "                        drawings; an error as an object with status, message, exit_code)\n"
    "  --quiet               nothing but errors; --verbose: also times and passed-over outlines\n"
    "\n"
    "Prints the files written and 导出成功 when every outline was exported,\n"
    "otherwise the messages.\n"
    "Exit codes: 0 every outline exported, 3 some were not (or there was none),\n"
    "2 bad usage, 1 files.\n"
    "\n"
    "Examples:\n"
    "  envline export drill_out.dxf --dir solids --formats sat,step\n"
    "      every outline of the drawing (as envline outline wrote it) as SAT and STEP\n"
    "  envline export sheet_out.dxf --dir solids --handles D0,D1 --orient z --formats stl\n"
    "  envline export out/*.dxf --dir solids --json\n";

}  // namespace

namespace {

struct ExportOptions {
  Console con;
  std::vector<std::string> inputs, handles;
  std::string dir, output, outDir;
  bool writeOnFailure = false;
  OutlineExport base;
  int units = -1;  // from the drawing
};

// Exports the outlines of one drawing into o.dir, naming files apart from
// usedNames; the drawing goes to output when given. Its result goes into
// j. Returns the exit code.
int exportDrawing(const ExportOptions& o, const std::string& input, const std::string& output,
                  std::set<std::string>& usedNames, Json& j) {
  const Console& con = o.con;
  auto fail = [&](int code, const std::string& message) {
    std::fprintf(stderr, "envline export: %s\n", message.c_str());
    ErrorJson(j, "export", message, code);
    return code;
  };
  const auto clock = std::chrono::steady_clock::now();
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfFile(input, drawing, diag)) return fail(1, diag.error);
  con.detail("read " + input + " in " + MsText(clock));
  AcDbDatabase* db = drawing.database.get();
  OutlineExport base = o.base;
  int units = o.units;
  if (units < 0) {
    units = db->insunits();
    if (units == 0) con.warn(input + ": " + kUnitlessWarning);
  }
  base.millimetresPerUnit = MillimetresPerUnit(units);
  AcApDocument* doc = acDocManagerPtr()->openBorrowedDocument(db, input);
  struct CloseDoc {
    AcApDocument* doc;
    ~CloseDoc() { acDocManagerPtr()->closeDocument(doc); }
  } closeDoc{doc};

  // The named polylines, or every polyline on the outline layer.
  AcArray<AcDbObjectId> selection;
  if (o.handles.empty()) {
    for (AcDbObjectId id : host::allEntities(db)) {
      AcDbObjectPointer<AcDbPolyline> pl(id, AcDb::kForRead);
      if (pl && host::equalsNoCase(pl->layer(), "TempEncircleLine")) selection.append(id);
    }
  } else {
    for (const std::string& h : o.handles) {
      AcDbObjectId id;
      if (db->getAcDbObjectId(id, false, AcDbHandle::fromHex(h)) != Acad::eOk)
        return fail(2, input + ": no entity has the handle '" + h + "'");
      AcDbObjectPointer<AcDbPolyline> pl(id, AcDb::kForRead);
      if (pl) selection.append(id);  // only polylines are selectable here
    }
  }
  const std::vector<DrawingFrame> frames = CollectDrawingFrames();
  std::vector<std::string> messages, files, writeErrors;
  const int outlines = selection.length();
  int exported = 0;
  for (AcDbObjectId id : selection) {
    OutlineExport request = base;
    request.outline = id;
    const std::string handle = id.handle().toHex();
    if (!OutlineAxisPoint(id, request.centre)) {
      con.detail("outline " + handle + " passed over: no edge along the axis");
      continue;
    }
    // The tool number names the files; an outline outside every frame, or a
    // name used already (in this drawing or an earlier one), adds its
    // handle, and then a number, rather than overwrite.
    auto ask = [&](const std::string&, const std::string&, const std::string& proposed) {
      std::string name = proposed.empty() ? "outline_" + handle : proposed;
      if (!usedNames.insert(name).second) {
        const std::string stem = name + "_" + handle;
        name = stem;
        for (int n = 2; !usedNames.insert(name).second; ++n) name = stem + "_" + std::to_string(n);
      }
      return (std::filesystem::path(o.dir) / name).string();
    };
    ExportDetail detail;
    const std::size_t before = messages.size();
    ExportOutline(request, frames, ask, messages, &detail);
    if (messages.size() == before) {
      ++exported;
      files.insert(files.end(), detail.files.begin(), detail.files.end());
    }
    for (const std::string& e : detail.writeErrors) {
      std::fprintf(stderr, "envline export: %s\n", e.c_str());
      writeErrors.push_back(e);
    }
  }
  // Nothing exported is no success, also when there was nothing to export;
  // such a run writes no drawing unless asked to.
  const int code = exported == outlines && exported > 0 ? 0 : 3;
  const bool write = !output.empty() && (code == 0 || o.writeOnFailure);
  if (write && !host::dxf::writeDxfFile(output, drawing, {}, diag)) return fail(1, diag.error);
  if (write) con.detail("wrote " + output);
  if (con.json) {
    j.beginObject().key("command").value("export").key("status").value(code == 0 ? "ok" : "incomplete");
    j.key("exit_code").value(code).key("input").value(input).key("output");
    if (write) j.value(output);
    else j.null();
    j.key("outlines").value(outlines).key("exported").value(exported).key("files").beginArray();
    for (const auto& f : files) j.value(f);
    j.endArray().key("messages").beginArray();
    for (const auto& m : messages) j.value(m);
    for (const auto& e : writeErrors) j.value(e);
    j.endArray().key("warnings").beginArray();
    for (const auto& w : diag.warnings) j.value(w);
    j.endArray().endObject();
    return code;
  }
  for (const auto& w : diag.warnings) con.warn(w);
  if (!con.text()) return code;
  for (const std::string& f : files) std::printf("%s\n", f.c_str());
  std::printf("%s\n", ExportReport(messages).c_str());
  if (exported < outlines) std::printf("%d of %d outlines exported\n", exported, outlines);
  if (!output.empty() && !write)
    std::printf("%s not written: not every outline was exported (--write-on-failure writes it anyway)\n",
                output.c_str());
  return code;
}

}  // namespace

int runExport(const Args& args) {
  ExportOptions o;
  o.con = Console::scan("export", args);
  const Console& con = o.con;
  std::set<std::string> formats{"sat"};
  o.base.bDeleteSolid = true;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto next = [&]() -> const std::string* { return i + 1 < args.size() ? &args[++i] : nullptr; };
    if (a == "-h" || a == "--help") {
      std::fputs(kHelp, stdout);
      return 0;
    } else if (Console::isFlag(a)) {
      continue;
    } else if (a == "--dir" || a == "--out-dir") {
      const std::string* v = next();
      if (!v || v->empty()) return con.usage(a + " needs a folder");
      (a == "--dir" ? o.dir : o.outDir) = *v;
    } else if (a == "-o" || a == "--output") {
      const std::string* v = next();
      if (!v) return con.usage("-o needs a file name");
      o.output = *v;
    } else if (a == "--handles") {
      const std::string* v = next();
      if (!v) return con.usage("--handles needs H1,H2,...");
      o.handles = SplitList(*v);
    } else if (a == "--formats") {
      const std::string* v = next();
      if (!v) return con.usage("--formats needs a list");
      formats.clear();
      for (const std::string& f : SplitList(*v)) {
        if (f != "sat" && f != "step" && f != "stl") return con.usage("unknown format '" + f + "' (sat, step, stl)");
        formats.insert(f);
      }
    } else if (a == "--orient") {
      const std::string* v = next();
      if (!v || (*v != "drawing" && *v != "z")) return con.usage("--orient is drawing or z");
      o.base.orientation = *v == "z" ? SolidOrientation::kAxisZ : SolidOrientation::kDrawing;
    } else if (a == "--stl-tolerance") {
      const std::string* v = next();
      std::vector<double> t;
      if (!v || !SplitNumbers(*v, t, 1) || !(t[0] > 0)) return con.usage("--stl-tolerance needs a positive number");
      o.base.stlTolerance = t[0];
    } else if (a == "--units") {
      const std::string* v = next();
      if (!v || !UnitsFromName(*v, o.units)) return con.usage("--units needs a unit (mm, cm, m, inch, ft, ...)");
    } else if (a == "--delete-outline") {
      o.base.bDeleteOutline = true;
    } else if (a == "--keep-solid") {
      o.base.bDeleteSolid = false;
    } else if (a == "--write-on-failure") {
      o.writeOnFailure = true;
    } else if (!a.empty() && a[0] != '-') {
      o.inputs.push_back(a);
    } else {
      return con.usage("unexpected argument '" + a + "'");
    }
  }
  if (o.inputs.empty()) return con.usage("a drawing file is required");
  if (o.dir.empty()) return con.usage("--dir DIR is required");
  if (!o.output.empty() && !o.outDir.empty()) return con.usage("-o and --out-dir exclude each other");
  if (const std::string clash = StdoutClash(con.json, {o.output}); !clash.empty()) return con.usage(clash);
  if (o.inputs.size() > 1 && !o.output.empty())
    return con.usage("several drawings are written with --out-dir DIR2, not -o");
  if (o.inputs.size() > 1 && o.handles.size())
    return con.usage("--handles names the entities of one drawing: give one drawing");
  // Where each drawing goes, if anywhere: never onto an input, never two onto one file.
  std::vector<std::string> outputs;
  for (const std::string& in : o.inputs) {
    const std::string out =
        !o.outDir.empty() ? (std::filesystem::path(o.outDir) / std::filesystem::path(in).filename()).string() : o.output;
    if (!out.empty()) {
      for (const std::string& other : o.inputs)
        if (SameFile(other, out)) return con.usage("'" + out + "' is an input drawing; the input is never overwritten");
      for (const std::string& earlier : outputs)
        if (SameFile(earlier, out)) return con.usage("two drawings would both be written to '" + out + "'");
    }
    outputs.push_back(out);
  }
  o.base.formats = formats;
  for (const std::string& folder : {o.dir, o.outDir}) {
    if (folder.empty()) continue;
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (!std::filesystem::is_directory(folder)) return con.fail(1, folder + ": cannot make the folder");
  }
  Json j;
  const bool several = o.inputs.size() > 1;
  if (several && con.json) j.beginArray();
  std::set<std::string> usedNames;
  int worst = 0;
  auto rank = [](int c) { return c == 1 ? 3 : c == 2 ? 2 : c == 3 ? 1 : 0; };
  for (std::size_t k = 0; k < o.inputs.size(); ++k) {
    const int code = exportDrawing(o, o.inputs[k], outputs[k], usedNames, j);
    if (rank(code) > rank(worst)) worst = code;
  }
  if (several && con.json) j.endArray();
  if (con.json) std::printf("%s\n", j.str().c_str());
  return worst;
}

}  // namespace cli
