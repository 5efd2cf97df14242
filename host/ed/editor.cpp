#include "host/ed/editor.h"

#include <algorithm>

ACRX_DEFINE_MEMBERS(AcEditor, AcRxObject)

AcEditor* acedEditorPtr() {
  static AcEditor editor;
  return &editor;
}

void AcEditor::addReactor(AcEditorReactor* reactor) {
  if (reactor && std::find(m_reactors.begin(), m_reactors.end(), reactor) == m_reactors.end())
    m_reactors.push_back(reactor);
}

void AcEditor::removeReactor(AcEditorReactor* reactor) { std::erase(m_reactors, reactor); }

namespace {
// Reactors may add or remove reactors while being told, so each
// notification walks a copy.
template <class F>
void tell(const std::vector<AcEditorReactor*>& reactors, F f) {
  const std::vector<AcEditorReactor*> copy = reactors;
  for (AcEditorReactor* r : copy) f(r);
}
}  // namespace

void AcEditor::notifyCommandWillStart(const std::string& name) const {
  tell(m_reactors, [&](AcEditorReactor* r) { r->commandWillStart(name.c_str()); });
}
void AcEditor::notifyCommandEnded(const std::string& name) const {
  tell(m_reactors, [&](AcEditorReactor* r) { r->commandEnded(name.c_str()); });
}
void AcEditor::notifyCommandCancelled(const std::string& name) const {
  tell(m_reactors, [&](AcEditorReactor* r) { r->commandCancelled(name.c_str()); });
}
void AcEditor::notifyCommandFailed(const std::string& name) const {
  tell(m_reactors, [&](AcEditorReactor* r) { r->commandFailed(name.c_str()); });
}
void AcEditor::notifyUnknownCommand(const std::string& name) const {
  tell(m_reactors, [&](AcEditorReactor* r) { r->unknownCommand(name.c_str()); });
}
void AcEditor::notifyBeginSave(AcDbDatabase* db, const std::string& fileName) const {
  tell(m_reactors, [&](AcEditorReactor* r) { r->beginSave(db, fileName.c_str()); });
}
void AcEditor::notifySaveComplete(AcDbDatabase* db, const std::string& fileName) const {
  tell(m_reactors, [&](AcEditorReactor* r) { r->saveComplete(db, fileName.c_str()); });
}
void AcEditor::notifyDatabaseToBeDestroyed(AcDbDatabase* db) const {
  tell(m_reactors, [&](AcEditorReactor* r) { r->databaseToBeDestroyed(db); });
}
