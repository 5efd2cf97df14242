#include "output/outline_report.h"

#include <cmath>

#include "host/db/operations.h"

bool MakeOutlineReport(AcDbObjectId outline, OutlineReport& report) {
  AcDbObjectPointer<AcDbPolyline> pl(outline, AcDb::kForRead);
  if (!pl) return false;
  report.handle = outline.handle().toHex();
  report.bClosed = pl->isClosed();
  const auto& verts = pl->vertices();
  double twiceArea = 0, segments = 0;
  for (std::size_t i = 0; i < verts.size(); ++i) {
    const auto& a = verts[i];
    const auto& b = verts[(i + 1) % verts.size()];
    report.vertices.push_back({a.point.x, a.point.y, a.bulge});
    if (i + 1 == verts.size() && !report.bClosed) break;
    twiceArea += a.point.x * b.point.y - b.point.x * a.point.y;
    const double chord = std::hypot(b.point.x - a.point.x, b.point.y - a.point.y);
    if (a.bulge != 0 && chord > 0) {
      // The circular segment between the chord and the arc, signed like the bulge.
      const double theta = 4 * std::atan(a.bulge);
      const double r = chord / (2 * std::sin(std::fabs(theta) / 2));
      segments += (theta > 0 ? 1 : -1) * r * r / 2 * (std::fabs(theta) - std::sin(std::fabs(theta)));
      report.dLength += r * std::fabs(theta);
    } else {
      report.dLength += chord;
    }
  }
  report.dArea = std::fabs(twiceArea / 2 + segments);
  AcDbExtents ext;
  if (pl->getGeomExtents(ext) == Acad::eOk)
    report.box = {ext.minPoint().x, ext.minPoint().y, ext.maxPoint().x, ext.maxPoint().y};
  return true;
}
