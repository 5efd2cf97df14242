#include "host/db/curves.h"

#include <cmath>
#include <numbers>
#include <vector>

#include "host/db/setter.h"
#include "host/ge/circ_arc3d.h"
#include "host/ge/ellip_arc3d.h"
#include "host/ge/line_seg3d.h"
#include "host/ge/nurb_curve3d.h"

ACRX_DEFINE_MEMBERS(AcDbCurve, AcDbEntity)
ACRX_DEFINE_MEMBERS(AcDbLine, AcDbCurve)
ACRX_DEFINE_MEMBERS(AcDbArc, AcDbCurve)
ACRX_DEFINE_MEMBERS(AcDbCircle, AcDbCurve)
ACRX_DEFINE_MEMBERS(AcDbEllipse, AcDbCurve)
ACRX_DEFINE_MEMBERS(AcDbSpline, AcDbCurve)

namespace {
constexpr double kTwoPi = 2 * std::numbers::pi;

double normalizeAngle(double a) {
  a = std::fmod(a, kTwoPi);
  if (a < 0) a += kTwoPi;
  if (a >= kTwoPi) a = 0;
  return a;
}

// A normal within rounding of -Z: the entity is shown as its mirror image
// with a +Z normal, which draws the same.
bool isMinusZ(const AcGeVector3d& n) { return n.z < 0 && std::fabs(n.x) < 1e-12 && std::fabs(n.y) < 1e-12; }

// Angle of point about center, in the plane of normal, from its object x axis.
double angleInPlane(const AcGeVector3d& normal, const AcGePoint3d& center, const AcGePoint3d& point) {
  AcGeVector3d v = point - center;
  v.transformBy(AcGeMatrix3d::worldToPlane(normal));
  return AcGeVector2d(v.x, v.y).angle();
}

// The image of the plane's orientation under xform: (M·x) × (M·y).
AcGeVector3d transformedNormal(const AcGeVector3d& normal, const AcGeMatrix3d& xform) {
  const AcGeMatrix3d ocs = AcGeMatrix3d::planeToWorld(normal);
  AcGeVector3d x(ocs.entry[0][0], ocs.entry[1][0], ocs.entry[2][0]);
  AcGeVector3d y(ocs.entry[0][1], ocs.entry[1][1], ocs.entry[2][1]);
  x.transformBy(xform);
  y.transformBy(xform);
  return x.crossProduct(y).normal();
}

bool isFiniteValue(double v) { return std::isfinite(v); }

// The image of a circular arc (angles t0..t1 in the plane of normal) under
// an affine map: an elliptical arc with the source's properties.
Acad::ErrorStatus ellipticalImage(const AcDbEntity& source, const AcGePoint3d& center, const AcGeVector3d& normal,
                                  double radius, double t0, double t1, const AcGeMatrix3d& xform,
                                  AcDbEntity*& copy) {
  const AcGeMatrix3d ocs = AcGeMatrix3d::planeToWorld(normal);
  const AcGeVector3d x(ocs.entry[0][0], ocs.entry[1][0], ocs.entry[2][0]);
  AcGeVector3d p = x * radius, q = normal.crossProduct(x) * radius;
  p.transformBy(xform);
  q.transformBy(xform);
  AcGePoint3d c = center;
  c.transformBy(xform);
  AcDbEllipse* ellipse = AcDbEllipse::fromConjugate(c, p, q, t0, t1);
  if (!ellipse) return Acad::eDegenerateGeometry;
  ellipse->setPropertiesFrom(&source);
  copy = ellipse;
  return Acad::eOk;
}
}  // namespace

namespace host {

void addCurveExtents(const AcGeCurve3d& curve, AcDbExtents& extents, int steps) {
  AcGeInterval iv;
  curve.getInterval(iv);
  const double a = iv.lowerBound(), b = iv.upperBound();
  extents.addPoint(curve.evalPoint(a));
  extents.addPoint(curve.evalPoint(b));
  if (!(b > a)) return;
  // Extremes of each coordinate lie where its derivative changes sign;
  // find every sign change on a fine grid and refine it by bisection. The
  // derivative at each grid point serves all three coordinates.
  const int kSteps = std::max(steps, 8);
  std::vector<double> grid(static_cast<std::size_t>(kSteps) + 1);
  std::vector<AcGeVector3d> derivs(grid.size());
  for (int i = 0; i <= kSteps; ++i) {
    grid[i] = i == 0 ? a : i == kSteps ? b : a + (b - a) * i / kSteps;
    derivs[i] = curve.evalDeriv(grid[i]);
  }
  auto component = [](const AcGeVector3d& d, int k) { return k == 0 ? d.x : k == 1 ? d.y : d.z; };
  for (int k = 0; k < 3; ++k) {
    double t0 = a, f0 = component(derivs[0], k);
    for (int i = 1; i <= kSteps; ++i) {
      const double t1 = grid[i];
      const double f1 = component(derivs[i], k);
      if ((f0 < 0 && f1 > 0) || (f0 > 0 && f1 < 0)) {
        double lo = t0, hi = t1, flo = f0;
        for (int it = 0; it < 80 && hi - lo > 1e-16 * std::max(1.0, std::fabs(lo)); ++it) {
          const double mid = (lo + hi) / 2, fm = component(curve.evalDeriv(mid), k);
          if ((fm < 0) == (flo < 0)) {
            lo = mid;
            flo = fm;
          } else {
            hi = mid;
          }
        }
        extents.addPoint(curve.evalPoint((lo + hi) / 2));
      } else if (f1 == 0) {
        extents.addPoint(curve.evalPoint(t1));
      }
      t0 = t1;
      f0 = f1;
    }
  }
}

void addConicArcExtents(const AcGePoint3d& c, const AcGeVector3d& p, const AcGeVector3d& q, double t0, double t1,
                        AcDbExtents& extents) {
  const auto at = [&](double t) { return c + p * std::cos(t) + q * std::sin(t); };
  const AcGePoint3d a = at(t0), b = at(t1);
  double lo[3] = {std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)};
  double hi[3] = {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)};
  const double sweep = t1 - t0;
  if (sweep > 0) {
    const double pk[3] = {p.x, p.y, p.z}, qk[3] = {q.x, q.y, q.z}, ck[3] = {c.x, c.y, c.z};
    const bool full = sweep >= kTwoPi;
    // Within the sweep when reached from t0 by less than the sweep.
    const auto inSweep = [&](double t) {
      double d = std::fmod(t - t0, kTwoPi);
      if (d < 0) d += kTwoPi;
      return d <= sweep;
    };
    for (int k = 0; k < 3; ++k) {
      // Coordinate k is ck + amp cos(t - phi): largest at phi, smallest at phi + pi.
      const double amp = std::hypot(pk[k], qk[k]);
      if (amp == 0) continue;
      const double phi = std::atan2(qk[k], pk[k]);
      if (full || inSweep(phi)) hi[k] = std::max(hi[k], ck[k] + amp);
      if (full || inSweep(phi + std::numbers::pi)) lo[k] = std::min(lo[k], ck[k] - amp);
    }
  }
  extents.addPoint(AcGePoint3d(lo[0], lo[1], lo[2]));
  extents.addPoint(AcGePoint3d(hi[0], hi[1], hi[2]));
}

}  // namespace host

// --- AcDbCurve -------------------------------------------------------------

Acad::ErrorStatus AcDbCurve::getAcGeCurve(AcGeCurve3d*& curve) const {
  curve = geCurve().release();
  return curve ? Acad::eOk : Acad::eNotApplicable;
}

Acad::ErrorStatus AcDbCurve::getStartParam(double& param) const {
  const auto c = geCurve();
  if (!c) return Acad::eNotApplicable;
  AcGeInterval iv;
  c->getInterval(iv);
  param = iv.lowerBound();
  return Acad::eOk;
}

Acad::ErrorStatus AcDbCurve::getEndParam(double& param) const {
  const auto c = geCurve();
  if (!c) return Acad::eNotApplicable;
  AcGeInterval iv;
  c->getInterval(iv);
  param = iv.upperBound();
  return Acad::eOk;
}

Acad::ErrorStatus AcDbCurve::getStartPoint(AcGePoint3d& point) const {
  const auto c = geCurve();
  if (!c) return Acad::eNotApplicable;
  point = c->startPoint();
  return Acad::eOk;
}

Acad::ErrorStatus AcDbCurve::getEndPoint(AcGePoint3d& point) const {
  const auto c = geCurve();
  if (!c) return Acad::eNotApplicable;
  point = c->endPoint();
  return Acad::eOk;
}

Acad::ErrorStatus AcDbCurve::getPointAtParam(double param, AcGePoint3d& point) const {
  const auto c = geCurve();
  if (!c) return Acad::eNotApplicable;
  point = c->evalPoint(param);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbCurve::getDistAtParam(double param, double& dist) const {
  const auto c = geCurve();
  if (!c) return Acad::eNotApplicable;
  AcGeInterval iv;
  c->getInterval(iv);
  if (param < iv.lowerBound() - 1e-12 || param > iv.upperBound() + 1e-12) return Acad::eInvalidInput;
  dist = c->length(iv.lowerBound(), param);
  return Acad::eOk;
}

// --- AcDbLine --------------------------------------------------------------

Acad::ErrorStatus AcDbLine::setStartPoint(const AcGePoint3d& p) {
  if (!isFinite(p)) return Acad::eInvalidInput;
  HOST_SET(m_start, p);
}

Acad::ErrorStatus AcDbLine::setEndPoint(const AcGePoint3d& p) {
  if (!isFinite(p)) return Acad::eInvalidInput;
  HOST_SET(m_end, p);
}

Acad::ErrorStatus AcDbLine::setThickness(double t) {
  if (!isFiniteValue(t)) return Acad::eInvalidInput;
  HOST_SET(m_thickness, t);
}

Acad::ErrorStatus AcDbLine::setNormal(const AcGeVector3d& n) {
  if (!isFinite(n) || n.isZeroLength()) return Acad::eInvalidInput;
  HOST_SET(m_normal, n.normal());
}

std::unique_ptr<AcGeCurve3d> AcDbLine::geCurve() const { return std::make_unique<AcGeLineSeg3d>(m_start, m_end); }

Acad::ErrorStatus AcDbLine::getGeomExtents(AcDbExtents& extents) const {
  extents = AcDbExtents();
  extents.addPoint(m_start);
  extents.addPoint(m_end);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbLine::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_start.transformBy(xform);
  m_end.transformBy(xform);
  AcGeVector3d n = m_normal;
  n.transformBy(xform);
  if (!n.isZeroLength()) m_normal = n.normal();
  return Acad::eOk;
}

// --- AcDbArc ---------------------------------------------------------------

AcDbArc::AcDbArc(const AcGePoint3d& center, double radius, double startAngle, double endAngle)
    : AcDbArc(center, AcGeVector3d::kZAxis, radius, startAngle, endAngle) {}

AcDbArc::AcDbArc(const AcGePoint3d& center, const AcGeVector3d& normal, double radius, double startAngle,
                 double endAngle)
    : m_center(center),
      m_normal(normal.normal()),
      m_radius(radius),
      m_startAngle(normalizeAngle(startAngle)),
      m_endAngle(normalizeAngle(endAngle)) {}

Acad::ErrorStatus AcDbArc::setCenter(const AcGePoint3d& c) {
  if (!isFinite(c)) return Acad::eInvalidInput;
  HOST_SET(m_center, c);
}
Acad::ErrorStatus AcDbArc::setRadius(double r) {
  if (!isFiniteValue(r) || r < 0) return Acad::eInvalidInput;
  HOST_SET(m_radius, r);
}
Acad::ErrorStatus AcDbArc::setStartAngle(double a) {
  if (!isFiniteValue(a)) return Acad::eInvalidInput;
  HOST_SET(m_startAngle, normalizeAngle(a));
}
Acad::ErrorStatus AcDbArc::setEndAngle(double a) {
  if (!isFiniteValue(a)) return Acad::eInvalidInput;
  HOST_SET(m_endAngle, normalizeAngle(a));
}
Acad::ErrorStatus AcDbArc::setNormal(const AcGeVector3d& n) {
  if (!isFinite(n) || n.isZeroLength()) return Acad::eInvalidInput;
  HOST_SET(m_normal, n.normal());
}
Acad::ErrorStatus AcDbArc::setThickness(double t) {
  if (!isFiniteValue(t)) return Acad::eInvalidInput;
  HOST_SET(m_thickness, t);
}

double AcDbArc::sweep() const {
  double s = m_endAngle - m_startAngle;
  if (s <= 0) s += kTwoPi;
  return s;
}

std::unique_ptr<AcGeCurve3d> AcDbArc::geCurve() const {
  const AcGeMatrix3d ocs = AcGeMatrix3d::planeToWorld(m_normal);
  const AcGeVector3d ref(ocs.entry[0][0], ocs.entry[1][0], ocs.entry[2][0]);
  return std::make_unique<AcGeCircArc3d>(m_center, m_normal, ref, m_radius, m_startAngle,
                                         m_startAngle + sweep());
}

Acad::ErrorStatus AcDbArc::getGeomExtents(AcDbExtents& extents) const {
  extents = AcDbExtents();
  const AcGeMatrix3d ocs = AcGeMatrix3d::planeToWorld(m_normal);
  const AcGeVector3d x(ocs.entry[0][0], ocs.entry[1][0], ocs.entry[2][0]);
  host::addConicArcExtents(m_center, x * m_radius, m_normal.crossProduct(x) * m_radius, m_startAngle,
                           m_startAngle + sweep(), extents);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbArc::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  if (!xform.isUniScaledOrtho()) return Acad::eCannotScaleNonUniformly;
  const auto curve = geCurve();
  AcGePoint3d s = curve->startPoint(), e = curve->endPoint(), c = m_center;
  s.transformBy(xform);
  e.transformBy(xform);
  c.transformBy(xform);
  AcGeVector3d n = transformedNormal(m_normal, xform);
  if (isMinusZ(n)) {
    // Mirrored in its plane: the same arc runs counter-clockwise about +Z
    // from the image of its end to the image of its start.
    n = AcGeVector3d::kZAxis;
    std::swap(s, e);
  }
  const bool full = sweep() >= kTwoPi;
  m_center = c;
  m_normal = n;
  m_radius *= xform.scale();
  m_startAngle = angleInPlane(n, c, s);
  m_endAngle = full ? m_startAngle : angleInPlane(n, c, e);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbArc::getTransformedCopy(const AcGeMatrix3d& xform, AcDbEntity*& copy) const {
  if (xform.isUniScaledOrtho()) return AcDbEntity::getTransformedCopy(xform, copy);
  // Under a non-uniform scale the arc becomes an elliptical arc.
  return ellipticalImage(*this, m_center, m_normal, m_radius, m_startAngle, m_startAngle + sweep(), xform, copy);
}

// --- AcDbCircle ------------------------------------------------------------

Acad::ErrorStatus AcDbCircle::setCenter(const AcGePoint3d& c) {
  if (!isFinite(c)) return Acad::eInvalidInput;
  HOST_SET(m_center, c);
}
Acad::ErrorStatus AcDbCircle::setRadius(double r) {
  if (!isFiniteValue(r) || r < 0) return Acad::eInvalidInput;
  HOST_SET(m_radius, r);
}
Acad::ErrorStatus AcDbCircle::setNormal(const AcGeVector3d& n) {
  if (!isFinite(n) || n.isZeroLength()) return Acad::eInvalidInput;
  HOST_SET(m_normal, n.normal());
}
Acad::ErrorStatus AcDbCircle::setThickness(double t) {
  if (!isFiniteValue(t)) return Acad::eInvalidInput;
  HOST_SET(m_thickness, t);
}

std::unique_ptr<AcGeCurve3d> AcDbCircle::geCurve() const {
  const AcGeMatrix3d ocs = AcGeMatrix3d::planeToWorld(m_normal);
  const AcGeVector3d ref(ocs.entry[0][0], ocs.entry[1][0], ocs.entry[2][0]);
  return std::make_unique<AcGeCircArc3d>(m_center, m_normal, ref, m_radius, 0, kTwoPi);
}

Acad::ErrorStatus AcDbCircle::getGeomExtents(AcDbExtents& extents) const {
  extents = AcDbExtents();
  // Along each axis the circle reaches r·sqrt(1 - n_k²) from its centre.
  const AcGeVector3d half(m_radius * std::sqrt(std::max(0.0, 1 - m_normal.x * m_normal.x)),
                          m_radius * std::sqrt(std::max(0.0, 1 - m_normal.y * m_normal.y)),
                          m_radius * std::sqrt(std::max(0.0, 1 - m_normal.z * m_normal.z)));
  extents.addPoint(m_center - half);
  extents.addPoint(m_center + half);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbCircle::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  if (!xform.isUniScaledOrtho()) return Acad::eCannotScaleNonUniformly;
  m_center.transformBy(xform);
  AcGeVector3d n = transformedNormal(m_normal, xform);
  if (isMinusZ(n)) n = AcGeVector3d::kZAxis;
  m_normal = n;
  m_radius *= xform.scale();
  return Acad::eOk;
}

Acad::ErrorStatus AcDbCircle::getTransformedCopy(const AcGeMatrix3d& xform, AcDbEntity*& copy) const {
  if (xform.isUniScaledOrtho()) return AcDbEntity::getTransformedCopy(xform, copy);
  return ellipticalImage(*this, m_center, m_normal, m_radius, 0, kTwoPi, xform, copy);
}

// --- AcDbEllipse -----------------------------------------------------------

AcDbEllipse::AcDbEllipse(const AcGePoint3d& center, const AcGeVector3d& normal, const AcGeVector3d& majorAxis,
                         double radiusRatio, double startParam, double endParam)
    : m_center(center),
      m_normal(normal.normal()),
      m_major(majorAxis),
      m_ratio(radiusRatio),
      m_startParam(startParam),
      m_endParam(endParam) {}

AcGeVector3d AcDbEllipse::minorAxis() const { return m_normal.crossProduct(m_major) * m_ratio; }

Acad::ErrorStatus AcDbEllipse::set(const AcGePoint3d& center, const AcGeVector3d& normal,
                                   const AcGeVector3d& majorAxis, double radiusRatio, double startParam,
                                   double endParam) {
  if (!isFinite(center) || !isFinite(normal) || !isFinite(majorAxis) || !isFiniteValue(radiusRatio) ||
      !isFiniteValue(startParam) || !isFiniteValue(endParam) || normal.isZeroLength())
    return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_center = center;
  m_normal = normal.normal();
  m_major = majorAxis;
  m_ratio = radiusRatio;
  m_startParam = startParam;
  m_endParam = endParam;
  return Acad::eOk;
}

bool AcDbEllipse::isClosed() const {
  double sweep = m_endParam - m_startParam;
  if (sweep <= 0) sweep += kTwoPi;
  return sweep >= kTwoPi - 1e-12;
}

std::unique_ptr<AcGeCurve3d> AcDbEllipse::geCurve() const {
  double start = m_startParam;
  const double end = host::sweepEnd(start, m_endParam, true);
  const double a = m_major.length();
  return std::make_unique<AcGeEllipArc3d>(m_center, m_major, m_normal.crossProduct(m_major), a, a * m_ratio,
                                          start, end);
}

Acad::ErrorStatus AcDbEllipse::getGeomExtents(AcDbExtents& extents) const {
  extents = AcDbExtents();
  double start = m_startParam;
  const double end = host::sweepEnd(start, m_endParam, true);
  host::addConicArcExtents(m_center, m_major, minorAxis(), start, end, extents);
  return Acad::eOk;
}

AcDbEllipse* AcDbEllipse::fromConjugate(const AcGePoint3d& c, const AcGeVector3d& p, const AcGeVector3d& q,
                                        double t0, double t1) {
  // Principal axes: the parameter where |p cos t + q sin t| is largest.
  const double shift = 0.5 * std::atan2(2 * p.dotProduct(q), p.dotProduct(p) - q.dotProduct(q));
  AcGeVector3d a = p * std::cos(shift) + q * std::sin(shift);
  AcGeVector3d b = q * std::cos(shift) - p * std::sin(shift);
  double offset = shift;
  if (b.length() > a.length()) {
    const AcGeVector3d t = a;
    a = b;
    b = -t;
    offset += std::numbers::pi / 2;
  }
  const double la = a.length();
  AcGeVector3d n = a.crossProduct(b);
  if (la == 0 || n.isZeroLength()) return nullptr;
  n = n.normal();
  double s0 = t0 - offset, s1 = t1 - offset;
  if (isMinusZ(n)) {
    n = AcGeVector3d::kZAxis;
    const double tmp = s0;
    s0 = -s1;
    s1 = -tmp;
  }
  const bool full = t1 - t0 >= kTwoPi - 1e-12;
  double start = full ? 0 : normalizeAngle(s0);
  double end = full ? kTwoPi : start + (s1 - s0);
  return new AcDbEllipse(c, n, a, b.length() / la, start, end);
}

Acad::ErrorStatus AcDbEllipse::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  AcGeVector3d p = m_major, q = minorAxis();
  p.transformBy(xform);
  q.transformBy(xform);
  AcGePoint3d c = m_center;
  c.transformBy(xform);
  double start = m_startParam;
  const double end = host::sweepEnd(start, m_endParam, true);
  std::unique_ptr<AcDbEllipse> image(fromConjugate(c, p, q, start, end));
  if (!image) return Acad::eDegenerateGeometry;
  m_center = image->m_center;
  m_normal = image->m_normal;
  m_major = image->m_major;
  m_ratio = image->m_ratio;
  m_startParam = image->m_startParam;
  m_endParam = image->m_endParam;
  return Acad::eOk;
}

// --- AcDbSpline ------------------------------------------------------------

AcDbSpline::AcDbSpline(int degree, bool rational, bool closed, bool periodic, const AcGePoint3dArray& controlPoints,
                       const AcGeDoubleArray& knots, const AcGeDoubleArray& weights)
    : m_degree(degree),
      m_rational(rational),
      m_closed(closed),
      m_periodic(periodic),
      m_ctrl(controlPoints),
      m_knots(knots),
      m_weights(weights) {}

AcDbSpline::AcDbSpline(const AcGePoint3dArray& fitPoints, const AcGeVector3d& startTangent,
                       const AcGeVector3d& endTangent)
    : m_fit(fitPoints), m_startTangent(startTangent), m_endTangent(endTangent) {
  const AcGeNurbCurve3d c = AcGeNurbCurve3d::interpolate(fitPoints, startTangent, endTangent);
  m_ctrl = c.controlPoints();
  m_knots = c.knots();
}

Acad::ErrorStatus AcDbSpline::setNurbsData(int degree, bool rational, bool closed, bool periodic,
                                           const AcGePoint3dArray& controlPoints, const AcGeDoubleArray& knots,
                                           const AcGeDoubleArray& weights) {
  for (const auto& p : controlPoints)
    if (!isFinite(p)) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_degree = degree;
  m_rational = rational;
  m_closed = closed;
  m_periodic = periodic;
  m_ctrl = controlPoints;
  m_knots = knots;
  m_weights = weights;
  m_extents.reset();
  return Acad::eOk;
}

Acad::ErrorStatus AcDbSpline::setFitData(const AcGePoint3dArray& fitPoints, const AcGeVector3d& startTangent,
                                         const AcGeVector3d& endTangent, double fitTolerance) {
  for (const auto& p : fitPoints)
    if (!isFinite(p)) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_fit = fitPoints;
  m_startTangent = startTangent;
  m_endTangent = endTangent;
  m_fitTol = fitTolerance;
  m_extents.reset();
  return Acad::eOk;
}

Acad::ErrorStatus AcDbSpline::setNormal(const AcGeVector3d& n) {
  HOST_SET(m_normal, n);
}

std::unique_ptr<AcGeCurve3d> AcDbSpline::geCurve() const {
  AcGeNurbCurve3d c(m_degree, m_knots, m_ctrl, m_weights, m_periodic);
  // Splines stored by fit points only are interpolated through them.
  if (!c.isValid() && m_fit.length() >= 2) c = AcGeNurbCurve3d::interpolate(m_fit, m_startTangent, m_endTangent);
  if (!c.isValid()) return nullptr;
  return std::make_unique<AcGeNurbCurve3d>(c);
}

Acad::ErrorStatus AcDbSpline::getGeomExtents(AcDbExtents& extents) const {
  if (!m_extents) {
    const auto c = geCurve();
    if (!c) return Acad::eInvalidExtents;
    AcDbExtents box;
    host::addCurveExtents(*c, box, 16 * (m_ctrl.length() + m_fit.length() + 4));
    m_extents = box;
  }
  extents = *m_extents;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbSpline::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  for (auto& p : m_ctrl) p.transformBy(xform);
  for (auto& p : m_fit) p.transformBy(xform);
  m_extents.reset();
  m_startTangent.transformBy(xform);
  m_endTangent.transformBy(xform);
  AcGeVector3d n = m_normal;
  n.transformBy(xform);
  if (!n.isZeroLength()) m_normal = n.normal();
  return Acad::eOk;
}
