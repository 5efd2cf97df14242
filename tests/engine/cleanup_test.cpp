#include "engine/line_geometry.h"
#include "engine_fixture.h"

namespace {

class Probe : public EngineProbe {
 public:
  using CEncircleLine::CreateTempLine;
  using CEncircleLine::RemoveCrossLine;
  using CEncircleLine::RemoveLineByWalter;
  using CEncircleLine::RemoveLineInExcludeDir;
  using CEncircleLine::RemoveLineInOtherDir;
  using CEncircleLine::RemoveRepeatLine2;
  using CEncircleLine::RemoveShortLine;
};

class Cleanup : public DrawingTest {
 protected:
  CLineInfo rec(AcGePoint3d a, AcGePoint3d b) { return CLineInfo(line(a, b)); }
  Probe engine;
};

TEST_F(Cleanup, ExclusionSideAndTheTemporaryLine) {
  std::vector<CLineInfo> v{rec({0, 12, 0}, {5, 10.0003, 0}), rec({0, 12, 0}, {5, 9, 0})};
  const AcDbObjectId removed = v[0].m_id;
  const AcDbObjectId temp = engine.CreateTempLine(E_VIEW_FROM_BELOW, 10, v);
  ASSERT_EQ(v.size(), 3u);
  EXPECT_FALSE(v[2].m_bValid);
  EXPECT_EQ(v[2].m_ptStart, AcGePoint3d(-60, 10, 0));  // widened by 50, overshooting by 10
  EXPECT_EQ(v[2].m_ptEnd, AcGePoint3d(65, 10, 0));
  EXPECT_EQ(v[2].m_id, temp);
  std::vector<CLineInfo> unchanged = v;
  engine.RemoveLineInExcludeDir(E_VIEW_NONE, 10, unchanged);
  EXPECT_EQ(unchanged.size(), 3u);
  engine.RemoveLineInExcludeDir(E_VIEW_FROM_BELOW, 10, v);
  ASSERT_EQ(v.size(), 2u);  // the temporary record survives on the line
  EXPECT_TRUE(removed.isErased());
  EXPECT_EQ(v[0].m_ptEnd.y, 9);
  std::vector<CLineInfo> empty;
  EXPECT_TRUE(engine.CreateTempLine(E_VIEW_FROM_ABOVE, 0, empty).isNull());
  std::vector<CLineInfo> sideways{rec({0, 0, 0}, {3, 8, 0})};
  engine.CreateTempLine(E_VIEW_FROM_LEFT, 2, sideways);
  EXPECT_EQ(sideways[1].m_ptStart, AcGePoint3d(2, 18, 0));  // top to bottom
}

TEST_F(Cleanup, RecordsAnotherDirectionHoldsOrOverlaps) {
  const std::vector<CLineInfo> other{rec({0, 0, 0}, {10, 0, 0}), rec({20, 0, 0}, {30, 10, 0})};
  std::vector<CLineInfo> v{rec({10, 0, 0}, {0, 0, 0}),     // the same, reversed
                           rec({2, 0, 0}, {6, 0, 0}),      // collinear inside a longer one
                           rec({22, 0, 0}, {28, 1, 0}),    // sloped, its box overlaps a box of other
                           rec({40, 40, 0}, {50, 40, 0})}; // elsewhere: stays
  const AcDbObjectId kept = v[0].m_id;
  engine.RemoveLineInOtherDir(other, v);
  ASSERT_EQ(v.size(), 1u);
  EXPECT_EQ(v[0].m_ptStart.x, 40);
  EXPECT_FALSE(kept.isErased());  // records go, their clones stay
  // A longer record holding a shorter one of other on the same line: the
  // boxes overlap once grown by 1e-6, so it goes too.
  std::vector<CLineInfo> longer{rec({-5, 0, 0}, {20, 0, 0})};
  engine.RemoveLineInOtherDir({rec({2, 0, 0}, {6, 0, 0})}, longer);
  EXPECT_TRUE(longer.empty());
}

TEST_F(Cleanup, CrossLineMergesAxisParallelNeighbours) {
  std::vector<CLineInfo> v{rec({0, 0, 0}, {10, 0, 0}), rec({10, 0, 0}, {20, 0, 0}), rec({0, 1, 0}, {10, 1, 0})};
  const AcDbObjectId a = v[0].m_id, b = v[1].m_id;
  engine.RemoveCrossLine(v);
  ASSERT_EQ(v.size(), 2u);
  EXPECT_EQ(v[0].m_ptStart, AcGePoint3d(0, 0, 0));
  EXPECT_EQ(v[0].m_ptEnd, AcGePoint3d(20, 0, 0));
  EXPECT_TRUE(a.isErased());
  EXPECT_TRUE(b.isErased());
  EXPECT_FALSE(v[0].m_id.isNull());  // a new line holds the merged record
  EXPECT_EQ(v[1].m_ptStart.y, 1);    // a different y stays apart
  // A sloped record is never merged away as the first, but absorbs an
  // axis-parallel collinear one before it.
  std::vector<CLineInfo> slope{rec({0, 0, 0}, {5, 5, 0}), rec({5, 5, 0}, {10, 10, 0})};
  engine.RemoveCrossLine(slope);
  EXPECT_EQ(slope.size(), 2u);
}

TEST_F(Cleanup, RepeatsAndTheZeroLengthStop) {
  std::vector<CLineInfo> v{rec({0, 0, 0}, {10, 0, 0}), rec({10, 0, 0}, {0, 0, 0}), rec({0, 5, 0}, {10, 5, 0}),
                           rec({2, 5, 0}, {6, 5, 0})};
  const AcDbObjectId earlier = v[0].m_id;
  engine.RemoveRepeatLine2(v);
  ASSERT_EQ(v.size(), 2u);
  EXPECT_TRUE(earlier.isErased());  // of two duplicates the earlier goes
  EXPECT_EQ(v[1].m_ptEnd.x, 10);    // the covered one went
  CLineInfo zero;
  zero.m_ptStart = zero.m_ptEnd = {3, 3, 0};
  std::vector<CLineInfo> stop{zero, rec({0, 0, 0}, {1, 0, 0}), rec({1, 0, 0}, {0, 0, 0})};
  engine.RemoveRepeatLine2(stop);
  EXPECT_EQ(stop.size(), 2u);  // the duplicates after it wait for the next call
  engine.RemoveRepeatLine2(stop);
  EXPECT_EQ(stop.size(), 1u);
}

TEST_F(Cleanup, ShortRecordsStayOnlyWhereTheyBridge) {
  std::vector<CLineInfo> v{rec({0, 0, 0}, {10, 0, 0}), rec({10, 0, 0}, {10.4, 0, 0}), rec({10.4, 0, 0}, {20, 0, 0}),
                           rec({30, 0, 0}, {30.4, 0, 0}), rec({20, 0, 0}, {20, 0.5, 0})};
  engine.RemoveShortLine(v);
  ASSERT_EQ(v.size(), 4u);
  EXPECT_EQ(v[1].m_ptEnd.x, 10.4);   // 0.4, touching at both ends
  EXPECT_EQ(v[3].m_ptEnd.y, 0.5);    // exactly 0.5: always stays
}

TEST_F(Cleanup, ExtremeBandWithItsZeroQuirk) {
  auto recs = [&](std::initializer_list<double> xs) {
    std::vector<CLineInfo> v;
    for (double x : xs) v.push_back(rec({x, 0, 0}, {x, 5, 0}));
    return v;
  };
  std::vector<CLineInfo> v = recs({3, 7, 8.5, 40});
  engine.RemoveLineByWalter(v, E_VIEW_FROM_LEFT);
  ASSERT_EQ(v.size(), 2u);  // within 5.0 of x = 3; 8.5 is more than 5 away
  v = recs({3, 7, 40});
  engine.RemoveLineByWalter(v, E_VIEW_FROM_RIGHT);
  ASSERT_EQ(v.size(), 1u);
  EXPECT_EQ(v[0].m_ptStart.x, 40);
  // 3, then 0, then 40: X goes 3, 0, 40 and the band is near 40.
  v = recs({3, 0, 40});
  engine.RemoveLineByWalter(v, E_VIEW_FROM_LEFT);
  ASSERT_EQ(v.size(), 1u);
  EXPECT_EQ(v[0].m_ptStart.x, 40);
  v = recs({3, 40, 0});  // the last value met is 0: nothing is removed
  engine.RemoveLineByWalter(v, E_VIEW_FROM_LEFT);
  EXPECT_EQ(v.size(), 3u);
  v = recs({-3, -40});
  engine.RemoveLineByWalter(v, E_VIEW_FROM_RIGHT);
  EXPECT_EQ(v.size(), 2u);
}

TEST(LineGeometry, CollinearityComparesAbsoluteSlopes) {
  using engine::Alignment;
  // Slopes +1 and -1 through the same start x count as collinear.
  EXPECT_EQ(engine::TestCollinear({0, 0, 0}, {1, 1, 0}, {0, 0, 0}, {1, -1, 0}, 1e-6), Alignment::kCollinear);
  EXPECT_EQ(engine::TestCollinear({0, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 2, 0}, 1e-6), Alignment::kCollinear);  // y offset unlooked
  EXPECT_EQ(engine::TestCollinear({0, 0, 0}, {1, 1, 0}, {2, 0, 0}, {3, 1, 0}, 1e-6), Alignment::kParallel);
  EXPECT_EQ(engine::TestCollinear({0, 0, 0}, {0, 5, 0}, {0, 7, 0}, {0, 9, 0}, 1e-6), Alignment::kCollinear);
  EXPECT_EQ(engine::TestCollinear({0, 0, 0}, {0, 5, 0}, {1, 7, 0}, {1, 9, 0}, 1e-6), Alignment::kParallel);
  EXPECT_EQ(engine::TestCollinear({0, 0, 0}, {0, 5, 0}, {1, 7, 0}, {2, 9, 0}, 1e-6), Alignment::kNotParallel);
}
}  // namespace
