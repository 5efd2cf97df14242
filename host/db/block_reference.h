#pragma once
// Block references (inserts), arrays of them, and their attributes.
#include "host/db/entity.h"

class AcDbAttribute;

struct AcGeScale3d {
  double sx = 1, sy = 1, sz = 1;
};

class AcDbBlockReference : public AcDbEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbBlockReference)
  AcDbBlockReference() = default;
  AcDbBlockReference(const AcGePoint3d& position, AcDbObjectId blockTableRecord)
      : m_position(position), m_block(blockTableRecord) {}

  AcDbObjectId blockTableRecord() const { return m_block; }
  Acad::ErrorStatus setBlockTableRecord(AcDbObjectId id);
  // Insertion point in world coordinates.
  AcGePoint3d position() const { return m_position; }
  Acad::ErrorStatus setPosition(const AcGePoint3d& p);
  AcGeScale3d scaleFactors() const { return m_scale; }
  Acad::ErrorStatus setScaleFactors(const AcGeScale3d& s);
  // Rotation about the normal, in the plane of the normal.
  double rotation() const { return m_rotation; }
  Acad::ErrorStatus setRotation(double r);
  AcGeVector3d normal() const { return m_normal; }
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);
  // Block coordinates to world: base point to position, scaled, rotated, in
  // the plane of the normal.
  AcGeMatrix3d blockTransform() const;
  // Sets position, scales, rotation and normal from a block-to-world matrix
  // (a skewed matrix is approximated by its nearest scale and rotation).
  Acad::ErrorStatus setBlockTransform(const AcGeMatrix3d& m);

  // Attributes owned by the reference, in order.
  const AcDbObjectIdArray& attributeIds() const { return m_attributes; }
  // Adds an attribute (the reference must be in a database).
  Acad::ErrorStatus appendAttribute(AcDbObjectId& id, AcDbAttribute* attribute);
  Acad::ErrorStatus appendAttribute(AcDbAttribute* attribute);
  // Host-internal: the attribute list as a reader or a clone sets it, and
  // the end marker that follows the attributes in a file.
  void setAttributeIds(const AcDbObjectIdArray& ids) { m_attributes = ids; }
  AcDbObjectId sequenceEndId() const { return m_seqend; }
  void setSequenceEndId(AcDbObjectId id) { m_seqend = id; }

  // From the block's box, transformed (see host::BlockExtents).
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  // One level: the block's entities transformed by the insert. Nested
  // references stay references. Entities on layer "0" take the reference's
  // layer; by-block colour and linetype take the reference's. eOutOfMemory,
  // producing nothing, when that would be more than
  // host::kMaxExplodedEntities entities.
  Acad::ErrorStatus explode(AcDbEntityArray& entities) const override;
  AcDbObject* cloneObject() const override { return new AcDbBlockReference(*this); }

 protected:
  // The transform of each copy (a single one for a plain reference).
  virtual void copyTransforms(AcArray<AcGeMatrix3d>& transforms) const;

 private:
  AcGePoint3d m_position;
  AcDbObjectId m_block;
  AcGeScale3d m_scale;
  double m_rotation = 0;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis;
  AcDbObjectIdArray m_attributes;
  AcDbObjectId m_seqend;
};

// A block reference repeated in columns and rows.
class AcDbMInsertBlock : public AcDbBlockReference {
 public:
  ACRX_DECLARE_MEMBERS(AcDbMInsertBlock)
  AcDbMInsertBlock() = default;
  int columns() const { return m_columns; }
  int rows() const { return m_rows; }
  double columnSpacing() const { return m_colSpacing; }
  double rowSpacing() const { return m_rowSpacing; }
  Acad::ErrorStatus setArray(int columns, int rows, double columnSpacing, double rowSpacing);
  // Block-to-world transform of the copy in column and row (from 0).
  AcGeMatrix3d copyTransform(int column, int row) const;
  AcDbObject* cloneObject() const override { return new AcDbMInsertBlock(*this); }

 protected:
  void copyTransforms(AcArray<AcGeMatrix3d>& transforms) const override;

 private:
  int m_columns = 1, m_rows = 1;
  double m_colSpacing = 0, m_rowSpacing = 0;
};
