#include <gtest/gtest.h>

#include <numbers>

#include "host/ge/matrix3d.h"

namespace {
constexpr double kPi = std::numbers::pi;

TEST(Vector2d, AngleIsInZeroToTwoPi) {
  EXPECT_DOUBLE_EQ(AcGeVector2d(1, 0).angle(), 0.0);
  EXPECT_DOUBLE_EQ(AcGeVector2d(0, 1).angle(), kPi / 2);
  EXPECT_DOUBLE_EQ(AcGeVector2d(-1, 0).angle(), kPi);
  EXPECT_DOUBLE_EQ(AcGeVector2d(0, -1).angle(), 3 * kPi / 2);
  // A tiny negative y must not produce 2π (which would fall outside the range).
  const double a = AcGeVector2d(1, -1e-300).angle();
  EXPECT_GE(a, 0.0);
  EXPECT_LT(a, 2 * kPi);
  EXPECT_DOUBLE_EQ(AcGeVector2d(0, 0).angle(), 0.0);
}

TEST(Point3d, IsEqualToUsesTheEqualPointDistanceInclusively) {
  AcGeTol tol;
  tol.setEqualPoint(0.5);
  EXPECT_TRUE(AcGePoint3d(0, 0, 0).isEqualTo(AcGePoint3d(0.3, 0.4, 0), tol));  // distance exactly 0.5
  EXPECT_FALSE(AcGePoint3d(0, 0, 0).isEqualTo(AcGePoint3d(0.3, 0.41, 0), tol));
}

TEST(Matrix3d, ProductsAndInverseUndoEachOther) {
  const AcGeMatrix3d m = AcGeMatrix3d::translation({3, -2, 1}) *
                         AcGeMatrix3d::rotation(0.7, AcGeVector3d(1, 2, 3), AcGePoint3d(1, 1, 1)) *
                         AcGeMatrix3d::scaling(AcGeVector3d(2, -3, 0.5));
  EXPECT_TRUE((m * m.inverse()).isEqualTo(AcGeMatrix3d::kIdentity, 1e-12));
  AcGePoint3d p(4, 5, 6);
  p.transformBy(m).transformBy(m.inverse());
  EXPECT_NEAR(p.distanceTo({4, 5, 6}), 0, 1e-12);
}

TEST(Matrix3d, RotationKeepsItsCentreAndTurnsCounterClockwise) {
  const AcGeMatrix3d r = AcGeMatrix3d::rotation(kPi / 2, AcGeVector3d::kZAxis, AcGePoint3d(1, 1, 0));
  AcGePoint3d c(1, 1, 0), p(2, 1, 0);
  EXPECT_NEAR(c.transformBy(r).distanceTo({1, 1, 0}), 0, 1e-15);
  EXPECT_NEAR(p.transformBy(r).distanceTo({1, 2, 0}), 0, 1e-15);
}

TEST(Matrix3d, MirroringFlipsAcrossThePlaneAndReportsNegativeDeterminant) {
  const AcGeMatrix3d m = AcGeMatrix3d::mirroring(AcGePoint3d(0, 5, 0), AcGeVector3d::kYAxis);
  AcGePoint3d p(3, 7, 2);
  EXPECT_NEAR(p.transformBy(m).distanceTo({3, 3, 2}), 0, 1e-12);
  EXPECT_LT(m.det(), 0);
  EXPECT_TRUE(m.isUniScaledOrtho());
  EXPECT_FALSE(AcGeMatrix3d::scaling(AcGeVector3d(1, 2, 1)).isUniScaledOrtho());
}

TEST(Matrix3d, PlaneToWorldFollowsTheArbitraryAxisRule) {
  // For the extrusion (0,0,-1) the object x axis is world -x.
  const AcGeMatrix3d m = AcGeMatrix3d::planeToWorld(AcGeVector3d(0, 0, -1));
  AcGePoint3d p(1, 2, 3);
  EXPECT_NEAR(p.transformBy(m).distanceTo({-1, 2, -3}), 0, 1e-15);
  const AcGeMatrix3d up = AcGeMatrix3d::planeToWorld(AcGeVector3d::kZAxis);
  EXPECT_TRUE(up.isEqualTo(AcGeMatrix3d::kIdentity));
}
}  // namespace
