// The axis side of the outline: the closing line along the axis, what lies
// beyond it, and what another direction already holds.
#include <cmath>

#include "engine/encircle_line.h"
#include "engine/line_geometry.h"
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
  for (std::size_t i = 0; i < lines.size();) {
    if (!lines[i].m_bValid) {
      ++i;
      continue;
    }
    const double a = byY ? lines[i].m_ptStart.y : lines[i].m_ptStart.x;
    const double b = byY ? lines[i].m_ptEnd.y : lines[i].m_ptEnd.x;
    if (excluded(a) && excluded(b)) {
      util::EraseEntity(lines[i].m_id);
      lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(i));
    } else {
      ++i;
    }
  }
}

void CEncircleLine::RemoveLineInOtherDir(const std::vector<CLineInfo>& other, std::vector<CLineInfo>& lines) {
  const AcGeTol& line = m_info.m_tolLine;
  const double shrink = m_info.m_tolPoint.equalPoint();
  for (std::size_t i = 0; i < lines.size();) {
    const AcGePoint3d& si = lines[i].m_ptStart;
    const AcGePoint3d& ei = lines[i].m_ptEnd;
    const CVKRect ri = engine::RectOf(lines[i]);
    bool remove = false;
    for (const CLineInfo& o : other) {
      const bool same = (si.isEqualTo(o.m_ptStart, line) && ei.isEqualTo(o.m_ptEnd, line)) ||
                        (si.isEqualTo(o.m_ptEnd, line) && ei.isEqualTo(o.m_ptStart, line));
      const CVKRect rj = engine::RectOf(o);
      const bool covered = engine::TestCollinear(lines[i], o, line.equalPoint()) == engine::Alignment::kCollinear &&
                           rj.ContainsRect(ri);
      // The other box shrunk by the point tolerance on every side, never past its centre.
      CVKRect shrunk(rj);
      const double sx = std::min(shrink, (rj.m_ptMax.x - rj.m_ptMin.x) / 2);
      const double sy = std::min(shrink, (rj.m_ptMax.y - rj.m_ptMin.y) / 2);
      shrunk.m_ptMin.x += sx;
      shrunk.m_ptMax.x -= sx;
      shrunk.m_ptMin.y += sy;
      shrunk.m_ptMax.y -= sy;
      if (same || covered || ri.Overlaps(shrunk)) {
        remove = true;
        break;
      }
    }
    // The record goes; its clone stays for the other direction's result.
    if (remove) lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(i));
    else ++i;
  }
}
