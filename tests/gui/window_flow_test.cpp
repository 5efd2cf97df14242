// The desktop window end to end: open a sample, show the single outline
// dialog, pick a tool with a window and its centre in the drawing view,
// compute, export to SAT, and the bad paths (nothing picked, the point
// cancelled, a drawing that does not open, a save that fails, closing a
// modified drawing). The same picks given to the headless host give the
// same outline. With ENVLINE_SCREENSHOTS=DIR the steps are saved as PNG.
#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtGui/QScreen>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QRadioButton>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTableView>

#include <functional>

#include "app/gui/command_line_widget.h"
#include "app/gui/main_window.h"
#include "app/gui/module_host.h"
#include "app/gui/qt_services.h"
#include "app/gui/view/drawing_view.h"
#include "app/gui/window_input.h"
#include "host/db/operations.h"
#include "host/ed/command_line.h"
#include "host/ed/editor_input.h"
#include "host/ed/document.h"
#include "host/ed/host_commands.h"
#include "host/ed/command_stack.h"
#include "host/ed/rx_app.h"
#include "shell/knife_diagram_factory.h"
#include "ui/bulk_gen_encircle_line_dlg.h"
#include "ui/encircle_line_cal_dlg.h"
#include "ui/qt/dialog_views.h"
#include "util/entity_utils.h"

namespace {

const QString kSamples = QStringLiteral(ENVLINE_SOURCE_DIR "/samples/");

// Steps run one after another from a timer, each when its condition holds;
// they go on inside the nested event loops of prompts and modal dialogs.
class Script : public QObject {
 public:
  void Add(std::function<bool()> ready, std::function<void()> act, QString what) {
    m_steps.push_back({std::move(ready), std::move(act), std::move(what)});
  }
  // Runs the steps; false (naming the step) when one is not ready in time.
  bool Run(std::function<void()> start, int timeoutMs = 30000) {
    QTimer timer;
    timer.setInterval(20);
    QObject::connect(&timer, &QTimer::timeout, [this] {
      if (m_next < m_steps.size() && m_steps[m_next].ready()) {
        auto act = m_steps[m_next++].act;
        act();
      }
    });
    timer.start();
    QTimer::singleShot(0, [start] { start(); });
    QElapsedTimer clock;
    clock.start();
    while (m_next < m_steps.size() && clock.elapsed() < timeoutMs) QTest::qWait(20);
    timer.stop();
    if (m_next < m_steps.size()) m_failed = m_steps[m_next].what;
    return m_next == m_steps.size();
  }
  QString Failed() const { return m_failed; }

 private:
  struct Step {
    std::function<bool()> ready;
    std::function<void()> act;
    QString what;
  };
  std::vector<Step> m_steps;
  std::size_t m_next = 0;
  QString m_failed;
};

void shot(const QString& name) {
  const QString dir = qEnvironmentVariable("ENVLINE_SCREENSHOTS");
  if (dir.isEmpty()) return;
  QDir().mkpath(dir);
  QApplication::processEvents();
  if (QScreen* screen = QGuiApplication::primaryScreen()) screen->grabWindow(0).save(dir + "/" + name + ".png");
}

// Moves a dialog to the window's lower right corner, as a user drags it off
// the drawing, for the pictures.
void aside(QWidget* dialog, QWidget* window) {
  const QRect w = window->geometry();
  dialog->move(w.right() - dialog->width() - 10, w.bottom() - dialog->height() - 150);
}

template <class T>
T* child(const char* name) {
  for (QWidget* w : QApplication::topLevelWidgets())
    if (T* c = w->findChild<T*>(name)) return c;
  return nullptr;
}

QWidget* dialogWindow() {
  for (QWidget* w : QApplication::topLevelWidgets())
    if (w->objectName() == "CEncircleLineCalDlg") return w;
  return nullptr;
}

bool dialogVisible() {
  QWidget* d = dialogWindow();
  return d && d->isVisible();
}

std::vector<std::pair<double, double>> vertices(AcDbObjectId id) {
  std::vector<std::pair<double, double>> out;
  AcDbObjectPointer<AcDbPolyline> p(id, AcDb::kForRead);
  if (p)
    for (const auto& v : p->vertices()) out.emplace_back(v.point.x, v.point.y);
  return out;
}

}  // namespace

class WindowFlowTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void initTestCase() {
    gui::InstallQtTranslations();
    m_window = std::make_unique<gui::MainWindow>();
    std::string error;
    QVERIFY2(gui::LoadModule(*m_window, gui::ModulePath(), error), error.c_str());
    // The module started through its entry point: its commands are its own.
    QCOMPARE(acrxDynamicLinkerPtr()->loadedModules().size(), std::size_t(1));
    QCOMPARE(acedRegCmdsPtr()->commandsOfGroup("VKEncircleLine").size(), std::size_t(3));
    // The pictures show the whole screen: the window fills it.
    if (!qEnvironmentVariableIsEmpty("ENVLINE_SCREENSHOTS"))
      m_window->setGeometry(QGuiApplication::primaryScreen()->availableGeometry());
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
  }

  void aDrawingThatDoesNotOpenIsReportedAndTheWindowStaysUsable() {
    Script s;
    QString text;
    s.Add([] { return QApplication::activeModalWidget() != nullptr; },
          [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box) text = box->text();
            QApplication::activeModalWidget()->close();
          },
          "the message box");
    bool opened = true;
    QVERIFY2(s.Run([&] { opened = m_window->OpenDrawing(kSamples + "no_such_drawing.dxf"); }), qPrintable(s.Failed()));
    QVERIFY(!opened);
    QVERIFY(text.contains("no_such_drawing.dxf"));
    QCOMPARE(m_window->TabCount(), 0);
  }

  void openASample() {
    QVERIFY(m_window->OpenDrawing(kSamples + "tool_sheet.dxf"));
    QCOMPARE(m_window->TabCount(), 1);
    QVERIFY(m_window->CurrentView()->Scene().EntityCount() > 50);
    m_window->CurrentView()->ZoomWindow(QRectF(-20, -30, 160, 70));
    shot("1-open");
  }

  void theDialogShowsItsControlsWithTheirDefaults() {
    m_window->RunCommand("VKTOOLDESIGNProfileAuto3D");
    QVERIFY(dialogVisible());
    QCOMPARE(dialogWindow()->windowTitle(), QString("包络线计算"));
    QCOMPARE(child<QLineEdit>("IDC_1007")->text(), QString("0.0005"));
    QCOMPARE(child<QLineEdit>("IDC_1022")->text(), QString("0.001"));
    QCOMPARE(child<QLineEdit>("IDC_1024")->text(), QString("1e-06"));
    QCOMPARE(child<QLineEdit>("IDC_1023")->text(), QString("0.3"));
    QCOMPARE(child<QLineEdit>("IDC_1026")->text(), QString("5"));
    QVERIFY(child<QRadioButton>("IDC_1008")->isChecked());
    QCOMPARE(child<QRadioButton>("IDC_1009")->text(), QString("下半边"));
    QVERIFY(child<QCheckBox>("IDC_1010")->isChecked());
    QVERIFY(!child<QCheckBox>("IDC_1012")->isChecked());
    QVERIFY(child<QCheckBox>("IDC_1013")->isChecked());
    QVERIFY(!child<QCheckBox>("IDC_1014")->isChecked());
    QCOMPARE(child<QPushButton>("IDC_1021")->text(), QString("选择刀具图"));
    QCOMPARE(child<QPushButton>("IDC_1025")->text(), QString("选择包络线导出3D"));
    QVERIFY(!child<QPushButton>("IDC_1011")->isVisible());  // "算法1" stays hidden
    // One dialog, however often the command runs.
    CEncircleLineCalDlg* first = CEncircleLineCalDlg::ModulePointer();
    m_window->RunCommand("VKTOOLDESIGNProfileAuto3D");
    QCOMPARE(CEncircleLineCalDlg::ModulePointer(), first);
    shot("2-dialog");
  }

  void pickingNothingOrCancellingThePointShowsTheDialogAgain() {
    const int before = host::allEntities(db()).length();
    Script s;
    s.Add([&] { return waitingFor("请选择需要计算轮廓的对象") && !dialogVisible(); },
          [&] { QTest::keyClick(view(), Qt::Key_Return); }, "the selection prompt (nothing picked)");
    QVERIFY2(s.Run([] { child<QPushButton>("IDC_1021")->click(); }), qPrintable(s.Failed()));
    QTRY_VERIFY(dialogVisible());
    Script c;
    c.Add([&] { return waitingFor("请选择需要计算轮廓的对象"); }, [&] { dragWindow({-8, -13}, {118, 21}); }, "select");
    c.Add([&] { return waitingFor("请选择需要计算轮廓的对象"); }, [&] { QTest::keyClick(view(), Qt::Key_Return); }, "end");
    c.Add([&] { return waitingFor("请选择中心点"); }, [&] { QTest::keyClick(view(), Qt::Key_Escape); }, "cancel the point");
    QVERIFY2(c.Run([] { child<QPushButton>("IDC_1021")->click(); }), qPrintable(c.Failed()));
    QTRY_VERIFY(dialogVisible());
    QCOMPARE(host::allEntities(db()).length(), before);
  }

  void pickAToolComputeAndSeeTheOutlineHighlighted() {
    Script s;
    s.Add([&] { return waitingFor("请选择需要计算轮廓的对象") && !dialogVisible(); },
          [&] {
            shot("3-select-prompt");
            dragWindow({-8, -13}, {118, 21});
          },
          "the selection prompt");
    s.Add([&] { return waitingFor("请选择需要计算轮廓的对象"); }, [&] { QTest::keyClick(view(), Qt::Key_Return); },
          "Enter");
    s.Add([&] { return waitingFor("请选择中心点"); },
          [&] { QTest::mouseClick(view(), Qt::LeftButton, {}, view()->ToScreen({50, 0}).toPoint()); }, "the centre");
    QVERIFY2(s.Run([] { child<QPushButton>("IDC_1021")->click(); }), qPrintable(s.Failed()));
    QTRY_VERIFY(dialogVisible());
    CEncircleLineCalDlg* dialog = CEncircleLineCalDlg::ModulePointer();
    QVERIFY(!dialog->m_idOutline.isNull());
    AcDbObjectPointer<AcDbPolyline> outline(dialog->m_idOutline, AcDb::kForRead);
    QVERIFY(outline);
    QCOMPARE(QString::fromStdString(outline->layer()), QString("TempEncircleLine"));
    QVERIFY(outline->isHighlighted());
    QVERIFY(outline->isClosed());
    outline.close();
    m_outline = vertices(dialog->m_idOutline);
    QVERIFY(m_outline.size() >= 4);
    QVERIFY(m_window->CommandLine()->History().contains("请选择中心点"));
    aside(dialogWindow(), m_window.get());
    shot("4-outline");
  }

  void theHeadlessHostGivesTheSameOutlineForTheSamePicks() {
    std::string error;
    auto* input = host::ed::commandLine().input();
    host::ed::TextInput answers({"W -8,-13 118,21", "", "50,0"});
    host::ed::commandLine().setInput(&answers);
    AcApDocument* windowDoc = acDocManagerPtr()->curDocument();
    QVERIFY(host::ed::openDrawing((kSamples + "tool_sheet.dxf").toStdString(), error));
    AcApDocument* headless = acDocManagerPtr()->curDocument();
    CEncircleLineCalDlg dialog;  // no window: the defaults
    dialog.OnBnClickedOutline();
    host::ed::commandLine().setInput(input);
    const auto same = vertices(dialog.m_idOutline);
    acDocManagerPtr()->closeDocument(headless);
    acDocManagerPtr()->setCurDocument(windowDoc);
    QCOMPARE(same.size(), m_outline.size());
    for (std::size_t i = 0; i < same.size(); ++i) {
      QCOMPARE(same[i].first, m_outline[i].first);
      QCOMPARE(same[i].second, m_outline[i].second);
    }
  }

  void exportTheOutlineToSat() {
    QTemporaryDir dir;
    const AcDbObjectId outline = CEncircleLineCalDlg::ModulePointer()->m_idOutline;
    QString title, proposed, message;
    Script s;
    s.Add([&] { return waitingFor("请选择包络线") && !dialogVisible(); },
          [&] {
            const auto v = m_outline[1];
            QTest::mouseClick(view(), Qt::LeftButton, {}, view()->ToScreen({v.first, v.second}).toPoint());
          },
          "the outline prompt");
    s.Add([&] { return waitingFor("请选择包络线"); }, [&] { QTest::keyClick(view(), Qt::Key_Return); }, "Enter");
    s.Add([] { return qobject_cast<QFileDialog*>(QApplication::activeModalWidget()) != nullptr; },
          [&] {
            auto* d = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            title = d->windowTitle();
            shot("5-save-dialog");
            QCOMPARE(d->findChild<QLineEdit*>("fileNameEdit")->text(), QString("T-1001"));  // the tool number
            d->findChild<QLineEdit*>("fileNameEdit")->setText(dir.filePath("t1001"));  // no extension typed
            QMetaObject::invokeMethod(d, "accept", Qt::QueuedConnection);
          },
          "the save-file dialog");
    s.Add([] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr; },
          [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            message = box->text();
            shot("6-exported");
            box->accept();
          },
          "the result");
    QVERIFY2(s.Run([] { child<QPushButton>("IDC_1025")->click(); }), qPrintable(s.Failed()));
    QTRY_VERIFY(dialogVisible());
    QCOMPARE(title, QString("请选择保存三维文件路径(文件名称只能英文)"));
    QCOMPARE(message, QString("导出成功"));
    QVERIFY(QFileInfo(dir.filePath("t1001.sat")).size() > 1000);  // ".sat" added
    QVERIFY(!outline.isErased());  // "是否删除包络线" is off
  }

  void theHiddenButtonsDriverRunsFromItsCommand() {
    const int before = util::SelectAllOnLayer("TempEncircleLine").length();
    Script s;
    s.Add([&] { return waitingFor("请选择需要计算轮廓的对象"); }, [&] { dragWindow({192, -14}, {318, 22}); }, "select");
    s.Add([&] { return waitingFor("请选择需要计算轮廓的对象"); }, [&] { QTest::keyClick(view(), Qt::Key_Return); }, "end");
    s.Add([&] { return waitingFor("请选择中心点"); }, [&] { m_window->Input()->Answer(host::ed::InputReply::ofText("250,0")); },
          "centre");
    QVERIFY2(s.Run([&] { m_window->RunCommand("ENVLINEHATCH"); }), qPrintable(s.Failed()));
    QTRY_VERIFY(dialogVisible());
    QCOMPARE(util::SelectAllOnLayer("TempEncircleLine").length(), before + 1);
    QVERIFY(util::SelectAllOnLayer("TempEncircleLineClone").isEmpty());
  }

  void aFailingSaveKeepsTheDrawingOpenAndModified() {
    AcApDocument* doc = m_window->DocumentOf(0);
    QVERIFY(doc->isModified());
    Script s;
    s.Add([] { return QApplication::activeModalWidget() != nullptr; }, [] { QApplication::activeModalWidget()->close(); },
          "the message box");
    bool saved = true;
    QVERIFY2(s.Run([&] { saved = m_window->SaveDrawing("/nonexistent-dir/out.dxf"); }), qPrintable(s.Failed()));
    QVERIFY(!saved);
    QVERIFY(doc->isModified());
    QCOMPARE(m_window->TabCount(), 1);
  }

  void closingAModifiedDrawingAsksFirst() {
    Script keep;
    keep.Add([] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr; },
             [] {
               auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
               box->button(QMessageBox::Cancel)->click();
             },
             "the question");
    bool closed = true;
    QVERIFY2(keep.Run([&] { closed = m_window->CloseDrawing(0); }), qPrintable(keep.Failed()));
    QVERIFY(!closed);
    QCOMPARE(m_window->TabCount(), 1);
    Script discard;
    discard.Add([] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr; },
                [] {
                  auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                  box->button(QMessageBox::Discard)->click();
                },
                "the question");
    QVERIFY2(discard.Run([&] { closed = m_window->CloseDrawing(0); }), qPrintable(discard.Failed()));
    QVERIFY(closed);
    QCOMPARE(m_window->TabCount(), 0);
  }

  void typedOpenAndCloseGainAndLoseTabsAndCloseAsksToSave() {
    Script open;
    open.Add([&] { return m_window->Input()->Waiting(); },
             [&] { m_window->Input()->Answer(host::ed::InputReply::ofText((kSamples + "step_drill.dxf").toStdString())); },
             "the file name");
    QVERIFY2(open.Run([&] { m_window->RunCommand("OPEN"); }), qPrintable(open.Failed()));
    QCOMPARE(m_window->TabCount(), 1);
    QCOMPARE(m_window->DocumentOf(0), acDocManagerPtr()->curDocument());
    Script erase;
    erase.Add([&] { return m_window->Input()->Waiting(); }, [&] { m_window->Input()->Answer(host::ed::InputReply::ofText("A")); },
              "select all");
    erase.Add([&] { return m_window->Input()->Waiting(); }, [&] { m_window->Input()->Answer(host::ed::InputReply::enter()); },
              "Enter");
    QVERIFY2(erase.Run([&] { m_window->RunCommand("ERASE"); }), qPrintable(erase.Failed()));
    QVERIFY(m_window->DocumentOf(0)->isModified());
    for (const auto button : {QMessageBox::Cancel, QMessageBox::Discard}) {
      Script close;
      close.Add([] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr; },
                [button] { qobject_cast<QMessageBox*>(QApplication::activeModalWidget())->button(button)->click(); },
                "the question");
      QVERIFY2(close.Run([&] { m_window->RunCommand("CLOSE"); }), qPrintable(close.Failed()));
      QCOMPARE(m_window->TabCount(), button == QMessageBox::Cancel ? 1 : 0);
    }
    QCOMPARE(acDocManagerPtr()->documentCount(), 0);
  }

  void theBatchDialogFollowsTheActiveDrawing() {
    if (CEncircleLineCalDlg* d = CEncircleLineCalDlg::ModulePointer()) d->destroyWindow();
    QVERIFY(m_window->OpenDrawing(kSamples + "tool_sheet.dxf"));
    m_window->CurrentView()->ZoomWindow(QRectF(-20, -200, 560, 260));
    // A task with the sheet's three tools, as "新增刀具" leaves them.
    CBatchTaskInfo task;
    task.m_strName = "铣刀任务";
    const struct {
      const char* name;
      AcGePoint3d a, b, centre;
    } tools[] = {{"T-1001", {-8, -13, 0}, {118, 21, 0}, {50, 0, 0}},
                 {"T-1003", {192, -14, 0}, {318, 22, 0}, {250, 0, 0}},
                 {"T-1004", {392, -13, 0}, {508, 21, 0}, {445, 0, 0}}};
    for (const auto& t : tools) {
      CBatchToolInfo tool;
      tool.m_strName = t.name;
      tool.m_ptCenter = t.centre;
      tool.m_arrEntityIds = host::ed::selectWindow(db(), t.a, t.b);
      task.m_vecTools.push_back(tool);
    }
    CKnifeDiagramFactory::Instance().GetTaskStore(db())->push_back(task);
    QVERIFY(m_window->OpenDrawing(kSamples + "step_drill.dxf"));
    m_window->RunCommand("VKTOOLDESIGNProfilesAuto3D");
    ui::qt::BatchDialogView* batch = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
      if (auto* v = dynamic_cast<ui::qt::BatchDialogView*>(w); v && v->isVisible()) batch = v;
    QVERIFY(batch);
    QCOMPARE(batch->windowTitle(), QString("批量生成包络线"));
    auto* tabs = m_window->findChild<QTabWidget*>();
    QCOMPARE(batch->TaskGrid()->model()->rowCount(), 0);  // step_drill has no tasks
    shot("7-batch-step-drill");
    tabs->setCurrentIndex(0);
    QCOMPARE(batch->TaskGrid()->model()->rowCount(), 1);
    QCOMPARE(batch->TaskGrid()->model()->index(0, 1).data().toString(), QString("铣刀任务"));
    QCOMPARE(batch->TaskGrid()->model()->index(0, 2).data().toString(), QString("未开始"));
    // Run the task from the dialog: every tool computed, the end reported.
    batch->TaskGrid()->selectRow(0);
    QCOMPARE(batch->ToolGrid()->model()->rowCount(), 3);
    Script run;
    QString ended;
    run.Add([] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr; },
            [&] {
              auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
              ended = box->text();
              box->accept();
            },
            "the end of the run");
    QVERIFY2(run.Run([&] { batch->ButtonById(1019)->click(); }), qPrintable(run.Failed()));
    QCOMPARE(ended, QString("执行任务结束"));
    for (int r = 0; r < 3; ++r) QCOMPARE(batch->ToolGrid()->model()->index(r, 2).data().toString(), QString("已完成"));
    QCOMPARE(util::SelectAllOnLayer("TempEncircleLine").length(), 3);
    batch->ToolGrid()->selectRow(1);
    batch->ButtonById(1034)->click();  // "高亮包络线"
    aside(batch, m_window.get());
    QTest::qWait(50);
    shot("8-batch-tool-sheet");
    tabs->setCurrentIndex(1);
    QCOMPARE(batch->TaskGrid()->model()->rowCount(), 0);
    CBulkGenEncircleLineDlg::ModulePointer()->destroyWindow();
    QTRY_COMPARE(CBulkGenEncircleLineDlg::ModulePointer(), nullptr);
    while (m_window->TabCount() > 0) {
      Script close;  // the computed drawing is modified: its changes are dropped
      close.Add([] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr; },
                [] { qobject_cast<QMessageBox*>(QApplication::activeModalWidget())->button(QMessageBox::Discard)->click(); },
                "the question");
      bool modified = m_window->DocumentOf(0)->isModified();
      if (modified) QVERIFY2(close.Run([&] { m_window->CloseDrawing(0); }), qPrintable(close.Failed()));
      else QVERIFY(m_window->CloseDrawing(0));
    }
  }

  void cleanupTestCase() {
    if (CEncircleLineCalDlg* d = CEncircleLineCalDlg::ModulePointer()) d->destroyWindow();
    QTest::qWait(50);
    m_window.reset();
  }

 private:
  gui::DrawingView* view() const { return m_window->CurrentView(); }
  AcDbDatabase* db() const { return acDocManagerPtr()->curDocument()->database(); }
  bool waitingFor(const char* prompt) const {
    return m_window->Input()->Waiting() && m_window->CommandLine()->Prompt().contains(QString::fromUtf8(prompt));
  }
  void dragWindow(QPointF from, QPointF to) {
    const QPoint a = view()->ToScreen(from).toPoint(), b = view()->ToScreen(to).toPoint();
    QTest::mousePress(view(), Qt::LeftButton, {}, a);
    QTest::mouseMove(view(), b);
    QTest::mouseRelease(view(), Qt::LeftButton, {}, b);
  }

  std::unique_ptr<gui::MainWindow> m_window;
  std::vector<std::pair<double, double>> m_outline;
};

QTEST_MAIN(WindowFlowTest)
#include "window_flow_test.moc"
