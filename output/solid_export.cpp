#include "output/solid_export.h"

#include "output/units.h"

#include <cmath>
#include <filesystem>
#include <numbers>

#include "host/brep/solid.h"
#include "host/db/operations.h"
#include "host/ed/document.h"
#include "util/entity_utils.h"

const char* const kComputeOutlineFirst = "请先计算包络线";
const char* const kSolidFailed = "生成三维实体失败";
const char* const kWriteFailed = "生成失败";
const char* const kExportSucceeded = "导出成功";

std::vector<DrawingFrame> CollectDrawingFrames() {
  std::vector<DrawingFrame> frames;
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  for (AcDbObjectId id : host::allEntities(db)) {
    AcDbObjectPointer<AcDbBlockReference> ref(id, AcDb::kForRead);
    if (!ref) continue;
    ResbufChain xd(ref->xData("TUKANGE_NAME_IDENTITY"));
    // The first value after the application name, read as a string.
    const resbuf* value = xd.get() ? xd.get()->rbnext : nullptr;
    if (!value || groupKind(value->restype) != GroupKind::kString || !value->resval.rstring ||
        !*value->resval.rstring)
      continue;
    DrawingFrame frame;
    frame.toolNumber = value->resval.rstring;
    AcDbExtents ext;
    if (ref->getGeomExtents(ext) == Acad::eOk) frame.box = CVKRect(ext);
    frames.push_back(frame);
  }
  return frames;
}

std::string ToolNumberOf(const std::vector<DrawingFrame>& frames, AcDbObjectId outline) {
  return ToolNumberOfBox(frames, CVKRect(outline));
}

std::string ToolNumberOfBox(const std::vector<DrawingFrame>& frames, const CVKRect& box) {
  if (!box.IsValid()) return {};
  // Contains() already allows 1e-6 on every side of the frame's box.
  for (const DrawingFrame& f : frames)
    if (f.box.IsValid() && f.box.Contains(box.m_ptMin) && f.box.Contains(box.m_ptMax)) return f.toolNumber;
  return {};
}

AcDbObjectId RevolveOutline(AcDbObjectId outlineId, const AcGePoint3d& axisPoint, const AcGeVector3d& axisDir,
                            SolidOrientation orientation, RevolveRoute* route) {
  if (route) *route = RevolveRoute::kNone;
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  AcDbObjectPointer<AcDbPolyline> outline(outlineId, AcDb::kForRead);
  if (!outline || !db) return AcDbObjectId::kNull;
  // The curve route; then a region made of the outline.
  auto solid = std::make_unique<AcDb3dSolid>();
  std::unique_ptr<AcDbRegion> region;
  RevolveRoute used = RevolveRoute::kCurve;
  AcDbEntity* source = outline.get();
  if (solid->createRevolvedSolid(source, axisPoint, axisDir, 2 * std::numbers::pi, 0, {}) != Acad::eOk) {
    AcArray<AcDbRegion*> regions;
    if (AcDbRegion::createFromCurves({outline.get()}, regions) != Acad::eOk) return AcDbObjectId::kNull;
    region.reset(regions[0]);
    for (int i = 1; i < regions.length(); ++i) delete regions[i];
    solid = std::make_unique<AcDb3dSolid>();
    used = RevolveRoute::kRegion;
    source = region.get();
    if (solid->createRevolvedSolid(source, axisPoint, axisDir, 2 * std::numbers::pi, 0, {}) != Acad::eOk)
      return AcDbObjectId::kNull;
  }
  if (orientation == SolidOrientation::kAxisZ) {
    // The same profile about +Z, its left end at the origin.
    MeridianProfile profile = *solid->profile();
    double left = profile.vertices[0].x;
    for (const auto& v : profile.vertices) left = std::min(left, v.x);
    profile.axisDir = AcGeVector3d::kZAxis;
    profile.upDir = AcGeVector3d::kXAxis;
    profile.axisPoint = AcGePoint3d(0, 0, -left);
    solid = std::make_unique<AcDb3dSolid>();
    if (solid->createFromProfile(profile) != Acad::eOk) return AcDbObjectId::kNull;
  }
  solid->setPropertiesFrom(outline.get());
  outline.close();
  AcDbObjectId id;
  if (host::appendEntity(db, solid.release(), id) != Acad::eOk) return AcDbObjectId::kNull;
  if (route) *route = used;
  return id;
}

std::string WithExtension(const std::string& chosen, const std::string& extension) {
  if (chosen.empty()) return chosen;
  return std::filesystem::path(chosen).has_extension() ? chosen : chosen + "." + extension;
}

bool OutlineAxisPoint(AcDbObjectId outlineId, AcGePoint3d& centre) {
  AcDbObjectPointer<AcDbPolyline> pl(outlineId, AcDb::kForRead);
  if (!pl || pl->numVerts() == 0) return false;
  const unsigned n = pl->numVerts();
  double best = -1;
  for (unsigned i = 0; i < n; ++i) {
    AcGePoint3d a, b;
    pl->getPointAt(i, a);
    pl->getPointAt((i + 1) % n, b);
    if (std::fabs(a.y - b.y) > 0.0001) continue;
    const double len = a.distanceTo(b);
    if (len > best) {
      best = len;
      centre = a;  // either end: both lie on the axis, which runs along x
    }
  }
  return best >= 0;
}

void ExportOutline(const OutlineExport& request, const std::vector<DrawingFrame>& frames, const SavePathAsker& ask,
                   std::vector<std::string>& messages, ExportDetail* detail) {
  ExportDetail local;
  ExportDetail& d = detail ? *detail : local;
  AcAxDocLock lock(AcAp::kWrite);
  if (request.outline.isNull()) {
    messages.push_back(kComputeOutlineFirst);
    return;
  }
  d.toolNumber = ToolNumberOf(frames, request.outline);
  const AcDbObjectId solid =
      RevolveOutline(request.outline, request.centre, AcGeVector3d::kXAxis, request.orientation, &d.route);
  if (solid.isNull()) {
    if (request.bDeleteOutline) util::EraseEntity(request.outline);
    messages.push_back(d.toolNumber + kSolidFailed);
    return;
  }
  d.solid = solid;
  const std::string path =
      WithExtension(ask("sat", "请选择保存三维文件路径(文件名称只能英文)", d.toolNumber), "sat");
  auto cleanUp = [&] {
    if (request.bDeleteOutline) util::EraseEntity(request.outline);
    if (request.bDeleteSolid) {
      util::EraseEntity(solid);
      d.solid = AcDbObjectId::kNull;
    }
  };
  if (path.empty()) {  // cancelled: no message, but the delete options apply
    cleanUp();
    return;
  }
  bool ok = true;
  {
    AcDbObjectPointer<AcDb3dSolid> s(solid, AcDb::kForRead);
    const std::unique_ptr<AcDb3dSolid> inMillimetres = SolidInMillimetres(*s.get(), request.millimetresPerUnit);
    const AcDb3dSolid& out = inMillimetres ? *inMillimetres : *s.get();
    const std::filesystem::path base(path);
    std::string error;
    for (const std::string& format : request.formats) {
      const std::string file =
          format == "sat" ? path : (base.parent_path() / (base.stem().string() + "." + format)).string();
      bool written = false;
      if (format == "sat") written = host::brep::WriteSat(out, file, error);
      else if (format == "step") written = host::brep::WriteStep(out, file, error, d.toolNumber);
      else if (format == "stl") written = host::brep::WriteStl(out, file, request.stlTolerance, error);
      if (written) d.files.push_back(file);
      else d.writeErrors.push_back(error);
      ok = ok && written;
    }
  }
  if (!ok) messages.push_back(d.toolNumber + kWriteFailed);
  cleanUp();
}

std::string ExportReport(const std::vector<std::string>& messages) {
  if (messages.empty()) return kExportSucceeded;
  std::string joined;
  for (std::size_t i = 0; i < messages.size(); ++i) joined += (i ? "\n" : "") + messages[i];
  return joined;
}
