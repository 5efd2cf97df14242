// envline export: outlines in a drawing to solids (SAT, STEP, STL), named
// by the tool numbers of their drawing frames.
#include <cstdio>
#include <filesystem>
#include <set>

#include "app/cli/arguments.h"
#include "app/cli/commands.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/ed/document.h"
#include "output/solid_export.h"
#include "output/units.h"

namespace cli {

namespace {
const char* kHelp =
    "usage: envline export DRAWING.dxf --dir DIR [--handles H1,...] [--formats sat,step,stl]\n"
    "                      [--delete-outline] [--keep-solid] [--orient drawing|z] [--stl-tolerance T]\n"
    "                      [-o OUT.dxf]\n"
    "\n"
    "Revolves outlines (the polylines --handles names, or else every polyline on\n"
    "layer TempEncircleLine) about their axis, the longest edge whose ends have\n"
    "equal y, and writes each solid to DIR, named by the tool number of the\n"
    "drawing frame that holds the outline (outline_<handle> outside any frame;\n"
    "a second outline in one frame adds _<handle>).\n"
    "Outlines without such an edge are passed over.\n"
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
    "\n"
    "Prints 导出成功 when every outline was exported, otherwise the messages.\n"
    "Exit codes: 0 every outline exported, 3 some were not (or there was none),\n"
    "2 bad usage, 1 files.\n";

int usage(const std::string& m) {
  std::fprintf(stderr, "envline export: %s\n(run 'envline export --help' for the options)\n", m.c_str());
  return 2;
}
}  // namespace

int runExport(const Args& args) {
  std::string input, dir, output;
  std::vector<std::string> handles;
  std::set<std::string> formats{"sat"};
  OutlineExport base;
  base.bDeleteSolid = true;
  int units = -1;  // from the drawing
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto next = [&]() -> const std::string* { return i + 1 < args.size() ? &args[++i] : nullptr; };
    if (a == "-h" || a == "--help") {
      std::fputs(kHelp, stdout);
      return 0;
    } else if (a == "--dir") {
      const std::string* v = next();
      if (!v) return usage("--dir needs a folder");
      dir = *v;
    } else if (a == "-o" || a == "--output") {
      const std::string* v = next();
      if (!v) return usage("-o needs a file name");
      output = *v;
    } else if (a == "--handles") {
      const std::string* v = next();
      if (!v) return usage("--handles needs H1,H2,...");
      handles = SplitList(*v);
    } else if (a == "--formats") {
      const std::string* v = next();
      if (!v) return usage("--formats needs a list");
      formats.clear();
      for (const std::string& f : SplitList(*v)) {
        if (f != "sat" && f != "step" && f != "stl") return usage("unknown format '" + f + "' (sat, step, stl)");
        formats.insert(f);
      }
    } else if (a == "--orient") {
      const std::string* v = next();
      if (!v || (*v != "drawing" && *v != "z")) return usage("--orient is drawing or z");
      base.orientation = *v == "z" ? SolidOrientation::kAxisZ : SolidOrientation::kDrawing;
    } else if (a == "--stl-tolerance") {
      const std::string* v = next();
      char* end = nullptr;
      const double t = v ? std::strtod(v->c_str(), &end) : 0;
      if (!v || *end || !(t > 0)) return usage("--stl-tolerance needs a positive number");
      base.stlTolerance = t;
    } else if (a == "--units") {
      const std::string* v = next();
      if (!v || !UnitsFromName(*v, units)) return usage("--units needs a unit (mm, cm, m, inch, ft, ...)");
    } else if (a == "--delete-outline") {
      base.bDeleteOutline = true;
    } else if (a == "--keep-solid") {
      base.bDeleteSolid = false;
    } else if (!a.empty() && a[0] != '-' && input.empty()) {
      input = a;
    } else {
      return usage("unexpected argument '" + a + "'");
    }
  }
  if (input.empty()) return usage("a drawing file is required");
  if (dir.empty()) return usage("--dir DIR is required");
  if (!output.empty() && SameFile(input, output))
    return usage("-o names the input drawing; the input is never overwritten");
  base.formats = formats;
  std::error_code ec;
  std::filesystem::create_directories(dir, ec);
  if (!std::filesystem::is_directory(dir)) {
    std::fprintf(stderr, "envline export: %s: cannot make the folder\n", dir.c_str());
    return 1;
  }
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfFile(input, drawing, diag)) {
    std::fprintf(stderr, "envline export: %s\n", diag.error.c_str());
    return 1;
  }
  AcDbDatabase* db = drawing.database.get();
  if (units < 0) {
    units = db->insunits();
    if (units == 0) std::fprintf(stderr, "warning: %s\n", kUnitlessWarning);
  }
  base.millimetresPerUnit = MillimetresPerUnit(units);
  AcApDocument* doc = acDocManagerPtr()->openBorrowedDocument(db, input);
  struct CloseDoc {
    AcApDocument* doc;
    ~CloseDoc() { acDocManagerPtr()->closeDocument(doc); }
  } closeDoc{doc};

  // The named polylines, or every polyline on the outline layer.
  AcArray<AcDbObjectId> selection;
  if (handles.empty()) {
    for (AcDbObjectId id : host::allEntities(db)) {
      AcDbObjectPointer<AcDbPolyline> pl(id, AcDb::kForRead);
      if (pl && host::equalsNoCase(pl->layer(), "TempEncircleLine")) selection.append(id);
    }
  } else {
    for (const std::string& h : handles) {
      AcDbObjectId id;
      if (db->getAcDbObjectId(id, false, AcDbHandle::fromHex(h)) != Acad::eOk)
        return usage("no entity has the handle '" + h + "'");
      AcDbObjectPointer<AcDbPolyline> pl(id, AcDb::kForRead);
      if (pl) selection.append(id);  // only polylines are selectable here
    }
  }
  const std::vector<DrawingFrame> frames = CollectDrawingFrames();
  std::vector<std::string> messages;
  const int outlines = selection.length();
  int exported = 0;
  std::set<std::string> usedNames;
  for (AcDbObjectId id : selection) {
    OutlineExport request = base;
    request.outline = id;
    if (!OutlineAxisPoint(id, request.centre)) continue;  // passed over silently
    // The tool number names the files; an outline outside every frame, or a
    // second one in the same frame, adds its handle rather than overwrite.
    const std::string handle = id.handle().toHex();
    auto ask = [&](const std::string&, const std::string&, const std::string& proposed) {
      std::string name = proposed.empty() ? "outline_" + handle : proposed;
      if (!usedNames.insert(name).second) name += "_" + handle;
      return (std::filesystem::path(dir) / name).string();
    };
    ExportDetail detail;
    const std::size_t before = messages.size();
    ExportOutline(request, frames, ask, messages, &detail);
    if (messages.size() == before) {
      ++exported;
      for (const std::string& f : detail.files) std::printf("%s\n", f.c_str());
    }
    for (const std::string& e : detail.writeErrors) std::fprintf(stderr, "envline export: %s\n", e.c_str());
  }
  if (!output.empty() && !host::dxf::writeDxfFile(output, drawing, {}, diag)) {
    std::fprintf(stderr, "envline export: %s\n", diag.error.c_str());
    return 1;
  }
  for (const auto& w : diag.warnings) std::fprintf(stderr, "warning: %s\n", w.c_str());
  std::printf("%s\n", ExportReport(messages).c_str());
  if (exported < outlines)
    std::printf("%d of %d outlines exported\n", exported, outlines);
  // Nothing exported is no success, also when there was nothing to export.
  return exported == outlines && exported > 0 ? 0 : 3;
}

}  // namespace cli
