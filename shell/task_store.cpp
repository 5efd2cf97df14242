#include "shell/task_store.h"

#include "host/db/dictionary.h"
#include "host/db/entity.h"

namespace {

// True when id names an object of db that a saved drawing holds.
bool IsSaved(AcDbObjectId id, const AcDbDatabase* db) {
  return !id.isNull() && id.database() == db && id.isValid() && !id.isErased();
}

void WriteTool(const CBatchToolInfo& tool, const AcDbDatabase* db, VKResBuf& out) {
  out.WriteString(tool.m_strName);
  out.WritePoint(tool.m_ptCenter);
  // Erased entities (and ids of other drawings) are not in the saved file:
  // a reference to them would name nothing, or something else, there.
  AcDbObjectIdArray kept;
  for (int i = 0; i < tool.m_arrEntityIds.length(); ++i)
    if (IsSaved(tool.m_arrEntityIds[i], db)) kept.append(tool.m_arrEntityIds[i]);
  out.WriteInt32(kept.length());
  for (int i = 0; i < kept.length(); ++i) out.WriteObjectId(kept[i]);
  out.WriteObjectId(IsSaved(tool.m_idOutline, db) ? tool.m_idOutline : AcDbObjectId::kNull);
  out.WriteInt32(tool.m_nExecState);
  out.WriteInt32(tool.m_nExportState);
}

void WriteTask(const CBatchTaskInfo& task, const AcDbDatabase* db, VKResBuf& out) {
  out.WriteString(task.m_strName);
  out.WriteInt32(task.m_nExecState);
  out.WriteInt32(task.m_nExportState);
  out.WriteInt32(static_cast<std::int32_t>(task.m_vecTools.size()));
  for (const CBatchToolInfo& tool : task.m_vecTools) WriteTool(tool, db, out);
  const CEncircleCalInfo& p = task.m_calInfo;
  out.WriteBool(p.m_bRemoveDashed);
  out.WriteReal(p.m_tolPoint.equalPoint());
  out.WriteReal(p.m_tolLine.equalPoint());
  out.WriteReal(p.m_tolFine.equalPoint());
  out.WriteReal(p.m_dStep);
  out.WriteReal(p.m_dBreakLength);
  out.WriteInt32(p.m_nAxisDir);
}

// A count that leads a run of items; negative counts mark foreign data.
std::int32_t ReadCount(VKResBuf& in, const char* what) {
  const int at = in.Position();
  const std::int32_t n = in.ReadInt32();
  if (n < 0)
    throw VKResBuf::Error(VKResBuf::Error::eWrongType,
                          "item " + std::to_string(at) + ": " + what + " " + std::to_string(n) + " is negative");
  return n;
}

// Why a referenced handle names no usable entity of db; empty when it does.
std::string WhyDangling(AcDbDatabase* db, AcDbHandle handle, AcDbObjectId& id) {
  id = AcDbObjectId::kNull;
  if (!db) return "has no drawing";
  if (handle.isNull()) return "is a null reference";
  if (db->getAcDbObjectId(id, false, handle) != Acad::eOk || !id.isValid()) return "no longer exists";
  AcDbObjectPointer<AcDbEntity> entity(id, AcDb::kForRead);
  switch (entity.openStatus()) {
    case Acad::eOk: return {};
    case Acad::eWasErased: return "no longer exists";
    case Acad::eNotThatKindOfClass: return "is not a drawing entity";
    default: return {};  // exists, but is busy: keep the reference
  }
}

std::string Quoted(const CString& s) { return "\"" + s + "\""; }

CBatchToolInfo ReadTool(VKResBuf& in, AcDbDatabase* db, const CString& taskName,
                        std::vector<std::string>& warnings) {
  CBatchToolInfo tool;
  tool.m_strName = in.ReadString();
  tool.m_ptCenter = in.ReadPoint();
  const std::int32_t count = ReadCount(in, "entity count");
  const std::string where = "task " + Quoted(taskName) + ", tool " + Quoted(tool.m_strName);
  for (std::int32_t i = 0; i < count; ++i) {
    const AcDbHandle handle = in.ReadHandle();
    AcDbObjectId id;
    const std::string why = WhyDangling(db, handle, id);
    if (why.empty()) tool.m_arrEntityIds.append(id);
    else warnings.push_back(where + ": entity " + handle.toHex() + " " + why + "; it was removed from the tool");
  }
  const AcDbHandle outline = in.ReadHandle();
  if (!outline.isNull()) {
    AcDbObjectId id;
    const std::string why = WhyDangling(db, outline, id);
    if (why.empty()) tool.m_idOutline = id;
    else warnings.push_back(where + ": outline " + outline.toHex() + " " + why + "; the tool has no outline now");
  }
  tool.m_nExecState = in.ReadInt32();
  tool.m_nExportState = in.ReadInt32();
  return tool;
}

CBatchTaskInfo ReadTask(VKResBuf& in, std::int32_t version, AcDbDatabase* db, std::vector<std::string>& warnings) {
  CBatchTaskInfo task;
  task.m_strName = in.ReadString();
  task.m_nExecState = in.ReadInt32();
  task.m_nExportState = in.ReadInt32();
  const std::int32_t tools = ReadCount(in, "tool count");
  for (std::int32_t i = 0; i < tools; ++i) task.m_vecTools.push_back(ReadTool(in, db, task.m_strName, warnings));
  if (version >= 2) {
    CEncircleCalInfo& p = task.m_calInfo;
    p.m_bRemoveDashed = in.ReadBool();
    p.m_tolPoint = CEncircleCalInfo::MakeTol(in.ReadReal());
    p.m_tolLine = CEncircleCalInfo::MakeTol(in.ReadReal());
    p.m_tolFine = CEncircleCalInfo::MakeTol(in.ReadReal());
    p.m_dStep = in.ReadReal();
    p.m_dBreakLength = in.ReadReal();
    p.m_nAxisDir = in.ReadInt32();
  }
  return task;
}

// The record's id, null when the drawing has none. A name taken by an
// object of another kind gives a note in why.
AcDbObjectId FindRecord(AcDbDatabase* db, std::string& why) {
  AcDbObjectId dictId, recordId;
  {
    AcDbObjectPointer<AcDbDictionary> nod(db->namedObjectsDictionaryId(), AcDb::kForRead);
    if (!nod || nod->getAt(kTaskDictionaryName, dictId) != Acad::eOk) return {};
  }
  AcDbObjectPointer<AcDbDictionary> dict(dictId, AcDb::kForRead);
  if (!dict) {
    why = std::string("\"") + kTaskDictionaryName + "\" is not a dictionary";
    return {};
  }
  if (dict->getAt(kTaskRecordName, recordId) != Acad::eOk) return {};
  if (AcDbObjectPointer<AcDbXrecord> rec(recordId, AcDb::kForRead); !rec) {
    why = std::string("\"") + kTaskRecordName + "\" is not an extended record";
    return {};
  }
  return recordId;
}

}  // namespace

void WriteTaskList(const CBatchTaskList& tasks, const AcDbDatabase* db, VKResBuf& out) {
  out.WriteInt32(kTaskStoreVersion);
  out.WriteInt32(static_cast<std::int32_t>(tasks.size()));
  for (const CBatchTaskInfo& task : tasks) WriteTask(task, db, out);
}

CBatchTaskList ReadTaskList(VKResBuf& in, AcDbDatabase* db, std::vector<std::string>& warnings) {
  const int at = in.Position();
  const std::int32_t version = in.ReadInt32();
  if (version < 1)
    throw VKResBuf::Error(VKResBuf::Error::eWrongType,
                          "item " + std::to_string(at) + ": version " + std::to_string(version) + " is unknown");
  const std::int32_t count = ReadCount(in, "task count");
  CBatchTaskList tasks;
  for (std::int32_t i = 0; i < count; ++i) tasks.push_back(ReadTask(in, version, db, warnings));
  if (!in.AtEnd())
    warnings.push_back(std::to_string(in.Remaining()) + " items after the last batch task were ignored");
  return tasks;
}

bool LoadTaskList(AcDbDatabase* db, CBatchTaskList& tasks, std::vector<std::string>& warnings) {
  tasks.clear();
  if (!db) return false;
  std::string why;
  const AcDbObjectId recordId = FindRecord(db, why);
  if (recordId.isNull()) {
    if (!why.empty()) warnings.push_back("the batch tasks cannot be read: " + why);
    return false;
  }
  resbuf* chain = nullptr;
  {
    AcDbObjectPointer<AcDbXrecord> rec(recordId, AcDb::kForRead);
    if (!rec || rec->rbChain(&chain) != Acad::eOk) return false;
  }
  const ResbufChain owner(chain);
  VKResBuf in(chain);
  std::vector<std::string> found;
  try {
    tasks = ReadTaskList(in, db, found);
  } catch (const VKResBuf::Error& e) {
    // Never part of a damaged list: a user would take it for the whole.
    tasks.clear();
    warnings.push_back(std::string("the batch task record is damaged (") + e.what() +
                       "); the drawing's task list is empty");
    return true;
  }
  warnings.insert(warnings.end(), found.begin(), found.end());
  return true;
}

bool SaveTaskList(AcDbDatabase* db, const CBatchTaskList& tasks, std::vector<std::string>& warnings) {
  if (!db) return false;
  VKResBuf out;
  WriteTaskList(tasks, db, out);
  const GroupValues values = valuesFromChain(out.Chain());

  std::string why;
  AcDbObjectId recordId = FindRecord(db, why);
  if (!why.empty()) {
    warnings.push_back("the batch tasks cannot be saved: " + why);
    return false;
  }
  if (!recordId.isNull()) {
    AcDbObjectPointer<AcDbXrecord> rec(recordId, AcDb::kForRead);
    if (!rec) return false;
    if (rec->values() == values) return true;
    if (rec->upgradeOpen() != Acad::eOk) return false;
    return rec->setFromRbChain(*out.Chain()) == Acad::eOk;
  }

  AcDbObjectId dictId;
  {
    AcDbObjectPointer<AcDbDictionary> nod(db->namedObjectsDictionaryId(), AcDb::kForRead);
    if (!nod) return false;
    if (nod->getAt(kTaskDictionaryName, dictId) != Acad::eOk) {
      if (nod->upgradeOpen() != Acad::eOk) return false;
      auto* dict = new AcDbDictionary;
      if (nod->setAt(kTaskDictionaryName, dict, dictId) != Acad::eOk) {
        delete dict;
        return false;
      }
      dict->close();
    }
  }
  AcDbObjectPointer<AcDbDictionary> dict(dictId, AcDb::kForWrite);
  if (!dict) return false;
  auto* rec = new AcDbXrecord;
  rec->setValues(values);
  if (dict->setAt(kTaskRecordName, rec, recordId) != Acad::eOk) {
    delete rec;
    return false;
  }
  rec->close();
  return true;
}
