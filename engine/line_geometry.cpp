#include "engine/line_geometry.h"

#include <cmath>

#include "host/ge/line_seg3d.h"

namespace engine {

Alignment TestCollinear(const AcGePoint3d& p1, const AcGePoint3d& p2, const AcGePoint3d& p3, const AcGePoint3d& p4,
                        double t) {
  if (std::fabs(p2.x - p1.x) < t) {
    if (std::fabs(p3.x - p4.x) >= t) return Alignment::kNotParallel;
    return std::fabs(p3.x - p1.x) < t ? Alignment::kCollinear : Alignment::kParallel;
  }
  const double m1 = std::fabs((p2.y - p1.y) / (p2.x - p1.x));
  const double m2 = std::fabs((p4.y - p3.y) / (p4.x - p3.x));
  if (std::fabs(p3.x - p1.x) < t) return std::fabs(m1 - m2) < 1e-6 ? Alignment::kCollinear : Alignment::kNotParallel;
  if (std::fabs(m1 - m2) >= 1e-6) return Alignment::kNotParallel;
  if (std::fabs(m1 - std::fabs((p3.y - p1.y) / (p3.x - p1.x))) >= 1e-6) return Alignment::kParallel;
  return Alignment::kCollinear;
}

bool IsPointOnSegment(const AcGePoint3d& p, const AcGePoint3d& start, const AcGePoint3d& end, const AcGeTol& tol) {
  if (p.isEqualTo(start, tol) || p.isEqualTo(end, tol)) return true;
  return AcGeLineSeg3d(start, end).isOn(p, tol) && (p - start).dotProduct(p - end) < 0;
}

int SideOf(const AcGePoint3d& p, const AcGePoint3d& a, const AcGePoint3d& b, double tol) {
  const double c = (p.y - a.y) * (b.x - a.x) - (b.y - a.y) * (p.x - a.x);
  if (std::fabs(c) < tol) return 0;
  return c > 0 ? 1 : -1;
}

}  // namespace engine
