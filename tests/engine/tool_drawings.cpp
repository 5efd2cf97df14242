#include "tool_drawings.h"

#include "engine/vk_rect.h"

namespace tooltest {

namespace {
class Runner : public CEncircleLine {
 public:
  using CEncircleLine::CEncircleLine;
};
}  // namespace

AcArray<AcDbObjectId> DrawTool(AcDbDatabase* db, const Profile& p, AcDbObjectId block, bool asPolyline,
                               bool annotationsInModelSpace) {
  AcArray<AcDbObjectId> ids;
  const auto& pts = p.points;
  for (const double side : {1.0, -1.0}) {
    if (asPolyline) {
      auto* pl = new AcDbPolyline;
      for (std::size_t i = 0; i < pts.size(); ++i)
        pl->addVertexAt(static_cast<unsigned>(i), AcGePoint2d(pts[i].x, side * pts[i].y), side * pts[i].bulge);
      ids.append(put(db, pl, "0", nullptr, block));
    } else {
      for (std::size_t i = 0; i + 1 < pts.size(); ++i) {
        const AcGePoint2d a(pts[i].x, side * pts[i].y), b(pts[i + 1].x, side * pts[i + 1].y);
        const double bulge = side * pts[i].bulge;
        AcGePoint2d c;
        double r, s, e;
        if (bulge != 0 && host::arcFromBulge(a, b, bulge, c, r, s, e))
          ids.append(put(db, new AcDbArc(AcGePoint3d(c.x, c.y, 0), r, s, e), "0", nullptr, block));
        else
          ids.append(put(db, new AcDbLine(AcGePoint3d(a.x, a.y, 0), AcGePoint3d(b.x, b.y, 0)), "0", nullptr, block));
      }
    }
  }
  // Silhouette lines across the axis at every step of the profile.
  for (std::size_t i = 1; i + 1 < pts.size(); ++i)
    if (pts[i].y > 0 && std::fabs(pts[i].x - pts[i + 1].x) > 1e-9 && std::fabs(pts[i].y - pts[i + 1].y) > 1e-9)
      ids.append(put(db, new AcDbLine(AcGePoint3d(pts[i].x, -pts[i].y, 0), AcGePoint3d(pts[i].x, pts[i].y, 0)), "0",
                     nullptr, block));
  const double left = pts.front().x, right = pts.back().x;
  double top = 0;
  for (const auto& v : pts) top = std::max(top, v.y);
  ids.append(put(db, new AcDbLine(AcGePoint3d(left - 3, 0, 0), AcGePoint3d(right + 3, 0, 0)), "CENTER_LINES", "CENTER",
                 block));
  ids.append(put(db, new AcDbLine(AcGePoint3d(left + 1, top * 0.4, 0), AcGePoint3d(right - 1, top * 0.4, 0)), "HIDDEN",
                 "DASHED", block));
  const AcDbObjectId notes = annotationsInModelSpace ? AcDbObjectId::kNull : block;
  ids.append(put(db, new AcDbLine(AcGePoint3d(left, top + 6, 0), AcGePoint3d(right, top + 6, 0)), "尺寸线", nullptr,
                 notes));
  ids.append(put(db, new AcDbText(AcGePoint3d(left, top + 8, 0), "D=" + std::to_string(2 * top), 2.5), "尺寸线",
                 nullptr, notes));
  auto* hatch = new AcDbHatch;
  hatch->appendLoop({0, {{{left + 1, 0.5}, 0}, {{left + 2, 0.5}, 0}, {{left + 2, 1.5}, 0}}});
  ids.append(put(db, hatch, "HATCH", nullptr, block));
  return ids;
}

AcDbObjectId RunOutline(AcDbDatabase* db, const AcArray<AcDbObjectId>& selection, const AcGePoint3d& centre,
                        CEncircleCalInfo info, int driver) {
  CVKRect box(true);
  for (AcDbObjectId id : selection) {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    AcDbExtents ext;
    if (e && e->getGeomExtents(ext) == Acad::eOk) box.Extend(ext);
  }
  auto* axis = new AcDbLine(AcGePoint3d(box.m_ptMin.x - 10, centre.y, 0), AcGePoint3d(box.m_ptMax.x + 10, centre.y, 0));
  axis->setColorIndex(256);
  AcDbObjectId axisId;
  host::appendEntity(db, axis, axisId);
  info.m_idMidLine = axisId;
  Runner engine(info);
  AcDbObjectId result;
  if (driver == 1) engine.GetEncircleLine(selection, result);
  else if (driver == 2) engine.GetEncircleLine2(selection, result);
  else if (driver == 4) engine.GetEncircleLineByHatch(selection, result);
  else engine.GetEncircleLine3(selection, result);
  host::eraseObject(axisId);
  return result;
}

std::vector<Vertex> VerticesOf(AcDbObjectId polyline) {
  std::vector<Vertex> out;
  AcDbObjectPointer<AcDbPolyline> p(polyline, AcDb::kForRead);
  if (!p) return out;
  for (const auto& v : p->vertices()) out.push_back({v.point.x, v.point.y, v.bulge});
  return out;
}

}  // namespace tooltest
