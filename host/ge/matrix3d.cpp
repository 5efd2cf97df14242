#include "host/ge/matrix3d.h"

#include <cmath>
#include <utility>

const AcGeMatrix3d AcGeMatrix3d::kIdentity;

AcGeMatrix3d::AcGeMatrix3d() { setToIdentity(); }

AcGeMatrix3d& AcGeMatrix3d::setToIdentity() {
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) entry[r][c] = r == c ? 1.0 : 0.0;
  return *this;
}

AcGeMatrix3d& AcGeMatrix3d::setToTranslation(const AcGeVector3d& v) {
  setToIdentity();
  entry[0][3] = v.x;
  entry[1][3] = v.y;
  entry[2][3] = v.z;
  return *this;
}

AcGeMatrix3d& AcGeMatrix3d::setToRotation(double angle, const AcGeVector3d& axis,
                                          const AcGePoint3d& center) {
  const AcGeVector3d k = axis.normal();
  const double c = std::cos(angle), s = std::sin(angle), t = 1 - c;
  setToIdentity();
  entry[0][0] = t * k.x * k.x + c;
  entry[0][1] = t * k.x * k.y - s * k.z;
  entry[0][2] = t * k.x * k.z + s * k.y;
  entry[1][0] = t * k.x * k.y + s * k.z;
  entry[1][1] = t * k.y * k.y + c;
  entry[1][2] = t * k.y * k.z - s * k.x;
  entry[2][0] = t * k.x * k.z - s * k.y;
  entry[2][1] = t * k.y * k.z + s * k.x;
  entry[2][2] = t * k.z * k.z + c;
  // Keep the centre fixed: translate by center - R·center.
  for (int r = 0; r < 3; ++r) {
    const double rc = entry[r][0] * center.x + entry[r][1] * center.y + entry[r][2] * center.z;
    entry[r][3] = (r == 0 ? center.x : r == 1 ? center.y : center.z) - rc;
  }
  return *this;
}

AcGeMatrix3d& AcGeMatrix3d::setToScaling(double scale, const AcGePoint3d& center) {
  return *this = scaling(AcGeVector3d(scale, scale, scale), center);
}

AcGeMatrix3d& AcGeMatrix3d::setToMirroring(const AcGePoint3d& point, const AcGeVector3d& planeNormal) {
  const AcGeVector3d n = planeNormal.normal();
  setToIdentity();
  const double nv[3] = {n.x, n.y, n.z};
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) entry[r][c] -= 2 * nv[r] * nv[c];
  const double d = 2 * n.dotProduct(point.asVector());
  for (int r = 0; r < 3; ++r) entry[r][3] = d * nv[r];
  return *this;
}

AcGeMatrix3d& AcGeMatrix3d::setCoordSystem(const AcGePoint3d& origin, const AcGeVector3d& xAxis,
                                           const AcGeVector3d& yAxis, const AcGeVector3d& zAxis) {
  setToIdentity();
  const AcGeVector3d cols[3] = {xAxis, yAxis, zAxis};
  for (int c = 0; c < 3; ++c) {
    entry[0][c] = cols[c].x;
    entry[1][c] = cols[c].y;
    entry[2][c] = cols[c].z;
  }
  entry[0][3] = origin.x;
  entry[1][3] = origin.y;
  entry[2][3] = origin.z;
  return *this;
}

AcGeMatrix3d AcGeMatrix3d::translation(const AcGeVector3d& v) { return AcGeMatrix3d().setToTranslation(v); }
AcGeMatrix3d AcGeMatrix3d::rotation(double angle, const AcGeVector3d& axis, const AcGePoint3d& center) {
  return AcGeMatrix3d().setToRotation(angle, axis, center);
}
AcGeMatrix3d AcGeMatrix3d::scaling(double scale, const AcGePoint3d& center) {
  return AcGeMatrix3d().setToScaling(scale, center);
}
AcGeMatrix3d AcGeMatrix3d::scaling(const AcGeVector3d& f, const AcGePoint3d& center) {
  AcGeMatrix3d m;
  m.entry[0][0] = f.x;
  m.entry[1][1] = f.y;
  m.entry[2][2] = f.z;
  m.entry[0][3] = center.x * (1 - f.x);
  m.entry[1][3] = center.y * (1 - f.y);
  m.entry[2][3] = center.z * (1 - f.z);
  return m;
}
AcGeMatrix3d AcGeMatrix3d::mirroring(const AcGePoint3d& point, const AcGeVector3d& planeNormal) {
  return AcGeMatrix3d().setToMirroring(point, planeNormal);
}

AcGeMatrix3d AcGeMatrix3d::planeToWorld(const AcGeVector3d& normal) {
  const AcGeVector3d n = normal.normal();
  if (n.isZeroLength()) return AcGeMatrix3d();
  const AcGeVector3d ax = n.perpVector();
  const AcGeVector3d ay = n.crossProduct(ax).normal();
  return AcGeMatrix3d().setCoordSystem(AcGePoint3d::kOrigin, ax, ay, n);
}

AcGeMatrix3d AcGeMatrix3d::worldToPlane(const AcGeVector3d& normal) { return planeToWorld(normal).inverse(); }

AcGeMatrix3d AcGeMatrix3d::operator*(const AcGeMatrix3d& m) const {
  AcGeMatrix3d out;
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) {
      double s = 0;
      for (int k = 0; k < 4; ++k) s += entry[r][k] * m.entry[k][c];
      out.entry[r][c] = s;
    }
  return out;
}

double AcGeMatrix3d::det() const {
  // Affine matrices: the determinant of the linear 3x3 part.
  const auto& e = entry;
  return e[0][0] * (e[1][1] * e[2][2] - e[1][2] * e[2][1]) -
         e[0][1] * (e[1][0] * e[2][2] - e[1][2] * e[2][0]) +
         e[0][2] * (e[1][0] * e[2][1] - e[1][1] * e[2][0]);
}

bool AcGeMatrix3d::isSingular() const { return std::fabs(det()) < 1e-300; }

AcGeMatrix3d AcGeMatrix3d::inverse() const {
  // General 4x4 inverse by Gauss-Jordan elimination with partial pivoting.
  double a[4][8];
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) {
      a[r][c] = entry[r][c];
      a[r][c + 4] = r == c ? 1.0 : 0.0;
    }
  for (int col = 0; col < 4; ++col) {
    int pivot = col;
    for (int r = col + 1; r < 4; ++r)
      if (std::fabs(a[r][col]) > std::fabs(a[pivot][col])) pivot = r;
    if (std::fabs(a[pivot][col]) < 1e-300) return AcGeMatrix3d();  // singular: identity
    if (pivot != col)
      for (int c = 0; c < 8; ++c) std::swap(a[col][c], a[pivot][c]);
    const double inv = 1.0 / a[col][col];
    for (int c = 0; c < 8; ++c) a[col][c] *= inv;
    for (int r = 0; r < 4; ++r) {
      if (r == col || a[r][col] == 0.0) continue;
      const double f = a[r][col];
      for (int c = 0; c < 8; ++c) a[r][c] -= f * a[col][c];
    }
  }
  AcGeMatrix3d out;
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) out.entry[r][c] = a[r][c + 4];
  return out;
}

bool AcGeMatrix3d::isEqualTo(const AcGeMatrix3d& m, double tol) const {
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c)
      if (std::fabs(entry[r][c] - m.entry[r][c]) > tol) return false;
  return true;
}

bool AcGeMatrix3d::isUniScaledOrtho(double tol) const {
  AcGeVector3d cols[3];
  for (int c = 0; c < 3; ++c) cols[c] = {entry[0][c], entry[1][c], entry[2][c]};
  const double s = cols[0].length();
  if (s == 0) return false;
  for (int c = 0; c < 3; ++c) {
    if (std::fabs(cols[c].length() - s) > tol * s) return false;
    for (int d = c + 1; d < 3; ++d)
      if (std::fabs(cols[c].dotProduct(cols[d])) > tol * s * s) return false;
  }
  return true;
}

double AcGeMatrix3d::scale() const {
  return AcGeVector3d(entry[0][0], entry[1][0], entry[2][0]).length();
}

AcGePoint3d& AcGePoint3d::transformBy(const AcGeMatrix3d& m) {
  const auto& e = m.entry;
  const double nx = e[0][0] * x + e[0][1] * y + e[0][2] * z + e[0][3];
  const double ny = e[1][0] * x + e[1][1] * y + e[1][2] * z + e[1][3];
  const double nz = e[2][0] * x + e[2][1] * y + e[2][2] * z + e[2][3];
  x = nx;
  y = ny;
  z = nz;
  return *this;
}

AcGeVector3d& AcGeVector3d::transformBy(const AcGeMatrix3d& m) {
  const auto& e = m.entry;
  const double nx = e[0][0] * x + e[0][1] * y + e[0][2] * z;
  const double ny = e[1][0] * x + e[1][1] * y + e[1][2] * z;
  const double nz = e[2][0] * x + e[2][1] * y + e[2][2] * z;
  x = nx;
  y = ny;
  z = nz;
  return *this;
}
