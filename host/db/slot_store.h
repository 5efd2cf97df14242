#pragma once
// Storage for a database's object slots: fixed-size chunks, so slots never
// move and an index finds its slot with a shift and a mask.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace host {

template <class T>
class ChunkedStore {
 public:
  static constexpr std::size_t kShift = 12, kChunk = std::size_t{1} << kShift, kMask = kChunk - 1;

  std::size_t size() const { return m_size; }
  T& operator[](std::size_t i) { return m_chunks[i >> kShift][i & kMask]; }
  const T& operator[](std::size_t i) const { return m_chunks[i >> kShift][i & kMask]; }
  T& emplace_back() {
    if ((m_size & kMask) == 0) m_chunks.push_back(std::make_unique<T[]>(kChunk));
    return (*this)[m_size++];
  }
  template <class F>
  void forEach(F f) {
    for (std::size_t i = 0; i < m_size; ++i) f((*this)[i]);
  }

 private:
  std::vector<std::unique_ptr<T[]>> m_chunks;
  std::size_t m_size = 0;
};

}  // namespace host
