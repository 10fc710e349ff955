#include "job_list_model.h"

#include <QBrush>
#include <QColor>

#include "core/converter.h"
#include "jobs/jobs.h"

namespace kor {
namespace {

QString Q(const std::string& text) {
  return QString::fromStdString(text);
}

}  // namespace

int JobListModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid()) return 0;
  auto project = Project();
  return project ? project->Jobs().Count() : 0;
}

int JobListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

QVariant JobListModel::data(const QModelIndex& index, int role) const {
  auto project = Project();
  if (!project || !index.isValid() || index.row() >= project->Jobs().Count()) return {};
  const ketrova::CJob& job = project->Jobs().Item(index.row() + 1);
  if (index.column() == kEnabled && role == Qt::CheckStateRole)
    return job.Enabled ? Qt::Checked : Qt::Unchecked;
  if (role == Qt::ToolTipRole && index.column() == kValid && !job.Validate)
    return Q(job.ValidateError);
  if (role == Qt::ForegroundRole && index.column() == kValid && !job.Validate)
    return QBrush(QColor(170, 20, 20));
  if (role != Qt::DisplayRole) return {};
  switch (index.column()) {
    case kIndex:
      return job.Index;
    case kCaption:
      return Q(job.Caption);
    case kSource:
      return Q(job.JobSource().Name);
    case kTarget:
      return Q(job.JobDest().Name);
    case kWrite:
      return job.DestinationUpdate
                 ? QStringLiteral("aktualisieren über %1").arg(Q(job.JobDest().KeyField))
                 : QStringLiteral("einfügen");
    case kValid:
      // An empty error text does not make a job valid; only Validate does.
      if (job.Validate) return QStringLiteral("gültig");
      return job.ValidateError.empty() ? QStringLiteral("ungültig")
                                       : QStringLiteral("ungültig: %1").arg(Q(job.ValidateError));
    default:
      return {};
  }
}

QVariant JobListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  static const char* const kHeaders[] = {"Aktiv", "Nr.",       "Aufgabe", "Quelle",
                                         "Ziel",  "Schreiben", "Prüfung"};
  return QString::fromUtf8(kHeaders[section]);
}

Qt::ItemFlags JobListModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (index.column() == kEnabled) flags |= Qt::ItemIsUserCheckable;
  return flags;
}

bool JobListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  auto project = Project();
  if (!project || role != Qt::CheckStateRole || index.column() != kEnabled ||
      index.row() >= project->Jobs().Count())
    return false;
  project->Jobs().Item(index.row() + 1).Enabled = value.toInt() == Qt::Checked;
  emit dataChanged(index, index, {Qt::CheckStateRole});
  return true;
}

}  // namespace kor
