#include <cmath>
#include <numbers>

#include "engine_fixture.h"
#include "util/entity_utils.h"

namespace {
constexpr double kPi = std::numbers::pi;

class InputFilter : public DrawingTest {};

TEST_F(InputFilter, DashedLinesByTheFourCaseSensitiveForms) {
  struct Case {
    const char* linetype;
    bool dropped;
  };
  // Linetype names are unique without regard to case, so each form has a name of its own.
  const Case cases[] = {{"HIDDEN", false},  {"ByLayer", false},    {"DASHDOT", true},      {"dashed", true},
                        {"CENTER2", true},  {"Center_3", true},    {"MyDashedLine", false}, {"tool_center", false}};
  AcArray<AcDbObjectId> ids;
  for (const Case& c : cases) {
    auto* l = new AcDbLine({0, 0, 0}, {1, 0, 0});
    l->setLinetype(linetype(c.linetype));
    ids.append(add(l));
  }
  // A line on a dashed layer but "ByLayer" itself is kept.
  const AcDbObjectId dashedLayer = layer("HIDDEN_LAYER", "DASHED");
  auto* byLayer = new AcDbLine({0, 0, 0}, {1, 0, 0});
  byLayer->setLayer(dashedLayer);
  const AcDbObjectId byLayerId = add(byLayer);
  ids.append(byLayerId);
  const AcArray<AcDbObjectId> all = ids;
  EngineProbe keepAll;
  keepAll.m_info.m_bRemoveDashed = false;
  keepAll.RemoveDashedIds(ids);
  EXPECT_EQ(ids.length(), all.length());
  EngineProbe engine;
  engine.RemoveDashedIds(ids);
  for (std::size_t k = 0; k < std::size(cases); ++k) {
    EXPECT_EQ(!ids.contains(all[static_cast<int>(k)]), cases[k].dropped) << cases[k].linetype;
    EXPECT_EQ(all[static_cast<int>(k)].isErased(), cases[k].dropped) << cases[k].linetype;
  }
  EXPECT_TRUE(ids.contains(byLayerId));
}

TEST_F(InputFilter, LayerFiltersDropByExactName) {
  auto onLayer = [&](const char* name) {
    auto* l = new AcDbLine({0, 0, 0}, {1, 0, 0});
    l->setLayer(layer(name));
    return add(l);
  };
  AcArray<AcDbObjectId> ids{onLayer("尺寸线"), onLayer("A"), onLayer("A2"), onLayer("尺寸线"), onLayer("B")};
  EngineProbe engine;
  engine.RemoveDimLineIds(ids);
  ASSERT_EQ(ids.length(), 3);
  EXPECT_EQ(count<AcDbLine>(), 3);
  engine.RemoveIdsInLayer(ids, {"a", "B"});  // the names compare exactly: "a" is not "A"
  ASSERT_EQ(ids.length(), 2);
  EXPECT_EQ(util::GetLayerName(ids[0]), "A");
  EXPECT_EQ(util::GetLayerName(ids[1]), "A2");
}

TEST_F(InputFilter, AxisValueWithinTheLineTolerance) {
  EngineProbe engine;
  double axis = -1;
  EXPECT_FALSE(engine.GetMidLineAxisValue(axis));
  engine.m_info.m_idMidLine = line({0, 5, 0}, {10, 5.0005, 0});
  ASSERT_TRUE(engine.GetMidLineAxisValue(axis));
  EXPECT_EQ(axis, 5);
  engine.m_info.m_idMidLine = line({3, 0, 0}, {3.0008, 10, 0});
  ASSERT_TRUE(engine.GetMidLineAxisValue(axis));
  EXPECT_EQ(axis, 3);
  engine.m_info.m_idMidLine = line({0, 0, 0}, {5, 5, 0});
  axis = 42;
  EXPECT_FALSE(engine.GetMidLineAxisValue(axis));
  EXPECT_EQ(axis, 42);  // untouched
  engine.m_info.m_idMidLine = line({1, 1, 0}, {1.0002, 1.0002, 0});
  ASSERT_TRUE(engine.GetMidLineAxisValue(axis));  // tiny: horizontal first
  EXPECT_EQ(axis, 1);
}

TEST_F(InputFilter, ArcsBecomeChordsByLength) {
  EngineProbe engine;  // step 0.3
  struct Case {
    double length;
    int lines;
  };
  for (const Case c : {Case{0.5, 1}, Case{0.6, 2}, Case{1.0, 3}}) {
    // An arc of radius 1 and the given length.
    const AcDbObjectId arc = add(new AcDbArc({0, 0, 0}, 1, 0, c.length));
    AcArray<AcDbObjectId> out;
    engine.ConvertCurveToLine(arc, out);
    ASSERT_EQ(out.length(), c.lines) << c.length;
    AcDbObjectPointer<AcDbLine> first(out.first(), AcDb::kForRead);
    EXPECT_LT(first->startPoint().distanceTo({1, 0, 0}), 1e-12);
    AcDbObjectPointer<AcDbLine> last(out.last(), AcDb::kForRead);
    EXPECT_LT(last->endPoint().distanceTo({std::cos(c.length), std::sin(c.length), 0}), 1e-12);
    EXPECT_EQ(first->colorIndex(), 256);
    EXPECT_FALSE(arc.isErased());  // the curve stays
  }
  // A closed curve shorter than two steps gives one null id.
  AcArray<AcDbObjectId> out;
  const AcDbObjectId tiny = add(new AcDbArc({0, 0, 0}, 0.05, 0, 2 * kPi - 1e-9));
  engine.ConvertCurveToLine(tiny, out);
  ASSERT_EQ(out.length(), 1);
  EXPECT_TRUE(out[0].isNull());
}

TEST_F(InputFilter, ConvertToLinesExplodesNestedBlocksAndDropsWhatIsNoOutline) {
  const AcDbObjectId inner = block("INNER");
  add(new AcDbLine({0, 0, 0}, {1, 0, 0}), inner);
  add(new AcDbCircle({0, 0, 0}, AcGeVector3d::kZAxis, 1), inner);
  const AcDbObjectId outer = block("OUTER");
  add(new AcDbBlockReference({0, 10, 0}, inner), outer);
  add(new AcDbArc({0, 0, 0}, 1, 0, kPi / 2), outer);  // length 1.57: trunc(5.2) + 1 = 6 samples, 5 chords
  add(new AcDbText({0, 0, 0}, "no outline"), outer);
  const AcDbObjectId ref = add(new AcDbBlockReference({100, 0, 0}, outer));
  const AcDbObjectId ellipse = add(new AcDbEllipse({0, 0, 0}, AcGeVector3d::kZAxis, {2, 0, 0}, 0.5));
  AcArray<AcDbObjectId> lines;
  EngineProbe engine;
  engine.ConvertToLines({ref, ellipse}, lines);
  EXPECT_TRUE(ref.isErased());
  EXPECT_TRUE(ellipse.isErased());
  EXPECT_EQ(count<AcDbCircle>(), 0);
  EXPECT_EQ(count<AcDbText>(), 0);
  EXPECT_EQ(count<AcDbBlockReference>(), 0);
  ASSERT_EQ(engine.m_curveIds.length(), 1);  // the arc, replaced by chords, kept in the drawing
  EXPECT_FALSE(engine.m_curveIds[0].isErased());
  ASSERT_EQ(lines.length(), 1 + 5);
  for (AcDbObjectId id : lines) {
    AcDbObjectPointer<AcDbLine> l(id, AcDb::kForRead);
    EXPECT_TRUE(l) << "only lines come out";
  }
  AcDbObjectPointer<AcDbLine> innerLine(lines[0], AcDb::kForRead);
  EXPECT_EQ(innerLine->endPoint(), AcGePoint3d(101, 10, 0));  // exploded twice, moved twice
  AcArray<AcDbObjectId> none;
  engine.ConvertToLines({}, none);
  EXPECT_TRUE(none.isEmpty());
}

TEST_F(InputFilter, DuplicatePolylinesByTheirCornersAndPolylineExplosion) {
  auto square = [&](double x0, double y0, double size, double bulge) {
    auto* p = new AcDbPolyline;
    p->addVertexAt(0, {x0, y0}, bulge);
    p->addVertexAt(1, {x0 + size, y0});
    p->addVertexAt(2, {x0 + size, y0 + size});
    p->addVertexAt(3, {x0, y0 + size});
    p->setClosed(true);
    return add(p);
  };
  const AcDbObjectId first = square(0, 0, 10, 0);
  const AcDbObjectId close = square(0.3, 0.3, 10, 0);    // every corner 0.42 away: a duplicate
  const AcDbObjectId far = square(0.5, 0.5, 10, 0);      // 0.71 away: kept
  const AcDbObjectId shaped = square(0.1, 0, 10, -0.2);  // other shape, same box within 0.6: still a duplicate
  AcArray<AcDbObjectId> lines;
  EngineProbe engine;
  engine.ConvertToLines({first, close, far, shaped}, lines);
  for (AcDbObjectId id : {first, close, far, shaped}) EXPECT_TRUE(id.isErased());  // exploded or dropped
  EXPECT_EQ(count<AcDbPolyline>(), 0);
  EXPECT_EQ(lines.length(), 8);  // two squares of four lines
  EXPECT_TRUE(engine.m_curveIds.isEmpty());
}

TEST_F(InputFilter, LayersShowSwitchesEveryLayer) {
  layer("A");
  layer("B");
  EngineProbe engine;
  engine.SetLayersShow(false);
  for (const char* name : {"0", "A", "B"}) {
    AcDbObjectId id;
    host::findLayer(db(), name, id);
    AcDbObjectPointer<AcDbLayerTableRecord> rec(id, AcDb::kForRead);
    EXPECT_TRUE(rec->isOff()) << name;
  }
  engine.SetLayersShow(true);
  AcDbObjectPointer<AcDbLayerTableRecord> zero(db()->layerZero(), AcDb::kForRead);
  EXPECT_FALSE(zero->isOff());
}
}  // namespace
