#include "engine/line_info.h"

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

void CLineInfo::AddBreakPoint(const AcGePoint3d& pt, AcGeTol tol) {
  const AcGeLineSeg3d seg(m_ptStart, m_ptEnd);
  if (pt.isEqualTo(m_ptStart, tol) || pt.isEqualTo(m_ptEnd, tol)) return;
  if (!seg.isOn(pt, tol)) return;
  if ((pt - m_ptStart).dotProduct(pt - m_ptEnd) >= 0) return;
  for (const AcGePoint3d& held : m_breakPts)
    if (held.isEqualTo(pt, tol)) return;
  m_breakPts.push_back(pt);
}

void CLineInfo::AddBreakPoints(const std::vector<AcGePoint3d>& pts, AcGeTol tol) {
  for (const AcGePoint3d& pt : pts) AddBreakPoint(pt, tol);
}

void CLineInfo::Sort() {
  const std::size_t n = m_breakPts.size();
  for (std::size_t pass = 0; pass < n; ++pass)
    for (std::size_t i = 0; i + 1 < n; ++i)
      if ((m_breakPts[i] - m_ptStart).length() > (m_breakPts[i + 1] - m_ptStart).length())
        std::swap(m_breakPts[i], m_breakPts[i + 1]);
}

bool CLineInfo::IsEqual(const CLineInfo& other, AcGeTol tol) const {
  return (m_ptStart.isEqualTo(other.m_ptStart, tol) && m_ptEnd.isEqualTo(other.m_ptEnd, tol)) ||
         (m_ptStart.isEqualTo(other.m_ptEnd, tol) && m_ptEnd.isEqualTo(other.m_ptStart, tol));
}
