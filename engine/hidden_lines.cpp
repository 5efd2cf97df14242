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

namespace {

// The references of one direction, along the probe axis, nearest side
// first: a point P can only lie beyond (or on) a reference that spans it
// along the axis and whose near end along the view comes within the
// tolerance of P; Any stops once the keys pass that bound.
class DirectionRefs {
 public:
  DirectionRefs(const std::vector<CLineInfo>& refs, E_RemoveLine_Dir dir, double tol)
      : m_alongX(dir == 0 || dir == 1), m_ascending(dir == 0 || (dir != 1 && dir != 2)), m_tol(tol) {
    const std::size_t n = refs.size();
    std::vector<double> lo(n), hi(n), key(n);
    for (std::size_t r = 0; r < n; ++r) {
      const AcGePoint3d& a = refs[r].m_ptStart;
      const AcGePoint3d& b = refs[r].m_ptEnd;
      lo[r] = m_alongX ? std::min(a.x, b.x) : std::min(a.y, b.y);
      hi[r] = m_alongX ? std::max(a.x, b.x) : std::max(a.y, b.y);
      const double nearLo = m_alongX ? std::min(a.y, b.y) : std::min(a.x, b.x);
      const double nearHi = m_alongX ? std::max(a.y, b.y) : std::max(a.x, b.x);
      key[r] = m_ascending ? nearLo : -nearHi;  // the near side has the smaller key
    }
    m_index.Build(lo, hi, key);
  }
  // Calls test(j) for the references that may hold P in the direction,
  // until it returns true; whether one does is the answer.
  template <class Test>
  bool Any(const AcGePoint3d& p, Test&& test) const {
    const double along = m_alongX ? p.x : p.y;
    const double view = m_alongX ? p.y : p.x;
    const double bound = (m_ascending ? view : -view) + 3 * m_tol + 1e-9 * (std::fabs(view) + 1);
    bool hit = false;
    m_index.Visit(along, [&](std::uint32_t j, double key) {
      if (key > bound) return false;
      hit = test(j);
      return !hit;
    });
    return hit;
  }

 private:
  bool m_alongX, m_ascending;
  double m_tol;
  engine::KeyedIntervals m_index;
};

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
  // The records are taken as UpdateLineStartEndPt orients them for dir, each
  // oriented where it is used rather than in a copy of them all. The
  // references are all records, also those removed below: a record may be
  // hidden by one that is itself hidden. Whether some reference hides a
  // record does not depend on the order in which the references are tried,
  // so only those that can are tried. The index, the midpoint, the view
  // test and the test of equal records do not depend on the orientation.
  const DirectionRefs refs(lines, dir, m_info.m_tolPoint.equalPoint());
  const double fine = m_info.m_tolFine.equalPoint();
  std::vector<char> gone(lines.size(), 0);
  std::size_t kept = 0;
  for (std::size_t k = 0; k < lines.size(); ++k) {
    const CLineInfo& rec = lines[k];
    bool hidden = RunsAlongView(rec, dir, fine);
    if (!hidden) {
      const AcGePoint3d m = AcGePoint3d::mid(rec.m_ptStart, rec.m_ptEnd);
      hidden = refs.Any(m, [&](std::uint32_t j) {
        const CLineInfo& r = lines[j];
        if (r.m_id == rec.m_id && !r.m_id.isNull()) return false;
        if (rec.IsEqual(r, m_info.m_tolPoint)) return false;
        AcGePoint3d a = r.m_ptStart, b = r.m_ptEnd;
        engine::OrientForView(dir, a, b);
        return IsPtInLineSpecifiedDir2(m, a, b, dir);
      });
    }
    if (hidden) {
      util::EraseEntity(rec.m_id);
      gone[k] = 1;
    } else {
      ++kept;
    }
  }
  std::vector<CLineInfo> w;
  w.reserve(kept);
  for (std::size_t k = 0; k < lines.size(); ++k) {
    if (gone[k]) continue;
    w.push_back(lines[k]);
    engine::OrientForView(dir, w.back().m_ptStart, w.back().m_ptEnd);
  }
  return w;
}

std::vector<CLineInfo> CEncircleLine::RemoveLine(E_RemoveLine_Dir dir, const std::vector<CLineInfo>& lines) {
  std::vector<CLineInfo> w = lines;
  UpdateLineStartEndPt(dir, w);
  const std::vector<CLineInfo>& ref = w;  // the records go only at the end
  const double fine = m_info.m_tolFine.equalPoint();
  const double tol = m_info.m_tolPoint.equalPoint();
  // The flags only ever go from false to true, and the decision is a
  // condition on them that stays true once true; so the record is hidden
  // exactly when the condition holds for the flags over all references, in
  // whatever order. The point flags come from the references that can hold
  // the point; the on-a-reference flags (the infinite line through each
  // reference) are only needed when exactly one end is hidden, and are then
  // found by a scan of all references.
  const DirectionRefs refs(ref, dir, tol);
  std::vector<char> gone(w.size(), 0);
  for (std::size_t k = 0; k < w.size(); ++k) {
    const CLineInfo& rec = ref[k];
    bool hidden = RunsAlongView(rec, dir, fine);
    if (!hidden) {
      const AcGePoint3d S = rec.m_ptStart, E = rec.m_ptEnd;
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
      auto other = [&](std::uint32_t j) { return !(ref[j].m_id == rec.m_id && !ref[j].m_id.isNull()); };
      auto beyond = [&](const AcGePoint3d& p) {
        return refs.Any(p, [&](std::uint32_t j) {
          return other(j) && IsPtInLineSpecifiedDir(p, ref[j].m_ptStart, ref[j].m_ptEnd, dir);
        });
      };
      auto onSome = [&](const AcGePoint3d& p) {
        for (std::uint32_t j = 0; j < ref.size(); ++j)
          if (other(j) && engine::SideOf(p, ref[j].m_ptStart, ref[j].m_ptEnd, tol) == 0) return true;
        return false;
      };
      for (int i = 0; i < 7 && !hidden; ++i) hidden = beyond(m[i]);
      if (!hidden) {
        const bool sHidden = beyond(S), eHidden = beyond(E);
        hidden = (sHidden && eHidden) || (eHidden && onSome(S)) || (sHidden && onSome(E));
      }
    }
    if (hidden) {
      util::EraseEntity(rec.m_id);
      gone[k] = 1;
    }
  }
  engine::EraseMarked(w, gone);
  return w;
}
