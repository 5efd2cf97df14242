// The batch work without the dialog: adding, computing, running and
// exporting tools of tasks, with their states.
#include <filesystem>
#include <numbers>

#include "../engine/engine_fixture.h"
#include "../engine/tool_drawings.h"
#include "host/brep/solid.h"
#include "ui/batch_tasks.h"
#include "ui/progress_dialog.h"
#include "util/entity_utils.h"

namespace {

const double kQuarter = std::tan(std::numbers::pi / 8);

// A stepped shaft with a corner radius, its axis at y = 0, from x0 to x0 + 40.
tooltest::Profile ShaftAt(double x0) {
  return {{{x0, 0, 0}, {x0, 4, 0}, {x0 + 1, 5, 0}, {x0 + 15, 5, -kQuarter}, {x0 + 17, 3, 0}, {x0 + 40, 3, 0},
           {x0 + 40, 0, 0}}};
}

class BatchTasks : public DrawingTest {
 protected:
  void SetUp() override {
    DrawingTest::SetUp();
    m_dir = std::filesystem::temp_directory_path() /
            ("envline_batch_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    std::filesystem::remove_all(m_dir);
    std::filesystem::create_directories(m_dir);
    m_frame = block("FRAME");  // a 100 × 60 rectangle right of its insertion point
    for (auto [a, b] : {std::pair{AcGePoint3d(0, -30, 0), AcGePoint3d(100, -30, 0)},
                        {AcGePoint3d(100, -30, 0), AcGePoint3d(100, 30, 0)},
                        {AcGePoint3d(100, 30, 0), AcGePoint3d(0, 30, 0)},
                        {AcGePoint3d(0, 30, 0), AcGePoint3d(0, -30, 0)}})
      add(new AcDbLine(a, b), m_frame);
  }
  void TearDown() override {
    std::filesystem::remove_all(m_dir);
    DrawingTest::TearDown();
  }

  void frameAt(double x, const char* toolNumber) {
    const AcDbObjectId id = add(new AcDbBlockReference({x, 0, 0}, m_frame));
    AcDbObjectPointer<AcDbEntity> ref(id, AcDb::kForWrite);
    ResbufChain xd(acutBuildList(1001, "TUKANGE_NAME_IDENTITY", 1000, toolNumber, RTNONE));
    EXPECT_EQ(ref->setXData(xd.get()), Acad::eOk);
  }

  CBatchToolInfo toolAt(double x0, const std::string& name) {
    return NewToolItem(name, AcGePoint3d(x0 + 20, 0, 0), tooltest::DrawTool(db(), ShaftAt(x0)));
  }

  int onLayer(const char* layer) const { return util::SelectAllOnLayer(layer).length(); }

  std::filesystem::path m_dir;
  AcDbObjectId m_frame;
};

TEST_F(BatchTasks, ToolNumberComesFromTheFrameAroundTheSelection) {
  frameAt(-30, "T-100");
  const CBatchToolInfo inside = toolAt(0, "");
  const CBatchToolInfo outside = toolAt(200, "");
  EXPECT_EQ(FrameToolNumber(inside.m_arrEntityIds), "T-100");
  EXPECT_EQ(FrameToolNumber(outside.m_arrEntityIds), "");
  EXPECT_EQ(inside.m_nExecState, kBatchNotStarted);
  EXPECT_TRUE(inside.m_idOutline.isNull());
}

TEST_F(BatchTasks, RecomputingErasesTheEarlierOutline) {
  CBatchToolInfo tool = toolAt(0, "A");
  ASSERT_TRUE(ComputeTool(tool, CEncircleCalInfo()));
  const AcDbObjectId first = tool.m_idOutline;
  EXPECT_EQ(tool.m_nExecState, kBatchDone);
  // An outline picked into the tool's entities is dropped from them too.
  tool.m_arrEntityIds.append(first);
  ASSERT_TRUE(ComputeTool(tool, CEncircleCalInfo()));
  EXPECT_TRUE(first.isErased());
  EXPECT_NE(tool.m_idOutline, first);
  EXPECT_FALSE(tool.m_arrEntityIds.contains(first));
  EXPECT_EQ(onLayer("TempEncircleLine"), 1);
  EXPECT_EQ(onLayer("TempEncircleLineClone"), 0);
}

TEST_F(BatchTasks, AFailingToolLeavesItsTaskInErrorThoughLaterToolsSucceed) {
  CBatchTaskInfo task;
  task.m_strName = "任务一";
  task.m_vecTools = {toolAt(0, "A"), toolAt(100, "B"), toolAt(200, "C")};
  for (AcDbObjectId id : task.m_vecTools[1].m_arrEntityIds) util::EraseEntity(id);
  CBatchTaskInfo clean;
  clean.m_vecTools = {toolAt(300, "D")};
  clean.m_nExecState = kBatchError;  // from an earlier run

  std::vector<std::string> seen;
  RunTasks({&task, &clean}, [&](const BatchToolEvent& e) {
    seen.push_back(e.tool->m_strName + (e.ok ? " ok" : " failed: " + e.problem));
  });
  ASSERT_EQ(seen.size(), 4u);
  EXPECT_EQ(seen[0], "A ok");
  EXPECT_EQ(seen[1], "B failed: tool B: none of its entities is left in the drawing");
  EXPECT_EQ(seen[2], "C ok");
  EXPECT_EQ(task.m_nExecState, kBatchError);
  EXPECT_EQ(task.m_vecTools[0].m_nExecState, kBatchDone);
  EXPECT_EQ(task.m_vecTools[1].m_nExecState, kBatchError);
  EXPECT_EQ(task.m_vecTools[2].m_nExecState, kBatchDone);
  EXPECT_EQ(clean.m_nExecState, kBatchDone);  // a new run starts the task again
  EXPECT_EQ(CurrentProgress(), nullptr);       // closed after each task
}

TEST_F(BatchTasks, ExportWritesNamedFilesAndLeavesNoSolid) {
  CBatchTaskInfo task;
  task.m_vecTools = {toolAt(0, "T/1"), toolAt(100, "T/1"), toolAt(200, "未算")};
  RunTasks({&task});
  util::EraseEntity(task.m_vecTools[2].m_idOutline);
  task.m_vecTools[2].m_idOutline = AcDbObjectId::kNull;  // never computed
  BatchExportOptions options;
  options.folder = m_dir.string();
  options.formats = {"sat", "step"};
  std::vector<BatchToolEvent> events;
  ExportTasks({&task}, options, [&](const BatchToolEvent& e) { events.push_back(e); });

  ASSERT_EQ(events.size(), 3u);
  EXPECT_TRUE(std::filesystem::exists(m_dir / "T_1.sat"));
  EXPECT_TRUE(std::filesystem::exists(m_dir / "T_1.step"));
  EXPECT_TRUE(std::filesystem::exists(m_dir / "T_1_2.sat"));  // the same name does not overwrite
  EXPECT_EQ(events[1].files.front(), (m_dir / "T_1_2.sat").string());
  EXPECT_TRUE(events[2].skipped);
  ASSERT_TRUE(events[0].volume);
  // Stepped shaft: r 5 over 14 with a 1 mm chamfer, a corner of radius 2, r 3 over 23.
  EXPECT_GT(*events[0].volume, std::numbers::pi * (9 * 40));
  EXPECT_LT(*events[0].volume, std::numbers::pi * (25 * 40));
  EXPECT_EQ(task.m_vecTools[0].m_nExportState, kBatchDone);
  EXPECT_EQ(task.m_vecTools[1].m_nExportState, kBatchDone);
  EXPECT_EQ(task.m_vecTools[2].m_nExportState, kBatchNotStarted);  // passed over
  EXPECT_EQ(task.m_nExportState, kBatchDone);
  EXPECT_EQ(count<AcDb3dSolid>(), 0);
  EXPECT_EQ(onLayer("EncircleLine3D"), 0);
  EXPECT_EQ(onLayer("TempEncircleLine"), 2);  // the outlines stay
  EXPECT_EQ(db()->clayer(), layer("0"));      // the current layer is given back
}

TEST_F(BatchTasks, AnUnwritableFolderMarksEveryToolAndWritesNothing) {
  CBatchTaskInfo task;
  task.m_vecTools = {toolAt(0, "A"), toolAt(100, "B")};
  RunTasks({&task});
  BatchExportOptions options;
  options.folder = (m_dir / "missing" / "deeper").string();
  int failed = 0;
  ExportTasks({&task}, options, [&](const BatchToolEvent& e) { failed += !e.ok && !e.skipped; });
  EXPECT_EQ(failed, 2);
  EXPECT_EQ(task.m_nExportState, kBatchError);
  EXPECT_EQ(task.m_vecTools[0].m_nExportState, kBatchError);
  EXPECT_FALSE(std::filesystem::exists(m_dir / "missing"));
  EXPECT_EQ(count<AcDb3dSolid>(), 0);
}

TEST(ToolFileName, KeepsChineseAndReplacesSeparators) {
  EXPECT_EQ(ToolFileName("铣刀 0001"), "铣刀 0001");
  EXPECT_EQ(ToolFileName("a/b\\c:d"), "a_b_c_d");
  EXPECT_EQ(ToolFileName(""), "tool");
  EXPECT_EQ(ToolFileName(".."), "tool..");
}

}  // namespace
