#include "engine/robust/contour.h"

#include <memory>
#include <numbers>

#include "host/db/operations.h"

namespace robust {
namespace {
constexpr double kTwoPi = 2 * std::numbers::pi;
constexpr int kMaxDepth = 16;

bool ContainsAny(const std::string& folded, std::initializer_list<const char*> words) {
  for (const char* w : words)
    if (folded.find(w) != std::string::npos) return true;
  return false;
}

bool IsCentreName(const std::string& name) {
  return ContainsAny(host::foldCase(name), {"CENTER", "CENTRE", "DASHDOT", "点画线", "中心线"});
}

bool IsDashedName(const std::string& name) {
  const std::string n = host::foldCase(name);
  return ContainsAny(n, {"DASH", "HIDDEN", "CENTER", "CENTRE", "PHANTOM", "DOT", "DIVIDE", "BORDER", "ACAD_ISO",
                         "虚线", "点画线", "中心线", "双点"});
}

// The linetype an entity is drawn with: its own, its layer's for BYLAYER;
// BYBLOCK outside any block draws continuous. Block contents arrive here
// with BYBLOCK already replaced by the reference's type.
struct Linetype {
  std::string name;
  bool continuous = true;
  bool dashDot = false;  // a pattern with dots or short dashes between dashes
};

Linetype EffectiveLinetype(const AcDbEntity& e) {
  Linetype lt;
  lt.name = e.linetype();
  AcDbObjectId id = e.linetypeId();
  if (host::equalsNoCase(lt.name, "ByLayer")) {
    AcDbObjectPointer<AcDbLayerTableRecord> layer(e.layerId(), AcDb::kForRead);
    id = layer ? layer->linetypeObjectId() : AcDbObjectId();
    AcDbObjectPointer<AcDbLinetypeTableRecord> rec(id, AcDb::kForRead);
    lt.name = rec ? std::string(rec->getName()) : "Continuous";
  }
  if (host::equalsNoCase(lt.name, "ByBlock") || host::equalsNoCase(lt.name, "Continuous") || lt.name.empty())
    return lt;
  AcDbObjectPointer<AcDbLinetypeTableRecord> rec(id, AcDb::kForRead);
  if (!rec || rec->getName() != lt.name) {
    AcDbObjectId byName;
    if (AcDbDatabase* db = e.database()) {
      AcDbObjectPointer<AcDbLinetypeTable> table(db->linetypeTableId(), AcDb::kForRead);
      if (table) table->getAt(lt.name, byName);
    }
    rec.open(byName, AcDb::kForRead);
  }
  int gaps = 0, pieces = 0;
  if (rec)
    for (double d : rec->dashes()) {
      ++pieces;
      gaps += d < 0;
    }
  lt.continuous = gaps == 0 && !IsDashedName(lt.name);
  lt.dashDot = !lt.continuous && (pieces >= 4 || IsCentreName(lt.name));
  return lt;
}

P2 Flat(const AcGePoint3d& p) { return {p.x, p.y}; }

class Collector {
 public:
  // Without curves only the centre lines (and the counts) are collected.
  Collector(Contour& out, double chordTol, bool curves = true) : m_out(out), m_tol(chordTol), m_curves(curves) {}

  void Entity(const AcDbEntity& e, int source, int depth) {
    if (IsDimensionLayerName(e.layer())) {
      ++m_out.leftOutDimension;
      return;
    }
    if (IsConstructionLayerName(e.layer())) {
      ++m_out.leftOutOther;
      return;
    }
    if (AcDbDimension::cast(&e)) {
      ++m_out.leftOutDimension;
      return;
    }
    if (const auto* ref = AcDbBlockReference::cast(&e)) {
      if (depth >= kMaxDepth) return;
      Explode(e, source, depth + 1);
      (void)ref;
      return;
    }
    if (const auto* corner = AcDbCornerEntity::cast(&e)) {  // solids: the arrowheads of exploded dimensions
      for (int i = 0; i < 4; ++i) {
        AcGePoint3d p;
        if (corner->getPointAt(i, p) == Acad::eOk) m_arrowPoints.push_back(Flat(p));
      }
      ++m_out.leftOutOther;
      return;
    }
    const auto* curve = AcDbCurve::cast(&e);
    if (!curve) {
      ++m_out.leftOutOther;
      return;
    }
    const Linetype lt = EffectiveLinetype(e);
    if (!lt.continuous) {
      ++m_out.leftOutDashed;
      if (const auto* line = AcDbLine::cast(&e); line && lt.dashDot)
        m_out.centreLines.push_back({Flat(line->startPoint()), Flat(line->endPoint()), m_out.sources[source],
                                     lt.name, std::string(e.layer())});
      return;
    }
    if (m_curves) Curve(*curve, source, depth);
  }

  // Lines that end at an arrowhead are the dimension lines of exploded
  // dimensions and leaders.
  void DropDimensionLines(double tol) {
    if (m_arrowPoints.empty()) return;
    std::vector<Seg> kept;
    for (const Seg& s : m_out.curves) {
      bool arrow = false;
      if (!s.arc)
        for (const P2& p : m_arrowPoints)
          if (Dist(p, s.a) <= tol || Dist(p, s.b) <= tol) {
            arrow = true;
            break;
          }
      if (arrow) ++m_out.leftOutDimension;
      else kept.push_back(s);
    }
    m_out.curves = std::move(kept);
  }

 private:
  void Explode(const AcDbEntity& e, int source, int depth) {
    AcDbEntityArray parts;
    if (e.explode(parts) != Acad::eOk) {
      for (AcDbEntity* p : parts) delete p;
      m_out.problems.push_back("entity " + m_out.sources[source] + " could not be opened up");
      return;
    }
    for (AcDbEntity* p : parts) {
      std::unique_ptr<AcDbEntity> owned(p);
      Entity(*owned, source, depth);
    }
  }

  void Curve(const AcDbCurve& c, int source, int depth) {
    if (const auto* line = AcDbLine::cast(&c)) {
      const P2 a = Flat(line->startPoint()), b = Flat(line->endPoint());
      if (Dist(a, b) > 0) m_out.curves.push_back(Seg::Line(a, b, source));
      return;
    }
    const bool minusZ = [&] {
      if (const auto* a = AcDbArc::cast(&c)) return a->normal().z < 0;
      if (const auto* k = AcDbCircle::cast(&c)) return k->normal().z < 0;
      if (const auto* el = AcDbEllipse::cast(&c)) return el->normal().z < 0;
      return false;
    }();
    if (minusZ) {  // stored mirrored: read it as the drawing shows it
      std::unique_ptr<AcDbEntity> copy(static_cast<AcDbEntity*>(c.cloneObject()));
      if (host::presentInWorld(copy.get()) == Acad::eOk && AcDbCurve::cast(copy.get()) &&
          !(AcDbArc::cast(copy.get()) && AcDbArc::cast(copy.get())->normal().z < 0) &&
          !(AcDbCircle::cast(copy.get()) && AcDbCircle::cast(copy.get())->normal().z < 0)) {
        Curve(*AcDbCurve::cast(copy.get()), source, depth);
        return;
      }
    }
    if (const auto* arc = AcDbArc::cast(&c)) {
      double t0 = arc->startAngle(), t1 = arc->endAngle();
      while (t1 <= t0) t1 += kTwoPi;
      if (arc->radius() > 0) m_out.curves.push_back(Seg::Arc(Flat(arc->center()), arc->radius(), t0, t1, source));
      return;
    }
    if (const auto* circle = AcDbCircle::cast(&c)) {
      if (circle->radius() > 0) m_out.curves.push_back(Seg::Arc(Flat(circle->center()), circle->radius(), 0, kTwoPi, source));
      return;
    }
    if (AcDbPolyline::cast(&c) || AcDb2dPolyline::cast(&c) || AcDb3dPolyline::cast(&c)) {
      Explode(c, source, depth);
      return;
    }
    if (const auto* el = AcDbEllipse::cast(&c); el && std::fabs(el->radiusRatio() - 1) < 1e-9) {
      const AcGeVector3d major = el->majorAxis();
      const double base = std::atan2(major.y, major.x);
      double t0 = el->startParam(), t1 = el->endParam();
      while (t1 <= t0) t1 += kTwoPi;
      m_out.curves.push_back(Seg::Arc(Flat(el->center()), major.length(), base + t0, base + t1, source));
      return;
    }
    Chords(c, source);
  }

  // Ellipses and splines as chords within the chord tolerance.
  void Chords(const AcDbCurve& c, int source) {
    const std::unique_ptr<AcGeCurve3d> g = c.geCurve();
    if (!g) return;
    AcGeInterval range;
    g->getInterval(range);
    const double lo = range.lowerBound(), hi = range.upperBound();
    if (!(hi > lo)) return;
    const int start = 32;
    for (int i = 0; i < start; ++i)
      Split(*g, lo + (hi - lo) * i / start, lo + (hi - lo) * (i + 1) / start, source, 0);
  }

  void Split(const AcGeCurve3d& g, double t0, double t1, int source, int depth) {
    const P2 a = Flat(g.evalPoint(t0)), b = Flat(g.evalPoint(t1));
    bool fine = true;
    for (double f : {0.25, 0.5, 0.75}) {
      const P2 m = Flat(g.evalPoint(t0 + (t1 - t0) * f));
      if (Seg::Line(a, b).Distance(m) > m_tol) fine = false;
    }
    if (fine || depth > 18) {
      if (Dist(a, b) > 0) m_out.curves.push_back(Seg::Line(a, b, source));
      return;
    }
    const double mid = 0.5 * (t0 + t1);
    Split(g, t0, mid, source, depth + 1);
    Split(g, mid, t1, source, depth + 1);
  }

  Contour& m_out;
  double m_tol;
  bool m_curves;
  std::vector<P2> m_arrowPoints;
};
}  // namespace

bool IsDimensionLayerName(const std::string& name) {
  const std::string n = host::foldCase(name);
  return ContainsAny(n, {"尺寸", "DIM", "COTATION", "BEMASSUNG"});
}

bool IsConstructionLayerName(const std::string& name) {
  return ContainsAny(host::foldCase(name), {"CONSTRUCTION", "辅助"});
}

namespace {
Contour Collect(const AcArray<AcDbObjectId>& selection, double chordTol, bool curves) {
  Contour out;
  Collector collector(out, chordTol, curves);
  for (AcDbObjectId id : selection) {
    AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
    if (!ent) {
      out.problems.push_back("entity " + id.handle().toHex() + " could not be opened");
      continue;
    }
    out.sources.push_back(id.handle().toHex());
    collector.Entity(*ent.get(), static_cast<int>(out.sources.size()) - 1, 0);
  }
  collector.DropDimensionLines(1e-6);
  return out;
}
}  // namespace

Contour CollectContour(const AcArray<AcDbObjectId>& selection, double chordTol) {
  return Collect(selection, chordTol, true);
}

std::vector<CentreLine> CollectCentreLines(const AcArray<AcDbObjectId>& selection) {
  return Collect(selection, 1.0, false).centreLines;
}

}  // namespace robust
