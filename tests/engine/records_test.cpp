#include <gtest/gtest.h>

#include "engine/unit_rect_info.h"
#include "engine_fixture.h"

namespace {
const AcGeTol kTol = CEncircleCalInfo::MakeTol(0.0005);

TEST(CEncircleCalInfo, DefaultsAreTheDialogs) {
  const CEncircleCalInfo info;
  EXPECT_TRUE(info.m_bRemoveDashed);
  EXPECT_FALSE(info.m_bVerticalEnds);
  EXPECT_EQ(info.m_tolPoint.equalPoint(), 0.0005);
  EXPECT_EQ(info.m_tolPoint.equalVector(), 0.0005);
  EXPECT_EQ(info.m_tolLine.equalPoint(), 0.001);
  EXPECT_EQ(info.m_tolFine.equalVector(), 1e-6);
  EXPECT_EQ(info.m_dStep, 0.3);
  EXPECT_EQ(info.m_dBreakLength, 5.0);
  EXPECT_EQ(info.m_nAxisDir, 0);
  EXPECT_TRUE(info.m_idMidLine.isNull());
}

TEST(CLineInfo, BreakPointsAreInteriorAndDistinct) {
  CLineInfo line;
  line.m_ptEnd = {10, 0, 0};
  line.AddBreakPoint({5, 1, 0}, kTol);       // off the segment
  line.AddBreakPoint({0.0004, 0, 0}, kTol);  // equal to the start within the tolerance
  line.AddBreakPoint({12, 0, 0}, kTol);      // on the line, beyond the end
  EXPECT_TRUE(line.m_breakPts.empty());
  line.AddBreakPoints({{7, 0, 0}, {3, 0.0003, 0}, {7.0002, 0, 0}, {3, 0, 0}}, kTol);
  ASSERT_EQ(line.m_breakPts.size(), 2u);  // the near duplicates were refused
  line.Sort();
  EXPECT_EQ(line.m_breakPts[0].x, 3);
  EXPECT_EQ(line.m_breakPts[1].x, 7);
  // Points at equal distance keep their order.
  CLineInfo tie;
  tie.m_ptStart = {0, 0, 0};
  tie.m_breakPts = {{0, 5, 0}, {5, 0, 0}, {3, 0, 0}};
  tie.Sort();
  EXPECT_EQ(tie.m_breakPts[0], AcGePoint3d(3, 0, 0));
  EXPECT_EQ(tie.m_breakPts[1], AcGePoint3d(0, 5, 0));
  EXPECT_EQ(tie.m_breakPts[2], AcGePoint3d(5, 0, 0));
}

TEST(CLineInfo, IsEqualInEitherOrientation) {
  CLineInfo a, b;
  a.m_ptStart = {0, 0, 0};
  a.m_ptEnd = {4, 2, 0};
  b.m_ptStart = {4.0003, 2, 0};
  b.m_ptEnd = {0, 0, 0};
  EXPECT_TRUE(a.IsEqual(b, kTol));
  b.m_ptStart = {4.001, 2, 0};
  EXPECT_FALSE(a.IsEqual(b, kTol));
}

class RecordsInDrawing : public DrawingTest {};

TEST_F(RecordsInDrawing, RecordsFromIdsTakeLinesOnlyWithZForcedToZero) {
  const AcDbObjectId id = line({1, 2, 3}, {4, 5, -6});
  const CLineInfo rec(id);
  EXPECT_EQ(rec.m_id, id);
  EXPECT_EQ(rec.m_ptStart, AcGePoint3d(1, 2, 0));
  EXPECT_EQ(rec.m_ptEnd, AcGePoint3d(4, 5, 0));
  EXPECT_TRUE(rec.m_bValid);
  const CLineInfo notALine(add(new AcDbCircle({0, 0, 0}, AcGeVector3d::kZAxis, 1)));
  EXPECT_TRUE(notALine.m_id.isNull());
  EXPECT_EQ(notALine.m_ptEnd, AcGePoint3d(0, 0, 0));
}

TEST(CUnitRectInfo, SortsByTheDirectionsRules) {
  CUnitRectInfo cell;
  for (AcGePoint3d p : {AcGePoint3d(0, 0, 0), AcGePoint3d(0, 1, 0), AcGePoint3d(1, 0, 0), AcGePoint3d(0, 1.0000001, 0)})
    cell.AddPoint(p, kTol);
  ASSERT_EQ(cell.m_pts.size(), 3u);
  cell.Sort(E_VIEW_FROM_ABOVE);
  EXPECT_EQ(cell.m_pts[0], AcGePoint3d(0, 1, 0));
  EXPECT_EQ(cell.m_pts[1], AcGePoint3d(0, 0, 0));
  EXPECT_EQ(cell.m_pts[2], AcGePoint3d(1, 0, 0));
  cell.Sort(E_VIEW_FROM_RIGHT);
  EXPECT_EQ(cell.m_pts[0], AcGePoint3d(0, 1, 0));
  EXPECT_EQ(cell.m_pts[1], AcGePoint3d(1, 0, 0));
  EXPECT_EQ(cell.m_pts[2], AcGePoint3d(0, 0, 0));
}

TEST(CVKRect, EmptyBoxesExtentsAndRelations) {
  CVKRect flat(true);
  flat.Extend(AcGePoint3d(2, 3, 0));
  EXPECT_EQ(flat.m_ptMin, AcGePoint3d(2, 3, 0));
  EXPECT_EQ(flat.m_ptMax, AcGePoint3d(2, 3, 0));
  CVKRect raised(true);
  raised.Extend(AcGePoint3d(2, 3, 4));  // z outside [0, 0] widens the flat box
  EXPECT_EQ(raised.m_ptMin.z, 0);
  EXPECT_EQ(raised.m_ptMax.z, 4);
  CVKRect box(0, 0, 1, 1);
  box.Extend(AcDbExtents({5, 5, 0}, {4, 6, 0}));    // max below min in x
  box.Extend(AcDbExtents({0, 0, 0}, {1e10, 2, 0}));  // a value at 1e10
  EXPECT_EQ(box.m_ptMax, AcGePoint3d(1, 1, 0));
  box.Extend(AcDbExtents({-1, 0, 0}, {0.5, 2, 0}));
  EXPECT_EQ(box.m_ptMin.x, -1);
  EXPECT_EQ(box.m_ptMax.y, 2);
  // Touching end to end overlaps through the 1e-6 margin, flat boxes of two
  // records on one horizontal line included; a gap does not.
  EXPECT_TRUE(CVKRect(0, 0, 10, 0).Overlaps(CVKRect(10, 0, 20, 0)));
  EXPECT_TRUE(CVKRect(0, 0, 10, 1).Overlaps(CVKRect(10, 0, 20, 1)));
  EXPECT_FALSE(CVKRect(0, 0, 10, 1).Overlaps(CVKRect(10.1, 0, 20, 1)));
  EXPECT_TRUE(CVKRect(0, 0, 10, 10).ContainsRect(CVKRect(0, 0, 10.0000015, 10)));
  EXPECT_FALSE(CVKRect(0, 0, 10, 10).ContainsRect(CVKRect(0, 0, 10.00001, 10)));
  CVKRect snap(0, 0, 10, 10);
  snap.Snap({2, 5, 0});
  EXPECT_EQ(snap.m_ptMin.x, 2);
}
}  // namespace
