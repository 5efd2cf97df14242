#include "ui/para_set_dialog.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

const char* const kEnterNumber = "请输入一个数字。";

std::span<const CEncircleParaSetDlg::Edit> CEncircleParaSetDlg::Edits() {
  static constexpr Edit kEdits[] = {
      {1023, "圆弧离散精度：", &CEncircleParaSetDlg::m_dStep},
      {1026, "左右识别长度：", &CEncircleParaSetDlg::m_dBreakLength},
      {1022, "线公差：", &CEncircleParaSetDlg::m_dLineTol},
      {1024, "水平竖直线判断公差：", &CEncircleParaSetDlg::m_dFineTol},
      {1007, "点公差：", &CEncircleParaSetDlg::m_dPointTol},
  };
  return kEdits;
}

void CEncircleParaSetDlg::OnInitDialog() {
  m_nRemoveDashed = m_info.m_bRemoveDashed ? 1 : 0;
  m_nVerticalEnds = m_info.m_bVerticalEnds ? 1 : 0;
  m_dStep = m_info.m_dStep;
  m_dBreakLength = m_info.m_dBreakLength;
  m_nSide = m_info.m_nAxisDir != 0 ? 1 : 0;
  // Only the point part of each tolerance is shown.
  m_dLineTol = m_info.m_tolLine.equalPoint();
  m_dPointTol = m_info.m_tolPoint.equalPoint();
  m_dFineTol = m_info.m_tolFine.equalPoint();
}

std::map<int, std::string> CEncircleParaSetDlg::EditTexts() const {
  std::map<int, std::string> texts;
  for (const Edit& e : Edits()) texts[e.nControl] = FormatDialogReal(this->*e.value);
  return texts;
}

std::optional<DialogDataError> CEncircleParaSetDlg::UpdateData(const std::map<int, std::string>& texts) {
  for (const Edit& e : Edits()) {
    const auto it = texts.find(e.nControl);
    if (it == texts.end()) continue;
    double value = 0;
    if (!ParseDialogReal(it->second, value)) return DialogDataError{e.nControl, kEnterNumber};
    this->*e.value = value;
  }
  return std::nullopt;
}

std::optional<DialogDataError> CEncircleParaSetDlg::OnOK(const std::map<int, std::string>& texts) {
  if (auto error = UpdateData(texts)) return error;
  WriteBack();
  return std::nullopt;
}

void CEncircleParaSetDlg::WriteBack() {
  m_info.m_bRemoveDashed = m_nRemoveDashed == 1;
  m_info.m_bVerticalEnds = m_nVerticalEnds == 1;
  m_info.m_dStep = m_dStep;
  m_info.m_dBreakLength = m_dBreakLength;
  m_info.m_nAxisDir = m_nSide != 0 ? 1 : 0;
  // Each edited value becomes both the point and the vector tolerance; no
  // value is range-checked.
  m_info.m_tolLine = CEncircleCalInfo::MakeTol(m_dLineTol);
  m_info.m_tolPoint = CEncircleCalInfo::MakeTol(m_dPointTol);
  m_info.m_tolFine = CEncircleCalInfo::MakeTol(m_dFineTol);
}

std::string FormatDialogReal(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.15g", value);
  return text;
}

bool ParseDialogReal(const std::string& text, double& value) {
  const char* begin = text.c_str();
  char* end = nullptr;
  errno = 0;
  const double parsed = std::strtod(begin, &end);
  if (end == begin || errno == ERANGE) return false;
  while (*end == ' ' || *end == '\t') ++end;
  if (*end != '\0') return false;
  value = parsed;
  return true;
}
