#pragma once
// Finding the tool's axis in a selection: the longest horizontal line drawn
// as a centre line (its linetype, or its layer's when by layer, names a
// centre or dash-dot type; or its layer is named like an axis).
#include <string>
#include <vector>

#include "host/base/ac_array.h"
#include "host/db/object_id.h"

struct CentreLineSearch {
  bool bFound = false;
  double dY = 0;                     // the axis height
  AcDbObjectId line;                 // the longest candidate
  std::vector<std::string> found;    // every centre line, of any direction, described
  std::string problem;               // why none could be chosen
};

CentreLineSearch FindCentreLine(const AcArray<AcDbObjectId>& selection);

// Whether a linetype or layer name marks a centre line.
bool IsCentreLinetypeName(const std::string& name);
bool IsAxisLayerName(const std::string& name);
