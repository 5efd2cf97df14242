#include "engine/robust/outline_check.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace robust {
namespace {
OutlineCheck Fail(const std::string& problem, P2 where) {
  OutlineCheck c;
  c.ok = false;
  c.problem = problem;
  c.where = where;
  return c;
}

std::string At(const char* what, P2 p) {
  char text[200];
  std::snprintf(text, sizeof text, "%s at (%.6g, %.6g)", what, p.x, p.y);
  return text;
}
}  // namespace

OutlineCheck CheckOutline(const std::vector<ProfileVertex>& vertices, bool closed, const ProfileAxis& axis) {
  const std::size_t n = vertices.size();
  if (!closed) return Fail("the outline is not closed", n ? vertices[0].p : P2{});
  if (n < 3) return Fail("the outline has fewer than three vertices", n ? vertices[0].p : P2{});
  double size = 1;
  for (const ProfileVertex& v : vertices) size = std::max({size, std::fabs(v.p.x), std::fabs(v.p.y)});
  const double tol = 1e-9 * size;
  std::vector<Seg> edges;
  for (std::size_t i = 0; i < n; ++i) {
    const P2 p = vertices[i].p, q = vertices[(i + 1) % n].p;
    if (Dist(p, q) <= tol) return Fail(At("the outline repeats a vertex (an edge of no length)", p), p);
    edges.push_back(EdgeFromBulge(p, q, vertices[i].bulge));
  }
  // Simple: neighbours meet only at their shared vertex, others not at all.
  std::vector<std::array<double, 4>> boxes(n);
  for (std::size_t i = 0; i < n; ++i) edges[i].Box(boxes[i].data());
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = i + 1; j < n; ++j) {
      if (boxes[j][0] > boxes[i][2] + tol || boxes[j][2] < boxes[i][0] - tol || boxes[j][1] > boxes[i][3] + tol ||
          boxes[j][3] < boxes[i][1] - tol)
        continue;
      const bool next = j == i + 1, wrap = i == 0 && j == n - 1;
      const P2 shared = next ? vertices[j].p : vertices[0].p;
      for (const P2& x : CurveIntersections(edges[i], edges[j], tol)) {
        if ((next || wrap) && Dist(x, shared) <= 1e3 * tol) continue;
        return Fail(At("the outline crosses or touches itself", x), x);
      }
      if (SameSupport(edges[i], edges[j], tol) && (next || wrap)) {
        // A neighbour that runs back over this edge.
        const Seg& a = edges[i];
        const Seg& b = edges[j];
        const P2 far = next ? vertices[(j + 1) % n].p : vertices[n - 1].p;
        if (!a.arc && !b.arc && a.Distance(far) <= tol && Dist(far, shared) > tol)
          return Fail(At("the outline runs back over itself", shared), shared);
        (void)b;
      }
    }
  // Both ends on the axis.
  const P2 u = axis.dir * (1 / Norm(axis.dir));
  double sMin = 1e300, sMax = -1e300, sMinOn = 1e300, sMaxOn = -1e300;
  P2 atMin, atMax;
  for (const ProfileVertex& v : vertices) {
    const P2 d = v.p - axis.origin;
    const double s = Dot(d, u), r = Cross(u, d);
    if (s < sMin) sMin = s, atMin = v.p;
    if (s > sMax) sMax = s, atMax = v.p;
    if (std::fabs(r) <= 1e-6 * size) sMinOn = std::min(sMinOn, s), sMaxOn = std::max(sMaxOn, s);
  }
  const double endTol = 1e-6 * size;
  if (sMinOn > sMin + endTol) return Fail(At("the outline's first end is not on the axis", atMin), atMin);
  if (sMaxOn < sMax - endTol) return Fail(At("the outline's last end is not on the axis", atMax), atMax);
  return {};
}

}  // namespace robust
