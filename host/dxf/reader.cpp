// Builds a host database from the tags of a drawing file.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <array>
#include <deque>
#include <fstream>
#include <optional>
#include <sstream>

#include "host/db/block_extents.h"
#include "host/db/peek.h"
#include "host/dxf/codec.h"
#include "host/dxf/encoding.h"

namespace host::dxf {

namespace {

const char* const kSectionOrder[] = {"HEADER", "CLASSES", "TABLES", "BLOCKS", "ENTITIES", "OBJECTS"};
int sectionRank(std::string_view name) {
  for (int i = 0; i < 6; ++i)
    if (name == kSectionOrder[i]) return i;
  return -1;
}

// Whether a group code's value must be a number; looked up in a table, as
// every tag of a file asks.
const std::array<bool, 1072> kNumberCodes = [] {
  std::array<bool, 1072> t{};
  for (int c = 0; c < 1072; ++c) {
    const GroupKind k = groupKind(c);
    t[c] = k == GroupKind::kReal || k == GroupKind::kPoint || k == GroupKind::kInt16 || k == GroupKind::kInt32 ||
           k == GroupKind::kInt64 || k == GroupKind::kBool;
  }
  return t;
}();
inline bool expectsNumber(int code) { return code >= 0 && code < 1072 && kNumberCodes[code]; }

class Reader {
 public:
  Reader(std::string_view text, DxfDrawing& drawing, Diagnostics& diag, EntityBuilding building,
         std::vector<std::size_t> binaryOffsets = {}, std::size_t binarySize = 0)
      : m_defer(building == EntityBuilding::kOnFirstUse),
        m_binaryOffsets(std::move(binaryOffsets)),
        m_binarySize(binarySize),
        m_text(text), m_tags(m_text), m_db(*drawing.database), m_ctx(m_db, diag), m_info(drawing.info),
        m_diag(diag) {}

  bool run();

 private:
  bool fail(const std::string& message) {
    if (m_diag.error.empty()) m_diag.error = message;
    return false;
  }
  // The place of a tag: its line, or for binary files its byte offset.
  std::string where(std::size_t line) const {
    if (m_binaryOffsets.empty()) return "line " + std::to_string(line);
    const std::size_t tag = line > 0 ? (line - 1) / 2 : 0;
    return "byte offset " + std::to_string(tag < m_binaryOffsets.size() ? m_binaryOffsets[tag] : m_binarySize);
  }
  bool failAt(const Tag& t, const std::string& message) { return fail(where(t.line) + ": " + message); }
  bool next(Tag& t) {
    if (m_tags.next(t)) {
      if (t.code < -5 || t.code > 1071) return failAt(t, "invalid group code " + std::to_string(t.code));
      return true;
    }
    if (m_tags.failed()) return fail(m_tags.error());
    return false;
  }
  // The next tag of the object that first starts, its number checked;
  // false at the object's end (end is then its end offset) or on an error.
  bool nextOwnTag(const Tag& first, Tag& t, std::size_t& end);
  [[gnu::noinline, gnu::cold]] bool failInside(const Tag& first);
  [[gnu::noinline, gnu::cold]] bool failNotANumber(const Tag& t);
  // A number too large for a double ("1e999"): read as 0, with a warning.
  [[gnu::noinline, gnu::cold]] void warnOutOfRange(const Tag& t);
  // The tags of one object, from its "0" tag to the next; numbers are checked.
  bool collect(const Tag& first, std::vector<Tag>& tags, std::size_t& end);
  bool expectEnd(std::string_view what);
  // A SECTION or EOF where a section's ENDSEC should be: warns, puts the tag
  // back and says the section is over, so that the next section is read as
  // what it is.
  bool sectionCutShort(const Tag& t, std::string_view section);
  // The tag with \U+XXXX and \M+nXXXX escapes in its value replaced by the
  // characters (the source text itself keeps them, for writing back).
  Tag decoded(Tag t) {
    decode(t);
    return t;
  }
  void decode(Tag& t) {
    if (!mayHaveEscapes(t.value) || !hasEscapes(t.value)) return;
    m_decoded.push_back(decodeEscapes(t.value));
    t.value = m_decoded.back();
  }
  // False when the value (a view into the text) holds no backslash: the
  // next backslash of the text is kept, so that most values are cleared by
  // one comparison instead of a search each.
  bool mayHaveEscapes(std::string_view value) {
    const char* const begin = value.data();
    const char* const textEnd = m_text.data() + m_text.size();
    if (begin < m_text.data() || begin > textEnd) return true;  // not in the text
    if (begin < m_backslashSearchFrom || m_nextBackslash < begin) {
      const void* hit = std::memchr(begin, '\\', static_cast<std::size_t>(textEnd - begin));
      m_nextBackslash = hit ? static_cast<const char*>(hit) : textEnd;
      m_backslashSearchFrom = begin;
    }
    return m_nextBackslash < begin + value.size();
  }
  bool readHeader(const Tag& sectionStart);
  bool keepSection(const Tag& sectionStart, std::string name);
  bool readTables();
  bool readBlocks();
  bool readEntities();
  bool readObjects();
  // Reads one entity (with its vertices or attributes) whose "0" tag is first
  // into the block record owner (null: model or paper space by its flag).
  bool readEntity(const Tag& first, AcDbObjectId owner);
  // An entity of a deferrable kind: only what the drawing needs at once
  // (handle, layer, linetype, space) is taken; the rest waits for first use.
  bool readDeferred(const Tag& first, AcDbObjectId owner);
  AcDbObjectId addObject(AcDbObject* obj, const CommonFields& common, std::size_t begin, std::size_t end);
  // Completes an object the reader made, without marking it modified: what
  // it sets comes from the object's own text.
  template <class T, class F>
  void fill(AcDbObjectId id, F&& f) {
    AcDbDatabase::Slot* s = m_db.slot(id);
    T* obj = s ? T::cast(s->object) : nullptr;
    if (!obj) return;
    const bool writer = s->writer;
    s->writer = true;
    f(*obj);
    s->writer = writer;
  }
  void appendToBlock(AcDbObjectId block, AcDbObjectId entity);
  // Tables and standard records that entities need; with final, also the
  // named-objects dictionary (which the OBJECTS section may still bring).
  void ensureStandardObjects(bool final = false);
  AcDbObjectId ensureTable(AcDbObjectId current, AcDbSymbolTable* fresh, const char* name);
  AcDbObjectId ensureRecord(AcDbObjectId table, AcDbSymbolTableRecord* rec, const char* name, bool warn);
  void resolve();
  AcDbObjectId blockByName(const std::string& name, bool create);

  bool m_defer = true;  // entities of the common kinds are built on first use
  std::vector<std::size_t> m_binaryOffsets;
  std::size_t m_binarySize = 0;
  std::string_view m_text;
  TagReader m_tags;
  AcDbDatabase& m_db;
  ReadContext m_ctx;
  DxfFileInfo& m_info;
  Diagnostics& m_diag;
  std::deque<std::string> m_decoded;  // stable storage for decoded values
  const char* m_backslashSearchFrom = nullptr;  // the first backslash at or after here
  const char* m_nextBackslash = nullptr;        // is here (the text's end when none)
  std::vector<Tag> m_tagBuffer, m_ownBuffer;  // reused from entity to entity
  std::string m_clayerName;
  AcDbHandle m_headerSeed;
  bool m_sawEof = false;
};

inline bool Reader::nextOwnTag(const Tag& first, Tag& t, std::size_t& end) {
  if (!next(t)) return failInside(first);
  if (t.code == 0) {
    m_tags.unread();
    end = t.offset;
    return false;
  }
  bool longExponent = false;
  if (expectsNumber(t.code) && !looksNumeric(t.value, &longExponent)) return failNotANumber(t);
  if (longExponent) warnOutOfRange(t);
  return true;
}

void Reader::warnOutOfRange(const Tag& t) {
  double d = 0;
  long long n = 0;
  if (parseDouble(t.value, d) || parseInt(t.value, n)) return;
  m_diag.warn(where(t.line + 1) + ": group code " + std::to_string(t.code) + " value '" + std::string(t.value) +
              "' is beyond the range of numbers and is read as 0");
}

bool Reader::failInside(const Tag& first) {
  if (!m_diag.error.empty()) return false;
  return fail(where(first.line) + ": the file ends inside " + std::string(first.value) + " (no EOF marker)");
}

bool Reader::failNotANumber(const Tag& t) {
  // The value's own line (the one after its group code).
  return fail(where(t.line + 1) + ": group code " + std::to_string(t.code) + " expects a number, found '" +
              std::string(t.value.substr(0, 40)) + "'");
}

bool Reader::collect(const Tag& first, std::vector<Tag>& tags, std::size_t& end) {
  tags.clear();
  tags.push_back(first);
  Tag t;
  while (nextOwnTag(first, t, end)) {
    decode(t);
    tags.push_back(t);
  }
  return m_diag.error.empty();
}

bool Reader::run() {
  Tag t;
  int lastRank = -1;
  std::vector<std::string> seen;
  // Anything before the first section (comments) is kept as it is.
  std::size_t preambleEnd = 0;
  bool inPreamble = true;
  while (next(t)) {
    if (t.code == 0 && t.value == "EOF") {
      m_sawEof = true;
      break;
    }
    if (t.code == 999) continue;
    if (t.code != 0 || t.value != "SECTION") {
      if (inPreamble && t.code != 0) return failAt(t, "expected a SECTION, found group code " + std::to_string(t.code));
      // Stray tags between sections: some writers leave header variables
      // after an early ENDSEC. Skip to the next section.
      m_diag.warn(where(t.line) + ": data outside any section was skipped");
      bool found = false;
      while (!found && next(t)) found = t.code == 0 && (t.value == "SECTION" || t.value == "EOF");
      if (!m_diag.error.empty()) return false;
      if (!found) break;  // the file ends: reported below as a missing EOF
      m_tags.unread();
      continue;
    }
    if (inPreamble) {
      preambleEnd = t.offset;
      inPreamble = false;
      m_info.preamble = {"", 0, preambleEnd};
    }
    const Tag sectionStart = t;
    Tag name;
    if (!next(name) || name.code != 2) {
      if (!m_diag.error.empty()) return false;
      return failAt(sectionStart, "SECTION without a name");
    }
    const std::string sname(name.value);
    const int rank = sectionRank(sname);
    if (rank >= 0) {
      for (const auto& s : seen)
        if (s == sname) return failAt(name, "section " + sname + " appears twice");
      if (rank < lastRank)
        return failAt(name, "section " + sname + " comes after " + kSectionOrder[lastRank] +
                                ": the sections are out of order");
      lastRank = rank;
      seen.push_back(sname);
    }
    bool ok = true;
    if (sname == "HEADER") {
      ok = readHeader(sectionStart);
      // Objects the reader adds get handles beyond every handle of the file.
      m_db.setHandseed(m_headerSeed);
    }
    else if (sname == "TABLES") ok = readTables();
    else if (sname == "BLOCKS") ok = readBlocks();
    else if (sname == "ENTITIES") ok = readEntities();
    else if (sname == "OBJECTS") ok = readObjects();
    else ok = keepSection(sectionStart, sname);
    if (!ok) return false;
  }
  if (!m_diag.error.empty()) return false;
  if (!m_sawEof) return fail(where(t.line) + ": the file ends without an EOF marker");
  ensureStandardObjects(true);
  resolve();
  // A block inserting itself has no extents and no end when exploded.
  if (const auto cycle = findBlockCycle(m_db); !cycle.empty())
    return fail("block " + cycle.front() + " inserts itself: " + describeCycle(cycle));
  return true;
}

bool Reader::expectEnd(std::string_view what) {
  const std::string at = m_binaryOffsets.empty() ? "line " + std::to_string(std::count(m_text.begin(), m_text.end(), '\n') + 1)
                                                 : "byte offset " + std::to_string(m_binarySize);
  return fail(at + ": the file ends inside the " + std::string(what) + " section (no ENDSEC)");
}

bool Reader::sectionCutShort(const Tag& t, std::string_view section) {
  if (t.code != 0 || (t.value != "SECTION" && t.value != "EOF")) return false;
  m_diag.warn(where(t.line) + ": the " + std::string(section) + " section has no ENDSEC; it ends where the " +
              (t.value == "EOF" ? std::string("file ends") : std::string("next section begins")));
  m_tags.unread();
  return true;
}

bool Reader::readHeader(const Tag&) {
  Tag t;
  AcDbHeaderVariable* current = nullptr;
  auto& vars = m_db.headerVariables();
  while (next(t)) {
    if (t.code == 0) {
      if (t.value == "ENDSEC") return true;
      return failAt(t, "unexpected " + std::string(t.value) + " in the HEADER section");
    }
    if (t.code == 9) {
      vars.push_back({std::string(t.value), {}});
      current = &vars.back();
      continue;
    }
    if (!current) {
      m_diag.warn("line " + std::to_string(t.line) + ": a header value without a variable name was skipped");
      continue;
    }
    t = decoded(t);
    current->values.push_back(GroupValue::fromString(static_cast<short>(t.code), std::string(t.value)));
    const std::string& n = current->name;
    if (n == "$ACADVER") m_info.acadVer = std::string(t.value);
    else if (n == "$DWGCODEPAGE") m_info.codePage = std::string(t.value);
    else if (n == "$HANDSEED") {
      m_headerSeed = AcDbHandle::fromHex(std::string(t.value));
      // New handles follow the largest in use; a seed near the top of the
      // range would wrap round to handles already taken.
      if (m_headerSeed.value() > AcDbDatabase::kLargestHandseed) {
        m_diag.warn(where(t.line) + ": $HANDSEED " + std::string(t.value) +
                    " is beyond any usable handle; new objects are numbered after the largest handle in use");
        m_headerSeed = AcDbHandle();
      }
    }
    else if (n == "$CLAYER") m_clayerName = std::string(t.value);
    else if (n == "$INSUNITS") {
      long long u = 0;
      if (parseInt(t.value, u)) m_db.setInsunits(static_cast<int>(u));
    }
  }
  return m_diag.error.empty() ? expectEnd("HEADER") : false;
}

bool Reader::keepSection(const Tag& sectionStart, std::string name) {
  Tag t;
  while (next(t)) {
    if (t.code == 0 && t.value == "ENDSEC") {
      std::size_t end = m_tags.position();
      m_info.keptSections.push_back({std::move(name), sectionStart.offset, end - sectionStart.offset});
      return true;
    }
  }
  return m_diag.error.empty() ? expectEnd(name) : false;
}

AcDbObjectId Reader::addObject(AcDbObject* obj, const CommonFields& common, std::size_t begin, std::size_t end) {
  AcDbObjectId id;
  if (m_db.addAcDbObjectWithHandle(id, obj, common.handle) != Acad::eOk) {
    delete obj;
    return id;
  }
  if (!common.handle.isNull() && id.handle() != common.handle)
    m_diag.warn("handle " + common.handle.toHex() + " is used twice; the second object got " + id.handle().toHex());
  applyCommon(m_ctx, obj, common);
  obj->close();
  m_db.setSourceSpan(id, begin, static_cast<std::uint32_t>(end - begin));
  return id;
}

void Reader::appendToBlock(AcDbObjectId block, AcDbObjectId entity) {
  AcDbDatabase::Slot* bs = m_db.slot(block);
  auto* rec = bs ? AcDbBlockTableRecord::cast(bs->object) : nullptr;
  if (!rec) return;
  rec->entityList().append(entity);
  if (AcDbDatabase::Slot* es = m_db.slot(entity)) es->owner = block;
}

AcDbObjectId Reader::ensureTable(AcDbObjectId current, AcDbSymbolTable* fresh, const char* name) {
  if (!current.isNull()) {
    delete fresh;
    return current;
  }
  AcDbObjectId id;
  m_db.addAcDbObject(id, fresh);
  fresh->close();
  m_info.tables.append(id);
  if (name) m_diag.warn(std::string("the drawing has no ") + name + " table; one was added");
  return id;
}

AcDbObjectId Reader::ensureRecord(AcDbObjectId table, AcDbSymbolTableRecord* rec, const char* name, bool warn) {
  AcDbObjectId id;
  const auto* t = peek<AcDbSymbolTable>(table);
  if (t && t->getAt(name, id) == Acad::eOk) {
    delete rec;
    return id;
  }
  AcDbSymbolTable* writable = nullptr;
  if (acdbOpenObject(writable, table, AcDb::kForWrite) != Acad::eOk) {
    delete rec;
    return id;
  }
  rec->setName(name);
  if (writable->add(id, rec) == Acad::eOk) rec->close();
  else delete rec;
  writable->close();
  if (warn) m_diag.warn(std::string("the drawing lacks '") + name + "'; it was added");
  return id;
}

void Reader::ensureStandardObjects(bool final) {
  const bool r12 = m_info.acadVer < "AC1012";
  // R12 files have no block records: the blocks section names the blocks.
  const AcDbObjectId blocks = ensureTable(m_db.blockTableId(), new AcDbBlockTable, r12 ? nullptr : "BLOCK_RECORD");
  const AcDbObjectId layers = ensureTable(m_db.layerTableId(), new AcDbLayerTable, "LAYER");
  const AcDbObjectId linetypes = ensureTable(m_db.linetypeTableId(), new AcDbLinetypeTable, "LTYPE");
  const AcDbObjectId styles = ensureTable(m_db.textStyleTableId(), new AcDbTextStyleTable, "STYLE");
  const AcDbObjectId apps = ensureTable(m_db.regAppTableId(), new AcDbRegAppTable, "APPID");
  AcDbObjectId nod = m_db.namedObjectsDictionaryId();
  if (nod.isNull() && final) {
    auto* d = new AcDbDictionary;
    m_db.addAcDbObject(nod, d);
    d->close();
    if (!r12) m_diag.warn("the drawing has no named-objects dictionary; one was added");
  }
  using Root = AcDbDatabase::Root;
  m_db.setRootId(Root::kBlockTable, blocks);
  m_db.setRootId(Root::kLayerTable, layers);
  m_db.setRootId(Root::kLinetypeTable, linetypes);
  m_db.setRootId(Root::kTextStyleTable, styles);
  m_db.setRootId(Root::kRegAppTable, apps);
  m_db.setRootId(Root::kNamedObjects, nod);
  ensureRecord(blocks, new AcDbBlockTableRecord, "*Model_Space", !r12);
  ensureRecord(blocks, new AcDbBlockTableRecord, "*Paper_Space", !r12);
  ensureRecord(linetypes, new AcDbLinetypeTableRecord, "ByBlock", !r12);
  ensureRecord(linetypes, new AcDbLinetypeTableRecord, "ByLayer", !r12);
  ensureRecord(linetypes, new AcDbLinetypeTableRecord, "Continuous", true);
  ensureRecord(layers, new AcDbLayerTableRecord, "0", true);
  ensureRecord(styles, new AcDbTextStyleTableRecord, "Standard", false);
  ensureRecord(apps, new AcDbRegAppTableRecord, "ACAD", false);
  m_db.resolveStandardRecords();
}

bool Reader::readTables() {
  Tag t;
  std::vector<Tag> tags, own;
  std::size_t end = 0;
  while (next(t)) {
    if (t.code == 0 && t.value == "ENDSEC") return true;
    if (t.code != 0 || t.value != "TABLE") return failAt(t, "expected TABLE in the TABLES section");
    if (!collect(t, tags, end)) return false;
    std::string name;
    for (const Tag& x : tags)
      if (x.code == 2) {
        name = std::string(x.value);
        break;
      }
    using Root = AcDbDatabase::Root;
    AcDbSymbolTable* table = nullptr;
    std::optional<Root> root;
    if (name == "BLOCK_RECORD") table = new AcDbBlockTable, root = Root::kBlockTable;
    else if (name == "LAYER") table = new AcDbLayerTable, root = Root::kLayerTable;
    else if (name == "LTYPE") table = new AcDbLinetypeTable, root = Root::kLinetypeTable;
    else if (name == "STYLE") table = new AcDbTextStyleTable, root = Root::kTextStyleTable;
    else if (name == "APPID") table = new AcDbRegAppTable, root = Root::kRegAppTable;
    else table = new AcDbGenericTable;
    CommonFields common;
    splitObject(tags, common, own, false);
    const AcDbObjectId tableId = addObject(table, common, t.offset, end);
    if (tableId.isNull()) return fail("could not add table " + name);
    m_info.tables.append(tableId);
    if (root) m_db.setRootId(*root, tableId);
    // Records up to ENDTAB.
    while (next(t)) {
      if (t.code != 0) return failAt(t, "expected a table record in table " + name);
      if (t.value == "ENDTAB") break;
      if (!collect(t, tags, end)) return false;
      CommonFields rc;
      splitObject(tags, rc, own, false);
      PendingNames names;
      AcDbSymbolTableRecord* rec = decodeTableRecord(name, own, m_ctx, names);
      const AcDbObjectId id = addObject(rec, rc, t.offset, end);
      if (id.isNull()) continue;
      if (AcDbDatabase::Slot* ts = m_db.slot(tableId)) {
        auto* tbl = AcDbSymbolTable::cast(ts->object);
        if (tbl->has(rec->getName()))
          m_diag.warn("table " + name + " holds '" + rec->getName() + "' twice");
        tbl->adopt(id, rec->getName());
      }
      if (!names.linetypeName.empty()) m_ctx.pending.layerLinetypes.emplace_back(id, names.linetypeName);
    }
    if (!m_diag.error.empty()) return false;
  }
  return m_diag.error.empty() ? expectEnd("TABLES") : false;
}

AcDbObjectId Reader::blockByName(const std::string& name, bool create) {
  AcDbObjectId id;
  const auto* table = peek<AcDbBlockTable>(m_db.blockTableId());
  if (table && table->getAt(name, id) == Acad::eOk) return id;
  if (!create) return id;
  AcDbBlockTable* writable = nullptr;
  if (acdbOpenObject(writable, m_db.blockTableId(), AcDb::kForWrite) != Acad::eOk) return id;
  auto* rec = new AcDbBlockTableRecord;
  rec->setName(name);
  if (writable->add(id, rec) == Acad::eOk) rec->close();
  else delete rec;
  writable->close();
  return id;
}

bool Reader::readBlocks() {
  ensureStandardObjects();
  Tag t;
  std::vector<Tag> tags, own;
  std::size_t end = 0;
  while (next(t)) {
    if (t.code == 0 && t.value == "ENDSEC") return true;
    if (t.code != 0 || t.value != "BLOCK") return failAt(t, "expected BLOCK in the BLOCKS section");
    if (!collect(t, tags, end)) return false;
    CommonFields common;
    splitObject(tags, common, own);
    std::string name;
    AcGePoint3d base;
    for (const Tag& x : own) {
      double d = 0;
      if (x.code == 2 && name.empty()) name = std::string(x.value);
      else if (x.code == 10 && parseDouble(x.value, d)) base.x = d;
      else if (x.code == 20 && parseDouble(x.value, d)) base.y = d;
      else if (x.code == 30 && parseDouble(x.value, d)) base.z = d;
    }
    if (name.empty()) return failAt(t, "BLOCK without a name");
    const AcDbObjectId block = blockByName(name, true);
    common.owner = AcDbHandle();  // the record owns it, whatever the file says
    const AcDbObjectId begin = addObject(new AcDbGenericEntity("BLOCK"), common, t.offset, end);
    if (AcDbDatabase::Slot* s = m_db.slot(begin)) s->owner = block;
    fill<AcDbBlockTableRecord>(block, [&](AcDbBlockTableRecord& rec) { rec.setOrigin(base); });
    AcDbObjectId endId;
    while (next(t)) {
      if (t.code != 0) return failAt(t, "expected an entity in block " + name);
      if (t.value == "ENDBLK") {
        if (!collect(t, tags, end)) return false;
        CommonFields ec;
        splitObject(tags, ec, own);
        ec.owner = AcDbHandle();
        endId = addObject(new AcDbGenericEntity("ENDBLK"), ec, t.offset, end);
        if (AcDbDatabase::Slot* s = m_db.slot(endId)) s->owner = block;
        break;
      }
      if (t.value == "ENDSEC" || t.value == "BLOCK" || t.value == "SECTION" || t.value == "EOF")
        return failAt(t, "block " + name + " has no ENDBLK");
      if (!readEntity(t, block)) return false;
    }
    if (!m_diag.error.empty()) return false;
    if (AcDbDatabase::Slot* bs = m_db.slot(block)) AcDbBlockTableRecord::cast(bs->object)->setBlockBeginEnd(begin, endId);
  }
  return m_diag.error.empty() ? expectEnd("BLOCKS") : false;
}

bool Reader::readEntities() {
  ensureStandardObjects();
  Tag t;
  while (next(t)) {
    if (t.code == 0 && t.value == "ENDSEC") return true;
    if (sectionCutShort(t, "ENTITIES")) return true;
    if (t.code != 0) return failAt(t, "expected an entity in the ENTITIES section");
    if (!readEntity(t, AcDbObjectId::kNull)) return false;
  }
  return m_diag.error.empty() ? expectEnd("ENTITIES") : false;
}

bool Reader::readDeferred(const Tag& first, AcDbObjectId owner) {
  // The same fields, by the same rules, as splitObject takes: without
  // subclass markers anywhere, from the whole object; with them, from the
  // AcDbEntity subclass only; never from extended data or 102 groups.
  struct Fields {
    std::string_view layer = "0", linetype;
    bool paperSpace = false;
  } plain, entity;
  AcDbHandle handle;
  bool hasSubclasses = false, inEntitySubclass = false, inGroup = false, inXdata = false;
  bool leading = false, gotLayer = false, gotLinetype = false;
  std::size_t end = 0;
  Tag t;
  while (nextOwnTag(first, t, end)) {
    if (inXdata) continue;
    if (t.code >= 1000) {
      inXdata = true;
      continue;
    }
    if (t.code == 102) {
      if (!t.value.empty() && t.value.front() == '{') inGroup = true;
      else if (t.value == "}") inGroup = false;
      continue;
    }
    if (inGroup) continue;
    switch (t.code) {
      case 100:
        hasSubclasses = true;
        leading = inEntitySubclass;
        inEntitySubclass = t.value == "AcDbEntity";
        break;
      case 5:
      case 105:
        if (handle.isNull()) handle = AcDbHandle::fromHex(std::string(t.value));
        break;
      case 8:
      case 6:
      case 67: {
        Fields& f = hasSubclasses ? entity : plain;
        // As splitObject: also at the head of the subclass after AcDbEntity
        // when AcDbEntity itself did not say.
        const bool fromLead = leading && t.code != 67 && !(t.code == 8 ? gotLayer : gotLinetype);
        if (hasSubclasses && !inEntitySubclass && !fromLead) {
          leading = false;
          break;
        }
        if (inEntitySubclass) (t.code == 8 ? gotLayer : gotLinetype) |= t.code != 67;
        if (t.code == 8) f.layer = decoded(t).value;
        else if (t.code == 6) f.linetype = decoded(t).value;
        else {
          long long v = 0;
          if (parseInt(t.value, v)) f.paperSpace = v != 0;
        }
        break;
      }
      case 62:
      case 370:
        break;  // common values the loader takes; they keep the head going
      default:
        leading = false;
        break;
    }
  }
  if (!m_diag.error.empty()) return false;
  const Fields& f = hasSubclasses ? entity : plain;
  AcDbObjectId id;
  if (m_db.addDeferredObject(id, handle, first.offset, static_cast<std::uint32_t>(end - first.offset)) != Acad::eOk)
    return fail("could not add " + std::string(first.value) + " at " + where(first.line));
  if (!handle.isNull() && id.handle() != handle)
    m_diag.warn("handle " + handle.toHex() + " is used twice; the second object got " + id.handle().toHex());
  // Layers and linetypes that the file uses without defining join now, as
  // they would for any entity.
  m_ctx.layer(f.layer);
  if (!f.linetype.empty()) m_ctx.linetype(f.linetype);
  AcDbObjectId block = owner;
  if (block.isNull()) block = f.paperSpace ? m_db.paperSpaceId() : m_db.modelSpaceId();
  appendToBlock(block, id);
  return true;
}

bool Reader::readEntity(const Tag& first, AcDbObjectId owner) {
  if (m_defer && isDeferrableKind(first.value)) return readDeferred(first, owner);
  std::vector<Tag>& tags = m_tagBuffer;
  std::vector<Tag>& own = m_ownBuffer;
  std::size_t end = 0;
  if (!collect(first, tags, end)) return false;
  CommonFields common;
  splitObject(tags, common, own);
  const std::string kind(first.value);
  PendingNames names;
  // Held until the database takes them, so that an error leaks nothing.
  std::unique_ptr<AcDbEntity> ent;
  std::size_t spanEnd = end;
  struct Attribute {
    std::unique_ptr<AcDbEntity> entity;
    CommonFields common;
    std::size_t begin, end;
  };
  std::vector<Attribute> attributes;
  std::optional<Attribute> seqend;
  Tag t;
  if (kind == "POLYLINE") {
    // Its vertices and end marker belong to it and are kept in its span.
    std::vector<std::vector<Tag>> vertices;
    std::vector<AcDbHandle> handles;
    AcDbHandle maxHandle;
    const std::vector<Tag> head = own;
    std::vector<Tag> vtags, vown;
    while (next(t)) {
      if (t.value == "VERTEX" || t.value == "SEQEND") {
        if (!collect(t, vtags, spanEnd)) return false;
        CommonFields vc;
        splitObject(vtags, vc, vown);
        maxHandle = std::max(maxHandle, vc.handle);
        if (t.value == "SEQEND") break;
        vertices.push_back(vown);
        handles.push_back(vc.handle);
        continue;
      }
      m_diag.warn(where(t.line) + ": a POLYLINE has no SEQEND");
      m_tags.unread();
      break;
    }
    if (!m_diag.error.empty()) return false;
    ent.reset(decodePolyline(head, vertices, handles, m_ctx));
    if (auto* p2 = AcDb2dPolyline::cast(ent.get())) p2->setSequenceEndHandle(maxHandle);
    if (auto* p3 = AcDb3dPolyline::cast(ent.get())) p3->setSequenceEndHandle(maxHandle);
    // Vertex handles are taken: no new object may get one.
    m_db.setHandseed(AcDbHandle(maxHandle.value() + 1));
  } else {
    ent.reset(decodeEntity(kind, own, m_ctx, names));
    bool follow = false;
    if (kind == "INSERT")
      for (const Tag& x : own)
        if (x.code == 66) {
          long long v = 0;
          follow = parseInt(x.value, v) && v != 0;
        }
    std::vector<Tag> atags, aown;
    while (follow && next(t)) {
      if (t.value != "ATTRIB" && t.value != "SEQEND") {
        m_diag.warn(where(t.line) + ": an INSERT with attributes has no SEQEND");
        m_tags.unread();
        break;
      }
      std::size_t aend = 0;
      if (!collect(t, atags, aend)) return false;
      Attribute a{nullptr, {}, t.offset, aend};
      splitObject(atags, a.common, aown);
      if (t.value == "SEQEND") {
        a.entity = std::make_unique<AcDbGenericEntity>("SEQEND");
        seqend = std::move(a);
        break;
      }
      PendingNames unused;
      a.entity.reset(decodeEntity("ATTRIB", aown, m_ctx, unused));
      attributes.push_back(std::move(a));
    }
    if (!m_diag.error.empty()) return false;
  }
  if (!ent) ent = std::make_unique<AcDbGenericEntity>(kind);
  AcDbEntity* entity = ent.release();
  const AcDbObjectId id = addObject(entity, common, first.offset, spanEnd);
  if (id.isNull()) return true;
  AcDbObjectId block = owner;
  if (block.isNull()) block = common.paperSpace ? m_db.paperSpaceId() : m_db.modelSpaceId();
  appendToBlock(block, id);
  if (!names.blockName.empty()) m_ctx.pending.blockNames.emplace_back(id, names.blockName);
  if (auto* ref = AcDbBlockReference::cast(entity)) {
    AcDbObjectIdArray attIds;
    for (Attribute& a : attributes) {
      const AcDbObjectId aid = addObject(a.entity.release(), a.common, a.begin, a.end);
      if (AcDbDatabase::Slot* s = m_db.slot(aid)) s->owner = id;
      attIds.append(aid);
    }
    ref->setAttributeIds(attIds);
    if (seqend) {
      const AcDbObjectId sid = addObject(seqend->entity.release(), seqend->common, seqend->begin, seqend->end);
      if (AcDbDatabase::Slot* s = m_db.slot(sid)) s->owner = id;
      ref->setSequenceEndId(sid);
    }
  }
  return true;
}

bool Reader::readObjects() {
  ensureStandardObjects();
  Tag t;
  std::vector<Tag> tags, own;
  std::size_t end = 0;
  bool first = true;
  while (next(t)) {
    if (t.code == 0 && t.value == "ENDSEC") return true;
    if (sectionCutShort(t, "OBJECTS")) return true;
    if (t.code != 0) return failAt(t, "expected an object in the OBJECTS section");
    if (!collect(t, tags, end)) return false;
    CommonFields common;
    splitObject(tags, common, own, false);
    PendingNames names;
    const std::string kind(t.value);
    AcDbObject* obj = decodeObject(kind, own, m_ctx, names);
    if (!obj) obj = new AcDbGenericObject(kind);
    const AcDbObjectId id = addObject(obj, common, t.offset, end);
    if (id.isNull()) continue;
    // The first dictionary is the root of all named objects.
    if (first && kind == "DICTIONARY") m_db.setRootId(AcDbDatabase::Root::kNamedObjects, id);
    first = false;
    for (auto& [key, handle] : names.entries) m_ctx.pending.dictionaryEntries.push_back({id, key, handle});
    for (AcDbHandle h : names.members) m_ctx.pending.groupMembers.emplace_back(id, h);
  }
  return m_diag.error.empty() ? expectEnd("OBJECTS") : false;
}

void Reader::resolve() {
  auto find = [&](AcDbHandle h) {
    AcDbObjectId id;
    m_db.getAcDbObjectId(id, false, h);
    return id;
  };
  for (auto& [id, h] : m_ctx.pending.owners)
    if (AcDbDatabase::Slot* s = m_db.slot(id))
      if (s->owner.isNull()) s->owner = find(h);
  for (auto& [id, h] : m_ctx.pending.extensionDictionaries)
    if (AcDbDatabase::Slot* s = m_db.slot(id)) s->object->extras().extensionDictionary = find(h);
  for (auto& [id, hs] : m_ctx.pending.reactors)
    if (AcDbDatabase::Slot* s = m_db.slot(id))
      for (AcDbHandle h : hs) s->object->extras().persistentReactors.append(find(h));
  for (auto& e : m_ctx.pending.dictionaryEntries) {
    const AcDbObjectId target = find(e.handle);
    AcDbDatabase::Slot* s = m_db.slot(e.dictionary);
    if (target.isNull()) {
      m_diag.warn("dictionary entry '" + e.key + "' names missing object " + e.handle.toHex());
      continue;
    }
    AcDbDictionary::cast(s->object)->adopt(e.key, target);
  }
  for (auto& [group, h] : m_ctx.pending.groupMembers) {
    const AcDbObjectId member = find(h);
    if (!member.isNull()) fill<AcDbGroup>(group, [&](AcDbGroup& g) { g.append(member); });
  }
  for (auto& [id, name] : m_ctx.pending.blockNames) {
    const AcDbObjectId block = blockByName(name, false);
    if (block.isNull()) m_diag.warn("a reference names block '" + name + "', which is not defined");
    fill<AcDbBlockReference>(id, [&](AcDbBlockReference& ref) { ref.setBlockTableRecord(block); });
    fill<AcDbDimension>(id, [&](AcDbDimension& dim) { dim.setDimBlockId(block); });
  }
  for (auto& [id, name] : m_ctx.pending.layerLinetypes) {
    const AcDbObjectId lt = m_ctx.linetype(name);
    fill<AcDbLayerTableRecord>(id, [&](AcDbLayerTableRecord& layer) { layer.setLinetypeObjectId(lt); });
  }
  if (!m_clayerName.empty()) {
    AcDbObjectId layer;
    if (const auto* t = peek<AcDbLayerTable>(m_db.layerTableId()); t && t->getAt(m_clayerName, layer) == Acad::eOk)
      m_db.setClayer(layer);
  }
  m_db.setHandseed(m_headerSeed);
}

}  // namespace

namespace {
// Memory for a file's bytes, filled by reading it: not zero-filled first,
// and in huge pages where the system grants them, so that a large file
// faults a page every 2 MB instead of every 4 KB.
class FileBuffer {
 public:
  explicit FileBuffer(std::size_t size) : m_size(size) {
    constexpr std::size_t kHuge = std::size_t(2) << 20;
    m_mapped = size + kHuge;  // room to start on a huge page's boundary
    void* p = ::mmap(nullptr, m_mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) return;
    m_map = static_cast<char*>(p);
    const auto at = reinterpret_cast<std::uintptr_t>(m_map);
    m_data = m_map + ((kHuge - at % kHuge) % kHuge);
    if (size >= kHuge) ::madvise(m_data, size, MADV_HUGEPAGE);  // a hint: refused, it reads all the same
  }
  ~FileBuffer() {
    if (m_map) ::munmap(m_map, m_mapped);
  }
  FileBuffer(const FileBuffer&) = delete;
  FileBuffer& operator=(const FileBuffer&) = delete;
  char* data() { return m_data; }
  std::size_t size() const { return m_size; }
  std::string_view view() const { return {m_data, m_size}; }

 private:
  char* m_map = nullptr;
  char* m_data = nullptr;
  std::size_t m_size = 0, m_mapped = 0;
};

// Reads from bytes that the drawing keeps as its source (owner keeps them
// alive); binary files and files that need decoding get a text of their own.
bool readOwned(std::string_view bytes, std::shared_ptr<const void> owner, DxfDrawing& drawing, Diagnostics& diag,
               EntityBuilding building) {
  diag.error.clear();
  std::vector<std::size_t> offsets;
  std::string_view text = bytes;
  if (isBinaryDxf(bytes)) {
    drawing.info.binary = true;
    auto converted = std::make_shared<std::string>();
    if (!binaryToText(bytes, *converted, diag.error, &offsets, &diag.warnings)) return false;
    text = *converted;
    owner = converted;
  }
  // The code page is in the header; files of R2007 and later are UTF-8.
  {
    TagReader pre(text);
    Tag t;
    std::string var;
    int seen = 0;
    while (pre.next(t) && seen < 2) {
      if (t.code == 0 && (t.value == "ENDSEC" || t.value == "EOF")) break;
      if (t.code == 9) var = std::string(t.value);
      else if (var == "$ACADVER" && t.code == 1) drawing.info.acadVer = std::string(t.value), ++seen;
      else if (var == "$DWGCODEPAGE" && t.code == 3) drawing.info.codePage = std::string(t.value), ++seen;
    }
  }
  if (drawing.info.acadVer < "AC1021" && !isAscii(text)) {
    auto decoded = std::make_shared<std::string>(decodeToUtf8(text, drawing.info.codePage));
    text = *decoded;
    owner = decoded;
  }
  if (text.find("\r\n") != std::string_view::npos) drawing.info.lineEnding = "\r\n";
  drawing.database = std::make_unique<AcDbDatabase>(false);
  drawing.database->setSourceText(text, owner);
  drawing.database->setObjectLoader(makeEntityLoader());
  drawing.database->reserveHandles(text.size() / 128 + 64);  // an object takes 150 bytes or more
  Reader reader(text, drawing, diag, building, std::move(offsets), bytes.size());
  return reader.run();
}

}  // namespace

bool readDxfText(std::string_view bytes, DxfDrawing& drawing, Diagnostics& diag, EntityBuilding building) {
  auto copy = std::make_shared<std::string>(bytes);
  return readOwned(*copy, copy, drawing, diag, building);
}

bool readDxfFile(const std::string& path, DxfDrawing& drawing, Diagnostics& diag, EntityBuilding building) {
  // Read, not mapped: a file another program cuts short while we read it
  // gives an error message instead of a bus error.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat st {};
  if (fd < 0 || ::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    const std::string reason = fd < 0 ? std::strerror(errno) : "not a regular file";
    if (fd >= 0) ::close(fd);
    diag.error = path + ": cannot open the file (" + reason + ")";
    return false;
  }
  auto bytes = std::make_shared<FileBuffer>(static_cast<std::size_t>(st.st_size));
  if (!bytes->data()) {
    ::close(fd);
    diag.error = path + ": not enough memory for the file (" + std::to_string(st.st_size) + " bytes)";
    return false;
  }
  std::size_t done = 0;
  while (done < bytes->size()) {
    const ssize_t n = ::read(fd, bytes->data() + done, bytes->size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      diag.error = path + ": read error (" + std::strerror(errno) + ")";
      ::close(fd);
      return false;
    }
    if (n == 0) {
      ::close(fd);
      diag.error = path + ": the file became shorter while it was read (" + std::to_string(done) + " of " +
                   std::to_string(bytes->size()) + " bytes); another program may be writing it";
      return false;
    }
    done += static_cast<std::size_t>(n);
  }
  ::close(fd);
  if (!readOwned(bytes->view(), bytes, drawing, diag, building)) {
    diag.error = path + ": " + diag.error;
    return false;
  }
  return true;
}

}  // namespace host::dxf
