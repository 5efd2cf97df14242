#pragma once
// What the window knows of the outline module: the Qt views of its
// dialogs, the menu commands that fall back on showing its dialog while the
// module's commands are not registered, and the host command "ENVLINEHATCH"
// that runs the boundary-tracing outline of the single outline dialog.
namespace gui {
class MainWindow;
void LinkModule(MainWindow& window);
}  // namespace gui
