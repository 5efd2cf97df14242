#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <string>
#include <vector>

#include "../engine/engine_fixture.h"
#include "host/brep/solid.h"
#include "output/solid_export.h"
#include "output/units.h"

namespace {

// A stepped shaft above the axis y = axisY, from x0 to x0 + 40.
AcDbPolyline* Shaft(double x0, double axisY, bool closed = true) {
  auto* pl = new AcDbPolyline;
  const double pts[][2] = {{0, 0}, {0, 5}, {20, 5}, {22, 3}, {40, 3}, {40, 0}};
  unsigned i = 0;
  for (const auto& p : pts) pl->addVertexAt(i++, {x0 + p[0], axisY + p[1]});
  pl->setClosed(closed);
  return pl;
}

// The shaft's volume: a cylinder r 5 over 20, a frustum 5→3 over 2, a cylinder r 3 over 18.
const double kShaftVolume = std::numbers::pi * (25 * 20 + 2.0 / 3 * (25 + 15 + 9) + 9 * 18);

struct Asked {
  std::string extension, title, proposed;
  int times = 0;
};

class SolidExport : public DrawingTest {
 protected:
  void SetUp() override {
    DrawingTest::SetUp();
    m_dir = std::filesystem::temp_directory_path() /
            ("envline_export_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    std::filesystem::remove_all(m_dir);
    std::filesystem::create_directories(m_dir);
    // A frame block: a 100 × 40 rectangle around its insertion point's right.
    m_frame = block("FRAME");
    for (auto [a, b] : {std::pair{AcGePoint3d(0, -20, 0), AcGePoint3d(100, -20, 0)},
                        {AcGePoint3d(100, -20, 0), AcGePoint3d(100, 20, 0)},
                        {AcGePoint3d(100, 20, 0), AcGePoint3d(0, 20, 0)},
                        {AcGePoint3d(0, 20, 0), AcGePoint3d(0, -20, 0)}})
      add(new AcDbLine(a, b), m_frame);
  }

  AcDbObjectId frameAt(double x, const char* toolNumber) {
    const AcDbObjectId id = add(new AcDbBlockReference({x, 0, 0}, m_frame));
    if (toolNumber) {
      AcDbObjectPointer<AcDbEntity> ref(id, AcDb::kForWrite);
      ResbufChain xd(acutBuildList(1001, "TUKANGE_NAME_IDENTITY", 1000, toolNumber, RTNONE));
      EXPECT_EQ(ref->setXData(xd.get()), Acad::eOk);
    }
    return id;
  }

  // An asker that records what it was asked and answers with answer.
  SavePathAsker asker(std::string answer) {
    return [this, answer](const std::string& ext, const std::string& title, const std::string& proposed) {
      m_asked = {ext, title, proposed, m_asked.times + 1};
      return answer;
    };
  }

  bool alive(AcDbObjectId id) const {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    return bool(e);
  }

  std::filesystem::path m_dir;
  AcDbObjectId m_frame;
  Asked m_asked;
};

TEST_F(SolidExport, FramesCarryToolNumbersAndTheFirstContainingFrameNamesTheOutline) {
  frameAt(0, "T-1");
  frameAt(200, "T-2");
  frameAt(400, nullptr);  // no tool number data
  frameAt(600, "");       // an empty tool number
  frameAt(50, "T-3");     // overlaps the first; later in model space order
  const std::vector<DrawingFrame> frames = CollectDrawingFrames();
  ASSERT_EQ(frames.size(), 3u);
  EXPECT_EQ(frames[0].toolNumber, "T-1");
  EXPECT_EQ(frames[1].toolNumber, "T-2");
  EXPECT_EQ(frames[2].toolNumber, "T-3");
  EXPECT_NEAR(frames[1].box.m_ptMin.x, 200, 1e-9);
  EXPECT_NEAR(frames[1].box.m_ptMax.y, 20, 1e-9);

  EXPECT_EQ(ToolNumberOf(frames, add(Shaft(55, 0))), "T-1");     // inside T-1 and T-3: T-1 comes first
  EXPECT_EQ(ToolNumberOf(frames, add(Shaft(210, 0))), "T-2");
  EXPECT_EQ(ToolNumberOf(frames, add(Shaft(105, 0))), "T-3");    // only T-3 (50..150) holds it
  EXPECT_EQ(ToolNumberOf(frames, add(Shaft(180, 0))), "");       // sticks out of T-2 on the left
  EXPECT_EQ(ToolNumberOf(frames, add(Shaft(410, 0))), "");       // the untagged frame
  // Touching the frame within 1e-6 still counts as inside; 1e-5 beyond does not.
  EXPECT_EQ(ToolNumberOf(frames, add(Shaft(260 + 5e-7, 0))), "T-2");
  EXPECT_EQ(ToolNumberOf(frames, add(Shaft(260 + 1e-5, 0))), "");
  EXPECT_EQ(ToolNumberOf(frames, AcDbObjectId::kNull), "");
}

TEST_F(SolidExport, SavePathsGetSatOnlyWhenTheyHaveNoExtension) {
  EXPECT_EQ(WithExtension("/tmp/T-1", "sat"), "/tmp/T-1.sat");
  EXPECT_EQ(WithExtension("/tmp/T-1.sat", "sat"), "/tmp/T-1.sat");
  EXPECT_EQ(WithExtension("/tmp/T-1.acis", "sat"), "/tmp/T-1.acis");
  EXPECT_EQ(WithExtension("/tmp/v1.2/T-1", "sat"), "/tmp/v1.2/T-1.sat");  // a dot in a folder is no extension
  EXPECT_EQ(WithExtension("", "sat"), "");
}

TEST_F(SolidExport, AnOutlineInAFrameIsWrittenUnderItsToolNumberAndTheSolidGoesAway) {
  frameAt(0, "T-1");
  OutlineExport request;
  request.outline = add(Shaft(10, 0));
  request.formats = {"sat", "step", "stl"};
  std::vector<std::string> messages;
  ExportDetail detail;
  ExportOutline(request, CollectDrawingFrames(), asker((m_dir / "T-1").string()), messages, &detail);

  EXPECT_TRUE(messages.empty());
  EXPECT_EQ(ExportReport(messages), "导出成功");
  EXPECT_EQ(m_asked.times, 1);
  EXPECT_EQ(m_asked.extension, "sat");
  EXPECT_EQ(m_asked.title, "请选择保存三维文件路径(文件名称只能英文)");
  EXPECT_EQ(m_asked.proposed, "T-1");
  EXPECT_EQ(detail.toolNumber, "T-1");
  EXPECT_EQ(detail.route, RevolveRoute::kCurve);
  const std::vector<std::string> expected{(m_dir / "T-1.sat").string(), (m_dir / "T-1.step").string(),
                                          (m_dir / "T-1.stl").string()};
  EXPECT_EQ(detail.files, expected);
  for (const auto& f : expected) EXPECT_GT(std::filesystem::file_size(f), 100u) << f;
  // Deleting the solid is the default; the outline stays.
  EXPECT_TRUE(detail.solid.isNull());
  EXPECT_EQ(count<AcDb3dSolid>(), 0);
  EXPECT_TRUE(alive(request.outline));
}

TEST_F(SolidExport, WithoutAnOutlineTheUserIsToldToComputeOneFirst) {
  std::vector<std::string> messages;
  ExportOutline(OutlineExport{}, {}, asker("never"), messages);
  EXPECT_EQ(messages, std::vector<std::string>{"请先计算包络线"});
  EXPECT_EQ(m_asked.times, 0);
}

TEST_F(SolidExport, AnOpenOutlineWhoseEndMeetsItsStartTakesTheRegionRoute) {
  // Not flagged closed, but the last vertex returns to the first.
  AcDbPolyline* pl = Shaft(10, 0, false);
  pl->addVertexAt(pl->numVerts(), {10, 0});
  OutlineExport request;
  request.outline = add(pl);
  request.bDeleteSolid = false;
  std::vector<std::string> messages;
  ExportDetail detail;
  ExportOutline(request, {}, asker((m_dir / "open.sat").string()), messages, &detail);
  EXPECT_TRUE(messages.empty());
  EXPECT_EQ(detail.route, RevolveRoute::kRegion);
  ASSERT_FALSE(detail.solid.isNull());
  AcDbObjectPointer<AcDb3dSolid> solid(detail.solid, AcDb::kForRead);
  ASSERT_TRUE(solid);
  EXPECT_NEAR(solid->volume(), kShaftVolume, kShaftVolume * 1e-9);
  EXPECT_EQ(m_asked.proposed, "");  // no frame: an empty proposed name
}

TEST_F(SolidExport, FailuresCarryTheToolNumberWhenThereIsOneAndTheDeleteOptionsStillApply) {
  frameAt(0, "T-1");
  const std::vector<DrawingFrame> frames = CollectDrawingFrames();
  std::vector<std::string> messages;

  // An open L that closes nothing: neither route gives a solid.
  for (double x0 : {10.0, 300.0}) {
    OutlineExport request;
    request.outline = add(Shaft(x0, 0, false));
    request.bDeleteOutline = x0 > 100;
    ExportDetail detail;
    ExportOutline(request, frames, asker("never"), messages, &detail);
    EXPECT_EQ(detail.route, RevolveRoute::kNone);
    EXPECT_EQ(alive(request.outline), x0 < 100);
  }
  // A path that cannot be written.
  OutlineExport request;
  request.outline = add(Shaft(10, 0));
  request.bDeleteOutline = true;
  ExportOutline(request, frames, asker((m_dir / "missing" / "T-1.sat").string()), messages);
  EXPECT_FALSE(alive(request.outline));
  EXPECT_EQ(count<AcDb3dSolid>(), 0);

  EXPECT_EQ(m_asked.times, 1);  // only the solid that was made asked for a path
  EXPECT_EQ(messages, (std::vector<std::string>{"T-1生成三维实体失败", "生成三维实体失败", "T-1生成失败"}));
  EXPECT_EQ(ExportReport(messages), "T-1生成三维实体失败\n生成三维实体失败\nT-1生成失败");
}

TEST_F(SolidExport, CancellingIsNoErrorButTheDeleteOptionsApply) {
  for (bool deleteOutline : {false, true}) {
    for (bool deleteSolid : {false, true}) {
      OutlineExport request;
      request.outline = add(Shaft(10, 0));
      request.bDeleteOutline = deleteOutline;
      request.bDeleteSolid = deleteSolid;
      std::vector<std::string> messages;
      ExportDetail detail;
      ExportOutline(request, {}, asker(""), messages, &detail);
      EXPECT_TRUE(messages.empty());
      EXPECT_TRUE(detail.files.empty());
      EXPECT_EQ(alive(request.outline), !deleteOutline);
      EXPECT_EQ(detail.solid.isNull(), deleteSolid);
      if (!deleteSolid) {
        EXPECT_TRUE(alive(detail.solid));
      }
    }
  }
  EXPECT_EQ(count<AcDb3dSolid>(), 2);
  EXPECT_TRUE(std::filesystem::is_empty(m_dir));
}

TEST_F(SolidExport, TheAxisComesFromTheLongestLevelEdgeAndOrientationMovesTheSolid) {
  const AcDbObjectId outline = add(Shaft(10, 7));
  AcGePoint3d centre;
  ASSERT_TRUE(OutlineAxisPoint(outline, centre));
  EXPECT_NEAR(centre.y, 7, 1e-12);  // the 40-long edge on the axis, not the 20-long one at y 12

  auto* slanted = new AcDbPolyline;
  slanted->addVertexAt(0, {0, 0});
  slanted->addVertexAt(1, {10, 5});
  slanted->addVertexAt(2, {20, 11});
  slanted->setClosed(true);
  AcGePoint3d none;
  EXPECT_FALSE(OutlineAxisPoint(add(slanted), none));

  for (SolidOrientation orientation : {SolidOrientation::kDrawing, SolidOrientation::kAxisZ}) {
    const AcDbObjectId id = RevolveOutline(outline, centre, AcGeVector3d::kXAxis, orientation);
    AcDbObjectPointer<AcDb3dSolid> solid(id, AcDb::kForRead);
    ASSERT_TRUE(solid);
    EXPECT_NEAR(solid->volume(), kShaftVolume, kShaftVolume * 1e-9);
    AcDbExtents box;
    ASSERT_EQ(solid->getGeomExtents(box), Acad::eOk);
    if (orientation == SolidOrientation::kDrawing) {
      // As drawn: along x from 10 to 50, about y = 7.
      EXPECT_NEAR(box.minPoint().x, 10, 1e-6);
      EXPECT_NEAR(box.maxPoint().x, 50, 1e-6);
      EXPECT_NEAR(box.minPoint().y, 2, 1e-6);
      EXPECT_NEAR(box.maxPoint().y, 12, 1e-6);
    } else {
      // Along +Z from the origin, centred on the z axis.
      EXPECT_NEAR(box.minPoint().z, 0, 1e-6);
      EXPECT_NEAR(box.maxPoint().z, 40, 1e-6);
      EXPECT_NEAR(box.minPoint().x, -5, 1e-6);
      EXPECT_NEAR(box.maxPoint().y, 5, 1e-6);
    }
  }
}

}  // namespace

namespace {
// The product named in a STEP file's PRODUCT entity.
std::string StepProductName(const std::filesystem::path& path) {
  std::ifstream in(path);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const std::size_t at = text.find("PRODUCT('");
  if (at == std::string::npos) return {};
  const std::size_t from = at + 9;
  return text.substr(from, text.find('\'', from) - from);
}
}  // namespace

TEST_F(SolidExport, FilesCarryMillimetresScaledFromTheDrawingsUnitsAndTheStepProductIsTheToolNumber) {
  struct Case {
    int insunits;
    double factor;
  };
  for (const Case c : {Case{4, 1.0}, Case{1, 25.4}, Case{6, 1000.0}, Case{0, 1.0}}) {
    // A frame of its own for each drawing unit: tool number T-<units>.
    const std::string tool = "T-" + std::to_string(c.insunits);
    frameAt(200 * c.insunits, tool.c_str());
    OutlineExport request;
    request.outline = add(Shaft(200 * c.insunits + 10, 0));
    request.formats = {"sat", "step"};
    request.bDeleteOutline = true;
    request.millimetresPerUnit = MillimetresPerUnit(c.insunits);
    std::vector<std::string> messages;
    const std::filesystem::path sat = m_dir / (tool + ".sat");
    ExportOutline(request, CollectDrawingFrames(), [&](auto&&...) { return sat.string(); }, messages);
    ASSERT_TRUE(messages.empty()) << c.insunits << ": " << ExportReport(messages);
    double volume = 0;
    std::string error;
    const std::filesystem::path step = std::filesystem::path(sat).replace_extension(".step");
    ASSERT_TRUE(host::brep::StepVolume(step.string(), volume, error)) << error;
    const double want = kShaftVolume * c.factor * c.factor * c.factor;
    EXPECT_NEAR(volume, want, want * 1e-6) << "$INSUNITS " << c.insunits;
    EXPECT_EQ(StepProductName(step), tool);
  }
  int code = -1;
  EXPECT_TRUE(UnitsFromName("inch", code));
  EXPECT_EQ(code, 1);
  EXPECT_TRUE(UnitsFromName("M", code));
  EXPECT_EQ(code, 6);
  EXPECT_FALSE(UnitsFromName("furlong", code));
}
