// The robust outline's geometry on hand-made contours: what bounds no region
// drops out, ends that nearly meet are joined exactly where their lines and
// circles meet, recesses never show, bodies and sides are told apart, and the
// checks every outline must pass.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "engine/robust/graph.h"
#include "engine/robust/outline_check.h"
#include "engine/robust/profile.h"

namespace robust {
namespace {
constexpr double kPi = std::numbers::pi;

// A closed polygon as lines.
void Polygon(std::vector<Seg>& out, std::initializer_list<P2> pts) {
  std::vector<P2> v(pts);
  for (std::size_t i = 0; i < v.size(); ++i) out.push_back(Seg::Line(v[i], v[(i + 1) % v.size()]));
}

std::vector<P2> Points(const Profile& p) {
  std::vector<P2> out;
  for (const ProfileVertex& v : p.vertices) out.push_back(v.p);
  return out;
}

void ExpectPoints(const Profile& p, std::initializer_list<P2> want) {
  const std::vector<P2> got = Points(p);
  ASSERT_EQ(got.size(), want.size()) << p.problem;
  std::size_t i = 0;
  for (const P2& w : want) {
    EXPECT_NEAR(got[i].x, w.x, 1e-9) << "vertex " << i;
    EXPECT_NEAR(got[i].y, w.y, 1e-9) << "vertex " << i;
    ++i;
  }
}

const ProfileAxis kXAxis{{0, 0}, {1, 0}, false};

TEST(RobustProfile, LinesThatBoundNoRegionDoNotChangeTheOutline) {
  std::vector<Seg> c;
  Polygon(c, {{0, -5}, {40, -5}, {40, 5}, {0, 5}});
  c.push_back(Seg::Line({10, 5}, {15, 12}));   // a leader from the edge
  c.push_back(Seg::Line({20, -4}, {25, 4}));   // a flute line inside
  c.push_back(Seg::Line({-3, 2}, {43, 2}));    // a construction line through, running over both ends
  const Profile p = ComputeProfile(c, kXAxis, 0.01);
  ASSERT_TRUE(p.ok) << p.problem;
  ExpectPoints(p, {{0, 0}, {0, 5}, {40, 5}, {40, 0}});
  EXPECT_NEAR(p.area, 200, 1e-9);
  EXPECT_EQ(p.bodies, 1);
  EXPECT_TRUE(p.warnings.empty()) << p.warnings.front().text;
}

TEST(RobustProfile, AnArcMeetsItsLineExactlyAcrossAGapAndKeepsItsCentre) {
  // Upper half of a corner-rounded shaft: the line stops 0.01 short of the arc.
  std::vector<Seg> c;
  c.push_back(Seg::Line({0, 0}, {0, 4}));
  c.push_back(Seg::Arc({1, 4}, 1, kPi / 2, kPi));       // (1, 5) to (0, 4)
  c.push_back(Seg::Line({1.01, 5}, {30, 5}));           // falls short of (1, 5)
  c.push_back(Seg::Line({30, 5}, {30, 0}));
  const Profile p = ComputeProfile(c, kXAxis, 0.02);
  ASSERT_TRUE(p.ok) << p.problem;
  ExpectPoints(p, {{0, 0}, {0, 4}, {1, 5}, {30, 5}, {30, 0}});
  EXPECT_NEAR(p.vertices[1].bulge, -std::tan(kPi / 8), 1e-12);
  EXPECT_TRUE(p.touchesAxisAtBothEnds);
}

TEST(RobustProfile, ARecessAtAnEndFaceAndABoreDoNotShow) {
  std::vector<Seg> c;
  // A head with a slot across its end face (the face broken at the slot).
  c.push_back(Seg::Line({0, 1}, {0, 6}));
  c.push_back(Seg::Line({0, -1}, {0, -6}));
  c.push_back(Seg::Line({0, 1}, {2, 1}));
  c.push_back(Seg::Line({2, 1}, {2, -1}));
  c.push_back(Seg::Line({2, -1}, {0, -1}));
  c.push_back(Seg::Line({0, 6}, {20, 6}));
  c.push_back(Seg::Line({0, -6}, {20, -6}));
  c.push_back(Seg::Line({20, 6}, {20, -6}));
  c.push_back(Seg::Arc({10, 0}, 2, 0, 2 * kPi));  // a bore seen end on, inside
  const Profile p = ComputeProfile(c, kXAxis, 0.01);
  ASSERT_TRUE(p.ok) << p.problem;
  ExpectPoints(p, {{0, 0}, {0, 6}, {20, 6}, {20, 0}});
}

TEST(RobustProfile, SeparateBodiesAndAnUnevenOtherSideAreWarnedAbout) {
  std::vector<Seg> c;
  Polygon(c, {{0, -5}, {30, -5}, {30, 5}, {0, 5}});
  Polygon(c, {{40, -3}, {50, -3}, {50, 3}, {40, 3}});  // a second body on the axis
  Polygon(c, {{5, 10}, {8, 10}, {8, 12}, {5, 12}});    // a closed box apart (a title box)
  const Profile p = ComputeProfile(c, kXAxis, 0.01);
  ASSERT_TRUE(p.ok) << p.problem;
  ExpectPoints(p, {{0, 0}, {0, 5}, {30, 5}, {30, 0}});
  EXPECT_EQ(p.bodies, 3);
  ASSERT_EQ(p.warnings.size(), 1u);
  EXPECT_NE(p.warnings[0].text.find("2 closed region"), std::string::npos) << p.warnings[0].text;

  std::vector<Seg> tee;  // a step on one side only
  Polygon(tee, {{0, -5}, {30, -5}, {30, 5}, {20, 5}, {20, 9}, {10, 9}, {10, 5}, {0, 5}});
  const Profile q = ComputeProfile(tee, kXAxis, 0.01);
  ASSERT_TRUE(q.ok);
  EXPECT_NEAR(q.mirrorDeviation, 4, 1e-9);
  ASSERT_EQ(q.warnings.size(), 1u);
  EXPECT_NE(q.warnings[0].text.find("not the mirror"), std::string::npos);
}

TEST(RobustProfile, AnUprightPartOnItsLowerSideComesOutInDrawingCoordinates) {
  std::vector<Seg> c;  // axis x = 10 running up; a cone on a cylinder
  Polygon(c, {{7, 0}, {13, 0}, {13, 20}, {10, 25}, {7, 20}});
  ProfileAxis axis{{10, 0}, {0, 1}, true};  // the side to the right of +y
  const Profile p = ComputeProfile(c, axis, 0.01);
  ASSERT_TRUE(p.ok) << p.problem;
  ExpectPoints(p, {{10, 0}, {13, 0}, {13, 20}, {10, 25}});
  const OutlineCheck check = CheckOutline(p.vertices, true, axis);
  EXPECT_TRUE(check.ok) << check.problem;
}

TEST(RobustProfile, AGapWiderThanTheToleranceIsRefusedWithItsPlace) {
  std::vector<Seg> c;
  c.push_back(Seg::Line({0, 0}, {0, 5}));
  c.push_back(Seg::Line({0, 5}, {10, 5}));
  c.push_back(Seg::Line({10.3, 5}, {20, 5}));  // 0.3 short
  c.push_back(Seg::Line({20, 5}, {20, 0}));
  c.push_back(Seg::Line({2, 0}, {2, 3}));       // so that some region exists
  c.push_back(Seg::Line({2, 3}, {4, 3}));
  c.push_back(Seg::Line({4, 3}, {4, 0}));
  for (Seg& s : c) s.source = 0;  // drawn curves (the axis the profile adds has none)
  const Profile p = ComputeProfile(c, kXAxis, 0.05);
  EXPECT_FALSE(p.ok);
  EXPECT_NE(p.problem.find("does not close"), std::string::npos) << p.problem;
  const Profile q = ComputeProfile(c, kXAxis, 0.5);
  ASSERT_TRUE(q.ok) << q.problem;
  ExpectPoints(q, {{0, 0}, {0, 5}, {20, 5}, {20, 0}});
}

TEST(RobustGraph, EdgesOnNoCycleAreBridges) {
  std::vector<Seg> c;
  Polygon(c, {{0, 0}, {4, 0}, {2, 3}});
  c.push_back(Seg::Line({4, 0}, {8, 0}));  // a tail
  c.push_back(Seg::Line({2, 3}, {2, 1}));  // a spur inside
  const ContourGraph g = BuildContourGraph(c, 1e-6);
  int bridges = 0;
  for (const GraphEdge& e : g.edges) bridges += e.bridge;
  EXPECT_EQ(bridges, 2);
  EXPECT_EQ(g.components, 1);
}

TEST(RobustCheck, SelfCrossingRepeatedVertexAndEndsOffTheAxisFail) {
  const std::vector<ProfileVertex> good{{{0, 0}}, {{0, 5}}, {{10, 5}}, {{10, 0}}};
  EXPECT_TRUE(CheckOutline(good, true, kXAxis).ok);
  EXPECT_FALSE(CheckOutline(good, false, kXAxis).ok);
  const std::vector<ProfileVertex> crossing{{{0, 0}}, {{0, 5}}, {{10, 0}}, {{10, 5}}};
  const OutlineCheck c = CheckOutline(crossing, true, kXAxis);
  EXPECT_FALSE(c.ok);
  EXPECT_NE(c.problem.find("crosses"), std::string::npos) << c.problem;
  const std::vector<ProfileVertex> repeated{{{0, 0}}, {{0, 5}}, {{0, 5}}, {{10, 5}}, {{10, 0}}};
  EXPECT_NE(CheckOutline(repeated, true, kXAxis).problem.find("repeats"), std::string::npos);
  const std::vector<ProfileVertex> lifted{{{0, 1}}, {{0, 5}}, {{10, 5}}, {{10, 0}}, {{2, 0}}};
  EXPECT_NE(CheckOutline(lifted, true, kXAxis).problem.find("first end"), std::string::npos);
  // A bulge edge that dips through the edge along the axis.
  const std::vector<ProfileVertex> bulging{{{0, 0}}, {{0, 5}, 1.5}, {{10, 5}}, {{10, 0}}};
  EXPECT_FALSE(CheckOutline(bulging, true, kXAxis).ok);
}

}  // namespace
}  // namespace robust
