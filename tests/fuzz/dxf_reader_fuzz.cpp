// libFuzzer target: any bytes given to the drawing reader must give a
// drawing or an error, never a crash or a hang; what it reads must open
// (entities of common kinds are built only then) and write.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/db/database.h"
#include "host/dxf/dxf_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (host::dxf::readDxfText(std::string_view(reinterpret_cast<const char*>(data), size), drawing, diag)) {
    AcDbDatabase& db = *drawing.database;
    for (std::size_t i = 0; i < db.numObjects(); ++i) {
      AcDbObject* obj = nullptr;
      if (acdbOpenObject(obj, db.idAt(static_cast<std::uint32_t>(i)), AcDb::kForRead) == Acad::eOk) obj->close();
    }
    std::string out;
    host::dxf::writeDxfText(drawing, {}, out, diag);
  }
  return 0;
}
