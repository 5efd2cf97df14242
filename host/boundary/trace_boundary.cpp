// Boundary tracing on GEOS: the visible curves of the block become line
// strings, their union nodes them, the polygonizer makes the faces, and the
// face that holds the seed gives the boundaries.
#include "host/boundary/trace_boundary.h"

#include <geos_c.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "host/db/curves.h"
#include "host/db/object.h"
#include "host/db/symbol_tables.h"
#include "host/ge/curve3d.h"

namespace host {

namespace {

constexpr int kMaxChords = 4096;
constexpr double kGrid = 1e-6;  // coordinates are rounded to this grid

// One GEOS context for one trace; errors are kept, not printed.
class GeosContext {
 public:
  GeosContext() : m_handle(GEOS_init_r()) {
    GEOSContext_setErrorMessageHandler_r(m_handle, &GeosContext::onError, this);
  }
  ~GeosContext() { GEOS_finish_r(m_handle); }
  GeosContext(const GeosContext&) = delete;
  GeosContext& operator=(const GeosContext&) = delete;
  GEOSContextHandle_t get() const { return m_handle; }

 private:
  static void onError(const char*, void*) {}
  GEOSContextHandle_t m_handle;
};

// Owns one GEOS geometry.
class Geom {
 public:
  Geom(GEOSContextHandle_t ctx, GEOSGeometry* g) : m_ctx(ctx), m_g(g) {}
  ~Geom() {
    if (m_g) GEOSGeom_destroy_r(m_ctx, m_g);
  }
  Geom(const Geom&) = delete;
  Geom& operator=(const Geom&) = delete;
  GEOSGeometry* get() const { return m_g; }

 private:
  GEOSContextHandle_t m_ctx;
  GEOSGeometry* m_g;
};

using Chain = std::vector<AcGePoint2d>;

// The chords of a curve's piece, from its start to its end.
void appendCurve(const AcDbCurve& curve, double chordLength, std::vector<Chain>& chains) {
  if (const auto* line = AcDbLine::cast(&curve)) {
    const AcGePoint3d s = line->startPoint(), e = line->endPoint();
    chains.push_back({AcGePoint2d(s.x, s.y), AcGePoint2d(e.x, e.y)});
    return;
  }
  const std::unique_ptr<AcGeCurve3d> ge = curve.geCurve();
  if (!ge) return;
  const double length = ge->length();
  if (!std::isfinite(length) || length <= 0) return;
  const int chords = std::clamp(static_cast<int>(std::ceil(length / chordLength)), 1, kMaxChords);
  AcGePoint3dArray samples;
  ge->getSamplePoints(chords + 1, samples);
  Chain chain;
  for (const AcGePoint3d& p : samples) chain.emplace_back(p.x, p.y);
  chains.push_back(std::move(chain));
}

// The curves of an entity that can be seen, as chains of points.
void appendEntity(const AcDbEntity& ent, double chordLength, std::vector<Chain>& chains) {
  const auto* curve = AcDbCurve::cast(&ent);
  if (!curve) return;
  if (ent.isKindOf(AcDbPolyline::desc()) || ent.isKindOf(AcDb2dPolyline::desc()) ||
      ent.isKindOf(AcDb3dPolyline::desc())) {
    AcDbEntityArray pieces;
    if (ent.explode(pieces) != Acad::eOk) return;
    for (AcDbEntity* piece : pieces) {
      if (const auto* c = AcDbCurve::cast(piece)) appendCurve(*c, chordLength, chains);
      delete piece;
    }
    return;
  }
  appendCurve(*curve, chordLength, chains);
}

bool layerShown(AcDbObjectId layerId, std::map<AcDbObjectId, bool>& cache) {
  const auto found = cache.find(layerId);
  if (found != cache.end()) return found->second;
  AcDbObjectPointer<AcDbLayerTableRecord> layer(layerId, AcDb::kForRead);
  const bool shown = !layer || (!layer->isOff() && !layer->isFrozen());
  cache.emplace(layerId, shown);
  return shown;
}

double cross(const AcGePoint2d& a, const AcGePoint2d& b, const AcGePoint2d& c) {
  return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

// The ring's vertices (without the closing repeat), counter-clockwise from
// the lowest-leftmost, straight-through vertices dropped.
std::vector<AcGePoint2d> normalisedRing(GEOSContextHandle_t ctx, const GEOSGeometry* ring) {
  const GEOSCoordSequence* seq = GEOSGeom_getCoordSeq_r(ctx, ring);
  unsigned size = 0;
  if (!seq || !GEOSCoordSeq_getSize_r(ctx, seq, &size) || size < 4) return {};
  std::vector<AcGePoint2d> pts;
  for (unsigned i = 0; i + 1 < size; ++i) {
    double x = 0, y = 0;
    GEOSCoordSeq_getXY_r(ctx, seq, i, &x, &y);
    pts.emplace_back(x, y);
  }
  double area2 = 0;
  for (std::size_t i = 0; i < pts.size(); ++i) {
    const AcGePoint2d& a = pts[i];
    const AcGePoint2d& b = pts[(i + 1) % pts.size()];
    area2 += a.x * b.y - b.x * a.y;
  }
  if (area2 < 0) std::reverse(pts.begin(), pts.end());
  for (std::size_t i = 0; pts.size() > 3 && i < pts.size();) {
    const AcGePoint2d& a = pts[(i + pts.size() - 1) % pts.size()];
    const AcGePoint2d& b = pts[i];
    const AcGePoint2d& c = pts[(i + 1) % pts.size()];
    const double ab = a.distanceTo(b), bc = b.distanceTo(c);
    const bool ahead = (b.x - a.x) * (c.x - b.x) + (b.y - a.y) * (c.y - b.y) > 0;
    if (ab == 0 || (ahead && std::abs(cross(a, b, c)) <= 1e-12 * ab * bc)) pts.erase(pts.begin() + static_cast<long>(i));
    else ++i;
  }
  const auto first = std::min_element(pts.begin(), pts.end(), [](const AcGePoint2d& p, const AcGePoint2d& q) {
    return p.y < q.y || (p.y == q.y && p.x < q.x);
  });
  std::rotate(pts.begin(), first, pts.end());
  return pts;
}

std::unique_ptr<AcDbPolyline> makePolyline(const std::vector<AcGePoint2d>& pts, double z) {
  auto pline = std::make_unique<AcDbPolyline>();
  for (std::size_t i = 0; i < pts.size(); ++i) pline->addVertexAt(static_cast<unsigned>(i), pts[i], 0, -1, -1);
  pline->setClosed(true);
  pline->setElevation(z);
  return pline;
}

}  // namespace

Acad::ErrorStatus traceBoundary(AcDbObjectId blockId, const AcGePoint3d& seed,
                                std::vector<std::unique_ptr<AcDbPolyline>>& boundaries, double chordLength) {
  boundaries.clear();
  if (!std::isfinite(seed.x) || !std::isfinite(seed.y) || !std::isfinite(seed.z) || !(chordLength > 0))
    return Acad::eInvalidInput;
  if (blockId.isNull()) return Acad::eNullObjectId;

  // The visible curves as chains of points.
  std::vector<Chain> chains;
  {
    AcDbObjectPointer<AcDbBlockTableRecord> block(blockId, AcDb::kForRead);
    if (!block) return block.openStatus();
    const AcDbObjectIdArray ids = block->entityIds();
    block.close();
    std::map<AcDbObjectId, bool> layers;
    for (AcDbObjectId id : ids) {
      if (id.isErased()) continue;
      AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
      if (!ent || ent->visibility() != AcDb::kVisible || !layerShown(ent->layerId(), layers)) continue;
      appendEntity(*ent.get(), chordLength, chains);
    }
  }

  const GeosContext context;
  GEOSContextHandle_t ctx = context.get();
  std::vector<GEOSGeometry*> lines;
  for (const Chain& chain : chains) {
    Chain pts;
    for (const AcGePoint2d& p : chain)
      if (std::isfinite(p.x) && std::isfinite(p.y) && (pts.empty() || !(pts.back() == p))) pts.push_back(p);
    if (pts.size() < 2) continue;
    std::vector<double> xy;
    for (const AcGePoint2d& p : pts) xy.insert(xy.end(), {p.x, p.y});
    GEOSCoordSequence* seq = GEOSCoordSeq_copyFromBuffer_r(ctx, xy.data(), static_cast<unsigned>(pts.size()), 0, 0);
    if (GEOSGeometry* line = seq ? GEOSGeom_createLineString_r(ctx, seq) : nullptr) lines.push_back(line);
  }
  if (lines.empty()) return Acad::eOk;
  // The collection owns the lines from here on.
  const Geom all(ctx, GEOSGeom_createCollection_r(ctx, GEOS_MULTILINESTRING, lines.data(),
                                                  static_cast<unsigned>(lines.size())));
  if (!all.get()) {
    for (GEOSGeometry* g : lines) GEOSGeom_destroy_r(ctx, g);
    return Acad::eGeneralModelingFailure;
  }
  // Snap-rounded noding: ends that miss each other by rounding errors of
  // curve sampling still meet.
  const Geom noded(ctx, GEOSUnaryUnionPrec_r(ctx, all.get(), kGrid));
  if (!noded.get()) return Acad::eGeneralModelingFailure;
  const GEOSGeometry* input = noded.get();
  const Geom faces(ctx, GEOSPolygonize_r(ctx, &input, 1));
  if (!faces.get()) return Acad::eGeneralModelingFailure;
  const Geom point(ctx, GEOSGeom_createPointFromXY_r(ctx, seed.x, seed.y));

  // The face whose interior holds the seed; faces do not overlap, so at most one.
  const int count = GEOSGetNumGeometries_r(ctx, faces.get());
  for (int i = 0; i < count; ++i) {
    const GEOSGeometry* face = GEOSGetGeometryN_r(ctx, faces.get(), i);
    if (GEOSContains_r(ctx, face, point.get()) != 1) continue;
    const auto outer = normalisedRing(ctx, GEOSGetExteriorRing_r(ctx, face));
    if (outer.size() < 3) return Acad::eOk;
    boundaries.push_back(makePolyline(outer, seed.z));
    const int holes = GEOSGetNumInteriorRings_r(ctx, face);
    for (int h = 0; h < holes; ++h) {
      const auto island = normalisedRing(ctx, GEOSGetInteriorRingN_r(ctx, face, h));
      if (island.size() >= 3) boundaries.push_back(makePolyline(island, seed.z));
    }
    break;
  }
  return Acad::eOk;
}

}  // namespace host
