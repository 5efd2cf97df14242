#include "app/gui/qt_services.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLibraryInfo>
#include <QtCore/QTranslator>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMessageBox>

namespace gui {

using namespace host::ed;

MessageBoxAnswer QtUserServices::messageBox(const std::string& text, const std::string& caption, MessageBoxType type) {
  QMessageBox box(m_parent);
  box.setWindowTitle(QString::fromStdString(caption.empty() ? std::string("envline") : caption));
  box.setText(QString::fromStdString(text));
  switch (type) {
    case kMbOkCancel: box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel); break;
    case kMbYesNoCancel: box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel); break;
    case kMbYesNo: box.setStandardButtons(QMessageBox::Yes | QMessageBox::No); break;
    default: box.setStandardButtons(QMessageBox::Ok); break;
  }
  switch (box.exec()) {
    case QMessageBox::Ok: return kIdOk;
    case QMessageBox::Yes: return kIdYes;
    case QMessageBox::No: return kIdNo;
    default: return kIdCancel;
  }
}

void InstallQtTranslations() {
  auto* translator = new QTranslator(QCoreApplication::instance());
  if (translator->load("qtbase_zh_CN", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
    QCoreApplication::installTranslator(translator);
  else
    delete translator;
}

QString QtFilter(const std::string& filter) {
  const QStringList parts = QString::fromStdString(filter).split('|', Qt::SkipEmptyParts);
  QStringList out;
  for (int i = 0; i + 1 < parts.size(); i += 2) {
    QString name = parts[i], pattern = parts[i + 1];
    pattern.replace("*.*", "*");
    name.replace("(*.*)", "(*)");
    out << (name.contains('(') ? name : name + " (" + pattern + ")");
  }
  return out.join(";;");
}

std::string QtUserServices::saveFileName(const SaveFileRequest& request) {
  QFileDialog dialog(m_parent, QString::fromStdString(request.title));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.setNameFilter(QtFilter(request.filter));
  if (!request.overwritePrompt) dialog.setOption(QFileDialog::DontConfirmOverwrite);
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  if (!request.proposedName.empty()) dialog.selectFile(QString::fromStdString(request.proposedName));
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
  return dialog.selectedFiles().front().toStdString();
}

std::string QtUserServices::chooseFolder(const std::string& title) {
  return QFileDialog::getExistingDirectory(m_parent, QString::fromStdString(title), QString(),
                                           QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog)
      .toStdString();
}

MessageBoxAnswer QtUserServices::saveChanges(const std::string& drawing) {
  const auto answer = QMessageBox::question(m_parent, "关闭图纸",
                                            QString("%1 已修改。是否保存修改?").arg(QString::fromStdString(drawing)),
                                            QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel,
                                            QMessageBox::Save);
  return answer == QMessageBox::Save ? kIdYes : answer == QMessageBox::Discard ? kIdNo : kIdCancel;
}

std::unique_ptr<DialogWindow> QtDialogService::createWindow(ModelessDialog& dialog, int resourceId) {
  const auto found = m_factories.find(resourceId);
  if (found == m_factories.end()) return nullptr;
  return found->second(dialog, m_main);
}

}  // namespace gui
