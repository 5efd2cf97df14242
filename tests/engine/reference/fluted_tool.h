#pragma once
// Tool drawings at the scale of real ones, for the equivalence tests and the
// benchmark: a drill whose body is crossed by hundreds of spline flutes
// (each with its land, heel, margin and web), a profile of many short lines and
// arcs, hidden lines, section hatches, a dimension set and text; and a sheet
// of many ordinary stepped tools. Each drawing comes with its axis line
// (not selected) and the parameters that name it.
#include <cstdint>

#include "engine/encircle_cal_info.h"
#include "host/db/operations.h"

namespace fluted {

struct Drawing {
  AcArray<AcDbObjectId> selection;
  CEncircleCalInfo info;     // m_idMidLine is the axis line
  AcGePoint3d centre;        // a point on the axis
  double window[4] = {};     // a box round the selection: x1, y1, x2, y2
};

struct ToolSpec {
  std::uint32_t seed = 1;
  int flutes = 400;
  int notes = 40;  // texts of the parameter table
  double length = 80, radius = 6;
  AcGePoint3d origin{0, 0, 0};  // the left end of the axis
};

Drawing DrawFlutedTool(AcDbDatabase* db, const ToolSpec& spec);

// tools stepped tools in rows of ten, all selected, with one axis through
// the first tool.
Drawing DrawSheet(AcDbDatabase* db, int tools);

}  // namespace fluted
