#include "host/db/entity.h"

#include <algorithm>
#include <limits>

#include "host/db/database.h"
#include "host/db/peek.h"
#include "host/db/symbol_tables.h"

ACRX_DEFINE_MEMBERS(AcDbEntity, AcDbObject)
ACRX_DEFINE_MEMBERS(AcDbGenericEntity, AcDbEntity)

AcDbExtents::AcDbExtents() {
  constexpr double big = std::numeric_limits<double>::max();
  m_min = {big, big, big};
  m_max = {-big, -big, -big};
}

void AcDbExtents::addPoint(const AcGePoint3d& p) {
  m_min = {std::min(m_min.x, p.x), std::min(m_min.y, p.y), std::min(m_min.z, p.z)};
  m_max = {std::max(m_max.x, p.x), std::max(m_max.y, p.y), std::max(m_max.z, p.z)};
}

void AcDbExtents::addExt(const AcDbExtents& other) {
  if (!other.isValid()) return;
  addPoint(other.m_min);
  addPoint(other.m_max);
}

void AcDbExtents::transformBy(const AcGeMatrix3d& m) {
  if (!isValid()) return;
  AcDbExtents out;
  for (int i = 0; i < 8; ++i) {
    AcGePoint3d c((i & 1) ? m_max.x : m_min.x, (i & 2) ? m_max.y : m_min.y, (i & 4) ? m_max.z : m_min.z);
    out.addPoint(c.transformBy(m));
  }
  *this = out;
}

namespace {
AcDbDatabase* resolvingDatabase(const AcDbEntity* e) {
  return e->database() ? e->database() : acdbHostApplicationServices()->workingDatabase();
}
}  // namespace

CString AcDbEntity::layer() const {
  const auto* rec = host::peek<AcDbLayerTableRecord>(m_layer);
  return rec ? rec->getName() : CString();
}

Acad::ErrorStatus AcDbEntity::setLayer(const CString& name) {
  AcDbDatabase* db = resolvingDatabase(this);
  if (!db) return Acad::eNoDatabase;
  const auto* table = host::peek<AcDbLayerTable>(db->layerTableId());
  AcDbObjectId id;
  if (!table || table->getAt(name, id) != Acad::eOk) return Acad::eKeyNotFound;
  return setLayer(id);
}

Acad::ErrorStatus AcDbEntity::setLayer(AcDbObjectId layerId) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  if (!host::peek<AcDbLayerTableRecord>(layerId)) return Acad::eInvalidInput;
  m_layer = layerId;
  return Acad::eOk;
}

CString AcDbEntity::linetype() const {
  const auto* rec = host::peek<AcDbLinetypeTableRecord>(m_linetype);
  return rec ? rec->getName() : CString("ByLayer");
}

Acad::ErrorStatus AcDbEntity::setLinetype(const CString& name) {
  AcDbDatabase* db = resolvingDatabase(this);
  if (!db) return Acad::eNoDatabase;
  const auto* table = host::peek<AcDbLinetypeTable>(db->linetypeTableId());
  AcDbObjectId id;
  if (!table || table->getAt(name, id) != Acad::eOk) return Acad::eKeyNotFound;
  return setLinetype(id);
}

Acad::ErrorStatus AcDbEntity::setLinetype(AcDbObjectId linetypeId) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  if (!host::peek<AcDbLinetypeTableRecord>(linetypeId)) return Acad::eInvalidInput;
  m_linetype = linetypeId;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbEntity::setColorIndex(std::uint16_t index) {
  if (index > 257) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_color.setColorIndex(index);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbEntity::setColor(const AcCmColor& color) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_color = color;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbEntity::setLinetypeScale(double scale) {
  if (!(scale > 0) || !std::isfinite(scale)) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_linetypeScale = scale;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbEntity::setLineWeight(std::int16_t weight) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_lineWeight = weight;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbEntity::setVisibility(AcDb::Visibility v) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_invisible = v == AcDb::kInvisible;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbEntity::highlight() {
  m_highlighted = true;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbEntity::unhighlight() {
  m_highlighted = false;
  return Acad::eOk;
}

void AcDbEntity::setDatabaseDefaults(AcDbDatabase* db) {
  if (!db) return;
  m_layer = db->clayer();
  m_linetype = db->byLayerLinetype();
  m_color.setColorIndex(AcCmColor::kByLayer);
  m_linetypeScale = 1.0;
  m_lineWeight = -1;
}

void AcDbEntity::setPropertiesFrom(const AcDbEntity* other) {
  if (!other) return;
  m_layer = other->m_layer;
  m_linetype = other->m_linetype;
  m_color = other->m_color;
  m_linetypeScale = other->m_linetypeScale;
  m_lineWeight = other->m_lineWeight;
  m_invisible = other->m_invisible;
}

Acad::ErrorStatus AcDbEntity::getGeomExtents(AcDbExtents&) const { return Acad::eInvalidExtents; }

Acad::ErrorStatus AcDbEntity::transformBy(const AcGeMatrix3d&) { return Acad::eNotApplicable; }

Acad::ErrorStatus AcDbEntity::getTransformedCopy(const AcGeMatrix3d& xform, AcDbEntity*& copy) const {
  copy = nullptr;
  auto* clone = static_cast<AcDbEntity*>(cloneObject());
  if (!clone) return Acad::eNotApplicable;
  const Acad::ErrorStatus es = clone->transformBy(xform);
  if (es != Acad::eOk) {
    delete clone;
    return es;
  }
  copy = clone;
  return Acad::eOk;
}

Acad::ErrorStatus AcDbEntity::explode(AcDbEntityArray&) const { return Acad::eNotApplicable; }

Acad::ErrorStatus AcDbGenericEntity::getGeomExtents(AcDbExtents& extents) const {
  if (m_points.isEmpty()) return Acad::eInvalidExtents;
  extents = AcDbExtents();
  for (const auto& p : m_points) extents.addPoint(p);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbGenericEntity::transformBy(const AcGeMatrix3d&) {
  // Its unmodelled data could not follow the transform.
  return Acad::eNotApplicable;
}
