#pragma once
// Boundary tracing: the closed region around a seed point, found among the
// curves drawn in a block, returned as closed polylines.
#include <memory>
#include <vector>

#include "host/base/error_status.h"
#include "host/db/object_id.h"
#include "host/db/polylines.h"

class AcDbDatabase;

namespace host {

// Traces the region of the block that contains seed (in the block's XY
// plane). The curves that bound regions are the block's lines, arcs,
// circles, ellipses, splines and polylines that can be seen: entities that
// are invisible, or on a layer that is off or frozen, take no part, nor do
// block references, texts and other kinds. Curves are noded where they meet
// or cross (coordinates rounded to 1e-6, so ends that miss each other by
// less still meet), dangling pieces are ignored and curved pieces become chords no
// longer than chordLength (at most 4096 chords a curve).
//
// boundaries receives closed polylines that belong to no database: first
// the region's outer boundary, then the boundary of each island inside it.
// Each runs counter-clockwise from its lowest-leftmost vertex, with
// straight-through vertices left out. eOk with an empty list when the seed
// lies in no closed region (or on a curve); eInvalidInput for a non-finite
// seed; eNullObjectId or eNotOpenForRead when the block cannot be read.
Acad::ErrorStatus traceBoundary(AcDbObjectId blockId, const AcGePoint3d& seed,
                                std::vector<std::unique_ptr<AcDbPolyline>>& boundaries, double chordLength = 0.25);

}  // namespace host
