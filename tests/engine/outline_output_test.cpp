#include <cmath>
#include <numbers>

#include "engine_fixture.h"
#include "host/ed/messages.h"
#include "util/entity_utils.h"
#include "util/layer_switch.h"

#include <array>

namespace {
constexpr double kPi = std::numbers::pi;

CLineInfo rec(AcGePoint3d a, AcGePoint3d b) {
  CLineInfo r;
  r.m_ptStart = a;
  r.m_ptEnd = b;
  return r;
}

class OutlineOutput : public DrawingTest {
 protected:
  // The vertices of the outline polyline: (x, y, bulge).
  std::vector<std::array<double, 3>> vertices(AcDbObjectId id) {
    std::vector<std::array<double, 3>> out;
    AcDbObjectPointer<AcDbPolyline> p(id, AcDb::kForRead);
    for (const auto& v : p->vertices()) out.push_back({v.point.x, v.point.y, v.bulge});
    return out;
  }
};

TEST_F(OutlineOutput, SharedEndPointsOnceForwardAndBackward) {
  EngineProbe engine;
  AcArray<AcGePoint3d> pts;
  const std::vector<CLineInfo> lines{rec({0, 0, 0}, {1, 0, 0}), rec({1.0004, 0, 0}, {2, 1, 0})};
  engine.GetLineInfoPt(lines, true, false, pts);
  ASSERT_EQ(pts.length(), 3);
  EXPECT_EQ(pts[1], AcGePoint3d(1, 0, 0));
  AcArray<AcGePoint3d> back;
  engine.GetLineInfoPt(lines, false, true, back);
  ASSERT_EQ(back.length(), 3);
  EXPECT_EQ(back[0], AcGePoint3d(2, 1, 0));
  EXPECT_EQ(back[2], AcGePoint3d(0, 0, 0));
}

TEST_F(OutlineOutput, CollinearPointsWithinOneDegree) {
  EngineProbe engine;
  const double kink = std::tan(0.5 * kPi / 180);
  AcArray<AcGePoint3d> pts{{0, 0, 0}, {10, 0, 0}, {20, 10 * kink, 0}};
  engine.RemoveCollinearPoints(pts);
  EXPECT_EQ(pts.length(), 2);
  AcArray<AcGePoint3d> bent{{0, 0, 0}, {10, 0, 0}, {20, 10 * std::tan(2 * kPi / 180), 0}};
  engine.RemoveCollinearPoints(bent);
  EXPECT_EQ(bent.length(), 3);
  // Steep on both sides of vertical: +89.6° and -89.6° count as one line.
  AcArray<AcGePoint3d> vertical{{0, 0, 0}, {0.07, 10, 0}, {0, 20, 0}};
  engine.RemoveCollinearPoints(vertical);
  EXPECT_EQ(vertical.length(), 2);
}

TEST_F(OutlineOutput, QuarterArcBecomesOneBulgeInEitherDirection) {
  // A profile from the axis up, over a quarter arc (centre (10,0), radius
  // 5, from 90° to 0°... drawn counter-clockwise from (15,0) to (10,5)).
  const AcDbObjectId arc = add(new AcDbArc({10, 0, 0}, 5, 0, kPi / 2));
  EngineProbe engine;
  engine.m_curveIds.append(arc);
  // Points of the outline from the arc's start side (15,0) over it to (10,5).
  AcArray<AcGePoint3d> pts{{20, 0, 0}, {15, 0, 0}};
  for (int k = 1; k <= 5; ++k) pts.append({10 + 5 * std::cos(k * kPi / 10), 5 * std::sin(k * kPi / 10), 0});
  pts.append({0, 5, 0});
  AcDbObjectId result;
  engine.DrawPolyLine({}, pts, 0, result);
  ASSERT_FALSE(result.isNull());
  auto v = vertices(result);
  ASSERT_EQ(v.size(), 4u);
  EXPECT_NEAR(v[1][2], std::tan(kPi / 8), 1e-12);  // at (15,0), counter-clockwise to (10,5)
  EXPECT_EQ(v[2][0], 10);
  EXPECT_EQ(v[2][2], 0);
  // The same outline walked the other way gets the negative bulge at (10,5).
  pts.reverse();
  AcDbObjectId back;
  engine.DrawPolyLine({}, pts, 0, back);
  v = vertices(back);
  ASSERT_EQ(v.size(), 4u);
  EXPECT_NEAR(v[1][2], -std::tan(kPi / 8), 1e-12);
  EXPECT_EQ(util::GetLayerName(back), "TempEncircleLine");
  AcDbObjectPointer<AcDbPolyline> p(back, AcDb::kForRead);
  EXPECT_TRUE(p->isClosed());
}

TEST_F(OutlineOutput, EndsSnapToTheAxisAndShortListsMakeNothing) {
  EngineProbe engine;
  AcDbObjectId result;
  engine.DrawPolyLine({}, {{0, 0.3, 0}, {0, 5, 0}, {10, 5, 0}, {10, -0.2, 0}}, 0, result);
  auto v = vertices(result);
  ASSERT_EQ(v.size(), 4u);
  EXPECT_EQ(v.front()[1], 0);
  EXPECT_EQ(v.back()[1], 0);
  AcDbObjectId none;
  engine.DrawPolyLine({}, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, 0, none);  // collinear: 2 points remain
  EXPECT_FALSE(none.isNull());
  AcDbObjectId still;
  engine.DrawPolyLine({}, {{0, 0, 0}}, 0, still);
  EXPECT_TRUE(still.isNull());
}

TEST_F(OutlineOutput, ArcRunsAtAndAcrossAJunctionOfTwoArcs) {
  // Two quarter arcs meeting at J = (10,5): a centred at (10,0) from (15,0)
  // to J, b centred at (10,10) from (5,10) to J.
  const AcDbObjectId a = add(new AcDbArc({10, 0, 0}, 5, 0, kPi / 2));
  const AcDbObjectId b = add(new AcDbArc({10, 10, 0}, 5, kPi, 3 * kPi / 2));
  EngineProbe engine;
  engine.m_curveIds.append(a);
  engine.m_curveIds.append(b);
  EXPECT_EQ(engine.IsPointOnArc({a, b}, {10, 5, 0}).length(), 2);
  EXPECT_EQ(engine.GetAllArc({a, b, line({0, 0, 0}, {1, 1, 0})}).length(), 2);
  // (onB at 200° on b, so that no three points line up and none is dropped)
  const AcGePoint3d j(10, 5, 0), onA(10 + 5 * std::cos(kPi / 4), 5 * std::sin(kPi / 4), 0),
      onB(10 + 5 * std::cos(kPi * 200 / 180), 10 + 5 * std::sin(kPi * 200 / 180), 0);
  // A run that starts on the junction omits its last point; the next step
  // adds it as a plain vertex.
  AcDbObjectId fromJunction;
  engine.DrawPolyLine({}, {j, onB, {5, 10, 0}, {0, 7, 0}}, 5, fromJunction);
  auto v = vertices(fromJunction);
  ASSERT_EQ(v.size(), 3u);
  EXPECT_EQ(v[0][0], 10);
  EXPECT_NEAR(v[0][2], -std::tan(kPi / 8), 1e-12);  // J over b to (5,10)
  EXPECT_EQ(v[1][0], 5);
  EXPECT_EQ(v[1][2], 0);
  // A run over a reaches the junction mid-way: it ends there, and b's run
  // starts at its next point, so the chord from J to it stays straight.
  AcDbObjectId across;
  engine.DrawPolyLine({}, {{20, 0, 0}, {15, 0, 0}, onA, j, onB, {5, 10, 0}, {0, 7, 0}}, 0, across);
  v = vertices(across);
  ASSERT_EQ(v.size(), 6u);
  EXPECT_NEAR(v[1][2], std::tan(kPi / 8), 1e-12);        // (15,0) over a to J
  EXPECT_EQ(v[2][2], 0);                                  // J to onB: straight
  EXPECT_NEAR(v[3][2], -std::tan(kPi / 36), 1e-12);      // onB (200°) over b to (5,10) (180°)
}

TEST_F(OutlineOutput, LinesMoveToTheWorkingLayerKeepingADashedLayersLinetype) {
  const AcDbObjectId hidden = layer("HIDDEN", "DASHED");
  auto* l = new AcDbLine({0, 0, 0}, {1, 0, 0});
  l->setLayer(hidden);
  const AcDbObjectId id = add(l);
  layer("TempEncircleLineClone");  // the drivers make it before this step
  EngineProbe engine;
  engine.SetLineLayerAndType({id}, "TempEncircleLineClone");
  AcDbObjectPointer<AcDbLine> after(id, AcDb::kForRead);
  EXPECT_EQ(after->layer(), "TempEncircleLineClone");
  EXPECT_EQ(after->linetype(), "DASHED");
  after.close();
  engine.DeleteCloneEnts();
  EXPECT_TRUE(id.isErased());
}

TEST(LayerSwitch, CreatesSwitchesRestoresAndReportsFailure) {
  host::ed::takeMessages();
  {
    CLayerSwitch orphan("X");  // no document: the switch fails and says so
    EXPECT_FALSE(orphan.Switched());
  }
  EXPECT_EQ(host::ed::takeMessages(), "\n图层切换失败\n");
  AcApDocument* doc = acDocManagerPtr()->openDocument(std::make_unique<AcDbDatabase>());
  AcDbDatabase* db = doc->database();
  const AcDbObjectId before = db->clayer();
  {
    CLayerSwitch sw("TempEncircleLine");
    EXPECT_TRUE(sw.Switched());
    AcDbObjectPointer<AcDbLayerTableRecord> current(db->clayer(), AcDb::kForRead);
    EXPECT_EQ(current->getName(), "TempEncircleLine");
  }
  EXPECT_EQ(db->clayer(), before);
  EXPECT_EQ(doc->lockCount(), 0);
  acDocManagerPtr()->closeDocument(doc);
}
}  // namespace
