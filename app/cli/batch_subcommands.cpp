// The subcommands of envline batch, on the batch dialog's controllers.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "app/cli/batch_command.h"
#include "app/cli/batch_listing.h"
#include "app/cli/batch_progress.h"
#include "host/db/box_selection.h"
#include "host/db/operations.h"
#include "ui/centre_line.h"
#include "ui/input_name_dialog.h"
#include "ui/para_set_dialog.h"
#include "ui/single_outline_run.h"
#include "util/shown_number.h"

namespace cli::batch {

namespace {

// A task or tool by name, or by its number from 1 when no name matches.
template <class T, class NameOf>
int Find(const std::vector<T>& items, const std::string& key, NameOf nameOf) {
  for (std::size_t i = 0; i < items.size(); ++i)
    if (nameOf(items[i]) == key) return static_cast<int>(i);
  if (!key.empty() && key.size() < 9 && key.find_first_not_of("0123456789") == std::string::npos) {
    const int n = std::atoi(key.c_str());
    if (n >= 1 && n <= static_cast<int>(items.size())) return n - 1;
  }
  return -1;
}

int FindTask(const CBatchTaskList& tasks, const std::string& key) {
  return Find(tasks, key, [](const CBatchTaskInfo& t) { return t.m_strName; });
}

// The tasks named, or every task; false after reporting an unknown name.
bool SelectTasks(const Options& o, CBatchTaskList& tasks, const std::vector<std::string>& keys, std::vector<CBatchTaskInfo*>& out) {
  if (keys.empty())
    for (CBatchTaskInfo& t : tasks) out.push_back(&t);
  for (const std::string& key : keys) {
    const int i = FindTask(tasks, key);
    if (i < 0) {
      Usage(o, "no task is named '" + key + "'");
      return false;
    }
    out.push_back(&tasks[i]);
  }
  return true;
}

// Why a task or tool name given on the command line is refused, if it is:
// the dialog's rule (not empty), and no line break or other control
// character, which a name in the drawing and a line of the listings cannot
// hold as it is.
std::optional<std::string> NameRefused(const std::string& name) {
  CInputNameDlg dlg;
  dlg.m_strName = name;
  if (auto refused = dlg.OnOK()) return refused;
  for (const char c : name)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
      return std::string("a name cannot hold a line break or another control character");
  return std::nullopt;
}

// Drawing frames and what a tool never includes: outlines and solids.
bool LeftOutOfTool(AcDbObjectId id) {
  AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
  if (!ent) return true;
  if (host::equalsNoCase(ent->layer(), "TempEncircleLine") || host::equalsNoCase(ent->layer(), kExportLayer))
    return true;
  if (!ent->isKindOf(AcDbBlockReference::desc())) return false;
  ResbufChain xd(ent->xData("TUKANGE_NAME_IDENTITY"));
  return xd.get() != nullptr;
}

void Say(const Options& o, const std::string& text) {
  if (!o.json) std::printf("%s\n", text.c_str());
}

int AddTool(const Options& o, CBatchTaskInfo& task, AcDbDatabase* db, Json& j, std::vector<std::string>& warnings) {
  AcArray<AcDbObjectId> selection;
  if (o.window || o.crossing) {
    const auto& b = o.window ? *o.window : *o.crossing;
    selection = host::selectByBox(db, {b[0], b[1], 0}, {b[2], b[3], 0},
                                  o.window ? host::SelectMode::kWindow : host::SelectMode::kCrossing);
  } else {
    for (const std::string& h : o.handles) {
      AcDbObjectId id;
      const AcDbHandle handle = AcDbHandle::fromHex(h);
      AcDbObjectPointer<AcDbEntity> ent;
      if (handle.isNull() || db->getAcDbObjectId(id, false, handle) != Acad::eOk ||
          ent.open(id, AcDb::kForRead) != Acad::eOk)
        return Usage(o, "no entity has the handle '" + h + "'");
      selection.append(id);
    }
  }
  if (selection.isEmpty()) return Usage(o, "the selection holds no entity; no tool is added");
  AcGePoint3d centre;
  if (o.autoCentre) {
    const CentreLineSearch found = FindCentreLine(selection);
    if (!found.bFound) return Usage(o, "cannot find the tool's axis: " + found.problem + "; give --centre X,Y");
    const CVKRect box = SelectionBox(selection);
    centre = AcGePoint3d((box.m_ptMin.x + box.m_ptMax.x) / 2, found.dY, 0);
  } else {
    centre = *o.centre;
  }
  std::string name = o.name;
  if (o.hasName) {
    if (auto refused = NameRefused(o.name)) return Usage(o, "--name: " + *refused);
  } else {
    name = FrameToolNumber(selection);
    if (name.empty()) {
      // The dialog asks for the name here; a command takes the proposal.
      name = kProposedToolName;
      warnings.push_back(std::string(kNoFrameToolNumber) + ": the tool is named " + name + " (give --name)");
    }
  }
  task.m_vecTools.push_back(NewToolItem(name, centre, selection));
  j.key("tool").value(name).key("entities").value(selection.length());
  j.key("centre").beginArray().value(centre.x).value(centre.y).endArray();
  Say(o, "tool " + name + " added to " + task.m_strName + " (" + std::to_string(selection.length()) + " entities)");
  return 0;
}

int AddFrames(const Options& o, CBatchTaskInfo& task, AcDbDatabase* db, Json& j, std::vector<std::string>& warnings) {
  int added = 0, missed = 0;
  j.key("tools").beginArray();
  const std::vector<DrawingFrame> frames = CollectDrawingFrames();
  // Every frame's window at once: one pass over the drawing, not one per frame.
  std::vector<host::SelectionBox> boxes;
  for (const DrawingFrame& frame : frames) boxes.push_back({frame.box.m_ptMin, frame.box.m_ptMax});
  const std::vector<AcDbObjectIdArray> inFrames = host::selectByBoxes(db, boxes, host::SelectMode::kWindow);
  for (std::size_t f = 0; f < frames.size(); ++f) {
    const DrawingFrame& frame = frames[f];
    AcArray<AcDbObjectId> selection;
    for (AcDbObjectId id : inFrames[f])
      if (!LeftOutOfTool(id)) selection.append(id);
    const CentreLineSearch found = FindCentreLine(selection);
    if (selection.isEmpty() || !found.bFound) {
      ++missed;
      warnings.push_back("frame " + frame.toolNumber + ": " +
                         (selection.isEmpty() ? std::string("nothing inside it") : "no axis: " + found.problem) +
                         "; no tool is added");
      continue;
    }
    const CVKRect box = SelectionBox(selection);
    const AcGePoint3d centre((box.m_ptMin.x + box.m_ptMax.x) / 2, found.dY, 0);
    task.m_vecTools.push_back(NewToolItem(frame.toolNumber, centre, selection));
    ++added;
    j.beginObject().key("tool").value(frame.toolNumber).key("entities").value(selection.length());
    j.key("centre").beginArray().value(centre.x).value(centre.y).endArray().endObject();
    char axis[64];
    std::snprintf(axis, sizeof axis, "%g", Shown(found.dY));
    Say(o, "tool " + frame.toolNumber + " added to " + task.m_strName + " (" + std::to_string(selection.length()) +
               " entities, axis at y = " + axis + ")");
  }
  j.endArray().key("added").value(added).key("frames_without_tool").value(missed);
  if (added == 0 && missed == 0) warnings.push_back("the drawing has no tagged drawing frame");
  return missed ? 3 : 0;
}

int Params(const Options& o, CBatchTaskInfo& task, Json& j) {
  if (Changes(o)) {
    CEncircleParaSetDlg dlg;
    dlg.m_info = task.m_calInfo;
    dlg.OnInitDialog();
    if (o.side) dlg.m_nSide = *o.side;
    if (o.removeDashed) dlg.m_nRemoveDashed = *o.removeDashed;
    if (o.verticalEnds) dlg.m_nVerticalEnds = *o.verticalEnds;
    auto texts = dlg.EditTexts();
    for (const auto& [control, text] : o.edits) texts[control] = text;
    if (const auto error = dlg.OnOK(texts)) {
      for (const auto& edit : CEncircleParaSetDlg::Edits())
        if (edit.nControl == error->nControl)
          return Usage(o, std::string(edit.label) + " '" + texts[edit.nControl] + "': " + error->message);
    }
    task.m_calInfo = dlg.m_info;
  }
  j.key("params");
  ParamsJson(j, task.m_calInfo);
  if (!o.json) std::printf("%s", ParamsText(task.m_calInfo).c_str());
  return 0;
}

int RunOrExport(const Options& o, CBatchTaskList& tasks, Json& j) {
  std::vector<CBatchTaskInfo*> selected;
  if (!SelectTasks(o, tasks, o.positional, selected)) return 2;
  const bool exporting = o.sub == "export";
  if (exporting) {
    std::error_code ec;
    std::filesystem::create_directories(o.dir, ec);
    if (!std::filesystem::is_directory(o.dir)) {
      o.con.fail(1, o.dir + ": cannot make the folder");
      return 1;
    }
  }
  BatchProgressPrinter printer(ChooseProgressStyle(o.quiet || o.json), o.sub);
  ToolRecords records;
  int tools = 0, ok = 0, skipped = 0;
  j.key("tools").beginArray();
  auto observe = [&](const BatchToolEvent& e) {
    ++tools;
    ok += e.ok;
    skipped += e.skipped;
    ToolRecord& r = records[e.tool];
    r.seconds += e.seconds;
    r.files.insert(r.files.end(), e.files.begin(), e.files.end());
    if (e.volume) r.volume = e.volume;
    ToolEventJson(j, e, exporting);
    printer.OnTool(e);
  };
  const auto start = std::chrono::steady_clock::now();
  if (exporting) ExportTasks(selected, o.exportOptions, observe);
  else RunTasks(selected, observe);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  j.endArray();
  const int failed = tools - ok - skipped;
  j.key("summary").beginObject().key("tasks").value(static_cast<int>(selected.size())).key("tools").value(tools);
  j.key(exporting ? "exported" : "computed").value(ok).key("failed").value(failed);
  if (exporting) j.key("passed_over").value(skipped);
  j.key("seconds").value(seconds).endObject();
  char summary[256];
  if (exporting)
    std::snprintf(summary, sizeof summary, "导出结束: %d tools, %d exported, %d failed, %d passed over (no outline), %.2f s",
                  tools, ok, failed, skipped, seconds);
  else
    std::snprintf(summary, sizeof summary, "执行任务结束: %d tools, %d computed, %d failed, %.2f s", tools, ok, failed,
                  seconds);
  Say(o, summary);
  if (!o.report.empty()) {
    std::string error;
    if (!WriteBatchReport(o.report, ReportRows(selected, records), error)) {
      o.con.fail(1, error);
      return 1;
    }
    j.key("report").value(o.report);
  }
  return ok == tools ? 0 : 3;
}

}  // namespace

int RunSubcommand(const Options& o, CBatchTaskList& tasks, AcDbDatabase* db, Json& j,
                  std::vector<std::string>& warnings) {
  const std::vector<std::string>& args = o.positional;
  if (o.sub == "tasks") {
    j.key("tasks");
    TaskListJson(j, tasks);
    if (!o.json) std::printf("%s", TaskListText(tasks).c_str());
    return 0;
  }
  if (o.sub == "new-task") {
    if (auto refused = NameRefused(args[0])) return Usage(o, *refused);
    CBatchTaskInfo task;
    task.m_strName = args[0];
    tasks.push_back(task);
    j.key("task").value(task.m_strName).key("number").value(static_cast<int>(tasks.size()));
    Say(o, "task " + task.m_strName + " added (number " + std::to_string(tasks.size()) + ")");
    return 0;
  }
  if (o.sub == "run" || o.sub == "export") return RunOrExport(o, tasks, j);
  if (o.sub == "erase-outlines") {
    std::vector<CBatchTaskInfo*> selected;
    if (!SelectTasks(o, tasks, args, selected)) return 2;
    int erased = 0;
    for (CBatchTaskInfo* task : selected)
      for (CBatchToolInfo& tool : task->m_vecTools) {
        erased += !tool.m_idOutline.isNull();
        EraseToolOutline(tool);
      }
    j.key("erased").value(erased);
    Say(o, std::to_string(erased) + " outlines erased");
    return 0;
  }
  const int t = FindTask(tasks, args[0]);
  if (t < 0) return Usage(o, "no task is named '" + args[0] + "'");
  CBatchTaskInfo& task = tasks[t];
  j.key("task").value(task.m_strName);
  if (o.sub == "add-tool") return AddTool(o, task, db, j, warnings);
  if (o.sub == "add-frames") return AddFrames(o, task, db, j, warnings);
  if (o.sub == "params") return Params(o, task, j);
  if (o.sub == "delete-task") {
    // A deleted task takes its outlines with it: nothing would name them any more.
    for (CBatchToolInfo& tool : task.m_vecTools) EraseToolOutline(tool);
    Say(o, "task " + task.m_strName + " deleted");
    tasks.erase(tasks.begin() + t);
    return 0;
  }
  // delete-tool
  auto& tools = task.m_vecTools;
  const int k = Find(tools, args[1], [](const CBatchToolInfo& tool) { return tool.m_strName; });
  if (k < 0) return Usage(o, "task " + task.m_strName + " has no tool named '" + args[1] + "'");
  EraseToolOutline(tools[k]);
  j.key("tool").value(tools[k].m_strName);
  Say(o, "tool " + tools[k].m_strName + " deleted from " + task.m_strName);
  tools.erase(tools.begin() + k);
  return 0;
}

}  // namespace cli::batch
