// The project's job list as a table: one row per place. Jobs are addressed by
// place, never by key (keys collide after deletions). The model reads the
// list on each call; Reset() tells the views that the list may have changed.
#pragma once

#include <QAbstractTableModel>
#include <functional>
#include <memory>

namespace ketrova {
class CConverter;
}

namespace kor {

class JobListModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  enum Column { kEnabled, kIndex, kCaption, kSource, kTarget, kWrite, kValid, kColumnCount };
  explicit JobListModel(std::function<std::shared_ptr<ketrova::CConverter>()> project,
                        QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // A tick writes the job's Enabled; the counts follow at the list's next
  // renumbering.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  void Reset();

 private:
  std::function<std::shared_ptr<ketrova::CConverter>()> project_;
};

}  // namespace kor
