// "KetrovatorCTL.frmLogs": the project's event log, the messages of the last
// action (index, message, key), multi-line messages shown whole; copy to the
// clipboard and clear.
#pragma once

#include <QAbstractTableModel>

#include "document.h"

class QTableView;

namespace kor {

class LogListModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  explicit LogListModel(std::function<std::shared_ptr<ketrova::CConverter>()> project,
                        QObject* parent = nullptr);
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  void Reset();

 private:
  std::function<std::shared_ptr<ketrova::CConverter>()> project_;
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
