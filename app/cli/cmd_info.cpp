// envline info: what a drawing holds, for a user deciding how to run the
// outline (which layers hold dimensions, which linetypes are centre lines,
// which frames carry tool numbers).
#include <chrono>
#include <cstdio>
#include <algorithm>
#include <map>
#include <optional>
#include <unordered_map>

#include "app/cli/arguments.h"
#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "app/cli/json.h"
#include "host/db/block_extents.h"
#include "host/db/operations.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/tags.h"
#include "ui/centre_line.h"
#include "util/shown_number.h"

namespace cli {

namespace {
const char* kHelp =
    "usage: envline info FILE.dxf [--json] [--quiet] [--verbose]\n"
    "\n"
    "Prints the drawing's version, code page, units and extents, its entities\n"
    "by kind and by layer, its blocks, its linetypes (marked dashed or centre\n"
    "where their name or pattern says so) and every block reference that\n"
    "carries a tool number (extended data of TUKANGE_NAME_IDENTITY) with its\n"
    "box and the --window option that selects it, and the centre lines found.\n"
    "\n"
    "  --json      the same as one JSON object (also for an error: status,\n"
    "              message, exit_code)\n"
    "  --quiet     no warnings; --verbose: how long reading took\n"
    "\n"
    "Exit codes: 0 read, 2 bad usage, 1 unreadable drawing.\n"
    "\n"
    "Examples:\n"
    "  envline info sheet.dxf                 then outline a frame with the --window it lists\n"
    "  envline info sheet.dxf --json | python3 -m json.tool\n";

const char* unitName(int u) {
  static const char* const names[] = {"unitless", "inches", "feet", "miles", "millimetres", "centimetres",
                                      "metres", "kilometres", "microinches", "mils", "yards", "angstroms",
                                      "nanometres", "microns", "decimetres", "decametres", "hectometres",
                                      "gigametres", "astronomical units", "light years", "parsecs"};
  return u >= 0 && u < static_cast<int>(std::size(names)) ? names[u] : "other";
}

// "centre", "dashed" or "continuous", from the name and then the pattern.
std::string linetypeKind(const AcDbLinetypeTableRecord& lt) {
  const std::string n = host::foldCase(lt.getName());
  if (n.find("CENTER") != std::string::npos || n.find("CENTRE") != std::string::npos ||
      n.find("DASHDOT") != std::string::npos || n.find("点画线") != std::string::npos)
    return "centre";
  if (n.find("DASH") != std::string::npos || n.find("HIDDEN") != std::string::npos) return "dashed";
  return lt.dashes().size() >= 2 ? "dashed" : "continuous";
}

struct Frame {
  std::string handle, toolNumber;
  AcDbExtents box;
};

// The frame of a block reference that carries a tool number, if it does.
std::optional<Frame> toolFrame(const AcDbBlockReference& ref, host::BlockExtents& blocks) {
  ResbufChain xd(ref.xData("TUKANGE_NAME_IDENTITY"));
  if (!xd.get()) return std::nullopt;
  Frame f;
  f.handle = ref.objectId().handle().toHex();
  // The first value after the application name is the tool number.
  const GroupValues values = valuesFromChain(xd.get());
  if (values.size() > 1) {
    const GroupValue& v = values[1];
    const GroupKind k = groupKind(v.code);
    f.toolNumber = k == GroupKind::kReal ? host::dxf::formatDouble(v.real[0])
                   : (k == GroupKind::kInt16 || k == GroupKind::kInt32) ? std::to_string(v.integer)
                                                                        : v.text;
  }
  blocks.entityExtents(ref, f.box);
  return f;
}
// The window option that selects what lies in a frame's box.
std::string windowOption(const AcDbExtents& box) {
  char buf[160];
  std::snprintf(buf, sizeof buf, "--window %g,%g,%g,%g", Shown(box.minPoint().x), Shown(box.minPoint().y),
                Shown(box.maxPoint().x), Shown(box.maxPoint().y));
  return buf;
}
}  // namespace

int runInfo(const Args& args) {
  const Console con = Console::scan("info", args);
  std::string path;
  for (const std::string& a : args) {
    if (a == "-h" || a == "--help") {
      std::fputs(kHelp, stdout);
      return 0;
    }
    if (Console::isFlag(a)) continue;
    if (!a.empty() && a[0] != '-' && path.empty()) path = a;
    else return con.usage("unexpected argument '" + a + "'");
  }
  if (path.empty()) return con.usage("a drawing file is required");
  const bool json = con.json;
  host::dxf::DxfDrawing d;
  host::dxf::Diagnostics diag;
  const auto clock = std::chrono::steady_clock::now();
  // Every entity is opened below: built while reading, in one pass.
  if (!host::dxf::readDxfFile(path, d, diag, host::dxf::EntityBuilding::kWhileReading))
    return con.fail(1, diag.error);
  con.detail("read " + path + " in " + MsText(clock));
  const AcDbDatabase& db = *d.database;
  std::map<std::string, int> byKind, byLayer;
  // Counted by class and by layer first, so that names are looked up once
  // each; an entity of each class (the first) gives the class its kind name.
  // Entities the host keeps generically carry their own kind name.
  struct ClassCount {
    int count = 0;
    AcDbObjectId first;
  };
  std::unordered_map<const AcRxClass*, ClassCount> byClass;
  std::unordered_map<AcDbObjectId, int> byLayerId;
  std::vector<Frame> frames;  // block references that carry a tool number
  AcDbExtents extents;
  // Each block's box is worked out once, however often it is inserted.
  host::BlockExtents blockBoxes;
  for (AcDbObjectId id : host::allEntities(&db)) {
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    if (e->isA() == AcDbGenericEntity::desc()) {
      ++byKind[host::dxf::kindName(*e.get())];
    } else {
      ClassCount& c = byClass[e->isA()];
      if (c.count++ == 0) c.first = id;
    }
    ++byLayerId[e->layerId()];
    AcDbExtents ext;
    if (blockBoxes.entityExtents(*e.get(), ext) == Acad::eOk) extents.addExt(ext);
    if (const auto* ref = AcDbBlockReference::cast(e.get()))
      if (auto frame = toolFrame(*ref, blockBoxes)) frames.push_back(*frame);
  }
  for (const auto& [cls, c] : byClass) {
    AcDbObjectPointer<AcDbEntity> e(c.first, AcDb::kForRead);
    byKind[host::dxf::kindName(*e.get())] += c.count;
  }
  for (const auto& [layer, n] : byLayerId) {
    AcDbObjectPointer<AcDbLayerTableRecord> rec(layer, AcDb::kForRead, true);
    byLayer[rec ? rec->getName() : std::string()] += n;
  }
  struct Block {
    std::string name;
    int entities = 0;
  };
  std::vector<Block> blocks;
  AcDbObjectPointer<AcDbBlockTable> bt(db.blockTableId(), AcDb::kForRead);
  for (AcDbObjectId id : bt->recordIds()) {
    AcDbObjectPointer<AcDbBlockTableRecord> rec(id, AcDb::kForRead);
    if (!rec || rec->isLayout()) continue;
    Block b{rec->getName(), 0};
    for (AcDbObjectId e : rec->entityIds()) b.entities += !e.isErased();
    blocks.push_back(b);
  }
  bt.close();
  struct Linetype {
    std::string name, description, kind;
  };
  std::vector<Linetype> linetypes;
  AcDbObjectPointer<AcDbLinetypeTable> lt(db.linetypeTableId(), AcDb::kForRead);
  for (AcDbObjectId id : lt->recordIds()) {
    AcDbObjectPointer<AcDbLinetypeTableRecord> rec(id, AcDb::kForRead);
    if (rec) linetypes.push_back({rec->getName(), rec->comments(), linetypeKind(*rec.get())});
  }
  lt.close();
  const CentreLineSearch centreLines = FindCentreLine(host::allEntities(&db));
  const auto* version = host::dxf::findVersion(d.info.acadVer);
  const std::string release = version ? version->release : "unknown";
  const std::string codePage = d.info.acadVer >= "AC1021" ? "UTF-8" : d.info.codePage;

  if (json) {
    Json j;
    j.beginObject();
    j.key("command").value("info").key("file").value(path).key("status").value("ok").key("exit_code").value(0);
    j.key("version").value(release).key("acadver").value(d.info.acadVer);
    j.key("binary").value(d.info.binary).key("codepage").value(codePage);
    j.key("units").value(unitName(db.insunits())).key("insunits").value(db.insunits());
    j.key("extents");
    if (extents.isValid())
      j.beginArray().value(extents.minPoint().x).value(extents.minPoint().y).value(extents.maxPoint().x)
          .value(extents.maxPoint().y).endArray();
    else
      j.beginArray().endArray();
    j.key("entities").beginObject();
    for (const auto& [k, n] : byKind) j.key(k).value(n);
    j.endObject().key("layers").beginObject();
    for (const auto& [k, n] : byLayer) j.key(k).value(n);
    j.endObject().key("blocks").beginArray();
    for (const auto& b : blocks) j.beginObject().key("name").value(b.name).key("entities").value(b.entities).endObject();
    j.endArray().key("linetypes").beginArray();
    for (const auto& l : linetypes)
      j.beginObject().key("name").value(l.name).key("description").value(l.description).key("kind").value(l.kind)
          .endObject();
    j.endArray().key("centre_lines").beginArray();
    for (const auto& c : centreLines.found) j.value(c);
    j.endArray().key("tool_frames").beginArray();
    for (const auto& f : frames) {
      j.beginObject().key("handle").value(f.handle).key("tool_number").value(f.toolNumber).key("box");
      if (f.box.isValid())
        j.beginArray().value(f.box.minPoint().x).value(f.box.minPoint().y).value(f.box.maxPoint().x)
            .value(f.box.maxPoint().y).endArray();
      else
        j.beginArray().endArray();
      if (f.box.isValid()) j.key("window").value(windowOption(f.box));
      j.endObject();
    }
    j.endArray().key("warnings").beginArray();
    for (const auto& w : diag.warnings) j.value(w);
    j.endArray().endObject();
    std::printf("%s\n", j.str().c_str());
    return 0;
  }

  std::printf("%s\n", path.c_str());
  std::printf("  version    %s (%s)%s\n", release.c_str(), d.info.acadVer.c_str(), d.info.binary ? ", binary" : "");
  std::printf("  code page  %s\n", codePage.c_str());
  std::printf("  units      %s\n", unitName(db.insunits()));
  if (extents.isValid())
    std::printf("  extents    (%g, %g) - (%g, %g)\n", Shown(extents.minPoint().x), Shown(extents.minPoint().y),
                Shown(extents.maxPoint().x), Shown(extents.maxPoint().y));
  // Names are padded by the columns they take on a terminal, so that
  // Chinese names line up with the others.
  std::size_t w = 14;
  for (const auto& [k, n] : byLayer) w = std::max(w, DisplayWidth(k) + 1);
  for (const auto& b : blocks) w = std::max(w, DisplayWidth(b.name) + 1);
  for (const auto& l : linetypes) w = std::max(w, DisplayWidth(l.name) + 1);
  std::printf("  entities by kind\n");
  for (const auto& [k, n] : byKind) std::printf("    %s%d\n", PadToWidth(k, w).c_str(), n);
  std::printf("  entities by layer\n");
  for (const auto& [k, n] : byLayer) std::printf("    %s%d\n", PadToWidth(k, w).c_str(), n);
  std::printf("  blocks\n");
  for (const auto& b : blocks) std::printf("    %s%d entities\n", PadToWidth(b.name, w).c_str(), b.entities);
  std::printf("  linetypes\n");
  for (const auto& l : linetypes)
    std::printf("    %s%s%s\n", PadToWidth(l.name, w).c_str(), PadToWidth(l.kind, 11).c_str(), l.description.c_str());
  std::printf("  centre lines\n");
  if (centreLines.found.empty()) std::printf("    none\n");
  for (const auto& c : centreLines.found) std::printf("    %s\n", c.c_str());
  std::printf("  tool frames\n");
  if (frames.empty()) std::printf("    none\n");
  for (const auto& f : frames) {
    std::printf("    %shandle %s", PadToWidth(f.toolNumber.empty() ? "(no number)" : f.toolNumber, w).c_str(),
                f.handle.c_str());
    if (f.box.isValid())
      std::printf(", box (%g, %g) - (%g, %g), %s", Shown(f.box.minPoint().x), Shown(f.box.minPoint().y),
                  Shown(f.box.maxPoint().x), Shown(f.box.maxPoint().y), windowOption(f.box).c_str());
    std::printf("\n");
  }
  for (const auto& w : diag.warnings) con.warn(w);
  return 0;
}

}  // namespace cli
