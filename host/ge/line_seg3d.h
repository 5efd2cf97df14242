#pragma once
// Straight lines: the linear entity base and the bounded segment.
#include "host/ge/curve3d.h"

class AcGeLinearEnt3d : public AcGeCurve3d {
 public:
  AcGeVector3d direction() const { return (m_end - m_start).normal(); }
  AcGePoint3d pointOnLine() const { return m_start; }

  // One point where this segment crosses other, both taken as bounded
  // segments: the closest points of the two lines must be within
  // tol.equalPoint of each other and of both segments (touching at an end
  // counts). Parallel and collinear segments (directions within
  // tol.equalVector) give no point.
  bool intersectWith(const AcGeLinearEnt3d& other, AcGePoint3d& result,
                     const AcGeTol& tol = AcGeContext::gTol) const;

  void getInterval(AcGeInterval& interval) const override { interval.set(0, 1); }
  AcGePoint3d evalPoint(double t) const override { return m_start + (m_end - m_start) * t; }
  AcGeVector3d evalDeriv(double) const override { return m_end - m_start; }
  double length(double fromParam, double toParam, double = 0) const override {
    return std::fabs(toParam - fromParam) * (m_end - m_start).length();
  }
  using AcGeCurve3d::length;
  AcGePoint3d closestPointTo(const AcGePoint3d& point,
                             const AcGeTol& tol = AcGeContext::gTol) const override;

 protected:
  AcGeLinearEnt3d() = default;
  AcGeLinearEnt3d(const AcGePoint3d& a, const AcGePoint3d& b) : m_start(a), m_end(b) {}
  AcGePoint3d m_start, m_end;
};

class AcGeLineSeg3d : public AcGeLinearEnt3d {
 public:
  AcGeLineSeg3d() = default;
  AcGeLineSeg3d(const AcGePoint3d& start, const AcGePoint3d& end) : AcGeLinearEnt3d(start, end) {}
  AcGeLineSeg3d& set(const AcGePoint3d& start, const AcGePoint3d& end) {
    m_start = start;
    m_end = end;
    return *this;
  }
  AcGePoint3d startPoint() const { return m_start; }
  AcGePoint3d endPoint() const { return m_end; }
  AcGePoint3d midPoint() const { return AcGePoint3d::mid(m_start, m_end); }
  double length() const { return m_start.distanceTo(m_end); }
  using AcGeLinearEnt3d::length;
};
