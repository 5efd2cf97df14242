#pragma once
// The facts of an outline polyline a user or a script wants: its vertices,
// box and enclosed area.
#include <array>
#include <string>
#include <vector>

#include "host/db/object_id.h"

struct OutlineReport {
  std::string handle;
  std::vector<std::array<double, 3>> vertices;  // x, y, bulge
  bool bClosed = false;
  std::array<double, 4> box{0, 0, 0, 0};  // x0, y0, x1, y1 (arcs included)
  double dArea = 0;                       // enclosed area, arcs included
  double dLength = 0;                     // along the polyline, arcs included
};

bool MakeOutlineReport(AcDbObjectId outline, OutlineReport& report);
