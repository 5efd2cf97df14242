#pragma once
// The side from which the outline is looked at. A value keeps the line
// records that nothing lies beyond on that side: 0 keeps the lowest line at
// every x (the drawing seen from below), 1 the highest, 2 the rightmost at
// every y, 3 the leftmost; 4 means no direction (no axis was found).
#include <cstdint>

enum E_RemoveLine_Dir : std::int32_t {
  E_VIEW_FROM_BELOW = 0,
  E_VIEW_FROM_ABOVE = 1,
  E_VIEW_FROM_RIGHT = 2,
  E_VIEW_FROM_LEFT = 3,
  E_VIEW_NONE = 4,
};
