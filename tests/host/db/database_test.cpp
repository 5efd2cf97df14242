#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host/db/box_selection.h"
#include "host/db/operations.h"

namespace {

AcDbObjectId addLine(AcDbDatabase& db, AcGePoint3d a = {0, 0, 0}, AcGePoint3d b = {1, 0, 0}) {
  AcDbObjectId id;
  EXPECT_EQ(host::appendEntity(&db, new AcDbLine(a, b), id), Acad::eOk);
  return id;
}

TEST(Database, StartsWithTheStandardTablesAndRecords) {
  AcDbDatabase db;
  EXPECT_FALSE(db.modelSpaceId().isNull());
  EXPECT_FALSE(db.paperSpaceId().isNull());
  AcDbObjectPointer<AcDbLayerTableRecord> layer(db.clayer(), AcDb::kForRead);
  ASSERT_TRUE(layer);
  EXPECT_EQ(layer->getName(), "0");
  AcDbObjectPointer<AcDbLinetypeTable> linetypes(db.linetypeTableId(), AcDb::kForRead);
  for (const char* name : {"ByLayer", "BYBLOCK", "continuous"}) EXPECT_TRUE(linetypes->has(name)) << name;
  EXPECT_FALSE(db.groupDictionaryId().isNull());
}

TEST(Database, OpeningRefusesBadIdsWithAStatus) {
  AcDbObject* obj = nullptr;
  EXPECT_EQ(acdbOpenAcDbObject(obj, AcDbObjectId::kNull, AcDb::kForRead), Acad::eNullObjectId);

  AcDbObjectId fromDeadDatabase;
  {
    AcDbDatabase gone;
    fromDeadDatabase = addLine(gone);
  }
  EXPECT_EQ(acdbOpenAcDbObject(obj, fromDeadDatabase, AcDb::kForRead), Acad::eWrongDatabase);
  EXPECT_FALSE(fromDeadDatabase.isValid());
  EXPECT_EQ(acdbOpenAcDbObject(obj, AcDbObjectId(999999, 0), AcDb::kForRead), Acad::eWrongDatabase);

  AcDbDatabase db;
  const AcDbObjectId line = addLine(db);
  AcDbArc* arc = nullptr;
  EXPECT_EQ(acdbOpenObject(arc, line, AcDb::kForRead), Acad::eNotThatKindOfClass);
  EXPECT_EQ(arc, nullptr);
  AcDbCurve* curve = nullptr;
  ASSERT_EQ(acdbOpenObject(curve, line, AcDb::kForRead), Acad::eOk);  // the class tree is followed
  curve->close();
  EXPECT_EQ(obj, nullptr);
}

TEST(Database, ReadersShareAndAWriterIsAlone) {
  AcDbDatabase db;
  const AcDbObjectId id = addLine(db);
  AcDbLine *r1 = nullptr, *r2 = nullptr, *w = nullptr;
  ASSERT_EQ(acdbOpenObject(r1, id, AcDb::kForRead), Acad::eOk);
  ASSERT_EQ(acdbOpenObject(r2, id, AcDb::kForRead), Acad::eOk);
  EXPECT_EQ(acdbOpenObject(w, id, AcDb::kForWrite), Acad::eWasOpenForRead);
  EXPECT_EQ(r1->setStartPoint({5, 5, 0}), Acad::eWasNotOpenForWrite);  // readers cannot change it
  r1->close();
  r2->close();
  ASSERT_EQ(acdbOpenObject(w, id, AcDb::kForWrite), Acad::eOk);
  EXPECT_EQ(acdbOpenObject(r1, id, AcDb::kForRead), Acad::eWasOpenForWrite);
  w->close();
}

TEST(Database, ErasedObjectsStayAddressable) {
  AcDbDatabase db;
  const AcDbObjectId id = addLine(db, {1, 2, 0}, {3, 4, 0});
  const AcDbHandle handle = id.handle();
  ASSERT_EQ(host::eraseObject(id), Acad::eOk);
  EXPECT_TRUE(id.isErased());
  EXPECT_TRUE(id.isValid());
  EXPECT_EQ(id.handle(), handle);
  AcDbLine* line = nullptr;
  EXPECT_EQ(acdbOpenObject(line, id, AcDb::kForRead), Acad::eWasErased);
  ASSERT_EQ(acdbOpenObject(line, id, AcDb::kForWrite, true), Acad::eOk);
  EXPECT_EQ(line->startPoint(), AcGePoint3d(1, 2, 0));
  EXPECT_EQ(line->erase(false), Acad::eOk);  // unerase
  line->close();
  EXPECT_FALSE(id.isErased());
  EXPECT_EQ(host::allEntities(&db).length(), 1);
  EXPECT_EQ(host::eraseObject(AcDbObjectId::kNull), Acad::eOk);
}

TEST(Database, HandlesAreUniqueAndFindTheirObjects) {
  AcDbDatabase db;
  const AcDbObjectId a = addLine(db), b = addLine(db);
  EXPECT_NE(a.handle(), b.handle());
  EXPECT_GT(db.handseed(), b.handle());
  AcDbObjectId found;
  ASSERT_EQ(db.getAcDbObjectId(found, false, b.handle()), Acad::eOk);
  EXPECT_EQ(found, b);
  EXPECT_EQ(db.getAcDbObjectId(found, false, AcDbHandle(0xFFFFFF)), Acad::eKeyNotFound);
  // A file's handle is kept when free; a taken one is replaced.
  AcDbObjectId c, d;
  auto* line1 = new AcDbLine;
  ASSERT_EQ(db.addAcDbObjectWithHandle(c, line1, AcDbHandle(0x5000)), Acad::eOk);
  line1->close();
  EXPECT_EQ(c.handle(), AcDbHandle(0x5000));
  auto* line2 = new AcDbLine;
  ASSERT_EQ(db.addAcDbObjectWithHandle(d, line2, AcDbHandle(0x5000)), Acad::eOk);
  line2->close();
  EXPECT_NE(d.handle(), AcDbHandle(0x5000));
  EXPECT_EQ(AcDbHandle::fromHex("1aF").value(), 0x1AFu);
  EXPECT_EQ(AcDbHandle(0x2B).toHex(), "2B");
}

TEST(Database, NonFiniteCoordinatesAreRefusedAtCreation) {
  AcDbDatabase db;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  AcDbObjectId id;
  EXPECT_EQ(host::appendEntity(&db, new AcDbLine({0, 0, 0}, {nan, 0, 0}), id), Acad::eInvalidInput);
  EXPECT_TRUE(id.isNull());
  EXPECT_EQ(host::appendEntity(&db, new AcDbArc({inf, 0, 0}, 1, 0, 1), id), Acad::eInvalidInput);
  AcDbLine line;
  EXPECT_EQ(line.setEndPoint({0, inf, 0}), Acad::eInvalidInput);
  AcDbPolyline pl;
  EXPECT_EQ(pl.addVertexAt(0, {nan, 0}), Acad::eInvalidInput);
  EXPECT_EQ(host::allEntities(&db).length(), 0);
}

struct Recorder : AcDbDatabaseReactor {
  int appended = 0, modified = 0, erased = 0;
  void objectAppended(const AcDbDatabase*, const AcDbObject*) override { ++appended; }
  void objectModified(const AcDbDatabase*, const AcDbObject*) override { ++modified; }
  void objectErased(const AcDbDatabase*, const AcDbObject*, bool) override { ++erased; }
};

TEST(Database, ReactorsHearOfWriteClosesOnly) {
  AcDbDatabase db;
  const AcDbObjectId id = addLine(db);
  Recorder rec;
  db.addReactor(&rec);
  { AcDbObjectPointer<AcDbLine> r(id, AcDb::kForRead); }
  EXPECT_EQ(rec.modified, 0);
  {
    AcDbObjectPointer<AcDbLine> w(id, AcDb::kForWrite);
    w->setEndPoint({9, 9, 0});
  }
  EXPECT_EQ(rec.modified, 1);
  host::eraseObject(id);
  EXPECT_EQ(rec.erased, 1);
  addLine(db);
  EXPECT_EQ(rec.appended, 1);
  db.removeReactor(&rec);
  addLine(db);
  EXPECT_EQ(rec.appended, 1);
}

TEST(Database, LayersAreFoundWithoutCaseAndCreatedOnRequest) {
  AcDbDatabase db;
  AcDbObjectId id, again;
  EXPECT_EQ(host::findLayer(&db, "TempEncircleLine", id), Acad::eKeyNotFound);
  ASSERT_EQ(host::findLayer(&db, "TempEncircleLine", id, true), Acad::eOk);
  ASSERT_EQ(host::findLayer(&db, "TEMPENCIRCLELINE", again), Acad::eOk);
  EXPECT_EQ(id, again);
  ASSERT_EQ(host::findLayer(&db, "尺寸线", id, true), Acad::eOk);
  EXPECT_EQ(db.setClayer(id), Acad::eOk);
  const AcDbObjectId line = addLine(db);
  AcDbObjectPointer<AcDbLine> l(line, AcDb::kForRead);
  EXPECT_EQ(l->layer(), "尺寸线");  // a new entity takes the current layer
  EXPECT_EQ(l->linetype(), "ByLayer");
  EXPECT_EQ(l->colorIndex(), 256);
  EXPECT_TRUE(host::equalsNoCase("Layer-a", "LAYER-A"));
  EXPECT_FALSE(host::equalsNoCase("尺寸线", "尺寸綫"));
}

TEST(Database, SelectionsByLayerWindowAndCrossing) {
  AcDbDatabase db;
  AcDbObjectId layer;
  host::findLayer(&db, "Outline", layer, true);
  const AcDbObjectId inside = addLine(db, {1, 1, 0}, {4, 4, 0});
  const AcDbObjectId crossing = addLine(db, {4, 4, 0}, {20, 4, 0});
  const AcDbObjectId outside = addLine(db, {30, 30, 0}, {40, 40, 0});
  {
    AcDbObjectPointer<AcDbLine> l(outside, AcDb::kForWrite);
    l->setLayer("OUTLINE");
  }
  const auto window = host::selectByBox(&db, {0, 0, 0}, {10, 10, 0}, host::SelectMode::kWindow);
  const auto cross = host::selectByBox(&db, {10, 10, 0}, {0, 0, 0}, host::SelectMode::kCrossing);
  EXPECT_EQ(window, AcDbObjectIdArray({inside}));
  EXPECT_EQ(cross, AcDbObjectIdArray({inside, crossing}));
  EXPECT_EQ(host::entitiesOnLayer(&db, "outline"), AcDbObjectIdArray({outside}));
  // Many boxes at once select what each selects alone: corners in any
  // order, boxes of different widths that overlap, a box wider than the
  // others that holds entities far to the right of its left edge, and
  // edges that touch an entity's extents exactly.
  const std::vector<host::SelectionBox> boxes = {
      {{10, 10, 0}, {0, 0, 0}}, {{4, 0, 0}, {20, 4, 0}}, {{-100, -1, 0}, {100, 50, 0}},
      {{29, 29, 0}, {41, 41, 0}}, {{30, 30, 0}, {40, 40, 0}}, {{3, 3, 0}, {5, 5, 0}}};
  for (const auto mode : {host::SelectMode::kWindow, host::SelectMode::kCrossing}) {
    const auto all = host::selectByBoxes(&db, boxes, mode);
    ASSERT_EQ(all.size(), boxes.size());
    for (std::size_t i = 0; i < boxes.size(); ++i)
      EXPECT_EQ(all[i], host::selectByBox(&db, boxes[i].corner1, boxes[i].corner2, mode)) << "box " << i;
  }
  EXPECT_EQ(host::selectByBoxes(&db, boxes, host::SelectMode::kWindow)[2],
            AcDbObjectIdArray({inside, crossing, outside}));
}
}  // namespace
