// Cutting the working lines where they cross (pairwise) or into slabs at the
// end points of the other lines.
#include <algorithm>

#include "engine/encircle_line.h"
#include "host/ge/line_seg3d.h"
#include "util/entity_utils.h"

namespace {
CVKRect boxOf(const CLineInfo& line) { return CVKRect(line.m_ptStart, line.m_ptEnd, true); }
}  // namespace

void CEncircleLine::BreakLines(std::vector<CLineInfo>& lines) {
  const AcGeTol tol = m_info.m_tolPoint;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const CVKRect bi = boxOf(lines[i]);
    const AcGeLineSeg3d si(lines[i].m_ptStart, lines[i].m_ptEnd);
    for (std::size_t j = i + 1; j < lines.size(); ++j) {
      if (!bi.Overlaps(boxOf(lines[j]))) continue;
      const AcGeLineSeg3d sj(lines[j].m_ptStart, lines[j].m_ptEnd);
      AcGePoint3d q;
      if (!si.intersectWith(sj, q, tol)) continue;
      lines[i].AddBreakPoint(q, tol);
      lines[j].AddBreakPoint(q, tol);
    }
  }
  SplitLines(lines);
}

void CEncircleLine::BreakLines2(std::vector<CLineInfo>& lines, bool bAllPoints, bool bShiftRight) {
  const AcGeTol tol = m_info.m_tolPoint;
  const double d = m_info.m_dBreakLength;
  // The exclusion box: the drawing's box moved sideways by the break length.
  const CVKRect shifted = m_rect.Translated(AcGeVector3d(bShiftRight ? d : -d, 0, 0));
  std::vector<AcGePoint3d> collected;
  for (const CLineInfo& line : lines) {
    if (!bAllPoints && shifted.ContainsRect(boxOf(line))) continue;
    AddBreakPoint(line.m_ptStart, collected, tol);
    AddBreakPoint(line.m_ptEnd, collected, tol);
  }
  const double w = std::max(m_rect.Width(), 0.0), h = std::max(m_rect.Height(), 0.0);
  AcArray<AcGePoint3d> sorted;
  for (const AcGePoint3d& p : collected) sorted.append(p);
  if (bAllPoints) {
    std::sort(sorted.begin(), sorted.end(), [](const AcGePoint3d& a, const AcGePoint3d& b) { return a.x < b.x; });
    for (CLineInfo& line : lines) CalBreakPoint(line, sorted, true, h);
  } else {
    std::sort(sorted.begin(), sorted.end(), [](const AcGePoint3d& a, const AcGePoint3d& b) { return a.y < b.y; });
    for (CLineInfo& line : lines) CalBreakPoint(line, sorted, false, w);
  }
  SplitLines(lines);
}

void CEncircleLine::CalBreakPoint(CLineInfo& line, const AcArray<AcGePoint3d>& sorted, bool bVertical,
                                  double dExtent) {
  const AcGeTol tol = m_info.m_tolPoint;
  int i = GetBreakIndex(sorted, line.m_ptStart, tol);
  int j = GetBreakIndex(sorted, line.m_ptEnd, tol);
  // A record whose ends are not both among the collected points is not cut.
  if (i == -1 || j == -1) return;
  if (i > j) std::swap(i, j);
  const AcGeLineSeg3d seg(line.m_ptStart, line.m_ptEnd);
  for (int k = i + 1; k < j; ++k) {
    const AcGePoint3d p = sorted[k];
    const AcGeLineSeg3d probe = bVertical
                                    ? AcGeLineSeg3d(AcGePoint3d(p.x, p.y - dExtent, p.z), AcGePoint3d(p.x, p.y + dExtent, p.z))
                                    : AcGeLineSeg3d(AcGePoint3d(p.x - dExtent, p.y, p.z), AcGePoint3d(p.x + dExtent, p.y, p.z));
    AcGePoint3d q;
    if (seg.intersectWith(probe, q, tol)) line.AddBreakPoint(q, tol);
  }
}

void CEncircleLine::AddBreakPoint(AcGePoint3d pt, std::vector<AcGePoint3d>& pts, AcGeTol tol) {
  for (const AcGePoint3d& p : pts)
    if (p.isEqualTo(pt, tol)) return;
  pts.push_back(pt);
}

int CEncircleLine::GetBreakIndex(const AcArray<AcGePoint3d>& pts, AcGePoint3d pt, AcGeTol tol) {
  for (int i = 0; i < pts.length(); ++i)
    if (pts[i].isEqualTo(pt, tol)) return i;
  return -1;
}

bool CEncircleLine::SplitLine(CLineInfo& line, AcArray<AcDbObjectId>& ids) {
  ids.removeAll();
  if (line.m_breakPts.empty() || !line.m_bValid) return false;
  line.Sort();
  std::vector<AcGePoint3d> chain;
  chain.push_back(line.m_ptStart);
  chain.insert(chain.end(), line.m_breakPts.begin(), line.m_breakPts.end());
  chain.push_back(line.m_ptEnd);
  const CString layer = util::GetLayerName(line.m_id);
  util::EraseEntity(line.m_id);
  line.m_id = AcDbObjectId::kNull;
  for (std::size_t k = 0; k + 1 < chain.size(); ++k) {
    const AcDbObjectId id = util::CreateLine(chain[k], chain[k + 1], layer);
    if (!id.isNull()) ids.append(id);
  }
  return true;
}

void CEncircleLine::SplitLines(std::vector<CLineInfo>& lines) {
  AcArray<AcDbObjectId> ids;
  for (std::size_t k = 0; k < lines.size(); ++k) {
    if (!SplitLine(lines[k], ids)) continue;
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(k));
    --k;  // the record that moved into its place comes next
    for (AcDbObjectId id : ids) lines.emplace_back(id);
  }
}
