#pragma once
// The outline engine: turns the entities of a tool drawing into its
// envelope line. The stages work on clones of the selection (never on the
// user's entities) and on a vector of line records that they edit in place;
// a stage that drops a record also erases the record's clone unless it says
// otherwise, and after a removal the same index is examined again.
#include <vector>

#include "engine/encircle_cal_info.h"
#include "engine/line_info.h"
#include "engine/remove_line_dir.h"
#include "engine/vk_rect.h"
#include "host/base/ac_array.h"
#include "host/base/strings.h"

class AcDbPolyline;

// Layers with a fixed meaning.
inline constexpr const char* kCloneLayer = "TempEncircleLineClone";  // clones of the selection
inline constexpr const char* kOutlineLayer = "TempEncircleLine";     // the outlines made
inline constexpr const char* kDimensionLayer = "尺寸线";              // dimension lines

class CEncircleLine {
 public:
  explicit CEncircleLine(const CEncircleCalInfo& info);
  CEncircleLine(const CEncircleLine&) = default;
  CEncircleLine& operator=(const CEncircleLine&) = default;
  ~CEncircleLine() = default;

  // The drivers: the selected entities in, the outline polyline's id out
  // (null when no outline could be made). They never change the selection.
  // The simpler variant, without arcs restored.
  void GetEncircleLine(const AcArray<AcDbObjectId>& ids, AcDbObjectId& result);
  // As GetEncircleLine, with the clones moved by (1000, 0, 0) first.
  void GetEncircleLine2(const AcArray<AcDbObjectId>& ids, AcDbObjectId& result);
  // The outline every user runs: slab cutting, arcs restored as bulges.
  void GetEncircleLine3(const AcArray<AcDbObjectId>& ids, AcDbObjectId& result);
  // The outline as the boundary of the region between a frame around the
  // drawing (closed along the axis) and the drawing, seen from a point just
  // inside the frame; result stays as it was when no boundary is found.
  void GetEncircleLineByHatch(const AcArray<AcDbObjectId>& ids, AcDbObjectId& result);

 protected:
  // --- the drivers' shared steps ----------------------------------------------
  enum class Driver { kPlain, kShifted, kSlabs, kHatch };
  // Clones and converts the selection and prepares the layers; converted
  // receives the ids of the converted entities (the hatch driver keeps the
  // axis among them), d and dAxis the working direction and the axis value.
  void PrepareClones(Driver driver, const AcArray<AcDbObjectId>& ids, AcArray<AcDbObjectId>& converted,
                     E_RemoveLine_Dir& d, double& dAxis);
  // Clones, converts and filters the selection into line records; d and
  // dAxis receive the working direction and the axis value.
  void Prologue(Driver driver, const AcArray<AcDbObjectId>& ids, std::vector<CLineInfo>& lines, E_RemoveLine_Dir& d,
                double& dAxis);
  // The outline's vertices from the direction lists, in the assembly order.
  void AssemblePoints(E_RemoveLine_Dir d, const std::vector<CLineInfo>& l0, const std::vector<CLineInfo>& l1,
                      const std::vector<CLineInfo>& l2, const std::vector<CLineInfo>& l3, AcArray<AcGePoint3d>& pts);
  // The pipeline of the first two drivers.
  void RunPlainPipeline(Driver driver, const AcArray<AcDbObjectId>& ids, AcDbObjectId& result);
  // A closed polyline of the points (bulge 0) on "TempEncircleLine".
  void DrawPlainPolyLine(const AcArray<AcGePoint3d>& pts, AcDbObjectId& result);

  // --- directional hidden-line removal -----------------------------------------
  // The records visible from dir, tested at nine points each.
  std::vector<CLineInfo> RemoveLine(E_RemoveLine_Dir dir, const std::vector<CLineInfo>& lines);
  // The records visible from dir, tested at their midpoints with a probe.
  std::vector<CLineInfo> RemoveLine2(E_RemoveLine_Dir dir, const std::vector<CLineInfo>& lines);
  // Whether P lies beyond segment A-B in direction dir (with end margins and
  // a side rule for slanted segments); a point on the segment does not.
  bool IsPtInLineSpecifiedDir(AcGePoint3d P, AcGePoint3d A, AcGePoint3d B, E_RemoveLine_Dir dir);
  // The probe variant; a point on the segment counts.
  bool IsPtInLineSpecifiedDir2(AcGePoint3d P, AcGePoint3d A, AcGePoint3d B, E_RemoveLine_Dir dir);

  // --- endpoint repair and connection ------------------------------------------
  void UpdateLineStartEndPt(E_RemoveLine_Dir dir, std::vector<CLineInfo>& lines);
  void SortLineInfos(std::vector<CLineInfo>& lines, bool bByX);
  void ConnectBreakLine(E_RemoveLine_Dir dir, std::vector<CLineInfo>& lines);
  void UpdateLinePtByNearestPt(std::vector<CLineInfo>& lines);

  // --- exclude-direction removal -------------------------------------------------
  AcDbObjectId CreateTempLine(E_RemoveLine_Dir dir, double dCoord, std::vector<CLineInfo>& lines);
  void RemoveLineInExcludeDir(E_RemoveLine_Dir dir, double dCoord, std::vector<CLineInfo>& lines);
  void RemoveLineInOtherDir(const std::vector<CLineInfo>& other, std::vector<CLineInfo>& lines);

  // --- duplicate, crossing and short line removal --------------------------------
  void RemoveCrossLine(std::vector<CLineInfo>& lines);
  void RemoveRepeatLine2(std::vector<CLineInfo>& lines);
  void RemoveShortLine(std::vector<CLineInfo>& lines);
  void RemoveLineByWalter(std::vector<CLineInfo>& lines, E_RemoveLine_Dir dir);

  // --- input filtering and conversion to lines -------------------------------
  // Drops (erases and removes) the entities on any of the layers (exact names).
  void RemoveIdsInLayer(AcArray<AcDbObjectId>& ids, std::vector<CString> layers);
  // Drops lines whose own linetype name holds "DASH", "dash", "CENTER" or
  // "Center"; nothing when m_bRemoveDashed is off.
  void RemoveDashedIds(AcArray<AcDbObjectId>& ids);
  // Drops every entity on layer "尺寸线".
  void RemoveDimLineIds(AcArray<AcDbObjectId>& ids);
  // The axis line's constant coordinate: its y when horizontal (within the
  // line tolerance), else its x when vertical; false without such an axis.
  bool GetMidLineAxisValue(double& dAxis);
  // Switches every layer of the drawing on (true) or off (false).
  void SetLayersShow(bool bShow);
  // Explodes references and polylines, drops what cannot be outline, and
  // replaces arcs and splines by chords (recording them in m_curveIds).
  void ConvertToLines(AcArray<AcDbObjectId> ids, AcArray<AcDbObjectId>& lineIds);
  // One line from the curve's start to its end.
  void ConvertCurveToLine(AcDbObjectId curveId, AcDbObjectId& lineId);
  // The chain of chords that approximates the curve, appended.
  void ConvertCurveToLine(AcDbObjectId curveId, AcArray<AcDbObjectId>& lineIds);

  // --- outline output ---------------------------------------------------------
  // Appends the end points of the records (forward or backward) to pts,
  // leaving out points already there. The second flag is not read.
  void GetLineInfoPt(const std::vector<CLineInfo>& lines, bool bForward, bool bUnused, AcArray<AcGePoint3d>& pts);
  bool IsPtExist(const AcArray<AcGePoint3d>& pts, const AcGePoint3d& pt);
  // Drops the middle of three points that lie on a line within 1°.
  void RemoveCollinearPoints(AcArray<AcGePoint3d>& pts);
  // The closed outline polyline on "TempEncircleLine", arcs of the drawing
  // restored as bulges; result stays as it was with fewer than 2 points.
  void DrawPolyLine(AcArray<AcDbObjectId> ids, AcArray<AcGePoint3d> pts, double dAxis, AcDbObjectId& result);
  void AddPolyLinePt(AcDbPolyline* pPline, AcDbObjectId arcId, AcArray<AcGePoint3d> run, bool bOmitLast,
                     int& index);
  AcArray<AcDbObjectId> GetAllArc(AcArray<AcDbObjectId> ids);
  // The arcs among ids that pt lies on (tolerance 0.0001), in order.
  AcArray<AcDbObjectId> IsPointOnArc(AcArray<AcDbObjectId> ids, AcGePoint3d pt);
  // Moves the lines onto layer, keeping a dashed layer's linetype on them.
  void SetLineLayerAndType(AcArray<AcDbObjectId> ids, CString layer);
  // Erases every entity on "TempEncircleLineClone".
  void DeleteCloneEnts();

  // --- breaking lines at intersections ----------------------------------------
  void BreakLines(std::vector<CLineInfo>& lines);
  void BreakLines2(std::vector<CLineInfo>& lines, bool bAllPoints, bool bShiftRight);
  void CalBreakPoint(CLineInfo& line, const AcArray<AcGePoint3d>& sorted, bool bVertical, double dExtent);
  void AddBreakPoint(AcGePoint3d pt, std::vector<AcGePoint3d>& pts, AcGeTol tol);
  int GetBreakIndex(const AcArray<AcGePoint3d>& pts, AcGePoint3d pt, AcGeTol tol);
  bool SplitLine(CLineInfo& line, AcArray<AcDbObjectId>& ids);
  // Replaces every record that has break points by its pieces.
  void SplitLines(std::vector<CLineInfo>& lines);

  CEncircleCalInfo m_info;
  CVKRect m_rect{true};
  AcArray<AcDbObjectId> m_curveIds{0, 8};
};
