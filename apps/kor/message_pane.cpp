#include "message_pane.h"

#include <QApplication>
#include <QHeaderView>
#include <QStyle>

namespace kor {

MessagePane::MessagePane(QWidget* parent) : QTreeWidget(parent) {
  setObjectName("Messages");
  setColumnCount(3);
  setHeaderLabels({"Zeit", "PlugIn", "Meldung"});
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setAlternatingRowColors(true);
  header()->setStretchLastSection(true);
  header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
  header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
}

void MessagePane::Add(const std::string& text, const std::string& plugInName, bool error) {
  Message message{QDateTime::currentDateTime(), plugInName, text, error};
  messages_.push_back(message);
  QString full = QString::fromStdString(text);
  QString shown = full;
  shown.replace("\r\n", " ").replace('\n', ' ').replace('\r', ' ');
  auto* row = new QTreeWidgetItem(this, {message.time.toString("HH:mm:ss"),
                                         QString::fromStdString(plugInName), shown.simplified()});
  row->setToolTip(2, full);
  if (error) {
    row->setIcon(0, style()->standardIcon(QStyle::SP_MessageBoxCritical));
    for (int column = 0; column < 3; ++column) row->setForeground(column, QColor(170, 20, 20));
  }
  scrollToItem(row);
}

}  // namespace kor
