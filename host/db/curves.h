#pragma once
// Curve entities: the curve interface, lines, arcs, circles, ellipses, splines.
#include <memory>
#include <optional>

#include "host/db/entity.h"
#include "host/ge/curve3d.h"

class AcDbCurve : public AcDbEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbCurve)

  // The curve's geometry in world coordinates; null when it has none.
  virtual std::unique_ptr<AcGeCurve3d> geCurve() const = 0;
  Acad::ErrorStatus getAcGeCurve(AcGeCurve3d*& curve) const;  // caller deletes

  virtual bool isClosed() const { return false; }
  Acad::ErrorStatus getStartParam(double& param) const;
  Acad::ErrorStatus getEndParam(double& param) const;
  Acad::ErrorStatus getStartPoint(AcGePoint3d& point) const;
  Acad::ErrorStatus getEndPoint(AcGePoint3d& point) const;
  Acad::ErrorStatus getPointAtParam(double param, AcGePoint3d& point) const;
  // Distance along the curve from its start to param.
  Acad::ErrorStatus getDistAtParam(double param, double& dist) const;

 protected:
  AcDbCurve() = default;
  AcDbCurve(const AcDbCurve&) = default;
};

class AcDbLine : public AcDbCurve {
 public:
  ACRX_DECLARE_MEMBERS(AcDbLine)
  AcDbLine() = default;
  AcDbLine(const AcGePoint3d& start, const AcGePoint3d& end) : m_start(start), m_end(end) {}

  AcGePoint3d startPoint() const { return m_start; }
  AcGePoint3d endPoint() const { return m_end; }
  Acad::ErrorStatus setStartPoint(const AcGePoint3d& p);
  Acad::ErrorStatus setEndPoint(const AcGePoint3d& p);
  double thickness() const { return m_thickness; }
  Acad::ErrorStatus setThickness(double t);
  AcGeVector3d normal() const { return m_normal; }
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);

  std::unique_ptr<AcGeCurve3d> geCurve() const override;
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  AcDbObject* cloneObject() const override { return new AcDbLine(*this); }

 private:
  AcGePoint3d m_start, m_end;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis;
  double m_thickness = 0;
};

// A circular arc: centre in world coordinates, angles measured in the plane
// of the normal from its object x axis, counter-clockwise about the normal.
class AcDbArc : public AcDbCurve {
 public:
  ACRX_DECLARE_MEMBERS(AcDbArc)
  AcDbArc() = default;
  AcDbArc(const AcGePoint3d& center, double radius, double startAngle, double endAngle);
  AcDbArc(const AcGePoint3d& center, const AcGeVector3d& normal, double radius, double startAngle,
          double endAngle);

  AcGePoint3d center() const { return m_center; }
  double radius() const { return m_radius; }
  double startAngle() const { return m_startAngle; }
  double endAngle() const { return m_endAngle; }
  AcGeVector3d normal() const { return m_normal; }
  double thickness() const { return m_thickness; }
  Acad::ErrorStatus setCenter(const AcGePoint3d& c);
  Acad::ErrorStatus setRadius(double r);
  Acad::ErrorStatus setStartAngle(double a);
  Acad::ErrorStatus setEndAngle(double a);
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);
  Acad::ErrorStatus setThickness(double t);
  // Sweep from start to end angle, in (0, 2π].
  double sweep() const;

  std::unique_ptr<AcGeCurve3d> geCurve() const override;
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  Acad::ErrorStatus getTransformedCopy(const AcGeMatrix3d& xform, AcDbEntity*& copy) const override;
  AcDbObject* cloneObject() const override { return new AcDbArc(*this); }

 private:
  AcGePoint3d m_center;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis;
  double m_radius = 0, m_startAngle = 0, m_endAngle = 0, m_thickness = 0;
};

class AcDbCircle : public AcDbCurve {
 public:
  ACRX_DECLARE_MEMBERS(AcDbCircle)
  AcDbCircle() = default;
  AcDbCircle(const AcGePoint3d& center, const AcGeVector3d& normal, double radius)
      : m_center(center), m_normal(normal.normal()), m_radius(radius) {}

  AcGePoint3d center() const { return m_center; }
  double radius() const { return m_radius; }
  AcGeVector3d normal() const { return m_normal; }
  double thickness() const { return m_thickness; }
  Acad::ErrorStatus setCenter(const AcGePoint3d& c);
  Acad::ErrorStatus setRadius(double r);
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);
  Acad::ErrorStatus setThickness(double t);
  bool isClosed() const override { return true; }

  std::unique_ptr<AcGeCurve3d> geCurve() const override;
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  Acad::ErrorStatus getTransformedCopy(const AcGeMatrix3d& xform, AcDbEntity*& copy) const override;
  AcDbObject* cloneObject() const override { return new AcDbCircle(*this); }

 private:
  AcGePoint3d m_center;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis;
  double m_radius = 0, m_thickness = 0;
};

// An ellipse or elliptical arc. The major axis vector carries the major
// radius; start and end are parameters (eccentric angles), 0 and 2π for a
// whole ellipse.
class AcDbEllipse : public AcDbCurve {
 public:
  ACRX_DECLARE_MEMBERS(AcDbEllipse)
  AcDbEllipse() = default;
  AcDbEllipse(const AcGePoint3d& center, const AcGeVector3d& normal, const AcGeVector3d& majorAxis,
              double radiusRatio, double startParam = 0, double endParam = 6.283185307179586);

  AcGePoint3d center() const { return m_center; }
  AcGeVector3d normal() const { return m_normal; }
  AcGeVector3d majorAxis() const { return m_major; }
  AcGeVector3d minorAxis() const;
  double radiusRatio() const { return m_ratio; }
  double startParam() const { return m_startParam; }
  double endParam() const { return m_endParam; }
  Acad::ErrorStatus set(const AcGePoint3d& center, const AcGeVector3d& normal, const AcGeVector3d& majorAxis,
                        double radiusRatio, double startParam, double endParam);
  bool isClosed() const override;

  std::unique_ptr<AcGeCurve3d> geCurve() const override;
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  // Any affine map: an ellipse stays an ellipse.
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  AcDbObject* cloneObject() const override { return new AcDbEllipse(*this); }

  // The ellipse c + p·cos t + q·sin t for t in [t0, t1], given by two
  // conjugate semi-diameters; presented with a +Z normal when it lies in a
  // plane parallel to XY.
  static AcDbEllipse* fromConjugate(const AcGePoint3d& c, const AcGeVector3d& p, const AcGeVector3d& q,
                                    double t0, double t1);

 private:
  AcGePoint3d m_center;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis, m_major = AcGeVector3d::kXAxis;
  double m_ratio = 1, m_startParam = 0, m_endParam = 6.283185307179586;
};

// A NURBS curve given by control points (with knots and weights) or by fit
// points only.
class AcDbSpline : public AcDbCurve {
 public:
  ACRX_DECLARE_MEMBERS(AcDbSpline)
  AcDbSpline() = default;
  AcDbSpline(int degree, bool rational, bool closed, bool periodic, const AcGePoint3dArray& controlPoints,
             const AcGeDoubleArray& knots, const AcGeDoubleArray& weights);
  // Interpolating through fit points (cubic), with optional end tangents.
  AcDbSpline(const AcGePoint3dArray& fitPoints, const AcGeVector3d& startTangent = {},
             const AcGeVector3d& endTangent = {});

  int degree() const { return m_degree; }
  bool isRational() const { return m_rational; }
  bool isClosed() const override { return m_closed; }
  bool isPeriodic() const { return m_periodic; }
  const AcGePoint3dArray& controlPoints() const { return m_ctrl; }
  const AcGeDoubleArray& knots() const { return m_knots; }
  const AcGeDoubleArray& weights() const { return m_weights; }
  const AcGePoint3dArray& fitPoints() const { return m_fit; }
  AcGeVector3d startFitTangent() const { return m_startTangent; }
  AcGeVector3d endFitTangent() const { return m_endTangent; }
  double fitTolerance() const { return m_fitTol; }
  AcGeVector3d normal() const { return m_normal; }
  bool hasFitData() const { return !m_fit.isEmpty(); }
  Acad::ErrorStatus setNurbsData(int degree, bool rational, bool closed, bool periodic,
                                 const AcGePoint3dArray& controlPoints, const AcGeDoubleArray& knots,
                                 const AcGeDoubleArray& weights);
  Acad::ErrorStatus setFitData(const AcGePoint3dArray& fitPoints, const AcGeVector3d& startTangent,
                               const AcGeVector3d& endTangent, double fitTolerance = 0);
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);

  std::unique_ptr<AcGeCurve3d> geCurve() const override;
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  AcDbObject* cloneObject() const override { return new AcDbSpline(*this); }

 private:
  int m_degree = 3;
  bool m_rational = false, m_closed = false, m_periodic = false;
  AcGePoint3dArray m_ctrl;
  AcGeDoubleArray m_knots, m_weights;
  AcGePoint3dArray m_fit;
  AcGeVector3d m_startTangent, m_endTangent;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis;
  double m_fitTol = 0;
  // The extents, worked out on first demand (a numerical search) and kept
  // until the curve changes: selections ask for them again and again.
  mutable std::optional<AcDbExtents> m_extents;
};

namespace host {
// Tight extents of any curve: its end points and the extremes of each
// coordinate found from the zeros of the derivative.
void addCurveExtents(const AcGeCurve3d& curve, AcDbExtents& extents, int steps = 96);
// Adds the box of the arc c + p cos t + q sin t, t from t0 to t1 (t1 >= t0),
// exactly: its ends and, along each axis, the extreme points the sweep
// passes (quadrant points of a circle in the drawing plane). p and q are
// conjugate semi-diameters: radius times the plane's axes for a circular
// arc, the major and minor axis for an ellipse.
void addConicArcExtents(const AcGePoint3d& c, const AcGeVector3d& p, const AcGeVector3d& q, double t0, double t1,
                        AcDbExtents& extents);
}  // namespace host
