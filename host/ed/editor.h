#pragma once
// The editor: where commands start and end, drawings are saved and
// databases go away, told to the reactors that watch it.
#include <string>
#include <vector>

#include "host/db/rx_class.h"

class AcDbDatabase;

class AcEditorReactor {
 public:
  virtual ~AcEditorReactor() = default;
  // cmdStr is the command's global name as registered ("EXPLODE").
  virtual void commandWillStart(const char* /*cmdStr*/) {}
  virtual void commandEnded(const char* /*cmdStr*/) {}
  virtual void commandCancelled(const char* /*cmdStr*/) {}
  virtual void commandFailed(const char* /*cmdStr*/) {}
  virtual void unknownCommand(const char* /*cmdStr*/) {}
  // Before and after a drawing is written to fileName.
  virtual void beginSave(AcDbDatabase* /*db*/, const char* /*fileName*/) {}
  virtual void saveComplete(AcDbDatabase* /*db*/, const char* /*fileName*/) {}
  virtual void databaseToBeDestroyed(AcDbDatabase* /*db*/) {}
};

class AcEditor : public AcRxObject {
 public:
  ACRX_DECLARE_MEMBERS(AcEditor)
  void addReactor(AcEditorReactor* reactor);
  void removeReactor(AcEditorReactor* reactor);

  // For the host: tells every reactor, in the order they were added.
  void notifyCommandWillStart(const std::string& name) const;
  void notifyCommandEnded(const std::string& name) const;
  void notifyCommandCancelled(const std::string& name) const;
  void notifyCommandFailed(const std::string& name) const;
  void notifyUnknownCommand(const std::string& name) const;
  void notifyBeginSave(AcDbDatabase* db, const std::string& fileName) const;
  void notifySaveComplete(AcDbDatabase* db, const std::string& fileName) const;
  void notifyDatabaseToBeDestroyed(AcDbDatabase* db) const;

 private:
  std::vector<AcEditorReactor*> m_reactors;
};

// The host's one editor (also in the system registry under "AcEditor").
AcEditor* acedEditorPtr();
#define acedEditor acedEditorPtr()
