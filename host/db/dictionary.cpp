#include "host/db/dictionary.h"

#include "host/db/database.h"
#include "host/db/setter.h"

ACRX_DEFINE_MEMBERS(AcDbDictionary, AcDbObject)
ACRX_DEFINE_MEMBERS(AcDbXrecord, AcDbObject)
ACRX_DEFINE_MEMBERS(AcDbGroup, AcDbObject)
ACRX_DEFINE_MEMBERS(AcDbGenericObject, AcDbObject)

Acad::ErrorStatus AcDbDictionary::getAt(const CString& key, AcDbObjectId& id) const {
  for (const auto& e : m_entries)
    if (host::equalsNoCase(e.key, key) && !e.id.isErased()) {
      id = e.id;
      return Acad::eOk;
    }
  id = AcDbObjectId::kNull;
  return Acad::eKeyNotFound;
}

bool AcDbDictionary::has(const CString& key) const {
  AcDbObjectId id;
  return getAt(key, id) == Acad::eOk;
}

Acad::ErrorStatus AcDbDictionary::setAt(const CString& key, AcDbObject* obj, AcDbObjectId& id) {
  AcDbDatabase* db = database();
  if (!db) return Acad::eNoDatabase;
  if (!obj || key.empty()) return Acad::eInvalidInput;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  if (obj->objectId().isNull()) {
    if (const auto es = db->addAcDbObject(id, obj); es != Acad::eOk) return es;
  } else {
    id = obj->objectId();
  }
  obj->setOwnerId(objectId());
  for (auto& e : m_entries)
    if (host::equalsNoCase(e.key, key)) {
      // The replaced object goes with its entry.
      if (e.id != id) {
        AcDbObject* old = nullptr;
        if (acdbOpenAcDbObject(old, e.id, AcDb::kForWrite) == Acad::eOk) {
          old->erase();
          old->close();
        }
      }
      e.id = id;
      return Acad::eOk;
    }
  m_entries.push_back({key, id});
  return Acad::eOk;
}

Acad::ErrorStatus AcDbDictionary::remove(const CString& key) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  for (auto it = m_entries.begin(); it != m_entries.end(); ++it)
    if (host::equalsNoCase(it->key, key)) {
      m_entries.erase(it);
      return Acad::eOk;
    }
  return Acad::eKeyNotFound;
}

void AcDbDictionary::adopt(const CString& key, AcDbObjectId id) { m_entries.push_back({key, id}); }

AcDbObject* AcDbDictionary::cloneObject() const {
  auto* copy = new AcDbDictionary(*this);
  copy->m_entries.clear();  // entries belong to the original's owner tree
  return copy;
}

Acad::ErrorStatus AcDbXrecord::rbChain(resbuf** chain) const {
  if (!chain) return Acad::eInvalidInput;
  *chain = chainFromValues(m_values);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbXrecord::setFromRbChain(const resbuf& chain) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_values = valuesFromChain(&chain);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbGroup::setDescription(const CString& d) { HOST_SET(m_description, d); }
Acad::ErrorStatus AcDbGroup::setSelectable(bool s) { HOST_SET(m_selectable, s); }

Acad::ErrorStatus AcDbGroup::append(AcDbObjectId id) {
  if (id.isNull()) return Acad::eNullObjectId;
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  if (m_members.contains(id)) return Acad::eDuplicateKey;
  m_members.append(id);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbGroup::remove(AcDbObjectId id) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  return m_members.remove(id) ? Acad::eOk : Acad::eKeyNotFound;
}

Acad::ErrorStatus AcDbGroup::allEntityIds(AcDbObjectIdArray& ids) const {
  ids.removeAll();
  for (const AcDbObjectId id : m_members)
    if (!id.isErased()) ids.append(id);
  return Acad::eOk;
}

Acad::ErrorStatus AcDbGenericObject::setData(Tags data) {
  if (const auto es = assertWriteEnabled(); es != Acad::eOk) return es;
  m_data = std::move(data);
  return Acad::eOk;
}
