#pragma once
// Host-internal read access to an object without opening it, for the host's
// own look-ups (names of layers, entities of a block) where an opening would
// collide with the caller's.
#include "host/db/database.h"

namespace host {
template <class T>
const T* peek(AcDbObjectId id) {
  AcDbDatabase* db = id.database();
  return db ? T::cast(db->objectAt(id)) : nullptr;
}
}  // namespace host
