#include "ui/qt/encircle_line_cal_dlg_view.h"

#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtGui/QCloseEvent>
#include <QtGui/QScreen>
#include <QtWidgets/QButtonGroup>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialog>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QRadioButton>

#include "ui/encircle_line_cal_dlg.h"

namespace uiqt {

namespace {

// Numbers as the dialog's edits show them (up to 15 significant digits).
QString number(double v) { return QString::number(v, 'g', 15); }

class Window : public QDialog {
 public:
  Window(CEncircleLineCalDlg& dialog, QWidget* parent) : QDialog(parent, Qt::Tool), m_dialog(dialog) {
    setWindowTitle("包络线计算");
    setObjectName("CEncircleLineCalDlg");
    setModal(false);
    auto* grid = new QGridLayout(this);
    int row = 0;
    auto edit = [&](int id, const char* label) {
      auto* e = new QLineEdit(this);
      e->setObjectName(QString("IDC_%1").arg(id));
      grid->addWidget(new QLabel(label, this), row, 0);
      grid->addWidget(e, row++, 1, 1, 2);
      return e;
    };
    auto check = [&](int id, const char* label, const char* text) {
      auto* c = new QCheckBox(text, this);
      c->setObjectName(QString("IDC_%1").arg(id));
      grid->addWidget(new QLabel(label, this), row, 0);
      grid->addWidget(c, row++, 1, 1, 2);
      return c;
    };
    m_pointTol = edit(CEncircleLineCalDlg::IDC_EDIT_POINT_TOL, "点公差：");
    m_lineTol = edit(CEncircleLineCalDlg::IDC_EDIT_LINE_TOL, "线公差：");
    m_fineTol = edit(CEncircleLineCalDlg::IDC_EDIT_FINE_TOL, "水平竖直线判断公差：");
    m_step = edit(CEncircleLineCalDlg::IDC_EDIT_STEP, "圆弧离散精度：");
    m_break = edit(CEncircleLineCalDlg::IDC_EDIT_BREAK, "左右识别长度：");
    m_upper = new QRadioButton("上半边", this);
    m_lower = new QRadioButton("下半边", this);
    m_upper->setObjectName("IDC_1008");
    m_lower->setObjectName("IDC_1009");
    auto* side = new QButtonGroup(this);
    side->addButton(m_upper, 0);
    side->addButton(m_lower, 1);
    grid->addWidget(new QLabel("计算方位：", this), row, 0);
    grid->addWidget(m_upper, row, 1);
    grid->addWidget(m_lower, row++, 2);
    m_dashed = check(CEncircleLineCalDlg::IDC_CHECK_DASHED, "排除虚线：", "是否排除虚线");
    m_vertical = check(CEncircleLineCalDlg::IDC_CHECK_VERTICAL, "包络线：", "左右包络线是否竖直");
    m_deleteOutline = check(CEncircleLineCalDlg::IDC_CHECK_DELETE_OUTLINE, "删除包络线：", "是否删除包络线");
    m_deleteSolid = check(CEncircleLineCalDlg::IDC_CHECK_DELETE_SOLID, "删除三维模型：", "是否删除三维模型");
    auto button = [&](int id, const char* text) {
      auto* b = new QPushButton(text, this);
      b->setObjectName(QString("IDC_%1").arg(id));
      b->setAutoDefault(false);
      return b;
    };
    QPushButton* outline = button(CEncircleLineCalDlg::IDC_BUTTON_OUTLINE, "选择刀具图");
    QPushButton* exportButton = button(CEncircleLineCalDlg::IDC_BUTTON_EXPORT, "选择包络线导出3D");
    QPushButton* hatch = button(CEncircleLineCalDlg::IDC_BUTTON_HATCH, "算法1");
    hatch->setVisible(false);  // kept, never shown
    grid->addWidget(outline, row, 0, 1, 2);
    grid->addWidget(exportButton, row++, 2);
    grid->addWidget(hatch, row++, 0);
    // The handlers may end with the dialog gone: call them after the click.
    connect(outline, &QPushButton::clicked, this, [this] { Later(&CEncircleLineCalDlg::OnBnClickedOutline); });
    connect(exportButton, &QPushButton::clicked, this, [this] { Later(&CEncircleLineCalDlg::OnBnClickedExport); });
    connect(hatch, &QPushButton::clicked, this, [this] { Later(&CEncircleLineCalDlg::OnBnClickedHatch); });
  }

  void ShowValues(const CEncircleLineCalDlgValues& v) {
    m_pointTol->setText(number(v.m_dPointTol));
    m_lineTol->setText(number(v.m_dLineTol));
    m_fineTol->setText(number(v.m_dFineTol));
    m_step->setText(number(v.m_dStep));
    m_break->setText(number(v.m_dBreakLength));
    (v.m_nSide == 1 ? m_lower : m_upper)->setChecked(true);
    m_dashed->setChecked(v.m_bRemoveDashed == 1);
    m_vertical->setChecked(v.m_bVerticalEnds == 1);
    m_deleteOutline->setChecked(v.m_bDeleteOutline == 1);
    m_deleteSolid->setChecked(v.m_bDeleteSolid == 1);
  }

  bool ReadValues(CEncircleLineCalDlgValues& v, std::string& bad) {
    CEncircleLineCalDlgValues r = v;
    const std::pair<QLineEdit*, double*> edits[] = {{m_pointTol, &r.m_dPointTol}, {m_lineTol, &r.m_dLineTol},
                                                    {m_fineTol, &r.m_dFineTol},   {m_step, &r.m_dStep},
                                                    {m_break, &r.m_dBreakLength}};
    for (const auto& [e, field] : edits) {
      bool ok = false;
      const double d = e->text().trimmed().toDouble(&ok);
      if (!ok) {
        e->setFocus();
        e->selectAll();
        bad = e->text().toStdString();
        return false;
      }
      *field = d;
    }
    r.m_nSide = m_lower->isChecked() ? 1 : 0;
    r.m_bRemoveDashed = m_dashed->isChecked();
    r.m_bVerticalEnds = m_vertical->isChecked();
    r.m_bDeleteOutline = m_deleteOutline->isChecked();
    r.m_bDeleteSolid = m_deleteSolid->isChecked();
    v = r;
    return true;
  }

  bool m_closing = false;

 protected:
  void closeEvent(QCloseEvent* e) override {
    e->accept();
    if (m_closing) return;
    m_closing = true;
    // Destroying the window destroys the dialog; not inside this event.
    CEncircleLineCalDlg* dialog = &m_dialog;
    QTimer::singleShot(0, this, [dialog] { dialog->windowDestroyed(); });
  }
  void reject() override { close(); }

 private:
  void Later(void (CEncircleLineCalDlg::*handler)()) {
    CEncircleLineCalDlg* dialog = &m_dialog;
    QTimer::singleShot(0, this, [this, dialog, handler] {
      if (!m_closing) (dialog->*handler)();
    });
  }

  CEncircleLineCalDlg& m_dialog;
  QLineEdit *m_pointTol, *m_lineTol, *m_fineTol, *m_step, *m_break;
  QRadioButton *m_upper, *m_lower;
  QCheckBox *m_dashed, *m_vertical, *m_deleteOutline, *m_deleteSolid;
};

// The host's handle on the window, and the dialog's controls.
class WindowHandle : public host::ed::DialogWindow, public CEncircleLineCalDlgControls {
 public:
  WindowHandle(CEncircleLineCalDlg& dialog, QWidget* parent) : m_dialog(dialog), m_window(new Window(dialog, parent)) {
    dialog.SetControls(this);
  }
  ~WindowHandle() override {
    m_dialog.SetControls(nullptr);
    if (m_window) {
      m_window->m_closing = true;
      m_window->hide();
      m_window->deleteLater();
    }
  }
  void centreOverParent() override {
    if (!m_window) return;
    m_window->adjustSize();
    const QWidget* parent = m_window->parentWidget();
    const QRect area = parent ? parent->geometry() : m_window->screen()->availableGeometry();
    m_window->move(area.center() - QPoint(m_window->width() / 2, m_window->height() / 2));
  }
  void show() override {
    if (!m_window) return;
    m_window->show();
    m_window->raise();
  }
  void hide() override {
    if (m_window) m_window->hide();
  }
  bool isVisible() const override { return m_window && m_window->isVisible(); }
  void destroy() override {
    if (m_window) m_window->close();
  }
  void ShowValues(const CEncircleLineCalDlgValues& values) override {
    if (m_window) m_window->ShowValues(values);
  }
  bool ReadValues(CEncircleLineCalDlgValues& values, std::string& bad) override {
    return !m_window || m_window->ReadValues(values, bad);
  }

 private:
  CEncircleLineCalDlg& m_dialog;
  QPointer<Window> m_window;
};

}  // namespace

std::unique_ptr<host::ed::DialogWindow> MakeEncircleLineCalDlgWindow(host::ed::ModelessDialog& dialog,
                                                                      QWidget* parent) {
  auto* own = dynamic_cast<CEncircleLineCalDlg*>(&dialog);
  if (!own) return nullptr;
  return std::make_unique<WindowHandle>(*own, parent);
}

}  // namespace uiqt
