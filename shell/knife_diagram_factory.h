#pragma once
// CKnifeDiagramFactory: the batch task store of every open drawing, kept by
// database, loaded from and saved into the drawing (task_store.h).
#include <cstdint>
#include <map>
#include <memory>

#include "host/db/database.h"
#include "shell/batch_task.h"

class CKnifeDiagramFactory {
 public:
  // The module's one factory, created on first use.
  static CKnifeDiagramFactory& Instance();

  CKnifeDiagramFactory() = default;
  ~CKnifeDiagramFactory() = default;  // frees every store
  CKnifeDiagramFactory(const CKnifeDiagramFactory&) = delete;
  CKnifeDiagramFactory& operator=(const CKnifeDiagramFactory&) = delete;

  // The task store of db, created empty on first request; a null db means
  // the working database. Null only when there is no database at all. The
  // store stays at this address until it is dropped.
  CBatchTaskList* GetTaskStore(AcDbDatabase* db = nullptr);
  CBatchTaskList* GetWorkingTaskStore() { return GetTaskStore(nullptr); }
  // Removes db's store and frees it; nothing when it has none.
  void DropTaskStore(const AcDbDatabase* db);
  bool HasTaskStore(const AcDbDatabase* db) const;

  // Replaces the store's contents with the tasks the drawing holds, with the
  // current document locked for writing. True when the drawing has a task
  // record (a damaged one gives an empty list); problems are printed on the
  // command line.
  bool LoadTaskStore(AcDbDatabase* db = nullptr);
  // Writes the store (created empty if db has none) into the drawing in the
  // current version. False, with a message, when it cannot be written.
  bool SaveTaskStore(AcDbDatabase* db = nullptr);

 private:
  struct Entry {
    std::uint32_t serial = 0;  // tells a new database at a freed address from the old one
    std::unique_ptr<CBatchTaskList> store;
  };
  std::map<const AcDbDatabase*, Entry> m_stores;
};
