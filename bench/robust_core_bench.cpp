// The robust outline's geometry core against the same work done on GEOS and
// on CGAL, on the same contour curves (read from a drawing, the axis found as
// `envline outline --centre auto` finds it, all of that outside the timing):
//
//   robust graph   the contour cut where curves meet, ends within the gap
//                  joined, bridges marked (the step that makes the regions)
//   robust         the whole outline: graph, union of the regions, upper
//                  envelope, bulges, separate bodies, the mirror check
//   GEOS           ends within the gap joined, arcs as chords within the chord
//                  tolerance, the linework noded (unary union), polygonized,
//                  the polygons united, clipped to the chosen side, boundary
//   CGAL           ends within the gap joined, lines and circular arcs
//                  (arcs kept as arcs) into an exact arrangement
//                  (Arr_circle_segment_traits_2 on the exact kernel), the
//                  edges between the regions and the outside, and their
//                  upper envelope
//
// GEOS and CGAL stop short of the outline: GEOS gives the region's boundary
// as chords (its arcs would still have to be fitted back, recesses at end
// faces filled and the part picked among the bodies); CGAL gives the
// envelope of the union's boundary, without the checks and warnings.
//
//   robust_core_bench NAME DRAWING.dxf [X1,Y1,X2,Y2 ...]
//
// With windows, each window is one selection (a sheet's frames) and the
// times are the sums over them. Prints one line: times in ms (median of
// runs filling about a second, at least 3) and the ratios to the robust
// outline, with the sizes and areas that show the four did the same work.
#include <geos_c.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numbers>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/robust/axis_search.h"
#include "engine/robust/contour.h"
#include "engine/robust/graph.h"
#include "engine/robust/profile.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "ui/robust_outline_run.h"

#ifdef ENVLINE_BENCH_CGAL
#include <CGAL/Arr_circle_segment_traits_2.h>
#include <CGAL/Arrangement_2.h>
#include <CGAL/Envelope_diagram_1.h>
#include <CGAL/Exact_predicates_exact_constructions_kernel.h>
#include <CGAL/envelope_2.h>
#endif

namespace {

using robust::P2;
using robust::Seg;
constexpr double kChordTol = 0.001;

// One selection: its contour in the axis frame (the axis along +x through
// the origin, the chosen side up), and the gap.
struct Input {
  std::vector<Seg> world;
  robust::ProfileAxis axis;
  std::vector<Seg> local;
  double gap = 0;
};

bool Prepare(const AcArray<AcDbObjectId>& selection, Input& in) {
  const robust::Contour contour = robust::CollectContour(selection, kChordTol);
  in.world = contour.curves;
  in.gap = DefaultGap(contour.curves);
  const robust::AxisChoice choice = robust::ChooseAxis(contour, in.gap);
  if (!choice.found || choice.axis.dir.y != 0 || choice.axis.lowerSide) return false;  // the bench tools lie along x
  in.axis = choice.axis;
  const P2 o = in.axis.origin;
  const double sign = in.axis.dir.x > 0 ? 1 : -1;
  for (const Seg& s : in.world) {
    auto local = [&](P2 p) { return P2{sign * (p.x - o.x), sign * (p.y - o.y)}; };
    if (!s.arc) in.local.push_back(Seg::Line(local(s.a), local(s.b)));
    else in.local.push_back(Seg::Arc(local(s.c), s.r, s.t0 + (sign < 0 ? std::numbers::pi : 0),
                                     s.t1 + (sign < 0 ? std::numbers::pi : 0)));
  }
  return true;
}

// Ends within the gap joined: every end moves to the first end found within
// the gap of it (a grid of gap-sized cells), as a tolerance-free library
// needs before it can see the regions close.
struct SnappedCurve {
  P2 a, b;
  bool arc = false;
  P2 c;
  double r = 0, t0 = 0, t1 = 0;
};

std::vector<SnappedCurve> SnapEnds(const std::vector<Seg>& curves, double gap) {
  std::unordered_map<long long, std::vector<P2>> cells;
  auto key = [&](long long i, long long j) { return i * 1000003LL + j; };
  auto snap = [&](P2 p) {
    const long long i = static_cast<long long>(std::floor(p.x / gap)), j = static_cast<long long>(std::floor(p.y / gap));
    for (long long di = -1; di <= 1; ++di)
      for (long long dj = -1; dj <= 1; ++dj) {
        const auto it = cells.find(key(i + di, j + dj));
        if (it == cells.end()) continue;
        for (const P2& q : it->second)
          if (robust::Dist(p, q) <= gap) return q;
      }
    cells[key(i, j)].push_back(p);
    return p;
  };
  std::vector<SnappedCurve> out;
  out.reserve(curves.size() + 1);
  for (const Seg& s : curves) out.push_back({snap(s.a), snap(s.b), s.arc, s.c, s.r, s.t0, s.t1});
  return out;
}

// The axis line, which closes the regions of a part drawn as one half.
SnappedCurve AxisLine(const std::vector<Seg>& curves, double gap) {
  double x0 = 1e300, x1 = -1e300;
  for (const Seg& s : curves) {
    double box[4];
    s.Box(box);
    x0 = std::min(x0, box[0]), x1 = std::max(x1, box[2]);
  }
  SnappedCurve axis;
  axis.a = {x0 - 2 * gap, 0};
  axis.b = {x1 + 2 * gap, 0};
  return axis;
}

// ---------------------------------------------------------------- robust
struct Result {
  double area = 0;  // of what came out above the axis
  int pieces = 0;   // vertices or edges of it
  int arcs = 0;     // of those, arcs
};

Result RobustGraph(const Input& in) {
  std::vector<Seg> curves = in.local;
  const SnappedCurve axis = AxisLine(in.local, in.gap);
  curves.push_back(Seg::Line(axis.a, axis.b));
  const robust::ContourGraph g = robust::BuildContourGraph(curves, in.gap);
  return {0, static_cast<int>(g.edges.size()), 0};
}

Result RobustProfile(const Input& in) {
  const robust::Profile p = robust::ComputeProfile(in.world, in.axis, in.gap);
  Result r{p.area, static_cast<int>(p.vertices.size()), 0};
  for (const auto& v : p.vertices) r.arcs += v.bulge != 0;
  return r;
}

// ---------------------------------------------------------------- GEOS
Result Geos(const Input& in) {
  static const GEOSContextHandle_t ctx = GEOS_init_r();  // made once, outside the timing
  std::vector<SnappedCurve> curves = SnapEnds(in.local, in.gap);
  curves.push_back(AxisLine(in.local, in.gap));
  std::vector<GEOSGeometry*> lines;
  lines.reserve(curves.size());
  double ymax = 0, x0 = 1e300, x1 = -1e300;
  for (const SnappedCurve& s : curves) {
    std::vector<P2> pts{s.a};
    if (s.arc) {
      // Chords whose sagitta stays within the chord tolerance; the snapped
      // ends replace the arc's own.
      const double step = 2 * std::acos(std::max(-1.0, 1 - kChordTol / s.r));
      const int n = std::max(1, static_cast<int>(std::ceil((s.t1 - s.t0) / step)));
      for (int k = 1; k < n; ++k) pts.push_back(Seg::Arc(s.c, s.r, s.t0, s.t1).PointAtAngle(s.t0 + (s.t1 - s.t0) * k / n));
    }
    pts.push_back(s.b);
    GEOSCoordSequence* seq = GEOSCoordSeq_create_r(ctx, static_cast<unsigned>(pts.size()), 2);
    for (unsigned k = 0; k < pts.size(); ++k) {
      GEOSCoordSeq_setXY_r(ctx, seq, k, pts[k].x, pts[k].y);
      ymax = std::max(ymax, pts[k].y), x0 = std::min(x0, pts[k].x), x1 = std::max(x1, pts[k].x);
    }
    lines.push_back(GEOSGeom_createLineString_r(ctx, seq));
  }
  GEOSGeometry* all = GEOSGeom_createCollection_r(ctx, GEOS_MULTILINESTRING, lines.data(),
                                                  static_cast<unsigned>(lines.size()));
  GEOSGeometry* noded = GEOSUnaryUnion_r(ctx, all);
  const GEOSGeometry* nodedArg[] = {noded};
  GEOSGeometry* regions = GEOSPolygonize_r(ctx, nodedArg, 1);
  GEOSGeometry* body = GEOSUnaryUnion_r(ctx, regions);
  GEOSGeometry* side = GEOSClipByRect_r(ctx, body, x0 - 1, 0, x1 + 1, ymax + 1);
  GEOSGeometry* boundary = GEOSBoundary_r(ctx, side);
  Result r;
  GEOSArea_r(ctx, side, &r.area);
  r.pieces = GEOSGetNumCoordinates_r(ctx, boundary);
  for (GEOSGeometry* g : {all, noded, regions, body, side, boundary}) GEOSGeom_destroy_r(ctx, g);
  return r;
}

// ---------------------------------------------------------------- CGAL
#ifdef ENVLINE_BENCH_CGAL
using Kernel = CGAL::Exact_predicates_exact_constructions_kernel;
using Traits = CGAL::Arr_circle_segment_traits_2<Kernel>;
using Arrangement = CGAL::Arrangement_2<Traits>;
using Diagram = CGAL::Envelope_diagram_1<Traits>;

Result Cgal(const Input& in) {
  std::vector<SnappedCurve> snapped = SnapEnds(in.local, in.gap);
  snapped.push_back(AxisLine(in.local, in.gap));
  std::vector<Traits::Curve_2> curves;
  curves.reserve(snapped.size());
  for (const SnappedCurve& s : snapped) {
    const Kernel::Point_2 a(s.a.x, s.a.y), b(s.b.x, s.b.y);
    if (a == b) continue;
    if (!s.arc) {
      curves.emplace_back(Kernel::Segment_2(a, b));
    } else {
      // The arc through its two ends and its middle: rational points, so the
      // circle is exact and meets its neighbours' ends exactly.
      const P2 m = Seg::Arc(s.c, s.r, s.t0, s.t1).PointAtAngle(0.5 * (s.t0 + s.t1));
      curves.emplace_back(a, Kernel::Point_2(m.x, m.y), b);
    }
  }
  Arrangement arr;
  CGAL::insert(arr, curves.begin(), curves.end());
  // The union of the regions is every bounded face; its boundary the edges
  // between a bounded face and the unbounded one, kept above the axis.
  std::vector<Traits::X_monotone_curve_2> boundary;
  for (auto e = arr.edges_begin(); e != arr.edges_end(); ++e) {
    if (e->face()->is_unbounded() == e->twin()->face()->is_unbounded()) continue;
    if (CGAL::to_double(e->source()->point().y()) + CGAL::to_double(e->target()->point().y()) <= 0) continue;
    boundary.push_back(e->curve());
  }
  Diagram diagram;
  CGAL::upper_envelope_x_monotone_2(boundary.begin(), boundary.end(), diagram);
  Result r;
  for (auto edge = diagram.leftmost(); edge != diagram.rightmost(); edge = edge->right()->right()) {
    if (edge->is_empty()) continue;
    ++r.pieces;
    r.arcs += edge->curve().is_circular();
  }
  return r;
}
#endif

// Median of runs filling about a second (at least 3), in ms.
double Time(const std::function<void()>& f) {
  std::vector<double> ms;
  const auto begin = std::chrono::steady_clock::now();
  while (ms.size() < 3 || (std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() < 1.0 &&
                           ms.size() < 101)) {
    const auto t = std::chrono::steady_clock::now();
    f();
    ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t).count());
  }
  std::nth_element(ms.begin(), ms.begin() + ms.size() / 2, ms.end());
  return ms[ms.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: robust_core_bench NAME DRAWING.dxf [X1,Y1,X2,Y2 ...]\n");
    return 2;
  }
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfFile(argv[2], drawing, diag)) {
    std::fprintf(stderr, "%s\n", diag.error.c_str());
    return 1;
  }
  AcDbDatabase* db = drawing.database.get();
  std::vector<AcArray<AcDbObjectId>> selections;
  if (argc == 3) selections.push_back(host::allEntities(db));
  for (int k = 3; k < argc; ++k) {
    double w[4];
    if (std::sscanf(argv[k], "%lf,%lf,%lf,%lf", &w[0], &w[1], &w[2], &w[3]) != 4) return 2;
    selections.push_back(host::selectByBox(db, {w[0], w[1], 0}, {w[2], w[3], 0}, host::SelectMode::kWindow));
  }
  std::vector<Input> inputs(selections.size());
  std::size_t curves = 0;
  for (std::size_t k = 0; k < selections.size(); ++k) {
    if (!Prepare(selections[k], inputs[k])) {
      std::fprintf(stderr, "selection %zu: no horizontal axis found\n", k + 1);
      return 1;
    }
    curves += inputs[k].local.size();
  }

  struct Method {
    const char* name;
    Result (*run)(const Input&);
  };
  std::vector<Method> methods = {{"robust graph", RobustGraph}, {"robust", RobustProfile}, {"GEOS", Geos}};
#ifdef ENVLINE_BENCH_CGAL
  methods.push_back({"CGAL", Cgal});
#endif
  std::vector<double> ms;
  std::vector<Result> totals;
  for (const Method& m : methods) {
    Result total;
    for (const Input& in : inputs) {
      const Result r = m.run(in);
      total.area += r.area, total.pieces += r.pieces, total.arcs += r.arcs;
    }
    totals.push_back(total);
    ms.push_back(Time([&] {
      for (const Input& in : inputs) m.run(in);
    }));
  }
  std::printf("%-34s %5zu %6zu", argv[1], inputs.size(), curves);
  for (std::size_t k = 0; k < methods.size(); ++k) std::printf(" %10.3f", ms[k]);
  for (std::size_t k = 2; k < methods.size(); ++k) std::printf(" %7.1fx", ms[k] / ms[1]);
  std::printf("   area robust %.6g, GEOS %.6g; robust %d vertices, %d arcs; GEOS %d points", totals[1].area,
              totals[2].area, totals[1].pieces, totals[1].arcs, totals[2].pieces);
  if (methods.size() > 3) std::printf("; CGAL %d envelope edges, %d arcs", totals[3].pieces, totals[3].arcs);
  std::printf("\n");
  return 0;
}
