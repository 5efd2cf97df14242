// Entities of the common kinds are read as text and built on first use:
// they must come out as an eager build would, and write back untouched.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

#include "host/db/operations.h"
#include "host/dxf/codec.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/tags.h"
#include "dxf_text.h"

namespace {
using host::dxf::Diagnostics;
using host::dxf::DxfDrawing;

// A drawing of the entities with a dictionary (handle 30) and an xrecord
// (31) that a line refers to.
std::string drawing(const std::string& entities) {
  dxf_text::Sections s;
  s.objects = "  0\nDICTIONARY\n  5\nC\n330\n0\n100\nAcDbDictionary\n  3\nNOTES\n350\n31\n"
              "  0\nDICTIONARY\n  5\n30\n330\n20\n100\nAcDbDictionary\n"
              "  0\nXRECORD\n  5\n31\n330\nC\n100\nAcDbXrecord\n  1\nnote\n";
  return dxf_text::Drawing(entities, s);
}

const std::string kLine =
    "  0\nLINE\n  5\n20\n102\n{ACAD_XDICTIONARY\n360\n30\n102\n}\n102\n{ACAD_REACTORS\n330\n31\n102\n}\n"
    "330\n1F\n100\nAcDbEntity\n  8\n\\U+5C3A\\U+5BF8\\U+7EBF\n  6\nDASHED\n 62\n1\n100\nAcDbLine\n"
    " 10\n1.0\n 20\n2.0\n 30\n0.0\n 11\n4.0\n 21\n6.0\n 31\n0.0\n1001\nACAD\n1000\nkept\n";
const std::string kPaperCircle =
    "  0\nCIRCLE\n  5\n21\n100\nAcDbEntity\n 67\n1\n  8\n0\n100\nAcDbCircle\n 10\n-0.0\n 20\n0.0\n 30\n0.0\n 40\n3.0\n";

AcDbObjectIdArray entitiesOf(AcDbObjectId block) {
  AcDbObjectPointer<AcDbBlockTableRecord> rec(block, AcDb::kForRead);
  return rec ? rec->entityList() : AcDbObjectIdArray();
}

TEST(DxfDeferredEntities, AreBuiltOnFirstOpenWithEverythingTheFileSays) {
  const std::string text = drawing(kLine + kPaperCircle);
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfText(text, d, diag)) << diag.error;
  // Undefined layers and linetypes are found while reading, not on first use.
  std::string warnings;
  for (const auto& w : diag.warnings) warnings += w + "\n";
  EXPECT_NE(warnings.find("layer '尺寸线'"), std::string::npos) << warnings;
  EXPECT_NE(warnings.find("DASHED"), std::string::npos) << warnings;

  const AcDbObjectIdArray model = entitiesOf(d.database->modelSpaceId());
  const AcDbObjectIdArray paper = entitiesOf(d.database->paperSpaceId());
  ASSERT_EQ(model.length(), 1);
  ASSERT_EQ(paper.length(), 1);  // the space flag is read before the entity is built
  EXPECT_TRUE(model[0].isValid());
  EXPECT_EQ(model[0].handle().toHex(), "20");

  AcDbObjectId dict, xrec;
  d.database->getAcDbObjectId(dict, false, AcDbHandle::fromHex("30"));
  d.database->getAcDbObjectId(xrec, false, AcDbHandle::fromHex("31"));
  {
    AcDbObjectPointer<AcDbLine> line(model[0], AcDb::kForRead);
    ASSERT_TRUE(line);
    EXPECT_EQ(line->layer(), "尺寸线");
    EXPECT_EQ(line->linetype(), "DASHED");
    EXPECT_EQ(line->colorIndex(), 1);
    EXPECT_EQ(line->startPoint(), AcGePoint3d(1, 2, 0));
    EXPECT_EQ(line->endPoint(), AcGePoint3d(4, 6, 0));
    EXPECT_EQ(line->extensionDictionary(), dict);
    ASSERT_NE(line->extrasIfAny(), nullptr);
    ASSERT_EQ(line->extrasIfAny()->persistentReactors.length(), 1);
    EXPECT_EQ(line->extrasIfAny()->persistentReactors[0], xrec);
    resbuf* xd = line->xData("ACAD");
    ASSERT_NE(xd, nullptr);
    ASSERT_NE(xd->rbnext, nullptr);
    EXPECT_STREQ(xd->rbnext->resval.rstring, "kept");
    acutRelRb(xd);
    EXPECT_EQ(line->ownerId(), d.database->modelSpaceId());
  }
  AcDbObjectPointer<AcDbCircle> circle(paper[0], AcDb::kForRead);
  ASSERT_TRUE(circle);
  EXPECT_EQ(circle->radius(), 3.0);
  // The centre is taken from its plane to the world, which makes -0 a 0.
  EXPECT_EQ(std::bit_cast<std::uint64_t>(circle->center().x), std::bit_cast<std::uint64_t>(0.0));
}

TEST(DxfDeferredEntities, WriteBackUntouchedUntilChangedAndErase) {
  const std::string text = drawing(kLine + kPaperCircle);
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfText(text, d, diag)) << diag.error;
  const AcDbObjectId line = entitiesOf(d.database->modelSpaceId())[0];
  const AcDbObjectId circle = entitiesOf(d.database->paperSpaceId())[0];
  std::string out;
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, out, diag)) << diag.error;
  EXPECT_NE(out.find(kLine), std::string::npos);  // never built, copied as it was
  // Reading an entity builds it but changes nothing in the file.
  { AcDbObjectPointer<AcDbLine> l(line, AcDb::kForRead); }
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, out, diag));
  EXPECT_NE(out.find(kLine), std::string::npos);
  {
    AcDbObjectPointer<AcDbLine> l(line, AcDb::kForWrite);
    ASSERT_TRUE(l);
    l->setEndPoint({40, 60, 0});
    AcDbObjectPointer<AcDbCircle> c(circle, AcDb::kForWrite);
    ASSERT_TRUE(c);
    c->erase();
  }
  ASSERT_TRUE(host::dxf::writeDxfText(d, {}, out, diag));
  EXPECT_EQ(out.find(kLine), std::string::npos);
  EXPECT_EQ(out.find("CIRCLE"), std::string::npos);
  DxfDrawing again;
  ASSERT_TRUE(host::dxf::readDxfText(out, again, diag)) << diag.error;
  const AcDbObjectIdArray model = entitiesOf(again.database->modelSpaceId());
  ASSERT_EQ(model.length(), 1);
  AcDbObjectPointer<AcDbLine> l(model[0], AcDb::kForRead);
  ASSERT_TRUE(l);
  EXPECT_EQ(l->endPoint(), AcGePoint3d(40, 60, 0));
  EXPECT_EQ(l->layer(), "尺寸线");
  EXPECT_FALSE(l->extensionDictionary().isNull());  // what was not modelled was merged back
  resbuf* xd = l->xData("ACAD");
  EXPECT_NE(xd, nullptr);
  acutRelRb(xd);
}

TEST(DxfDeferredEntities, KeepTheReadersChecksAndHandleRules) {
  // A bad number inside a deferred entity is still an error at its line.
  std::string bad = drawing(kPaperCircle);
  bad.replace(bad.find("3.0\n"), 3, "3,x");
  DxfDrawing d;
  Diagnostics diag;
  EXPECT_FALSE(host::dxf::readDxfText(bad, d, diag));
  EXPECT_NE(diag.error.find("group code 40 expects a number"), std::string::npos) << diag.error;
  const auto valueLine = std::count(bad.begin(), bad.begin() + static_cast<long>(bad.find("3,x")), '\n') + 1;
  EXPECT_NE(diag.error.find("line " + std::to_string(valueLine) + ":"), std::string::npos) << diag.error;
  // A handle used twice: the second entity gets a fresh one, with a warning.
  DxfDrawing twice;
  Diagnostics td;
  ASSERT_TRUE(host::dxf::readDxfText(drawing(kPaperCircle + kPaperCircle), twice, td)) << td.error;
  const AcDbObjectIdArray paper = entitiesOf(twice.database->paperSpaceId());
  ASSERT_EQ(paper.length(), 2);
  EXPECT_NE(paper[0].handle(), paper[1].handle());
  EXPECT_TRUE(dxf_text::Warned(td, "used twice"));
}

TEST(DxfDeferredEntities, TakeTheirLayerByNameWhenFirstOpened) {
  // Entities are built one after another with the layer found last kept
  // for the next; a layer renamed in between must not be taken for the name.
  const std::string onA = "  0\nLINE\n  5\n%H\n100\nAcDbEntity\n  8\nA\n100\nAcDbLine\n 10\n0.0\n 20\n0.0\n"
                          " 11\n1.0\n 21\n1.0\n";
  std::string lines;
  for (const char* h : {"40", "41", "42"}) lines += std::string(onA).replace(onA.find("%H"), 2, h);
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(host::dxf::readDxfText(drawing(lines), d, diag)) << diag.error;
  const AcDbObjectIdArray model = entitiesOf(d.database->modelSpaceId());
  ASSERT_EQ(model.length(), 3);
  AcDbObjectId first;
  {
    AcDbObjectPointer<AcDbLine> l(model[0], AcDb::kForRead);
    ASSERT_TRUE(l);
    EXPECT_EQ(l->layer(), "A");
    first = l->layerId();
  }
  {
    AcDbObjectPointer<AcDbLayerTableRecord> layer(first, AcDb::kForWrite);
    ASSERT_TRUE(layer);
    ASSERT_EQ(layer->setName("B"), Acad::eOk);
  }
  AcDbObjectId fresh;
  ASSERT_EQ(host::findLayer(d.database.get(), "A", fresh, true), Acad::eOk);
  ASSERT_NE(fresh, first);
  for (int i : {1, 2}) {
    AcDbObjectPointer<AcDbLine> l(model[i], AcDb::kForRead);
    ASSERT_TRUE(l);
    EXPECT_EQ(l->layerId(), fresh) << i;
  }
}

// Every entity of a drawing (model and paper space, blocks), as a file
// would hold it, with what the file keeps elsewhere (owner, extension
// dictionary, reactors, extended data), in order.
std::vector<std::string> entityTexts(const DxfDrawing& d) {
  std::vector<std::string> out;
  host::dxf::Diagnostics quiet;
  host::dxf::WriteContext ctx{*d.database, "AC1032", true, quiet};
  AcDbObjectPointer<AcDbBlockTable> table(d.database->blockTableId(), AcDb::kForRead);
  for (AcDbObjectId block : table->recordIds()) {
    for (AcDbObjectId id : entitiesOf(block)) {
      AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
      std::string text = id.handle().toHex() + " owner " + e->ownerId().handle().toHex();
      host::dxf::TagList tags;
      if (e) host::dxf::encodeObject(*e.get(), tags, ctx);
      for (const auto& [code, value] : tags) text += "\n" + std::to_string(code) + " " + value;
      if (const AcDbObjectExtras* x = e->extrasIfAny()) {
        text += "\nxdict " + x->extensionDictionary.handle().toHex();
        for (AcDbObjectId r : x->persistentReactors) text += " reactor " + r.handle().toHex();
        for (const GroupValue& v : x->xdata) text += "\nxdata " + std::to_string(v.code) + " " + v.text;
      }
      out.push_back(text);
    }
  }
  return out;
}

TEST(DxfDeferredEntities, BuiltWhileReadingTheSameAsOnFirstUse) {
  std::string badNumber = drawing(kLine + kPaperCircle);
  badNumber.replace(badNumber.find("3.0\n"), 3, "3,x");  // the circle's radius
  std::vector<std::pair<std::string, std::string>> drawings = {{"text", drawing(kLine + kPaperCircle)},
                                                               {"bad number", badNumber}};
  std::vector<std::string> paths;
  for (const char* name : {"tool_sheet", "twist_drill", "form_tool", "end_mill"})
    paths.push_back(std::string(ENVLINE_SOURCE_DIR) + "/samples/" + name + ".dxf");
  // Real drawings of other writers, when the shared corpus is there.
  const std::string corpus = std::string(ENVLINE_SOURCE_DIR) + "/../shared/corpus/real";
  if (std::filesystem::is_directory(corpus))
    for (const auto& f : std::filesystem::directory_iterator(corpus))
      if (f.path().extension() == ".dxf") paths.push_back(f.path().string());
  for (const std::string& path : paths) {
    std::ifstream in(path, std::ios::binary);
    drawings.emplace_back(path, std::string(std::istreambuf_iterator<char>(in), {}));
  }
  for (const auto& [name, text] : drawings) {
    DxfDrawing later, now;
    Diagnostics laterDiag, nowDiag;
    const bool read = host::dxf::readDxfText(text, later, laterDiag);
    ASSERT_EQ(host::dxf::readDxfText(text, now, nowDiag, host::dxf::EntityBuilding::kWhileReading), read) << name;
    EXPECT_EQ(read, name != "bad number") << name << ": " << laterDiag.error;
    EXPECT_EQ(nowDiag.error, laterDiag.error) << name;  // the same line named
    EXPECT_EQ(nowDiag.warnings, laterDiag.warnings) << name;
    if (!read) continue;
    EXPECT_EQ(entityTexts(now), entityTexts(later)) << name;
    std::string nowOut, laterOut;
    ASSERT_TRUE(host::dxf::writeDxfText(now, {}, nowOut, nowDiag)) << name;
    ASSERT_TRUE(host::dxf::writeDxfText(later, {}, laterOut, laterDiag)) << name;
    EXPECT_EQ(nowOut, laterOut) << name;  // unchanged entities are still written as they were read
  }
}

TEST(DxfTags, LinesInEveryFormWritersUse) {
  // Padded and bare codes, CRLF endings, a negative code, a five-character
  // code line, empty values and a last line without its ending.
  const std::string text = "  0\r\nLINE\r\n8\n\n   10\n1.5\n-1\nx\n00010\ny\n  1\n \nEOF";
  host::dxf::TagReader r(text);
  struct Want {
    int code;
    std::string_view value;
    std::size_t line;
  };
  const Want want[] = {{0, "LINE", 1}, {8, "", 3}, {10, "1.5", 5}, {-1, "x", 7}, {10, "y", 9}, {1, " ", 11}};
  host::dxf::Tag t;
  for (const Want& w : want) {
    ASSERT_TRUE(r.next(t)) << r.error();
    EXPECT_EQ(t.code, w.code);
    EXPECT_EQ(t.value, w.value);
    EXPECT_EQ(t.line, w.line);
  }
  EXPECT_FALSE(r.next(t));  // "EOF" alone is a code line that is no number
  EXPECT_NE(r.error().find("line 13"), std::string::npos) << r.error();
  // Offsets point at the code lines.
  host::dxf::TagReader again(text);
  ASSERT_TRUE(again.next(t) && again.next(t));
  EXPECT_EQ(t.offset, text.find("8\n"));
}

TEST(DxfTags, NumbersReadAsTheFullConversionReadsThem) {
  // Short decimals take a quicker path; every text must give the double
  // (or the refusal) that the standard conversion gives, to the last bit.
  auto reference = [](std::string_view text, double& value) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) text.remove_suffix(1);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    const auto [p, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return !text.empty() && ec == std::errc() && p == text.data() + text.size() && std::isfinite(value);
  };
  std::vector<std::string> texts = {"5.", ".5", "-.5", "-", ".", "-0", "-0.0", "00012.50", "9007199254740993",
                                    "9007199254740992.5", "1234567890123456789", "12345678901234567890",
                                    "0.0000000000000000000001", "0.00000000000000000000001", "+1.5", " 2.25 ",
                                    "1.5\r", "--1", "1.2.3", "1e5", "1E-5", "1e", "inf", "nan", "0.1", "0.3"};
  std::mt19937_64 random(7);
  for (int i = 0; i < 200000; ++i) {
    std::string s(1 + random() % 21, '0');
    const bool anyChar = random() % 2;
    for (char& c : s) c = anyChar ? "0123456789.-"[random() % 12] : static_cast<char>('0' + random() % 10);
    if (!anyChar) s[random() % s.size()] = '.';
    texts.push_back(s);
  }
  for (const std::string& text : texts) {
    double want = 0, got = 0;
    const bool ok = reference(text, want);
    ASSERT_EQ(host::dxf::parseDouble(text, got), ok) << text;
    if (ok) {
      ASSERT_EQ(std::bit_cast<std::uint64_t>(got), std::bit_cast<std::uint64_t>(want)) << text;
    }
  }
}

}  // namespace
