// "KetrovatorCTL.frmLogs": the project's event log, the messages of the last
// action (index, message, key), multi-line messages shown whole; copy to the
// clipboard and clear.
#pragma once

#include <QAbstractTableModel>

#include "document.h"
#include "project_model.h"

class QTableView;

namespace kor {

class LogListModel : public ProjectModel<QAbstractTableModel> {
 public:
  explicit LogListModel(ProjectSource project, QObject* parent = nullptr)
      : ProjectModel(std::move(project), parent) {}
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
};

class LogsDocument : public Document {
  Q_OBJECT
 public:
  explicit LogsDocument(DocumentContext context, QWidget* parent = nullptr);
  void Refresh() override;
  // Every message, one after the other, as the clipboard receives them.
  QString AllText() const;

 private:
  LogListModel* model_;
  QTableView* list_;
};

}  // namespace kor
