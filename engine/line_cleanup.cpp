// Merging, de-duplicating and trimming the records.
#include <cmath>

#include "engine/encircle_line.h"
#include "engine/line_geometry.h"
#include "engine/spatial_index.h"
#include "util/entity_utils.h"

void CEncircleLine::RemoveCrossLine(std::vector<CLineInfo>& lines) {
  const double fine = m_info.m_tolFine.equalPoint();
  // A partner's box overlaps record i's box: the candidates come from a grid
  // of the boxes, grown by a margin, and a record that absorbs another is
  // listed again under its grown box. They are tried in vector order.
  const std::size_t n = lines.size();
  constexpr double kPad = 1e-5;
  std::vector<engine::Box2> boxes;
  boxes.reserve(n);
  for (const CLineInfo& line : lines) boxes.push_back(engine::BoxOf(line, kPad));
  engine::BoxGrid grid;
  grid.Build(boxes);
  std::vector<char> gone(n, 0);
  std::vector<std::uint32_t> near;
  for (std::size_t i = 0; i < n; ++i) {
    if (!lines[i].m_bValid) continue;
    const CLineInfo& a = lines[i];
    const bool axisParallel =
        std::fabs(a.m_ptStart.x - a.m_ptEnd.x) < fine || std::fabs(a.m_ptStart.y - a.m_ptEnd.y) < fine;
    if (!axisParallel) continue;
    std::size_t partner = n;
    grid.Candidates(engine::BoxOf(a, kPad), near);
    for (std::uint32_t j : near) {
      if (j <= i || gone[j]) continue;
      if (engine::TestCollinear(a, lines[j], fine) == engine::Alignment::kCollinear &&
          engine::RectOf(a).Overlaps(engine::RectOf(lines[j]))) {
        partner = j;
        break;
      }
    }
    if (partner == n) continue;
    // Record j absorbs i: the union from its upper-left to its lower-right corner.
    CLineInfo& b = lines[partner];
    util::EraseEntity(a.m_id);
    util::EraseEntity(b.m_id);
    CVKRect u = engine::RectOf(a);
    u.Extend(b.m_ptStart);
    u.Extend(b.m_ptEnd);
    b.m_ptStart = AcGePoint3d(u.m_ptMin.x, u.m_ptMax.y, 0);
    b.m_ptEnd = AcGePoint3d(u.m_ptMax.x, u.m_ptMin.y, 0);
    b.m_id = util::CreateLine(b.m_ptStart, b.m_ptEnd);
    grid.Add(static_cast<std::uint32_t>(partner), engine::BoxOf(b, kPad));
    gone[i] = 1;
  }
  engine::EraseMarked(lines, gone);
}

void CEncircleLine::RemoveRepeatLine2(std::vector<CLineInfo>& lines) {
  const AcGeTol& tol = m_info.m_tolPoint;
  const double t = m_info.m_tolLine.equalPoint();
  // Only a record near record i can be its duplicate or cover it or be
  // covered by it: the candidates come from a grid of boxes grown by the
  // point tolerance, and are tried in vector order, later records only.
  const std::size_t n = lines.size();
  std::vector<engine::Box2> boxes;
  boxes.reserve(n);
  for (const CLineInfo& line : lines) boxes.push_back(engine::BoxOf(line, tol.equalPoint() + 1e-5));
  engine::BoxGrid grid;
  grid.Build(boxes);
  std::vector<char> gone(n, 0);
  std::vector<std::uint32_t> near;
  auto drop = [&](std::size_t k) {
    util::EraseEntity(lines[k].m_id);
    gone[k] = 1;
  };
  for (std::size_t i = 0; i < n; ++i) {
    if (gone[i] || !lines[i].m_bValid) continue;
    if (lines[i].m_ptStart.isEqualTo(lines[i].m_ptEnd, tol)) {
      // A zero-length record ends the whole call: later duplicates wait for the next one.
      drop(i);
      break;
    }
    grid.Candidates(boxes[i], near);
    for (std::uint32_t j : near) {
      if (j <= i || gone[j]) continue;
      if (lines[i].IsEqual(lines[j], tol)) {
        drop(i);  // of two duplicates the earlier goes
        break;
      }
      if (engine::TestCollinear(lines[i], lines[j], t) != engine::Alignment::kCollinear) continue;
      const CVKRect ri = engine::RectOf(lines[i]), rj = engine::RectOf(lines[j]);
      if (ri.ContainsRect(rj)) {
        drop(j);  // the covered one goes; this i is done
        break;
      }
      if (rj.ContainsRect(ri)) {
        drop(i);
        break;
      }
    }
  }
  engine::EraseMarked(lines, gone);
}

void CEncircleLine::RemoveShortLine(std::vector<CLineInfo>& lines) {
  const AcGeTol& tol = m_info.m_tolPoint;
  // A point lies on a record only inside the record's box grown by the
  // tolerance; whether some other record holds it does not depend on the
  // order of the scan, but on which records are still there.
  const std::size_t n = lines.size();
  std::vector<engine::Box2> boxes;
  boxes.reserve(n);
  for (const CLineInfo& line : lines) boxes.push_back(engine::BoxOf(line, 2 * tol.equalPoint() + 1e-6));
  engine::BoxGrid grid;
  grid.Build(boxes);
  std::vector<char> gone(n, 0);
  std::vector<std::uint32_t> near;
  auto heldByOther = [&](std::size_t i, const AcGePoint3d& p) {
    grid.Candidates({p.x, p.y, p.x, p.y}, near);
    for (std::uint32_t j : near)
      if (j != i && !gone[j] && engine::IsPointOnSegment(p, lines[j].m_ptStart, lines[j].m_ptEnd, tol)) return true;
    return false;
  };
  for (std::size_t i = 0; i < n; ++i) {
    const CLineInfo& r = lines[i];
    if (!r.m_bValid || r.m_ptStart.distanceTo(r.m_ptEnd) >= 0.5) continue;
    // A short record that bridges two others stays.
    if (heldByOther(i, r.m_ptStart) && heldByOther(i, r.m_ptEnd)) continue;
    util::EraseEntity(r.m_id);
    gone[i] = 1;
  }
  engine::EraseMarked(lines, gone);
}

void CEncircleLine::RemoveLineByWalter(std::vector<CLineInfo>& lines, E_RemoveLine_Dir dir) {
  // X = 0 means "not yet set": a coordinate of exactly 0 lets the next value in.
  double x = 0.0;
  for (const CLineInfo& r : lines)
    for (double v : {r.m_ptStart.x, r.m_ptEnd.x}) {
      if (dir == 2) {
        if (v > x) x = v;
      } else if (x > v || x == 0.0) {
        x = v;
      }
    }
  if (x == 0.0) return;
  const double w = m_info.m_dBreakLength;
  // The records only: their clones stay.
  std::erase_if(lines, [&](const CLineInfo& r) {
    return std::fabs(x - r.m_ptStart.x) > w && std::fabs(x - r.m_ptEnd.x) > w;
  });
}
