// The plain loops, as the steps read: every record against every other,
// removals by erasing at the index and examining the same index again.
#include "plain_stages.h"

#include <algorithm>
#include <cmath>

#include "engine/line_geometry.h"
#include "host/ge/line_seg3d.h"
#include "util/entity_utils.h"

namespace {
CVKRect boxOf(const CLineInfo& line) { return CVKRect(line.m_ptStart, line.m_ptEnd, true); }

void eraseAt(std::vector<CLineInfo>& lines, std::size_t i, bool eraseEntity) {
  if (eraseEntity) util::EraseEntity(lines[i].m_id);
  lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(i));
}

bool RunsAlongView(const CLineInfo& line, E_RemoveLine_Dir dir, double fine) {
  return dir == 0 || dir == 1 ? std::fabs(line.m_ptStart.x - line.m_ptEnd.x) < fine
                              : std::fabs(line.m_ptStart.y - line.m_ptEnd.y) < fine;
}
}  // namespace

void PlainStages::AddBreakPointPlain(CLineInfo& line, const AcGePoint3d& pt, AcGeTol tol) {
  const AcGeLineSeg3d seg(line.m_ptStart, line.m_ptEnd);
  if (pt.isEqualTo(line.m_ptStart, tol) || pt.isEqualTo(line.m_ptEnd, tol)) return;
  if (!seg.isOn(pt, tol)) return;
  if ((pt - line.m_ptStart).dotProduct(pt - line.m_ptEnd) >= 0) return;
  for (const AcGePoint3d& held : line.m_breakPts)
    if (held.isEqualTo(pt, tol)) return;
  line.m_breakPts.push_back(pt);
}

void PlainStages::SortBubble(CLineInfo& line) {
  std::vector<AcGePoint3d>& pts = line.m_breakPts;
  const std::size_t n = pts.size();
  for (std::size_t pass = 0; pass < n; ++pass)
    for (std::size_t i = 0; i + 1 < n; ++i)
      if ((pts[i] - line.m_ptStart).length() > (pts[i + 1] - line.m_ptStart).length()) std::swap(pts[i], pts[i + 1]);
}


void PlainStages::BreakLines(std::vector<CLineInfo>& lines) {
  const AcGeTol tol = m_info.m_tolPoint;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const CVKRect bi = boxOf(lines[i]);
    const AcGeLineSeg3d si(lines[i].m_ptStart, lines[i].m_ptEnd);
    for (std::size_t j = i + 1; j < lines.size(); ++j) {
      if (!bi.Overlaps(boxOf(lines[j]))) continue;
      const AcGeLineSeg3d sj(lines[j].m_ptStart, lines[j].m_ptEnd);
      AcGePoint3d q;
      if (!si.intersectWith(sj, q, tol)) continue;
      AddBreakPointPlain(lines[i], q, tol);
      AddBreakPointPlain(lines[j], q, tol);
    }
  }
  SplitLines(lines);
}

void PlainStages::BreakLines2(std::vector<CLineInfo>& lines, bool bAllPoints, bool bShiftRight) {
  const AcGeTol tol = m_info.m_tolPoint;
  const double d = m_info.m_dBreakLength;
  // The exclusion box: the drawing's box moved sideways by the break length.
  const CVKRect shifted = m_rect.Translated(AcGeVector3d(bShiftRight ? d : -d, 0, 0));
  std::vector<AcGePoint3d> collected;
  for (const CLineInfo& line : lines) {
    if (!bAllPoints && shifted.ContainsRect(boxOf(line))) continue;
    CEncircleLine::AddBreakPoint(line.m_ptStart, collected, tol);
    CEncircleLine::AddBreakPoint(line.m_ptEnd, collected, tol);
  }
  const double w = std::max(m_rect.Width(), 0.0), h = std::max(m_rect.Height(), 0.0);
  AcArray<AcGePoint3d> sorted;
  for (const AcGePoint3d& p : collected) sorted.append(p);
  if (bAllPoints) {
    std::sort(sorted.begin(), sorted.end(), [](const AcGePoint3d& a, const AcGePoint3d& b) { return a.x < b.x; });
    for (CLineInfo& line : lines) CalBreakPointPlain(line, sorted, true, h);
  } else {
    std::sort(sorted.begin(), sorted.end(), [](const AcGePoint3d& a, const AcGePoint3d& b) { return a.y < b.y; });
    for (CLineInfo& line : lines) CalBreakPointPlain(line, sorted, false, w);
  }
  SplitLines(lines);
}

void PlainStages::CalBreakPointPlain(CLineInfo& line, const AcArray<AcGePoint3d>& sorted, bool bVertical,
                                  double dExtent) {
  const AcGeTol tol = m_info.m_tolPoint;
  int i = CEncircleLine::GetBreakIndex(sorted, line.m_ptStart, tol);
  int j = CEncircleLine::GetBreakIndex(sorted, line.m_ptEnd, tol);
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
    if (seg.intersectWith(probe, q, tol)) AddBreakPointPlain(line, q, tol);
  }
}

bool PlainStages::SplitLinePlain(CLineInfo& line, AcArray<AcDbObjectId>& ids) {
  ids.removeAll();
  if (line.m_breakPts.empty() || !line.m_bValid) return false;
  SortBubble(line);
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

void PlainStages::SplitLines(std::vector<CLineInfo>& lines) {
  AcArray<AcDbObjectId> ids;
  for (std::size_t k = 0; k < lines.size(); ++k) {
    if (!SplitLinePlain(lines[k], ids)) continue;
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(k));
    --k;  // the record that moved into its place comes next
    for (AcDbObjectId id : ids) lines.emplace_back(id);
  }
}

std::vector<CLineInfo> PlainStages::RemoveLine2(E_RemoveLine_Dir dir, const std::vector<CLineInfo>& lines) {
  std::vector<CLineInfo> w = lines;
  UpdateLineStartEndPt(dir, w);
  // The references keep every record, also those removed below: a record
  // may be hidden by one that is itself hidden.
  const std::vector<CLineInfo> refs = w;
  const double fine = m_info.m_tolFine.equalPoint();
  for (std::size_t k = 0; k < w.size(); ++k) {
    bool hidden = RunsAlongView(w[k], dir, fine);
    if (!hidden) {
      const AcGePoint3d m = AcGePoint3d::mid(w[k].m_ptStart, w[k].m_ptEnd);
      for (const CLineInfo& r : refs) {
        if (r.m_id == w[k].m_id && !r.m_id.isNull()) continue;
        if (w[k].IsEqual(r, m_info.m_tolPoint)) continue;
        if (IsPtInLineSpecifiedDir2(m, r.m_ptStart, r.m_ptEnd, dir)) {
          hidden = true;
          break;
        }
      }
    }
    if (hidden) {
      util::EraseEntity(w[k].m_id);
      w.erase(w.begin() + static_cast<std::ptrdiff_t>(k));
      --k;
    }
  }
  return w;
}

std::vector<CLineInfo> PlainStages::RemoveLine(E_RemoveLine_Dir dir, const std::vector<CLineInfo>& lines) {
  std::vector<CLineInfo> w = lines;
  UpdateLineStartEndPt(dir, w);
  const std::vector<CLineInfo> refs = w;
  const double fine = m_info.m_tolFine.equalPoint();
  const double tol = m_info.m_tolPoint.equalPoint();
  for (std::size_t k = 0; k < w.size(); ++k) {
    bool hidden = RunsAlongView(w[k], dir, fine);
    if (!hidden) {
      const AcGePoint3d S = w[k].m_ptStart, E = w[k].m_ptEnd;
      // Seven interior samples by repeated halving: 1/2, 1/4, 5/8, 1/8,
      // 3/8, 13/16, 7/16 (the uneven far half is as intended).
      AcGePoint3d m[7];
      m[0] = AcGePoint3d::mid(S, E);
      m[1] = AcGePoint3d::mid(S, m[0]);
      m[2] = AcGePoint3d::mid(m[1], E);
      m[3] = AcGePoint3d::mid(S, m[1]);
      m[4] = AcGePoint3d::mid(m[0], m[1]);
      m[5] = AcGePoint3d::mid(m[2], E);
      m[6] = AcGePoint3d::mid(m[1], m[2]);
      bool sHidden = false, eHidden = false, sOn = false, eOn = false, inner[7] = {};
      for (const CLineInfo& r : refs) {
        if (r.m_id == w[k].m_id && !r.m_id.isNull()) continue;
        const AcGePoint3d& A = r.m_ptStart;
        const AcGePoint3d& B = r.m_ptEnd;
        if (!sHidden) sHidden = IsPtInLineSpecifiedDir(S, A, B, dir);
        if (!eHidden) eHidden = IsPtInLineSpecifiedDir(E, A, B, dir);
        // On the infinite line through the reference, not only its span.
        if (!sOn) sOn = engine::SideOf(S, A, B, tol) == 0;
        if (!eOn) eOn = engine::SideOf(E, A, B, tol) == 0;
        bool anyInner = false;
        for (int i = 0; i < 7; ++i) {
          if (!inner[i]) inner[i] = IsPtInLineSpecifiedDir(m[i], A, B, dir);
          anyInner = anyInner || inner[i];
        }
        if ((sHidden && eHidden) || (sOn && eHidden) || (eOn && sHidden) || anyInner) {
          hidden = true;
          break;
        }
      }
    }
    if (hidden) {
      util::EraseEntity(w[k].m_id);
      w.erase(w.begin() + static_cast<std::ptrdiff_t>(k));
      --k;
    }
  }
  return w;
}

void PlainStages::UpdateLinePtByNearestPt(std::vector<CLineInfo>& lines) {
  constexpr double kFar = 10000.0, kSnap = 0.5;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!lines[i].m_bValid) continue;
    const AcGePoint3d S = lines[i].m_ptStart, E = lines[i].m_ptEnd;
    double dS = kFar, dE = kFar;
    AcGePoint3d pS, pE;
    auto closer = [](const AcGePoint3d& from, const AcGePoint3d& to, double& best, AcGePoint3d& at) {
      const double d = from.distanceTo(to);
      if (d < best) {
        best = d;
        at = to;
      }
    };
    for (std::size_t j = 0; j < lines.size(); ++j) {
      if (j == i) continue;
      const AcGePoint3d Sj = lines[j].m_ptStart, Ej = lines[j].m_ptEnd;
      const AcGeLineSeg3d lj(Sj, Ej);
      if (dS > 0) closer(S, Sj, dS, pS);
      if (dS > 0) closer(S, Ej, dS, pS);
      if (dS > 0) closer(S, lj.closestPointTo(S, AcGeContext::gTol), dS, pS);
      if (dE > 0) closer(E, Sj, dE, pE);
      if (dE > 0) closer(E, Ej, dE, pE);
      if (dE > 0) closer(E, Ej, dE, pE);  // the same test again: it keeps the order of tests as it is
      if (dE > 0) closer(E, lj.closestPointTo(E, AcGeContext::gTol), dE, pE);
      if (dS == 0 && dE == 0) break;
    }
    if (dS > 0 && dS < kSnap) lines[i].m_ptStart = pS;
    if (dE > 0 && dE < kSnap) lines[i].m_ptEnd = pE;
  }
}

void PlainStages::RemoveLineInExcludeDir(E_RemoveLine_Dir dir, double dCoord, std::vector<CLineInfo>& lines) {
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

void PlainStages::RemoveLineInOtherDir(const std::vector<CLineInfo>& other, std::vector<CLineInfo>& lines) {
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

void PlainStages::RemoveCrossLine(std::vector<CLineInfo>& lines) {
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

void PlainStages::RemoveRepeatLine2(std::vector<CLineInfo>& lines) {
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

void PlainStages::RemoveShortLine(std::vector<CLineInfo>& lines) {
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

void PlainStages::RemoveLineByWalter(std::vector<CLineInfo>& lines, E_RemoveLine_Dir dir) {
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

void PlainStages::RemoveCollinearPoints(AcArray<AcGePoint3d>& pts) {
  auto angleDeg = [](const AcGePoint3d& a, const AcGePoint3d& b) {
    return std::atan((b.y - a.y) / (b.x - a.x)) * 180.0 / 3.14159265358979323846;
  };
  for (int i = 0; i < pts.length() - 2;) {
    const double alpha = angleDeg(pts[i], pts[i + 1]), beta = angleDeg(pts[i + 1], pts[i + 2]);
    const bool sameLine = std::fabs(alpha - beta) < 1.0;
    const bool bothVertical = std::fabs(std::fabs(alpha) - 90.0) < 1.0 && std::fabs(std::fabs(beta) - 90.0) < 1.0;
    const bool bothHorizontal = std::fabs(alpha) < 1.0 && std::fabs(beta) < 1.0;
    if (sameLine || bothVertical || bothHorizontal) pts.removeAt(i + 1);
    else ++i;
  }
}
