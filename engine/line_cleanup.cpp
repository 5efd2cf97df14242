// Merging, de-duplicating and trimming the records.
#include <cmath>

#include "engine/encircle_line.h"
#include "engine/line_geometry.h"
#include "util/entity_utils.h"

namespace {
void eraseAt(std::vector<CLineInfo>& lines, std::size_t i, bool eraseEntity) {
  if (eraseEntity) util::EraseEntity(lines[i].m_id);
  lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(i));
}
}  // namespace

void CEncircleLine::RemoveCrossLine(std::vector<CLineInfo>& lines) {
  const double fine = m_info.m_tolFine.equalPoint();
  for (std::size_t i = 0; i < lines.size();) {
    if (!lines[i].m_bValid) {
      ++i;
      continue;
    }
    const CLineInfo& a = lines[i];
    const bool axisParallel =
        std::fabs(a.m_ptStart.x - a.m_ptEnd.x) < fine || std::fabs(a.m_ptStart.y - a.m_ptEnd.y) < fine;
    std::size_t partner = lines.size();
    for (std::size_t j = i + 1; j < lines.size() && axisParallel; ++j) {
      if (engine::TestCollinear(a, lines[j], fine) == engine::Alignment::kCollinear &&
          engine::RectOf(a).Overlaps(engine::RectOf(lines[j]))) {
        partner = j;
        break;
      }
    }
    if (partner == lines.size()) {
      ++i;
      continue;
    }
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
    eraseAt(lines, i, false);
  }
}

void CEncircleLine::RemoveRepeatLine2(std::vector<CLineInfo>& lines) {
  const AcGeTol& tol = m_info.m_tolPoint;
  const double t = m_info.m_tolLine.equalPoint();
  for (std::size_t i = 0; i < lines.size();) {
    if (!lines[i].m_bValid) {
      ++i;
      continue;
    }
    if (lines[i].m_ptStart.isEqualTo(lines[i].m_ptEnd, tol)) {
      // A zero-length record ends the whole call: later duplicates wait for the next one.
      eraseAt(lines, i, true);
      return;
    }
    bool again = false;
    for (std::size_t j = i + 1; j < lines.size(); ++j) {
      if (lines[i].IsEqual(lines[j], tol)) {
        eraseAt(lines, i, true);  // of two duplicates the earlier goes
        again = true;
        break;
      }
      if (engine::TestCollinear(lines[i], lines[j], t) != engine::Alignment::kCollinear) continue;
      const CVKRect ri = engine::RectOf(lines[i]), rj = engine::RectOf(lines[j]);
      if (ri.ContainsRect(rj)) {
        eraseAt(lines, j, true);  // the covered one goes; this i is done
        break;
      }
      if (rj.ContainsRect(ri)) {
        eraseAt(lines, i, true);
        again = true;
        break;
      }
    }
    if (!again) ++i;
  }
}

void CEncircleLine::RemoveShortLine(std::vector<CLineInfo>& lines) {
  const AcGeTol& tol = m_info.m_tolPoint;
  for (std::size_t i = 0; i < lines.size();) {
    const CLineInfo& r = lines[i];
    if (!r.m_bValid || r.m_ptStart.distanceTo(r.m_ptEnd) >= 0.5) {
      ++i;
      continue;
    }
    bool startOn = false, endOn = false;
    for (std::size_t j = 0; j < lines.size() && !(startOn && endOn); ++j) {
      if (j == i) continue;
      if (!startOn) startOn = engine::IsPointOnSegment(r.m_ptStart, lines[j].m_ptStart, lines[j].m_ptEnd, tol);
      if (!endOn) endOn = engine::IsPointOnSegment(r.m_ptEnd, lines[j].m_ptStart, lines[j].m_ptEnd, tol);
    }
    // A short record that bridges two others stays.
    if (startOn && endOn) ++i;
    else eraseAt(lines, i, true);
  }
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
  for (std::size_t i = 0; i < lines.size();) {
    if (std::fabs(x - lines[i].m_ptStart.x) > w && std::fabs(x - lines[i].m_ptEnd.x) > w)
      eraseAt(lines, i, false);  // the record only: its clone stays
    else
      ++i;
  }
}
