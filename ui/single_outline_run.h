#pragma once
// The single outline run of the outline dialog, without the dialog: the
// selected entities and the centre point in, the outline polyline out.
#include <string>

#include "engine/encircle_cal_info.h"
#include "engine/vk_rect.h"
#include "host/base/ac_array.h"
#include "host/ge/vectors.h"

// What the dialog's controls hold, with the dialog's defaults.
struct SingleOutlineSettings {
  int nSide = 0;                // 0 "上半边" (upper), 1 "下半边" (lower)
  bool bRemoveDashed = true;    // "是否排除虚线"
  bool bVerticalEnds = false;   // "左右包络线是否竖直"
  double dPointTol = 0.0005;    // "点公差："
  double dLineTol = 0.001;      // "线公差："
  double dFineTol = 1e-6;       // "水平竖直线判断公差："
  double dStep = 0.3;           // "圆弧离散精度："
  double dBreakLength = 5.0;    // "左右识别长度："

  // The parameter record the engine gets, with the axis line.
  CEncircleCalInfo ToCalInfo(AcDbObjectId axisLine) const;
};

struct SingleOutlineResult {
  AcDbObjectId outline;       // null when no outline could be made
  std::string message;        // "计算包络线成功" or "计算包络线失败"
  int nSelected = 0;          // entities given to the engine
};

// Which driver computes: the slab-cutting one every user runs, or the
// boundary-tracing one behind the dialog's hidden button.
enum class OutlineDriver { kSlabs, kHatch };

// Runs the outline on the working database: every entity is made visible,
// earlier outlines on "TempEncircleLine" in the selection are erased and left
// out, a temporary axis line through the centre spans the selection's box
// ± 10, the third driver computes, the axis line is erased and the outline
// is highlighted. The selection is updated (earlier outlines removed).
// With the boundary-tracing driver earlier outlines stay in the selection
// and the outline is not highlighted.
SingleOutlineResult RunSingleOutline(AcArray<AcDbObjectId>& selection, const AcGePoint3d& centre,
                                     const SingleOutlineSettings& settings,
                                     OutlineDriver driver = OutlineDriver::kSlabs);

// How many segments the selection gives once converted to lines (worked out
// on clones that are erased again; the selection is not touched).
int CountSegmentsAfterConversion(const AcArray<AcDbObjectId>& selection, const SingleOutlineSettings& settings);

// Makes every invisible entity of model and paper space visible.
void MakeEverythingVisible();

// Steps the single and the batch run share.
// Removes every entity on "TempEncircleLine" (earlier outlines) from ids,
// erasing it.
void DropOutlineLayerEntities(AcArray<AcDbObjectId>& ids);
// The flat box of the entities' extents.
CVKRect SelectionBox(const AcArray<AcDbObjectId>& ids);
// The driver (the third one unless told) on ids with info, its axis a
// temporary line through the centre that spans the entities' box ± 10
// (erased afterwards), with the current document locked. The outline, or null.
AcDbObjectId ComputeOutlineAlongAxis(const AcArray<AcDbObjectId>& ids, const AcGePoint3d& centre,
                                     CEncircleCalInfo info, OutlineDriver driver = OutlineDriver::kSlabs);

extern const char* const kOutlineSucceeded;  // "计算包络线成功"
extern const char* const kOutlineFailed;     // "计算包络线失败"
