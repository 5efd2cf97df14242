#include "app/gui/module_host.h"

#include "app/gui/main_window.h"
#include "host/ed/command_stack.h"
#include "host/ed/rx_app.h"
#include "ui/bulk_gen_encircle_line_dlg.h"
#include "ui/encircle_line_cal_dlg.h"
#include "ui/qt/dialog_views.h"
#include "ui/qt/encircle_line_cal_dlg_view.h"

namespace gui {

namespace {
// The single outline dialog's hidden button "算法1", as a command.
void hatchOutline() {
  if (CEncircleLineCalDlg* dialog = CEncircleLineCalDlg::ShowModuleDialog()) dialog->OnBnClickedHatch();
}
}  // namespace

std::string ModulePath() {
  return host::ed::findModule("ENVLINE_MODULE", "libenvline_module.so", ENVLINE_MODULE_PATH);
}

bool LoadModule(MainWindow& window, const std::string& path, std::string& error) {
  window.Dialogs().RegisterView(CEncircleLineCalDlg::IDD, &uiqt::MakeEncircleLineCalDlgWindow);
  window.Dialogs().RegisterView(CBulkGenEncircleLineDlg::IDD, &ui::qt::MakeBatchDialogWindow);
  // The batch dialog's modal dialogs open over the window; progress shows in
  // its own window.
  ui::qt::InstallBatchViews(&window);
  if (!acrxDynamicLinkerPtr()->loadModule(path, error)) return false;
  AcEdCommandStack* stack = acedRegCmdsPtr();
  if (!stack->lookupCmd("ENVLINEHATCH"))
    stack->addCommand("ENVLINE_GUI", "ENVLINEHATCH", "ENVLINEHATCH", ACRX_CMD_MODAL, &hatchOutline);
  return true;
}

}  // namespace gui
