#pragma once
// A drawing: its objects, symbol tables, named-objects dictionary, header
// variables and reactors.
#include <deque>
#include <string_view>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/db/object.h"
#include "host/db/slot_store.h"

class HandleIndex;
class AcDbDatabase;

// Builds objects that a reader left as their source text: a large drawing
// is read without building every entity, and each is built on first use.
class AcDbObjectLoader {
 public:
  virtual ~AcDbObjectLoader() = default;
  // Builds the object of a deferred slot and hands it to
  // AcDbDatabase::attachLoaded.
  virtual void load(AcDbDatabase& db, AcDbObjectId id) = 0;
};

class AcDbBlockTable;
class AcDbLayerTable;
class AcDbLinetypeTable;
class AcDbTextStyleTable;
class AcDbRegAppTable;
class AcDbDictionary;
class AcDbIdMapping;

// One header variable with its values in file order.
struct AcDbHeaderVariable {
  std::string name;  // with the leading '$'
  GroupValues values;
};

class AcDbDatabase {
 public:
  // A new drawing with the standard tables and records: model and paper
  // space, layer "0", linetypes ByBlock, ByLayer and Continuous, text style
  // Standard, application ACAD and the named-objects dictionary.
  explicit AcDbDatabase(bool buildDefaultDrawing = true);
  ~AcDbDatabase();
  AcDbDatabase(const AcDbDatabase&) = delete;
  AcDbDatabase& operator=(const AcDbDatabase&) = delete;

  AcDbObjectId blockTableId() const { return m_blockTable; }
  AcDbObjectId layerTableId() const { return m_layerTable; }
  AcDbObjectId linetypeTableId() const { return m_linetypeTable; }
  AcDbObjectId textStyleTableId() const { return m_textStyleTable; }
  AcDbObjectId regAppTableId() const { return m_regAppTable; }
  AcDbObjectId namedObjectsDictionaryId() const { return m_namedObjects; }
  AcDbObjectId groupDictionaryId() const;
  AcDbObjectId modelSpaceId() const { return m_modelSpace; }
  AcDbObjectId paperSpaceId() const { return m_paperSpace; }

  Acad::ErrorStatus getBlockTable(AcDbBlockTable*& table, AcDb::OpenMode mode) const;
  Acad::ErrorStatus getLayerTable(AcDbLayerTable*& table, AcDb::OpenMode mode) const;
  Acad::ErrorStatus getLinetypeTable(AcDbLinetypeTable*& table, AcDb::OpenMode mode) const;
  Acad::ErrorStatus getTextStyleTable(AcDbTextStyleTable*& table, AcDb::OpenMode mode) const;
  Acad::ErrorStatus getRegAppTable(AcDbRegAppTable*& table, AcDb::OpenMode mode) const;
  Acad::ErrorStatus getNamedObjectsDictionary(AcDbDictionary*& dict, AcDb::OpenMode mode) const;

  AcDbObjectId clayer() const { return m_clayer; }
  Acad::ErrorStatus setClayer(AcDbObjectId layerId);
  AcDbObjectId byLayerLinetype() const { return m_byLayer; }
  AcDbObjectId byBlockLinetype() const { return m_byBlock; }
  AcDbObjectId continuousLinetype() const { return m_continuous; }
  AcDbObjectId textstyle() const { return m_textStyle; }
  AcDbObjectId layerZero() const { return m_layerZero; }

  AcDbHandle handseed() const { return m_handseed; }
  // Raises the seed; it never goes below a handle in use. Seeds beyond
  // kLargestHandseed are ignored: counting on from there would wrap round.
  void setHandseed(AcDbHandle seed);
  // Handles above this are kept as a file gives them, but new handles are
  // counted from below it (skipping any in use).
  static constexpr std::uint64_t kLargestHandseed = std::uint64_t(1) << 60;

  // Adds an object that has no owner yet (owners call this for their
  // children). The database owns it from then on; it is open for write.
  Acad::ErrorStatus addAcDbObject(AcDbObjectId& id, AcDbObject* obj);
  // As addAcDbObject with a handle the object had in a file; a handle in use
  // or the null handle gets a fresh one.
  Acad::ErrorStatus addAcDbObjectWithHandle(AcDbObjectId& id, AcDbObject* obj, AcDbHandle handle);
  Acad::ErrorStatus getAcDbObjectId(AcDbObjectId& id, bool createIfNotFound, const AcDbHandle& handle);
  // An object known only by its span in the source text, built by the
  // object loader when it is first opened or looked at; same handle rules.
  Acad::ErrorStatus addDeferredObject(AcDbObjectId& id, AcDbHandle handle, std::uint64_t offset,
                                      std::uint32_t length);
  void setObjectLoader(std::unique_ptr<AcDbObjectLoader> loader);
  // The object in a slot, built first if it was deferred; null when none.
  // Building is invisible to the caller, hence const.
  AcDbObject* objectAt(AcDbObjectId id) const;
  // For the object loader: puts the built object into its deferred slot.
  void attachLoaded(AcDbObjectId id, AcDbObject* obj);
  // Prepares the handle look-up for about this many objects (readers know
  // roughly how many a file holds).
  void reserveHandles(std::size_t count);

  // Clones objects (entities with what they own) into the owner, normally a
  // block table record; the mapping pairs every original with its clone.
  Acad::ErrorStatus deepCloneObjects(const AcDbObjectIdArray& ids, AcDbObjectId owner,
                                     AcDbIdMapping& mapping, bool deferXlation = false);

  // Adds to the application table every application that names a run of
  // this extended data and is missing there.
  void registerApplications(const GroupValues& xdata);

  void addReactor(AcDbDatabaseReactor* reactor);
  void removeReactor(AcDbDatabaseReactor* reactor);

  // Header variables that no typed member holds, in file order.
  std::vector<AcDbHeaderVariable>& headerVariables() { return m_header; }
  const std::vector<AcDbHeaderVariable>& headerVariables() const { return m_header; }
  const AcDbHeaderVariable* headerVariable(const std::string& name) const;
  void setHeaderVariable(const std::string& name, GroupValues values);

  // The text a drawing file was read from (normalised to UTF-8), and each
  // object's span in it: while an object is unmodified, a writer can copy
  // its span instead of regenerating it.
  // owner keeps the text alive (a string, or a mapping of the file).
  void setSourceText(std::string_view text, std::shared_ptr<const void> owner) {
    m_source = text;
    m_sourceOwner = std::move(owner);
  }
  std::string_view sourceText() const { return m_source; }
  // Records the object's span and marks it unmodified.
  void setSourceSpan(AcDbObjectId id, std::uint64_t offset, std::uint32_t length);
  // The unmodified object's span; empty when it has none or was modified.
  std::string_view unmodifiedSource(AcDbObjectId id) const;
  // The object's span whether or not it was modified since.
  std::string_view originalSource(AcDbObjectId id) const;

  int insunits() const { return m_insunits; }
  void setInsunits(int units) { m_insunits = units; }
  // Count of object slots ever used, erased objects included.
  std::size_t numObjects() const { return m_slots.size(); }

  // Host-internal access for ids, opening and notifications.
  struct Slot {
    AcDbObject* object = nullptr;
    AcDbHandle handle;
    AcDbObjectId owner;
    std::uint64_t sourceOffset = 0;  // the object's text in the source, when it came from a file
    std::uint32_t sourceLength = 0;
    std::uint16_t readers = 0;
    bool writer = false;
    bool erased = false;
    bool modified = false;  // opened for write (or erased) since it was read
    bool deferred = false;  // object not built yet: only its source span is known
  };
  Slot* slot(AcDbObjectId id);
  const Slot* slot(AcDbObjectId id) const;
  // Object slots, in creation order, for writers that walk every object.
  const host::ChunkedStore<Slot>& slots() const { return m_slots; }
  AcDbObjectId idAt(std::uint32_t index) const { return AcDbObjectId(m_serial, index); }
  static AcDbDatabase* fromSerial(std::uint32_t serial);
  std::uint32_t serial() const { return m_serial; }
  // An object's state as a file would hold it (installed by the file
  // library). An object opened for write and closed with the same state is
  // not modified: no objectModified, and its original text stays.
  using ObjectFingerprint = std::string (*)(const AcDbObject&);
  static void setObjectFingerprint(ObjectFingerprint f);
  // On a write opening: remembers the object's state.
  void rememberState(AcDbObjectId id);
  // On closing a write opening: whether the state changed (true when it
  // was not remembered); forgets it.
  bool changedSinceRemembered(AcDbObjectId id);
  void notifyAppended(const AcDbObject* obj) const;
  void notifyModified(const AcDbObject* obj) const;
  void notifyErased(const AcDbObject* obj, bool erased) const;
  // The well-known root objects, set by a reader once it has built them.
  enum class Root { kBlockTable, kLayerTable, kLinetypeTable, kTextStyleTable, kRegAppTable, kNamedObjects };
  void setRootId(Root root, AcDbObjectId id);
  // Re-reads model/paper space, layer 0, the standard linetypes and the
  // current layer and style from the tables.
  void resolveStandardRecords();

 private:
  Acad::ErrorStatus addObject(AcDbObjectId& id, AcDbObject* obj, AcDbHandle handle);
  // A new slot with the wanted handle, or a fresh one when it is in use.
  Slot& newSlot(AcDbHandle wanted, std::uint32_t& index);
  void buildDefaultDrawing();
  void indexHandles();

  std::uint32_t m_serial = 0;
  host::ChunkedStore<Slot> m_slots;  // stable addresses, cheap growth
  std::unique_ptr<HandleIndex> m_byHandle;  // built on first look-up
  std::unique_ptr<AcDbObjectLoader> m_loader;
  AcDbHandle m_handseed{1};
  bool m_farHandles = false;  // some handle in use lies beyond kLargestHandseed
  std::vector<AcDbDatabaseReactor*> m_reactors;
  std::unordered_map<std::uint32_t, std::string> m_openStates;  // by slot index, while open for write
  std::vector<AcDbHeaderVariable> m_header;
  std::string_view m_source;
  std::shared_ptr<const void> m_sourceOwner;

  AcDbObjectId m_blockTable, m_layerTable, m_linetypeTable, m_textStyleTable, m_regAppTable;
  AcDbObjectId m_namedObjects, m_modelSpace, m_paperSpace;
  AcDbObjectId m_clayer, m_layerZero, m_byLayer, m_byBlock, m_continuous, m_textStyle;
  int m_insunits = 4;  // millimetres
};

// The database that host operations without a database argument act on.
struct AcDbHostApplicationServices {
  AcDbDatabase* workingDatabase() const { return m_working; }
  void setWorkingDatabase(AcDbDatabase* db) { m_working = db; }

 private:
  AcDbDatabase* m_working = nullptr;
};
AcDbHostApplicationServices* acdbHostApplicationServices();
