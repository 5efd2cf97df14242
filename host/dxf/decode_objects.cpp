#include "host/dxf/codec.h"

namespace host::dxf {

namespace {
bool isPointCode(int code) {
  return (code >= 10 && code <= 18) || (code >= 110 && code <= 112) || code == 210 || (code >= 1010 && code <= 1013);
}

// Typed values of an xrecord from its data tags; points gather their three
// coordinate tags into one value.
GroupValues xrecordValues(const std::vector<Tag>& tags, std::size_t from) {
  GroupValues out;
  for (std::size_t i = from; i < tags.size(); ++i) {
    const Tag& t = tags[i];
    GroupValue v;
    v.code = static_cast<short>(t.code);
    if (isPointCode(t.code)) {
      v.real[0] = tagDouble(t);
      if (i + 1 < tags.size() && tags[i + 1].code == t.code + 10) v.real[1] = tagDouble(tags[++i]);
      if (i + 1 < tags.size() && tags[i + 1].code == t.code + 20) v.real[2] = tagDouble(tags[++i]);
      out.push_back(v);
      continue;
    }
    switch (groupKind(t.code)) {
      case GroupKind::kReal: v.real[0] = tagDouble(t); break;
      case GroupKind::kInt16:
      case GroupKind::kInt32:
      case GroupKind::kInt64:
      case GroupKind::kBool: v.integer = tagInt(t); break;
      default: v.text = std::string(t.value); break;
    }
    out.push_back(std::move(v));
  }
  return out;
}
}  // namespace

AcDbSymbolTableRecord* decodeTableRecord(std::string_view table, const std::vector<Tag>& own, ReadContext& ctx,
                                         PendingNames& names) {
  AcDbSymbolTableRecord* rec = nullptr;
  if (table == "LAYER") {
    auto* layer = new AcDbLayerTableRecord;
    for (const Tag& t : own) {
      switch (t.code) {
        case 62: {
          const long long c = tagInt(t);
          AcCmColor color;
          color.setColorIndex(static_cast<std::uint16_t>(c < 0 ? -c : c));
          layer->setColor(color);
          layer->setIsOff(c < 0);  // a negative colour marks a layer that is off
          break;
        }
        case 70: {
          const long long f = tagInt(t);
          layer->setIsFrozen((f & 1) != 0);
          layer->setIsLocked((f & 4) != 0);
          break;
        }
        case 6: names.linetypeName = std::string(t.value); break;
        case 370: layer->setLineWeight(static_cast<std::int16_t>(tagInt(t))); break;
        case 290: layer->setIsPlottable(tagInt(t) != 0); break;
        default: break;
      }
    }
    rec = layer;
  } else if (table == "LTYPE") {
    auto* lt = new AcDbLinetypeTableRecord;
    std::vector<double> dashes;
    for (const Tag& t : own) {
      if (t.code == 3) lt->setComments(std::string(t.value));
      else if (t.code == 40) lt->setPatternLength(tagDouble(t));
      else if (t.code == 49) dashes.push_back(tagDouble(t));
    }
    lt->setDashes(dashes);
    rec = lt;
  } else if (table == "STYLE") {
    auto* st = new AcDbTextStyleTableRecord;
    for (const Tag& t : own) {
      if (t.code == 3) st->setFileName(std::string(t.value));
      else if (t.code == 4) st->setBigFontFileName(std::string(t.value));
      else if (t.code == 40) st->setTextSize(tagDouble(t));
      else if (t.code == 41) st->setXScale(tagDouble(t));
    }
    rec = st;
  } else if (table == "APPID") {
    rec = new AcDbRegAppTableRecord;
  } else if (table == "BLOCK_RECORD") {
    rec = new AcDbBlockTableRecord;
  } else {
    rec = new AcDbGenericTableRecord;
  }
  (void)ctx;
  for (const Tag& t : own)
    if (t.code == 2) {
      rec->setName(std::string(t.value));
      break;
    }
  for (const Tag& t : own)
    if (t.code == 70) {
      rec->setFlags(static_cast<int>(tagInt(t)));
      break;
    }
  return rec;
}

AcDbObject* decodeObject(std::string_view kind, const std::vector<Tag>& own, ReadContext&, PendingNames& names) {
  if (kind == "DICTIONARY") {
    auto* d = new AcDbDictionary;
    std::string key;
    for (const Tag& t : own) {
      if (t.code == 280) d->setHardOwner(tagInt(t) != 0);
      else if (t.code == 281) d->setMergeStyle(static_cast<int>(tagInt(t)));
      else if (t.code == 3) key = std::string(t.value);
      else if ((t.code == 350 || t.code == 360) && !key.empty()) {
        names.entries.emplace_back(key, AcDbHandle::fromHex(std::string(t.value)));
        key.clear();
      }
    }
    return d;
  }
  if (kind == "XRECORD") {
    auto* x = new AcDbXrecord;
    std::size_t i = 0;
    while (i < own.size() && !(own[i].code == 100 && own[i].value == "AcDbXrecord")) ++i;
    i = i < own.size() ? i + 1 : 0;  // R12-style files have no marker: all tags are data
    if (i < own.size() && own[i].code == 280) x->setCloningFlags(static_cast<int>(tagInt(own[i++])));
    x->setValues(xrecordValues(own, i));
    return x;
  }
  if (kind == "GROUP") {
    auto* g = new AcDbGroup;
    for (const Tag& t : own) {
      if (t.code == 300) g->setDescription(std::string(t.value));
      else if (t.code == 70) g->setAnonymous(tagInt(t) != 0);
      else if (t.code == 71) g->setSelectable(tagInt(t) != 0);
      else if (t.code == 340) names.members.push_back(AcDbHandle::fromHex(std::string(t.value)));
    }
    return g;
  }
  return nullptr;
}

}  // namespace host::dxf
