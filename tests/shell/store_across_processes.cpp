// A task store saved by one host process and found by another:
//   store_across_processes write FILE.dxf   a drawing in the host, the module
//       loaded through its entry point, tasks put into the drawing's store,
//       saved with the SAVEAS command (the editor reactor writes the store);
//   store_across_processes read FILE.dxf    the saved drawing opened before
//       the module loads; the module's document reactor loads its store.
// Both print the store; the read side compares with what the write side
// printed (FILE.dxf.tasks).
#include <cstdio>
#include <fstream>
#include <sstream>

#include "host/db/operations.h"
#include "host/ed/command_line.h"
#include "host/ed/document.h"
#include "host/ed/host_commands.h"
#include "host/ed/messages.h"
#include "host/ed/rx_app.h"
#include "shell/knife_diagram_factory.h"
#include "tests/shell/sample_tasks.h"

namespace {

// The store as text, entities by handle.
std::string describe(const CBatchTaskList& tasks) {
  std::ostringstream o;
  o.precision(17);
  for (const CBatchTaskInfo& t : tasks) {
    const CEncircleCalInfo& p = t.m_calInfo;
    o << "task [" << t.m_strName << "] " << t.m_nExecState << " " << t.m_nExportState << " dashed "
      << p.m_bRemoveDashed << " tol " << p.m_tolPoint.equalPoint() << " " << p.m_tolLine.equalPoint() << " "
      << p.m_tolFine.equalPoint() << " step " << p.m_dStep << " break " << p.m_dBreakLength << " axis "
      << p.m_nAxisDir << "\n";
    for (const CBatchToolInfo& tool : t.m_vecTools) {
      o << "  tool [" << tool.m_strName << "] at " << tool.m_ptCenter.x << "," << tool.m_ptCenter.y << " states "
        << tool.m_nExecState << " " << tool.m_nExportState << " outline "
        << (tool.m_idOutline.isNull() ? "-" : tool.m_idOutline.handle().toHex()) << " entities";
      for (const AcDbObjectId id : tool.m_arrEntityIds) o << " " << id.handle().toHex();
      o << "\n";
    }
  }
  return o.str();
}

int fail(const std::string& why) {
  std::fprintf(stderr, "%s\n%s", why.c_str(), host::ed::takeMessages().c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return fail("usage: store_across_processes write|read FILE.dxf");
  const std::string mode = argv[1], file = argv[2];
  std::string error;
  if (mode == "write") {
    AcApDocument* doc = acDocManager->openDocument(std::make_unique<AcDbDatabase>(), "new.dxf");
    if (!acrxDynamicLinker->loadModule(ENVLINE_MODULE_PATH, error)) return fail(error);
    CBatchTaskList* store = CKnifeDiagramFactory::Instance().GetTaskStore(doc->database());
    if (!store || !store->empty()) return fail("a new drawing should have an empty store");
    *store = SampleTasks(*doc->database());
    host::ed::TextInput script({"SAVEAS", file});
    host::ed::commandLine().setInput(&script);
    if (!host::ed::commandLine().runInput()) return fail("SAVEAS failed");
    std::ofstream(file + ".tasks") << describe(*store);
    return 0;
  }
  if (mode == "read") {
    if (!host::ed::openDrawing(file, error)) return fail(error);
    AcDbDatabase* db = acDocManager->curDocument()->database();
    if (!acrxDynamicLinker->loadModule(ENVLINE_MODULE_PATH, error)) return fail(error);
    if (!CKnifeDiagramFactory::Instance().HasTaskStore(db)) return fail("the store was not loaded at start-up");
    std::ifstream in(file + ".tasks");
    std::stringstream expected;
    expected << in.rdbuf();
    const std::string found = describe(*CKnifeDiagramFactory::Instance().GetTaskStore(db));
    if (found != expected.str() || found.empty())
      return fail("tasks differ\nexpected:\n" + expected.str() + "found:\n" + found);
    // Every entity a tool names is in the drawing.
    for (const CBatchTaskInfo& t : *CKnifeDiagramFactory::Instance().GetTaskStore(db))
      for (const CBatchToolInfo& tool : t.m_vecTools)
        for (const AcDbObjectId id : tool.m_arrEntityIds)
          if (id.isNull() || id.isErased()) return fail("a tool entity is missing");
    std::printf("%s", found.c_str());
    return 0;
  }
  return fail("unknown mode " + mode);
}
