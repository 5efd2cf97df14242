// An object's state as the file would hold it: the host compares it before
// and after a write opening, so an object closed unchanged counts as
// unmodified (no notification, and its original text is written back).
#include <cstdio>

#include "host/db/block_reference.h"
#include "host/db/dictionary.h"
#include "host/db/symbol_tables.h"
#include "host/dxf/codec.h"

namespace host::dxf {
namespace {

void add(std::string& out, int code, const std::string& value) {
  out += std::to_string(code);
  out += '\x1f';
  out += value;
  out += '\x1e';
}

void addIds(std::string& out, int code, const AcDbObjectIdArray& ids) {
  for (const AcDbObjectId id : ids) add(out, code, std::to_string(id.slotIndex()) + (id.isErased() ? "e" : ""));
}

std::string objectFingerprint(const AcDbObject& obj) {
  const AcDbDatabase* db = obj.database();
  if (!db) return {};
  Diagnostics diag;
  WriteContext ctx{*db, "AC1032", true, diag};
  TagList list;
  if (const auto* rec = AcDbSymbolTableRecord::cast(&obj)) {
    const AcDbObject* table = db->objectAt(obj.ownerId());
    encodeTableRecord(*rec, table ? tableName(*table) : std::string_view(), list, ctx);
  } else if (!AcDbSymbolTable::cast(&obj)) {
    encodeObject(obj, list, ctx);
  }
  std::string out;
  for (const auto& [code, value] : list) add(out, code, value);
  // What a file keeps elsewhere: a table's records, a block's entities, a
  // reference's attributes, and the extended data in full. Records and
  // entities are only ever appended, so their count tells every change of
  // those lists, without a walk over a model space of a million lines on
  // each opening.
  if (const auto* table = AcDbSymbolTable::cast(&obj)) add(out, -1, std::to_string(table->recordIds().length()));
  if (const auto* block = AcDbBlockTableRecord::cast(&obj)) add(out, -2, std::to_string(block->entityIds().length()));
  if (const auto* ref = AcDbBlockReference::cast(&obj)) {
    addIds(out, -3, ref->attributeIds());
    addIds(out, -4, AcDbObjectIdArray{ref->sequenceEndId()});
  }
  if (const AcDbObjectExtras* x = obj.extrasIfAny()) {
    for (const GroupValue& v : x->xdata) {
      char reals[128];
      std::snprintf(reals, sizeof reals, "%a,%a,%a", v.real[0], v.real[1], v.real[2]);
      add(out, v.code, v.text + "|" + std::to_string(v.integer) + "|" + reals);
    }
    addIds(out, -5, x->persistentReactors);
    addIds(out, -6, AcDbObjectIdArray{x->extensionDictionary});
  }
  return out;
}

// Installed when the file library is loaded.
[[maybe_unused]] const bool g_installed = (AcDbDatabase::setObjectFingerprint(&objectFingerprint), true);

}  // namespace
}  // namespace host::dxf
