#include "host/db/database.h"

#include "host/db/handle_index.h"

#include <algorithm>

#include "host/db/dictionary.h"
#include "host/db/peek.h"
#include "host/db/symbol_tables.h"

namespace {
// Live databases by serial; serials are never reused, so ids of a destroyed
// database are recognised. Slot 0 stays empty: serial 0 is the null id.
std::vector<AcDbDatabase*> g_databases(1, nullptr);
std::vector<AcDbDatabase*>& registry() { return g_databases; }
}  // namespace

AcDbHostApplicationServices* acdbHostApplicationServices() {
  static AcDbHostApplicationServices services;
  return &services;
}

AcDbDatabase* AcDbDatabase::fromSerial(std::uint32_t serial) {
  auto& dbs = registry();
  return serial < dbs.size() ? dbs[serial] : nullptr;
}

AcDbDatabase::AcDbDatabase(bool buildDefault) {
  auto& dbs = registry();
  m_serial = static_cast<std::uint32_t>(dbs.size());
  dbs.push_back(this);
  if (buildDefault) buildDefaultDrawing();
}

AcDbDatabase::~AcDbDatabase() {
  if (acdbHostApplicationServices()->workingDatabase() == this)
    acdbHostApplicationServices()->setWorkingDatabase(nullptr);
  m_slots.forEach([](Slot& s) { delete s.object; });
  registry()[m_serial] = nullptr;
}

AcDbDatabase::Slot* AcDbDatabase::slot(AcDbObjectId id) {
  if (id.databaseSerial() != m_serial || id.slotIndex() >= m_slots.size()) return nullptr;
  return &m_slots[id.slotIndex()];
}

const AcDbDatabase::Slot* AcDbDatabase::slot(AcDbObjectId id) const {
  return const_cast<AcDbDatabase*>(this)->slot(id);
}

void AcDbDatabase::setHandseed(AcDbHandle seed) {
  if (seed.value() <= kLargestHandseed + 1) m_handseed = std::max(m_handseed, seed);
}

void AcDbDatabase::reserveHandles(std::size_t count) {
  indexHandles();
  m_byHandle->reserve(count);
}

void AcDbDatabase::indexHandles() {
  if (m_byHandle) return;
  m_byHandle = std::make_unique<HandleIndex>();
  m_byHandle->reserve(m_slots.size() * 2 + 16);
  for (std::uint32_t i = 0; i < m_slots.size(); ++i) m_byHandle->insert(m_slots[i].handle.value(), i);
}

AcDbDatabase::Slot& AcDbDatabase::newSlot(AcDbHandle handle, std::uint32_t& index) {
  const bool far = handle.value() > kLargestHandseed;
  if (handle.isNull() || (handle >= m_handseed && !far)) {
    // A handle at or beyond the seed is free: nothing in use reaches the
    // seed but the far handles, which are looked up.
  } else {
    indexHandles();
    if (m_byHandle->contains(handle.value())) handle = AcDbHandle();
  }
  const bool fresh = handle.isNull();
  if (fresh) {
    handle = m_handseed;
    ++m_handseed;
    if (m_farHandles) {
      indexHandles();
      while (m_byHandle->contains(handle.value())) handle = AcDbHandle(m_handseed.value()), ++m_handseed;
    }
  } else if (far) {
    m_farHandles = true;
  } else if (handle >= m_handseed) {
    m_handseed = AcDbHandle(handle.value() + 1);
  }
  index = static_cast<std::uint32_t>(m_slots.size());
  Slot& s = m_slots.emplace_back();
  s.handle = handle;
  if (m_byHandle) {
    // Handles from the seed only ever grow and are not in use.
    if (fresh) m_byHandle->insertFresh(handle.value(), index);
    else m_byHandle->insert(handle.value(), index);
  }
  return s;
}

Acad::ErrorStatus AcDbDatabase::addObject(AcDbObjectId& id, AcDbObject* obj, AcDbHandle handle) {
  if (!obj) return Acad::eNullObjectPointer;
  if (!obj->objectId().isNull()) return Acad::eAlreadyInDb;
  std::uint32_t index = 0;
  Slot& s = newSlot(handle, index);
  s.object = obj;
  s.writer = true;  // a new object is open for write until its creator closes it
  id = AcDbObjectId(m_serial, index);
  obj->attach(id);
  // Extended data set before the object joined: its applications join too.
  if (const AcDbObjectExtras* x = obj->extrasIfAny(); x && !x->xdata.empty()) registerApplications(x->xdata);
  notifyAppended(obj);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbDatabase::addAcDbObject(AcDbObjectId& id, AcDbObject* obj) {
  return addObject(id, obj, AcDbHandle());
}

Acad::ErrorStatus AcDbDatabase::addAcDbObjectWithHandle(AcDbObjectId& id, AcDbObject* obj, AcDbHandle handle) {
  return addObject(id, obj, handle);
}

Acad::ErrorStatus AcDbDatabase::addDeferredObject(AcDbObjectId& id, AcDbHandle handle, std::uint64_t offset,
                                                  std::uint32_t length) {
  if (!m_loader) return Acad::eNotApplicable;
  std::uint32_t index = 0;
  Slot& s = newSlot(handle, index);
  s.deferred = true;
  s.sourceOffset = offset;
  s.sourceLength = length;
  id = AcDbObjectId(m_serial, index);
  return Acad::eOk;
}

void AcDbDatabase::setObjectLoader(std::unique_ptr<AcDbObjectLoader> loader) { m_loader = std::move(loader); }

AcDbObject* AcDbDatabase::objectAt(AcDbObjectId id) const {
  auto* self = const_cast<AcDbDatabase*>(this);
  Slot* s = self->slot(id);
  if (!s) return nullptr;
  if (s->deferred) m_loader->load(*self, id);
  return s->object;
}

void AcDbDatabase::attachLoaded(AcDbObjectId id, AcDbObject* obj) {
  Slot* s = slot(id);
  if (!s || !s->deferred || !obj) {
    delete obj;
    return;
  }
  s->deferred = false;
  s->object = obj;
  obj->attach(id);
}

Acad::ErrorStatus AcDbDatabase::getAcDbObjectId(AcDbObjectId& id, bool, const AcDbHandle& handle) {
  indexHandles();
  const std::uint32_t index = m_byHandle->find(handle.value());
  if (index == HandleIndex::kNone) {
    id = AcDbObjectId::kNull;
    return Acad::eKeyNotFound;
  }
  id = AcDbObjectId(m_serial, index);
  return Acad::eOk;
}

void AcDbDatabase::registerApplications(const GroupValues& xdata) {
  for (const GroupValue& v : xdata) {
    if (v.code != 1001 || v.text.empty()) continue;
    const auto* table = host::peek<AcDbRegAppTable>(m_regAppTable);
    if (!table || table->has(v.text)) continue;
    AcDbRegAppTable* writable = nullptr;
    if (acdbOpenObject(writable, m_regAppTable, AcDb::kForWrite) != Acad::eOk) continue;
    auto* rec = new AcDbRegAppTableRecord;
    rec->setName(v.text);
    AcDbObjectId id;
    if (writable->add(id, rec) == Acad::eOk) rec->close();
    else delete rec;
    writable->close();
  }
}

void AcDbDatabase::addReactor(AcDbDatabaseReactor* reactor) {
  if (reactor && std::find(m_reactors.begin(), m_reactors.end(), reactor) == m_reactors.end())
    m_reactors.push_back(reactor);
}

void AcDbDatabase::removeReactor(AcDbDatabaseReactor* reactor) {
  m_reactors.erase(std::remove(m_reactors.begin(), m_reactors.end(), reactor), m_reactors.end());
}

void AcDbDatabase::notifyAppended(const AcDbObject* obj) const {
  for (std::size_t i = 0; i < m_reactors.size(); ++i) m_reactors[i]->objectAppended(this, obj);
}
namespace {
AcDbDatabase::ObjectFingerprint& fingerprintFn() {
  static AcDbDatabase::ObjectFingerprint f = nullptr;
  return f;
}
}  // namespace

void AcDbDatabase::setObjectFingerprint(ObjectFingerprint f) { fingerprintFn() = f; }

void AcDbDatabase::rememberState(AcDbObjectId id) {
  const AcDbObject* obj = fingerprintFn() ? objectAt(id) : nullptr;
  if (obj) m_openStates[id.slotIndex()] = fingerprintFn()(*obj);
}

bool AcDbDatabase::changedSinceRemembered(AcDbObjectId id) {
  const auto it = m_openStates.find(id.slotIndex());
  if (it == m_openStates.end()) return true;
  const AcDbObject* obj = objectAt(id);
  const bool changed = !obj || fingerprintFn()(*obj) != it->second;
  m_openStates.erase(it);
  return changed;
}

void AcDbDatabase::notifyModified(const AcDbObject* obj) const {
  for (std::size_t i = 0; i < m_reactors.size(); ++i) m_reactors[i]->objectModified(this, obj);
}
void AcDbDatabase::notifyErased(const AcDbObject* obj, bool erased) const {
  for (std::size_t i = 0; i < m_reactors.size(); ++i) m_reactors[i]->objectErased(this, obj, erased);
}

void AcDbDatabase::setSourceSpan(AcDbObjectId id, std::uint64_t offset, std::uint32_t length) {
  if (Slot* s = slot(id)) {
    s->sourceOffset = offset;
    s->sourceLength = length;
    s->modified = false;
  }
}

std::string_view AcDbDatabase::originalSource(AcDbObjectId id) const {
  const Slot* s = slot(id);
  if (!s || s->sourceLength == 0 || s->sourceOffset + s->sourceLength > m_source.size()) return {};
  return m_source.substr(s->sourceOffset, s->sourceLength);
}

std::string_view AcDbDatabase::unmodifiedSource(AcDbObjectId id) const {
  const Slot* s = slot(id);
  return s && !s->modified ? originalSource(id) : std::string_view();
}

const AcDbHeaderVariable* AcDbDatabase::headerVariable(const std::string& name) const {
  for (const auto& v : m_header)
    if (host::equalsNoCase(v.name, name)) return &v;
  return nullptr;
}

void AcDbDatabase::setHeaderVariable(const std::string& name, GroupValues values) {
  for (auto& v : m_header)
    if (host::equalsNoCase(v.name, name)) {
      v.values = std::move(values);
      return;
    }
  m_header.push_back({name, std::move(values)});
}

namespace {
template <class T>
Acad::ErrorStatus openAs(AcDbObjectId id, T*& out, AcDb::OpenMode mode) {
  return acdbOpenObject(out, id, mode);
}
}  // namespace

Acad::ErrorStatus AcDbDatabase::getBlockTable(AcDbBlockTable*& t, AcDb::OpenMode m) const {
  return openAs(m_blockTable, t, m);
}
Acad::ErrorStatus AcDbDatabase::getLayerTable(AcDbLayerTable*& t, AcDb::OpenMode m) const {
  return openAs(m_layerTable, t, m);
}
Acad::ErrorStatus AcDbDatabase::getLinetypeTable(AcDbLinetypeTable*& t, AcDb::OpenMode m) const {
  return openAs(m_linetypeTable, t, m);
}
Acad::ErrorStatus AcDbDatabase::getTextStyleTable(AcDbTextStyleTable*& t, AcDb::OpenMode m) const {
  return openAs(m_textStyleTable, t, m);
}
Acad::ErrorStatus AcDbDatabase::getRegAppTable(AcDbRegAppTable*& t, AcDb::OpenMode m) const {
  return openAs(m_regAppTable, t, m);
}
Acad::ErrorStatus AcDbDatabase::getNamedObjectsDictionary(AcDbDictionary*& d, AcDb::OpenMode m) const {
  return openAs(m_namedObjects, d, m);
}

AcDbObjectId AcDbDatabase::groupDictionaryId() const {
  const auto* nod = host::peek<AcDbDictionary>(m_namedObjects);
  AcDbObjectId id;
  if (nod) nod->getAt("ACAD_GROUP", id);
  return id;
}

Acad::ErrorStatus AcDbDatabase::setClayer(AcDbObjectId layerId) {
  const auto* layer = host::peek<AcDbLayerTableRecord>(layerId);
  if (!layer || layerId.database() != this) return Acad::eInvalidInput;
  if (layerId.isErased()) return Acad::eWasErased;
  m_clayer = layerId;
  return Acad::eOk;
}

void AcDbDatabase::setRootId(Root root, AcDbObjectId id) {
  switch (root) {
    case Root::kBlockTable: m_blockTable = id; break;
    case Root::kLayerTable: m_layerTable = id; break;
    case Root::kLinetypeTable: m_linetypeTable = id; break;
    case Root::kTextStyleTable: m_textStyleTable = id; break;
    case Root::kRegAppTable: m_regAppTable = id; break;
    case Root::kNamedObjects: m_namedObjects = id; break;
  }
}

void AcDbDatabase::resolveStandardRecords() {
  auto find = [](AcDbObjectId table, const char* name) {
    AcDbObjectId id;
    if (const auto* t = host::peek<AcDbSymbolTable>(table)) t->getAt(name, id);
    return id;
  };
  m_modelSpace = find(m_blockTable, "*Model_Space");
  m_paperSpace = find(m_blockTable, "*Paper_Space");
  m_layerZero = find(m_layerTable, "0");
  m_byLayer = find(m_linetypeTable, "ByLayer");
  m_byBlock = find(m_linetypeTable, "ByBlock");
  m_continuous = find(m_linetypeTable, "Continuous");
  if (m_clayer.isNull() || m_clayer.isErased()) m_clayer = m_layerZero;
  if (m_textStyle.isNull()) m_textStyle = find(m_textStyleTable, "Standard");
}

void AcDbDatabase::buildDefaultDrawing() {
  auto addRoot = [this](AcDbObject* obj) {
    AcDbObjectId id;
    addAcDbObject(id, obj);
    obj->close();
    return id;
  };
  m_blockTable = addRoot(new AcDbBlockTable);
  m_layerTable = addRoot(new AcDbLayerTable);
  m_linetypeTable = addRoot(new AcDbLinetypeTable);
  m_textStyleTable = addRoot(new AcDbTextStyleTable);
  m_regAppTable = addRoot(new AcDbRegAppTable);
  m_namedObjects = addRoot(new AcDbDictionary);

  auto addRecord = [](AcDbObjectId tableId, AcDbSymbolTableRecord* rec, const char* name) {
    AcDbSymbolTable* table = nullptr;
    AcDbObjectId id;
    acdbOpenObject(table, tableId, AcDb::kForWrite);
    rec->setName(name);
    table->add(id, rec);
    rec->close();
    table->close();
    return id;
  };
  addRecord(m_blockTable, new AcDbBlockTableRecord, "*Model_Space");
  addRecord(m_blockTable, new AcDbBlockTableRecord, "*Paper_Space");
  addRecord(m_linetypeTable, new AcDbLinetypeTableRecord, "ByBlock");
  addRecord(m_linetypeTable, new AcDbLinetypeTableRecord, "ByLayer");
  auto* continuous = new AcDbLinetypeTableRecord;
  continuous->setComments("Solid line");
  addRecord(m_linetypeTable, continuous, "Continuous");
  addRecord(m_textStyleTable, new AcDbTextStyleTableRecord, "Standard");
  addRecord(m_regAppTable, new AcDbRegAppTableRecord, "ACAD");
  resolveStandardRecords();
  auto* layer0 = new AcDbLayerTableRecord;
  AcCmColor white;
  white.setColorIndex(7);
  layer0->setColor(white);
  layer0->setLinetypeObjectId(m_continuous);
  m_layerZero = addRecord(m_layerTable, layer0, "0");
  m_clayer = m_layerZero;

  AcDbDictionary* nod = nullptr;
  acdbOpenObject(nod, m_namedObjects, AcDb::kForWrite);
  AcDbObjectId groups;
  auto* groupDict = new AcDbDictionary;
  nod->setAt("ACAD_GROUP", groupDict, groups);
  groupDict->close();
  nod->close();
}
