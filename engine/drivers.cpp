// The three outline pipelines, from a selection to the outline polyline.
#include "engine/encircle_line.h"
#include "host/db/operations.h"
#include "util/entity_utils.h"
#include "util/layer_switch.h"

namespace {
void append(std::vector<CLineInfo>& to, const std::vector<CLineInfo>& from) {
  to.insert(to.end(), from.begin(), from.end());
}
}  // namespace

void CEncircleLine::PrepareClones(Driver driver, const AcArray<AcDbObjectId>& ids, AcArray<AcDbObjectId>& converted,
                                  E_RemoveLine_Dir& d, double& dAxis) {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  // The third driver leaves out what it cannot open for write and what lies
  // on the dimension layer; the others take the whole selection.
  AcArray<AcDbObjectId> kept;
  for (AcDbObjectId id : ids) {
    if (driver != Driver::kSlabs) {
      kept.append(id);
      continue;
    }
    // Opened for write only to learn that it can be: nothing changes.
    host::editObject(id, AcDbEntity::desc(), [&](AcDbObject* obj) {
      if (static_cast<AcDbEntity*>(obj)->layer() != kDimensionLayer) kept.append(id);
      return false;
    });
  }
  AcArray<AcDbObjectId> clones;
  if (db && !kept.isEmpty()) {
    AcDbIdMapping mapping;
    db->deepCloneObjects(kept, db->modelSpaceId(), mapping);
    AcDbIdMappingIter iter(mapping);
    for (iter.start(); !iter.done(); iter.next()) {
      AcDbIdPair pair;
      iter.getMap(pair);
      if (pair.isCloned() && pair.isPrimary()) clones.append(pair.value());
    }
  }
  AcDbObjectId cloneLayerId;  // as setLayer(kCloneLayer) finds it
  if (db && host::findLayer(db, kCloneLayer, cloneLayerId) != Acad::eOk) cloneLayerId = AcDbObjectId::kNull;
  for (AcDbObjectId id : clones) {
    // A clone changes exactly when its layer does.
    host::editObject(id, AcDbEntity::desc(), [&](AcDbObject* obj) {
      auto* ent = static_cast<AcDbEntity*>(obj);
      const AcDbObjectId before = ent->layerId();
      if (!cloneLayerId.isNull()) ent->setLayer(cloneLayerId);
      return ent->layerId() != before;
    });
  }
  if (driver == Driver::kShifted) {
    // The second driver draws its outline 1000 units to the right: that is its purpose.
    AcGeMatrix3d shift;
    shift.setToTranslation(AcGeVector3d(1000, 0, 0));
    for (AcDbObjectId id : clones) {
      AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForWrite);
      if (ent) ent->transformBy(shift);
    }
  }
  ConvertToLines(clones, converted);
  d = m_info.m_nAxisDir != 0 ? E_VIEW_FROM_BELOW : E_VIEW_FROM_ABOVE;
  if (!GetMidLineAxisValue(dAxis)) d = E_VIEW_NONE;
  if (driver != Driver::kHatch) converted.remove(m_info.m_idMidLine);
  SetLayersShow(false);
  AcDbObjectId cloneLayer;
  if (db && host::findLayer(db, kCloneLayer, cloneLayer) == Acad::eOk) {
    AcDbObjectPointer<AcDbLayerTableRecord> layer(cloneLayer, AcDb::kForWrite);
    if (layer) layer->setIsOff(false);
  }
  SetLineLayerAndType(converted, kCloneLayer);
  RemoveDashedIds(converted);
}

void CEncircleLine::Prologue(Driver driver, const AcArray<AcDbObjectId>& ids, std::vector<CLineInfo>& lines,
                             E_RemoveLine_Dir& d, double& dAxis) {
  AcArray<AcDbObjectId> converted;
  PrepareClones(driver, ids, converted, d, dAxis);
  for (AcDbObjectId id : converted) {
    CLineInfo record(id);
    if (record.m_id.isNull()) util::EraseEntity(id);  // no line: it takes no further part
    else lines.push_back(record);
  }
  if (d != E_VIEW_NONE) CreateTempLine(d, dAxis, lines);
}

void CEncircleLine::AssemblePoints(E_RemoveLine_Dir d, const std::vector<CLineInfo>& l0,
                                   const std::vector<CLineInfo>& l1, const std::vector<CLineInfo>& l2,
                                   const std::vector<CLineInfo>& l3, AcArray<AcGePoint3d>& pts) {
  switch (d) {
    case 0:
      GetLineInfoPt(l3, true, false, pts);
      GetLineInfoPt(l0, true, true, pts);
      GetLineInfoPt(l2, false, false, pts);
      break;
    case 1:
      GetLineInfoPt(l3, false, false, pts);
      GetLineInfoPt(l1, true, true, pts);
      GetLineInfoPt(l2, true, false, pts);
      break;
    case 2:
      GetLineInfoPt(l1, true, true, pts);
      GetLineInfoPt(l2, true, false, pts);
      GetLineInfoPt(l0, false, true, pts);
      break;
    case 3:
      GetLineInfoPt(l1, false, true, pts);
      GetLineInfoPt(l3, true, false, pts);
      GetLineInfoPt(l0, true, true, pts);
      break;
    default:
      GetLineInfoPt(l3, false, false, pts);
      GetLineInfoPt(l1, true, true, pts);
      GetLineInfoPt(l2, true, false, pts);
      GetLineInfoPt(l0, false, true, pts);
      break;
  }
}

void CEncircleLine::DrawPlainPolyLine(const AcArray<AcGePoint3d>& pts, AcDbObjectId& result) {
  const CLayerSwitch layer(kOutlineLayer);
  if (pts.length() < 2) {
    result = AcDbObjectId::kNull;
    return;
  }
  auto* pline = new AcDbPolyline;
  for (int i = 0; i < pts.length(); ++i)
    pline->addVertexAt(static_cast<unsigned>(i), AcGePoint2d(pts[i].x, pts[i].y), 0, -1, -1);
  pline->setClosed(true);
  AcDbObjectId id;
  result = host::appendEntity(acdbHostApplicationServices()->workingDatabase(), pline, id) == Acad::eOk
               ? id
               : AcDbObjectId::kNull;
}

void CEncircleLine::RunPlainPipeline(Driver driver, const AcArray<AcDbObjectId>& ids, AcDbObjectId& result) {
  const CLayerSwitch layer(kCloneLayer);
  std::vector<CLineInfo> lines;
  E_RemoveLine_Dir d = E_VIEW_NONE;
  double axis = 0;
  Prologue(driver, ids, lines, d, axis);
  RemoveCrossLine(lines);
  BreakLines(lines);
  RemoveLineInExcludeDir(d, axis, lines);
  UpdateLinePtByNearestPt(lines);
  RemoveShortLine(lines);
  std::erase_if(lines, [](const CLineInfo& r) { return !r.m_bValid; });
  // With an axis the pass that looks from the axis side is left out.
  std::vector<CLineInfo> l0, l1, l2, l3, accumulated;
  if (d != 0) {
    l1 = RemoveLine(E_VIEW_FROM_ABOVE, lines);
    ConnectBreakLine(E_VIEW_FROM_ABOVE, l1);
    append(accumulated, l1);
  }
  if (d != 1) {
    l0 = RemoveLine(E_VIEW_FROM_BELOW, lines);
    RemoveLineInOtherDir(accumulated, l0);
    ConnectBreakLine(E_VIEW_FROM_BELOW, l0);
    append(accumulated, l0);
  }
  if (d != 2) {
    l3 = RemoveLine(E_VIEW_FROM_LEFT, lines);
    RemoveLineInOtherDir(accumulated, l3);
    RemoveLineByWalter(l3, E_VIEW_FROM_LEFT);
    ConnectBreakLine(E_VIEW_FROM_LEFT, l3);
    append(accumulated, l3);
  }
  if (d != 3) {
    l2 = RemoveLine(E_VIEW_FROM_RIGHT, lines);
    RemoveLineInOtherDir(accumulated, l2);
    RemoveLineByWalter(l2, E_VIEW_FROM_RIGHT);
    ConnectBreakLine(E_VIEW_FROM_RIGHT, l2);
    append(accumulated, l2);
  }
  AcArray<AcGePoint3d> pts(0, 8);
  AssemblePoints(d, l0, l1, l2, l3, pts);
  DrawPlainPolyLine(pts, result);
  DeleteCloneEnts();
  SetLayersShow(true);
}

void CEncircleLine::GetEncircleLine(const AcArray<AcDbObjectId>& ids, AcDbObjectId& result) {
  RunPlainPipeline(Driver::kPlain, ids, result);
}

void CEncircleLine::GetEncircleLine2(const AcArray<AcDbObjectId>& ids, AcDbObjectId& result) {
  RunPlainPipeline(Driver::kShifted, ids, result);
}

void CEncircleLine::GetEncircleLine3(const AcArray<AcDbObjectId>& ids, AcDbObjectId& result) {
  const CLayerSwitch layer(kCloneLayer);
  std::vector<CLineInfo> lines;
  E_RemoveLine_Dir d = E_VIEW_NONE;
  double axis = 0;
  Prologue(Driver::kSlabs, ids, lines, d, axis);
  BreakLines(lines);
  RemoveLineInExcludeDir(d, axis, lines);
  RemoveRepeatLine2(lines);
  UpdateLinePtByNearestPt(lines);
  RemoveShortLine(lines);
  std::erase_if(lines, [](const CLineInfo& r) { return !r.m_bValid; });
  for (const CLineInfo& r : lines) {
    m_rect.Extend(r.m_ptStart);
    m_rect.Extend(r.m_ptEnd);
  }
  std::vector<CLineInfo> l0, l1, l2, l3, accumulated;
  // Each pair of passes works on its own broken copy.
  std::vector<CLineInfo> b1 = lines;
  BreakLines2(b1, true, true);
  if (d != 0) {
    l1 = RemoveLine2(E_VIEW_FROM_ABOVE, b1);
    ConnectBreakLine(E_VIEW_FROM_ABOVE, l1);
    append(accumulated, l1);
  }
  if (d != 1) {
    l0 = RemoveLine2(E_VIEW_FROM_BELOW, b1);
    RemoveLineInOtherDir(accumulated, l0);
    ConnectBreakLine(E_VIEW_FROM_BELOW, l0);
    append(accumulated, l0);
  }
  std::vector<CLineInfo>().swap(b1);  // its memory goes before the next cut
  std::vector<CLineInfo> b2 = lines;
  BreakLines2(b2, false, true);
  if (m_info.m_bVerticalEnds) {
    // Close the outline at its ends with lines down (or up) to the axis,
    // which is taken as running along x whatever d is.
    std::vector<CLineInfo> w = d != 0 ? l1 : l0;
    UpdateLineStartEndPt(d, w);
    SortLineInfos(w, true);
    if (!w.empty()) {  // nothing to close without a profile
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
      l3 = RemoveLine2(E_VIEW_FROM_LEFT, b2);
      RemoveLineInOtherDir(accumulated, l3);
      RemoveLineByWalter(l3, E_VIEW_FROM_LEFT);
      ConnectBreakLine(E_VIEW_FROM_LEFT, l3);
      append(accumulated, l3);
    }
    std::vector<CLineInfo>().swap(b2);
    std::vector<CLineInfo> b3 = lines;
    BreakLines2(b3, false, false);
    if (d != 3) {
      l2 = RemoveLine2(E_VIEW_FROM_RIGHT, b3);
      RemoveLineInOtherDir(accumulated, l2);
      RemoveLineByWalter(l2, E_VIEW_FROM_RIGHT);
      ConnectBreakLine(E_VIEW_FROM_RIGHT, l2);
      append(accumulated, l2);
    }
  }
  AcArray<AcGePoint3d> pts(0, 8);
  AssemblePoints(d, l0, l1, l2, l3, pts);
  DrawPolyLine(ids, pts, axis, result);
  DeleteCloneEnts();
  SetLayersShow(true);
}
