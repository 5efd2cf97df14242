#pragma once
// The base of everything stored in a drawing database.
#include <memory>

#include "host/base/error_status.h"
#include "host/base/strings.h"
#include "host/db/object_id.h"
#include "host/db/resbuf.h"
#include "host/db/rx_class.h"

class AcDbDatabase;
class AcDbObject;

// Data that most objects lack, kept out of line so that plain entities stay small.
struct AcDbObjectExtras {
  GroupValues xdata;  // extended data: runs that each start with a 1001 application name
  AcDbObjectId extensionDictionary;
  AcDbObjectIdArray persistentReactors;
  // Data of this object that the host does not model, kept for files that
  // carry it (group values in file order).
  GroupValues unmodelled;
};

// Notified of changes to a database's objects.
class AcDbDatabaseReactor {
 public:
  virtual ~AcDbDatabaseReactor() = default;
  virtual void objectAppended(const AcDbDatabase*, const AcDbObject*) {}
  virtual void objectModified(const AcDbDatabase*, const AcDbObject*) {}
  virtual void objectErased(const AcDbDatabase*, const AcDbObject*, bool /*erased*/) {}
};

class AcDbObject : public AcRxObject {
 public:
  ACRX_DECLARE_MEMBERS(AcDbObject)
  AcDbObject() = default;
  ~AcDbObject() override;

  AcDbObjectId objectId() const { return m_id; }
  AcDbObjectId ownerId() const;
  Acad::ErrorStatus setOwnerId(AcDbObjectId owner);
  AcDbDatabase* database() const { return m_id.database(); }
  AcDbHandle handle() const { return m_id.handle(); }
  bool isErased() const;
  bool isReadEnabled() const;
  bool isWriteEnabled() const;

  // Erasing marks the object; it stays addressable (and can be unerased).
  // Requires the object to be open for write.
  Acad::ErrorStatus erase(bool erasing = true);
  Acad::ErrorStatus upgradeOpen();
  Acad::ErrorStatus downgradeOpen();
  // Ends this opening; a write opening notifies the database's reactors.
  Acad::ErrorStatus close();

  // Extended data of one application (the chain starts with its 1001 name),
  // or of all applications when appName is null. The caller frees the chain
  // with acutRelRb; null when there is none.
  resbuf* xData(const char* appName = nullptr) const;
  // Replaces the data of every application named in the chain; an
  // application given with no values loses its data.
  Acad::ErrorStatus setXData(const resbuf* xdata);
  AcDbObjectId extensionDictionary() const;
  Acad::ErrorStatus createExtensionDictionary();

  // A copy with no identity, for deep cloning. Owned sub-objects are the
  // database's business (see AcDbDatabase::deepCloneObjects).
  virtual AcDbObject* cloneObject() const = 0;

  // Host-internal.
  AcDbObjectExtras& extras();
  const AcDbObjectExtras* extrasIfAny() const { return m_extras.get(); }
  void attach(AcDbObjectId id) { m_id = id; }

 protected:
  AcDbObject(const AcDbObject& other);
  AcDbObject& operator=(const AcDbObject&) = delete;
  // Fails with eWasNotOpenForWrite for a resident object not open for write.
  Acad::ErrorStatus assertWriteEnabled() const;

 private:
  AcDbObjectId m_id;
  std::unique_ptr<AcDbObjectExtras> m_extras;
};

// Opening. The object must belong to a live database, be unerased (unless
// openErased), and match cls when one is given. Several readers or one
// writer may hold an object at a time.
Acad::ErrorStatus acdbOpenAcDbObject(AcDbObject*& obj, AcDbObjectId id, AcDb::OpenMode mode,
                                     bool openErased = false, const AcRxClass* cls = nullptr);

template <class T>
Acad::ErrorStatus acdbOpenObject(T*& obj, AcDbObjectId id, AcDb::OpenMode mode, bool openErased = false) {
  AcDbObject* o = nullptr;
  obj = nullptr;
  const Acad::ErrorStatus es = acdbOpenAcDbObject(o, id, mode, openErased, T::desc());
  if (es == Acad::eOk) obj = static_cast<T*>(o);
  return es;
}

// Opens an object for the life of the scope and closes it at the end.
template <class T>
class AcDbObjectPointer {
 public:
  AcDbObjectPointer() = default;
  AcDbObjectPointer(AcDbObjectId id, AcDb::OpenMode mode, bool openErased = false) {
    m_status = acdbOpenObject(m_obj, id, mode, openErased);
  }
  ~AcDbObjectPointer() { close(); }
  AcDbObjectPointer(const AcDbObjectPointer&) = delete;
  AcDbObjectPointer& operator=(const AcDbObjectPointer&) = delete;

  Acad::ErrorStatus open(AcDbObjectId id, AcDb::OpenMode mode, bool openErased = false) {
    close();
    return m_status = acdbOpenObject(m_obj, id, mode, openErased);
  }
  Acad::ErrorStatus openStatus() const { return m_status; }
  void close() {
    if (m_obj) m_obj->close();
    m_obj = nullptr;
  }
  T* get() const { return m_obj; }
  T* operator->() const { return m_obj; }
  explicit operator bool() const { return m_obj != nullptr; }

 private:
  T* m_obj = nullptr;
  Acad::ErrorStatus m_status = Acad::eNullObjectId;
};
