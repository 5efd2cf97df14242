#include "host/db/symbol_tables.h"

#include "host/db/database.h"
#include "host/db/setter.h"

ACRX_DEFINE_MEMBERS(AcDbSymbolTableRecord, AcDbObject)
ACRX_DEFINE_MEMBERS(AcDbSymbolTable, AcDbObject)
ACRX_DEFINE_MEMBERS(AcDbBlockTableRecord, AcDbSymbolTableRecord)
ACRX_DEFINE_MEMBERS(AcDbLayerTableRecord, AcDbSymbolTableRecord)
ACRX_DEFINE_MEMBERS(AcDbLinetypeTableRecord, AcDbSymbolTableRecord)
ACRX_DEFINE_MEMBERS(AcDbTextStyleTableRecord, AcDbSymbolTableRecord)
ACRX_DEFINE_MEMBERS(AcDbRegAppTableRecord, AcDbSymbolTableRecord)
ACRX_DEFINE_MEMBERS(AcDbGenericTableRecord, AcDbSymbolTableRecord)
ACRX_DEFINE_MEMBERS(AcDbBlockTable, AcDbSymbolTable)
ACRX_DEFINE_MEMBERS(AcDbLayerTable, AcDbSymbolTable)
ACRX_DEFINE_MEMBERS(AcDbLinetypeTable, AcDbSymbolTable)
ACRX_DEFINE_MEMBERS(AcDbTextStyleTable, AcDbSymbolTable)
ACRX_DEFINE_MEMBERS(AcDbRegAppTable, AcDbSymbolTable)
ACRX_DEFINE_MEMBERS(AcDbGenericTable, AcDbSymbolTable)

Acad::ErrorStatus AcDbSymbolTableRecord::setName(const CString& name) {
  if (name.empty()) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_name = name;
  // The owning table looks records up by name.
  if (AcDbDatabase* db = database())
    if (AcDbDatabase::Slot* owner = db->slot(ownerId()))
      if (auto* table = AcDbSymbolTable::cast(owner->object)) table->reindex();
  return Acad::eOk;
}

Acad::ErrorStatus AcDbSymbolTable::add(AcDbObjectId& id, AcDbSymbolTableRecord* record) {
  AcDbDatabase* db = database();
  if (!db) return Acad::eNoDatabase;
  if (!record) return Acad::eNullObjectPointer;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  if (record->getName().empty()) return Acad::eInvalidInput;
  if (has(record->getName())) return Acad::eDuplicateKey;
  if (const auto es = db->addAcDbObject(id, record); es != Acad::eOk) return es;
  record->setOwnerId(objectId());
  adopt(id, record->getName());
  return Acad::eOk;
}

Acad::ErrorStatus AcDbSymbolTable::add(AcDbSymbolTableRecord* record) {
  AcDbObjectId id;
  return add(id, record);
}

void AcDbSymbolTable::adopt(AcDbObjectId id, const CString& name) {
  m_records.append(id);
  // Unnamed records (shape-file text styles) are kept but cannot be looked up.
  if (!name.empty()) m_byName.emplace(host::foldCase(name), id);
}

void AcDbSymbolTable::reindex() {
  m_byName.clear();
  for (const AcDbObjectId id : m_records) {
    const AcDbDatabase* db = id.database();
    const auto* s = db ? db->slot(id) : nullptr;
    const auto* rec = s ? AcDbSymbolTableRecord::cast(s->object) : nullptr;
    if (!rec || rec->getName().empty()) continue;
    // Unerased records win over erased ones of the same name.
    const std::string key = host::foldCase(rec->getName());
    auto it = m_byName.find(key);
    if (it == m_byName.end()) m_byName.emplace(key, id);
    else if (it->second.isErased() && !id.isErased()) it->second = id;
  }
}

Acad::ErrorStatus AcDbSymbolTable::getAt(const CString& name, AcDbObjectId& id, bool getErased) const {
  const auto it = m_byName.find(host::foldCase(name));
  if (it == m_byName.end() || (!getErased && it->second.isErased())) {
    id = AcDbObjectId::kNull;
    return Acad::eKeyNotFound;
  }
  id = it->second;
  return Acad::eOk;
}

bool AcDbSymbolTable::has(const CString& name) const {
  AcDbObjectId id;
  return getAt(name, id) == Acad::eOk;
}

bool AcDbSymbolTable::has(AcDbObjectId id) const { return m_records.contains(id) && !id.isErased(); }

Acad::ErrorStatus AcDbBlockTableRecord::setOrigin(const AcGePoint3d& p) { HOST_SET(m_origin, p); }

Acad::ErrorStatus AcDbBlockTableRecord::appendAcDbEntity(AcDbObjectId& id, AcDbEntity* entity) {
  AcDbDatabase* db = database();
  if (!db) return Acad::eNoDatabase;
  if (!entity) return Acad::eNullObjectPointer;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  if (entity->layerId().isNull()) entity->setLayer(db->clayer());
  if (entity->linetypeId().isNull()) entity->setLinetype(db->byLayerLinetype());
  if (const auto es = db->addAcDbObject(id, entity); es != Acad::eOk) return es;
  entity->setOwnerId(objectId());
  m_entities.append(id);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbBlockTableRecord::appendAcDbEntity(AcDbEntity* entity) {
  AcDbObjectId id;
  return appendAcDbEntity(id, entity);
}

bool AcDbBlockTableRecord::isLayout() const {
  const CString& n = getName();
  return host::equalsNoCase(n, "*Model_Space") || host::foldCase(n).rfind("*PAPER_SPACE", 0) == 0;
}

AcDbObject* AcDbBlockTableRecord::cloneObject() const {
  auto* copy = new AcDbBlockTableRecord(*this);
  copy->m_entities.removeAll();  // a copied record starts empty
  return copy;
}

void AcDbLayerTableRecord::setIsOff(bool off) {
  if (assertWriteEnabled() == Acad::eOk) m_off = off;
}
Acad::ErrorStatus AcDbLayerTableRecord::setIsFrozen(bool frozen) { HOST_SET(m_frozen, frozen); }
void AcDbLayerTableRecord::setIsLocked(bool locked) {
  if (assertWriteEnabled() == Acad::eOk) m_locked = locked;
}
void AcDbLayerTableRecord::setIsPlottable(bool plottable) {
  if (assertWriteEnabled() == Acad::eOk) m_plottable = plottable;
}
void AcDbLayerTableRecord::setColor(const AcCmColor& c) {
  if (assertWriteEnabled() == Acad::eOk) m_color = c;
}
void AcDbLayerTableRecord::setLinetypeObjectId(AcDbObjectId id) {
  if (assertWriteEnabled() == Acad::eOk) m_linetype = id;
}
void AcDbLayerTableRecord::setLineWeight(std::int16_t w) {
  if (assertWriteEnabled() == Acad::eOk) m_lineWeight = w;
}

void AcDbLinetypeTableRecord::setComments(const CString& c) {
  if (assertWriteEnabled() == Acad::eOk) m_comments = c;
}
void AcDbLinetypeTableRecord::setPatternLength(double l) {
  if (assertWriteEnabled() == Acad::eOk) m_patternLength = l;
}
void AcDbLinetypeTableRecord::setDashes(const std::vector<double>& d) {
  if (assertWriteEnabled() == Acad::eOk) m_dashes = d;
}

void AcDbTextStyleTableRecord::setFileName(const CString& f) {
  if (assertWriteEnabled() == Acad::eOk) m_file = f;
}
void AcDbTextStyleTableRecord::setBigFontFileName(const CString& f) {
  if (assertWriteEnabled() == Acad::eOk) m_bigFont = f;
}
void AcDbTextStyleTableRecord::setTextSize(double s) {
  if (assertWriteEnabled() == Acad::eOk) m_size = s;
}
void AcDbTextStyleTableRecord::setXScale(double s) {
  if (assertWriteEnabled() == Acad::eOk) m_xScale = s;
}
