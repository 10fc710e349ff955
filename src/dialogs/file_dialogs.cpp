#include "dialogs/file_dialogs.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

#include "dialogs/file_filter.h"

namespace ketrova::dialogs {
namespace {

QString LocalPath(const std::string& path) {
  return QDir::cleanPath(QString::fromStdString(path).replace(u'\\', u'/'));
}

// The folder itself if it exists, else the nearest one above it that does;
// empty when none does (a relative path whose first folder is missing).
QString ExistingFolder(QString path) {
  while (!path.isEmpty() && !QFileInfo(path).isDir()) {
    QString parent = QFileInfo(path).path();
    if (parent == path || parent == QStringLiteral(".")) return {};
    path = parent;
  }
  return path;
}

void GermanLabels(QFileDialog& dialog, const QString& accept) {
  dialog.setLabelText(QFileDialog::LookIn, QStringLiteral("Suchen in:"));
  dialog.setLabelText(QFileDialog::FileName, QStringLiteral("Name:"));
  dialog.setLabelText(QFileDialog::FileType, QStringLiteral("Dateityp:"));
  dialog.setLabelText(QFileDialog::Accept, accept);
  dialog.setLabelText(QFileDialog::Reject, QStringLiteral("Abbrechen"));
}

std::optional<std::string> Run(QFileDialog& dialog) {
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return dialog.selectedFiles().constFirst().toStdString();
}

}  // namespace

std::optional<std::string> ShowFileOpen(QWidget* parent, const std::string& title,
                                        const std::string& vbFilter, const std::string& startPath) {
  QFileDialog dialog(parent);
  dialog.setObjectName(QStringLiteral("FileOpen"));
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setWindowTitle(title.empty() ? QStringLiteral("Öffnen") : QString::fromStdString(title));
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::ExistingFile);
  GermanLabels(dialog, QStringLiteral("Öffnen"));
  // Name filters ignore case only while this flag is off.
  dialog.setFilter(dialog.filter() & ~QDir::CaseSensitive);
  const QStringList filters = NameFiltersFromVb(vbFilter);
  if (!filters.isEmpty()) dialog.setNameFilters(filters);

  if (!startPath.empty()) {
    const QString start = LocalPath(startPath);
    const QFileInfo info(start);
    if (info.isDir()) {
      dialog.setDirectory(info.absoluteFilePath());
    } else if (info.isFile()) {
      dialog.setDirectory(info.absolutePath());
      dialog.selectFile(info.fileName());
    } else if (QString folder = ExistingFolder(start); !folder.isEmpty()) {
      dialog.setDirectory(QFileInfo(folder).absoluteFilePath());
    }
  }
  return Run(dialog);
}

std::optional<std::string> ShowBrowseForFolder(QWidget* parent, const std::string& title,
                                               const std::string& startPath) {
  QFileDialog dialog(parent);
  dialog.setObjectName(QStringLiteral("BrowseForFolder"));
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setOption(QFileDialog::ShowDirsOnly);
  dialog.setWindowTitle(title.empty() ? QStringLiteral("Ordner auswählen")
                                      : QString::fromStdString(title));
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::Directory);
  GermanLabels(dialog, QStringLiteral("Auswählen"));
  dialog.setLabelText(QFileDialog::FileName, QStringLiteral("Ordner:"));
  if (QString folder = ExistingFolder(LocalPath(startPath));
      !startPath.empty() && !folder.isEmpty())
    dialog.setDirectory(QFileInfo(folder).absoluteFilePath());
  return Run(dialog);
}

}  // namespace ketrova::dialogs
