#include "ui/single_outline_run.h"

#include "engine/encircle_line.h"
#include "engine/vk_rect.h"
#include "host/db/operations.h"
#include "host/ed/document.h"
#include "util/entity_utils.h"

const char* const kOutlineSucceeded = "计算包络线成功";
const char* const kOutlineFailed = "计算包络线失败";

CEncircleCalInfo SingleOutlineSettings::ToCalInfo(AcDbObjectId axisLine) const {
  CEncircleCalInfo info;
  info.m_bRemoveDashed = bRemoveDashed;
  info.m_bVerticalEnds = bVerticalEnds;
  info.m_dStep = dStep;
  info.m_dBreakLength = dBreakLength;
  info.m_nAxisDir = nSide == 1 ? 1 : 0;
  info.m_tolLine = CEncircleCalInfo::MakeTol(dLineTol);
  info.m_tolPoint = CEncircleCalInfo::MakeTol(dPointTol);
  info.m_tolFine = CEncircleCalInfo::MakeTol(dFineTol);
  info.m_idMidLine = axisLine;
  return info;
}

SingleOutlineResult RunSingleOutline(AcArray<AcDbObjectId>& selection, const AcGePoint3d& centre,
                                     const SingleOutlineSettings& settings, OutlineDriver driver) {
  SingleOutlineResult result;
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (!db) {
    result.message = kOutlineFailed;
    return result;
  }
  MakeEverythingVisible();
  // Earlier outlines in the selection are erased and left out.
  if (driver == OutlineDriver::kSlabs) DropOutlineLayerEntities(selection);
  result.nSelected = selection.length();
  result.outline = ComputeOutlineAlongAxis(selection, centre, settings.ToCalInfo(AcDbObjectId::kNull), driver);
  if (!result.outline.isNull() && driver == OutlineDriver::kSlabs) {
    AcDbObjectPointer<AcDbEntity> outline(result.outline, AcDb::kForRead);
    if (outline) outline->highlight();
  }
  result.message = result.outline.isNull() ? kOutlineFailed : kOutlineSucceeded;
  return result;
}

void MakeEverythingVisible() {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (!db) return;
  for (AcDbObjectId space : {db->modelSpaceId(), db->paperSpaceId()}) {
    AcDbObjectPointer<AcDbBlockTableRecord> rec(space, AcDb::kForRead);
    if (!rec) continue;
    const AcDbObjectIdArray ids = rec->entityIds();
    rec.close();
    for (AcDbObjectId id : ids) {
      if (id.isErased()) continue;
      AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
      if (!ent || ent->visibility() == AcDb::kVisible) continue;
      ent->upgradeOpen();
      ent->setVisibility(AcDb::kVisible);
    }
  }
}

void DropOutlineLayerEntities(AcArray<AcDbObjectId>& ids) {
  for (int i = 0; i < ids.length(); ++i) {
    if (!host::equalsNoCase(util::GetLayerName(ids[i]), kOutlineLayer)) continue;
    util::EraseEntity(ids[i]);
    ids.removeAt(i);
    --i;
  }
}

CVKRect SelectionBox(const AcArray<AcDbObjectId>& ids) {
  CVKRect box(true);
  for (AcDbObjectId id : ids) {
    AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
    AcDbExtents ext;
    if (ent && ent->getGeomExtents(ext) == Acad::eOk) box.Extend(ext);
  }
  return box;
}

AcDbObjectId ComputeOutlineAlongAxis(const AcArray<AcDbObjectId>& ids, const AcGePoint3d& centre,
                                     CEncircleCalInfo info, OutlineDriver driver) {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (!db) return AcDbObjectId::kNull;
  AcAxDocLock lock(AcAp::kWrite);
  const CVKRect box = SelectionBox(ids);
  auto* axis = new AcDbLine(AcGePoint3d(box.m_ptMin.x - 10, centre.y, 0), AcGePoint3d(box.m_ptMax.x + 10, centre.y, 0));
  axis->setDatabaseDefaults(db);
  axis->setColorIndex(256);
  AcDbObjectId axisId;
  host::appendEntity(db, axis, axisId);
  info.m_idMidLine = axisId;
  AcDbObjectId outline;
  CEncircleLine engine(info);
  if (driver == OutlineDriver::kHatch) engine.GetEncircleLineByHatch(ids, outline);
  else engine.GetEncircleLine3(ids, outline);
  util::EraseEntity(axisId);
  return outline;
}

namespace {
class Converter : public CEncircleLine {
 public:
  using CEncircleLine::CEncircleLine;
  using CEncircleLine::ConvertToLines;
  using CEncircleLine::m_curveIds;
};
}  // namespace

int CountSegmentsAfterConversion(const AcArray<AcDbObjectId>& selection, const SingleOutlineSettings& settings) {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (!db || selection.isEmpty()) return 0;
  AcDbIdMapping mapping;
  db->deepCloneObjects(selection, db->modelSpaceId(), mapping);
  AcArray<AcDbObjectId> clones, lines;
  for (const auto& pair : mapping.pairs())
    if (pair.isPrimary()) clones.append(pair.value());
  Converter converter(settings.ToCalInfo(AcDbObjectId::kNull));
  converter.ConvertToLines(clones, lines);
  int count = 0;
  for (AcDbObjectId id : lines) {
    count += !id.isNull();
    util::EraseEntity(id);
  }
  for (AcDbObjectId id : converter.m_curveIds) util::EraseEntity(id);
  return count;
}
