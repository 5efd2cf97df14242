// Pictures of the batch dialogs' Qt views on the sample sheet, for a person
// to look at (run under Xvfb): the batch dialog after a run, the parameter
// and name dialogs, and the progress window halfway through.
//
// usage: ui_qt_screens OUT_FOLDER
#include <QApplication>
#include <QTableView>
#include <QTimer>

#include "host/dxf/dxf_file.h"
#include "host/ed/command_line.h"
#include "host/ed/document.h"
#include "shell/knife_diagram_factory.h"
#include "ui/qt/dialog_views.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  if (argc != 2) return 2;
  const QString out = argv[1];
  host::dxf::DxfDrawing drawing;
  host::dxf::Diagnostics diag;
  if (!host::dxf::readDxfFile(std::string(ENVLINE_SOURCE_DIR) + "/samples/tool_sheet.dxf", drawing, diag)) return 1;
  AcApDocument* doc = acDocManagerPtr()->openBorrowedDocument(drawing.database.get(), "tool_sheet.dxf");

  ui::qt::ModalRunner runner;
  CBulkGenEncircleLineDlg dlg(runner);
  ui::qt::BatchDialogView view(dlg);
  CBatchTaskList& store = *CKnifeDiagramFactory::Instance().GetTaskStore(drawing.database.get());
  for (const char* name : {"铣刀组", "钻头组"}) {
    CBatchTaskInfo task;
    task.m_strName = name;
    store.push_back(task);
  }
  dlg.SelectTasks({0});
  host::ed::TextInput input({"W -8,-13 118,21", "", "50,0", "W 192,-14 318,22", "", "250,0", "W 392,-13 508,21", "",
                             "445,0"});
  host::ed::commandLine().setInput(&input);
  for (int i = 0; i < 3; ++i) dlg.OnAddTool();
  dlg.OnRunTasks();  // its closing message goes to the queued answers
  store[0].m_vecTools[1].m_nExportState = kBatchError;
  dlg.SelectTasks({0});
  dlg.SelectTools({1});
  view.show();
  QApplication::processEvents();
  view.grab().save(out + "/batch_dialog.png");

  CEncircleParaSetDlg para;
  para.m_info.m_nAxisDir = 1;
  para.OnInitDialog();
  ui::qt::ParaSetView paraView(para);
  paraView.show();
  QApplication::processEvents();
  paraView.grab().save(out + "/para_set_dialog.png");

  CInputNameDlg name;
  name.m_strName = "0001";
  ui::qt::InputNameView nameView(name);
  nameView.show();
  QApplication::processEvents();
  nameView.grab().save(out + "/input_name_dialog.png");

  ui::qt::InstallProgressWindows();
  OpenProgress();
  SetProgressTitle("正在导出3D（4/10）");
  StepProgress(10, 4);
  auto* progress = dynamic_cast<ui::qt::ProgressWindow*>(&CurrentProgress()->View());
  QApplication::processEvents();
  progress->grab().save(out + "/progress_window.png");
  CloseProgress();
  host::ed::commandLine().setInput(nullptr);
  acDocManagerPtr()->closeDocument(doc);
  return 0;
}
