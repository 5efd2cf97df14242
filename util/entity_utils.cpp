#include "util/entity_utils.h"

#include "host/db/operations.h"

namespace util {

namespace {
AcDbObjectId AppendLine(AcDbDatabase* db, const AcGePoint3d& start, const AcGePoint3d& end, AcDbObjectId layerId) {
  auto* line = new AcDbLine(start, end);
  line->setDatabaseDefaults(db);
  line->setColorIndex(256);
  if (!layerId.isNull() && layerId != line->layerId()) line->setLayer(layerId);
  AcDbObjectId id;
  host::appendEntity(db, line, id);
  return id;
}
}  // namespace

AcDbObjectId CreateLine(const AcGePoint3d& start, const AcGePoint3d& end, const CString& layer) {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (!db || start.distanceTo(end) < kMinLineLength) return AcDbObjectId::kNull;
  AcDbObjectId layerId;
  if (!layer.empty() && host::findLayer(db, layer, layerId, true) != Acad::eOk) layerId = AcDbObjectId::kNull;
  return AppendLine(db, start, end, layerId);
}

AcDbObjectId CreateLine(const AcGePoint3d& start, const AcGePoint3d& end, AcDbObjectId layerId) {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (!db || start.distanceTo(end) < kMinLineLength) return AcDbObjectId::kNull;
  return AppendLine(db, start, end, layerId);
}

void EraseEntity(AcDbObjectId id) { host::eraseObject(id); }

bool ExplodeEntity(AcDbObjectId id, AcArray<AcDbObjectId>& pieces, bool bErase) {
  return host::explodeEntity(id, pieces, bErase) == Acad::eOk;
}

AcArray<AcDbObjectId> SelectAllOnLayer(const CString& layer) {
  return host::entitiesOnLayer(acdbHostApplicationServices()->workingDatabase(), layer);
}

CString GetLayerName(AcDbObjectId id) {
  AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
  return ent ? ent->layer() : CString();
}

AcDbObjectId GetLayerId(AcDbObjectId id) {
  AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
  return ent ? ent->layerId() : AcDbObjectId::kNull;
}

}  // namespace util
