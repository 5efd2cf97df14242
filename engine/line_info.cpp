#include "engine/line_info.h"

#include <algorithm>

#include "host/db/curves.h"
#include "host/ge/line_seg3d.h"

CLineInfo::CLineInfo(const AcDbLine* pLine) {
  if (!pLine) return;
  m_id = pLine->objectId();
  m_ptStart = pLine->startPoint();
  m_ptEnd = pLine->endPoint();
  m_ptStart.z = 0;
  m_ptEnd.z = 0;
}

CLineInfo::CLineInfo(AcDbObjectId id) {
  AcDbObject* obj = nullptr;
  if (acdbOpenAcDbObject(obj, id, AcDb::kForRead, false, AcDbLine::desc()) != Acad::eOk) {
    m_id = AcDbObjectId::kNull;
    return;
  }
  *this = CLineInfo(static_cast<const AcDbLine*>(obj));
  obj->close();
}

bool CLineInfo::IsInteriorPoint(const AcGePoint3d& pt, AcGeTol tol) const {
  if (pt.isEqualTo(m_ptStart, tol) || pt.isEqualTo(m_ptEnd, tol)) return false;
  if (!AcGeLineSeg3d(m_ptStart, m_ptEnd).isOn(pt, tol)) return false;
  return (pt - m_ptStart).dotProduct(pt - m_ptEnd) < 0;
}

void CLineInfo::AddBreakPoint(const AcGePoint3d& pt, AcGeTol tol) {
  if (!IsInteriorPoint(pt, tol)) return;
  for (const AcGePoint3d& held : m_breakPts)
    if (held.isEqualTo(pt, tol)) return;
  m_breakPts.push_back(pt);
}

void CLineInfo::AddBreakPoints(const std::vector<AcGePoint3d>& pts, AcGeTol tol) {
  for (const AcGePoint3d& pt : pts) AddBreakPoint(pt, tol);
}

void CLineInfo::Sort() {
  // The result is that of repeated adjacent exchanges (a stable sort by
  // distance); points cut in slab order usually arrive sorted or reversed.
  const auto dist = [this](const AcGePoint3d& p) { return (p - m_ptStart).length(); };
  const std::size_t n = m_breakPts.size();
  bool ascending = true, descending = true;
  for (std::size_t i = 0; i + 1 < n && (ascending || descending); ++i) {
    const double a = dist(m_breakPts[i]), b = dist(m_breakPts[i + 1]);
    if (a > b) ascending = false;
    if (!(a > b)) descending = false;
  }
  if (ascending) return;
  if (descending) {
    std::reverse(m_breakPts.begin(), m_breakPts.end());  // all distances differ
    return;
  }
  std::stable_sort(m_breakPts.begin(), m_breakPts.end(),
                   [&](const AcGePoint3d& a, const AcGePoint3d& b) { return dist(a) < dist(b); });
}

bool CLineInfo::IsEqual(const CLineInfo& other, AcGeTol tol) const {
  return (m_ptStart.isEqualTo(other.m_ptStart, tol) && m_ptEnd.isEqualTo(other.m_ptEnd, tol)) ||
         (m_ptStart.isEqualTo(other.m_ptEnd, tol) && m_ptEnd.isEqualTo(other.m_ptStart, tol));
}
