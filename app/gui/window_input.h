#pragma once
// The command line's input source in the desktop window: a prompt waits
// (in a nested event loop) for the user's answer from the command line or
// the drawing view. A click on an entity answers with that entity, a window
// or crossing with its corners as "W x1,y1 x2,y2" or "C x1,y1 x2,y2" (so the
// host selects exactly as it does for typed corners), a picked point with
// the (snapped) point, Enter or a right click with Enter, Esc with cancel.
#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <functional>
#include <optional>

#include "host/ed/command_line.h"

class QEventLoop;

namespace gui {

class CommandLineWidget;
class DrawingView;

class WindowInput : public QObject, public host::ed::InputSource {
  Q_OBJECT
 public:
  // view gives the view of the current drawing (null when none is open).
  WindowInput(CommandLineWidget* line, std::function<DrawingView*()> view);
  host::ed::InputReply read(host::ed::PromptKind kind, const std::string& prompt) override;
  // Whether a prompt is waiting for an answer.
  bool Waiting() const { return m_loop != nullptr; }
  // Gives the answer to the waiting prompt (tests and the window use it).
  void Answer(const host::ed::InputReply& reply);
  // Ends every prompt (the window is closing).
  void Shutdown();

 private:
  CommandLineWidget* m_line;
  std::function<DrawingView*()> m_view;
  QEventLoop* m_loop = nullptr;
  std::optional<host::ed::InputReply> m_reply;
  bool m_shutdown = false;
};

}  // namespace gui
