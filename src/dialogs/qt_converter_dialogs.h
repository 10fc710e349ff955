// QtConverterDialogs: the core's ConverterDialogs on this folder's Qt dialogs,
// set once by the plug-in at start. EditProject opens frmProjekt, Run opens
// frmEngine, EditJob opens the job editor frmJob, SelectDatabase opens the
// data-store dialog.
//
// Each dialog is modal over the active window and is gone when the call
// returns. A QApplication must exist; GUI thread only.
#pragma once

#include "core/dialogs.h"

namespace ketrova::dialogs {

class QtConverterDialogs : public ConverterDialogs {
 public:
  bool EditProject(CConverter& project) override;
  void Run(CConverter& project, const std::string& fileName) override;
  bool EditJob(CConverter& project, CJob& job) override;
  bool SelectDatabase(CConverter& project, int direction, CDatabase& database) override;
};

}  // namespace ketrova::dialogs
