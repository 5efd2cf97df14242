#pragma once
// Entities: objects with graphics, properties and geometry.
#include <cstdint>

#include "host/db/object.h"
#include "host/ge/matrix3d.h"

// Entity colour: an index (0 by block, 256 by layer, 1 to 255) and an
// optional true colour (0x00RRGGBB, -1 for none).
class AcCmColor {
 public:
  static constexpr std::uint16_t kByBlock = 0, kByLayer = 256;
  std::uint16_t colorIndex() const { return m_index; }
  void setColorIndex(std::uint16_t index) {
    m_index = index;
    m_rgb = -1;
  }
  std::int32_t trueColor() const { return m_rgb; }
  void setTrueColor(std::int32_t rgb) { m_rgb = rgb; }
  bool isByLayer() const { return m_index == kByLayer; }
  bool isByBlock() const { return m_index == kByBlock; }
  bool operator==(const AcCmColor&) const = default;

 private:
  std::uint16_t m_index = kByLayer;
  std::int32_t m_rgb = -1;
};

// An axis-aligned box; a new one is empty (its minimum above its maximum).
class AcDbExtents {
 public:
  AcDbExtents();
  AcDbExtents(const AcGePoint3d& min, const AcGePoint3d& max) : m_min(min), m_max(max) {}
  AcGePoint3d minPoint() const { return m_min; }
  AcGePoint3d maxPoint() const { return m_max; }
  void set(const AcGePoint3d& min, const AcGePoint3d& max) {
    m_min = min;
    m_max = max;
  }
  void addPoint(const AcGePoint3d& p);
  void addExt(const AcDbExtents& other);
  bool isValid() const { return m_min.x <= m_max.x && m_min.y <= m_max.y && m_min.z <= m_max.z; }
  void transformBy(const AcGeMatrix3d& m);  // box of the transformed box

 private:
  AcGePoint3d m_min, m_max;
};

class AcDbEntity;
using AcDbEntityArray = AcArray<AcDbEntity*>;

class AcDbEntity : public AcDbObject {
 public:
  ACRX_DECLARE_MEMBERS(AcDbEntity)

  AcDbObjectId blockId() const { return ownerId(); }

  // Layer and linetype by name and by id. A name is resolved in the
  // entity's database, or the working database before it has one.
  CString layer() const;
  AcDbObjectId layerId() const { return m_layer; }
  Acad::ErrorStatus setLayer(const CString& name);
  Acad::ErrorStatus setLayer(AcDbObjectId layerId);
  CString linetype() const;
  AcDbObjectId linetypeId() const { return m_linetype; }
  Acad::ErrorStatus setLinetype(const CString& name);
  Acad::ErrorStatus setLinetype(AcDbObjectId linetypeId);

  std::uint16_t colorIndex() const { return m_color.colorIndex(); }
  Acad::ErrorStatus setColorIndex(std::uint16_t index);
  const AcCmColor& color() const { return m_color; }
  Acad::ErrorStatus setColor(const AcCmColor& color);
  double linetypeScale() const { return m_linetypeScale; }
  Acad::ErrorStatus setLinetypeScale(double scale);
  std::int16_t lineWeight() const { return m_lineWeight; }
  Acad::ErrorStatus setLineWeight(std::int16_t weight);
  AcDb::Visibility visibility() const { return m_invisible ? AcDb::kInvisible : AcDb::kVisible; }
  Acad::ErrorStatus setVisibility(AcDb::Visibility v);
  // Highlighting is a display state only; it is not saved.
  Acad::ErrorStatus highlight();
  Acad::ErrorStatus unhighlight();
  bool isHighlighted() const { return m_highlighted; }

  // Layer of the current layer, ByLayer linetype and colour: what a new
  // entity takes when it joins a database without properties of its own.
  void setDatabaseDefaults(AcDbDatabase* db);
  // Layer, linetype, colour, scale, weight and visibility of other.
  void setPropertiesFrom(const AcDbEntity* other);

  virtual Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const;
  virtual Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform);
  // A transformed copy, which may be of another kind (an arc under a
  // non-uniform scale becomes an elliptical arc).
  virtual Acad::ErrorStatus getTransformedCopy(const AcGeMatrix3d& xform, AcDbEntity*& copy) const;
  // Simpler entities that together draw this one; they belong to no database.
  virtual Acad::ErrorStatus explode(AcDbEntityArray& entities) const;

 protected:
  AcDbEntity() = default;
  AcDbEntity(const AcDbEntity&) = default;

 private:
  AcDbObjectId m_layer, m_linetype;
  AcCmColor m_color;
  double m_linetypeScale = 1.0;
  std::int16_t m_lineWeight = -1;  // by layer
  bool m_invisible = false;
  bool m_highlighted = false;
};

// Entities that the host keeps without modelling them: the kind's name and
// its data live in the object's unmodelled values.
class AcDbGenericEntity : public AcDbEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbGenericEntity)
  explicit AcDbGenericEntity(std::string dxfName = {}) : m_dxfName(std::move(dxfName)) {}
  const std::string& dxfName() const { return m_dxfName; }
  // Points that bound it, when the reader knows any.
  AcGePoint3dArray& points() { return m_points; }
  const AcGePoint3dArray& points() const { return m_points; }
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  AcDbObject* cloneObject() const override { return new AcDbGenericEntity(*this); }

 private:
  std::string m_dxfName;
  AcGePoint3dArray m_points;
};
