#include <cmath>
#include <numbers>

#include "host/db/peek.h"
#include "host/dxf/codec.h"

namespace host::dxf {

namespace {
AcDbObjectId findRecord(AcDbObjectId table, std::string_view name) {
  AcDbObjectId id;
  if (const auto* t = peek<AcDbSymbolTable>(table)) t->getAt(std::string(name), id);
  return id;
}
}  // namespace

AcDbObjectId ReadContext::RecentRecords::find(std::string_view name) const {
  for (const Entry& e : m_entries) {
    if (!e.slot || name != e.asked) continue;
    const auto* rec = AcDbSymbolTableRecord::cast(e.slot->object);
    return rec && !e.slot->erased && rec->getName() == e.recordName ? e.id : AcDbObjectId();
  }
  return {};
}

void ReadContext::RecentRecords::keep(std::string_view name, AcDbObjectId record) {
  Entry* e = nullptr;
  for (Entry& x : m_entries)
    if (x.asked == name) e = &x;  // a record kept under the name that no longer holds
  if (!e) {
    e = &m_entries[m_next];
    m_next = (m_next + 1) % std::size(m_entries);
  }
  e->asked.assign(name);
  e->id = record;
  const auto* rec = peek<AcDbSymbolTableRecord>(record);
  e->recordName = rec ? rec->getName() : std::string();
  AcDbDatabase* db = record.database();
  e->slot = rec && db ? db->slot(record) : nullptr;
}

AcDbObjectId ReadContext::layer(std::string_view name) {
  if (name.empty()) name = "0";
  // Neighbouring entities mostly share their layer.
  if (const AcDbObjectId kept = m_layers.find(name); !kept.isNull()) return kept;
  AcDbObjectId id = findRecord(db.layerTableId(), name);
  if (id.isNull()) {
    diag.warn("layer '" + std::string(name) + "' is used but not defined; it was added");
    findLayer(&db, std::string(name), id, true);
  }
  m_layers.keep(name, id);
  return id;
}

AcDbObjectId ReadContext::linetype(std::string_view name) {
  if (const AcDbObjectId kept = m_linetypes.find(name); !kept.isNull()) return kept;
  AcDbObjectId id = findRecord(db.linetypeTableId(), name);
  if (id.isNull()) {
    diag.warn("linetype '" + std::string(name) + "' is used but not defined; it was added");
    AcDbLinetypeTable* table = nullptr;
    if (acdbOpenObject(table, db.linetypeTableId(), AcDb::kForWrite) == Acad::eOk) {
      auto* rec = new AcDbLinetypeTableRecord;
      rec->setName(std::string(name));
      if (table->add(id, rec) == Acad::eOk) rec->close();
      else delete rec;
      table->close();
    }
  }
  m_linetypes.keep(name, id);
  return id;
}

AcDbObjectId ReadContext::textStyle(std::string_view name) { return findRecord(db.textStyleTableId(), name); }

bool isCommonTag(int code) {
  switch (code) {
    case 5: case 6: case 8: case 48: case 60: case 62: case 67: case 102: case 330: case 370: case 420:
      return true;
    default:
      return false;
  }
}

namespace {
// Codes that splitObject hands to the object's own tags wherever they stand
// (outside the head of a subclass): all but the common ones, the markers
// and groups, and extended data.
bool plainCode(int code) {
  switch (code) {
    case 5: case 6: case 8: case 48: case 60: case 62: case 67: case 100: case 101: case 102: case 105: case 330:
    case 370: case 420:
      return false;
    default:
      return code >= 0 && code < 1000;
  }
}
}  // namespace

void splitObject(const std::vector<Tag>& tags, CommonFields& c, std::vector<Tag>& own, bool entity) {
  own.clear();
  bool seenSubclass = false, inEntitySubclass = false, hasSubclasses = false;
  bool leading = false;                      // at the head of the subclass after AcDbEntity
  bool got[4] = {false, false, false, false};  // layer, linetype, colour, weight seen in AcDbEntity
  for (const Tag& t : tags)
    if (t.code == 100) hasSubclasses = true;
  long long n = 0;
  for (std::size_t i = 1; i < tags.size(); ++i) {
    const Tag& t = tags[i];
    if (!leading && plainCode(t.code)) {
      own.push_back(t);
      continue;
    }
    if (t.code >= 1000) {
      // Extended data runs to the end of the object.
      for (; i < tags.size(); ++i) {
        GroupValue v;
        v.code = static_cast<short>(tags[i].code);
        v.text = std::string(tags[i].value);
        c.xdata.push_back(std::move(v));
      }
      break;
    }
    if (t.code == 101) {
      // An embedded object (the text of a multi-line attribute) runs to the
      // extended data; its values are not the entity's own.
      while (i + 1 < tags.size() && tags[i + 1].code < 1000) ++i;
      continue;
    }
    if (t.code == 102 && !t.value.empty() && t.value.front() == '{') {
      const std::string_view name = t.value;
      for (++i; i < tags.size() && !(tags[i].code == 102 && tags[i].value == "}"); ++i) {
        AcDbHandle h = AcDbHandle::fromHex(std::string(tags[i].value));
        if (name == "{ACAD_XDICTIONARY" && tags[i].code == 360) c.extensionDictionary = h;
        else if (name == "{ACAD_REACTORS" && tags[i].code == 330) c.reactors.push_back(h);
      }
      continue;
    }
    if (t.code == 100) {
      seenSubclass = true;
      // Some writers (dxflib) put the common values at the head of the
      // subclass that follows AcDbEntity instead of inside it.
      leading = inEntitySubclass;
      inEntitySubclass = t.value == "AcDbEntity";
      own.push_back(t);
      continue;
    }
    if (entity && leading && hasSubclasses) {
      bool taken = true;
      switch (t.code) {
        case 8: if (!got[0]) c.layer = std::string(t.value); break;
        case 6: if (!got[1]) c.linetype = std::string(t.value); break;
        case 62: if (!got[2] && parseInt(t.value, n)) c.color = static_cast<int>(n); break;
        case 370: if (!got[3] && parseInt(t.value, n)) c.lineWeight = static_cast<int>(n); break;
        default: taken = false; leading = false; break;
      }
      if (taken) continue;
    }
    if ((t.code == 5 || t.code == 105) && c.handle.isNull()) {
      c.handle = AcDbHandle::fromHex(std::string(t.value));
      continue;
    }
    if (t.code == 330 && !seenSubclass && c.owner.isNull()) {
      c.owner = AcDbHandle::fromHex(std::string(t.value));
      continue;
    }
    if (entity && (inEntitySubclass || !hasSubclasses)) {
      switch (t.code) {
        case 8: c.layer = std::string(t.value); got[0] = true; continue;
        case 6: c.linetype = std::string(t.value); got[1] = true; continue;
        case 62: if (parseInt(t.value, n)) c.color = static_cast<int>(n); got[2] = true; continue;
        case 420: if (parseInt(t.value, n)) c.trueColor = static_cast<int>(n); continue;
        case 370: if (parseInt(t.value, n)) c.lineWeight = static_cast<int>(n); got[3] = true; continue;
        case 48: { double d; if (parseDouble(t.value, d)) c.linetypeScale = d; continue; }
        case 60: if (parseInt(t.value, n)) c.invisible = n != 0; continue;
        case 67: if (parseInt(t.value, n)) c.paperSpace = n != 0; continue;
        default: break;
      }
    }
    own.push_back(t);
  }
}

void applyCommon(ReadContext& ctx, AcDbObject* obj, const CommonFields& c) {
  const AcDbObjectId id = obj->objectId();
  if (!c.owner.isNull()) ctx.pending.owners.emplace_back(id, c.owner);
  if (!c.extensionDictionary.isNull()) ctx.pending.extensionDictionaries.emplace_back(id, c.extensionDictionary);
  if (!c.reactors.empty()) ctx.pending.reactors.emplace_back(id, c.reactors);
  if (!c.xdata.empty()) obj->extras().xdata = c.xdata;
  auto* ent = AcDbEntity::cast(obj);
  if (!ent) return;
  ent->setLayer(ctx.layer(c.layer));
  ent->setLinetype(c.linetype.empty() ? ctx.db.byLayerLinetype() : ctx.linetype(c.linetype));
  // A negative colour on an entity is not meaningful; keep its magnitude.
  AcCmColor color;
  color.setColorIndex(static_cast<std::uint16_t>(std::min(std::abs(c.color), 257)));
  if (c.trueColor >= 0) color.setTrueColor(c.trueColor);
  ent->setColor(color);
  ent->setLineWeight(static_cast<std::int16_t>(c.lineWeight));
  if (c.linetypeScale > 0) ent->setLinetypeScale(c.linetypeScale);
  ent->setVisibility(c.invisible ? AcDb::kInvisible : AcDb::kVisible);
}

std::string degrees(double radians) { return formatDouble(radians * 180.0 / std::numbers::pi); }

std::string handleText(AcDbObjectId id) { return id.isNull() ? "0" : id.handle().toHex(); }

}  // namespace host::dxf
