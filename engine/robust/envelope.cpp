#include "engine/robust/envelope.h"

#include <algorithm>

namespace robust {
namespace {
bool IsUpperHalf(const Seg& e) { return std::sin(0.5 * (e.t0 + e.t1)) > 0; }

// ∫ sqrt(r² - u²) du.
double CircleIntegral(double u, double r) {
  u = std::clamp(u, -r, r);
  return 0.5 * (u * std::sqrt(std::max(0.0, r * r - u * u)) + r * r * std::asin(u / r));
}
}  // namespace

double HeightAt(const Seg& e, double x) {
  if (e.arc) {
    const double d = x - e.c.x;
    const double h = std::sqrt(std::max(0.0, e.r * e.r - d * d));
    return IsUpperHalf(e) ? e.c.y + h : e.c.y - h;
  }
  const double dx = e.b.x - e.a.x;
  if (dx == 0) return std::max(e.a.y, e.b.y);
  return e.a.y + (e.b.y - e.a.y) * (x - e.a.x) / dx;
}

double RunArea(const Seg& e, double a, double b) {
  if (!e.arc) return 0.5 * (HeightAt(e, a) + HeightAt(e, b)) * (b - a);
  const double circle = CircleIntegral(b - e.c.x, e.r) - CircleIntegral(a - e.c.x, e.r);
  return e.c.y * (b - a) + (IsUpperHalf(e) ? circle : -circle);
}

std::vector<Run> UpperEnvelope(const std::vector<Seg>& edges, const std::vector<int>& subset, double eps) {
  struct Piece {
    double a, b;
    int edge;
  };
  std::vector<Piece> pieces;
  std::vector<double> xs;
  for (int i : subset) {
    const Seg& e = edges[i];
    const double a = std::min(e.a.x, e.b.x), b = std::max(e.a.x, e.b.x);
    if (b - a <= eps) continue;
    pieces.push_back({a, b, i});
    xs.push_back(a);
    xs.push_back(b);
  }
  std::vector<Run> runs;
  if (pieces.empty()) return runs;
  std::sort(xs.begin(), xs.end());
  std::vector<double> stops;
  for (double x : xs)
    if (stops.empty() || x - stops.back() > eps) stops.push_back(x);
  std::sort(pieces.begin(), pieces.end(), [](const Piece& p, const Piece& q) { return p.a < q.a; });
  std::vector<Piece> active;
  std::size_t next = 0;
  for (std::size_t k = 0; k + 1 < stops.size(); ++k) {
    const double a = stops[k], b = stops[k + 1], mid = 0.5 * (a + b);
    while (next < pieces.size() && pieces[next].a <= a + eps) active.push_back(pieces[next++]);
    std::erase_if(active, [&](const Piece& p) { return p.b <= a + eps; });
    int best = -1;
    double bestHeight = 0;
    const int previous = runs.empty() ? -1 : runs.back().edge;
    for (const Piece& p : active) {
      const double h = HeightAt(edges[p.edge], mid);
      if (h <= eps) continue;  // below the axis
      // Equal heights (a line drawn twice) keep the edge already followed.
      if (best < 0 || h > bestHeight + eps || (h >= bestHeight - eps && p.edge == previous)) {
        best = p.edge;
        bestHeight = h;
      }
    }
    if (!runs.empty() && runs.back().edge == best && runs.back().b >= a - eps) runs.back().b = b;
    else runs.push_back({a, b, best});
  }
  return runs;
}

double EnvelopeAt(const std::vector<Seg>& edges, const std::vector<Run>& runs, double x) {
  const auto it = std::upper_bound(runs.begin(), runs.end(), x, [](double v, const Run& r) { return v < r.b; });
  if (it == runs.end() || x < it->a || it->edge < 0) return 0;
  return HeightAt(edges[it->edge], x);
}

}  // namespace robust
