#pragma once
// Reading and writing drawing exchange (DXF) files, ASCII and binary, R12 to
// R2018. What the host does not model is kept and written back untouched.
#include <memory>
#include <string>
#include <vector>

#include "host/db/database.h"

namespace host::dxf {

// A file format version: its $ACADVER value and the release name users know.
struct DxfVersion {
  const char* acadVer;  // "AC1015"
  const char* release;  // "R2000"
};
// Known versions, oldest first.
const std::vector<DxfVersion>& knownVersions();
// By $ACADVER ("AC1015") or release ("R2000", "2000"); null when unknown.
const DxfVersion* findVersion(std::string_view name);
// Ordering of $ACADVER values ("AC1009" < "AC1015").
inline bool versionAtLeast(const std::string& acadVer, const char* min) { return acadVer >= min; }

// What a file told about itself and what the host keeps for writing it back.
struct DxfFileInfo {
  std::string acadVer = "AC1015";
  std::string codePage = "ANSI_1252";
  bool binary = false;
  std::string lineEnding = "\n";
  // Sections kept as they were (CLASSES, THUMBNAILIMAGE, ACDSDATA, unknown
  // ones), as source spans, with the text before the first section.
  struct Span {
    std::string name;
    std::size_t offset = 0, length = 0;
  };
  std::vector<Span> keptSections;
  Span preamble;
  // Symbol tables in file order (the five the host models and the others).
  AcDbObjectIdArray tables;
};

// The file's name for the kind of an entity or object ("LINE", "LWPOLYLINE").
std::string kindName(const AcDbObject& obj);

struct Diagnostics {
  std::vector<std::string> warnings;
  std::string error;  // set when reading or writing failed
  void warn(std::string message) { warnings.push_back(std::move(message)); }
};

// A drawing read from a file: its database and the file facts.
struct DxfDrawing {
  std::unique_ptr<AcDbDatabase> database;
  DxfFileInfo info;
};

// When the entities of the common kinds are built: on first use (a large
// drawing is read without building what is only written back), or while
// reading, for callers that open every entity anyway (one pass over their
// text instead of two). Either way they come out the same.
enum class EntityBuilding { kOnFirstUse, kWhileReading };

// Reads a file (ASCII or binary). Small defects of other writers are
// repaired with a warning; a malformed file gives false and an error that
// names the line or byte offset.
bool readDxfFile(const std::string& path, DxfDrawing& drawing, Diagnostics& diag,
                 EntityBuilding building = EntityBuilding::kOnFirstUse);
bool readDxfText(std::string_view bytes, DxfDrawing& drawing, Diagnostics& diag,
                 EntityBuilding building = EntityBuilding::kOnFirstUse);

struct WriteOptions {
  std::string acadVer;  // empty: the version the drawing was read in
  // $DWGCODEPAGE of a file before R2007 ("ANSI_936"); empty: the drawing's
  // own when it holds all the text, else one that does (with a warning when
  // none holds everything).
  std::string codePage = {};
};
// Writes the drawing as ASCII DXF: to a temporary file in the target folder,
// flushed, then renamed into place.
bool writeDxfFile(const std::string& path, const DxfDrawing& drawing, const WriteOptions& options,
                  Diagnostics& diag);
// The text that writeDxfFile would write (already encoded for the file).
bool writeDxfText(const DxfDrawing& drawing, const WriteOptions& options, std::string& out, Diagnostics& diag);

}  // namespace host::dxf
