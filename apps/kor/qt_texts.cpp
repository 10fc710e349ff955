#include "qt_texts.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace kor {

bool InstallGermanQtTexts() {
  // One translator for the process, alive as long as the application.
  static QTranslator* translator = nullptr;
  if (translator != nullptr) return true;
  auto* candidate = new QTranslator(QCoreApplication::instance());
  if (!candidate->load(QLocale(QLocale::German, QLocale::Germany), "qtbase", "_",
                       QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    delete candidate;
    return false;
  }
  QCoreApplication::installTranslator(candidate);
  translator = candidate;
  return true;
}

}  // namespace kor
