#pragma once
// The batch task record and its tool items: one row of the batch dialog's
// task list and one row of its tool list. Plain values, copied memberwise;
// the per-drawing task store (task_store.h) keeps them and saves them into
// the drawing.
#include <cstdint>
#include <vector>

#include "engine/encircle_cal_info.h"
#include "host/base/ac_array.h"
#include "host/base/strings.h"
#include "host/db/object_id.h"
#include "host/ge/vectors.h"

// Execution and export state of a task or a tool, as stored in the drawing.
enum EBatchState : std::int32_t {
  kBatchNotStarted = 0,  // "未开始"
  kBatchDone = 1,        // "已完成"
  kBatchError = 2,       // "生成错误" (execution) or "导出错误" (export)
};

// The text of a state cell: the execution column names a failure
// "生成错误", the export column "导出错误". Codes other than 0, 1 and 2 show
// as an error.
CString BatchStateText(std::int32_t state, bool exportColumn);

// One tool of a task: a set of drawing entities with the picked centre point.
class CBatchToolInfo {
 public:
  CString m_strName;                       // tool number from the drawing frame, or typed
  AcGePoint3d m_ptCenter;                  // picked centre; its y is the height of the axis
  AcArray<AcDbObjectId> m_arrEntityIds;    // the entities that make up the tool, in picking order
  AcDbObjectId m_idOutline;                // the computed envelope polyline; null until computed
  std::int32_t m_nExecState = kBatchNotStarted;
  std::int32_t m_nExportState = kBatchNotStarted;

  bool operator==(const CBatchToolInfo&) const = default;
};

// One batch task: a named list of tools computed with one set of parameters.
class CBatchTaskInfo {
 public:
  CString m_strName;                       // entered by the user
  std::int32_t m_nExecState = kBatchNotStarted;
  std::int32_t m_nExportState = kBatchNotStarted;
  std::vector<CBatchToolInfo> m_vecTools;  // in the order of adding
  CEncircleCalInfo m_calInfo;              // the task's outline parameters (defaults until edited)

  // Equal names, states, tools and the stored parameters (m_bVerticalEnds
  // and m_idMidLine are not part of a task and are not compared).
  bool operator==(const CBatchTaskInfo& other) const;
};

// A drawing's task store: its tasks in list order.
using CBatchTaskList = std::vector<CBatchTaskInfo>;
