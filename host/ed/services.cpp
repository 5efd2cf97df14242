#include "host/ed/services.h"

#include "host/base/strings.h"
#include "host/ed/editor_input.h"
#include "host/ed/messages.h"

namespace host::ed {

MessageBoxAnswer UserServices::saveChanges(const std::string& drawing) {
  for (;;) {
    std::string answer;
    if (getString("Save changes to " + drawing + "? [Yes/No]: ", answer) != RTNORM) return kIdCancel;
    answer = host::foldCase(answer);
    if (answer == "Y" || answer == "YES") return kIdYes;
    if (answer == "N" || answer == "NO") return kIdNo;
    acutPrintf("Yes or No, please.\n");
  }
}

MessageBoxAnswer QueuedAnswers::messageBox(const std::string& text, const std::string& caption,
                                           MessageBoxType type) {
  m_asked.push_back({"message", text, caption});
  acutPrintf("[%s] %s\n", caption.empty() ? "message" : caption.c_str(), text.c_str());
  if (!m_answers.empty()) {
    const MessageBoxAnswer a = m_answers.front();
    m_answers.pop_front();
    return a;
  }
  return type == kMbYesNo || type == kMbYesNoCancel ? kIdYes : kIdOk;
}

std::string QueuedAnswers::saveFileName(const SaveFileRequest& request) {
  m_asked.push_back({"save", request.title, request.proposedName});
  if (m_paths.empty()) return {};
  std::string p = std::move(m_paths.front());
  m_paths.pop_front();
  return p;
}

std::string QueuedAnswers::chooseFolder(const std::string& title) {
  m_asked.push_back({"folder", title, {}});
  if (m_folders.empty()) return {};
  std::string f = std::move(m_folders.front());
  m_folders.pop_front();
  return f;
}

std::vector<std::string> QueuedAnswers::messages() const {
  std::vector<std::string> out;
  for (const Asked& a : m_asked)
    if (a.kind == "message") out.push_back(a.text);
  return out;
}

void QueuedAnswers::clear() {
  m_answers.clear();
  m_paths.clear();
  m_folders.clear();
  m_asked.clear();
}

namespace {
UserServices*& installedServices() {
  static UserServices* s = nullptr;
  return s;
}
DialogService*& installedDialogs() {
  static DialogService* s = nullptr;
  return s;
}
}  // namespace

QueuedAnswers& queuedAnswers() {
  static QueuedAnswers q;
  return q;
}

UserServices& userServices() { return installedServices() ? *installedServices() : queuedAnswers(); }
void setUserServices(UserServices* services) { installedServices() = services; }

MessageBoxAnswer messageBox(const std::string& text, MessageBoxType type, const std::string& caption) {
  return userServices().messageBox(text, caption, type);
}

std::string askSavePath(const SaveFileRequest& request) {
  std::string path = userServices().saveFileName(request);
  if (path.empty() || request.extension.empty()) return path;
  const std::size_t slash = path.find_last_of("/\\");
  const std::size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) path += "." + request.extension;
  return path;
}

std::string askFolder(const std::string& title) { return userServices().chooseFolder(title); }

// --- dialogs -----------------------------------------------------------------

namespace {
class HeadlessWindow : public DialogWindow {
 public:
  HeadlessWindow(ModelessDialog& dialog, std::shared_ptr<HeadlessDialogService::Record> record)
      : m_dialog(dialog), m_record(std::move(record)) {}
  void centreOverParent() override { ++m_record->centred; }
  void show() override {
    ++m_record->shown;
    m_record->visible = true;
  }
  void hide() override { m_record->visible = false; }
  bool isVisible() const override { return m_record->visible; }
  void destroy() override {
    m_record->visible = false;
    m_record->destroyed = true;
    m_record->window = nullptr;
    m_dialog.windowDestroyed();
  }

 private:
  ModelessDialog& m_dialog;
  std::shared_ptr<HeadlessDialogService::Record> m_record;
};
}  // namespace

std::unique_ptr<DialogWindow> HeadlessDialogService::createWindow(ModelessDialog& dialog, int resourceId) {
  auto record = std::make_shared<Record>();
  record->resourceId = resourceId;
  m_windows.push_back(record);
  auto window = std::make_unique<HeadlessWindow>(dialog, record);
  record->window = window.get();
  return window;
}

std::shared_ptr<HeadlessDialogService::Record> HeadlessDialogService::liveWindow(int resourceId) const {
  for (auto it = m_windows.rbegin(); it != m_windows.rend(); ++it)
    if ((*it)->resourceId == resourceId && !(*it)->destroyed) return *it;
  return nullptr;
}

HeadlessDialogService& headlessDialogService() {
  static HeadlessDialogService s;
  return s;
}
DialogService& dialogService() { return installedDialogs() ? *installedDialogs() : headlessDialogService(); }
void setDialogService(DialogService* service) { installedDialogs() = service; }

ModelessDialog::~ModelessDialog() = default;

bool ModelessDialog::create() {
  if (m_window) return true;
  m_window = dialogService().createWindow(*this, m_resourceId);
  if (!m_window) return false;
  return onInitDialog();
}

void ModelessDialog::centreWindow() {
  if (m_window) m_window->centreOverParent();
}
void ModelessDialog::showWindow() {
  if (m_window) m_window->show();
}
void ModelessDialog::hideWindow() {
  if (m_window) m_window->hide();
}
void ModelessDialog::destroyWindow() {
  if (m_window) m_window->destroy();
}

void ModelessDialog::windowDestroyed() {
  // The window object goes first; postNcDestroy may delete this dialog.
  std::unique_ptr<DialogWindow> gone = std::move(m_window);
  gone.reset();
  postNcDestroy();
}

}  // namespace host::ed
