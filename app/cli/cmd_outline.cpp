// envline outline: a tool drawing to its envelope line.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "app/cli/arguments.h"
#include "app/cli/commands.h"
#include "app/cli/json.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/ed/document.h"
#include "output/drawing_picture.h"
#include "host/brep/solid.h"
#include "output/outline_report.h"
#include "output/solid_export.h"
#include "ui/centre_line.h"
#include "ui/single_outline_run.h"

namespace cli {

namespace {
const char* kHelp =
    "usage: envline outline DRAWING.dxf -o OUT.dxf [selection] --centre X,Y|auto [options]\n"
    "\n"
    "Computes the envelope line of the tool drawn in DRAWING.dxf and writes the\n"
    "drawing with the outline added (a closed polyline on layer TempEncircleLine,\n"
    "the drawing's arcs restored as bulges) to OUT.dxf.\n"
    "\n"
    "selection (default: every entity of model space)\n"
    "  --window X1,Y1,X2,Y2      entities wholly inside the window\n"
    "  --crossing X1,Y1,X2,Y2    entities inside or crossing it\n"
    "  --handles H1,H2,...       entities by handle\n"
    "  --layer NAME              only entities on this layer (repeatable)\n"
    "centre\n"
    "  --centre X,Y              a point on the tool's axis\n"
    "  --centre auto             the longest horizontal centre line of the selection\n"
    "options\n"
    "  --side upper|lower        calculation side, 上半边 or 下半边 (default upper)\n"
    "  --driver slabs|hatch      the outline method: slab cutting (default) or the\n"
    "                            boundary of the region between a frame and the tool\n"
    "  --keep-dashed             do not leave out dashed and centre lines\n"
    "  --vertical-ends           close the outline with vertical ends\n"
    "  --point-tol T             point tolerance (0.0005)\n"
    "  --line-tol T              line tolerance (0.001)\n"
    "  --fine-tol T              horizontal/vertical tolerance (1e-6)\n"
    "  --arc-step S              chord length for arcs and splines (0.3)\n"
    "  --break-length L          left/right recognition length (5)\n"
    "  --png FILE, --svg FILE    a picture of the drawing with the outline over it\n"
    "  --json                    a machine-readable result on standard output\n"
    "  --in-place                write the result into DRAWING.dxf itself\n"
    "  --sat FILE, --step FILE, --stl FILE\n"
    "                            the solid of the outline, revolved about the axis\n"
    "  --orient drawing|z        the solid as drawn (default) or along +Z from the origin\n"
    "  --stl-tolerance T         chordal tolerance of the STL mesh (0.01 mm)\n"
    "  --keep-solid              keep the solid in the written drawing (a 3DSOLID)\n"
    "\n"
    "Exit codes: 0 outline made, 3 no outline, 2 bad usage, 1 unreadable input or\n"
    "unwritable output.\n"
    "\n"
    "Example:\n"
    "  envline outline drill.dxf -o drill_out.dxf --window 0,-20,120,20 --centre auto --png drill.png\n";

struct Options {
  std::string input, output, png, svg, sat, step, stl;
  SolidOrientation orientation = SolidOrientation::kDrawing;
  double stlTolerance = 0.01;
  bool keepSolid = false;
  std::optional<std::array<double, 4>> window, crossing;
  std::vector<std::string> handles, layers;
  std::optional<AcGePoint3d> centre;
  bool autoCentre = false, json = false, inPlace = false;
  SingleOutlineSettings settings;
  OutlineDriver driver = OutlineDriver::kSlabs;
};

int usage(const std::string& message) {
  std::fprintf(stderr, "envline outline: %s\n(run 'envline outline --help' for the options)\n", message.c_str());
  return 2;
}

// Parses the arguments; returns 0 to go on, otherwise the exit code.
int parse(const Args& args, Options& o) {
  auto value = [&](std::size_t& i) -> const std::string* { return i + 1 < args.size() ? &args[++i] : nullptr; };
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    std::vector<double> v;
    if (a == "-h" || a == "--help") {
      std::fputs(kHelp, stdout);
      return -1;
    } else if (a == "-o" || a == "--output") {
      const std::string* s = value(i);
      if (!s) return usage("-o needs a file name");
      o.output = *s;
    } else if (a == "--window" || a == "--crossing") {
      const std::string* s = value(i);
      if (!s || !SplitNumbers(*s, v, 4)) return usage(a + " needs X1,Y1,X2,Y2");
      (a == "--window" ? o.window : o.crossing) = std::array<double, 4>{v[0], v[1], v[2], v[3]};
    } else if (a == "--handles") {
      const std::string* s = value(i);
      if (!s) return usage("--handles needs H1,H2,...");
      o.handles = SplitList(*s);
    } else if (a == "--layer") {
      const std::string* s = value(i);
      if (!s) return usage("--layer needs a layer name");
      o.layers.push_back(*s);
    } else if (a == "--centre" || a == "--center") {
      const std::string* s = value(i);
      if (!s) return usage("--centre needs X,Y or auto");
      if (*s == "auto") o.autoCentre = true;
      else if (SplitNumbers(*s, v, 2)) o.centre = AcGePoint3d(v[0], v[1], 0);
      else return usage("--centre needs X,Y or auto, not '" + *s + "'");
    } else if (a == "--side") {
      const std::string* s = value(i);
      if (s && (*s == "upper" || *s == "上半边")) o.settings.nSide = 0;
      else if (s && (*s == "lower" || *s == "下半边")) o.settings.nSide = 1;
      else return usage("--side is upper or lower");
    } else if (a == "--driver") {
      const std::string* s = value(i);
      if (s && *s == "slabs") o.driver = OutlineDriver::kSlabs;
      else if (s && *s == "hatch") o.driver = OutlineDriver::kHatch;
      else return usage("--driver is slabs or hatch");
    } else if (a == "--keep-dashed") {
      o.settings.bRemoveDashed = false;
    } else if (a == "--vertical-ends") {
      o.settings.bVerticalEnds = true;
    } else if (a == "--point-tol" || a == "--line-tol" || a == "--fine-tol" || a == "--arc-step" ||
               a == "--break-length") {
      const std::string* s = value(i);
      if (!s || !SplitNumbers(*s, v, 1) || !(v[0] > 0)) return usage(a + " needs a positive number");
      double& field = a == "--point-tol"  ? o.settings.dPointTol
                      : a == "--line-tol" ? o.settings.dLineTol
                      : a == "--fine-tol" ? o.settings.dFineTol
                      : a == "--arc-step" ? o.settings.dStep
                                          : o.settings.dBreakLength;
      field = v[0];
    } else if (a == "--png" || a == "--svg") {
      const std::string* s = value(i);
      if (!s) return usage(a + " needs a file name");
      (a == "--png" ? o.png : o.svg) = *s;
    } else if (a == "--sat" || a == "--step" || a == "--stl") {
      const std::string* s = value(i);
      if (!s) return usage(a + " needs a file name");
      (a == "--sat" ? o.sat : a == "--step" ? o.step : o.stl) = *s;
    } else if (a == "--orient") {
      const std::string* s = value(i);
      if (!s || (*s != "drawing" && *s != "z")) return usage("--orient is drawing or z");
      o.orientation = *s == "z" ? SolidOrientation::kAxisZ : SolidOrientation::kDrawing;
    } else if (a == "--stl-tolerance") {
      const std::string* s = value(i);
      if (!s || !SplitNumbers(*s, v, 1) || !(v[0] > 0)) return usage("--stl-tolerance needs a positive number");
      o.stlTolerance = v[0];
    } else if (a == "--keep-solid") {
      o.keepSolid = true;
    } else if (a == "--json") {
      o.json = true;
    } else if (a == "--in-place") {
      o.inPlace = true;
    } else if (!a.empty() && a[0] != '-' && o.input.empty()) {
      o.input = a;
    } else {
      return usage("unexpected argument '" + a + "'");
    }
  }
  if (o.input.empty()) return usage("a drawing file is required");
  if (o.output.empty() && !o.inPlace) return usage("-o OUT.dxf (or --in-place) is required");
  if (!o.output.empty() && o.inPlace) return usage("-o and --in-place exclude each other");
  if (!o.centre && !o.autoCentre) return usage("--centre X,Y or --centre auto is required");
  if (o.window && o.crossing) return usage("--window and --crossing exclude each other");
  if (o.inPlace) o.output = o.input;
  return 0;
}

double msSince(std::chrono::steady_clock::time_point t) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t).count();
}
}  // namespace

int runOutline(const Args& args) {
  Options o;
  if (const int code = parse(args, o); code != 0) return code < 0 ? 0 : code;
  auto clock = std::chrono::steady_clock::now();
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfFile(o.input, drawing, diag)) {
    std::fprintf(stderr, "envline outline: %s\n", diag.error.c_str());
    return 1;
  }
  const double readMs = msSince(clock);
  AcDbDatabase* db = drawing.database.get();
  AcApDocument* doc = acDocManagerPtr()->openBorrowedDocument(db, o.input);
  struct CloseDoc {
    AcApDocument* doc;
    ~CloseDoc() { acDocManagerPtr()->closeDocument(doc); }
  } closeDoc{doc};

  // The selection.
  AcArray<AcDbObjectId> selection;
  if (o.window) selection = host::selectByBox(db, {(*o.window)[0], (*o.window)[1], 0}, {(*o.window)[2], (*o.window)[3], 0}, host::SelectMode::kWindow);
  else if (o.crossing) selection = host::selectByBox(db, {(*o.crossing)[0], (*o.crossing)[1], 0}, {(*o.crossing)[2], (*o.crossing)[3], 0}, host::SelectMode::kCrossing);
  else if (!o.handles.empty()) {
    for (const std::string& h : o.handles) {
      AcDbObjectId id;
      const AcDbHandle handle = AcDbHandle::fromHex(h);
      AcDbObjectPointer<AcDbEntity> ent;
      if (handle.isNull() || db->getAcDbObjectId(id, false, handle) != Acad::eOk || ent.open(id, AcDb::kForRead) != Acad::eOk)
        return usage("no entity has the handle '" + h + "'");
      selection.append(id);
    }
  } else {
    selection = host::allEntities(db);
  }
  if (!o.layers.empty()) {
    AcArray<AcDbObjectId> kept;
    for (AcDbObjectId id : selection) {
      AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
      for (const std::string& layer : o.layers)
        if (ent && host::equalsNoCase(ent->layer(), layer)) {
          kept.append(id);
          break;
        }
    }
    selection = kept;
  }
  const int selected = selection.length();

  // The centre.
  AcGePoint3d centre;
  if (o.autoCentre) {
    const CentreLineSearch found = FindCentreLine(selection);
    if (!found.bFound) {
      std::string message = "envline outline: cannot find the tool's axis: " + found.problem + ".";
      for (const auto& f : found.found) message += "\n  found: " + f;
      std::fprintf(stderr, "%s\nGive the axis with --centre X,Y (a point on it).\n", message.c_str());
      return 2;
    }
    centre = AcGePoint3d(0, found.dY, 0);
  } else {
    centre = *o.centre;
  }

  clock = std::chrono::steady_clock::now();
  const int segments = o.json ? CountSegmentsAfterConversion(selection, o.settings) : -1;
  const SingleOutlineResult run = RunSingleOutline(selection, centre, o.settings, o.driver);
  const double computeMs = msSince(clock);

  // The solid of the outline, when asked for.
  std::vector<std::string> solidFiles;
  std::string solidRoute;
  double solidMs = 0, stlMs = 0;  // revolve, SAT and STEP; the STL mesh on its own
  clock = std::chrono::steady_clock::now();
  if (!run.outline.isNull() && (!o.sat.empty() || !o.step.empty() || !o.stl.empty() || o.keepSolid)) {
    RevolveRoute route = RevolveRoute::kNone;
    const AcDbObjectId solidId = RevolveOutline(run.outline, centre, AcGeVector3d::kXAxis, o.orientation, &route);
    solidRoute = route == RevolveRoute::kCurve ? "curve" : route == RevolveRoute::kRegion ? "region" : "";
    if (solidId.isNull()) {
      std::fprintf(stderr, "envline outline: %s\n", kSolidFailed);
      return 1;
    }
    {
      AcDbObjectPointer<AcDb3dSolid> solid(solidId, AcDb::kForRead);
      std::string error;
      bool ok = true;
      if (!o.sat.empty()) ok = AcDbBody::acisOut(o.sat, {solid.get()}) == Acad::eOk, error = o.sat + ": " + kWriteFailed;
      if (ok && !o.step.empty()) ok = host::brep::WriteStep(*solid.get(), o.step, error);
      solidMs = msSince(clock);
      clock = std::chrono::steady_clock::now();
      if (ok && !o.stl.empty()) ok = host::brep::WriteStl(*solid.get(), o.stl, o.stlTolerance, error);
      stlMs = msSince(clock);
      if (!ok) {
        std::fprintf(stderr, "envline outline: %s\n", error.c_str());
        return 1;
      }
      for (const std::string& f : {o.sat, o.step, o.stl})
        if (!f.empty()) solidFiles.push_back(f);
    }
    if (!o.keepSolid) host::eraseObject(solidId);
  }

  clock = std::chrono::steady_clock::now();
  if (!host::dxf::writeDxfFile(o.output, drawing, {}, diag)) {
    std::fprintf(stderr, "envline outline: %s\n", diag.error.c_str());
    return 1;
  }
  const double writeMs = msSince(clock);
  for (const std::string& path : {o.png, o.svg}) {
    if (path.empty()) continue;
    DrawingPictureOptions pic;
    pic.outline = run.outline;
    pic.axisY = centre.y;
    if (o.window) pic.window = o.window;
    if (o.crossing) pic.window = o.crossing;
    pic.title = o.input + "  " + run.message;
    std::string error;
    if (!WriteDrawingPicture(*db, path, pic, error)) {
      std::fprintf(stderr, "envline outline: %s\n", error.c_str());
      return 1;
    }
  }

  OutlineReport report;
  const bool made = MakeOutlineReport(run.outline, report);
  if (o.json) {
    Json j;
    j.beginObject().key("status").value(made ? "ok" : "no_outline").key("message").value(run.message);
    j.key("input").value(o.input).key("output").value(o.output);
    j.key("outline");
    if (made) {
      j.beginObject().key("handle").value(report.handle).key("closed").value(report.bClosed).key("vertices").beginArray();
      for (const auto& v : report.vertices) j.beginArray().value(v[0]).value(v[1]).value(v[2]).endArray();
      j.endArray().key("box").beginArray();
      for (double b : report.box) j.value(b);
      j.endArray().key("area").value(report.dArea).endObject();
    } else {
      j.value("");
    }
    const SingleOutlineSettings& s = o.settings;
    j.key("parameters").beginObject().key("centre").beginArray().value(centre.x).value(centre.y).endArray();
    j.key("side").value(s.nSide == 1 ? "lower" : "upper");
    j.key("driver").value(o.driver == OutlineDriver::kHatch ? "hatch" : "slabs");
    j.key("remove_dashed").value(s.bRemoveDashed);
    j.key("vertical_ends").value(s.bVerticalEnds).key("point_tol").value(s.dPointTol).key("line_tol").value(s.dLineTol);
    j.key("fine_tol").value(s.dFineTol).key("arc_step").value(s.dStep).key("break_length").value(s.dBreakLength);
    j.endObject().key("counts").beginObject().key("selected").value(selected).key("to_engine").value(run.nSelected);
    j.key("segments_after_conversion").value(segments).endObject();
    j.key("timings_ms").beginObject().key("read").value(readMs).key("compute").value(computeMs).key("write").value(writeMs);
    j.key("solid").value(solidMs).key("stl").value(stlMs);
    j.endObject().key("solid").beginObject().key("route").value(solidRoute).key("files").beginArray();
    for (const auto& f : solidFiles) j.value(f);
    j.endArray().endObject().key("warnings").beginArray();
    for (const auto& w : diag.warnings) j.value(w);
    j.endArray().endObject();
    std::printf("%s\n", j.str().c_str());
  } else {
    for (const auto& w : diag.warnings) std::fprintf(stderr, "warning: %s\n", w.c_str());
    if (made)
      std::printf("%s: outline %s, %zu vertices, box (%g, %g) - (%g, %g) -> %s\n", run.message.c_str(),
                  report.handle.c_str(), report.vertices.size(), report.box[0], report.box[1], report.box[2],
                  report.box[3], o.output.c_str());
    else
      std::printf("%s: no outline from %d selected entities -> %s\n", run.message.c_str(), selected, o.output.c_str());
    for (const auto& f : solidFiles) std::printf("solid (%s route) -> %s\n", solidRoute.c_str(), f.c_str());
  }
  return made ? 0 : 3;
}

}  // namespace cli
