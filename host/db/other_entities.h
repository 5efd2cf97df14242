#pragma once
// Annotation and fill entities: text, multiline text, attributes,
// dimensions, hatches, points, solids, traces and 3D faces.
#include <vector>

#include "host/db/entity.h"

class AcDbText : public AcDbEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbText)
  AcDbText() = default;
  AcDbText(const AcGePoint3d& position, const CString& text, double height = 2.5, double rotation = 0)
      : m_position(position), m_text(text), m_height(height), m_rotation(rotation) {}

  AcGePoint3d position() const { return m_position; }
  Acad::ErrorStatus setPosition(const AcGePoint3d& p);
  AcGePoint3d alignmentPoint() const { return m_alignment; }
  Acad::ErrorStatus setAlignmentPoint(const AcGePoint3d& p);
  const CString& textString() const { return m_text; }
  Acad::ErrorStatus setTextString(const CString& s);
  double height() const { return m_height; }
  Acad::ErrorStatus setHeight(double h);
  double rotation() const { return m_rotation; }
  Acad::ErrorStatus setRotation(double r);
  double widthFactor() const { return m_widthFactor; }
  Acad::ErrorStatus setWidthFactor(double w);
  double oblique() const { return m_oblique; }
  Acad::ErrorStatus setOblique(double o);
  int horizontalMode() const { return m_hMode; }
  int verticalMode() const { return m_vMode; }
  Acad::ErrorStatus setModes(int horizontal, int vertical);
  AcDbObjectId textStyle() const { return m_style; }
  Acad::ErrorStatus setTextStyle(AcDbObjectId style);
  AcGeVector3d normal() const { return m_normal; }
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);
  double thickness() const { return m_thickness; }
  Acad::ErrorStatus setThickness(double t);
  int generationFlags() const { return m_generation; }
  Acad::ErrorStatus setGenerationFlags(int flags);

  // An estimate from the height, width factor and character count.
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  AcDbObject* cloneObject() const override { return new AcDbText(*this); }

 private:
  AcGePoint3d m_position, m_alignment;
  CString m_text;
  double m_height = 2.5, m_rotation = 0, m_widthFactor = 1, m_oblique = 0, m_thickness = 0;
  int m_hMode = 0, m_vMode = 0, m_generation = 0;
  AcDbObjectId m_style;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis;
};

class AcDbAttribute : public AcDbText {
 public:
  ACRX_DECLARE_MEMBERS(AcDbAttribute)
  AcDbAttribute() = default;
  const CString& tag() const { return m_tag; }
  Acad::ErrorStatus setTag(const CString& tag);
  int attributeFlags() const { return m_flags; }
  Acad::ErrorStatus setAttributeFlags(int flags);
  bool isInvisible() const { return (m_flags & 1) != 0; }
  AcDbObject* cloneObject() const override { return new AcDbAttribute(*this); }

 private:
  CString m_tag;
  int m_flags = 0;
};

class AcDbAttributeDefinition : public AcDbText {
 public:
  ACRX_DECLARE_MEMBERS(AcDbAttributeDefinition)
  AcDbAttributeDefinition() = default;
  const CString& tag() const { return m_tag; }
  Acad::ErrorStatus setTag(const CString& tag);
  const CString& prompt() const { return m_prompt; }
  Acad::ErrorStatus setPrompt(const CString& prompt);
  int attributeFlags() const { return m_flags; }
  Acad::ErrorStatus setAttributeFlags(int flags);
  AcDbObject* cloneObject() const override { return new AcDbAttributeDefinition(*this); }

 private:
  CString m_tag, m_prompt;
  int m_flags = 0;
};

class AcDbMText : public AcDbEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbMText)
  AcDbMText() = default;
  AcGePoint3d location() const { return m_location; }
  Acad::ErrorStatus setLocation(const AcGePoint3d& p);
  // Contents with the format codes as stored.
  const CString& contents() const { return m_contents; }
  Acad::ErrorStatus setContents(const CString& s);
  double textHeight() const { return m_height; }
  Acad::ErrorStatus setTextHeight(double h);
  double width() const { return m_width; }
  Acad::ErrorStatus setWidth(double w);
  int attachment() const { return m_attachment; }  // 1 top left ... 9 bottom right
  Acad::ErrorStatus setAttachment(int a);
  AcGeVector3d direction() const { return m_direction; }
  Acad::ErrorStatus setDirection(const AcGeVector3d& d);
  AcGeVector3d normal() const { return m_normal; }
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);
  AcDbObjectId textStyle() const { return m_style; }
  Acad::ErrorStatus setTextStyle(AcDbObjectId style);

  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  AcDbObject* cloneObject() const override { return new AcDbMText(*this); }

 private:
  AcGePoint3d m_location;
  CString m_contents;
  double m_height = 2.5, m_width = 0;
  int m_attachment = 1;
  AcGeVector3d m_direction = AcGeVector3d::kXAxis, m_normal = AcGeVector3d::kZAxis;
  AcDbObjectId m_style;
};

// A dimension: its kind, defining points and the anonymous "*D" block that
// draws it.
class AcDbDimension : public AcDbEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbDimension)
  AcDbDimension() = default;
  AcDbObjectId dimBlockId() const { return m_block; }
  Acad::ErrorStatus setDimBlockId(AcDbObjectId id);
  int dimensionType() const { return m_type; }  // the file's 70 group
  Acad::ErrorStatus setDimensionType(int t);
  // Defining points by group code (10, 11, 12, 13, 14, 15, 16), world coordinates.
  const std::vector<std::pair<int, AcGePoint3d>>& points() const { return m_points; }
  Acad::ErrorStatus setPoint(int code, const AcGePoint3d& p);
  bool getPoint(int code, AcGePoint3d& p) const;
  const CString& dimensionText() const { return m_text; }
  Acad::ErrorStatus setDimensionText(const CString& s);
  AcGeVector3d normal() const { return m_normal; }
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);

  // The extents of its block when it has one, else of its points.
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  // The entities of its block.
  Acad::ErrorStatus explode(AcDbEntityArray& entities) const override;
  AcDbObject* cloneObject() const override { return new AcDbDimension(*this); }

 private:
  AcDbObjectId m_block;
  int m_type = 0;
  std::vector<std::pair<int, AcGePoint3d>> m_points;
  CString m_text;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis;
};

// A hatch: its pattern and boundary loops; loops are held as polyline
// vertices (points with bulges) in the hatch's plane.
class AcDbHatch : public AcDbEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbHatch)
  AcDbHatch() = default;
  struct LoopVertex {
    AcGePoint2d point;
    double bulge = 0;
  };
  struct Loop {
    int flags = 0;
    std::vector<LoopVertex> vertices;
  };
  const CString& patternName() const { return m_pattern; }
  Acad::ErrorStatus setPattern(const CString& name, bool solidFill);
  bool isSolidFill() const { return m_solid; }
  double elevation() const { return m_elevation; }
  Acad::ErrorStatus setElevation(double e);
  AcGeVector3d normal() const { return m_normal; }
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);
  const std::vector<Loop>& loops() const { return m_loops; }
  Acad::ErrorStatus appendLoop(const Loop& loop);

  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  AcDbObject* cloneObject() const override { return new AcDbHatch(*this); }

 private:
  CString m_pattern = "SOLID";
  bool m_solid = true;
  double m_elevation = 0;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis;
  std::vector<Loop> m_loops;
};

class AcDbPoint : public AcDbEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbPoint)
  AcDbPoint() = default;
  explicit AcDbPoint(const AcGePoint3d& p) : m_position(p) {}
  AcGePoint3d position() const { return m_position; }
  Acad::ErrorStatus setPosition(const AcGePoint3d& p);
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  AcDbObject* cloneObject() const override { return new AcDbPoint(*this); }

 private:
  AcGePoint3d m_position;
};

// Entities given by up to four corner points: 2D solids, traces and 3D faces.
class AcDbCornerEntity : public AcDbEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbCornerEntity)
  Acad::ErrorStatus getPointAt(int index, AcGePoint3d& p) const;
  Acad::ErrorStatus setPointAt(int index, const AcGePoint3d& p);
  AcGeVector3d normal() const { return m_normal; }
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);
  double thickness() const { return m_thickness; }
  Acad::ErrorStatus setThickness(double t);
  int edgeFlags() const { return m_flags; }
  Acad::ErrorStatus setEdgeFlags(int flags);
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;

 protected:
  AcDbCornerEntity() = default;
  AcDbCornerEntity(const AcDbCornerEntity&) = default;

 private:
  AcGePoint3d m_points[4];
  AcGeVector3d m_normal = AcGeVector3d::kZAxis;
  double m_thickness = 0;
  int m_flags = 0;
};

class AcDbSolid : public AcDbCornerEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbSolid)
  AcDbObject* cloneObject() const override { return new AcDbSolid(*this); }
};
class AcDbTrace : public AcDbCornerEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbTrace)
  AcDbObject* cloneObject() const override { return new AcDbTrace(*this); }
};
class AcDbFace : public AcDbCornerEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbFace)
  AcDbObject* cloneObject() const override { return new AcDbFace(*this); }
};

// Entities held as modeller data (3D solids, regions): file writers ask
// them for their ACIS SAT text.
class AcDbModelerEntity : public AcDbEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbModelerEntity)
  // The file's name of the kind ("3DSOLID", "REGION").
  virtual const char* dxfKind() const = 0;
  virtual bool satText(std::string& text, std::string& error) const = 0;

 protected:
  AcDbModelerEntity() = default;
  AcDbModelerEntity(const AcDbModelerEntity&) = default;
};
