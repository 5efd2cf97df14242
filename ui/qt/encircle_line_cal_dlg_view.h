#pragma once
// The Qt window of the single outline dialog (resource 186): the controls
// of the resource with their labels and defaults, bound to the dialog's
// members; the buttons call the dialog's handlers. Closing the window
// destroys the dialog.
#include <memory>

#include "host/ed/services.h"

class QWidget;

namespace uiqt {
// Makes the window for a CEncircleLineCalDlg over parent; null for any
// other dialog.
std::unique_ptr<host::ed::DialogWindow> MakeEncircleLineCalDlgWindow(host::ed::ModelessDialog& dialog,
                                                                      QWidget* parent);
}  // namespace uiqt
