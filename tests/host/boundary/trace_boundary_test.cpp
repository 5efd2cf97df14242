// Boundary tracing: regions found among lines, arcs, circles and polylines,
// islands, and the curves that take no part.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "host/boundary/trace_boundary.h"
#include "host/db/operations.h"

namespace {

class TraceBoundary : public testing::Test {
 protected:
  AcDbObjectId add(AcDbEntity* e, const char* layer = nullptr) {
    if (layer) {
      AcDbObjectId layerId;
      host::findLayer(&m_db, layer, layerId, true);
      e->setLayer(layerId);
    }
    AcDbObjectId id;
    EXPECT_EQ(host::appendEntity(&m_db, e, id), Acad::eOk);
    return id;
  }
  AcDbObjectId line(double x1, double y1, double x2, double y2, const char* layer = nullptr) {
    return add(new AcDbLine({x1, y1, 0}, {x2, y2, 0}), layer);
  }
  void square(double x0, double y0, double size) {
    line(x0, y0, x0 + size, y0);
    line(x0 + size, y0, x0 + size, y0 + size);
    line(x0 + size, y0 + size, x0, y0 + size);
    line(x0, y0 + size, x0, y0);
  }
  std::vector<std::unique_ptr<AcDbPolyline>> trace(double x, double y) {
    std::vector<std::unique_ptr<AcDbPolyline>> out;
    EXPECT_EQ(host::traceBoundary(m_db.modelSpaceId(), {x, y, 0}, out), Acad::eOk);
    return out;
  }
  static std::vector<AcGePoint2d> points(const AcDbPolyline& p) {
    std::vector<AcGePoint2d> out;
    for (const auto& v : p.vertices()) out.push_back(v.point);
    return out;
  }
  AcDbDatabase m_db;
};

TEST_F(TraceBoundary, CrossingLinesAreNodedAndTheFaceOfTheSeedComesBackCounterClockwise) {
  square(0, 0, 10);
  line(-5, 5, 15, 5);   // crosses the square, reaching beyond it
  line(5, 12, 5, 3);    // crosses the top and the new middle line, dangles below
  const auto found = trace(7, 8);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_TRUE(found[0]->isClosed());
  const std::vector<AcGePoint2d> want{{5, 5}, {10, 5}, {10, 10}, {5, 10}};
  EXPECT_EQ(points(*found[0]), want);
  // The dangling piece below the middle line does not split the lower face.
  const auto lower = trace(2, 2);
  ASSERT_EQ(lower.size(), 1u);
  const std::vector<AcGePoint2d> wantLower{{0, 0}, {10, 0}, {10, 5}, {0, 5}};  // (5,5) runs straight through
  EXPECT_EQ(points(*lower[0]), wantLower);
}

TEST_F(TraceBoundary, AnIslandComesAfterTheOuterBoundaryAndCurvesBecomeChordsOnTheCurve) {
  square(0, 0, 20);
  add(new AcDbCircle({10, 10, 0}, AcGeVector3d::kZAxis, 3));
  const auto found = trace(1, 1);
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0]->numVerts(), 4u);
  ASSERT_GT(found[1]->numVerts(), 40u);  // chords of at most 0.25 on a circumference of 18.8
  for (const AcGePoint2d& p : points(*found[1])) EXPECT_NEAR(std::hypot(p.x - 10, p.y - 10), 3, 1e-6);
  // Inside the circle the circle itself is the outer boundary.
  const auto inside = trace(10, 10);
  ASSERT_EQ(inside.size(), 1u);
  EXPECT_EQ(inside[0]->numVerts(), found[1]->numVerts());
}

TEST_F(TraceBoundary, APolylineWithABulgeClosesARegionAlongItsArc) {
  auto* p = new AcDbPolyline;
  p->addVertexAt(0, {0, 0});
  p->addVertexAt(1, {10, 0}, 1.0);  // a half circle from (10,0) to (10,10), bulging right
  p->addVertexAt(2, {10, 10});
  p->addVertexAt(3, {0, 10});
  p->setClosed(true);
  add(p);
  const auto found = trace(14, 5);
  ASSERT_EQ(found.size(), 1u);
  double maxX = 0;
  for (const AcGePoint2d& v : points(*found[0])) {
    maxX = std::max(maxX, v.x);
    if (v.x > 10 + 1e-9) {
      EXPECT_NEAR(std::hypot(v.x - 10, v.y - 5), 5, 1e-6);
    }
  }
  EXPECT_NEAR(maxX, 15, 2e-3);  // within a chord's sagitta
}

TEST_F(TraceBoundary, CurvesThatCannotBeSeenTakeNoPart) {
  square(0, 0, 10);
  line(5, 0, 5, 10, "HIDDEN");
  const AcDbObjectId invisible = line(0, 5, 10, 5);
  {
    AcDbObjectPointer<AcDbEntity> e(invisible, AcDb::kForWrite);
    e->setVisibility(AcDb::kInvisible);
  }
  {
    AcDbObjectId layerId;
    host::findLayer(&m_db, "HIDDEN", layerId);
    AcDbObjectPointer<AcDbLayerTableRecord> layer(layerId, AcDb::kForWrite);
    layer->setIsOff(true);
  }
  auto found = trace(2, 2);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0]->numVerts(), 4u);  // the whole square
  {
    AcDbObjectId layerId;
    host::findLayer(&m_db, "HIDDEN", layerId);
    AcDbObjectPointer<AcDbLayerTableRecord> layer(layerId, AcDb::kForWrite);
    layer->setIsOff(false);
    layer->setIsFrozen(true);
  }
  EXPECT_EQ(trace(2, 2)[0]->numVerts(), 4u);  // frozen counts as off
}

TEST_F(TraceBoundary, NoRegionAroundTheSeedGivesNothing) {
  EXPECT_TRUE(trace(0, 0).empty());  // an empty block
  line(0, 0, 10, 0);
  line(10, 0, 10, 10);
  line(10, 10, 0, 10);  // three sides: open
  EXPECT_TRUE(trace(5, 5).empty());
  line(0, 10, 0, 0);
  EXPECT_TRUE(trace(20, 20).empty());  // outside
  EXPECT_TRUE(trace(5, 0).empty());    // on a curve
  EXPECT_EQ(trace(5, 5).size(), 1u);
  std::vector<std::unique_ptr<AcDbPolyline>> out;
  EXPECT_EQ(host::traceBoundary(m_db.modelSpaceId(), {NAN, 0, 0}, out), Acad::eInvalidInput);
  EXPECT_EQ(host::traceBoundary(AcDbObjectId::kNull, {5, 5, 0}, out), Acad::eNullObjectId);
  EXPECT_TRUE(out.empty());
}

}  // namespace
