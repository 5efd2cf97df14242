// The parameter, name and progress dialogs without their windows.
#include <gtest/gtest.h>

#include "ui/input_name_dialog.h"
#include "ui/para_set_dialog.h"
#include "ui/progress_dialog.h"

namespace {

CEncircleCalInfo Unusual() {
  CEncircleCalInfo info;
  info.m_bRemoveDashed = false;
  info.m_bVerticalEnds = true;
  info.m_tolPoint.setEqualPoint(0.002);
  info.m_tolPoint.setEqualVector(0.7);
  info.m_tolLine.setEqualPoint(0.01);
  info.m_tolLine.setEqualVector(1e-9);
  info.m_tolFine.setEqualPoint(1e-5);
  info.m_tolFine.setEqualVector(3);
  info.m_dStep = 0.25;
  info.m_dBreakLength = 7.5;
  info.m_nAxisDir = 2;
  return info;
}

TEST(ParaSetDialog, ShowsTheTaskParametersAndWritesThemBackNormalised) {
  CEncircleParaSetDlg dlg;
  dlg.m_info = Unusual();
  dlg.OnInitDialog();
  EXPECT_EQ(dlg.m_nSide, 1);  // any non-zero axis direction shows "下半边"
  EXPECT_EQ(dlg.m_nRemoveDashed, 0);
  EXPECT_EQ(dlg.m_nVerticalEnds, 1);
  EXPECT_EQ(dlg.m_dPointTol, 0.002);  // the point part only
  EXPECT_EQ(dlg.m_dLineTol, 0.01);
  EXPECT_EQ(dlg.m_dFineTol, 1e-5);
  const auto texts = dlg.EditTexts();
  EXPECT_EQ(texts.at(1007), "0.002");
  EXPECT_EQ(texts.at(1024), "1e-05");
  EXPECT_EQ(texts.at(1023), "0.25");
  EXPECT_EQ(texts.at(1026), "7.5");

  // OK with the edits untouched.
  ASSERT_FALSE(dlg.OnOK(texts));
  EXPECT_EQ(dlg.m_info.m_nAxisDir, 1);  // saved back as 1
  EXPECT_FALSE(dlg.m_info.m_bRemoveDashed);
  EXPECT_TRUE(dlg.m_info.m_bVerticalEnds);
  EXPECT_EQ(dlg.m_info.m_tolPoint.equalPoint(), 0.002);
  EXPECT_EQ(dlg.m_info.m_tolPoint.equalVector(), 0.002);  // was 0.7
  EXPECT_EQ(dlg.m_info.m_tolLine.equalVector(), 0.01);
  EXPECT_EQ(dlg.m_info.m_tolFine.equalVector(), 1e-5);
  EXPECT_EQ(dlg.m_info.m_dStep, 0.25);
  EXPECT_EQ(dlg.m_info.m_dBreakLength, 7.5);
}

TEST(ParaSetDialog, DefaultsAndEditedValues) {
  CEncircleParaSetDlg dlg;  // the constructor's values before any task is shown
  EXPECT_EQ(dlg.m_nRemoveDashed, 1);
  EXPECT_EQ(dlg.EditTexts().at(1024), "1e-06");
  dlg.OnInitDialog();  // default parameters
  EXPECT_EQ(dlg.m_nSide, 0);
  dlg.m_nSide = 0;
  dlg.m_nRemoveDashed = 0;
  auto texts = dlg.EditTexts();
  texts[1007] = " 0.01 ";  // blanks around a number are allowed
  texts[1023] = "-2";      // nothing is range-checked
  ASSERT_FALSE(dlg.OnOK(texts));
  EXPECT_EQ(dlg.m_info.m_nAxisDir, 0);
  EXPECT_FALSE(dlg.m_info.m_bRemoveDashed);
  EXPECT_EQ(dlg.m_info.m_tolPoint.equalVector(), 0.01);
  EXPECT_EQ(dlg.m_info.m_dStep, -2);
}

TEST(ParaSetDialog, TextThatIsNoNumberKeepsTheDialogOpen) {
  CEncircleParaSetDlg dlg;
  dlg.OnInitDialog();
  auto texts = dlg.EditTexts();
  texts[1007] = "0.1mm";
  texts[1022] = "";
  const auto error = dlg.OnOK(texts);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->nControl, 1022);  // the line tolerance is read before the point tolerance
  EXPECT_EQ(error->message, kEnterNumber);
  EXPECT_EQ(dlg.m_info.m_tolPoint.equalPoint(), 0.0005);  // nothing written back
  texts[1022] = "0.002";
  EXPECT_EQ(dlg.OnOK(texts)->nControl, 1007);
  texts[1007] = "1e-3";
  EXPECT_FALSE(dlg.OnOK(texts));
  EXPECT_EQ(dlg.m_info.m_tolLine.equalPoint(), 0.002);
  EXPECT_EQ(dlg.m_info.m_tolPoint.equalPoint(), 0.001);
}

TEST(NameDialog, OnlyTheEmptyNameIsRefused) {
  CInputNameDlg dlg;
  EXPECT_EQ(dlg.OnOK(), std::optional<std::string>(kNameMustNotBeEmpty));
  dlg.m_strName = "   ";
  EXPECT_FALSE(dlg.OnOK());
  dlg.m_strName = "铣刀 T1";
  EXPECT_FALSE(dlg.OnOK());
}

// Records what the progress display shows.
struct ShownProgress {
  std::string title, text;
  int lower = -1, upper = -1, position = -1, pumps = 0;
};

class RecordingView : public ProgressView {
 public:
  explicit RecordingView(ShownProgress* shown) : m_shown(shown) {}
  void SetTitle(const std::string& t) override { m_shown->title = t; }
  void SetRange(int l, int u) override { m_shown->lower = l, m_shown->upper = u; }
  void SetPosition(int p) override { m_shown->position = p; }
  void SetText(const std::string& t) override { m_shown->text = t; }
  void PumpMessages() override { ++m_shown->pumps; }

 private:
  ShownProgress* m_shown;
};

class ProgressDisplay : public ::testing::Test {
 protected:
  void SetUp() override {
    SetProgressViewFactory([this] { return std::make_unique<RecordingView>(&shown); }, [this] { return now; });
  }
  void TearDown() override {
    CloseProgress();
    SetProgressViewFactory(nullptr);
  }
  ShownProgress shown;
  std::int64_t now = 1000;
};

TEST_F(ProgressDisplay, TextAtSeveralSteps) {
  OpenProgress();
  EXPECT_EQ(shown.title, "执行进度");
  EXPECT_EQ(shown.upper, 100);
  StepProgress(10, 0);
  EXPECT_EQ(shown.text, "\n总计：10个 当前处理:第0个\n失败：0个 成功：0个\n已经用时：0秒 预计还需：0秒\n");
  now += 12;
  StepProgress(10, 3);
  // 12 × 10 / 3 − 12 = 28; the failure count is always 0 and "成功" is the
  // 0-based number of the item about to be processed.
  EXPECT_EQ(shown.text, "\n总计：10个 当前处理:第3个\n失败：0个 成功：3个\n已经用时：12秒 预计还需：28秒\n");
  EXPECT_EQ(shown.upper, 10);
  EXPECT_EQ(shown.position, 3);
  now += 1;
  StepProgress(10, 7, 0.5);
  // trunc(13 × 10 / 7 − 13) = 5, then trunc(5 × 0.5) = 2.
  EXPECT_EQ(shown.text, "\n总计：10个 当前处理:第7个\n失败：0个 成功：7个\n已经用时：13秒 预计还需：2秒\n");
  EXPECT_EQ(shown.pumps, 3);
}

TEST_F(ProgressDisplay, LargeTotalsWrapTheBarButNotTheText) {
  OpenProgress();
  StepProgress(70000, 1);
  EXPECT_EQ(shown.upper, 70000 - 65536);
  EXPECT_NE(shown.text.find("总计：70000个"), std::string::npos);
}

TEST_F(ProgressDisplay, StepsWhileClosedDoNothing) {
  StepProgress(5, 1);
  EXPECT_EQ(shown.pumps, 0);
  EXPECT_EQ(CurrentProgress(), nullptr);
  OpenProgress();
  SetProgressTitle("正在导出3D（0/5）");
  EXPECT_EQ(shown.title, "正在导出3D（0/5）");
  CloseProgress();
  EXPECT_EQ(CurrentProgress(), nullptr);
  shown.text.clear();
  StepProgress(5, 2);
  SetProgressTitle("x");
  EXPECT_EQ(shown.pumps, 0);
  EXPECT_TRUE(shown.text.empty());
}

TEST(ProgressSummary, IsComposedWithTheSummaryTotal) {
  EXPECT_EQ(ProgressSummary(4, 1, 10), "\n总计：4个 失败：1个 成功：3个 用时：10秒 平均：2.500秒/个\n");
  EXPECT_EQ(EstimateRemaining(100, 3, 0, 1.0), 0);  // nothing to estimate from yet
}

}  // namespace
