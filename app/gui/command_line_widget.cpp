#include "app/gui/command_line_widget.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QVBoxLayout>

namespace gui {

CommandLineWidget::CommandLineWidget(QWidget* parent) : QWidget(parent) {
  m_log = new QPlainTextEdit(this);
  m_log->setReadOnly(true);
  m_log->setMaximumBlockCount(2000);
  m_log->setFixedHeight(96);
  m_prompt = new QLabel(QStringLiteral("命令:"), this);
  m_input = new QLineEdit(this);
  m_input->installEventFilter(this);
  auto* row = new QHBoxLayout;
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(m_prompt);
  row->addWidget(m_input, 1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(2, 2, 2, 2);
  layout->setSpacing(2);
  layout->addWidget(m_log);
  layout->addLayout(row);
  connect(m_input, &QLineEdit::returnPressed, this, [this] {
    const QString text = m_input->text();
    m_input->clear();
    if (!text.isEmpty() && (m_typed.isEmpty() || m_typed.back() != text)) m_typed.push_back(text);
    m_recall = -1;
    Print(m_prompt->text() + " " + text + "\n");
    Q_EMIT Entered(text);
  });
}

void CommandLineWidget::Print(const QString& text) {
  QString t = text;
  if (t.endsWith('\n')) t.chop(1);
  if (t.isEmpty()) return;
  m_log->appendPlainText(t);
}

void CommandLineWidget::SetPrompt(const QString& prompt) {
  QString p = prompt.trimmed();
  m_prompt->setText(p.isEmpty() ? QStringLiteral("命令:") : p);
}

QString CommandLineWidget::Prompt() const { return m_prompt->text(); }
QString CommandLineWidget::History() const { return m_log->toPlainText(); }

bool CommandLineWidget::eventFilter(QObject* watched, QEvent* event) {
  if (watched == m_input && event->type() == QEvent::KeyPress) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Escape) {
      m_input->clear();
      Q_EMIT Cancelled();
      return true;
    }
    if ((key->key() == Qt::Key_Up || key->key() == Qt::Key_Down) && !m_typed.isEmpty()) {
      if (key->key() == Qt::Key_Up) m_recall = m_recall < 0 ? m_typed.size() - 1 : std::max(0, m_recall - 1);
      else m_recall = m_recall < 0 ? -1 : m_recall + 1;
      if (m_recall >= m_typed.size()) m_recall = -1;
      m_input->setText(m_recall < 0 ? QString() : m_typed[m_recall]);
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace gui
