// Orienting, ordering and connecting the visible pieces of one direction.
#include <algorithm>
#include <iterator>

#include "engine/encircle_line.h"
#include "engine/line_geometry.h"
#include "engine/spatial_index.h"
#include "host/ge/line_seg3d.h"

void CEncircleLine::UpdateLineStartEndPt(E_RemoveLine_Dir dir, std::vector<CLineInfo>& lines) {
  for (CLineInfo& line : lines) engine::OrientForView(dir, line.m_ptStart, line.m_ptEnd);
}

void CEncircleLine::SortLineInfos(std::vector<CLineInfo>& lines, bool bByX) {
  if (bByX)
    std::sort(lines.begin(), lines.end(),
              [](const CLineInfo& a, const CLineInfo& b) { return a.m_ptStart.x < b.m_ptStart.x; });
  else
    std::sort(lines.begin(), lines.end(),
              [](const CLineInfo& a, const CLineInfo& b) { return a.m_ptStart.y > b.m_ptStart.y; });
}

void CEncircleLine::ConnectBreakLine(E_RemoveLine_Dir dir, std::vector<CLineInfo>& lines) {
  UpdateLineStartEndPt(dir, lines);
  const bool byX = dir == 0 || dir == 1;
  SortLineInfos(lines, byX);
  // Every gap gets a straight connector, whatever its length or direction
  // (a backward jump over an overlap too).
  std::vector<CLineInfo> connectors;
  for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
    if (lines[i + 1].m_ptStart.isEqualTo(lines[i].m_ptEnd, m_info.m_tolPoint)) continue;
    CLineInfo c;
    c.m_ptStart = lines[i].m_ptEnd;
    c.m_ptEnd = lines[i + 1].m_ptStart;
    connectors.push_back(c);
  }
  lines.insert(lines.end(), connectors.begin(), connectors.end());
  SortLineInfos(lines, byX);
}

void CEncircleLine::UpdateLinePtByNearestPt(std::vector<CLineInfo>& lines) {
  constexpr double kFar = 10000.0, kSnap = 0.5;
  // Only a record that comes within the snap limit of an end point can
  // decide where the point goes: the running minima keep the first of the
  // nearest candidates, and a nearest distance of 0.5 or more moves nothing.
  // The candidates are the records whose boxes come within the limit of the
  // point, tried in the order of the full scan; a record that moves is
  // listed again under its new box. A candidate whose box is farther than
  // the distance found so far cannot change it and is passed over.
  //
  // An end point that another record's end point touches exactly ends the
  // scan for it at distance 0 wherever that record comes in the scan, so it
  // stays; the scan is needed only for the other end, and not at all when
  // both ends are touched (the usual case in a chain of chords). The end
  // points are found through a grid of the current end points (number
  // 2j for the start of record j, 2j + 1 for its end).
  std::vector<engine::Box2> boxes;
  boxes.reserve(lines.size());
  for (const CLineInfo& line : lines) boxes.push_back(engine::BoxOf(line, 0));
  engine::BoxGrid grid;
  grid.Build(boxes);
  engine::PointGrid ends(1e-9);
  ends.Reserve(2 * lines.size());
  for (std::size_t j = 0; j < lines.size(); ++j) {
    ends.Add(lines[j].m_ptStart, static_cast<std::uint32_t>(2 * j));
    ends.Add(lines[j].m_ptEnd, static_cast<std::uint32_t>(2 * j + 1));
  }
  auto touched = [&](std::size_t i, const AcGePoint3d& p) {
    return ends.Any(p, [&](std::uint32_t k) {
      const std::size_t j = k / 2;
      if (j == i) return false;
      return p.distanceTo(k % 2 ? lines[j].m_ptEnd : lines[j].m_ptStart) == 0;
    });
  };
  std::vector<std::uint32_t> nearS, nearE, near;
  auto closer = [](const AcGePoint3d& from, const AcGePoint3d& to, double& best, AcGePoint3d& at) {
    const double d = from.distanceTo(to);
    if (d < best) {
      best = d;
      at = to;
    }
  };
  // A lower bound of the distance from p to record j, less a margin for
  // rounding in the distances the tests compute.
  auto boxDistance = [&](const AcGePoint3d& p, std::size_t j) {
    const CLineInfo& r = lines[j];
    const double dx = std::max({0.0, std::min(r.m_ptStart.x, r.m_ptEnd.x) - p.x, p.x - std::max(r.m_ptStart.x, r.m_ptEnd.x)});
    const double dy = std::max({0.0, std::min(r.m_ptStart.y, r.m_ptEnd.y) - p.y, p.y - std::max(r.m_ptStart.y, r.m_ptEnd.y)});
    return std::sqrt(dx * dx + dy * dy) - 1e-9 * (1 + std::fabs(p.x) + std::fabs(p.y));
  };
  auto around = [](const AcGePoint3d& p) {
    const double r = kSnap + 1e-6 + 1e-9 * (std::fabs(p.x) + std::fabs(p.y));
    return engine::Box2{p.x - r, p.y - r, p.x + r, p.y + r};
  };
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!lines[i].m_bValid) continue;
    const AcGePoint3d S = lines[i].m_ptStart, E = lines[i].m_ptEnd;
    const bool stayS = touched(i, S), stayE = touched(i, E);
    if (stayS && stayE) continue;
    // An end that stays counts as found at distance 0.
    double dS = stayS ? 0 : kFar, dE = stayE ? 0 : kFar;
    AcGePoint3d pS, pE;
    nearS.clear();
    nearE.clear();
    if (!stayS)
      grid.Candidates(around(S), nearS, [&](std::uint32_t j) { return j != i && boxDistance(S, j) < kSnap; });
    if (!stayE)
      grid.Candidates(around(E), nearE, [&](std::uint32_t j) { return j != i && boxDistance(E, j) < kSnap; });
    near.clear();
    std::merge(nearS.begin(), nearS.end(), nearE.begin(), nearE.end(), std::back_inserter(near));
    near.erase(std::unique(near.begin(), near.end()), near.end());
    for (std::uint32_t j : near) {
      const AcGePoint3d Sj = lines[j].m_ptStart, Ej = lines[j].m_ptEnd;
      const AcGeLineSeg3d lj(Sj, Ej);
      if (dS > 0 && boxDistance(S, j) < dS) {
        closer(S, Sj, dS, pS);
        if (dS > 0) closer(S, Ej, dS, pS);
        if (dS > 0) closer(S, lj.closestPointTo(S, AcGeContext::gTol), dS, pS);
      }
      if (dE > 0 && boxDistance(E, j) < dE) {
        closer(E, Sj, dE, pE);
        if (dE > 0) closer(E, Ej, dE, pE);
        if (dE > 0) closer(E, Ej, dE, pE);  // the same test again: it keeps the order of tests as it is
        if (dE > 0) closer(E, lj.closestPointTo(E, AcGeContext::gTol), dE, pE);
      }
      if (dS == 0 && dE == 0) break;
    }
    const bool moveS = dS > 0 && dS < kSnap, moveE = dE > 0 && dE < kSnap;
    if (moveS) lines[i].m_ptStart = pS;
    if (moveE) lines[i].m_ptEnd = pE;
    if (moveS || moveE) grid.Add(static_cast<std::uint32_t>(i), engine::BoxOf(lines[i], 0));
    if (moveS) ends.Add(lines[i].m_ptStart, static_cast<std::uint32_t>(2 * i));
    if (moveE) ends.Add(lines[i].m_ptEnd, static_cast<std::uint32_t>(2 * i + 1));
  }
}
