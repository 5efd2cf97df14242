#pragma once
// CEncircleLineCalDlg: the modeless single outline dialog (resource 186,
// caption "包络线计算") that the command "VKTOOLDESIGNProfileAuto3D" shows.
// This is the dialog without its window: the members its controls show,
// the data exchange with the window, and the three buttons' handlers. The
// window (a Qt view, or the host's headless record) comes from the host's
// dialog service; the view implements CEncircleLineCalDlgControls.
#include <string>

#include "host/db/object_id.h"
#include "host/ed/services.h"
#include "host/ge/vectors.h"
#include "ui/single_outline_run.h"

// The values of the dialog's controls, with the dialog's defaults.
struct CEncircleLineCalDlgValues {
  int m_nSide = 0;                // radio group 1008: 0 "上半边", 1 "下半边"
  int m_bRemoveDashed = 1;        // 1010 "是否排除虚线"
  int m_bDeleteOutline = 0;       // 1012 "是否删除包络线"
  int m_bDeleteSolid = 1;         // 1013 "是否删除三维模型"
  int m_bVerticalEnds = 0;        // 1014 "左右包络线是否竖直"
  double m_dPointTol = 0.0005;    // 1007 "点公差："
  double m_dLineTol = 0.001;      // 1022 "线公差："
  double m_dFineTol = 1e-6;       // 1024 "水平竖直线判断公差："
  double m_dStep = 0.3;           // 1023 "圆弧离散精度："
  double m_dBreakLength = 5.0;    // 1026 "左右识别长度："
  SingleOutlineSettings ToSettings() const;
};

// What the dialog's window does for the controller.
class CEncircleLineCalDlgControls {
 public:
  virtual ~CEncircleLineCalDlgControls() = default;
  // Puts the values into the controls.
  virtual void ShowValues(const CEncircleLineCalDlgValues& values) = 0;
  // Reads the controls; false with the control's label in badField when a
  // number field does not hold a number (values are then left as they were).
  virtual bool ReadValues(CEncircleLineCalDlgValues& values, std::string& badField) = 0;
};

class CEncircleLineCalDlg : public host::ed::ModelessDialog {
 public:
  static constexpr int IDD = 186;
  // Control ids of the resource.
  enum : int {
    IDC_EDIT_POINT_TOL = 1007, IDC_RADIO_UPPER = 1008, IDC_RADIO_LOWER = 1009, IDC_CHECK_DASHED = 1010,
    IDC_BUTTON_HATCH = 1011, IDC_CHECK_DELETE_OUTLINE = 1012, IDC_CHECK_DELETE_SOLID = 1013,
    IDC_CHECK_VERTICAL = 1014, IDC_BUTTON_OUTLINE = 1021, IDC_EDIT_LINE_TOL = 1022, IDC_EDIT_STEP = 1023,
    IDC_EDIT_FINE_TOL = 1024, IDC_BUTTON_EXPORT = 1025, IDC_EDIT_BREAK = 1026
  };

  CEncircleLineCalDlg() : ModelessDialog(IDD) {}

  // The module's one dialog of this kind; null when none is open. Cleared
  // when the window is destroyed.
  static CEncircleLineCalDlg*& ModulePointer();
  // Shows the module's dialog, creating it first when there is none;
  // centred over the main window either way.
  static CEncircleLineCalDlg* ShowModuleDialog();

  // The window's controls; null while there is no window.
  void SetControls(CEncircleLineCalDlgControls* controls) { m_controls = controls; }
  // true: controls to members (false when a number does not read, with
  // the message "请输入一个数字。" shown); false: members to controls.
  bool UpdateData(bool bSaveAndValidate = true);

  // Button 1021 "选择刀具图": the outline of a picked tool.
  void OnBnClickedOutline();
  // Hidden button 1011 "算法1": the same with the boundary-tracing driver.
  void OnBnClickedHatch();
  // Button 1025 "选择包络线导出3D": picked outlines to SAT files.
  void OnBnClickedExport();

  CEncircleLineCalDlgValues m_values;
  AcDbObjectId m_idOutline;  // the last outline made or exported
  AcGePoint3d m_ptCentre;    // the last centre point

 protected:
  bool onInitDialog() override;
  void postNcDestroy() override;

 private:
  void RunOutline(OutlineDriver driver);
  CEncircleLineCalDlgControls* m_controls = nullptr;
};

extern const char* const kPromptSelectTool;     // "请选择需要计算轮廓的对象"
extern const char* const kPromptCentre;         // "请选择中心点"
extern const char* const kPromptSelectOutline;  // "请选择包络线"
extern const char* const kSaveSolidTitle;       // "请选择保存三维文件路径(文件名称只能英文)"
