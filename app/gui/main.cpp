// envline-gui: the desktop drafting host with the outline module.
//   envline-gui [DRAWING.dxf ...]
#include <QtGui/QFont>
#include <QtWidgets/QApplication>

#include "app/gui/main_window.h"
#include "app/gui/module_link.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("envline-gui");
  QApplication::setOrganizationName("envline");
  QFont font("WenQuanYi Micro Hei");
  font.setPointSize(10);
  QApplication::setFont(font);
  gui::MainWindow window;
  gui::LinkModule(window);
  window.show();
  for (int i = 1; i < argc; ++i) window.OpenDrawing(QString::fromLocal8Bit(argv[i]));
  return QApplication::exec();
}
