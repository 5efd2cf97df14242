#pragma once
// The pairs of original and clone ids that a deep clone produces.
#include <vector>

#include "host/db/object_id.h"

class AcDbIdPair {
 public:
  AcDbIdPair() = default;
  AcDbIdPair(AcDbObjectId key, AcDbObjectId value, bool isCloned, bool isPrimary = false)
      : m_key(key), m_value(value), m_cloned(isCloned), m_primary(isPrimary) {}
  AcDbObjectId key() const { return m_key; }
  AcDbObjectId value() const { return m_value; }
  bool isCloned() const { return m_cloned; }
  // Primary pairs are the objects asked for; owned objects cloned along with
  // them (attributes, extension dictionaries) are not primary.
  bool isPrimary() const { return m_primary; }

 private:
  AcDbObjectId m_key, m_value;
  bool m_cloned = false, m_primary = false;
};

class AcDbIdMapping {
 public:
  void assign(const AcDbIdPair& pair);
  bool compute(AcDbIdPair& pair) const;  // looks up pair.key()
  const std::vector<AcDbIdPair>& pairs() const { return m_pairs; }

 private:
  std::vector<AcDbIdPair> m_pairs;
};

// Walks a mapping's pairs in the order they were made.
class AcDbIdMappingIter {
 public:
  explicit AcDbIdMappingIter(const AcDbIdMapping& mapping) : m_mapping(mapping) {}
  void start() { m_index = 0; }
  bool done() const { return m_index >= m_mapping.pairs().size(); }
  bool next() {
    ++m_index;
    return !done();
  }
  bool getMap(AcDbIdPair& pair) const {
    if (done()) return false;
    pair = m_mapping.pairs()[m_index];
    return true;
  }

 private:
  const AcDbIdMapping& m_mapping;
  std::size_t m_index = 0;
};
