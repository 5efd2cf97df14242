#include "engine/robust/graph.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numbers>
#include <numeric>
#include <unordered_map>

namespace robust {
namespace {
constexpr double kPi = std::numbers::pi;

// A point where a curve is cut: its own ends, crossings, and ends of other
// curves that come within the gap.
struct Cut {
  int seg;
  double param;
  P2 p;
};

// Cuts arcs at their leftmost and rightmost points (angles kπ) and full
// circles into halves.
std::vector<Seg> MonotonePieces(const std::vector<Seg>& curves) {
  std::vector<Seg> out;
  out.reserve(curves.size() + curves.size() / 2);
  for (const Seg& s : curves) {
    if (!s.arc) {
      if (Dist(s.a, s.b) > 0) out.push_back(s);
      continue;
    }
    if (!(s.r > 0) || !(s.t1 > s.t0)) continue;
    double from = s.t0;
    for (double k = std::floor(s.t0 / kPi) + 1; k * kPi < s.t1; k += 1) {
      const double t = k * kPi;
      if (t - from > 1e-12) out.push_back(Seg::Arc(s.c, s.r, from, t, s.source));
      from = t;
    }
    if (s.t1 - from > 1e-12) out.push_back(Seg::Arc(s.c, s.r, from, s.t1, s.source));
  }
  return out;
}

// Clusters points that lie within gap of a cluster's first point.
class PointClusters {
 public:
  explicit PointClusters(double gap) : m_gap(gap) {}
  int Add(P2 p) {
    const std::int64_t ix = Cell(p.x), iy = Cell(p.y);
    for (std::int64_t dx = -1; dx <= 1; ++dx)
      for (std::int64_t dy = -1; dy <= 1; ++dy) {
        const auto it = m_cells.find(Key(ix + dx, iy + dy));
        if (it == m_cells.end()) continue;
        for (int c : it->second)
          if (Dist(m_seeds[c], p) <= m_gap) return c;
      }
    m_seeds.push_back(p);
    const int id = static_cast<int>(m_seeds.size()) - 1;
    m_cells[Key(ix, iy)].push_back(id);
    return id;
  }
  int Count() const { return static_cast<int>(m_seeds.size()); }

 private:
  std::int64_t Cell(double v) const { return static_cast<std::int64_t>(std::floor(v / m_gap)); }
  static std::int64_t Key(std::int64_t x, std::int64_t y) { return x * 73856093LL ^ (y * 19349663LL); }
  double m_gap;
  std::vector<P2> m_seeds;
  std::unordered_map<std::int64_t, std::vector<int>> m_cells;
};

// Where a node lies: where the first two different curves at it really meet
// (so a corner is exact even when the drawn ends miss it), else at the first
// curve's own point.
P2 NodePosition(const std::vector<Seg>& segs, const std::vector<Cut>& cuts, const std::vector<int>& members,
                double gap) {
  P2 centroid{0, 0};
  for (int m : members) centroid = centroid + cuts[m].p;
  centroid = centroid * (1.0 / static_cast<double>(members.size()));
  int first = members.front();
  for (int m : members)
    if (segs[cuts[m].seg].arc) {
      first = m;
      break;
    }
  const Seg& s1 = segs[cuts[first].seg];
  for (int m : members) {
    const Seg& s2 = segs[cuts[m].seg];
    if (cuts[m].seg == cuts[first].seg || SameSupport(s1, s2, 1e-9 * (1 + gap))) continue;
    double best = 2 * gap;
    P2 bestPoint;
    bool found = false;
    for (const P2& q : SupportIntersections(s1, s2, gap * 1e-3)) {
      const double d = Dist(q, centroid);
      if (d <= best) best = d, bestPoint = q, found = true;
    }
    if (found) return bestPoint;
  }
  return cuts[first].p;
}

// Marks the bridges of the multigraph (iterative lowlink search).
void MarkBridges(int nodeCount, std::vector<GraphEdge>& edges) {
  std::vector<std::vector<std::pair<int, int>>> adj(nodeCount);  // (neighbour, edge)
  for (int e = 0; e < static_cast<int>(edges.size()); ++e) {
    adj[edges[e].u].push_back({edges[e].v, e});
    adj[edges[e].v].push_back({edges[e].u, e});
  }
  std::vector<int> order(nodeCount, -1), low(nodeCount, 0);
  int counter = 0;
  struct Frame {
    int node, viaEdge;
    std::size_t next;
  };
  std::vector<Frame> stack;
  for (int root = 0; root < nodeCount; ++root) {
    if (order[root] >= 0) continue;
    order[root] = low[root] = counter++;
    stack.push_back({root, -1, 0});
    while (!stack.empty()) {
      Frame& f = stack.back();
      if (f.next < adj[f.node].size()) {
        const auto [w, e] = adj[f.node][f.next++];
        if (e == f.viaEdge) continue;
        if (order[w] < 0) {
          order[w] = low[w] = counter++;
          stack.push_back({w, e, 0});
        } else {
          low[f.node] = std::min(low[f.node], order[w]);
        }
        continue;
      }
      const Frame done = f;
      stack.pop_back();
      if (stack.empty()) break;
      const int parent = stack.back().node;
      low[parent] = std::min(low[parent], low[done.node]);
      if (low[done.node] > order[parent]) edges[done.viaEdge].bridge = true;
    }
  }
}

int Find(std::vector<int>& p, int x) {
  while (p[x] != x) x = p[x] = p[p[x]];
  return x;
}
}  // namespace

ContourGraph BuildContourGraph(const std::vector<Seg>& curves, double gap) {
  ContourGraph g;
  const std::vector<Seg> segs = MonotonePieces(curves);
  const int n = static_cast<int>(segs.size());
  std::vector<std::array<double, 4>> boxes(n);
  for (int i = 0; i < n; ++i) segs[i].Box(boxes[i].data());

  std::vector<Cut> cuts;
  cuts.reserve(4 * n);
  for (int i = 0; i < n; ++i) {
    cuts.push_back({i, segs[i].ParamStart(), segs[i].a});
    cuts.push_back({i, segs[i].ParamEnd(), segs[i].b});
  }
  // Pairs whose boxes come within the gap, swept along x.
  std::vector<int> byX(n);
  std::iota(byX.begin(), byX.end(), 0);
  std::sort(byX.begin(), byX.end(), [&](int a, int b) { return boxes[a][0] < boxes[b][0]; });
  const double crossTol = gap * 1e-3;
  for (int ii = 0; ii < n; ++ii) {
    const int i = byX[ii];
    for (int jj = ii + 1; jj < n; ++jj) {
      const int j = byX[jj];
      if (boxes[j][0] > boxes[i][2] + gap) break;
      if (boxes[j][1] > boxes[i][3] + gap || boxes[j][3] < boxes[i][1] - gap) continue;
      const Seg& u = segs[i];
      const Seg& v = segs[j];
      for (const P2& p : CurveIntersections(u, v, crossTol)) {
        cuts.push_back({i, u.ParamOf(p), p});
        cuts.push_back({j, v.ParamOf(p), p});
      }
      // Ends that come within the gap of the other curve: a T that falls
      // short or runs over, a line that ends on an arc.
      for (int k = 0; k < 2; ++k) {
        const Seg& from = k == 0 ? u : v;
        const Seg& onto = k == 0 ? v : u;
        const int ontoIndex = k == 0 ? j : i;
        for (const P2& end : {from.a, from.b}) {
          double t = 0;
          if (onto.Distance(end, &t) <= gap) cuts.push_back({ontoIndex, t, onto.PointAt(t)});
        }
      }
    }
  }
  // Nodes: cut points within the gap of each other.
  PointClusters clusters(gap);
  std::vector<int> nodeOf(cuts.size());
  for (std::size_t c = 0; c < cuts.size(); ++c) nodeOf[c] = clusters.Add(cuts[c].p);
  std::vector<std::vector<int>> members(clusters.Count());
  for (std::size_t c = 0; c < cuts.size(); ++c) members[nodeOf[c]].push_back(static_cast<int>(c));
  g.nodes.resize(members.size());
  for (std::size_t k = 0; k < members.size(); ++k) g.nodes[k] = NodePosition(segs, cuts, members[k], gap);

  // Edges: each curve between its consecutive cut nodes.
  std::vector<std::vector<int>> cutsOf(n);
  for (std::size_t c = 0; c < cuts.size(); ++c) cutsOf[cuts[c].seg].push_back(static_cast<int>(c));
  for (int i = 0; i < n; ++i) {
    std::vector<int>& list = cutsOf[i];
    std::sort(list.begin(), list.end(), [&](int a, int b) { return cuts[a].param < cuts[b].param; });
    int prev = -1;
    for (int c : list) {
      const int node = nodeOf[c];
      if (prev >= 0 && node != prev) {
        const Seg& s = segs[i];
        GraphEdge e;
        e.u = prev;
        e.v = node;
        if (s.arc) {
          double a0 = s.ParamOf(g.nodes[prev]), a1 = s.ParamOf(g.nodes[node]);
          if (!(a1 > a0)) {
            prev = node;
            continue;
          }
          e.geom = Seg::Arc(s.c, s.r, a0, a1, s.source);
        } else {
          e.geom = Seg::Line(g.nodes[prev], g.nodes[node], s.source);
        }
        g.edges.push_back(e);
      }
      prev = node;
    }
  }
  MarkBridges(static_cast<int>(g.nodes.size()), g.edges);
  std::vector<int> parent(g.nodes.size());
  std::iota(parent.begin(), parent.end(), 0);
  for (const GraphEdge& e : g.edges)
    if (!e.bridge) parent[Find(parent, e.u)] = Find(parent, e.v);
  std::unordered_map<int, int> ids;
  for (GraphEdge& e : g.edges) {
    if (e.bridge) continue;
    const int root = Find(parent, e.u);
    const auto it = ids.emplace(root, static_cast<int>(ids.size())).first;
    e.component = it->second;
  }
  g.components = static_cast<int>(ids.size());
  return g;
}

}  // namespace robust
