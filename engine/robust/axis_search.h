#pragma once
// Finding the axis of a part from its contour: among the selection's centre
// lines (horizontal or vertical), the one the contour is symmetric about or
// meets at both ends of a half drawn on one side; without centre lines, the
// horizontal or vertical line the contour is the mirror image about.
#include <string>
#include <vector>

#include "engine/robust/contour.h"
#include "engine/robust/profile.h"

namespace robust {

struct AxisChoice {
  bool found = false;
  ProfileAxis axis;                      // origin and direction; lowerSide set when only that side is drawn
  std::string reason;                    // what was chosen and why
  std::vector<std::string> candidates;   // every line looked at, with the verdict
  std::string problem;                   // why none could be chosen
  std::vector<ProfileWarning> warnings;  // a second centre line across the part
};

AxisChoice ChooseAxis(const Contour& contour, double gap);

// The direction a horizontal or vertical axis runs: +x, or +y for a part
// standing upright (its "upper" side is then the left-hand side, as a
// horizontal part's upper side is when it is turned a quarter anticlockwise).
P2 AxisDirection(bool vertical);

}  // namespace robust
