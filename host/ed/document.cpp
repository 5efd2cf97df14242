#include "host/ed/document.h"

#include <algorithm>

#include "host/ed/command_line.h"
#include "host/ed/editor.h"

// Marks its document modified whenever an object of the drawing is added,
// changed or erased.
class AcApDocument::Watcher : public AcDbDatabaseReactor {
 public:
  explicit Watcher(AcApDocument& doc) : m_doc(doc) {}
  void objectAppended(const AcDbDatabase*, const AcDbObject*) override { m_doc.m_modified = true; }
  void objectModified(const AcDbDatabase*, const AcDbObject*) override { m_doc.m_modified = true; }
  void objectErased(const AcDbDatabase*, const AcDbObject*, bool) override { m_doc.m_modified = true; }

 private:
  AcApDocument& m_doc;
};

AcApDocument::AcApDocument(std::shared_ptr<AcDbDatabase> db, std::string fileName)
    : m_db(std::move(db)), m_fileName(std::move(fileName)), m_watcher(std::make_unique<Watcher>(*this)) {
  if (m_db) m_db->addReactor(m_watcher.get());
}

AcApDocument::~AcApDocument() {
  if (m_db) m_db->removeReactor(m_watcher.get());
}

AcAp::DocLockMode AcApDocument::lockMode() const {
  if (m_holders.empty()) return AcAp::kNotLocked;
  AcAp::DocLockMode strongest = AcAp::kRead;
  for (const Holder& h : m_holders) {
    if (h.mode == AcAp::kXWrite) return AcAp::kXWrite;
    if (h.mode != AcAp::kRead) strongest = AcAp::kWrite;
  }
  return strongest;
}

int AcApDocument::lockCount() const { return static_cast<int>(m_holders.size()); }

AcApDocManager* acDocManagerPtr() {
  static AcApDocManager manager;
  return &manager;
}

AcApDocument* AcApDocManager::document(const AcDbDatabase* db) const {
  for (const auto& d : m_docs)
    if (d->database() == db) return d.get();
  return nullptr;
}

Acad::ErrorStatus AcApDocManager::lockDocument(AcApDocument* doc, AcAp::DocLockMode mode) {
  if (!doc) return Acad::eNoDatabase;
  if (mode == AcAp::kNone || mode == AcAp::kNotLocked) return Acad::eInvalidInput;
  const std::thread::id me = std::this_thread::get_id();
  const bool writing = mode != AcAp::kRead;
  for (const AcApDocument::Holder& h : doc->m_holders) {
    if (h.mode == AcAp::kXWrite || mode == AcAp::kXWrite) return Acad::eLockViolation;
    if (h.thread == me) continue;
    if (writing || h.mode != AcAp::kRead) return Acad::eLockViolation;
  }
  doc->m_holders.push_back({me, mode});
  return Acad::eOk;
}

Acad::ErrorStatus AcApDocManager::unlockDocument(AcApDocument* doc) {
  if (!doc) return Acad::eNotApplicable;
  const std::thread::id me = std::this_thread::get_id();
  auto& holders = doc->m_holders;
  // The innermost lock of this thread goes first.
  for (auto it = holders.rbegin(); it != holders.rend(); ++it) {
    if (it->thread != me) continue;
    holders.erase(std::next(it).base());
    return Acad::eOk;
  }
  return Acad::eNotApplicable;
}

AcApDocument* AcApDocManager::openDocument(std::unique_ptr<AcDbDatabase> db, std::string fileName,
                                           host::dxf::DxfFileInfo info) {
  m_docs.push_back(std::make_unique<AcApDocument>(std::move(db), std::move(fileName)));
  AcApDocument* doc = m_docs.back().get();
  doc->setFileInfo(std::move(info));
  activateDocument(doc);
  const std::vector<AcApDocManagerReactor*> reactors = m_reactors;
  for (AcApDocManagerReactor* r : reactors) r->documentCreated(doc);
  return doc;
}

AcApDocument* AcApDocManager::openBorrowedDocument(AcDbDatabase* db, std::string fileName) {
  std::shared_ptr<AcDbDatabase> borrowed(db, [](AcDbDatabase*) {});
  m_docs.push_back(std::make_unique<AcApDocument>(std::move(borrowed), std::move(fileName)));
  AcApDocument* doc = m_docs.back().get();
  doc->m_owned = false;
  activateDocument(doc);
  const std::vector<AcApDocManagerReactor*> reactors = m_reactors;
  for (AcApDocManagerReactor* r : reactors) r->documentCreated(doc);
  return doc;
}

Acad::ErrorStatus AcApDocManager::setCurDocument(AcApDocument* doc) {
  m_current = doc;
  acdbHostApplicationServices()->setWorkingDatabase(doc ? doc->database() : nullptr);
  return Acad::eOk;
}

Acad::ErrorStatus AcApDocManager::activateDocument(AcApDocument* doc) {
  const std::vector<AcApDocManagerReactor*> reactors = m_reactors;
  // The document becomes current (its database the working database) before
  // its window is activated, so that what documentToBeActivated reads (a
  // dialog reloading from the working drawing) is already the new drawing's.
  setCurDocument(doc);
  if (doc) {
    for (AcApDocManagerReactor* r : reactors) r->documentToBeActivated(doc);
  }
  if (doc) {
    for (AcApDocManagerReactor* r : reactors) r->documentActivated(doc);
  }
  return Acad::eOk;
}

Acad::ErrorStatus AcApDocManager::closeDocument(AcApDocument* doc) {
  const auto it = std::find_if(m_docs.begin(), m_docs.end(), [&](const auto& d) { return d.get() == doc; });
  if (it == m_docs.end()) return Acad::eInvalidInput;
  const std::vector<AcApDocManagerReactor*> reactors = m_reactors;
  for (AcApDocManagerReactor* r : reactors) r->documentToBeDestroyed(doc);
  host::ed::commandLine().dropQueuedText(doc);
  if (doc->m_owned) acedEditorPtr()->notifyDatabaseToBeDestroyed(doc->database());
  const bool wasCurrent = m_current == doc;
  if (wasCurrent) setCurDocument(nullptr);
  std::unique_ptr<AcApDocument> closing = std::move(*it);
  m_docs.erase(it);
  closing.reset();
  if (wasCurrent && !m_docs.empty()) activateDocument(m_docs.back().get());
  return Acad::eOk;
}

std::unique_ptr<AcApDocumentIterator> AcApDocManager::newAcApDocumentIterator() const {
  std::vector<AcApDocument*> docs;
  for (const auto& d : m_docs) docs.push_back(d.get());
  return std::make_unique<AcApDocumentIterator>(std::move(docs));
}

Acad::ErrorStatus AcApDocManager::sendStringToExecute(AcApDocument* doc, const std::string& text, bool activate,
                                                      bool /*wrapUpInactiveDoc*/, bool echoString) {
  if (!doc || !document(doc->database())) return Acad::eInvalidInput;
  if (activate && doc != m_current) activateDocument(doc);
  host::ed::commandLine().queueText(doc, text, echoString);
  return Acad::eOk;
}

void AcApDocManager::addReactor(AcApDocManagerReactor* reactor) {
  if (reactor && std::find(m_reactors.begin(), m_reactors.end(), reactor) == m_reactors.end())
    m_reactors.push_back(reactor);
}

void AcApDocManager::removeReactor(AcApDocManagerReactor* reactor) { std::erase(m_reactors, reactor); }

AcAxDocLock::AcAxDocLock(AcAp::DocLockMode mode) : AcAxDocLock(acDocManagerPtr()->curDocument(), mode) {}

AcAxDocLock::AcAxDocLock(AcApDocument* doc, AcAp::DocLockMode mode) : m_doc(doc) {
  m_status = acDocManagerPtr()->lockDocument(m_doc, mode);
}

AcAxDocLock::~AcAxDocLock() {
  if (m_status == Acad::eOk) acDocManagerPtr()->unlockDocument(m_doc);
}
