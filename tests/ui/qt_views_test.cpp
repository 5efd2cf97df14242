// The Qt views of the batch dialogs on the offscreen platform: the grids
// follow the controller, buttons reach it, the modal views refuse what their
// controllers refuse, and the progress window shows the display's text.
#include <QApplication>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTimer>
#include <QtTest/QtTest>

#include "host/dxf/dxf_file.h"
#include "host/ed/document.h"
#include "shell/knife_diagram_factory.h"
#include "ui/qt/dialog_views.h"

using host::ed::queuedAnswers;

class QtViews : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void init() {
    host::dxf::Diagnostics diag;
    QVERIFY(host::dxf::readDxfFile(std::string(ENVLINE_SOURCE_DIR) + "/samples/tool_sheet.dxf", m_drawing, diag));
    m_doc = acDocManagerPtr()->openBorrowedDocument(m_drawing.database.get(), "tool_sheet.dxf");
    queuedAnswers().clear();
  }
  void cleanup() {
    CKnifeDiagramFactory::Instance().DropTaskStore(m_drawing.database.get());
    acDocManagerPtr()->closeDocument(m_doc);
  }

  void gridsFollowTheController() {
    CBatchTaskList& store = *CKnifeDiagramFactory::Instance().GetTaskStore(m_drawing.database.get());
    for (const char* name : {"甲", "乙"}) {
      CBatchTaskInfo task;
      task.m_strName = name;
      store.push_back(task);
    }
    CBatchToolInfo tool;
    tool.m_strName = "T-1";
    tool.m_nExecState = kBatchError;
    store[1].m_vecTools = {tool, tool};
    ui::qt::ModalRunner runner;
    CBulkGenEncircleLineDlg dlg(runner);
    ui::qt::BatchDialogView view(dlg);
    view.show();
    QCOMPARE(view.windowTitle(), QString("批量生成包络线"));
    QCOMPARE(view.TaskGrid()->model()->headerData(1, Qt::Horizontal).toString(), QString("任务名称"));
    QCOMPARE(view.ToolGrid()->model()->headerData(1, Qt::Horizontal).toString(), QString("刀具名称"));
    QCOMPARE(view.TaskGrid()->model()->rowCount(), 2);
    QCOMPARE(view.ToolGrid()->model()->rowCount(), 0);
    QCOMPARE(view.TaskGrid()->selectionMode(), QAbstractItemView::ExtendedSelection);

    // Selecting the second task fills the tool grid from it.
    view.TaskGrid()->selectRow(1);
    QCOMPARE(dlg.SelectedTasks(), std::vector<int>{1});
    QCOMPARE(view.ToolGrid()->model()->rowCount(), 2);
    QCOMPARE(view.ToolGrid()->model()->index(0, 2).data().toString(), QString("生成错误"));
    QCOMPARE(view.ToolGrid()->model()->index(0, 3).data().toString(), QString("未开始"));

    // Every button is there and reaches the controller.
    int buttons = 0;
    for (const auto& b : CBulkGenEncircleLineDlg::Buttons()) {
      QPushButton* button = view.ButtonById(b.nId);
      QVERIFY(button);
      QCOMPARE(button->text(), QString(b.caption));
      ++buttons;
    }
    QCOMPARE(buttons, 14);
    view.TaskGrid()->clearSelection();
    QTest::mouseClick(view.ButtonById(1019), Qt::LeftButton);  // 执行任务 with no task
    QCOMPARE(queuedAnswers().messages(), std::vector<std::string>{"请选择任务数据"});

    // 删除任务 on the selected task: the grids are redrawn.
    view.TaskGrid()->selectRow(0);
    QTest::mouseClick(view.ButtonById(1020), Qt::LeftButton);
    QCOMPARE(view.TaskGrid()->model()->rowCount(), 1);
    QCOMPARE(view.TaskGrid()->model()->index(0, 1).data().toString(), QString("乙"));
  }

  void newTaskThroughTheNameDialog() {
    ui::qt::ModalRunner runner;
    CBulkGenEncircleLineDlg dlg(runner);
    ui::qt::BatchDialogView view(dlg);
    runner.SetParent(&view);
    view.show();
    QStringList seen;
    // The modal name dialog: first OK with nothing (refused), then a name.
    QTimer::singleShot(0, [&] {
      auto* name = dynamic_cast<ui::qt::InputNameView*>(QApplication::activeModalWidget());
      QVERIFY(name);
      seen << name->windowTitle();
      name->accept();
      seen << (name->isVisible() ? "still open" : "closed");
      name->NameEdit()->setText("新任务");
      name->accept();
    });
    QTest::mouseClick(view.ButtonById(1018), Qt::LeftButton);
    QCOMPARE(seen, (QStringList{"输入名称", "still open"}));
    QCOMPARE(queuedAnswers().messages(), std::vector<std::string>{"名称不能为空"});
    QCOMPARE(view.TaskGrid()->model()->rowCount(), 1);
    QCOMPARE(view.TaskGrid()->model()->index(0, 1).data().toString(), QString("新任务"));
  }

  void parameterViewWritesBack() {
    CEncircleParaSetDlg dlg;
    dlg.m_info.m_nAxisDir = 2;
    dlg.m_info.m_tolPoint.setEqualVector(0.3);
    dlg.OnInitDialog();
    ui::qt::ParaSetView view(dlg);
    QCOMPARE(view.windowTitle(), QString("包络线参数设置"));
    QVERIFY(view.Lower()->isChecked());
    QVERIFY(view.RemoveDashed()->isChecked());
    QCOMPARE(view.Edit(1024)->text(), QString("1e-06"));
    view.Edit(1023)->setText("abc");
    view.accept();
    QCOMPARE(view.result(), int(QDialog::Rejected));  // stays open
    QCOMPARE(queuedAnswers().messages(), std::vector<std::string>{"请输入一个数字。"});
    view.Edit(1023)->setText("0.25");
    view.RemoveDashed()->setChecked(false);
    view.accept();
    QCOMPARE(view.result(), int(QDialog::Accepted));
    QCOMPARE(dlg.m_info.m_nAxisDir, 1);
    QCOMPARE(dlg.m_info.m_dStep, 0.25);
    QCOMPARE(dlg.m_info.m_bRemoveDashed, false);
    QCOMPARE(dlg.m_info.m_tolPoint.equalVector(), 0.0005);
  }

  void progressWindowShowsTheSteps() {
    ui::qt::InstallProgressWindows();
    OpenProgress();
    auto* window = dynamic_cast<ui::qt::ProgressWindow*>(&CurrentProgress()->View());
    QVERIFY(window);
    QVERIFY(window->isVisible());
    QVERIFY(!window->parentWidget());
    QCOMPARE(window->windowTitle(), QString("执行进度"));
    StepProgress(10, 3);
    QCOMPARE(window->Bar()->maximum(), 10);
    QCOMPARE(window->Bar()->value(), 3);
    QVERIFY(window->Text()->text().contains("总计：10个 当前处理:第3个"));
    QVERIFY(window->Text()->text().contains("失败：0个 成功：3个"));
    CloseProgress();
    SetProgressViewFactory(nullptr);
  }

 private:
  host::dxf::DxfDrawing m_drawing;
  AcApDocument* m_doc = nullptr;
};

QTEST_MAIN(QtViews)
#include "qt_views_test.moc"
