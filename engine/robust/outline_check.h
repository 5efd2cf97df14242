#pragma once
// Checks every outline must pass before it counts as made, whichever method
// made it: closed, no edge of no length, simple (no edge meets another except
// its neighbours at their shared vertex), and both ends of the profile on the
// axis.
#include <string>
#include <vector>

#include "engine/robust/profile.h"

namespace robust {

struct OutlineCheck {
  bool ok = true;
  std::string problem;  // the first failed check, said plainly
  P2 where;             // where it failed, in drawing coordinates
};

OutlineCheck CheckOutline(const std::vector<ProfileVertex>& vertices, bool closed, const ProfileAxis& axis);

}  // namespace robust
