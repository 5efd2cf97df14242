#pragma once
// The boundary of the region around a point, as polylines in the drawing.
#include "host/base/ac_array.h"
#include "host/base/strings.h"
#include "host/db/object_id.h"
#include "host/ge/vectors.h"

namespace util {

// Traces the closed region of the working database's block (by name, for
// example "*Model_Space") that contains seed, among the curves that can be
// seen there, and appends its boundaries to that block as closed polylines
// on the current layer: the outer boundary first, then one per island.
// Their ids are returned; none when the point lies in no closed region or
// the block does not exist.
AcArray<AcDbObjectId> CreateBoundary(const AcGePoint3d& seed, const CString& blockName);

}  // namespace util
