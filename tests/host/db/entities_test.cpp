#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "db_helpers.h"
#include "host/db/operations.h"

namespace {
constexpr double kPi = std::numbers::pi;

TEST(Arc, MirrorTransformSwapsEndsToStayCounterClockwise) {
  AcDbArc arc(AcGePoint3d(5, 0, 0), 2, 0, kPi / 2);  // from (7,0) to (5,2)
  ASSERT_EQ(arc.transformBy(AcGeMatrix3d::mirroring(AcGePoint3d(0, 0, 0), AcGeVector3d::kXAxis)), Acad::eOk);
  EXPECT_EQ(arc.normal(), AcGeVector3d::kZAxis);
  AcGePoint3d s, e;
  arc.getStartPoint(s);
  arc.getEndPoint(e);
  EXPECT_NEAR(s.distanceTo({-5, 2, 0}), 0, 1e-12);
  EXPECT_NEAR(e.distanceTo({-7, 0, 0}), 0, 1e-12);
  EXPECT_NEAR(arc.sweep(), kPi / 2, 1e-12);
  EXPECT_EQ(arc.transformBy(AcGeMatrix3d::scaling(AcGeVector3d(1, 2, 1))), Acad::eCannotScaleNonUniformly);
}

TEST(PresentInWorld, MirroredDrawingsReadAsPlusZWithTheSamePoints) {
  AcDbCircle circle(AcGePoint3d(-4, 1, -2), AcGeVector3d(0, 0, -1), 3);
  ASSERT_EQ(host::presentInWorld(&circle), Acad::eOk);
  EXPECT_EQ(circle.normal(), AcGeVector3d::kZAxis);
  EXPECT_EQ(circle.center(), AcGePoint3d(-4, 1, -2));
  AcDbEllipse ellipse(AcGePoint3d(0, 0, 0), AcGeVector3d(0, 0, -1), AcGeVector3d(2, 0, 0), 0.5, 0, 1);
  AcGePoint3d s0, e0, s1, e1;
  ellipse.getStartPoint(s0);
  ellipse.getEndPoint(e0);
  ASSERT_EQ(host::presentInWorld(&ellipse), Acad::eOk);
  EXPECT_EQ(ellipse.normal(), AcGeVector3d::kZAxis);
  ellipse.getStartPoint(s1);
  ellipse.getEndPoint(e1);
  EXPECT_LT(s1.distanceTo(e0), 1e-12);
  EXPECT_LT(e1.distanceTo(s0), 1e-12);
  AcDbLine line({0, 0, 0}, {1, 1, 0});
  EXPECT_EQ(host::presentInWorld(&line), Acad::eOk);
}

TEST(Ellipse, AffineTransformKeepsPointsOnTheImage) {
  AcDbEllipse e(AcGePoint3d(1, 2, 0), AcGeVector3d::kZAxis, AcGeVector3d(3, 1, 0), 0.4, 0.3, 2.5);
  const auto before = e.geCurve();
  const AcGeMatrix3d m = AcGeMatrix3d::scaling(AcGeVector3d(2, 0.5, 1)) *
                         AcGeMatrix3d::rotation(0.3, AcGeVector3d::kZAxis) *
                         AcGeMatrix3d::mirroring(AcGePoint3d(0, 0, 0), AcGeVector3d::kYAxis);
  AcGePoint3dArray pts;
  before->getSamplePoints(9, pts);
  ASSERT_EQ(e.transformBy(m), Acad::eOk);
  EXPECT_EQ(e.normal(), AcGeVector3d::kZAxis);
  const auto after = e.geCurve();
  for (auto p : pts) {
    p.transformBy(m);
    EXPECT_LT(after->closestPointTo(p).distanceTo(p), 1e-9);
  }
  AcGePoint3d s;
  e.getStartPoint(s);
  AcGePoint3d expect = pts.first();
  // Mirroring runs the arc the other way: the old end is the new start.
  AcGePoint3d oldEnd = pts.last();
  oldEnd.transformBy(m);
  expect.transformBy(m);
  EXPECT_LT(s.distanceTo(oldEnd), 1e-9);
}

TEST(Extents, TextAndBlockReferencesAreReasonable) {
  AcDbText text(AcGePoint3d(10, 10, 0), "计算包络线成功", 5);
  AcDbExtents e;
  ASSERT_EQ(text.getGeomExtents(e), Acad::eOk);
  EXPECT_NEAR(e.minPoint().y, 10, 1e-12);
  EXPECT_NEAR(e.maxPoint().y, 15, 1e-12);
  EXPECT_GT(e.maxPoint().x, 10 + 7 * 5 * 0.8);  // seven wide characters
  EXPECT_LT(e.maxPoint().x, 10 + 7 * 5 * 1.2);

  AcDbDatabase db;
  const AcDbObjectId block = testdb::Block(&db, "FRAME", {5, 5, 0});
  AcDbObjectId id;
  host::appendEntity(&db, new AcDbCircle({5, 5, 0}, AcGeVector3d::kZAxis, 1), id, block);
  auto* ref = new AcDbBlockReference({100, 0, 0}, block);
  ref->setScaleFactors({3, 3, 3});
  host::appendEntity(&db, ref, id);
  AcDbObjectPointer<AcDbBlockReference> r(id, AcDb::kForRead);
  ASSERT_EQ(r->getGeomExtents(e), Acad::eOk);
  EXPECT_NEAR(e.minPoint().x, 97, 1e-12);  // the base point lands on the position
  EXPECT_NEAR(e.maxPoint().y, 3, 1e-12);
}

TEST(Polyline, WorldPointsFollowElevationAndNormal) {
  AcDbPolyline pl;
  pl.addVertexAt(0, {1, 1});
  pl.addVertexAt(1, {4, 1});
  pl.setElevation(2);
  AcGePoint3d p;
  ASSERT_EQ(pl.getPointAt(1, p), Acad::eOk);
  EXPECT_EQ(p, AcGePoint3d(4, 1, 2));
  EXPECT_EQ(pl.getPointAt(2, p), Acad::eInvalidIndex);
  ASSERT_EQ(pl.transformBy(AcGeMatrix3d::translation({10, 0, 1})), Acad::eOk);
  pl.getPointAt(0, p);
  EXPECT_EQ(p, AcGePoint3d(11, 1, 3));
}
}  // namespace
