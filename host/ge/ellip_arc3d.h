#pragma once
// Elliptical arc (or full ellipse); the parameter is the eccentric angle.
#include "host/ge/curve3d.h"

class AcGeEllipArc3d : public AcGeCurve3d {
 public:
  AcGeEllipArc3d() = default;
  AcGeEllipArc3d(const AcGePoint3d& center, const AcGeVector3d& majorAxis,
                 const AcGeVector3d& minorAxis, double majorRadius, double minorRadius,
                 double startAngle, double endAngle);

  AcGePoint3d center() const { return m_center; }
  AcGeVector3d majorAxis() const { return m_major; }
  AcGeVector3d minorAxis() const { return m_minor; }
  double majorRadius() const { return m_a; }
  double minorRadius() const { return m_b; }
  double startAng() const { return m_start; }
  double endAng() const { return m_end; }

  void getInterval(AcGeInterval& interval) const override { interval.set(m_start, m_end); }
  AcGePoint3d evalPoint(double t) const override;
  AcGeVector3d evalDeriv(double t) const override;

 protected:
  void breakParams(AcGeDoubleArray& params) const override;

 private:
  AcGePoint3d m_center;
  AcGeVector3d m_major = AcGeVector3d::kXAxis, m_minor = AcGeVector3d::kYAxis;
  double m_a = 0, m_b = 0, m_start = 0, m_end = 0;
};
