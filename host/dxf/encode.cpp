// Host objects back into the tags of a drawing file.
#include <cmath>
#include <numbers>

#include "host/db/peek.h"
#include "host/dxf/codec.h"

namespace host::dxf {

namespace {
constexpr double kRad = 180.0 / std::numbers::pi;

struct Out {
  TagList& list;
  void s(int code, std::string v) { list.emplace_back(code, std::move(v)); }
  void d(int code, double v) { list.emplace_back(code, formatDouble(v)); }
  void i(int code, long long v) { list.emplace_back(code, std::to_string(v)); }
  void p(int code, const AcGePoint3d& pt) {
    d(code, pt.x);
    d(code + 10, pt.y);
    d(code + 20, pt.z);
  }
  void p2(int code, double x, double y) {
    d(code, x);
    d(code + 10, y);
  }
  void v(int code, const AcGeVector3d& vec) { p(code, AcGePoint3d(vec.x, vec.y, vec.z)); }
};

std::string name(AcDbObjectId recordId) {
  const auto* rec = peek<AcDbSymbolTableRecord>(recordId);
  return rec ? rec->getName() : std::string();
}

AcGePoint3d toPlane(const AcGeVector3d& normal, AcGePoint3d p) {
  return p.transformBy(AcGeMatrix3d::worldToPlane(normal));
}

bool isPlusZ(const AcGeVector3d& n) { return n.x == 0 && n.y == 0 && n.z == 1; }

// "0 KIND", handle, extension dictionary, reactors, owner.
void head(Out& o, std::string_view kind, const AcDbObject& obj, WriteContext& ctx, int handleCode = 5) {
  o.s(0, std::string(kind));
  if (ctx.handles) o.s(handleCode, obj.handle().toHex());
  if (ctx.r12()) return;
  const AcDbObjectExtras* x = obj.extrasIfAny();
  if (x && !x->persistentReactors.isEmpty()) {
    o.s(102, "{ACAD_REACTORS");
    for (AcDbObjectId r : x->persistentReactors) o.s(330, handleText(r));
    o.s(102, "}");
  }
  if (x && !x->extensionDictionary.isNull() && !x->extensionDictionary.isErased()) {
    o.s(102, "{ACAD_XDICTIONARY");
    o.s(360, handleText(x->extensionDictionary));
    o.s(102, "}");
  }
  o.s(330, handleText(obj.ownerId()));
}

void marker(Out& o, WriteContext& ctx, const char* subclass) {
  if (!ctx.r12()) o.s(100, subclass);
}

void entityCommon(Out& o, const AcDbEntity& e, WriteContext& ctx) {
  marker(o, ctx, "AcDbEntity");
  const AcDbDatabase* db = e.database();
  if (db && !e.blockId().isNull() && e.blockId() == db->paperSpaceId()) o.i(67, 1);
  o.s(8, e.layer().empty() ? "0" : e.layer());
  const std::string lt = e.linetype();
  if (!lt.empty() && !equalsNoCase(lt, "ByLayer")) o.s(6, lt);
  if (e.colorIndex() != 256) o.i(62, e.colorIndex());
  if (!ctx.r12()) {
    if (e.color().trueColor() >= 0) o.i(420, e.color().trueColor());
    if (e.lineWeight() != -1) o.i(370, e.lineWeight());
  }
  if (e.linetypeScale() != 1.0) o.d(48, e.linetypeScale());
  if (e.visibility() == AcDb::kInvisible) o.i(60, 1);
}

void xdata(Out& o, const AcDbObject& obj) {
  const AcDbObjectExtras* x = obj.extrasIfAny();
  if (!x) return;
  for (const GroupValue& v : x->xdata) {
    if (!v.text.empty() || groupKind(v.code) == GroupKind::kString || groupKind(v.code) == GroupKind::kHandle ||
        groupKind(v.code) == GroupKind::kBinary) {
      o.s(v.code, v.text);
    } else if (groupKind(v.code) == GroupKind::kPoint) {
      o.d(v.code, v.real[0]);
      o.d(v.code + 10, v.real[1]);
      o.d(v.code + 20, v.real[2]);
    } else if (groupKind(v.code) == GroupKind::kReal) {
      o.d(v.code, v.real[0]);
    } else {
      o.i(v.code, v.integer);
    }
  }
}

void normal(Out& o, const AcGeVector3d& n) {
  if (!isPlusZ(n)) o.v(210, n);
}

void textBody(Out& o, const AcDbText& t, WriteContext& ctx, bool attribute) {
  marker(o, ctx, "AcDbText");
  const AcGeVector3d n = t.normal();
  if (t.thickness() != 0) o.d(39, t.thickness());
  o.p(10, toPlane(n, t.position()));
  o.d(40, t.height());
  o.s(1, t.textString());
  if (t.rotation() != 0) o.d(50, t.rotation() * kRad);
  if (t.widthFactor() != 1) o.d(41, t.widthFactor());
  if (t.oblique() != 0) o.d(51, t.oblique() * kRad);
  const std::string style = name(t.textStyle());
  if (!style.empty()) o.s(7, style);
  if (t.generationFlags()) o.i(71, t.generationFlags());
  if (t.horizontalMode()) o.i(72, t.horizontalMode());
  if (t.horizontalMode() || t.verticalMode()) o.p(11, toPlane(n, t.alignmentPoint()));
  normal(o, n);
  if (!attribute) {
    marker(o, ctx, "AcDbText");
    if (t.verticalMode()) o.i(73, t.verticalMode());
  }
}

void polylineAsOldForm(Out& o, const AcDbPolyline& pl, WriteContext& ctx) {
  // Files before R13 hold no lightweight polylines: the same vertices as a
  // 2D POLYLINE with VERTEX bulges.
  head(o, "POLYLINE", pl, ctx);
  entityCommon(o, pl, ctx);
  marker(o, ctx, "AcDb2dPolyline");
  o.i(66, 1);
  o.p(10, AcGePoint3d(0, 0, pl.elevation()));
  o.i(70, (pl.isClosed() ? 1 : 0) | (pl.hasPlinegen() ? 128 : 0));
  if (pl.constantWidth() > 0) {
    o.d(40, pl.constantWidth());
    o.d(41, pl.constantWidth());
  }
  normal(o, pl.normal());
  xdata(o, pl);  // the head's: after the vertices it would belong to the end marker
  for (const auto& v : pl.vertices()) {
    o.s(0, "VERTEX");
    if (ctx.handles) o.s(5, "~");  // filled in by the writer
    marker(o, ctx, "AcDbEntity");
    o.s(8, pl.layer());
    marker(o, ctx, "AcDbVertex");
    marker(o, ctx, "AcDb2dVertex");
    o.p(10, AcGePoint3d(v.point.x, v.point.y, 0));
    if (v.startWidth != 0) o.d(40, v.startWidth);
    if (v.endWidth != 0) o.d(41, v.endWidth);
    if (v.bulge != 0) o.d(42, v.bulge);
  }
  o.s(0, "SEQEND");
  if (ctx.handles) o.s(5, "~");
  marker(o, ctx, "AcDbEntity");
  o.s(8, pl.layer());
}

void oldPolyline(Out& o, const AcDbCurve& c, const std::vector<AcDbPolylineVertex>& verts, int flags,
                 double elevation, const AcGeVector3d& n, AcDbHandle seqend, bool threeD, WriteContext& ctx) {
  head(o, "POLYLINE", c, ctx);
  entityCommon(o, c, ctx);
  marker(o, ctx, threeD ? "AcDb3dPolyline" : "AcDb2dPolyline");
  o.i(66, 1);
  o.p(10, AcGePoint3d(0, 0, elevation));
  o.i(70, flags);
  normal(o, n);
  xdata(o, c);  // the head's: after the vertices it would belong to the end marker
  for (const auto& v : verts) {
    o.s(0, "VERTEX");
    if (ctx.handles) o.s(5, v.handle.isNull() ? "~" : v.handle.toHex());
    if (!ctx.r12()) o.s(330, c.handle().toHex());
    marker(o, ctx, "AcDbEntity");
    o.s(8, c.layer());
    marker(o, ctx, "AcDbVertex");
    marker(o, ctx, threeD ? "AcDb3dPolylineVertex" : "AcDb2dVertex");
    o.p(10, v.position);
    if (!threeD) {
      if (v.startWidth != 0) o.d(40, v.startWidth);
      if (v.endWidth != 0) o.d(41, v.endWidth);
      if (v.bulge != 0) o.d(42, v.bulge);
    }
    o.i(70, v.flags);
  }
  o.s(0, "SEQEND");
  if (ctx.handles) o.s(5, seqend.isNull() ? "~" : seqend.toHex());
  if (!ctx.r12()) o.s(330, c.handle().toHex());
  marker(o, ctx, "AcDbEntity");
  o.s(8, c.layer());
}

// R12 files lack ellipses and splines: the curve as a polyline of sampled
// points (2D when it lies in a plane parallel to XY).
void curveAsOldPolyline(Out& o, const AcDbCurve& c, WriteContext& ctx, int samples) {
  const auto curve = c.geCurve();
  AcGePoint3dArray pts;
  if (curve) curve->getSamplePoints(samples, pts);
  bool flat = true;
  for (const auto& p : pts) flat = flat && p.z == (pts.isEmpty() ? 0 : pts[0].z);
  std::vector<AcDbPolylineVertex> verts;
  for (const auto& p : pts) {
    AcDbPolylineVertex v;
    v.position = flat ? AcGePoint3d(p.x, p.y, 0) : p;
    v.flags = flat ? 0 : 32;
    verts.push_back(v);
  }
  oldPolyline(o, c, verts, flat ? 0 : 8, flat && !pts.isEmpty() ? pts[0].z : 0, AcGeVector3d::kZAxis, AcDbHandle(),
              !flat, ctx);
}

// Multiline text without its format codes, one string a line.
std::vector<std::string> plainLines(const std::string& contents) {
  std::vector<std::string> lines(1);
  for (std::size_t i = 0; i < contents.size(); ++i) {
    const char c = contents[i];
    if (c == '{' || c == '}') continue;
    if (c == '\\' && i + 1 < contents.size()) {
      const char code = contents[i + 1];
      if (code == 'P') {
        lines.emplace_back();
        ++i;
      } else if (code == '\\' || code == '{' || code == '}') {
        lines.back() += code;
        ++i;
      } else if (std::string_view("LlOoKkNn").find(code) != std::string_view::npos) {
        ++i;  // switches without an argument
      } else {
        const std::size_t end = contents.find(';', i);
        i = end == std::string::npos ? contents.size() : end;  // codes that end with ';'
      }
      continue;
    }
    lines.back() += c;
  }
  return lines;
}

bool encodeEntity(const AcDbEntity& e, Out& o, WriteContext& ctx) {
  if (const auto* l = AcDbLine::cast(&e)) {
    head(o, "LINE", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, "AcDbLine");
    if (l->thickness() != 0) o.d(39, l->thickness());
    o.p(10, l->startPoint());
    o.p(11, l->endPoint());
    normal(o, l->normal());
  } else if (const auto* a = AcDbArc::cast(&e)) {
    head(o, "ARC", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, "AcDbCircle");
    if (a->thickness() != 0) o.d(39, a->thickness());
    o.p(10, toPlane(a->normal(), a->center()));
    o.d(40, a->radius());
    normal(o, a->normal());
    marker(o, ctx, "AcDbArc");
    o.d(50, a->startAngle() * kRad);
    o.d(51, a->endAngle() * kRad);
  } else if (const auto* c = AcDbCircle::cast(&e)) {
    head(o, "CIRCLE", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, "AcDbCircle");
    if (c->thickness() != 0) o.d(39, c->thickness());
    o.p(10, toPlane(c->normal(), c->center()));
    o.d(40, c->radius());
    normal(o, c->normal());
  } else if (const auto* el = AcDbEllipse::cast(&e)) {
    if (ctx.r12()) {
      curveAsOldPolyline(o, *el, ctx, 65);
      return true;
    }
    head(o, "ELLIPSE", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, "AcDbEllipse");
    o.p(10, el->center());
    o.v(11, el->majorAxis());
    o.v(210, el->normal());
    o.d(40, el->radiusRatio());
    o.d(41, el->startParam());
    o.d(42, el->endParam());
  } else if (const auto* sp = AcDbSpline::cast(&e)) {
    if (ctx.r12()) {
      curveAsOldPolyline(o, *sp, ctx, 16 * (sp->controlPoints().length() + sp->fitPoints().length()) + 2);
      return true;
    }
    head(o, "SPLINE", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, "AcDbSpline");
    if (!sp->normal().isZeroLength()) o.v(210, sp->normal());
    o.i(70, (sp->isClosed() ? 1 : 0) | (sp->isPeriodic() ? 2 : 0) | (sp->isRational() ? 4 : 0) | 8);
    o.i(71, sp->degree());
    o.i(72, sp->knots().length());
    o.i(73, sp->controlPoints().length());
    o.i(74, sp->fitPoints().length());
    o.d(42, 1e-10);
    o.d(43, 1e-10);
    if (sp->hasFitData()) {
      o.d(44, sp->fitTolerance());
      if (!sp->startFitTangent().isZeroLength()) o.v(12, sp->startFitTangent());
      if (!sp->endFitTangent().isZeroLength()) o.v(13, sp->endFitTangent());
    }
    for (double k : sp->knots()) o.d(40, k);
    for (double w : sp->weights()) o.d(41, w);
    for (const auto& p : sp->controlPoints()) o.p(10, p);
    for (const auto& p : sp->fitPoints()) o.p(11, p);
  } else if (const auto* pl = AcDbPolyline::cast(&e)) {
    if (ctx.r12()) {
      polylineAsOldForm(o, *pl, ctx);
      return true;
    }
    head(o, "LWPOLYLINE", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, "AcDbPolyline");
    o.i(90, pl->numVerts());
    o.i(70, (pl->isClosed() ? 1 : 0) | (pl->hasPlinegen() ? 128 : 0));
    if (pl->constantWidth() >= 0) o.d(43, pl->constantWidth());
    if (pl->elevation() != 0) o.d(38, pl->elevation());
    if (pl->thickness() != 0) o.d(39, pl->thickness());
    for (const auto& v : pl->vertices()) {
      o.p2(10, v.point.x, v.point.y);
      if (v.startWidth != 0 || v.endWidth != 0) {
        o.d(40, v.startWidth);
        o.d(41, v.endWidth);
      }
      if (v.bulge != 0) o.d(42, v.bulge);
    }
    normal(o, pl->normal());
  } else if (const auto* p2 = AcDb2dPolyline::cast(&e)) {
    oldPolyline(o, *p2, p2->vertices(), p2->fileFlags() | (p2->isClosed() ? 1 : 0), p2->elevation(), p2->normal(),
                p2->sequenceEndHandle(), false, ctx);
    return true;
  } else if (const auto* p3 = AcDb3dPolyline::cast(&e)) {
    oldPolyline(o, *p3, p3->vertices(), p3->fileFlags() | 8 | (p3->isClosed() ? 1 : 0), 0, AcGeVector3d::kZAxis,
                p3->sequenceEndHandle(), true, ctx);
    return true;
  } else if (const auto* ref = AcDbBlockReference::cast(&e)) {
    head(o, "INSERT", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, AcDbMInsertBlock::cast(&e) ? "AcDbMInsertBlock" : "AcDbBlockReference");
    bool attributes = false;
    for (AcDbObjectId a : ref->attributeIds()) attributes = attributes || !a.isErased();
    if (attributes) o.i(66, 1);
    o.s(2, name(ref->blockTableRecord()));
    o.p(10, toPlane(ref->normal(), ref->position()));
    const AcGeScale3d s = ref->scaleFactors();
    if (s.sx != 1) o.d(41, s.sx);
    if (s.sy != 1) o.d(42, s.sy);
    if (s.sz != 1) o.d(43, s.sz);
    if (ref->rotation() != 0) o.d(50, ref->rotation() * kRad);
    if (const auto* grid = AcDbMInsertBlock::cast(&e)) {
      o.i(70, grid->columns());
      o.i(71, grid->rows());
      o.d(44, grid->columnSpacing());
      o.d(45, grid->rowSpacing());
    }
    normal(o, ref->normal());
  } else if (const auto* att = AcDbAttribute::cast(&e)) {
    head(o, "ATTRIB", e, ctx);
    entityCommon(o, e, ctx);
    textBody(o, *att, ctx, true);
    marker(o, ctx, "AcDbAttribute");
    o.s(2, att->tag());
    o.i(70, att->attributeFlags());
    if (att->verticalMode()) o.i(74, att->verticalMode());
  } else if (const auto* def = AcDbAttributeDefinition::cast(&e)) {
    head(o, "ATTDEF", e, ctx);
    entityCommon(o, e, ctx);
    textBody(o, *def, ctx, true);
    marker(o, ctx, "AcDbAttributeDefinition");
    o.s(3, def->prompt());
    o.s(2, def->tag());
    o.i(70, def->attributeFlags());
    if (def->verticalMode()) o.i(74, def->verticalMode());
  } else if (const auto* t = AcDbText::cast(&e)) {
    head(o, "TEXT", e, ctx);
    entityCommon(o, e, ctx);
    textBody(o, *t, ctx, false);
  } else if (const auto* m = AcDbMText::cast(&e)) {
    if (ctx.r12()) {
      // One TEXT a line, stepped down by the line spacing.
      const std::vector<std::string> lines = plainLines(m->contents());
      AcGeVector3d dir = m->direction();
      const AcGeVector3d down = m->normal().crossProduct(dir).normal() * -(m->textHeight() * 1.667);
      dir.transformBy(AcGeMatrix3d::worldToPlane(m->normal()));
      for (std::size_t i = 0; i < lines.size(); ++i) {
        head(o, "TEXT", e, ctx);
        if (i > 0 && ctx.handles) o.list.back().second = "~";  // the first line keeps the handle
        entityCommon(o, e, ctx);
        o.p(10, toPlane(m->normal(), m->location() + down * static_cast<double>(i)));
        o.d(40, m->textHeight());
        o.s(1, lines[i]);
        const double angle = AcGeVector2d(dir.x, dir.y).angle();
        if (angle != 0) o.d(50, angle * kRad);
        normal(o, m->normal());
      }
      xdata(o, e);
      return true;
    }
    head(o, "MTEXT", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, "AcDbMText");
    o.p(10, m->location());
    o.d(40, m->textHeight());
    o.d(41, m->width());
    o.i(71, m->attachment());
    o.i(72, 1);
    // Long contents go in chunks of 250 characters: all but the last as 3.
    const std::string& text = m->contents();
    std::size_t pos = 0;
    while (text.size() - pos > 250) {
      std::size_t n = 250;
      while (n > 0 && (static_cast<unsigned char>(text[pos + n]) & 0xC0) == 0x80) --n;  // whole characters
      o.s(3, text.substr(pos, n));
      pos += n;
    }
    o.s(1, text.substr(pos));
    const std::string style = name(m->textStyle());
    if (!style.empty()) o.s(7, style);
    normal(o, m->normal());
    o.v(11, m->direction());
  } else if (const auto* pt = AcDbPoint::cast(&e)) {
    head(o, "POINT", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, "AcDbPoint");
    o.p(10, pt->position());
  } else if (const auto* corner = AcDbCornerEntity::cast(&e)) {
    const bool face = AcDbFace::cast(&e) != nullptr;
    head(o, face ? "3DFACE" : AcDbTrace::cast(&e) ? "TRACE" : "SOLID", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, face ? "AcDbFace" : "AcDbTrace");
    for (int k = 0; k < 4; ++k) {
      AcGePoint3d p;
      corner->getPointAt(k, p);
      o.p(10 + k, face ? p : toPlane(corner->normal(), p));
    }
    if (face) {
      if (corner->edgeFlags()) o.i(70, corner->edgeFlags());
    } else {
      if (corner->thickness() != 0) o.d(39, corner->thickness());
      normal(o, corner->normal());
    }
  } else if (const auto* dim = AcDbDimension::cast(&e)) {
    head(o, "DIMENSION", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, "AcDbDimension");
    o.s(2, name(dim->dimBlockId()));
    for (const auto& [code, p] : dim->points())
      o.p(code, (code == 11 || code == 12) ? toPlane(dim->normal(), p) : p);
    o.i(70, dim->dimensionType());
    if (!dim->dimensionText().empty()) o.s(1, dim->dimensionText());
    normal(o, dim->normal());
  } else if (const auto* h = AcDbHatch::cast(&e)) {
    if (ctx.r12()) {
      ctx.diag.warn("HATCH " + e.handle().toHex() + " cannot be held by R12 files and was left out");
      return false;
    }
    head(o, "HATCH", e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, "AcDbHatch");
    o.p(10, AcGePoint3d(0, 0, h->elevation()));
    o.v(210, h->normal());
    o.s(2, h->patternName());
    o.i(70, h->isSolidFill() ? 1 : 0);
    o.i(71, 0);
    o.i(91, static_cast<long long>(h->loops().size()));
    for (const auto& loop : h->loops()) {
      o.i(92, loop.flags | 2);
      bool bulges = false;
      for (const auto& v : loop.vertices) bulges = bulges || v.bulge != 0;
      o.i(72, bulges ? 1 : 0);
      o.i(73, 1);
      o.i(93, static_cast<long long>(loop.vertices.size()));
      for (const auto& v : loop.vertices) {
        o.p2(10, v.point.x, v.point.y);
        if (bulges) o.d(42, v.bulge);
      }
      o.i(97, 0);
    }
    o.i(75, 1);
    o.i(76, 1);
    if (!h->isSolidFill()) {
      o.d(52, 0);
      o.d(41, 1);
      o.i(77, 0);
      o.i(78, 0);
    }
    o.i(98, 0);
  } else if (const auto* m = AcDbModelerEntity::cast(&e)) {
    // R2000 to R2010 files hold the SAT text in the entity, each character
    // substituted as AutoCAD does; later files keep binary data elsewhere.
    if (ctx.r12() || ctx.acadVer >= "AC1027") {
      ctx.diag.warn(std::string(m->dxfKind()) + " " + e.handle().toHex() + ": " + ctx.acadVer +
                    " files keep solids as binary data, which envline does not write; the solid was left out " +
                    "(write its SAT file instead)");
      return false;
    }
    std::string sat, error;
    if (!m->satText(sat, error)) {
      ctx.diag.warn(std::string(m->dxfKind()) + " " + e.handle().toHex() + " was left out: " + error);
      return false;
    }
    head(o, m->dxfKind(), e, ctx);
    entityCommon(o, e, ctx);
    marker(o, ctx, "AcDbModelerGeometry");
    o.i(70, 1);
    std::size_t pos = 0;
    while (pos < sat.size()) {
      std::size_t end = sat.find('\n', pos);
      if (end == std::string::npos) end = sat.size();
      std::string line;
      for (char c : sat.substr(pos, end - pos)) {
        if (c == ' ') line += ' ';
        else if (c == '_') line += '@';
        else if (c == '@') line += '_';
        else if (c >= 'A' && c <= '^') {
          line += static_cast<char>(0x5E - (c - 'A'));
          if (c == 'A') line += ' ';
        } else {
          line += static_cast<char>(c ^ 0x5F);
        }
      }
      // Lines longer than 255 characters continue in 3 groups.
      o.s(1, line.substr(0, 255));
      for (std::size_t k = 255; k < line.size(); k += 255) o.s(3, line.substr(k, 255));
      pos = end + 1;
    }
    if (ctx.acadVer > "AC1018") {
      marker(o, ctx, "AcDb3dSolid");
      o.s(350, "0");
    }
  } else if (const auto* g = AcDbGenericEntity::cast(&e)) {
    // Kept kinds: the common data here, the rest from the original text.
    if (g->dxfName() == "BLOCK" || g->dxfName() == "ENDBLK") return false;  // written with their block
    head(o, g->dxfName(), e, ctx);
    entityCommon(o, e, ctx);
  } else {
    return false;
  }
  xdata(o, e);
  return true;
}

}  // namespace

std::string kindName(const AcDbObject& obj) {
  if (const auto* g = AcDbGenericEntity::cast(&obj)) return g->dxfName();
  if (const auto* g = AcDbGenericObject::cast(&obj)) return g->dxfName();
  if (AcDbLine::cast(&obj)) return "LINE";
  if (AcDbArc::cast(&obj)) return "ARC";
  if (AcDbCircle::cast(&obj)) return "CIRCLE";
  if (AcDbEllipse::cast(&obj)) return "ELLIPSE";
  if (AcDbSpline::cast(&obj)) return "SPLINE";
  if (AcDbPolyline::cast(&obj)) return "LWPOLYLINE";
  if (AcDb2dPolyline::cast(&obj) || AcDb3dPolyline::cast(&obj)) return "POLYLINE";
  if (AcDbBlockReference::cast(&obj)) return "INSERT";
  if (AcDbAttribute::cast(&obj)) return "ATTRIB";
  if (AcDbAttributeDefinition::cast(&obj)) return "ATTDEF";
  if (AcDbText::cast(&obj)) return "TEXT";
  if (AcDbMText::cast(&obj)) return "MTEXT";
  if (AcDbDimension::cast(&obj)) return "DIMENSION";
  if (AcDbHatch::cast(&obj)) return "HATCH";
  if (AcDbPoint::cast(&obj)) return "POINT";
  if (AcDbFace::cast(&obj)) return "3DFACE";
  if (AcDbTrace::cast(&obj)) return "TRACE";
  if (AcDbSolid::cast(&obj)) return "SOLID";
  if (AcDbDictionary::cast(&obj)) return "DICTIONARY";
  if (AcDbXrecord::cast(&obj)) return "XRECORD";
  if (AcDbGroup::cast(&obj)) return "GROUP";
  return obj.isA()->name();
}

std::string_view tableName(const AcDbObject& table) {
  if (AcDbBlockTable::cast(&table)) return "BLOCK_RECORD";
  if (AcDbLayerTable::cast(&table)) return "LAYER";
  if (AcDbLinetypeTable::cast(&table)) return "LTYPE";
  if (AcDbTextStyleTable::cast(&table)) return "STYLE";
  if (AcDbRegAppTable::cast(&table)) return "APPID";
  return {};
}

void encodeTableRecord(const AcDbSymbolTableRecord& rec, std::string_view table, TagList& list, WriteContext& ctx) {
  Out o{list};
  head(o, table, rec, ctx, table == "DIMSTYLE" ? 105 : 5);
  marker(o, ctx, "AcDbSymbolTableRecord");
  if (const auto* layer = AcDbLayerTableRecord::cast(&rec)) {
    marker(o, ctx, "AcDbLayerTableRecord");
    o.s(2, rec.getName());
    o.i(70, (rec.flags() & ~5) | (layer->isFrozen() ? 1 : 0) | (layer->isLocked() ? 4 : 0));
    const int color = layer->color().colorIndex() == 0 || layer->color().colorIndex() > 255 ? 7 : layer->color().colorIndex();
    o.i(62, layer->isOff() ? -color : color);
    const std::string lt = name(layer->linetypeObjectId());
    o.s(6, lt.empty() ? "Continuous" : lt);
    if (!ctx.r12()) {
      if (!layer->isPlottable()) o.i(290, 0);
      o.i(370, layer->lineWeight());
    }
  } else if (const auto* lt = AcDbLinetypeTableRecord::cast(&rec)) {
    marker(o, ctx, "AcDbLinetypeTableRecord");
    o.s(2, rec.getName());
    o.i(70, rec.flags());
    o.s(3, lt->comments());
    o.i(72, 65);
    o.i(73, static_cast<long long>(lt->dashes().size()));
    o.d(40, lt->patternLength());
    for (double dash : lt->dashes()) {
      o.d(49, dash);
      if (!ctx.r12()) o.i(74, 0);
    }
  } else if (const auto* st = AcDbTextStyleTableRecord::cast(&rec)) {
    marker(o, ctx, "AcDbTextStyleTableRecord");
    o.s(2, rec.getName());
    o.i(70, rec.flags());
    o.d(40, st->textSize());
    o.d(41, st->xScale());
    o.d(50, 0);
    o.i(71, 0);
    o.d(42, 2.5);
    o.s(3, st->fileName());
    o.s(4, st->bigFontFileName());
  } else if (AcDbRegAppTableRecord::cast(&rec)) {
    marker(o, ctx, "AcDbRegAppTableRecord");
    o.s(2, rec.getName());
    o.i(70, rec.flags());
  } else if (AcDbBlockTableRecord::cast(&rec)) {
    marker(o, ctx, "AcDbBlockTableRecord");
    o.s(2, rec.getName());
  } else {
    // Kept tables: the record's own marker, which newer forms require.
    if (table == "VPORT") marker(o, ctx, "AcDbViewportTableRecord");
    else if (table == "VIEW") marker(o, ctx, "AcDbViewTableRecord");
    else if (table == "UCS") marker(o, ctx, "AcDbUCSTableRecord");
    else if (table == "DIMSTYLE") marker(o, ctx, "AcDbDimStyleTableRecord");
    o.s(2, rec.getName());
    o.i(70, rec.flags());
  }
  xdata(o, rec);
}

void carryOldFormTags(std::string_view original, std::string_view subclass, TagList& out) {
  std::vector<int> present;
  for (const auto& [code, value] : out) present.push_back(code);
  TagList carried;
  if (!subclass.empty()) carried.emplace_back(100, std::string(subclass));
  TagReader r(original);
  Tag t;
  bool first = true;
  while (r.next(t)) {
    if (first) {
      first = false;
      continue;  // the "0" tag
    }
    if (t.code == 0 || t.code >= 1000) break;  // followers, or extended data (written from the host)
    if (t.code == 5 || t.code == 105) continue;
    if (std::find(present.begin(), present.end(), t.code) != present.end()) continue;
    carried.emplace_back(t.code, std::string(t.value));
  }
  const auto at = std::find_if(out.begin(), out.end(), [](const auto& tag) { return tag.first >= 1000; });
  out.insert(at, carried.begin(), carried.end());
}

bool encodeObject(const AcDbObject& obj, TagList& list, WriteContext& ctx) {
  Out o{list};
  if (const auto* e = AcDbEntity::cast(&obj)) return encodeEntity(*e, o, ctx);
  if (ctx.r12()) return false;  // R12 files have no objects section
  if (const auto* d = AcDbDictionary::cast(&obj)) {
    head(o, "DICTIONARY", obj, ctx);
    marker(o, ctx, "AcDbDictionary");
    if (d->isHardOwner()) o.i(280, 1);
    o.i(281, d->mergeStyle());
    for (const auto& entry : d->entries()) {
      if (entry.id.isErased() || !entry.id.isValid()) continue;
      o.s(3, entry.key);
      o.s(d->isHardOwner() ? 360 : 350, handleText(entry.id));
    }
  } else if (const auto* x = AcDbXrecord::cast(&obj)) {
    head(o, "XRECORD", obj, ctx);
    marker(o, ctx, "AcDbXrecord");
    o.i(280, x->cloningFlags());
    for (const GroupValue& v : x->values()) {
      const GroupKind k = groupKind(v.code);
      if (k == GroupKind::kPoint) {
        o.d(v.code, v.real[0]);
        o.d(v.code + 10, v.real[1]);
        o.d(v.code + 20, v.real[2]);
      } else if (k == GroupKind::kReal) {
        o.d(v.code, v.real[0]);
      } else if (k == GroupKind::kInt16 || k == GroupKind::kInt32 || k == GroupKind::kInt64 || k == GroupKind::kBool) {
        o.i(v.code, v.integer);
      } else {
        o.s(v.code, v.text);
      }
    }
  } else if (const auto* g = AcDbGroup::cast(&obj)) {
    head(o, "GROUP", obj, ctx);
    marker(o, ctx, "AcDbGroup");
    o.s(300, g->description());
    o.i(70, g->isAnonymous() ? 1 : 0);
    o.i(71, g->isSelectable() ? 1 : 0);
    AcDbObjectIdArray members;
    g->allEntityIds(members);
    for (AcDbObjectId m : members) o.s(340, handleText(m));
  } else if (const auto* go = AcDbGenericObject::cast(&obj)) {
    head(o, go->dxfName(), obj, ctx);
    if (go->data())
      for (const auto& [code, value] : *go->data()) o.s(code, value);
  } else {
    return false;
  }
  xdata(o, obj);
  return true;
}

namespace {
// Subclasses whose data the host holds in full (an xrecord's values, a
// dictionary's entries, a group's members): a tag of the original that the
// host no longer writes was removed, and must not come back.
bool fullyModelled(std::string_view marker) {
  return marker == "AcDbXrecord" || marker == "AcDbDictionary" || marker == "AcDbGroup";
}
}  // namespace

void mergeUnmodelled(std::string_view original, TagList& out) {
  if (original.empty()) return;
  // The original's tags by subclass group (the part before the first
  // marker is the group ""), without handle, owner, 102 groups and xdata.
  struct Group {
    std::string marker;
    std::vector<std::pair<int, std::string>> tags;
  };
  std::vector<Group> groups(1);
  std::vector<std::pair<int, std::string>> extra102;
  TagReader r(original);
  Tag t;
  bool first = true, seenMarker = false;
  while (r.next(t)) {
    if (first) {
      first = false;
      continue;  // the "0" tag
    }
    if (t.code == 0) break;  // vertices and end markers follow; they are regenerated
    if (t.code >= 1000) break;
    if (t.code == 102 && t.value.size() > 1 && t.value.front() == '{') {
      const bool known = t.value == "{ACAD_REACTORS" || t.value == "{ACAD_XDICTIONARY";
      if (!known) extra102.emplace_back(t.code, std::string(t.value));
      while (r.next(t) && !(t.code == 102 && t.value == "}"))
        if (!known) extra102.emplace_back(t.code, std::string(t.value));
      if (!known) extra102.emplace_back(102, "}");
      continue;
    }
    if (t.code == 5 || t.code == 105) continue;
    if (t.code == 330 && !seenMarker) continue;
    if (t.code == 100) {
      seenMarker = true;
      groups.push_back({std::string(t.value), {}});
      continue;
    }
    groups.back().tags.emplace_back(t.code, std::string(t.value));
  }
  // The same split of out, by positions.
  auto groupEnd = [&](const std::string& marker, std::size_t& insertAt, std::vector<int>& codes) {
    std::string current;
    bool found = marker.empty();
    std::size_t end = out.size();
    for (std::size_t i = 1; i < out.size(); ++i) {
      const auto& [code, value] = out[i];
      if (code >= 1000) {
        end = i;
        break;
      }
      if (code == 100) {
        if (found && current == marker) {
          end = i;
          break;
        }
        current = value;
        if (current == marker) found = true;
        continue;
      }
      if (found && current == marker) codes.push_back(code);
    }
    insertAt = end;
    return found;
  };
  for (const Group& g : groups) {
    std::size_t at = 0;
    std::vector<int> codes;
    if (!groupEnd(g.marker, at, codes)) {
      // A whole subclass the host does not write: before the extended data.
      std::size_t xd = out.size();
      for (std::size_t i = 1; i < out.size(); ++i)
        if (out[i].first >= 1000) {
          xd = i;
          break;
        }
      std::vector<std::pair<int, std::string>> block;
      block.emplace_back(100, g.marker);
      block.insert(block.end(), g.tags.begin(), g.tags.end());
      out.insert(out.begin() + static_cast<std::ptrdiff_t>(xd), block.begin(), block.end());
      continue;
    }
    if (fullyModelled(g.marker)) continue;
    std::vector<std::pair<int, std::string>> missing;
    for (const auto& tag : g.tags) {
      bool have = false;
      for (int c : codes) have = have || c == tag.first;
      if (!have) missing.push_back(tag);
    }
    out.insert(out.begin() + static_cast<std::ptrdiff_t>(at), missing.begin(), missing.end());
  }
  if (!extra102.empty()) {
    std::size_t at = 1;
    while (at < out.size() && (out[at].first == 5 || out[at].first == 105)) ++at;
    out.insert(out.begin() + static_cast<std::ptrdiff_t>(at), extra102.begin(), extra102.end());
  }
}

}  // namespace host::dxf
