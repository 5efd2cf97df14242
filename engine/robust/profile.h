#pragma once
// The robust outline of a body of revolution: from the contour curves of its
// side view, the boundary of {(s, r) : s0 ≤ s ≤ s1, 0 ≤ r ≤ ρ(s)}, where s runs
// along the axis, r is the distance from it on the chosen side, and ρ(s) is
// the largest distance from the axis of the body at s. The body is the union
// of the closed regions the curves bound: pieces that bound no region
// (leaders, construction and flute lines) cannot change it, and recesses and
// bores never show. The result runs from the axis at one end along the
// profile to the axis at the other end and is closed along the axis, so it is
// x-monotone and simple by construction. Arcs keep their drawn centre and
// radius and are cut exactly where they meet their neighbours.
#include <string>
#include <vector>

#include "engine/robust/geometry.h"

namespace robust {

struct ProfileAxis {
  P2 origin;               // a point on the axis
  P2 dir{1, 0};            // along the axis (normalised when used)
  bool lowerSide = false;  // the side to the right of dir instead of the left
};

struct ProfileVertex {
  P2 p;
  double bulge = 0;  // of the edge from this vertex to the next
};

struct ProfileWarning {
  std::string text;
  P2 where;  // in drawing coordinates
};

struct Profile {
  bool ok = false;
  std::string problem;                  // why there is no outline
  std::vector<ProfileVertex> vertices;  // closed; the first on the axis at s0
  std::vector<ProfileWarning> warnings;
  double s0 = 0, s1 = 0, maxRadius = 0;
  double area = 0;            // of the half profile on the chosen side
  double otherSideArea = 0;   // of the profile on the other side
  double mirrorDeviation = 0; // largest |ρ(s) - ρ'(s)| against the other side, when it is drawn
  int bodies = 0;             // separate bodies found on the axis
  bool touchesAxisAtBothEnds = false;  // the chosen side's contour meets the axis at s0 and s1
};

// Computes the outline of the curves about the axis. gap: pieces closer than
// this count as meeting.
Profile ComputeProfile(const std::vector<Seg>& curves, const ProfileAxis& axis, double gap);

}  // namespace robust
