#include "host/ge/line_seg3d.h"

#include <algorithm>

namespace {
// Parameter on [0, 1] of the point of segment (a, a + u) nearest to p.
double clampedParam(const AcGePoint3d& a, const AcGeVector3d& u, const AcGePoint3d& p) {
  const double uu = u.dotProduct(u);
  if (uu == 0) return 0;
  return std::clamp((p - a).dotProduct(u) / uu, 0.0, 1.0);
}
}  // namespace

AcGePoint3d AcGeLinearEnt3d::closestPointTo(const AcGePoint3d& point, const AcGeTol&) const {
  return evalPoint(clampedParam(m_start, m_end - m_start, point));
}

bool AcGeLinearEnt3d::intersectWith(const AcGeLinearEnt3d& other, AcGePoint3d& result,
                                    const AcGeTol& tol) const {
  const double eps = tol.equalPoint();
  const AcGeVector3d u = m_end - m_start, v = other.m_end - other.m_start;
  const double lu = u.length(), lv = v.length();
  // A degenerate segment is a point: it meets the other where it lies on it.
  if (lu <= eps || lv <= eps) {
    const AcGePoint3d p = lu <= eps ? m_start : other.m_start;
    const AcGeLinearEnt3d& line = lu <= eps ? other : *this;
    if (line.closestPointTo(p).distanceTo(p) > eps) return false;
    result = p;
    return true;
  }
  if (u.crossProduct(v).length() / (lu * lv) <= tol.equalVector()) return false;

  const AcGeVector3d w = m_start - other.m_start;
  const double a = u.dotProduct(u), b = u.dotProduct(v), c = v.dotProduct(v);
  const double d = u.dotProduct(w), e = v.dotProduct(w);
  const double den = a * c - b * b;
  if (den <= 0) return false;
  const double s = (b * e - c * d) / den;
  const double t = (a * e - b * d) / den;
  // Both parameters must fall on their segments, allowing eps at the ends.
  if (s < -eps / lu || s > 1 + eps / lu || t < -eps / lv || t > 1 + eps / lv) return false;
  const AcGePoint3d p = evalPoint(std::clamp(s, 0.0, 1.0));
  const AcGePoint3d q = other.evalPoint(std::clamp(t, 0.0, 1.0));
  if (p.distanceTo(q) > eps) return false;
  result = p;
  return true;
}
