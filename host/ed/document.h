#pragma once
// Documents: the open drawings, each with its database, file, modified flag
// and lock; the manager that knows the current one, tells its reactors when
// documents come and go, and queues command text for a document.
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "host/base/error_status.h"
#include "host/db/database.h"
#include "host/dxf/dxf_file.h"

namespace AcAp {
enum DocLockMode { kNone = 0, kAutoWrite = 1, kNotLocked = 2, kWrite = 4, kProtectedAutoWrite = 20, kRead = 32, kXWrite = 64 };
}

class AcApDocument {
 public:
  AcApDocument(std::shared_ptr<AcDbDatabase> db, std::string fileName);
  ~AcApDocument();
  AcApDocument(const AcApDocument&) = delete;
  AcApDocument& operator=(const AcApDocument&) = delete;

  AcDbDatabase* database() const { return m_db.get(); }
  const std::string& fileName() const { return m_fileName; }
  // The strongest lock currently held, kNotLocked when none.
  AcAp::DocLockMode lockMode() const;
  int lockCount() const;
  // True once an object of the drawing was added, changed or erased since it
  // was opened or last saved.
  bool isModified() const { return m_modified; }
  void setModified(bool modified) { m_modified = modified; }
  // What the drawing's file told about itself (version, code page, kept
  // sections); a new drawing has the defaults.
  const host::dxf::DxfFileInfo& fileInfo() const { return m_info; }
  void setFileInfo(host::dxf::DxfFileInfo info) { m_info = std::move(info); }
  void setFileName(std::string name) { m_fileName = std::move(name); }

 private:
  friend class AcApDocManager;
  class Watcher;
  std::shared_ptr<AcDbDatabase> m_db;
  std::string m_fileName;
  host::dxf::DxfFileInfo m_info;
  bool m_modified = false;
  bool m_owned = true;
  std::unique_ptr<Watcher> m_watcher;
  // Lock holders: one writing thread (with its nesting count) or any number
  // of reading threads.
  struct Holder {
    std::thread::id thread;
    AcAp::DocLockMode mode;
  };
  std::vector<Holder> m_holders;
};

// Notified when documents are created, activated and destroyed.
class AcApDocManagerReactor {
 public:
  virtual ~AcApDocManagerReactor() = default;
  virtual void documentCreated(AcApDocument*) {}
  virtual void documentToBeActivated(AcApDocument*) {}
  virtual void documentActivated(AcApDocument*) {}
  virtual void documentToBeDestroyed(AcApDocument*) {}
};

// Walks the open documents in the order they were opened.
class AcApDocumentIterator {
 public:
  explicit AcApDocumentIterator(std::vector<AcApDocument*> docs) : m_docs(std::move(docs)) {}
  bool done() const { return m_index >= m_docs.size(); }
  void step() { ++m_index; }
  AcApDocument* document() const { return done() ? nullptr : m_docs[m_index]; }

 private:
  std::vector<AcApDocument*> m_docs;
  std::size_t m_index = 0;
};

class AcApDocManager {
 public:
  AcApDocument* curDocument() const { return m_current; }
  AcApDocument* mdiActiveDocument() const { return m_current; }
  AcApDocument* document(const AcDbDatabase* db) const;

  // Locks nest within one thread: each lock needs its unlock. A write lock
  // excludes every other thread (eLockViolation) and a thread's exclusive
  // lock (kXWrite) even that thread's further locks; read locks share.
  Acad::ErrorStatus lockDocument(AcApDocument* doc, AcAp::DocLockMode mode = AcAp::kWrite);
  Acad::ErrorStatus unlockDocument(AcApDocument* doc);

  // Takes a drawing in as a document and makes it current; reactors hear
  // documentCreated once it is current.
  AcApDocument* openDocument(std::unique_ptr<AcDbDatabase> db, std::string fileName = "Drawing1.dxf",
                             host::dxf::DxfFileInfo info = {});
  // A document over a database that its caller keeps owning (and keeps alive
  // until the document is closed).
  AcApDocument* openBorrowedDocument(AcDbDatabase* db, std::string fileName);
  // Closes the document: documentToBeDestroyed, then (for a database the
  // document owns) the editor's databaseToBeDestroyed, then the next
  // document becomes current.
  Acad::ErrorStatus closeDocument(AcApDocument* doc);
  // Makes a document current (its database the working database).
  Acad::ErrorStatus setCurDocument(AcApDocument* doc);
  // As setCurDocument, telling the reactors: documentToBeActivated (the
  // document is already current) and documentActivated.
  Acad::ErrorStatus activateDocument(AcApDocument* doc);
  const std::vector<std::unique_ptr<AcApDocument>>& documents() const { return m_docs; }
  int documentCount() const { return static_cast<int>(m_docs.size()); }
  std::unique_ptr<AcApDocumentIterator> newAcApDocumentIterator() const;

  // Queues command text for a document; it runs when the command line is
  // next idle, each newline being an Enter. activate makes the document
  // current first.
  Acad::ErrorStatus sendStringToExecute(AcApDocument* doc, const std::string& text, bool activate = true,
                                        bool wrapUpInactiveDoc = false, bool echoString = true);

  void addReactor(AcApDocManagerReactor* reactor);
  void removeReactor(AcApDocManagerReactor* reactor);

 private:
  std::vector<std::unique_ptr<AcApDocument>> m_docs;
  std::vector<AcApDocManagerReactor*> m_reactors;
  AcApDocument* m_current = nullptr;
};

AcApDocManager* acDocManagerPtr();
#define acDocManager acDocManagerPtr()

// Locks the current document (or the given one) for the life of the scope.
class AcAxDocLock {
 public:
  explicit AcAxDocLock(AcAp::DocLockMode mode = AcAp::kWrite);
  AcAxDocLock(AcApDocument* doc, AcAp::DocLockMode mode);
  ~AcAxDocLock();
  AcAxDocLock(const AcAxDocLock&) = delete;
  AcAxDocLock& operator=(const AcAxDocLock&) = delete;
  Acad::ErrorStatus lockStatus() const { return m_status; }

 private:
  AcApDocument* m_doc = nullptr;
  Acad::ErrorStatus m_status = Acad::eNoDatabase;
};
