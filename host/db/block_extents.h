#pragma once
// Extents and sizes of blocks, each block worked out once however often it
// is inserted, without recursion on the machine stack: drawings may nest
// blocks tens of thousands deep, insert a block into itself, or fan out
// exponentially (every block inserting the next twice).
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/db/entity.h"

class AcDbBlockReference;

namespace host {

// Entities an explode may produce, all levels counted: more is refused.
constexpr std::uint64_t kMaxExplodedEntities = 2'000'000;

// Names of the blocks on a cycle of references (a block inserting itself,
// directly or through others; model space inserting model space), in
// insertion order starting with the block where the cycle was found; empty
// when there is none.
std::vector<std::string> findBlockCycle(const AcDbDatabase& db);

// "A -> B -> A" for a cycle from findBlockCycle.
std::string describeCycle(const std::vector<std::string>& cycle);

// Boxes of blocks in their own coordinates and entity counts of blocks
// exploded through every level, kept for the life of the object (the
// drawing must not change meanwhile).
class BlockExtents {
 public:
  // Extents of any entity; a block reference's come from its block's box
  // transformed (exact for references without rotation off the axes; a
  // rotated one is exact for the block's own entities and bounds nested
  // references by their transformed boxes). eSelfReference on a cycle.
  Acad::ErrorStatus entityExtents(const AcDbEntity& entity, AcDbExtents& extents);
  // The box of a block's entities in block coordinates.
  Acad::ErrorStatus blockBox(AcDbObjectId block, AcDbExtents& box);
  // Entities the reference gives when exploded through every level (each
  // copy of an array counted), saturating at UINT64_MAX; eSelfReference on
  // a cycle.
  Acad::ErrorStatus explodedCount(const AcDbBlockReference& ref, std::uint64_t& count);

 private:
  struct Block {
    AcDbExtents box;
    std::uint64_t count = 0;
  };
  // Works out every block reachable from block, children first.
  Acad::ErrorStatus resolve(AcDbObjectId block);

  std::unordered_map<AcDbObjectId, Block> m_blocks;
};

}  // namespace host
