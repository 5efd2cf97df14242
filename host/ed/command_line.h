#pragma once
// The command line: runs commands by name, answering their prompts from an
// input source (a desktop window, a script, a test), and runs text that was
// queued for a document once the current command has ended.
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "host/base/ac_array.h"
#include "host/db/object_id.h"
#include "host/ge/vectors.h"

class AcApDocument;

namespace host::ed {

// What a prompt asks for.
enum class PromptKind { kCommand, kSelection, kPoint, kString, kKeyword };

// One answer to a prompt.
struct InputReply {
  enum Kind {
    kText,    // typed text (a command name, a keyword, "W 0,0 10,10", "12,5")
    kPoint,   // a point picked in a view
    kPicks,   // entities picked in a view
    kEnter,   // Enter (or a right click) with nothing typed
    kCancel,  // Esc
    kEnd,     // the input has nothing more to give
  };
  Kind kind = kEnd;
  std::string text;
  AcGePoint3d point;
  AcDbObjectIdArray picks;

  static InputReply ofText(std::string t) { return {kText, std::move(t), {}, {}}; }
  static InputReply ofPoint(const AcGePoint3d& p) { return {kPoint, {}, p, {}}; }
  static InputReply ofPicks(AcDbObjectIdArray ids) { return {kPicks, {}, {}, std::move(ids)}; }
  static InputReply enter() { return {kEnter, {}, {}, {}}; }
  static InputReply cancel() { return {kCancel, {}, {}, {}}; }
  static InputReply end() { return {kEnd, {}, {}, {}}; }
};

// Where answers come from. A desktop window implements it with its views
// and command line; scripts and tests with lines of text.
class InputSource {
 public:
  virtual ~InputSource() = default;
  // The answer to one prompt. The prompt has already been printed.
  virtual InputReply read(PromptKind kind, const std::string& prompt) = 0;
  // Where the last answer came from, for messages ("script.scr:7"); empty
  // when the source has no such notion.
  virtual std::string location() const { return {}; }
  // Whether answers should be printed after their prompts (a script's
  // answers are; a window shows them itself).
  virtual bool echoes() const { return false; }
};

// Answers from lines of text: an empty line is Enter, a line holding only
// "^C" or "ESC" is Esc, the end of the lines is the end of input.
class TextInput : public InputSource {
 public:
  explicit TextInput(std::vector<std::string> lines, std::string name = {});
  // Reads a script file; false with a message when it cannot be read.
  static bool fromFile(const std::string& path, std::unique_ptr<TextInput>& input, std::string& error);
  InputReply read(PromptKind kind, const std::string& prompt) override;
  std::string location() const override;
  bool echoes() const override { return true; }
  int lineNumber() const { return m_line; }  // 1-based number of the last line read

 private:
  std::vector<std::string> m_lines;
  std::string m_name;
  int m_line = 0;
};

enum class CommandResult { kOk, kCancelled, kFailed, kUnknown, kInputEnded };

class CommandLine {
 public:
  // The source of answers; null means none (every prompt meets the end of
  // input). The command line does not own it.
  void setInput(InputSource* source) {
    m_input = source;
    m_inputEnded = false;
  }
  InputSource* input() const { return m_input; }

  // Runs one command as typed ("_.EXPLODE", "open"), then everything queued
  // meanwhile. Editor reactors hear commandWillStart with the command's
  // global name and then commandEnded, commandCancelled or commandFailed.
  CommandResult runCommand(const std::string& typedName);
  // Reads commands from the input until it ends. False when a command was
  // unknown or failed, or the input ended inside a prompt; each is reported
  // on the command line with the input's location.
  bool runInput();
  // Runs the text queued for the current document.
  void runQueued();

  // For editor operations: prints the prompt and returns the answer, queued
  // text first, then the input source. Running out of input inside a
  // command marks the command failed.
  InputReply read(PromptKind kind, const std::string& prompt);

  // A command reports that it failed (after printing why).
  void failCommand() { m_commandFailed = true; }
  // A command reports that the user cancelled it.
  void cancelCommand() { m_commandCancelled = true; }
  // Name of the running command (global name), empty when idle.
  const std::string& activeCommand() const { return m_active; }
  bool isIdle() const { return m_active.empty(); }

  // For the document manager.
  void queueText(AcApDocument* doc, const std::string& text, bool echo);
  void dropQueuedText(AcApDocument* doc);
  bool hasQueuedText() const { return !m_queue.empty(); }

 private:
  struct Queued {
    AcApDocument* doc;
    std::string line;
    bool echo;
  };
  bool takeQueued(std::string& line, bool& echo);
  CommandResult execute(const std::string& typedName);
  void report(const std::string& message) const;

  InputSource* m_input = nullptr;
  std::deque<Queued> m_queue;
  std::string m_active;
  bool m_commandFailed = false;
  bool m_commandCancelled = false;
  bool m_inputEnded = false;
};

// The host's one command line.
CommandLine& commandLine();

}  // namespace host::ed
