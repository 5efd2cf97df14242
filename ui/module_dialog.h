#pragma once
// The module keeps one modeless dialog of each kind.

// Shows the module's dialog of this kind, kept in its module pointer:
// created with its window on first use; then, new or already open, centred
// over the main window and shown. A window that could not be made keeps its
// dialog; the next call only centres and shows it.
template <class Dialog>
Dialog* ShowModuleDialog() {
  Dialog*& dialog = Dialog::ModulePointer();
  if (!dialog) {
    dialog = new Dialog;
    dialog->create();
  }
  dialog->centreWindow();
  dialog->showWindow();
  return dialog;
}
