#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <numbers>
#include <string>

#include "host/brep/profile_check.h"
#include "host/brep/solid.h"
#include "host/db/operations.h"

namespace {
constexpr double kPi = std::numbers::pi;
const double kQuarter = std::tan(kPi / 8);

struct P {
  double x, y, bulge;
};

// Pappus: the volume swept by the region of a closed profile above the axis
// y = axisY, V = -π ∮ r² dx over the counter-clockwise boundary; arcs are
// integrated with 40-point composite Gauss quadrature.
double PappusVolume(std::vector<P> pts, double axisY) {
  // A profile below its axis is the mirror image of one above it.
  bool below = true;
  for (const P& p : pts) below = below && p.y <= axisY;
  if (below)
    for (P& p : pts) p = {p.x, 2 * axisY - p.y, -p.bulge};
  double area2 = 0;
  for (std::size_t i = 0; i < pts.size(); ++i) {
    const P& a = pts[i];
    const P& b = pts[(i + 1) % pts.size()];
    area2 += a.x * (b.y - axisY) - b.x * (a.y - axisY);
  }
  const double orient = area2 > 0 ? 1 : -1;  // clockwise lists count negative
  double v = 0;
  for (std::size_t i = 0; i < pts.size(); ++i) {
    const P& a = pts[i];
    const P& b = pts[(i + 1) % pts.size()];
    const double ra = a.y - axisY, rb = b.y - axisY;
    if (a.bulge == 0) {
      v += (b.x - a.x) * (ra * ra + ra * rb + rb * rb) / 3;
      continue;
    }
    AcGePoint2d c;
    double rad, s, e;
    host::arcFromBulge({a.x, ra}, {b.x, rb}, a.bulge, c, rad, s, e);
    double t0 = (AcGeVector2d(a.x - c.x, ra - c.y)).angle(), t1 = (AcGeVector2d(b.x - c.x, rb - c.y)).angle();
    if (a.bulge > 0 && t1 < t0) t1 += 2 * kPi;
    if (a.bulge < 0 && t1 > t0) t1 -= 2 * kPi;
    constexpr int kPieces = 200;
    static const double g[2] = {-0.5773502691896257, 0.5773502691896257};
    for (int k = 0; k < kPieces; ++k) {
      const double lo = t0 + (t1 - t0) * k / kPieces, hi = t0 + (t1 - t0) * (k + 1) / kPieces;
      for (double xi : g) {
        const double t = (lo + hi) / 2 + (hi - lo) / 2 * xi;
        const double r = c.y + rad * std::sin(t);
        v += r * r * (-rad * std::sin(t)) * (hi - lo) / 2;
      }
    }
  }
  return -kPi * v * orient;
}

struct Case {
  const char* name;
  std::vector<P> pts;
  double axisY;
};
void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

std::string Quote(const std::string& s) { return "'" + s + "'"; }

// The shared SAT checker beside the checkout (or where ENVLINE_SATCHECK
// says); empty when there is none, and the SAT files go unchecked.
std::string SatChecker() {
  const char* env = std::getenv("ENVLINE_SATCHECK");
  for (const std::string& path : {std::string(env ? env : ""),
                                 std::string(ENVLINE_SOURCE_DIR "/../shared/tools/satcheck/satcheck.py"),
                                 std::string("/work/shared/tools/satcheck/satcheck.py")})
    if (!path.empty() && std::filesystem::exists(path)) return path;
  return {};
}

class Solids : public testing::TestWithParam<Case> {};

TEST_P(Solids, RevolveToAValidSolidWithItsPappusVolumeInEveryFormat) {
  const Case& c = GetParam();
  AcDbDatabase db;
  auto* pl = new AcDbPolyline;
  for (std::size_t i = 0; i < c.pts.size(); ++i) pl->addVertexAt(static_cast<unsigned>(i), {c.pts[i].x, c.pts[i].y}, c.pts[i].bulge);
  pl->setClosed(true);
  AcDbObjectId id;
  ASSERT_EQ(host::appendEntity(&db, pl, id), Acad::eOk);
  AcDbObjectPointer<AcDbPolyline> outline(id, AcDb::kForRead);
  AcDb3dSolid solid;
  ASSERT_EQ(solid.createRevolvedSolid(outline.get(), {0, c.axisY, 0}, {1, 0, 0}, 2 * kPi, 0, {}), Acad::eOk);
  EXPECT_TRUE(solid.isValid());
  const double pappus = PappusVolume(c.pts, c.axisY);
  EXPECT_NEAR(solid.volume(), pappus, pappus * 1e-9) << c.name;

  const auto dir = std::filesystem::temp_directory_path() / ("envline_solid_" + std::string(c.name));
  std::filesystem::create_directories(dir);
  const std::string sat = (dir / "tool.sat").string(), step = (dir / "tool.step").string(),
                    stl = (dir / "tool.stl").string();
  ASSERT_EQ(AcDbBody::acisOut(sat, {&solid}), Acad::eOk);
  char expect[64];
  std::snprintf(expect, sizeof expect, "%.17g", pappus);
  if (const std::string checker = SatChecker(); !checker.empty()) {
    const std::string check = "/usr/bin/python3 " + checker + " --expect-volume " + std::string(expect) + " " +
                              Quote(sat) + " > " + Quote((dir / "satcheck.txt").string()) + " 2>&1";
    EXPECT_EQ(std::system(check.c_str()), 0) << c.name << ": satcheck failed, see " << (dir / "satcheck.txt");
  }
  std::string error;
  ASSERT_TRUE(host::brep::WriteStep(solid, step, error)) << error;
  double stepVolume = 0;
  ASSERT_TRUE(host::brep::StepVolume(step, stepVolume, error)) << error;
  EXPECT_NEAR(stepVolume, pappus, pappus * 1e-7) << c.name;
  ASSERT_TRUE(host::brep::WriteStl(solid, stl, 0.01, error)) << error;
  EXPECT_TRUE(host::brep::StlIsClosed(stl, error)) << error;
}

INSTANTIATE_TEST_SUITE_P(
    Profiles, Solids,
    testing::Values(
        Case{"cylinder", {{0, 0, 0}, {0, 5, 0}, {20, 5, 0}, {20, 0, 0}}, 0},
        Case{"frustum", {{0, 0, 0}, {0, 3, 0}, {10, 6, 0}, {10, 0, 0}}, 0},
        Case{"pointed_cone", {{0, 0, 0}, {8, 4, 0}, {20, 4, 0}, {20, 0, 0}}, 0},
        Case{"sphere_cap", {{0, 0, -kQuarter}, {5, 5, 0}, {30, 5, 0}, {30, 0, 0}}, 0},
        Case{"convex_torus", {{0, 0, 0}, {0, 5, 0}, {15, 5, -kQuarter}, {17, 3, 0}, {40, 3, 0}, {40, 0, 0}}, 0},
        Case{"concave_torus", {{0, 0, 0}, {0, 3, 0}, {15, 3, kQuarter}, {17, 5, 0}, {40, 5, 0}, {40, 0, 0}}, 0},
        Case{"stepped_shaft", {{0, 0, 0}, {0, 4, 0}, {1, 5, 0}, {18, 5, 0}, {20, 3, 0}, {40, 3, 0}, {40, 0, 0}}, 0},
        Case{"drill_point", {{0, 0, 0}, {3.0043, 5, 0}, {60, 5, 0}, {60, 0, 0}}, 0},
        Case{"axis_not_zero", {{10, 7, 0}, {10, 12, 0}, {30, 12, 0}, {32, 10, 0}, {50, 10, 0}, {50, 7, 0}}, 7},
        Case{"clockwise", {{0, 0, 0}, {40, 0, 0}, {40, 3, kQuarter}, {17, 3, 0}, {15, 5, 0}, {0, 5, 0}}, 0},
        Case{"lower_side", {{0, 0, 0}, {0, -5, 0}, {20, -5, 0}, {22, -3, 0}, {40, -3, 0}, {40, 0, 0}}, 0}),
    [](const testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

TEST(Solids, OpenOutlinesFailTheCurveRouteAndARegionCanCloseThem) {
  AcDbPolyline open;
  for (const auto& [i, x, y] : {std::tuple{0u, 0.0, 0.0}, {1u, 0.0, 5.0}, {2u, 20.0, 5.0}, {3u, 20.0, 0.0}})
    open.addVertexAt(i, {x, y});
  AcDb3dSolid solid;
  EXPECT_EQ(solid.createRevolvedSolid(&open, {0, 0, 0}, {1, 0, 0}, 2 * kPi, 0, {}), Acad::eInvalidInput);
  AcArray<AcDbRegion*> regions;
  EXPECT_NE(AcDbRegion::createFromCurves({&open}, regions), Acad::eOk);  // its ends do not meet
  open.addVertexAt(4, {0, 0});                                          // now they do, though it is not closed
  ASSERT_EQ(AcDbRegion::createFromCurves({&open}, regions), Acad::eOk);
  ASSERT_EQ(regions.length(), 1);
  EXPECT_EQ(solid.createRevolvedSolid(regions[0], {0, 0, 0}, {1, 0, 0}, 2 * kPi, 0, {}), Acad::eOk);
  EXPECT_NEAR(solid.volume(), kPi * 25 * 20, 1e-9);
  delete regions[0];
  AcDbPolyline crossing;
  crossing.addVertexAt(0, {0, -1});
  crossing.addVertexAt(1, {0, 5});
  crossing.addVertexAt(2, {10, 5});
  crossing.setClosed(true);
  EXPECT_EQ(solid.createRevolvedSolid(&crossing, {0, 0, 0}, {1, 0, 0}, 2 * kPi, 0, {}), Acad::eInvalidInput);
}

// The 2D test that stands in for checking the solid must agree with Open
// CASCADE's checker: what it passes revolves into a valid solid, and what it
// rejects is a profile no solid can come from.
TEST(Solids, ProfileShapesAgreeWithTheSolidChecker) {
  struct Shape {
    const char* name;
    std::vector<P> pts;
    host::brep::ProfileShape expect;
  };
  using enum host::brep::ProfileShape;
  const std::vector<Shape> shapes{
      {"tangent arcs, S-curve", {{0, 0, 0}, {0, 3, kQuarter}, {2, 5, -kQuarter}, {4, 7, 0}, {20, 7, 0}, {20, 0, 0}}, kSimple},
      {"arc tangent to lines both ends", {{0, 0, 0}, {0, 5, 0}, {10, 5, -kQuarter}, {12, 3, 0}, {20, 3, 0}, {20, 0, 0}}, kSimple},
      {"half circle on the axis", {{0, 0, -1}, {10, 0, 0}}, kSimple},
      {"bow tie", {{0, 0, 0}, {0, 5, 0}, {10, 0, 0}, {10, 5, 0}, {20, 5, 0}, {20, 0, 0}}, kCrossing},
      {"line back over itself", {{0, 0, 0}, {0, 5, 0}, {10, 5, 0}, {4, 5, 0}, {4, 3, 0}, {20, 3, 0}, {20, 0, 0}}, kCrossing},
      {"arc through a line", {{0, 0, 0}, {0, 5, 0}, {10, 5, 0}, {10, 2, 0}, {4, 2, -1}, {4, 6, 0}, {20, 6, 0}, {20, 0, 0}}, kCrossing},
      {"arc bulging into the profile", {{0, 0, 0}, {0, 5, 0}, {20, 5, 0}, {20, 0, 0.3}}, kSimple},
      {"arc below the axis", {{0, 0, 0}, {0, 5, 0}, {20, 5, 0}, {20, 0, -0.3}}, kCrossing},
      {"touching itself at a point", {{0, 0, 0}, {0, 5, 0}, {10, 5, 0}, {10, 2, 0}, {5, 5, 0}, {5, 1, 0}, {20, 1, 0}, {20, 0, 0}}, kCrossing},
      {"arcs on one circle overlapping", {{0, 0, 0}, {0, 5, 0}, {10, 5, 1}, {10, 15, -1}, {10, 5, 0}, {20, 5, 0}, {20, 0, 0}}, kCrossing},
  };
  for (const Shape& s : shapes) {
    MeridianProfile profile;
    for (const P& p : s.pts) profile.vertices.push_back({p.x, p.y, p.bulge});
    profile.axisPoint = {0, 0, 0};
    profile.axisDir = {1, 0, 0};
    profile.upDir = {0, 1, 0};
    std::string detail;
    EXPECT_EQ(host::brep::CheckProfileShape(profile, detail), s.expect) << s.name << ": " << detail;
    AcDb3dSolid solid;
    const Acad::ErrorStatus made = solid.createFromProfile(profile);
    if (s.expect == host::brep::ProfileShape::kSimple) {
      ASSERT_EQ(made, Acad::eOk) << s.name;
      EXPECT_TRUE(solid.isValid()) << s.name;
    } else {
      EXPECT_NE(made, Acad::eOk) << s.name;
    }
  }
}
}  // namespace
