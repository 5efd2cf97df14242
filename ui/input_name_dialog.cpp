#include "ui/input_name_dialog.h"

const char* const kNameMustNotBeEmpty = "名称不能为空";

std::optional<std::string> CInputNameDlg::OnOK() const {
  if (m_strName.empty()) return std::string(kNameMustNotBeEmpty);
  return std::nullopt;
}
