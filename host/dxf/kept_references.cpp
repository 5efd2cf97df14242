#include "host/dxf/kept_references.h"

#include <algorithm>
#include <cstdlib>

#include "host/db/dictionary.h"
#include "host/dxf/tags.h"

namespace host::dxf {
namespace {

bool isHandleCode(int code) { return (code >= 320 && code <= 369) || (code >= 390 && code <= 399) || code == 480 || code == 481; }

// The object's tags from its first subclass marker to its extended data.
AcDbGenericObject::Tags ownTags(std::string_view source) {
  AcDbGenericObject::Tags tags;
  TagReader r(source);
  Tag t;
  bool first = true, inData = false;
  while (r.next(t)) {
    if (first) {
      first = false;
      continue;  // the "0" tag
    }
    if (t.code == 0 || t.code >= 1000) break;
    if (t.code == 100) inData = true;
    if (inData) tags.emplace_back(t.code, std::string(t.value));
  }
  return tags;
}

// An association network lists its actions after its own marker: a count
// (the third 90) and that many handles. The gone ones leave the list.
void dropFromNetwork(AcDbGenericObject::Tags& tags, const std::set<std::string>& gone) {
  bool inNetwork = false;
  int seen90 = 0;
  std::size_t countAt = 0;
  AcDbGenericObject::Tags out;
  for (auto& tag : tags) {
    if (tag.first == 100) {
      inNetwork = tag.second == "AcDbAssocNetwork";
      seen90 = 0;
    } else if (inNetwork && tag.first == 90 && ++seen90 == 3) {
      countAt = out.size();
    } else if (inNetwork && isHandleCode(tag.first) && gone.count(AcDbHandle::fromHex(tag.second).toHex())) {
      if (countAt) out[countAt].second = std::to_string(std::max(0L, std::atol(out[countAt].second.c_str()) - 1));
      continue;
    }
    out.push_back(std::move(tag));
  }
  tags = std::move(out);
}

}  // namespace

int dropKeptReferences(AcDbDatabase& db, const std::set<std::string>& gone) {
  if (gone.empty()) return 0;
  int changed = 0;
  for (std::uint32_t i = 0; i < db.numObjects(); ++i) {
    const AcDbObjectId id = db.idAt(i);
    if (id.isErased()) continue;
    AcDbObjectPointer<AcDbGenericObject> obj(id, AcDb::kForRead);
    if (!obj) continue;
    AcDbGenericObject::Tags tags = obj->data() ? *obj->data() : ownTags(db.originalSource(id));
    bool names = false;
    for (const auto& [code, value] : tags)
      names = names || (isHandleCode(code) && gone.count(AcDbHandle::fromHex(value).toHex()));
    if (!names) continue;
    if (obj->dxfName() == "ACDBASSOCNETWORK") {
      dropFromNetwork(tags, gone);
    } else {
      for (auto& [code, value] : tags)
        if (isHandleCode(code) && gone.count(AcDbHandle::fromHex(value).toHex())) value.assign(1, '0');  // a null handle
    }
    if (obj.get()->upgradeOpen() == Acad::eOk && obj->setData(std::move(tags)) == Acad::eOk) ++changed;
  }
  return changed;
}

}  // namespace host::dxf
