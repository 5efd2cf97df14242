#pragma once
// The name dialog "输入名称" without its window: one name, refused only
// when empty (a name of blanks is a name).
#include <optional>
#include <string>

class CInputNameDlg {
 public:
  static constexpr const char* kCaption = "输入名称";
  static constexpr const char* kLabel = "名称:";

  std::string m_strName;  // edit 1023, empty at first unless a proposal is put in

  // The message to show when the name cannot be taken (the dialog then stays
  // open); nothing when the dialog may close with OK.
  std::optional<std::string> OnOK() const;
};

extern const char* const kNameMustNotBeEmpty;  // "名称不能为空"
