#pragma once
// One straight segment of the working set, with the points at which it is
// to be split.
#include <vector>

#include "host/db/object_id.h"
#include "host/ge/tol.h"
#include "host/ge/vectors.h"

class AcDbLine;

class CLineInfo {
 public:
  CLineInfo() = default;
  // From a line: its id and end points, z forced to 0.
  explicit CLineInfo(const AcDbLine* pLine);
  // From an id: as above when it opens as a line; otherwise the id is null
  // and the points stay at the origin (callers test the null id).
  explicit CLineInfo(AcDbObjectId id);

  // Accepts pt only strictly inside the segment: not equal to either end,
  // on the segment within tol, and (pt - start)·(pt - end) < 0; a point
  // already held (within tol) is not added again.
  void AddBreakPoint(const AcGePoint3d& pt, AcGeTol tol);
  // The first three conditions of AddBreakPoint: strictly inside the segment.
  bool IsInteriorPoint(const AcGePoint3d& pt, AcGeTol tol) const;
  void AddBreakPoints(const std::vector<AcGePoint3d>& pts, AcGeTol tol);
  // Orders the break points by distance from the start, stably: points at
  // equal distance keep their order.
  void Sort();
  // The same segment in either orientation (break points, id and flag not compared).
  bool IsEqual(const CLineInfo& other, AcGeTol tol) const;

  AcDbObjectId m_id;
  AcGePoint3d m_ptStart;
  AcGePoint3d m_ptEnd;
  std::vector<AcGePoint3d> m_breakPts;
  bool m_bValid = true;
};
