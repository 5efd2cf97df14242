#include "engine/vk_rect.h"

#include <algorithm>
#include <cmath>

#include "host/db/entity.h"

namespace {
constexpr double kBig = 1e20;
constexpr double kRange = 1e10;
constexpr double kMargin = 1e-6;

bool inside(double v, double lo, double hi) { return v > lo && v < hi; }
// The open-interval test: an end of one interval strictly inside the other.
bool intervalsOverlap(double aMin, double aMax, double bMin, double bMax) {
  return inside(aMin, bMin, bMax) || inside(bMin, aMin, aMax) || inside(aMax, bMin, bMax) ||
         inside(bMax, aMin, aMax);
}
}  // namespace

CVKRect::CVKRect(bool bFlat)
    : m_ptMin(kBig, kBig, bFlat ? 0 : kBig), m_ptMax(-kBig, -kBig, bFlat ? 0 : -kBig) {}

CVKRect::CVKRect(double minX, double minY, double maxX, double maxY)
    : m_ptMin(minX, minY, 0), m_ptMax(maxX, maxY, 0) {}

CVKRect::CVKRect(const AcGePoint3d& p1, const AcGePoint3d& p2, bool bFlat) : CVKRect(bFlat) {
  Extend(p1);
  Extend(p2);
}

CVKRect::CVKRect(const AcDbExtents& extents) : m_ptMin(extents.minPoint()), m_ptMax(extents.maxPoint()) {}

CVKRect::CVKRect(AcDbObjectId id) : CVKRect(true) { SetFromEntity(id); }

void CVKRect::Extend(const AcGePoint3d& pt) {
  m_ptMin = {std::min(m_ptMin.x, pt.x), std::min(m_ptMin.y, pt.y), std::min(m_ptMin.z, pt.z)};
  m_ptMax = {std::max(m_ptMax.x, pt.x), std::max(m_ptMax.y, pt.y), std::max(m_ptMax.z, pt.z)};
}

void CVKRect::Extend(const AcDbExtents& extents) {
  const AcGePoint3d lo = extents.minPoint(), hi = extents.maxPoint();
  if (!(hi.x >= lo.x && hi.y >= lo.y)) return;
  for (double v : {lo.x, lo.y, hi.x, hi.y})
    if (!(v > -kRange && v < kRange)) return;
  Extend(lo);
  Extend(hi);
}

bool CVKRect::IsFlat() const { return std::fabs(m_ptMin.z) < 1e-5 && std::fabs(m_ptMax.z) < 1e-5; }

void CVKRect::MakeFlat() {
  m_ptMin.z = 0;
  m_ptMax.z = 0;
}

AcDbExtents CVKRect::ToExtents() const { return AcDbExtents(m_ptMin, m_ptMax); }

bool CVKRect::SetFromEntity(AcDbObjectId id) {
  if (id.isNull()) return false;
  AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
  AcDbExtents ext;
  if (!ent || ent->getGeomExtents(ext) != Acad::eOk) return false;
  m_ptMin = ext.minPoint();
  m_ptMax = ext.maxPoint();
  return true;
}

bool CVKRect::IsValid() const {
  if (!(m_ptMax.x >= m_ptMin.x && m_ptMax.y >= m_ptMin.y)) return false;
  for (double v : {m_ptMin.x, m_ptMin.y, m_ptMax.x, m_ptMax.y})
    if (!(v > -kRange && v < kRange)) return false;
  return true;
}

CVKRect CVKRect::Translated(const AcGeVector3d& v) const {
  CVKRect r(*this);
  r.m_ptMin += v;
  r.m_ptMax += v;
  return r;
}

CVKRect CVKRect::Inflated(double margin) const {
  CVKRect r(*this);
  const double dz = IsFlat() ? 0 : margin;
  r.m_ptMin -= AcGeVector3d(margin, margin, dz);
  r.m_ptMax += AcGeVector3d(margin, margin, dz);
  return r;
}

void CVKRect::Grow(double g) {
  const double ex = std::max(-std::max(m_ptMax.x - m_ptMin.x, 0.0) / 2, g);
  const double ey = std::max(-std::max(m_ptMax.y - m_ptMin.y, 0.0) / 2, g);
  m_ptMin.x -= ex;
  m_ptMax.x += ex;
  m_ptMin.y -= ey;
  m_ptMax.y += ey;
}

bool CVKRect::Contains(const AcGePoint3d& pt) const {
  return pt.x >= m_ptMin.x - kMargin && pt.x <= m_ptMax.x + kMargin && pt.y >= m_ptMin.y - kMargin &&
         pt.y <= m_ptMax.y + kMargin;
}

bool CVKRect::Overlaps(const CVKRect& other) const {
  if (!IsValid() || !other.IsValid()) return false;
  // The other box grows in z only when this one is not flat.
  CVKRect b(other);
  const double dz = IsFlat() ? 0 : kMargin;
  b.m_ptMin -= AcGeVector3d(kMargin, kMargin, dz);
  b.m_ptMax += AcGeVector3d(kMargin, kMargin, dz);
  if (!intervalsOverlap(m_ptMin.x, m_ptMax.x, b.m_ptMin.x, b.m_ptMax.x)) return false;
  if (!intervalsOverlap(m_ptMin.y, m_ptMax.y, b.m_ptMin.y, b.m_ptMax.y)) return false;
  if (!IsFlat() && !intervalsOverlap(m_ptMin.z, m_ptMax.z, b.m_ptMin.z, b.m_ptMax.z)) return false;
  return true;
}

bool CVKRect::ContainsRect(const CVKRect& other) const {
  if (!IsValid() || !other.IsValid()) return false;
  const CVKRect a = Inflated(kMargin);
  const bool checkZ = !a.IsFlat();
  for (const AcGePoint3d& p : {other.m_ptMin, other.m_ptMax}) {
    if (p.x < a.m_ptMin.x - kMargin || p.x > a.m_ptMax.x + kMargin) return false;
    if (p.y < a.m_ptMin.y - kMargin || p.y > a.m_ptMax.y + kMargin) return false;
    if (checkZ && (p.z < a.m_ptMin.z - kMargin || p.z > a.m_ptMax.z + kMargin)) return false;
  }
  return true;
}

void CVKRect::Snap(const AcGePoint3d& pt) {
  if (!Contains(pt)) return;
  const double d[4] = {std::fabs(pt.x - m_ptMin.x), std::fabs(m_ptMax.x - pt.x), std::fabs(pt.y - m_ptMin.y),
                       std::fabs(m_ptMax.y - pt.y)};
  int nearest = 0;
  for (int i = 1; i < 4; ++i)
    if (d[i] < d[nearest]) nearest = i;
  switch (nearest) {
    case 0: m_ptMin.x = pt.x; break;
    case 1: m_ptMax.x = pt.x; break;
    case 2: m_ptMin.y = pt.y; break;
    default: m_ptMax.y = pt.y; break;
  }
}
