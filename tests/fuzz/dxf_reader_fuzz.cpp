// libFuzzer target: any bytes given to the drawing reader must give a
// drawing or an error, never a crash or a hang; what it reads must write.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/dxf/dxf_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (host::dxf::readDxfText(std::string_view(reinterpret_cast<const char*>(data), size), drawing, diag)) {
    std::string out;
    host::dxf::writeDxfText(drawing, {}, out, diag);
  }
  return 0;
}
