// Lays a host database out as a drawing file: unmodified objects are copied
// from the text they were read from, everything else is written from the
// host's data (with the original's unmodelled tags merged back in).
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "host/db/peek.h"
#include "host/base/safe_write.h"
#include "host/dxf/codec.h"
#include "host/dxf/encoding.h"

namespace host::dxf {

const std::vector<DxfVersion>& knownVersions() {
  static const std::vector<DxfVersion> versions = {
      {"AC1009", "R12"},   {"AC1012", "R13"},   {"AC1014", "R14"},   {"AC1015", "R2000"},
      {"AC1018", "R2004"}, {"AC1021", "R2007"}, {"AC1024", "R2010"}, {"AC1027", "R2013"},
      {"AC1032", "R2018"}};
  return versions;
}

const DxfVersion* findVersion(std::string_view name) {
  for (const auto& v : knownVersions()) {
    const std::string_view release(v.release);
    if (equalsNoCase(name, v.acadVer) || equalsNoCase(name, release) || name == release.substr(1)) return &v;
  }
  return nullptr;
}

namespace {

// Entity kinds that appeared after R2000, with the first version that has them.
const char* minimumVersion(std::string_view kind) {
  if (kind == "MULTILEADER" || kind == "MLEADER" || kind == "SECTION" || kind == "SURFACE" || kind == "LIGHT" ||
      kind == "PDFUNDERLAY" || kind == "DWFUNDERLAY" || kind == "DGNUNDERLAY" || kind == "SUN")
    return "AC1021";
  if (kind == "MESH" || kind == "GEOPOSITIONMARKER" || kind == "EXTRUDEDSURFACE" || kind == "LOFTEDSURFACE" ||
      kind == "REVOLVEDSURFACE" || kind == "SWEPTSURFACE" || kind == "PLANESURFACE" || kind == "NURBSURFACE")
    return "AC1024";
  if (kind == "HELIX" || kind == "ACAD_TABLE") return "AC1018";
  return nullptr;
}

class Writer {
 public:
  Writer(const DxfDrawing& d, const WriteOptions& opt, Diagnostics& diag)
      : m_d(d), m_db(*d.database), m_ctx{*d.database, opt.acadVer.empty() ? d.info.acadVer : opt.acadVer, true, diag},
        m_diag(diag) {
    m_wantedPage = opt.codePage;
    m_page = !opt.codePage.empty() ? opt.codePage : d.info.acadVer < "AC1021" ? d.info.codePage : "ANSI_1252";
    m_eol = d.info.lineEnding;
    m_source = m_db.sourceText();
    // Spans are reused only within one family: R12 and R13-or-later differ in form.
    m_useSpans = (d.info.acadVer < "AC1012") == m_ctx.r12();
    m_nextHandle = m_db.handseed().value();
    if (m_ctx.r12()) {
      const AcDbHeaderVariable* handling = m_db.headerVariable("$HANDLING");
      m_ctx.handles = !handling || handling->values.empty() || handling->values[0].text != "0";
    }
  }

  bool run(std::string& out);

 private:
  void tag(int code, std::string_view value) {
    char buf[16];
    const int n = std::snprintf(buf, sizeof buf, "%3d", code);
    m_out.append(buf, static_cast<std::size_t>(n));
    m_out += m_eol;
    appendValue(value);
    m_out += m_eol;
  }
  // A line break in a value would end its line and shift every tag after
  // it: control characters other than the tab are written in caret
  // notation (a line feed as ^J), as binary files read as text show them.
  void appendValue(std::string_view value) {
    const auto control = [](char c) { return static_cast<unsigned char>(c) < 0x20 && c != '\t'; };
    if (std::none_of(value.begin(), value.end(), control)) {
      m_out += value;
      return;
    }
    ++m_escapedValues;
    for (const char c : value) {
      if (control(c)) {
        m_out += '^';
        m_out += static_cast<char>(c + 0x40);
      } else {
        m_out += c;
      }
    }
  }
  void tags(const TagList& list) {
    for (const auto& [code, value] : list) {
      if ((code == 5 || code == 105) && value == "~") {
        tag(code, AcDbHandle(m_nextHandle++).toHex());
        continue;
      }
      tag(code, value);
    }
  }
  // Written in a newer form than the R12 file it was read from.
  bool fromOldForm() const { return !m_useSpans && m_d.info.acadVer < "AC1012"; }
  std::string_view span(AcDbObjectId id) const { return m_useSpans ? m_db.unmodifiedSource(id) : std::string_view(); }
  bool keepsKind(const AcDbObject& obj) {
    const auto* g = AcDbGenericEntity::cast(&obj);
    const char* min = g ? minimumVersion(g->dxfName()) : nullptr;
    // A plain round trip keeps everything the file held.
    if (min && m_ctx.acadVer != m_d.info.acadVer && m_ctx.acadVer < min) {
      m_diag.warn(g->dxfName() + " " + obj.handle().toHex() + " cannot be held by " + m_ctx.acadVer +
                  " files and was left out");
      return false;
    }
    return true;
  }
  void object(AcDbObjectId id);
  void entityList(const AcDbBlockTableRecord& block);
  void blockBoundary(AcDbObjectId id, const AcDbBlockTableRecord& block, bool begin);
  void header();
  void tables();
  void blocks();
  void entities();
  void objects();

  const DxfDrawing& m_d;
  const AcDbDatabase& m_db;
  WriteContext m_ctx;
  Diagnostics& m_diag;
  std::string m_out, m_eol;
  std::string_view m_source;
  bool m_useSpans = true;
  std::uint64_t m_nextHandle = 1;
  std::string m_page;        // $DWGCODEPAGE written (files before R2007)
  std::string m_wantedPage;  // the code page asked for; empty: chosen
  std::size_t m_escapedValues = 0;
};

namespace {
// The objects that follow the first in a span, from their "0" tag on.
std::string_view followers(std::string_view span) {
  TagReader r(span);
  Tag t;
  if (!r.next(t)) return {};
  while (r.next(t))
    if (t.code == 0) return span.substr(t.offset);
  return {};
}
}  // namespace

void Writer::object(AcDbObjectId id) {
  const AcDbDatabase::Slot* s = m_db.slot(id);
  if (!s || s->erased) return;
  const std::string_view sp = span(id);
  // A deferred object is as it was read and of a kind every version holds:
  // its span is all there is to write, unless the form changes.
  if (s->deferred && !sp.empty()) {
    m_out += sp;
    return;
  }
  if (!m_db.objectAt(id)) return;
  if (!keepsKind(*s->object)) return;
  const auto* kept = AcDbGenericEntity::cast(s->object);
  if (kept && fromOldForm() && kept->dxfName() != "SHAPE" && kept->dxfName() != "BLOCK" &&
      kept->dxfName() != "ENDBLK" && kept->dxfName() != "SEQEND") {
    // Its newer form needs subclass markers that only the host's model of
    // the kind could place.
    m_diag.warn(kept->dxfName() + " " + s->handle.toHex() + " cannot be converted from R12 and was left out");
    return;
  }
  if (!sp.empty()) {
    m_out += sp;
  } else {
    TagList list;
    if (encodeObject(*s->object, list, m_ctx)) {
      const std::string_view original = m_useSpans ? m_db.originalSource(id) : std::string_view();
      // A kept object whose data the host changed holds all of them.
      const auto* generic = AcDbGenericObject::cast(s->object);
      if (!generic || !generic->data()) mergeUnmodelled(original, list);
      if (kept && fromOldForm() && kept->dxfName() == "SHAPE")
        carryOldFormTags(m_db.originalSource(id), "AcDbShape", list);
      tags(list);
      // A kept kind read with followers (a mesh with its vertices and end
      // marker) keeps them: the host holds nothing to regenerate them from.
      if (kept) m_out += followers(original);
    } else if (kept || AcDbGenericObject::cast(s->object)) {
      // Nothing to regenerate from: the original text stands.
      if (m_useSpans) m_out += m_db.originalSource(id);
    }
  }
  // Attributes and their end marker follow a block reference.
  if (const auto* ref = AcDbBlockReference::cast(s->object)) {
    bool any = false;
    for (AcDbObjectId a : ref->attributeIds())
      if (!a.isErased()) {
        any = true;
        object(a);
      }
    if (!ref->sequenceEndId().isNull()) object(ref->sequenceEndId());
    else if (any) {
      TagList end{{0, "SEQEND"}};
      if (m_ctx.handles) end.emplace_back(5, "~");
      if (!m_ctx.r12()) {
        end.emplace_back(330, handleText(id));
        end.emplace_back(100, "AcDbEntity");
      }
      end.emplace_back(8, ref->layer());
      tags(end);
    }
  }
}

void Writer::entityList(const AcDbBlockTableRecord& block) {
  for (AcDbObjectId id : block.entityIds()) object(id);
}

void Writer::blockBoundary(AcDbObjectId id, const AcDbBlockTableRecord& block, bool begin) {
  if (!id.isNull() && !id.isErased()) {
    const std::string_view sp = m_useSpans ? m_db.originalSource(id) : std::string_view();
    // Block begin and end follow their record: regenerate when it changed.
    if (!sp.empty() && !m_db.slot(block.objectId())->modified) {
      m_out += sp;
      return;
    }
  }
  TagList list;
  list.emplace_back(0, begin ? "BLOCK" : "ENDBLK");
  if (m_ctx.handles) list.emplace_back(5, id.isNull() ? "~" : id.handle().toHex());
  if (!m_ctx.r12()) {
    list.emplace_back(330, handleText(block.objectId()));
    list.emplace_back(100, "AcDbEntity");
  }
  list.emplace_back(8, "0");
  if (!m_ctx.r12()) list.emplace_back(100, begin ? "AcDbBlockBegin" : "AcDbBlockEnd");
  if (begin) {
    list.emplace_back(2, block.getName());
    list.emplace_back(70, std::to_string(block.flags()));
    list.emplace_back(10, formatDouble(block.origin().x));
    list.emplace_back(20, formatDouble(block.origin().y));
    list.emplace_back(30, formatDouble(block.origin().z));
    list.emplace_back(3, block.getName());
    list.emplace_back(1, block.pathName());
  }
  tags(list);
}

void Writer::header() {
  tag(0, "SECTION");
  tag(2, "HEADER");
  const auto& vars = m_db.headerVariables();
  auto emit = [&](const std::string& name, const GroupValues& values) {
    tag(9, name);
    for (const auto& v : values) tag(v.code, v.text);
  };
  const AcDbLayerTableRecord* clayer = peek<AcDbLayerTableRecord>(m_db.clayer());
  bool version = false, seed = false, page = false;
  for (const auto& var : vars) {
    if (var.name == "$ACADVER") {
      emit(var.name, {GroupValue::fromString(1, m_ctx.acadVer)});
      version = true;
    } else if (var.name == "$HANDSEED") {
      emit(var.name, {GroupValue::fromString(5, AcDbHandle(m_nextHandle).toHex())});
      seed = true;
    } else if (var.name == "$CLAYER" && clayer) {
      emit(var.name, {GroupValue::fromString(8, clayer->getName())});
    } else if (var.name == "$DWGCODEPAGE") {
      emit(var.name, {GroupValue::fromString(3, m_page)});
      page = true;
    } else {
      emit(var.name, var.values);
    }
  }
  if (!version) emit("$ACADVER", {GroupValue::fromString(1, m_ctx.acadVer)});
  if (!page) emit("$DWGCODEPAGE", {GroupValue::fromString(3, m_page)});
  if (!seed) emit("$HANDSEED", {GroupValue::fromString(5, AcDbHandle(m_nextHandle).toHex())});
  if (vars.empty()) emit("$INSUNITS", {GroupValue::fromString(70, std::to_string(m_db.insunits()))});
  tag(0, "ENDSEC");
}

void Writer::tables() {
  tag(0, "SECTION");
  tag(2, "TABLES");
  AcDbObjectIdArray order = m_d.info.tables;
  for (AcDbObjectId t : {m_db.layerTableId(), m_db.linetypeTableId(), m_db.textStyleTableId(), m_db.regAppTableId(),
                         m_db.blockTableId()})
    if (!order.contains(t)) order.append(t);
  for (AcDbObjectId tableId : order) {
    const auto* table = peek<AcDbSymbolTable>(tableId);
    if (!table) continue;
    std::string name(tableName(*table));
    const std::string_view original = m_db.originalSource(tableId);
    if (name.empty()) {
      // Kept tables: their name is in their own text.
      TagReader r(original);
      Tag t;
      while (r.next(t))
        if (t.code == 2) {
          name = std::string(t.value);
          break;
        }
    }
    if (name == "BLOCK_RECORD" && m_ctx.r12()) continue;
    const std::string_view sp = span(tableId);
    if (!sp.empty()) {
      m_out += sp;
    } else {
      TagList list{{0, "TABLE"}, {2, name}};
      if (m_ctx.handles) list.emplace_back(5, tableId.handle().toHex());
      if (!m_ctx.r12()) {
        list.emplace_back(330, "0");
        list.emplace_back(100, "AcDbSymbolTable");
      }
      int count = 0;
      for (AcDbObjectId r : table->recordIds()) count += !r.isErased();
      list.emplace_back(70, std::to_string(count));
      if (m_useSpans) mergeUnmodelled(original, list);
      tags(list);
    }
    for (AcDbObjectId recId : table->recordIds()) {
      const AcDbDatabase::Slot* s = m_db.slot(recId);
      if (!s || s->erased) continue;
      const std::string_view rs = span(recId);
      if (!rs.empty()) {
        m_out += rs;
        continue;
      }
      TagList list;
      encodeTableRecord(*AcDbSymbolTableRecord::cast(s->object), name, list, m_ctx);
      if (m_useSpans) mergeUnmodelled(m_db.originalSource(recId), list);
      else if (fromOldForm() && AcDbGenericTableRecord::cast(s->object))
        carryOldFormTags(m_db.originalSource(recId), "", list);
      tags(list);
    }
    tag(0, "ENDTAB");
  }
  tag(0, "ENDSEC");
}

void Writer::blocks() {
  tag(0, "SECTION");
  tag(2, "BLOCKS");
  const auto* table = peek<AcDbBlockTable>(m_db.blockTableId());
  for (AcDbObjectId id : table->recordIds()) {
    const auto* block = peek<AcDbBlockTableRecord>(id);
    if (!block || id.isErased()) continue;
    const bool space = id == m_db.modelSpaceId() || id == m_db.paperSpaceId();
    // R12 files name no model or paper space blocks unless they had them.
    if (m_ctx.r12() && space && block->blockBeginId().isNull()) continue;
    blockBoundary(block->blockBeginId(), *block, true);
    if (!space) entityList(*block);
    blockBoundary(block->blockEndId(), *block, false);
  }
  tag(0, "ENDSEC");
}

void Writer::entities() {
  tag(0, "SECTION");
  tag(2, "ENTITIES");
  if (const auto* ms = peek<AcDbBlockTableRecord>(m_db.modelSpaceId())) entityList(*ms);
  if (const auto* ps = peek<AcDbBlockTableRecord>(m_db.paperSpaceId())) entityList(*ps);
  tag(0, "ENDSEC");
}

void Writer::objects() {
  tag(0, "SECTION");
  tag(2, "OBJECTS");
  const AcDbObjectId nod = m_db.namedObjectsDictionaryId();
  object(nod);
  const auto& slots = m_db.slots();
  for (std::uint32_t i = 0; i < slots.size(); ++i) {
    const AcDbObject* obj = slots[i].object;  // deferred objects are entities, left out here
    if (!obj || slots[i].erased) continue;
    if (AcDbEntity::cast(obj) || AcDbSymbolTable::cast(obj) || AcDbSymbolTableRecord::cast(obj)) continue;
    const AcDbObjectId id = m_db.idAt(i);
    if (id != nod) object(id);
  }
  tag(0, "ENDSEC");
}

bool Writer::run(std::string& out) {
  m_out.reserve(m_source.size() + 4096);
  if (m_ctx.r12() && m_d.info.acadVer >= "AC1012") {
    m_diag.error = "drawings can be written as R2000 to R2018 (or as R12 when they were read as R12)";
    return false;
  }
  if (!m_ctx.r12() && !m_d.info.keptSections.empty())
    for (const auto& k : m_d.info.keptSections)
      if (k.name == "CLASSES") {
        m_out.append(m_source.substr(k.offset, k.length));
      }
  if (!m_ctx.r12()) {
    bool classes = false;
    for (const auto& k : m_d.info.keptSections) classes = classes || k.name == "CLASSES";
    if (!classes) {
      tag(0, "SECTION");
      tag(2, "CLASSES");
      tag(0, "ENDSEC");
    }
  }
  tables();
  blocks();
  entities();
  if (!m_ctx.r12()) {
    objects();
    for (const auto& k : m_d.info.keptSections)
      if (k.name != "CLASSES") {
        m_out.append(m_source.substr(k.offset, k.length));
      }
  } else {
    // Objects cannot be held by R12 files.
    int lost = 0;
    for (std::size_t i = 0; i < m_db.slots().size(); ++i)
      if (const auto& s = m_db.slots()[i]; s.object && !s.erased && (AcDbXrecord::cast(s.object) || (AcDbDictionary::cast(s.object) && !AcDbDictionary::cast(s.object)->entries().empty())))
        ++lost;
    if (lost) m_diag.warn(std::to_string(lost) + " dictionaries and records cannot be held by R12 files and were left out");
  }
  tag(0, "EOF");
  if (m_escapedValues > 0)
    m_diag.warn(std::to_string(m_escapedValues) +
                " text values held line breaks or other control characters, written in caret notation (^J)");
  // The header comes first but is written last: it names the handle seed
  // that writing the body may have moved.
  std::string body = std::move(m_out);
  m_out.clear();
  header();
  if (m_ctx.acadVer < "AC1021") {
    // Text before R2007 is in one code page: one that holds all of it.
    std::size_t missing = 0;
    const std::string page = chooseCodePage(m_out + body, m_page, m_wantedPage, missing);
    if (page != m_page) {
      m_page = page;
      m_out.clear();
      header();
    }
    if (missing > 0)
      m_diag.warn(std::to_string(missing) + " characters of the text cannot be held in code page " + m_page +
                  " and are written as \\U+ escapes (choose another with a code page option)");
  }
  const std::string_view preamble = m_source.substr(0, std::min(m_d.info.preamble.length, m_source.size()));
  out.clear();
  out.reserve(preamble.size() + m_out.size() + body.size());
  out += preamble;
  out += m_out;
  out += body;
  if (m_ctx.acadVer < "AC1021" && !isAscii(out)) out = encodeFromUtf8(out, m_page);
  return true;
}

}  // namespace

bool writeDxfText(const DxfDrawing& drawing, const WriteOptions& options, std::string& out, Diagnostics& diag) {
  diag.error.clear();
  if (!drawing.database) {
    diag.error = "no drawing to write";
    return false;
  }
  if (!options.acadVer.empty() && !findVersion(options.acadVer)) {
    diag.error = "unknown drawing version '" + options.acadVer + "'";
    return false;
  }
  WriteOptions o = options;
  if (!o.acadVer.empty()) o.acadVer = findVersion(o.acadVer)->acadVer;
  Writer writer(drawing, o, diag);
  return writer.run(out);
}

bool writeDxfFile(const std::string& path, const DxfDrawing& drawing, const WriteOptions& options, Diagnostics& diag) {
  std::string text;
  if (!writeDxfText(drawing, options, text, diag)) return false;
  return writeFileSafely(path, text, diag.error);
}

}  // namespace host::dxf
