#include "app/gui/main_window.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSettings>
#include <QtCore/QTimer>
#include <QtGui/QCloseEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QVBoxLayout>

#include "app/gui/command_line_widget.h"
#include "app/gui/view/drawing_view.h"
#include "app/gui/view/layouts.h"
#include "app/gui/window_input.h"
#include "host/db/operations.h"
#include "host/ed/command_line.h"
#include "host/ed/document.h"
#include "host/ed/host_commands.h"
#include "host/ed/messages.h"

namespace gui {

namespace {
const char* unitName(int insunits) {
  switch (insunits) {
    case 0: return "无单位";
    case 1: return "英寸 (in)";
    case 2: return "英尺 (ft)";
    case 4: return "毫米 (mm)";
    case 5: return "厘米 (cm)";
    case 6: return "米 (m)";
    default: return "其他";
  }
}
constexpr int kRecentFiles = 8;
}  // namespace

// Collects the entities a drawing changes, for the view to rebuild them
// once the change is complete.
class MainWindow::DatabaseWatch : public AcDbDatabaseReactor {
 public:
  explicit DatabaseWatch(QTimer* timer) : m_timer(timer) {}
  void objectAppended(const AcDbDatabase*, const AcDbObject* obj) override { Note(obj); }
  void objectModified(const AcDbDatabase*, const AcDbObject* obj) override { Note(obj); }
  void objectErased(const AcDbDatabase*, const AcDbObject* obj, bool) override { Note(obj); }
  std::set<AcDbObjectId> pending;

 private:
  void Note(const AcDbObject* obj) {
    if (!AcDbEntity::cast(obj)) return;
    pending.insert(obj->objectId());
    if (!m_timer->isActive()) m_timer->start();
  }
  QTimer* m_timer;
};

struct MainWindow::Tab {
  AcApDocument* doc = nullptr;
  DrawingView* view = nullptr;
  std::unique_ptr<DatabaseWatch> watch;
};

// Tabs follow the host's documents however they are opened and closed.
class MainWindow::DocumentWatch : public AcApDocManagerReactor {
 public:
  explicit DocumentWatch(MainWindow& window) : m_window(window) {}
  void documentCreated(AcApDocument* doc) override { m_window.AddTab(doc); }
  void documentToBeDestroyed(AcApDocument* doc) override { m_window.RemoveTab(doc); }
  void documentActivated(AcApDocument* doc) override {
    if (Tab* tab = m_window.TabOf(doc)) m_window.m_tabs->setCurrentWidget(tab->view);
  }

 private:
  MainWindow& m_window;
};

MainWindow::MainWindow() {
  setWindowTitle("envline");
  resize(1400, 900);
  m_tabs = new QTabWidget(this);
  m_tabs->setTabsClosable(true);
  m_tabs->setDocumentMode(true);
  m_commandLine = new CommandLineWidget(this);
  auto* central = new QWidget(this);
  auto* layout = new QVBoxLayout(central);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(m_tabs, 1);
  layout->addWidget(m_commandLine);
  setCentralWidget(central);
  m_coords = new QLabel(this);
  m_units = new QLabel(this);
  statusBar()->addWidget(m_coords, 1);
  statusBar()->addPermanentWidget(m_units);
  m_refresh = new QTimer(this);
  m_refresh->setSingleShot(true);
  m_refresh->setInterval(0);
  connect(m_refresh, &QTimer::timeout, this, &MainWindow::ApplyPending);

  m_input = std::make_unique<WindowInput>(m_commandLine, [this] { return CurrentView(); });
  m_services = std::make_unique<QtUserServices>(this);
  m_dialogs = std::make_unique<QtDialogService>(this);
  host::ed::commandLine().setInput(m_input.get());
  host::ed::setUserServices(m_services.get());
  host::ed::setDialogService(m_dialogs.get());
  host::ed::addViewObserver(this);
  m_documents = std::make_unique<DocumentWatch>(*this);
  acDocManagerPtr()->addReactor(m_documents.get());
  host::ed::setMessageSink([this](const std::string& text) { m_commandLine->Print(QString::fromStdString(text)); });

  connect(m_commandLine, &CommandLineWidget::Entered, this, [this](const QString& text) {
    if (!m_input->Waiting() && !text.trimmed().isEmpty()) RunCommand(text.trimmed());
  });
  connect(m_tabs, &QTabWidget::currentChanged, this, &MainWindow::TabActivated);
  connect(m_tabs, &QTabWidget::tabCloseRequested, this, [this](int i) { CloseDrawing(i); });
  BuildMenus();
  UpdateTitle();
}

MainWindow::~MainWindow() {
  acDocManagerPtr()->removeReactor(m_documents.get());
  host::ed::removeViewObserver(this);
  host::ed::setMessageSink({});
  host::ed::commandLine().setInput(nullptr);
  host::ed::setUserServices(nullptr);
  host::ed::setDialogService(nullptr);
  for (auto& tab : m_tabList)
    if (tab->doc && tab->doc->database()) tab->doc->database()->removeReactor(tab->watch.get());
}

void MainWindow::BuildMenus() {
  QMenu* file = menuBar()->addMenu("文件(&F)");
  QAction* open = file->addAction("打开(&O)...", QKeySequence::Open, this, [this] {
    const QString path = QFileDialog::getOpenFileName(this, "打开图纸", QString(), "图纸 (*.dxf);;所有文件 (*)", nullptr,
                                                      QFileDialog::DontUseNativeDialog);
    if (!path.isEmpty()) OpenDrawing(path);
  });
  QAction* save = file->addAction("保存(&S)", QKeySequence::Save, this, [this] { SaveDrawing(); });
  file->addAction("另存为(&A)...", QKeySequence::SaveAs, this, [this] {
    const QString path = QFileDialog::getSaveFileName(this, "另存为", QString(), "图纸 (*.dxf)", nullptr,
                                                      QFileDialog::DontUseNativeDialog);
    if (!path.isEmpty()) SaveDrawing(path.endsWith(".dxf", Qt::CaseInsensitive) ? path : path + ".dxf");
  });
  m_recent = file->addMenu("最近的文件");
  FillRecent();
  file->addAction("关闭(&C)", QKeySequence::Close, this, [this] {
    if (m_tabs->currentIndex() >= 0) CloseDrawing(m_tabs->currentIndex());
  });
  file->addSeparator();
  file->addAction("退出(&X)", QKeySequence::Quit, this, &QWidget::close);

  QMenu* view = menuBar()->addMenu("视图(&V)");
  QAction* extents = view->addAction("范围缩放(&E)", this, [this] {
    if (DrawingView* v = CurrentView()) v->ZoomExtents();
  });
  extents->setShortcut(QKeySequence("Ctrl+E"));
  // Model space and every paper space of the drawing, the one shown checked.
  QMenu* layouts = view->addMenu("布局");
  connect(layouts, &QMenu::aboutToShow, this, [this, layouts] {
    layouts->clear();
    DrawingView* v = CurrentView();
    if (!v || !v->Scene().Database()) return;
    const AcDbDatabase* db = v->Scene().Database();
    const AcDbObjectId shown = v->Scene().Space().isNull() ? db->modelSpaceId() : v->Scene().Space();
    for (const LayoutEntry& layout : DrawingLayouts(db)) {
      QAction* a = layouts->addAction(layout.name, this, [this, db, block = layout.block] {
        if (DrawingView* cur = CurrentView(); cur && cur->Scene().Database() == db) cur->SetDrawing(db, block);
      });
      a->setCheckable(true);
      a->setChecked(layout.block == shown);
    }
  });

  QMenu* tools = menuBar()->addMenu("刀具(&T)");
  QAction* single = tools->addAction("包络线计算", this, [this] { RunCommand("VKTOOLDESIGNProfileAuto3D"); });
  QAction* batch = tools->addAction("批量生成包络线", this, [this] { RunCommand("VKTOOLDESIGNProfilesAuto3D"); });

  QToolBar* bar = addToolBar("工具");
  bar->setObjectName("tools");
  bar->addAction(open);
  bar->addAction(save);
  bar->addAction(extents);
  bar->addSeparator();
  bar->addAction(single);
  bar->addAction(batch);
}

void MainWindow::FillRecent() {
  m_recent->clear();
  const QStringList files = QSettings("envline", "envline-gui").value("recent").toStringList();
  for (const QString& f : files) m_recent->addAction(f, this, [this, f] { OpenDrawing(f); });
  m_recent->setEnabled(!files.isEmpty());
}

void MainWindow::AddRecent(const QString& path) {
  QSettings settings("envline", "envline-gui");
  QStringList files = settings.value("recent").toStringList();
  const QString full = QFileInfo(path).absoluteFilePath();
  files.removeAll(full);
  files.prepend(full);
  while (files.size() > kRecentFiles) files.removeLast();
  settings.setValue("recent", files);
  FillRecent();
}

bool MainWindow::OpenDrawing(const QString& path) {
  std::string error;
  if (!host::ed::openDrawing(path.toStdString(), error)) {
    m_commandLine->Print(QString::fromStdString(error) + "\n");
    QMessageBox::warning(this, "打开图纸", QString("无法打开 %1:\n%2").arg(path, QString::fromStdString(error)));
    return false;
  }
  AddRecent(path);
  return true;
}

void MainWindow::AddTab(AcApDocument* doc) {
  if (TabOf(doc)) return;
  const QString path = QString::fromStdString(doc->fileName());
  auto tab = std::make_unique<Tab>();
  tab->doc = doc;
  tab->view = new DrawingView(m_tabs);
  tab->watch = std::make_unique<DatabaseWatch>(m_refresh);
  doc->database()->addReactor(tab->watch.get());
  DrawingView* view = tab->view;
  connect(view, &DrawingView::CursorMoved, this, [this](QPointF p) {
    m_coords->setText(QString("%1, %2").arg(p.x(), 0, 'f', 4).arg(p.y(), 0, 'f', 4));
  });
  m_tabList.push_back(std::move(tab));
  view->SetDrawing(doc->database());
  const int index = m_tabs->addTab(view, QFileInfo(path).fileName());
  m_tabs->setTabToolTip(index, path);
  if (acDocManagerPtr()->curDocument() == doc) m_tabs->setCurrentIndex(index);
  m_commandLine->Print(QString("已打开 %1 (%2 个对象)\n").arg(path).arg(view->Scene().EntityCount()));
  UpdateTitle();
}

void MainWindow::RemoveTab(AcApDocument* doc) {
  const auto it = std::find_if(m_tabList.begin(), m_tabList.end(), [doc](const auto& t) { return t->doc == doc; });
  if (it == m_tabList.end()) return;
  DrawingView* view = (*it)->view;
  doc->database()->removeReactor((*it)->watch.get());
  m_tabList.erase(it);
  m_tabs->removeTab(m_tabs->indexOf(view));
  view->deleteLater();
  UpdateTitle();
}

bool MainWindow::SaveDrawing(const QString& path) {
  AcApDocument* doc = DocumentOf(m_tabs->currentIndex());
  if (!doc) return false;
  const std::string target = path.isEmpty() ? doc->fileName() : path.toStdString();
  std::string error;
  if (!host::ed::saveDocument(doc, target, error)) {
    m_commandLine->Print(QString::fromStdString(error) + "\n");
    QMessageBox::warning(this, "保存图纸", QString("无法保存 %1:\n%2").arg(QString::fromStdString(target), QString::fromStdString(error)));
    return false;
  }
  if (!path.isEmpty()) {
    doc->setFileName(target);
    m_tabs->setTabText(m_tabs->currentIndex(), QFileInfo(path).fileName());
    m_tabs->setTabToolTip(m_tabs->currentIndex(), path);
    AddRecent(path);
  }
  m_commandLine->Print(QString("已保存 %1\n").arg(QString::fromStdString(target)));
  UpdateTitle();
  return true;
}

bool MainWindow::CloseDrawing(int index) {
  AcApDocument* doc = DocumentOf(index);
  if (!doc) return false;
  if (m_input->Waiting()) {
    m_commandLine->Print("** 须等当前命令结束 **\n");
    return false;
  }
  m_tabs->setCurrentIndex(index);
  std::string error;
  if (host::ed::closeDrawing(doc, error)) return true;
  if (!error.empty()) {
    m_commandLine->Print(QString::fromStdString(error) + "\n");
    QMessageBox::warning(this, "保存图纸", QString("无法保存 %1:\n%2").arg(QString::fromStdString(doc->fileName()),
                                                                       QString::fromStdString(error)));
  }
  UpdateTitle();
  return false;
}

void MainWindow::RunCommand(const QString& name) {
  if (m_input->Waiting()) {
    m_commandLine->Print(QString("** 命令 %1 须等当前命令结束 **\n").arg(name));
    return;
  }
  m_commandLine->Print(QString("命令: %1\n").arg(name));
  host::ed::commandLine().runCommand(name.toStdString());
  ApplyPending();
  UpdateTitle();
}

DrawingView* MainWindow::CurrentView() const { return qobject_cast<DrawingView*>(m_tabs->currentWidget()); }

AcApDocument* MainWindow::DocumentOf(int index) const {
  QWidget* page = m_tabs->widget(index);
  for (const auto& tab : m_tabList)
    if (tab->view == page) return tab->doc;
  return nullptr;
}

int MainWindow::TabCount() const { return m_tabs->count(); }

MainWindow::Tab* MainWindow::TabOf(const AcApDocument* doc) const {
  for (const auto& tab : m_tabList)
    if (tab->doc == doc) return tab.get();
  return nullptr;
}

QString MainWindow::StatusText() const { return m_coords->text() + " | " + m_units->text(); }

void MainWindow::TabActivated(int index) {
  AcApDocument* doc = DocumentOf(index);
  if (doc && acDocManagerPtr()->curDocument() != doc) acDocManagerPtr()->activateDocument(doc);
  m_units->setText(doc ? QString("单位: %1").arg(unitName(doc->database()->insunits())) : QString());
  UpdateTitle();
}

void MainWindow::ApplyPending() {
  for (const auto& tab : m_tabList) {
    if (tab->watch->pending.empty()) continue;
    const std::set<AcDbObjectId> ids = std::move(tab->watch->pending);
    tab->watch->pending.clear();
    for (AcDbObjectId id : ids) tab->view->Scene().Refresh(id);
    tab->view->Redraw();
  }
  UpdateTitle();
}

void MainWindow::UpdateTitle() {
  AcApDocument* doc = DocumentOf(m_tabs->currentIndex());
  setWindowTitle(doc ? QString("envline - %1%2").arg(QString::fromStdString(doc->fileName()), doc->isModified() ? " *" : "")
                     : QString("envline"));
  for (int i = 0; i < m_tabs->count(); ++i)
    if (AcApDocument* d = DocumentOf(i)) {
      const QString name = QFileInfo(QString::fromStdString(d->fileName())).fileName();
      m_tabs->setTabText(i, d->isModified() ? name + " *" : name);
    }
}

void MainWindow::displayUpdated() {
  ApplyPending();
  for (const auto& tab : m_tabList) {
    tab->view->Scene().RefreshHighlights();
    tab->view->Redraw();
  }
  if (DrawingView* v = CurrentView()) v->repaint();
}

void MainWindow::viewChanged(const AcApDocument* doc) {
  Tab* tab = TabOf(doc);
  if (!tab) return;
  const AcDbViewTableRecord v = host::ed::currentView(doc);
  const AcGePoint2d c = v.centerPoint();
  tab->view->ZoomWindow(QRectF(c.x - v.width() / 2, c.y - v.height() / 2, v.width(), v.height()));
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (m_input->Waiting()) m_input->Answer(host::ed::InputReply::cancel());
  while (m_tabs->count() > 0)
    if (!CloseDrawing(m_tabs->count() - 1)) {
      event->ignore();
      return;
    }
  event->accept();
}

}  // namespace gui
