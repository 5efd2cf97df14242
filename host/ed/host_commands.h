#pragma once
// The host's own commands (group kHostCommandGroup): OPEN, SAVE (QSAVE),
// SAVEAS, CLOSE (asking to save a modified drawing), EXPLODE, ERASE, DELCONSTRAINT, ZOOM (E, W), LAYER (ON,
// OFF), LAYON and LAYOFF; and the drawing operations behind them.
#include <functional>
#include <string>

#include "host/db/database.h"

class AcApDocument;
class AcEdCommandStack;

namespace host::ed {

// Adds the host's commands to the stack (done once for the host's stack).
void registerHostCommands(AcEdCommandStack& stack);

// Where SAVE (QSAVE) and SAVEAS write. Given the document's file name and
// the file asked for, a rule may change target, or refuse with a reason
// (the command then fails with it). Without a rule every target is written
// as asked. A front end that must not overwrite its inputs sets one.
using SaveRule = std::function<bool(const std::string& fileName, std::string& target, std::string& error)>;
void setSaveRule(SaveRule rule);

// Reads a drawing file and opens it as the current document.
bool openDrawing(const std::string& path, std::string& error);
// Writes the document's drawing to path: editor reactors hear beginSave
// before and saveComplete after a successful write; the document is then
// unmodified.
bool saveDocument(AcApDocument* doc, const std::string& path, std::string& error);

// Closes a document. A modified one asks first (UserServices::saveChanges):
// Yes saves it to its file, and a save that fails keeps it open and
// modified with the reason in error; No drops the changes; Cancel keeps it.
// True when it was closed.
bool closeDrawing(AcApDocument* doc, std::string& error);

// Geometric-constraint objects (constraint groups and the dependencies that
// tie entities to them): all of the drawing's when all, else those tied to
// the entities. Nothing else is removed; entities stop naming them.
bool isConstraintObject(const AcDbObject& obj);
int removeConstraints(AcDbDatabase* db, const AcDbObjectIdArray& entities, bool all);

}  // namespace host::ed
