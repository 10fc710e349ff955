// The project's job list as a table: one row per place. Jobs are addressed by
// place, never by key (keys collide after deletions).
#pragma once

#include <QAbstractTableModel>

#include "project_model.h"

namespace kor {

class JobListModel : public ProjectModel<QAbstractTableModel> {
 public:
  enum Column { kEnabled, kIndex, kCaption, kSource, kTarget, kWrite, kValid, kColumnCount };
  explicit JobListModel(ProjectSource project, QObject* parent = nullptr)
      : ProjectModel(std::move(project), parent) {}

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // A tick writes the job's Enabled; the counts follow at the list's next
  // renumbering.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
};

}  // namespace kor
