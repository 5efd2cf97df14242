// Selections by true geometry, and what selections leave out.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "host/db/operations.h"
#include "host/ed/command_line.h"
#include "host/ed/document.h"
#include "host/ed/editor_input.h"
#include "host/ed/messages.h"

namespace {

using host::ed::commandLine;
using host::ed::TextInput;
constexpr double kPi = std::numbers::pi;

struct SelectionTest : ::testing::Test {
  void SetUp() override { m_doc = acDocManager->openDocument(std::make_unique<AcDbDatabase>(), "sel.dxf"); }
  void TearDown() override {
    commandLine().setInput(nullptr);
    acDocManager->closeDocument(m_doc);
    host::ed::takeMessages();
  }
  AcDbDatabase* db() const { return m_doc->database(); }
  AcDbObjectId add(AcDbEntity* e) {
    AcDbObjectId id;
    EXPECT_EQ(host::appendEntity(db(), e, id), Acad::eOk);
    return id;
  }
  AcDbObjectIdArray window(double x1, double y1, double x2, double y2) {
    return host::ed::selectWindow(db(), {x1, y1, 0}, {x2, y2, 0});
  }
  AcDbObjectIdArray crossing(double x1, double y1, double x2, double y2) {
    return host::ed::selectCrossing(db(), {x1, y1, 0}, {x2, y2, 0});
  }
  AcApDocument* m_doc = nullptr;
};

TEST_F(SelectionTest, ArcsAreJudgedByTheirCurveNotTheirBox) {
  // A quarter arc of radius 10 about the origin: its box is (0,0)-(10,10).
  const AcDbObjectId arc = add(new AcDbArc({0, 0, 0}, 10, 0, kPi / 2));
  // A small box inside the arc's box but inside the circle: no contact.
  EXPECT_TRUE(crossing(6, 6, 7, 7).isEmpty());
  // A box that the arc passes through near 45 degrees.
  EXPECT_TRUE(crossing(6.9, 6.9, 7.2, 7.2).contains(arc));
  // A box around the arc's ends but not its middle.
  EXPECT_TRUE(window(-1, -1, 10.5, 7).isEmpty());
  EXPECT_TRUE(window(-1, -1, 10.5, 10.5).contains(arc));
  // A circle touches a box only where its curve passes.
  const AcDbObjectId circle = add(new AcDbCircle({50, 0, 0}, AcGeVector3d::kZAxis, 5));
  EXPECT_TRUE(crossing(48, -1, 52, 1).isEmpty());
  EXPECT_TRUE(crossing(54, -1, 56, 1).contains(circle));
  EXPECT_TRUE(window(44.9, -5.1, 55.1, 5.1).contains(circle));
  EXPECT_TRUE(window(44.9, -5.1, 55.1, 4.9).isEmpty());
}

TEST_F(SelectionTest, BulgedPolylinesAreJudgedByTheirArcs) {
  // From (0,0) to (10,0) with bulge 1: a half circle below the x axis down
  // to (5,-5); its vertices alone say y stays at 0.
  auto* pl = new AcDbPolyline;
  pl->addVertexAt(0, {0, 0}, 1);
  pl->addVertexAt(1, {10, 0}, 0);
  const AcDbObjectId id = add(pl);
  EXPECT_TRUE(window(-1, -1, 11, 1).isEmpty());
  EXPECT_TRUE(window(-1, -5.01, 11, 1).contains(id));
  EXPECT_TRUE(crossing(4, -6, 6, -4.9).contains(id));
  EXPECT_TRUE(crossing(4, -4, 6, -1).isEmpty());  // inside the half circle, away from the curve
}

TEST_F(SelectionTest, HiddenEntitiesAndLayersOffOrFrozenAreOnlyFoundByAll) {
  const AcDbObjectId shown = add(new AcDbLine({0, 0, 0}, {1, 0, 0}));
  auto* hiddenLine = new AcDbLine({0, 1, 0}, {1, 1, 0});
  hiddenLine->setVisibility(AcDb::kInvisible);
  const AcDbObjectId hidden = add(hiddenLine);
  AcDbObjectId offLayer, frozenLayer;
  ASSERT_EQ(host::findLayer(db(), "OFF", offLayer, true), Acad::eOk);
  ASSERT_EQ(host::findLayer(db(), "FROZEN", frozenLayer, true), Acad::eOk);
  {
    AcDbObjectPointer<AcDbLayerTableRecord> off(offLayer, AcDb::kForWrite);
    off->setIsOff(true);
    AcDbObjectPointer<AcDbLayerTableRecord> frozen(frozenLayer, AcDb::kForWrite);
    frozen->setIsFrozen(true);
  }
  auto* onOff = new AcDbLine({0, 2, 0}, {1, 2, 0});
  onOff->setLayer(offLayer);
  const AcDbObjectId lineOff = add(onOff);
  auto* onFrozen = new AcDbLine({0, 3, 0}, {1, 3, 0});
  onFrozen->setLayer(frozenLayer);
  const AcDbObjectId lineFrozen = add(onFrozen);

  EXPECT_EQ(window(-1, -1, 2, 4), (AcDbObjectIdArray{shown}));
  EXPECT_EQ(crossing(-1, -1, 2, 4), (AcDbObjectIdArray{shown}));
  EXPECT_EQ(host::ed::selectAll(db()), (AcDbObjectIdArray{shown, hidden, lineOff, lineFrozen}));

  // Typed answers: handles of hidden entities are not taken, "A" takes them.
  TextInput script({"H " + hidden.handle().toHex() + " " + shown.handle().toHex(), "", "A", ""});
  commandLine().setInput(&script);
  AcDbObjectIdArray ids;
  EXPECT_EQ(host::ed::getSelection("Pick: ", ids), RTNORM);
  EXPECT_EQ(ids, (AcDbObjectIdArray{shown}));
  EXPECT_EQ(host::ed::getSelection("Pick: ", ids), RTNORM);
  EXPECT_EQ(ids.length(), 4);
}

TEST_F(SelectionTest, SelectionSetsFromPromptsAndFilters) {
  const AcDbObjectId line = add(new AcDbLine({0, 0, 0}, {1, 0, 0}));
  auto* pl = new AcDbPolyline;
  pl->addVertexAt(0, {0, 1});
  pl->addVertexAt(1, {1, 1});
  const AcDbObjectId poly = add(pl);
  resbuf* filter = acutBuildList(RTDXF0, "LWPOLYLINE", RTNONE);
  TextInput script({"W -1,-1 2,2", "", "C -1,-1 2,2", "", "P", "", "ESC", "0,0", ""});
  commandLine().setInput(&script);
  ads_name ss;
  const char* prompts[2] = {"请选择包络线", nullptr};
  ASSERT_EQ(acedSSGet(":$", prompts, nullptr, filter, ss), RTNORM);
  std::int32_t n = 0;
  acedSSLength(ss, &n);
  ASSERT_EQ(n, 1);
  ads_name en;
  acedSSName(ss, 0, en);
  AcDbObjectId got;
  acdbGetObjectId(got, en);
  EXPECT_EQ(got, poly);
  acedSSFree(ss);
  EXPECT_NE(host::ed::takeMessages().find("请选择包络线"), std::string::npos);

  AcDbObjectIdArray ids;
  EXPECT_EQ(host::ed::getSelection("", ids), RTNORM);
  EXPECT_EQ(ids, (AcDbObjectIdArray{line, poly}));
  EXPECT_EQ(host::ed::getSelection("", ids), RTNORM);  // previous
  EXPECT_EQ(ids, (AcDbObjectIdArray{line, poly}));
  EXPECT_EQ(host::ed::getSelection("", ids), RTCAN);
  AcGePoint3d p;
  EXPECT_EQ(host::ed::getPoint("Centre: ", p), RTNORM);
  EXPECT_EQ(host::ed::getPoint("Centre: ", p), RTNONE);
  EXPECT_EQ(host::ed::getPoint("Centre: ", p), RTCAN);  // the input ended
  acutRelRb(filter);
}

}  // namespace
