#include <gtest/gtest.h>

#include "host/db/dictionary.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/ed/document.h"
#include "host/ed/messages.h"
#include "shell/knife_diagram_factory.h"
#include "shell/task_store.h"
#include "tests/shell/sample_tasks.h"

namespace {

AcDbObjectId addLine(AcDbDatabase& db, double y) {
  AcDbObjectId id;
  EXPECT_EQ(host::appendEntity(&db, new AcDbLine({0, y, 0}, {10, y, 0}), id), Acad::eOk);
  return id;
}

GroupValues chainOf(const CBatchTaskList& tasks, const AcDbDatabase& db) {
  VKResBuf out;
  WriteTaskList(tasks, &db, out);
  return valuesFromChain(out.Chain());
}

// Puts values into the drawing as the task record, as another program might.
void putRecord(AcDbDatabase& db, const GroupValues& values) {
  CBatchTaskList none;
  std::vector<std::string> warnings;
  ASSERT_TRUE(SaveTaskList(&db, none, warnings));
  AcDbObjectId dictId, recId;
  AcDbObjectPointer<AcDbDictionary> nod(db.namedObjectsDictionaryId(), AcDb::kForRead);
  ASSERT_EQ(nod->getAt(kTaskDictionaryName, dictId), Acad::eOk);
  AcDbObjectPointer<AcDbDictionary> dict(dictId, AcDb::kForRead);
  ASSERT_EQ(dict->getAt(kTaskRecordName, recId), Acad::eOk);
  AcDbObjectPointer<AcDbXrecord> rec(recId, AcDb::kForWrite);
  rec->setValues(values);
}

struct Loaded {
  bool found = false;
  CBatchTaskList tasks;
  std::vector<std::string> warnings;
};
Loaded load(AcDbDatabase& db) {
  Loaded l;
  l.tasks.resize(3);  // loading replaces whatever was there
  l.found = LoadTaskList(&db, l.tasks, l.warnings);
  return l;
}

TEST(VKResBuf, ReadsBackWhatItWroteAndRaisesOnMissingOrWrongItems) {
  AcDbDatabase db;
  const AcDbObjectId line = addLine(db, 0);
  VKResBuf out;
  out.WriteString("名称");
  out.WriteInt32(-7);
  out.WriteReal(0.1);
  out.WriteBool(true);
  out.WritePoint(AcGePoint3d(1, 2, 3));
  out.WriteObjectId(line);
  out.WriteObjectId(AcDbObjectId::kNull);

  VKResBuf in(out.Chain());
  EXPECT_EQ(in.Remaining(), 7);
  EXPECT_EQ(in.ReadString(), "名称");
  EXPECT_EQ(in.ReadInt32(), -7);
  EXPECT_EQ(in.ReadReal(), 0.1);
  EXPECT_TRUE(in.ReadBool());
  EXPECT_EQ(in.ReadPoint(), AcGePoint3d(1, 2, 3));
  EXPECT_EQ(in.ReadHandle(), line.handle());
  EXPECT_TRUE(in.ReadHandle().isNull());
  EXPECT_TRUE(in.AtEnd());
  try {
    in.ReadInt32();
    FAIL() << "reading past the end must raise";
  } catch (const VKResBuf::Error& e) {
    EXPECT_EQ(e.Code(), VKResBuf::Error::eMissingItem);
    EXPECT_NE(std::string(e.what()).find("item 8"), std::string::npos) << e.what();
  }

  // The kind decides, not the code: a 16-bit integer is no 32-bit one, a
  // string from code 300 is a string.
  ResbufChain other(acutBuildList(300, "x", 70, 5, RTNONE));
  VKResBuf in2(other.get());
  EXPECT_EQ(in2.ReadString(), "x");
  try {
    in2.ReadInt32();
    FAIL() << "a 16-bit integer must not pass for a 32-bit one";
  } catch (const VKResBuf::Error& e) {
    EXPECT_EQ(e.Code(), VKResBuf::Error::eWrongType);
    EXPECT_NE(std::string(e.what()).find("code 70"), std::string::npos) << e.what();
  }
}

TEST(TaskStore, SavesAndLoadsTasksToolsParametersAndReferences) {
  AcDbDatabase db;
  const CBatchTaskList tasks = SampleTasks(db);
  std::vector<std::string> warnings;
  ASSERT_TRUE(SaveTaskList(&db, tasks, warnings));
  EXPECT_TRUE(warnings.empty());

  const Loaded l = load(db);
  EXPECT_TRUE(l.found);
  EXPECT_TRUE(l.warnings.empty());
  EXPECT_EQ(l.tasks, tasks);
  // Parameters come back as both the point and the vector tolerance.
  EXPECT_EQ(l.tasks[1].m_calInfo.m_tolFine.equalVector(), 1e-8);

  // Layout: version 2, three tasks, then the first task's name and states.
  const GroupValues v = chainOf(tasks, db);
  ASSERT_GE(v.size(), 5u);
  EXPECT_EQ(v[0], GroupValue::fromInt(90, 2));
  EXPECT_EQ(v[1], GroupValue::fromInt(90, 3));
  EXPECT_EQ(v[2], GroupValue::fromString(1, "钻头 φ12 批量"));
  EXPECT_EQ(v[3], GroupValue::fromInt(90, kBatchDone));
  EXPECT_EQ(v[4], GroupValue::fromInt(90, kBatchError));
}

TEST(TaskStore, DrawingWithoutRecordLoadsEmptyAndSilently) {
  AcDbDatabase db;
  const Loaded l = load(db);
  EXPECT_FALSE(l.found);
  EXPECT_TRUE(l.tasks.empty());
  EXPECT_TRUE(l.warnings.empty());
}

TEST(TaskStore, VersionOneRecordsKeepDefaultParameters) {
  AcDbDatabase db;
  const AcDbObjectId line = addLine(db, 0);
  putRecord(db, {GroupValue::fromInt(90, 1), GroupValue::fromInt(90, 2),
                 // a task with one tool
                 GroupValue::fromString(1, "A"), GroupValue::fromInt(90, 1), GroupValue::fromInt(90, 0),
                 GroupValue::fromInt(90, 1), GroupValue::fromString(1, "t"), GroupValue::fromPoint(10, 1, 2, 0),
                 GroupValue::fromInt(90, 1), GroupValue::fromString(331, line.handle().toHex()),
                 GroupValue::fromString(331, "0"), GroupValue::fromInt(90, 1), GroupValue::fromInt(90, 0),
                 // an empty task
                 GroupValue::fromString(1, "B"), GroupValue::fromInt(90, 0), GroupValue::fromInt(90, 0),
                 GroupValue::fromInt(90, 0)});
  const Loaded l = load(db);
  ASSERT_EQ(l.tasks.size(), 2u);
  EXPECT_TRUE(l.warnings.empty());
  ASSERT_EQ(l.tasks[0].m_vecTools.size(), 1u);
  EXPECT_EQ(l.tasks[0].m_vecTools[0].m_arrEntityIds, AcDbObjectIdArray{line});
  EXPECT_EQ(l.tasks[1].m_strName, "B");
  const CEncircleCalInfo defaults;
  for (const CBatchTaskInfo& t : l.tasks) {
    EXPECT_EQ(t.m_calInfo.m_dStep, defaults.m_dStep);
    EXPECT_EQ(t.m_calInfo.m_tolPoint.equalPoint(), defaults.m_tolPoint.equalPoint());
    EXPECT_EQ(t.m_calInfo.m_bRemoveDashed, defaults.m_bRemoveDashed);
  }
}

TEST(TaskStore, EveryTruncationOrWrongItemGivesAnEmptyListNeverAPartOne) {
  AcDbDatabase db;
  const CBatchTaskList tasks = SampleTasks(db);
  const GroupValues good = chainOf(tasks, db);
  for (std::size_t n = 0; n < good.size(); ++n) {
    putRecord(db, GroupValues(good.begin(), good.begin() + static_cast<long>(n)));
    const Loaded l = load(db);
    EXPECT_TRUE(l.found);
    EXPECT_TRUE(l.tasks.empty()) << "cut after " << n << " items";
    ASSERT_EQ(l.warnings.size(), 1u) << n;
    EXPECT_NE(l.warnings[0].find("damaged"), std::string::npos) << l.warnings[0];
  }
  for (std::size_t i = 0; i < good.size(); ++i) {
    GroupValues bad = good;
    // A 16-bit integer where anything else stands, a string where a
    // string stands.
    bad[i] = groupKind(good[i].code) == GroupKind::kString ? GroupValue::fromInt(70, 1)
                                                          : GroupValue::fromString(1, "x");
    putRecord(db, bad);
    const Loaded l = load(db);
    EXPECT_TRUE(l.tasks.empty()) << "item " << i << " replaced";
    EXPECT_EQ(l.warnings.size(), 1u) << i;
  }
  // Counts past the data, negative counts, an unknown version.
  for (const GroupValues& bad : {GroupValues{GroupValue::fromInt(90, 2), GroupValue::fromInt(90, 1000000)},
                                 GroupValues{GroupValue::fromInt(90, 2), GroupValue::fromInt(90, -1)},
                                 GroupValues{GroupValue::fromInt(90, 0), GroupValue::fromInt(90, 0)}}) {
    putRecord(db, bad);
    const Loaded l = load(db);
    EXPECT_TRUE(l.tasks.empty());
    EXPECT_EQ(l.warnings.size(), 1u);
  }
}

TEST(TaskStore, ReferencesToVanishedEntitiesAreDroppedEachWithAWarning) {
  AcDbDatabase db;
  CBatchTaskList tasks = SampleTasks(db);
  const GroupValues good = chainOf(tasks, db);
  // Another program removed two entities and the outline, and pointed one
  // reference at a layer.
  GroupValues edited = good;
  int refs = 0;
  for (GroupValue& v : edited)
    if (v.code == 331 && v.text != "0") {
      ++refs;
      if (refs == 1) v.text = "FFFF0";
      else if (refs == 2) v.text = db.layerZero().handle().toHex();
      else if (refs == 4) v.text = "FFFF1";  // the first tool's outline
    }
  putRecord(db, edited);
  const Loaded l = load(db);
  ASSERT_EQ(l.tasks.size(), 3u);
  ASSERT_EQ(l.warnings.size(), 3u);
  EXPECT_NE(l.warnings[0].find("entity FFFF0 no longer exists"), std::string::npos) << l.warnings[0];
  EXPECT_NE(l.warnings[0].find("刀具-0001"), std::string::npos) << l.warnings[0];
  EXPECT_NE(l.warnings[1].find("is not a drawing entity"), std::string::npos) << l.warnings[1];
  EXPECT_NE(l.warnings[2].find("outline FFFF1"), std::string::npos) << l.warnings[2];
  const CBatchToolInfo& tool = l.tasks[0].m_vecTools[0];
  EXPECT_EQ(tool.m_arrEntityIds, AcDbObjectIdArray{tasks[0].m_vecTools[0].m_arrEntityIds[2]});
  EXPECT_TRUE(tool.m_idOutline.isNull());
  EXPECT_EQ(l.tasks[0].m_vecTools[1], tasks[0].m_vecTools[1]);

  // Entities erased in this session are not written at all.
  ASSERT_EQ(host::eraseObject(tasks[0].m_vecTools[1].m_arrEntityIds[0]), Acad::eOk);
  ASSERT_EQ(host::eraseObject(tasks[0].m_vecTools[0].m_idOutline), Acad::eOk);
  std::vector<std::string> warnings;
  ASSERT_TRUE(SaveTaskList(&db, tasks, warnings));
  const Loaded after = load(db);
  EXPECT_TRUE(after.warnings.empty());
  EXPECT_TRUE(after.tasks[0].m_vecTools[1].m_arrEntityIds.isEmpty());
  EXPECT_TRUE(after.tasks[0].m_vecTools[0].m_idOutline.isNull());
}

// Counts the objects a database reports as changed.
struct ModifiedCounter : AcDbDatabaseReactor {
  int count = 0;
  void objectModified(const AcDbDatabase*, const AcDbObject*) override { ++count; }
};

TEST(TaskStore, SavingUnchangedTasksLeavesTheDrawingAlone) {
  AcDbDatabase db;
  const CBatchTaskList tasks = SampleTasks(db);
  std::vector<std::string> warnings;
  ASSERT_TRUE(SaveTaskList(&db, tasks, warnings));
  ModifiedCounter counter;
  db.addReactor(&counter);
  ASSERT_TRUE(SaveTaskList(&db, tasks, warnings));
  EXPECT_EQ(counter.count, 0);
  CBatchTaskList changed = tasks;
  changed[1].m_nExecState = kBatchDone;
  ASSERT_TRUE(SaveTaskList(&db, changed, warnings));
  EXPECT_EQ(counter.count, 1);
  db.removeReactor(&counter);
}

TEST(TaskStore, NamesTakenByOtherObjectsAreLeftAlone) {
  AcDbDatabase db;
  {
    AcDbObjectPointer<AcDbDictionary> nod(db.namedObjectsDictionaryId(), AcDb::kForWrite);
    auto* foreign = new AcDbXrecord;
    foreign->setValues({GroupValue::fromString(1, "someone else's")});
    AcDbObjectId id;
    ASSERT_EQ(nod->setAt(kTaskDictionaryName, foreign, id), Acad::eOk);
    foreign->close();
  }
  std::vector<std::string> warnings;
  EXPECT_FALSE(SaveTaskList(&db, SampleTasks(db), warnings));
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_NE(warnings[0].find("is not a dictionary"), std::string::npos);
  const Loaded l = load(db);
  EXPECT_FALSE(l.found);
  EXPECT_EQ(l.warnings.size(), 1u);
}

TEST(TaskStore, ReferencesSurviveWritingAndReadingTheDrawingFile) {
  for (const char* version : {"R2000", "R2018"}) {
    host::dxf::DxfDrawing drawing;
    drawing.database = std::make_unique<AcDbDatabase>();
    const CBatchTaskList tasks = SampleTasks(*drawing.database);
    std::vector<std::string> warnings;
    ASSERT_TRUE(SaveTaskList(drawing.database.get(), tasks, warnings));
    std::string text;
    host::dxf::Diagnostics diag;
    ASSERT_TRUE(host::dxf::writeDxfText(drawing, {version}, text, diag)) << diag.error;
    host::dxf::DxfDrawing back;
    ASSERT_TRUE(host::dxf::readDxfText(text, back, diag)) << diag.error;
    const Loaded l = load(*back.database);
    EXPECT_TRUE(l.warnings.empty()) << version;
    ASSERT_EQ(l.tasks.size(), tasks.size()) << version;
    // Same handles in the file read back; ids are of the new database.
    for (std::size_t t = 0; t < tasks.size(); ++t) {
      EXPECT_EQ(l.tasks[t].m_strName, tasks[t].m_strName) << version;
      ASSERT_EQ(l.tasks[t].m_vecTools.size(), tasks[t].m_vecTools.size());
      for (std::size_t k = 0; k < tasks[t].m_vecTools.size(); ++k) {
        const CBatchToolInfo& a = tasks[t].m_vecTools[k];
        const CBatchToolInfo& b = l.tasks[t].m_vecTools[k];
        EXPECT_EQ(b.m_strName, a.m_strName) << version;
        EXPECT_EQ(b.m_ptCenter, a.m_ptCenter);
        ASSERT_EQ(b.m_arrEntityIds.length(), a.m_arrEntityIds.length());
        for (int i = 0; i < a.m_arrEntityIds.length(); ++i) {
          EXPECT_EQ(b.m_arrEntityIds[i].handle(), a.m_arrEntityIds[i].handle());
          EXPECT_EQ(b.m_arrEntityIds[i].database(), back.database.get());
        }
        EXPECT_EQ(b.m_idOutline.handle(), a.m_idOutline.handle());
        EXPECT_EQ(b.m_nExecState, a.m_nExecState);
        EXPECT_EQ(b.m_nExportState, a.m_nExportState);
      }
    }
    CBatchTaskList remapped = l.tasks;
    // Parameters compare exactly: reals are written so that they read back.
    for (std::size_t t = 0; t < tasks.size(); ++t) remapped[t].m_vecTools = tasks[t].m_vecTools;
    EXPECT_EQ(remapped, tasks) << version;
  }
}

TEST(KnifeDiagramFactory, KeepsOneStorePerDatabaseAndTheWorkingOneForNull) {
  CKnifeDiagramFactory factory;
  AcDbDatabase a, b;
  AcApDocument* docA = acDocManagerPtr()->openBorrowedDocument(&a, "a.dxf");
  AcApDocument* docB = acDocManagerPtr()->openBorrowedDocument(&b, "b.dxf");
  ASSERT_EQ(acdbHostApplicationServices()->workingDatabase(), &b);

  CBatchTaskList* storeA = factory.GetTaskStore(&a);
  ASSERT_NE(storeA, nullptr);
  EXPECT_TRUE(storeA->empty());
  storeA->push_back(CBatchTaskInfo{});
  storeA->back().m_strName = "in a";
  EXPECT_EQ(factory.GetTaskStore(&a), storeA);
  EXPECT_EQ(factory.GetTaskStore(nullptr), factory.GetTaskStore(&b));
  EXPECT_TRUE(factory.GetWorkingTaskStore()->empty());
  acDocManagerPtr()->setCurDocument(docA);
  EXPECT_EQ(factory.GetWorkingTaskStore(), storeA);

  // Saved in a, loaded from a, never seen in b.
  EXPECT_TRUE(factory.SaveTaskStore(&a));
  storeA->clear();
  EXPECT_TRUE(factory.LoadTaskStore());
  ASSERT_EQ(storeA->size(), 1u);
  EXPECT_EQ((*storeA)[0].m_strName, "in a");
  EXPECT_FALSE(factory.LoadTaskStore(&b));
  EXPECT_TRUE(factory.GetTaskStore(&b)->empty());
  EXPECT_EQ(acDocManagerPtr()->curDocument()->lockCount(), 0) << "the load's lock is released";

  factory.DropTaskStore(&a);
  EXPECT_FALSE(factory.HasTaskStore(&a));
  EXPECT_TRUE(factory.HasTaskStore(&b));
  acDocManagerPtr()->closeDocument(docA);
  acDocManagerPtr()->closeDocument(docB);
  EXPECT_EQ(factory.GetTaskStore(nullptr), nullptr);
}

TEST(KnifeDiagramFactory, PrintsWhatItDroppedOnTheCommandLine) {
  CKnifeDiagramFactory factory;
  AcDbDatabase db;
  putRecord(db, {GroupValue::fromInt(90, 2), GroupValue::fromInt(90, 3)});
  host::ed::takeMessages();
  EXPECT_TRUE(factory.LoadTaskStore(&db));
  EXPECT_TRUE(factory.GetTaskStore(&db)->empty());
  EXPECT_NE(host::ed::takeMessages().find("damaged"), std::string::npos);
}

}  // namespace
