// The engine's indexed stages against the plain loops of the reference, on
// seeded random and adversarial record sets: the same records in the same
// order, bit for bit, the same entities created and erased.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>

#include "engine_fixture.h"
#include "fluted_tool.h"
#include "plain_stages.h"
#include "tool_drawings.h"

namespace {

// A drawing of its own for each side, so that the entities each side makes
// get the same slots.
struct Side {
  Side() : doc(acDocManagerPtr()->openDocument(std::make_unique<AcDbDatabase>())) {}
  ~Side() { acDocManagerPtr()->closeDocument(doc); }
  Side(const Side&) = delete;
  Side& operator=(const Side&) = delete;
  AcDbDatabase* db() const { return doc->database(); }
  AcApDocument* doc;
};

bool sameBits(const AcGePoint3d& a, const AcGePoint3d& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

std::string describe(const CLineInfo& r) {
  char buf[200];
  std::snprintf(buf, sizeof buf, "(%.17g,%.17g)-(%.17g,%.17g) slot %u valid %d breaks %zu", r.m_ptStart.x,
                r.m_ptStart.y, r.m_ptEnd.x, r.m_ptEnd.y, r.m_id.slotIndex(), r.m_bValid, r.m_breakPts.size());
  return buf;
}

void ExpectSameRecords(const std::vector<CLineInfo>& plain, const std::vector<CLineInfo>& fast, const std::string& what) {
  ASSERT_EQ(plain.size(), fast.size()) << what;
  for (std::size_t k = 0; k < plain.size(); ++k) {
    const CLineInfo &a = plain[k], &b = fast[k];
    bool same = sameBits(a.m_ptStart, b.m_ptStart) && sameBits(a.m_ptEnd, b.m_ptEnd) && a.m_bValid == b.m_bValid &&
                a.m_id.isNull() == b.m_id.isNull() && a.m_id.slotIndex() == b.m_id.slotIndex() &&
                a.m_breakPts.size() == b.m_breakPts.size();
    for (std::size_t m = 0; same && m < a.m_breakPts.size(); ++m) same = sameBits(a.m_breakPts[m], b.m_breakPts[m]);
    ASSERT_TRUE(same) << what << ": record " << k << "\n plain " << describe(a) << "\n index " << describe(b);
  }
}

// The unerased entities of both drawings, slot for slot.
void ExpectSameDrawing(const Side& plain, const Side& fast, const std::string& what) {
  const AcDbObjectIdArray a = host::allEntities(plain.db()), b = host::allEntities(fast.db());
  ASSERT_EQ(a.length(), b.length()) << what;
  for (int k = 0; k < a.length(); ++k) ASSERT_EQ(a[k].slotIndex(), b[k].slotIndex()) << what;
}

// Random record sets with the cases the indices must get right: points on a
// coarse lattice (shared ends, T-junctions, collinear overlaps, duplicates,
// axis-parallel records, ends exactly on slab boundaries), zero-length
// records, points moved by about the tolerances, long records across the
// set, records without an entity and records that are not kept.
struct RecordSpec {
  AcGePoint3d a, b;
  bool entity = true;
  bool valid = true;
};

std::vector<RecordSpec> RandomSpecs(std::uint32_t seed, int n, double nudge) {
  std::mt19937 rng(seed);
  std::uniform_int_distribution<int> lattice(0, 16);
  std::uniform_real_distribution<double> unit(0, 1);
  auto coord = [&] { return lattice(rng) * 0.5; };
  auto jitter = [&](double v) {
    const double r = unit(rng);
    if (r < 0.15) return v + (unit(rng) - 0.5) * 2 * nudge;                  // about the tolerance
    if (r < 0.2) return v + (unit(rng) < 0.5 ? -1 : 1) * nudge * 0.999;       // just inside it
    if (r < 0.25) return v + unit(rng) * 0.3;                                 // off the lattice
    return v;
  };
  std::vector<RecordSpec> out;
  for (int i = 0; i < n; ++i) {
    RecordSpec s;
    const double kind = unit(rng);
    s.a = AcGePoint3d(coord(), coord(), 0);
    if (kind < 0.25) s.b = AcGePoint3d(s.a.x + (lattice(rng) - 8) * 0.5, s.a.y, 0);  // horizontal
    else if (kind < 0.5) s.b = AcGePoint3d(s.a.x, s.a.y + (lattice(rng) - 8) * 0.5, 0);  // vertical
    else if (kind < 0.55) s.b = s.a;                                                    // zero length
    else if (kind < 0.6 && !out.empty()) {                                              // a repeat
      const RecordSpec& o = out[static_cast<std::size_t>(lattice(rng)) % out.size()];
      s.a = unit(rng) < 0.5 ? o.a : o.b;
      s.b = s.a == o.a ? o.b : o.a;
    } else if (kind < 0.7 && !out.empty()) {  // on the line of an earlier one: overlaps, covers, extends
      const RecordSpec& o = out[static_cast<std::size_t>(lattice(rng)) % out.size()];
      const double t1 = (lattice(rng) - 4) * 0.125, t2 = (lattice(rng) - 4) * 0.125;
      s.a = o.a + (o.b - o.a) * t1;
      s.b = o.a + (o.b - o.a) * t2;
    } else if (kind < 0.73) {
      s.a = AcGePoint3d(-2, coord(), 0);  // long, across the set
      s.b = AcGePoint3d(10, s.a.y + (unit(rng) < 0.5 ? 0 : 1), 0);
    } else s.b = AcGePoint3d(coord(), coord(), 0);
    s.a = AcGePoint3d(jitter(s.a.x), jitter(s.a.y), 0);
    s.b = AcGePoint3d(jitter(s.b.x), jitter(s.b.y), 0);
    s.entity = unit(rng) > 0.05;
    s.valid = unit(rng) > 0.05;
    out.push_back(s);
  }
  return out;
}

std::vector<CLineInfo> Build(const Side& side, const std::vector<RecordSpec>& specs) {
  std::vector<CLineInfo> out;
  for (const RecordSpec& s : specs) {
    CLineInfo r;
    if (s.entity) {
      auto* line = new AcDbLine(s.a, s.b);
      AcDbObjectId id;
      host::appendEntity(side.db(), line, id);
      r = CLineInfo(id);
    } else {
      r.m_ptStart = s.a;
      r.m_ptEnd = s.b;
    }
    r.m_bValid = s.valid;
    out.push_back(r);
  }
  return out;
}

// Runs a stage (a generic lambda over the stages and the records) on the
// plain reference and on the engine, over many seeded sets; sizes vary so
// that some sets are dense.
template <class F>
void Compare(const char* name, F&& stage, double nudge = 0.0005, int sets = 60) {
  for (int seed = 1; seed <= sets; ++seed) {
    const int n = 5 + (seed * 37) % 160;
    const std::vector<RecordSpec> specs = RandomSpecs(static_cast<std::uint32_t>(seed), n, nudge);
    // Each side acts on its own drawing, current while it runs.
    Side plainSide;
    std::vector<CLineInfo> plain = Build(plainSide, specs);
    PlainStages ref;
    stage(ref, plain);
    Side fastSide;
    std::vector<CLineInfo> fast = Build(fastSide, specs);
    IndexedStages eng;
    stage(eng, fast);
    const std::string what = std::string(name) + " seed " + std::to_string(seed) + " n " + std::to_string(n);
    ExpectSameRecords(plain, fast, what);
    ExpectSameDrawing(plainSide, fastSide, what);
    if (testing::Test::HasFatalFailure()) return;
  }
}

// The box of the records, as the third driver builds it before slab cutting.
CVKRect BoxOfAll(const std::vector<CLineInfo>& lines) {
  CVKRect box(true);
  for (const CLineInfo& r : lines) {
    box.Extend(r.m_ptStart);
    box.Extend(r.m_ptEnd);
  }
  return box;
}

TEST(StageEquivalence, BreakingAtCrossingsAndIntoSlabs) {
  Compare("BreakLines", [](auto& e, auto& v) { e.BreakLines(v); });
  for (const bool all : {true, false})
    for (const bool right : {true, false})
      Compare(all ? "BreakLines2 all points" : "BreakLines2 outside the shifted box",
              [all, right](auto& e, auto& v) {
                e.m_rect = BoxOfAll(v);
                e.m_info.m_dBreakLength = 2.0;  // so that the shifted box leaves some records out
                e.BreakLines2(v, all, right);
              });
}

TEST(StageEquivalence, HiddenLinesFromEachDirection) {
  for (int dir = 0; dir <= 4; ++dir)
    Compare("RemoveLine2", [dir](auto& e, auto& v) {
      e.m_rect = BoxOfAll(v);
      v = e.RemoveLine2(static_cast<E_RemoveLine_Dir>(dir), v);
    }, 0.0005, 25);
}

TEST(StageEquivalence, NinePointHiddenLinesFromEachDirection) {
  for (int dir = 0; dir <= 4; ++dir)
    Compare("RemoveLine", [dir](auto& e, auto& v) { v = e.RemoveLine(static_cast<E_RemoveLine_Dir>(dir), v); },
            0.0005, 25);
}

TEST(StageEquivalence, EndpointSnappingWithMovingRecords) {
  // Points moved by up to the snap limit, so that records snap onto records
  // that have already moved.
  for (const double nudge : {0.0005, 0.3, 0.6})
    Compare("UpdateLinePtByNearestPt", [](auto& e, auto& v) { e.UpdateLinePtByNearestPt(v); }, nudge);
}

TEST(StageEquivalence, ExclusionAndOtherDirections) {
  for (int dir = 0; dir <= 4; ++dir)
    Compare("RemoveLineInExcludeDir",
            [dir](auto& e, auto& v) { e.RemoveLineInExcludeDir(static_cast<E_RemoveLine_Dir>(dir), 4.0, v); }, 0.0005,
            20);
  // The other direction's records: copies of two records in three, moved
  // across by less than the line tolerance (so that axis-parallel records
  // and their copies have boxes that do not touch).
  Compare("RemoveLineInOtherDir", [](auto& e, auto& v) {
    std::vector<CLineInfo> other;
    for (std::size_t k = 0; k < v.size(); ++k) {
      if (k % 3 == 2) continue;
      CLineInfo r = v[k];
      const AcGeVector3d move = k % 3 ? AcGeVector3d(0.0007, 0, 0) : AcGeVector3d(0, 0.0007, 0);
      r.m_ptStart += move;
      r.m_ptEnd += move;
      other.push_back(r);
    }
    e.RemoveLineInOtherDir(other, v);
  });
  for (const int dir : {0, 2})
    Compare("RemoveLineByWalter",
            [dir](auto& e, auto& v) { e.RemoveLineByWalter(v, static_cast<E_RemoveLine_Dir>(dir)); }, 0.0005, 10);
}

TEST(StageEquivalence, DuplicateCrossingAndShortRecords) {
  for (const double nudge : {1e-7, 0.0005})
    Compare("RemoveCrossLine", [](auto& e, auto& v) { e.RemoveCrossLine(v); }, nudge);
  for (const double nudge : {0.0005, 0.001})
    Compare("RemoveRepeatLine2", [](auto& e, auto& v) { e.RemoveRepeatLine2(v); }, nudge);
  Compare("RemoveShortLine", [](auto& e, auto& v) { e.RemoveShortLine(v); });
}

TEST(StageEquivalence, CollinearOutlinePoints) {
  // Point runs on a coarse lattice: straight runs, vertical and horizontal
  // runs, repeated points and turns of about a degree.
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> step(-2, 2);
    std::uniform_real_distribution<double> unit(0, 1);
    AcArray<AcGePoint3d> pts;
    AcGePoint3d p(0, 0, 0);
    const int n = 2 + static_cast<int>(seed % 60);
    for (int k = 0; k < n; ++k) {
      pts.append(p);
      if (unit(rng) < 0.6) p = AcGePoint3d(p.x + step(rng), p.y + step(rng) * (unit(rng) < 0.2 ? 0.017 : 1), 0);
    }
    AcArray<AcGePoint3d> plain = pts, fast = pts;
    PlainStages().RemoveCollinearPoints(plain);
    IndexedStages(CEncircleCalInfo()).RemoveCollinearPoints(fast);
    ASSERT_EQ(plain.length(), fast.length()) << "seed " << seed;
    for (int k = 0; k < plain.length(); ++k) ASSERT_TRUE(sameBits(plain[k], fast[k])) << "seed " << seed;
  }
}

// Whole outlines of fluted tools and of a sheet of tools, vertex for vertex:
// the reference driver over the plain stages against the engine's driver.
template <class Draw>
void ExpectSameOutline(Draw&& draw, const char* what, int driver = 3) {
  Side plainSide;
  const fluted::Drawing a = draw(plainSide.db());
  AcDbObjectId plainResult, fastResult;
  PlainStages ref(a.info);
  if (driver == 1) ref.Run1(a.selection, plainResult);
  else ref.Run3(a.selection, plainResult, [](const char*) {});
  Side fastSide;
  const fluted::Drawing b = draw(fastSide.db());
  CEncircleLine eng(b.info);
  if (driver == 1) eng.GetEncircleLine(b.selection, fastResult);
  else eng.GetEncircleLine3(b.selection, fastResult);
  const auto pv = tooltest::VerticesOf(plainResult), fv = tooltest::VerticesOf(fastResult);
  ASSERT_GT(pv.size(), 3u) << what;
  ASSERT_EQ(pv.size(), fv.size()) << what;
  for (std::size_t k = 0; k < pv.size(); ++k) {
    ASSERT_TRUE(std::memcmp(&pv[k].x, &fv[k].x, sizeof(double)) == 0 &&
                std::memcmp(&pv[k].y, &fv[k].y, sizeof(double)) == 0 &&
                std::memcmp(&pv[k].bulge, &fv[k].bulge, sizeof(double)) == 0)
        << what << " vertex " << k;
  }
  ExpectSameDrawing(plainSide, fastSide, what);
}

TEST(StageEquivalence, WholeOutlinesOfFlutedToolsAndASheet) {
  for (const std::uint32_t seed : {7u, 8u})
    ExpectSameOutline([seed](AcDbDatabase* db) { return fluted::DrawFlutedTool(db, {.seed = seed, .flutes = 12}); },
                      "fluted tool");
  ExpectSameOutline([](AcDbDatabase* db) { return fluted::DrawSheet(db, 12); }, "sheet of tools");
  ExpectSameOutline([](AcDbDatabase* db) { return fluted::DrawFlutedTool(db, {.seed = 9, .flutes = 8}); },
                    "fluted tool, first driver", 1);
  ExpectSameOutline([](AcDbDatabase* db) { return fluted::DrawSheet(db, 6); }, "sheet of tools, first driver", 1);
}

}  // namespace
