#pragma once
// The contour as a plane graph: curves cut where they meet, ends closer than
// the gap joined at one node (placed where the curves' lines and circles
// really meet), and the edges that bound no region marked.
#include <vector>

#include "engine/robust/geometry.h"

namespace robust {

struct GraphEdge {
  Seg geom;            // from nodes u to v (for an arc, u at t0)
  int u = -1, v = -1;
  bool bridge = false;  // bounds no region: removing it disconnects the graph
  int component = -1;   // of the graph without bridges
};

struct ContourGraph {
  std::vector<P2> nodes;
  std::vector<GraphEdge> edges;
  int components = 0;
};

// Builds the graph. Arcs are first cut where they turn in x (their leftmost
// and rightmost points), so that every edge is a single-valued curve over the
// x axis or a vertical line.
ContourGraph BuildContourGraph(const std::vector<Seg>& curves, double gap);

}  // namespace robust
