#pragma once
// Spatial indices that find the candidates of a record for the engine's
// pairwise stages. They only narrow the search: every stage still applies its
// own test to the candidates, in the order it scans records, so an index may
// report more candidates than needed but never fewer. All storage is flat
// (no allocation per record).
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "engine/line_info.h"

namespace engine {

// An axis-aligned 2D box.
struct Box2 {
  double minX, minY, maxX, maxY;
};

// The box of a record's two points, grown by pad on every side.
Box2 BoxOf(const CLineInfo& line, double pad);

// Maps a coordinate onto cells of a uniform grid. Monotone in the
// coordinate, so two intervals that overlap share a cell.
struct GridAxis {
  double origin = 0, invSize = 1;
  int count = 1;
  int Cell(double v) const {
    const double c = std::floor((v - origin) * invSize);
    if (!(c >= 0)) return 0;  // NaN too
    if (c >= count - 1) return count - 1;
    return static_cast<int>(c);
  }
};

// Boxes in a uniform 2D grid: every box is listed in each cell it covers.
class BoxGrid {
 public:
  // Indexes boxes[i] under the number i.
  void Build(const std::vector<Box2>& boxes);
  // The numbers of the boxes that may overlap q (each once, ascending),
  // into out (cleared first).
  void Candidates(const Box2& q, std::vector<std::uint32_t>& out) const;
  // The same, keeping only the boxes for which keep(i) holds.
  template <class Keep>
  void Candidates(const Box2& q, std::vector<std::uint32_t>& out, Keep&& keep) const {
    Gather(q, out);
    std::erase_if(out, [&](std::uint32_t i) { return !keep(i); });
    std::sort(out.begin(), out.end());
  }
  // Lists box i in the cells of b as well (for a box that has grown).
  void Add(std::uint32_t i, const Box2& b);

 private:
  void CellRange(const Box2& b, int& x0, int& y0, int& x1, int& y1) const;
  void Gather(const Box2& q, std::vector<std::uint32_t>& out) const;  // unsorted
  GridAxis m_x, m_y;
  std::vector<std::uint32_t> m_start;    // cell c lists m_items[m_start[c] .. m_start[c + 1])
  std::vector<std::uint32_t> m_items;
  // Boxes added after building: per cell a chain through m_extra.
  std::vector<std::int32_t> m_extraHead;
  std::vector<std::pair<std::int32_t, std::uint32_t>> m_extra;  // (next, box)
  mutable std::vector<std::uint32_t> m_stamp;
  mutable std::uint32_t m_query = 0;
};

// Points within a tolerance of each other: a hash of cells at least as wide
// as the tolerance, so that a point's equal points lie in its 3×3 cells.
class PointGrid {
 public:
  explicit PointGrid(double tol);
  void Reserve(std::size_t n);
  // Remembers p under the number i.
  void Add(const AcGePoint3d& p, std::uint32_t i);
  // Calls f(i) for every remembered point that may lie within the tolerance
  // of p, in no particular order; stops when f returns true.
  template <class F>
  bool Any(const AcGePoint3d& p, F&& f) const;

 private:
  std::int64_t Key(std::int64_t cx, std::int64_t cy) const { return cx * 0x9E3779B97F4A7C15LL ^ cy; }
  std::int64_t CellOf(double v) const;
  std::uint32_t Bucket(std::int64_t cx, std::int64_t cy) const;
  void Grow();

  double m_size;
  // Open addressing: bucket -> head of a chain of points (m_next), -1 empty.
  std::vector<std::int64_t> m_cx, m_cy;
  std::vector<std::int32_t> m_head;
  std::vector<std::int32_t> m_next;      // per point
  std::vector<std::uint32_t> m_number;   // per point
  std::size_t m_used = 0;
};

template <class F>
bool PointGrid::Any(const AcGePoint3d& p, F&& f) const {
  if (m_head.empty()) return false;
  const std::int64_t cx = CellOf(p.x), cy = CellOf(p.y);
  for (std::int64_t dx = -1; dx <= 1; ++dx)
    for (std::int64_t dy = -1; dy <= 1; ++dy) {
      const std::uint32_t b = Bucket(cx + dx, cy + dy);
      if (m_head[b] < 0) continue;
      for (std::int32_t k = m_head[b]; k >= 0; k = m_next[k])
        if (f(m_number[k])) return true;
    }
  return false;
}

}  // namespace engine

namespace engine {

// Intervals along one axis, each with a key; a query at v visits the
// intervals whose cells hold v, in ascending key order, so that a caller
// can stop once the keys pass a bound.
class KeyedIntervals {
 public:
  // Interval i is [lo[i], hi[i]] with key[i].
  void Build(const std::vector<double>& lo, const std::vector<double>& hi, const std::vector<double>& key);
  // Calls f(i, key) for the intervals that may hold v, by ascending key
  // (ties by number); stops when f returns false.
  template <class F>
  void Visit(double v, F&& f) const {
    if (m_start.empty()) return;
    const int c = m_axis.Cell(v);
    for (std::uint32_t k = m_start[c]; k < m_start[c + 1]; ++k)
      if (!f(m_entries[k].number, m_entries[k].key)) return;
  }

 private:
  struct Entry {
    double key;
    std::uint32_t number;
  };
  GridAxis m_axis;
  std::vector<std::uint32_t> m_start;
  std::vector<Entry> m_entries;
};

// Removes the records marked in gone, keeping the order of the others.
void EraseMarked(std::vector<CLineInfo>& lines, const std::vector<char>& gone);

}  // namespace engine
