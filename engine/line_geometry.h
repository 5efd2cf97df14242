#pragma once
// Geometric tests the engine stages share.
#include <utility>

#include "engine/line_info.h"
#include "engine/remove_line_dir.h"
#include "engine/vk_rect.h"

namespace engine {

enum class Alignment { kCollinear, kParallel, kNotParallel };

// Whether record a (P1, P2) lies on the line of record b (P3, P4), in x and
// y only. Slopes are compared by absolute value, so slopes of opposite sign
// count as equal.
Alignment TestCollinear(const AcGePoint3d& p1, const AcGePoint3d& p2, const AcGePoint3d& p3, const AcGePoint3d& p4,
                        double t);
inline Alignment TestCollinear(const CLineInfo& a, const CLineInfo& b, double t) {
  return TestCollinear(a.m_ptStart, a.m_ptEnd, b.m_ptStart, b.m_ptEnd, t);
}

// A record's ends as seen from dir: left to right when looking along y
// (dir 0 or 1), top to bottom otherwise. Strictly greater keeps the order; a
// tie swaps, so orienting twice swaps back.
inline void OrientForView(E_RemoveLine_Dir dir, AcGePoint3d& start, AcGePoint3d& end) {
  const bool keep = (dir == 0 || dir == 1) ? end.x > start.x : start.y > end.y;
  if (!keep) std::swap(start, end);
}

// The box spanned by a record's two points.
inline CVKRect RectOf(const CLineInfo& line) { return CVKRect(line.m_ptStart, line.m_ptEnd, true); }

// P on the segment: equal to an end within tol, or on it within tol and
// strictly between its ends.
bool IsPointOnSegment(const AcGePoint3d& p, const AcGePoint3d& start, const AcGePoint3d& end, const AcGeTol& tol);

// The side of P with respect to the directed segment A→B: the sign of the
// raw cross product, 0 when its magnitude is below tol (a tolerance on the
// product, not on a distance: long segments are stricter).
int SideOf(const AcGePoint3d& p, const AcGePoint3d& a, const AcGePoint3d& b, double tol);

}  // namespace engine
