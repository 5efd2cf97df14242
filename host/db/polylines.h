#pragma once
// Polylines: the lightweight polyline with bulges and widths, and the older
// 2D and 3D polylines with their vertex lists.
#include <vector>

#include "host/db/curves.h"

// Lightweight polyline: 2D vertices in the plane of its normal at its
// elevation; a vertex's bulge is tan(θ/4) of the arc to the next vertex
// (positive counter-clockwise about the normal).
class AcDbPolyline : public AcDbCurve {
 public:
  ACRX_DECLARE_MEMBERS(AcDbPolyline)
  AcDbPolyline() = default;

  struct Vertex {
    AcGePoint2d point;
    double bulge = 0, startWidth = 0, endWidth = 0;
  };

  unsigned int numVerts() const { return static_cast<unsigned>(m_verts.size()); }
  Acad::ErrorStatus addVertexAt(unsigned int index, const AcGePoint2d& pt, double bulge = 0,
                                double startWidth = -1, double endWidth = -1);
  Acad::ErrorStatus removeVertexAt(unsigned int index);
  // World point of vertex i.
  Acad::ErrorStatus getPointAt(unsigned int index, AcGePoint3d& pt) const;
  // Vertex i in the polyline's own plane.
  Acad::ErrorStatus getPointAt(unsigned int index, AcGePoint2d& pt) const;
  Acad::ErrorStatus setPointAt(unsigned int index, const AcGePoint2d& pt);
  Acad::ErrorStatus getBulgeAt(unsigned int index, double& bulge) const;
  Acad::ErrorStatus setBulgeAt(unsigned int index, double bulge);
  Acad::ErrorStatus getWidthsAt(unsigned int index, double& startWidth, double& endWidth) const;
  Acad::ErrorStatus setWidthsAt(unsigned int index, double startWidth, double endWidth);
  const std::vector<Vertex>& vertices() const { return m_verts; }

  bool isClosed() const override { return m_closed; }
  Acad::ErrorStatus setClosed(bool closed);
  double elevation() const { return m_elevation; }
  Acad::ErrorStatus setElevation(double e);
  AcGeVector3d normal() const { return m_normal; }
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);
  double thickness() const { return m_thickness; }
  Acad::ErrorStatus setThickness(double t);
  // Global width (DXF 43); negative when the vertices carry their own.
  double constantWidth() const { return m_constantWidth; }
  Acad::ErrorStatus setConstantWidth(double w);
  bool hasPlinegen() const { return m_plinegen; }
  Acad::ErrorStatus setPlinegen(bool on);
  bool hasBulges() const;

  std::unique_ptr<AcGeCurve3d> geCurve() const override;  // null: a polyline has several pieces
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  // Lines and arcs, one a segment; zero-length segments give nothing.
  Acad::ErrorStatus explode(AcDbEntityArray& entities) const override;
  AcDbObject* cloneObject() const override { return new AcDbPolyline(*this); }

 private:
  std::vector<Vertex> m_verts;
  bool m_closed = false, m_plinegen = false;
  double m_elevation = 0, m_thickness = 0, m_constantWidth = -1;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis;
};

// Vertex of the older polylines. flags uses the drawing format's bits
// (8: added by curve fitting, 16: spline frame control point, ...).
struct AcDbPolylineVertex {
  AcGePoint3d position;
  double bulge = 0, startWidth = 0, endWidth = 0;
  int flags = 0;
  AcDbHandle handle;  // the vertex's handle in a file, kept for writing back
  bool isFrameControlPoint() const { return (flags & 16) != 0; }
};

namespace AcDb {
enum Poly2dType { k2dSimplePoly = 0, k2dFitCurvePoly = 1, k2dQuadSplinePoly = 2, k2dCubicSplinePoly = 3 };
enum Poly3dType { k3dSimplePoly = 0, k3dQuadSplinePoly = 1, k3dCubicSplinePoly = 2 };
}  // namespace AcDb

// 2D polyline: vertex positions are in the plane of the normal (z unused,
// elevation gives the height).
class AcDb2dPolyline : public AcDbCurve {
 public:
  ACRX_DECLARE_MEMBERS(AcDb2dPolyline)
  AcDb2dPolyline() = default;

  std::vector<AcDbPolylineVertex>& vertices() { return m_verts; }
  const std::vector<AcDbPolylineVertex>& vertices() const { return m_verts; }
  Acad::ErrorStatus appendVertex(const AcDbPolylineVertex& v);
  AcDb::Poly2dType polyType() const { return m_type; }
  Acad::ErrorStatus setPolyType(AcDb::Poly2dType t);
  bool isClosed() const override { return m_closed; }
  Acad::ErrorStatus setClosed(bool closed);
  double elevation() const { return m_elevation; }
  Acad::ErrorStatus setElevation(double e);
  AcGeVector3d normal() const { return m_normal; }
  Acad::ErrorStatus setNormal(const AcGeVector3d& n);
  double defaultStartWidth() const { return m_startWidth; }
  double defaultEndWidth() const { return m_endWidth; }
  Acad::ErrorStatus setDefaultWidths(double start, double end);
  double thickness() const { return m_thickness; }
  Acad::ErrorStatus setThickness(double t);
  // Curve-fit and spline-fit flags as the file's 70 group holds them.
  int fileFlags() const { return m_fileFlags; }
  void setFileFlags(int flags) { m_fileFlags = flags; }
  // Handle of the end marker that follows the vertices in a file.
  AcDbHandle sequenceEndHandle() const { return m_seqend; }
  void setSequenceEndHandle(AcDbHandle h) { m_seqend = h; }

  std::unique_ptr<AcGeCurve3d> geCurve() const override;
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  // Lines and arcs from the drawn vertices (spline frame points are skipped).
  Acad::ErrorStatus explode(AcDbEntityArray& entities) const override;
  AcDbObject* cloneObject() const override { return new AcDb2dPolyline(*this); }

  // The same vertices as a lightweight polyline (world-equivalent).
  AcDbPolyline toLightweight() const;

 private:
  std::vector<AcDbPolylineVertex> m_verts;
  AcDb::Poly2dType m_type = AcDb::k2dSimplePoly;
  bool m_closed = false;
  int m_fileFlags = 0;
  AcDbHandle m_seqend;
  double m_elevation = 0, m_startWidth = 0, m_endWidth = 0, m_thickness = 0;
  AcGeVector3d m_normal = AcGeVector3d::kZAxis;
};

// 3D polyline: straight segments between world points.
class AcDb3dPolyline : public AcDbCurve {
 public:
  ACRX_DECLARE_MEMBERS(AcDb3dPolyline)
  AcDb3dPolyline() = default;

  std::vector<AcDbPolylineVertex>& vertices() { return m_verts; }
  const std::vector<AcDbPolylineVertex>& vertices() const { return m_verts; }
  Acad::ErrorStatus appendVertex(const AcGePoint3d& p);
  AcDb::Poly3dType polyType() const { return m_type; }
  Acad::ErrorStatus setPolyType(AcDb::Poly3dType t);
  bool isClosed() const override { return m_closed; }
  Acad::ErrorStatus setClosed(bool closed);
  int fileFlags() const { return m_fileFlags; }
  void setFileFlags(int flags) { m_fileFlags = flags; }
  AcDbHandle sequenceEndHandle() const { return m_seqend; }
  void setSequenceEndHandle(AcDbHandle h) { m_seqend = h; }

  std::unique_ptr<AcGeCurve3d> geCurve() const override;
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  Acad::ErrorStatus explode(AcDbEntityArray& entities) const override;
  AcDbObject* cloneObject() const override { return new AcDb3dPolyline(*this); }

 private:
  std::vector<AcDbPolylineVertex> m_verts;
  AcDb::Poly3dType m_type = AcDb::k3dSimplePoly;
  bool m_closed = false;
  int m_fileFlags = 8;
  AcDbHandle m_seqend;
};

namespace host {
// The arc between two points in a plane with the given bulge: its centre,
// radius and start/end angles, counter-clockwise (a negative bulge runs from
// b back to a). False when the bulge is zero or the points coincide.
bool arcFromBulge(const AcGePoint2d& a, const AcGePoint2d& b, double bulge, AcGePoint2d& center,
                  double& radius, double& startAngle, double& endAngle);
}  // namespace host
