// The solid of a form tool's outline with a given number of edges: the
// revolve, the SAT text, the STEP file and the STL mesh, each on its own and
// revolve + SAT + STEP together (the export of one outline).
#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <string>

#include "host/brep/solid.h"
#include "host/db/operations.h"

namespace {

const double kQuarter = std::tan(std::numbers::pi / 8);

// A closed outline above y = 0: up the left end, then grooves of a line, a
// concave quarter arc, a line and a convex quarter arc (four edges each)
// alternating between radius 5 and 3, and back along the axis.
AcDbPolyline* FormOutline(int edges) {
  auto* pl = new AcDbPolyline;
  unsigned i = 0;
  double x = 0;
  pl->addVertexAt(i++, {0, 0});
  while (static_cast<int>(i) + 4 <= edges - 1) {
    pl->addVertexAt(i++, {x, 5});
    pl->addVertexAt(i++, {x + 3, 5}, kQuarter);   // convex, down to the groove
    pl->addVertexAt(i++, {x + 5, 3});
    pl->addVertexAt(i++, {x + 7, 3}, -kQuarter);  // concave, back up
    x += 9;
  }
  pl->addVertexAt(i++, {x, 5});
  pl->addVertexAt(i++, {x + 3, 5});
  pl->addVertexAt(i++, {x + 3, 0});
  pl->setClosed(true);
  return pl;
}

struct Fixture {
  explicit Fixture(int edges) {
    host::appendEntity(&db, FormOutline(edges), id);
    dir = std::filesystem::temp_directory_path() / "envline_solid_bench";
    std::filesystem::create_directories(dir);
  }
  AcDb3dSolid revolve() const {
    AcDbObjectPointer<AcDbPolyline> pl(id, AcDb::kForRead);
    AcDb3dSolid solid;
    if (solid.createRevolvedSolid(pl.get(), {0, 0, 0}, {1, 0, 0}, 2 * std::numbers::pi, 0, {}) != Acad::eOk)
      std::abort();
    return solid;
  }
  AcDbDatabase db;
  AcDbObjectId id;
  std::filesystem::path dir;
};

void BM_Revolve(benchmark::State& state) {
  Fixture f(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(f.revolve().isNull());
}

void BM_SatText(benchmark::State& state) {
  Fixture f(static_cast<int>(state.range(0)));
  const AcDb3dSolid solid = f.revolve();
  std::string text, error;
  for (auto _ : state) {
    if (!host::brep::SatText(solid, text, error)) state.SkipWithError(error.c_str());
    benchmark::DoNotOptimize(text.size());
  }
  state.counters["sat_bytes"] = static_cast<double>(text.size());
}

void BM_Step(benchmark::State& state) {
  Fixture f(static_cast<int>(state.range(0)));
  const AcDb3dSolid solid = f.revolve();
  const std::string path = (f.dir / "tool.step").string();
  std::string error;
  for (auto _ : state)
    if (!host::brep::WriteStep(solid, path, error)) state.SkipWithError(error.c_str());
}

void BM_Stl(benchmark::State& state) {
  Fixture f(static_cast<int>(state.range(0)));
  const AcDb3dSolid solid = f.revolve();
  const std::string path = (f.dir / "tool.stl").string();
  std::string error;
  for (auto _ : state)
    if (!host::brep::WriteStl(solid, path, 0.01, error)) state.SkipWithError(error.c_str());
  state.counters["stl_bytes"] = static_cast<double>(std::filesystem::file_size(path));
}

// What one exported outline costs: target under 50 ms at 200 edges.
void BM_RevolveSatStep(benchmark::State& state) {
  Fixture f(static_cast<int>(state.range(0)));
  const std::string sat = (f.dir / "tool.sat").string(), step = (f.dir / "tool.step").string();
  std::string error;
  for (auto _ : state) {
    AcDb3dSolid solid = f.revolve();
    if (AcDbBody::acisOut(sat, {&solid}) != Acad::eOk || !host::brep::WriteStep(solid, step, error))
      state.SkipWithError("writing failed");
  }
}

}  // namespace

BENCHMARK(BM_Revolve)->Arg(20)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SatText)->Arg(20)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Step)->Arg(20)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Stl)->Arg(20)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RevolveSatStep)->Arg(20)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
