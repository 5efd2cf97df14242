#include "host/db/box_selection.h"

#include <algorithm>
#include <cmath>

#include "host/db/peek.h"

namespace host {

namespace {
struct Box {
  double x0, x1, y0, y1;
  std::size_t index;
};
}  // namespace

std::vector<AcDbObjectIdArray> selectByBoxes(const AcDbDatabase* db, const std::vector<SelectionBox>& boxes,
                                             SelectMode mode) {
  std::vector<AcDbObjectIdArray> out(boxes.size());
  if (boxes.empty()) return out;
  std::vector<Box> sorted;
  sorted.reserve(boxes.size());
  double widest = 0;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    const AcGePoint3d &c1 = boxes[i].corner1, &c2 = boxes[i].corner2;
    const Box b{std::min(c1.x, c2.x), std::max(c1.x, c2.x), std::min(c1.y, c2.y), std::max(c1.y, c2.y), i};
    widest = std::max(widest, b.x1 - b.x0);
    sorted.push_back(b);
  }
  std::sort(sorted.begin(), sorted.end(), [](const Box& a, const Box& b) { return a.x0 < b.x0; });
  std::vector<double> lefts;
  lefts.reserve(sorted.size());
  for (const Box& b : sorted) lefts.push_back(b.x0);
  const bool window = mode == SelectMode::kWindow;
  for (const AcDbObjectId id : allEntities(db)) {
    const auto* ent = peek<AcDbEntity>(id);
    AcDbExtents e;
    if (!ent || ent->getGeomExtents(e) != Acad::eOk) continue;
    const AcGePoint3d lo = e.minPoint(), hi = e.maxPoint();
    // A box that holds the entity (window) or touches it (crossing) starts
    // at most this far left of it: no box is wider than the widest. The
    // margin covers rounding of x1 - x0; each candidate is then tested
    // exactly as selectByBox tests it.
    const double reach = window ? hi.x : lo.x;
    const double margin = 1e-9 * (widest + std::abs(reach)) + 1e-9;
    const auto first = std::lower_bound(lefts.begin(), lefts.end(), reach - widest - margin);
    const auto last = std::upper_bound(lefts.begin(), lefts.end(), window ? lo.x : hi.x);
    for (auto it = first; it < last; ++it) {
      const Box& b = sorted[static_cast<std::size_t>(it - lefts.begin())];
      if (boxSelects(e, AcGePoint3d(b.x0, b.y0, 0), AcGePoint3d(b.x1, b.y1, 0), mode)) out[b.index].append(id);
    }
  }
  return out;
}

}  // namespace host
