// An object opened for write and closed unchanged is no modification: the
// database's reactors hear nothing and the file keeps its original text.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"

namespace {

struct Heard : AcDbDatabaseReactor {
  int modified = 0;
  void objectModified(const AcDbDatabase*, const AcDbObject*) override { ++modified; }
};

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

TEST(UnchangedWrite, WriteOpeningsClosedUnchangedLeaveTheFileByteIdentical) {
  const std::string original = readFile(std::string(ENVLINE_SOURCE_DIR) + "/samples/step_drill.dxf");
  host::dxf::DxfDrawing d;
  host::dxf::Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfText(original, d, diag)) << diag.error;
  std::string untouched;
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, untouched, diag));

  Heard heard;
  d.database->addReactor(&heard);
  // Every entity, the layer table and each layer: opened for write, closed.
  const AcDbObjectIdArray all = host::allEntities(d.database.get());
  ASSERT_GT(all.length(), 10);
  for (const AcDbObjectId id : all) {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForWrite);
    ASSERT_TRUE(e);
    e->setLayer(e->layerId());  // the same value again
  }
  {
    AcDbLayerTable* table = nullptr;
    ASSERT_EQ(d.database->getLayerTable(table, AcDb::kForWrite), Acad::eOk);
    for (const AcDbObjectId id : table->recordIds()) {
      AcDbObjectPointer<AcDbLayerTableRecord> layer(id, AcDb::kForWrite);
    }
    table->close();
  }
  EXPECT_EQ(heard.modified, 0);
  std::string again;
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, again, diag));
  EXPECT_EQ(again, untouched);

  // A real change is heard once and written.
  {
    AcDbObjectPointer<AcDbEntity> e(all[0], AcDb::kForWrite);
    e->setColorIndex(e->colorIndex() == 1 ? 2 : 1);
  }
  EXPECT_EQ(heard.modified, 1);
  std::string changed;
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, changed, diag));
  EXPECT_NE(changed, untouched);
  d.database->removeReactor(&heard);
}

}  // namespace
