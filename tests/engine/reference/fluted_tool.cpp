#include "fluted_tool.h"

#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "engine/vk_rect.h"

namespace fluted {

namespace {

struct Pen {
  AcDbDatabase* db;
  Drawing& out;
  AcGePoint3d origin;

  AcDbObjectId layer(const char* name) const {
    AcDbObjectId id;
    host::findLayer(db, name, id, true);
    return id;
  }
  AcDbObjectId linetype(const char* name) const {
    AcDbLinetypeTable* table = nullptr;
    acdbOpenObject(table, db->linetypeTableId(), AcDb::kForWrite);
    AcDbObjectId lt;
    if (table->getAt(name, lt) != Acad::eOk) {
      auto* rec = new AcDbLinetypeTableRecord;
      rec->setName(name);
      table->add(lt, rec);
      rec->close();
    }
    table->close();
    return lt;
  }
  AcGePoint3d at(double x, double y) const { return AcGePoint3d(origin.x + x, origin.y + y, 0); }
  AcDbObjectId put(AcDbEntity* e, const char* layerName = "0", const char* lt = nullptr) const {
    e->setLayer(layer(layerName));
    if (lt) e->setLinetype(linetype(lt));
    AcDbObjectId id;
    host::appendEntity(db, e, id);
    out.selection.append(id);
    return id;
  }
  void line(double x1, double y1, double x2, double y2, const char* layerName = "0", const char* lt = nullptr) const {
    put(new AcDbLine(at(x1, y1), at(x2, y2)), layerName, lt);
  }
  // A line drawn in pieces of about step (a fragmented contour).
  void pieces(double x1, double y1, double x2, double y2, double step) const {
    const int n = std::max(1, static_cast<int>(std::hypot(x2 - x1, y2 - y1) / step));
    for (int k = 0; k < n; ++k)
      line(x1 + (x2 - x1) * k / n, y1 + (y2 - y1) * k / n, x1 + (x2 - x1) * (k + 1) / n, y1 + (y2 - y1) * (k + 1) / n);
  }
  void arc(double cx, double cy, double r, double s, double e) const { put(new AcDbArc(at(cx, cy), r, s, e)); }
  void text(double x, double y, const std::string& s, double h = 2.5) const {
    put(new AcDbText(at(x, y), s, h), "TEXT");
  }
  void dimension(double x1, double y1, double x2, double y2, double offset) const {
    // The dimension itself and its lines and text as an exploded dimension leaves them.
    auto* dim = new AcDbDimension;
    dim->setDimensionType(0);
    dim->setPoint(13, at(x1, y1));
    dim->setPoint(14, at(x2, y2));
    dim->setPoint(10, at(x2, y2 + offset));
    dim->setDimensionText(std::to_string(std::hypot(x2 - x1, y2 - y1)).substr(0, 5));
    put(dim, "DIMENSIONS");
    line(x1, y1 + offset, x2, y2 + offset, "尺寸线");
    line(x1, y1, x1, y1 + offset, "尺寸线");
    line(x2, y2, x2, y2 + offset, "尺寸线");
  }
  void hatch(double x1, double y1, double x2, double y2) const {
    auto* h = new AcDbHatch;
    h->appendLoop({0, {{{origin.x + x1, origin.y + y1}, 0}, {{origin.x + x2, origin.y + y1}, 0},
                       {{origin.x + x2, origin.y + y2}, 0}, {{origin.x + x1, origin.y + y2}, 0}}});
    put(h, "HATCH");
  }
};

// The axis line over the selection's box ± 10, the way the dialog draws it.
void AddAxis(AcDbDatabase* db, Drawing& d) {
  CVKRect box(true);
  for (AcDbObjectId id : d.selection) {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    AcDbExtents ext;
    if (e && e->getGeomExtents(ext) == Acad::eOk) box.Extend(ext);
  }
  auto* axis = new AcDbLine(AcGePoint3d(box.m_ptMin.x - 10, d.centre.y, 0), AcGePoint3d(box.m_ptMax.x + 10, d.centre.y, 0));
  axis->setColorIndex(256);
  AcDbObjectId id;
  host::appendEntity(db, axis, id);
  d.info.m_idMidLine = id;
  d.window[0] = box.m_ptMin.x - 1;
  d.window[1] = box.m_ptMin.y - 1;
  d.window[2] = box.m_ptMax.x + 1;
  d.window[3] = box.m_ptMax.y + 1;
}

void DrawFlutedInto(Pen& pen, const ToolSpec& spec) {
  constexpr double kPi = std::numbers::pi;
  std::mt19937 rng(spec.seed);
  std::uniform_real_distribution<double> unit(0, 1);
  const double L = spec.length, R = spec.radius, rs = 0.9 * R;
  const double shankEnd = 0.2 * L, bodyStart = shankEnd + 1.5, cone = 0.6 * R, bodyEnd = L - cone;
  for (const double side : {1.0, -1.0}) {
    // Left end, chamfer, shank, a corner arc up to the body, body, point.
    pen.pieces(0, 0, 0, side * (rs - 0.5), 1.0);
    pen.line(0, side * (rs - 0.5), 0.5, side * rs);
    pen.pieces(0.5, side * rs, shankEnd, side * rs, 2.0);
    pen.line(shankEnd, side * rs, shankEnd + 0.5, side * rs);
    const double cx = shankEnd + 0.5, cy = side * (rs + 1.0);
    // An arc of radius 1 from the shank up (or down) to the body's
    // radius, and the body's line on from its end: the sweep a is where the
    // circle about (cx, cy) meets |y| = R.
    const double a = std::acos(std::min(1.0, rs + 1.0 - R));
    if (side > 0) pen.arc(cx, cy, 1.0, 1.5 * kPi, 1.5 * kPi + a);
    else pen.arc(cx, cy, 1.0, 0.5 * kPi - a, 0.5 * kPi);
    pen.line(cx + std::sin(a), side * R, bodyStart, side * R);
    pen.pieces(bodyStart, side * R, bodyEnd, side * R, 2.0);
    pen.pieces(bodyEnd, side * R, L, 0, 1.0);
  }
  // Silhouettes across the axis where the profile steps.
  pen.line(shankEnd, -rs, shankEnd, rs);
  pen.line(bodyStart, -R, bodyStart, R);
  pen.line(bodyEnd, -R, bodyEnd, R);
  // Flutes: S-shaped splines from the top silhouette to the bottom one,
  // each with a land, a heel arc and a margin line.
  const double pitch = (bodyEnd - bodyStart - 6) / std::max(1, spec.flutes);
  for (int f = 0; f < spec.flutes; ++f) {
    const double x0 = bodyStart + 1 + f * pitch + unit(rng) * pitch * 0.5;
    const double w = 2.5 + unit(rng) * 2.0, wave = 0.05 + unit(rng) * 0.1;
    AcGePoint3dArray fit;
    for (int k = 0; k <= 6; ++k) {
      const double t = k / 6.0;
      fit.append(pen.at(x0 + w * (t + wave * std::sin(2 * kPi * t)), R * (1 - 2 * t)));
    }
    pen.put(new AcDbSpline(fit));
    const double xe = x0 + w;
    pen.line(xe, -R, xe + 0.3, -R + 0.4);                 // land
    pen.arc(xe + 0.3, -R + 0.9, 0.5, 1.2 * kPi, 1.5 * kPi);  // heel
    pen.line(x0, R, x0 + 0.2, R - 0.35);                   // margin
    pen.line(x0 + 0.2, R - 0.35, x0 + 0.5, R - 0.3);       // margin relief
    pen.arc(x0 + w * 0.5, 0, 0.3, 0.1 * kPi, 0.6 * kPi);    // web
  }
  // Hidden lines, section hatches, dimensions and text.
  pen.line(0.5, 0.3 * R, shankEnd, 0.3 * R, "HIDDEN", "DASHED");
  pen.line(0.5, -0.3 * R, shankEnd, -0.3 * R, "HIDDEN", "DASHED");
  pen.line(-3, 0, L + 3, 0, "CENTER_LINES", "CENTER");
  for (int k = 0; k < 8; ++k) pen.hatch(1 + k * 0.5 * shankEnd / 8, 0.35 * R, 1 + (k + 0.8) * 0.5 * shankEnd / 8, 0.6 * R);
  for (int k = 0; k < 24; ++k) {
    const double x = L * k / 24.0;
    pen.dimension(0, R + 2, x + 1, R + 2, 3 + k * 0.8);
  }
  // The parameter table beside the tool.
  for (int k = 0; k < spec.notes; ++k)
    pen.text(L * (k % 10) / 10.0, -R - 6 - (k / 10) * 4.0, "P" + std::to_string(k) + "=" + std::to_string(k * 0.25));
}

// A stepped tool of the kind a sheet holds: a few steps with corner arcs,
// silhouettes, a centre line, a dimension and a text.
void DrawStepped(Pen& pen, std::mt19937& rng) {
  constexpr double kPi = std::numbers::pi;
  std::uniform_real_distribution<double> unit(0, 1);
  const int steps = 3 + static_cast<int>(unit(rng) * 4);
  double x = 0, y = 3 + unit(rng) * 2;
  for (const double side : {1.0, -1.0}) pen.line(0, 0, 0, side * y);
  for (int s = 0; s < steps; ++s) {
    const double len = 8 + unit(rng) * 10, next = std::max(1.0, y + (unit(rng) < 0.5 ? -1 : 1) * (0.8 + unit(rng)));
    for (const double side : {1.0, -1.0}) {
      pen.line(x, side * y, x + len, side * y);
      pen.line(x + len, side * y, x + len, side * next);
    }
    pen.line(x + len, -std::min(y, next), x + len, std::min(y, next));
    x += len;
    y = next;
  }
  pen.line(x, y, x + 3, 0);
  pen.line(x, -y, x + 3, 0);
  pen.arc(x * 0.5, 0, 0.8, 0.25 * kPi, 0.75 * kPi);
  pen.line(-3, 0, x + 6, 0, "CENTER_LINES", "CENTER");
  pen.dimension(0, 8, x, 8, 2);
  pen.text(0, -9, "T" + std::to_string(static_cast<int>(unit(rng) * 9000 + 1000)));
}

}  // namespace

Drawing DrawFlutedTool(AcDbDatabase* db, const ToolSpec& spec) {
  Drawing d;
  Pen pen{db, d, spec.origin};
  DrawFlutedInto(pen, spec);
  d.centre = spec.origin;
  d.centre.x += spec.length / 2;
  AddAxis(db, d);
  return d;
}

Drawing DrawSheet(AcDbDatabase* db, int tools) {
  Drawing d;
  std::mt19937 rng(static_cast<std::uint32_t>(tools));
  for (int t = 0; t < tools; ++t) {
    Pen pen{db, d, AcGePoint3d(200.0 * (t % 10), -40.0 * (t / 10), 0)};
    DrawStepped(pen, rng);
  }
  d.centre = AcGePoint3d(20, 0, 0);
  AddAxis(db, d);
  return d;
}

}  // namespace fluted
