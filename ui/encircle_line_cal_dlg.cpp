#include "ui/encircle_line_cal_dlg.h"

#include <cstdio>

#include "engine/encircle_line.h"
#include "host/db/operations.h"
#include "host/ed/editor_input.h"
#include "output/solid_export.h"
#include "ui/module_dialog.h"
#include "util/entity_utils.h"

const char* const kPromptSelectTool = "请选择需要计算轮廓的对象";
const char* const kPromptCentre = "请选择中心点";
const char* const kPromptSelectOutline = "请选择包络线";
const char* const kSaveSolidTitle = "请选择保存三维文件路径(文件名称只能英文)";

namespace {
// The filter of the save-file dialog: "%s Files (*.%s)|*.%s|All Files (*.*)|*.*||".
std::string SaveFilter(const std::string& ext) {
  char buffer[256];
  std::snprintf(buffer, sizeof buffer, "%s Files (*.%s)|*.%s|All Files (*.*)|*.*||", ext.c_str(), ext.c_str(),
                ext.c_str());
  return buffer;
}

// Shows the dialog again when the scope ends, whichever way it ends.
class ShowAgain {
 public:
  explicit ShowAgain(host::ed::ModelessDialog& d) : m_d(d) {}
  ~ShowAgain() { m_d.showWindow(); }
  ShowAgain(const ShowAgain&) = delete;
  ShowAgain& operator=(const ShowAgain&) = delete;

 private:
  host::ed::ModelessDialog& m_d;
};
}  // namespace

SingleOutlineSettings CEncircleLineCalDlgValues::ToSettings() const {
  SingleOutlineSettings s;
  s.nSide = m_nSide;
  s.bRemoveDashed = m_bRemoveDashed == 1;
  s.bVerticalEnds = m_bVerticalEnds == 1;
  s.dPointTol = m_dPointTol;
  s.dLineTol = m_dLineTol;
  s.dFineTol = m_dFineTol;
  s.dStep = m_dStep;
  s.dBreakLength = m_dBreakLength;
  return s;
}

CEncircleLineCalDlg*& CEncircleLineCalDlg::ModulePointer() {
  static CEncircleLineCalDlg* dialog = nullptr;
  return dialog;
}

CEncircleLineCalDlg* CEncircleLineCalDlg::ShowModuleDialog() { return ::ShowModuleDialog<CEncircleLineCalDlg>(); }

bool CEncircleLineCalDlg::onInitDialog() {
  UpdateData(false);
  return true;
}

void CEncircleLineCalDlg::postNcDestroy() {
  if (ModulePointer() == this) ModulePointer() = nullptr;
  delete this;
}

bool CEncircleLineCalDlg::UpdateData(bool bSaveAndValidate) {
  if (!m_controls) return true;
  if (!bSaveAndValidate) {
    m_controls->ShowValues(m_values);
    return true;
  }
  std::string bad;
  if (m_controls->ReadValues(m_values, bad)) return true;
  host::ed::messageBox("请输入一个数字。" + (bad.empty() ? std::string() : "\n" + bad));
  return false;
}

void CEncircleLineCalDlg::OnBnClickedOutline() { RunOutline(OutlineDriver::kSlabs); }
void CEncircleLineCalDlg::OnBnClickedHatch() { RunOutline(OutlineDriver::kHatch); }

void CEncircleLineCalDlg::RunOutline(OutlineDriver driver) {
  if (!UpdateData(true)) return;
  hideWindow();
  const ShowAgain show(*this);
  MakeEverythingVisible();
  acedUpdateDisplay();
  AcDbObjectIdArray selection;
  if (host::ed::getSelection(kPromptSelectTool, selection) != RTNORM || selection.isEmpty()) return;
  AcGePoint3d centre;
  if (host::ed::getPoint(kPromptCentre, centre) != RTNORM) return;
  m_ptCentre = centre;
  const SingleOutlineResult result = RunSingleOutline(selection, centre, m_values.ToSettings(), driver);
  m_idOutline = result.outline;
  acedUpdateDisplay();
}

void CEncircleLineCalDlg::OnBnClickedExport() {
  hideWindow();
  const ShowAgain show(*this);
  AcDbObjectIdArray picked;
  resbuf* filter = acutBuildList(0, "LWPOLYLINE", RTNONE);
  const int rc = host::ed::getSelection(kPromptSelectOutline, picked, filter);
  acutRelRb(filter);
  if (rc != RTNORM && rc != RTNONE) return;
  const std::vector<DrawingFrame> frames = CollectDrawingFrames();
  std::vector<std::string> messages;
  const SavePathAsker ask = [](const std::string& ext, const std::string& title, const std::string& proposed) {
    host::ed::SaveFileRequest request;
    request.title = title;
    request.proposedName = proposed;
    request.extension = ext;
    request.filter = SaveFilter(ext);
    request.overwritePrompt = true;
    return host::ed::askSavePath(request);
  };
  for (AcDbObjectId id : picked) {
    if (!host::equalsNoCase(util::GetLayerName(id), kOutlineLayer)) continue;
    AcGePoint3d centre;
    if (!OutlineAxisPoint(id, centre)) continue;  // no closing edge along the axis: skipped silently
    m_ptCentre = centre;
    m_idOutline = id;
    if (!UpdateData(true)) return;
    OutlineExport request;
    request.outline = id;
    request.centre = centre;
    request.bDeleteOutline = m_values.m_bDeleteOutline == 1;
    request.bDeleteSolid = m_values.m_bDeleteSolid == 1;
    ExportOutline(request, frames, ask, messages);
  }
  acedUpdateDisplay();
  host::ed::messageBox(ExportReport(messages));
}
