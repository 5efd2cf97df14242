#pragma once
// Small drawing operations the module shares. They act on the working
// database and never throw; failures give null ids or false.
#include "host/base/ac_array.h"
#include "host/base/strings.h"
#include "host/db/object_id.h"
#include "host/ge/vectors.h"

namespace util {

// Two points closer than this make no line.
constexpr double kMinLineLength = 1e-6;

// A new line in model space with colour 256 (by layer), on the current
// layer or on layer when one is named; null when the points are closer than
// kMinLineLength.
AcDbObjectId CreateLine(const AcGePoint3d& start, const AcGePoint3d& end, const CString& layer = CString());
// The same on the layer of that id (the current layer when it is null): no
// look-up by name, for callers that make many lines on one layer.
AcDbObjectId CreateLine(const AcGePoint3d& start, const AcGePoint3d& end, AcDbObjectId layerId);

// Erases an entity; a group erases its members (recursively) and stays. A
// null id does nothing; an object that does not open is passed over.
void EraseEntity(AcDbObjectId id);

// Explodes an entity into model space, gathering the pieces' ids in order,
// and erases it when bErase. False when it does not explode.
bool ExplodeEntity(AcDbObjectId id, AcArray<AcDbObjectId>& pieces, bool bErase = true);

// Every unerased entity of model space on the layer (names compared as
// layer names are: ASCII letters without case).
AcArray<AcDbObjectId> SelectAllOnLayer(const CString& layer);

// The layer name of an entity; empty when it does not open.
CString GetLayerName(AcDbObjectId id);
// The id of an entity's layer; null when it does not open.
AcDbObjectId GetLayerId(AcDbObjectId id);

}  // namespace util
