#pragma once
// The outline run of the robust method: the selection and an axis (given, or
// found from the contour) in, the outline polyline on "TempEncircleLine" out,
// with the warnings a designer should see. Also the checks every outline must
// pass, for either method.
#include <optional>
#include <string>
#include <vector>

#include "engine/robust/axis_search.h"
#include "engine/robust/outline_check.h"
#include "engine/robust/profile.h"
#include "host/base/ac_array.h"
#include "host/db/object_id.h"

struct RobustOutlineSettings {
  int nSide = 0;            // 0 upper (left of the axis direction), 1 lower
  double dGap = 0;          // pieces closer than this meet; 0: DefaultGap of the part
  double dChordTol = 0.001; // ellipses and splines as chords within this
};

// How the axis is given: a point of a horizontal axis, a line, or found.
struct AxisRequest {
  std::optional<robust::P2> point;
  std::optional<std::array<double, 4>> line;  // x1, y1, x2, y2
  bool automatic = false;
};

struct RobustOutlineResult {
  AcDbObjectId outline;              // null when no outline was made
  std::string message;               // "计算包络线成功" or "计算包络线失败"
  std::string problem;               // why there is no outline
  robust::ProfileAxis axis;          // the axis used
  std::string axisReason;            // how the axis was chosen
  std::vector<std::string> axisCandidates;
  double dGap = 0;                   // the gap tolerance used
  robust::Profile profile;
  std::vector<robust::ProfileWarning> warnings;
  int nSelected = 0, nContourCurves = 0;
};

// The default gap: 0.4 thousandths of the diagonal of the contour's box
// (0.04 mm on a 100 mm tool), and no less than 1e-6.
double DefaultGap(const std::vector<robust::Seg>& curves);

RobustOutlineResult RunRobustOutline(AcArray<AcDbObjectId>& selection, const AxisRequest& axis,
                                     const RobustOutlineSettings& settings);

// The axis of a request without looking at the contour (a point or a line);
// false for an automatic request.
bool GivenAxis(const AxisRequest& request, int side, robust::ProfileAxis& axis);

// Checks an outline polyline of either method against the axis.
robust::OutlineCheck CheckOutlineEntity(AcDbObjectId outline, const robust::ProfileAxis& axis);

// Warnings for entities of the drawing that the window cuts (inside it in
// part): they may be part of the tool.
std::vector<robust::ProfileWarning> WindowCutWarnings(const AcDbDatabase* db, const std::array<double, 4>& window);

// Warning when a point given as the centre lies on none of the selection's
// centre lines (there being some).
std::optional<robust::ProfileWarning> CentrePointWarning(const AcArray<AcDbObjectId>& selection, robust::P2 point);
