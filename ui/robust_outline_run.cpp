#include "ui/robust_outline_run.h"

#include <algorithm>
#include <cstdio>

#include "engine/encircle_line.h"
#include "engine/robust/contour.h"
#include "host/db/operations.h"
#include "host/ed/document.h"
#include "ui/single_outline_run.h"
#include "util/entity_utils.h"
#include "util/layer_switch.h"

using robust::P2;

double DefaultGap(const std::vector<robust::Seg>& curves) {
  double box[4] = {1e300, 1e300, -1e300, -1e300};
  for (const robust::Seg& s : curves) {
    double b[4];
    s.Box(b);
    box[0] = std::min(box[0], b[0]), box[1] = std::min(box[1], b[1]);
    box[2] = std::max(box[2], b[2]), box[3] = std::max(box[3], b[3]);
  }
  if (curves.empty()) return 1e-6;
  return std::max(1e-6, 4e-4 * std::hypot(box[2] - box[0], box[3] - box[1]));
}

bool GivenAxis(const AxisRequest& request, int side, robust::ProfileAxis& axis) {
  axis.lowerSide = side == 1;
  if (request.line) {
    const auto& l = *request.line;
    axis.origin = {l[0], l[1]};
    axis.dir = {l[2] - l[0], l[3] - l[1]};
    return robust::Norm(axis.dir) > 0;
  }
  if (request.point) {
    axis.origin = *request.point;
    axis.dir = robust::AxisDirection(false);
    return true;
  }
  return false;
}

RobustOutlineResult RunRobustOutline(AcArray<AcDbObjectId>& selection, const AxisRequest& request,
                                     const RobustOutlineSettings& settings) {
  RobustOutlineResult result;
  result.message = kOutlineFailed;
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (!db) {
    result.problem = "no drawing is open";
    return result;
  }
  DropOutlineLayerEntities(selection);
  result.nSelected = selection.length();
  const robust::Contour contour = robust::CollectContour(selection, settings.dChordTol);
  result.nContourCurves = static_cast<int>(contour.curves.size());
  for (const std::string& p : contour.problems) result.warnings.push_back({p, {}});
  result.dGap = settings.dGap > 0 ? settings.dGap : DefaultGap(contour.curves);

  if (request.automatic) {
    const robust::AxisChoice choice = robust::ChooseAxis(contour, result.dGap);
    result.axisCandidates = choice.candidates;
    if (!choice.found) {
      result.problem = "cannot find the part's axis: " + choice.problem;
      return result;
    }
    result.axis = choice.axis;
    result.axisReason = choice.reason;
    result.warnings.insert(result.warnings.end(), choice.warnings.begin(), choice.warnings.end());
    if (settings.nSide == 1) result.axis.lowerSide = !result.axis.lowerSide;
  } else if (!GivenAxis(request, settings.nSide, result.axis)) {
    result.problem = "the axis has no direction";
    return result;
  } else {
    result.axisReason = request.line ? "the axis given as a line" : "the horizontal axis through the given point";
  }

  result.profile = robust::ComputeProfile(contour.curves, result.axis, result.dGap);
  result.warnings.insert(result.warnings.end(), result.profile.warnings.begin(), result.profile.warnings.end());
  if (!result.profile.ok) {
    result.problem = result.profile.problem;
    return result;
  }
  AcAxDocLock lock(AcAp::kWrite);
  const CLayerSwitch layer(kOutlineLayer);
  auto* pline = new AcDbPolyline;
  unsigned index = 0;
  for (const robust::ProfileVertex& v : result.profile.vertices)
    pline->addVertexAt(index++, AcGePoint2d(v.p.x, v.p.y), v.bulge, -1, -1);
  pline->setClosed(true);
  AcDbObjectId id;
  if (host::appendEntity(db, pline, id) != Acad::eOk) {
    result.problem = "the outline could not be added to the drawing";
    return result;
  }
  result.outline = id;
  result.message = kOutlineSucceeded;
  return result;
}

robust::OutlineCheck CheckOutlineEntity(AcDbObjectId outline, const robust::ProfileAxis& axis) {
  AcDbObjectPointer<AcDbPolyline> pline(outline, AcDb::kForRead);
  if (!pline) {
    robust::OutlineCheck c;
    c.ok = false;
    c.problem = "the outline is not a polyline";
    return c;
  }
  std::vector<robust::ProfileVertex> vertices;
  for (unsigned i = 0; i < pline->numVerts(); ++i) {
    AcGePoint3d p;
    double bulge = 0;
    pline->getPointAt(i, p);
    pline->getBulgeAt(i, bulge);
    vertices.push_back({{p.x, p.y}, bulge});
  }
  return robust::CheckOutline(vertices, pline->isClosed(), axis);
}

std::vector<robust::ProfileWarning> WindowCutWarnings(const AcDbDatabase* db, const std::array<double, 4>& w) {
  std::vector<robust::ProfileWarning> out;
  const AcGePoint3d lo(std::min(w[0], w[2]), std::min(w[1], w[3]), 0), hi(std::max(w[0], w[2]), std::max(w[1], w[3]), 0);
  int cut = 0;
  P2 first;
  std::string handles;
  // What a crossing selection holds and a window selection does not, in one
  // pass in model space order.
  for (AcDbObjectId id : host::allEntities(db)) {
    AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
    if (!ent || AcDbBlockReference::cast(ent.get())) continue;  // frames hold the window
    AcDbExtents ext;
    if (ent->getGeomExtents(ext) != Acad::eOk) continue;
    if (!host::boxSelects(ext, lo, hi, host::SelectMode::kCrossing) ||
        host::boxSelects(ext, lo, hi, host::SelectMode::kWindow))
      continue;
    const AcGePoint3d a = ext.minPoint(), b = ext.maxPoint();
    const P2 mid{0.5 * (std::max(a.x, lo.x) + std::min(b.x, hi.x)), 0.5 * (std::max(a.y, lo.y) + std::min(b.y, hi.y))};
    if (cut++ == 0) first = mid;
    if (cut <= 8) handles += (handles.empty() ? "" : ", ") + id.handle().toHex();
  }
  if (cut > 0) {
    char text[120];
    std::snprintf(text, sizeof text, "the window cuts %d entit%s that may belong to the part: ", cut, cut == 1 ? "y" : "ies");
    out.push_back({text + handles + (cut > 8 ? ", ..." : ""), first});
  }
  return out;
}

std::optional<robust::ProfileWarning> CentrePointWarning(const AcArray<AcDbObjectId>& selection, P2 point) {
  const std::vector<robust::CentreLine> centreLines = robust::CollectCentreLines(selection);
  if (centreLines.empty()) return std::nullopt;
  for (const robust::CentreLine& c : centreLines) {
    const robust::Seg line = robust::Seg::Line(c.a, c.b);
    const P2 d = c.b - c.a;
    const double off = std::fabs(robust::Cross(d, point - c.a)) / robust::Norm(d);
    if (off <= 1e-6 * std::max(1.0, robust::Norm(d))) return std::nullopt;
    (void)line;
  }
  char text[160];
  std::snprintf(text, sizeof text, "the centre point (%g, %g) lies on none of the %zu centre lines of the selection",
                point.x, point.y, centreLines.size());
  return robust::ProfileWarning{text, point};
}
