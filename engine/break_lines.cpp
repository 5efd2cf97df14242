// Cutting the working lines where they cross (pairwise) or into slabs at the
// end points of the other lines.
#include <algorithm>

#include "engine/encircle_line.h"
#include "engine/spatial_index.h"
#include "host/ge/line_seg3d.h"
#include "util/entity_utils.h"

namespace {
CVKRect boxOf(const CLineInfo& line) { return CVKRect(line.m_ptStart, line.m_ptEnd, true); }

// The first index of sorted whose point equals pt within tol, or -1: the
// linear scan's answer, found through a grid of the sorted points.
int FirstEqual(const AcArray<AcGePoint3d>& sorted, const engine::PointGrid& grid, const AcGePoint3d& pt,
               const AcGeTol& tol) {
  int first = -1;
  grid.Any(pt, [&](std::uint32_t k) {
    if ((first < 0 || static_cast<int>(k) < first) && sorted[static_cast<int>(k)].isEqualTo(pt, tol))
      first = static_cast<int>(k);
    return false;
  });
  return first;
}

engine::PointGrid GridOf(const AcArray<AcGePoint3d>& sorted, const AcGeTol& tol) {
  engine::PointGrid grid(tol.equalPoint());
  grid.Reserve(static_cast<std::size_t>(sorted.length()));
  for (int k = 0; k < sorted.length(); ++k) grid.Add(sorted[k], static_cast<std::uint32_t>(k));
  return grid;
}

// Cuts one record by the probes through the sorted points between its ends.
// The points it gains come in probe order, and a point gained from a probe
// at c lies within tol of c across the probes; so a new point can only equal
// one gained from a probe no more than 3·tol before its own coordinate, and
// the search for an equal point held stops there (probeAt keeps the probe
// coordinate of each point gained).
void CutBySlabs(CLineInfo& line, const AcArray<AcGePoint3d>& sorted, const engine::PointGrid& grid, bool bVertical,
                double dExtent, const AcGeTol& tol, std::vector<double>& probeAt) {
  int i = FirstEqual(sorted, grid, line.m_ptStart, tol);
  int j = FirstEqual(sorted, grid, line.m_ptEnd, tol);
  // A record whose ends are not both among the collected points is not cut.
  if (i == -1 || j == -1) return;
  if (i > j) std::swap(i, j);
  const double eps = tol.equalPoint();
  const std::size_t before = line.m_breakPts.size();
  probeAt.clear();
  const AcGeLineSeg3d seg(line.m_ptStart, line.m_ptEnd);
  for (int k = i + 1; k < j; ++k) {
    const AcGePoint3d p = sorted[k];
    const AcGeLineSeg3d probe = bVertical
                                    ? AcGeLineSeg3d(AcGePoint3d(p.x, p.y - dExtent, p.z), AcGePoint3d(p.x, p.y + dExtent, p.z))
                                    : AcGeLineSeg3d(AcGePoint3d(p.x - dExtent, p.y, p.z), AcGePoint3d(p.x + dExtent, p.y, p.z));
    AcGePoint3d q;
    if (!seg.intersectWith(probe, q, tol) || !line.IsInteriorPoint(q, tol)) continue;
    bool held = false;
    for (std::size_t m = 0; m < before && !held; ++m) held = line.m_breakPts[m].isEqualTo(q, tol);
    const double qc = bVertical ? q.x : q.y;
    for (std::size_t m = line.m_breakPts.size(); m > before && !held; --m) {
      if (probeAt[m - 1 - before] < qc - 3 * eps) break;
      held = line.m_breakPts[m - 1].isEqualTo(q, tol);
    }
    if (held) continue;
    line.m_breakPts.push_back(q);
    probeAt.push_back(bVertical ? p.x : p.y);
  }
}
}  // namespace

void CEncircleLine::BreakLines(std::vector<CLineInfo>& lines) {
  const AcGeTol tol = m_info.m_tolPoint;
  // Boxes that overlap (margin 1e-6) share a cell of the grid of boxes grown
  // by 1e-5; the pairs are met in the order of the plain double loop.
  std::vector<engine::Box2> boxes;
  boxes.reserve(lines.size());
  for (const CLineInfo& line : lines) boxes.push_back(engine::BoxOf(line, 1e-5));
  engine::BoxGrid grid;
  grid.Build(boxes);
  std::vector<std::uint32_t> near;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const CVKRect bi = boxOf(lines[i]);
    const AcGeLineSeg3d si(lines[i].m_ptStart, lines[i].m_ptEnd);
    grid.Candidates(boxes[i], near);
    for (std::uint32_t j : near) {
      if (j <= i || !bi.Overlaps(boxOf(lines[j]))) continue;
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
  // The end points without repeats (within tol), in the order met.
  std::vector<AcGePoint3d> collected;
  engine::PointGrid seen(tol.equalPoint());
  seen.Reserve(2 * lines.size());
  auto collect = [&](const AcGePoint3d& p) {
    if (seen.Any(p, [&](std::uint32_t k) { return collected[k].isEqualTo(p, tol); })) return;
    seen.Add(p, static_cast<std::uint32_t>(collected.size()));
    collected.push_back(p);
  };
  for (const CLineInfo& line : lines) {
    if (!bAllPoints && shifted.ContainsRect(boxOf(line))) continue;
    collect(line.m_ptStart);
    collect(line.m_ptEnd);
  }
  const double w = std::max(m_rect.Width(), 0.0), h = std::max(m_rect.Height(), 0.0);
  AcArray<AcGePoint3d> sorted;
  sorted.setPhysicalLength(static_cast<int>(collected.size()));
  for (const AcGePoint3d& p : collected) sorted.append(p);
  if (bAllPoints)
    std::sort(sorted.begin(), sorted.end(), [](const AcGePoint3d& a, const AcGePoint3d& b) { return a.x < b.x; });
  else
    std::sort(sorted.begin(), sorted.end(), [](const AcGePoint3d& a, const AcGePoint3d& b) { return a.y < b.y; });
  const engine::PointGrid grid = GridOf(sorted, tol);
  std::vector<double> probeAt;
  for (CLineInfo& line : lines) CutBySlabs(line, sorted, grid, bAllPoints, bAllPoints ? h : w, tol, probeAt);
  SplitLines(lines);
}

void CEncircleLine::CalBreakPoint(CLineInfo& line, const AcArray<AcGePoint3d>& sorted, bool bVertical,
                                  double dExtent) {
  std::vector<double> probeAt;
  CutBySlabs(line, sorted, GridOf(sorted, m_info.m_tolPoint), bVertical, dExtent, m_info.m_tolPoint, probeAt);
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

namespace {
// Replaces the record by its pieces, appended to pieces: the old line is
// erased and one new line per piece is made on its layer, from the start
// through the break points sorted by distance to the end. A piece too short
// to be a line is left out. Each piece's record is made from the points the
// new line was given (as reading the line back gives them).
void CutIntoPieces(CLineInfo& line, std::vector<CLineInfo>& pieces) {
  line.Sort();
  const AcDbObjectId layer = util::GetLayerId(line.m_id);
  util::EraseEntity(line.m_id);
  line.m_id = AcDbObjectId::kNull;
  AcGePoint3d from = line.m_ptStart;
  auto piece = [&](const AcGePoint3d& to) {
    const AcDbObjectId id = util::CreateLine(from, to, layer);
    if (!id.isNull()) {
      CLineInfo& r = pieces.emplace_back();
      r.m_id = id;
      r.m_ptStart = AcGePoint3d(from.x, from.y, 0);
      r.m_ptEnd = AcGePoint3d(to.x, to.y, 0);
    }
    from = to;
  };
  for (const AcGePoint3d& p : line.m_breakPts) piece(p);
  piece(line.m_ptEnd);
  std::vector<AcGePoint3d>().swap(line.m_breakPts);  // the record is gone: its memory serves the pieces
}
}  // namespace

bool CEncircleLine::SplitLine(CLineInfo& line, AcArray<AcDbObjectId>& ids) {
  ids.removeAll();
  if (line.m_breakPts.empty() || !line.m_bValid) return false;
  std::vector<CLineInfo> pieces;
  CutIntoPieces(line, pieces);
  for (const CLineInfo& r : pieces) ids.append(r.m_id);
  return true;
}

void CEncircleLine::SplitLines(std::vector<CLineInfo>& lines) {
  // The records that are not cut keep their order; the pieces follow, in
  // the order their parents were met. The result is made at its final size
  // (a cut record gives at most one piece more than it has break points).
  const auto isCut = [](const CLineInfo& r) { return !r.m_breakPts.empty() && r.m_bValid; };
  std::size_t size = 0;
  for (const CLineInfo& r : lines) size += isCut(r) ? r.m_breakPts.size() + 1 : 1;
  std::vector<CLineInfo> out;
  out.reserve(size);
  for (CLineInfo& r : lines)
    if (!isCut(r)) out.push_back(std::move(r));
  for (CLineInfo& r : lines)
    if (isCut(r)) CutIntoPieces(r, out);  // clears its break points
  lines = std::move(out);
}
