#include "engine/spatial_index.h"

#include <algorithm>
#include <cmath>

namespace engine {

namespace {

// An axis of about cells cells over [lo, hi].
GridAxis MakeAxis(double lo, double hi, double cells) {
  GridAxis a;
  a.origin = lo;
  const double span = hi - lo;
  a.count = static_cast<int>(std::clamp(cells, 1.0, double(1 << 22)));
  a.invSize = span > 0 ? a.count / span : 1;
  if (!std::isfinite(a.invSize) || a.invSize <= 0) a.invSize = 1;
  return a;
}

}  // namespace

Box2 BoxOf(const CLineInfo& line, double pad) {
  const AcGePoint3d& a = line.m_ptStart;
  const AcGePoint3d& b = line.m_ptEnd;
  return {std::min(a.x, b.x) - pad, std::min(a.y, b.y) - pad, std::max(a.x, b.x) + pad, std::max(a.y, b.y) + pad};
}

void BoxGrid::CellRange(const Box2& b, int& x0, int& y0, int& x1, int& y1) const {
  x0 = m_x.Cell(b.minX);
  x1 = m_x.Cell(b.maxX);
  y0 = m_y.Cell(b.minY);
  y1 = m_y.Cell(b.maxY);
}

void BoxGrid::Build(const std::vector<Box2>& boxes) {
  const std::size_t n = boxes.size();
  m_extra.clear();
  m_extraHead.clear();
  m_stamp.assign(n, 0);
  m_query = 0;
  double x0 = 1e300, y0 = 1e300, x1 = -1e300, y1 = -1e300, extent = 0;
  for (const Box2& b : boxes) {
    x0 = std::min(x0, b.minX);
    y0 = std::min(y0, b.minY);
    x1 = std::max(x1, b.maxX);
    y1 = std::max(y1, b.maxY);
    extent += (b.maxX - b.minX) + (b.maxY - b.minY);
  }
  if (n == 0) {
    m_x = m_y = GridAxis();
    m_start.assign(2, 0);
    m_items.clear();
    return;
  }
  // Cells about as wide as a typical box, but no more of them than a few
  // per box.
  const double w = x1 - x0, h = y1 - y0;
  double size = std::max(extent / (2.0 * static_cast<double>(n)), 1e-9);
  const double limit = 4.0 * static_cast<double>(n) + 16;
  while ((w / size + 1) * (h / size + 1) > limit) size *= 1.5;
  m_x = MakeAxis(x0, x1, std::ceil(w / size));
  m_y = MakeAxis(y0, y1, std::ceil(h / size));
  const std::size_t cells = static_cast<std::size_t>(m_x.count) * static_cast<std::size_t>(m_y.count);
  m_start.assign(cells + 1, 0);
  int cx0, cy0, cx1, cy1;
  for (const Box2& b : boxes) {
    CellRange(b, cx0, cy0, cx1, cy1);
    for (int y = cy0; y <= cy1; ++y)
      for (int x = cx0; x <= cx1; ++x) ++m_start[static_cast<std::size_t>(y) * m_x.count + x + 1];
  }
  for (std::size_t c = 0; c < cells; ++c) m_start[c + 1] += m_start[c];
  m_items.resize(m_start[cells]);
  std::vector<std::uint32_t> fill(m_start.begin(), m_start.end() - 1);
  for (std::uint32_t i = 0; i < n; ++i) {
    CellRange(boxes[i], cx0, cy0, cx1, cy1);
    for (int y = cy0; y <= cy1; ++y)
      for (int x = cx0; x <= cx1; ++x) m_items[fill[static_cast<std::size_t>(y) * m_x.count + x]++] = i;
  }
}

void BoxGrid::Add(std::uint32_t i, const Box2& b) {
  if (m_extraHead.empty()) m_extraHead.assign(m_start.size() - 1, -1);
  int cx0, cy0, cx1, cy1;
  CellRange(b, cx0, cy0, cx1, cy1);
  for (int y = cy0; y <= cy1; ++y)
    for (int x = cx0; x <= cx1; ++x) {
      std::int32_t& head = m_extraHead[static_cast<std::size_t>(y) * m_x.count + x];
      m_extra.emplace_back(head, i);
      head = static_cast<std::int32_t>(m_extra.size() - 1);
    }
}

void BoxGrid::Candidates(const Box2& q, std::vector<std::uint32_t>& out) const {
  Gather(q, out);
  std::sort(out.begin(), out.end());
}

void BoxGrid::Gather(const Box2& q, std::vector<std::uint32_t>& out) const {
  out.clear();
  if (m_stamp.empty()) return;
  if (++m_query == 0) {
    std::fill(m_stamp.begin(), m_stamp.end(), 0);
    m_query = 1;
  }
  int cx0, cy0, cx1, cy1;
  CellRange(q, cx0, cy0, cx1, cy1);
  for (int y = cy0; y <= cy1; ++y)
    for (int x = cx0; x <= cx1; ++x) {
      const std::size_t c = static_cast<std::size_t>(y) * m_x.count + x;
      for (std::uint32_t k = m_start[c]; k < m_start[c + 1]; ++k) {
        const std::uint32_t i = m_items[k];
        if (m_stamp[i] != m_query) {
          m_stamp[i] = m_query;
          out.push_back(i);
        }
      }
      if (m_extraHead.empty()) continue;
      for (std::int32_t k = m_extraHead[c]; k >= 0; k = m_extra[k].first) {
        const std::uint32_t i = m_extra[k].second;
        if (m_stamp[i] != m_query) {
          m_stamp[i] = m_query;
          out.push_back(i);
        }
      }
    }
}

PointGrid::PointGrid(double tol) : m_size(std::max(4 * tol, 1e-12)) { Reserve(64); }

void PointGrid::Reserve(std::size_t n) {
  std::size_t buckets = 64;
  while (buckets < 2 * n) buckets *= 2;
  if (buckets <= m_head.size()) return;
  std::vector<std::int64_t> cx = std::move(m_cx), cy = std::move(m_cy);
  std::vector<std::int32_t> head = std::move(m_head);
  m_cx.assign(buckets, 0);
  m_cy.assign(buckets, 0);
  m_head.assign(buckets, -1);
  for (std::size_t b = 0; b < head.size(); ++b) {
    if (head[b] < 0) continue;
    const std::uint32_t nb = Bucket(cx[b], cy[b]);
    m_cx[nb] = cx[b];
    m_cy[nb] = cy[b];
    m_head[nb] = head[b];
  }
}

std::int64_t PointGrid::CellOf(double v) const {
  const double c = std::floor(v / m_size);
  return static_cast<std::int64_t>(std::clamp(c, -4e18, 4e18));
}

std::uint32_t PointGrid::Bucket(std::int64_t cx, std::int64_t cy) const {
  const std::size_t mask = m_head.size() - 1;
  std::size_t b = static_cast<std::size_t>(Key(cx, cy) ^ (Key(cx, cy) >> 29)) & mask;
  while (m_head[b] >= 0 && (m_cx[b] != cx || m_cy[b] != cy)) b = (b + 1) & mask;
  return static_cast<std::uint32_t>(b);
}

void PointGrid::Add(const AcGePoint3d& p, std::uint32_t i) {
  if (2 * (m_used + 1) > m_head.size()) Reserve(m_head.size());
  const std::int64_t cx = CellOf(p.x), cy = CellOf(p.y);
  const std::uint32_t b = Bucket(cx, cy);
  if (m_head[b] < 0) {
    m_cx[b] = cx;
    m_cy[b] = cy;
    ++m_used;
  }
  m_next.push_back(m_head[b]);
  m_number.push_back(i);
  m_head[b] = static_cast<std::int32_t>(m_next.size() - 1);
}

void KeyedIntervals::Build(const std::vector<double>& lo, const std::vector<double>& hi,
                           const std::vector<double>& key) {
  const std::size_t n = lo.size();
  m_start.clear();
  m_entries.clear();
  if (n == 0) return;
  double a = 1e300, b = -1e300, extent = 0;
  for (std::size_t i = 0; i < n; ++i) {
    a = std::min(a, lo[i]);
    b = std::max(b, hi[i]);
    extent += hi[i] - lo[i];
  }
  // Cells about as wide as a typical interval, at most two per interval.
  double size = std::max(extent / static_cast<double>(n), 1e-9);
  size = std::max(size, (b - a) / (2.0 * static_cast<double>(n) + 2));
  m_axis = MakeAxis(a, b, std::ceil((b - a) / size));
  const std::size_t cells = static_cast<std::size_t>(m_axis.count);
  m_start.assign(cells + 1, 0);
  for (std::size_t i = 0; i < n; ++i)
    for (int c = m_axis.Cell(lo[i]), e = m_axis.Cell(hi[i]); c <= e; ++c) ++m_start[c + 1];
  for (std::size_t c = 0; c < cells; ++c) m_start[c + 1] += m_start[c];
  m_entries.resize(m_start[cells]);
  std::vector<std::uint32_t> fill(m_start.begin(), m_start.end() - 1);
  for (std::uint32_t i = 0; i < n; ++i)
    for (int c = m_axis.Cell(lo[i]), e = m_axis.Cell(hi[i]); c <= e; ++c) m_entries[fill[c]++] = {key[i], i};
  for (std::size_t c = 0; c < cells; ++c)
    std::sort(m_entries.begin() + m_start[c], m_entries.begin() + m_start[c + 1],
              [](const Entry& x, const Entry& y) { return x.key < y.key || (x.key == y.key && x.number < y.number); });
}

void EraseMarked(std::vector<CLineInfo>& lines, const std::vector<char>& gone) {
  std::size_t out = 0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (gone[i]) continue;
    if (out != i) lines[out] = std::move(lines[i]);
    ++out;
  }
  lines.resize(out);
}

}  // namespace engine
