#include <gtest/gtest.h>

#include <numbers>

#include "host/db/operations.h"

namespace {
constexpr double kPi = std::numbers::pi;

TEST(SymbolTable, NamesAreUniqueAndRenamesAreFound) {
  AcDbDatabase db;
  AcDbLayerTable* table = nullptr;
  ASSERT_EQ(db.getLayerTable(table, AcDb::kForWrite), Acad::eOk);
  auto* a = new AcDbLayerTableRecord;
  a->setName("Axis");
  AcDbObjectId id;
  ASSERT_EQ(table->add(id, a), Acad::eOk);
  auto* dup = new AcDbLayerTableRecord;
  dup->setName("AXIS");
  EXPECT_EQ(table->add(dup), Acad::eDuplicateKey);  // names ignore ASCII case
  delete dup;
  a->setName("中心线");
  a->close();
  EXPECT_FALSE(table->has("Axis"));
  AcDbObjectId found;
  ASSERT_EQ(table->getAt("中心线", found), Acad::eOk);
  EXPECT_EQ(found, id);
  table->close();
}

TEST(Dictionary, ReplacingAnEntryErasesTheOldObject) {
  AcDbDatabase db;
  AcDbObjectPointer<AcDbDictionary> nod(db.namedObjectsDictionaryId(), AcDb::kForWrite);
  AcDbObjectId first, second;
  auto* x1 = new AcDbXrecord;
  nod->setAt("KEY", x1, first);
  x1->close();
  auto* x2 = new AcDbXrecord;
  nod->setAt("key", x2, second);
  x2->close();
  EXPECT_TRUE(first.isErased());
  AcDbObjectId found;
  nod->getAt("KEY", found);
  EXPECT_EQ(found, second);
  EXPECT_EQ(nod->remove("Key"), Acad::eOk);
  EXPECT_FALSE(nod->has("KEY"));
}

TEST(Opening, ASingleReaderCanUpgradeToWriter) {
  AcDbDatabase db;
  AcDbObjectId id;
  host::appendEntity(&db, new AcDbLine({0, 0, 0}, {1, 0, 0}), id);
  AcDbLine* line = nullptr;
  acdbOpenObject(line, id, AcDb::kForRead);
  AcDbLine* other = nullptr;
  acdbOpenObject(other, id, AcDb::kForRead);
  EXPECT_EQ(line->upgradeOpen(), Acad::eWasOpenForRead);  // two readers
  other->close();
  ASSERT_EQ(line->upgradeOpen(), Acad::eOk);
  EXPECT_EQ(line->setEndPoint({2, 0, 0}), Acad::eOk);
  line->close();
  EXPECT_EQ(acdbOpenObject(line, id, AcDb::kForWrite), Acad::eOk);
  line->close();
}

TEST(Polylines, SplineFitFramePointsAreNotDrawn) {
  AcDb2dPolyline pl;
  pl.setPolyType(AcDb::k2dCubicSplinePoly);
  auto vertex = [](double x, double y, int flags) {
    AcDbPolylineVertex v;
    v.position = {x, y, 0};
    v.flags = flags;
    return v;
  };
  pl.appendVertex(vertex(0, 0, 16));   // frame
  pl.appendVertex(vertex(5, 9, 16));   // frame
  pl.appendVertex(vertex(0, 0, 8));    // drawn (fit)
  pl.appendVertex(vertex(3, 2, 8));
  pl.appendVertex(vertex(6, 0, 8));
  AcDbEntityArray pieces;
  ASSERT_EQ(pl.explode(pieces), Acad::eOk);
  ASSERT_EQ(pieces.length(), 2);
  AcDbExtents e;
  pl.getGeomExtents(e);
  EXPECT_EQ(e.maxPoint().y, 2);  // the frame point at y = 9 is not part of the curve
  for (AcDbEntity* p : pieces) delete p;

  AcDb3dPolyline p3;
  p3.appendVertex({0, 0, 0});
  p3.appendVertex({1, 0, 1});
  p3.appendVertex({1, 1, 1});
  p3.setClosed(true);
  AcDbEntityArray segments;
  ASSERT_EQ(p3.explode(segments), Acad::eOk);
  EXPECT_EQ(segments.length(), 3);  // the closing segment included
  for (AcDbEntity* p : segments) delete p;
}

TEST(BlockReference, BlockTransformRoundTripsThroughItsParts) {
  AcDbBlockReference ref({3, 4, 0}, AcDbObjectId::kNull);
  ref.setRotation(kPi / 6);
  ref.setScaleFactors({2, -1.5, 1});
  const AcGeMatrix3d m = ref.blockTransform();
  AcDbBlockReference back;
  ASSERT_EQ(back.setBlockTransform(m), Acad::eOk);
  EXPECT_TRUE(back.blockTransform().isEqualTo(m, 1e-12));
  EXPECT_EQ(back.normal(), AcGeVector3d::kZAxis);
  EXPECT_NEAR(back.scaleFactors().sy, -1.5, 1e-12);
  // Mirroring the reference about the y axis keeps it a +Z insert.
  ASSERT_EQ(back.transformBy(AcGeMatrix3d::mirroring(AcGePoint3d(0, 0, 0), AcGeVector3d::kXAxis)), Acad::eOk);
  EXPECT_EQ(back.normal(), AcGeVector3d::kZAxis);
  EXPECT_NEAR(back.position().distanceTo({-3, 4, 0}), 0, 1e-12);
}

TEST(Hatch, ExtentsFollowBulgedLoops) {
  AcDbHatch hatch;
  AcDbHatch::Loop loop;
  loop.vertices = {{{0, 0}, 0}, {{10, 0}, 1.0}, {{10, 10}, 0}, {{0, 10}, 0}};
  ASSERT_EQ(hatch.appendLoop(loop), Acad::eOk);
  AcDbExtents e;
  ASSERT_EQ(hatch.getGeomExtents(e), Acad::eOk);
  EXPECT_NEAR(e.maxPoint().x, 15, 1e-12);
  EXPECT_NEAR(e.minPoint().y, 0, 1e-12);
}

TEST(ResultBuffers, GroupCodesCarryTheirValueKinds) {
  EXPECT_EQ(groupKind(1), GroupKind::kString);
  EXPECT_EQ(groupKind(5), GroupKind::kHandle);
  EXPECT_EQ(groupKind(10), GroupKind::kPoint);
  EXPECT_EQ(groupKind(40), GroupKind::kReal);
  EXPECT_EQ(groupKind(70), GroupKind::kInt16);
  EXPECT_EQ(groupKind(90), GroupKind::kInt32);
  EXPECT_EQ(groupKind(160), GroupKind::kInt64);
  EXPECT_EQ(groupKind(290), GroupKind::kBool);
  EXPECT_EQ(groupKind(310), GroupKind::kBinary);
  EXPECT_EQ(groupKind(330), GroupKind::kHandle);
  EXPECT_EQ(groupKind(1071), GroupKind::kInt32);
  // Values survive a chain round trip, binary data with embedded zeros too.
  GroupValues in{GroupValue::fromString(310, std::string("a\0b", 3)), GroupValue::fromInt(160, 1LL << 40),
                 GroupValue::fromPoint(11, 1, 2, 3)};
  ResbufChain chain(chainFromValues(in));
  EXPECT_EQ(valuesFromChain(chain.get()), in);
}
}  // namespace
