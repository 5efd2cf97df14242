#pragma once
// The parameters of one outline computation, with the dialog's defaults.
#include <cstdint>

#include "host/db/object_id.h"
#include "host/ge/tol.h"

class CEncircleCalInfo {
 public:
  CEncircleCalInfo();
  CEncircleCalInfo(const CEncircleCalInfo&) = default;
  CEncircleCalInfo& operator=(const CEncircleCalInfo&) = default;
  ~CEncircleCalInfo() = default;

  bool m_bRemoveDashed = true;   // leave out dashed and centre lines
  bool m_bVerticalEnds = false;  // close the outline with vertical ends
  AcGeTol m_tolPoint;            // 0.0005: point coincidence
  AcGeTol m_tolLine;             // 0.001: coarser tests
  AcGeTol m_tolFine;             // 1e-6: horizontal and vertical tests
  double m_dStep = 0.3;          // chord length for arcs and splines
  double m_dBreakLength = 5.0;   // shift of the exclusion box; band width
  std::int32_t m_nAxisDir = 0;   // 0: the side above the axis; other: below
  AcDbObjectId m_idMidLine;      // the tool's axis line

  // Sets both the point and the vector value of a tolerance.
  static AcGeTol MakeTol(double value);
};
