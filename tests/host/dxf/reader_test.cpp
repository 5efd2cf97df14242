#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <numbers>

#include "host/db/dictionary.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "dxf_text.h"

namespace {
using host::dxf::Diagnostics;
using host::dxf::DxfDrawing;

using dxf_text::Drawing;

std::string readError(const std::string& text) {
  DxfDrawing d;
  Diagnostics diag;
  EXPECT_FALSE(host::dxf::readDxfText(text, d, diag)) << "should be refused";
  return diag.error;
}

const char* kLine = "  0\nLINE\n  5\n20\n100\nAcDbEntity\n  8\n0\n100\nAcDbLine\n 10\n1.0\n 20\n2.0\n 30\n0.0\n"
                    " 11\n4.0\n 21\n6.0\n 31\n0.0\n";

TEST(DxfReader, MalformedFilesGiveAnErrorThatNamesWhere) {
  const std::string good = Drawing(kLine);
  {
    DxfDrawing d;
    Diagnostics diag;
    ASSERT_TRUE(host::dxf::readDxfText(good, d, diag)) << diag.error;
  }
  // Truncated in the middle of an entity.
  EXPECT_NE(readError(good.substr(0, good.find(" 21\n6.0"))).find("line"), std::string::npos);
  // A group code that is no number.
  std::string odd = good;
  odd.replace(odd.find(" 20\n2.0"), 3, "abc");
  EXPECT_NE(readError(odd).find("expected a group code"), std::string::npos);
  // A number that is none.
  std::string bad = good;
  bad.replace(bad.find("1.0\n 20"), 3, "1,x");
  const std::string badError = readError(bad);
  EXPECT_NE(badError.find("group code 10 expects a number"), std::string::npos) << badError;
  EXPECT_NE(badError.find("line "), std::string::npos);
  // No EOF marker.
  EXPECT_NE(readError(good.substr(0, good.rfind("  0\nEOF"))).find("EOF"), std::string::npos);
  // Sections out of order.
  std::string swapped = "  0\nSECTION\n  2\nENTITIES\n  0\nENDSEC\n  0\nSECTION\n  2\nHEADER\n  0\nENDSEC\n  0\nEOF\n";
  EXPECT_NE(readError(swapped).find("out of order"), std::string::npos);
  // An invalid group code value.
  std::string big = good;
  big.replace(big.find(" 20\n2.0"), 3, "9999");
  EXPECT_NE(readError(big).find("invalid group code"), std::string::npos);
  // Binary garbage after a valid sentinel, and a value cut short.
  std::string garbage("AutoCAD Binary DXF\r\n\x1a\0", 22);
  garbage += std::string("\x00\x00SECTION\x00\x02\x00HEA", 15);
  EXPECT_NE(readError(garbage).find("byte offset"), std::string::npos);
  garbage.push_back('\0');  // the name ends, the section does not
  EXPECT_NE(readError(garbage).find("byte offset 38"), std::string::npos) << readError(garbage);
  std::string shortReal("AutoCAD Binary DXF\r\n\x1a\0", 22);
  shortReal += std::string("\x0a\x00\x01\x02", 4);  // code 10 then 2 of 8 bytes
  EXPECT_NE(readError(shortReal).find("byte offset"), std::string::npos);
  // Random bytes are no drawing.
  EXPECT_FALSE(readError(std::string("\xff\xfe\x01garbage\n\n", 12)).empty());
}

TEST(DxfReader, ForgivesMissingHeaderAndTablesWithWarnings) {
  const std::string text = std::string("  0\nSECTION\n  2\nENTITIES\n") +
                           "  0\nLINE\n  8\nWALLS\n 10\n0\n 20\n0\n 30\n0\n 11\n5\n 21\n0\n 31\n0\n" +
                           "  0\nENDSEC\n  0\nEOF\n";
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfText(text, d, diag)) << diag.error;
  EXPECT_FALSE(diag.warnings.empty());
  const AcDbObjectIdArray ids = host::allEntities(d.database.get());
  ASSERT_EQ(ids.length(), 1);
  AcDbObjectPointer<AcDbLine> line(ids[0], AcDb::kForRead);
  EXPECT_EQ(line->layer(), "WALLS");
  EXPECT_FALSE(line->handle().isNull());  // files without handles get them
  std::string out;
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, out, diag)) << diag.error;
  DxfDrawing again;
  ASSERT_TRUE(host::dxf::readDxfText(out, again, diag)) << diag.error;
  EXPECT_EQ(host::allEntities(again.database.get()).length(), 1);
}

TEST(DxfReader, MirroredArcsAreReadInWorldTerms) {
  // An arc stored with extrusion (0,0,-1): centre (-10, 0) in its own plane
  // is (10, 0) in the world, and it turns clockwise seen from +Z.
  const std::string arc =
      "  0\nARC\n  5\n21\n100\nAcDbEntity\n  8\n0\n100\nAcDbCircle\n 10\n-10.0\n 20\n0.0\n 30\n0.0\n 40\n2.0\n"
      "210\n0.0\n220\n0.0\n230\n-1.0\n100\nAcDbArc\n 50\n0.0\n 51\n90.0\n";
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfText(Drawing(arc), d, diag)) << diag.error;
  AcDbObjectPointer<AcDbArc> a(host::allEntities(d.database.get())[0], AcDb::kForRead);
  ASSERT_TRUE(a);
  EXPECT_EQ(a->normal(), AcGeVector3d::kZAxis);
  EXPECT_NEAR(a->center().distanceTo({10, 0, 0}), 0, 1e-12);
  AcGePoint3d s, e;
  a->getStartPoint(s);
  a->getEndPoint(e);
  EXPECT_NEAR(s.distanceTo({10, 2, 0}), 0, 1e-12);   // was the end (90° in its plane)
  EXPECT_NEAR(e.distanceTo({8, 0, 0}), 0, 1e-12);    // was the start (0° in its plane: world -x)
}

TEST(DxfReader, EscapedCharactersAreDecodedButWrittenBackAsTheyWere) {
  const std::string text = Drawing(
      "  0\nTEXT\n  5\n22\n100\nAcDbEntity\n  8\n0\n100\nAcDbText\n 10\n0\n 20\n0\n 30\n0\n 40\n2.5\n"
      "  1\n\\U+8BA1\\U+7B97 \\M+5B3DF\n100\nAcDbText\n");
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfText(text, d, diag)) << diag.error;
  AcDbObjectPointer<AcDbText> t(host::allEntities(d.database.get())[0], AcDb::kForRead);
  EXPECT_EQ(t->textString(), "计算 尺");
  t.close();
  std::string out;
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, out, diag));
  EXPECT_NE(out.find("\\U+8BA1\\U+7B97 \\M+5B3DF"), std::string::npos);  // the unchanged text as it was
}

TEST(DxfWriter, CharactersBeyondTheCodePageAreWrittenAsUpperCaseEscapes) {
  DxfDrawing d;
  d.database = std::make_unique<AcDbDatabase>();
  AcDbObjectId layer;
  ASSERT_EQ(host::findLayer(d.database.get(), "尺寸线", layer, true), Acad::eOk);
  std::string out;
  Diagnostics diag;
  // Asked for a code page without Chinese: escapes, and a warning.
  host::dxf::WriteOptions latin{"R2000", "ANSI_1252"};
  ASSERT_TRUE(host::dxf::writeDxfText(d, latin, out, diag)) << diag.error;
  EXPECT_NE(out.find("\\U+5C3A\\U+5BF8\\U+7EBF"), std::string::npos);
  ASSERT_EQ(diag.warnings.size(), 1u);
  EXPECT_NE(diag.warnings[0].find("ANSI_1252"), std::string::npos);
  // Left to choose, the writer takes a code page that holds the name.
  diag.warnings.clear();
  ASSERT_TRUE(host::dxf::writeDxfText(d, {"R2000"}, out, diag)) << diag.error;
  EXPECT_EQ(out.find("\\U+"), std::string::npos);
  EXPECT_NE(out.find("ANSI_936"), std::string::npos);
  EXPECT_TRUE(diag.warnings.empty());
}

// Values an xrecord or a dictionary no longer holds stay out of the file
// when the object is written again: its data are held in full.
TEST(DxfWriter, RemovedXrecordValuesAndDictionaryEntriesDoNotComeBack) {
  DxfDrawing d;
  d.database = std::make_unique<AcDbDatabase>();
  AcDbObjectId line;
  host::appendEntity(d.database.get(), new AcDbLine({0, 0, 0}, {1, 0, 0}), line);
  AcDbObjectId dictId, recId, innerId;
  {
    AcDbObjectPointer<AcDbDictionary> nod(d.database->namedObjectsDictionaryId(), AcDb::kForWrite);
    auto* dict = new AcDbDictionary;
    nod->setAt("D", dict, dictId);
    auto* rec = new AcDbXrecord;
    rec->setValues({GroupValue::fromString(1, "a"), GroupValue::fromReal(40, 1.5),
                    GroupValue::fromString(331, line.handle().toHex())});
    dict->setAt("REC", rec, recId);
    rec->close();
    auto* inner = new AcDbXrecord;
    dict->setAt("INNER", inner, innerId);
    inner->close();
    dict->close();
  }
  std::string text;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, text, diag)) << diag.error;
  DxfDrawing back;
  ASSERT_TRUE(host::dxf::readDxfText(text, back, diag)) << diag.error;
  AcDbDatabase* db = back.database.get();
  {
    AcDbObjectId id;
    ASSERT_EQ(db->getAcDbObjectId(id, false, recId.handle()), Acad::eOk);
    AcDbObjectPointer<AcDbXrecord> rec(id, AcDb::kForWrite);
    EXPECT_EQ(rec->values()[2].text, line.handle().toHex());
    rec->setValues({GroupValue::fromString(1, "b")});
    ASSERT_EQ(db->getAcDbObjectId(id, false, dictId.handle()), Acad::eOk);
    AcDbObjectPointer<AcDbDictionary> dict(id, AcDb::kForWrite);
    ASSERT_EQ(dict->remove("REC"), Acad::eOk);
    ASSERT_EQ(dict->remove("INNER"), Acad::eOk);
  }
  ASSERT_TRUE(host::dxf::writeDxfText(back, {}, text, diag)) << diag.error;
  DxfDrawing again;
  ASSERT_TRUE(host::dxf::readDxfText(text, again, diag)) << diag.error;
  AcDbObjectId id;
  ASSERT_EQ(again.database->getAcDbObjectId(id, false, recId.handle()), Acad::eOk);
  AcDbObjectPointer<AcDbXrecord> rec(id, AcDb::kForRead);
  EXPECT_EQ(rec->values(), GroupValues{GroupValue::fromString(1, "b")});
  ASSERT_EQ(again.database->getAcDbObjectId(id, false, dictId.handle()), Acad::eOk);
  AcDbObjectPointer<AcDbDictionary> dict(id, AcDb::kForRead);
  EXPECT_EQ(dict->numEntries(), 0);
}

TEST(DxfWriter, WritesAtomicallyAndNeverTouchesTheInput) {
  namespace fs = std::filesystem;
  const fs::path dir = fs::temp_directory_path() / "envline_writer_test";
  fs::create_directories(dir);
  const fs::path in = dir / "in.dxf";
  std::ofstream(in) << Drawing(kLine);
  const auto before = fs::last_write_time(in);
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfFile(in.string(), d, diag)) << diag.error;
  {
    AcDbObjectPointer<AcDbLine> line(host::allEntities(d.database.get())[0], AcDb::kForWrite);
    line->setEndPoint({9, 9, 0});
  }
  ASSERT_TRUE(host::dxf::writeDxfFile((dir / "out.dxf").string(), d, {}, diag)) << diag.error;
  EXPECT_EQ(fs::last_write_time(in), before);
  for (const auto& entry : fs::directory_iterator(dir))  // no temporary file is left behind
    EXPECT_NE(entry.path().filename().string()[0], '.') << entry.path();
  EXPECT_FALSE(host::dxf::writeDxfFile((dir / "missing" / "out.dxf").string(), d, {}, diag));
  EXPECT_NE(diag.error.find("missing"), std::string::npos);
  DxfDrawing back;
  ASSERT_TRUE(host::dxf::readDxfFile((dir / "out.dxf").string(), back, diag));
  AcDbObjectPointer<AcDbLine> line(host::allEntities(back.database.get())[0], AcDb::kForRead);
  EXPECT_EQ(line->endPoint(), AcGePoint3d(9, 9, 0));
  EXPECT_EQ(line->handle(), AcDbHandle(0x20));
  fs::remove_all(dir);
}

TEST(DxfWriter, NewObjectsGetFreshHandlesAndTheSeedMovesOn) {
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfText(Drawing(kLine), d, diag));
  AcDbObjectId id;
  host::appendEntity(d.database.get(), new AcDbLine({0, 0, 0}, {1, 1, 0}), id);
  EXPECT_GE(id.handle().value(), 0x100u);  // beyond the file's seed
  std::string out;
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, out, diag));
  const auto seed = out.find("$HANDSEED\n  5\n");
  ASSERT_NE(seed, std::string::npos);
  const AcDbHandle written = AcDbHandle::fromHex(out.substr(seed + 14, out.find('\n', seed + 14) - seed - 14));
  EXPECT_GT(written, id.handle());
  EXPECT_FALSE(host::dxf::writeDxfText(d, {"R12"}, out, diag));  // R2000 drawings are not written as R12
}
}  // namespace

namespace {
// Inputs the fuzzer found: each must be refused (or read) promptly.
TEST(DxfReader, FuzzerFindingsAreRefusedWithoutHanging) {
  const std::filesystem::path dir = std::filesystem::path(ENVLINE_SOURCE_DIR) / "tests" / "fuzz" / "regressions";
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    std::ifstream in(entry.path(), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    DxfDrawing d;
    Diagnostics diag;
    if (!host::dxf::readDxfText(bytes, d, diag)) {
      EXPECT_FALSE(diag.error.empty()) << entry.path();
    } else {
      std::string out;
      host::dxf::writeDxfText(d, {}, out, diag);
    }
    ++count;
  }
  EXPECT_GT(count, 0);
}
}  // namespace

namespace {
const char* kR12 =
    "  0\nSECTION\n  2\nHEADER\n  9\n$ACADVER\n  1\nAC1009\n  9\n$HANDLING\n 70\n1\n  9\n$HANDSEED\n  5\n100\n"
    "  0\nENDSEC\n  0\nSECTION\n  2\nTABLES\n  0\nTABLE\n  2\nLAYER\n 70\n1\n  0\nLAYER\n  2\n0\n 70\n0\n 62\n7\n"
    "  6\nCONTINUOUS\n  0\nENDTAB\n  0\nENDSEC\n  0\nSECTION\n  2\nENTITIES\n  0\nENDSEC\n  0\nEOF\n";

TEST(DxfWriter, NewKindsR12LacksAreWrittenInR12Form) {
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfText(kR12, d, diag)) << diag.error;
  AcDbDatabase* db = d.database.get();
  AcDbObjectId id;
  host::appendEntity(db, new AcDbEllipse({0, 0, 0}, AcGeVector3d::kZAxis, {4, 0, 0}, 0.5), id);
  auto* m = new AcDbMText;
  m->setContents("{\\fArial|b0;Tool} T-1\\PØ6 h6");
  m->setLocation({0, 20, 0});
  host::appendEntity(db, m, id);
  auto* h = new AcDbHatch;
  h->appendLoop({0, {{{0, 0}, 0}, {{1, 0}, 0}, {{1, 1}, 0}}});
  host::appendEntity(db, h, id);
  std::string out;
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, out, diag)) << diag.error;
  EXPECT_EQ(out.find("ELLIPSE"), std::string::npos);
  EXPECT_EQ(out.find("MTEXT"), std::string::npos);
  EXPECT_NE(out.find("\nTool T-1\n"), std::string::npos);
  EXPECT_NE(out.find("\n\xD8" "6 h6\n"), std::string::npos);  // Ø in the file's code page (1252)
  int hatchWarnings = 0;
  for (const auto& w : diag.warnings) hatchWarnings += w.find("HATCH") != std::string::npos;
  EXPECT_EQ(hatchWarnings, 1);
  // The written R12 file reads back: a closed-looking polyline of the ellipse and two texts.
  DxfDrawing back;
  ASSERT_TRUE(host::dxf::readDxfText(out, back, diag)) << diag.error;
  int polylines = 0, texts = 0;
  for (AcDbObjectId e : host::allEntities(back.database.get())) {
    AcDbObjectPointer<AcDbEntity> ent(e, AcDb::kForRead);
    polylines += ent->isKindOf(AcDb2dPolyline::desc());
    texts += ent->isKindOf(AcDbText::desc());
  }
  EXPECT_EQ(polylines, 1);
  EXPECT_EQ(texts, 2);
}

TEST(DxfWriter, ApplicationsOfNewExtendedDataJoinTheTable) {
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfText(Drawing(kLine), d, diag)) << diag.error;
  {
    AcDbObjectPointer<AcDbLine> line(host::allEntities(d.database.get())[0], AcDb::kForWrite);
    ResbufChain xd(acutBuildList(1001, "TUKANGE_NAME_IDENTITY", 1000, "T-7", RTNONE));
    ASSERT_EQ(line->setXData(xd.get()), Acad::eOk);
  }
  AcDbObjectPointer<AcDbRegAppTable> apps(d.database->regAppTableId(), AcDb::kForRead);
  EXPECT_TRUE(apps->has("TUKANGE_NAME_IDENTITY"));
  apps.close();
  std::string out;
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, out, diag));
  EXPECT_NE(out.find("APPID\n  5\n"), std::string::npos);
  EXPECT_NE(out.find("1001\nTUKANGE_NAME_IDENTITY\n1000\nT-7\n"), std::string::npos);
}
}  // namespace

TEST(DxfReader, CommonValuesAfterTheSubclassMarkerAsDxflibWritesThem) {
  // dxflib writes "100 AcDbEntity" and the entity's own subclass marker
  // first, then layer, colour, weight and linetype.
  const std::string lineLikeDxflib =
      "  0\nLINE\n  5\n30\n100\nAcDbEntity\n100\nAcDbLine\n  8\nAXIS\n 62\n1\n370\n25\n  6\nCENTER\n"
      " 10\n0\n 20\n0\n 30\n0\n 11\n5\n 21\n0\n 31\n0\n";
  const std::string circleLikeDxflib =
      "  0\nCIRCLE\n  5\n31\n100\nAcDbEntity\n100\nAcDbCircle\n  8\nHOLES\n 62\n3\n370\n-1\n  6\nDASHED\n"
      " 10\n1\n 20\n1\n 30\n0\n 40\n2\n";
  // Layer inside AcDbEntity wins over a later 8 in the subclass.
  const std::string usual = "  0\nLINE\n  5\n32\n100\nAcDbEntity\n  8\nOUTLINE\n100\nAcDbLine\n"
                            " 10\n0\n 20\n0\n 30\n0\n 11\n1\n 21\n1\n 31\n0\n";
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfText(Drawing(lineLikeDxflib + circleLikeDxflib + usual), d, diag)) << diag.error;
  const AcDbObjectIdArray ids = host::allEntities(d.database.get());
  ASSERT_EQ(ids.length(), 3);
  const char* layers[] = {"AXIS", "HOLES", "OUTLINE"};
  const char* linetypes[] = {"CENTER", "DASHED", "ByLayer"};
  const int colours[] = {1, 3, 256};
  for (int i = 0; i < 3; ++i) {
    AcDbObjectPointer<AcDbEntity> e(ids[i], AcDb::kForRead);
    ASSERT_TRUE(e);
    EXPECT_EQ(std::string(e->layer()), layers[i]) << i;
    EXPECT_TRUE(host::equalsNoCase(e->linetype(), linetypes[i])) << i << ": " << std::string(e->linetype());
    EXPECT_EQ(e->color().colorIndex(), colours[i]) << i;
  }
  // Written back unchanged and after a change, the values stay where a
  // reader of the usual form finds them.
  {
    AcDbObjectPointer<AcDbLine> l(ids[0], AcDb::kForWrite);
    l->setEndPoint(AcGePoint3d(6, 0, 0));
  }
  std::string out;
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, out, diag)) << diag.error;
  DxfDrawing back;
  ASSERT_TRUE(host::dxf::readDxfText(out, back, diag)) << diag.error;
  const AcDbObjectIdArray again = host::allEntities(back.database.get());
  ASSERT_EQ(again.length(), 3);
  AcDbObjectPointer<AcDbLine> l(again[0], AcDb::kForRead);
  ASSERT_TRUE(l);
  EXPECT_EQ(std::string(l->layer()), "AXIS");
  EXPECT_TRUE(host::equalsNoCase(l->linetype(), "CENTER"));
}
