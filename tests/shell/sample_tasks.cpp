#include "tests/shell/sample_tasks.h"

#include "app/cli/json.h"
#include "host/db/operations.h"

namespace {
std::string handle(AcDbObjectId id) { return id.isNull() ? "0" : id.handle().toHex(); }

AcDbObjectId addLine(AcDbDatabase& db, double y) {
  AcDbObjectId id;
  host::appendEntity(&db, new AcDbLine({0, y, 0}, {20, y, 0}), id);
  return id;
}
}  // namespace

CBatchTaskList SampleTasks(AcDbDatabase& db) {
  CBatchTaskList tasks(3);
  tasks[0].m_strName = "钻头 φ12 批量";
  tasks[0].m_nExecState = kBatchDone;
  tasks[0].m_nExportState = kBatchError;
  CBatchToolInfo tool;
  tool.m_strName = "刀具-0001";
  tool.m_ptCenter = AcGePoint3d(12.5, 0.1, 0);
  tool.m_arrEntityIds = {addLine(db, 0), addLine(db, 1), addLine(db, 2)};
  tool.m_idOutline = addLine(db, 3);
  tool.m_nExecState = kBatchDone;
  tool.m_nExportState = kBatchError;
  tasks[0].m_vecTools.push_back(tool);
  tool.m_strName = "0002";
  tool.m_ptCenter = AcGePoint3d(-1, 1e-7, 0);
  tool.m_arrEntityIds = {addLine(db, 4)};
  tool.m_idOutline = AcDbObjectId::kNull;
  tool.m_nExecState = kBatchError;
  tool.m_nExportState = kBatchNotStarted;
  tasks[0].m_vecTools.push_back(tool);
  tasks[1].m_strName = "  空格 ";
  CEncircleCalInfo& p = tasks[1].m_calInfo;
  p.m_bRemoveDashed = false;
  p.m_tolPoint = CEncircleCalInfo::MakeTol(0.002);
  p.m_tolLine = CEncircleCalInfo::MakeTol(0.004);
  p.m_tolFine = CEncircleCalInfo::MakeTol(1e-8);
  p.m_dStep = 0.1;
  p.m_dBreakLength = 2.5;
  p.m_nAxisDir = 1;
  tasks[2].m_strName = "T3";
  return tasks;
}

std::string TasksJson(const CBatchTaskList& tasks) {
  cli::Json j;
  j.beginObject().key("tasks").beginArray();
  for (const CBatchTaskInfo& t : tasks) {
    j.beginObject().key("name").value(t.m_strName).key("exec").value(t.m_nExecState);
    j.key("export").value(t.m_nExportState).key("tools").beginArray();
    for (const CBatchToolInfo& tool : t.m_vecTools) {
      j.beginObject().key("name").value(tool.m_strName).key("centre").beginArray();
      j.value(tool.m_ptCenter.x).value(tool.m_ptCenter.y).value(tool.m_ptCenter.z).endArray();
      j.key("entities").beginArray();
      for (int i = 0; i < tool.m_arrEntityIds.length(); ++i) j.value(handle(tool.m_arrEntityIds[i]));
      j.endArray().key("outline").value(handle(tool.m_idOutline));
      j.key("exec").value(tool.m_nExecState).key("export").value(tool.m_nExportState).endObject();
    }
    const CEncircleCalInfo& p = t.m_calInfo;
    j.endArray().key("params").beginObject();
    j.key("remove_dashed").value(p.m_bRemoveDashed).key("tol_point").value(p.m_tolPoint.equalPoint());
    j.key("tol_line").value(p.m_tolLine.equalPoint()).key("tol_fine").value(p.m_tolFine.equalPoint());
    j.key("step").value(p.m_dStep).key("break_length").value(p.m_dBreakLength);
    j.key("axis_dir").value(p.m_nAxisDir).endObject().endObject();
  }
  j.endArray().endObject();
  // Without the enclosing braces: a member for the caller's object.
  const std::string& s = j.str();
  return s.substr(1, s.size() - 2);
}
