#pragma once
// 4x4 affine transformation of 3D space, applied to column vectors.
#include "host/ge/vectors.h"

class AcGeMatrix3d {
 public:
  double entry[4][4];

  AcGeMatrix3d();  // identity
  static const AcGeMatrix3d kIdentity;

  AcGeMatrix3d& setToIdentity();
  AcGeMatrix3d& setToTranslation(const AcGeVector3d& v);
  AcGeMatrix3d& setToRotation(double angle, const AcGeVector3d& axis,
                              const AcGePoint3d& center = AcGePoint3d::kOrigin);
  AcGeMatrix3d& setToScaling(double scale, const AcGePoint3d& center = AcGePoint3d::kOrigin);
  // Mirror in the plane through point with the given normal.
  AcGeMatrix3d& setToMirroring(const AcGePoint3d& point, const AcGeVector3d& planeNormal);
  // Maps the coordinate system (origin, x, y, z) onto the world.
  AcGeMatrix3d& setCoordSystem(const AcGePoint3d& origin, const AcGeVector3d& xAxis,
                               const AcGeVector3d& yAxis, const AcGeVector3d& zAxis);

  static AcGeMatrix3d translation(const AcGeVector3d& v);
  static AcGeMatrix3d rotation(double angle, const AcGeVector3d& axis,
                               const AcGePoint3d& center = AcGePoint3d::kOrigin);
  static AcGeMatrix3d scaling(double scale, const AcGePoint3d& center = AcGePoint3d::kOrigin);
  // Independent scale factors along the world axes about center.
  static AcGeMatrix3d scaling(const AcGeVector3d& factors,
                              const AcGePoint3d& center = AcGePoint3d::kOrigin);
  static AcGeMatrix3d mirroring(const AcGePoint3d& point, const AcGeVector3d& planeNormal);
  // The object coordinate system of an extrusion direction (the drawing
  // format's arbitrary axis rule) to world coordinates.
  static AcGeMatrix3d planeToWorld(const AcGeVector3d& normal);
  static AcGeMatrix3d worldToPlane(const AcGeVector3d& normal);

  AcGeMatrix3d operator*(const AcGeMatrix3d& m) const;
  AcGeMatrix3d& operator*=(const AcGeMatrix3d& m) { return *this = *this * m; }
  AcGeMatrix3d& preMultBy(const AcGeMatrix3d& left) { return *this = left * *this; }
  AcGeMatrix3d& postMultBy(const AcGeMatrix3d& right) { return *this = *this * right; }
  double det() const;
  bool isSingular() const;
  AcGeMatrix3d inverse() const;
  AcGeMatrix3d& invert() { return *this = inverse(); }
  bool isEqualTo(const AcGeMatrix3d& m, double tol = 1e-12) const;
  // True when the linear part scales every direction by the same factor.
  bool isUniScaledOrtho(double tol = 1e-9) const;
  // Scale factor of a uniformly scaled matrix (the length of the image of x).
  double scale() const;
  AcGeVector3d translation() const { return {entry[0][3], entry[1][3], entry[2][3]}; }
};
