#include "ui/centre_line.h"

#include <cmath>
#include <cstdio>

#include "host/db/operations.h"

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

CentreLineSearch FindCentreLine(const AcArray<AcDbObjectId>& selection) {
  CentreLineSearch r;
  double longest = -1;
  std::vector<double> heights;
  for (AcDbObjectId id : selection) {
    AcDbObjectPointer<AcDbLine> line(id, AcDb::kForRead);
    if (!line) continue;
    const AcGePoint3d a = line->startPoint(), b = line->endPoint();
    const double length = a.distanceTo(b);
    if (length <= 0 || std::fabs(a.y - b.y) > 1e-6 * std::max(1.0, length)) continue;  // not horizontal
    std::string linetype = line->linetype();
    if (host::equalsNoCase(linetype, "ByLayer")) {
      AcDbObjectPointer<AcDbLayerTableRecord> layer(line->layerId(), AcDb::kForRead);
      AcDbObjectPointer<AcDbLinetypeTableRecord> lt(layer ? layer->linetypeObjectId() : AcDbObjectId(), AcDb::kForRead);
      if (lt) linetype = lt->getName();
    }
    const std::string layer = line->layer();
    if (!IsCentreLinetypeName(linetype) && !IsAxisLayerName(layer)) continue;
    char text[200];
    std::snprintf(text, sizeof text, "line %s at y = %g, %g long (linetype %s, layer %s)", id.handle().toHex().c_str(),
                  a.y, length, linetype.c_str(), layer.c_str());
    r.found.push_back(text);
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
