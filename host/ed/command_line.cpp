#include "host/ed/command_line.h"

#include <fstream>
#include <sstream>

#include "host/base/strings.h"
#include "host/ed/command_stack.h"
#include "host/ed/document.h"
#include "host/ed/editor.h"
#include "host/ed/messages.h"

namespace host::ed {

TextInput::TextInput(std::vector<std::string> lines, std::string name)
    : m_lines(std::move(lines)), m_name(std::move(name)) {}

bool TextInput::fromFile(const std::string& path, std::unique_ptr<TextInput>& input, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = path + ": cannot be read";
    return false;
  }
  std::vector<std::string> lines;
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(std::move(line));
  }
  // A UTF-8 byte order mark is not part of the first command.
  if (!lines.empty() && lines.front().rfind("\xEF\xBB\xBF", 0) == 0) lines.front().erase(0, 3);
  input = std::make_unique<TextInput>(std::move(lines), path);
  return true;
}

InputReply TextInput::read(PromptKind, const std::string&) {
  if (m_line >= static_cast<int>(m_lines.size())) return InputReply::end();
  std::string text = m_lines[static_cast<std::size_t>(m_line++)];
  // Trailing blanks are not part of an answer.
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.pop_back();
  if (text.empty()) return InputReply::enter();
  if (text == "^C" || equalsNoCase(text, "ESC")) return InputReply::cancel();
  return InputReply::ofText(std::move(text));
}

std::string TextInput::location() const {
  if (m_line == 0) return m_name;
  return (m_name.empty() ? std::string("line ") : m_name + ":") + std::to_string(m_line);
}

CommandLine& commandLine() {
  static CommandLine line;
  return line;
}

void CommandLine::queueText(AcApDocument* doc, const std::string& text, bool echo) {
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t nl = text.find('\n', start);
    if (nl == std::string::npos) {
      m_queue.push_back({doc, text.substr(start), echo});
      break;
    }
    m_queue.push_back({doc, text.substr(start, nl - start), echo});
    start = nl + 1;
  }
}

void CommandLine::dropQueuedText(AcApDocument* doc) {
  std::erase_if(m_queue, [&](const Queued& q) { return q.doc == doc; });
}

bool CommandLine::takeQueued(std::string& line, bool& echo) {
  // Text queued for another document waits until that document is current.
  AcApDocument* current = acDocManagerPtr()->curDocument();
  for (auto it = m_queue.begin(); it != m_queue.end(); ++it) {
    if (it->doc != current) continue;
    line = std::move(it->line);
    echo = it->echo;
    m_queue.erase(it);
    return true;
  }
  return false;
}

void CommandLine::report(const std::string& message) const {
  const std::string where = m_input ? m_input->location() : std::string();
  acutPrintf("\n%s%s%s\n", where.c_str(), where.empty() ? "" : ": ", message.c_str());
}

InputReply CommandLine::read(PromptKind kind, const std::string& prompt) {
  acutPrintf("%s", prompt.c_str());
  std::string queued;
  bool echo = false;
  if (takeQueued(queued, echo)) {
    if (echo) acutPrintf("%s", queued.c_str());
    acutPrintf("\n");
    if (queued.empty()) return InputReply::enter();
    return InputReply::ofText(std::move(queued));
  }
  if (!m_input || m_inputEnded) {
    m_inputEnded = true;
    acutPrintf("\n");
    return InputReply::end();
  }
  InputReply reply = m_input->read(kind, prompt);
  if (m_input->echoes()) {
    if (reply.kind == InputReply::kText) acutPrintf("%s", reply.text.c_str());
    if (reply.kind == InputReply::kCancel) acutPrintf("*Cancel*");
  }
  acutPrintf("\n");
  if (reply.kind == InputReply::kEnd) m_inputEnded = true;
  return reply;
}

CommandResult CommandLine::execute(const std::string& typedName) {
  const AcEdCommand* cmd = acedRegCmdsPtr()->lookupCmd(typedName.c_str());
  if (!cmd) {
    acedEditorPtr()->notifyUnknownCommand(typedName);
    report("Unknown command \"" + typedName + "\".");
    return CommandResult::kUnknown;
  }
  const std::string name = cmd->globalName();
  const AcRxFunctionPtr fn = cmd->functionAddr();  // the command may remove itself
  const std::string outer = m_active;
  const bool outerFailed = m_commandFailed, outerCancelled = m_commandCancelled;
  m_active = name;
  m_commandFailed = m_commandCancelled = false;
  acedEditorPtr()->notifyCommandWillStart(name);
  const bool endedBefore = m_inputEnded;
  fn();
  CommandResult result = CommandResult::kOk;
  if (!endedBefore && m_inputEnded) {
    result = CommandResult::kInputEnded;
    report("The input ended while " + name + " was waiting for an answer.");
    acedEditorPtr()->notifyCommandFailed(name);
  } else if (m_commandFailed) {
    result = CommandResult::kFailed;
    acedEditorPtr()->notifyCommandFailed(name);
  } else if (m_commandCancelled) {
    result = CommandResult::kCancelled;
    acedEditorPtr()->notifyCommandCancelled(name);
  } else {
    acedEditorPtr()->notifyCommandEnded(name);
  }
  m_active = outer;
  m_commandFailed = outerFailed;
  m_commandCancelled = outerCancelled;
  return result;
}

CommandResult CommandLine::runCommand(const std::string& typedName) {
  const CommandResult result = execute(typedName);
  if (m_active.empty()) runQueued();
  return result;
}

void CommandLine::runQueued() {
  std::string line;
  bool echo = false;
  while (m_active.empty() && takeQueued(line, echo)) {
    if (line.empty()) continue;  // Enter at an idle command line
    acutPrintf("Command: %s\n", echo ? line.c_str() : "");
    execute(line);
  }
}

bool CommandLine::runInput() {
  bool ok = true;
  m_inputEnded = false;
  for (;;) {
    runQueued();
    const InputReply reply = read(PromptKind::kCommand, "Command: ");
    if (reply.kind == InputReply::kEnd) break;
    if (reply.kind != InputReply::kText) continue;  // Enter or Esc at an idle command line
    const CommandResult r = execute(reply.text);
    if (r != CommandResult::kOk && r != CommandResult::kCancelled) ok = false;
    if (r == CommandResult::kInputEnded) break;
  }
  return ok;
}

}  // namespace host::ed
