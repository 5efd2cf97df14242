#include "util/entity_utils.h"

#include "host/db/operations.h"

namespace util {

AcDbObjectId CreateLine(const AcGePoint3d& start, const AcGePoint3d& end, const CString& layer) {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (!db || start.distanceTo(end) < kMinLineLength) return AcDbObjectId::kNull;
  auto* line = new AcDbLine(start, end);
  line->setDatabaseDefaults(db);
  line->setColorIndex(256);
  if (!layer.empty()) {
    AcDbObjectId layerId;
    if (host::findLayer(db, layer, layerId, true) == Acad::eOk) line->setLayer(layerId);
  }
  AcDbObjectId id;
  host::appendEntity(db, line, id);
  return id;
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

}  // namespace util
