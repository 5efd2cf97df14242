// Test helper for the drawing-file tests of the batch task store.
//   task_store_helper write OUT.dxf VERSION [NAME]  a drawing with lines and a
//       task store saved into it (with NAME, a fourth task of that name);
//       prints the tasks as JSON
//   task_store_helper dump IN.dxf [OUT.dxf]  loads the drawing's task store
//       and prints it and the command-line messages as JSON; with OUT.dxf
//       also saves the store and writes the drawing there
#include <cstdio>
#include <string>

#include "app/cli/json.h"
#include "host/dxf/dxf_file.h"
#include "host/ed/messages.h"
#include "shell/knife_diagram_factory.h"
#include "tests/shell/sample_tasks.h"

namespace {

int write(const std::string& path, const std::string& version, const char* extraTask) {
  host::dxf::DxfDrawing drawing;
  drawing.database = std::make_unique<AcDbDatabase>();
  AcDbDatabase& db = *drawing.database;
  CBatchTaskList& tasks = *CKnifeDiagramFactory::Instance().GetTaskStore(&db);
  tasks = SampleTasks(db);
  if (extraTask) {
    tasks.emplace_back();
    tasks.back().m_strName = extraTask;
  }
  if (!CKnifeDiagramFactory::Instance().SaveTaskStore(&db)) return 1;
  host::dxf::Diagnostics diag;
  if (!host::dxf::writeDxfFile(path, drawing, {version}, diag)) {
    std::fprintf(stderr, "%s\n", diag.error.c_str());
    return 1;
  }
  std::printf("{%s}\n", TasksJson(tasks).c_str());
  return 0;
}

int dump(const std::string& in, const std::string& out) {
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfFile(in, drawing, diag)) {
    std::fprintf(stderr, "%s\n", diag.error.c_str());
    return 1;
  }
  AcDbDatabase* db = drawing.database.get();
  host::ed::takeMessages();
  CKnifeDiagramFactory& factory = CKnifeDiagramFactory::Instance();
  const bool found = factory.LoadTaskStore(db);
  const std::string loadMessages = host::ed::takeMessages();
  if (!out.empty()) {
    if (!factory.SaveTaskStore(db) || !host::dxf::writeDxfFile(out, drawing, {}, diag)) {
      std::fprintf(stderr, "saving failed: %s\n", diag.error.c_str());
      return 1;
    }
  }
  cli::Json j;
  j.beginObject().key("found").value(found).key("messages").value(loadMessages).endObject();
  std::string text = j.str();
  text.insert(text.size() - 1, "," + TasksJson(*factory.GetTaskStore(db)));
  std::printf("%s\n", text.c_str());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string cmd = argc > 1 ? argv[1] : "";
  if (cmd == "write" && (argc == 4 || argc == 5)) return write(argv[2], argv[3], argc == 5 ? argv[4] : nullptr);
  if (cmd == "dump" && (argc == 3 || argc == 4)) return dump(argv[2], argc == 4 ? argv[3] : "");
  std::fprintf(stderr, "usage: task_store_helper write OUT.dxf VERSION | dump IN.dxf [OUT.dxf]\n");
  return 2;
}
