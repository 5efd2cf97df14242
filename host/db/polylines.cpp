#include "host/db/polylines.h"

#include <cmath>
#include <numbers>

#include "host/db/setter.h"
#include "host/ge/circ_arc3d.h"
#include "host/ge/line_seg3d.h"

ACRX_DEFINE_MEMBERS(AcDbPolyline, AcDbCurve)
ACRX_DEFINE_MEMBERS(AcDb2dPolyline, AcDbCurve)
ACRX_DEFINE_MEMBERS(AcDb3dPolyline, AcDbCurve)

namespace host {

bool arcFromBulge(const AcGePoint2d& a, const AcGePoint2d& b, double bulge, AcGePoint2d& center, double& radius,
                  double& startAngle, double& endAngle) {
  const AcGeVector2d chord = b - a;
  const double d = chord.length();
  if (bulge == 0 || d == 0) return false;
  // The centre lies on the chord's perpendicular bisector, to the left of
  // a→b for a positive bulge (counter-clockwise arc).
  const double offset = d * (1 - bulge * bulge) / (4 * bulge);
  const AcGeVector2d left(-chord.y / d, chord.x / d);
  center = AcGePoint2d((a.x + b.x) / 2, (a.y + b.y) / 2) + left * offset;
  radius = d * (1 + bulge * bulge) / (4 * std::fabs(bulge));
  const double angA = (a - center).angle(), angB = (b - center).angle();
  startAngle = bulge > 0 ? angA : angB;
  endAngle = bulge > 0 ? angB : angA;
  return true;
}

}  // namespace host

namespace {
constexpr double kTwoPi = 2 * std::numbers::pi;

bool isMinusZ(const AcGeVector3d& n) { return n.z < 0 && std::fabs(n.x) < 1e-12 && std::fabs(n.y) < 1e-12; }

AcGePoint3d toWorld(const AcGeMatrix3d& ocs, const AcGePoint2d& p, double elevation) {
  AcGePoint3d w(p.x, p.y, elevation);
  return w.transformBy(ocs);
}

// Lines and arcs of a planar vertex chain, appended with the owner's properties.
void explodeChain(const AcDbEntity& owner, const AcGeVector3d& normal, double elevation,
                  const std::vector<AcDbPolyline::Vertex>& verts, bool closed, AcDbEntityArray& out) {
  const AcGeMatrix3d ocs = AcGeMatrix3d::planeToWorld(normal);
  const std::size_t n = verts.size();
  const std::size_t segments = closed ? n : (n > 0 ? n - 1 : 0);
  for (std::size_t i = 0; i < segments; ++i) {
    const auto& v0 = verts[i];
    const auto& v1 = verts[(i + 1) % n];
    if (v0.point.isEqualTo(v1.point)) continue;  // zero-length segment
    AcDbEntity* piece = nullptr;
    AcGePoint2d c;
    double r, s, e;
    if (v0.bulge != 0 && host::arcFromBulge(v0.point, v1.point, v0.bulge, c, r, s, e)) {
      piece = new AcDbArc(toWorld(ocs, c, elevation), normal, r, s, e);
    } else {
      piece = new AcDbLine(toWorld(ocs, v0.point, elevation), toWorld(ocs, v1.point, elevation));
    }
    piece->setPropertiesFrom(&owner);
    out.append(piece);
  }
}

void chainExtents(const AcGeVector3d& normal, double elevation, const std::vector<AcDbPolyline::Vertex>& verts,
                  bool closed, AcDbExtents& ext) {
  const AcGeMatrix3d ocs = AcGeMatrix3d::planeToWorld(normal);
  const AcGeVector3d ref(ocs.entry[0][0], ocs.entry[1][0], ocs.entry[2][0]);
  const std::size_t n = verts.size();
  for (const auto& v : verts) ext.addPoint(toWorld(ocs, v.point, elevation));
  const std::size_t segments = closed ? n : (n > 0 ? n - 1 : 0);
  for (std::size_t i = 0; i < segments; ++i) {
    AcGePoint2d c;
    double r, s, e;
    const auto& v0 = verts[i];
    if (v0.bulge == 0 || !host::arcFromBulge(v0.point, verts[(i + 1) % n].point, v0.bulge, c, r, s, e)) continue;
    if (e <= s) e += kTwoPi;
    host::addConicArcExtents(toWorld(ocs, c, elevation), ref * r, normal.crossProduct(ref) * r, s, e, ext);
  }
}

// New plane and orientation of a planar chain under xform; false when the
// chain's arcs cannot follow (a non-uniform scale).
struct PlaneImage {
  AcGeVector3d normal;
  bool mirrored = false;  // arcs turn the other way about the new normal
};
PlaneImage planeImage(const AcGeVector3d& normal, const AcGeMatrix3d& xform) {
  const AcGeMatrix3d ocs = AcGeMatrix3d::planeToWorld(normal);
  AcGeVector3d x(ocs.entry[0][0], ocs.entry[1][0], ocs.entry[2][0]);
  AcGeVector3d y(ocs.entry[0][1], ocs.entry[1][1], ocs.entry[2][1]);
  x.transformBy(xform);
  y.transformBy(xform);
  PlaneImage img{x.crossProduct(y).normal(), false};
  if (isMinusZ(img.normal)) {
    img.normal = AcGeVector3d::kZAxis;
    img.mirrored = true;
  }
  return img;
}
}  // namespace

// --- AcDbPolyline ----------------------------------------------------------

Acad::ErrorStatus AcDbPolyline::addVertexAt(unsigned int index, const AcGePoint2d& pt, double bulge,
                                            double startWidth, double endWidth) {
  if (!std::isfinite(pt.x) || !std::isfinite(pt.y) || !std::isfinite(bulge)) return Acad::eInvalidInput;
  if (index > m_verts.size()) return Acad::eInvalidIndex;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  // A negative width means "the polyline's own": zero for a new vertex.
  m_verts.insert(m_verts.begin() + index, Vertex{pt, bulge, startWidth < 0 ? 0 : startWidth,
                                                 endWidth < 0 ? 0 : endWidth});
  return Acad::eOk;
}

Acad::ErrorStatus AcDbPolyline::removeVertexAt(unsigned int index) {
  if (index >= m_verts.size()) return Acad::eInvalidIndex;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_verts.erase(m_verts.begin() + index);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbPolyline::getPointAt(unsigned int index, AcGePoint3d& pt) const {
  if (index >= m_verts.size()) return Acad::eInvalidIndex;
  pt = toWorld(AcGeMatrix3d::planeToWorld(m_normal), m_verts[index].point, m_elevation);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbPolyline::getPointAt(unsigned int index, AcGePoint2d& pt) const {
  if (index >= m_verts.size()) return Acad::eInvalidIndex;
  pt = m_verts[index].point;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbPolyline::setPointAt(unsigned int index, const AcGePoint2d& pt) {
  if (index >= m_verts.size()) return Acad::eInvalidIndex;
  if (!std::isfinite(pt.x) || !std::isfinite(pt.y)) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_verts[index].point = pt;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbPolyline::getBulgeAt(unsigned int index, double& bulge) const {
  if (index >= m_verts.size()) return Acad::eInvalidIndex;
  bulge = m_verts[index].bulge;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbPolyline::setBulgeAt(unsigned int index, double bulge) {
  if (index >= m_verts.size()) return Acad::eInvalidIndex;
  if (!std::isfinite(bulge)) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_verts[index].bulge = bulge;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbPolyline::getWidthsAt(unsigned int index, double& startWidth, double& endWidth) const {
  if (index >= m_verts.size()) return Acad::eInvalidIndex;
  startWidth = m_verts[index].startWidth;
  endWidth = m_verts[index].endWidth;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbPolyline::setWidthsAt(unsigned int index, double startWidth, double endWidth) {
  if (index >= m_verts.size()) return Acad::eInvalidIndex;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_verts[index].startWidth = startWidth;
  m_verts[index].endWidth = endWidth;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbPolyline::setClosed(bool closed) {
  HOST_SET(m_closed, closed);
}
Acad::ErrorStatus AcDbPolyline::setElevation(double e) {
  if (!std::isfinite(e)) return Acad::eInvalidInput;
  HOST_SET(m_elevation, e);
}
Acad::ErrorStatus AcDbPolyline::setNormal(const AcGeVector3d& n) {
  if (!isFinite(n) || n.isZeroLength()) return Acad::eInvalidInput;
  HOST_SET(m_normal, n.normal());
}
Acad::ErrorStatus AcDbPolyline::setThickness(double t) {
  HOST_SET(m_thickness, t);
}
Acad::ErrorStatus AcDbPolyline::setConstantWidth(double w) {
  HOST_SET(m_constantWidth, w);
}
Acad::ErrorStatus AcDbPolyline::setPlinegen(bool on) {
  HOST_SET(m_plinegen, on);
}

bool AcDbPolyline::hasBulges() const {
  for (const auto& v : m_verts)
    if (v.bulge != 0) return true;
  return false;
}

std::unique_ptr<AcGeCurve3d> AcDbPolyline::geCurve() const { return nullptr; }

Acad::ErrorStatus AcDbPolyline::getGeomExtents(AcDbExtents& extents) const {
  if (m_verts.empty()) return Acad::eInvalidExtents;
  extents = AcDbExtents();
  chainExtents(m_normal, m_elevation, m_verts, m_closed, extents);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbPolyline::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  const bool uniform = xform.isUniScaledOrtho();
  if (!uniform && hasBulges()) return Acad::eCannotScaleNonUniformly;
  const PlaneImage img = planeImage(m_normal, xform);
  if (img.normal.isZeroLength()) return Acad::eDegenerateGeometry;
  const AcGeMatrix3d ocs = AcGeMatrix3d::planeToWorld(m_normal);
  const AcGeMatrix3d toPlane = AcGeMatrix3d::worldToPlane(img.normal);
  const double scale = uniform ? xform.scale() : 1.0;
  double elevation = m_elevation;
  for (std::size_t i = 0; i < m_verts.size(); ++i) {
    AcGePoint3d w = toWorld(ocs, m_verts[i].point, m_elevation);
    w.transformBy(xform).transformBy(toPlane);
    m_verts[i].point = AcGePoint2d(w.x, w.y);
    elevation = w.z;
    if (img.mirrored) m_verts[i].bulge = -m_verts[i].bulge;
    m_verts[i].startWidth *= scale;
    m_verts[i].endWidth *= scale;
  }
  if (m_verts.empty()) {
    AcGePoint3d w(0, 0, m_elevation);
    w.transformBy(ocs).transformBy(xform).transformBy(toPlane);
    elevation = w.z;
  }
  if (m_constantWidth > 0) m_constantWidth *= scale;
  m_thickness *= scale;
  m_elevation = elevation;
  m_normal = img.normal;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbPolyline::explode(AcDbEntityArray& entities) const {
  explodeChain(*this, m_normal, m_elevation, m_verts, m_closed, entities);
  return Acad::eOk;
}

// --- AcDb2dPolyline --------------------------------------------------------

Acad::ErrorStatus AcDb2dPolyline::appendVertex(const AcDbPolylineVertex& v) {
  if (!isFinite(v.position) || !std::isfinite(v.bulge)) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_verts.push_back(v);
  return Acad::eOk;
}
Acad::ErrorStatus AcDb2dPolyline::setPolyType(AcDb::Poly2dType t) {
  HOST_SET(m_type, t);
}
Acad::ErrorStatus AcDb2dPolyline::setClosed(bool closed) {
  HOST_SET(m_closed, closed);
}
Acad::ErrorStatus AcDb2dPolyline::setElevation(double e) {
  HOST_SET(m_elevation, e);
}
Acad::ErrorStatus AcDb2dPolyline::setNormal(const AcGeVector3d& n) {
  if (!isFinite(n) || n.isZeroLength()) return Acad::eInvalidInput;
  HOST_SET(m_normal, n.normal());
}
Acad::ErrorStatus AcDb2dPolyline::setDefaultWidths(double start, double end) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_startWidth = start;
  m_endWidth = end;
  return Acad::eOk;
}
Acad::ErrorStatus AcDb2dPolyline::setThickness(double t) {
  HOST_SET(m_thickness, t);
}

AcDbPolyline AcDb2dPolyline::toLightweight() const {
  AcDbPolyline p;
  p.setNormal(m_normal);
  p.setElevation(m_elevation);
  p.setClosed(m_closed);
  unsigned int i = 0;
  for (const auto& v : m_verts) {
    if (v.isFrameControlPoint()) continue;  // spline frame, not drawn
    p.addVertexAt(i++, v.position.convert2d(), v.bulge, v.startWidth, v.endWidth);
  }
  p.setPropertiesFrom(this);
  return p;
}

std::unique_ptr<AcGeCurve3d> AcDb2dPolyline::geCurve() const { return nullptr; }

Acad::ErrorStatus AcDb2dPolyline::getGeomExtents(AcDbExtents& extents) const {
  return toLightweight().getGeomExtents(extents);
}

Acad::ErrorStatus AcDb2dPolyline::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  // Transform through the lightweight form, keeping every vertex (frame
  // points included) and its flags.
  AcDbPolyline all;
  all.setNormal(m_normal);
  all.setElevation(m_elevation);
  unsigned int i = 0;
  for (const auto& v : m_verts) all.addVertexAt(i++, v.position.convert2d(), v.bulge, v.startWidth, v.endWidth);
  if (const auto es = all.transformBy(xform); es != Acad::eOk) return es;
  for (std::size_t k = 0; k < m_verts.size(); ++k) {
    const auto& nv = all.vertices()[k];
    m_verts[k].position = AcGePoint3d(nv.point.x, nv.point.y, 0);
    m_verts[k].bulge = nv.bulge;
    m_verts[k].startWidth = nv.startWidth;
    m_verts[k].endWidth = nv.endWidth;
  }
  m_normal = all.normal();
  m_elevation = all.elevation();
  return Acad::eOk;
}

Acad::ErrorStatus AcDb2dPolyline::explode(AcDbEntityArray& entities) const {
  const AcDbPolyline lw = toLightweight();
  explodeChain(*this, m_normal, m_elevation, lw.vertices(), m_closed, entities);
  return Acad::eOk;
}

// --- AcDb3dPolyline --------------------------------------------------------

Acad::ErrorStatus AcDb3dPolyline::appendVertex(const AcGePoint3d& p) {
  if (!isFinite(p)) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  AcDbPolylineVertex v;
  v.position = p;
  v.flags = 32;
  m_verts.push_back(v);
  return Acad::eOk;
}
Acad::ErrorStatus AcDb3dPolyline::setPolyType(AcDb::Poly3dType t) {
  HOST_SET(m_type, t);
}
Acad::ErrorStatus AcDb3dPolyline::setClosed(bool closed) {
  HOST_SET(m_closed, closed);
}

std::unique_ptr<AcGeCurve3d> AcDb3dPolyline::geCurve() const { return nullptr; }

Acad::ErrorStatus AcDb3dPolyline::getGeomExtents(AcDbExtents& extents) const {
  extents = AcDbExtents();
  for (const auto& v : m_verts)
    if (!v.isFrameControlPoint()) extents.addPoint(v.position);
  return extents.isValid() ? Acad::eOk : Acad::eInvalidExtents;
}

Acad::ErrorStatus AcDb3dPolyline::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  for (auto& v : m_verts) v.position.transformBy(xform);
  return Acad::eOk;
}

Acad::ErrorStatus AcDb3dPolyline::explode(AcDbEntityArray& entities) const {
  std::vector<AcGePoint3d> pts;
  for (const auto& v : m_verts)
    if (!v.isFrameControlPoint()) pts.push_back(v.position);
  const std::size_t n = pts.size();
  const std::size_t segments = m_closed ? n : (n > 0 ? n - 1 : 0);
  for (std::size_t i = 0; i < segments; ++i) {
    const AcGePoint3d& a = pts[i];
    const AcGePoint3d& b = pts[(i + 1) % n];
    if (a.isEqualTo(b)) continue;
    auto* line = new AcDbLine(a, b);
    line->setPropertiesFrom(this);
    entities.append(line);
  }
  return Acad::eOk;
}
