// Keeping what is visible from one side of the drawing.
#include <cmath>

#include "engine/encircle_line.h"
#include "engine/line_geometry.h"
#include "engine/spatial_index.h"
#include "host/ge/line_seg3d.h"
#include "util/entity_utils.h"

namespace {

enum class SegmentClass { kHorizontal, kVertical, kFalling, kRising };

SegmentClass Classify(const AcGePoint3d& a, const AcGePoint3d& b, double t) {
  if (std::fabs(a.y - b.y) < t) return SegmentClass::kHorizontal;
  if (std::fabs(a.x - b.x) < t) return SegmentClass::kVertical;
  if ((a.x > b.x && b.y > a.y) || (b.x > a.x && a.y > b.y)) return SegmentClass::kFalling;
  return SegmentClass::kRising;
}

bool Greater(double a, double b, double tol) { return std::fabs(a - b) >= tol && a > b; }
bool Less(double a, double b, double tol) { return std::fabs(a - b) >= tol && !(a > b); }
bool StrictlyBetween(double v, double a, double b) { return v > std::min(a, b) && v < std::max(a, b); }

bool RunsAlongView(const CLineInfo& line, E_RemoveLine_Dir dir, double fine) {
  return dir == 0 || dir == 1 ? std::fabs(line.m_ptStart.x - line.m_ptEnd.x) < fine
                              : std::fabs(line.m_ptStart.y - line.m_ptEnd.y) < fine;
}

}  // namespace

bool CEncircleLine::IsPtInLineSpecifiedDir(AcGePoint3d P, AcGePoint3d A, AcGePoint3d B, E_RemoveLine_Dir dir) {
  const double tol = m_info.m_tolPoint.equalPoint();
  const bool alongX = dir == 0 || dir == 1;
  const double p = alongX ? P.x : P.y, a = alongX ? A.x : A.y, b = alongX ? B.x : B.y;
  if (!StrictlyBetween(p, a, b) || std::fabs(p - a) < tol || std::fabs(p - b) < tol) return false;
  const SegmentClass cls = Classify(A, B, m_info.m_tolLine.equalPoint());
  const bool slanted = cls == SegmentClass::kFalling || cls == SegmentClass::kRising;
  const int s = engine::SideOf(P, A, B, tol);
  switch (dir) {
    case 0:
      if (s == 1 && slanted) return true;
      if (cls != SegmentClass::kHorizontal) return false;
      return Greater(P.y, A.y, tol);
    case 1:
      if (s == -1 && slanted) return true;
      if (cls != SegmentClass::kHorizontal) return false;
      return Less(P.y, A.y, tol);
    case 2:
      if (s == -1 && slanted) return true;
      if (cls != SegmentClass::kVertical) return false;
      return Less(P.x, A.x, tol);
    case 3:
      if (s == 1 && slanted) return true;
      if (cls != SegmentClass::kVertical) return false;
      return Greater(P.x, A.x, tol);
    default:
      return false;
  }
}

bool CEncircleLine::IsPtInLineSpecifiedDir2(AcGePoint3d P, AcGePoint3d A, AcGePoint3d B, E_RemoveLine_Dir dir) {
  const double tol = m_info.m_tolPoint.equalPoint();
  AcGeLineSeg3d probe;
  if (dir == 0 || dir == 1) {
    if (!StrictlyBetween(P.x, A.x, B.x)) return false;
    const double h = std::max(m_rect.Height(), 0.0);
    probe.set(AcGePoint3d(P.x, P.y - h, P.z), AcGePoint3d(P.x, P.y + h, P.z));
  } else {
    if (!StrictlyBetween(P.y, A.y, B.y)) return false;
    const double w = std::max(m_rect.Width(), 0.0);
    probe.set(AcGePoint3d(P.x - w, P.y, P.z), AcGePoint3d(P.x + w, P.y, P.z));
  }
  AcGePoint3d q;
  if (!AcGeLineSeg3d(A, B).intersectWith(probe, q, m_info.m_tolPoint)) return false;
  // Unlike the nine-point test, a point on the reference counts as hidden.
  if (dir == 0 || dir == 1 ? std::fabs(P.y - q.y) < tol : std::fabs(P.x - q.x) < tol) return true;
  switch (dir) {
    case 0: return P.y > q.y;
    case 1: return q.y > P.y;
    case 2: return q.x > P.x;
    default: return P.x > q.x;
  }
}

std::vector<CLineInfo> CEncircleLine::RemoveLine2(E_RemoveLine_Dir dir, const std::vector<CLineInfo>& lines) {
  std::vector<CLineInfo> w = lines;
  UpdateLineStartEndPt(dir, w);
  // The references are the records as oriented, also those removed below: a
  // record may be hidden by one that is itself hidden. Whether some
  // reference hides a record does not depend on the order in which the
  // references are tried, so they are tried nearest side first: along the
  // probe a reference must span the midpoint, and it hides the midpoint only
  // when its near end along the view lies within the tolerance of it.
  const bool alongX = dir == 0 || dir == 1;
  const bool ascending = dir == 0 || (dir != 1 && dir != 2);  // the near side has the smaller coordinate
  const double tol = m_info.m_tolPoint.equalPoint();
  const std::size_t n = w.size();
  std::vector<double> lo(n), hi(n), key(n);
  for (std::size_t r = 0; r < n; ++r) {
    const AcGePoint3d& a = w[r].m_ptStart;
    const AcGePoint3d& b = w[r].m_ptEnd;
    lo[r] = alongX ? std::min(a.x, b.x) : std::min(a.y, b.y);
    hi[r] = alongX ? std::max(a.x, b.x) : std::max(a.y, b.y);
    const double nearLo = alongX ? std::min(a.y, b.y) : std::min(a.x, b.x);
    const double nearHi = alongX ? std::max(a.y, b.y) : std::max(a.x, b.x);
    key[r] = ascending ? nearLo : -nearHi;
  }
  engine::KeyedIntervals refs;
  refs.Build(lo, hi, key);
  const std::vector<CLineInfo> ref = w;
  const double fine = m_info.m_tolFine.equalPoint();
  std::vector<char> gone(n, 0);
  for (std::size_t k = 0; k < n; ++k) {
    const CLineInfo& rec = ref[k];
    bool hidden = RunsAlongView(rec, dir, fine);
    if (!hidden) {
      const AcGePoint3d m = AcGePoint3d::mid(rec.m_ptStart, rec.m_ptEnd);
      const double along = alongX ? m.x : m.y;
      const double view = alongX ? m.y : m.x;
      // Keys past this bound cannot hide the midpoint.
      const double bound = (ascending ? view : -view) + 3 * tol + 1e-9 * std::fabs(view);
      refs.Visit(along, [&](std::uint32_t j, double keyJ) {
        if (keyJ > bound) return false;
        const CLineInfo& r = ref[j];
        if (r.m_id == rec.m_id && !r.m_id.isNull()) return true;
        if (rec.IsEqual(r, m_info.m_tolPoint)) return true;
        hidden = IsPtInLineSpecifiedDir2(m, r.m_ptStart, r.m_ptEnd, dir);
        return !hidden;
      });
    }
    if (hidden) {
      util::EraseEntity(rec.m_id);
      gone[k] = 1;
    }
  }
  engine::EraseMarked(w, gone);
  return w;
}

std::vector<CLineInfo> CEncircleLine::RemoveLine(E_RemoveLine_Dir dir, const std::vector<CLineInfo>& lines) {
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
