#pragma once
// Points and vectors in two and three dimensions.
#include <cmath>

#include "host/base/ac_array.h"
#include "host/ge/tol.h"

class AcGeMatrix3d;

class AcGeVector2d {
 public:
  double x = 0, y = 0;
  constexpr AcGeVector2d() = default;
  constexpr AcGeVector2d(double xx, double yy) : x(xx), y(yy) {}
  static const AcGeVector2d kXAxis, kYAxis;

  double length() const { return std::hypot(x, y); }
  double dotProduct(const AcGeVector2d& v) const { return x * v.x + y * v.y; }
  // Angle from the x axis, in [0, 2π).
  double angle() const;
  AcGeVector2d normal() const;
  AcGeVector2d operator+(const AcGeVector2d& v) const { return {x + v.x, y + v.y}; }
  AcGeVector2d operator-(const AcGeVector2d& v) const { return {x - v.x, y - v.y}; }
  AcGeVector2d operator*(double s) const { return {x * s, y * s}; }
  AcGeVector2d operator-() const { return {-x, -y}; }
  bool isEqualTo(const AcGeVector2d& v, const AcGeTol& tol = AcGeContext::gTol) const {
    return (*this - v).length() <= tol.equalVector();
  }
};

class AcGePoint2d {
 public:
  double x = 0, y = 0;
  constexpr AcGePoint2d() = default;
  constexpr AcGePoint2d(double xx, double yy) : x(xx), y(yy) {}
  static const AcGePoint2d kOrigin;

  AcGeVector2d operator-(const AcGePoint2d& p) const { return {x - p.x, y - p.y}; }
  AcGePoint2d operator+(const AcGeVector2d& v) const { return {x + v.x, y + v.y}; }
  AcGePoint2d operator-(const AcGeVector2d& v) const { return {x - v.x, y - v.y}; }
  double distanceTo(const AcGePoint2d& p) const { return std::hypot(x - p.x, y - p.y); }
  bool isEqualTo(const AcGePoint2d& p, const AcGeTol& tol = AcGeContext::gTol) const {
    return distanceTo(p) <= tol.equalPoint();
  }
  bool operator==(const AcGePoint2d& p) const { return x == p.x && y == p.y; }
};

class AcGeVector3d {
 public:
  double x = 0, y = 0, z = 0;
  constexpr AcGeVector3d() = default;
  constexpr AcGeVector3d(double xx, double yy, double zz) : x(xx), y(yy), z(zz) {}
  static const AcGeVector3d kIdentity, kXAxis, kYAxis, kZAxis;

  double length() const { return std::sqrt(x * x + y * y + z * z); }
  double lengthSqrd() const { return x * x + y * y + z * z; }
  double dotProduct(const AcGeVector3d& v) const { return x * v.x + y * v.y + z * v.z; }
  AcGeVector3d crossProduct(const AcGeVector3d& v) const {
    return {y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x};
  }
  // Unit vector; a zero vector stays zero.
  AcGeVector3d normal() const;
  AcGeVector3d& normalize() { return *this = normal(); }
  // Some vector perpendicular to this one.
  AcGeVector3d perpVector() const;
  double angleTo(const AcGeVector3d& v) const;
  // Angle from this vector to v, counter-clockwise about ref, in [0, 2π).
  double angleTo(const AcGeVector3d& v, const AcGeVector3d& ref) const;
  AcGeVector3d rotateBy(double angle, const AcGeVector3d& axis) const;
  AcGeVector3d& transformBy(const AcGeMatrix3d& m);
  bool isZeroLength(const AcGeTol& tol = AcGeContext::gTol) const {
    return length() <= tol.equalVector();
  }
  bool isParallelTo(const AcGeVector3d& v, const AcGeTol& tol = AcGeContext::gTol) const;
  bool isEqualTo(const AcGeVector3d& v, const AcGeTol& tol = AcGeContext::gTol) const {
    return (*this - v).length() <= tol.equalVector();
  }
  AcGeVector2d convert2d() const { return {x, y}; }

  AcGeVector3d operator+(const AcGeVector3d& v) const { return {x + v.x, y + v.y, z + v.z}; }
  AcGeVector3d operator-(const AcGeVector3d& v) const { return {x - v.x, y - v.y, z - v.z}; }
  AcGeVector3d operator*(double s) const { return {x * s, y * s, z * s}; }
  AcGeVector3d operator/(double s) const { return {x / s, y / s, z / s}; }
  AcGeVector3d operator-() const { return {-x, -y, -z}; }
  AcGeVector3d& operator+=(const AcGeVector3d& v) { return *this = *this + v; }
  AcGeVector3d& operator-=(const AcGeVector3d& v) { return *this = *this - v; }
  AcGeVector3d& operator*=(double s) { return *this = *this * s; }
  bool operator==(const AcGeVector3d& v) const { return x == v.x && y == v.y && z == v.z; }
};
inline AcGeVector3d operator*(double s, const AcGeVector3d& v) { return v * s; }

class AcGePoint3d {
 public:
  double x = 0, y = 0, z = 0;
  constexpr AcGePoint3d() = default;
  constexpr AcGePoint3d(double xx, double yy, double zz) : x(xx), y(yy), z(zz) {}
  static const AcGePoint3d kOrigin;

  AcGeVector3d operator-(const AcGePoint3d& p) const { return {x - p.x, y - p.y, z - p.z}; }
  AcGePoint3d operator+(const AcGeVector3d& v) const { return {x + v.x, y + v.y, z + v.z}; }
  AcGePoint3d operator-(const AcGeVector3d& v) const { return {x - v.x, y - v.y, z - v.z}; }
  AcGePoint3d& operator+=(const AcGeVector3d& v) { return *this = *this + v; }
  AcGePoint3d& operator-=(const AcGeVector3d& v) { return *this = *this - v; }
  AcGeVector3d asVector() const { return {x, y, z}; }
  AcGePoint2d convert2d() const { return {x, y}; }

  double distanceTo(const AcGePoint3d& p) const { return (*this - p).length(); }
  bool isEqualTo(const AcGePoint3d& p, const AcGeTol& tol = AcGeContext::gTol) const {
    return distanceTo(p) <= tol.equalPoint();
  }
  AcGePoint3d& transformBy(const AcGeMatrix3d& m);
  bool operator==(const AcGePoint3d& p) const { return x == p.x && y == p.y && z == p.z; }
  bool operator!=(const AcGePoint3d& p) const { return !(*this == p); }
  // Midpoint of two points.
  static AcGePoint3d mid(const AcGePoint3d& a, const AcGePoint3d& b) {
    return {(a.x + b.x) / 2, (a.y + b.y) / 2, (a.z + b.z) / 2};
  }
};

using AcGePoint3dArray = AcArray<AcGePoint3d>;
using AcGePoint2dArray = AcArray<AcGePoint2d>;
using AcGeDoubleArray = AcArray<double>;
using AcGeVector3dArray = AcArray<AcGeVector3d>;

// True when every coordinate is finite (no NaN, no infinity).
inline bool isFinite(const AcGePoint3d& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}
inline bool isFinite(const AcGeVector3d& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}
