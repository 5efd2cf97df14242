#pragma once
// The engine's pairwise stages written as plain loops over all records, the
// way the steps read: the reference that the indexed stages of the product
// must match record for record.
#include <vector>

#include "engine/encircle_line.h"
#include "staged_driver.h"

class PlainStages : public StagedDriver<PlainStages> {
 public:
  explicit PlainStages(const CEncircleCalInfo& info = CEncircleCalInfo()) : StagedDriver(info) {}

  void BreakLines(std::vector<CLineInfo>& lines);
  void BreakLines2(std::vector<CLineInfo>& lines, bool bAllPoints, bool bShiftRight);
  void SplitLines(std::vector<CLineInfo>& lines);
  std::vector<CLineInfo> RemoveLine(E_RemoveLine_Dir dir, const std::vector<CLineInfo>& lines);
  std::vector<CLineInfo> RemoveLine2(E_RemoveLine_Dir dir, const std::vector<CLineInfo>& lines);
  void UpdateLinePtByNearestPt(std::vector<CLineInfo>& lines);
  void RemoveLineInExcludeDir(E_RemoveLine_Dir dir, double dCoord, std::vector<CLineInfo>& lines);
  void RemoveLineInOtherDir(const std::vector<CLineInfo>& other, std::vector<CLineInfo>& lines);
  void RemoveCrossLine(std::vector<CLineInfo>& lines);
  void RemoveRepeatLine2(std::vector<CLineInfo>& lines);
  void RemoveShortLine(std::vector<CLineInfo>& lines);
  void RemoveLineByWalter(std::vector<CLineInfo>& lines, E_RemoveLine_Dir dir);
  void RemoveCollinearPoints(AcArray<AcGePoint3d>& pts);

 private:
  static void SortBubble(CLineInfo& line);
  bool SplitLinePlain(CLineInfo& line, AcArray<AcDbObjectId>& ids);
  void CalBreakPointPlain(CLineInfo& line, const AcArray<AcGePoint3d>& sorted, bool bVertical, double dExtent);
  static void AddBreakPointPlain(CLineInfo& line, const AcGePoint3d& pt, AcGeTol tol);
};
