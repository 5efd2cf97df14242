// Drawings built to hurt: self-inserting and deeply nested blocks,
// exponential fan-out, absurd numbers, a wrapped handle seed, missing
// section ends. Each must give an error or a bounded result, never a crash
// or a hang.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <set>
#include <string>

#include "host/db/block_extents.h"
#include "host/db/block_reference.h"
#include "host/db/curves.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "dxf_text.h"

namespace {
using host::dxf::Diagnostics;
using host::dxf::DxfDrawing;

std::string num(double v) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.17g", v);
  return buf;
}

std::string line(double x0, double y0, double x1, double y1) {
  return "  0\nLINE\n  8\n0\n 10\n" + num(x0) + "\n 20\n" + num(y0) + "\n 30\n0\n 11\n" + num(x1) + "\n 21\n" +
         num(y1) + "\n 31\n0\n";
}

std::string insert(const std::string& block, double x = 0, double y = 0, const std::string& more = "") {
  return "  0\nINSERT\n  8\n0\n  2\n" + block + "\n 10\n" + num(x) + "\n 20\n" + num(y) + "\n 30\n0\n" + more;
}

std::string block(const std::string& name, const std::string& body) {
  return "  0\nBLOCK\n  8\n0\n  2\n" + name + "\n 70\n0\n 10\n0\n 20\n0\n 30\n0\n  3\n" + name + "\n" + body +
         "  0\nENDBLK\n  8\n0\n";
}

std::string drawing(const std::string& blocks, const std::string& entities, const std::string& seed = "100") {
  dxf_text::Sections s;
  s.blocks = blocks;
  s.seed = seed;
  return dxf_text::Drawing(entities, s);
}

bool read(const std::string& text, DxfDrawing& d, Diagnostics& diag) { return host::dxf::readDxfText(text, d, diag); }

// The first reference of model space.
const AcDbBlockReference* firstReference(const AcDbDatabase& db) {
  for (AcDbObjectId id : host::allEntities(&db)) {
    AcDbObject* obj = nullptr;
    if (acdbOpenObject(obj, id, AcDb::kForRead) != Acad::eOk) continue;
    obj->close();
    if (const auto* ref = AcDbBlockReference::cast(obj)) return ref;
  }
  return nullptr;
}

TEST(HostileDrawings, BlocksInsertingThemselvesAreRefusedByName) {
  struct Case {
    const char* what;
    std::string text;
    std::string names;
  };
  const Case cases[] = {
      {"direct", drawing(block("LOOP", line(0, 0, 1, 1) + insert("LOOP")), insert("LOOP")), "LOOP -> LOOP"},
      {"through others",
       drawing(block("A", insert("B")) + block("B", insert("C")) + block("C", insert("A")), insert("A")),
       "A -> B -> C -> A"},
      {"model space", drawing("", line(0, 0, 1, 1) + insert("*Model_Space")), "*Model_Space -> *Model_Space"},
  };
  for (const Case& c : cases) {
    DxfDrawing d;
    Diagnostics diag;
    EXPECT_FALSE(read(c.text, d, diag)) << c.what;
    EXPECT_NE(diag.error.find("inserts itself"), std::string::npos) << c.what << ": " << diag.error;
    EXPECT_NE(diag.error.find(c.names), std::string::npos) << c.what << ": " << diag.error;
  }
}

TEST(HostileDrawings, DeepChainsAndExponentialFanOutAreBounded) {
  {
    // 50,000 blocks each inserting the next one unit to the right (walked
    // without recursion).
    constexpr int kDepth = 50000;
    std::string blocks;
    for (int i = 0; i < kDepth; ++i)
      blocks += block("B" + std::to_string(i), line(0, 0, 1, 0) +
                                                   (i + 1 < kDepth ? insert("B" + std::to_string(i + 1), 1, 0) : ""));
    DxfDrawing d;
    Diagnostics diag;
    ASSERT_TRUE(read(drawing(blocks, insert("B0")), d, diag)) << diag.error;
    const AcDbBlockReference* ref = firstReference(*d.database);
    ASSERT_NE(ref, nullptr);
    AcDbExtents box;
    ASSERT_EQ(ref->getGeomExtents(box), Acad::eOk);
    EXPECT_DOUBLE_EQ(box.minPoint().x, 0);
    EXPECT_DOUBLE_EQ(box.maxPoint().x, kDepth);
    host::BlockExtents blocksOf;
    std::uint64_t count = 0;
    ASSERT_EQ(blocksOf.explodedCount(*ref, count), Acad::eOk);
    EXPECT_EQ(count, std::uint64_t(kDepth));
  }
  {
    // 40 levels, each inserting the next twice: 2^40 lines when flattened.
    std::string blocks = block("F40", line(0, 0, 1, 1));
    for (int i = 39; i >= 0; --i)
      blocks += block("F" + std::to_string(i), insert("F" + std::to_string(i + 1)) +
                                                   insert("F" + std::to_string(i + 1), 1, 0));
    DxfDrawing d;
    Diagnostics diag;
    ASSERT_TRUE(read(drawing(blocks, insert("F0")), d, diag)) << diag.error;
    const AcDbBlockReference* ref = firstReference(*d.database);
    ASSERT_NE(ref, nullptr);
    AcDbExtents box;
    ASSERT_EQ(ref->getGeomExtents(box), Acad::eOk);
    EXPECT_DOUBLE_EQ(box.maxPoint().x, 41);  // 40 shifts of one unit plus the line
    EXPECT_DOUBLE_EQ(box.maxPoint().y, 1);
    host::BlockExtents blocksOf;
    std::uint64_t count = 0;
    ASSERT_EQ(blocksOf.explodedCount(*ref, count), Acad::eOk);
    EXPECT_EQ(count, std::uint64_t(1) << 40);
    EXPECT_GT(count, host::kMaxExplodedEntities);
    // One level is two references: that much explodes.
    AcDbEntityArray pieces;
    EXPECT_EQ(ref->explode(pieces), Acad::eOk);
    EXPECT_EQ(pieces.length(), 2);
    for (AcDbEntity* p : pieces) delete p;
  }
  {
    // A 32767 x 32767 array of a block: extents from its corner copies; the
    // explode is refused before it starts.
    const std::string array = insert("CELL", 0, 0, " 70\n32767\n 71\n32767\n 44\n2\n 45\n3\n");
    DxfDrawing d;
    Diagnostics diag;
    ASSERT_TRUE(read(drawing(block("CELL", line(0, 0, 1, 1)), array), d, diag)) << diag.error;
    const AcDbBlockReference* ref = firstReference(*d.database);
    ASSERT_NE(ref, nullptr);
    ASSERT_NE(AcDbMInsertBlock::cast(ref), nullptr);
    AcDbExtents box;
    ASSERT_EQ(ref->getGeomExtents(box), Acad::eOk);
    EXPECT_DOUBLE_EQ(box.maxPoint().x, 32766 * 2 + 1);
    EXPECT_DOUBLE_EQ(box.maxPoint().y, 32766 * 3 + 1);
    AcDbEntityArray pieces;
    EXPECT_EQ(ref->explode(pieces), Acad::eOutOfMemory);
    EXPECT_EQ(pieces.length(), 0);
  }
}

TEST(HostileDrawings, RotatedReferencesHaveTheExtentsOfTheirEntities) {
  // A unit circle's block inserted rotated by 30 degrees at (10, 0): the box
  // stays the circle's, not the turned box of the block.
  const std::string text =
      drawing(block("C", "  0\nCIRCLE\n  8\n0\n 10\n1\n 20\n0\n 30\n0\n 40\n1\n"), insert("C", 10, 0, " 50\n30\n"));
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(read(text, d, diag)) << diag.error;
  const AcDbBlockReference* ref = firstReference(*d.database);
  ASSERT_NE(ref, nullptr);
  AcDbExtents box;
  ASSERT_EQ(ref->getGeomExtents(box), Acad::eOk);
  const double cx = 10 + std::cos(M_PI / 6), cy = std::sin(M_PI / 6);
  EXPECT_NEAR(box.minPoint().x, cx - 1, 1e-12);
  EXPECT_NEAR(box.maxPoint().x, cx + 1, 1e-12);
  EXPECT_NEAR(box.minPoint().y, cy - 1, 1e-12);
  EXPECT_NEAR(box.maxPoint().y, cy + 1, 1e-12);
}

TEST(HostileDrawings, AbsurdNumbersGiveBoundedResults) {
  // Ellipses whose parameters are too large for a turn to register, a
  // spline reaching 1e300, arcs of radius 1e8 and 1e9.
  const std::string ellipse1e17 =
      "  0\nELLIPSE\n  8\n0\n100\nAcDbEllipse\n 10\n0\n 20\n0\n 30\n0\n 11\n2\n 21\n0\n 31\n0\n 40\n0.5\n"
      " 41\n1e17\n 42\n1e17\n";
  const std::string ellipse1e300 =
      "  0\nELLIPSE\n  8\n0\n100\nAcDbEllipse\n 10\n0\n 20\n0\n 30\n0\n 11\n2\n 21\n0\n 31\n0\n 40\n0.5\n"
      " 41\n-1e300\n 42\n1e300\n";
  const std::string spline =
      "  0\nSPLINE\n  8\n0\n100\nAcDbSpline\n 70\n8\n 71\n1\n 72\n4\n 73\n2\n 40\n0\n 40\n0\n 40\n1\n 40\n1\n"
      " 10\n0\n 20\n0\n 30\n0\n 10\n1e300\n 20\n1e300\n 30\n0\n";
  const std::string arcs = "  0\nARC\n  8\n0\n 10\n0\n 20\n0\n 30\n0\n 40\n1e8\n 50\n10\n 51\n200\n"
                           "  0\nARC\n  8\n0\n 10\n0\n 20\n0\n 30\n0\n 40\n1e9\n 50\n10\n 51\n200\n";
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(read(drawing("", ellipse1e17 + ellipse1e300 + spline + arcs), d, diag)) << diag.error;
  int seen = 0;
  for (AcDbObjectId id : host::allEntities(d.database.get())) {
    AcDbObjectPointer<AcDbCurve> curve(id, AcDb::kForRead);
    ASSERT_TRUE(curve);
    ++seen;
    AcDbExtents box;
    curve->getGeomExtents(box);
    double end = 0, length = 0;
    if (curve->getEndParam(end) == Acad::eOk) curve->getDistAtParam(end, length);
    if (curve->isKindOf(AcDbArc::desc())) {
      // Radius r from 10 to 200 degrees: left of the centre by r, up by r.
      const double r = AcDbArc::cast(curve.get())->radius();
      EXPECT_DOUBLE_EQ(box.minPoint().x, -r);
      EXPECT_DOUBLE_EQ(box.maxPoint().y, r);
      EXPECT_NEAR(length, r * 190 * M_PI / 180, r * 1e-9);
    }
    if (curve->isKindOf(AcDbEllipse::desc())) {
      EXPECT_TRUE(box.isValid());
      EXPECT_LE(box.maxPoint().x, 2);
    }
  }
  EXPECT_EQ(seen, 5);
}

TEST(HostileDrawings, AWrappingHandleSeedGivesHandlesAboveEveryHandleInUse) {
  const std::string text = drawing("", "  0\nLINE\n  5\n2F\n  8\n0\n 10\n0\n 20\n0\n 30\n0\n 11\n1\n 21\n1\n 31\n0\n",
                                   "FFFFFFFFFFFFFFFF");
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(read(text, d, diag)) << diag.error;
  EXPECT_TRUE(dxf_text::Warned(diag, "$HANDSEED"));
  std::set<std::uint64_t> used;
  std::uint64_t largest = 0;
  for (std::uint32_t i = 0; i < d.database->numObjects(); ++i) {
    const std::uint64_t h = d.database->idAt(i).handle().value();
    used.insert(h);
    largest = std::max(largest, h);
  }
  for (int i = 0; i < 3; ++i) {
    AcDbObjectId id;
    ASSERT_EQ(host::appendEntity(d.database.get(), new AcDbLine(AcGePoint3d(0, 0, 0), AcGePoint3d(1, 0, 0)), id,
                                 d.database->modelSpaceId()),
              Acad::eOk);
    const std::uint64_t h = id.handle().value();
    EXPECT_GT(h, largest);
    EXPECT_TRUE(used.insert(h).second) << "handle " << h << " is given twice";
  }
}

TEST(HostileDrawings, AMissingEndsecDoesNotReadTheNextSectionAsEntities) {
  std::string text = drawing("", line(0, 0, 1, 1));
  // The ENTITIES section loses its end; an OBJECTS section follows.
  const std::string objects = "  0\nSECTION\n  2\nOBJECTS\n  0\nDICTIONARY\n  5\nC\n330\n0\n100\nAcDbDictionary\n"
                              "  0\nENDSEC\n";
  text.replace(text.rfind("  0\nENDSEC\n  0\nEOF\n"), std::string::npos, objects + "  0\nEOF\n");
  DxfDrawing d;
  Diagnostics diag;
  ASSERT_TRUE(read(text, d, diag)) << diag.error;
  EXPECT_TRUE(dxf_text::Warned(diag, "no ENDSEC"));
  const AcDbObjectIdArray ids = host::allEntities(d.database.get());
  ASSERT_EQ(ids.length(), 1);
  AcDbObjectPointer<AcDbLine> only(ids[0], AcDb::kForRead);
  EXPECT_TRUE(only);
}

TEST(HostileDrawings, NumbersBeyondRangeAndBinaryNanAreReported) {
  {
    std::string text = drawing("", line(0, 0, 1, 1));
    text.replace(text.find(" 11\n1\n"), 6, " 11\n1e999\n");
    DxfDrawing d;
    Diagnostics diag;
    ASSERT_TRUE(read(text, d, diag)) << diag.error;
    EXPECT_TRUE(dxf_text::Warned(diag, "'1e999' is beyond the range"));
  }
  {
    // A binary file (two-byte group codes) whose line has a NaN and an
    // infinite coordinate.
    std::string bin("AutoCAD Binary DXF\r\n\x1a\0", 22);
    auto code = [&](int c) { bin += static_cast<char>(c & 0xFF), bin += static_cast<char>(c >> 8); };
    auto text = [&](int c, const std::string& v) { code(c), bin += v, bin += '\0'; };
    auto real = [&](int c, double v) { code(c), bin.append(reinterpret_cast<const char*>(&v), 8); };
    text(0, "SECTION"), text(2, "ENTITIES"), text(0, "LINE"), text(8, "0");
    real(10, std::nan("")), real(20, 0), real(30, 0), real(11, HUGE_VAL), real(21, 1), real(31, 0);
    text(0, "ENDSEC"), text(0, "EOF");
    DxfDrawing d;
    Diagnostics diag;
    ASSERT_TRUE(read(bin, d, diag)) << diag.error;
    EXPECT_TRUE(dxf_text::Warned(diag, "2 real values are not a finite number"));
  }
}

}  // namespace
