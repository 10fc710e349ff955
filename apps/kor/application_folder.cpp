#include "application_folder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace kor {
namespace {

// Copies the folder `from` into `to` (files and subfolders), keeping what is
// there; false when something could not be copied.
bool CopyFolder(const QString& from, const QString& to) {
  QDir source(from);
  if (!QDir().mkpath(to)) return false;
  bool ok = true;
  for (const QFileInfo& entry :
       source.entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
    QString target = to + "/" + entry.fileName();
    if (entry.isDir())
      ok = CopyFolder(entry.filePath(), target) && ok;
    else if (!QFileInfo::exists(target))
      ok = QFile::copy(entry.filePath(), target) && ok;
  }
  return ok;
}

}  // namespace

ApplicationFolder PrepareApplicationFolder(const QString& home, const QString& dataFolder) {
  ApplicationFolder result;
  QString folder = QDir::cleanPath(home) + "/Ketrova";
  result.path = (folder + "/").toStdString();
  if (folder.contains('.'))
    result.warnings += QStringLiteral(
                           "Der Pfad des Anwendungsordners enthält einen Punkt: %1\n"
                           "Bilder und Dateinamen werden an diesem Punkt abgeschnitten; "
                           "legen Sie den Ordner an einem Pfad ohne Punkt an.\n")
                           .arg(folder);
  if (!QDir().mkpath(folder)) {
    result.warnings +=
        QStringLiteral("Der Anwendungsordner %1 kann nicht angelegt werden.\n").arg(folder);
    return result;
  }
  for (const char* name : {"Images", "HTMRoot"}) {
    QString target = folder + "/" + name;
    if (QFileInfo::exists(target)) continue;
    QString source = dataFolder + "/" + name;
    if (!QFileInfo(source).isDir() || !CopyFolder(source, target))
      result.warnings += QStringLiteral("Der Ordner %1 konnte nicht aus %2 angelegt werden.\n")
                             .arg(target, source);
  }
  return result;
}

QString DataFolder() {
  QString installed = QCoreApplication::applicationDirPath() + "/" KOR_INSTALLED_DATA_DIR;
  if (QFileInfo(installed + "/Images").isDir()) return QDir::cleanPath(installed);
  return QStringLiteral(KOR_SOURCE_DATA_DIR);
}

QString PluginFolder() {
  QString beside = QCoreApplication::applicationDirPath() + "/plugins";
  if (QFileInfo(beside).isDir()) return beside;
  return QDir::cleanPath(QCoreApplication::applicationDirPath() + "/" KOR_INSTALLED_PLUGIN_DIR);
}

}  // namespace kor
