#include "dialogs/file_filter.h"

namespace ketrova::dialogs {

QStringList NameFiltersFromVb(std::string_view vbFilter) {
  const bool bare = vbFilter.find('|') == std::string_view::npos;
  QStringList nameFilters;
  for (const ui::FileFilter& filter : ui::ParseVbFilter(vbFilter)) {
    QStringList patterns;
    for (const std::string& pattern : filter.patterns)
      patterns << (pattern == "*.*" ? QStringLiteral("*") : QString::fromStdString(pattern));
    if (patterns.isEmpty()) continue;
    const QString list = patterns.join(u' ');
    const QString description = QString::fromStdString(filter.description).trimmed();
    nameFilters << (bare || description.isEmpty() ? list : description + " (" + list + ")");
  }
  return nameFilters;
}

}  // namespace ketrova::dialogs
