#include "host/db/operations.h"

#include "host/db/peek.h"

namespace host {

namespace {
bool finitePoint(const AcGePoint3d& p) { return isFinite(p); }

// A write opening for the host's own edits whose effect is known in
// advance (appending to a block, erasing): the same checks as
// acdbOpenAcDbObject, but the object's state is not remembered for the
// unchanged-on-close test, which the caller settles itself. Closes on
// leaving the scope.
class KnownEdit {
 public:
  Acad::ErrorStatus open(AcDbObjectId id, const AcRxClass* cls = nullptr) {
    if (id.isNull()) return Acad::eNullObjectId;
    AcDbDatabase* db = id.database();
    AcDbDatabase::Slot* s = db ? db->slot(id) : nullptr;
    if (!s) return Acad::eWrongDatabase;
    if (!db->objectAt(id)) return Acad::eNullObjectPointer;
    if (s->erased) return Acad::eWasErased;
    if (cls && !s->object->isKindOf(cls)) return Acad::eNotThatKindOfClass;
    if (s->writer) return Acad::eWasOpenForWrite;
    if (s->readers > 0) return Acad::eWasOpenForRead;
    s->writer = true;
    m_db = db;
    m_slot = s;
    return Acad::eOk;
  }
  AcDbObject* object() const { return m_slot->object; }
  // Ends the opening; a changed object is marked and its change told.
  void close(bool changed) {
    if (!m_slot) return;
    m_slot->writer = false;
    if (changed) {
      m_slot->modified = true;
      m_db->notifyModified(m_slot->object);
    }
    m_slot = nullptr;
  }
  ~KnownEdit() { close(false); }

 private:
  AcDbDatabase* m_db = nullptr;
  AcDbDatabase::Slot* m_slot = nullptr;
};
}  // namespace

bool hasFiniteGeometry(const AcDbEntity* e) {
  if (const auto* l = AcDbLine::cast(e)) return finitePoint(l->startPoint()) && finitePoint(l->endPoint());
  if (const auto* a = AcDbArc::cast(e))
    return finitePoint(a->center()) && std::isfinite(a->radius()) && std::isfinite(a->startAngle()) &&
           std::isfinite(a->endAngle());
  if (const auto* c = AcDbCircle::cast(e)) return finitePoint(c->center()) && std::isfinite(c->radius());
  if (const auto* el = AcDbEllipse::cast(e))
    return finitePoint(el->center()) && isFinite(el->majorAxis()) && std::isfinite(el->radiusRatio());
  if (const auto* s = AcDbSpline::cast(e)) {
    for (const auto& p : s->controlPoints())
      if (!finitePoint(p)) return false;
    for (const auto& p : s->fitPoints())
      if (!finitePoint(p)) return false;
    return true;
  }
  if (const auto* p = AcDbPolyline::cast(e)) {
    for (const auto& v : p->vertices())
      if (!std::isfinite(v.point.x) || !std::isfinite(v.point.y) || !std::isfinite(v.bulge)) return false;
    return std::isfinite(p->elevation());
  }
  if (const auto* r = AcDbBlockReference::cast(e)) return finitePoint(r->position()) && std::isfinite(r->rotation());
  if (const auto* t = AcDbText::cast(e)) return finitePoint(t->position());
  if (const auto* pt = AcDbPoint::cast(e)) return finitePoint(pt->position());
  return true;
}

Acad::ErrorStatus presentInWorld(AcDbEntity* entity) {
  if (!entity) return Acad::eNullObjectPointer;
  AcGeVector3d n = AcGeVector3d::kZAxis;
  if (const auto* a = AcDbArc::cast(entity)) n = a->normal();
  else if (const auto* c = AcDbCircle::cast(entity)) n = c->normal();
  else if (const auto* e = AcDbEllipse::cast(entity)) n = e->normal();
  else if (const auto* p = AcDbPolyline::cast(entity)) n = p->normal();
  else if (const auto* p2 = AcDb2dPolyline::cast(entity)) n = p2->normal();
  else if (const auto* h = AcDbHatch::cast(entity)) n = h->normal();
  else return Acad::eOk;
  const bool minusZ = n.z < 0 && std::fabs(n.x) < 1e-12 && std::fabs(n.y) < 1e-12;
  return minusZ ? entity->transformBy(AcGeMatrix3d::kIdentity) : Acad::eOk;
}

Acad::ErrorStatus appendEntity(AcDbDatabase* db, AcDbEntity* entity, AcDbObjectId& id, AcDbObjectId blockId) {
  id = AcDbObjectId::kNull;
  if (!entity) return Acad::eNullObjectPointer;
  if (!db || !hasFiniteGeometry(entity)) {
    delete entity;
    return db ? Acad::eInvalidInput : Acad::eNoDatabase;
  }
  // The block's list of entities grows by one: a change of the block.
  KnownEdit edit;
  const Acad::ErrorStatus es =
      edit.open(blockId.isNull() ? db->modelSpaceId() : blockId, AcDbBlockTableRecord::desc());
  if (es != Acad::eOk) {
    delete entity;
    return es;
  }
  const Acad::ErrorStatus added = static_cast<AcDbBlockTableRecord*>(edit.object())->appendAcDbEntity(id, entity);
  if (added == Acad::eOk) entity->close();
  else delete entity;
  edit.close(added == Acad::eOk);
  return added;
}

Acad::ErrorStatus eraseObject(AcDbObjectId id) {
  if (id.isNull()) return Acad::eOk;
  if (id.isErased()) return Acad::eOk;
  // Erasing tells the reactors itself and changes nothing else: the
  // opening closes as unchanged.
  KnownEdit edit;
  if (const auto es = edit.open(id); es != Acad::eOk) return es;
  if (auto* group = AcDbGroup::cast(edit.object())) {
    AcDbObjectIdArray members;
    group->allEntityIds(members);
    edit.close(false);
    for (const AcDbObjectId member : members) eraseObject(member);
    return Acad::eOk;
  }
  const Acad::ErrorStatus es = edit.object()->erase();
  edit.close(false);
  return es;
}

Acad::ErrorStatus editObject(AcDbObjectId id, const AcRxClass* cls, const std::function<bool(AcDbObject*)>& edit) {
  KnownEdit opening;
  if (const auto es = opening.open(id, cls); es != Acad::eOk) return es;
  opening.close(edit(opening.object()));
  return Acad::eOk;
}

Acad::ErrorStatus explodeEntity(AcDbObjectId id, AcDbObjectIdArray& pieces, bool eraseOriginal) {
  AcDbEntity* ent = nullptr;
  if (const auto es = acdbOpenObject(ent, id, AcDb::kForRead); es != Acad::eOk) return es;
  AcDbEntityArray parts;
  const Acad::ErrorStatus es = ent->explode(parts);
  const AcDbObjectId owner = ent->blockId();
  AcDbDatabase* db = ent->database();
  ent->close();
  if (es != Acad::eOk) {
    for (AcDbEntity* p : parts) delete p;
    return es;
  }
  for (AcDbEntity* part : parts) {
    AcDbObjectId pieceId;
    if (appendEntity(db, part, pieceId, owner) == Acad::eOk) pieces.append(pieceId);
  }
  if (eraseOriginal) return eraseObject(id);
  return Acad::eOk;
}

Acad::ErrorStatus findLayer(AcDbDatabase* db, const CString& name, AcDbObjectId& id, bool create) {
  id = AcDbObjectId::kNull;
  if (!db) return Acad::eNoDatabase;
  const auto* table = peek<AcDbLayerTable>(db->layerTableId());
  if (!table) return Acad::eKeyNotFound;
  if (table->getAt(name, id) == Acad::eOk) return Acad::eOk;
  if (!create) return Acad::eKeyNotFound;
  AcDbLayerTable* writable = nullptr;
  if (const auto es = db->getLayerTable(writable, AcDb::kForWrite); es != Acad::eOk) return es;
  auto* record = new AcDbLayerTableRecord;
  record->setName(name);
  record->setLinetypeObjectId(db->continuousLinetype());
  const Acad::ErrorStatus es = writable->add(id, record);
  if (es == Acad::eOk) record->close();
  else delete record;
  writable->close();
  return es;
}

AcDbObjectIdArray allEntities(const AcDbDatabase* db) {
  AcDbObjectIdArray ids;
  const auto* ms = db ? peek<AcDbBlockTableRecord>(db->modelSpaceId()) : nullptr;
  if (!ms) return ids;
  for (const AcDbObjectId id : ms->entityIds())
    if (!id.isErased()) ids.append(id);
  return ids;
}

AcDbObjectIdArray entitiesOnLayer(const AcDbDatabase* db, const CString& layer) {
  AcDbObjectIdArray ids;
  for (const AcDbObjectId id : allEntities(db)) {
    const auto* ent = peek<AcDbEntity>(id);
    if (ent && equalsNoCase(ent->layer(), layer)) ids.append(id);
  }
  return ids;
}

AcDbObjectIdArray selectByBox(const AcDbDatabase* db, const AcGePoint3d& c1, const AcGePoint3d& c2,
                              SelectMode mode) {
  const AcGePoint3d lo(std::min(c1.x, c2.x), std::min(c1.y, c2.y), 0), hi(std::max(c1.x, c2.x), std::max(c1.y, c2.y), 0);
  AcDbObjectIdArray ids;
  for (const AcDbObjectId id : allEntities(db)) {
    const auto* ent = peek<AcDbEntity>(id);
    AcDbExtents e;
    if (!ent || ent->getGeomExtents(e) != Acad::eOk) continue;
    if (boxSelects(e, lo, hi, mode)) ids.append(id);
  }
  return ids;
}

}  // namespace host
