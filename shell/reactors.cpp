#include "shell/reactors.h"

#include <cstring>

#include "shell/knife_diagram_factory.h"
#include "ui/bulk_gen_encircle_line_dlg.h"

namespace shell {

bool& ExplodePending() {
  static bool pending = false;
  return pending;
}

void RefreshBatchDialog() {
  if (CBulkGenEncircleLineDlg* dlg = CBulkGenEncircleLineDlg::ModulePointer()) dlg->Refresh();
}

}  // namespace shell

void CEditReactor::databaseToBeDestroyed(AcDbDatabase* db) { CKnifeDiagramFactory::Instance().DropTaskStore(db); }

void CEditReactor::beginSave(AcDbDatabase* db, const char*) {
  if (db) CKnifeDiagramFactory::Instance().SaveTaskStore(db);
}

void CEditReactor::commandWillStart(const char* cmdStr) {
  // Only this exact spelling: "_EXPLODE", ".EXPLODE" or "explode" do not count.
  if (cmdStr && std::strcmp(cmdStr, "EXPLODE") == 0) shell::ExplodePending() = true;
}

void CDocReactor::documentCreated(AcApDocument* doc) {
  if (doc && doc->database()) CKnifeDiagramFactory::Instance().LoadTaskStore(doc->database());
  shell::RefreshBatchDialog();
}

void CDocReactor::documentToBeActivated(AcApDocument*) { shell::RefreshBatchDialog(); }

CVKToolReactor*& CVKToolReactor::Singleton() {
  static CVKToolReactor* reactor = nullptr;
  return reactor;
}

void CVKToolReactor::objectModified(const AcDbDatabase* db, const AcDbObject*) {
  if (db != acdbHostApplicationServices()->workingDatabase()) return;
  if (!shell::ExplodePending()) return;
  acDocManagerPtr()->sendStringToExecute(acDocManagerPtr()->curDocument(), "_.DELCONSTRAINT\nALL\n\n", true, false,
                                         false);
  shell::ExplodePending() = false;
}
