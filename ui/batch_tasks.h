#pragma once
// The work behind the batch dialog, without the dialog: adding a tool,
// computing one tool's outline, running tasks and exporting them, with the
// execution and export states of tasks and tools kept as the lists show
// them. The batch dialog and the envline batch command both run these.
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "output/solid_export.h"
#include "shell/batch_task.h"

extern const char* const kExportLayer;        // "EncircleLine3D"
extern const char* const kNoFrameToolNumber;  // "未获取到图框中刀具编号，请手动输入"
extern const char* const kProposedToolName;   // "0001", offered when no frame names the tool

// The tool number of the tagged drawing frame that holds the entities' box;
// empty when no frame does.
std::string FrameToolNumber(const AcArray<AcDbObjectId>& ids);
std::string FrameToolNumber(const std::vector<DrawingFrame>& frames, const AcArray<AcDbObjectId>& ids);

// A new tool item: its name, centre and entities, no outline, states 0.
CBatchToolInfo NewToolItem(const std::string& name, const AcGePoint3d& centre, const AcArray<AcDbObjectId>& ids);

// Computes a tool's outline with a task's parameters: earlier outlines of
// the tool are erased (its own and any entity of its list on
// "TempEncircleLine"), the third driver runs along a temporary axis through
// the centre, and the execution state becomes 1 with an outline, else 2.
// problem says why there is none when the cause is known.
bool ComputeTool(CBatchToolInfo& tool, const CEncircleCalInfo& params, std::string* problem = nullptr);

// What happened to one tool in a run or an export.
struct BatchToolEvent {
  const CBatchTaskInfo* task = nullptr;
  const CBatchToolInfo* tool = nullptr;
  int index = 0;         // in its task, from 0
  int count = 0;         // tools in its task
  bool ok = false;       // computed / exported (an export passed over is not ok)
  bool skipped = false;  // an export of a tool without an outline
  double seconds = 0;
  std::string problem;   // why it failed, when known
  std::vector<std::string> files;  // written by an export
  std::optional<double> volume;    // of the exported solid
};
using BatchToolObserver = std::function<void(const BatchToolEvent&)>;

// Computes every tool of each task in order under the progress display.
// A task's execution state is 1 once it starts and 2 as soon as one of its
// tools fails; it never goes back to 1 within the run.
void RunTasks(const std::vector<CBatchTaskInfo*>& tasks, const BatchToolObserver& observer = {});

struct BatchExportOptions {
  std::string folder;
  std::set<std::string> formats{"sat"};  // sat, step, stl
  SolidOrientation orientation = SolidOrientation::kDrawing;
  double stlTolerance = 0.01;
};

// Exports one tool's outline as folder/NAME.sat (and .step, .stl beside
// it) with the solid on "EncircleLine3D". usedNames holds the file names
// already given in this export: a tool whose name is taken gets NAME_2,
// NAME_3, ... instead of overwriting. The solid stays in the drawing; the
// caller erases the layer. False for a tool without an outline too.
bool ExportTool(const CBatchToolInfo& tool, const BatchExportOptions& options, std::set<std::string>& usedNames,
                BatchToolEvent& event);

// Exports every tool of each task in order under the progress display, its
// title "正在导出3D（i/n）". Tools without an outline are passed over. A
// tool's export state becomes 1 when its files were written and 2 when they
// were not; a task's is 1 before its first tool and 2 as soon as one of its
// tools ends with 2. Afterwards everything on "EncircleLine3D" is erased, so
// no solid stays in the drawing.
void ExportTasks(const std::vector<CBatchTaskInfo*>& tasks, const BatchExportOptions& options,
                 const BatchToolObserver& observer = {});

// Erases a tool's outline and forgets it; the tool's states are kept.
void EraseToolOutline(CBatchToolInfo& tool);
// Erases every entity on "EncircleLine3D".
void EraseExportLayer();

// A file name made of a tool name: path separators and characters that
// file systems refuse become "_"; an empty name becomes "tool".
std::string ToolFileName(const std::string& toolName);
