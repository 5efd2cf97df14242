#pragma once
// Qt views of the batch dialogs: "批量生成包络线" (modeless, two grids over
// item models), "包络线参数设置" and "输入名称" (modal), and "任务进度" (a
// window without parent). Each view only shows its controller's state and
// passes the user's actions on; the rules stay in the controllers.
#include <QDialog>
#include <QElapsedTimer>
#include <QAbstractTableModel>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "host/ed/services.h"
#include "ui/bulk_gen_encircle_line_dlg.h"
#include "ui/progress_dialog.h"

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTableView;
class QCheckBox;
class QRadioButton;

namespace ui::qt {

// The rows of one grid, read from the controller whenever it changes.
class RowsModel : public QAbstractTableModel {
 public:
  RowsModel(std::vector<std::string> columns, std::function<std::vector<CBulkGenEncircleLineDlg::Row>()> rows,
            QObject* parent = nullptr);
  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  int columnCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  // Reads the rows again.
  void Reload();

 private:
  std::vector<std::string> m_columns;
  std::function<std::vector<CBulkGenEncircleLineDlg::Row>()> m_source;
  std::vector<CBulkGenEncircleLineDlg::Row> m_rows;
};

// "输入名称": a name edit and "确定"; an empty name is refused with
// "名称不能为空" and the dialog stays open.
class InputNameView : public QDialog {
 public:
  InputNameView(CInputNameDlg& dlg, QWidget* parent = nullptr);
  void accept() override;
  QLineEdit* NameEdit() const { return m_edit; }

 private:
  CInputNameDlg& m_dlg;
  QLineEdit* m_edit;
};

// "包络线参数设置": the side, the two checks and the five edits.
class ParaSetView : public QDialog {
 public:
  ParaSetView(CEncircleParaSetDlg& dlg, QWidget* parent = nullptr);
  void accept() override;
  QLineEdit* Edit(int control) const;
  QRadioButton* Lower() const { return m_lower; }
  QCheckBox* RemoveDashed() const { return m_dashed; }

 private:
  CEncircleParaSetDlg& m_dlg;
  std::map<int, QLineEdit*> m_edits;
  QRadioButton *m_upper, *m_lower;
  QCheckBox *m_dashed, *m_vertical;
};

// Runs the modal views over the batch dialog.
class ModalRunner : public BatchModalRunner {
 public:
  explicit ModalRunner(QWidget* parent = nullptr) : m_parent(parent) {}
  void SetParent(QWidget* parent) { m_parent = parent; }
  bool RunNameDialog(CInputNameDlg& dlg) override;
  bool RunParaSetDialog(CEncircleParaSetDlg& dlg) override;

 private:
  QWidget* m_parent;
};

// "批量生成包络线": the task grid, the tool grid of the selected task, the
// fourteen buttons.
class BatchDialogView : public QDialog {
 public:
  BatchDialogView(CBulkGenEncircleLineDlg& dlg, QWidget* parent = nullptr);
  QTableView* TaskGrid() const { return m_tasks; }
  QTableView* ToolGrid() const { return m_tools; }
  QPushButton* ButtonById(int id) const;
  // Shows the controller's lists and selections again.
  void Reload();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void Select(QTableView* grid, const std::vector<int>& rows);
  CBulkGenEncircleLineDlg& m_dlg;
  RowsModel *m_taskModel, *m_toolModel;
  QTableView *m_tasks, *m_tools;
  std::map<int, QPushButton*> m_buttons;
  bool m_reloading = false;
};

// The batch dialog's window for the host's dialog service.
// Null when the dialog is not the batch dialog. Registered with the desktop
// window's dialog service for resource 188.
std::unique_ptr<host::ed::DialogWindow> MakeBatchDialogWindow(host::ed::ModelessDialog& dlg, QWidget* parent);

// "任务进度": a window without parent with the bar and the counts. Steps
// handle the events waiting at most every kPumpIntervalMs, so the program
// stays responsive between tools without a pump per tool.
class ProgressWindow : public QWidget, public ProgressView {
 public:
  static constexpr int kPumpIntervalMs = 100;
  // The times shown are whole seconds: what the steps set is drawn at once
  // the first time, then once a second, so that drawing the window costs
  // next to nothing against the run.
  static constexpr int kRedrawIntervalMs = 1000;

  ProgressWindow();
  void SetTitle(const std::string& title) override;
  void SetRange(int lower, int upper) override;
  void SetPosition(int position) override;
  void SetText(const std::string& text) override;
  void PumpMessages() override;
  QProgressBar* Bar() const { return m_bar; }
  QLabel* Text() const { return m_text; }

 private:
  void Show();
  QProgressBar* m_bar;
  QLabel* m_text;
  std::string m_pendingText, m_pendingTitle;
  int m_lower = 0, m_upper = 100, m_position = 0;
  QElapsedTimer m_sinceShown, m_sincePumped;
};

// Makes the module's progress display show ProgressWindow windows.
void InstallProgressWindows();
// The desktop window's part: the module's batch dialog opens its modal
// views over mainWindow, and progress shows in ProgressWindow windows. (The
// window registers MakeBatchDialogWindow for resource 188 itself.)
void InstallBatchViews(QWidget* mainWindow);

}  // namespace ui::qt
