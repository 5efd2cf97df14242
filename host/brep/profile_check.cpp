#include "host/brep/profile_check.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "host/brep/solid.h"

namespace host::brep {
namespace {

constexpr double kTwoPi = 2 * std::numbers::pi;

struct P {
  double x, y;
};
P operator-(P a, P b) { return {a.x - b.x, a.y - b.y}; }
P operator+(P a, P b) { return {a.x + b.x, a.y + b.y}; }
P operator*(P a, double s) { return {a.x * s, a.y * s}; }
double Cross(P a, P b) { return a.x * b.y - a.y * b.x; }
double Dot(P a, P b) { return a.x * b.x + a.y * b.y; }
double Dist(P a, P b) { return std::hypot(a.x - b.x, a.y - b.y); }

// A line, or an arc from angle start sweeping by sweep (signed) about c.
struct Segment {
  P a, b;
  bool arc = false;
  P c{};
  double radius = 0, start = 0, sweep = 0;
  double minX = 0, maxX = 0, minY = 0, maxY = 0;
};

// Whether angle t lies on the arc, within tol radians.
bool OnArc(const Segment& s, double t, double tol) {
  double from = s.start, span = s.sweep;
  if (span < 0) {
    from += span;
    span = -span;
  }
  double d = std::fmod(t - from, kTwoPi);
  if (d < 0) d += kTwoPi;
  return d <= span + tol || d >= kTwoPi - tol;
}

Segment MakeSegment(P a, P b, double bulge) {
  Segment s{a, b};
  s.minX = std::min(a.x, b.x), s.maxX = std::max(a.x, b.x);
  s.minY = std::min(a.y, b.y), s.maxY = std::max(a.y, b.y);
  if (bulge == 0) return s;
  // The centre lies off the chord's midpoint, to the left for a positive bulge.
  const P chord = b - a;
  const double len = std::hypot(chord.x, chord.y);
  if (len == 0) return s;
  const double sagittaRatio = (1 / bulge - bulge) / 2;  // distance centre-midpoint over half chord
  const P mid = (a + b) * 0.5;
  const P left{-chord.y / len, chord.x / len};
  s.arc = true;
  s.c = mid + left * (sagittaRatio * len / 2);
  s.radius = Dist(s.c, a);
  s.start = std::atan2(a.y - s.c.y, a.x - s.c.x);
  s.sweep = 4 * std::atan(bulge);
  for (int k = 0; k < 4; ++k) {  // the extreme points the arc passes
    const double t = k * std::numbers::pi / 2;
    if (!OnArc(s, t, 0)) continue;
    const P q{s.c.x + s.radius * std::cos(t), s.c.y + s.radius * std::sin(t)};
    s.minX = std::min(s.minX, q.x), s.maxX = std::max(s.maxX, q.x);
    s.minY = std::min(s.minY, q.y), s.maxY = std::max(s.maxY, q.y);
  }
  return s;
}

double AngleOf(const Segment& s, P q) { return std::atan2(q.y - s.c.y, q.x - s.c.x); }

// Points where two segments meet; overlap is set when they share a stretch.
void Meet(const Segment& s, const Segment& t, double tol, std::vector<P>& points, bool& overlap) {
  if (!s.arc && !t.arc) {
    const P d1 = s.b - s.a, d2 = t.b - t.a;
    const double l1 = std::hypot(d1.x, d1.y), l2 = std::hypot(d2.x, d2.y);
    const double denom = Cross(d1, d2);
    if (std::fabs(denom) <= 1e-12 * l1 * l2) {
      // Parallel: collinear pieces overlap when their spans share more than a point.
      if (std::fabs(Cross(d1, t.a - s.a)) / l1 > tol) return;
      const double u0 = Dot(t.a - s.a, d1) / l1, u1 = Dot(t.b - s.a, d1) / l1;
      const double lo = std::max(0.0, std::min(u0, u1)), hi = std::min(l1, std::max(u0, u1));
      if (hi - lo > tol) overlap = true;
      else if (hi - lo >= -tol) points.push_back(s.a + d1 * (((lo + hi) / 2) / l1));
      return;
    }
    const double u = Cross(t.a - s.a, d2) / denom, v = Cross(t.a - s.a, d1) / denom;
    if (u * l1 >= -tol && u * l1 <= l1 + tol && v * l2 >= -tol && v * l2 <= l2 + tol) points.push_back(s.a + d1 * u);
    return;
  }
  if (s.arc && !t.arc) return Meet(t, s, tol, points, overlap);
  if (!s.arc) {  // a line s and an arc t
    const P d = s.b - s.a;
    const double l = std::hypot(d.x, d.y);
    const P u = d * (1 / l);
    const double along = Dot(t.c - s.a, u), off = Cross(u, t.c - s.a);
    const double h2 = t.radius * t.radius - off * off;
    if (h2 < -2 * tol * t.radius) return;
    const double h = std::sqrt(std::max(h2, 0.0));
    for (double k : {along - h, along + h}) {
      if (k < -tol || k > l + tol) continue;
      const P q = s.a + u * k;
      if (OnArc(t, AngleOf(t, q), tol / t.radius)) points.push_back(q);
      if (h == 0) break;
    }
    return;
  }
  // Two arcs.
  const double d = Dist(s.c, t.c);
  if (d <= tol && std::fabs(s.radius - t.radius) <= tol) {
    // One circle: the arcs overlap when either holds an inner point of the other.
    for (const auto& [x, y] : {std::pair{&s, &t}, std::pair{&t, &s}}) {
      const double mid = y->start + y->sweep / 2;
      const double margin = tol / y->radius;
      if (OnArc(*x, mid, -margin) && std::fabs(y->sweep) * y->radius > 2 * tol) overlap = true;
      for (double end : {y->start, y->start + y->sweep})
        if (OnArc(*x, end, margin)) points.push_back({y->c.x + y->radius * std::cos(end), y->c.y + y->radius * std::sin(end)});
    }
    return;
  }
  if (d > s.radius + t.radius + tol || d < std::fabs(s.radius - t.radius) - tol || d == 0) return;
  const double a = (d * d + s.radius * s.radius - t.radius * t.radius) / (2 * d);
  const double h = std::sqrt(std::max(s.radius * s.radius - a * a, 0.0));
  const P e = (t.c - s.c) * (1 / d);
  const P base = s.c + e * a;
  const P n{-e.y, e.x};
  for (double k : {-h, h}) {
    const P q = base + n * k;
    if (OnArc(s, AngleOf(s, q), tol / s.radius) && OnArc(t, AngleOf(t, q), tol / t.radius)) points.push_back(q);
    if (h == 0) break;
  }
}

}  // namespace

ProfileShape CheckProfileShape(const MeridianProfile& profile, std::string& detail) {
  const auto& v = profile.vertices;
  const std::size_t n = v.size();
  std::vector<Segment> segs;
  segs.reserve(n);
  double extent = 1;
  for (std::size_t i = 0; i < n; ++i) {
    const auto& p = v[i];
    const auto& q = v[(i + 1) % n];
    segs.push_back(MakeSegment({p.x, p.r}, {q.x, q.r}, p.bulge));
    extent = std::max({extent, std::fabs(p.x), std::fabs(p.r)});
  }
  const double tol = 1e-9 * extent;      // points closer than this are one point
  const double nearVertex = 1e-5 * extent;  // beyond tol but this close: rounding, or a tiny loop
  for (std::size_t i = 0; i < n; ++i)
    if (segs[i].minY < -tol) {
      detail = "segment " + std::to_string(i) + " crosses the axis";
      return ProfileShape::kCrossing;
    }
  // Sweep along x: only segments whose x ranges overlap can meet.
  std::vector<std::size_t> order(n);
  for (std::size_t i = 0; i < n; ++i) order[i] = i;
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return segs[a].minX < segs[b].minX; });
  ProfileShape shape = ProfileShape::kSimple;
  std::vector<P> points;
  for (std::size_t oi = 0; oi < n; ++oi) {
    const std::size_t i = order[oi];
    const Segment& s = segs[i];
    for (std::size_t oj = oi + 1; oj < n && segs[order[oj]].minX <= s.maxX + tol; ++oj) {
      const std::size_t j = order[oj];
      const Segment& t = segs[j];
      if (t.minY > s.maxY + tol || t.maxY < s.minY - tol) continue;
      const std::size_t lo = std::min(i, j), hi = std::max(i, j);
      // The vertices neighbours share (both of them in a chain of two).
      std::vector<P> shared;
      if (hi == lo + 1) shared.push_back(segs[lo].b);
      if (lo == 0 && hi == n - 1) shared.push_back(segs[hi].b);
      points.clear();
      bool overlap = false;
      Meet(s, t, tol, points, overlap);
      if (overlap) {
        detail = "segments " + std::to_string(lo) + " and " + std::to_string(hi) + " overlap";
        return ProfileShape::kCrossing;
      }
      for (const P& q : points) {
        double away = nearVertex * 2;
        for (const P& at : shared) away = std::min(away, Dist(q, at));
        if (away <= tol) continue;
        if (away <= nearVertex) {
          shape = ProfileShape::kUnsure;
          continue;
        }
        detail = "segments " + std::to_string(lo) + " and " + std::to_string(hi) + " cross";
        return ProfileShape::kCrossing;
      }
    }
  }
  return shape;
}

}  // namespace host::brep
