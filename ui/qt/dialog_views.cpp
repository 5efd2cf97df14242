#include "ui/qt/dialog_views.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTableView>
#include <QVBoxLayout>

namespace ui::qt {

namespace {
QString Q(const std::string& s) { return QString::fromStdString(s); }
}  // namespace

// --- grids -------------------------------------------------------------------

RowsModel::RowsModel(std::vector<std::string> columns,
                     std::function<std::vector<CBulkGenEncircleLineDlg::Row>()> rows, QObject* parent)
    : QAbstractTableModel(parent), m_columns(std::move(columns)), m_source(std::move(rows)) {
  m_rows = m_source();
}

int RowsModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : static_cast<int>(m_rows.size()); }
int RowsModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QVariant RowsModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= static_cast<int>(m_rows.size())) return {};
  if (role == Qt::DisplayRole) return Q(m_rows[index.row()][index.column()]);
  if (role == Qt::TextAlignmentRole && index.column() != 1) return int(Qt::AlignCenter);
  return {};
}

QVariant RowsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section < static_cast<int>(m_columns.size()))
    return Q(m_columns[section]);
  return {};
}

void RowsModel::Reload() {
  beginResetModel();
  m_rows = m_source();
  endResetModel();
}

// --- name dialog ---------------------------------------------------------------

InputNameView::InputNameView(CInputNameDlg& dlg, QWidget* parent) : QDialog(parent), m_dlg(dlg) {
  setWindowTitle(CInputNameDlg::kCaption);
  auto* row = new QHBoxLayout(this);
  row->addWidget(new QLabel(CInputNameDlg::kLabel));
  m_edit = new QLineEdit(Q(dlg.m_strName));
  m_edit->selectAll();
  row->addWidget(m_edit, 1);
  auto* ok = new QPushButton("确定");
  ok->setDefault(true);
  row->addWidget(ok);
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  resize(380, 70);
}

void InputNameView::accept() {
  m_dlg.m_strName = m_edit->text().toStdString();
  if (const auto refused = m_dlg.OnOK()) {
    host::ed::messageBox(*refused);
    m_edit->setFocus();
    return;
  }
  QDialog::accept();
}

// --- parameter dialog ----------------------------------------------------------

ParaSetView::ParaSetView(CEncircleParaSetDlg& dlg, QWidget* parent) : QDialog(parent), m_dlg(dlg) {
  setWindowTitle(CEncircleParaSetDlg::kCaption);
  auto* form = new QFormLayout(this);
  auto* sides = new QHBoxLayout;
  m_upper = new QRadioButton("上半边");
  m_lower = new QRadioButton("下半边");
  (dlg.m_nSide ? m_lower : m_upper)->setChecked(true);
  sides->addWidget(m_upper);
  sides->addWidget(m_lower);
  form->addRow("计算方位：", sides);
  m_dashed = new QCheckBox("是否排除虚线");
  m_dashed->setChecked(dlg.m_nRemoveDashed == 1);
  form->addRow("排除虚线：", m_dashed);
  m_vertical = new QCheckBox("左右包络线是否竖直");
  m_vertical->setChecked(dlg.m_nVerticalEnds == 1);
  form->addRow("包络线：", m_vertical);
  const auto texts = dlg.EditTexts();
  // The edits in the order the dialog shows them.
  for (int control : {1007, 1022, 1024, 1023, 1026})
    for (const auto& edit : CEncircleParaSetDlg::Edits())
      if (edit.nControl == control) {
        m_edits[control] = new QLineEdit(Q(texts.at(control)));
        form->addRow(edit.label, m_edits[control]);
      }
  auto* ok = new QPushButton("确定");
  ok->setAutoDefault(false);  // "确定" is not the default button
  form->addRow(ok);
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
}

QLineEdit* ParaSetView::Edit(int control) const {
  const auto it = m_edits.find(control);
  return it == m_edits.end() ? nullptr : it->second;
}

void ParaSetView::accept() {
  m_dlg.m_nSide = m_lower->isChecked() ? 1 : 0;
  m_dlg.m_nRemoveDashed = m_dashed->isChecked() ? 1 : 0;
  m_dlg.m_nVerticalEnds = m_vertical->isChecked() ? 1 : 0;
  std::map<int, std::string> texts;
  for (const auto& [control, edit] : m_edits) texts[control] = edit->text().toStdString();
  if (const auto error = m_dlg.OnOK(texts)) {
    host::ed::messageBox(error->message);
    if (QLineEdit* edit = Edit(error->nControl)) {
      edit->setFocus();
      edit->selectAll();
    }
    return;
  }
  QDialog::accept();
}

bool ModalRunner::RunNameDialog(CInputNameDlg& dlg) {
  InputNameView view(dlg, m_parent);
  return view.exec() == QDialog::Accepted;
}

bool ModalRunner::RunParaSetDialog(CEncircleParaSetDlg& dlg) {
  ParaSetView view(dlg, m_parent);
  return view.exec() == QDialog::Accepted;
}

// --- batch dialog ----------------------------------------------------------------

namespace {
QTableView* MakeGrid(QAbstractItemModel* model, const std::vector<int>& widths, QWidget* parent) {
  auto* grid = new QTableView(parent);
  grid->setModel(model);
  grid->setSelectionBehavior(QAbstractItemView::SelectRows);
  grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
  grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
  grid->verticalHeader()->hide();
  grid->horizontalHeader()->setStretchLastSection(true);
  // Relative widths, over a grid of 360 pixels.
  int total = 0;
  for (int w : widths) total += w;
  for (std::size_t i = 0; i < widths.size(); ++i)
    grid->setColumnWidth(static_cast<int>(i), 360 * widths[i] / std::max(total, 1));
  return grid;
}

std::vector<int> SelectedRows(QTableView* grid) {
  std::vector<int> rows;
  for (const QModelIndex& index : grid->selectionModel()->selectedRows()) rows.push_back(index.row());
  return rows;
}
}  // namespace

BatchDialogView::BatchDialogView(CBulkGenEncircleLineDlg& dlg, QWidget* parent) : QDialog(parent), m_dlg(dlg) {
  setWindowTitle(CBulkGenEncircleLineDlg::kCaption);
  setModal(false);
  m_taskModel = new RowsModel(CBulkGenEncircleLineDlg::TaskColumns(), [&dlg] { return dlg.TaskRows(); }, this);
  m_toolModel = new RowsModel(CBulkGenEncircleLineDlg::ToolColumns(), [&dlg] { return dlg.ToolRows(); }, this);
  m_tasks = MakeGrid(m_taskModel, CBulkGenEncircleLineDlg::TaskColumnWidths(), this);
  m_tools = MakeGrid(m_toolModel, CBulkGenEncircleLineDlg::ToolColumnWidths(), this);
  auto* layout = new QGridLayout(this);
  auto* taskBox = new QGroupBox("任务");
  auto* toolBox = new QGroupBox("刀具");
  auto* taskLayout = new QVBoxLayout(taskBox);
  auto* toolLayout = new QVBoxLayout(toolBox);
  taskLayout->addWidget(m_tasks);
  toolLayout->addWidget(m_tools);
  auto* taskButtons = new QGridLayout;
  auto* toolButtons = new QGridLayout;
  taskLayout->addLayout(taskButtons);
  toolLayout->addLayout(toolButtons);
  int taskCount = 0, toolCount = 0;
  for (const auto& b : CBulkGenEncircleLineDlg::Buttons()) {
    auto* button = new QPushButton(b.caption);
    button->setAutoDefault(false);
    m_buttons[b.nId] = button;
    // The first six act on tasks, the others on tools.
    if (taskCount < 6) taskButtons->addWidget(button, taskCount / 3, taskCount % 3), ++taskCount;
    else toolButtons->addWidget(button, toolCount / 4, toolCount % 4), ++toolCount;
    const int id = b.nId;
    connect(button, &QPushButton::clicked, this, [this, id] { m_dlg.Press(id); });
  }
  layout->addWidget(taskBox, 0, 0);
  layout->addWidget(toolBox, 0, 1);
  connect(m_tasks->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (!m_reloading) m_dlg.SelectTasks(SelectedRows(m_tasks));
  });
  connect(m_tools->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (!m_reloading) m_dlg.SelectTools(SelectedRows(m_tools));
  });
  m_dlg.SetChangedCallback([this] { Reload(); });
  resize(900, 420);
}

QPushButton* BatchDialogView::ButtonById(int id) const {
  const auto it = m_buttons.find(id);
  return it == m_buttons.end() ? nullptr : it->second;
}

void BatchDialogView::Select(QTableView* grid, const std::vector<int>& rows) {
  QItemSelection selection;
  for (int r : rows) selection.select(grid->model()->index(r, 0), grid->model()->index(r, grid->model()->columnCount() - 1));
  grid->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void BatchDialogView::Reload() {
  m_reloading = true;
  m_taskModel->Reload();
  m_toolModel->Reload();
  Select(m_tasks, m_dlg.SelectedTasks());
  Select(m_tools, m_dlg.SelectedTools());
  m_reloading = false;
}

void BatchDialogView::closeEvent(QCloseEvent* event) {
  event->accept();
  m_dlg.SetChangedCallback(nullptr);
  // The dialog learns that its window is gone once the event is over.
  QPointer<BatchDialogView> self(this);
  CBulkGenEncircleLineDlg* dlg = &m_dlg;
  QMetaObject::invokeMethod(
      qApp, [dlg, self] { if (self) dlg->windowDestroyed(); }, Qt::QueuedConnection);
}

namespace {
class BatchDialogWindow : public host::ed::DialogWindow {
 public:
  BatchDialogWindow(CBulkGenEncircleLineDlg& dlg, QWidget* parent) : m_view(new BatchDialogView(dlg, parent)) {
    // A dialog of its own: it stays on top of its parent without blocking it.
    m_view->setWindowFlag(Qt::Dialog);
  }
  ~BatchDialogWindow() override {
    if (m_view) m_view->deleteLater();
  }
  void centreOverParent() override {
    const QWidget* parent = m_view->parentWidget();
    const QRect area = parent ? parent->geometry() : m_view->screen()->availableGeometry();
    m_view->move(area.center() - m_view->rect().center());
  }
  void show() override {
    m_view->show();
    m_view->raise();
  }
  void hide() override { m_view->hide(); }
  bool isVisible() const override { return m_view && m_view->isVisible(); }
  void destroy() override {
    if (m_view) m_view->close();
  }

 private:
  QPointer<BatchDialogView> m_view;
};
}  // namespace

std::unique_ptr<host::ed::DialogWindow> MakeBatchDialogWindow(host::ed::ModelessDialog& dlg, QWidget* parent) {
  auto* batch = dynamic_cast<CBulkGenEncircleLineDlg*>(&dlg);
  if (!batch) return nullptr;
  return std::make_unique<BatchDialogWindow>(*batch, parent);
}

// --- progress ----------------------------------------------------------------------

ProgressWindow::ProgressWindow() : QWidget(nullptr) {
  setWindowTitle(kProgressCaption);
  auto* layout = new QVBoxLayout(this);
  m_bar = new QProgressBar;
  m_text = new QLabel;
  QFont font("宋体");
  font.setPixelSize(16);
  font.setWeight(QFont::Normal);
  m_text->setFont(font);
  m_text->setTextFormat(Qt::PlainText);
  // A text of a fixed size, its three lines: a new text repaints the label
  // without laying the window out again.
  m_text->setFixedSize(450, QFontMetrics(font).lineSpacing() * 3 + 4);
  layout->addWidget(m_bar);
  layout->addWidget(m_text);
  resize(470, sizeHint().height());
  show();
}

void ProgressWindow::SetTitle(const std::string& title) {
  m_pendingTitle = title;
  if (!m_sinceShown.isValid()) setWindowTitle(Q(title));
}
void ProgressWindow::SetRange(int lower, int upper) { m_lower = lower, m_upper = upper; }
void ProgressWindow::SetPosition(int position) { m_position = position; }
void ProgressWindow::SetText(const std::string& text) {
  m_pendingText = text;
  Show();
}

void ProgressWindow::PumpMessages() {
  // Ten times a second keeps the program responsive; a step that
  // follows closer on the last one leaves the events waiting.
  if (m_sincePumped.isValid() && m_sincePumped.elapsed() < kPumpIntervalMs) return;
  m_sincePumped.start();
  QCoreApplication::processEvents();
}

void ProgressWindow::Show() {
  if (m_sinceShown.isValid() && m_sinceShown.elapsed() < kRedrawIntervalMs) return;
  m_sinceShown.start();
  // The changes are drawn together, by the next pump, instead of the bar
  // drawing itself at once and the text later.
  if (const QString title = Q(m_pendingTitle); windowTitle() != title) setWindowTitle(title);
  m_bar->setUpdatesEnabled(false);
  m_bar->setRange(m_lower, m_upper);
  m_bar->setValue(m_position);
  m_bar->setUpdatesEnabled(true);
  m_text->setText(Q(m_pendingText).trimmed());
}

void InstallProgressWindows() {
  SetProgressViewFactory([] { return std::make_unique<ProgressWindow>(); });
}

void InstallBatchViews(QWidget* mainWindow) {
  static ModalRunner runner;
  runner.SetParent(mainWindow);
  SetBatchModalRunner(&runner);
  InstallProgressWindows();
}

}  // namespace ui::qt
