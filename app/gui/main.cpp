// envline-gui: the desktop drafting host with the outline module.
//   envline-gui [DRAWING.dxf ...]
#include <QtGui/QFont>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

#include "app/gui/main_window.h"
#include "app/gui/module_host.h"
#include "app/gui/qt_services.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("envline-gui");
  QApplication::setOrganizationName("envline");
  QFont font("WenQuanYi Micro Hei");
  font.setPointSize(10);
  QApplication::setFont(font);
  gui::InstallQtTranslations();
  gui::MainWindow window;
  std::string error;
  if (!gui::LoadModule(window, gui::ModulePath(), error)) {
    // The window still opens, views and edits drawings; the module's
    // commands are missing and the reason says why.
    QMessageBox::warning(&window, "envline", QString("包络线模块未能加载:\n%1").arg(QString::fromStdString(error)));
  }
  window.show();
  for (int i = 1; i < argc; ++i) window.OpenDrawing(QString::fromLocal8Bit(argv[i]));
  return QApplication::exec();
}
