#pragma once
// The host's user services as Qt dialogs: message boxes, the save-file
// dialog and the folder dialog; and the dialog service that makes the
// windows of the module's modeless dialogs from the views registered for
// their resources.
#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

#include <functional>
#include <map>

#include "host/ed/services.h"

namespace gui {

class QtUserServices : public host::ed::UserServices {
 public:
  explicit QtUserServices(QWidget* parent) : m_parent(parent) {}
  host::ed::MessageBoxAnswer messageBox(const std::string& text, const std::string& caption,
                                        host::ed::MessageBoxType type) override;
  std::string saveFileName(const host::ed::SaveFileRequest& request) override;
  std::string chooseFolder(const std::string& title) override;
  // A question with the buttons Save, Discard and Cancel.
  host::ed::MessageBoxAnswer saveChanges(const std::string& drawing) override;

 private:
  QPointer<QWidget> m_parent;
};

// Qt's own texts (the buttons and labels of file dialogs and message boxes)
// in Chinese, as the rest of the window; nothing when Qt's translations are
// not installed.
void InstallQtTranslations();

// "X Files (*.x)|*.x|All Files (*.*)|*.*||" as a Qt filter list
// ("X Files (*.x);;All Files (*)").
QString QtFilter(const std::string& filter);

// Makes a dialog's Qt window: the view of one dialog resource.
using DialogViewFactory =
    std::function<std::unique_ptr<host::ed::DialogWindow>(host::ed::ModelessDialog& dialog, QWidget* parent)>;

class QtDialogService : public host::ed::DialogService {
 public:
  explicit QtDialogService(QWidget* mainWindow) : m_main(mainWindow) {}
  // The view of a resource; a later registration replaces an earlier one.
  void RegisterView(int resourceId, DialogViewFactory factory) { m_factories[resourceId] = std::move(factory); }
  std::unique_ptr<host::ed::DialogWindow> createWindow(host::ed::ModelessDialog& dialog, int resourceId) override;

 private:
  QPointer<QWidget> m_main;
  std::map<int, DialogViewFactory> m_factories;
};

}  // namespace gui
