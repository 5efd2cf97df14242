#pragma once
// The command line under the drawing: what commands print, the current
// prompt and a line to type into, with a history (up and down) of what was
// typed. Esc cancels what is asked.
#include <QtWidgets/QWidget>

class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace gui {

class CommandLineWidget : public QWidget {
  Q_OBJECT
 public:
  explicit CommandLineWidget(QWidget* parent = nullptr);
  // Appends printed text (it may hold several lines).
  void Print(const QString& text);
  void SetPrompt(const QString& prompt);
  QString Prompt() const;
  QString History() const;
  QLineEdit* Input() const { return m_input; }

 Q_SIGNALS:
  // Enter in the line: the text typed (empty for a bare Enter).
  void Entered(QString text);
  void Cancelled();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QPlainTextEdit* m_log;
  QLabel* m_prompt;
  QLineEdit* m_input;
  QStringList m_typed;
  int m_recall = -1;
};

}  // namespace gui
