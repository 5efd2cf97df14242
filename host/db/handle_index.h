#pragma once
// Handle to slot index, as one open-addressed table: a drawing read from a
// file adds hundreds of thousands of handles, and a node per handle (as a
// node-based map makes) costs an allocation and a cache miss each. Handles
// handed out from the handle seed to objects made one after another (a
// million line pieces of an outline run) are kept as runs beside it.
#include <algorithm>
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
    if (inRuns(handle) != kNone) return;
    if ((m_count + 1) * 3 > m_entries.size() * 2) rehash(m_entries.empty() ? 16 : m_entries.size() * 2);
    Entry& e = probe(handle);
    if (e.handle == handle) return;
    e = {handle, index};
    ++m_count;
  }
  // Adds a handle handed out from the handle seed: not present, and greater
  // than every handle added this way before. A handle and slot index that
  // continue the last such one extend its run instead of taking an entry:
  // the objects a program creates in a row cost nothing here.
  void insertFresh(std::uint64_t handle, std::uint32_t index) {
    if (!m_runs.empty()) {
      Run& r = m_runs.back();
      if (handle == r.first + r.count && index == r.index + r.count) {
        ++r.count;
        return;
      }
    }
    m_runs.push_back({handle, index, 1});
  }
  std::uint32_t find(std::uint64_t handle) const {
    if (handle == 0) return kNone;
    if (!m_entries.empty()) {
      const Entry& e = const_cast<HandleIndex*>(this)->probe(handle);
      if (e.handle == handle) return e.index;
    }
    return inRuns(handle);
  }
  bool contains(std::uint64_t handle) const { return find(handle) != kNone; }

 private:
  // The slot of a handle kept in a run, or kNone. The runs are by ascending
  // first handle: the one to look in is the last that starts at or below.
  std::uint32_t inRuns(std::uint64_t handle) const {
    auto it = std::upper_bound(m_runs.begin(), m_runs.end(), handle,
                               [](std::uint64_t h, const Run& r) { return h < r.first; });
    if (it == m_runs.begin()) return kNone;
    --it;
    return handle - it->first < it->count ? it->index + static_cast<std::uint32_t>(handle - it->first) : kNone;
  }
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

  // Handles first .. first + count - 1 at slots index .. index + count - 1.
  struct Run {
    std::uint64_t first;
    std::uint32_t index, count;
  };

  std::vector<Entry> m_entries;  // size is a power of two
  std::size_t m_count = 0;
  std::vector<Run> m_runs;  // by ascending first handle, apart
};
