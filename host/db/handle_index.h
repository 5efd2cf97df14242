#pragma once
// Handle to slot index, as one open-addressed table: a drawing read from a
// file adds hundreds of thousands of handles, and a node per handle (as a
// node-based map makes) costs an allocation and a cache miss each.
#include <cstdint>
#include <vector>

class HandleIndex {
 public:
  static constexpr std::uint32_t kNone = 0xffffffffu;

  // Makes room for count handles without growing.
  void reserve(std::size_t count) {
    std::size_t capacity = 16;
    while (capacity < count + count / 2) capacity *= 2;  // load at most 2/3
    if (capacity > m_entries.size()) rehash(capacity);
  }
  // Adds a handle (never 0); a handle already present keeps its index.
  void insert(std::uint64_t handle, std::uint32_t index) {
    if ((m_count + 1) * 3 > m_entries.size() * 2) rehash(m_entries.empty() ? 16 : m_entries.size() * 2);
    Entry& e = probe(handle);
    if (e.handle == handle) return;
    e = {handle, index};
    ++m_count;
  }
  std::uint32_t find(std::uint64_t handle) const {
    if (m_entries.empty() || handle == 0) return kNone;
    const Entry& e = const_cast<HandleIndex*>(this)->probe(handle);
    return e.handle == handle ? e.index : kNone;
  }
  bool contains(std::uint64_t handle) const { return find(handle) != kNone; }

 private:
  struct Entry {
    std::uint64_t handle = 0;  // 0: empty
    std::uint32_t index = 0;
  };
  // Handles are mostly handed out in sequence: keeping them in sequence in
  // the table makes neighbours share cache lines.
  static std::size_t hash(std::uint64_t h) { return static_cast<std::size_t>(h ^ (h >> 32)); }
  // The entry holding handle, or the empty one where it belongs.
  Entry& probe(std::uint64_t handle) {
    const std::size_t mask = m_entries.size() - 1;
    for (std::size_t i = hash(handle) & mask;; i = (i + 1) & mask)
      if (m_entries[i].handle == handle || m_entries[i].handle == 0) return m_entries[i];
  }
  void rehash(std::size_t capacity) {
    std::vector<Entry> old(capacity);
    old.swap(m_entries);
    for (const Entry& e : old)
      if (e.handle != 0) probe(e.handle) = e;
  }

  std::vector<Entry> m_entries;  // size is a power of two
  std::size_t m_count = 0;
};
