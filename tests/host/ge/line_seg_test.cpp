#include <gtest/gtest.h>

#include "host/ge/line_seg3d.h"

namespace {
AcGeTol tolerance(double t) {
  AcGeTol tol;
  tol.setEqualPoint(t);
  tol.setEqualVector(t);
  return tol;
}

struct Crossing {
  const char* name;
  AcGePoint3d a0, a1, b0, b1;
  bool meets;
  AcGePoint3d at;
};

void PrintTo(const Crossing& c, std::ostream* os) { *os << c.name; }

class Intersections : public testing::TestWithParam<Crossing> {};

TEST_P(Intersections, OfBoundedSegments) {
  const Crossing& c = GetParam();
  const AcGeLineSeg3d a(c.a0, c.a1), b(c.b0, c.b1);
  AcGePoint3d p;
  const AcGeTol tol = tolerance(0.0005);
  ASSERT_EQ(a.intersectWith(b, p, tol), c.meets) << c.name;
  if (c.meets) {
    EXPECT_LT(p.distanceTo(c.at), 1e-9) << c.name;
  }
  // The answer does not depend on which segment asks.
  // Asked from b, the point lies on b: within the tolerance of the crossing.
  ASSERT_EQ(b.intersectWith(a, p, tol), c.meets) << c.name;
  if (c.meets) {
    EXPECT_LE(p.distanceTo(c.at), 0.0005) << c.name;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Intersections,
    testing::Values(
        Crossing{"X crossing", {0, 0, 0}, {10, 10, 0}, {0, 10, 0}, {10, 0, 0}, true, {5, 5, 0}},
        Crossing{"T junction", {0, 0, 0}, {10, 0, 0}, {4, 0, 0}, {4, 6, 0}, true, {4, 0, 0}},
        Crossing{"touching ends", {0, 0, 0}, {5, 0, 0}, {5, 0, 0}, {5, 5, 0}, true, {5, 0, 0}},
        Crossing{"end within tolerance", {0, 0, 0}, {10, 0, 0}, {4, 0.0004, 0}, {4, 6, 0}, true, {4, 0, 0}},
        Crossing{"end beyond tolerance", {0, 0, 0}, {10, 0, 0}, {4, 0.0006, 0}, {4, 6, 0}, false, {}},
        Crossing{"lines cross beyond the ends", {0, 0, 0}, {1, 1, 0}, {3, 0, 0}, {4, -1, 0}, false, {}},
        Crossing{"parallel", {0, 0, 0}, {10, 0, 0}, {0, 1, 0}, {10, 1, 0}, false, {}},
        Crossing{"collinear overlap", {0, 0, 0}, {10, 0, 0}, {5, 0, 0}, {15, 0, 0}, false, {}},
        Crossing{"near parallel within tolerance", {0, 0, 0}, {10, 0, 0}, {0, 0.001, 0}, {10, -0.001, 0}, false, {}},
        Crossing{"skew in 3D", {0, 0, 0}, {10, 0, 0}, {5, -5, 1}, {5, 5, 1}, false, {}}),
    [](const testing::TestParamInfo<Crossing>& info) {
      std::string n = info.param.name;
      for (char& ch : n)
        if (ch == ' ') ch = '_';
      return n;
    });

TEST(LineSeg3d, IsOnAndClosestPointRespectTheBoundedSegment) {
  const AcGeLineSeg3d s({0, 0, 0}, {10, 0, 0});
  const AcGeTol tol = tolerance(0.001);
  EXPECT_TRUE(s.isOn({0, 0, 0}, tol));
  EXPECT_TRUE(s.isOn({10.0009, 0, 0}, tol));
  EXPECT_FALSE(s.isOn({10.002, 0, 0}, tol));
  EXPECT_TRUE(s.isOn({5, 0.0009, 0}, tol));
  EXPECT_FALSE(s.isOn({5, 0.0011, 0}, tol));
  EXPECT_EQ(s.closestPointTo({-3, 4, 0}), AcGePoint3d(0, 0, 0));
  EXPECT_EQ(s.closestPointTo({13, -4, 0}), AcGePoint3d(10, 0, 0));
  EXPECT_EQ(s.closestPointTo({3, 4, 0}), AcGePoint3d(3, 0, 0));
  EXPECT_DOUBLE_EQ(s.length(), 10.0);
}
}  // namespace
