#include "host/ed/editor_input.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <sstream>

#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/ed/command_line.h"
#include "host/ed/document.h"
#include "host/ed/messages.h"
#include "host/ed/pick_geometry.h"

namespace host::ed {
namespace {

// Selection sets by number, and the previous set of each database.
struct SelectionSets {
  std::map<std::int64_t, AcDbObjectIdArray> sets;
  std::int64_t next = 1;
  std::map<std::uint32_t, AcDbObjectIdArray> previous;
};
SelectionSets& selectionSets() {
  static SelectionSets s;
  return s;
}

// Glob match, ASCII case folded: * any run, ? one character.
bool globMatch(std::string_view pattern, std::string_view text) {
  if (pattern.empty()) return text.empty();
  if (pattern.front() == '*') {
    for (std::size_t i = 0; i <= text.size(); ++i)
      if (globMatch(pattern.substr(1), text.substr(i))) return true;
    return false;
  }
  if (text.empty()) return false;
  const bool same = pattern.front() == '?' || equalsNoCase(pattern.substr(0, 1), text.substr(0, 1));
  return same && globMatch(pattern.substr(1), text.substr(1));
}

// "LINE,ARC" against a name.
bool matchesList(const std::string& list, const std::string& name) {
  std::stringstream in(list);
  std::string item;
  while (std::getline(in, item, ','))
    if (globMatch(item, name)) return true;
  return false;
}

bool passesFilter(const AcDbEntity& e, const resbuf* filter) {
  for (const resbuf* rb = filter; rb; rb = rb->rbnext) {
    if ((rb->restype == 0 || rb->restype == RTDXF0) && rb->resval.rstring && !matchesList(rb->resval.rstring, host::dxf::kindName(e)))
      return false;
    if (rb->restype == 8 && rb->resval.rstring && !matchesList(rb->resval.rstring, e.layer())) return false;
  }
  return true;
}

// Shown and on a layer that is neither off nor frozen.
bool isSelectable(const AcDbEntity& e) {
  if (e.visibility() != AcDb::kVisible) return false;
  AcDbObjectPointer<AcDbLayerTableRecord> layer(e.layerId(), AcDb::kForRead);
  return !layer || (!layer->isOff() && !layer->isFrozen());
}

template <class Keep>
AcDbObjectIdArray pick(const AcDbDatabase* db, const resbuf* filter, bool all, Keep keep) {
  AcDbObjectIdArray out;
  if (!db) return out;
  for (const AcDbObjectId id : host::allEntities(db)) {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    if (!e || (!all && !isSelectable(*e.get())) || !passesFilter(*e.get(), filter) || !keep(*e.get())) continue;
    out.append(id);
  }
  return out;
}

AcDbObjectIdArray onlySelectable(const AcDbObjectIdArray& ids, const resbuf* filter) {
  AcDbObjectIdArray out;
  for (const AcDbObjectId id : ids) {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    if (e && isSelectable(*e.get()) && passesFilter(*e.get(), filter) && !out.contains(id)) out.append(id);
  }
  return out;
}

AcDbDatabase* workingDb() { return acdbHostApplicationServices()->workingDatabase(); }

std::vector<std::string> tokens(const std::string& text) {
  std::vector<std::string> out;
  std::stringstream in(text);
  std::string t;
  while (in >> t) out.push_back(t);
  return out;
}

bool isHex(const std::string& s) {
  return !s.empty() && std::all_of(s.begin(), s.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
}

void addUnique(AcDbObjectIdArray& to, const AcDbObjectIdArray& from) {
  for (const AcDbObjectId id : from)
    if (!to.contains(id)) to.append(id);
}

// One typed selection answer added to the set; false (with a message) when
// it is not understood.
bool applySelectionText(const std::string& text, const resbuf* filter, AcDbObjectIdArray& set) {
  AcDbDatabase* db = workingDb();
  std::vector<std::string> t = tokens(text);
  if (t.empty()) return true;
  const std::string key = foldCase(t.front());
  if ((key == "W" || key == "C") && t.size() == 3) {
    AcGePoint3d a, b;
    if (!parsePoint(t[1], a) || !parsePoint(t[2], b)) return false;
    addUnique(set, key == "W" ? selectWindow(db, a, b, filter) : selectCrossing(db, a, b, filter));
    return true;
  }
  if ((key == "A" || key == "ALL") && t.size() == 1) {
    addUnique(set, selectAll(db, filter));
    return true;
  }
  if (key == "P" && t.size() == 1) {
    const auto it = selectionSets().previous.find(db ? db->serial() : 0);
    if (it != selectionSets().previous.end()) addUnique(set, onlySelectable(it->second, filter));
    return true;
  }
  if (key == "H") t.erase(t.begin());
  AcDbObjectIdArray found;
  for (std::string h : t) {
    std::replace(h.begin(), h.end(), ',', ' ');
    for (const std::string& part : tokens(h)) {
      AcDbObjectId id;
      if (!isHex(part) || !db || db->getAcDbObjectId(id, false, AcDbHandle::fromHex(part)) != Acad::eOk) {
        acutPrintf("No object with handle %s.\n", part.c_str());
        return false;
      }
      found.append(id);
    }
  }
  addUnique(set, onlySelectable(found, filter));
  return true;
}

std::int64_t storeSet(AcDbObjectIdArray ids) {
  SelectionSets& s = selectionSets();
  const std::int64_t n = s.next++;
  if (AcDbDatabase* db = workingDb()) s.previous[db->serial()] = ids;
  s.sets[n] = std::move(ids);
  return n;
}

struct ViewState {
  std::map<const AcApDocument*, AcDbViewTableRecord> views;
  unsigned generation = 0;
  std::vector<ViewObserver*> observers;
};
ViewState& viewState() {
  static ViewState v;
  return v;
}

}  // namespace

bool parsePoint(const std::string& text, AcGePoint3d& point) {
  double v[3] = {0, 0, 0};
  int n = 0;
  std::stringstream in(text);
  std::string part;
  while (std::getline(in, part, ',')) {
    if (n == 3) return false;
    char* end = nullptr;
    v[n] = std::strtod(part.c_str(), &end);
    if (part.empty() || end != part.c_str() + part.size() || !std::isfinite(v[n])) return false;
    ++n;
  }
  if (n < 2) return false;
  point = AcGePoint3d(v[0], v[1], v[2]);
  return true;
}

AcDbObjectIdArray selectAll(const AcDbDatabase* db, const resbuf* filter) {
  return pick(db, filter, true, [](const AcDbEntity&) { return true; });
}

AcDbObjectIdArray selectWindow(const AcDbDatabase* db, const AcGePoint3d& c1, const AcGePoint3d& c2,
                               const resbuf* filter) {
  const PickBox box = PickBox::fromCorners(c1, c2);
  return pick(db, filter, false, [&](const AcDbEntity& e) { return liesInside(e, box); });
}

AcDbObjectIdArray selectCrossing(const AcDbDatabase* db, const AcGePoint3d& c1, const AcGePoint3d& c2,
                                 const resbuf* filter) {
  const PickBox box = PickBox::fromCorners(c1, c2);
  return pick(db, filter, false, [&](const AcDbEntity& e) { return touches(e, box); });
}

int getSelection(const std::string& prompt, AcDbObjectIdArray& ids, const resbuf* filter) {
  ids.removeAll();
  CommandLine& line = commandLine();
  for (;;) {
    const InputReply r = line.read(PromptKind::kSelection, prompt.empty() ? "Select objects: " : prompt);
    switch (r.kind) {
      case InputReply::kEnter:
        if (AcDbDatabase* db = workingDb()) selectionSets().previous[db->serial()] = ids;
        return ids.isEmpty() ? RTNONE : RTNORM;
      case InputReply::kCancel:
      case InputReply::kEnd:
        ids.removeAll();
        return RTCAN;
      case InputReply::kPicks:
        addUnique(ids, onlySelectable(r.picks, filter));
        break;
      case InputReply::kPoint:
        addUnique(ids, selectCrossing(workingDb(), r.point, r.point, filter));
        break;
      case InputReply::kText:
        if (!applySelectionText(r.text, filter, ids)) acutPrintf("*Invalid selection*\n");
        break;
    }
    acutPrintf("%d found\n", ids.length());
  }
}

int getPoint(const std::string& prompt, AcGePoint3d& point) {
  CommandLine& line = commandLine();
  for (;;) {
    const InputReply r = line.read(PromptKind::kPoint, prompt);
    switch (r.kind) {
      case InputReply::kPoint:
        point = r.point;
        return RTNORM;
      case InputReply::kText:
        if (parsePoint(r.text, point)) return RTNORM;
        acutPrintf("Point or option keyword required.\n");
        break;
      case InputReply::kEnter:
        return RTNONE;
      case InputReply::kPicks:
        acutPrintf("Point or option keyword required.\n");
        break;
      case InputReply::kCancel:
      case InputReply::kEnd:
        return RTCAN;
    }
  }
}

int getString(const std::string& prompt, std::string& text) {
  const InputReply r = commandLine().read(PromptKind::kString, prompt);
  if (r.kind == InputReply::kCancel || r.kind == InputReply::kEnd) return RTCAN;
  text = r.kind == InputReply::kText ? r.text : std::string();
  return RTNORM;
}

AcDbViewTableRecord currentView(const AcApDocument* doc) {
  const auto it = viewState().views.find(doc);
  return it == viewState().views.end() ? AcDbViewTableRecord() : it->second;
}

void setCurrentView(const AcApDocument* doc, const AcDbViewTableRecord& view) {
  viewState().views[doc] = view;
  const std::vector<ViewObserver*> observers = viewState().observers;
  for (ViewObserver* o : observers) o->viewChanged(doc);
}

unsigned displayGeneration() { return viewState().generation; }

AcDbObjectIdArray highlightedEntities(const AcDbDatabase* db) {
  AcDbObjectIdArray out;
  if (!db) return out;
  for (const AcDbObjectId id : host::allEntities(db)) {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    if (e && e->isHighlighted()) out.append(id);
  }
  return out;
}

void addViewObserver(ViewObserver* observer) {
  auto& obs = viewState().observers;
  if (observer && std::find(obs.begin(), obs.end(), observer) == obs.end()) obs.push_back(observer);
}

void removeViewObserver(ViewObserver* observer) { std::erase(viewState().observers, observer); }

}  // namespace host::ed

using namespace host::ed;

int acedSSGet(const char* str, const void* pt1, const void* pt2, const resbuf* filter, ads_name ss) {
  ss[0] = ss[1] = 0;
  const std::string mode = str ? host::foldCase(str) : std::string();
  AcDbObjectIdArray ids;
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (mode.empty() || mode == ":$") {
    std::string prompt;
    if (mode == ":$" && pt1) {
      const char* const* prompts = static_cast<const char* const*>(pt1);
      if (prompts[0]) prompt = prompts[0];
    }
    const int rc = getSelection(prompt, ids, filter);
    if (rc != RTNORM) return rc == RTNONE ? RTERROR : rc;
  } else if (mode == "W" || mode == "C") {
    if (!pt1 || !pt2) return RTREJ;
    const double* a = static_cast<const double*>(pt1);
    const double* b = static_cast<const double*>(pt2);
    const AcGePoint3d c1(a[0], a[1], a[2]), c2(b[0], b[1], b[2]);
    ids = mode == "W" ? selectWindow(db, c1, c2, filter) : selectCrossing(db, c1, c2, filter);
  } else if (mode == "A" || mode == "X" || mode == "_A" || mode == "_X") {
    ids = selectAll(db, filter);
  } else if (mode == "P" || mode == "_P") {
    const auto it = selectionSets().previous.find(db ? db->serial() : 0);
    if (it != selectionSets().previous.end()) ids = onlySelectable(it->second, filter);
  } else {
    return RTREJ;
  }
  if (ids.isEmpty()) return RTERROR;  // the host's answer for an empty selection
  ss[0] = storeSet(std::move(ids));
  return RTNORM;
}

int acedSSLength(const ads_name ss, std::int32_t* len) {
  const auto it = selectionSets().sets.find(ss[0]);
  if (it == selectionSets().sets.end() || !len) return RTERROR;
  *len = it->second.length();
  return RTNORM;
}

int acedSSName(const ads_name ss, std::int32_t i, ads_name entres) {
  const auto it = selectionSets().sets.find(ss[0]);
  if (it == selectionSets().sets.end() || i < 0 || i >= it->second.length()) return RTERROR;
  return acdbGetAdsName(entres, it->second[i]) == Acad::eOk ? RTNORM : RTERROR;
}

int acedSSFree(const ads_name ss) { return selectionSets().sets.erase(ss[0]) ? RTNORM : RTERROR; }

Acad::ErrorStatus acdbGetObjectId(AcDbObjectId& objId, const ads_name objName) {
  objId = AcDbObjectId(static_cast<std::uint32_t>(objName[0]), static_cast<std::uint32_t>(objName[1]));
  return objId.isNull() ? Acad::eNullObjectId : Acad::eOk;
}

Acad::ErrorStatus acdbGetAdsName(ads_name objName, AcDbObjectId objId) {
  objName[0] = objId.databaseSerial();
  objName[1] = objId.slotIndex();
  return objId.isNull() ? Acad::eNullObjectId : Acad::eOk;
}

int acedGetPoint(const ads_point, const char* prompt, ads_point result) {
  AcGePoint3d p;
  const int rc = getPoint(prompt ? prompt : "", p);
  if (rc == RTNORM) {
    result[0] = p.x;
    result[1] = p.y;
    result[2] = p.z;
  }
  return rc;
}

int acedGetString(int, const char* prompt, char* result, std::size_t bufLen) {
  std::string text;
  const int rc = getString(prompt ? prompt : "", text);
  if (rc != RTNORM) return rc;
  if (!result || text.size() + 1 > bufLen) return RTERROR;
  std::memcpy(result, text.c_str(), text.size() + 1);
  return RTNORM;
}

int acedUpdateDisplay() {
  ++viewState().generation;
  const std::vector<ViewObserver*> observers = viewState().observers;
  for (ViewObserver* o : observers) o->displayUpdated();
  return RTNORM;
}

Acad::ErrorStatus acedSetCurrentView(AcDbViewTableRecord* view, AcDbViewport*) {
  AcApDocument* doc = acDocManagerPtr()->curDocument();
  if (!view || !doc) return Acad::eInvalidInput;
  setCurrentView(doc, *view);
  return Acad::eOk;
}
