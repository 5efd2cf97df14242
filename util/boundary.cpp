#include "util/boundary.h"

#include "host/boundary/trace_boundary.h"
#include "host/db/operations.h"

namespace util {

AcArray<AcDbObjectId> CreateBoundary(const AcGePoint3d& seed, const CString& blockName) {
  AcArray<AcDbObjectId> ids(0, 8);
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (!db) return ids;
  AcDbObjectId blockId;
  {
    AcDbObjectPointer<AcDbBlockTable> table(db->blockTableId(), AcDb::kForRead);
    if (!table || table->getAt(blockName, blockId) != Acad::eOk) return ids;
  }
  std::vector<std::unique_ptr<AcDbPolyline>> boundaries;
  if (host::traceBoundary(blockId, seed, boundaries) != Acad::eOk) return ids;
  for (auto& boundary : boundaries) {
    boundary->setDatabaseDefaults(db);
    AcDbObjectId id;
    if (host::appendEntity(db, boundary.release(), id, blockId) == Acad::eOk) ids.append(id);
  }
  return ids;
}

}  // namespace util
