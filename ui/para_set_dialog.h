#pragma once
// The parameter dialog "包络线参数设置" without its window: the members its
// controls show, filled from a task's parameters when it opens and written
// back into them on OK.
#include <map>
#include <optional>
#include <span>
#include <string>

#include "engine/encircle_cal_info.h"

// What the data exchange refuses: the edit that keeps the focus and why.
struct DialogDataError {
  int nControl = 0;
  std::string message;
};

class CEncircleParaSetDlg {
 public:
  static constexpr const char* kCaption = "包络线参数设置";

  int m_nSide = 0;              // radio group 1008: "上半边" 0, "下半边" 1
  int m_nRemoveDashed = 1;      // check box 1010 "是否排除虚线"
  int m_nVerticalEnds = 0;      // check box 1014 "左右包络线是否竖直"
  double m_dPointTol = 0.0005;  // edit 1007
  double m_dLineTol = 0.001;    // edit 1022
  double m_dFineTol = 1e-6;     // edit 1024
  double m_dStep = 0.3;         // edit 1023
  double m_dBreakLength = 5.0;  // edit 1026
  // The caller assigns the task's parameters before showing the dialog and
  // reads them back after OK.
  CEncircleCalInfo m_info;

  struct Edit {
    int nControl;
    const char* label;
    double CEncircleParaSetDlg::*value;
  };
  // The edits in the order the data exchange reads them (the first refused
  // one keeps the focus).
  static std::span<const Edit> Edits();

  // Fills the members from m_info.
  void OnInitDialog();
  // The texts the edits show for the members, by control id.
  std::map<int, std::string> EditTexts() const;
  // Reads the edits' texts into the members; the first text that is not a
  // number is refused and nothing after it is read.
  std::optional<DialogDataError> UpdateData(const std::map<int, std::string>& texts);
  // Reads the edits, then writes the members back into m_info. On a refused
  // edit m_info is untouched and the dialog stays open.
  std::optional<DialogDataError> OnOK(const std::map<int, std::string>& texts);
  // Writes the members back into m_info (the part of OK after reading).
  void WriteBack();
};

// How an edit shows a real (as the standard data exchange does) and reads
// one back: the whole text, blanks around it allowed.
std::string FormatDialogReal(double value);
bool ParseDialogReal(const std::string& text, double& value);

extern const char* const kEnterNumber;  // "请输入一个数字。"
