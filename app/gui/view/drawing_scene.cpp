#include "app/gui/view/drawing_scene.h"

#include <QtGui/QFont>
#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <unordered_map>

#include "app/gui/view/aci_colours.h"
#include "app/gui/view/text_codes.h"
#include "host/db/operations.h"

namespace gui {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kMaxDepth = 16;
constexpr int kGrid = 128;
constexpr QRgb kHighlight = 0xFFFFA000;

QRgb opaque(std::uint32_t rgb) { return 0xFF000000u | rgb; }

AcGePoint3d apply(const AcGeMatrix3d& m, AcGePoint3d p) { return p.transformBy(m); }

// What a block reference passes on to what it holds.
struct Context {
  AcGeMatrix3d xform;
  QRgb byBlockColour = opaque(0xFFFFFF);
  AcDbObjectId byBlockLayer;     // for entities on layer "0"
  AcDbObjectId byBlockLinetype;
  int depth = 0;
};

// Splits a chain into the dashes of a pattern (world lengths; positive
// draws, negative skips, zero is a dot).
void dashChain(const std::vector<QPointF>& chain, const std::vector<double>& pattern, double scale,
               std::vector<std::vector<QPointF>>& out) {
  double total = 0;
  for (double d : pattern) total += std::fabs(d) * scale;
  double length = 0;
  for (std::size_t i = 1; i < chain.size(); ++i) length += std::hypot(chain[i].x() - chain[i - 1].x(), chain[i].y() - chain[i - 1].y());
  if (pattern.empty() || !(total > 0) || length / total > 2000) {
    out.push_back(chain);
    return;
  }
  std::size_t k = 0;
  double left = std::fabs(pattern[0]) * scale;
  bool on = pattern[0] >= 0;
  std::vector<QPointF> current;
  if (on) current.push_back(chain[0]);
  for (std::size_t i = 1; i < chain.size(); ++i) {
    QPointF a = chain[i - 1];
    const QPointF b = chain[i];
    double seg = std::hypot(b.x() - a.x(), b.y() - a.y());
    while (seg > 0) {
      if (left >= seg) {
        left -= seg;
        if (on) current.push_back(b);
        seg = 0;
      } else {
        const double t = left / seg;
        const QPointF m(a.x() + (b.x() - a.x()) * t, a.y() + (b.y() - a.y()) * t);
        if (on) {
          current.push_back(m);
          if (current.size() >= 2) out.push_back(current);
          current.clear();
        } else {
          current = {m};
        }
        seg -= left;
        a = m;
        k = (k + 1) % pattern.size();
        left = std::fabs(pattern[k]) * scale;
        on = pattern[k] >= 0;
        if (!on) current.clear();
        else if (current.empty()) current.push_back(m);
        if (pattern[k] == 0 && on) {  // a dot
          out.push_back({m, m});
          k = (k + 1) % pattern.size();
          left = std::fabs(pattern[k]) * scale;
          on = pattern[k] >= 0;
          current = on ? std::vector<QPointF>{m} : std::vector<QPointF>{};
        }
      }
    }
  }
  if (on && current.size() >= 2) out.push_back(current);
}

double distanceToSegment(const QPointF& p, const QPointF& a, const QPointF& b) {
  const double dx = b.x() - a.x(), dy = b.y() - a.y(), len2 = dx * dx + dy * dy;
  double t = len2 > 0 ? ((p.x() - a.x()) * dx + (p.y() - a.y()) * dy) / len2 : 0;
  t = std::clamp(t, 0.0, 1.0);
  return std::hypot(p.x() - a.x() - t * dx, p.y() - a.y() - t * dy);
}

// Whether segment a-b meets the rectangle (Liang-Barsky).
bool segmentMeets(const QPointF& a, const QPointF& b, const QRectF& r) {
  double t0 = 0, t1 = 1;
  const double dx = b.x() - a.x(), dy = b.y() - a.y();
  const double p[4] = {-dx, dx, -dy, dy};
  const double q[4] = {a.x() - r.left(), r.right() - a.x(), a.y() - r.top(), r.bottom() - a.y()};
  for (int i = 0; i < 4; ++i) {
    if (p[i] == 0) {
      if (q[i] < 0) return false;
      continue;
    }
    const double t = q[i] / p[i];
    if (p[i] < 0) t0 = std::max(t0, t);
    else t1 = std::min(t1, t);
    if (t0 > t1) return false;
  }
  return true;
}

QFont textFont() {
  QFont f(QStringLiteral("WenQuanYi Micro Hei"));
  f.setPixelSize(100);
  return f;
}

}  // namespace

// Turns one top-level entity into strokes and texts.
class DrawingScene::Builder {
 public:
  Builder(DrawingScene& scene, const AcDbDatabase* db) : m_s(scene), m_db(db) {
    if (const auto* v = db->headerVariable("$LTSCALE"); v && !v->values.empty()) m_ltscale = v->values[0].real[0];
    if (!(m_ltscale > 0)) m_ltscale = 1;
  }

  void Entity(const AcDbEntity& e, const Context& ctx) {
    if (e.visibility() != AcDb::kVisible || ctx.depth > kMaxDepth) return;
    AcDbObjectId layer = e.layerId();
    if (ctx.depth > 0 && (layer == m_db->layerZero() || layer.isNull()) && !ctx.byBlockLayer.isNull())
      layer = ctx.byBlockLayer;
    const LayerInfo& info = Layer(layer);
    if (!info.shown) return;
    const QRgb colour = Colour(e.color(), info, ctx);
    std::vector<double> pattern;
    AcDbObjectId lt = e.linetypeId();
    if (lt.isNull() || lt == m_db->byLayerLinetype()) lt = info.linetype;
    else if (lt == m_db->byBlockLinetype()) lt = ctx.byBlockLinetype;
    const double ltScale = e.linetypeScale() * m_ltscale;
    Dashes(lt, pattern);

    if (const auto* ref = AcDbBlockReference::cast(&e)) {
      Reference(*ref, colour, layer, lt, ctx);
      return;
    }
    if (const auto* dim = AcDbDimension::cast(&e)) {
      Context inner = ctx;
      inner.byBlockColour = colour;
      inner.byBlockLayer = layer;
      inner.byBlockLinetype = lt;
      inner.depth = ctx.depth + 1;
      if (!dim->dimBlockId().isNull()) Block(dim->dimBlockId(), inner);
      else Exploded(e, inner);
      return;
    }
    if (const auto* t = AcDbText::cast(&e)) {
      Text(*t, colour, ctx);
      return;
    }
    if (const auto* m = AcDbMText::cast(&e)) {
      MText(*m, colour, ctx);
      return;
    }
    if (const auto* h = AcDbHatch::cast(&e)) {
      Hatch(*h, colour, ctx);
      return;
    }
    if (const auto* pt = AcDbPoint::cast(&e)) {
      const AcGePoint3d p = apply(ctx.xform, pt->position());
      Emit({QPointF(p.x, p.y)}, colour, false);
      return;
    }
    if (const auto* c = AcDbCornerEntity::cast(&e)) {
      AcGePoint3d q[4];
      for (int i = 0; i < 4; ++i) c->getPointAt(i, q[i]), q[i] = apply(ctx.xform, q[i]);
      if (AcDbFace::cast(&e)) Emit({P(q[0]), P(q[1]), P(q[2]), P(q[3]), P(q[0])}, colour, false);
      else Emit({P(q[0]), P(q[1]), P(q[3]), P(q[2])}, colour, true);
      return;
    }
    if (const auto* pl = AcDbPolyline::cast(&e)) {
      Polyline(*pl, colour, pattern, ltScale, ctx);
      return;
    }
    if (AcDb2dPolyline::cast(&e) || AcDb3dPolyline::cast(&e)) {
      Exploded(e, ctx, colour, layer, lt);
      return;
    }
    if (const auto* curve = AcDbCurve::cast(&e)) {
      std::vector<QPointF> chain;
      Sample(*curve, ctx, chain);
      Chain(chain, colour, pattern, ltScale);
      return;
    }
    if (AcDbModelerEntity::cast(&e) || AcDbGenericEntity::cast(&e)) return;
    Exploded(e, ctx, colour, layer, lt);
  }

 private:
  struct LayerInfo {
    bool shown = true;
    AcCmColor colour;
    AcDbObjectId linetype;
  };

  static QPointF P(const AcGePoint3d& p) { return {p.x, p.y}; }

  const LayerInfo& Layer(AcDbObjectId id) {
    auto found = m_layers.find(id);
    if (found != m_layers.end()) return found->second;
    LayerInfo info;
    AcDbObjectPointer<AcDbLayerTableRecord> rec(id, AcDb::kForRead);
    if (rec) {
      info.shown = !rec->isOff() && !rec->isFrozen();
      info.colour = rec->color();
      info.linetype = rec->linetypeObjectId();
    } else {
      info.colour.setColorIndex(7);
    }
    return m_layers.emplace(id, info).first->second;
  }

  QRgb Colour(const AcCmColor& c, const LayerInfo& layer, const Context& ctx) const {
    if (c.trueColor() >= 0) return opaque(static_cast<std::uint32_t>(c.trueColor()));
    if (c.isByBlock()) return ctx.depth > 0 ? ctx.byBlockColour : opaque(0xFFFFFF);
    if (c.isByLayer()) {
      if (layer.colour.trueColor() >= 0) return opaque(static_cast<std::uint32_t>(layer.colour.trueColor()));
      return opaque(AciToRgb(layer.colour.colorIndex()));
    }
    return opaque(AciToRgb(c.colorIndex()));
  }

  void Dashes(AcDbObjectId linetype, std::vector<double>& pattern) {
    if (linetype.isNull()) return;
    auto found = m_dashes.find(linetype);
    if (found == m_dashes.end()) {
      std::vector<double> d;
      AcDbObjectPointer<AcDbLinetypeTableRecord> rec(linetype, AcDb::kForRead);
      if (rec) d = rec->dashes();
      found = m_dashes.emplace(linetype, std::move(d)).first;
    }
    pattern = found->second;
  }

  void Emit(const std::vector<QPointF>& pts, QRgb colour, bool fill) {
    if (pts.empty()) return;
    Stroke s;
    s.first = static_cast<std::uint32_t>(m_s.m_points.size());
    s.count = static_cast<std::uint32_t>(pts.size());
    s.colour = colour;
    s.fill = fill;
    m_s.m_points.insert(m_s.m_points.end(), pts.begin(), pts.end());
    m_s.m_strokes.push_back(s);
  }

  void Chain(const std::vector<QPointF>& chain, QRgb colour, const std::vector<double>& pattern, double scale) {
    if (chain.size() < 2) return;
    std::vector<std::vector<QPointF>> pieces;
    dashChain(chain, pattern, scale, pieces);
    for (const auto& piece : pieces) Emit(piece, colour, false);
  }

  void Sample(const AcDbCurve& curve, const Context& ctx, std::vector<QPointF>& chain) {
    if (const auto* l = AcDbLine::cast(&curve)) {
      chain = {P(apply(ctx.xform, l->startPoint())), P(apply(ctx.xform, l->endPoint()))};
      return;
    }
    const auto ge = curve.geCurve();
    if (!ge) return;
    AcGeInterval range;
    ge->getInterval(range);
    int n = 128;
    if (const auto* arc = AcDbArc::cast(&curve)) {
      double sweep = arc->endAngle() - arc->startAngle();
      while (sweep <= 0) sweep += 2 * kPi;
      n = std::clamp(static_cast<int>(std::ceil(sweep / (2 * kPi) * 128)), 4, 128);
    } else if (AcDbCircle::cast(&curve) || AcDbEllipse::cast(&curve)) {
      n = 128;
    } else if (AcDbSpline::cast(&curve)) {
      n = 256;
    }
    AcGePoint3dArray samples;
    ge->getSamplePoints(n + 1, samples);
    for (const AcGePoint3d& p : samples) chain.push_back(P(apply(ctx.xform, p)));
  }

  void Polyline(const AcDbPolyline& pl, QRgb colour, const std::vector<double>& pattern, double scale,
                const Context& ctx) {
    const auto& v = pl.vertices();
    if (v.empty()) return;
    const AcGeMatrix3d toWorld = ctx.xform * AcGeMatrix3d::planeToWorld(pl.normal());
    auto world = [&](const AcGePoint2d& p) { return P(apply(toWorld, AcGePoint3d(p.x, p.y, pl.elevation()))); };
    const std::size_t segments = pl.isClosed() ? v.size() : v.size() - 1;
    std::vector<QPointF> chain{world(v[0].point)};
    bool wide = pl.constantWidth() > 0;
    for (const auto& x : v) wide = wide || x.startWidth > 0 || x.endWidth > 0;
    for (std::size_t i = 0; i < segments; ++i) {
      const auto& a = v[i];
      const auto& b = v[(i + 1) % v.size()];
      AcGePoint2d c;
      double r = 0, s = 0, e = 0;
      std::vector<AcGePoint2d> local{a.point};
      if (a.bulge != 0 && host::arcFromBulge(a.point, b.point, a.bulge, c, r, s, e)) {
        const double sweep = 4 * std::atan(a.bulge);
        const double start = std::atan2(a.point.y - c.y, a.point.x - c.x);
        const int n = std::clamp(static_cast<int>(std::ceil(std::fabs(sweep) / (2 * kPi) * 128)), 2, 128);
        for (int k = 1; k < n; ++k) {
          const double t = start + sweep * k / n;
          local.emplace_back(c.x + r * std::cos(t), c.y + r * std::sin(t));
        }
      }
      local.push_back(b.point);
      if (wide) {
        const double w0 = pl.constantWidth() > 0 ? pl.constantWidth() : a.startWidth;
        const double w1 = pl.constantWidth() > 0 ? pl.constantWidth() : a.endWidth;
        WideSegment(local, w0, w1, colour, world);
      }
      for (std::size_t k = 1; k < local.size(); ++k) chain.push_back(world(local[k]));
    }
    if (!wide) Chain(chain, colour, pattern, scale);
  }

  template <class World>
  void WideSegment(const std::vector<AcGePoint2d>& pts, double w0, double w1, QRgb colour, const World& world) {
    if (w0 <= 0 && w1 <= 0) {
      std::vector<QPointF> line;
      for (const auto& p : pts) line.push_back(world(p));
      Emit(line, colour, false);
      return;
    }
    std::vector<QPointF> left, right;
    for (std::size_t k = 0; k < pts.size(); ++k) {
      const AcGePoint2d& p = pts[k];
      const AcGePoint2d& q = pts[k + 1 < pts.size() ? k + 1 : k];
      const AcGePoint2d& o = pts[k > 0 ? k - 1 : 0];
      double dx = q.x - o.x, dy = q.y - o.y;
      const double len = std::hypot(dx, dy);
      if (len == 0) continue;
      dx /= len, dy /= len;
      const double w = (w0 + (w1 - w0) * k / std::max<std::size_t>(1, pts.size() - 1)) / 2;
      left.push_back(world(AcGePoint2d(p.x - dy * w, p.y + dx * w)));
      right.push_back(world(AcGePoint2d(p.x + dy * w, p.y - dx * w)));
    }
    std::reverse(right.begin(), right.end());
    left.insert(left.end(), right.begin(), right.end());
    Emit(left, colour, true);
  }

  void Reference(const AcDbBlockReference& ref, QRgb colour, AcDbObjectId layer, AcDbObjectId lt, const Context& ctx) {
    Context inner = ctx;
    inner.byBlockColour = colour;
    inner.byBlockLayer = layer;
    inner.byBlockLinetype = lt;
    inner.depth = ctx.depth + 1;
    AcArray<AcGeMatrix3d> copies;
    if (const auto* m = AcDbMInsertBlock::cast(&ref); m && (m->rows() > 1 || m->columns() > 1)) {
      // Each copy of an array is the reference moved by its place in the grid.
      const AcGeMatrix3d base = ref.blockTransform();
      const AcGeMatrix3d rot = AcGeMatrix3d::rotation(ref.rotation(), ref.normal());
      for (int r = 0; r < std::min(m->rows(), 100); ++r)
        for (int c = 0; c < std::min(m->columns(), 100); ++c) {
          AcGeVector3d off(c * m->columnSpacing(), r * m->rowSpacing(), 0);
          off.transformBy(rot);
          copies.append(AcGeMatrix3d::translation(off) * base);
        }
    } else {
      copies.append(ref.blockTransform());
    }
    for (const AcGeMatrix3d& m : copies) {
      inner.xform = ctx.xform * m;
      Block(ref.blockTableRecord(), inner);
    }
    for (AcDbObjectId id : ref.attributeIds()) {
      AcDbObjectPointer<AcDbAttribute> att(id, AcDb::kForRead);
      if (!att || att->isInvisible()) continue;
      Context attCtx = inner;
      attCtx.xform = ctx.xform;
      Entity(*att.get(), attCtx);
    }
  }

  void Block(AcDbObjectId blockId, const Context& ctx) {
    AcDbObjectPointer<AcDbBlockTableRecord> block(blockId, AcDb::kForRead);
    if (!block) return;
    const AcDbObjectIdArray ids = block->entityIds();
    block.close();
    for (AcDbObjectId id : ids) {
      if (id.isErased()) continue;
      AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
      if (!e || AcDbAttributeDefinition::cast(e.get())) continue;
      Entity(*e.get(), ctx);
    }
  }

  void Exploded(const AcDbEntity& e, const Context& ctx, QRgb colour = 0, AcDbObjectId layer = {},
                AcDbObjectId lt = {}) {
    AcDbEntityArray pieces;
    if (e.explode(pieces) != Acad::eOk) return;
    Context inner = ctx;
    if (colour) inner.byBlockColour = colour, inner.byBlockLayer = layer, inner.byBlockLinetype = lt;
    inner.depth = ctx.depth + 1;
    for (AcDbEntity* piece : pieces) {
      // Pieces keep the entity's properties; as ByBlock they take them from it.
      Entity(*piece, inner);
      delete piece;
    }
  }

  void AddText(TextItem item, QRgb colour) {
    if (item.text.isEmpty() || !(item.height > 0)) return;
    m_s.m_texts.push_back(std::move(item));
    m_s.m_textColours.push_back(colour);
  }

  // Position, height and rotation of text mapped through the context.
  TextItem Placed(const AcGePoint3d& at, double height, double rotation, const Context& ctx) const {
    TextItem t;
    const AcGePoint3d p = apply(ctx.xform, at);
    AcGeVector3d dir(std::cos(rotation), std::sin(rotation), 0), up(-std::sin(rotation), std::cos(rotation), 0);
    dir.transformBy(ctx.xform);
    up.transformBy(ctx.xform);
    t.position = P(p);
    t.rotation = std::atan2(dir.y, dir.x);
    t.height = height * up.length();
    t.widthFactor = up.length() > 0 ? dir.length() / up.length() : 1;
    return t;
  }

  void Text(const AcDbText& text, QRgb colour, const Context& ctx) {
    const int h = text.horizontalMode(), v = text.verticalMode();
    const bool aligned = (h != 0 && h != 3 && h != 5) || v != 0;
    TextItem t = Placed(aligned ? text.alignmentPoint() : text.position(), text.height(), text.rotation(), ctx);
    t.widthFactor *= text.widthFactor() > 0 ? text.widthFactor() : 1;
    t.text = QString::fromStdString(PlainText(text.textString()));
    t.hAlign = h == 1 || h == 4 ? 1 : h == 2 ? 2 : 0;
    t.vAlign = h == 4 ? 2 : v;
    AddText(std::move(t), colour);
  }

  // Lines longer than the text's reference width broken at the last space
  // that fits (or, with none, as late as fits: Chinese has no spaces), as
  // the drafting host lays them out; measured in the font the view paints with.
  static std::vector<QString> Wrapped(const std::vector<std::string>& lines, double width, double height) {
    std::vector<QString> out;
    static const QFontMetricsF metrics(textFont());
    const double scale = height / metrics.capHeight();
    for (const std::string& line : lines) {
      QString rest = QString::fromStdString(line);
      while (width > 0 && rest.size() > 1 && metrics.horizontalAdvance(rest) * scale > width) {
        qsizetype fit = 1;
        while (fit < rest.size() && metrics.horizontalAdvance(rest.left(fit + 1)) * scale <= width) ++fit;
        const qsizetype space = rest.lastIndexOf(' ', fit);
        const qsizetype cut = space > 0 ? space : fit;
        out.push_back(rest.left(cut));
        rest = rest.mid(cut).trimmed();
      }
      out.push_back(rest);
    }
    return out;
  }

  void MText(const AcDbMText& m, QRgb colour, const Context& ctx) {
    const double h = m.textHeight() > 0 ? m.textHeight() : 2.5, gap = h * 5 / 3;
    const std::vector<QString> lines = Wrapped(PlainMTextLines(m.contents()), m.width(), h);
    const int a = std::clamp(m.attachment(), 1, 9), row = (a - 1) / 3, col = (a - 1) % 3;
    const double block = h + gap * static_cast<double>(lines.size() - 1);
    const double top = row == 0 ? 0 : row == 1 ? block / 2 : block;
    const double rotation = std::atan2(m.direction().y, m.direction().x);
    const double c = std::cos(rotation), s = std::sin(rotation);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const double dy = top - h - gap * static_cast<double>(i);  // baseline, below the location when top-attached
      const AcGePoint3d at = m.location() + AcGeVector3d(-s * dy, c * dy, 0);
      TextItem t = Placed(at, h, rotation, ctx);
      t.text = lines[i];
      t.hAlign = col;
      AddText(std::move(t), colour);
    }
  }

  void Hatch(const AcDbHatch& hatch, QRgb colour, const Context& ctx) {
    const AcGeMatrix3d toWorld = ctx.xform * AcGeMatrix3d::planeToWorld(hatch.normal());
    auto world = [&](const QPointF& p) { return P(apply(toWorld, AcGePoint3d(p.x(), p.y(), hatch.elevation()))); };
    // The loops in the hatch's own plane, where its pattern is defined.
    std::vector<std::vector<QPointF>> loops;
    for (const auto& loop : hatch.loops()) {
      std::vector<QPointF> pts;
      const auto& v = loop.vertices;
      for (std::size_t i = 0; i < v.size(); ++i) {
        const auto& a = v[i];
        const auto& b = v[(i + 1) % v.size()];
        pts.emplace_back(a.point.x, a.point.y);
        AcGePoint2d c;
        double r = 0, s = 0, e = 0;
        if (a.bulge != 0 && host::arcFromBulge(a.point, b.point, a.bulge, c, r, s, e)) {
          const double sweep = 4 * std::atan(a.bulge), start = std::atan2(a.point.y - c.y, a.point.x - c.x);
          for (int k = 1; k < 32; ++k) {
            const double t = start + sweep * k / 32;
            pts.emplace_back(c.x + r * std::cos(t), c.y + r * std::sin(t));
          }
        }
      }
      if (pts.size() >= 3) loops.push_back(std::move(pts));
    }
    if (hatch.isSolidFill()) {
      for (auto& loop : loops) {
        for (QPointF& p : loop) p = world(p);
        Emit(loop, colour, true);
      }
      return;
    }
    PatternLines(hatch, loops, [&](const QPointF& a, const QPointF& b) { Emit({world(a), world(b)}, colour, false); });
  }

  // A hatch pattern line family: its angle, a point it passes through, the
  // offset from one line to the next (across and along the lines), and its
  // dashes (positive a dash, negative a gap, zero a dot; none: continuous).
  struct PatternFamily {
    double angle = kPi / 4, bx = 0, by = 0, ox = 0, oy = 3.175;
    std::vector<double> dashes;
  };

  // Pattern lines clipped to the loops (even-odd), with their dashes: the
  // hatch's own line families when the drawing gives them (already scaled
  // and turned), otherwise 45° lines. Line k of a family starts its dashes
  // at base + k * offset.
  template <class EmitSegment>
  void PatternLines(const AcDbHatch& hatch, const std::vector<std::vector<QPointF>>& loops, EmitSegment emit) {
    std::vector<PatternFamily> families;
    double scale = 1;
    if (const AcDbObjectExtras* extras = hatch.extrasIfAny()) {
      for (const GroupValue& g : extras->unmodelled) {
        if (g.code == 41) scale = g.real[0] > 0 ? g.real[0] : 1;
        if (g.code == 53) families.push_back({g.real[0] * kPi / 180, 0, 0, 0, 0, {}});
        if (families.empty()) continue;
        if (g.code == 43) families.back().bx = g.real[0];
        if (g.code == 44) families.back().by = g.real[0];
        if (g.code == 45) families.back().ox = g.real[0];
        if (g.code == 46) families.back().oy = g.real[0];
        if (g.code == 49) families.back().dashes.push_back(g.real[0]);
      }
    }
    if (families.empty()) families.push_back({kPi / 4, 0, 0, 0, 3.175 * scale, {}});
    QRectF box;
    for (const auto& loop : loops) box |= QPolygonF(QList<QPointF>(loop.begin(), loop.end())).boundingRect();
    for (const PatternFamily& f : families) {
      const double dx = std::cos(f.angle), dy = std::sin(f.angle), nx = -dy, ny = dx;
      const double across = f.ox * nx + f.oy * ny, along = f.ox * dx + f.oy * dy;
      if (!(std::fabs(across) > 0) || box.isEmpty()) continue;
      double lo = 1e300, hi = -1e300;
      for (const QPointF& c : {box.topLeft(), box.topRight(), box.bottomLeft(), box.bottomRight()}) {
        const double d = ((c.x() - f.bx) * nx + (c.y() - f.by) * ny) / across;
        lo = std::min(lo, d), hi = std::max(hi, d);
      }
      const long first = static_cast<long>(std::ceil(lo)), last = static_cast<long>(std::floor(hi));
      if (last - first > 2000) continue;  // too dense to be seen as lines
      double period = 0;
      for (double d : f.dashes) period += std::fabs(d);
      for (long k = first; k <= last; ++k) {
        const QPointF origin(f.bx + nx * across * k + dx * along * k, f.by + ny * across * k + dy * along * k);
        std::vector<double> ts;
        for (const auto& loop : loops)
          for (std::size_t i = 0; i < loop.size(); ++i) {
            const QPointF a = loop[i], b = loop[(i + 1) % loop.size()];
            const double da = (a.x() - origin.x()) * nx + (a.y() - origin.y()) * ny;
            const double db = (b.x() - origin.x()) * nx + (b.y() - origin.y()) * ny;
            if ((da > 0) == (db > 0)) continue;
            const double t = da / (da - db);
            const QPointF x(a.x() + (b.x() - a.x()) * t, a.y() + (b.y() - a.y()) * t);
            ts.push_back((x.x() - origin.x()) * dx + (x.y() - origin.y()) * dy);
          }
        std::sort(ts.begin(), ts.end());
        auto at = [&](double t) { return QPointF(origin.x() + dx * t, origin.y() + dy * t); };
        for (std::size_t i = 0; i + 1 < ts.size(); i += 2) {
          const double t0 = ts[i], t1 = ts[i + 1];
          // Continuous, or dashes too fine to tell apart: one line.
          if (!(period > 0) || (t1 - t0) / period > 1000) {
            emit(at(t0), at(t1));
            continue;
          }
          // Dashes repeat from the line's origin; walk the periods that
          // meet [t0, t1].
          for (double p = std::floor(t0 / period) * period; p < t1; p += period) {
            double u = p;
            for (double d : f.dashes) {
              const double next = u + std::fabs(d);
              if (d >= 0 && next >= t0 && u <= t1) emit(at(std::max(u, t0)), at(std::min(next, t1)));
              u = next;
            }
          }
        }
      }
    }
  }

  DrawingScene& m_s;
  const AcDbDatabase* m_db;
  double m_ltscale = 1;
  std::unordered_map<AcDbObjectId, LayerInfo> m_layers;
  std::unordered_map<AcDbObjectId, std::vector<double>> m_dashes;
};

void DrawingScene::Build(const AcDbDatabase* db, AcDbObjectId space) {
  *this = DrawingScene();
  m_db = db;
  if (!db) return;
  m_space = space.isNull() ? db->modelSpaceId() : space;
  AcDbObjectIdArray ids;
  {
    AcDbObjectPointer<AcDbBlockTableRecord> block(m_space, AcDb::kForRead);
    if (!block) return;
    ids = block->entityIds();
  }
  for (AcDbObjectId id : ids)
    if (!id.isErased()) Add(id);
  // The grid covers what is there now; later entities outside go to the overflow list.
  m_gridBox = Extents();
  if (m_gridBox.isEmpty()) m_gridBox = QRectF(0, 0, 1, 1);
  m_cols = m_rows = kGrid;
  m_tiles.assign(static_cast<std::size_t>(m_cols * m_rows), {});
  for (std::uint32_t i = 0; i < m_entities.size(); ++i) Index(i);
}

void DrawingScene::Add(AcDbObjectId id) {
  AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
  if (!ent) return;
  Entity e;
  e.id = id;
  e.firstStroke = static_cast<std::uint32_t>(m_strokes.size());
  e.firstText = static_cast<std::uint32_t>(m_texts.size());
  e.highlighted = ent->isHighlighted();
  const std::uint32_t firstPoint = static_cast<std::uint32_t>(m_points.size());
  Builder(*this, m_db).Entity(*ent.get(), Context{});
  e.strokeCount = static_cast<std::uint32_t>(m_strokes.size()) - e.firstStroke;
  e.textCount = static_cast<std::uint32_t>(m_texts.size()) - e.firstText;
  if (e.strokeCount == 0 && e.textCount == 0) return;
  double x0 = 1e300, y0 = 1e300, x1 = -1e300, y1 = -1e300;
  for (std::size_t i = firstPoint; i < m_points.size(); ++i) {
    x0 = std::min(x0, m_points[i].x()), x1 = std::max(x1, m_points[i].x());
    y0 = std::min(y0, m_points[i].y()), y1 = std::max(y1, m_points[i].y());
  }
  for (std::uint32_t i = e.firstText; i < e.firstText + e.textCount; ++i) {
    const TextItem& t = m_texts[i];
    // As wide as it is painted (widths per text kept: sheets repeat their texts).
    static const QFontMetricsF metrics(textFont());
    auto known = m_textAdvance.constFind(t.text);
    if (known == m_textAdvance.cend()) known = m_textAdvance.insert(t.text, metrics.horizontalAdvance(t.text) / metrics.capHeight());
    const double w = *known * t.height * t.widthFactor, h = t.height;
    const double c = std::cos(t.rotation), s = std::sin(t.rotation);
    for (const QPointF& d : {QPointF(0, 0), QPointF(w, 0), QPointF(0, h), QPointF(w, h)}) {
      const double ox = t.hAlign == 1 ? -w / 2 : t.hAlign == 2 ? -w : 0;
      const double oy = t.vAlign == 2 ? -h / 2 : t.vAlign == 3 ? -h : 0;
      const double x = t.position.x() + (d.x() + ox) * c - (d.y() + oy) * s;
      const double y = t.position.y() + (d.x() + ox) * s + (d.y() + oy) * c;
      x0 = std::min(x0, x), x1 = std::max(x1, x), y0 = std::min(y0, y), y1 = std::max(y1, y);
    }
  }
  if (!(x0 <= x1) || !std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(x1) || !std::isfinite(y1)) return;
  e.box = QRectF(QPointF(x0, y0), QPointF(x1, y1));
  e.live = true;
  m_byId[id] = static_cast<std::uint32_t>(m_entities.size());
  m_entities.push_back(e);
  ++m_live;
}

int DrawingScene::TileX(double x) const {
  return static_cast<int>(std::floor((x - m_gridBox.left()) / m_gridBox.width() * m_cols));
}
int DrawingScene::TileY(double y) const {
  return static_cast<int>(std::floor((y - m_gridBox.top()) / m_gridBox.height() * m_rows));
}

void DrawingScene::Index(std::uint32_t i) {
  const QRectF& b = m_entities[i].box;
  const int x0 = TileX(b.left()), x1 = TileX(b.right()), y0 = TileY(b.top()), y1 = TileY(b.bottom());
  if (x0 < 0 || y0 < 0 || x1 >= m_cols || y1 >= m_rows || (x1 - x0 + 1) * (y1 - y0 + 1) > 64) {
    m_overflow.push_back(i);  // big or outside: looked at in every view
    return;
  }
  for (int y = y0; y <= y1; ++y)
    for (int x = x0; x <= x1; ++x) m_tiles[static_cast<std::size_t>(y * m_cols + x)].push_back(i);
}

void DrawingScene::Refresh(AcDbObjectId id) {
  if (!m_db) return;
  ++m_generation;
  const auto found = m_byId.find(id);
  if (found != m_byId.end()) {
    m_entities[found->second].live = false;  // its strokes stay unused
    m_byId.erase(found);
    --m_live;
  }
  AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
  if (!ent || ent->ownerId() != m_space || id.isErased()) return;
  ent.close();
  const std::size_t before = m_entities.size();
  Add(id);
  if (m_entities.size() > before && m_cols > 0) Index(static_cast<std::uint32_t>(before));
}

std::size_t DrawingScene::EstimateIn(const QRectF& rect) const {
  std::size_t n = m_overflow.size();
  if (m_cols == 0) return n;
  const int x0 = std::max(0, TileX(rect.left())), x1 = std::min(m_cols - 1, TileX(rect.right()));
  const int y0 = std::max(0, TileY(rect.top())), y1 = std::min(m_rows - 1, TileY(rect.bottom()));
  for (int y = y0; y <= y1; ++y)
    for (int x = x0; x <= x1; ++x) n += m_tiles[static_cast<std::size_t>(y * m_cols + x)].size();
  return n;
}

void DrawingScene::RefreshHighlights() {
  ++m_generation;
  for (Entity& e : m_entities) {
    if (!e.live) continue;
    AcDbObjectPointer<AcDbEntity> ent(e.id, AcDb::kForRead);
    e.highlighted = ent && ent->isHighlighted();
  }
}

QRectF DrawingScene::Extents() const {
  QRectF r;
  for (const Entity& e : m_entities)
    if (e.live) r = r.isNull() ? e.box : r.united(e.box);
  return r;
}

std::vector<std::uint32_t> DrawingScene::EntitiesIn(const QRectF& rect) const {
  std::vector<std::uint32_t> out;
  if (m_stamp.size() < m_entities.size()) m_stamp.resize(m_entities.size(), 0);
  ++m_pass;
  auto take = [&](std::uint32_t i) {
    if (m_stamp[i] == m_pass) return;
    m_stamp[i] = m_pass;
    const Entity& e = m_entities[i];
    if (e.live && e.box.right() >= rect.left() && e.box.left() <= rect.right() && e.box.bottom() >= rect.top() &&
        e.box.top() <= rect.bottom())
      out.push_back(i);
  };
  if (m_cols > 0) {
    const int x0 = std::max(0, TileX(rect.left())), x1 = std::min(m_cols - 1, TileX(rect.right()));
    const int y0 = std::max(0, TileY(rect.top())), y1 = std::min(m_rows - 1, TileY(rect.bottom()));
    for (int y = y0; y <= y1; ++y)
      for (int x = x0; x <= x1; ++x)
        for (std::uint32_t i : m_tiles[static_cast<std::size_t>(y * m_cols + x)]) take(i);
  }
  for (std::uint32_t i : m_overflow) take(i);
  std::sort(out.begin(), out.end());  // drawing order
  return out;
}

void DrawingScene::Paint(QPainter& painter, const QTransform& transform, const QRectF& visible, double pixel) const {
  const std::vector<std::uint32_t> shown = EntitiesIn(visible);
  // The view only scales and moves: map without the general transform.
  struct Affine {
    double sx, sy, dx, dy;
    QPointF map(const QPointF& p) const { return {p.x() * sx + dx, p.y() * sy + dy}; }
  } const toScreen{transform.m11(), transform.m22(), transform.dx(), transform.dy()};
  std::unordered_map<QRgb, QList<QLineF>> lines;
  std::unordered_map<QRgb, QList<QPointF>> dots;
  std::vector<std::uint32_t> highlighted;
  painter.setRenderHint(QPainter::Antialiasing, false);
  for (std::uint32_t i : shown) {
    const Entity& e = m_entities[i];
    if (e.highlighted) {
      highlighted.push_back(i);
      continue;
    }
    if (e.box.width() < pixel && e.box.height() < pixel) {  // smaller than a pixel: one dot
      if (e.strokeCount) dots[m_strokes[e.firstStroke].colour].push_back(toScreen.map(e.box.center()));
      continue;
    }
    // Small on screen: curves need fewer of their points (about one every
    // two pixels of the entity's size).
    const double size = std::max(e.box.width(), e.box.height()) / pixel;
    for (std::uint32_t s = e.firstStroke; s < e.firstStroke + e.strokeCount; ++s) {
      const Stroke& st = m_strokes[s];
      const std::uint32_t stride =
          size >= 256 || st.count < 8 ? 1 : std::max<std::uint32_t>(1, static_cast<std::uint32_t>(st.count / std::max(4.0, size / 2)));
      if (st.fill) {
        QPolygonF poly;
        for (std::uint32_t k = 0; k < st.count; ++k) poly << toScreen.map(m_points[st.first + k]);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor::fromRgba(st.colour));
        painter.drawPolygon(poly, Qt::OddEvenFill);
        continue;
      }
      if (st.count == 1) {
        const QPointF p = toScreen.map(m_points[st.first]);
        auto& l = lines[st.colour];
        l.push_back(QLineF(p.x() - 2, p.y(), p.x() + 2, p.y()));
        l.push_back(QLineF(p.x(), p.y() - 2, p.x(), p.y() + 2));
        continue;
      }
      auto& l = lines[st.colour];
      QPointF prev = toScreen.map(m_points[st.first]);
      const qsizetype before = l.size();
      for (std::uint32_t k = stride; k < st.count + stride - 1; k += stride) {
        const QPointF next = toScreen.map(m_points[st.first + std::min(k, st.count - 1)]);
        // A step that stays within the pixel adds nothing to see: the next
        // one starts from the same place.
        if (std::fabs(next.x() - prev.x()) < 1 && std::fabs(next.y() - prev.y()) < 1) continue;
        l.push_back(QLineF(prev, next));
        prev = next;
      }
      if (l.size() == before) l.push_back(QLineF(prev, prev));  // all of it within a pixel: a dot
    }
  }
  painter.setBrush(Qt::NoBrush);
  for (const auto& [colour, list] : lines) {
    painter.setPen(QPen(QColor::fromRgba(colour), 0));
    painter.drawLines(list);
  }
  for (const auto& [colour, list] : dots) {
    painter.setPen(QPen(QColor::fromRgba(colour), 0));
    painter.drawPoints(list);
  }
  // Texts at least two pixels high.
  const QFont font = textFont();
  painter.setFont(font);
  const QFontMetricsF metrics(font);
  for (std::uint32_t i : shown) {
    const Entity& e = m_entities[i];
    for (std::uint32_t k = e.firstText; k < e.firstText + e.textCount; ++k) {
      const TextItem& t = m_texts[k];
      if (t.height < 2 * pixel) continue;
      painter.save();
      painter.setTransform(transform);
      painter.translate(t.position);
      painter.rotate(t.rotation * 180 / kPi);
      const double s = t.height / metrics.capHeight();
      painter.scale(s * t.widthFactor, -s);
      const double w = metrics.horizontalAdvance(t.text);
      const double x = t.hAlign == 1 ? -w / 2 : t.hAlign == 2 ? -w : 0;
      const double y = t.vAlign == 2 ? metrics.capHeight() / 2 : t.vAlign == 3 ? metrics.capHeight() : t.vAlign == 1 ? -metrics.descent() : 0;
      painter.setPen(QColor::fromRgba(e.highlighted ? kHighlight : m_textColours[k]));
      painter.drawText(QPointF(x, y), t.text);
      painter.restore();
    }
  }
  // Highlighted entities: dashed and thicker, in one colour.
  QPen pen(QColor::fromRgba(kHighlight), 2, Qt::DashLine);
  painter.setPen(pen);
  painter.setBrush(Qt::NoBrush);
  for (std::uint32_t i : highlighted) {
    const Entity& e = m_entities[i];
    for (std::uint32_t s = e.firstStroke; s < e.firstStroke + e.strokeCount; ++s) {
      const Stroke& st = m_strokes[s];
      QPolygonF poly;
      for (std::uint32_t k = 0; k < st.count; ++k) poly << toScreen.map(m_points[st.first + k]);
      if (st.fill) painter.drawPolygon(poly);
      else painter.drawPolyline(poly);
    }
  }
}

AcDbObjectId DrawingScene::Pick(const QPointF& point, double tol) const {
  const QRectF around(point.x() - tol, point.y() - tol, 2 * tol, 2 * tol);
  AcDbObjectId best;
  double bestDistance = tol;
  for (std::uint32_t i : EntitiesIn(around)) {
    const Entity& e = m_entities[i];
    for (std::uint32_t s = e.firstStroke; s < e.firstStroke + e.strokeCount; ++s) {
      const Stroke& st = m_strokes[s];
      if (st.fill && QPolygonF(QList<QPointF>(m_points.begin() + st.first, m_points.begin() + st.first + st.count))
                         .containsPoint(point, Qt::OddEvenFill)) {
        if (!best.isNull() && bestDistance == 0) continue;
        best = e.id, bestDistance = 0;
        continue;
      }
      for (std::uint32_t k = 0; k < st.count; ++k) {
        const QPointF a = m_points[st.first + k], b = m_points[st.first + std::min(k + 1, st.count - 1)];
        const double d = distanceToSegment(point, a, b);
        if (d <= bestDistance) best = e.id, bestDistance = d;
      }
    }
    if (e.textCount && e.strokeCount == 0 && e.box.contains(point) && best.isNull()) best = e.id;
  }
  return best;
}

std::vector<AcDbObjectId> DrawingScene::Select(const QRectF& rect, bool crossing) const {
  std::vector<AcDbObjectId> out;
  for (std::uint32_t i : EntitiesIn(rect)) {
    const Entity& e = m_entities[i];
    if (e.box.left() >= rect.left() && e.box.right() <= rect.right() && e.box.top() >= rect.top() &&
        e.box.bottom() <= rect.bottom()) {
      out.push_back(e.id);
      continue;
    }
    if (!crossing) continue;
    bool meets = e.textCount > 0;  // a text's box meeting the window is enough
    for (std::uint32_t s = e.firstStroke; !meets && s < e.firstStroke + e.strokeCount; ++s) {
      const Stroke& st = m_strokes[s];
      for (std::uint32_t k = 0; !meets && k < st.count; ++k)
        meets = segmentMeets(m_points[st.first + k], m_points[st.first + std::min(k + 1, st.count - 1)], rect);
    }
    if (meets) out.push_back(e.id);
  }
  return out;
}

std::vector<QPolygonF> DrawingScene::StrokesNear(const QPointF& point, double tol) const {
  std::vector<QPolygonF> out;
  const QRectF around(point.x() - tol, point.y() - tol, 2 * tol, 2 * tol);
  for (std::uint32_t i : EntitiesIn(around)) {
    const Entity& e = m_entities[i];
    for (std::uint32_t s = e.firstStroke; s < e.firstStroke + e.strokeCount; ++s) {
      const Stroke& st = m_strokes[s];
      if (st.fill || st.count < 2) continue;
      QPolygonF poly(QList<QPointF>(m_points.begin() + st.first, m_points.begin() + st.first + st.count));
      if (poly.boundingRect().adjusted(-tol, -tol, tol, tol).contains(point)) out.push_back(std::move(poly));
    }
  }
  return out;
}

}  // namespace gui
