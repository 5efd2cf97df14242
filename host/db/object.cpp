#include "host/db/object.h"

#include "host/db/database.h"
#include "host/db/dictionary.h"

const AcRxClass* AcDbObject::desc() {
  static const AcRxClass cls("AcDbObject", AcRxObject::desc());
  return &cls;
}

AcDbObject::~AcDbObject() = default;

AcDbObject::AcDbObject(const AcDbObject& other) : AcRxObject(other) {
  if (other.m_extras) {
    m_extras = std::make_unique<AcDbObjectExtras>(*other.m_extras);
    // A copy has no identity yet: it owns no dictionary and nothing watches it.
    m_extras->extensionDictionary = AcDbObjectId::kNull;
    m_extras->persistentReactors.removeAll();
  }
}

AcDbObjectExtras& AcDbObject::extras() {
  if (!m_extras) m_extras = std::make_unique<AcDbObjectExtras>();
  return *m_extras;
}

AcDbObjectId AcDbObject::ownerId() const {
  const AcDbDatabase* db = database();
  const AcDbDatabase::Slot* s = db ? db->slot(m_id) : nullptr;
  return s ? s->owner : AcDbObjectId::kNull;
}

Acad::ErrorStatus AcDbObject::setOwnerId(AcDbObjectId owner) {
  AcDbDatabase* db = database();
  AcDbDatabase::Slot* s = db ? db->slot(m_id) : nullptr;
  if (!s) return Acad::eNoDatabase;
  s->owner = owner;
  return Acad::eOk;
}

bool AcDbObject::isErased() const { return m_id.isErased(); }

bool AcDbObject::isReadEnabled() const {
  const AcDbDatabase* db = database();
  const AcDbDatabase::Slot* s = db ? db->slot(m_id) : nullptr;
  return !s || s->readers > 0 || s->writer;
}

bool AcDbObject::isWriteEnabled() const {
  const AcDbDatabase* db = database();
  const AcDbDatabase::Slot* s = db ? db->slot(m_id) : nullptr;
  return !s || s->writer;
}

Acad::ErrorStatus AcDbObject::assertWriteEnabled() const {
  return isWriteEnabled() ? Acad::eOk : Acad::eWasNotOpenForWrite;
}

Acad::ErrorStatus AcDbObject::erase(bool erasing) {
  AcDbDatabase* db = database();
  AcDbDatabase::Slot* s = db ? db->slot(m_id) : nullptr;
  if (!s) return Acad::eNoDatabase;
  if (!s->writer) return Acad::eWasNotOpenForWrite;
  if (s->erased == erasing) return erasing ? Acad::eWasErased : Acad::eOk;
  s->erased = erasing;
  s->modified = true;
  db->notifyErased(this, erasing);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbObject::upgradeOpen() {
  AcDbDatabase* db = database();
  AcDbDatabase::Slot* s = db ? db->slot(m_id) : nullptr;
  if (!s) return Acad::eOk;
  if (s->writer) return Acad::eOk;
  if (s->readers != 1) return Acad::eWasOpenForRead;
  s->readers = 0;
  s->writer = true;
  db->rememberState(m_id);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbObject::downgradeOpen() {
  AcDbDatabase* db = database();
  AcDbDatabase::Slot* s = db ? db->slot(m_id) : nullptr;
  if (!s || !s->writer) return Acad::eOk;
  s->writer = false;
  s->readers = 1;
  if (db->changedSinceRemembered(m_id)) {
    s->modified = true;
    db->notifyModified(this);
  }
  return Acad::eOk;
}

Acad::ErrorStatus AcDbObject::close() {
  AcDbDatabase* db = database();
  AcDbDatabase::Slot* s = db ? db->slot(m_id) : nullptr;
  if (!s) return Acad::eOk;  // not in a database: nothing is open
  if (s->writer) {
    s->writer = false;
    // Closed as it was opened: nothing to tell, and its text stays.
    if (db->changedSinceRemembered(m_id)) {
      s->modified = true;
      db->notifyModified(this);
    }
  } else if (s->readers > 0) {
    --s->readers;
  }
  return Acad::eOk;
}

resbuf* AcDbObject::xData(const char* appName) const {
  if (!m_extras || m_extras->xdata.empty()) return nullptr;
  const GroupValues& xd = m_extras->xdata;
  if (!appName) return chainFromValues(xd);
  for (auto it = xd.begin(); it != xd.end(); ++it) {
    if (it->code != 1001 || !host::equalsNoCase(it->text, appName)) continue;
    auto end = it + 1;
    while (end != xd.end() && end->code != 1001) ++end;
    return chainFromValues(it, end);
  }
  return nullptr;
}

Acad::ErrorStatus AcDbObject::setXData(const resbuf* chain) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  const GroupValues incoming = valuesFromChain(chain);
  if (incoming.empty() || incoming.front().code != 1001) return Acad::eInvalidInput;
  GroupValues& xd = extras().xdata;
  for (auto run = incoming.begin(); run != incoming.end();) {
    auto runEnd = run + 1;
    while (runEnd != incoming.end() && runEnd->code != 1001) ++runEnd;
    // Drop this application's old run, then append the new one unless empty.
    for (auto it = xd.begin(); it != xd.end(); ++it) {
      if (it->code != 1001 || !host::equalsNoCase(it->text, run->text)) continue;
      auto end = it + 1;
      while (end != xd.end() && end->code != 1001) ++end;
      xd.erase(it, end);
      break;
    }
    if (runEnd - run > 1) xd.insert(xd.end(), run, runEnd);
    run = runEnd;
  }
  if (AcDbDatabase* db = database()) db->registerApplications(xd);
  return Acad::eOk;
}

AcDbObjectId AcDbObject::extensionDictionary() const {
  return m_extras ? m_extras->extensionDictionary : AcDbObjectId::kNull;
}

Acad::ErrorStatus AcDbObject::createExtensionDictionary() {
  AcDbDatabase* db = database();
  if (!db) return Acad::eNoDatabase;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  if (!extensionDictionary().isNull()) return Acad::eAlreadyInDb;
  auto* dict = new AcDbDictionary;
  dict->setHardOwner(true);
  AcDbObjectId id;
  db->addAcDbObject(id, dict);
  dict->setOwnerId(m_id);
  dict->close();
  extras().extensionDictionary = id;
  return Acad::eOk;
}

Acad::ErrorStatus acdbOpenAcDbObject(AcDbObject*& obj, AcDbObjectId id, AcDb::OpenMode mode, bool openErased,
                                     const AcRxClass* cls) {
  obj = nullptr;
  if (id.isNull()) return Acad::eNullObjectId;
  AcDbDatabase* db = id.database();
  AcDbDatabase::Slot* s = db ? db->slot(id) : nullptr;
  if (!s) return Acad::eWrongDatabase;  // no live database issued this id
  if (!db->objectAt(id)) return Acad::eNullObjectPointer;
  if (s->erased && !openErased) return Acad::eWasErased;
  if (cls && !s->object->isKindOf(cls)) return Acad::eNotThatKindOfClass;
  if (s->writer) return Acad::eWasOpenForWrite;
  if (mode == AcDb::kForWrite) {
    if (s->readers > 0) return Acad::eWasOpenForRead;
    s->writer = true;
    db->rememberState(id);
  } else {
    if (s->readers >= 256) return Acad::eAtMaxReaders;
    ++s->readers;
  }
  obj = s->object;
  return Acad::eOk;
}
