#pragma once
// Non-uniform rational B-spline curve.
#include "host/ge/curve3d.h"

class AcGeNurbCurve3d : public AcGeCurve3d {
 public:
  AcGeNurbCurve3d() = default;
  // From control points and knots; weights empty for a non-rational curve.
  // The knot vector must hold controlPoints + degree + 1 values.
  AcGeNurbCurve3d(int degree, const AcGeDoubleArray& knots, const AcGePoint3dArray& controlPoints,
                  const AcGeDoubleArray& weights = {}, bool isPeriodic = false);
  // The cubic curve through fitPoints, parameterised by chord length, with
  // the given end tangents or, where a tangent is not given, one estimated
  // from the first (last) three points. Two fit points give a straight
  // cubic when no tangent is given.
  static AcGeNurbCurve3d interpolate(const AcGePoint3dArray& fitPoints, const AcGeVector3d& startTangent,
                                     const AcGeVector3d& endTangent);

  int degree() const { return m_degree; }
  int numControlPoints() const { return m_ctrl.length(); }
  const AcGePoint3dArray& controlPoints() const { return m_ctrl; }
  const AcGeDoubleArray& knots() const { return m_knots; }
  const AcGeDoubleArray& weights() const { return m_weights; }
  bool isRational() const { return !m_weights.isEmpty(); }
  bool isPeriodic() const { return m_periodic; }
  // A curve is usable when its arrays agree in size and it has at least one span.
  bool isValid() const { return m_valid; }

  void getInterval(AcGeInterval& interval) const override;
  AcGePoint3d evalPoint(double t) const override;
  AcGeVector3d evalDeriv(double t) const override;

 protected:
  void breakParams(AcGeDoubleArray& params) const override;

 private:
  bool checkValid() const;
  int findSpan(double t) const;
  // Point and first derivative at t.
  void eval(double t, AcGePoint3d& point, AcGeVector3d& deriv) const;

  int m_degree = 0;
  AcGeDoubleArray m_knots;
  AcGePoint3dArray m_ctrl;
  AcGeDoubleArray m_weights;
  bool m_periodic = false;
  bool m_valid = false;  // the data never changes after construction
};
