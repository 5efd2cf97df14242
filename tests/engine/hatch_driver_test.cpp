// The boundary-tracing driver: the profile seen from the frame, the frame
// open on the axis side, and nothing left behind.
#include <cmath>
#include <numbers>

#include "engine_fixture.h"
#include "host/ed/editor_input.h"
#include "tool_drawings.h"
#include "util/entity_utils.h"

namespace {
using tooltest::Profile;
using tooltest::Vertex;
const double kQuarter = std::tan(std::numbers::pi / 8);
// Stepped shaft with a convex corner of radius 2 about (15, 3).
const Profile kShaft{{{0, 0, 0}, {0, 4, 0}, {1, 5, 0}, {15, 5, -kQuarter}, {17, 3, 0}, {40, 3, 0}, {40, 0, 0}}};

class HatchDriver : public DrawingTest {
 protected:
  // Corners of the profile are vertices; between (15,5) and (17,3) every
  // vertex lies on the corner arc within a chord's sagitta.
  static void expectShaft(const std::vector<Vertex>& got, double side) {
    ASSERT_GE(got.size(), 9u);
    const std::vector<std::pair<double, double>> head{{0, 0}, {0, 4}, {1, 5}, {15, 5}};
    const std::vector<std::pair<double, double>> tail{{17, 3}, {40, 3}, {40, 0}};
    std::vector<Vertex> ordered = got;
    if (side < 0) std::reverse(ordered.begin(), ordered.end());  // the lower side runs the other way round
    // Start at the left end on the axis.
    const auto start = std::find_if(ordered.begin(), ordered.end(), [](const Vertex& v) { return v.x == 0 && v.y == 0; });
    ASSERT_NE(start, ordered.end());
    std::rotate(ordered.begin(), start, ordered.end());
    for (std::size_t i = 0; i < head.size(); ++i) {
      EXPECT_NEAR(ordered[i].x, head[i].first, 1e-9) << i;
      EXPECT_NEAR(ordered[i].y, side * head[i].second, 1e-9) << i;
    }
    for (std::size_t i = 0; i < tail.size(); ++i) {
      const Vertex& v = ordered[ordered.size() - tail.size() + i];
      EXPECT_NEAR(v.x, tail[i].first, 1e-9) << i;
      EXPECT_NEAR(v.y, side * tail[i].second, 1e-9) << i;
    }
    for (std::size_t i = head.size(); i + tail.size() < ordered.size(); ++i) {
      EXPECT_NEAR(std::hypot(ordered[i].x - 15, ordered[i].y - side * 3), 2, 0.02) << i;
      EXPECT_EQ(ordered[i].bulge, 0);
    }
  }
  void expectNothingLeft(int entitiesBefore, AcDbObjectId layerBefore) {
    EXPECT_EQ(host::allEntities(db()).length(), entitiesBefore + 1);  // the outline only
    EXPECT_EQ(db()->clayer(), layerBefore);
    EXPECT_TRUE(util::SelectAllOnLayer("TempEncircleLineClone").isEmpty());
    AcDbObjectPointer<AcDbLayerTableRecord> layer(db()->layerZero(), AcDb::kForRead);
    EXPECT_FALSE(layer->isOff());
  }
};

TEST_F(HatchDriver, TheUpperProfileIsTheBoundaryBetweenFrameAxisAndDrawing) {
  const AcArray<AcDbObjectId> selection = tooltest::DrawTool(db(), kShaft);
  const int before = host::allEntities(db()).length();
  const AcDbObjectId clayer = db()->clayer();
  // The driver brings the frame on screen: a window 100 wider and higher
  // than the drawing's box (frame 50 beyond it, view a further 50).
  const AcDbObjectId outline = tooltest::RunOutline(db(), selection, {20, 0, 0}, {}, 4);
  ASSERT_FALSE(outline.isNull());
  AcDbObjectPointer<AcDbPolyline> pl(outline, AcDb::kForRead);
  EXPECT_TRUE(pl->isClosed());
  EXPECT_EQ(pl->layer(), "TempEncircleLine");
  pl.close();
  expectShaft(tooltest::VerticesOf(outline), 1);
  expectNothingLeft(before, clayer);
  const AcDbViewTableRecord view = host::ed::currentView(m_doc);
  // The converted entities span x 0 to 40 and y -5 to 11 (the centre and
  // hidden lines are dashed and dropped; this driver keeps the dimension
  // line 6 above the Ø10 step).
  EXPECT_NEAR(view.width(), 40 + 200, 1e-9);
  EXPECT_NEAR(view.height(), 16 + 200, 1e-9);
  EXPECT_NEAR(view.centerPoint().x, 20, 1e-9);
  EXPECT_NEAR(view.centerPoint().y, 3, 1e-9);
}

TEST_F(HatchDriver, TheLowerSideOpensTheFrameAtTheTop) {
  CEncircleCalInfo lower;
  lower.m_nAxisDir = 1;
  const AcArray<AcDbObjectId> selection = tooltest::DrawTool(db(), kShaft);
  const AcDbObjectId outline = tooltest::RunOutline(db(), selection, {20, 0, 0}, lower, 4);
  ASSERT_FALSE(outline.isNull());
  expectShaft(tooltest::VerticesOf(outline), -1);
}

TEST_F(HatchDriver, WithoutAnAxisTheFrameEnclosesTheDrawingAndNoOutlineComesOut) {
  // The frame is closed on all four sides and the region around the seed
  // is bounded by the frame alone: none of its corners lies in the drawing's
  // box, so no polyline is made.
  const AcArray<AcDbObjectId> selection = tooltest::DrawTool(db(), kShaft);
  const int before = host::allEntities(db()).length();
  EngineProbe engine;
  AcDbObjectId outline;
  engine.GetEncircleLineByHatch(selection, outline);
  EXPECT_TRUE(outline.isNull());
  EXPECT_EQ(host::allEntities(db()).length(), before);
  EXPECT_TRUE(util::SelectAllOnLayer("TempEncircleLineClone").isEmpty());
}

TEST_F(HatchDriver, LinesThatCloseNothingWithTheAxisGiveNoOutline) {
  // Two loose lines bound no region with the frame and the axis: the
  // boundary around the seed is the frame closed by the axis, whose corners
  // all lie outside the drawing's box, so no polyline is made.
  AcArray<AcDbObjectId> selection;
  selection.append(line({0, 5, 0}, {40, 5, 0}));
  selection.append(line({0, -5, 0}, {40, -5, 0}));
  const AcDbObjectId marker = line({100, 100, 0}, {101, 100, 0});
  AcDbObjectId result = marker;
  CEncircleCalInfo info;
  const AcDbObjectId axis = line({-10, 0, 0}, {50, 0, 0});
  info.m_idMidLine = axis;
  EngineProbe engine(info);
  engine.GetEncircleLineByHatch(selection, result);
  EXPECT_TRUE(result.isNull());
  EXPECT_TRUE(util::SelectAllOnLayer("TempEncircleLineClone").isEmpty());
}

TEST(VKRectGrow, ANegativeGrowthShrinksAtMostToZeroWidthAboutTheMiddle) {
  CVKRect r(0, 0, 30, 200);
  r.Grow(-50);
  EXPECT_EQ(r.m_ptMin.x, 15);
  EXPECT_EQ(r.m_ptMax.x, 15);
  EXPECT_EQ(r.m_ptMin.y, 50);
  EXPECT_EQ(r.m_ptMax.y, 150);
  r.Grow(50);
  EXPECT_EQ(r.m_ptMin.x, -35);
  EXPECT_EQ(r.m_ptMax.y, 200);
}

}  // namespace
