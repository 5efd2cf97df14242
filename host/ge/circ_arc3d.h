#pragma once
// Circular arc (or full circle) in a plane of any orientation.
#include "host/ge/curve3d.h"

class AcGeCircArc3d : public AcGeCurve3d {
 public:
  AcGeCircArc3d() = default;
  // A full circle.
  AcGeCircArc3d(const AcGePoint3d& center, const AcGeVector3d& normal, double radius);
  // An arc from startAngle to endAngle, counter-clockwise about normal,
  // angles measured from refVec.
  AcGeCircArc3d(const AcGePoint3d& center, const AcGeVector3d& normal, const AcGeVector3d& refVec,
                double radius, double startAngle, double endAngle);
  // The arc through three points.
  AcGeCircArc3d(const AcGePoint3d& start, const AcGePoint3d& mid, const AcGePoint3d& end);

  AcGePoint3d center() const { return m_center; }
  AcGeVector3d normal() const { return m_normal; }
  AcGeVector3d refVec() const { return m_ref; }
  double radius() const { return m_radius; }
  double startAng() const { return m_start; }
  double endAng() const { return m_end; }

  void getInterval(AcGeInterval& interval) const override { interval.set(m_start, m_end); }
  AcGePoint3d evalPoint(double angle) const override;
  AcGeVector3d evalDeriv(double angle) const override;
  double length(double fromParam, double toParam, double = 0) const override {
    return std::fabs(toParam - fromParam) * m_radius;
  }
  using AcGeCurve3d::length;
  AcGePoint3d closestPointTo(const AcGePoint3d& point,
                             const AcGeTol& tol = AcGeContext::gTol) const override;

 private:
  AcGePoint3d m_center;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis, m_ref = AcGeVector3d::kXAxis;
  double m_radius = 0, m_start = 0, m_end = 0;
};
