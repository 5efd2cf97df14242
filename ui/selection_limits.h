#pragma once
// Whether a selection can be given to the outline engine with bounded work:
// block references that would explode into more entities than the host
// allows, and arcs or splines so long that their chords (one per step of
// the arc discretisation) would run into the hundreds of millions, are
// named before the engine starts instead of exhausting memory on them.
#include <string>

#include "host/base/ac_array.h"
#include "host/db/object_id.h"

// Chords the engine may make of the selection's curves in all.
constexpr double kMaxOutlineChords = 5e6;

// Empty when the selection is fine; else what is wrong, naming the entity
// by handle.
std::string CheckOutlineSelectionSize(const AcArray<AcDbObjectId>& selection, double dStep);
