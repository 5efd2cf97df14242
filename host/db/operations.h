#pragma once
// Database operations built from the object interface: creating, erasing
// and exploding entities, and the selections the editor builds on.
#include <functional>
#include <memory>

#include "host/db/block_reference.h"
#include "host/db/curves.h"
#include "host/db/database.h"
#include "host/db/dictionary.h"
#include "host/db/id_mapping.h"
#include "host/db/other_entities.h"
#include "host/db/polylines.h"
#include "host/db/symbol_tables.h"

namespace host {

// Appends an entity to a block table record (model space when blockId is
// null) and closes it. On failure the entity is deleted and id stays null.
// Entities with NaN or infinite coordinates are refused (eInvalidInput).
Acad::ErrorStatus appendEntity(AcDbDatabase* db, AcDbEntity* entity, AcDbObjectId& id,
                               AcDbObjectId blockId = AcDbObjectId::kNull);

// Erases the object; a group erases its members (recursively) and stays.
// A null id does nothing; an already erased object counts as done.
Acad::ErrorStatus eraseObject(AcDbObjectId id);

// Opens the object for write (the checks of acdbOpenAcDbObject, and its
// class when cls is given) for an edit that tells whether it changed the
// object: edit returns true when it did, and the object is then marked
// modified and its change told, as closing an ordinary opening does when the
// object's state differs from what it was at the opening. No state is taken
// here: for edits that know what they changed (an id set to another id, or
// nothing at all), in bulk. The status of the opening is returned.
Acad::ErrorStatus editObject(AcDbObjectId id, const AcRxClass* cls, const std::function<bool(AcDbObject*)>& edit);

// Explodes the entity, appends the pieces to the block that owns it (model
// space for a free entity) and collects their ids in order; the original is
// erased when eraseOriginal.
Acad::ErrorStatus explodeEntity(AcDbObjectId id, AcDbObjectIdArray& pieces, bool eraseOriginal);

// Looks up a layer by name; creates it when create and it is missing.
Acad::ErrorStatus findLayer(AcDbDatabase* db, const CString& name, AcDbObjectId& id, bool create = false);

// Selections by extents.
enum class SelectMode { kWindow, kCrossing };
AcDbObjectIdArray allEntities(const AcDbDatabase* db);  // unerased, model space order
AcDbObjectIdArray entitiesOnLayer(const AcDbDatabase* db, const CString& layer);  // exact name
AcDbObjectIdArray selectByBox(const AcDbDatabase* db, const AcGePoint3d& corner1, const AcGePoint3d& corner2,
                              SelectMode mode);
// Whether a selection over the box lo..hi (lo below and left of hi) takes an
// entity with these extents: a window one when they lie inside the box, a
// crossing one when they touch it.
inline bool boxSelects(const AcDbExtents& e, const AcGePoint3d& lo, const AcGePoint3d& hi, SelectMode mode) {
  const AcGePoint3d a = e.minPoint(), b = e.maxPoint();
  if (mode == SelectMode::kWindow) return a.x >= lo.x && b.x <= hi.x && a.y >= lo.y && b.y <= hi.y;
  return a.x <= hi.x && b.x >= lo.x && a.y <= hi.y && b.y >= lo.y;
}

// True when every coordinate of the entity's defining points is finite.
bool hasFiniteGeometry(const AcDbEntity* entity);

// Re-expresses a planar entity whose normal is (0,0,-1), as mirrored drawings
// store them, with a +Z normal: the same points, arcs counter-clockwise about
// +Z, bulges negated. Other entities are left as they are. The entity must be
// open for write (or not yet in a database).
Acad::ErrorStatus presentInWorld(AcDbEntity* entity);

}  // namespace host
