#pragma once
// The reactors the module installs: the editor reactor (explode watch, task
// store saving and dropping), the document reactor (task store loading, batch
// dialog refresh) and the database reactor (constraint clean-up after an
// explode).
#include "host/ed/document.h"
#include "host/ed/editor.h"

class CEditReactor : public AcEditorReactor {
 public:
  ~CEditReactor() override = default;
  // Drops the task store of db.
  void databaseToBeDestroyed(AcDbDatabase* db) override;
  // Saves the task store of db (created empty if none) into db.
  void beginSave(AcDbDatabase* db, const char* fileName) override;
  void saveComplete(AcDbDatabase*, const char*) override {}
  // Sets the explode-pending flag when the command is exactly "EXPLODE".
  void commandWillStart(const char* cmdStr) override;
};

class CDocReactor : public AcApDocManagerReactor {
 public:
  ~CDocReactor() override = default;
  // Loads the document's task store from its drawing, then refreshes the
  // batch dialog.
  void documentCreated(AcApDocument* doc) override;
  void documentToBeDestroyed(AcApDocument*) override {}
  // Refreshes the batch dialog from the working drawing's store.
  void documentToBeActivated(AcApDocument* doc) override;
};

class CVKToolReactor : public AcDbDatabaseReactor {
 public:
  ~CVKToolReactor() override = default;
  // In the working database with an explode pending: sends
  // "_.DELCONSTRAINT\nALL\n\n" to the current document once and clears the
  // flag. Other databases are ignored.
  void objectModified(const AcDbDatabase* db, const AcDbObject* obj) override;

  // The module's one database reactor; null until created.
  static CVKToolReactor*& Singleton();
};

namespace shell {
// The explode-pending flag: set when "EXPLODE" starts, cleared once the
// constraint clean-up has been sent.
bool& ExplodePending();
// Makes the batch dialog, when it exists, reload its task list.
void RefreshBatchDialog();
}  // namespace shell
