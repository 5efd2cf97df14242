#include "engine/robust/profile.h"

#include <algorithm>
#include <cstdio>
#include <numbers>

#include "engine/robust/envelope.h"
#include "engine/robust/graph.h"

namespace robust {
namespace {
constexpr double kPi = std::numbers::pi;

// The axis frame: s along the axis, r away from it towards the chosen side.
struct Frame {
  P2 o, u, n;
  bool mirrored;
  double phi;
  explicit Frame(const ProfileAxis& axis) {
    const double len = Norm(axis.dir);
    u = axis.dir * (1 / len);
    o = axis.origin;
    mirrored = axis.lowerSide;
    n = mirrored ? P2{u.y, -u.x} : P2{-u.y, u.x};
    phi = std::atan2(u.y, u.x);
  }
  P2 ToLocal(P2 p) const { return {Dot(p - o, u), Dot(p - o, n)}; }
  P2 ToWorld(P2 q) const { return o + u * q.x + n * q.y; }
  Seg ToLocal(const Seg& s) const {
    if (!s.arc) return Seg::Line(ToLocal(s.a), ToLocal(s.b), s.source);
    const P2 c = ToLocal(s.c);
    if (!mirrored) return Seg::Arc(c, s.r, s.t0 - phi, s.t1 - phi, s.source);
    return Seg::Arc(c, s.r, -(s.t1 - phi), -(s.t0 - phi), s.source);
  }
};

Seg Mirrored(const Seg& s) {  // about the axis
  if (!s.arc) return Seg::Line({s.a.x, -s.a.y}, {s.b.x, -s.b.y}, s.source);
  return Seg::Arc({s.c.x, -s.c.y}, s.r, -s.t1, -s.t0, s.source);
}

std::string Format(const char* fmt, double a, double b = 0, double c = 0) {
  char text[300];
  std::snprintf(text, sizeof text, fmt, a, b, c);
  return text;
}

// One stretch of the outline: a line, or an arc of a drawn circle.
struct Piece {
  P2 from, to;
  bool arc = false;
  P2 c;
  double r = 0;
};

double Bulge(const Piece& p) {
  if (!p.arc) return 0;
  double d = std::atan2(p.to.y - p.c.y, p.to.x - p.c.x) - std::atan2(p.from.y - p.c.y, p.from.x - p.c.x);
  while (d > kPi) d -= 2 * kPi;
  while (d <= -kPi) d += 2 * kPi;
  return std::tan(d / 4);
}

// Joins pieces that continue one line or one circle.
void AppendPiece(std::vector<Piece>& out, const Piece& p, double eps) {
  if (Dist(p.from, p.to) <= eps) return;
  if (!out.empty()) {
    Piece& last = out.back();
    if (Dist(last.to, p.from) <= eps) {
      const bool sameCircle = last.arc && p.arc && Dist(last.c, p.c) <= eps && std::fabs(last.r - p.r) <= eps;
      const P2 d1 = last.to - last.from, d2 = p.to - p.from;
      const bool sameLine = !last.arc && !p.arc && std::fabs(Cross(d1, d2)) <= 1e-9 * Norm(d1) * Norm(d2) &&
                            Dot(d1, d2) > 0;
      if (sameCircle || sameLine) {
        last.to = p.to;
        return;
      }
    }
  }
  out.push_back(p);
}
// Open ends of the contour that nearly meet where the outline would miss them
// (outside(q)): a gap wider than the gap tolerance left a region open. The
// problem, said with the places, or empty.
template <class Outside>
std::string OpenEnds(const ContourGraph& graph, const Frame& frame, double gap, Outside outside) {
  std::vector<int> degree(graph.nodes.size(), 0);
  for (const GraphEdge& e : graph.edges)
    if (e.geom.source >= 0) ++degree[e.u], ++degree[e.v];
  std::vector<int> open;
  for (std::size_t k = 0; k < degree.size(); ++k)
    if (degree[k] == 1) open.push_back(static_cast<int>(k));
  std::sort(open.begin(), open.end(), [&](int a, int b) { return graph.nodes[a].x < graph.nodes[b].x; });
  const double reach = 20 * gap;
  for (std::size_t i = 0; i < open.size(); ++i)
    for (std::size_t j = i + 1; j < open.size(); ++j) {
      const P2 a = graph.nodes[open[i]], b = graph.nodes[open[j]];
      if (b.x - a.x > reach) break;
      if (Dist(a, b) > reach || (!outside(a) && !outside(b))) continue;
      const P2 wa = frame.ToWorld(a), wb = frame.ToWorld(b);
      char text[400];
      std::snprintf(text, sizeof text,
                    "the contour does not close: open ends at (%.6g, %.6g) and (%.6g, %.6g) are %.4g apart, more "
                    "than the gap tolerance %.4g (give a larger --gap)",
                    wa.x, wa.y, wb.x, wb.y, Dist(a, b), gap);
      return text;
    }
  return {};
}
}  // namespace

Profile ComputeProfile(const std::vector<Seg>& curves, const ProfileAxis& axis, double gap) {
  Profile out;
  if (curves.empty()) {
    out.problem = "no contour curves were selected";
    return out;
  }
  if (!(Norm(axis.dir) > 0) || !(gap > 0)) {
    out.problem = "the axis has no direction";
    return out;
  }
  const Frame frame(axis);
  std::vector<Seg> local;
  local.reserve(curves.size() + 1);
  double x0 = 1e300, x1 = -1e300, size = 0;
  for (const Seg& s : curves) {
    local.push_back(frame.ToLocal(s));
    double box[4];
    local.back().Box(box);
    x0 = std::min(x0, box[0]);
    x1 = std::max(x1, box[2]);
    size = std::max({size, std::fabs(box[0]), std::fabs(box[1]), std::fabs(box[2]), std::fabs(box[3])});
  }
  const double eps = 1e-9 * std::max(1.0, size);
  // The axis closes the regions of a part drawn as one half.
  local.push_back(Seg::Line({x0 - 2 * gap, 0}, {x1 + 2 * gap, 0}, -1));
  const ContourGraph graph = BuildContourGraph(local, gap);

  // Per region: its edges (both sides), their envelope area on the chosen side,
  // and whether it reaches the axis.
  std::vector<std::vector<int>> members(graph.components);
  std::vector<Seg> geoms;
  geoms.reserve(graph.edges.size());
  for (std::size_t e = 0; e < graph.edges.size(); ++e) {
    geoms.push_back(graph.edges[e].geom);
    if (graph.edges[e].component >= 0) members[graph.edges[e].component].push_back(static_cast<int>(e));
  }
  std::vector<double> areas(graph.components, 0);
  std::vector<bool> onAxis(graph.components, false);
  std::vector<std::vector<Run>> envelopes(graph.components);
  for (int c = 0; c < graph.components; ++c) {
    envelopes[c] = UpperEnvelope(geoms, members[c], eps);
    for (const Run& r : envelopes[c])
      if (r.edge >= 0) areas[c] += RunArea(geoms[r.edge], r.a, r.b);
    for (int e : members[c]) {
      const Seg& g = geoms[e];
      if (std::fabs(g.a.y) <= gap || std::fabs(g.b.y) <= gap || (g.a.y > 0) != (g.b.y > 0)) onAxis[c] = true;
    }
  }
  int body = -1;
  for (int pass = 0; pass < 2 && body < 0; ++pass)
    for (int c = 0; c < graph.components; ++c)
      if ((pass == 1 || onAxis[c]) && areas[c] > 0 && (body < 0 || areas[c] > areas[body])) body = c;
  if (body < 0) {
    out.problem = OpenEnds(graph, frame, gap, [](P2) { return true; });
    if (out.problem.empty()) out.problem = "the contour bounds no region on this side of the axis";
    return out;
  }
  if (!onAxis[body])
    out.warnings.push_back({"the part does not reach the axis", frame.ToWorld({x0, 0})});
  const std::vector<Run>& env = envelopes[body];

  // The part is the longest stretch of the axis with body above it; a stretch
  // without body shorter than the gap is a crack and is bridged.
  struct Span {
    std::size_t first, last;
    double area;
  };
  std::vector<Span> spans;
  for (std::size_t k = 0; k < env.size(); ++k) {
    const Run& r = env[k];
    if (r.edge < 0) {
      if (r.b - r.a <= gap && !spans.empty() && k + 1 < env.size()) continue;
      continue;
    }
    const double a = RunArea(geoms[r.edge], r.a, r.b);
    const bool joins = !spans.empty() && (spans.back().last + 1 == k ||
                                          (spans.back().last + 2 == k && env[k - 1].b - env[k - 1].a <= gap));
    if (joins) {
      spans.back().last = k;
      spans.back().area += a;
    } else {
      spans.push_back({k, k, a});
    }
  }
  std::size_t best = 0;
  for (std::size_t k = 1; k < spans.size(); ++k)
    if (spans[k].area > spans[best].area) best = k;
  const Span span = spans[best];
  out.s0 = env[span.first].a;
  out.s1 = env[span.last].b;
  out.area = span.area;

  // Other bodies: separate regions on the axis, and regions that stand out of
  // the part without touching it.
  out.bodies = static_cast<int>(spans.size());
  for (std::size_t k = 0; k < spans.size(); ++k)
    if (k != best) {
      const double mid = 0.5 * (env[spans[k].first].a + env[spans[k].last].b);
      out.warnings.push_back({Format("several separate bodies: one from s = %.4g to %.4g along the axis is left out",
                                     env[spans[k].first].a, env[spans[k].last].b),
                              frame.ToWorld({mid, EnvelopeAt(geoms, env, mid)})});
    }
  int standing = 0;
  P2 standingAt;
  for (int c = 0; c < graph.components; ++c) {
    if (c == body) continue;
    for (const Run& r : envelopes[c]) {
      if (r.edge < 0) continue;
      const double mid = 0.5 * (r.a + r.b), h = HeightAt(geoms[r.edge], mid);
      const bool inside = mid >= out.s0 && mid <= out.s1 && h <= EnvelopeAt(geoms, env, mid) + gap;
      if (!inside) {
        if (standing++ == 0) standingAt = frame.ToWorld({mid, h});
        break;
      }
    }
  }
  if (standing > 0) {
    out.bodies += standing;
    out.warnings.push_back(
        {Format("several separate bodies: %g closed region(s) apart from the part are left out", standing),
         standingAt});
  }

  // The outline: up from the axis at s0, along the envelope, down to the axis
  // at s1, back along the axis.
  std::vector<Piece> pieces;
  P2 cur{out.s0, 0};
  for (std::size_t k = span.first; k <= span.last; ++k) {
    const Run& r = env[k];
    Piece p;
    if (r.edge < 0) {  // a crack: carried across at the height before it
      p.from = cur;
      p.to = {r.b, cur.y};
    } else {
      const Seg& g = geoms[r.edge];
      p.from = {r.a, HeightAt(g, r.a)};
      p.to = {r.b, HeightAt(g, r.b)};
      p.arc = g.arc;
      p.c = g.c;
      p.r = g.r;
    }
    if (Dist(cur, p.from) > eps) AppendPiece(pieces, Piece{cur, p.from, false, {}, 0}, eps);
    AppendPiece(pieces, p, eps);
    cur = p.to;
    out.maxRadius = std::max({out.maxRadius, p.from.y, p.to.y});
    if (p.arc && p.c.x > p.from.x && p.c.x < p.to.x && p.c.y + p.r > p.from.y)
      out.maxRadius = std::max(out.maxRadius, p.c.y + p.r);
  }
  AppendPiece(pieces, Piece{cur, {out.s1, 0}, false, {}, 0}, eps);
  AppendPiece(pieces, Piece{{out.s1, 0}, {out.s0, 0}, false, {}, 0}, eps);  // back along the axis
  if (pieces.empty()) {
    out.problem = "the outline has no length";
    return out;
  }
  for (const Piece& p : pieces) {
    const P2 at{p.from.x, std::fabs(p.from.y) <= eps ? 0.0 : p.from.y};  // on the axis exactly
    out.vertices.push_back({frame.ToWorld(at), frame.mirrored ? -Bulge(p) : Bulge(p)});
  }

  if (const std::string problem = OpenEnds(graph, frame, gap, [&](P2 q) {
        return q.y > gap &&
               (q.x < out.s0 - gap || q.x > out.s1 + gap || q.y > EnvelopeAt(geoms, env, q.x) + gap);
      });
      !problem.empty()) {
    out.problem = problem;
    return out;
  }

  // Whether the chosen side's contour reaches the axis at both ends.
  auto nodeOnAxisAt = [&](double s) {
    for (int e : members[body])
      for (const P2& q : {geoms[e].a, geoms[e].b})
        if (std::fabs(q.y) <= gap && std::fabs(q.x - s) <= gap) return true;
    return false;
  };
  out.touchesAxisAtBothEnds = nodeOnAxisAt(out.s0) && nodeOnAxisAt(out.s1);

  // The other side: drawn at all, and the mirror of this one?
  std::vector<Seg> mirrored;
  mirrored.reserve(members[body].size());
  std::vector<int> all;
  for (int e : members[body]) {
    mirrored.push_back(Mirrored(geoms[e]));
    all.push_back(static_cast<int>(mirrored.size()) - 1);
  }
  const std::vector<Run> other = UpperEnvelope(mirrored, all, eps);
  for (const Run& r : other)
    if (r.edge >= 0) out.otherSideArea += RunArea(mirrored[r.edge], r.a, r.b);
  if (out.otherSideArea > 0) {
    double worst = 0, worstS = 0;
    auto probe = [&](double s) {
      if (s < out.s0 || s > out.s1) return;
      const double d = std::fabs(EnvelopeAt(geoms, env, s) - EnvelopeAt(mirrored, other, s));
      if (d > worst) worst = d, worstS = s;
    };
    for (const std::vector<Run>* runs : {&env, &other})
      for (const Run& r : *runs) probe(0.5 * (r.a + r.b));
    out.mirrorDeviation = worst;
    if (worst > std::max(10 * gap, 0.01 * out.maxRadius))
      out.warnings.push_back(
          {Format("the other side of the axis is not the mirror of this side (they differ by %.4g at s = %.4g): "
                  "the part may not be a body of revolution, or the axis is wrong",
                  worst, worstS),
           frame.ToWorld({worstS, EnvelopeAt(geoms, env, worstS)})});
  }
  out.ok = true;
  return out;
}

}  // namespace robust
