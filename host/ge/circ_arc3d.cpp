#include "host/ge/circ_arc3d.h"

#include <numbers>

AcGeCircArc3d::AcGeCircArc3d(const AcGePoint3d& center, const AcGeVector3d& normal, double radius)
    : AcGeCircArc3d(center, normal, normal.perpVector(), radius, 0, 2 * std::numbers::pi) {}

AcGeCircArc3d::AcGeCircArc3d(const AcGePoint3d& center, const AcGeVector3d& normal,
                             const AcGeVector3d& refVec, double radius, double startAngle,
                             double endAngle)
    : m_center(center), m_normal(normal.normal()), m_radius(radius), m_start(startAngle), m_end(endAngle) {
  // The reference direction is kept in the plane of the arc.
  m_ref = (refVec - m_normal * refVec.dotProduct(m_normal)).normal();
  m_end = host::sweepEnd(m_start, m_end, false);
}

AcGeCircArc3d::AcGeCircArc3d(const AcGePoint3d& p1, const AcGePoint3d& p2, const AcGePoint3d& p3) {
  const AcGeVector3d a = p1 - p3, b = p2 - p3;
  const AcGeVector3d axb = a.crossProduct(b);
  const double denom = 2 * axb.lengthSqrd();
  if (denom == 0) return;  // collinear: a degenerate arc of radius 0
  const AcGeVector3d c = (b * a.lengthSqrd() - a * b.lengthSqrd()).crossProduct(axb) / denom;
  m_center = p3 + c;
  m_radius = c.length();
  m_normal = axb.normal();
  m_ref = (p1 - m_center).normal();
  m_start = 0;
  m_end = m_ref.angleTo((p3 - m_center).normal(), m_normal);
}

AcGePoint3d AcGeCircArc3d::evalPoint(double t) const {
  const AcGeVector3d y = m_normal.crossProduct(m_ref);
  return m_center + (m_ref * std::cos(t) + y * std::sin(t)) * m_radius;
}

AcGeVector3d AcGeCircArc3d::evalDeriv(double t) const {
  const AcGeVector3d y = m_normal.crossProduct(m_ref);
  return (m_ref * -std::sin(t) + y * std::cos(t)) * m_radius;
}

AcGePoint3d AcGeCircArc3d::closestPointTo(const AcGePoint3d& point, const AcGeTol&) const {
  const AcGeVector3d v = point - m_center;
  const AcGeVector3d inPlane = v - m_normal * v.dotProduct(m_normal);
  if (inPlane.isZeroLength()) return evalPoint(m_start);
  double a = m_ref.angleTo(inPlane, m_normal);
  double from = m_start;
  a = host::sweepEnd(from, a, false);
  if (a <= m_end) return evalPoint(a);
  // Outside the sweep: the nearer end point.
  const AcGePoint3d s = evalPoint(m_start), e = evalPoint(m_end);
  return s.distanceTo(point) <= e.distanceTo(point) ? s : e;
}
