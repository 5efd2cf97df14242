#pragma once
// Internal to the DXF layer: the contexts that turn tags into host objects
// and host objects back into tags.
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/tags.h"

namespace host::dxf {

// --- reading -----------------------------------------------------------------

// References by handle or name that are resolved once every object exists.
struct PendingRefs {
  std::vector<std::pair<AcDbObjectId, AcDbHandle>> owners;
  std::vector<std::pair<AcDbObjectId, AcDbHandle>> extensionDictionaries;
  std::vector<std::pair<AcDbObjectId, std::vector<AcDbHandle>>> reactors;
  struct DictEntry {
    AcDbObjectId dictionary;
    std::string key;
    AcDbHandle handle;
  };
  std::vector<DictEntry> dictionaryEntries;
  std::vector<std::pair<AcDbObjectId, AcDbHandle>> groupMembers;
  std::vector<std::pair<AcDbObjectId, std::string>> blockNames;      // references and dimensions
  std::vector<std::pair<AcDbObjectId, std::string>> layerLinetypes;  // layer records
  // Empties every list, keeping their storage.
  void clear() {
    owners.clear();
    extensionDictionaries.clear();
    reactors.clear();
    dictionaryEntries.clear();
    groupMembers.clear();
    blockNames.clear();
    layerLinetypes.clear();
  }
};

class ReadContext {
 public:
  ReadContext(AcDbDatabase& db, Diagnostics& diag) : db(db), diag(diag) {}
  AcDbDatabase& db;
  Diagnostics& diag;
  PendingRefs pending;

  // Layer / linetype / text style by name; missing layers and linetypes are
  // created (with one warning each), as forgiving readers do.
  AcDbObjectId layer(std::string_view name);
  AcDbObjectId linetype(std::string_view name);
  AcDbObjectId textStyle(std::string_view name);

 private:
  // The last few records found by name, each kept while it lives under the
  // name it had then (a context that outlives the reading sees renames and
  // erasures). Neighbouring entities mostly share a handful of layers.
  class RecentRecords {
   public:
    AcDbObjectId find(std::string_view name) const;
    void keep(std::string_view name, AcDbObjectId record);

   private:
    struct Entry {
      std::string asked, recordName;
      AcDbObjectId id;
      // The record's slot: slots and the objects in them stay where they
      // are for the life of the database.
      const AcDbDatabase::Slot* slot = nullptr;
    };
    Entry m_entries[4];
    std::size_t m_next = 0;  // the entry to replace next
  };
  RecentRecords m_layers, m_linetypes;
};

// Fields every object has in a file: handle, owner, extension dictionary,
// reactors and extended data. Reading them fills the object's extras and
// the pending references once the object has an id.
struct CommonFields {
  AcDbHandle handle, owner, extensionDictionary;
  std::vector<AcDbHandle> reactors;
  GroupValues xdata;
  // Entities.
  std::string layer = "0", linetype;
  int color = 256;
  int trueColor = -1;
  int lineWeight = -1;
  double linetypeScale = 1;
  bool invisible = false, paperSpace = false;
};
// Splits an object's tags (its "0" tag first) into the common fields and
// its own tags (subclass markers included, common ones left out).
// Entity properties (layer, colour, ...) are taken only for entities.
void splitObject(const std::vector<Tag>& tags, CommonFields& common, std::vector<Tag>& own, bool entity = true);
// True for tags that readCommon handles (so kind decoders can skip them).
bool isCommonTag(int code);
// Applies the common fields to a new object that is now in the database.
void applyCommon(ReadContext& ctx, AcDbObject* obj, const CommonFields& common);

// Kind decoders take an object's own tags (see splitObject). They return a
// host object filled from them, or null for kinds the host does not model
// (the caller keeps those generically). References to other objects are
// added to ctx.pending by the caller, once the object has an id, through
// the returned PendingNames.
struct PendingNames {
  std::string blockName;            // block references and dimensions
  std::string linetypeName;         // layer records
  std::vector<std::pair<std::string, AcDbHandle>> entries;  // dictionaries
  std::vector<AcDbHandle> members;  // groups
};
AcDbEntity* decodeEntity(std::string_view kind, const std::vector<Tag>& own, ReadContext& ctx, PendingNames& names);
// POLYLINE with its VERTEX tags (own tags, one vector each), as a 2D or 3D
// polyline; null for meshes.
AcDbEntity* decodePolyline(const std::vector<Tag>& head, const std::vector<std::vector<Tag>>& vertices,
                           const std::vector<AcDbHandle>& vertexHandles, ReadContext& ctx);
AcDbSymbolTableRecord* decodeTableRecord(std::string_view table, const std::vector<Tag>& own, ReadContext& ctx,
                                         PendingNames& names);
AcDbObject* decodeObject(std::string_view kind, const std::vector<Tag>& own, ReadContext& ctx, PendingNames& names);

// Entity kinds that the reader keeps as text until first use, and the
// loader that then builds them as the reader would have.
bool isDeferrableKind(std::string_view kind);
std::unique_ptr<AcDbObjectLoader> makeEntityLoader();

// --- writing -----------------------------------------------------------------

using TagList = std::vector<std::pair<int, std::string>>;

struct WriteContext {
  const AcDbDatabase& db;
  std::string acadVer;  // target version
  bool r12() const { return acadVer < "AC1012"; }
  bool handles = true;  // R12 files may be written without handles
  Diagnostics& diag;
};

// Tags of an object from its host data (the object's own "0" tag first).
// False for objects that have nothing to write in the target version.
bool encodeObject(const AcDbObject& obj, TagList& out, WriteContext& ctx);
// Tags of a table record or a table head.
void encodeTableRecord(const AcDbSymbolTableRecord& rec, std::string_view table, TagList& out, WriteContext& ctx);
// The file's name of a table ("LAYER") for a host table.
std::string_view tableName(const AcDbObject& table);

// Adds to out the tags of the original text that out lacks (per subclass
// marker), so that data the host does not model survives a change.
void mergeUnmodelled(std::string_view original, TagList& out);

// Adds to out, before its extended data, the tags of an R12 original that
// out lacks, under the subclass marker given (none when empty): kinds the
// host keeps as text then reach a newer file with their data.
void carryOldFormTags(std::string_view original, std::string_view subclass, TagList& out);

// Formatting helpers.
std::string handleText(AcDbObjectId id);
std::string degrees(double radians);

}  // namespace host::dxf
