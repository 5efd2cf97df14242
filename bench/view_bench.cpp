// The drawing view on a drawing of 400,000 entities (a sheet of tools:
// lines, arcs, circles, polylines and texts): building the geometry once,
// then a frame of the whole sheet, of a quarter of it, and of one tool.
#include <benchmark/benchmark.h>

#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>

#include <cmath>

#include "app/gui/view/drawing_view.h"
#include "host/db/operations.h"

namespace {

constexpr int kEntities = 400000;
constexpr int kPerTool = 40;

// Tools of 40 entities on a square grid, 150 units apart.
std::unique_ptr<AcDbDatabase> sheet() {
  auto db = std::make_unique<AcDbDatabase>();
  const int tools = kEntities / kPerTool, columns = static_cast<int>(std::sqrt(tools));
  for (int t = 0; t < tools; ++t) {
    const double x0 = (t % columns) * 150.0, y0 = (t / columns) * 150.0;
    AcDbObjectId id;
    for (int i = 0; i < 24; ++i)
      host::appendEntity(db.get(), new AcDbLine({x0 + i * 4, y0, 0}, {x0 + i * 4 + 4, y0 + 10 + (i % 5), 0}), id);
    for (int i = 0; i < 8; ++i)
      host::appendEntity(db.get(), new AcDbArc({x0 + 10 * i, y0 + 30, 0}, 4, 0, 3), id);
    for (int i = 0; i < 4; ++i)
      host::appendEntity(db.get(), new AcDbCircle({x0 + 20 * i, y0 + 50, 0}, AcGeVector3d::kZAxis, 3), id);
    for (int i = 0; i < 2; ++i) {
      auto* pl = new AcDbPolyline;
      pl->addVertexAt(0, {x0, y0 + 60 + i * 10}, 0.5);
      pl->addVertexAt(1, {x0 + 50, y0 + 60 + i * 10});
      pl->addVertexAt(2, {x0 + 100, y0 + 70 + i * 10});
      host::appendEntity(db.get(), pl, id);
    }
    for (int i = 0; i < 2; ++i) host::appendEntity(db.get(), new AcDbText({x0, y0 + 90 + i * 8, 0}, "T-1001 刀具 %%c10", 5), id);
  }
  return db;
}

struct Fixture {
  Fixture() : db(sheet()) {
    view.resize(1600, 1000);
    view.SetDrawing(db.get());
  }
  std::unique_ptr<AcDbDatabase> db;
  gui::DrawingView view;
  const gui::DrawingScene& scene = view.Scene();
};

Fixture& fixture() {
  static Fixture f;
  return f;
}

// A frame of the view showing world: the view's whole paint, as a
// window repaint after a zoom or pan does it (the first frame of a new
// overview image is left out: it is made once).
void paint(benchmark::State& state, const QRectF& world) {
  gui::DrawingView& view = fixture().view;
  view.ZoomWindow(world);
  view.grab();
  for (auto _ : state) {
    view.Redraw();
    benchmark::DoNotOptimize(view.grab());
  }
  state.counters["entities"] = static_cast<double>(fixture().scene.EntityCount());
  state.counters["render_ms"] = view.LastRenderMs();
}

void BM_Build(benchmark::State& state) {
  const auto db = sheet();
  for (auto _ : state) {
    gui::DrawingScene scene;
    scene.Build(db.get());
    benchmark::DoNotOptimize(scene.EntityCount());
  }
}
BENCHMARK(BM_Build)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_PaintWholeSheet(benchmark::State& state) { paint(state, fixture().scene.Extents()); }
BENCHMARK(BM_PaintWholeSheet)->Unit(benchmark::kMillisecond);

void BM_PaintOneTool(benchmark::State& state) { paint(state, QRectF(-10, -10, 160, 120)); }
BENCHMARK(BM_PaintOneTool)->Unit(benchmark::kMillisecond);

void BM_PaintQuarter(benchmark::State& state) {
  const QRectF e = fixture().scene.Extents();
  paint(state, QRectF(e.topLeft(), e.size() / 4));
}
BENCHMARK(BM_PaintQuarter)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
