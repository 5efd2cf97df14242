#include "host/db/other_entities.h"

#include <cmath>

#include "host/db/peek.h"
#include "host/db/polylines.h"
#include "host/db/setter.h"
#include "host/db/symbol_tables.h"

ACRX_DEFINE_MEMBERS(AcDbText, AcDbEntity)
ACRX_DEFINE_MEMBERS(AcDbAttribute, AcDbText)
ACRX_DEFINE_MEMBERS(AcDbAttributeDefinition, AcDbText)
ACRX_DEFINE_MEMBERS(AcDbMText, AcDbEntity)
ACRX_DEFINE_MEMBERS(AcDbDimension, AcDbEntity)
ACRX_DEFINE_MEMBERS(AcDbHatch, AcDbEntity)
ACRX_DEFINE_MEMBERS(AcDbPoint, AcDbEntity)
ACRX_DEFINE_MEMBERS(AcDbCornerEntity, AcDbEntity)
ACRX_DEFINE_MEMBERS(AcDbSolid, AcDbCornerEntity)
ACRX_DEFINE_MEMBERS(AcDbTrace, AcDbCornerEntity)
ACRX_DEFINE_MEMBERS(AcDbFace, AcDbCornerEntity)
ACRX_DEFINE_MEMBERS(AcDbModelerEntity, AcDbEntity)

namespace {

// Width of a text run in units of its height: wide (CJK) characters count
// about one height, others about 0.6.
double textWidthInHeights(const std::string& s) {
  double w = 0;
  for (std::size_t i = 0; i < s.size();) {
    const unsigned char c = static_cast<unsigned char>(s[i]);
    const int len = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : 4;
    w += len >= 3 ? 1.0 : 0.6;
    i += static_cast<std::size_t>(len);
  }
  return w;
}

// Box of a rectangle given in the plane (origin, x direction) of normal.
void addRotatedBox(AcDbExtents& ext, const AcGePoint3d& origin, const AcGeVector3d& normal, double angle,
                   double x0, double y0, double x1, double y1) {
  const AcGeMatrix3d m = AcGeMatrix3d::translation(origin.asVector()) * AcGeMatrix3d::planeToWorld(normal) *
                         AcGeMatrix3d::rotation(angle, AcGeVector3d::kZAxis);
  for (int i = 0; i < 4; ++i) {
    AcGePoint3d p((i & 1) ? x1 : x0, (i & 2) ? y1 : y0, 0);
    ext.addPoint(p.transformBy(m));
  }
}

AcGeVector3d transformedDirection(AcGeVector3d v, const AcGeMatrix3d& m) {
  v.transformBy(m);
  return v;
}

}  // namespace

// --- AcDbText --------------------------------------------------------------

Acad::ErrorStatus AcDbText::setPosition(const AcGePoint3d& p) {
  if (!isFinite(p)) return Acad::eInvalidInput;
  HOST_SET(m_position, p);
}
Acad::ErrorStatus AcDbText::setAlignmentPoint(const AcGePoint3d& p) {
  if (!isFinite(p)) return Acad::eInvalidInput;
  HOST_SET(m_alignment, p);
}
Acad::ErrorStatus AcDbText::setTextString(const CString& s) { HOST_SET(m_text, s); }
Acad::ErrorStatus AcDbText::setHeight(double h) {
  if (!std::isfinite(h)) return Acad::eInvalidInput;
  HOST_SET(m_height, h);
}
Acad::ErrorStatus AcDbText::setRotation(double r) {
  if (!std::isfinite(r)) return Acad::eInvalidInput;
  HOST_SET(m_rotation, r);
}
Acad::ErrorStatus AcDbText::setWidthFactor(double w) { HOST_SET(m_widthFactor, w); }
Acad::ErrorStatus AcDbText::setOblique(double o) { HOST_SET(m_oblique, o); }
Acad::ErrorStatus AcDbText::setModes(int horizontal, int vertical) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_hMode = horizontal;
  m_vMode = vertical;
  return Acad::eOk;
}
Acad::ErrorStatus AcDbText::setTextStyle(AcDbObjectId style) { HOST_SET(m_style, style); }
Acad::ErrorStatus AcDbText::setNormal(const AcGeVector3d& n) {
  if (!isFinite(n) || n.isZeroLength()) return Acad::eInvalidInput;
  HOST_SET(m_normal, n.normal());
}
Acad::ErrorStatus AcDbText::setThickness(double t) { HOST_SET(m_thickness, t); }
Acad::ErrorStatus AcDbText::setGenerationFlags(int flags) { HOST_SET(m_generation, flags); }

Acad::ErrorStatus AcDbText::getGeomExtents(AcDbExtents& extents) const {
  extents = AcDbExtents();
  const double w = textWidthInHeights(m_text) * m_height * m_widthFactor;
  // Aligned text is placed by its alignment point; estimate the run around it.
  AcGePoint3d origin = m_position;
  double x0 = 0;
  if (m_hMode == 1 || m_hMode == 4) x0 = -w / 2;
  if (m_hMode == 2) x0 = -w;
  if (m_hMode != 0 || m_vMode != 0) origin = m_alignment;
  double y0 = 0;
  if (m_vMode == 2) y0 = -m_height / 2;
  if (m_vMode == 3) y0 = -m_height;
  addRotatedBox(extents, origin, m_normal, m_rotation, x0, y0, x0 + w, y0 + m_height);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbText::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  const AcGeMatrix3d ocs = AcGeMatrix3d::planeToWorld(m_normal) * AcGeMatrix3d::rotation(m_rotation, AcGeVector3d::kZAxis);
  const AcGeVector3d dir = transformedDirection(AcGeVector3d(ocs.entry[0][0], ocs.entry[1][0], ocs.entry[2][0]), xform);
  const AcGeVector3d up = transformedDirection(AcGeVector3d(ocs.entry[0][1], ocs.entry[1][1], ocs.entry[2][1]), xform);
  m_position.transformBy(xform);
  m_alignment.transformBy(xform);
  AcGeVector3d n = dir.crossProduct(up).normal();
  if (n.isZeroLength()) return Acad::eDegenerateGeometry;
  if (n.z < 0 && std::fabs(n.x) < 1e-12 && std::fabs(n.y) < 1e-12) n = AcGeVector3d::kZAxis;  // mirrored text reads as before
  AcGeVector3d inPlane = dir;
  inPlane.transformBy(AcGeMatrix3d::worldToPlane(n));
  m_normal = n;
  m_rotation = AcGeVector2d(inPlane.x, inPlane.y).angle();
  const double sx = dir.length(), sy = up.length();
  m_height *= sy;
  if (sy > 0) m_widthFactor *= sx / sy;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbAttribute::setTag(const CString& tag) { HOST_SET(m_tag, tag); }
Acad::ErrorStatus AcDbAttribute::setAttributeFlags(int flags) { HOST_SET(m_flags, flags); }
Acad::ErrorStatus AcDbAttributeDefinition::setTag(const CString& tag) { HOST_SET(m_tag, tag); }
Acad::ErrorStatus AcDbAttributeDefinition::setPrompt(const CString& prompt) { HOST_SET(m_prompt, prompt); }
Acad::ErrorStatus AcDbAttributeDefinition::setAttributeFlags(int flags) { HOST_SET(m_flags, flags); }

// --- AcDbMText -------------------------------------------------------------

Acad::ErrorStatus AcDbMText::setLocation(const AcGePoint3d& p) {
  if (!isFinite(p)) return Acad::eInvalidInput;
  HOST_SET(m_location, p);
}
Acad::ErrorStatus AcDbMText::setContents(const CString& s) { HOST_SET(m_contents, s); }
Acad::ErrorStatus AcDbMText::setTextHeight(double h) { HOST_SET(m_height, h); }
Acad::ErrorStatus AcDbMText::setWidth(double w) { HOST_SET(m_width, w); }
Acad::ErrorStatus AcDbMText::setAttachment(int a) { HOST_SET(m_attachment, a); }
Acad::ErrorStatus AcDbMText::setDirection(const AcGeVector3d& d) { HOST_SET(m_direction, d); }
Acad::ErrorStatus AcDbMText::setNormal(const AcGeVector3d& n) {
  if (!isFinite(n) || n.isZeroLength()) return Acad::eInvalidInput;
  HOST_SET(m_normal, n.normal());
}
Acad::ErrorStatus AcDbMText::setTextStyle(AcDbObjectId style) { HOST_SET(m_style, style); }

Acad::ErrorStatus AcDbMText::getGeomExtents(AcDbExtents& extents) const {
  extents = AcDbExtents();
  // Lines are separated by "\P"; the longest sets the width unless a width is given.
  int lines = 1;
  double longest = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= m_contents.size(); ++i) {
    const bool brk = i + 1 < m_contents.size() && m_contents[i] == '\\' && m_contents[i + 1] == 'P';
    if (brk || i == m_contents.size()) {
      longest = std::max(longest, textWidthInHeights(m_contents.substr(start, i - start)));
      if (brk) {
        ++lines;
        start = i + 2;
        ++i;
      }
    }
  }
  const double w = m_width > 0 ? m_width : longest * m_height;
  const double h = m_height * (1 + (lines - 1) * 1.667);
  const int col = (m_attachment - 1) % 3, row = (m_attachment - 1) / 3;
  const double x0 = -w * col / 2.0;
  const double y1 = h * row / 2.0;
  AcGeVector3d d = m_direction;
  d.transformBy(AcGeMatrix3d::worldToPlane(m_normal));
  addRotatedBox(extents, m_location, m_normal, AcGeVector2d(d.x, d.y).angle(), x0, y1 - h, x0 + w, y1);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbMText::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_location.transformBy(xform);
  const AcGeVector3d d = transformedDirection(m_direction, xform);
  const double s = d.length();
  if (s > 0) {
    m_direction = d / s;
    m_height *= s;
    m_width *= s;
  }
  AcGeVector3d n = transformedDirection(m_normal, xform);
  if (!n.isZeroLength()) m_normal = n.normal();
  return Acad::eOk;
}

// --- AcDbDimension ---------------------------------------------------------

Acad::ErrorStatus AcDbDimension::setDimBlockId(AcDbObjectId id) { HOST_SET(m_block, id); }
Acad::ErrorStatus AcDbDimension::setDimensionType(int t) { HOST_SET(m_type, t); }
Acad::ErrorStatus AcDbDimension::setDimensionText(const CString& s) { HOST_SET(m_text, s); }
Acad::ErrorStatus AcDbDimension::setNormal(const AcGeVector3d& n) { HOST_SET(m_normal, n); }

Acad::ErrorStatus AcDbDimension::setPoint(int code, const AcGePoint3d& p) {
  if (!isFinite(p)) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  for (auto& [c, q] : m_points)
    if (c == code) {
      q = p;
      return Acad::eOk;
    }
  m_points.emplace_back(code, p);
  return Acad::eOk;
}

bool AcDbDimension::getPoint(int code, AcGePoint3d& p) const {
  for (const auto& [c, q] : m_points)
    if (c == code) {
      p = q;
      return true;
    }
  return false;
}

Acad::ErrorStatus AcDbDimension::explode(AcDbEntityArray& entities) const {
  const auto* block = host::peek<AcDbBlockTableRecord>(m_block);
  if (!block) return Acad::eNotApplicable;
  for (const AcDbObjectId id : block->entityIds()) {
    const auto* ent = host::peek<AcDbEntity>(id);
    if (!ent || id.isErased()) continue;
    auto* copy = static_cast<AcDbEntity*>(ent->cloneObject());
    if (copy) entities.append(copy);
  }
  return Acad::eOk;
}

Acad::ErrorStatus AcDbDimension::getGeomExtents(AcDbExtents& extents) const {
  extents = AcDbExtents();
  if (const auto* block = host::peek<AcDbBlockTableRecord>(m_block)) {
    for (const AcDbObjectId id : block->entityIds()) {
      const auto* ent = host::peek<AcDbEntity>(id);
      AcDbExtents e;
      if (ent && !id.isErased() && ent->getGeomExtents(e) == Acad::eOk) extents.addExt(e);
    }
  }
  if (!extents.isValid())
    for (const auto& [code, p] : m_points) extents.addPoint(p);
  return extents.isValid() ? Acad::eOk : Acad::eInvalidExtents;
}

Acad::ErrorStatus AcDbDimension::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  for (auto& [code, p] : m_points) p.transformBy(xform);
  return Acad::eOk;
}

// --- AcDbHatch -------------------------------------------------------------

Acad::ErrorStatus AcDbHatch::setPattern(const CString& name, bool solidFill) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_pattern = name;
  m_solid = solidFill;
  return Acad::eOk;
}
Acad::ErrorStatus AcDbHatch::setElevation(double e) { HOST_SET(m_elevation, e); }
Acad::ErrorStatus AcDbHatch::setNormal(const AcGeVector3d& n) {
  if (!isFinite(n) || n.isZeroLength()) return Acad::eInvalidInput;
  HOST_SET(m_normal, n.normal());
}
Acad::ErrorStatus AcDbHatch::appendLoop(const Loop& loop) {
  for (const auto& v : loop.vertices)
    if (!std::isfinite(v.point.x) || !std::isfinite(v.point.y) || !std::isfinite(v.bulge)) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_loops.push_back(loop);
  return Acad::eOk;
}

namespace {
AcDbPolyline loopAsPolyline(const AcDbHatch::Loop& loop, const AcGeVector3d& normal, double elevation) {
  AcDbPolyline p;
  p.setNormal(normal);
  p.setElevation(elevation);
  p.setClosed(true);
  unsigned int i = 0;
  for (const auto& v : loop.vertices) p.addVertexAt(i++, v.point, v.bulge);
  return p;
}
}  // namespace

Acad::ErrorStatus AcDbHatch::getGeomExtents(AcDbExtents& extents) const {
  extents = AcDbExtents();
  for (const auto& loop : m_loops) {
    AcDbExtents e;
    if (loopAsPolyline(loop, m_normal, m_elevation).getGeomExtents(e) == Acad::eOk) extents.addExt(e);
  }
  return extents.isValid() ? Acad::eOk : Acad::eInvalidExtents;
}

Acad::ErrorStatus AcDbHatch::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  std::vector<Loop> loops = m_loops;
  AcGeVector3d normal = m_normal;
  double elevation = m_elevation;
  for (auto& loop : loops) {
    AcDbPolyline p = loopAsPolyline(loop, m_normal, m_elevation);
    if (const auto es = p.transformBy(xform); es != Acad::eOk) return es;
    for (std::size_t k = 0; k < loop.vertices.size(); ++k) {
      loop.vertices[k].point = p.vertices()[k].point;
      loop.vertices[k].bulge = p.vertices()[k].bulge;
    }
    normal = p.normal();
    elevation = p.elevation();
  }
  m_loops = std::move(loops);
  m_normal = normal;
  m_elevation = elevation;
  return Acad::eOk;
}

// --- AcDbPoint, corner entities -------------------------------------------

Acad::ErrorStatus AcDbPoint::setPosition(const AcGePoint3d& p) {
  if (!isFinite(p)) return Acad::eInvalidInput;
  HOST_SET(m_position, p);
}
Acad::ErrorStatus AcDbPoint::getGeomExtents(AcDbExtents& extents) const {
  extents = AcDbExtents();
  extents.addPoint(m_position);
  return Acad::eOk;
}
Acad::ErrorStatus AcDbPoint::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_position.transformBy(xform);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbCornerEntity::getPointAt(int index, AcGePoint3d& p) const {
  if (index < 0 || index > 3) return Acad::eInvalidIndex;
  p = m_points[index];
  return Acad::eOk;
}
Acad::ErrorStatus AcDbCornerEntity::setPointAt(int index, const AcGePoint3d& p) {
  if (index < 0 || index > 3) return Acad::eInvalidIndex;
  if (!isFinite(p)) return Acad::eInvalidInput;
  HOST_SET(m_points[index], p);
}
Acad::ErrorStatus AcDbCornerEntity::setNormal(const AcGeVector3d& n) { HOST_SET(m_normal, n); }
Acad::ErrorStatus AcDbCornerEntity::setThickness(double t) { HOST_SET(m_thickness, t); }
Acad::ErrorStatus AcDbCornerEntity::setEdgeFlags(int flags) { HOST_SET(m_flags, flags); }
Acad::ErrorStatus AcDbCornerEntity::getGeomExtents(AcDbExtents& extents) const {
  extents = AcDbExtents();
  for (const auto& p : m_points) extents.addPoint(p);
  return Acad::eOk;
}
Acad::ErrorStatus AcDbCornerEntity::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  for (auto& p : m_points) p.transformBy(xform);
  return Acad::eOk;
}
