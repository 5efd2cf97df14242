#include "ui/selection_limits.h"

#include <cmath>
#include <cstdio>

#include "host/db/block_extents.h"
#include "host/db/block_reference.h"
#include "host/db/curves.h"

std::string CheckOutlineSelectionSize(const AcArray<AcDbObjectId>& selection, double dStep) {
  host::BlockExtents blocks;
  double chords = 0;
  char buf[64];
  for (AcDbObjectId id : selection) {
    AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
    if (!ent) continue;
    const std::string handle = id.handle().toHex();
    if (const auto* ref = AcDbBlockReference::cast(ent.get())) {
      std::uint64_t count = 0;
      const Acad::ErrorStatus es = blocks.explodedCount(*ref, count);
      if (es == Acad::eSelfReference) return "block reference " + handle + " inserts a block that inserts itself";
      if (count > host::kMaxExplodedEntities) {
        std::snprintf(buf, sizeof buf, "%.3g", static_cast<double>(count));
        return "block reference " + handle + " explodes into " + buf + " entities, more than the limit of " +
               std::to_string(host::kMaxExplodedEntities);
      }
      continue;
    }
    const bool chorded = ent->isKindOf(AcDbArc::desc()) || ent->isKindOf(AcDbSpline::desc());
    if (!chorded) continue;
    const auto* curve = AcDbCurve::cast(ent.get());
    double end = 0, length = 0;
    if (curve->getEndParam(end) != Acad::eOk || curve->getDistAtParam(end, length) != Acad::eOk) continue;
    if (!std::isfinite(length)) return "entity " + handle + " has no finite length";
    chords += length / dStep;
    if (chords > kMaxOutlineChords) {
      std::snprintf(buf, sizeof buf, "%.6g", length);
      return "entity " + handle + " (length " + buf + ") would make more than " +
             std::to_string(static_cast<long long>(kMaxOutlineChords)) + " chords of " + std::to_string(dStep) +
             " with the selection's other curves";
    }
  }
  return {};
}
