#pragma once
// Solids: regions, revolved solids and their files (SAT, STEP, STL). The
// modelling is done by Open CASCADE behind these types; solids of
// revolution also keep their meridian profile, from which the SAT writer
// makes exact analytic faces.
#include <memory>
#include <string>
#include <vector>

#include "host/db/curves.h"
#include "host/db/other_entities.h"
#include "host/db/polylines.h"

// A profile in the half plane of an axis: x along the axis, r ≥ 0 from it,
// a closed chain of points with bulges (arcs), counter-clockwise in (x, r).
struct MeridianProfile {
  struct Vertex {
    double x, r, bulge;
  };
  std::vector<Vertex> vertices;
  AcGePoint3d axisPoint;   // where x = 0 lies
  AcGeVector3d axisDir;    // unit
  AcGeVector3d upDir;      // unit, perpendicular: the side of the plane the profile lies on
  AcGePoint3d World(double x, double r) const { return axisPoint + axisDir * x + upDir * r; }
};

struct AcDbRevolveOptions {
  double draftAngle = 0, twistAngle = 0;
  bool closeToAxis = false;
};

// A planar region bounded by one closed loop.
class AcDbRegion : public AcDbModelerEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDbRegion)
  AcDbRegion() = default;
  // One region for every closed loop the curves form (a curve whose end
  // meets its start, or a closed polyline); the regions are new and belong
  // to no database.
  static Acad::ErrorStatus createFromCurves(const AcArray<AcDbEntity*>& curves, AcArray<AcDbRegion*>& regions);
  const AcDbPolyline& boundary() const { return m_boundary; }
  const char* dxfKind() const override { return "REGION"; }
  bool satText(std::string& text, std::string& error) const override;
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override { return m_boundary.getGeomExtents(extents); }
  AcDbObject* cloneObject() const override { return new AcDbRegion(*this); }

 private:
  explicit AcDbRegion(const AcDbPolyline& boundary) : m_boundary(boundary) {}
  AcDbPolyline m_boundary;
};

class AcDb3dSolid : public AcDbModelerEntity {
 public:
  ACRX_DECLARE_MEMBERS(AcDb3dSolid)
  AcDb3dSolid();
  ~AcDb3dSolid() override;
  AcDb3dSolid(const AcDb3dSolid& other);

  // Revolves a closed planar curve (a closed polyline) or a region about
  // the axis. Fails with eInvalidInput for an open curve (a caller may try
  // a region of it instead) and eGeneralModelingFailure when no valid solid
  // results. Only full revolutions of profiles in a plane through the axis
  // are supported.
  Acad::ErrorStatus createRevolvedSolid(AcDbEntity* pRevEnt, const AcGePoint3d& axisPnt, const AcGeVector3d& axisDir,
                                        double revAngle, double startAngle, const AcDbRevolveOptions& options);
  // As above from a profile already in the axis' half plane.
  Acad::ErrorStatus createFromProfile(const MeridianProfile& profile);

  bool isNull() const;
  double volume() const;  // 0 for a null solid
  bool isValid() const;   // Open CASCADE's checker finds no fault
  const MeridianProfile* profile() const { return m_profile.get(); }
  // The modeller's shape (a TopoDS_Shape), for the file writers.
  const void* shapeHandle() const;

  const char* dxfKind() const override { return "3DSOLID"; }
  bool satText(std::string& text, std::string& error) const override;
  Acad::ErrorStatus getGeomExtents(AcDbExtents& extents) const override;
  // Moves, turns, mirrors or scales uniformly (a solid of revolution).
  Acad::ErrorStatus transformBy(const AcGeMatrix3d& xform) override;
  AcDbObject* cloneObject() const override { return new AcDb3dSolid(*this); }

 private:
  struct Shape;
  std::unique_ptr<Shape> m_shape;
  std::unique_ptr<MeridianProfile> m_profile;
};

// Writes solids to ACIS SAT text (version 7.0).
class AcDbBody {
 public:
  static Acad::ErrorStatus acisOut(const std::string& path, const AcArray<AcDbEntity*>& entities);
};

namespace host::brep {
// The SAT text of a solid of revolution (what acisOut writes).
bool SatText(const AcDb3dSolid& solid, std::string& text, std::string& error);
// STEP (AP214) and STL (meshed within the chordal tolerance) files.
// SAT, STEP and STL files, written the safe way (host/base/safe_write.h);
// false with the file and the reason in error.
bool WriteSat(const AcDb3dSolid& solid, const std::string& path, std::string& error);
// The STEP product is named productName (the file's name when empty).
bool WriteStep(const AcDb3dSolid& solid, const std::string& path, std::string& error,
               const std::string& productName = {});
bool WriteStl(const AcDb3dSolid& solid, const std::string& path, double chordalTolerance, std::string& error);
// The volume of the solid in a STEP file, as Open CASCADE reads it back.
bool StepVolume(const std::string& path, double& volume, std::string& error);
// Whether an STL file is closed: every edge of its triangles is used twice.
bool StlIsClosed(const std::string& path, std::string& error);
// The profile of a planar closed polyline about an axis in its plane.
bool ProfileOf(const AcDbPolyline& outline, const AcGePoint3d& axisPoint, const AcGeVector3d& axisDir,
               MeridianProfile& profile, std::string& error);
}  // namespace host::brep
