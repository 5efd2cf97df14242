#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "db_helpers.h"
#include "host/db/operations.h"

namespace {
constexpr double kPi = std::numbers::pi;

// A drawing with a block "PART" holding a line, an arc, a circle and a
// nested reference to block "INNER" (one line).
struct BlockDrawing {
  AcDbDatabase db;
  AcDbObjectId part, inner, redLayer;

  BlockDrawing() {
    inner = testdb::Block(&db, "INNER");
    part = testdb::Block(&db, "PART");
    AcDbObjectId id;
    host::appendEntity(&db, new AcDbLine({0, 0, 0}, {10, 0, 0}), id, part);
    host::appendEntity(&db, new AcDbArc({10, 0, 0}, 2, 0, kPi / 2), id, part);
    host::appendEntity(&db, new AcDbCircle({5, 5, 0}, AcGeVector3d::kZAxis, 1), id, part);
    host::appendEntity(&db, new AcDbBlockReference({0, 10, 0}, inner), id, part);
    host::appendEntity(&db, new AcDbLine({0, 0, 0}, {0, 3, 0}), id, inner);
    host::findLayer(&db, "RED", redLayer, true);
  }
  AcDbObjectId insert(AcDbObjectId block, AcGePoint3d at, AcGeScale3d scale = {}, double rotation = 0) {
    auto* ref = new AcDbBlockReference(at, block);
    ref->setScaleFactors(scale);
    ref->setRotation(rotation);
    AcDbObjectId id;
    host::appendEntity(&db, ref, id);
    return id;
  }
  template <class T>
  std::vector<const T*> piecesOf(const AcDbObjectIdArray& ids) {
    std::vector<const T*> out;
    for (const AcDbObjectId id : ids) {
      AcDbObject* obj = nullptr;
      acdbOpenAcDbObject(obj, id, AcDb::kForRead);
      if (const T* t = T::cast(obj)) out.push_back(t);
      obj->close();
    }
    return out;
  }
};

TEST(Explode, BlockReferenceGivesOneLevelAndErasesTheReference) {
  BlockDrawing d;
  const AcDbObjectId ref = d.insert(d.part, {100, 0, 0});
  AcDbObjectIdArray pieces;
  ASSERT_EQ(host::explodeEntity(ref, pieces, true), Acad::eOk);
  ASSERT_EQ(pieces.length(), 4);
  EXPECT_TRUE(ref.isErased());
  // The nested reference stays a reference, moved with the outer one.
  const auto refs = d.piecesOf<AcDbBlockReference>(pieces);
  ASSERT_EQ(refs.size(), 1u);
  EXPECT_EQ(refs[0]->position(), AcGePoint3d(100, 10, 0));
  // Exploding it in turn gives its line.
  AcDbObjectIdArray second;
  ASSERT_EQ(host::explodeEntity(refs[0]->objectId(), second, true), Acad::eOk);
  const auto lines = d.piecesOf<AcDbLine>(second);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0]->endPoint(), AcGePoint3d(100, 13, 0));
}

TEST(Explode, RotatedAndScaledInsertMovesGeometryExactly) {
  BlockDrawing d;
  const AcDbObjectId ref = d.insert(d.part, {5, 5, 0}, {2, 2, 2}, kPi / 2);
  AcDbObjectIdArray pieces;
  host::explodeEntity(ref, pieces, false);
  const auto lines = d.piecesOf<AcDbLine>(pieces);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(lines[0]->endPoint().distanceTo({5, 25, 0}), 0, 1e-12);
  const auto arcs = d.piecesOf<AcDbArc>(pieces);
  ASSERT_EQ(arcs.size(), 1u);
  EXPECT_NEAR(arcs[0]->center().distanceTo({5, 25, 0}), 0, 1e-12);
  EXPECT_NEAR(arcs[0]->radius(), 4, 1e-12);
  EXPECT_NEAR(arcs[0]->startAngle(), kPi / 2, 1e-12);
  EXPECT_NEAR(arcs[0]->endAngle(), kPi, 1e-12);
  EXPECT_FALSE(ref.isErased());
}

TEST(Explode, MirroredInsertKeepsArcsCounterClockwiseAboutPlusZ) {
  BlockDrawing d;
  const AcDbObjectId ref = d.insert(d.part, {0, 0, 0}, {1, -1, 1});  // mirrored about the x axis
  AcDbObjectIdArray pieces;
  host::explodeEntity(ref, pieces, true);
  const auto arcs = d.piecesOf<AcDbArc>(pieces);
  ASSERT_EQ(arcs.size(), 1u);
  const AcDbArc* arc = arcs[0];
  EXPECT_EQ(arc->normal(), AcGeVector3d::kZAxis);
  // The quarter arc from 0° to 90° becomes the one from 270° to 360°.
  EXPECT_NEAR(arc->startAngle(), 3 * kPi / 2, 1e-12);
  EXPECT_NEAR(arc->sweep(), kPi / 2, 1e-12);
  AcGePoint3d s, e;
  arc->getStartPoint(s);
  arc->getEndPoint(e);
  EXPECT_NEAR(s.distanceTo({10, -2, 0}), 0, 1e-12);
  EXPECT_NEAR(e.distanceTo({12, 0, 0}), 0, 1e-12);
}

TEST(Explode, NonUniformScaleTurnsArcsAndCirclesIntoEllipses) {
  BlockDrawing d;
  const AcDbObjectId ref = d.insert(d.part, {0, 0, 0}, {2, 1, 1});
  AcDbObjectIdArray pieces;
  host::explodeEntity(ref, pieces, true);
  EXPECT_TRUE(d.piecesOf<AcDbArc>(pieces).empty());
  EXPECT_TRUE(d.piecesOf<AcDbCircle>(pieces).empty());
  const auto ellipses = d.piecesOf<AcDbEllipse>(pieces);
  ASSERT_EQ(ellipses.size(), 2u);
  for (const AcDbEllipse* e : ellipses) {
    EXPECT_EQ(e->normal(), AcGeVector3d::kZAxis);
    if (e->isClosed()) {  // the circle: radii 2 and 1 around (10, 5)
      EXPECT_NEAR(e->majorAxis().length(), 2, 1e-12);
      EXPECT_NEAR(e->radiusRatio(), 0.5, 1e-12);
      EXPECT_NEAR(e->center().distanceTo({10, 5, 0}), 0, 1e-12);
    } else {  // the arc from (12, 0) to (10, 2) scaled to (24, 0) to (20, 2)
      AcGePoint3d s, t;
      e->getStartPoint(s);
      e->getEndPoint(t);
      EXPECT_NEAR(s.distanceTo({24, 0, 0}), 0, 1e-9);
      EXPECT_NEAR(t.distanceTo({20, 2, 0}), 0, 1e-9);
    }
  }
}

TEST(Explode, LayerZeroAndByBlockPropertiesComeFromTheReference) {
  BlockDrawing d;
  AcDbObjectId onOwnLayer;
  AcDbObjectId blue;
  host::findLayer(&d.db, "BLUE", blue, true);
  auto* line = new AcDbLine({0, 0, 0}, {0, 1, 0});
  line->setLayer(blue);
  host::appendEntity(&d.db, line, onOwnLayer, d.part);
  {
    // The block's first line is on layer 0 and coloured by block.
    AcDbBlockTableRecord* part = nullptr;
    acdbOpenObject(part, d.part, AcDb::kForRead);
    const AcDbObjectId first = part->entityIds()[0];
    part->close();
    AcDbObjectPointer<AcDbLine> l(first, AcDb::kForWrite);
    l->setColorIndex(0);
  }
  auto* ref = new AcDbBlockReference({0, 0, 0}, d.part);
  ref->setLayer(d.redLayer);
  ref->setColorIndex(1);
  AcDbObjectId refId;
  host::appendEntity(&d.db, ref, refId);
  AcDbObjectIdArray pieces;
  host::explodeEntity(refId, pieces, true);
  const auto lines = d.piecesOf<AcDbLine>(pieces);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0]->layer(), "RED");
  EXPECT_EQ(lines[0]->colorIndex(), 1);
  EXPECT_EQ(lines[1]->layer(), "BLUE");
  EXPECT_EQ(lines[1]->colorIndex(), 256);
}

TEST(Explode, PolylineGivesLinesAndArcsAndSkipsZeroLengthSegments) {
  AcDbDatabase db;
  auto* pl = new AcDbPolyline;
  pl->addVertexAt(0, {0, 0});
  pl->addVertexAt(1, {10, 0}, 1.0);  // half circle to (10, 10), counter-clockwise
  pl->addVertexAt(2, {10, 10});
  pl->addVertexAt(3, {10, 10});      // duplicate vertex: a zero-length segment
  pl->addVertexAt(4, {0, 10}, -std::tan(kPi / 8));
  pl->setClosed(true);
  AcDbObjectId id;
  ASSERT_EQ(host::appendEntity(&db, pl, id), Acad::eOk);
  AcDbExtents ext;
  {
    AcDbObjectPointer<AcDbPolyline> p(id, AcDb::kForRead);
    p->getGeomExtents(ext);
  }
  EXPECT_NEAR(ext.maxPoint().x, 15, 1e-12);  // the half circle bulges to x = 15
  AcDbObjectIdArray pieces;
  ASSERT_EQ(host::explodeEntity(id, pieces, true), Acad::eOk);
  ASSERT_EQ(pieces.length(), 4);
  AcDbObjectPointer<AcDbArc> half(pieces[1], AcDb::kForRead);
  ASSERT_TRUE(half);
  EXPECT_NEAR(half->center().distanceTo({10, 5, 0}), 0, 1e-12);
  EXPECT_NEAR(half->radius(), 5, 1e-12);
  EXPECT_NEAR(half->startAngle(), 3 * kPi / 2, 1e-12);
  EXPECT_NEAR(half->endAngle(), kPi / 2, 1e-12);
  AcDbObjectPointer<AcDbArc> quarter(pieces[3], AcDb::kForRead);  // clockwise from (0,10) to (0,0)
  ASSERT_TRUE(quarter);
  EXPECT_NEAR(quarter->sweep(), kPi / 2, 1e-12);
  AcGePoint3d s;
  quarter->getStartPoint(s);
  EXPECT_NEAR(s.distanceTo({0, 0, 0}), 0, 1e-12);  // a negative bulge runs back from its end
}

TEST(Explode, PolylineWithMinusZNormalIsPresentedInWorldCoordinates) {
  AcDbPolyline pl;
  pl.addVertexAt(0, {1, 2}, 0.5);
  pl.addVertexAt(1, {5, 2});
  pl.setNormal({0, 0, -1});
  AcGePoint3d p;
  pl.getPointAt(0, p);
  EXPECT_EQ(p, AcGePoint3d(-1, 2, 0));
  ASSERT_EQ(pl.transformBy(AcGeMatrix3d::kIdentity), Acad::eOk);
  EXPECT_EQ(pl.normal(), AcGeVector3d::kZAxis);
  pl.getPointAt(1, p);
  EXPECT_EQ(p, AcGePoint3d(-5, 2, 0));
  double bulge = 0;
  pl.getBulgeAt(0, bulge);
  EXPECT_EQ(bulge, -0.5);
}

TEST(Explode, MInsertRepeatsAlongItsRotatedAxes) {
  BlockDrawing d;
  auto* grid = new AcDbMInsertBlock;
  grid->setBlockTableRecord(d.inner);
  grid->setArray(3, 2, 10, 20);
  grid->setRotation(kPi / 2);
  AcDbObjectId id;
  host::appendEntity(&d.db, grid, id);
  AcDbObjectIdArray pieces;
  host::explodeEntity(id, pieces, true);
  ASSERT_EQ(pieces.length(), 6);
  const auto lines = d.piecesOf<AcDbLine>(pieces);
  // Column 2, row 1: offset (20, 20) rotated by 90° is (-20, 20).
  EXPECT_NEAR(lines[5]->startPoint().distanceTo({-20, 20, 0}), 0, 1e-12);
}

TEST(DeepClone, ClonesIntoModelSpaceWithAMappingAndAttributes) {
  BlockDrawing d;
  const AcDbObjectId ref = d.insert(d.part, {1, 1, 0});
  {
    AcDbObjectPointer<AcDbBlockReference> r(ref, AcDb::kForWrite);
    auto* att = new AcDbAttribute;
    att->setTag("NO");
    att->setTextString("T-100");
    r->appendAttribute(att);
    att->close();
  }
  AcDbObjectId line;
  host::appendEntity(&d.db, new AcDbLine({0, 0, 0}, {1, 1, 0}), line);
  AcDbIdMapping map;
  ASSERT_EQ(d.db.deepCloneObjects({ref, line}, d.db.modelSpaceId(), map), Acad::eOk);
  AcDbObjectIdArray primary;
  AcDbIdMappingIter it(map);
  for (it.start(); !it.done(); it.next()) {
    AcDbIdPair pair;
    it.getMap(pair);
    EXPECT_TRUE(pair.isCloned());
    EXPECT_NE(pair.key(), pair.value());
    if (pair.isPrimary()) primary.append(pair.value());
  }
  ASSERT_EQ(primary.length(), 2);
  EXPECT_EQ(map.pairs().size(), 3u);  // the attribute came along, not as a primary
  AcDbObjectPointer<AcDbBlockReference> clone(primary[0], AcDb::kForRead);
  ASSERT_TRUE(clone);
  EXPECT_EQ(clone->position(), AcGePoint3d(1, 1, 0));
  ASSERT_EQ(clone->attributeIds().length(), 1);
  AcDbObjectPointer<AcDbAttribute> att(clone->attributeIds()[0], AcDb::kForRead);
  EXPECT_EQ(att->textString(), "T-100");
  EXPECT_EQ(att->ownerId(), primary[0]);
  EXPECT_EQ(host::allEntities(&d.db).length(), 4);
}
}  // namespace
