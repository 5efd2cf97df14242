#include "host/db/block_reference.h"

#include <cmath>

#include "host/db/block_extents.h"
#include "host/db/database.h"
#include "host/db/setter.h"
#include "host/db/other_entities.h"
#include "host/db/peek.h"
#include "host/db/symbol_tables.h"

ACRX_DEFINE_MEMBERS(AcDbBlockReference, AcDbEntity)
ACRX_DEFINE_MEMBERS(AcDbMInsertBlock, AcDbBlockReference)

namespace {
bool isMinusZ(const AcGeVector3d& n) { return n.z < 0 && std::fabs(n.x) < 1e-12 && std::fabs(n.y) < 1e-12; }

AcGeMatrix3d linearPart(const AcGeVector3d& normal, double rotation) {
  return AcGeMatrix3d::planeToWorld(normal) * AcGeMatrix3d::rotation(rotation, AcGeVector3d::kZAxis);
}

// Entities of a block transformed by m, with the reference's properties
// where they are on layer "0" or by block.
void transformedBlockEntities(const AcDbBlockReference& ref, const AcDbBlockTableRecord& block,
                              const AcGeMatrix3d& m, AcDbEntityArray& out) {
  AcDbDatabase* db = block.database();
  const AcDbObjectId layerZero = db ? db->layerZero() : AcDbObjectId();
  const AcDbObjectId byBlock = db ? db->byBlockLinetype() : AcDbObjectId();
  for (const AcDbObjectId id : block.entityIds()) {
    if (id.isErased()) continue;
    const auto* ent = host::peek<AcDbEntity>(id);
    if (!ent) continue;
    AcDbEntityArray pieces;
    AcDbEntity* copy = nullptr;
    if (ent->getTransformedCopy(m, copy) == Acad::eOk) {
      pieces.append(copy);
    } else {
      // A polyline with arcs under a non-uniform scale: its pieces can follow.
      AcDbEntityArray parts;
      if (ent->explode(parts) == Acad::eOk) {
        for (AcDbEntity* part : parts) {
          AcDbEntity* moved = nullptr;
          if (part->getTransformedCopy(m, moved) == Acad::eOk) pieces.append(moved);
          delete part;
        }
      }
    }
    for (AcDbEntity* piece : pieces) {
      if (piece->layerId() == layerZero) piece->setLayer(ref.layerId());
      if (piece->linetypeId() == byBlock) piece->setLinetype(ref.linetypeId());
      if (piece->color().isByBlock()) piece->setColor(ref.color());
      if (piece->lineWeight() == -2) piece->setLineWeight(ref.lineWeight());
      out.append(piece);
    }
  }
}
}  // namespace

Acad::ErrorStatus AcDbBlockReference::setBlockTableRecord(AcDbObjectId id) {
  HOST_SET(m_block, id);
}
Acad::ErrorStatus AcDbBlockReference::setPosition(const AcGePoint3d& p) {
  if (!isFinite(p)) return Acad::eInvalidInput;
  HOST_SET(m_position, p);
}
Acad::ErrorStatus AcDbBlockReference::setScaleFactors(const AcGeScale3d& s) {
  if (!std::isfinite(s.sx) || !std::isfinite(s.sy) || !std::isfinite(s.sz) || s.sx == 0 || s.sy == 0 || s.sz == 0)
    return Acad::eInvalidInput;
  HOST_SET(m_scale, s);
}
Acad::ErrorStatus AcDbBlockReference::setRotation(double r) {
  if (!std::isfinite(r)) return Acad::eInvalidInput;
  HOST_SET(m_rotation, r);
}
Acad::ErrorStatus AcDbBlockReference::setNormal(const AcGeVector3d& n) {
  if (!isFinite(n) || n.isZeroLength()) return Acad::eInvalidInput;
  HOST_SET(m_normal, n.normal());
}

AcGeMatrix3d AcDbBlockReference::blockTransform() const {
  const auto* block = host::peek<AcDbBlockTableRecord>(m_block);
  const AcGePoint3d base = block ? block->origin() : AcGePoint3d::kOrigin;
  return AcGeMatrix3d::translation(m_position.asVector()) * linearPart(m_normal, m_rotation) *
         AcGeMatrix3d::scaling(AcGeVector3d(m_scale.sx, m_scale.sy, m_scale.sz)) *
         AcGeMatrix3d::translation(-base.asVector());
}

Acad::ErrorStatus AcDbBlockReference::setBlockTransform(const AcGeMatrix3d& m) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  const auto* block = host::peek<AcDbBlockTableRecord>(m_block);
  AcGePoint3d base = block ? block->origin() : AcGePoint3d::kOrigin;
  const AcGeVector3d c0(m.entry[0][0], m.entry[1][0], m.entry[2][0]);
  const AcGeVector3d c1(m.entry[0][1], m.entry[1][1], m.entry[2][1]);
  const AcGeVector3d c2(m.entry[0][2], m.entry[1][2], m.entry[2][2]);
  AcGeVector3d n = c0.crossProduct(c1).normal();
  if (n.isZeroLength()) return Acad::eDegenerateGeometry;
  // Prefer a +Z normal: a mirrored insert in the drawing plane gets a
  // negative y scale instead of a flipped normal.
  if (isMinusZ(n)) n = AcGeVector3d::kZAxis;
  AcGeVector3d x = c0;
  x.transformBy(AcGeMatrix3d::worldToPlane(n));
  m_normal = n;
  m_rotation = AcGeVector2d(x.x, x.y).angle();
  m_scale.sx = c0.length();
  m_scale.sy = c1.length() * (c0.crossProduct(c1).dotProduct(n) < 0 ? -1 : 1);
  m_scale.sz = c2.length() * (c2.dotProduct(n) < 0 ? -1 : 1);
  m_position = base.transformBy(m);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbBlockReference::appendAttribute(AcDbObjectId& id, AcDbAttribute* attribute) {
  AcDbDatabase* db = database();
  if (!db) return Acad::eNoDatabase;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  if (attribute->layerId().isNull()) attribute->setDatabaseDefaults(db);
  if (const auto es = db->addAcDbObject(id, attribute); es != Acad::eOk) return es;
  attribute->setOwnerId(objectId());
  m_attributes.append(id);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbBlockReference::appendAttribute(AcDbAttribute* attribute) {
  AcDbObjectId id;
  return appendAttribute(id, attribute);
}

void AcDbBlockReference::copyTransforms(AcArray<AcGeMatrix3d>& transforms) const {
  transforms.append(blockTransform());
}

Acad::ErrorStatus AcDbBlockReference::getGeomExtents(AcDbExtents& extents) const {
  host::BlockExtents blocks;
  return blocks.entityExtents(*this, extents);
}

Acad::ErrorStatus AcDbBlockReference::transformBy(const AcGeMatrix3d& xform) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  return setBlockTransform(xform * blockTransform());
}

Acad::ErrorStatus AcDbBlockReference::explode(AcDbEntityArray& entities) const {
  const auto* block = host::peek<AcDbBlockTableRecord>(m_block);
  if (!block || m_block.isErased()) return Acad::eInvalidInput;
  std::uint64_t live = 0;
  for (const AcDbObjectId id : block->entityIds()) live += !id.isErased();
  const auto* array = AcDbMInsertBlock::cast(this);
  const std::uint64_t copies = array ? std::uint64_t(std::max(array->columns(), 1)) * std::max(array->rows(), 1) : 1;
  if (live != 0 && copies > host::kMaxExplodedEntities / live) return Acad::eOutOfMemory;
  AcArray<AcGeMatrix3d> transforms;
  copyTransforms(transforms);
  for (const AcGeMatrix3d& m : transforms) transformedBlockEntities(*this, *block, m, entities);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbMInsertBlock::setArray(int columns, int rows, double columnSpacing, double rowSpacing) {
  if (columns < 1 || rows < 1 || !std::isfinite(columnSpacing) || !std::isfinite(rowSpacing))
    return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_columns = columns;
  m_rows = rows;
  m_colSpacing = columnSpacing;
  m_rowSpacing = rowSpacing;
  return Acad::eOk;
}

AcGeMatrix3d AcDbMInsertBlock::copyTransform(int column, int row) const {
  // Copies are spaced along the insert's rotated axes, unscaled.
  AcGeVector3d offset(column * m_colSpacing, row * m_rowSpacing, 0);
  offset.transformBy(linearPart(normal(), rotation()));
  return AcGeMatrix3d::translation(offset) * blockTransform();
}

void AcDbMInsertBlock::copyTransforms(AcArray<AcGeMatrix3d>& transforms) const {
  for (int r = 0; r < m_rows; ++r)
    for (int c = 0; c < m_columns; ++c) transforms.append(copyTransform(c, r));
}
