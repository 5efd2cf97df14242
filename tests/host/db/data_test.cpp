#include <gtest/gtest.h>

#include "host/db/operations.h"

namespace {

TEST(XData, ChainsRoundTripPerApplication) {
  AcDbDatabase db;
  AcDbObjectId id;
  host::appendEntity(&db, new AcDbBlockReference({0, 0, 0}, db.modelSpaceId()), id);
  AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForWrite);
  const double pt[3] = {1, 2, 3};
  ResbufChain first(acutBuildList(1001, "TUKANGE_NAME_IDENTITY", 1000, "T-0815", 1070, 7, 1071, 70000L, 1040, 2.5,
                                  1010, pt, RTNONE));
  ASSERT_EQ(ent->setXData(first.get()), Acad::eOk);
  ResbufChain other(acutBuildList(1001, "OTHER", 1000, "x", RTNONE));
  ASSERT_EQ(ent->setXData(other.get()), Acad::eOk);

  ResbufChain got(ent->xData("tukange_name_identity"));  // application names ignore case
  ASSERT_NE(got.get(), nullptr);
  const GroupValues v = valuesFromChain(got.get());
  ASSERT_EQ(v.size(), 6u);
  EXPECT_EQ(v[0].text, "TUKANGE_NAME_IDENTITY");
  EXPECT_EQ(v[1].text, "T-0815");
  EXPECT_EQ(v[2].integer, 7);
  EXPECT_EQ(v[3].integer, 70000);
  EXPECT_EQ(v[4].real[0], 2.5);
  EXPECT_EQ(v[5].real[2], 3.0);

  // Replacing one application's data leaves the other's alone; an empty run removes it.
  ResbufChain replace(acutBuildList(1001, "TUKANGE_NAME_IDENTITY", 1000, "T-0816", RTNONE));
  ent->setXData(replace.get());
  ResbufChain all(ent->xData());
  const GroupValues both = valuesFromChain(all.get());
  ASSERT_EQ(both.size(), 4u);
  EXPECT_EQ(both[0].text, "OTHER");
  EXPECT_EQ(both[3].text, "T-0816");
  ResbufChain remove(acutBuildList(1001, "OTHER", RTNONE));
  ent->setXData(remove.get());
  EXPECT_EQ(ent->xData("OTHER"), nullptr);
  ResbufChain bad(acutBuildList(1000, "no application", RTNONE));
  EXPECT_EQ(ent->setXData(bad.get()), Acad::eInvalidInput);
}

TEST(Dictionary, XrecordUnderANewDictionaryOfTheNamedObjects) {
  AcDbDatabase db;
  AcDbObjectId dictId, recId;
  {
    AcDbDictionary* nod = nullptr;
    ASSERT_EQ(db.getNamedObjectsDictionary(nod, AcDb::kForWrite), Acad::eOk);
    auto* dict = new AcDbDictionary;
    ASSERT_EQ(nod->setAt("VKDJBLX", dict, dictId), Acad::eOk);
    nod->close();
    auto* xrec = new AcDbXrecord;
    ResbufChain data(acutBuildList(90, 2L, 90, 1L, 1, "任务一", 70, 1, 40, 0.0005, RTNONE));
    xrec->setFromRbChain(*data.get());
    ASSERT_EQ(dict->setAt("BLX", xrec, recId), Acad::eOk);
    xrec->close();
    dict->close();
  }
  AcDbObjectPointer<AcDbDictionary> nod(db.namedObjectsDictionaryId(), AcDb::kForRead);
  AcDbObjectId found;
  ASSERT_EQ(nod->getAt("vkdjblx", found), Acad::eOk);
  EXPECT_EQ(found, dictId);
  AcDbObjectPointer<AcDbDictionary> dict(found, AcDb::kForRead);
  ASSERT_EQ(dict->getAt("BLX", found), Acad::eOk);
  AcDbObjectPointer<AcDbXrecord> xrec(found, AcDb::kForRead);
  resbuf* chain = nullptr;
  ASSERT_EQ(xrec->rbChain(&chain), Acad::eOk);
  ResbufChain owned(chain);
  ASSERT_NE(chain, nullptr);
  EXPECT_EQ(chain->restype, 90);
  EXPECT_EQ(chain->resval.rlong, 2);
  EXPECT_STREQ(chain->rbnext->rbnext->resval.rstring, "任务一");
  EXPECT_EQ(chain->rbnext->rbnext->rbnext->resval.rint, 1);
  EXPECT_EQ(chain->rbnext->rbnext->rbnext->rbnext->resval.rreal, 0.0005);
  EXPECT_EQ(xrec->ownerId(), dictId);
  EXPECT_FALSE(dict->has("missing"));
}

TEST(Group, ErasingAGroupErasesItsMembersRecursively) {
  AcDbDatabase db;
  AcDbObjectId a, b, c, inner, outer;
  host::appendEntity(&db, new AcDbLine({0, 0, 0}, {1, 0, 0}), a);
  host::appendEntity(&db, new AcDbLine({0, 0, 0}, {0, 1, 0}), b);
  host::appendEntity(&db, new AcDbLine({0, 0, 0}, {1, 1, 0}), c);
  AcDbObjectPointer<AcDbDictionary> groups(db.groupDictionaryId(), AcDb::kForWrite);
  auto* g1 = new AcDbGroup("inner");
  groups->setAt("INNER", g1, inner);
  g1->append(b);
  g1->close();
  auto* g2 = new AcDbGroup("outer");
  groups->setAt("OUTER", g2, outer);
  g2->append(a);
  g2->append(inner);
  g2->close();
  groups.close();
  ASSERT_EQ(host::eraseObject(outer), Acad::eOk);
  EXPECT_TRUE(a.isErased());
  EXPECT_TRUE(b.isErased());
  EXPECT_FALSE(c.isErased());
  EXPECT_FALSE(outer.isErased());  // the group itself stays
}

TEST(ExtensionDictionary, IsOwnedByItsObject) {
  AcDbDatabase db;
  AcDbObjectId id;
  host::appendEntity(&db, new AcDbLine({0, 0, 0}, {1, 0, 0}), id);
  AcDbObjectPointer<AcDbLine> line(id, AcDb::kForWrite);
  ASSERT_EQ(line->createExtensionDictionary(), Acad::eOk);
  const AcDbObjectId ext = line->extensionDictionary();
  AcDbObjectPointer<AcDbDictionary> dict(ext, AcDb::kForRead);
  ASSERT_TRUE(dict);
  EXPECT_EQ(dict->ownerId(), id);
  EXPECT_EQ(line->createExtensionDictionary(), Acad::eAlreadyInDb);
}
}  // namespace
