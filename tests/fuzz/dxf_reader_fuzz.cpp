// libFuzzer target: any bytes given to the drawing reader must give a
// drawing or an error, never a crash or a hang. What it reads must open
// (entities of common kinds are built only then), write, give extents,
// explode, and go through the outline: that is where self-inserting blocks,
// deep nesting, fan-out and absurd numbers do their harm.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/db/block_extents.h"
#include "host/db/database.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/ed/document.h"
#include "ui/selection_limits.h"
#include "ui/single_outline_run.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfText(std::string_view(reinterpret_cast<const char*>(data), size), drawing, diag)) return 0;
  AcDbDatabase& db = *drawing.database;
  for (std::size_t i = 0; i < db.numObjects(); ++i) {
    AcDbObject* obj = nullptr;
    if (acdbOpenObject(obj, db.idAt(static_cast<std::uint32_t>(i)), AcDb::kForRead) == Acad::eOk) obj->close();
  }
  std::string out;
  host::dxf::writeDxfText(drawing, {}, out, diag);

  AcArray<AcDbObjectId> selection = host::allEntities(&db);
  host::BlockExtents blocks;
  for (AcDbObjectId id : selection) {
    AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
    if (!ent) continue;
    AcDbExtents box;
    blocks.entityExtents(*ent.get(), box);
    AcDbEntityArray pieces;
    ent->explode(pieces);
    for (AcDbEntity* p : pieces) delete p;
  }
  // The outline only on what the command would accept; small drawings keep
  // the runs short.
  const SingleOutlineSettings settings;
  if (selection.length() > 0 && selection.length() < 200 &&
      CheckOutlineSelectionSize(selection, settings.dStep).empty()) {
    AcApDocument* doc = acDocManagerPtr()->openBorrowedDocument(&db, "fuzz.dxf");
    RunSingleOutline(selection, AcGePoint3d(0, 0, 0), settings);
    acDocManagerPtr()->closeDocument(doc);
  }
  return 0;
}
