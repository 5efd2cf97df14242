// The boundary-tracing outline: a frame around the drawing, open on the axis
// side and closed by a line along the axis, and the boundary of the region
// between frame and drawing seen from a point just inside the frame.
#include "engine/encircle_line.h"
#include "host/db/operations.h"
#include "host/ed/document.h"
#include "host/ed/editor_input.h"
#include "util/boundary.h"
#include "util/entity_utils.h"
#include "util/layer_switch.h"

namespace {

constexpr double kFrameMargin = 50;  // frame beyond the drawing's box
constexpr double kAxisOverhang = 10;  // axis line beyond the frame

AcGePoint3d Mid(const AcGePoint3d& a, const AcGePoint3d& b) {
  return AcGePoint3d((a.x + b.x) / 2, (a.y + b.y) / 2, (a.z + b.z) / 2);
}

// A temporary line in model space on the current layer, colour by layer.
AcDbObjectId AddLine(const AcGePoint3d& from, const AcGePoint3d& to) {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  auto* line = new AcDbLine(from, to);
  line->setDatabaseDefaults(db);
  line->setColorIndex(256);
  AcDbObjectId id;
  host::appendEntity(db, line, id);
  return id;
}

}  // namespace

void CEncircleLine::GetEncircleLineByHatch(const AcArray<AcDbObjectId>& ids, AcDbObjectId& result) {
  const CLayerSwitch layer(kCloneLayer);
  AcArray<AcDbObjectId> converted;
  E_RemoveLine_Dir d = E_VIEW_NONE;
  double axis = 0;
  PrepareClones(Driver::kHatch, ids, converted, d, axis);
  if (acDocManagerPtr()->lockDocument(acDocManagerPtr()->curDocument()) == Acad::eOk) {
    acedUpdateDisplay();
    acDocManagerPtr()->unlockDocument(acDocManagerPtr()->curDocument());
  }

  // The frame: the converted entities' box grown by 50, open on the axis side.
  CVKRect r(true);
  for (AcDbObjectId id : converted) {
    AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
    AcDbExtents ext;
    if (!ent || ent->getGeomExtents(ext) != Acad::eOk) continue;
    r.Extend(AcGePoint3d(ext.minPoint().x, ext.minPoint().y, 0));
    r.Extend(AcGePoint3d(ext.maxPoint().x, ext.maxPoint().y, 0));
  }
  r.Grow(kFrameMargin);
  const AcGePoint3d lowerLeft = r.m_ptMin, upperRight = r.m_ptMax;
  const AcGePoint3d upperLeft(lowerLeft.x, upperRight.y, 0), lowerRight(upperRight.x, lowerLeft.y, 0);
  const bool bottom = d != E_VIEW_FROM_ABOVE, top = d != E_VIEW_FROM_BELOW;
  const bool left = d != E_VIEW_FROM_RIGHT, right = d != E_VIEW_FROM_LEFT;
  AcArray<AcDbObjectId> frame(0, 8);
  if (bottom) frame.append(AddLine(lowerLeft, lowerRight));
  if (top) frame.append(AddLine(upperLeft, upperRight));
  if (left) frame.append(AddLine(lowerLeft, upperLeft));
  if (right) frame.append(AddLine(lowerRight, upperRight));

  // The whole frame on screen for the boundary search.
  CVKRect viewBox = r;
  viewBox.Grow(kFrameMargin);
  AcDbViewTableRecord view;
  view.setCenterPoint(AcGePoint2d((viewBox.m_ptMin.x + viewBox.m_ptMax.x) / 2, (viewBox.m_ptMin.y + viewBox.m_ptMax.y) / 2));
  view.setWidth(viewBox.m_ptMax.x - viewBox.m_ptMin.x);
  view.setHeight(viewBox.m_ptMax.y - viewBox.m_ptMin.y);
  acedSetCurrentView(&view, nullptr);

  // The axis line closes the open side and reaches beyond the frame.
  AcDbObjectId axisLine;
  if (d == E_VIEW_FROM_BELOW || d == E_VIEW_FROM_ABOVE)
    axisLine = AddLine(AcGePoint3d(r.m_ptMin.x - kAxisOverhang, axis, 0), AcGePoint3d(r.m_ptMax.x + kAxisOverhang, axis, 0));
  else if (d == E_VIEW_FROM_RIGHT || d == E_VIEW_FROM_LEFT)
    axisLine = AddLine(AcGePoint3d(axis, r.m_ptMax.y + kAxisOverhang, 0), AcGePoint3d(axis, r.m_ptMin.y - kAxisOverhang, 0));

  // The seed, one unit inside the frame on the side away from the axis.
  AcGePoint3d seed;
  switch (d) {
    case E_VIEW_FROM_BELOW: seed = Mid(lowerLeft, lowerRight) + AcGeVector3d(0, 1, 0); break;
    case E_VIEW_FROM_ABOVE: seed = Mid(upperLeft, upperRight) - AcGeVector3d(0, 1, 0); break;
    case E_VIEW_FROM_RIGHT: seed = Mid(lowerRight, upperRight) - AcGeVector3d(1, 0, 0); break;
    case E_VIEW_FROM_LEFT: seed = Mid(lowerLeft, upperLeft) + AcGeVector3d(1, 0, 0); break;
    default: seed = AcGePoint3d(r.m_ptMin.x + 1, r.m_ptMax.y - 1, 0); break;
  }

  const AcArray<AcDbObjectId> boundaries = util::CreateBoundary(seed, "*Model_Space");
  if (!boundaries.isEmpty()) {
    result = boundaries[0];
    r.Grow(-kFrameMargin);
    // The boundary's vertices inside the drawing's box: the frame's corners
    // and the axis line's ends fall away.
    AcArray<AcGePoint3d> pts(0, 8);
    {
      AcDbObjectPointer<AcDbPolyline> boundary(boundaries[0], AcDb::kForRead);
      for (unsigned i = 0; boundary && i < boundary->numVerts(); ++i) {
        AcGePoint3d p;
        if (boundary->getPointAt(i, p) == Acad::eOk) pts.append(p);
      }
    }
    for (int i = 0; i < pts.length(); ++i)
      if (!r.Contains(pts[i])) pts.removeAt(i--);
    DeleteCloneEnts();
    DrawPlainPolyLine(pts, result);
    util::EraseEntity(boundaries[0]);
  }
  for (AcDbObjectId id : frame) util::EraseEntity(id);
  util::EraseEntity(axisLine);
  DeleteCloneEnts();
  SetLayersShow(true);
}
