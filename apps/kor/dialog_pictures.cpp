#include "dialog_pictures.h"

#include <QApplication>

#include "core/converter.h"
#include "core/enums.h"
#include "dialogs/frm_data_source.h"
#include "dialogs/frm_engine.h"
#include "dialogs/frm_job.h"
#include "dialogs/frm_projekt.h"
#include "jobs/jobs.h"
#include "stores/database.h"

namespace kor {
namespace {

void Save(QWidget& window, const QDir& folder, const QString& name) {
  window.resize(window.size().expandedTo(window.sizeHint()));
  window.show();
  QApplication::processEvents();
  window.grab().save(folder.filePath(name + ".png"), "PNG");
  window.hide();
}

}  // namespace

void GrabDialogs(ketrova::CConverter& project, const QDir& folder) {
  ketrova::dialogs::FrmEngine engine;
  engine.SetConverter(&project);
  engine.Prepare(project.FileName);
  Save(engine, folder, "frmEngine");

  ketrova::dialogs::FrmProjekt options;
  options.SetConverter(&project);
  options.Load();
  Save(options, folder, "frmProjekt");

  for (int type = ketrova::dbtAccess; type <= ketrova::dbtText; ++type) {
    ketrova::dialogs::frmDataSource store;
    store.DSType = ketrova::dbdTarget;
    store.Converter = &project;
    store.Prepare(project.DestDataBase());
    store.ShowPage(type);
    Save(store, folder, QStringLiteral("frmDataSource-%1").arg(type));
  }

  if (project.Jobs().Count() > 0) {
    ketrova::dialogs::frmJob job;
    job.SetConverter(&project);
    job.Load(project.Jobs().Item(1));
    for (int page = 0; page < 5; ++page) {
      job.ShowPage(page);
      Save(job, folder, QStringLiteral("frmJob-%1").arg(page + 1));
    }
  }
}

}  // namespace kor
