#include "shell/entry_point.h"

#include "host/ed/command_stack.h"
#include "host/ed/document.h"
#include "host/ed/editor.h"
#include "shell/host_path.h"
#include "shell/reactors.h"
#include "ui/bulk_gen_encircle_line_dlg.h"
#include "ui/encircle_line_cal_dlg.h"
#include "ui/module_dialog.h"

namespace shell {
namespace {

CEditReactor*& EditReactor() {
  static CEditReactor* reactor = nullptr;
  return reactor;
}

CDocReactor*& DocReactor() {
  static CDocReactor* reactor = nullptr;
  return reactor;
}

void AddCommand(AcEdCommandStack* stack, const char* name, AcRxFunctionPtr fn) {
  stack->addCommand(kCommandGroup, name, name, ACRX_CMD_MODAL, fn, nullptr, -1, nullptr, nullptr);
}

}  // namespace

void VkTestToolDesign() {}

void VKTOOLDESIGNProfileAuto3D() { ShowModuleDialog<CEncircleLineCalDlg>(); }

void VKTOOLDESIGNProfilesAuto3D() { ShowModuleDialog<CBulkGenEncircleLineDlg>(); }

void InitApplication() {
  auto* stack = AcEdCommandStack::cast(acrxSysRegistry()->at(ACRX_COMMAND_DOCK));
  AddCommand(stack, "VkTestToolDesign", VkTestToolDesign);
  AddCommand(stack, "VKTOOLDESIGNProfileAuto3D", VKTOOLDESIGNProfileAuto3D);
  AddCommand(stack, "VKTOOLDESIGNProfilesAuto3D", VKTOOLDESIGNProfilesAuto3D);

  EditReactor() = new CEditReactor;
  AcEditor::cast(acrxSysRegistry()->at(ACAD_EDITOR_OBJ))->addReactor(EditReactor());
  if (!CVKToolReactor::Singleton()) {
    CVKToolReactor::Singleton() = new CVKToolReactor;
    if (AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase())
      db->addReactor(CVKToolReactor::Singleton());
  }
  DocReactor() = new CDocReactor;
  acDocManagerPtr()->addReactor(DocReactor());
  for (auto it = acDocManagerPtr()->newAcApDocumentIterator(); !it->done(); it->step())
    DocReactor()->documentCreated(it->document());
}

void UnloadApplication() {
  if (EditReactor()) {
    acedEditorPtr()->removeReactor(EditReactor());
    delete EditReactor();
    EditReactor() = nullptr;
  }
  if (CVKToolReactor::Singleton()) {
    if (AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase())
      db->removeReactor(CVKToolReactor::Singleton());
    delete CVKToolReactor::Singleton();
    CVKToolReactor::Singleton() = nullptr;
  }
  if (DocReactor()) {
    acDocManagerPtr()->removeReactor(DocReactor());
    delete DocReactor();
    DocReactor() = nullptr;
  }
}

}  // namespace shell

extern "C" AcRx::AppRetCode acrxEntryPoint(AcRx::AppMsgCode msg, void* pkt) {
  switch (msg) {
    case AcRx::kInitAppMsg: {
      auto* linker = AcRxDynamicLinker::cast(acrxSysRegistry()->at(ACRX_DYNAMIC_LINKER));
      linker->unlockApplication(pkt);
      linker->registerAppMDIAware(pkt);
      shell::InitApplication();
      break;
    }
    case AcRx::kUnloadAppMsg:  // commands and reactors stay: see UnloadApplication
    default:
      break;
  }
  return AcRx::kRetOK;
}
