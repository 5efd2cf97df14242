#include "host/db/block_reference.h"
#include "host/db/database.h"
#include "host/db/id_mapping.h"
#include "host/db/other_entities.h"
#include "host/db/peek.h"
#include "host/db/symbol_tables.h"

void AcDbIdMapping::assign(const AcDbIdPair& pair) { m_pairs.push_back(pair); }

bool AcDbIdMapping::compute(AcDbIdPair& pair) const {
  for (const auto& p : m_pairs)
    if (p.key() == pair.key()) {
      pair = p;
      return true;
    }
  return false;
}

Acad::ErrorStatus AcDbDatabase::deepCloneObjects(const AcDbObjectIdArray& ids, AcDbObjectId owner,
                                                 AcDbIdMapping& mapping, bool) {
  AcDbBlockTableRecord* block = nullptr;
  if (const auto es = acdbOpenObject(block, owner, AcDb::kForWrite); es != Acad::eOk) return es;
  if (owner.database() != this) {
    block->close();
    return Acad::eWrongDatabase;
  }
  Acad::ErrorStatus result = Acad::eOk;
  for (const AcDbObjectId id : ids) {
    const auto* original = host::peek<AcDbEntity>(id);
    if (!original || id.isErased()) {
      result = original ? Acad::eWasErased : Acad::eNotThatKindOfClass;
      continue;
    }
    auto* clone = static_cast<AcDbEntity*>(original->cloneObject());
    if (!clone) continue;
    AcDbObjectId cloneId;
    if (block->appendAcDbEntity(cloneId, clone) != Acad::eOk) {
      delete clone;
      continue;
    }
    mapping.assign(AcDbIdPair(id, cloneId, true, true));
    // Attributes belong to their reference and are cloned with it.
    if (auto* ref = AcDbBlockReference::cast(clone)) {
      AcDbObjectIdArray attributes;
      for (const AcDbObjectId attId : ref->attributeIds()) {
        const auto* att = host::peek<AcDbAttribute>(attId);
        if (!att || attId.isErased()) continue;
        auto* attClone = static_cast<AcDbAttribute*>(att->cloneObject());
        AcDbObjectId attCloneId;
        addAcDbObject(attCloneId, attClone);
        attClone->setOwnerId(cloneId);
        attClone->close();
        attributes.append(attCloneId);
        mapping.assign(AcDbIdPair(attId, attCloneId, true, false));
      }
      ref->setAttributeIds(attributes);
    }
    clone->close();
  }
  block->close();
  return result;
}
