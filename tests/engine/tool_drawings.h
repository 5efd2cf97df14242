#pragma once
// Realistic tool drawings built in the host database, and the single
// outline run the way the dialog does it: a temporary axis line through the
// centre point over the selection's box ± 10, then the third driver.
#include <cmath>
#include <numbers>
#include <vector>

#include "engine/encircle_line.h"
#include "host/db/operations.h"
#include "../host/db/db_helpers.h"

namespace tooltest {

struct Vertex {
  double x, y, bulge;
};

// Adds an entity on a layer (created when missing), with a linetype by name.
inline AcDbObjectId put(AcDbDatabase* db, AcDbEntity* e, const char* layer = "0", const char* linetype = nullptr,
                        AcDbObjectId block = AcDbObjectId::kNull) {
  AcDbObjectId layerId;
  host::findLayer(db, layer, layerId, true);
  e->setLayer(layerId);
  if (linetype) e->setLinetype(testdb::Linetype(db, linetype));
  AcDbObjectId id;
  host::appendEntity(db, e, id, block);
  return id;
}

// The profile of a tool above its axis (y = 0), as (x, y) corners from the
// left end on the axis to the right end on the axis, with the arc of a
// corner given by a bulge on the segment that starts at a point.
struct Profile {
  std::vector<Vertex> points;
};

// Lines and arcs of the profile and its mirror image below the axis, the
// vertical silhouette lines at every step, a centre line, hidden lines, a
// dimension on "尺寸线", a text and a hatch. Returns every id (the selection).
// With annotationsInModelSpace the dimension line and text go to model
// space even when the tool is drawn into a block.
AcArray<AcDbObjectId> DrawTool(AcDbDatabase* db, const Profile& p, AcDbObjectId block = AcDbObjectId::kNull,
                               bool asPolyline = false, bool annotationsInModelSpace = false);

// Runs the single outline; the centre point is on the axis. driver: 1, 2
// or 3 for GetEncircleLine, 2 or 3, 4 for GetEncircleLineByHatch.
AcDbObjectId RunOutline(AcDbDatabase* db, const AcArray<AcDbObjectId>& selection, const AcGePoint3d& centre,
                        CEncircleCalInfo info = CEncircleCalInfo(), int driver = 3);

std::vector<Vertex> VerticesOf(AcDbObjectId polyline);

}  // namespace tooltest
