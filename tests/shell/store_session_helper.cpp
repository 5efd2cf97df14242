// Two host sessions over one drawing, as a user has them. The first opens
// the drawing, loads the module through the dynamic linker, puts a task
// with tools into the drawing's store and saves with the SAVE command; the
// second opens the saved drawing, then loads the module, and finds what the
// store holds. Each prints the store as JSON.
//   store_session_helper save MODULE DRAWING
//   store_session_helper find MODULE DRAWING
#include <cstdio>
#include <string>

#include "app/cli/json.h"
#include "host/db/operations.h"
#include "host/ed/command_line.h"
#include "host/ed/document.h"
#include "host/ed/host_commands.h"
#include "host/ed/messages.h"
#include "host/ed/rx_app.h"
#include "shell/knife_diagram_factory.h"
#include "tests/shell/sample_tasks.h"

namespace {

void print(const CBatchTaskList& tasks, const std::string& messages) {
  cli::Json j;
  j.beginObject().key("messages").value(messages).endObject();
  std::string out = j.str();
  out.insert(out.size() - 1, "," + TasksJson(tasks));
  std::printf("%s\n", out.c_str());
}

bool start(const std::string& module, const std::string& drawing) {
  std::string error;
  if (!host::ed::openDrawing(drawing, error) || !acrxDynamicLinker->loadModule(module, error)) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return false;
  }
  return true;
}

int save(const std::string& module, const std::string& drawing) {
  if (!start(module, drawing)) return 1;
  CBatchTaskList* store = CKnifeDiagramFactory::Instance().GetWorkingTaskStore();
  const AcDbObjectIdArray all = host::allEntities(acdbHostApplicationServices()->workingDatabase());
  if (!store || all.length() < 4) {
    std::fprintf(stderr, "no store, or fewer than four entities in the drawing\n");
    return 1;
  }
  CBatchTaskInfo task;
  task.m_strName = "批量任务 一";
  task.m_nExecState = kBatchDone;
  task.m_nExportState = kBatchError;
  task.m_calInfo.m_bRemoveDashed = false;
  task.m_calInfo.m_tolPoint = CEncircleCalInfo::MakeTol(0.001);
  task.m_calInfo.m_dStep = 0.2;
  task.m_calInfo.m_dBreakLength = 3.5;
  task.m_calInfo.m_nAxisDir = 1;
  CBatchToolInfo first;
  first.m_strName = "刀具 T01";
  first.m_ptCenter = AcGePoint3d(0, 12.5, 0);
  for (int i = 0; i < all.length() / 2; ++i) first.m_arrEntityIds.append(all[i]);
  first.m_idOutline = all.last();
  first.m_nExecState = kBatchDone;
  first.m_nExportState = kBatchError;
  CBatchToolInfo second;
  second.m_strName = "T02";
  second.m_ptCenter = AcGePoint3d(-3, 0.25, 0);
  for (int i = all.length() / 2; i < all.length() - 1; ++i) second.m_arrEntityIds.append(all[i]);
  second.m_nExecState = kBatchError;
  task.m_vecTools = {first, second};
  store->push_back(task);

  host::ed::takeMessages();
  if (host::ed::commandLine().runCommand("SAVE") != host::ed::CommandResult::kOk) {
    std::fprintf(stderr, "SAVE failed: %s\n", host::ed::takeMessages().c_str());
    return 1;
  }
  print(*store, host::ed::takeMessages());
  return 0;
}

int find(const std::string& module, const std::string& drawing) {
  host::ed::takeMessages();
  if (!start(module, drawing)) return 1;
  // The drawing was open before the module loaded: its store came with the
  // document reactor the module installed.
  CBatchTaskList* store = CKnifeDiagramFactory::Instance().GetWorkingTaskStore();
  if (!store) return 1;
  print(*store, host::ed::takeMessages());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string cmd = argc > 1 ? argv[1] : "";
  if (argc == 4 && cmd == "save") return save(argv[2], argv[3]);
  if (argc == 4 && cmd == "find") return find(argv[2], argv[3]);
  std::fprintf(stderr, "usage: store_session_helper save|find MODULE DRAWING\n");
  return 2;
}
