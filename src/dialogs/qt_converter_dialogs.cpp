#include "dialogs/qt_converter_dialogs.h"

#include <QApplication>

#include "dialogs/frm_data_source.h"
#include "dialogs/frm_engine.h"
#include "dialogs/frm_job.h"
#include "dialogs/frm_projekt.h"
#include "platform/ui/user_interface.h"

namespace ketrova::dialogs {

bool QtConverterDialogs::EditProject(CConverter& project) {
  FrmProjekt form(QApplication::activeWindow());
  form.SetConverter(&project);
  return form.Execute();
}

void QtConverterDialogs::Run(CConverter& project, const std::string& fileName) {
  FrmEngine form(QApplication::activeWindow());
  form.SetConverter(&project);
  form.Execute(fileName);
}

bool QtConverterDialogs::EditJob(CConverter& project, CJob& job) {
  frmJob form(QApplication::activeWindow());
  form.SetConverter(&project);
  return form.Execute(job);
}

bool QtConverterDialogs::SelectDatabase(CConverter& project, int direction, CDatabase& database) {
  return RunDataSourceDialog(project, direction, database);
}

}  // namespace ketrova::dialogs
