#include "app/gui/window_input.h"

#include <QtCore/QEventLoop>
#include <QtWidgets/QLineEdit>

#include "app/gui/command_line_widget.h"
#include "app/gui/view/drawing_view.h"

namespace gui {

using host::ed::InputReply;
using host::ed::PromptKind;

WindowInput::WindowInput(CommandLineWidget* line, std::function<DrawingView*()> view)
    : m_line(line), m_view(std::move(view)) {
  connect(m_line, &CommandLineWidget::Entered, this, [this](const QString& text) {
    if (!Waiting()) return;
    Answer(text.isEmpty() ? InputReply::enter() : InputReply::ofText(text.toStdString()));
  });
  connect(m_line, &CommandLineWidget::Cancelled, this, [this] {
    if (Waiting()) Answer(InputReply::cancel());
  });
}

void WindowInput::Answer(const InputReply& reply) {
  if (!m_loop) return;
  m_reply = reply;
  m_loop->quit();
}

void WindowInput::Shutdown() {
  m_shutdown = true;
  Answer(InputReply::end());
}

InputReply WindowInput::read(PromptKind kind, const std::string& prompt) {
  if (m_shutdown || m_loop) return InputReply::end();  // no prompt inside a prompt
  m_line->SetPrompt(QString::fromStdString(prompt));
  QPointer<DrawingView> view = m_view();
  std::vector<QMetaObject::Connection> links;
  if (view) {
    view->SetMode(kind == PromptKind::kSelection ? DrawingView::Mode::kPickEntities
                  : kind == PromptKind::kPoint   ? DrawingView::Mode::kPickPoint
                                                 : DrawingView::Mode::kIdle);
    links.push_back(connect(view, &DrawingView::EntityPicked, this, [this](AcDbObjectId id) {
      AcDbObjectIdArray ids;
      ids.append(id);
      Answer(InputReply::ofPicks(ids));
    }));
    links.push_back(connect(view, &DrawingView::WindowPicked, this, [this](QRectF r, bool crossing) {
      const QString text = QStringLiteral("%1 %2,%3 %4,%5")
                               .arg(crossing ? "C" : "W")
                               .arg(r.left(), 0, 'g', 17)
                               .arg(r.top(), 0, 'g', 17)
                               .arg(r.right(), 0, 'g', 17)
                               .arg(r.bottom(), 0, 'g', 17);
      m_line->Print(text + "\n");
      Answer(InputReply::ofText(text.toStdString()));
    }));
    links.push_back(connect(view, &DrawingView::PointPicked, this, [this](QPointF p) {
      Answer(InputReply::ofPoint(AcGePoint3d(p.x(), p.y(), 0)));
    }));
    links.push_back(connect(view, &DrawingView::PickFinished, this, [this] { Answer(InputReply::enter()); }));
    links.push_back(connect(view, &DrawingView::PickCancelled, this, [this] { Answer(InputReply::cancel()); }));
    if (kind == PromptKind::kSelection || kind == PromptKind::kPoint) view->setFocus();
  }
  if (kind != PromptKind::kSelection && kind != PromptKind::kPoint) m_line->Input()->setFocus();
  QEventLoop loop;
  m_loop = &loop;
  m_reply.reset();
  loop.exec();
  m_loop = nullptr;
  for (const auto& link : links) disconnect(link);
  if (view) view->SetMode(DrawingView::Mode::kIdle);
  m_line->SetPrompt(QString());
  return m_reply.value_or(InputReply::end());
}

}  // namespace gui
