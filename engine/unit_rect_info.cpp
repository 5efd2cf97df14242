#include "engine/unit_rect_info.h"

#include <algorithm>
#include <cmath>

namespace {
bool agree(double a, double b) { return std::fabs(a - b) < 1e-6; }
}  // namespace

void CUnitRectInfo::AddPoint(AcGePoint3d pt, AcGeTol tol) {
  for (const AcGePoint3d& held : m_pts)
    if (held.isEqualTo(pt, tol)) return;
  m_pts.push_back(pt);
}

void CUnitRectInfo::Sort(E_RemoveLine_Dir dir) {
  auto before = [dir](const AcGePoint3d& a, const AcGePoint3d& b) {
    switch (dir) {
      case 0: return agree(a.x, b.x) ? (!agree(a.y, b.y) && a.y < b.y) : a.x < b.x;
      case 1: return agree(a.x, b.x) ? (!agree(a.y, b.y) && a.y > b.y) : a.x < b.x;
      case 2: return agree(a.y, b.y) ? (!agree(a.x, b.x) && a.x > b.x) : a.y > b.y;
      default: return agree(a.y, b.y) ? (!agree(a.x, b.x) && a.x < b.x) : a.y > b.y;
    }
  };
  std::stable_sort(m_pts.begin(), m_pts.end(), before);
}
