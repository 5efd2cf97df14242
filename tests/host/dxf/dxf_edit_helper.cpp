// Test helper: loads a drawing, makes the changes a user's session makes
// (a new outline on a new layer, a task store under the named objects, a
// layer switched off, an entity moved to another layer, one erased), saves
// it and prints the handles it touched, for an ezdxf-based checker.
// With --rebuild it changes nothing but opens every entity for write, so
// that each is written from what the host built of it: ezdxf then judges the
// building against the original.
#include <cstdio>
#include <string>

#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: dxf_edit_helper IN OUT [--version V | --rebuild]\n");
    return 2;
  }
  host::dxf::DxfDrawing d;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfFile(argv[1], d, diag)) {
    std::fprintf(stderr, "%s\n", diag.error.c_str());
    return 1;
  }
  AcDbDatabase* db = d.database.get();
  if (argc >= 4 && std::string(argv[3]) == "--rebuild") {
    std::size_t rebuilt = 0;
    for (std::size_t i = 0; i < db->numObjects(); ++i) {
      AcDbEntity* e = nullptr;
      if (acdbOpenObject(e, db->idAt(static_cast<std::uint32_t>(i)), AcDb::kForWrite) != Acad::eOk) continue;
      e->close();
      ++rebuilt;
    }
    if (!host::dxf::writeDxfFile(argv[2], d, {}, diag)) {
      std::fprintf(stderr, "%s\n", diag.error.c_str());
      return 1;
    }
    std::printf("rebuilt %zu\n", rebuilt);
    return 0;
  }
  const bool unicode = d.info.acadVer >= "AC1021" || d.info.codePage == "ANSI_936";
  std::string changed, added;
  auto note = [](std::string& list, AcDbObjectId id) { list += (list.empty() ? "" : ",") + id.handle().toHex(); };

  AcDbObjectId outlineLayer;
  host::findLayer(db, "TempEncircleLine", outlineLayer, true);
  note(added, outlineLayer);
  auto* pl = new AcDbPolyline;
  pl->addVertexAt(0, {0, 0}, 0.5);
  pl->addVertexAt(1, {10, 0}, 0);
  pl->addVertexAt(2, {10, 5}, -0.25);
  pl->setClosed(true);
  pl->setLayer(outlineLayer);
  AcDbObjectId plId;
  host::appendEntity(db, pl, plId);
  note(added, plId);

  if (d.info.acadVer >= "AC1015") {
    AcDbObjectPointer<AcDbDictionary> nod(db->namedObjectsDictionaryId(), AcDb::kForWrite);
    auto* dict = new AcDbDictionary;
    AcDbObjectId dictId, recId;
    nod->setAt("VKDJBLX", dict, dictId);
    auto* xrec = new AcDbXrecord;
    const double pt[3] = {1, 2, 3};
    ResbufChain data(acutBuildList(90, 2L, 90, 1L, 1, unicode ? "任务一" : "TASK-1", 40, 0.0005, 10, pt, 70, 1,
                                   RTNONE));
    xrec->setFromRbChain(*data.get());
    dict->setAt("BLX", xrec, recId);
    xrec->close();
    dict->close();
    note(added, dictId);
    note(added, recId);
    note(changed, nod->objectId());
  }

  const char* dimLayer = unicode ? "尺寸线" : "DIMENSIONS";
  AcDbObjectId dimLayerId;
  if (host::findLayer(db, dimLayer, dimLayerId) == Acad::eOk) {
    AcDbObjectPointer<AcDbLayerTableRecord> layer(dimLayerId, AcDb::kForWrite);
    layer->setIsOff(true);
    note(changed, dimLayerId);
  }
  bool lineDone = false, circleDone = false;
  for (AcDbObjectId id : host::allEntities(db)) {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    const bool line = !lineDone && e->isKindOf(AcDbLine::desc());
    const bool circle = !circleDone && e->isKindOf(AcDbCircle::desc());
    if (!line && !circle) continue;
    e->upgradeOpen();
    if (line) {
      auto* line = static_cast<AcDbLine*>(e.get());
      line->setLayer("AXIS");
      line->setEndPoint(line->endPoint() + AcGeVector3d(1, 0, 0));
      lineDone = true;
      note(changed, id);
    } else {
      e->erase();
      circleDone = true;
      note(changed, id);
    }
  }
  AcDbObjectId textId;
  auto* text = new AcDbText(AcGePoint3d(0, -30, 0), unicode ? "计算包络线成功" : "OUTLINE OK", 3.5);
  text->setLayer(dimLayerId);
  host::appendEntity(db, text, textId);
  note(added, textId);

  host::dxf::WriteOptions options;
  if (argc >= 5 && std::string(argv[3]) == "--version") options.acadVer = argv[4];
  if (!host::dxf::writeDxfFile(argv[2], d, options, diag)) {
    std::fprintf(stderr, "%s\n", diag.error.c_str());
    return 1;
  }
  std::printf("changed %s\nadded %s\n", changed.c_str(), added.c_str());
  return 0;
}
