#include "app/gui/module_link.h"

#include "app/gui/main_window.h"
#include "host/ed/command_stack.h"
#include "ui/bulk_gen_encircle_line_dlg.h"
#include "ui/encircle_line_cal_dlg.h"
#include "ui/qt/dialog_views.h"
#include "ui/qt/encircle_line_cal_dlg_view.h"

namespace gui {

namespace {
// The single outline dialog's hidden button, as a command.
void hatchOutline() {
  if (CEncircleLineCalDlg* dialog = CEncircleLineCalDlg::ShowModuleDialog()) dialog->OnBnClickedHatch();
}
void singleOutline() { CEncircleLineCalDlg::ShowModuleDialog(); }
void batchOutline() { ShowBatchDialog(); }
}  // namespace

void LinkModule(MainWindow& window) {
  window.Dialogs().RegisterView(CEncircleLineCalDlg::IDD, &uiqt::MakeEncircleLineCalDlgWindow);
  window.Dialogs().RegisterView(CBulkGenEncircleLineDlg::IDD, &ui::qt::MakeBatchDialogWindow);
  // The batch dialog's modal dialogs open over the window; progress shows in
  // its own window.
  ui::qt::InstallBatchViews(&window);
  AcEdCommandStack* stack = acedRegCmdsPtr();
  stack->addCommand("ENVLINE_GUI", "ENVLINEHATCH", "ENVLINEHATCH", ACRX_CMD_MODAL, &hatchOutline);
  // The module registers this command when it is loaded; until then the
  // window shows the dialog itself.
  if (!stack->lookupCmd("VKTOOLDESIGNProfileAuto3D"))
    stack->addCommand("ENVLINE_GUI", "VKTOOLDESIGNProfileAuto3D", "VKTOOLDESIGNProfileAuto3D", ACRX_CMD_MODAL,
                      &singleOutline);
  if (!stack->lookupCmd("VKTOOLDESIGNProfilesAuto3D"))
    stack->addCommand("ENVLINE_GUI", "VKTOOLDESIGNProfilesAuto3D", "VKTOOLDESIGNProfilesAuto3D", ACRX_CMD_MODAL,
                      &batchOutline);
}

}  // namespace gui
