// Entities that the reader leaves as their text and builds on first use.
#include <deque>
#include <optional>

#include "host/dxf/codec.h"
#include "host/dxf/encoding.h"

namespace host::dxf {

bool isDeferrableKind(std::string_view kind) {
  // Fully modelled, held by every version, owning nothing and naming no
  // block: what the reader would build from them depends on their own text
  // and the tables alone.
  static constexpr std::string_view kKinds[] = {"LINE",  "ARC",   "CIRCLE", "LWPOLYLINE", "ELLIPSE",
                                                "SPLINE", "TEXT", "MTEXT",  "POINT",      "SOLID",
                                                "TRACE", "3DFACE", "HATCH", "LEADER"};
  for (std::string_view k : kKinds)
    if (k == kind) return true;
  return false;
}

namespace {

class EntityLoader final : public AcDbObjectLoader {
 public:
  void load(AcDbDatabase& db, AcDbObjectId id) override {
    // The reader checked this text: tags and numbers are well formed.
    TagReader reader(db.originalSource(id));
    std::vector<Tag>& tags = m_tags;
    std::vector<Tag>& own = m_own;
    tags.clear();
    m_decodedValues.clear();
    Tag t;
    while (reader.next(t)) {
      if (hasEscapes(t.value)) {
        m_decodedValues.push_back(decodeEscapes(t.value));
        t.value = m_decodedValues.back();
      }
      tags.push_back(t);
    }
    if (tags.empty()) return;  // no slot is deferred without its text
    const std::string_view kind = tags.front().value;
    CommonFields common;
    splitObject(tags, common, own);
    ReadContext& ctx = context(db);
    PendingNames names;
    AcDbEntity* entity = decodeEntity(kind, own, ctx, names);
    if (!entity) entity = new AcDbGenericEntity(std::string(kind));
    // What the file said is filled in before the entity joins its slot, so
    // that it is no change to the drawing (and asks for no opening). The
    // references it gathers are resolved below, by handle.
    applyCommon(ctx, entity, common);
    db.attachLoaded(id, entity);
    AcDbDatabase::Slot* s = db.slot(id);
    if (!s || s->object != entity) return;
    // Every handle in the file is known by now: resolve references at once.
    auto find = [&](AcDbHandle h) {
      AcDbObjectId target;
      db.getAcDbObjectId(target, false, h);
      return target;
    };
    for (const auto& [unused, h] : ctx.pending.extensionDictionaries) entity->extras().extensionDictionary = find(h);
    for (const auto& [unused, hs] : ctx.pending.reactors)
      for (AcDbHandle h : hs) entity->extras().persistentReactors.append(find(h));
    if (s->owner.isNull())
      for (const auto& [unused, h] : ctx.pending.owners) s->owner = find(h);
  }

 private:
  // One context for every entity of the drawing, so that its look-ups of
  // layers and linetypes by name carry from entity to entity; what it
  // gathers for one entity is cleared before the next.
  ReadContext& context(AcDbDatabase& db) {
    if (!m_context || &m_context->db != &db) m_context.emplace(db, m_quiet);
    m_context->pending.clear();
    m_quiet.warnings.clear();  // what the reader had to say, it said while reading
    return *m_context;
  }
  std::vector<Tag> m_tags, m_own;  // reused from entity to entity
  std::deque<std::string> m_decodedValues;  // stable storage for decoded values
  Diagnostics m_quiet;
  std::optional<ReadContext> m_context;
};

}  // namespace

std::unique_ptr<AcDbObjectLoader> makeEntityLoader() { return std::make_unique<EntityLoader>(); }

}  // namespace host::dxf
