// The indices behind the engine's stages never miss a candidate: checked
// against brute force on random boxes, points and intervals of mixed sizes.
#include "engine/spatial_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

bool Meet(const engine::Box2& a, const engine::Box2& b) {
  return a.minX <= b.maxX && b.minX <= a.maxX && a.minY <= b.maxY && b.minY <= a.maxY;
}

TEST(SpatialIndex, BoxGridListsEveryBoxThatMeetsTheQueryOnceInOrder) {
  std::mt19937 rng(5);
  std::uniform_real_distribution<double> unit(0, 1);
  for (int round = 0; round < 20; ++round) {
    std::vector<engine::Box2> boxes;
    auto randomBox = [&] {
      const double x = unit(rng) * 100, y = unit(rng) * 20;
      const double s = unit(rng) < 0.1 ? unit(rng) * 80 : unit(rng) * 0.5;  // a few long ones
      return unit(rng) < 0.2 ? engine::Box2{x, y, x, y} : engine::Box2{x, y, x + s, y + s * unit(rng)};
    };
    for (int i = 0; i < 300; ++i) boxes.push_back(randomBox());
    engine::BoxGrid grid;
    grid.Build(boxes);
    // Boxes that grow later are listed again under their new box.
    std::vector<engine::Box2> now = boxes;
    for (std::uint32_t i = 0; i < 300; i += 7) {
      now[i].maxX += 5 * unit(rng);
      now[i].minY -= 2 * unit(rng);
      grid.Add(i, now[i]);
    }
    std::vector<std::uint32_t> got;
    for (int q = 0; q < 200; ++q) {
      engine::Box2 query = randomBox();
      if (q % 3 == 0) query = now[static_cast<std::size_t>(q) % now.size()];  // touching exactly
      grid.Candidates(query, got);
      ASSERT_TRUE(std::is_sorted(got.begin(), got.end()));
      ASSERT_TRUE(std::adjacent_find(got.begin(), got.end()) == got.end());
      for (std::uint32_t i = 0; i < now.size(); ++i)
        ASSERT_TRUE(!Meet(now[i], query) || std::binary_search(got.begin(), got.end(), i)) << "box " << i;
    }
  }
}

TEST(SpatialIndex, PointGridFindsEveryPointWithinTheTolerance) {
  std::mt19937 rng(9);
  std::uniform_real_distribution<double> unit(0, 1);
  const double tol = 0.0005;
  engine::PointGrid grid(tol);
  std::vector<AcGePoint3d> pts;
  for (std::uint32_t i = 0; i < 3000; ++i) {
    // On a lattice of the cell width and just off it, so that points sit on cell boundaries.
    const double x = std::round(unit(rng) * 50) * 4 * tol + (unit(rng) < 0.5 ? 0 : (unit(rng) - 0.5) * 2 * tol);
    const double y = std::round(unit(rng) * 50) * 4 * tol - 0.01;
    pts.emplace_back(x, y, 0);
    grid.Add(pts.back(), i);
  }
  for (int q = 0; q < 500; ++q) {
    const AcGePoint3d p = pts[static_cast<std::size_t>(q) * 5] + AcGeVector3d((unit(rng) - 0.5) * 2 * tol, 0, 0);
    std::vector<char> seen(pts.size(), 0);
    grid.Any(p, [&](std::uint32_t k) {
      seen[k] = 1;
      return false;
    });
    for (std::size_t k = 0; k < pts.size(); ++k)
      ASSERT_TRUE(pts[k].distanceTo(p) > tol || seen[k]) << "point " << k;
  }
}

TEST(SpatialIndex, KeyedIntervalsVisitEveryIntervalHoldingTheValueByKey) {
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> unit(0, 1);
  std::vector<double> lo, hi, key;
  for (int i = 0; i < 500; ++i) {
    const double a = unit(rng) * 10, len = unit(rng) < 0.05 ? unit(rng) * 10 : unit(rng) * 0.05;
    lo.push_back(a);
    hi.push_back(a + (i % 9 == 0 ? 0 : len));
    key.push_back(std::round(unit(rng) * 20));  // ties
  }
  engine::KeyedIntervals index;
  index.Build(lo, hi, key);
  for (int q = 0; q < 300; ++q) {
    const double v = q % 4 == 0 ? lo[static_cast<std::size_t>(q)] : unit(rng) * 10;
    std::vector<char> seen(lo.size(), 0);
    double last = -1e300;
    index.Visit(v, [&](std::uint32_t i, double k) {
      EXPECT_GE(k, last);
      EXPECT_EQ(k, key[i]);
      last = k;
      seen[i] = 1;
      return true;
    });
    for (std::size_t i = 0; i < lo.size(); ++i)
      ASSERT_TRUE(!(lo[i] <= v && v <= hi[i]) || seen[i]) << "interval " << i;
  }
}

}  // namespace
