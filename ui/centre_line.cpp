#include "ui/centre_line.h"

#include <cmath>
#include <cstdio>
#include <numbers>

#include "host/db/operations.h"
#include "util/shown_number.h"

bool IsCentreLinetypeName(const std::string& name) {
  const std::string n = host::foldCase(name);
  for (const char* word : {"CENTER", "CENTRE", "DASHDOT", "点画线"})
    if (n.find(word) != std::string::npos) return true;
  return false;
}

bool IsAxisLayerName(const std::string& name) {
  const std::string n = host::foldCase(name);
  for (const char* word : {"CENTER", "CENTRE", "AXIS", "中心线"})
    if (n.find(word) != std::string::npos) return true;
  return false;
}

namespace {

// Where a centre line lies, in the words a designer would use.
std::string Placement(const AcGePoint3d& a, const AcGePoint3d& b, double length, bool horizontal) {
  char text[120];
  if (horizontal) {
    std::snprintf(text, sizeof text, "at y = %g", Shown(a.y));
  } else if (std::fabs(a.x - b.x) <= 1e-6 * std::max(1.0, length)) {
    std::snprintf(text, sizeof text, "vertical at x = %g", Shown(a.x));
  } else {
    double degrees = std::atan2(b.y - a.y, b.x - a.x) * 180 / std::numbers::pi;
    if (degrees < 0) degrees += 180;
    std::snprintf(text, sizeof text, "at %g° from (%g, %g) to (%g, %g)", degrees, Shown(a.x), Shown(a.y), Shown(b.x),
                  Shown(b.y));
  }
  return text;
}

}  // namespace

CentreLineSearch FindCentreLine(const AcArray<AcDbObjectId>& selection) {
  CentreLineSearch r;
  double longest = -1;
  std::vector<double> heights;
  int slanted = 0;
  for (AcDbObjectId id : selection) {
    AcDbObjectPointer<AcDbLine> line(id, AcDb::kForRead);
    if (!line) continue;
    const AcGePoint3d a = line->startPoint(), b = line->endPoint();
    const double length = a.distanceTo(b);
    if (length <= 0) continue;
    std::string linetype = line->linetype();
    if (host::equalsNoCase(linetype, "ByLayer")) {
      AcDbObjectPointer<AcDbLayerTableRecord> layer(line->layerId(), AcDb::kForRead);
      AcDbObjectPointer<AcDbLinetypeTableRecord> lt(layer ? layer->linetypeObjectId() : AcDbObjectId(), AcDb::kForRead);
      if (lt) linetype = lt->getName();
    }
    const std::string layer = line->layer();
    if (!IsCentreLinetypeName(linetype) && !IsAxisLayerName(layer)) continue;
    // Every centre line is listed; only a horizontal one can be the axis,
    // since the outline is computed above a horizontal axis.
    const bool horizontal = std::fabs(a.y - b.y) <= 1e-6 * std::max(1.0, length);
    char text[320];
    std::snprintf(text, sizeof text, "line %s %s, %g long (linetype %s, layer %s)", id.handle().toHex().c_str(),
                  Placement(a, b, length, horizontal).c_str(), length, linetype.c_str(), layer.c_str());
    r.found.push_back(text);
    if (!horizontal) {
      ++slanted;
      continue;
    }
    heights.push_back(a.y);
    if (length > longest) {
      longest = length;
      r.line = id;
      r.dY = a.y;
    }
  }
  if (heights.empty()) {
    r.problem = "no horizontal centre line (a CENTER, CENTRE, DASHDOT or 点画线 linetype, or a layer named like "
                "center, axis or 中心线) is in the selection";
    if (slanted > 0)
      r.problem += "; its " + std::to_string(slanted) + " other centre line" + (slanted == 1 ? " is" : "s are") +
                   " not horizontal, and a tool is computed above a horizontal axis";
    return r;
  }
  for (double h : heights)
    if (std::fabs(h - heights.front()) > 1e-6) {
      r.problem = "the centre lines of the selection lie at different heights";
      return r;
    }
  r.bFound = true;
  return r;
}
