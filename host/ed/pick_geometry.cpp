#include "host/ed/pick_geometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "host/db/block_reference.h"
#include "host/db/curves.h"
#include "host/db/polylines.h"

namespace host::ed {

PickBox PickBox::fromCorners(const AcGePoint3d& a, const AcGePoint3d& b) {
  return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
}

namespace {

constexpr double kTwoPi = 2 * std::numbers::pi;
constexpr int kCurveSamples = 256;
constexpr int kMaxNesting = 16;

struct Segment {
  double ax, ay, bx, by;
};
// Counter-clockwise from start through sweep.
struct Arc {
  double cx, cy, r, start, sweep;
};
struct Pieces {
  std::vector<Segment> segments;
  std::vector<Arc> arcs;
};

bool pointIn(const PickBox& b, double x, double y) { return x >= b.xmin && x <= b.xmax && y >= b.ymin && y <= b.ymax; }

// Angle a (any value) lies within the arc's sweep.
bool onSweep(const Arc& arc, double a) {
  double d = std::fmod(a - arc.start, kTwoPi);
  if (d < 0) d += kTwoPi;
  return d <= arc.sweep + 1e-12;
}

bool segmentsCross(const Segment& s, double x1, double y1, double x2, double y2) {
  auto orient = [](double ax, double ay, double bx, double by, double cx, double cy) {
    const double v = (bx - ax) * (cy - ay) - (by - ay) * (cx - ax);
    return (v > 0) - (v < 0);
  };
  auto within = [](double a, double b, double c) { return c >= std::min(a, b) && c <= std::max(a, b); };
  const int o1 = orient(s.ax, s.ay, s.bx, s.by, x1, y1), o2 = orient(s.ax, s.ay, s.bx, s.by, x2, y2);
  const int o3 = orient(x1, y1, x2, y2, s.ax, s.ay), o4 = orient(x1, y1, x2, y2, s.bx, s.by);
  if (o1 != o2 && o3 != o4) return true;
  if (o1 == 0 && within(s.ax, s.bx, x1) && within(s.ay, s.by, y1)) return true;
  if (o2 == 0 && within(s.ax, s.bx, x2) && within(s.ay, s.by, y2)) return true;
  if (o3 == 0 && within(x1, x2, s.ax) && within(y1, y2, s.ay)) return true;
  if (o4 == 0 && within(x1, x2, s.bx) && within(y1, y2, s.by)) return true;
  return false;
}

bool segmentTouches(const Segment& s, const PickBox& b) {
  if (pointIn(b, s.ax, s.ay) || pointIn(b, s.bx, s.by)) return true;
  return segmentsCross(s, b.xmin, b.ymin, b.xmax, b.ymin) || segmentsCross(s, b.xmax, b.ymin, b.xmax, b.ymax) ||
         segmentsCross(s, b.xmax, b.ymax, b.xmin, b.ymax) || segmentsCross(s, b.xmin, b.ymax, b.xmin, b.ymin);
}

// The arc meets the edge from (x1,y1) to (x2,y2).
bool arcMeetsEdge(const Arc& arc, double x1, double y1, double x2, double y2) {
  const double dx = x2 - x1, dy = y2 - y1;
  const double fx = x1 - arc.cx, fy = y1 - arc.cy;
  const double a = dx * dx + dy * dy, bq = 2 * (fx * dx + fy * dy), c = fx * fx + fy * fy - arc.r * arc.r;
  const double disc = bq * bq - 4 * a * c;
  if (a == 0 || disc < 0) return false;
  const double root = std::sqrt(disc);
  for (const double t : {(-bq - root) / (2 * a), (-bq + root) / (2 * a)}) {
    if (t < 0 || t > 1) continue;
    const double px = x1 + t * dx, py = y1 + t * dy;
    if (onSweep(arc, std::atan2(py - arc.cy, px - arc.cx))) return true;
  }
  return false;
}

bool arcTouches(const Arc& arc, const PickBox& b) {
  const double e = arc.start + arc.sweep;
  if (pointIn(b, arc.cx + arc.r * std::cos(arc.start), arc.cy + arc.r * std::sin(arc.start)) ||
      pointIn(b, arc.cx + arc.r * std::cos(e), arc.cy + arc.r * std::sin(e)))
    return true;
  return arcMeetsEdge(arc, b.xmin, b.ymin, b.xmax, b.ymin) || arcMeetsEdge(arc, b.xmax, b.ymin, b.xmax, b.ymax) ||
         arcMeetsEdge(arc, b.xmax, b.ymax, b.xmin, b.ymax) || arcMeetsEdge(arc, b.xmin, b.ymax, b.xmin, b.ymin);
}

// The arc's true extents: its ends and the quadrant points it passes.
bool arcInside(const Arc& arc, const PickBox& b) {
  const double e = arc.start + arc.sweep;
  if (!pointIn(b, arc.cx + arc.r * std::cos(arc.start), arc.cy + arc.r * std::sin(arc.start)) ||
      !pointIn(b, arc.cx + arc.r * std::cos(e), arc.cy + arc.r * std::sin(e)))
    return false;
  for (int q = 0; q < 4; ++q) {
    const double a = q * std::numbers::pi / 2;
    if (onSweep(arc, a) && !pointIn(b, arc.cx + arc.r * std::cos(a), arc.cy + arc.r * std::sin(a))) return false;
  }
  return true;
}

bool plusZ(const AcGeVector3d& n) { return n.x == 0 && n.y == 0 && n.z > 0; }

void addSampled(const AcDbCurve& curve, Pieces& out) {
  const std::unique_ptr<AcGeCurve3d> ge = curve.geCurve();
  if (!ge) return;
  AcGePoint3dArray pts;
  ge->getSamplePoints(kCurveSamples, pts);
  for (int i = 0; i + 1 < pts.length(); ++i) out.segments.push_back({pts[i].x, pts[i].y, pts[i + 1].x, pts[i + 1].y});
  if (pts.length() == 1) out.segments.push_back({pts[0].x, pts[0].y, pts[0].x, pts[0].y});
}

void addExtents(const AcDbEntity& e, Pieces& out) {
  AcDbExtents ext;
  if (e.getGeomExtents(ext) != Acad::eOk) return;
  const AcGePoint3d lo = ext.minPoint(), hi = ext.maxPoint();
  out.segments.push_back({lo.x, lo.y, hi.x, lo.y});
  out.segments.push_back({hi.x, lo.y, hi.x, hi.y});
  out.segments.push_back({hi.x, hi.y, lo.x, hi.y});
  out.segments.push_back({lo.x, hi.y, lo.x, lo.y});
}

void collect(const AcDbEntity& e, Pieces& out, int depth);

void collectExploded(const AcDbEntity& e, Pieces& out, int depth) {
  AcDbEntityArray parts;
  if (depth >= kMaxNesting || e.explode(parts) != Acad::eOk || parts.isEmpty()) {
    for (AcDbEntity* p : parts) delete p;
    addExtents(e, out);
    return;
  }
  for (AcDbEntity* p : parts) {
    collect(*p, out, depth + 1);
    delete p;
  }
}

void collect(const AcDbEntity& e, Pieces& out, int depth) {
  if (const auto* line = AcDbLine::cast(&e)) {
    const AcGePoint3d a = line->startPoint(), b = line->endPoint();
    out.segments.push_back({a.x, a.y, b.x, b.y});
  } else if (const auto* arc = AcDbArc::cast(&e); arc && plusZ(arc->normal())) {
    out.arcs.push_back({arc->center().x, arc->center().y, arc->radius(), arc->startAngle(), arc->sweep()});
  } else if (const auto* circle = AcDbCircle::cast(&e); circle && plusZ(circle->normal())) {
    out.arcs.push_back({circle->center().x, circle->center().y, circle->radius(), 0, kTwoPi});
  } else if (AcDbPolyline::cast(&e) || AcDbBlockReference::cast(&e)) {
    collectExploded(e, out, depth);
  } else if (const auto* curve = AcDbCurve::cast(&e)) {
    addSampled(*curve, out);
  } else {
    addExtents(e, out);
  }
}

Pieces piecesOf(const AcDbEntity& e) {
  Pieces p;
  collect(e, p, 0);
  return p;
}

}  // namespace

bool liesInside(const AcDbEntity& entity, const PickBox& box) {
  const Pieces p = piecesOf(entity);
  if (p.segments.empty() && p.arcs.empty()) return false;
  for (const Segment& s : p.segments)
    if (!pointIn(box, s.ax, s.ay) || !pointIn(box, s.bx, s.by)) return false;
  for (const Arc& a : p.arcs)
    if (!arcInside(a, box)) return false;
  return true;
}

bool touches(const AcDbEntity& entity, const PickBox& box) {
  const Pieces p = piecesOf(entity);
  for (const Segment& s : p.segments)
    if (segmentTouches(s, box)) return true;
  for (const Arc& a : p.arcs)
    if (arcTouches(a, box)) return true;
  return false;
}

}  // namespace host::ed
