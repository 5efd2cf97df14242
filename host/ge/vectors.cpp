#include "host/ge/vectors.h"

#include <numbers>

const AcGeVector2d AcGeVector2d::kXAxis{1, 0};
const AcGeVector2d AcGeVector2d::kYAxis{0, 1};
const AcGePoint2d AcGePoint2d::kOrigin{0, 0};
const AcGeVector3d AcGeVector3d::kIdentity{0, 0, 0};
const AcGeVector3d AcGeVector3d::kXAxis{1, 0, 0};
const AcGeVector3d AcGeVector3d::kYAxis{0, 1, 0};
const AcGeVector3d AcGeVector3d::kZAxis{0, 0, 1};
const AcGePoint3d AcGePoint3d::kOrigin{0, 0, 0};

double AcGeVector2d::angle() const {
  double a = std::atan2(y, x);
  if (a < 0) a += 2 * std::numbers::pi;
  // atan2 of a tiny negative y can round up to exactly 2π.
  if (a >= 2 * std::numbers::pi) a = 0;
  return a;
}

AcGeVector2d AcGeVector2d::normal() const {
  const double len = length();
  return len > 0 ? AcGeVector2d{x / len, y / len} : *this;
}

AcGeVector3d AcGeVector3d::normal() const {
  if (x == 0 && y == 0 && (z == 1 || z == -1)) return *this;  // the common extrusion
  const double len = length();
  return len > 0 ? *this / len : *this;
}

AcGeVector3d AcGeVector3d::perpVector() const {
  // The arbitrary axis rule of the drawing format: stable for any direction.
  const AcGeVector3d n = normal();
  if (std::fabs(n.x) < 1.0 / 64 && std::fabs(n.y) < 1.0 / 64) return kYAxis.crossProduct(n).normal();
  return kZAxis.crossProduct(n).normal();
}

double AcGeVector3d::angleTo(const AcGeVector3d& v) const {
  return std::atan2(crossProduct(v).length(), dotProduct(v));
}

double AcGeVector3d::angleTo(const AcGeVector3d& v, const AcGeVector3d& ref) const {
  double a = angleTo(v);
  if (crossProduct(v).dotProduct(ref) < 0) a = 2 * std::numbers::pi - a;
  if (a >= 2 * std::numbers::pi) a = 0;
  return a;
}

AcGeVector3d AcGeVector3d::rotateBy(double angle, const AcGeVector3d& axis) const {
  // Rodrigues' rotation formula.
  const AcGeVector3d k = axis.normal();
  const double c = std::cos(angle), s = std::sin(angle);
  return *this * c + k.crossProduct(*this) * s + k * (k.dotProduct(*this) * (1 - c));
}

bool AcGeVector3d::isParallelTo(const AcGeVector3d& v, const AcGeTol& tol) const {
  const double la = length(), lb = v.length();
  if (la <= tol.equalVector() || lb <= tol.equalVector()) return false;
  return crossProduct(v).length() / (la * lb) <= tol.equalVector();
}
