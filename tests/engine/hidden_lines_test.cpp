#include "engine_fixture.h"

namespace {

class Probe : public EngineProbe {
 public:
  using CEncircleLine::ConnectBreakLine;
  using CEncircleLine::IsPtInLineSpecifiedDir;
  using CEncircleLine::IsPtInLineSpecifiedDir2;
  using CEncircleLine::RemoveLine;
  using CEncircleLine::RemoveLine2;
  using CEncircleLine::SortLineInfos;
  using CEncircleLine::UpdateLinePtByNearestPt;
  using CEncircleLine::UpdateLineStartEndPt;
};

class HiddenLines : public DrawingTest {
 protected:
  // Records of real lines, as the drivers make them: a record never tests
  // itself because it has its line's id.
  CLineInfo rec(AcGePoint3d a, AcGePoint3d b) { return CLineInfo(line(a, b)); }
  Probe engine;
  void SetUp() override {
    DrawingTest::SetUp();
    engine.m_rect = CVKRect(-100, -100, 100, 100);
  }
};

TEST_F(HiddenLines, DirectionsKeepTheNearestLineFromTheirSide) {
  const std::vector<CLineInfo> two{rec({0, 0, 0}, {10, 0, 0}), rec({0, 5, 0}, {10, 5, 0})};
  for (const bool probe : {false, true}) {
    const auto fromBelow = probe ? engine.RemoveLine2(E_VIEW_FROM_BELOW, two) : engine.RemoveLine(E_VIEW_FROM_BELOW, two);
    ASSERT_EQ(fromBelow.size(), 1u);
    EXPECT_EQ(fromBelow[0].m_ptStart.y, 0);
    const auto fromAbove = probe ? engine.RemoveLine2(E_VIEW_FROM_ABOVE, two) : engine.RemoveLine(E_VIEW_FROM_ABOVE, two);
    ASSERT_EQ(fromAbove.size(), 1u);
    EXPECT_EQ(fromAbove[0].m_ptStart.y, 5);
    // Seen from the side, horizontal records go before any test (within 1e-6).
    const std::vector<CLineInfo> flat{rec({0, 0, 0}, {10, 0.0000005, 0})};
    EXPECT_TRUE((probe ? engine.RemoveLine2(E_VIEW_FROM_RIGHT, flat) : engine.RemoveLine(E_VIEW_FROM_RIGHT, flat)).empty());
  }
  const std::vector<CLineInfo> sides{rec({0, 0, 0}, {0, 10, 0}), rec({4, 0, 0}, {4, 10, 0})};
  const auto fromRight = engine.RemoveLine2(E_VIEW_FROM_RIGHT, sides);
  ASSERT_EQ(fromRight.size(), 1u);
  EXPECT_EQ(fromRight[0].m_ptStart.x, 4);
  const auto fromLeft = engine.RemoveLine(E_VIEW_FROM_LEFT, sides);
  ASSERT_EQ(fromLeft.size(), 1u);
  EXPECT_EQ(fromLeft[0].m_ptStart.x, 0);
}

TEST_F(HiddenLines, EndPointsAloneNeverHideARecord) {
  // The reference below reaches past the start but not to the first interior
  // sample (1/8 along): only the start is hidden, the end is visible and on
  // no reference line, so the record is kept.
  const std::vector<CLineInfo> lines{rec({10, 1, 0}, {0, 1, 0}), rec({-5, 0, 0}, {1, 0, 0})};
  const auto kept = engine.RemoveLine(E_VIEW_FROM_BELOW, lines);
  EXPECT_EQ(kept.size(), 2u);
  // A point within 0.0005 of the reference's end is outside its span.
  EXPECT_FALSE(engine.IsPtInLineSpecifiedDir({10.0004, 3, 0}, {0, 0, 0}, {10, 0, 0}, E_VIEW_FROM_BELOW));
  EXPECT_TRUE(engine.IsPtInLineSpecifiedDir({9.999, 3, 0}, {0, 0, 0}, {10, 0, 0}, E_VIEW_FROM_BELOW));
  // A point on the reference: hidden for the probe test, not for the nine-point one.
  EXPECT_FALSE(engine.IsPtInLineSpecifiedDir({5, 0, 0}, {0, 0, 0}, {10, 0, 0}, E_VIEW_FROM_BELOW));
  EXPECT_TRUE(engine.IsPtInLineSpecifiedDir2({5, 0, 0}, {0, 0, 0}, {10, 0, 0}, E_VIEW_FROM_BELOW));
  EXPECT_FALSE(engine.IsPtInLineSpecifiedDir({5, 3, 0}, {0, 0, 0}, {10, 0, 0}, E_VIEW_NONE));
}

TEST_F(HiddenLines, SlantedReferencesUseTheSideOfTheirOrientation) {
  // Rising A→B: a point above it lies to the left (side +1).
  EXPECT_TRUE(engine.IsPtInLineSpecifiedDir({5, 8, 0}, {0, 0, 0}, {10, 10, 0}, E_VIEW_FROM_BELOW));
  EXPECT_FALSE(engine.IsPtInLineSpecifiedDir({5, 2, 0}, {0, 0, 0}, {10, 10, 0}, E_VIEW_FROM_BELOW));
  // The same segment the other way round flips the side.
  EXPECT_FALSE(engine.IsPtInLineSpecifiedDir({5, 8, 0}, {10, 10, 0}, {0, 0, 0}, E_VIEW_FROM_BELOW));
}

TEST_F(HiddenLines, ProbeTestRecordsHideEachOtherButNotTheirTwins) {
  // Same y, overlapping: each midpoint lies on the other record.
  const auto both = engine.RemoveLine2(E_VIEW_FROM_BELOW, {rec({0, 0, 0}, {10, 0, 0}), rec({2, 0, 0}, {12, 0, 0})});
  EXPECT_TRUE(both.empty());
  const auto twins = engine.RemoveLine2(E_VIEW_FROM_BELOW, {rec({0, 0, 0}, {10, 0, 0}), rec({10, 0, 0}, {0, 0, 0})});
  EXPECT_EQ(twins.size(), 2u);
  // A record hidden by one that is itself removed: the references keep it.
  const auto chain = engine.RemoveLine2(
      E_VIEW_FROM_BELOW, {rec({0, 2, 0}, {10, 2, 0}), rec({0, 1, 0}, {10, 1, 0}), rec({0, 0, 0}, {10, 0, 0})});
  ASSERT_EQ(chain.size(), 1u);
  EXPECT_EQ(chain[0].m_ptStart.y, 0);
}

TEST_F(HiddenLines, OrientationTiesSwapBack) {
  std::vector<CLineInfo> v{rec({3, 0, 0}, {3, 5, 0})};
  engine.UpdateLineStartEndPt(E_VIEW_FROM_BELOW, v);
  EXPECT_EQ(v[0].m_ptStart.y, 5);
  engine.UpdateLineStartEndPt(E_VIEW_FROM_BELOW, v);
  EXPECT_EQ(v[0].m_ptStart.y, 0);  // kept as it is: the tie swaps every time
  std::vector<CLineInfo> down{rec({0, 0, 0}, {1, 9, 0})};
  engine.UpdateLineStartEndPt(E_VIEW_FROM_LEFT, down);
  EXPECT_EQ(down[0].m_ptStart.y, 9);  // by y, from the top
}

TEST_F(HiddenLines, ConnectorsBridgeGapsAndBackwardOverlaps) {
  std::vector<CLineInfo> v{rec({20, 0, 0}, {30, 0, 0}), rec({0, 0, 0}, {10, 0, 0}), rec({10.0004, 0, 0}, {15, 1, 0}),
                           rec({12, 2, 0}, {25, 2, 0})};
  engine.ConnectBreakLine(E_VIEW_FROM_ABOVE, v);
  // Sorted by start x: 0-10, 10-15 (touching: no connector), 12-25 (starts
  // before 15 ends: a backward connector), 20-30.
  ASSERT_EQ(v.size(), 6u);
  int connectors = 0;
  for (const CLineInfo& r : v) connectors += r.m_id.isNull() && r.m_ptStart == AcGePoint3d(15, 1, 0);
  EXPECT_EQ(connectors, 1);
  for (std::size_t i = 1; i < v.size(); ++i) EXPECT_LE(v[i - 1].m_ptStart.x, v[i].m_ptStart.x);
}

TEST_F(HiddenLines, EndPointsSnapWithinHalfAUnit) {
  std::vector<CLineInfo> v{rec({0, 0, 0}, {10, 0, 0}), rec({5, 0.3, 0}, {5, 8, 0}), rec({20, 0.5, 0}, {20, 8, 0}),
                           rec({9.5, 0, 0}, {30, 5, 0})};
  v[0].m_bValid = false;  // never moved, but others snap onto it
  engine.UpdateLinePtByNearestPt(v);
  EXPECT_EQ(v[1].m_ptStart, AcGePoint3d(5, 0, 0));    // 0.3 away: onto the foot of the perpendicular
  EXPECT_EQ(v[2].m_ptStart, AcGePoint3d(20, 0.5, 0)); // 0.5 away: stays
  EXPECT_EQ(v[3].m_ptStart, AcGePoint3d(9.5, 0, 0));  // on a record already: stays
  EXPECT_EQ(v[0].m_ptEnd, AcGePoint3d(10, 0, 0));
}
}  // namespace
