// The host's own commands: drawings (OPEN, SAVE, SAVEAS, CLOSE), editing
// (EXPLODE, ERASE, DELCONSTRAINT) and display (ZOOM, LAYER, LAYON, LAYOFF).
#include "host/ed/host_commands.h"

#include <filesystem>
#include <set>

#include "host/base/strings.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/kept_references.h"
#include "host/ed/command_line.h"
#include "host/ed/command_stack.h"
#include "host/ed/document.h"
#include "host/ed/editor.h"
#include "host/ed/editor_input.h"
#include "host/ed/messages.h"
#include "host/ed/services.h"

namespace host::ed {
namespace {

void fail(const std::string& message) {
  acutPrintf("%s\n", message.c_str());
  commandLine().failCommand();
}

AcApDocument* currentOrFail() {
  AcApDocument* doc = acDocManagerPtr()->curDocument();
  if (!doc) fail("No drawing is open.");
  return doc;
}

// Asks for a file name; an empty answer or Esc cancels.
bool askName(const char* prompt, std::string& name) {
  if (getString(prompt, name) != RTNORM) {
    commandLine().cancelCommand();
    return false;
  }
  if (name.size() >= 2 && name.front() == '"' && name.back() == '"') name = name.substr(1, name.size() - 2);
  if (name.empty()) {
    commandLine().cancelCommand();
    return false;
  }
  return true;
}

void cmdOpen() {
  std::string path;
  if (!askName("Enter name of drawing to open: ", path)) return;
  for (const auto& d : acDocManagerPtr()->documents())
    if (d->fileName() == path) {
      acDocManagerPtr()->activateDocument(d.get());
      return;
    }
  std::string error;
  if (!openDrawing(path, error)) fail(error);
}

SaveRule& saveRule() {
  static SaveRule rule;
  return rule;
}

// Writes the document to target, as the save rule allows.
bool saveAsAllowed(AcApDocument* doc, const std::string& target) {
  std::string path = target, error;
  if (saveRule() && !saveRule()(doc->fileName(), path, error)) {
    fail(error);
    return false;
  }
  if (!saveDocument(doc, path, error)) {
    fail(error);
    return false;
  }
  return true;
}

void cmdSave() {
  AcApDocument* doc = currentOrFail();
  if (!doc) return;
  saveAsAllowed(doc, doc->fileName());
}

void cmdSaveAs() {
  AcApDocument* doc = currentOrFail();
  if (!doc) return;
  std::string path;
  if (!askName("Enter file name: ", path)) return;
  if (saveAsAllowed(doc, path)) doc->setFileName(path);
}

void cmdClose() {
  AcApDocument* doc = currentOrFail();
  if (!doc) return;
  std::string error;
  if (closeDrawing(doc, error)) return;
  if (error.empty()) return commandLine().cancelCommand();
  fail(error);
}

void cmdExplode() {
  if (!currentOrFail()) return;
  AcDbObjectIdArray ids;
  const int rc = getSelection("Select objects: ", ids);
  if (rc == RTCAN) return commandLine().cancelCommand();
  AcAxDocLock lock;
  int refused = 0;
  for (const AcDbObjectId id : ids) {
    {
      AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
      if (!e) continue;
      if (!AcDbBlockReference::cast(e.get()) && !AcDbPolyline::cast(e.get()) && !AcDb2dPolyline::cast(e.get()) &&
          !AcDb3dPolyline::cast(e.get())) {
        ++refused;
        continue;
      }
    }
    AcDbObjectIdArray pieces;
    if (host::explodeEntity(id, pieces, true) != Acad::eOk) ++refused;
  }
  if (refused) acutPrintf("%d %s not able to be exploded.\n", refused, refused == 1 ? "was" : "were");
}

void cmdErase() {
  if (!currentOrFail()) return;
  AcDbObjectIdArray ids;
  const int rc = getSelection("Select objects: ", ids);
  if (rc == RTCAN) return commandLine().cancelCommand();
  AcAxDocLock lock;
  for (const AcDbObjectId id : ids) host::eraseObject(id);
}

void cmdDelConstraint() {
  AcApDocument* doc = currentOrFail();
  if (!doc) return;
  AcDbObjectIdArray ids;
  const int rc = getSelection("Select objects or [ALL]: ", ids);
  if (rc == RTCAN) return commandLine().cancelCommand();
  AcAxDocLock lock;
  const int n = removeConstraints(doc->database(), ids, ids.length() == selectAll(doc->database()).length());
  acutPrintf("%d constraint object(s) deleted.\n", n);
}

void cmdZoom() {
  AcApDocument* doc = currentOrFail();
  if (!doc) return;
  std::string option;
  if (getString("Specify corner of window or [All/Extents/Window]: ", option) != RTNORM)
    return commandLine().cancelCommand();
  const std::string key = foldCase(option);
  AcGePoint3d lo, hi;
  if (key == "E" || key == "EXTENTS" || key == "A" || key == "ALL") {
    AcDbExtents ext;
    bool any = false;
    for (const AcDbObjectId id : host::allEntities(doc->database())) {
      AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
      AcDbExtents one;
      if (e && e->visibility() == AcDb::kVisible && e->getGeomExtents(one) == Acad::eOk) {
        ext.addExt(one);
        any = true;
      }
    }
    if (!any) return;  // an empty drawing keeps its view
    lo = ext.minPoint();
    hi = ext.maxPoint();
  } else if (key == "W" || key == "WINDOW" || parsePoint(option, lo)) {
    if (key == "W" || key == "WINDOW") {
      const int r1 = getPoint("Specify first corner: ", lo);
      if (r1 != RTNORM) return commandLine().cancelCommand();
    }
    if (getPoint("Specify opposite corner: ", hi) != RTNORM) return commandLine().cancelCommand();
  } else {
    return fail("Unknown ZOOM option \"" + option + "\".");
  }
  AcDbViewTableRecord view;
  view.setCenterPoint(AcGePoint2d((lo.x + hi.x) / 2, (lo.y + hi.y) / 2));
  view.setWidth(std::max(std::abs(hi.x - lo.x), 1e-9));
  view.setHeight(std::max(std::abs(hi.y - lo.y), 1e-9));
  acedSetCurrentView(&view, nullptr);
  acedUpdateDisplay();
}

// Turns named layers on or off ("*" for all, comma lists allowed).
void switchLayers(AcDbDatabase* db, const std::string& names, bool on) {
  AcDbLayerTable* table = nullptr;
  if (db->getLayerTable(table, AcDb::kForRead) != Acad::eOk) return;
  const AcDbObjectIdArray records = table->recordIds();
  table->close();
  int changed = 0;
  for (const AcDbObjectId id : records) {
    AcDbObjectPointer<AcDbLayerTableRecord> layer(id, AcDb::kForRead);
    if (!layer) continue;
    bool match = false;
    std::string list = names;
    for (std::size_t start = 0; start <= list.size();) {
      const std::size_t comma = std::min(list.find(',', start), list.size());
      const std::string item = list.substr(start, comma - start);
      if (item == "*" || equalsNoCase(item, layer->getName())) match = true;
      start = comma + 1;
    }
    if (!match || layer->isOff() == !on) continue;
    layer->upgradeOpen();
    layer->setIsOff(!on);
    ++changed;
  }
  if (changed == 0) acutPrintf("No matching layer was changed.\n");
  acedUpdateDisplay();
}

void cmdLayer() {
  AcApDocument* doc = currentOrFail();
  if (!doc) return;
  for (;;) {
    std::string option;
    if (getString("Enter an option [ON/OFF]: ", option) != RTNORM) return commandLine().cancelCommand();
    if (option.empty()) return;
    const std::string key = foldCase(option);
    if (key != "ON" && key != "OFF") return fail("Unknown LAYER option \"" + option + "\".");
    std::string names;
    if (getString(key == "ON" ? "Enter name list of layers to turn On: " : "Enter name list of layers to turn off: ",
                  names) != RTNORM)
      return commandLine().cancelCommand();
    AcAxDocLock lock;
    switchLayers(doc->database(), names, key == "ON");
  }
}

void cmdLayOn() {
  AcApDocument* doc = currentOrFail();
  if (!doc) return;
  AcAxDocLock lock;
  switchLayers(doc->database(), "*", true);
}

// Turns off the layers of the selected objects.
void cmdLayOff() {
  AcApDocument* doc = currentOrFail();
  if (!doc) return;
  AcDbObjectIdArray ids;
  if (getSelection("Select an object on the layer to be turned off: ", ids) == RTCAN)
    return commandLine().cancelCommand();
  std::string names;
  for (const AcDbObjectId id : ids) {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    if (e) names += (names.empty() ? "" : ",") + e->layer();
  }
  if (names.empty()) return;
  AcAxDocLock lock;
  switchLayers(doc->database(), names, false);
}

}  // namespace

void setSaveRule(SaveRule rule) { saveRule() = std::move(rule); }

bool openDrawing(const std::string& path, std::string& error) {
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfFile(path, drawing, diag)) {
    error = diag.error.empty() ? path + ": cannot be read" : diag.error;
    return false;
  }
  for (const std::string& w : diag.warnings) acutPrintf("%s: %s\n", path.c_str(), w.c_str());
  acDocManagerPtr()->openDocument(std::move(drawing.database), path, std::move(drawing.info));
  return true;
}

bool saveDocument(AcApDocument* doc, const std::string& path, std::string& error) {
  if (!doc || !doc->database()) {
    error = "No drawing to save.";
    return false;
  }
  AcDbDatabase* db = doc->database();
  acedEditorPtr()->notifyBeginSave(db, path);
  // The writer takes a drawing that owns its database: lend it ours.
  host::dxf::DxfDrawing drawing;
  drawing.database.reset(db);
  drawing.info = doc->fileInfo();
  host::dxf::Diagnostics diag;
  const bool ok = host::dxf::writeDxfFile(path, drawing, {}, diag);
  (void)drawing.database.release();
  for (const std::string& w : diag.warnings) acutPrintf("%s: %s\n", path.c_str(), w.c_str());
  if (!ok) {
    error = diag.error.empty() ? path + ": cannot be written" : diag.error;
    return false;
  }
  doc->setModified(false);
  acedEditorPtr()->notifySaveComplete(db, path);
  return true;
}

bool isConstraintObject(const AcDbObject& obj) {
  const auto* g = AcDbGenericObject::cast(&obj);
  return g && (equalsNoCase(g->dxfName(), "ACDBASSOC2DCONSTRAINTGROUP") ||
               equalsNoCase(g->dxfName(), "ACDBASSOCGEOMDEPENDENCY"));
}

int removeConstraints(AcDbDatabase* db, const AcDbObjectIdArray& entities, bool all) {
  if (!db) return 0;
  // The constraint objects to go: all of them, or those the selected
  // entities are tied to.
  AcDbObjectIdArray doomed;
  if (all) {
    for (std::uint32_t i = 0; i < db->numObjects(); ++i) {
      const AcDbObjectId id = db->idAt(i);
      if (id.isErased()) continue;
      const AcDbObject* obj = db->objectAt(id);
      if (obj && isConstraintObject(*obj)) doomed.append(id);
    }
  } else {
    for (const AcDbObjectId id : entities) {
      AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
      if (!e || !e->extrasIfAny()) continue;
      for (const AcDbObjectId r : e->extrasIfAny()->persistentReactors) {
        const AcDbObject* obj = r.isErased() ? nullptr : db->objectAt(r);
        if (obj && isConstraintObject(*obj) && !doomed.contains(r)) doomed.append(r);
      }
    }
  }
  if (doomed.isEmpty()) return 0;
  // Entities stop naming the erased objects as their reactors.
  for (const AcDbObjectId id : host::allEntities(db)) {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    if (!e || !e->extrasIfAny()) continue;
    bool tied = false;
    for (const AcDbObjectId r : e->extrasIfAny()->persistentReactors) tied = tied || doomed.contains(r);
    if (!tied || e->upgradeOpen() != Acad::eOk) continue;
    AcDbObjectIdArray kept;
    for (const AcDbObjectId r : e->extras().persistentReactors)
      if (!doomed.contains(r)) kept.append(r);
    e->extras().persistentReactors = kept;
  }
  int n = 0;
  std::set<std::string> gone;
  for (const AcDbObjectId id : doomed)
    if (host::eraseObject(id) == Acad::eOk) {
      ++n;
      gone.insert(id.handle().toHex());
    }
  // The association network and other kept objects stop naming them.
  host::dxf::dropKeptReferences(*db, gone);
  return n;
}

bool closeDrawing(AcApDocument* doc, std::string& error) {
  if (doc->isModified()) {
    const MessageBoxAnswer answer = userServices().saveChanges(doc->fileName());
    if (answer == kIdCancel) return false;
    if (answer == kIdYes) {
      std::string path = doc->fileName();
      if (saveRule() && !saveRule()(doc->fileName(), path, error)) return false;
      if (!saveDocument(doc, path, error)) return false;
    }
  }
  acDocManagerPtr()->closeDocument(doc);
  return true;
}

void registerHostCommands(AcEdCommandStack& stack) {
  const struct {
    const char* name;
    AcRxFunctionPtr fn;
  } commands[] = {{"OPEN", cmdOpen},       {"SAVE", cmdSave},   {"QSAVE", cmdSave},   {"SAVEAS", cmdSaveAs},
                  {"CLOSE", cmdClose},     {"EXPLODE", cmdExplode}, {"ERASE", cmdErase},
                  {"DELCONSTRAINT", cmdDelConstraint}, {"ZOOM", cmdZoom}, {"LAYER", cmdLayer},
                  {"LAYON", cmdLayOn},     {"LAYOFF", cmdLayOff}};
  for (const auto& c : commands) stack.addCommand(kHostCommandGroup, c.name, c.name, ACRX_CMD_MODAL, c.fn);
}

}  // namespace host::ed
