#include "engine/robust/geometry.h"

#include <algorithm>
#include <numbers>

namespace robust {
namespace {
constexpr double kPi = std::numbers::pi;
constexpr double kTwoPi = 2 * std::numbers::pi;

double Wrap(double t, double centre) {  // t moved by whole turns into [centre - π, centre + π)
  return t - kTwoPi * std::floor((t - centre + kPi) / kTwoPi);
}

void LineCircle(P2 p, P2 d, P2 c, double r, double tol, std::vector<P2>& out) {
  const double len = Norm(d);
  if (len == 0) return;
  const P2 u = d * (1 / len);
  const double along = Dot(c - p, u);
  const P2 foot = p + u * along;
  const double h = Dist(foot, c);
  if (h > r + tol) return;
  if (h >= r - tol * 1e-3 && std::fabs(h - r) <= tol) {
    out.push_back(foot);
    return;
  }
  const double w = std::sqrt(std::max(0.0, r * r - h * h));
  out.push_back(foot - u * w);
  out.push_back(foot + u * w);
}
}  // namespace

Seg Seg::Line(P2 a, P2 b, int source) {
  Seg s;
  s.a = a;
  s.b = b;
  s.source = source;
  return s;
}

Seg Seg::Arc(P2 c, double r, double t0, double t1, int source) {
  Seg s;
  s.arc = true;
  s.c = c;
  s.r = r;
  s.t0 = t0;
  s.t1 = t1;
  s.a = s.PointAtAngle(t0);
  s.b = s.PointAtAngle(t1);
  s.source = source;
  return s;
}

double Seg::ParamOf(P2 p) const {
  if (arc) return Wrap(std::atan2(p.y - c.y, p.x - c.x), 0.5 * (t0 + t1));
  const P2 d = b - a;
  const double l2 = Dot(d, d);
  return l2 == 0 ? 0 : Dot(p - a, d) / l2;
}

P2 Seg::PointAt(double param) const {
  if (arc) return PointAtAngle(param);
  return a + (b - a) * param;
}

double Seg::Distance(P2 p, double* param) const {
  double t = ParamOf(p);
  if (arc) {
    if (!AngleWithin(t, t0, t1, 0)) {
      const double da = Dist(p, a), db = Dist(p, b);
      if (param) *param = da <= db ? t0 : t1;
      return std::min(da, db);
    }
    t = std::clamp(t, t0, t1);
    if (param) *param = t;
    return std::fabs(Dist(p, c) - r);
  }
  t = std::clamp(t, 0.0, 1.0);
  if (param) *param = t;
  return Dist(p, PointAt(t));
}

void Seg::Box(double box[4]) const {
  box[0] = std::min(a.x, b.x);
  box[1] = std::min(a.y, b.y);
  box[2] = std::max(a.x, b.x);
  box[3] = std::max(a.y, b.y);
  if (!arc) return;
  for (int k = -4; k <= 8; ++k) {  // the quadrant points the arc passes
    const double t = k * kPi / 2;
    if (t > t0 && t < t1) {
      const P2 q = PointAtAngle(t);
      box[0] = std::min(box[0], q.x);
      box[1] = std::min(box[1], q.y);
      box[2] = std::max(box[2], q.x);
      box[3] = std::max(box[3], q.y);
    }
  }
}

bool AngleWithin(double t, double t0, double t1, double slack) {
  const double w = Wrap(t, 0.5 * (t0 + t1));
  return w >= t0 - slack && w <= t1 + slack;
}

bool SameSupport(const Seg& u, const Seg& v, double tol) {
  if (u.arc != v.arc) return false;
  if (u.arc) return Dist(u.c, v.c) <= tol && std::fabs(u.r - v.r) <= tol;
  const P2 d = u.b - u.a;
  const double len = Norm(d);
  if (len == 0) return false;
  return std::fabs(Cross(d, v.a - u.a)) / len <= tol && std::fabs(Cross(d, v.b - u.a)) / len <= tol;
}

std::vector<P2> SupportIntersections(const Seg& u, const Seg& v, double tol) {
  std::vector<P2> out;
  if (!u.arc && !v.arc) {
    const P2 d = u.b - u.a, e = v.b - v.a;
    const double den = Cross(d, e);
    if (std::fabs(den) <= 1e-12 * Norm(d) * Norm(e)) return out;
    const double t = Cross(v.a - u.a, e) / den;
    out.push_back(u.a + d * t);
  } else if (u.arc != v.arc) {
    const Seg& l = u.arc ? v : u;
    const Seg& c = u.arc ? u : v;
    LineCircle(l.a, l.b - l.a, c.c, c.r, tol, out);
  } else {
    const double d = Dist(u.c, v.c);
    if (d == 0 || d > u.r + v.r + tol || d < std::fabs(u.r - v.r) - tol) return out;
    const double along = (d * d + u.r * u.r - v.r * v.r) / (2 * d);
    const double h2 = u.r * u.r - along * along;
    const P2 dir = (v.c - u.c) * (1 / d);
    const P2 base = u.c + dir * along;
    const P2 perp{-dir.y, dir.x};
    if (h2 <= (tol * 1e-3) * (tol * 1e-3) || h2 <= 0) {
      out.push_back(base);
    } else {
      const double h = std::sqrt(h2);
      out.push_back(base + perp * h);
      out.push_back(base - perp * h);
    }
  }
  return out;
}

std::vector<P2> CurveIntersections(const Seg& u, const Seg& v, double tol) {
  std::vector<P2> out;
  for (const P2& p : SupportIntersections(u, v, tol))
    if (u.Distance(p) <= tol && v.Distance(p) <= tol) out.push_back(p);
  return out;
}

}  // namespace robust

namespace robust {
Seg EdgeFromBulge(P2 p, P2 q, double bulge) {
  if (bulge == 0 || Dist(p, q) == 0) return Seg::Line(p, q);
  const double theta = 4 * std::atan(bulge);  // signed sweep
  const double chord = Dist(p, q);
  const double r = chord / (2 * std::sin(std::fabs(theta) / 2));
  const P2 mid = (p + q) * 0.5, d = (q - p) * (1 / chord);
  const P2 left{-d.y, d.x};
  // The centre lies left of p→q for a counter-clockwise sweep under π.
  const double h = r * std::cos(theta / 2) * (theta > 0 ? 1 : -1);
  const P2 c = mid + left * h;
  const P2 from = theta > 0 ? p : q, to = theta > 0 ? q : p;
  const double t0 = std::atan2(from.y - c.y, from.x - c.x);
  double t1 = std::atan2(to.y - c.y, to.x - c.x);
  while (t1 <= t0) t1 += 2 * std::numbers::pi;
  return Seg::Arc(c, r, t0, t1);
}
}  // namespace robust
