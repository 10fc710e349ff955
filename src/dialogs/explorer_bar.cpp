#include "dialogs/explorer_bar.h"

#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace ketrova::dialogs {

ExplorerBar MakeExplorerBar(const QWidget& reference, const QString& title,
                            const QString& titleName, const std::vector<ExplorerEntry>& entries) {
  const QFontMetrics metrics = reference.fontMetrics();
  const int line = metrics.height();
  ExplorerBar bar{new QLabel(title), new QListWidget, new QVBoxLayout};
  bar.title->setObjectName(titleName);
  QFont bold = bar.title->font();
  bold.setBold(true);
  bar.title->setFont(bold);

  QListWidget& list = *bar.list;
  list.setObjectName(QStringLiteral("vbaExplorer"));
  list.setIconSize(QSize(2 * line, 2 * line));
  list.setSpacing(line / 6);
  list.setSelectionMode(QAbstractItemView::SingleSelection);
  list.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  int widest = 0;
  for (const ExplorerEntry& entry : entries) {
    auto* item = new QListWidgetItem(entry.picture, entry.text);
    item->setData(Qt::UserRole, entry.data);
    list.addItem(item);
    widest = std::max(widest, metrics.horizontalAdvance(entry.text));
  }
  list.setFixedWidth(widest + list.iconSize().width() + 3 * line);
  list.setMinimumHeight(list.count() * (list.sizeHintForRow(0) + 2 * list.spacing()) +
                        2 * list.frameWidth() + list.spacing());

  bar.layout->addWidget(bar.title);
  bar.layout->addWidget(bar.list, 1);
  return bar;
}

}  // namespace ketrova::dialogs
