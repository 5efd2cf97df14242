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
#include "engine/robust/contour.h"
#include "ui/robust_outline_run.h"
#include "output/units.h"
#include "ui/centre_line.h"
#include "ui/selection_limits.h"
#include "ui/single_outline_run.h"

namespace cli {

namespace {
const char* kHelp =
    "usage: envline outline DRAWING.dxf -o OUT.dxf [selection] --centre X,Y|auto|--axis X1,Y1,X2,Y2 [options]\n"
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
    "  --tool NUMBER             the drawing frame tagged with this tool number (its box is the window)\n"
    "  --all-tools               every tagged drawing frame, one outline each\n"
    "axis\n"
    "  --centre X,Y              a point on the tool's (horizontal) axis\n"
    "  --axis X1,Y1,X2,Y2        the axis as a line, in any direction\n"
    "  --centre auto             the centre line the contour is symmetric about or meets at both\n"
    "                            ends; without centre lines, the contour's mirror line\n"
    "method\n"
    "  --method robust|exact     robust (default): the largest radius of the part's body at each\n"
    "                            point of the axis; exact: the dialog's algorithm as designed\n"
    "  --gap G                   robust: pieces closer than G meet (default: 0.0004 of the\n"
    "                            part's size, 0.04 mm on a 100 mm tool)\n"
    "  --chord-tol T             robust: ellipses and splines as chords within T (0.001)\n"
    "  --side upper|lower        calculation side, 上半边 or 下半边 (default upper)\n"
    "exact method only (with --method exact; given without it they are a usage error)\n"
    "  --driver slabs|hatch      slab cutting (default) or the\n"
    "                            boundary of the region between a frame and the tool\n"
    "  --keep-dashed             do not leave out dashed and centre lines\n"
    "  --vertical-ends           close the outline with vertical ends\n"
    "  --point-tol T             point tolerance (0.0005)\n"
    "  --line-tol T              line tolerance (0.001)\n"
    "  --fine-tol T              horizontal/vertical tolerance (1e-6)\n"
    "  --arc-step S              chord length for arcs and splines (0.3)\n"
    "  --break-length L          left/right recognition length (5)\n"
    "output\n"
    "  --png FILE, --svg FILE    a picture of the drawing with the outline over it\n"
    "  --json                    a machine-readable result on standard output\n"
    "  --in-place                write the result into DRAWING.dxf itself\n"
    "  --sat FILE, --step FILE, --stl FILE\n"
    "                            the solid of the outline, revolved about the axis\n"
    "  --orient drawing|z        the solid as drawn (default) or along +Z from the origin\n"
    "  --stl-tolerance T         chordal tolerance of the STL mesh (0.01 mm)\n"
    "  --units U                 the drawing's unit (mm, cm, m, inch, ft, ...) instead of\n"
    "                            its $INSUNITS; SAT, STEP and STL carry millimetres\n"
    "  --keep-solid              keep the solid in the written drawing (a 3DSOLID)\n"
    "\n"
    "Every outline is checked: closed, simple, no edge of no length, both ends on the\n"
    "axis; an outline that fails is not written (exit 3, with the reason).\n"
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
  int units = -1;  // $INSUNITS code from --units; -1: the drawing's
  bool keepSolid = false;
  std::optional<std::array<double, 4>> window, crossing;
  std::vector<std::string> handles, layers;
  std::optional<AcGePoint3d> centre;
  bool autoCentre = false, json = false, inPlace = false;
  SingleOutlineSettings settings;
  OutlineDriver driver = OutlineDriver::kSlabs;
  bool exact = false;                          // --method exact
  std::optional<std::array<double, 4>> axis;   // --axis
  double gap = 0, chordTol = 0.001;            // robust tolerances (gap 0: from the part)
  std::string tool;                            // --tool
  bool allTools = false;
  std::string exactOnly;                       // the first option given that only the exact method reads
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
    for (const char* option : {"--driver", "--keep-dashed", "--vertical-ends", "--point-tol", "--line-tol", "--fine-tol",
                               "--arc-step", "--break-length"})
      if (a == option && o.exactOnly.empty()) o.exactOnly = a;
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
    } else if (a == "--method") {
      const std::string* s = value(i);
      if (!s || (*s != "robust" && *s != "exact")) return usage("--method is robust or exact");
      o.exact = *s == "exact";
    } else if (a == "--axis") {
      const std::string* s = value(i);
      if (!s || !SplitNumbers(*s, v, 4) || (v[0] == v[2] && v[1] == v[3]))
        return usage("--axis needs X1,Y1,X2,Y2, two different points of the axis");
      o.axis = std::array<double, 4>{v[0], v[1], v[2], v[3]};
    } else if (a == "--gap" || a == "--chord-tol") {
      const std::string* s = value(i);
      if (!s || !SplitNumbers(*s, v, 1) || !(v[0] > 0)) return usage(a + " needs a positive number");
      (a == "--gap" ? o.gap : o.chordTol) = v[0];
    } else if (a == "--tool") {
      const std::string* s = value(i);
      if (!s || s->empty()) return usage("--tool needs a tool number");
      o.tool = *s;
    } else if (a == "--all-tools") {
      o.allTools = true;
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
    } else if (a == "--units") {
      const std::string* s = value(i);
      if (!s || !UnitsFromName(*s, o.units)) return usage("--units needs a unit (mm, cm, m, inch, ft, ...)");
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
  if (!o.centre && !o.autoCentre && !o.axis) return usage("--centre X,Y, --centre auto or --axis X1,Y1,X2,Y2 is required");
  if ((o.centre || o.autoCentre) && o.axis) return usage("--centre and --axis exclude each other");
  if (!o.exact && !o.exactOnly.empty())
    return usage(o.exactOnly + " is a setting of the exact method, which the robust method (the default) does not read; "
                 "add --method exact to use it");
  if (o.exact && o.axis && (*o.axis)[1] != (*o.axis)[3])
    return usage("the exact method needs a horizontal axis (use --centre X,Y, or --method robust)");
  const bool selected = o.window || o.crossing || !o.handles.empty();
  if ((!o.tool.empty() || o.allTools) && selected) return usage("--tool and --all-tools choose their own window");
  if (!o.tool.empty() && o.allTools) return usage("--tool and --all-tools exclude each other");
  if (o.allTools && (!o.sat.empty() || !o.step.empty() || !o.stl.empty() || o.keepSolid || !o.png.empty() || !o.svg.empty()))
    return usage("--all-tools makes no solids or pictures (outline one tool with --tool, or use envline export)");
  if (o.window && o.crossing) return usage("--window and --crossing exclude each other");
  if (!o.inPlace && SameFile(o.input, o.output))
    return usage("-o names the input drawing; give --in-place to write into it");
  if (const std::string out = OverwritesInput(o.input, {o.png, o.svg, o.sat, o.step, o.stl}); !out.empty())
    return usage("'" + out + "' is the input drawing; pictures and solids never overwrite it");
  if (o.inPlace) o.output = o.input;
  return 0;
}

double msSince(std::chrono::steady_clock::time_point t) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t).count();
}
}  // namespace

namespace {
// One outline: a selection, its axis, the result and what to warn about.
struct Job {
  std::string tool;                               // the frame's tool number, when run by frame
  std::optional<std::array<double, 4>> window;    // the window the selection came from
  AcArray<AcDbObjectId> selection;
  int selected = 0, toEngine = 0, segments = -1;
  AcDbObjectId outline;
  std::string message = kOutlineFailed, problem;
  robust::ProfileAxis axis;
  bool haveAxis = false;
  std::string axisReason;
  std::vector<std::string> axisCandidates;
  double gap = 0;
  std::vector<robust::ProfileWarning> warnings;
  double computeMs = 0;
};

// The exact method on a job: the axis (found with the robust search when
// automatic) must be horizontal; the robust profile of the same contour
// supplies the warnings about bodies and sides.
void runExact(const Options& o, Job& job) {
  const robust::Contour contour = robust::CollectContour(job.selection, o.chordTol);
  job.gap = o.gap > 0 ? o.gap : DefaultGap(contour.curves);
  AxisRequest request;
  if (o.centre) request.point = robust::P2{o.centre->x, o.centre->y};
  request.line = o.axis;
  if (o.autoCentre) {
    const robust::AxisChoice choice = robust::ChooseAxis(contour, job.gap);
    job.axisCandidates = choice.candidates;
    if (!choice.found) {
      job.problem = "cannot find the part's axis: " + choice.problem;
      return;
    }
    if (choice.axis.dir.y != 0) {
      job.problem = "the exact method needs a horizontal axis, and the part's axis is " + choice.reason +
                    " (use --method robust)";
      return;
    }
    job.axis = choice.axis;
    job.axis.lowerSide = o.settings.nSide == 1;
    job.axisReason = choice.reason;
    job.warnings.insert(job.warnings.end(), choice.warnings.begin(), choice.warnings.end());
  } else {
    GivenAxis(request, o.settings.nSide, job.axis);
    job.axisReason = o.axis ? "the axis given as a line" : "the horizontal axis through the given point";
  }
  job.haveAxis = true;
  const AcGePoint3d centre(job.axis.origin.x, job.axis.origin.y, 0);
  const SingleOutlineResult run = RunSingleOutline(job.selection, centre, o.settings, o.driver);
  job.outline = run.outline;
  job.message = run.message;
  job.toEngine = run.nSelected;
  if (job.outline.isNull()) job.problem = "the exact method made no outline";
  const robust::Profile profile = robust::ComputeProfile(contour.curves, job.axis, job.gap);
  job.warnings.insert(job.warnings.end(), profile.warnings.begin(), profile.warnings.end());
}

void runRobust(const Options& o, Job& job) {
  AxisRequest request;
  if (o.centre) request.point = robust::P2{o.centre->x, o.centre->y};
  request.line = o.axis;
  request.automatic = o.autoCentre;
  RobustOutlineSettings settings;
  settings.nSide = o.settings.nSide;
  settings.dGap = o.gap;
  settings.dChordTol = o.chordTol;
  const RobustOutlineResult run = RunRobustOutline(job.selection, request, settings);
  job.outline = run.outline;
  job.message = run.message;
  job.problem = run.problem;
  job.axis = run.axis;
  job.haveAxis = !run.axisReason.empty();
  job.axisReason = run.axisReason;
  job.axisCandidates = run.axisCandidates;
  job.gap = run.dGap;
  job.toEngine = run.nSelected;
  job.segments = run.nContourCurves;
  job.warnings.insert(job.warnings.end(), run.warnings.begin(), run.warnings.end());
}

void runJob(const Options& o, AcDbDatabase* db, Job& job) {
  job.selected = job.selection.length();
  if (job.window) {
    const auto cut = WindowCutWarnings(db, *job.window);
    job.warnings.insert(job.warnings.end(), cut.begin(), cut.end());
  }
  if (o.centre)
    if (const auto w = CentrePointWarning(job.selection, {o.centre->x, o.centre->y})) job.warnings.push_back(*w);
  // Block references that explode without end and curves of absurd length
  // are named before the engine starts on them.
  if (const std::string problem = CheckOutlineSelectionSize(job.selection, o.settings.dStep); !problem.empty()) {
    job.message = kOutlineFailed;
    job.problem = problem;
    return;
  }
  const auto clock = std::chrono::steady_clock::now();
  if (o.exact) {
    if (o.json) job.segments = CountSegmentsAfterConversion(job.selection, o.settings);
    runExact(o, job);
  } else {
    runRobust(o, job);
  }
  job.computeMs = msSince(clock);
  if (job.outline.isNull()) {
    job.message = kOutlineFailed;
    return;
  }
  const robust::OutlineCheck check = CheckOutlineEntity(job.outline, job.axis);
  if (!check.ok) {
    host::eraseObject(job.outline);
    job.outline = AcDbObjectId::kNull;
    job.message = kOutlineFailed;
    job.problem = "the outline failed its check: " + check.problem;
    job.warnings.push_back({job.problem, check.where});
  }
}

// The entities inside a frame's box, the frame itself left out.
AcArray<AcDbObjectId> frameSelection(AcDbDatabase* db, const DrawingFrame& frame) {
  const AcGePoint3d lo = frame.box.m_ptMin, hi = frame.box.m_ptMax;
  AcArray<AcDbObjectId> out;
  for (AcDbObjectId id : host::selectByBox(db, lo, hi, host::SelectMode::kWindow)) {
    AcDbObjectPointer<AcDbBlockReference> ref(id, AcDb::kForRead);
    if (ref) {
      AcDbExtents ext;
      const double tol = 1e-6 * std::max(1.0, hi.x - lo.x);
      if (ref->getGeomExtents(ext) == Acad::eOk && ext.minPoint().distanceTo(lo) <= tol &&
          ext.maxPoint().distanceTo(hi) <= tol)
        continue;
    }
    out.append(id);
  }
  return out;
}

void jsonJob(Json& j, const Options& o, const Job& job, double readMs, double writeMs, const std::vector<std::string>& readWarnings,
             const std::string& solidRoute, const std::vector<std::string>& solidFiles, double solidMs, double stlMs) {
  OutlineReport report;
  const bool made = MakeOutlineReport(job.outline, report);
  j.beginObject().key("status").value(made ? "ok" : "no_outline").key("message").value(job.message);
  if (!job.tool.empty()) j.key("tool").value(job.tool);
  j.key("problem").value(job.problem);
  j.key("input").value(o.input).key("output").value(o.output);
  j.key("method").value(o.exact ? "exact" : "robust");
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
  j.key("axis");
  if (job.haveAxis) {
    const double len = robust::Norm(job.axis.dir);
    j.beginObject().key("point").beginArray().value(job.axis.origin.x).value(job.axis.origin.y).endArray();
    j.key("direction").beginArray().value(job.axis.dir.x / len).value(job.axis.dir.y / len).endArray();
    j.key("side").value(job.axis.lowerSide ? "lower" : "upper").key("chosen_because").value(job.axisReason);
  } else {
    j.beginObject();
  }
  j.key("candidates").beginArray();
  for (const auto& c : job.axisCandidates) j.value(c);
  j.endArray().endObject();
  const SingleOutlineSettings& s = o.settings;
  j.key("parameters").beginObject();
  if (job.haveAxis) j.key("centre").beginArray().value(job.axis.origin.x).value(job.axis.origin.y).endArray();
  j.key("side").value(s.nSide == 1 ? "lower" : "upper");
  if (o.exact) {
    j.key("driver").value(o.driver == OutlineDriver::kHatch ? "hatch" : "slabs");
    j.key("remove_dashed").value(s.bRemoveDashed);
    j.key("vertical_ends").value(s.bVerticalEnds).key("point_tol").value(s.dPointTol).key("line_tol").value(s.dLineTol);
    j.key("fine_tol").value(s.dFineTol).key("arc_step").value(s.dStep).key("break_length").value(s.dBreakLength);
  } else {
    j.key("gap").value(job.gap).key("gap_from").value(o.gap > 0 ? "--gap" : "the part's size");
    j.key("chord_tol").value(o.chordTol);
  }
  j.endObject().key("counts").beginObject().key("selected").value(job.selected).key("to_engine").value(job.toEngine);
  j.key(o.exact ? "segments_after_conversion" : "contour_curves").value(job.segments).endObject();
  j.key("timings_ms").beginObject().key("read").value(readMs).key("compute").value(job.computeMs).key("write").value(writeMs);
  j.key("solid").value(solidMs).key("stl").value(stlMs);
  j.endObject().key("solid").beginObject().key("route").value(solidRoute).key("files").beginArray();
  for (const auto& f : solidFiles) j.value(f);
  j.endArray().endObject().key("warnings").beginArray();
  for (const auto& w : readWarnings) j.beginObject().key("text").value(w).endObject();
  for (const auto& w : job.warnings)
    j.beginObject().key("text").value(w.text).key("at").beginArray().value(w.where.x).value(w.where.y).endArray().endObject();
  j.endArray().endObject();
}

void printJob(const Options& o, const Job& job) {
  OutlineReport report;
  const bool made = MakeOutlineReport(job.outline, report);
  const std::string who = job.tool.empty() ? "" : "tool " + job.tool + ": ";
  if (made)
    std::printf("%s%s: outline %s, %zu vertices, box (%g, %g) - (%g, %g) -> %s\n", who.c_str(), job.message.c_str(),
                report.handle.c_str(), report.vertices.size(), report.box[0], report.box[1], report.box[2],
                report.box[3], o.output.c_str());
  else
    std::printf("%s%s: no outline from %d selected entities: %s\n", who.c_str(), job.message.c_str(), job.selected,
                job.problem.c_str());
  if (job.haveAxis) {
    const double len = robust::Norm(job.axis.dir);
    std::printf("  method %s, axis through (%g, %g) along (%g, %g), %s side: %s", o.exact ? "exact" : "robust",
                job.axis.origin.x, job.axis.origin.y, job.axis.dir.x / len, job.axis.dir.y / len,
                job.axis.lowerSide ? "lower" : "upper", job.axisReason.c_str());
    if (!o.exact) std::printf("; gap %g, chord tolerance %g", job.gap, o.chordTol);
    std::printf("\n");
  }
  if (!made)
    for (const auto& c : job.axisCandidates) std::printf("  looked at %s\n", c.c_str());
  for (const auto& w : job.warnings) std::fprintf(stderr, "warning: %s%s\n", who.c_str(), w.text.c_str());
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

  // The jobs: one selection, or one per tagged drawing frame.
  std::vector<Job> jobs;
  const std::vector<DrawingFrame> frames = CollectDrawingFrames();
  if (!o.tool.empty() || o.allTools) {
    for (const DrawingFrame& f : frames) {
      if (!o.allTools && f.toolNumber != o.tool) continue;
      Job job;
      job.tool = f.toolNumber;
      job.selection = frameSelection(db, f);
      jobs.push_back(std::move(job));
    }
    if (jobs.empty()) {
      std::string known;
      for (const DrawingFrame& f : frames) known += (known.empty() ? "" : ", ") + f.toolNumber;
      return usage(o.allTools ? "the drawing has no tagged drawing frames"
                              : "no drawing frame has the tool number '" + o.tool + "'" +
                                    (known.empty() ? "" : " (the frames have " + known + ")"));
    }
  } else {
    const bool chosen = o.window || o.crossing || !o.handles.empty();
    if (!chosen && !frames.empty()) {
      std::string message = "the drawing has " + std::to_string(frames.size()) +
                            " tagged drawing frames; outlining them all as one part would outline the frames. "
                            "Choose one with --tool NUMBER, all with --all-tools, or give a window:";
      for (const DrawingFrame& f : frames) {
        char text[200];
        std::snprintf(text, sizeof text, "\n  tool %s: --window %g,%g,%g,%g", f.toolNumber.c_str(), f.box.m_ptMin.x,
                      f.box.m_ptMin.y, f.box.m_ptMax.x, f.box.m_ptMax.y);
        message += text;
      }
      std::fprintf(stderr, "envline outline: %s\n", message.c_str());
      return 2;
    }
    Job job;
    if (o.window) job.selection = host::selectByBox(db, {(*o.window)[0], (*o.window)[1], 0}, {(*o.window)[2], (*o.window)[3], 0}, host::SelectMode::kWindow);
    else if (o.crossing) job.selection = host::selectByBox(db, {(*o.crossing)[0], (*o.crossing)[1], 0}, {(*o.crossing)[2], (*o.crossing)[3], 0}, host::SelectMode::kCrossing);
    else if (!o.handles.empty()) {
      for (const std::string& h : o.handles) {
        AcDbObjectId id;
        const AcDbHandle handle = AcDbHandle::fromHex(h);
        AcDbObjectPointer<AcDbEntity> ent;
        if (handle.isNull() || db->getAcDbObjectId(id, false, handle) != Acad::eOk || ent.open(id, AcDb::kForRead) != Acad::eOk)
          return usage("no entity has the handle '" + h + "'");
        job.selection.append(id);
      }
    } else {
      job.selection = host::allEntities(db);
    }
    job.window = o.window;
    jobs.push_back(std::move(job));
  }
  for (Job& job : jobs) {
    if (!o.layers.empty()) {
      AcArray<AcDbObjectId> kept;
      for (AcDbObjectId id : job.selection) {
        AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
        for (const std::string& layer : o.layers)
          if (ent && host::equalsNoCase(ent->layer(), layer)) {
            kept.append(id);
            break;
          }
      }
      job.selection = kept;
    }
    runJob(o, db, job);
  }

  // The solid of the outline, when asked for (one tool only).
  std::vector<std::string> solidFiles;
  std::string solidRoute;
  double solidMs = 0, stlMs = 0;  // revolve, SAT and STEP; the STL mesh on its own
  Job& first = jobs.front();
  clock = std::chrono::steady_clock::now();
  if (!first.outline.isNull() && (!o.sat.empty() || !o.step.empty() || !o.stl.empty() || o.keepSolid)) {
    RevolveRoute route = RevolveRoute::kNone;
    const AcDbObjectId solidId =
        RevolveOutline(first.outline, AcGePoint3d(first.axis.origin.x, first.axis.origin.y, 0),
                       AcGeVector3d(first.axis.dir.x, first.axis.dir.y, 0).normal(), o.orientation, &route);
    solidRoute = route == RevolveRoute::kCurve ? "curve" : route == RevolveRoute::kRegion ? "region" : "";
    if (solidId.isNull()) {
      std::fprintf(stderr, "envline outline: %s\n", kSolidFailed);
      return 1;
    }
    {
      AcDbObjectPointer<AcDb3dSolid> drawn(solidId, AcDb::kForRead);
      // The files carry millimetres.
      int units = o.units;
      if (units < 0) {
        units = db->insunits();
        if (units == 0) std::fprintf(stderr, "warning: %s\n", kUnitlessWarning);
      }
      const std::unique_ptr<AcDb3dSolid> inMillimetres = SolidInMillimetres(*drawn.get(), MillimetresPerUnit(units));
      const AcDb3dSolid* solid = inMillimetres ? inMillimetres.get() : drawn.get();
      std::string error;
      bool ok = true;
      if (!o.sat.empty()) ok = host::brep::WriteSat(*solid, o.sat, error);
      if (ok && !o.step.empty()) ok = host::brep::WriteStep(*solid, o.step, error);
      solidMs = msSince(clock);
      clock = std::chrono::steady_clock::now();
      if (ok && !o.stl.empty()) ok = host::brep::WriteStl(*solid, o.stl, o.stlTolerance, error);
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
    pic.outline = first.outline;
    if (first.haveAxis)
      pic.axisLine = std::array<double, 4>{first.axis.origin.x, first.axis.origin.y, first.axis.dir.x, first.axis.dir.y};
    if (o.window) pic.window = o.window;
    if (o.crossing) pic.window = o.crossing;
    pic.title = o.input + "  " + first.message;
    char note[300];
    std::snprintf(note, sizeof note, "method %s; axis through (%g, %g) along (%g, %g), %s side", o.exact ? "exact" : "robust",
                  first.axis.origin.x, first.axis.origin.y, first.axis.dir.x, first.axis.dir.y,
                  first.axis.lowerSide ? "lower" : "upper");
    pic.notes.push_back(note);
    if (!first.axisReason.empty()) pic.notes.push_back("axis: " + first.axisReason);
    if (!o.exact) {
      std::snprintf(note, sizeof note, "gap %g, chord tolerance %g", first.gap, o.chordTol);
      pic.notes.push_back(note);
    } else {
      std::snprintf(note, sizeof note, "point tolerance %g, line tolerance %g, arc step %g", o.settings.dPointTol,
                    o.settings.dLineTol, o.settings.dStep);
      pic.notes.push_back(note);
    }
    if (!first.problem.empty()) pic.notes.push_back("no outline: " + first.problem);
    for (const auto& w : first.warnings) pic.marks.push_back({w.where.x, w.where.y, w.text});
    std::string error;
    if (!WriteDrawingPicture(*db, path, pic, error)) {
      std::fprintf(stderr, "envline outline: %s\n", error.c_str());
      return 1;
    }
  }

  bool allMade = true;
  for (const Job& job : jobs) allMade = allMade && !job.outline.isNull();
  if (o.json) {
    Json j;
    if (o.allTools) j.beginArray();
    for (const Job& job : jobs)
      jsonJob(j, o, job, readMs, writeMs, diag.warnings, &job == &first ? solidRoute : "",
              &job == &first ? solidFiles : std::vector<std::string>{}, solidMs, stlMs);
    if (o.allTools) j.endArray();
    std::printf("%s\n", j.str().c_str());
  } else {
    for (const auto& w : diag.warnings) std::fprintf(stderr, "warning: %s\n", w.c_str());
    for (const Job& job : jobs) printJob(o, job);
    for (const auto& f : solidFiles) std::printf("solid (%s route) -> %s\n", solidRoute.c_str(), f.c_str());
  }
  return allMade ? 0 : 3;
}

}  // namespace cli
