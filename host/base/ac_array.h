#pragma once
// AcArray: the host's growable array. A thin layer over std::vector with the
// host's index-based interface (append, removeAt, find, ...).
#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <vector>

template <typename T>
class AcArray {
 public:
  AcArray() = default;
  explicit AcArray(int physicalLength, int growLength = 8) : m_grow(growLength) {
    m_items.reserve(static_cast<std::size_t>(std::max(physicalLength, 0)));
  }
  AcArray(std::initializer_list<T> items) : m_items(items) {}

  int length() const { return static_cast<int>(m_items.size()); }
  int logicalLength() const { return length(); }
  bool isEmpty() const { return m_items.empty(); }
  int growLength() const { return m_grow; }
  void setGrowLength(int n) { m_grow = n; }
  void setLogicalLength(int n) { m_items.resize(static_cast<std::size_t>(std::max(n, 0))); }
  void setPhysicalLength(int n) { m_items.reserve(static_cast<std::size_t>(std::max(n, 0))); }

  T& operator[](int i) { return m_items[static_cast<std::size_t>(i)]; }
  const T& operator[](int i) const { return m_items[static_cast<std::size_t>(i)]; }
  T& at(int i) { return m_items.at(static_cast<std::size_t>(i)); }
  const T& at(int i) const { return m_items.at(static_cast<std::size_t>(i)); }
  T& first() { return m_items.front(); }
  const T& first() const { return m_items.front(); }
  T& last() { return m_items.back(); }
  const T& last() const { return m_items.back(); }

  int append(const T& value) {
    m_items.push_back(value);
    return length() - 1;
  }
  AcArray& append(const AcArray& other) {
    m_items.insert(m_items.end(), other.m_items.begin(), other.m_items.end());
    return *this;
  }
  AcArray& insertAt(int index, const T& value) {
    m_items.insert(m_items.begin() + index, value);
    return *this;
  }
  AcArray& removeAt(int index) {
    m_items.erase(m_items.begin() + index);
    return *this;
  }
  AcArray& removeFirst() { return removeAt(0); }
  AcArray& removeLast() {
    m_items.pop_back();
    return *this;
  }
  // Removes the first element equal to value; true when one was found.
  bool remove(const T& value, int start = 0) {
    int i = -1;
    if (!find(value, i, start)) return false;
    removeAt(i);
    return true;
  }
  AcArray& removeAll() {
    m_items.clear();
    return *this;
  }
  bool contains(const T& value, int start = 0) const {
    int i = -1;
    return find(value, i, start);
  }
  bool find(const T& value, int& index, int start = 0) const {
    for (int i = std::max(start, 0); i < length(); ++i) {
      if (m_items[static_cast<std::size_t>(i)] == value) {
        index = i;
        return true;
      }
    }
    return false;
  }
  int findFrom(const T& value, int start) const {
    int i = -1;
    return find(value, i, start) ? i : -1;
  }
  AcArray& reverse() {
    std::reverse(m_items.begin(), m_items.end());
    return *this;
  }

  auto begin() { return m_items.begin(); }
  auto end() { return m_items.end(); }
  auto begin() const { return m_items.begin(); }
  auto end() const { return m_items.end(); }
  const T* asArrayPtr() const { return m_items.data(); }
  std::vector<T>& items() { return m_items; }
  const std::vector<T>& items() const { return m_items; }

  bool operator==(const AcArray& other) const { return m_items == other.m_items; }

 private:
  std::vector<T> m_items;
  int m_grow = 8;
};
