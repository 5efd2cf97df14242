#include "host/ge/ellip_arc3d.h"

#include <numbers>

AcGeEllipArc3d::AcGeEllipArc3d(const AcGePoint3d& center, const AcGeVector3d& majorAxis,
                               const AcGeVector3d& minorAxis, double majorRadius, double minorRadius,
                               double startAngle, double endAngle)
    : m_center(center),
      m_major(majorAxis.normal()),
      m_minor(minorAxis.normal()),
      m_a(majorRadius),
      m_b(minorRadius),
      m_start(startAngle),
      m_end(endAngle) {
  m_end = host::sweepEnd(m_start, m_end, false);
}

AcGePoint3d AcGeEllipArc3d::evalPoint(double t) const {
  return m_center + m_major * (m_a * std::cos(t)) + m_minor * (m_b * std::sin(t));
}

AcGeVector3d AcGeEllipArc3d::evalDeriv(double t) const {
  return m_major * (-m_a * std::sin(t)) + m_minor * (m_b * std::cos(t));
}

void AcGeEllipArc3d::breakParams(AcGeDoubleArray& params) const {
  // Integrate quadrant by quadrant: the speed is smooth but peaks at the
  // vertices, and the quadrature converges fastest between them.
  const double q = std::numbers::pi / 2;
  const double first = std::ceil(m_start / q);
  for (int i = 0; i < 64 && (first + i) * q < m_end; ++i) params.append((first + i) * q);
}
