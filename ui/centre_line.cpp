#include "ui/centre_line.h"

#include <cmath>
#include <cstdio>
#include <numbers>
#include <unordered_map>

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

// What a linetype or layer record says about centre lines, looked up once
// per record: a sheet holds thousands of lines on a handful of layers.
class CentreMarks {
 public:
  struct Linetype {
    std::string name;
    bool centre = false;
  };
  struct Layer {
    std::string name;
    bool axis = false;
    AcDbObjectId linetype;
  };
  const Linetype& linetype(AcDbObjectId id) {
    auto [it, added] = m_linetypes.try_emplace(id);
    if (added) {
      AcDbObjectPointer<AcDbLinetypeTableRecord> rec(id, AcDb::kForRead);
      it->second.name = rec ? std::string(rec->getName()) : "ByLayer";
      it->second.centre = IsCentreLinetypeName(it->second.name);
    }
    return it->second;
  }
  const Layer& layer(AcDbObjectId id) {
    auto [it, added] = m_layers.try_emplace(id);
    if (added) {
      AcDbObjectPointer<AcDbLayerTableRecord> rec(id, AcDb::kForRead);
      if (rec) {
        it->second.name = rec->getName();
        it->second.linetype = rec->linetypeObjectId();
      }
      it->second.axis = IsAxisLayerName(it->second.name);
    }
    return it->second;
  }

 private:
  std::unordered_map<AcDbObjectId, Linetype> m_linetypes;
  std::unordered_map<AcDbObjectId, Layer> m_layers;
};

}  // namespace

CentreLineSearch FindCentreLine(const AcArray<AcDbObjectId>& selection) {
  CentreLineSearch r;
  CentreMarks marks;
  double longest = -1;
  std::vector<double> heights;
  int slanted = 0;
  for (AcDbObjectId id : selection) {
    AcDbObjectPointer<AcDbLine> line(id, AcDb::kForRead);
    if (!line) continue;
    const AcGePoint3d a = line->startPoint(), b = line->endPoint();
    const double length = a.distanceTo(b);
    if (length <= 0) continue;
    const CentreMarks::Layer& layer = marks.layer(line->layerId());
    const CentreMarks::Linetype* linetype = &marks.linetype(line->linetypeId());
    if (host::equalsNoCase(linetype->name, "ByLayer")) {
      const CentreMarks::Linetype& ofLayer = marks.linetype(layer.linetype);
      if (ofLayer.name != "ByLayer") linetype = &ofLayer;  // a layer without a linetype keeps ByLayer
    }
    if (!linetype->centre && !layer.axis) continue;
    // Every centre line is listed; only a horizontal one can be the axis,
    // since the outline is computed above a horizontal axis.
    const bool horizontal = std::fabs(a.y - b.y) <= 1e-6 * std::max(1.0, length);
    char text[320];
    std::snprintf(text, sizeof text, "line %s %s, %g long (linetype %s, layer %s)", id.handle().toHex().c_str(),
                  Placement(a, b, length, horizontal).c_str(), length, linetype->name.c_str(), layer.name.c_str());
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
