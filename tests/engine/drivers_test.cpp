#include <cmath>
#include <numbers>

#include "engine_fixture.h"
#include "host/ed/messages.h"
#include "tool_drawings.h"
#include "util/entity_utils.h"

namespace {
constexpr double kPi = std::numbers::pi;
const double kQuarter = std::tan(kPi / 8);  // bulge of a quarter circle
using tooltest::Profile;
using tooltest::Vertex;

// Stepped shaft: chamfer at the left, a corner radius 2 from Ø10 to Ø6.
const Profile kShaft{{{0, 0, 0}, {0, 4, 0}, {1, 5, 0}, {15, 5, -kQuarter}, {17, 3, 0}, {40, 3, 0}, {40, 0, 0}}};
// Ball-nose end mill, radius 6.
const Profile kBallNose{{{0, 0, -kQuarter}, {6, 6, 0}, {40, 6, 0}, {40, 0, 0}}};

class Drivers : public DrawingTest {
 protected:
  static void expectOutline(const std::vector<Vertex>& got, const std::vector<Vertex>& want) {
    std::string seen;
    for (const Vertex& v : got) seen += "(" + std::to_string(v.x) + "," + std::to_string(v.y) + "," + std::to_string(v.bulge) + ") ";
    ASSERT_EQ(got.size(), want.size()) << seen;
    for (std::size_t i = 0; i < want.size(); ++i) {
      EXPECT_NEAR(got[i].x, want[i].x, 1e-9) << i;
      EXPECT_NEAR(got[i].y, want[i].y, 1e-9) << i;
      EXPECT_NEAR(got[i].bulge, want[i].bulge, 1e-9) << i;
    }
  }
  // Model space entity count and the current layer, which a run must leave as they were.
  std::pair<int, AcDbObjectId> state() const { return {host::allEntities(db()).length(), db()->clayer()}; }
};

TEST_F(Drivers, SteppedShaftGivesItsProfileAndLeavesTheDrawingAsItWas) {
  const AcArray<AcDbObjectId> selection = tooltest::DrawTool(db(), kShaft);
  AcDbObjectId firstLine = selection[0];
  const auto before = state();
  host::ed::takeMessages();
  const AcDbObjectId outline = tooltest::RunOutline(db(), selection, {20, 0, 0});
  ASSERT_FALSE(outline.isNull());
  expectOutline(tooltest::VerticesOf(outline), kShaft.points);  // arcs restored, nothing of the lower half
  AcDbObjectPointer<AcDbPolyline> pl(outline, AcDb::kForRead);
  EXPECT_TRUE(pl->isClosed());
  EXPECT_EQ(pl->layer(), "TempEncircleLine");
  pl.close();
  // Only the outline was added; no clone, temporary line or axis is left.
  EXPECT_EQ(state().first, before.first + 1);
  EXPECT_EQ(state().second, before.second);
  EXPECT_TRUE(util::SelectAllOnLayer("TempEncircleLineClone").isEmpty());
  for (AcDbObjectId id : selection) EXPECT_FALSE(id.isErased());
  AcDbObjectPointer<AcDbLine> l(firstLine, AcDb::kForRead);
  EXPECT_EQ(l->startPoint(), AcGePoint3d(0, 0, 0));
  EXPECT_EQ(l->layer(), "0");
  AcDbObjectPointer<AcDbLayerTableRecord> layer(db()->layerZero(), AcDb::kForRead);
  EXPECT_FALSE(layer->isOff());  // layers are shown again
  EXPECT_EQ(host::ed::takeMessages(), "");
}

TEST_F(Drivers, TheSameToolAsOnePolylineOrInsideNestedBlocksGivesTheSameOutline) {
  const AcDbObjectId inner = block("SHAFT");
  AcArray<AcDbObjectId> selection = tooltest::DrawTool(db(), kShaft, inner, true, true);
  const AcDbObjectId outer = block("FRAME");
  add(new AcDbBlockReference({0, 0, 0}, inner), outer);
  const AcDbObjectId ref = add(new AcDbBlockReference({0, 0, 0}, outer));
  AcArray<AcDbObjectId> withRef{ref};
  for (AcDbObjectId id : selection)
    if (!id.isNull() && id.database() && host::allEntities(db()).contains(id)) withRef.append(id);  // the notes
  const AcDbObjectId nested = tooltest::RunOutline(db(), withRef, {20, 0, 0});
  expectOutline(tooltest::VerticesOf(nested), kShaft.points);
  EXPECT_FALSE(ref.isErased());
  const AcArray<AcDbObjectId> asPolyline = tooltest::DrawTool(db(), kShaft, AcDbObjectId::kNull, true);
  expectOutline(tooltest::VerticesOf(tooltest::RunOutline(db(), asPolyline, {20, 0, 0})), kShaft.points);
}

TEST_F(Drivers, DrillPointBallNoseAndTheLowerSide) {
  const double tip = 5 / std::tan(59 * kPi / 180);  // 118° point
  const auto drill = tooltest::RunOutline(db(), tooltest::DrawTool(db(), {{{0, 0, 0}, {tip, 5, 0}, {50, 5, 0}, {50, 0, 0}}}),
                                          {25, 0, 0});
  expectOutline(tooltest::VerticesOf(drill), {{0, 0, 0}, {tip, 5, 0}, {50, 5, 0}, {50, 0, 0}});
  host::eraseObject(drill);
  for (AcDbObjectId id : host::allEntities(db())) host::eraseObject(id);

  const auto ball = tooltest::RunOutline(db(), tooltest::DrawTool(db(), kBallNose), {20, 0, 0});
  expectOutline(tooltest::VerticesOf(ball), kBallNose.points);
  for (AcDbObjectId id : host::allEntities(db())) host::eraseObject(id);

  CEncircleCalInfo lower;
  lower.m_nAxisDir = 1;
  const auto below = tooltest::RunOutline(db(), tooltest::DrawTool(db(), kShaft), {20, 0, 0}, lower);
  std::vector<Vertex> mirrored;
  for (const Vertex& v : kShaft.points) mirrored.push_back({v.x, -v.y, -v.bulge});
  expectOutline(tooltest::VerticesOf(below), mirrored);
}

TEST_F(Drivers, VerticalEndsCloseTheOutlineDownToTheAxis) {
  CEncircleCalInfo info;
  info.m_bVerticalEnds = true;
  const auto outline = tooltest::RunOutline(db(), tooltest::DrawTool(db(), kShaft), {20, 0, 0}, info);
  expectOutline(tooltest::VerticesOf(outline), kShaft.points);
}

TEST_F(Drivers, WithoutAnAxisAllFourPassesRun) {
  const AcArray<AcDbObjectId> selection = tooltest::DrawTool(db(), kShaft);
  EngineProbe engine;  // no mid line: direction 4
  AcDbObjectId outline;
  engine.GetEncircleLine3(selection, outline);
  ASSERT_FALSE(outline.isNull());
  double minY = 0, maxY = 0;
  for (const Vertex& v : tooltest::VerticesOf(outline)) {
    minY = std::min(minY, v.y);
    maxY = std::max(maxY, v.y);
  }
  EXPECT_GT(maxY, 4);   // the upper profile
  EXPECT_LT(minY, -4);  // and the lower one
}

TEST_F(Drivers, TheShiftedDriverGivesTheFirstOneMovedBy1000) {
  const AcArray<AcDbObjectId> selection = tooltest::DrawTool(db(), kShaft);
  const auto plain = tooltest::VerticesOf(tooltest::RunOutline(db(), selection, {20, 0, 0}, {}, 1));
  const auto shifted = tooltest::VerticesOf(tooltest::RunOutline(db(), selection, {20, 0, 0}, {}, 2));
  ASSERT_EQ(plain.size(), shifted.size());
  ASSERT_GE(plain.size(), 4u);
  for (std::size_t i = 0; i < plain.size(); ++i) {
    EXPECT_NEAR(shifted[i].x, plain[i].x + 1000, 1e-9);
    EXPECT_NEAR(shifted[i].y, plain[i].y, 1e-9);
    EXPECT_EQ(plain[i].bulge, 0);  // these drivers restore no arcs
  }
  EXPECT_TRUE(util::SelectAllOnLayer("TempEncircleLineClone").isEmpty());
}

TEST_F(Drivers, DimensionLinesInsideABlockReachTheOutline) {
  // Only the selected entities are filtered by the dimension layer: a
  // dimension line inside a block comes out of the explosion on its own
  // layer and is taken as outline. This is the specified behaviour.
  const AcDbObjectId inner = block("SHAFT");
  tooltest::DrawTool(db(), kShaft, inner);
  const AcDbObjectId ref = add(new AcDbBlockReference({0, 0, 0}, inner));
  const auto v = tooltest::VerticesOf(tooltest::RunOutline(db(), {ref}, {20, 0, 0}));
  double top = 0;
  for (const Vertex& x : v) top = std::max(top, x.y);
  EXPECT_EQ(top, 11);  // the dimension line 6 above the Ø10 step
}

TEST_F(Drivers, ASelectionOnTheDimensionLayerOnlyGivesNoOutline) {
  AcArray<AcDbObjectId> dims;
  dims.append(tooltest::put(db(), new AcDbLine({0, 0, 0}, {10, 5, 0}), "尺寸线"));
  dims.append(tooltest::put(db(), new AcDbLine({10, 5, 0}, {20, 0, 0}), "尺寸线"));
  EXPECT_TRUE(tooltest::RunOutline(db(), dims, {10, 0, 0}).isNull());
  EXPECT_EQ(host::allEntities(db()).length(), 2);
}
}  // namespace
