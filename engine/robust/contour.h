#pragma once
// The contour of a selection: the curves that draw the part's edges, in
// drawing coordinates, with block references opened up at every depth.
// Contour is what is drawn continuous (the linetype after BYLAYER and BYBLOCK
// are resolved at every level), is not a dimension (a dimension entity, a
// line on a dimension layer, or a line ending at an arrowhead of an exploded
// dimension), is not on a construction layer and is a curve (not text,
// hatch, point or solid). Centre lines
// are collected apart for finding the axis.
#include <string>
#include <vector>

#include "engine/robust/geometry.h"
#include "host/base/ac_array.h"
#include "host/db/object_id.h"

namespace robust {

struct CentreLine {
  P2 a, b;
  std::string handle, linetype, layer;
};

struct Contour {
  std::vector<Seg> curves;               // lines and arcs; Seg::source indexes sources
  std::vector<std::string> sources;      // the handle of each selected entity the curves came from
  std::vector<CentreLine> centreLines;   // dash-dot lines of the selection
  int leftOutDashed = 0, leftOutDimension = 0, leftOutOther = 0;
  std::vector<std::string> problems;     // entities that could not be read, by handle
};

// Whether a linetype or layer name marks a dimension layer, a dashed type.
bool IsDimensionLayerName(const std::string& name);
// Whether a layer holds construction lines (named so, or 辅助线).
bool IsConstructionLayerName(const std::string& name);

Contour CollectContour(const AcArray<AcDbObjectId>& selection, double chordTol);
// The centre lines CollectContour finds, without converting the curves.
std::vector<CentreLine> CollectCentreLines(const AcArray<AcDbObjectId>& selection);

}  // namespace robust
