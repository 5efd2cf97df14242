#pragma once
// The outline module in the desktop window, hosted as the headless host
// hosts it: the module's library is loaded through the host's dynamic
// linker and started through its entry point, which registers its commands
// and reactors. The window only adds what a screen needs: the Qt views of
// the module's dialogs, registered by resource id with the window's dialog
// service, and the host command "ENVLINEHATCH" that runs the boundary-tracing
// outline of the single outline dialog.
#include <string>

namespace gui {
class MainWindow;
// Registers the views and loads the module at path; false with the reason
// in error when the module does not load.
bool LoadModule(MainWindow& window, const std::string& path, std::string& error);
// The module's library: ENVLINE_MODULE, else beside the program, else the
// build's.
std::string ModulePath();
}  // namespace gui
