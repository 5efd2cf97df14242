#include "host/ed/document.h"

#include <algorithm>

AcApDocument::AcApDocument(std::shared_ptr<AcDbDatabase> db, std::string fileName)
    : m_db(std::move(db)), m_fileName(std::move(fileName)) {}

AcApDocManager* acDocManagerPtr() {
  static AcApDocManager manager;
  return &manager;
}

Acad::ErrorStatus AcApDocManager::lockDocument(AcApDocument* doc, AcAp::DocLockMode mode) {
  if (!doc) return Acad::eNoDatabase;
  doc->m_mode = mode;
  ++doc->m_locks;
  return Acad::eOk;
}

Acad::ErrorStatus AcApDocManager::unlockDocument(AcApDocument* doc) {
  if (!doc || doc->m_locks == 0) return Acad::eNotApplicable;
  --doc->m_locks;
  return Acad::eOk;
}

AcApDocument* AcApDocManager::openDocument(std::unique_ptr<AcDbDatabase> db, std::string fileName) {
  m_docs.push_back(std::make_unique<AcApDocument>(std::move(db), std::move(fileName)));
  setCurDocument(m_docs.back().get());
  return m_docs.back().get();
}

AcApDocument* AcApDocManager::openBorrowedDocument(AcDbDatabase* db, std::string fileName) {
  std::shared_ptr<AcDbDatabase> borrowed(db, [](AcDbDatabase*) {});
  m_docs.push_back(std::make_unique<AcApDocument>(std::move(borrowed), std::move(fileName)));
  setCurDocument(m_docs.back().get());
  return m_docs.back().get();
}

Acad::ErrorStatus AcApDocManager::setCurDocument(AcApDocument* doc) {
  m_current = doc;
  acdbHostApplicationServices()->setWorkingDatabase(doc ? doc->database() : nullptr);
  return Acad::eOk;
}

Acad::ErrorStatus AcApDocManager::closeDocument(AcApDocument* doc) {
  const auto it = std::find_if(m_docs.begin(), m_docs.end(), [&](const auto& d) { return d.get() == doc; });
  if (it == m_docs.end()) return Acad::eInvalidInput;
  if (m_current == doc) setCurDocument(nullptr);
  m_docs.erase(it);
  if (!m_current && !m_docs.empty()) setCurDocument(m_docs.back().get());
  return Acad::eOk;
}

AcAxDocLock::AcAxDocLock(AcAp::DocLockMode mode) : m_doc(acDocManagerPtr()->curDocument()) {
  m_status = acDocManagerPtr()->lockDocument(m_doc, mode);
}

AcAxDocLock::~AcAxDocLock() {
  if (m_status == Acad::eOk) acDocManagerPtr()->unlockDocument(m_doc);
}
