// Drawing host figures: creation, deep clone, explode, open/close and erase
// at the sizes real drawings reach, with heap allocations and peak memory.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "host/db/operations.h"

namespace {
std::atomic<long> g_allocations{0};

double peakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

void fillLines(AcDbDatabase& db, int count) {
  AcDbBlockTableRecord* ms = nullptr;
  acdbOpenObject(ms, db.modelSpaceId(), AcDb::kForWrite);
  for (int i = 0; i < count; ++i) {
    auto* line = new AcDbLine(AcGePoint3d(i, 0, 0), AcGePoint3d(i, 1, 0));
    AcDbObjectId id;
    ms->appendAcDbEntity(id, line);
    line->close();
  }
  ms->close();
}

void BM_CreateLines(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  for (auto _ : state) {
    auto db = std::make_unique<AcDbDatabase>();
    fillLines(*db, n);
    state.counters["peak_MB"] = peakMegabytes();
    state.PauseTiming();  // destruction is not creation
    db.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_CreateLines)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_DeepCloneLines(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  AcDbDatabase db;
  fillLines(db, n);
  const AcDbObjectIdArray ids = host::allEntities(&db);
  for (auto _ : state) {
    AcDbIdMapping mapping;
    db.deepCloneObjects(ids, db.modelSpaceId(), mapping);
    benchmark::DoNotOptimize(mapping.pairs().size());
  }
  state.counters["peak_MB"] = peakMegabytes();
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_DeepCloneLines)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_OpenCloseEveryEntity(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  AcDbDatabase db;
  fillLines(db, n);
  const AcDbObjectIdArray ids = host::allEntities(&db);
  long allocations = 0;
  for (auto _ : state) {
    const long before = g_allocations.load();
    double sum = 0;
    for (const AcDbObjectId id : ids) {
      AcDbLine* line = nullptr;
      if (acdbOpenObject(line, id, AcDb::kForRead) == Acad::eOk) {
        sum += line->endPoint().y;
        line->close();
      }
    }
    allocations += g_allocations.load() - before;
    benchmark::DoNotOptimize(sum);
  }
  state.counters["allocations"] = static_cast<double>(allocations);
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_OpenCloseEveryEntity)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_ExplodeBlockReferences(benchmark::State& state) {
  const int refs = static_cast<int>(state.range(0)), perBlock = 50;
  for (auto _ : state) {
    state.PauseTiming();
    auto owned = std::make_unique<AcDbDatabase>();
    AcDbDatabase& db = *owned;
    AcDbObjectId block;
    {
      AcDbBlockTable* table = nullptr;
      db.getBlockTable(table, AcDb::kForWrite);
      auto* rec = new AcDbBlockTableRecord;
      rec->setName("TOOL");
      table->add(block, rec);
      rec->close();
      table->close();
    }
    for (int i = 0; i < perBlock; ++i) {
      AcDbObjectId id;
      if (i % 5 == 0) host::appendEntity(&db, new AcDbArc(AcGePoint3d(i, 0, 0), 1, 0, 1.5), id, block);
      else host::appendEntity(&db, new AcDbLine(AcGePoint3d(i, 0, 0), AcGePoint3d(i + 1, 1, 0)), id, block);
    }
    AcDbObjectIdArray inserts;
    for (int r = 0; r < refs; ++r) {
      auto* ref = new AcDbBlockReference(AcGePoint3d(r * 100.0, 0, 0), block);
      ref->setRotation(0.1 * r);
      AcDbObjectId id;
      host::appendEntity(&db, ref, id);
      inserts.append(id);
    }
    state.ResumeTiming();
    long pieces = 0;
    for (const AcDbObjectId id : inserts) {
      AcDbObjectIdArray out;
      host::explodeEntity(id, out, true);
      pieces += out.length();
    }
    benchmark::DoNotOptimize(pieces);
    state.PauseTiming();
    owned.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * refs * perBlock);
}
BENCHMARK(BM_ExplodeBlockReferences)->Arg(10'000)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_EraseHalf(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    auto db = std::make_unique<AcDbDatabase>();
    fillLines(*db, n);
    const AcDbObjectIdArray ids = host::allEntities(db.get());
    state.ResumeTiming();
    for (int i = 0; i < ids.length(); i += 2) host::eraseObject(ids[i]);
    state.PauseTiming();
    db.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * n / 2);
}
BENCHMARK(BM_EraseHalf)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(1);
}  // namespace

// Counts heap allocations so that the open/close figure can show none.
void* operator new(std::size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

BENCHMARK_MAIN();
