#include "engine_fixture.h"
#include "util/entity_utils.h"

namespace {

class BreakLines : public DrawingTest {
 protected:
  std::vector<CLineInfo> records(std::initializer_list<std::pair<AcGePoint3d, AcGePoint3d>> segments) {
    std::vector<CLineInfo> out;
    for (const auto& [a, b] : segments) out.emplace_back(line(a, b));
    return out;
  }
  static int lengthOf(const std::vector<CLineInfo>& lines) { return static_cast<int>(lines.size()); }
};

TEST_F(BreakLines, CrossingsSplitBothLinesTJunctionsOnlyTheThroughLine) {
  EngineProbe engine;
  auto x = records({{{0, 0, 0}, {10, 10, 0}}, {{0, 10, 0}, {10, 0, 0}}});
  const AcDbObjectId first = x[0].m_id;
  engine.BreakLines(x);
  ASSERT_EQ(lengthOf(x), 4);
  EXPECT_TRUE(first.isErased());  // the drawing holds the pieces instead
  EXPECT_EQ(count<AcDbLine>(), 4);
  EXPECT_EQ(x[0].m_ptStart, AcGePoint3d(0, 0, 0));  // the first parent's pieces first, from its start
  EXPECT_EQ(x[0].m_ptEnd, AcGePoint3d(5, 5, 0));
  EXPECT_EQ(x[1].m_ptStart, AcGePoint3d(5, 5, 0));
  EXPECT_EQ(x[2].m_ptStart, AcGePoint3d(0, 10, 0));

  auto t = records({{{4, 0, 0}, {4, 6, 0}}, {{0, 0, 0}, {10, 0, 0}}});
  engine.BreakLines(t);
  ASSERT_EQ(lengthOf(t), 3);
  EXPECT_EQ(t[0].m_ptEnd, AcGePoint3d(4, 6, 0));  // the uncut record keeps its place, before the pieces
  EXPECT_EQ(t[1].m_ptEnd, AcGePoint3d(4, 0, 0));

  auto shared = records({{{0, 0, 0}, {5, 0, 0}}, {{5, 0, 0}, {5, 5, 0}}});
  engine.BreakLines(shared);
  EXPECT_EQ(lengthOf(shared), 2);
  auto collinear = records({{{0, 0, 0}, {10, 0, 0}}, {{5, 0, 0}, {15, 0, 0}}});
  engine.BreakLines(collinear);
  EXPECT_EQ(lengthOf(collinear), 2);
  std::vector<CLineInfo> empty;
  engine.BreakLines(empty);
  EXPECT_TRUE(empty.empty());
}

TEST_F(BreakLines, SlabsAtEveryEndPointWhenAllPointsAreTaken) {
  EngineProbe engine;
  auto lines = records({{{0, 0, 0}, {10, 0, 0}},
                        {{2, 1, 0}, {2, 5, 0}},
                        {{5, 1, 0}, {5, 5, 0}},
                        {{8, 1, 0}, {8, 5, 0}},
                        {{0, 0, 0}, {0, 9, 0}}});
  engine.m_rect = CVKRect(0, 0, 10, 9);
  engine.BreakLines2(lines, true, true);
  // The horizontal line is cut at x = 2, 5 and 8; vertical lines never are.
  ASSERT_EQ(lengthOf(lines), 4 + 4);
  double x = 0;
  for (int k = 4; k < 8; ++k) {
    EXPECT_EQ(lines[k].m_ptStart.x, x);
    x = lines[k].m_ptEnd.x;
  }
  EXPECT_EQ(x, 10);
}

TEST_F(BreakLines, WithoutAllPointsTheShiftedBoxExcludesItsLines) {
  EngineProbe engine;
  // Drawing box x 0..20; shifted right by 5 it spans 5..25: records wholly
  // inside it give no points.
  auto lines = records({{{0, 5, 0}, {0, 15, 0}},    // left edge, outside the shifted box
                        {{0, 10, 0}, {20, 10, 0}},  // crosses; its ends x=0 (out) give points
                        {{10, 0, 0}, {10, 20, 0}},  // inside the shifted box: no points
                        {{0, 20, 0}, {20, 20, 0}}});
  engine.m_rect = CVKRect(0, 0, 20, 20);
  engine.BreakLines2(lines, false, true);
  // Points collected: (0,5),(0,15),(0,10),(20,10),(0,20),(20,20). Sorted by y,
  // the left edge from y 5 to 15 has y=10 between its ends: cut once. The
  // vertical at x=10 has ends outside the collected points: not cut.
  ASSERT_EQ(lengthOf(lines), 3 + 2);
  EXPECT_EQ(lines[1].m_ptStart, AcGePoint3d(10, 0, 0));
  EXPECT_EQ(lines[3].m_ptEnd, AcGePoint3d(0, 10, 0));
}

TEST_F(BreakLines, InvalidRecordsAreNeverSplitAndPiecesKeepTheLayer) {
  EngineProbe engine;
  auto* l = new AcDbLine({0, 0, 0}, {10, 0, 0});
  l->setLayer(layer("TempEncircleLineClone"));
  CLineInfo rec(add(l));
  rec.AddBreakPoint({5, 0, 0}, engine.m_info.m_tolPoint);
  rec.m_bValid = false;
  AcArray<AcDbObjectId> ids;
  EXPECT_FALSE(engine.SplitLine(rec, ids));
  EXPECT_FALSE(rec.m_id.isNull());
  rec.m_bValid = true;
  rec.AddBreakPoint({2, 0, 0}, engine.m_info.m_tolPoint);
  const AcDbObjectId old = rec.m_id;
  ASSERT_TRUE(engine.SplitLine(rec, ids));
  EXPECT_TRUE(rec.m_id.isNull());
  EXPECT_TRUE(old.isErased());
  ASSERT_EQ(ids.length(), 3);  // sorted: 0-2, 2-5, 5-10
  AcDbObjectPointer<AcDbLine> middle(ids[1], AcDb::kForRead);
  EXPECT_EQ(middle->startPoint(), AcGePoint3d(2, 0, 0));
  EXPECT_EQ(middle->layer(), "TempEncircleLineClone");
  EXPECT_EQ(middle->colorIndex(), 256);
}

TEST_F(BreakLines, CollectionAndIndexHelpers) {
  EngineProbe engine;
  const AcGeTol tol = engine.m_info.m_tolPoint;
  std::vector<AcGePoint3d> pts;
  engine.AddBreakPoint({1, 1, 0}, pts, tol);
  engine.AddBreakPoint({1.0004, 1, 0}, pts, tol);
  engine.AddBreakPoint({2, 1, 0}, pts, tol);
  EXPECT_EQ(pts.size(), 2u);
  const AcArray<AcGePoint3d> arr{{0, 0, 0}, {1, 1, 0}, {1, 1, 0}};
  EXPECT_EQ(engine.GetBreakIndex(arr, {1.0001, 1, 0}, tol), 1);
  EXPECT_EQ(engine.GetBreakIndex(arr, {3, 1, 0}, tol), -1);
}
}  // namespace
