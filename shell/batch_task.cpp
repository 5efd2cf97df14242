#include "shell/batch_task.h"

CString BatchStateText(std::int32_t state, bool exportColumn) {
  if (state == kBatchNotStarted) return "未开始";
  if (state == kBatchDone) return "已完成";
  return exportColumn ? "导出错误" : "生成错误";
}

namespace {
bool sameTol(const AcGeTol& a, const AcGeTol& b) {
  return a.equalPoint() == b.equalPoint() && a.equalVector() == b.equalVector();
}
}  // namespace

bool CBatchTaskInfo::operator==(const CBatchTaskInfo& o) const {
  const CEncircleCalInfo& a = m_calInfo;
  const CEncircleCalInfo& b = o.m_calInfo;
  return m_strName == o.m_strName && m_nExecState == o.m_nExecState && m_nExportState == o.m_nExportState &&
         m_vecTools == o.m_vecTools && a.m_bRemoveDashed == b.m_bRemoveDashed && sameTol(a.m_tolPoint, b.m_tolPoint) &&
         sameTol(a.m_tolLine, b.m_tolLine) && sameTol(a.m_tolFine, b.m_tolFine) && a.m_dStep == b.m_dStep &&
         a.m_dBreakLength == b.m_dBreakLength && a.m_nAxisDir == b.m_nAxisDir;
}
