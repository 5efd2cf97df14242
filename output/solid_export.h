#pragma once
// Exporting outlines as solids: the drawing frames and the tool numbers they
// carry, the revolution of an outline (with a region as the fallback), the
// save path, the files, the delete options and the messages a run collects.
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "engine/vk_rect.h"
#include "host/db/object_id.h"
#include "host/ge/vectors.h"

extern const char* const kComputeOutlineFirst;  // "请先计算包络线"
extern const char* const kSolidFailed;          // "生成三维实体失败", after the tool number
extern const char* const kWriteFailed;          // "生成失败", after the tool number
extern const char* const kExportSucceeded;      // "导出成功"

struct DrawingFrame {
  CVKRect box;
  std::string toolNumber;
};

// Every block reference of model space that carries a tool number under
// "TUKANGE_NAME_IDENTITY", in model space order.
std::vector<DrawingFrame> CollectDrawingFrames();
// The tool number of the first frame whose box holds the outline's box;
// empty when none does.
std::string ToolNumberOf(const std::vector<DrawingFrame>& frames, AcDbObjectId outline);
// The same for any box (the box of a tool's entities).
std::string ToolNumberOfBox(const std::vector<DrawingFrame>& frames, const CVKRect& box);

enum class RevolveRoute { kNone, kCurve, kRegion };
// Where the solid is put: where the outline lies, or turned so that the
// tool's axis runs along +Z with the outline's left end at the origin.
enum class SolidOrientation { kDrawing, kAxisZ };

// A solid of the outline revolved about the axis through axisPoint along
// axisDir (a full turn), added to model space; the curve route first, then
// a region of the outline. Null when neither gives a solid.
AcDbObjectId RevolveOutline(AcDbObjectId outline, const AcGePoint3d& axisPoint, const AcGeVector3d& axisDir,
                            SolidOrientation orientation, RevolveRoute* route = nullptr);

// The chosen name with "." and the extension added when it has none.
std::string WithExtension(const std::string& chosen, const std::string& extension);

// Asks for a save path: (extension, title, proposed file name) → full path,
// or empty when the user cancels.
using SavePathAsker = std::function<std::string(const std::string&, const std::string&, const std::string&)>;

struct OutlineExport {
  AcDbObjectId outline;
  AcGePoint3d centre;
  bool bDeleteOutline = false;
  bool bDeleteSolid = true;
  SolidOrientation orientation = SolidOrientation::kDrawing;
  std::set<std::string> formats{"sat"};  // sat, step, stl: written beside the SAT path
  double stlTolerance = 0.01;
  double millimetresPerUnit = 1;  // the files carry millimetres (see output/units.h)
};

struct ExportDetail {
  RevolveRoute route = RevolveRoute::kNone;
  AcDbObjectId solid;             // null when it was erased or none was made
  std::vector<std::string> files;  // what was written
  std::string toolNumber;
  std::vector<std::string> writeErrors;  // why a file could not be written: the file and the reason
};

// Exports one outline; failures append their message to messages.
void ExportOutline(const OutlineExport& request, const std::vector<DrawingFrame>& frames, const SavePathAsker& ask,
                   std::vector<std::string>& messages, ExportDetail* detail = nullptr);
// "导出成功", or the messages joined by "\n".
std::string ExportReport(const std::vector<std::string>& messages);

// The revolution axis of an outline: a point of its longest edge whose two
// ends have equal y (within 0.0001); false when it has none.
bool OutlineAxisPoint(AcDbObjectId outline, AcGePoint3d& centre);
