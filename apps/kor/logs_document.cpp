#include "logs_document.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include "core/converter.h"
#include "core/logs.h"

namespace kor {
namespace {

// Line ends of any kind as the view's line breaks.
QString Shown(const std::string& text) {
  QString s = QString::fromStdString(text);
  s.replace("\r\n", "\n").replace('\r', '\n');
  return s.trimmed();
}

}  // namespace

int LogListModel::rowCount(const QModelIndex& parent) const {
  auto project = Project();
  return parent.isValid() || !project ? 0 : project->Logs().Count();
}

int LogListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : 3;
}

QVariant LogListModel::data(const QModelIndex& index, int role) const {
  auto project = Project();
  if (!project || !index.isValid() || index.row() >= project->Logs().Count()) return {};
  const ketrova::CLog& log = project->Logs().Item(index.row() + 1);
  if (role == Qt::DisplayRole) {
    if (index.column() == 0) return log.Index;
    if (index.column() == 1) return Shown(log.Message);
    return QString::fromStdString(log.Key);
  }
  if (role == Qt::ToolTipRole && index.column() == 1) return Shown(log.Message);
  return {};
}

QVariant LogListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  static const char* const kHeaders[] = {"Nr.", "Meldung", "Schlüssel"};
  return QString::fromUtf8(kHeaders[section]);
}

LogsDocument::LogsDocument(DocumentContext context, QWidget* parent)
    : Document(std::move(context), parent) {
  model_ = new LogListModel([this] { return Project(); }, this);
  list_ = new QTableView(this);
  list_->setObjectName("lstLogs");
  list_->setModel(model_);
  list_->setWordWrap(true);
  list_->setAlternatingRowColors(true);
  list_->setSelectionBehavior(QAbstractItemView::SelectRows);
  list_->verticalHeader()->hide();
  list_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
  list_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
  list_->horizontalHeader()->setSectionResizeMode(2, QHeaderView::ResizeToContents);

  auto* copy = new QPushButton("Kopieren", this);
  copy->setObjectName("cmdCopy");
  auto* clear = new QPushButton("Leeren", this);
  clear->setObjectName("cmdClear");
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(copy);
  buttons->addWidget(clear);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_);
  layout->addLayout(buttons);

  connect(copy, &QPushButton::clicked, this,
          [this] { QApplication::clipboard()->setText(AllText()); });
  connect(clear, &QPushButton::clicked, this, [this] {
    if (auto project = Project()) project->Logs().Clear();
    Refresh();
  });
  Refresh();
}

void LogsDocument::Refresh() {
  model_->Reset();
  list_->resizeRowsToContents();
}

QString LogsDocument::AllText() const {
  QString text;
  if (auto project = Project())
    for (const ketrova::CLog& log : project->Logs())
      text += QString::fromStdString(log.Message) + "\r\n";
  return text;
}

}  // namespace kor
