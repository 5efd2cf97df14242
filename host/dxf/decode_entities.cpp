#include <cmath>
#include <numbers>

#include "host/dxf/codec.h"

namespace host::dxf {

namespace {
constexpr double kDeg = std::numbers::pi / 180.0;

// Sets the coordinate of p that the tag names, for points at base (10, 11, ...).
bool coord(const Tag& t, int base, AcGePoint3d& p) {
  if (t.code == base) p.x = tagDouble(t);
  else if (t.code == base + 10) p.y = tagDouble(t);
  else if (t.code == base + 20) p.z = tagDouble(t);
  else return false;
  return true;
}
bool coord(const Tag& t, int base, AcGeVector3d& v) {
  AcGePoint3d p(v.x, v.y, v.z);
  if (!coord(t, base, p)) return false;
  v = AcGeVector3d(p.x, p.y, p.z);
  return true;
}
AcGeVector3d normalOr(const AcGeVector3d& n) { return n.isZeroLength() ? AcGeVector3d::kZAxis : n.normal(); }
AcGePoint3d toWorld(const AcGeVector3d& normal, AcGePoint3d p) {
  // The plane of the common extrusion (0,0,1) is the world's: its matrix is
  // the identity, whose product with finite coordinates only turns -0 into 0.
  if (normal.x == 0 && normal.y == 0 && normal.z == 1) return AcGePoint3d(p.x + 0.0, p.y + 0.0, p.z + 0.0);
  return p.transformBy(AcGeMatrix3d::planeToWorld(normal));
}

AcDbEntity* decodeLine(const std::vector<Tag>& own) {
  AcGePoint3d a, b;
  AcGeVector3d n(0, 0, 1);
  double thickness = 0;
  for (const Tag& t : own) {
    if (coord(t, 10, a) || coord(t, 11, b) || coord(t, 210, n)) continue;
    if (t.code == 39) thickness = tagDouble(t);
  }
  auto* line = new AcDbLine(a, b);
  line->setNormal(normalOr(n));
  line->setThickness(thickness);
  return line;
}

AcDbEntity* decodeArcOrCircle(const std::vector<Tag>& own, bool arc) {
  AcGePoint3d c;
  AcGeVector3d n(0, 0, 1);
  double r = 0, s = 0, e = 360, thickness = 0;
  for (const Tag& t : own) {
    if (coord(t, 10, c) || coord(t, 210, n)) continue;
    if (t.code == 40) r = tagDouble(t);
    else if (t.code == 50) s = tagDouble(t);
    else if (t.code == 51) e = tagDouble(t);
    else if (t.code == 39) thickness = tagDouble(t);
  }
  n = normalOr(n);
  const AcGePoint3d w = toWorld(n, c);
  AcDbEntity* ent = nullptr;
  if (arc) {
    auto* a = new AcDbArc(w, n, std::fabs(r), s * kDeg, e * kDeg);
    a->setThickness(thickness);
    ent = a;
  } else {
    auto* ci = new AcDbCircle(w, n, std::fabs(r));
    ci->setThickness(thickness);
    ent = ci;
  }
  presentInWorld(ent);
  return ent;
}

AcDbEntity* decodeEllipse(const std::vector<Tag>& own) {
  AcGePoint3d c;
  AcGeVector3d major(1, 0, 0), n(0, 0, 1);
  double ratio = 1, s = 0, e = 2 * std::numbers::pi;
  for (const Tag& t : own) {
    if (coord(t, 10, c) || coord(t, 11, major) || coord(t, 210, n)) continue;
    if (t.code == 40) ratio = tagDouble(t);
    else if (t.code == 41) s = tagDouble(t);
    else if (t.code == 42) e = tagDouble(t);
  }
  auto* el = new AcDbEllipse(c, normalOr(n), major, ratio, s, e);
  presentInWorld(el);
  return el;
}

AcDbEntity* decodeSpline(const std::vector<Tag>& own) {
  int flags = 0, degree = 3;
  AcGeDoubleArray knots, weights;
  AcGePoint3dArray ctrl, fit;
  AcGeVector3d n(0, 0, 0), st, et;
  double fitTol = 0;
  for (const Tag& t : own) {
    switch (t.code) {
      case 70: flags = static_cast<int>(tagInt(t)); break;
      case 71: degree = static_cast<int>(tagInt(t)); break;
      case 40: knots.append(tagDouble(t)); break;
      case 41: weights.append(tagDouble(t)); break;
      case 44: fitTol = tagDouble(t); break;
      case 10: ctrl.append(AcGePoint3d(tagDouble(t), 0, 0)); break;
      case 20: if (!ctrl.isEmpty()) ctrl.last().y = tagDouble(t); break;
      case 30: if (!ctrl.isEmpty()) ctrl.last().z = tagDouble(t); break;
      case 11: fit.append(AcGePoint3d(tagDouble(t), 0, 0)); break;
      case 21: if (!fit.isEmpty()) fit.last().y = tagDouble(t); break;
      case 31: if (!fit.isEmpty()) fit.last().z = tagDouble(t); break;
      default: coord(t, 12, st) || coord(t, 13, et) || coord(t, 210, n); break;
    }
  }
  auto* s = new AcDbSpline;
  if (weights.length() != ctrl.length()) weights.removeAll();
  s->setNurbsData(degree, (flags & 4) != 0, (flags & 1) != 0, (flags & 2) != 0, ctrl, knots, weights);
  if (!fit.isEmpty()) s->setFitData(fit, st, et, fitTol);
  if (!n.isZeroLength()) s->setNormal(n.normal());
  return s;
}

AcDbEntity* decodeLwPolyline(const std::vector<Tag>& own) {
  auto* pl = new AcDbPolyline;
  int flags = 0;
  double elevation = 0, constWidth = -1, thickness = 0;
  AcGeVector3d n(0, 0, 1);
  std::vector<AcDbPolyline::Vertex> verts;
  for (const Tag& t : own) {
    switch (t.code) {
      case 70: flags = static_cast<int>(tagInt(t)); break;
      case 38: elevation = tagDouble(t); break;
      case 43: constWidth = tagDouble(t); break;
      case 39: thickness = tagDouble(t); break;
      case 10: verts.push_back({AcGePoint2d(tagDouble(t), 0), 0, 0, 0}); break;
      case 20: if (!verts.empty()) verts.back().point.y = tagDouble(t); break;
      case 40: if (!verts.empty()) verts.back().startWidth = tagDouble(t); break;
      case 41: if (!verts.empty()) verts.back().endWidth = tagDouble(t); break;
      case 42: if (!verts.empty()) verts.back().bulge = tagDouble(t); break;
      default: coord(t, 210, n); break;
    }
  }
  unsigned int i = 0;
  for (const auto& v : verts) pl->addVertexAt(i++, v.point, v.bulge, v.startWidth, v.endWidth);
  pl->setClosed((flags & 1) != 0);
  pl->setPlinegen((flags & 128) != 0);
  pl->setElevation(elevation);
  pl->setConstantWidth(constWidth);
  pl->setThickness(thickness);
  pl->setNormal(normalOr(n));
  presentInWorld(pl);
  return pl;
}

void decodeTextFields(const std::vector<Tag>& own, AcDbText* text, bool attribute) {
  AcGePoint3d p, align;
  AcGeVector3d n(0, 0, 1);
  int h = 0, v = 0;
  for (const Tag& t : own) {
    if (coord(t, 10, p) || coord(t, 11, align) || coord(t, 210, n)) continue;
    switch (t.code) {
      case 1: text->setTextString(std::string(t.value)); break;
      case 40: text->setHeight(tagDouble(t)); break;
      case 50: text->setRotation(tagDouble(t) * kDeg); break;
      case 41: text->setWidthFactor(tagDouble(t)); break;
      case 51: text->setOblique(tagDouble(t) * kDeg); break;
      case 39: text->setThickness(tagDouble(t)); break;
      case 71: text->setGenerationFlags(static_cast<int>(tagInt(t))); break;
      case 72: h = static_cast<int>(tagInt(t)); break;
      case 73: if (!attribute) v = static_cast<int>(tagInt(t)); break;
      case 74: if (attribute) v = static_cast<int>(tagInt(t)); break;
      default: break;
    }
  }
  n = normalOr(n);
  text->setNormal(n);
  text->setPosition(toWorld(n, p));
  text->setAlignmentPoint(toWorld(n, align));
  text->setModes(h, v);
}

AcDbEntity* decodeMText(const std::vector<Tag>& own, ReadContext& ctx) {
  auto* m = new AcDbMText;
  AcGePoint3d p;
  AcGeVector3d dir(0, 0, 0), n(0, 0, 1);
  std::string contents, last;
  double rotation = 0;
  bool hasRotation = false;
  for (const Tag& t : own) {
    if (coord(t, 10, p) || coord(t, 11, dir) || coord(t, 210, n)) continue;
    switch (t.code) {
      case 3: contents += t.value; break;
      case 1: last = std::string(t.value); break;
      case 40: m->setTextHeight(tagDouble(t)); break;
      case 41: m->setWidth(tagDouble(t)); break;
      case 71: m->setAttachment(static_cast<int>(tagInt(t))); break;
      case 50: rotation = tagDouble(t); hasRotation = true; break;
      case 7: m->setTextStyle(ctx.textStyle(t.value)); break;
      default: break;
    }
  }
  m->setContents(contents + last);
  m->setLocation(p);
  n = normalOr(n);
  m->setNormal(n);
  if (dir.isZeroLength()) {
    // No direction vector: the rotation (radians) in the plane of the normal.
    AcGeVector3d d(std::cos(hasRotation ? rotation : 0), std::sin(hasRotation ? rotation : 0), 0);
    d.transformBy(AcGeMatrix3d::planeToWorld(n));
    dir = d;
  }
  m->setDirection(dir.normal());
  return m;
}

AcDbEntity* decodeInsert(const std::vector<Tag>& own, PendingNames& names) {
  AcGePoint3d p;
  AcGeVector3d n(0, 0, 1);
  AcGeScale3d scale;
  double rotation = 0, colSpacing = 0, rowSpacing = 0;
  int cols = 1, rows = 1;
  for (const Tag& t : own) {
    if (coord(t, 10, p) || coord(t, 210, n)) continue;
    switch (t.code) {
      case 2: names.blockName = std::string(t.value); break;
      case 41: scale.sx = tagDouble(t); break;
      case 42: scale.sy = tagDouble(t); break;
      case 43: scale.sz = tagDouble(t); break;
      case 50: rotation = tagDouble(t) * kDeg; break;
      case 70: cols = static_cast<int>(tagInt(t)); break;
      case 71: rows = static_cast<int>(tagInt(t)); break;
      case 44: colSpacing = tagDouble(t); break;
      case 45: rowSpacing = tagDouble(t); break;
      default: break;
    }
  }
  // A zero scale is invalid; readers treat it as 1.
  for (double* s : {&scale.sx, &scale.sy, &scale.sz})
    if (*s == 0) *s = 1;
  AcDbBlockReference* ref = nullptr;
  if (cols > 1 || rows > 1) {
    auto* grid = new AcDbMInsertBlock;
    grid->setArray(std::max(cols, 1), std::max(rows, 1), colSpacing, rowSpacing);
    ref = grid;
  } else {
    ref = new AcDbBlockReference;
  }
  n = normalOr(n);
  ref->setNormal(n);
  ref->setPosition(toWorld(n, p));
  ref->setScaleFactors(scale);
  ref->setRotation(rotation);
  return ref;
}

AcDbEntity* decodeCorner(const std::vector<Tag>& own, AcDbCornerEntity* e, bool ocs) {
  AcGePoint3d pts[4];
  AcGeVector3d n(0, 0, 1);
  bool has4 = false;
  for (const Tag& t : own) {
    if (coord(t, 10, pts[0]) || coord(t, 11, pts[1]) || coord(t, 12, pts[2]) || coord(t, 210, n)) continue;
    if (coord(t, 13, pts[3])) {
      has4 = true;
      continue;
    }
    if (t.code == 39) e->setThickness(tagDouble(t));
    else if (t.code == 70) e->setEdgeFlags(static_cast<int>(tagInt(t)));
  }
  if (!has4) pts[3] = pts[2];
  n = normalOr(n);
  for (int i = 0; i < 4; ++i) e->setPointAt(i, ocs ? toWorld(n, pts[i]) : pts[i]);
  e->setNormal(n);
  return e;
}

AcDbEntity* decodeDimension(const std::vector<Tag>& own, PendingNames& names) {
  auto* d = new AcDbDimension;
  AcGeVector3d n(0, 0, 1);
  AcGePoint3d pts[7];
  bool has[7] = {};
  for (const Tag& t : own) {
    if (coord(t, 210, n)) continue;
    bool isPoint = false;
    for (int k = 0; k < 7; ++k)
      if (coord(t, 10 + k, pts[k])) has[k] = isPoint = true;
    if (isPoint) continue;
    if (t.code == 2) names.blockName = std::string(t.value);
    else if (t.code == 70) d->setDimensionType(static_cast<int>(tagInt(t)));
    else if (t.code == 1) d->setDimensionText(std::string(t.value));
  }
  n = normalOr(n);
  d->setNormal(n);
  for (int k = 0; k < 7; ++k)
    if (has[k]) d->setPoint(10 + k, (k == 1 || k == 2) ? toWorld(n, pts[k]) : pts[k]);
  return d;
}

// Hatch boundaries as polyline loops (edges other than lines and arcs are
// sampled): enough for extents and selection.
AcDbEntity* decodeHatch(const std::vector<Tag>& own) {
  auto* h = new AcDbHatch;
  AcGeVector3d n(0, 0, 1);
  AcGePoint3d elevation;
  std::string pattern = "SOLID";
  bool solid = false;
  std::size_t i = 0;
  auto at = [&](int code) { return i < own.size() && own[i].code == code; };
  auto take = [&]() { return tagDouble(own[i++]); };
  for (; i < own.size(); ++i) {
    const Tag& t = own[i];
    if (coord(t, 10, elevation) || coord(t, 210, n)) continue;
    if (t.code == 2) pattern = std::string(t.value);
    else if (t.code == 70) solid = tagInt(t) != 0;
    else if (t.code == 91) break;
  }
  long long loops = i < own.size() ? tagInt(own[i++]) : 0;
  for (long long l = 0; l < loops && i < own.size(); ++l) {
    while (i < own.size() && own[i].code != 92) ++i;
    if (i >= own.size()) break;
    AcDbHatch::Loop loop;
    loop.flags = static_cast<int>(tagInt(own[i++]));
    if (loop.flags & 2) {
      while (i < own.size() && own[i].code != 93 && own[i].code != 10) ++i;
      if (at(93)) ++i;
      while (at(10)) {
        AcDbHatch::LoopVertex v;
        v.point.x = take();
        if (at(20)) v.point.y = take();
        if (at(42)) v.bulge = take();
        loop.vertices.push_back(v);
      }
    } else {
      while (i < own.size() && own[i].code != 93) ++i;
      const long long edges = i < own.size() ? tagInt(own[i++]) : 0;
      for (long long e = 0; e < edges && at(72); ++e) {
        const long long type = tagInt(own[i++]);
        std::vector<double> v;
        AcGePoint3dArray fitOrCtrl;
        // Collect this edge's tags up to the next edge or loop marker.
        std::vector<const Tag*> et;
        while (i < own.size() && own[i].code != 72 && own[i].code != 92 && own[i].code != 97 &&
               own[i].code != 75)
          et.push_back(&own[i++]);
        auto val = [&](int code, double dflt) {
          for (const Tag* x : et)
            if (x->code == code) return tagDouble(*x);
          return dflt;
        };
        if (type == 1) {
          loop.vertices.push_back({AcGePoint2d(val(10, 0), val(20, 0)), 0});
          loop.vertices.push_back({AcGePoint2d(val(11, 0), val(21, 0)), 0});
        } else if (type == 2 || type == 3) {
          const AcGePoint2d c(val(10, 0), val(20, 0));
          const bool ccw = val(73, 1) != 0;
          double s = val(50, 0) * kDeg, en = val(51, 360) * kDeg;
          double a = val(40, 0), b = a;
          double rot = 0;
          if (type == 3) {
            const AcGeVector2d major(val(11, 1), val(21, 0));
            b = major.length() * val(40, 1);
            a = major.length();
            rot = major.angle();
          }
          if (en < s) en += 2 * std::numbers::pi;
          for (int k = 0; k <= 16; ++k) {
            double t = s + (en - s) * k / 16;
            if (!ccw) t = -t;
            const double x = a * std::cos(t), y = b * std::sin(t);
            loop.vertices.push_back({AcGePoint2d(c.x + x * std::cos(rot) - y * std::sin(rot),
                                                 c.y + x * std::sin(rot) + y * std::cos(rot)),
                                     0});
          }
        } else if (type == 4) {
          for (const Tag* x : et)
            if (x->code == 10) loop.vertices.push_back({AcGePoint2d(tagDouble(*x), 0), 0});
            else if (x->code == 20 && !loop.vertices.empty()) loop.vertices.back().point.y = tagDouble(*x);
        }
      }
    }
    h->appendLoop(loop);
  }
  h->setPattern(pattern, solid);
  n = normalOr(n);
  h->setNormal(n);
  h->setElevation(elevation.z);
  presentInWorld(h);
  return h;
}

AcDbEntity* decodeLeader(const std::vector<Tag>& own) {
  auto* g = new AcDbGenericEntity("LEADER");
  for (const Tag& t : own) {
    if (t.code == 10) g->points().append(AcGePoint3d(tagDouble(t), 0, 0));
    else if (t.code == 20 && !g->points().isEmpty()) g->points().last().y = tagDouble(t);
    else if (t.code == 30 && !g->points().isEmpty()) g->points().last().z = tagDouble(t);
  }
  return g;
}

}  // namespace

AcDbEntity* decodeEntity(std::string_view kind, const std::vector<Tag>& own, ReadContext& ctx, PendingNames& names) {
  if (kind == "LINE") return decodeLine(own);
  if (kind == "ARC") return decodeArcOrCircle(own, true);
  if (kind == "CIRCLE") return decodeArcOrCircle(own, false);
  if (kind == "ELLIPSE") return decodeEllipse(own);
  if (kind == "SPLINE") return decodeSpline(own);
  if (kind == "LWPOLYLINE") return decodeLwPolyline(own);
  if (kind == "TEXT") {
    auto* t = new AcDbText;
    decodeTextFields(own, t, false);
    for (const Tag& x : own)
      if (x.code == 7) t->setTextStyle(ctx.textStyle(x.value));
    return t;
  }
  if (kind == "ATTRIB" || kind == "ATTDEF") {
    AcDbText* t = nullptr;
    if (kind == "ATTRIB") {
      auto* a = new AcDbAttribute;
      for (const Tag& x : own)
        if (x.code == 2) a->setTag(std::string(x.value));
        else if (x.code == 70) a->setAttributeFlags(static_cast<int>(tagInt(x)));
      t = a;
    } else {
      auto* d = new AcDbAttributeDefinition;
      for (const Tag& x : own)
        if (x.code == 2) d->setTag(std::string(x.value));
        else if (x.code == 3) d->setPrompt(std::string(x.value));
        else if (x.code == 70) d->setAttributeFlags(static_cast<int>(tagInt(x)));
      t = d;
    }
    decodeTextFields(own, t, true);
    for (const Tag& x : own)
      if (x.code == 7) t->setTextStyle(ctx.textStyle(x.value));
    return t;
  }
  if (kind == "MTEXT") return decodeMText(own, ctx);
  if (kind == "INSERT") return decodeInsert(own, names);
  if (kind == "POINT") {
    AcGePoint3d p;
    for (const Tag& t : own) coord(t, 10, p);
    return new AcDbPoint(p);
  }
  if (kind == "SOLID") return decodeCorner(own, new AcDbSolid, true);
  if (kind == "TRACE") return decodeCorner(own, new AcDbTrace, true);
  if (kind == "3DFACE") return decodeCorner(own, new AcDbFace, false);
  if (kind == "DIMENSION") return decodeDimension(own, names);
  if (kind == "HATCH") return decodeHatch(own);
  if (kind == "LEADER") return decodeLeader(own);
  return nullptr;
}

AcDbEntity* decodePolyline(const std::vector<Tag>& head, const std::vector<std::vector<Tag>>& vertices,
                           const std::vector<AcDbHandle>& vertexHandles, ReadContext&) {
  int flags = 0, curveType = 0;
  AcGePoint3d origin;
  AcGeVector3d n(0, 0, 1);
  double sw = 0, ew = 0, thickness = 0;
  for (const Tag& t : head) {
    if (coord(t, 10, origin) || coord(t, 210, n)) continue;
    if (t.code == 70) flags = static_cast<int>(tagInt(t));
    else if (t.code == 75) curveType = static_cast<int>(tagInt(t));
    else if (t.code == 40) sw = tagDouble(t);
    else if (t.code == 41) ew = tagDouble(t);
    else if (t.code == 39) thickness = tagDouble(t);
  }
  if (flags & (16 | 64)) return nullptr;  // polygon and polyface meshes are kept as they are
  std::vector<AcDbPolylineVertex> verts;
  for (std::size_t k = 0; k < vertices.size(); ++k) {
    AcDbPolylineVertex v;
    v.startWidth = sw;
    v.endWidth = ew;
    for (const Tag& t : vertices[k]) {
      if (coord(t, 10, v.position)) continue;
      if (t.code == 42) v.bulge = tagDouble(t);
      else if (t.code == 40) v.startWidth = tagDouble(t);
      else if (t.code == 41) v.endWidth = tagDouble(t);
      else if (t.code == 70) v.flags = static_cast<int>(tagInt(t));
    }
    if (k < vertexHandles.size()) v.handle = vertexHandles[k];
    verts.push_back(v);
  }
  if (flags & 8) {
    auto* p = new AcDb3dPolyline;
    p->vertices() = verts;
    p->setClosed((flags & 1) != 0);
    p->setFileFlags(flags);
    p->setPolyType(curveType == 5 ? AcDb::k3dQuadSplinePoly
                   : curveType == 6 ? AcDb::k3dCubicSplinePoly
                                    : AcDb::k3dSimplePoly);
    return p;
  }
  auto* p = new AcDb2dPolyline;
  for (auto& v : verts) v.position.z = 0;
  p->vertices() = verts;
  p->setClosed((flags & 1) != 0);
  p->setFileFlags(flags);
  p->setElevation(origin.z);
  p->setNormal(normalOr(n));
  p->setThickness(thickness);
  p->setDefaultWidths(sw, ew);
  p->setPolyType((flags & 2) ? AcDb::k2dFitCurvePoly
                 : curveType == 5 ? AcDb::k2dQuadSplinePoly
                 : curveType == 6 ? AcDb::k2dCubicSplinePoly
                                  : AcDb::k2dSimplePoly);
  presentInWorld(p);
  return p;
}

}  // namespace host::dxf
