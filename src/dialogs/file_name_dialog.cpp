#include "dialogs/file_name_dialog.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

#include "dialogs/file_filter.h"

namespace ketrova::dialogs {

std::optional<std::string> ShowFileNameDialog(QWidget* parent, const std::string& vbFilter,
                                              const std::string& folder,
                                              const std::string& fileName) {
  QFileDialog dialog(parent);
  dialog.setObjectName(QStringLiteral("FileOpen"));
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setWindowTitle(QStringLiteral("Öffnen"));
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.setLabelText(QFileDialog::LookIn, QStringLiteral("Suchen in:"));
  dialog.setLabelText(QFileDialog::FileName, QStringLiteral("Name:"));
  dialog.setLabelText(QFileDialog::FileType, QStringLiteral("Dateityp:"));
  dialog.setLabelText(QFileDialog::Accept, QStringLiteral("Öffnen"));
  dialog.setLabelText(QFileDialog::Reject, QStringLiteral("Abbrechen"));
  // Name filters ignore case only while this flag is off.
  dialog.setFilter(dialog.filter() & ~QDir::CaseSensitive);
  const QStringList filters = NameFiltersFromVb(vbFilter);
  if (!filters.isEmpty()) dialog.setNameFilters(filters);

  QString start = QDir::cleanPath(QString::fromStdString(folder).replace(u'\\', u'/'));
  while (!start.isEmpty() && !QFileInfo(start).isDir()) {
    const QString parentFolder = QFileInfo(start).path();
    if (parentFolder == start || parentFolder == QStringLiteral(".")) {
      start.clear();
      break;
    }
    start = parentFolder;
  }
  if (!start.isEmpty()) dialog.setDirectory(QFileInfo(start).absoluteFilePath());
  if (!fileName.empty()) dialog.selectFile(QString::fromStdString(fileName));

  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return dialog.selectedFiles().constFirst().toStdString();
}

}  // namespace ketrova::dialogs
