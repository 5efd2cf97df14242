// GetEncircleLine3 on tool drawings of growing size: a form tool whose
// profile has N steps, each with a corner radius, drawn with both halves,
// silhouettes, a centre line, hidden lines, dimensions, text and a hatch.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <numbers>

#include "engine/encircle_line.h"
#include "host/db/operations.h"
#include "host/ed/document.h"

namespace {

class Engine : public CEncircleLine {
 public:
  using CEncircleLine::CEncircleLine;
  using CEncircleLine::ConvertToLines;
};

void put(AcDbDatabase* db, AcDbEntity* e, AcArray<AcDbObjectId>& ids) {
  AcDbObjectId id;
  host::appendEntity(db, e, id);
  ids.append(id);
}

// A stepped profile: N steps alternating between radius 5 and 4, each step
// entered over a quarter arc of radius 1.
AcArray<AcDbObjectId> DrawFormTool(AcDbDatabase* db, int steps) {
  AcArray<AcDbObjectId> ids;
  constexpr double kPi = std::numbers::pi;
  double x = 0;
  for (const double side : {1.0, -1.0}) {
    x = 0;
    put(db, new AcDbLine({0, 0, 0}, {0, side * 4, 0}), ids);
    for (int i = 0; i < steps; ++i) {
      const double y = i % 2 ? 4 : 5, next = i % 2 ? 5 : 4;
      put(db, new AcDbLine({x, side * y, 0}, {x + 3, side * y, 0}), ids);
      // A quarter arc of radius 1 down (or up) to the next level.
      const double cx = x + 3, cy = side * (next > y ? y + 1 : y - 1);
      const bool up = next > y;
      double s = up ? 3 * kPi / 2 : 0, e = up ? 2 * kPi : kPi / 2;
      if (side < 0) std::swap(s, e), s = 2 * kPi - s, e = 2 * kPi - e;
      put(db, new AcDbArc({cx, cy, 0}, 1, std::min(s, e), std::max(s, e)), ids);
      put(db, new AcDbLine({x + 4, side * (up ? y + 1 : y - 1), 0}, {x + 4, side * next, 0}), ids);
      x += 4;
    }
    put(db, new AcDbLine({x, side * 4, 0}, {x, 0, 0}), ids);
  }
  put(db, new AcDbLine({-3, 0, 0}, {x + 3, 0, 0}), ids);
  auto* dim = new AcDbLine({0, 8, 0}, {x, 8, 0});
  put(db, dim, ids);
  put(db, new AcDbText({0, 10, 0}, "FORM TOOL", 2.5), ids);
  return ids;
}

void BM_GetEncircleLine3(benchmark::State& state) {
  const int steps = static_cast<int>(state.range(0));
  long segments = 0, entities = 0;
  for (auto _ : state) {
    state.PauseTiming();
    AcApDocument* doc = acDocManagerPtr()->openDocument(std::make_unique<AcDbDatabase>());
    AcDbDatabase* db = doc->database();
    const AcArray<AcDbObjectId> ids = DrawFormTool(db, steps);
    entities = ids.length();
    {
      // Segments after conversion, counted on a copy of the drawing's clones.
      AcDbIdMapping map;
      db->deepCloneObjects(ids, db->modelSpaceId(), map);
      AcArray<AcDbObjectId> clones, lines;
      for (const auto& pair : map.pairs()) clones.append(pair.value());
      Engine counter{CEncircleCalInfo()};
      counter.ConvertToLines(clones, lines);
      segments = lines.length();
      for (AcDbObjectId id : lines) host::eraseObject(id);
    }
    auto* axis = new AcDbLine({-13, 0, 0}, {steps * 4.0 + 13, 0, 0});
    AcDbObjectId axisId;
    host::appendEntity(db, axis, axisId);
    CEncircleCalInfo info;
    info.m_idMidLine = axisId;
    Engine engine(info);
    state.ResumeTiming();
    AcDbObjectId result;
    engine.GetEncircleLine3(ids, result);
    benchmark::DoNotOptimize(result);
    state.PauseTiming();
    acDocManagerPtr()->closeDocument(doc);
    state.ResumeTiming();
  }
  state.counters["entities"] = static_cast<double>(entities);
  state.counters["segments"] = static_cast<double>(segments);
}
BENCHMARK(BM_GetEncircleLine3)->Arg(5)->Arg(25)->Arg(100)->Arg(250)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
