#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "host/db/curves.h"
#include "host/ge/circ_arc3d.h"
#include "host/ge/ellip_arc3d.h"
#include "host/ge/nurb_curve3d.h"

namespace {
constexpr double kPi = std::numbers::pi;

AcGeNurbCurve3d rationalQuarterCircle() {
  const double w = std::sqrt(2.0) / 2;
  return AcGeNurbCurve3d(2, {0, 0, 0, 1, 1, 1}, {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {1, w, 1});
}

TEST(NurbCurve3d, RationalQuarterCircleIsExact) {
  const AcGeNurbCurve3d c = rationalQuarterCircle();
  for (int i = 0; i <= 20; ++i) {
    const AcGePoint3d p = c.evalPoint(i / 20.0);
    EXPECT_NEAR(std::hypot(p.x, p.y), 1.0, 1e-14) << i;
  }
  EXPECT_NEAR(c.length(), kPi / 2, kPi / 2 * 1e-9);
  EXPECT_EQ(c.startPoint(), AcGePoint3d(1, 0, 0));
  EXPECT_NEAR(c.endPoint().distanceTo({0, 1, 0}), 0, 1e-15);
}

TEST(NurbCurve3d, DerivativeMatchesFiniteDifferences) {
  const AcGeNurbCurve3d c(3, {0, 0, 0, 0, 0.3, 0.7, 1, 1, 1, 1},
                          {{0, 0, 0}, {1, 2, 0}, {3, 3, 1}, {4, 0, 0}, {6, 1, 0}, {7, 3, 0}}, {1, 2, 0.5, 1, 3, 1});
  for (double t : {0.05, 0.3, 0.5, 0.9}) {
    const double h = 1e-6;
    const AcGeVector3d fd = (c.evalPoint(t + h) - c.evalPoint(t - h)) / (2 * h);
    EXPECT_LT((c.evalDeriv(t) - fd).length(), 1e-5 * fd.length()) << t;
  }
}

TEST(NurbCurve3d, FitPointInterpolationPassesThroughEveryPoint) {
  const AcGePoint3dArray fit{{0, 0, 0}, {2, 1, 0}, {5, 1.5, 0}, {7, 0, 0}, {9, -2, 0}};
  const AcGeNurbCurve3d c = AcGeNurbCurve3d::interpolate(fit, {}, {});
  ASSERT_TRUE(c.isValid());
  EXPECT_EQ(c.numControlPoints(), fit.length() + 2);
  for (const auto& p : fit) EXPECT_LT(c.closestPointTo(p).distanceTo(p), 1e-9);
  EXPECT_EQ(c.startPoint(), fit.first());
  EXPECT_NEAR(c.endPoint().distanceTo(fit.last()), 0, 1e-12);
  // Given end tangents are honoured in direction.
  const AcGeNurbCurve3d t = AcGeNurbCurve3d::interpolate(fit, {0, 1, 0}, {1, 0, 0});
  EXPECT_LT((t.evalDeriv(0).normal() - AcGeVector3d(0, 1, 0)).length(), 1e-12);
  EXPECT_LT((t.evalDeriv(1).normal() - AcGeVector3d(1, 0, 0)).length(), 1e-12);
}

TEST(EllipArc3d, LengthMatchesTheCompleteEllipticIntegral) {
  // Perimeter of the ellipse with semi-axes 2 and 1: 4·a·E(e²), e² = 3/4.
  const AcGeEllipArc3d e({0, 0, 0}, {1, 0, 0}, {0, 1, 0}, 2, 1, 0, 2 * kPi);
  EXPECT_NEAR(e.length(), 9.688448220547675, 9.7e-9);
  const AcGeEllipArc3d quarter({5, 5, 0}, {0, 1, 0}, {-1, 0, 0}, 2, 1, 0, kPi / 2);
  EXPECT_NEAR(quarter.length(), 9.688448220547675 / 4, 1e-9);
}

TEST(Curve3d, SamplesSpreadEvenlyFromStartToEnd) {
  const AcGeCircArc3d arc({0, 0, 0}, AcGeVector3d::kZAxis, AcGeVector3d::kXAxis, 1, 0, kPi / 2);
  AcGePoint3dArray pts;
  arc.getSamplePoints(3, pts);
  ASSERT_EQ(pts.length(), 3);
  EXPECT_EQ(pts[0], arc.startPoint());
  EXPECT_EQ(pts[2], arc.endPoint());
  EXPECT_NEAR(pts[1].distanceTo({std::sqrt(0.5), std::sqrt(0.5), 0}), 0, 1e-15);
  EXPECT_NEAR(arc.length(), kPi / 2, 1e-15);
}

TEST(Curve3d, ArcExtentsIncludeQuadrantPointsInsideTheSweep) {
  // 45° to 135°: the top quadrant point lies inside, the side ones do not.
  AcDbArc top(AcGePoint3d(10, 20, 0), 2, kPi / 4, 3 * kPi / 4);
  AcDbExtents e;
  ASSERT_EQ(top.getGeomExtents(e), Acad::eOk);
  EXPECT_NEAR(e.maxPoint().y, 22, 1e-12);
  EXPECT_NEAR(e.minPoint().y, 20 + std::sqrt(2.0), 1e-12);
  EXPECT_NEAR(e.minPoint().x, 10 - std::sqrt(2.0), 1e-12);
  // 350° to 10° crosses angle 0: the right quadrant point counts.
  AcDbArc wrap(AcGePoint3d(0, 0, 0), 1, 350 * kPi / 180, 10 * kPi / 180);
  ASSERT_EQ(wrap.getGeomExtents(e), Acad::eOk);
  EXPECT_NEAR(e.maxPoint().x, 1, 1e-12);
  EXPECT_NEAR(e.minPoint().x, std::cos(10 * kPi / 180), 1e-12);
  EXPECT_NEAR(e.maxPoint().y, std::sin(10 * kPi / 180), 1e-12);
}

TEST(Curve3d, SplineExtentsAreTightNotTheControlHull) {
  const double w = std::sqrt(2.0) / 2;
  AcDbSpline s(2, true, false, false, {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {0, 0, 0, 1, 1, 1}, {1, w, 1});
  AcDbExtents e;
  ASSERT_EQ(s.getGeomExtents(e), Acad::eOk);
  EXPECT_NEAR(e.maxPoint().x, 1, 1e-12);
  EXPECT_NEAR(e.maxPoint().y, 1, 1e-12);
  // A bulging cubic: its top lies below its control point.
  AcDbSpline bump(3, false, false, false, {{0, 0, 0}, {1, 4, 0}, {2, 4, 0}, {3, 0, 0}}, {0, 0, 0, 0, 1, 1, 1, 1}, {});
  ASSERT_EQ(bump.getGeomExtents(e), Acad::eOk);
  EXPECT_NEAR(e.maxPoint().y, 3.0, 1e-12);
}

TEST(Curve3d, EllipseDistanceAtParamFollowsTheCurve) {
  AcDbEllipse e(AcGePoint3d(0, 0, 0), AcGeVector3d::kZAxis, AcGeVector3d(2, 0, 0), 0.5);
  double d = 0;
  ASSERT_EQ(e.getDistAtParam(2 * kPi, d), Acad::eOk);
  EXPECT_NEAR(d, 9.688448220547675, 1e-8);
  EXPECT_EQ(e.getDistAtParam(7.0, d), Acad::eInvalidInput);
}
}  // namespace
