#include "app/gui/view/layouts.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string>

#include "host/db/dictionary.h"
#include "host/db/symbol_tables.h"
#include "host/dxf/tags.h"

namespace gui {

std::vector<LayoutEntry> DrawingLayouts(const AcDbDatabase* db) {
  std::vector<LayoutEntry> out;
  if (!db) return out;
  out.push_back({"模型", db->modelSpaceId()});
  struct Paper {
    LayoutEntry entry;
    long long order = LLONG_MAX;
  };
  std::vector<Paper> papers;
  {
    AcDbObjectPointer<AcDbBlockTable> table(db->blockTableId(), AcDb::kForRead);
    if (!table) return out;
    for (const AcDbObjectId id : table->recordIds()) {
      AcDbObjectPointer<AcDbBlockTableRecord> record(id, AcDb::kForRead);
      if (record && !record->isErased() && record->isLayout() && id != db->modelSpaceId())
        papers.push_back({{QString::fromStdString(record->getName()), id}});
    }
  }
  AcDbObjectPointer<AcDbDictionary> named(db->namedObjectsDictionaryId(), AcDb::kForRead);
  AcDbObjectId layoutsId;
  if (named && named->getAt("ACAD_LAYOUT", layoutsId) == Acad::eOk) {
    AcDbObjectPointer<AcDbDictionary> layouts(layoutsId, AcDb::kForRead);
    for (const auto& entry : layouts ? layouts->entries() : std::vector<AcDbDictionary::Entry>{}) {
      // Layout objects are kept as the file gave them: read their text.
      long long order = LLONG_MAX;
      AcDbHandle block;
      bool inLayout = false;
      host::dxf::TagReader reader(db->originalSource(entry.id));
      host::dxf::Tag t;
      while (reader.next(t)) {
        if (t.code == 100) inLayout = t.value == "AcDbLayout";
        if (!inLayout) continue;
        if (t.code == 71) order = std::atoll(std::string(t.value).c_str());
        if (t.code == 330) block = AcDbHandle::fromHex(std::string(t.value));
      }
      for (Paper& p : papers)
        if (!block.isNull() && p.entry.block.handle() == block) {
          p.entry.name = QString::fromStdString(entry.key);
          p.order = order;
        }
    }
  }
  std::stable_sort(papers.begin(), papers.end(), [](const Paper& a, const Paper& b) { return a.order < b.order; });
  for (const Paper& p : papers) out.push_back(p.entry);
  return out;
}

}  // namespace gui
