#pragma once
// The desktop host's main window: a tab with a drawing view per open
// drawing, the command line at the bottom, menus and a toolbar for the
// host's file commands and the module's commands, and a status bar with
// the cursor's coordinates and the drawing's units. It installs itself as
// the host's input source, user services, dialog service and display, and
// follows the host's documents: a drawing opened or closed in any way (the
// menu, a tab, OPEN or CLOSE typed) gains or loses its tab, and the tab of
// the activated drawing is shown.
#include <QtWidgets/QMainWindow>

#include <memory>
#include <set>

#include "app/gui/qt_services.h"
#include "host/ed/editor_input.h"

class AcApDocument;
class QLabel;
class QTabWidget;
class QMenu;
class QTimer;

namespace gui {

class CommandLineWidget;
class DrawingView;
class WindowInput;

class MainWindow : public QMainWindow, public host::ed::ViewObserver {
  Q_OBJECT
 public:
  MainWindow();
  ~MainWindow() override;

  // Opens a drawing in a new tab; false (the reason shown in a message box
  // and on the command line) when it cannot be read.
  bool OpenDrawing(const QString& path);
  // Saves the current drawing (to path, or where it came from); false,
  // with the reason shown, when it cannot be written: the drawing stays
  // open and modified.
  bool SaveDrawing(const QString& path = QString());
  // Closes a tab, asking first when its drawing is modified (as CLOSE
  // does); false when the user kept it or the save failed.
  bool CloseDrawing(int tab);
  // Runs a command as if typed (nothing while another waits for input).
  void RunCommand(const QString& name);

  DrawingView* CurrentView() const;
  AcApDocument* DocumentOf(int tab) const;
  int TabCount() const;
  CommandLineWidget* CommandLine() const { return m_commandLine; }
  WindowInput* Input() const { return m_input.get(); }
  QtDialogService& Dialogs() { return *m_dialogs; }
  QString StatusText() const;

  // host::ed::ViewObserver
  void displayUpdated() override;
  void viewChanged(const AcApDocument* doc) override;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  class DatabaseWatch;
  class DocumentWatch;
  struct Tab;
  void AddTab(AcApDocument* doc);
  void RemoveTab(AcApDocument* doc);
  void BuildMenus();
  void AddRecent(const QString& path);
  void FillRecent();
  void TabActivated(int index);
  void ApplyPending();
  void UpdateTitle();
  Tab* TabOf(const AcApDocument* doc) const;

  QTabWidget* m_tabs;
  CommandLineWidget* m_commandLine;
  QLabel* m_coords;
  QLabel* m_units;
  QMenu* m_recent = nullptr;
  QTimer* m_refresh;
  std::unique_ptr<WindowInput> m_input;
  std::unique_ptr<QtUserServices> m_services;
  std::unique_ptr<QtDialogService> m_dialogs;
  std::vector<std::unique_ptr<Tab>> m_tabList;
  std::unique_ptr<DocumentWatch> m_documents;
};

}  // namespace gui
