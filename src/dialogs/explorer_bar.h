// The explorer bar on the left of the store dialog and the job editor: a bold
// title over a list of entries with pictures, wide and high enough to show
// every entry without scrolling. The list's object name is "vbaExplorer";
// each entry carries its number in Qt::UserRole.
#pragma once

#include <QIcon>
#include <QString>
#include <vector>

class QLabel;
class QListWidget;
class QVBoxLayout;

namespace ketrova::dialogs {

struct ExplorerEntry {
  QIcon picture;
  QString text;
  int data;
};

struct ExplorerBar {
  QLabel* title;
  QListWidget* list;
  QVBoxLayout* layout;  // the title above the list; the caller places it
};

// Sizes follow the font of `reference`, the dialog the bar goes into.
ExplorerBar MakeExplorerBar(const QWidget& reference, const QString& title,
                            const QString& titleName, const std::vector<ExplorerEntry>& entries);

}  // namespace ketrova::dialogs
