// Chaining the surviving records into the outline polyline, with the arcs of
// the drawing restored as bulges.
#include <cmath>
#include <map>
#include <numbers>

#include "engine/encircle_line.h"
#include "engine/spatial_index.h"
#include "host/db/operations.h"
#include "util/entity_utils.h"
#include "util/layer_switch.h"

namespace {
constexpr double kPi = std::numbers::pi;

// Whether pt lies on the arc: within t of its circle and, in angle, within
// its sweep or within t (in radians, the same number) of either end.
bool IsPointOnArcTol(AcDbObjectId arcId, const AcGePoint3d& pt, double t) {
  AcDbObjectPointer<AcDbArc> arc(arcId, AcDb::kForRead);
  if (!arc) return false;
  const AcGePoint3d c = arc->center();
  if (std::fabs(pt.distanceTo(c) - arc->radius()) > t) return false;
  const double a = AcGeVector2d(pt.x - c.x, pt.y - c.y).angle();
  const double s = arc->startAngle(), e = arc->endAngle();
  const bool nearS = std::fabs(a - s) < t, nearE = std::fabs(a - e) < t;
  if (s > e) return a > s || a < e || nearS || nearE;
  return ((a > s || nearS) && a < e) || nearE;
}

// The arcs among a list of curves that a point lies on, as IsPointOnArc
// answers: only arcs whose circle's box (grown well past the tolerance)
// holds the point are tried, in the order of the list.
class ArcsAt {
 public:
  explicit ArcsAt(const AcArray<AcDbObjectId>& ids) : m_ids(ids) {
    std::vector<engine::Box2> boxes;
    for (int k = 0; k < ids.length(); ++k) {
      AcDbObjectPointer<AcDbArc> arc(ids[k], AcDb::kForRead);
      if (!arc) continue;  // not an arc: never on
      const AcGePoint3d c = arc->center();
      const double r = arc->radius() + 1e-3;
      boxes.push_back({c.x - r, c.y - r, c.x + r, c.y + r});
      m_position.push_back(k);
    }
    m_grid.Build(boxes);
  }
  AcArray<AcDbObjectId> operator()(const AcGePoint3d& pt) {
    AcArray<AcDbObjectId> on;
    m_grid.Candidates({pt.x, pt.y, pt.x, pt.y}, m_near);
    for (std::uint32_t n : m_near) {
      const AcDbObjectId id = m_ids[m_position[n]];
      if (IsPointOnArcTol(id, pt, 0.0001)) on.append(id);
    }
    return on;
  }

 private:
  const AcArray<AcDbObjectId>& m_ids;
  std::vector<int> m_position;  // of each indexed arc in m_ids
  engine::BoxGrid m_grid;
  std::vector<std::uint32_t> m_near;
};

double angleDeg(const AcGePoint3d& a, const AcGePoint3d& b) {
  // A vertical segment gives ±90 through the infinite slope.
  return std::atan((b.y - a.y) / (b.x - a.x)) * 180.0 / kPi;
}

void addVertex(AcDbPolyline* pline, int& index, const AcGePoint3d& p, double bulge) {
  pline->addVertexAt(static_cast<unsigned>(index), AcGePoint2d(p.x, p.y), bulge, -1, -1);
  ++index;
}
}  // namespace

bool CEncircleLine::IsPtExist(const AcArray<AcGePoint3d>& pts, const AcGePoint3d& pt) {
  for (const AcGePoint3d& p : pts)
    if (p.isEqualTo(pt, m_info.m_tolPoint)) return true;
  return false;
}

void CEncircleLine::GetLineInfoPt(const std::vector<CLineInfo>& lines, bool bForward, bool,
                                  AcArray<AcGePoint3d>& pts) {
  // IsPtExist's scan, through a grid of the points held: a point is added
  // unless one held lies within the point tolerance.
  const AcGeTol& tol = m_info.m_tolPoint;
  engine::PointGrid held(tol.equalPoint());
  held.Reserve(static_cast<std::size_t>(pts.length()) + 2 * lines.size());
  for (int k = 0; k < pts.length(); ++k) held.Add(pts[k], static_cast<std::uint32_t>(k));
  auto add = [&](const AcGePoint3d& p) {
    if (held.Any(p, [&](std::uint32_t k) { return pts[static_cast<int>(k)].isEqualTo(p, tol); })) return;
    held.Add(p, static_cast<std::uint32_t>(pts.length()));
    pts.append(p);
  };
  if (bForward) {
    for (const CLineInfo& line : lines) {
      add(line.m_ptStart);
      add(line.m_ptEnd);
    }
  } else {
    for (auto it = lines.rbegin(); it != lines.rend(); ++it) {
      add(it->m_ptEnd);
      add(it->m_ptStart);
    }
  }
}

void CEncircleLine::RemoveCollinearPoints(AcArray<AcGePoint3d>& pts) {
  // Each triple is the last point kept, the point in question and the next
  // one: the middle point goes when the three lie on a line within 1°, and
  // the same last point is then tried with the next two. Built into a new
  // array rather than by removals in place.
  const int n = pts.length();
  if (n < 3) return;
  AcArray<AcGePoint3d> kept(0, 8);
  kept.setPhysicalLength(n);
  kept.append(pts[0]);
  AcGePoint3d mid = pts[1];
  for (int t = 2; t < n; ++t) {
    const AcGePoint3d& next = pts[t];
    const double alpha = angleDeg(kept.last(), mid), beta = angleDeg(mid, next);
    const bool sameLine = std::fabs(alpha - beta) < 1.0;
    const bool bothVertical = std::fabs(std::fabs(alpha) - 90.0) < 1.0 && std::fabs(std::fabs(beta) - 90.0) < 1.0;
    const bool bothHorizontal = std::fabs(alpha) < 1.0 && std::fabs(beta) < 1.0;
    if (!(sameLine || bothVertical || bothHorizontal)) kept.append(mid);
    mid = next;
  }
  kept.append(mid);
  pts = kept;
}

AcArray<AcDbObjectId> CEncircleLine::GetAllArc(AcArray<AcDbObjectId> ids) {
  AcArray<AcDbObjectId> arcs;
  for (AcDbObjectId id : ids) {
    AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
    if (ent && ent->isKindOf(AcDbArc::desc())) arcs.append(id);
  }
  return arcs;
}

AcArray<AcDbObjectId> CEncircleLine::IsPointOnArc(AcArray<AcDbObjectId> ids, AcGePoint3d pt) {
  AcArray<AcDbObjectId> on;
  for (AcDbObjectId id : ids)
    if (IsPointOnArcTol(id, pt, 0.0001)) on.append(id);
  return on;
}

void CEncircleLine::AddPolyLinePt(AcDbPolyline* pPline, AcDbObjectId arcId, AcArray<AcGePoint3d> run, bool bOmitLast,
                                  int& index) {
  AcGePoint3d center, start;
  bool readable = false;
  if (run.length() >= 2) {
    AcDbObjectPointer<AcDbArc> arc(arcId, AcDb::kForRead);
    readable = arc && arc->getStartPoint(start) == Acad::eOk;
    if (readable) center = arc->center();
  }
  if (!readable) {
    for (const AcGePoint3d& p : run) addVertex(pPline, index, p, 0);
    return;
  }
  const AcGePoint3d f = run.first(), l = run.last();
  auto angle = [&](const AcGePoint3d& p) { return AcGeVector2d(p.x - center.x, p.y - center.y).angle(); };
  double bulge;
  if (l.distanceTo(start) > f.distanceTo(start)) {
    // F is the nearer to the arc's start: counter-clockwise from F to L.
    double theta = angle(l) - angle(f);
    if (theta < 0) theta += 2 * kPi;
    bulge = std::tan(theta / 4);
  } else {
    double theta = angle(f) - angle(l);
    if (theta < 0) theta += 2 * kPi;
    bulge = -std::tan(theta / 4);
  }
  addVertex(pPline, index, f, bulge);
  if (!bOmitLast) addVertex(pPline, index, l, 0);
}

void CEncircleLine::DrawPolyLine(AcArray<AcDbObjectId>, AcArray<AcGePoint3d> pts, double dAxis,
                                 AcDbObjectId& result) {
  const CLayerSwitch layer(kOutlineLayer);
  RemoveCollinearPoints(pts);
  if (pts.length() < 2) return;
  pts[0].y = dAxis;
  pts.last().y = dAxis;
  auto* pline = new AcDbPolyline;
  int index = 0;
  AcArray<AcGePoint3d> run;
  bool pending = false;
  const int count = pts.length();
  ArcsAt arcsAt(m_curveIds);
  int i = 0;
  while (i < count) {
    AcArray<AcDbObjectId> cands = arcsAt(pts[i]);
    if (cands.isEmpty()) {
      if (pending) {
        addVertex(pline, index, pts[i - 1], 0);
        pending = false;
      }
      addVertex(pline, index, pts[i], 0);
      ++i;
      continue;
    }
    if (pending) {
      bool onOne = false;
      for (AcDbObjectId arc : cands) onOne = onOne || IsPointOnArcTol(arc, pts[i - 1], 0.01);
      if (onOne) run.append(pts[i - 1]);
      else addVertex(pline, index, pts[i - 1], 0);
    }
    pending = cands.length() >= 2;
    run.append(pts[i]);
    int j = i;
    AcDbObjectId arc = cands.first();
    for (; j < count; ++j) {
      while (!cands.isEmpty() && !IsPointOnArcTol(cands.first(), pts[j], 0.01)) cands.removeFirst();
      if (cands.isEmpty()) break;
      arc = cands.first();
      run.append(pts[j]);
    }
    AddPolyLinePt(pline, arc, run, pending, index);
    run.removeAll();
    i = j;
  }
  if (!run.isEmpty()) AddPolyLinePt(pline, AcDbObjectId::kNull, run, false, index);
  pline->setClosed(true);
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  AcDbObjectId id;
  if (host::appendEntity(db, pline, id) == Acad::eOk) result = id;
}

void CEncircleLine::SetLineLayerAndType(AcArray<AcDbObjectId> ids, CString layer) {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  std::map<CString, AcDbObjectId> linetypes;
  if (m_info.m_bRemoveDashed && db) {
    AcDbObjectPointer<AcDbLayerTable> table(db->layerTableId(), AcDb::kForRead);
    for (AcDbObjectId id : table->recordIds()) {
      AcDbObjectPointer<AcDbLayerTableRecord> rec(id, AcDb::kForRead);
      if (rec) linetypes[rec->getName()] = rec->linetypeObjectId();
    }
  }
  // Each line changes exactly when its layer or linetype id does, so the
  // openings settle that themselves (no state compared before and after).
  AcDbDatabase* layerDb = nullptr;
  AcDbObjectId layerId;  // layer by name, as setLayer(name) finds it in layerDb
  for (AcDbObjectId id : ids) {
    host::editObject(id, AcDbLine::desc(), [&](AcDbObject* obj) {
      auto* line = static_cast<AcDbLine*>(obj);
      const AcDbObjectId layerBefore = line->layerId(), linetypeBefore = line->linetypeId();
      if (m_info.m_bRemoveDashed && host::equalsNoCase(line->linetype(), "ByLayer")) {
        const auto it = linetypes.find(line->layer());
        if (it != linetypes.end() && !it->second.isNull()) line->setLinetype(it->second);
      }
      if (line->database() != layerDb) {
        layerDb = line->database();
        if (!layerDb || host::findLayer(layerDb, layer, layerId) != Acad::eOk) layerId = AcDbObjectId::kNull;
      }
      if (!layerId.isNull()) line->setLayer(layerId);
      return line->layerId() != layerBefore || line->linetypeId() != linetypeBefore;
    });
  }
}

void CEncircleLine::DeleteCloneEnts() {
  for (AcDbObjectId id : util::SelectAllOnLayer(kCloneLayer)) util::EraseEntity(id);
}
