#pragma once
// The third driver's pipeline written once over a set of stages, so that
// the plain stages of the reference and the engine's own indexed stages run
// through the same steps; a hook called before each stage (and with null at
// the end) lets the benchmark time the stages.
#include <vector>

#include "engine/encircle_line.h"
#include "util/layer_switch.h"

template <class Stages>
class StagedDriver : public CEncircleLine {
 public:
  explicit StagedDriver(const CEncircleCalInfo& info) : CEncircleLine(info) {}
  using CEncircleLine::CreateTempLine;
  using CEncircleLine::m_info;
  using CEncircleLine::m_rect;

  template <class Hook>
  void Run3(const AcArray<AcDbObjectId>& ids, AcDbObjectId& result, Hook&& hook) {
    Stages& s = static_cast<Stages&>(*this);
    const CLayerSwitch layer(kCloneLayer);
    std::vector<CLineInfo> lines;
    E_RemoveLine_Dir d = E_VIEW_NONE;
    double axis = 0;
    hook("convert");
    Prologue(Driver::kSlabs, ids, lines, d, axis);
    hook("BreakLines");
    s.BreakLines(lines);
    hook("RemoveLineInExcludeDir");
    s.RemoveLineInExcludeDir(d, axis, lines);
    hook("RemoveRepeatLine2");
    s.RemoveRepeatLine2(lines);
    hook("UpdateLinePtByNearestPt");
    s.UpdateLinePtByNearestPt(lines);
    hook("RemoveShortLine");
    s.RemoveShortLine(lines);
    std::erase_if(lines, [](const CLineInfo& r) { return !r.m_bValid; });
    for (const CLineInfo& r : lines) {
      m_rect.Extend(r.m_ptStart);
      m_rect.Extend(r.m_ptEnd);
    }
    std::vector<CLineInfo> l0, l1, l2, l3, accumulated;
    auto append = [&](const std::vector<CLineInfo>& from) {
      accumulated.insert(accumulated.end(), from.begin(), from.end());
    };
    hook("BreakLines2");
    std::vector<CLineInfo> b1 = lines;
    s.BreakLines2(b1, true, true);
    m_slabRecords += b1.size();
    hook("RemoveLine2");
    if (d != 0) {
      l1 = s.RemoveLine2(E_VIEW_FROM_ABOVE, b1);
      ConnectBreakLine(E_VIEW_FROM_ABOVE, l1);
      append(l1);
    }
    if (d != 1) {
      l0 = s.RemoveLine2(E_VIEW_FROM_BELOW, b1);
      hook("RemoveLineInOtherDir");
      s.RemoveLineInOtherDir(accumulated, l0);
      ConnectBreakLine(E_VIEW_FROM_BELOW, l0);
      append(l0);
    }
    std::vector<CLineInfo>().swap(b1);  // its memory goes before the next cut
    hook("BreakLines2");
    std::vector<CLineInfo> b2 = lines;
    s.BreakLines2(b2, false, true);
    m_slabRecords += b2.size();
    if (m_info.m_bVerticalEnds) {
      std::vector<CLineInfo> w = d != 0 ? l1 : l0;
      UpdateLineStartEndPt(d, w);
      SortLineInfos(w, true);
      if (!w.empty()) {
        const AcGePoint3d p = w.front().m_ptStart, q = w.back().m_ptEnd;
        CLineInfo left, right;
        left.m_ptStart = p;
        left.m_ptEnd = AcGePoint3d(p.x, axis, 0);
        right.m_ptStart = q;
        right.m_ptEnd = AcGePoint3d(q.x, axis, 0);
        l3.push_back(left);
        l2.push_back(right);
      }
    } else {
      if (d != 2) {
        hook("RemoveLine2");
        l3 = s.RemoveLine2(E_VIEW_FROM_LEFT, b2);
        hook("RemoveLineInOtherDir");
        s.RemoveLineInOtherDir(accumulated, l3);
        s.RemoveLineByWalter(l3, E_VIEW_FROM_LEFT);
        ConnectBreakLine(E_VIEW_FROM_LEFT, l3);
        append(l3);
      }
      std::vector<CLineInfo>().swap(b2);
      hook("BreakLines2");
      std::vector<CLineInfo> b3 = lines;
      s.BreakLines2(b3, false, false);
      m_slabRecords += b3.size();
      if (d != 3) {
        hook("RemoveLine2");
        l2 = s.RemoveLine2(E_VIEW_FROM_RIGHT, b3);
        hook("RemoveLineInOtherDir");
        s.RemoveLineInOtherDir(accumulated, l2);
        s.RemoveLineByWalter(l2, E_VIEW_FROM_RIGHT);
        ConnectBreakLine(E_VIEW_FROM_RIGHT, l2);
        append(l2);
      }
    }
    hook("output");
    AcArray<AcGePoint3d> pts(0, 8);
    AssemblePoints(d, l0, l1, l2, l3, pts);
    DrawPolyLine(ids, pts, axis, result);
    DeleteCloneEnts();
    SetLayersShow(true);
    hook(nullptr);
  }

  // The pipeline of the first driver (no slabs, nine-point hidden lines,
  // no arcs restored).
  void Run1(const AcArray<AcDbObjectId>& ids, AcDbObjectId& result) {
    Stages& s = static_cast<Stages&>(*this);
    const CLayerSwitch layer(kCloneLayer);
    std::vector<CLineInfo> lines;
    E_RemoveLine_Dir d = E_VIEW_NONE;
    double axis = 0;
    Prologue(Driver::kPlain, ids, lines, d, axis);
    s.RemoveCrossLine(lines);
    s.BreakLines(lines);
    s.RemoveLineInExcludeDir(d, axis, lines);
    s.UpdateLinePtByNearestPt(lines);
    s.RemoveShortLine(lines);
    std::erase_if(lines, [](const CLineInfo& r) { return !r.m_bValid; });
    std::vector<CLineInfo> l0, l1, l2, l3, accumulated;
    auto append = [&](const std::vector<CLineInfo>& from) {
      accumulated.insert(accumulated.end(), from.begin(), from.end());
    };
    if (d != 0) {
      l1 = s.RemoveLine(E_VIEW_FROM_ABOVE, lines);
      ConnectBreakLine(E_VIEW_FROM_ABOVE, l1);
      append(l1);
    }
    if (d != 1) {
      l0 = s.RemoveLine(E_VIEW_FROM_BELOW, lines);
      s.RemoveLineInOtherDir(accumulated, l0);
      ConnectBreakLine(E_VIEW_FROM_BELOW, l0);
      append(l0);
    }
    if (d != 2) {
      l3 = s.RemoveLine(E_VIEW_FROM_LEFT, lines);
      s.RemoveLineInOtherDir(accumulated, l3);
      s.RemoveLineByWalter(l3, E_VIEW_FROM_LEFT);
      ConnectBreakLine(E_VIEW_FROM_LEFT, l3);
      append(l3);
    }
    if (d != 3) {
      l2 = s.RemoveLine(E_VIEW_FROM_RIGHT, lines);
      s.RemoveLineInOtherDir(accumulated, l2);
      s.RemoveLineByWalter(l2, E_VIEW_FROM_RIGHT);
      ConnectBreakLine(E_VIEW_FROM_RIGHT, l2);
      append(l2);
    }
    AcArray<AcGePoint3d> pts(0, 8);
    AssemblePoints(d, l0, l1, l2, l3, pts);
    DrawPlainPolyLine(pts, result);
    DeleteCloneEnts();
    SetLayersShow(true);
  }

  // Records after slab cutting, summed over the three cuts of the last run.
  std::size_t m_slabRecords = 0;
};

// The engine's own stages under the names the driver calls.
class IndexedStages : public StagedDriver<IndexedStages> {
 public:
  explicit IndexedStages(const CEncircleCalInfo& info = CEncircleCalInfo()) : StagedDriver(info) {}
  using CEncircleLine::BreakLines;
  using CEncircleLine::BreakLines2;
  using CEncircleLine::RemoveCollinearPoints;
  using CEncircleLine::RemoveCrossLine;
  using CEncircleLine::RemoveLine;
  using CEncircleLine::RemoveLine2;
  using CEncircleLine::RemoveLineByWalter;
  using CEncircleLine::RemoveLineInExcludeDir;
  using CEncircleLine::RemoveLineInOtherDir;
  using CEncircleLine::RemoveRepeatLine2;
  using CEncircleLine::RemoveShortLine;
  using CEncircleLine::UpdateLinePtByNearestPt;
};
