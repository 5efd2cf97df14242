#include "shell/knife_diagram_factory.h"

#include <string>
#include <vector>

#include "host/ed/document.h"
#include "host/ed/messages.h"
#include "shell/task_store.h"

namespace {
AcDbDatabase* OrWorking(AcDbDatabase* db) { return db ? db : acdbHostApplicationServices()->workingDatabase(); }

void PrintWarnings(const std::vector<std::string>& warnings) {
  for (const std::string& w : warnings) acutPrintf("\n%s\n", w.c_str());
}
}  // namespace

CKnifeDiagramFactory& CKnifeDiagramFactory::Instance() {
  static CKnifeDiagramFactory factory;
  return factory;
}

CBatchTaskList* CKnifeDiagramFactory::GetTaskStore(AcDbDatabase* db) {
  db = OrWorking(db);
  if (!db) return nullptr;
  Entry& entry = m_stores[db];
  // A database destroyed without its store being dropped may leave its
  // address to a new one; the new drawing starts with an empty store.
  if (!entry.store || entry.serial != db->serial()) {
    entry.serial = db->serial();
    entry.store = std::make_unique<CBatchTaskList>();
  }
  return entry.store.get();
}

void CKnifeDiagramFactory::DropTaskStore(const AcDbDatabase* db) { m_stores.erase(db); }

bool CKnifeDiagramFactory::HasTaskStore(const AcDbDatabase* db) const {
  const auto it = m_stores.find(db);
  return it != m_stores.end() && db && it->second.serial == db->serial();
}

bool CKnifeDiagramFactory::LoadTaskStore(AcDbDatabase* db) {
  db = OrWorking(db);
  CBatchTaskList* store = GetTaskStore(db);
  if (!store) return false;
  const AcAxDocLock lock(AcAp::kWrite);
  std::vector<std::string> warnings;
  const bool found = LoadTaskList(db, *store, warnings);
  PrintWarnings(warnings);
  return found;
}

bool CKnifeDiagramFactory::SaveTaskStore(AcDbDatabase* db) {
  db = OrWorking(db);
  CBatchTaskList* store = GetTaskStore(db);
  if (!store) return false;
  std::vector<std::string> warnings;
  const bool saved = SaveTaskList(db, *store, warnings);
  PrintWarnings(warnings);
  return saved;
}
