#include "host/brep/solid.h"
#include "host/brep/profile_check.h"

#include <BRepAdaptor_Surface.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepCheck_Analyzer.hxx>
#include <BRepGProp.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <BRepBndLib.hxx>
#include <Bnd_Box.hxx>
#include <GProp_GProps.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Shape.hxx>
#include <gp_Ax1.hxx>
#include <gp_Ax2.hxx>
#include <gp_Circ.hxx>

#include <cmath>
#include <numbers>

ACRX_DEFINE_MEMBERS(AcDbRegion, AcDbModelerEntity)
ACRX_DEFINE_MEMBERS(AcDb3dSolid, AcDbModelerEntity)

struct AcDb3dSolid::Shape {
  TopoDS_Shape shape;
};

namespace {
constexpr double kOnAxis = 1e-9;

gp_Pnt Pnt(const AcGePoint3d& p) { return gp_Pnt(p.x, p.y, p.z); }
gp_Dir Dir(const AcGeVector3d& v) { return gp_Dir(v.x, v.y, v.z); }

// Signed area of a closed chain with bulges, counter-clockwise positive.
double SignedArea(const std::vector<MeridianProfile::Vertex>& v) {
  double twice = 0, segments = 0;
  for (std::size_t i = 0; i < v.size(); ++i) {
    const auto& a = v[i];
    const auto& b = v[(i + 1) % v.size()];
    twice += a.x * b.r - b.x * a.r;
    if (a.bulge != 0) {
      const double theta = 4 * std::atan(a.bulge);
      const double chord = std::hypot(b.x - a.x, b.r - a.r);
      const double rad = chord / (2 * std::sin(std::fabs(theta) / 2));
      segments += (theta > 0 ? 1 : -1) * rad * rad / 2 * (std::fabs(theta) - std::sin(std::fabs(theta)));
    }
  }
  return twice / 2 + segments;
}
}  // namespace

namespace host::brep {

bool ProfileOf(const AcDbPolyline& outline, const AcGePoint3d& axisPoint, const AcGeVector3d& axisDir,
               MeridianProfile& profile, std::string& error) {
  const unsigned n = outline.numVerts();
  if (n < 3) {
    error = "the outline has fewer than three vertices";
    return false;
  }
  const AcGeVector3d a = axisDir.normal();
  const AcGeVector3d planeNormal = outline.normal();
  if (std::fabs(planeNormal.dotProduct(a)) > 1e-9) {
    error = "the axis does not lie in the outline's plane";
    return false;
  }
  const AcGeVector3d up = planeNormal.crossProduct(a).normal();
  std::vector<MeridianProfile::Vertex> v;
  double lo = 0, hi = 0;
  for (unsigned i = 0; i < n; ++i) {
    AcGePoint3d p;
    double bulge = 0;
    outline.getPointAt(i, p);
    outline.getBulgeAt(i, bulge);
    const AcGeVector3d d = p - axisPoint;
    const double r = d.dotProduct(up);
    lo = std::min(lo, r);
    hi = std::max(hi, r);
    v.push_back({d.dotProduct(a), r, bulge});
  }
  const double scale = std::max(hi - lo, 1.0);
  if (lo < -1e-9 * scale && hi > 1e-9 * scale) {
    error = "the outline lies on both sides of its axis";
    return false;
  }
  // (x, r) with r away from the axis: below the axis the frame turns over,
  // and bulges (counter-clockwise about the plane normal) change sign.
  const bool below = hi <= 1e-9 * scale && lo < 0;
  for (auto& p : v) {
    if (below) {
      p.r = -p.r;
      p.bulge = -p.bulge;
    }
    if (std::fabs(p.r) <= kOnAxis * scale) p.r = 0;
  }
  if (SignedArea(v) < 0) {
    std::vector<MeridianProfile::Vertex> r(v.size());
    for (std::size_t i = 0; i < v.size(); ++i) {
      r[i] = v[v.size() - 1 - i];
      // The segment from r[i] to r[i+1] is the old one from v[k-1] to v[k], walked back.
      const std::size_t from = (2 * v.size() - 2 - i) % v.size();
      r[i].bulge = -v[from].bulge;
    }
    v = r;
  }
  profile.vertices = v;
  profile.axisPoint = axisPoint;
  profile.axisDir = a;
  profile.upDir = below ? -up : up;
  return true;
}

}  // namespace host::brep

AcDb3dSolid::AcDb3dSolid() : m_shape(std::make_unique<Shape>()) {}
AcDb3dSolid::~AcDb3dSolid() = default;
AcDb3dSolid::AcDb3dSolid(const AcDb3dSolid& other)
    : AcDbModelerEntity(other),
      m_shape(std::make_unique<Shape>(*other.m_shape)),
      m_profile(other.m_profile ? std::make_unique<MeridianProfile>(*other.m_profile) : nullptr) {}

bool AcDb3dSolid::isNull() const { return m_shape->shape.IsNull(); }
const void* AcDb3dSolid::shapeHandle() const { return &m_shape->shape; }

double AcDb3dSolid::volume() const {
  if (isNull()) return 0;
  GProp_GProps props;
  BRepGProp::VolumeProperties(m_shape->shape, props);
  return props.Mass();
}

bool AcDb3dSolid::isValid() const { return !isNull() && BRepCheck_Analyzer(m_shape->shape).IsValid(); }

Acad::ErrorStatus AcDb3dSolid::getGeomExtents(AcDbExtents& extents) const {
  if (isNull()) return Acad::eInvalidExtents;
  Bnd_Box box;
  BRepBndLib::Add(m_shape->shape, box);
  double x0, y0, z0, x1, y1, z1;
  box.Get(x0, y0, z0, x1, y1, z1);
  extents.set({x0, y0, z0}, {x1, y1, z1});
  return Acad::eOk;
}

Acad::ErrorStatus AcDb3dSolid::createFromProfile(const MeridianProfile& profile) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  const auto& v = profile.vertices;
  std::string detail;
  const host::brep::ProfileShape shape = host::brep::CheckProfileShape(profile, detail);
  if (shape == host::brep::ProfileShape::kCrossing) return Acad::eGeneralModelingFailure;
  const gp_Dir normal = Dir(profile.axisDir.crossProduct(profile.upDir));
  BRepBuilderAPI_MakeWire wire;
  for (std::size_t i = 0; i < v.size(); ++i) {
    const auto& a = v[i];
    const auto& b = v[(i + 1) % v.size()];
    const gp_Pnt pa = Pnt(profile.World(a.x, a.r)), pb = Pnt(profile.World(b.x, b.r));
    if (pa.Distance(pb) < 1e-9) continue;
    AcGePoint2d c;
    double radius, s, e;
    if (a.bulge != 0 && host::arcFromBulge({a.x, a.r}, {b.x, b.r}, a.bulge, c, radius, s, e)) {
      // The circle's x direction points away from the axis, so that the
      // revolution is recognised as a torus (or a sphere when centred on it).
      const AcGeVector3d xdir = profile.upDir;
      const gp_Circ circle(gp_Ax2(Pnt(profile.World(c.x, c.y)), normal, Dir(xdir)), radius);
      BRepBuilderAPI_MakeEdge edge = a.bulge > 0 ? BRepBuilderAPI_MakeEdge(circle, pa, pb)
                                                 : BRepBuilderAPI_MakeEdge(circle, pb, pa);
      if (!edge.IsDone()) return Acad::eGeneralModelingFailure;
      wire.Add(edge.Edge());
    } else {
      BRepBuilderAPI_MakeEdge edge(pa, pb);
      if (!edge.IsDone()) return Acad::eGeneralModelingFailure;
      wire.Add(edge.Edge());
    }
    if (!wire.IsDone()) return Acad::eGeneralModelingFailure;
  }
  if (!wire.IsDone() || !wire.Wire().Closed()) return Acad::eGeneralModelingFailure;
  // The plane is known: the axis and the side of it the profile lies on.
  BRepBuilderAPI_MakeFace face(gp_Pln(Pnt(profile.axisPoint), normal), wire.Wire(), true);
  if (!face.IsDone()) return Acad::eGeneralModelingFailure;
  BRepPrimAPI_MakeRevol revol(face.Face(), gp_Ax1(Pnt(profile.axisPoint), Dir(profile.axisDir)), 2 * std::numbers::pi);
  if (!revol.IsDone()) return Acad::eGeneralModelingFailure;
  TopoDS_Shape solid;
  for (TopExp_Explorer ex(revol.Shape(), TopAbs_SOLID); ex.More(); ex.Next()) {
    if (!solid.IsNull()) return Acad::eGeneralModelingFailure;  // one solid expected
    solid = ex.Current();
  }
  // A simple profile on one side of the axis revolves into a valid solid;
  // only when the 2D test cannot tell is the solid itself checked.
  if (solid.IsNull() || (shape == host::brep::ProfileShape::kUnsure && !BRepCheck_Analyzer(solid).IsValid()))
    return Acad::eGeneralModelingFailure;
  m_shape->shape = solid;
  m_profile = std::make_unique<MeridianProfile>(profile);
  return Acad::eOk;
}

Acad::ErrorStatus AcDb3dSolid::createRevolvedSolid(AcDbEntity* pRevEnt, const AcGePoint3d& axisPnt,
                                                   const AcGeVector3d& axisDir, double revAngle, double,
                                                   const AcDbRevolveOptions&) {
  if (!pRevEnt) return Acad::eNullObjectPointer;
  if (std::fabs(revAngle - 2 * std::numbers::pi) > 1e-12) return Acad::eNotImplementedYet;
  const AcDbPolyline* outline = AcDbPolyline::cast(pRevEnt);
  if (const auto* region = AcDbRegion::cast(pRevEnt)) outline = &region->boundary();
  if (!outline) return Acad::eNotThatKindOfClass;
  if (!outline->isClosed()) return Acad::eInvalidInput;  // an open curve bounds no face
  MeridianProfile profile;
  std::string error;
  if (!host::brep::ProfileOf(*outline, axisPnt, axisDir, profile, error)) return Acad::eInvalidInput;
  return createFromProfile(profile);
}

Acad::ErrorStatus AcDbRegion::createFromCurves(const AcArray<AcDbEntity*>& curves, AcArray<AcDbRegion*>& regions) {
  for (AcDbEntity* e : curves) {
    const auto* pl = AcDbPolyline::cast(e);
    if (!pl || pl->numVerts() < 3) continue;
    AcDbPolyline boundary = *pl;
    if (!pl->isClosed()) {
      // A loop that ends where it starts bounds a region too.
      AcGePoint3d first, last;
      pl->getPointAt(0, first);
      pl->getPointAt(pl->numVerts() - 1, last);
      if (first.distanceTo(last) > 1e-6) continue;
      boundary.removeVertexAt(boundary.numVerts() - 1);
    }
    boundary.setClosed(true);
    auto* region = new AcDbRegion(boundary);
    region->setPropertiesFrom(pl);
    regions.append(region);
  }
  return regions.isEmpty() ? Acad::eInvalidInput : Acad::eOk;
}

bool AcDb3dSolid::satText(std::string& text, std::string& error) const { return host::brep::SatText(*this, text, error); }

bool AcDbRegion::satText(std::string&, std::string& error) const {
  error = "regions are not written as ACIS data";
  return false;
}

Acad::ErrorStatus AcDb3dSolid::transformBy(const AcGeMatrix3d& xform) {
  // A solid of revolution follows a move, turn, mirror or uniform scale by
  // its profile: the axis moves, the profile's lengths scale.
  if (!m_profile) return Acad::eNotApplicable;
  if (!xform.isUniScaledOrtho()) return Acad::eCannotScaleNonUniformly;
  MeridianProfile moved = *m_profile;
  const double s = xform.scale();
  moved.axisPoint.transformBy(xform);
  moved.axisDir.transformBy(xform);
  moved.upDir.transformBy(xform);
  moved.axisDir = moved.axisDir.normal();
  moved.upDir = moved.upDir.normal();
  for (auto& v : moved.vertices) v.x *= s, v.r *= s;
  return createFromProfile(moved);
}
