#pragma once
// Table records tests make: a linetype and a block, by name.
#include "host/db/operations.h"

namespace testdb {

// The linetype of that name, added when the drawing has none.
inline AcDbObjectId Linetype(AcDbDatabase* db, const char* name) {
  AcDbLinetypeTable* table = nullptr;
  acdbOpenObject(table, db->linetypeTableId(), AcDb::kForWrite);
  AcDbObjectId id;
  if (table->getAt(name, id) != Acad::eOk) {
    auto* rec = new AcDbLinetypeTableRecord;
    rec->setName(name);
    table->add(id, rec);
    rec->close();
  }
  table->close();
  return id;
}

// A new empty block with its base point at origin.
inline AcDbObjectId Block(AcDbDatabase* db, const char* name, AcGePoint3d origin = {}) {
  AcDbBlockTable* table = nullptr;
  db->getBlockTable(table, AcDb::kForWrite);
  auto* rec = new AcDbBlockTableRecord;
  rec->setName(name);
  rec->setOrigin(origin);
  AcDbObjectId id;
  table->add(id, rec);
  rec->close();
  table->close();
  return id;
}

}  // namespace testdb
