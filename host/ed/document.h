#pragma once
// Documents: an open drawing with its lock, and the manager that knows the
// current one. Opening a document makes its database the working database.
#include <memory>
#include <string>
#include <vector>

#include "host/base/error_status.h"
#include "host/db/database.h"

namespace AcAp {
enum DocLockMode { kNone = 0, kAutoWrite = 1, kNotLocked = 2, kWrite = 4, kProtectedAutoWrite = 20, kRead = 32, kXWrite = 64 };
}

class AcApDocument {
 public:
  AcApDocument(std::shared_ptr<AcDbDatabase> db, std::string fileName);
  AcDbDatabase* database() const { return m_db.get(); }
  const std::string& fileName() const { return m_fileName; }
  AcAp::DocLockMode lockMode() const { return m_locks > 0 ? m_mode : AcAp::kNotLocked; }
  int lockCount() const { return m_locks; }

 private:
  friend class AcApDocManager;
  std::shared_ptr<AcDbDatabase> m_db;
  std::string m_fileName;
  AcAp::DocLockMode m_mode = AcAp::kNotLocked;
  int m_locks = 0;
};

class AcApDocManager {
 public:
  AcApDocument* curDocument() const { return m_current; }
  AcApDocument* mdiActiveDocument() const { return m_current; }
  // Locks nest: each lock needs its unlock.
  Acad::ErrorStatus lockDocument(AcApDocument* doc, AcAp::DocLockMode mode = AcAp::kWrite);
  Acad::ErrorStatus unlockDocument(AcApDocument* doc);

  // Takes a drawing in as a document and makes it current.
  AcApDocument* openDocument(std::unique_ptr<AcDbDatabase> db, std::string fileName = "Drawing1.dxf");
  // A document over a database that its caller keeps owning (and keeps alive
  // until the document is closed).
  AcApDocument* openBorrowedDocument(AcDbDatabase* db, std::string fileName);
  Acad::ErrorStatus closeDocument(AcApDocument* doc);
  Acad::ErrorStatus setCurDocument(AcApDocument* doc);
  const std::vector<std::unique_ptr<AcApDocument>>& documents() const { return m_docs; }

 private:
  std::vector<std::unique_ptr<AcApDocument>> m_docs;
  AcApDocument* m_current = nullptr;
};

AcApDocManager* acDocManagerPtr();
#define acDocManager acDocManagerPtr()

// Locks the current document for the life of the scope.
class AcAxDocLock {
 public:
  explicit AcAxDocLock(AcAp::DocLockMode mode = AcAp::kWrite);
  ~AcAxDocLock();
  AcAxDocLock(const AcAxDocLock&) = delete;
  AcAxDocLock& operator=(const AcAxDocLock&) = delete;
  Acad::ErrorStatus lockStatus() const { return m_status; }

 private:
  AcApDocument* m_doc = nullptr;
  Acad::ErrorStatus m_status = Acad::eNoDatabase;
};
