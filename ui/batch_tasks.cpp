#include "ui/batch_tasks.h"

#include <chrono>
#include <cstdio>
#include <filesystem>

#include "host/brep/solid.h"
#include "host/db/operations.h"
#include "ui/progress_dialog.h"
#include "ui/single_outline_run.h"
#include "util/entity_utils.h"
#include "util/layer_switch.h"

const char* const kExportLayer = "EncircleLine3D";
const char* const kNoFrameToolNumber = "未获取到图框中刀具编号，请手动输入";
const char* const kProposedToolName = "0001";

namespace {

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

bool IsLiveEntity(AcDbObjectId id) {
  if (id.isNull() || id.isErased()) return false;
  AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
  return ent.openStatus() == Acad::eOk;
}

// One tool's step of a run or an export: the progress shows it, step does
// the work and fills in the event, which then carries the time taken to
// the observer.
template <class Step>
void ToolStep(CBatchTaskInfo* task, int index, const BatchToolObserver& observer, Step step) {
  const int count = static_cast<int>(task->m_vecTools.size());
  StepProgress(count, index);
  CBatchToolInfo& tool = task->m_vecTools[index];
  BatchToolEvent event;
  event.task = task;
  event.tool = &tool;
  event.index = index;
  event.count = count;
  const auto start = std::chrono::steady_clock::now();
  step(tool, event);
  event.seconds = SecondsSince(start);
  if (observer) observer(event);
}

}  // namespace

std::string FrameToolNumber(const std::vector<DrawingFrame>& frames, const AcArray<AcDbObjectId>& ids) {
  return ToolNumberOfBox(frames, SelectionBox(ids));
}

std::string FrameToolNumber(const AcArray<AcDbObjectId>& ids) {
  return FrameToolNumber(CollectDrawingFrames(), ids);
}

CBatchToolInfo NewToolItem(const std::string& name, const AcGePoint3d& centre, const AcArray<AcDbObjectId>& ids) {
  CBatchToolInfo tool;
  tool.m_strName = name;
  tool.m_ptCenter = centre;
  tool.m_arrEntityIds = ids;
  return tool;
}

bool ComputeTool(CBatchToolInfo& tool, const CEncircleCalInfo& params, std::string* problem) {
  DropOutlineLayerEntities(tool.m_arrEntityIds);
  // The tool's own earlier outline goes as well, so that a recomputed tool
  // leaves one outline in the drawing, not one per run.
  EraseToolOutline(tool);
  int live = 0;
  for (AcDbObjectId id : tool.m_arrEntityIds) live += IsLiveEntity(id);
  tool.m_idOutline = live ? ComputeOutlineAlongAxis(tool.m_arrEntityIds, tool.m_ptCenter, params)
                          : AcDbObjectId::kNull;
  const bool ok = !tool.m_idOutline.isNull();
  tool.m_nExecState = ok ? kBatchDone : kBatchError;
  if (problem) {
    if (ok) problem->clear();
    else if (live == 0) *problem = "tool " + tool.m_strName + ": none of its entities is left in the drawing";
    else *problem = "tool " + tool.m_strName + ": no outline could be made of its entities";
  }
  return ok;
}

void RunTasks(const std::vector<CBatchTaskInfo*>& tasks, const BatchToolObserver& observer) {
  for (CBatchTaskInfo* task : tasks) {
    const int count = static_cast<int>(task->m_vecTools.size());
    OpenProgress();
    StepProgress(count, 0);
    task->m_nExecState = kBatchDone;
    for (int i = 0; i < count; ++i)
      ToolStep(task, i, observer, [&](CBatchToolInfo& tool, BatchToolEvent& event) {
        event.ok = ComputeTool(tool, task->m_calInfo, &event.problem);
        if (tool.m_nExecState == kBatchError) task->m_nExecState = kBatchError;
      });
    CloseProgress();
  }
}

std::string ToolFileName(const std::string& toolName) {
  std::string name;
  for (char c : toolName) {
    const bool refused = c == '/' || c == '\\' || c == ':' || c == '*' || c == '?' || c == '"' || c == '<' ||
                         c == '>' || c == '|' || (static_cast<unsigned char>(c) < 0x20);
    name += refused ? '_' : c;
  }
  if (name.empty() || name == "." || name == "..") name = "tool" + name;
  return name;
}

bool ExportTool(const CBatchToolInfo& tool, const BatchExportOptions& options, std::set<std::string>& usedNames,
                BatchToolEvent& event) {
  if (tool.m_idOutline.isNull() || !IsLiveEntity(tool.m_idOutline)) {
    event.problem = "tool " + tool.m_strName + ": " + kComputeOutlineFirst;
    return false;
  }
  const CLayerSwitch layer(kExportLayer);
  OutlineExport request;
  request.outline = tool.m_idOutline;
  request.centre = tool.m_ptCenter;
  request.bDeleteOutline = false;
  request.bDeleteSolid = false;  // the layer is erased once the export is over
  request.formats = options.formats;
  request.orientation = options.orientation;
  request.stlTolerance = options.stlTolerance;
  // Files are named after the tool, not the frame; a second tool of the
  // same name in one export gets a numbered name instead of overwriting.
  const std::string base = ToolFileName(tool.m_strName);
  std::string name = base;
  for (int n = 2; !usedNames.insert(name).second; ++n) name = base + "_" + std::to_string(n);
  auto ask = [&](const std::string&, const std::string&, const std::string&) {
    return (std::filesystem::path(options.folder) / (name + ".sat")).string();
  };
  std::vector<std::string> messages;
  ExportDetail detail;
  ExportOutline(request, CollectDrawingFrames(), ask, messages, &detail);
  event.files = detail.files;
  if (!detail.solid.isNull()) {
    AcDbObjectPointer<AcDb3dSolid> solid(detail.solid, AcDb::kForWrite);
    if (solid) {
      event.volume = solid->volume();
      solid->setLayer(kExportLayer);
    }
  }
  if (!messages.empty()) {
    event.problem = "tool " + tool.m_strName + ": " + ExportReport(messages);
    return false;
  }
  return true;
}

void ExportTasks(const std::vector<CBatchTaskInfo*>& tasks, const BatchExportOptions& options,
                 const BatchToolObserver& observer) {
  std::set<std::string> usedNames;
  for (CBatchTaskInfo* task : tasks) {
    const int count = static_cast<int>(task->m_vecTools.size());
    OpenProgress();
    task->m_nExportState = kBatchDone;
    for (int i = 0; i < count; ++i) {
      char title[96];
      std::snprintf(title, sizeof title, "正在导出3D（%d/%d）", i, count);
      SetProgressTitle(title);
      ToolStep(task, i, observer, [&](CBatchToolInfo& tool, BatchToolEvent& event) {
        if (tool.m_idOutline.isNull()) {
          event.skipped = true;  // passed over: nothing to export, no state changes
          event.problem = "tool " + tool.m_strName + ": " + kComputeOutlineFirst;
          return;
        }
        event.ok = ExportTool(tool, options, usedNames, event);
        // A failed export marks the tool, so the list shows which ones to redo.
        tool.m_nExportState = event.ok ? kBatchDone : kBatchError;
        if (!event.ok) task->m_nExportState = kBatchError;
      });
    }
    CloseProgress();
    EraseExportLayer();
  }
}

void EraseToolOutline(CBatchToolInfo& tool) {
  if (!tool.m_idOutline.isNull() && !tool.m_idOutline.isErased()) util::EraseEntity(tool.m_idOutline);
  tool.m_idOutline = AcDbObjectId::kNull;
}

void EraseExportLayer() {
  for (AcDbObjectId id : util::SelectAllOnLayer(kExportLayer)) util::EraseEntity(id);
}
