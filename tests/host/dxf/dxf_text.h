#pragma once
// Drawings as DXF text for the reader and writer tests: a small R2000
// drawing around the entities (and blocks and objects) a test gives, and
// whether a warning was given.
#include <algorithm>
#include <string>

#include "host/dxf/dxf_file.h"

namespace dxf_text {

struct Sections {
  std::string header;   // header variables after $ACADVER and $HANDSEED
  std::string blocks;   // BLOCK ... ENDBLK groups
  std::string objects;  // an OBJECTS section when not empty
  std::string seed = "100";
};

// The drawing in the form writers produce: the layer "0" (handle 10) in the
// layer table (handle 2), then the sections given.
inline std::string Drawing(const std::string& entities, const Sections& s = {}) {
  std::string text = "  0\nSECTION\n  2\nHEADER\n  9\n$ACADVER\n  1\nAC1015\n  9\n$HANDSEED\n  5\n" + s.seed + "\n" +
                     s.header + "  0\nENDSEC\n"
                     "  0\nSECTION\n  2\nTABLES\n  0\nTABLE\n  2\nLAYER\n  5\n2\n330\n0\n100\nAcDbSymbolTable\n 70\n1\n"
                     "  0\nLAYER\n  5\n10\n330\n2\n100\nAcDbSymbolTableRecord\n100\nAcDbLayerTableRecord\n  2\n0\n"
                     " 70\n0\n 62\n7\n  6\nContinuous\n  0\nENDTAB\n  0\nENDSEC\n";
  if (!s.blocks.empty()) text += "  0\nSECTION\n  2\nBLOCKS\n" + s.blocks + "  0\nENDSEC\n";
  text += "  0\nSECTION\n  2\nENTITIES\n" + entities + "  0\nENDSEC\n";
  if (!s.objects.empty()) text += "  0\nSECTION\n  2\nOBJECTS\n" + s.objects + "  0\nENDSEC\n";
  return text + "  0\nEOF\n";
}

// Whether one of the warnings holds the text.
inline bool Warned(const host::dxf::Diagnostics& diag, const std::string& text) {
  return std::any_of(diag.warnings.begin(), diag.warnings.end(),
                     [&](const std::string& w) { return w.find(text) != std::string::npos; });
}

}  // namespace dxf_text
