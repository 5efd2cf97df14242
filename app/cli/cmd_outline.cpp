// envline outline: a tool drawing to its envelope line.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "app/cli/arguments.h"
#include "app/cli/commands.h"
#include "app/cli/json.h"
#include "app/cli/outline_options.h"
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
#include "util/shown_number.h"

namespace cli {

namespace {
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
void runExact(const OutlineOptions& o, Job& job) {
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

void runRobust(const OutlineOptions& o, Job& job) {
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

void runJob(const OutlineOptions& o, AcDbDatabase* db, Job& job) {
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

void jsonJob(Json& j, const OutlineOptions& o, const Job& job, bool written, double readMs, double writeMs, const std::vector<std::string>& readWarnings,
             const std::string& solidRoute, const std::vector<std::string>& solidFiles, double solidMs, double stlMs) {
  OutlineReport report;
  const bool made = MakeOutlineReport(job.outline, report);
  j.beginObject().key("status").value(made ? "ok" : "no_outline").key("message").value(job.message);
  if (!job.tool.empty()) j.key("tool").value(job.tool);
  j.key("problem").value(job.problem);
  j.key("input").value(o.input).key("output");
  if (written) j.value(o.output);
  else j.null();
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

void printJob(const OutlineOptions& o, const Job& job) {
  OutlineReport report;
  const bool made = MakeOutlineReport(job.outline, report);
  const std::string who = job.tool.empty() ? "" : "tool " + job.tool + ": ";
  o.con.detail(who + "selected " + std::to_string(job.selected) + ", to the engine " + std::to_string(job.toEngine) +
               ", computed in " + std::to_string(static_cast<long long>(job.computeMs)) + " ms");
  for (const auto& w : job.warnings) o.con.warn(who + w.text);
  if (!o.con.text()) return;
  if (made)
    std::printf("%s%s: outline %s, %zu vertices, box (%g, %g) - (%g, %g) -> %s\n", who.c_str(), job.message.c_str(),
                report.handle.c_str(), report.vertices.size(), Shown(report.box[0]), Shown(report.box[1]),
                Shown(report.box[2]), Shown(report.box[3]), o.output.c_str());
  else
    std::printf("%s%s: no outline from %d selected entities: %s\n", who.c_str(), job.message.c_str(), job.selected,
                job.problem.c_str());
  if (job.haveAxis) {
    const double len = robust::Norm(job.axis.dir);
    std::printf("  method %s, axis through (%g, %g) along (%g, %g), %s side: %s", o.exact ? "exact" : "robust",
                Shown(job.axis.origin.x), Shown(job.axis.origin.y), Shown(job.axis.dir.x / len),
                Shown(job.axis.dir.y / len),
                job.axis.lowerSide ? "lower" : "upper", job.axisReason.c_str());
    if (!o.exact) std::printf("; gap %g, chord tolerance %g", job.gap, o.chordTol);
    std::printf("\n");
  }
  if (!made)
    for (const auto& c : job.axisCandidates) std::printf("  looked at %s\n", c.c_str());
}

// One drawing: its jobs run, the drawing and the files asked for written;
// its JSON result goes into j. Returns the exit code.
int outlineDrawing(const OutlineOptions& o, Json& j) {
  const Console& con = o.con;
  // A failure of this drawing: reported, and in JSON an error object.
  auto fail = [&](int code, const std::string& message) {
    std::fprintf(stderr, "envline outline: %s\n", message.c_str());
    ErrorJson(j, "outline", message, code);
    return code;
  };
  auto clock = std::chrono::steady_clock::now();
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfFile(o.input, drawing, diag)) return fail(1, diag.error);
  const double readMs = msSince(clock);
  con.detail("read " + o.input + " in " + MsText(clock));
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
      return fail(2, o.input + ": " +
                         (o.allTools ? "the drawing has no tagged drawing frames"
                                     : "no drawing frame has the tool number '" + o.tool + "'" +
                                           (known.empty() ? "" : " (the frames have " + known + ")")));
    }
  } else {
    const bool chosen = o.window || o.crossing || !o.handles.empty();
    if (!chosen && !frames.empty()) {
      std::string message = "the drawing has " + std::to_string(frames.size()) +
                            " tagged drawing frames; outlining them all as one part would outline the frames. "
                            "Choose one with --tool NUMBER, all with --all-tools, or give a window:";
      for (const DrawingFrame& f : frames) {
        char text[200];
        std::snprintf(text, sizeof text, "\n  tool %s: --window %g,%g,%g,%g", f.toolNumber.c_str(),
                      Shown(f.box.m_ptMin.x), Shown(f.box.m_ptMin.y), Shown(f.box.m_ptMax.x),
                      Shown(f.box.m_ptMax.y));
        message += text;
      }
      return fail(2, o.input + ": " + message);
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
          return fail(2, o.input + ": no entity has the handle '" + h + "'");
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
    if (solidId.isNull()) return fail(1, o.input + ": " + kSolidFailed);
    {
      AcDbObjectPointer<AcDb3dSolid> drawn(solidId, AcDb::kForRead);
      // The files carry millimetres.
      int units = o.units;
      if (units < 0) {
        units = db->insunits();
        if (units == 0) con.warn(kUnitlessWarning);
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
      if (!ok) return fail(1, error);
      for (const std::string& f : {o.sat, o.step, o.stl})
        if (!f.empty()) solidFiles.push_back(f);
    }
    if (!o.keepSolid) host::eraseObject(solidId);
  }

  // A failed run writes no drawing unless asked to.
  bool allMade = true;
  for (const Job& job : jobs) allMade = allMade && !job.outline.isNull();
  const bool writeDrawing = allMade || o.writeOnFailure;
  clock = std::chrono::steady_clock::now();
  if (writeDrawing && !host::dxf::writeDxfFile(o.output, drawing, {}, diag)) return fail(1, diag.error);
  const double writeMs = writeDrawing ? msSince(clock) : 0;
  if (writeDrawing) con.detail("wrote " + o.output + " in " + MsText(clock));
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
                  Shown(first.axis.origin.x), Shown(first.axis.origin.y), Shown(first.axis.dir.x),
                  Shown(first.axis.dir.y),
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
    if (!WriteDrawingPicture(*db, path, pic, error)) return fail(1, error);
    con.detail("wrote " + path);
  }

  if (o.json) {
    if (o.allTools) j.beginArray();
    for (const Job& job : jobs)
      jsonJob(j, o, job, writeDrawing, readMs, writeMs, diag.warnings, &job == &first ? solidRoute : "",
              &job == &first ? solidFiles : std::vector<std::string>{}, solidMs, stlMs);
    if (o.allTools) j.endArray();
  } else {
    for (const auto& w : diag.warnings) con.warn(w);
    for (const Job& job : jobs) printJob(o, job);
    if (!writeDrawing && con.text())
      std::printf("%s not written: no outline (--write-on-failure writes it anyway)\n", o.output.c_str());
    if (con.text())
      for (const auto& f : solidFiles) std::printf("solid (%s route) -> %s\n", solidRoute.c_str(), f.c_str());
  }
  return allMade ? 0 : 3;
}

}  // namespace

int runOutline(const Args& args) {
  OutlineOptions o;
  if (const int code = ParseOutlineOptions(args, o); code != 0) return code < 0 ? 0 : code;
  if (!o.outDir.empty()) {
    std::error_code ec;
    std::filesystem::create_directories(o.outDir, ec);
    if (!std::filesystem::is_directory(o.outDir)) return o.con.fail(1, o.outDir + ": cannot make the folder");
  }
  // Each drawing on its own; the worst outcome decides the exit code: a
  // file that cannot be read or written (1) over a usage error found in
  // one drawing (2) over a drawing without outline (3).
  Json j;
  const bool several = o.inputs.size() > 1;
  if (several && o.json) j.beginArray();
  int worst = 0;
  for (const std::string& input : o.inputs) {
    OutlineOptions one = o;
    one.input = input;
    one.output = OutlineOutputFor(o, input);
    const int code = outlineDrawing(one, j);
    auto rank = [](int c) { return c == 1 ? 3 : c == 2 ? 2 : c == 3 ? 1 : 0; };
    if (rank(code) > rank(worst)) worst = code;
  }
  if (several && o.json) j.endArray();
  if (o.json) std::printf("%s\n", j.str().c_str());
  return worst;
}

}  // namespace cli
