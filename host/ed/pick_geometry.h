#pragma once
// Whether an entity lies inside a rectangle or touches it, judged by its
// true geometry in the XY plane: lines, exact arcs (of arcs, circles and
// polyline bulges), curves finely sampled, block references by their parts.
// Entities without curve geometry (text, hatches) are judged by their
// extents.
#include "host/ge/vectors.h"

class AcDbEntity;

namespace host::ed {

struct PickBox {
  double xmin, ymin, xmax, ymax;
  static PickBox fromCorners(const AcGePoint3d& a, const AcGePoint3d& b);
};

// Every part of the entity lies within the box (edges included).
bool liesInside(const AcDbEntity& entity, const PickBox& box);
// Some part of the entity lies within the box or crosses its edges.
bool touches(const AcDbEntity& entity, const PickBox& box);

}  // namespace host::ed
