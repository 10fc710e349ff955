// "KetrovatorCTL.frmJobs": the project's jobs with their state, and the
// buttons to tick all, untick all, edit, delete and add a job. Each button
// does its work and then raises the host's click event with its key, so that
// the plug-in updates the information line.
#pragma once

#include "document.h"

class QTableView;

namespace kor {

class JobListModel;

class JobsDocument : public Document {
  Q_OBJECT
 public:
  explicit JobsDocument(DocumentContext context, QWidget* parent = nullptr);
  void Refresh() override;
  QTableView& List() const { return *list_; }

 private:
  // The selected place, 1-based; 0 when nothing is selected.
  int SelectedPlace() const;
  void SelectAll(bool enabled);
  // JobEdit on the place (-1 to edit it, or the place after which a new job
  // goes); a result other than "OK" or "CANCEL" is shown.
  void Edit(int place, int indexAfter);
  void Delete();
  void Finish(const char* key);

  JobListModel* model_;
  QTableView* list_;
};

}  // namespace kor
