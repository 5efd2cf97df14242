#pragma once
// Parametric curves in 3D space: the common interface.
#include "host/ge/vectors.h"

class AcGeInterval {
 public:
  AcGeInterval() = default;
  AcGeInterval(double lower, double upper) : m_lower(lower), m_upper(upper) {}
  double lowerBound() const { return m_lower; }
  double upperBound() const { return m_upper; }
  double length() const { return m_upper - m_lower; }
  void set(double lower, double upper) {
    m_lower = lower;
    m_upper = upper;
  }

 private:
  double m_lower = 0, m_upper = 0;
};

class AcGeCurve3d {
 public:
  virtual ~AcGeCurve3d() = default;

  virtual void getInterval(AcGeInterval& interval) const = 0;
  virtual AcGePoint3d evalPoint(double param) const = 0;
  // First derivative with respect to the parameter.
  virtual AcGeVector3d evalDeriv(double param) const = 0;

  AcGePoint3d startPoint() const;
  AcGePoint3d endPoint() const;
  // Arc length between two parameters, to about relTol relative accuracy.
  virtual double length(double fromParam, double toParam, double relTol = 1e-11) const;
  // Arc length of the whole curve.
  double length() const;
  // numSample points spread evenly over the parameter range: the first at the
  // start, the last at the end. Fewer than 2 asks for 2.
  void getSamplePoints(int numSample, AcGePoint3dArray& points) const;
  // The point of the curve nearest to point.
  virtual AcGePoint3d closestPointTo(const AcGePoint3d& point,
                                     const AcGeTol& tol = AcGeContext::gTol) const;
  bool isOn(const AcGePoint3d& point, const AcGeTol& tol = AcGeContext::gTol) const {
    return closestPointTo(point, tol).distanceTo(point) <= tol.equalPoint();
  }

 protected:
  // Parameters where the curve may be non-smooth (knots); length integrates
  // between them. Defaults to none.
  virtual void breakParams(AcGeDoubleArray& params) const { (void)params; }
};

namespace host {
// Integrates |f'(t)| over [a, b] with adaptive Gauss-Legendre quadrature.
// The work is bounded: a speed that is not finite gives its non-finite
// result at once, and a curve that never converges stops refining after a
// fixed number of pieces.
double integrateSpeed(const AcGeCurve3d& curve, double a, double b, double relTol);

// The end angle of a periodic sweep moved by whole turns to lie after start
// (strictly after when strict, else at or after), in constant time for any
// magnitude. Angles too large for a turn to register in a double are first
// reduced to [0, 2pi) together, keeping their difference; the reduced start
// is returned in start.
double sweepEnd(double& start, double end, bool strict);
}  // namespace host
