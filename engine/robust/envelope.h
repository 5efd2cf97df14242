#pragma once
// The upper envelope of the edges of a contour graph: over each stretch of x,
// the edge that lies highest (edges only meet at their ends, so one edge is
// highest over a whole stretch between ends).
#include <vector>

#include "engine/robust/geometry.h"

namespace robust {

struct Run {
  double a = 0, b = 0;  // the stretch of x
  int edge = -1;        // the highest edge, -1 where nothing lies above the axis
};

// Height of an x-monotone edge at x.
double HeightAt(const Seg& e, double x);

// The envelope over the given edges (indices into edges); vertical lines take
// no part (the steps between stretches stand for them).
std::vector<Run> UpperEnvelope(const std::vector<Seg>& edges, const std::vector<int>& subset, double eps);

// Height of the envelope at x (0 where nothing lies above the axis).
double EnvelopeAt(const std::vector<Seg>& edges, const std::vector<Run>& runs, double x);

// Area between the run's edge and the axis.
double RunArea(const Seg& e, double a, double b);

}  // namespace robust
