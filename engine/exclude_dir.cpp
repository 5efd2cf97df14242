// The axis side of the outline: the closing line along the axis, what lies
// beyond it, and what another direction already holds.
#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/encircle_line.h"
#include "engine/line_geometry.h"
#include "engine/spatial_index.h"
#include "util/entity_utils.h"

AcDbObjectId CEncircleLine::CreateTempLine(E_RemoveLine_Dir dir, double dCoord, std::vector<CLineInfo>& lines) {
  // With no records there is nothing to span: no line is made.
  if (lines.empty()) return AcDbObjectId::kNull;
  CVKRect r(true);
  for (const CLineInfo& line : lines) {
    r.Extend(line.m_ptStart);
    r.Extend(line.m_ptEnd);
  }
  r.m_ptMin.x -= 50.0;
  r.m_ptMax.x += 50.0;
  AcGePoint3d p1, p2;
  if (dir == 0 || dir == 1) {
    p1 = AcGePoint3d(r.m_ptMin.x - 10.0, dCoord, 0);
    p2 = AcGePoint3d(r.m_ptMax.x + 10.0, dCoord, 0);
  } else {
    p1 = AcGePoint3d(dCoord, r.m_ptMax.y + 10.0, 0);
    p2 = AcGePoint3d(dCoord, r.m_ptMin.y - 10.0, 0);
  }
  const AcDbObjectId id = util::CreateLine(p1, p2);
  CLineInfo temp;
  temp.m_id = id;
  temp.m_ptStart = p1;
  temp.m_ptEnd = p2;
  temp.m_bValid = false;  // measured against, never removed or moved
  lines.push_back(temp);
  return id;
}

void CEncircleLine::RemoveLineInExcludeDir(E_RemoveLine_Dir dir, double dCoord, std::vector<CLineInfo>& lines) {
  if (dir == E_VIEW_NONE) return;
  const double t = m_info.m_tolPoint.equalPoint();
  const bool byY = dir == 0 || dir == 1;
  auto excluded = [&](double v) {
    if (std::fabs(v - dCoord) < t) return true;  // on the line counts
    return (dir == 0 || dir == 3) ? v > dCoord : v < dCoord;
  };
  std::erase_if(lines, [&](const CLineInfo& r) {
    if (!r.m_bValid) return false;
    const double a = byY ? r.m_ptStart.y : r.m_ptStart.x;
    const double b = byY ? r.m_ptEnd.y : r.m_ptEnd.x;
    if (!excluded(a) || !excluded(b)) return false;
    util::EraseEntity(r.m_id);
    return true;
  });
}

void CEncircleLine::RemoveLineInOtherDir(const std::vector<CLineInfo>& other, std::vector<CLineInfo>& lines) {
  const AcGeTol& line = m_info.m_tolLine;
  const double shrink = m_info.m_tolPoint.equalPoint();
  // Each rule needs the two boxes to meet within the line tolerance, so the
  // candidates come from a grid of the other records' boxes; whether any of
  // them strikes does not depend on the order in which they are tried.
  std::vector<engine::Box2> boxes;
  boxes.reserve(other.size());
  for (const CLineInfo& o : other) boxes.push_back(engine::BoxOf(o, line.equalPoint() + 1e-5));
  engine::BoxGrid grid;
  grid.Build(boxes);
  std::vector<std::uint32_t> near;
  std::erase_if(lines, [&](const CLineInfo& rec) {
    const AcGePoint3d& si = rec.m_ptStart;
    const AcGePoint3d& ei = rec.m_ptEnd;
    const CVKRect ri = engine::RectOf(rec);
    grid.Candidates(engine::BoxOf(rec, line.equalPoint() + 1e-5), near);
    for (std::uint32_t j : near) {
      const CLineInfo& o = other[j];
      const bool same = (si.isEqualTo(o.m_ptStart, line) && ei.isEqualTo(o.m_ptEnd, line)) ||
                        (si.isEqualTo(o.m_ptEnd, line) && ei.isEqualTo(o.m_ptStart, line));
      const CVKRect rj = engine::RectOf(o);
      const bool covered = engine::TestCollinear(rec, o, line.equalPoint()) == engine::Alignment::kCollinear &&
                           rj.ContainsRect(ri);
      // The other box shrunk by the point tolerance on every side, never past its centre.
      CVKRect shrunk(rj);
      const double sx = std::min(shrink, (rj.m_ptMax.x - rj.m_ptMin.x) / 2);
      const double sy = std::min(shrink, (rj.m_ptMax.y - rj.m_ptMin.y) / 2);
      shrunk.m_ptMin.x += sx;
      shrunk.m_ptMax.x -= sx;
      shrunk.m_ptMin.y += sy;
      shrunk.m_ptMax.y -= sy;
      // The record goes; its clone stays for the other direction's result.
      if (same || covered || ri.Overlaps(shrunk)) return true;
    }
    return false;
  });
}
