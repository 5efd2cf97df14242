#pragma once
// What the host asks the user outside the command line: message boxes, a
// file to save to, a folder; and the windows of modeless dialogs. A front
// end installs its own implementations (Qt dialogs in the desktop window);
// without one, answers come from a queue that tests and scripts fill, and
// everything asked is recorded.
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace host::ed {

// Message box buttons and answers, with the values of the usual platform
// constants (MB_OK, IDOK, ...).
enum MessageBoxType { kMbOk = 0, kMbOkCancel = 1, kMbYesNoCancel = 3, kMbYesNo = 4 };
enum MessageBoxAnswer { kIdOk = 1, kIdCancel = 2, kIdYes = 6, kIdNo = 7 };

struct SaveFileRequest {
  std::string title;
  std::string proposedName;  // file name without folder, may be empty
  std::string extension;     // without the dot: "sat"
  std::string filter;        // "SAT Files (*.sat)|*.sat|All Files (*.*)|*.*||"
  bool overwritePrompt = true;
};

class UserServices {
 public:
  virtual ~UserServices() = default;
  virtual MessageBoxAnswer messageBox(const std::string& text, const std::string& caption, MessageBoxType type) = 0;
  // The chosen full path as the user gave it; empty when cancelled.
  virtual std::string saveFileName(const SaveFileRequest& request) = 0;
  // The chosen folder; empty when cancelled.
  virtual std::string chooseFolder(const std::string& title) = 0;
  // Whether to save the modified drawing before it is closed: kIdYes,
  // kIdNo or kIdCancel. This asks on the command line ("Save changes to
  // NAME? [Yes/No]: ", asked again until Yes or No, Esc cancels), so a
  // script answers it as it answers any prompt.
  virtual MessageBoxAnswer saveChanges(const std::string& drawing);
};

// The headless answerer: answers in the order queued, then the defaults
// (OK or Yes for message boxes, cancel for files and folders). Everything
// asked is kept for inspection, and message boxes are printed on the
// command line.
class QueuedAnswers : public UserServices {
 public:
  struct Asked {
    std::string kind;  // "message", "save", "folder"
    std::string text;  // the message or title
    std::string caption;
  };
  MessageBoxAnswer messageBox(const std::string& text, const std::string& caption, MessageBoxType type) override;
  std::string saveFileName(const SaveFileRequest& request) override;
  std::string chooseFolder(const std::string& title) override;

  void queueMessageAnswer(MessageBoxAnswer a) { m_answers.push_back(a); }
  void queueSavePath(std::string path) { m_paths.push_back(std::move(path)); }
  void queueFolder(std::string folder) { m_folders.push_back(std::move(folder)); }
  const std::vector<Asked>& asked() const { return m_asked; }
  // The texts of the message boxes shown, in order.
  std::vector<std::string> messages() const;
  void clear();

 private:
  std::deque<MessageBoxAnswer> m_answers;
  std::deque<std::string> m_paths, m_folders;
  std::vector<Asked> m_asked;
};

// The services in use: the installed ones, or the host's QueuedAnswers.
UserServices& userServices();
// Installs a front end's services (null restores the queued answers). The
// caller keeps them alive while installed.
void setUserServices(UserServices* services);
QueuedAnswers& queuedAnswers();

// Shortcuts in the platform's style.
MessageBoxAnswer messageBox(const std::string& text, MessageBoxType type = kMbOk, const std::string& caption = {});
// The save path with "." and the extension added when the chosen name has
// no extension; empty when cancelled.
std::string askSavePath(const SaveFileRequest& request);
std::string askFolder(const std::string& title);

// --- modeless dialogs --------------------------------------------------------

class ModelessDialog;

// The window of one dialog, made by the dialog service.
class DialogWindow {
 public:
  virtual ~DialogWindow() = default;
  virtual void centreOverParent() = 0;
  virtual void show() = 0;
  virtual void hide() = 0;
  virtual bool isVisible() const = 0;
  // Destroys the window; the service then calls the dialog's windowDestroyed.
  virtual void destroy() = 0;
};

// Makes dialog windows. The desktop window builds Qt widgets for the
// dialog's resource; headless, windows only record their state.
class DialogService {
 public:
  virtual ~DialogService() = default;
  // The window for a dialog built from resource resourceId, over the host's
  // main window; null when it cannot be made.
  virtual std::unique_ptr<DialogWindow> createWindow(ModelessDialog& dialog, int resourceId) = 0;
};

// The headless dialog service: windows record whether they are shown, how
// often they were centred, and when they were destroyed.
class HeadlessDialogService : public DialogService {
 public:
  struct Record {
    int resourceId = 0;
    int centred = 0;
    int shown = 0;
    bool visible = false;
    bool destroyed = false;
    DialogWindow* window = nullptr;  // while not destroyed: lets a test close it as a user would
  };
  std::unique_ptr<DialogWindow> createWindow(ModelessDialog& dialog, int resourceId) override;
  const std::vector<std::shared_ptr<Record>>& windows() const { return m_windows; }
  // The newest window of a resource that is not destroyed; null when none.
  std::shared_ptr<Record> liveWindow(int resourceId) const;

 private:
  std::vector<std::shared_ptr<Record>> m_windows;
};

DialogService& dialogService();
void setDialogService(DialogService* service);  // null restores the headless one
HeadlessDialogService& headlessDialogService();

// The base of the module's modeless dialogs: created once, its window made
// by the dialog service, centred over the main window and shown; when the
// window is destroyed, postNcDestroy runs last (a dialog that deletes itself
// does it there).
class ModelessDialog {
 public:
  explicit ModelessDialog(int resourceId) : m_resourceId(resourceId) {}
  virtual ~ModelessDialog();
  ModelessDialog(const ModelessDialog&) = delete;
  ModelessDialog& operator=(const ModelessDialog&) = delete;

  int resourceId() const { return m_resourceId; }
  // Makes the window; false when the service cannot.
  bool create();
  bool hasWindow() const { return m_window != nullptr; }
  void centreWindow();
  void showWindow();
  void hideWindow();
  bool isVisible() const { return m_window && m_window->isVisible(); }
  // Closes the window: windowDestroyed follows.
  void destroyWindow();
  // Called by the window when it is gone (closed by the user or destroyed).
  void windowDestroyed();

 protected:
  virtual bool onInitDialog() { return true; }
  // The last call of a dialog's life; the default does nothing.
  virtual void postNcDestroy() {}

 private:
  int m_resourceId;
  std::unique_ptr<DialogWindow> m_window;
};

}  // namespace host::ed
