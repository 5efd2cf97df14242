#include "host/db/block_extents.h"

#include <cmath>
#include <limits>
#include <unordered_set>

#include "host/db/block_reference.h"
#include "host/db/other_entities.h"
#include "host/db/peek.h"
#include "host/db/symbol_tables.h"

namespace host {
namespace {

constexpr std::uint64_t kSaturated = std::numeric_limits<std::uint64_t>::max();

std::uint64_t saturatingMul(std::uint64_t a, std::uint64_t b) {
  if (a != 0 && b > kSaturated / a) return kSaturated;
  return a * b;
}
std::uint64_t saturatingAdd(std::uint64_t a, std::uint64_t b) { return b > kSaturated - a ? kSaturated : a + b; }

std::uint64_t copiesOf(const AcDbBlockReference& ref) {
  const auto* array = AcDbMInsertBlock::cast(&ref);
  return array ? std::uint64_t(std::max(array->columns(), 1)) * std::uint64_t(std::max(array->rows(), 1)) : 1;
}

// The block a live entity of a block inserts, or null.
AcDbObjectId insertedBlock(AcDbObjectId entity) {
  // Entities the reader defers are never references: leave them unbuilt.
  const AcDbDatabase* db = entity.database();
  const AcDbDatabase::Slot* slot = db ? db->slot(entity) : nullptr;
  if (!slot || slot->erased || slot->deferred) return AcDbObjectId();
  const auto* ref = AcDbBlockReference::cast(slot->object);
  if (!ref || !peek<AcDbBlockTableRecord>(ref->blockTableRecord())) return AcDbObjectId();
  return ref->blockTableRecord();
}

// Visits the blocks reachable from root through references, children
// before parents, each block for which done() is false once, with an
// explicit stack. On a cycle it stops and gives the cycle's blocks.
template <class Done, class Finish>
bool postOrder(AcDbObjectId root, const Done& done, const Finish& finish, std::vector<AcDbObjectId>& cycle) {
  if (done(root)) return true;
  struct Frame {
    AcDbObjectId block;
    int next = 0;
  };
  std::vector<Frame> stack{{root, 0}};
  std::unordered_set<AcDbObjectId> onStack{root};
  while (!stack.empty()) {
    const AcDbObjectId block = stack.back().block;
    const auto* rec = peek<AcDbBlockTableRecord>(block);
    const int n = rec ? rec->entityIds().length() : 0;
    AcDbObjectId child;
    while (child.isNull() && stack.back().next < n) {
      const AcDbObjectId c = insertedBlock(rec->entityIds()[stack.back().next++]);
      if (c.isNull() || done(c)) continue;
      if (onStack.count(c)) {
        std::size_t i = stack.size();
        while (i > 0 && stack[i - 1].block != c) --i;
        for (std::size_t k = i - 1; k < stack.size(); ++k) cycle.push_back(stack[k].block);
        cycle.push_back(c);
        return false;
      }
      child = c;
    }
    if (!child.isNull()) {
      stack.push_back({child, 0});
      onStack.insert(child);
      continue;
    }
    finish(block);
    onStack.erase(block);
    stack.pop_back();
  }
  return true;
}

// No column of the linear part mixes axes: a box maps onto a box exactly.
bool axisAligned(const AcGeMatrix3d& m) {
  for (int c = 0; c < 3; ++c) {
    int big = 0;
    const double norm = std::fabs(m.entry[0][c]) + std::fabs(m.entry[1][c]) + std::fabs(m.entry[2][c]);
    for (int r = 0; r < 3; ++r) big += std::fabs(m.entry[r][c]) > 1e-12 * norm;
    if (big > 1) return false;
  }
  return true;
}

// The copies whose boxes hold the whole reference: the single one, or the
// four corner copies of an array (the others lie between them).
AcArray<AcGeMatrix3d> outerCopies(const AcDbBlockReference& ref) {
  AcArray<AcGeMatrix3d> out;
  const auto* array = AcDbMInsertBlock::cast(&ref);
  if (!array) {
    out.append(ref.blockTransform());
    return out;
  }
  const int cols = std::max(array->columns(), 1), rows = std::max(array->rows(), 1);
  for (int r : {0, rows - 1})
    for (int c : {0, cols - 1}) out.append(array->copyTransform(c, r));
  return out;
}

}  // namespace

std::vector<std::string> findBlockCycle(const AcDbDatabase& db) {
  std::unordered_set<AcDbObjectId> finished;
  const auto* table = peek<AcDbBlockTable>(db.blockTableId());
  if (!table) return {};
  for (AcDbObjectId id : table->recordIds()) {
    std::vector<AcDbObjectId> cycle;
    if (postOrder(
            id, [&](AcDbObjectId b) { return finished.count(b) > 0; },
            [&](AcDbObjectId b) { finished.insert(b); }, cycle))
      continue;
    std::vector<std::string> names;
    for (AcDbObjectId b : cycle) {
      const auto* rec = peek<AcDbBlockTableRecord>(b);
      names.push_back(rec ? std::string(rec->getName()) : b.handle().toHex());
    }
    return names;
  }
  return {};
}

std::string describeCycle(const std::vector<std::string>& cycle) {
  std::string out;
  for (const std::string& name : cycle) out += (out.empty() ? "" : " -> ") + name;
  return out;
}

Acad::ErrorStatus BlockExtents::resolve(AcDbObjectId root) {
  std::vector<AcDbObjectId> cycle;
  const bool ok = postOrder(
      root, [&](AcDbObjectId b) { return m_blocks.count(b) > 0; },
      [&](AcDbObjectId b) {
        Block block;
        const auto* rec = peek<AcDbBlockTableRecord>(b);
        if (rec) {
          for (AcDbObjectId id : rec->entityIds()) {
            if (id.isErased()) continue;
            const auto* ent = peek<AcDbEntity>(id);
            if (!ent) continue;
            const auto* ref = AcDbBlockReference::cast(ent);
            const auto child = ref ? m_blocks.find(ref->blockTableRecord()) : m_blocks.end();
            if (ref && child == m_blocks.end()) continue;  // a reference to no block
            if (ref) {
              block.count = saturatingAdd(block.count, saturatingMul(copiesOf(*ref), child->second.count));
              for (const AcGeMatrix3d& m : outerCopies(*ref)) {
                AcDbExtents e = child->second.box;
                e.transformBy(m);
                if (e.isValid()) block.box.addExt(e);
              }
            } else {
              block.count = saturatingAdd(block.count, 1);
              AcDbExtents e;
              if (ent->getGeomExtents(e) == Acad::eOk) block.box.addExt(e);
            }
          }
        }
        m_blocks.emplace(b, block);
      },
      cycle);
  return ok ? Acad::eOk : Acad::eSelfReference;
}

Acad::ErrorStatus BlockExtents::blockBox(AcDbObjectId block, AcDbExtents& box) {
  if (const auto es = resolve(block); es != Acad::eOk) return es;
  box = m_blocks.at(block).box;
  return box.isValid() ? Acad::eOk : Acad::eInvalidExtents;
}

Acad::ErrorStatus BlockExtents::explodedCount(const AcDbBlockReference& ref, std::uint64_t& count) {
  count = 0;
  if (!peek<AcDbBlockTableRecord>(ref.blockTableRecord())) return Acad::eInvalidInput;
  if (const auto es = resolve(ref.blockTableRecord()); es != Acad::eOk) return es;
  count = saturatingMul(copiesOf(ref), m_blocks.at(ref.blockTableRecord()).count);
  return Acad::eOk;
}

Acad::ErrorStatus BlockExtents::entityExtents(const AcDbEntity& entity, AcDbExtents& extents) {
  const auto* ref = AcDbBlockReference::cast(&entity);
  if (!ref) return entity.getGeomExtents(extents);
  extents = AcDbExtents();
  const auto* block = peek<AcDbBlockTableRecord>(ref->blockTableRecord());
  if (block) {
    if (const auto es = resolve(ref->blockTableRecord()); es != Acad::eOk) return es;
    for (const AcGeMatrix3d& m : outerCopies(*ref)) {
      if (axisAligned(m)) {
        AcDbExtents e = m_blocks.at(ref->blockTableRecord()).box;
        e.transformBy(m);
        if (e.isValid()) extents.addExt(e);
        continue;
      }
      // Turned off the axes: the block's own entities exactly, nested
      // references by their blocks' boxes.
      for (AcDbObjectId id : block->entityIds()) {
        const auto* ent = id.isErased() ? nullptr : peek<AcDbEntity>(id);
        if (!ent) continue;
        AcDbExtents e;
        if (const auto* nested = AcDbBlockReference::cast(ent)) {
          const auto child = m_blocks.find(nested->blockTableRecord());
          if (child == m_blocks.end()) continue;
          for (const AcGeMatrix3d& n : outerCopies(*nested)) {
            AcDbExtents b = child->second.box;
            b.transformBy(m * n);
            if (b.isValid()) extents.addExt(b);
          }
          continue;
        }
        AcDbEntity* copy = nullptr;
        if (ent->getTransformedCopy(m, copy) == Acad::eOk) {
          if (copy->getGeomExtents(e) == Acad::eOk) extents.addExt(e);
          delete copy;
        } else if (ent->getGeomExtents(e) == Acad::eOk) {
          e.transformBy(m);
          extents.addExt(e);
        }
      }
    }
  }
  for (const AcDbObjectId id : ref->attributeIds()) {
    const auto* att = id.isErased() ? nullptr : peek<AcDbAttribute>(id);
    AcDbExtents e;
    if (att && !att->isInvisible() && att->getGeomExtents(e) == Acad::eOk) extents.addExt(e);
  }
  return extents.isValid() ? Acad::eOk : Acad::eInvalidExtents;
}

}  // namespace host
