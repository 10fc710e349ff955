#include "dialogs/job_mapping_page.h"

#include <QAbstractItemView>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "core/converter.h"
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "jobs/job_item_columns.h"
#include "platform/ui/user_interface.h"
#include "support/text.h"

namespace ketrova::dialogs {

namespace {

QString Q(const std::string& text) {
  return QString::fromStdString(text);
}

std::string S(const QString& text) {
  return text.toStdString();
}

// Column 1 of GridFieldMergeTarget ("Zuweisungen") and column 2 ("Ziel").
constexpr int kAssigned = 0;
constexpr int kTarget = 1;

QTableWidget* MakeGrid(QWidget* parent, const char* name, const QStringList& headers) {
  auto* grid = new QTableWidget(0, static_cast<int>(headers.size()), parent);
  grid->setObjectName(QString::fromLatin1(name));
  grid->setHorizontalHeaderLabels(headers);
  grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
  grid->setSelectionBehavior(QAbstractItemView::SelectRows);
  grid->setSelectionMode(QAbstractItemView::SingleSelection);
  grid->verticalHeader()->setVisible(false);
  grid->verticalHeader()->setDefaultSectionSize(grid->fontMetrics().height() + 8);
  grid->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  grid->setAlternatingRowColors(true);
  return grid;
}

QPushButton* MakeButton(QWidget* parent, const char* name, const QString& text,
                        const QString& tip) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(QString::fromLatin1(name));
  button->setToolTip(tip);
  button->setAutoDefault(false);
  return button;
}

// The selected row of a grid, or -1.
int SelectedRow(const QTableWidget* grid) {
  const QItemSelectionModel* selection = grid->selectionModel();
  if (selection == nullptr || !selection->hasSelection()) return -1;
  const QModelIndexList rows = selection->selectedIndexes();
  return rows.isEmpty() ? -1 : rows.first().row();
}

std::string CellText(const QTableWidget* grid, int row, int column) {
  if (row < 0 || row >= grid->rowCount()) return {};
  const QTableWidgetItem* item = grid->item(row, column);
  return item == nullptr ? std::string() : S(item->text());
}

void SetCell(QTableWidget* grid, int row, int column, const std::string& text) {
  QTableWidgetItem* item = grid->item(row, column);
  if (item == nullptr) {
    grid->setItem(row, column, new QTableWidgetItem(Q(text)));
  } else {
    item->setText(Q(text));
  }
}

}  // namespace

JobMappingPage::JobMappingPage(QWidget* parent)
    : QWidget(parent),
      sourceTitle_(new QLabel(this)),
      targetTitle_(new QLabel(this)),
      gridSource_(MakeGrid(this, "GridFieldMergeSource", {QStringLiteral("Quellspalten")})),
      gridTarget_(MakeGrid(this, "GridFieldMergeTarget",
                           {QStringLiteral("Zuweisungen"), QStringLiteral("Ziel")})),
      cmdCopy_(
          MakeButton(this, "cmdCopySourceColumn2TargetColumn", QStringLiteral(">"),
                     QStringLiteral("Markierte Quellspalte der markierten Zielspalte zuweisen"))),
      cmdCopyAll_(MakeButton(this, "cmdCopyAllSourceColumn2AllTargetColumn", QStringLiteral(">>"),
                             QStringLiteral("Alle Quellspalten der Reihe nach zuweisen"))),
      cmdClear_(MakeButton(this, "cmdClearTargetColumn", QStringLiteral("<"),
                           QStringLiteral("Zuweisung der markierten Zielspalte entfernen"))),
      cmdClearAll_(MakeButton(this, "cmdClearAllTargetColumn", QStringLiteral("<<"),
                              QStringLiteral("Alle Zuweisungen entfernen"))) {
  setObjectName(QStringLiteral("panelFieldMerge"));
  sourceTitle_->setObjectName(QStringLiteral("GridFieldMergeSourceTitle"));
  targetTitle_->setObjectName(QStringLiteral("GridFieldMergeTargetTitle"));

  auto* sourceColumn = new QVBoxLayout;
  sourceColumn->addWidget(sourceTitle_);
  sourceColumn->addWidget(gridSource_);

  auto* buttons = new QVBoxLayout;
  buttons->addStretch();
  for (QPushButton* button : {cmdCopy_, cmdCopyAll_, cmdClear_, cmdClearAll_}) {
    button->setFixedWidth(button->fontMetrics().horizontalAdvance(QStringLiteral(">>")) * 3);
    buttons->addWidget(button);
  }
  buttons->addStretch();

  auto* targetColumn = new QVBoxLayout;
  targetColumn->addWidget(targetTitle_);
  targetColumn->addWidget(gridTarget_);

  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addLayout(sourceColumn, 2);
  layout->addLayout(buttons);
  layout->addLayout(targetColumn, 3);

  connect(cmdCopy_, &QPushButton::clicked, this, &JobMappingPage::CopySourceColumn2TargetColumn);
  connect(cmdCopyAll_, &QPushButton::clicked, this,
          &JobMappingPage::CopyAllSourceColumn2AllTargetColumn);
  connect(cmdClear_, &QPushButton::clicked, this, &JobMappingPage::ClearTargetColumn);
  connect(cmdClearAll_, &QPushButton::clicked, this, &JobMappingPage::ClearAllTargetColumn);
  connect(gridSource_, &QTableWidget::cellDoubleClicked, this,
          [this](int, int) { CopySourceColumn2TargetColumn(); });
  connect(gridTarget_, &QTableWidget::cellDoubleClicked, this, [this](int row, int) {
    if (SelectedRow(gridTarget_) < 0) gridTarget_->selectRow(row);
    const int selected = SelectedRow(gridTarget_);
    if (selected < 0) return;
    SetAssigned(selected, {});
    emit mappingChanged();
  });
}

JobMappingPage::~JobMappingPage() = default;

void JobMappingPage::ClearGrids() {
  gridSource_->setRowCount(0);
  gridTarget_->setRowCount(0);
}

void JobMappingPage::FillSourceColumns() {
  gridSource_->setRowCount(0);
  if (job_ == nullptr) return;
  CJobItem& source = job_->JobSource();
  sourceTitle_->setText(Q(source.ItemObjectName + "Quelle."));
  for (const CJobItemColumn& column : source.Columns()) {
    if (!column.Visible) continue;
    const int row = gridSource_->rowCount();
    gridSource_->insertRow(row);
    SetCell(gridSource_, row, 0, column.TargetColumn);
  }
}

void JobMappingPage::InitTargetColumns() {
  gridTarget_->setRowCount(0);
  if (job_ == nullptr) return;
  try {
    CJobItem& source = job_->JobSource();
    CJobItem& dest = job_->JobDest();
    if (!dest.ItemObjectName.empty()) targetTitle_->setText(Q(dest.ItemObjectName + "Ziel."));
    for (const CJobItemColumn& column : dest.Columns()) {
      const int row = gridTarget_->rowCount();
      gridTarget_->insertRow(row);
      const CJobItemColumn* feeding = source.ColumnByTargetName(column.SourceColumn);
      SetCell(gridTarget_, row, kAssigned,
              feeding != nullptr && feeding->Visible ? column.SourceColumn : std::string());
      SetCell(gridTarget_, row, kTarget, column.TargetColumn);
    }
  } catch (...) {
    // Filling the grid ends silently on any failure, with the rows filled so far.
  }
}

bool JobMappingPage::AnyAssigned() const {
  for (int row = 0; row < gridTarget_->rowCount(); ++row)
    if (!CellText(gridTarget_, row, kAssigned).empty()) return true;
  return false;
}

void JobMappingPage::ClearAssignmentsOf(const std::string& sourceName) {
  for (int row = 0; row < gridTarget_->rowCount(); ++row)
    if (IsEqual(CellText(gridTarget_, row, kAssigned), sourceName)) SetAssigned(row, {});
}

bool JobMappingPage::WriteMapping() {
  if (job_ == nullptr) return false;
  CJobItem& dest = job_->JobDest();
  for (int row = 0; row < gridTarget_->rowCount(); ++row) {
    const std::string target = CellText(gridTarget_, row, kTarget);
    CJobItemColumn* column = dest.ColumnByTargetName(target);
    if (column == nullptr) {
      ui::Current().MsgBox("Die Zielspalte [" + target + "] konnte nicht ermittelt werden.",
                           ui::vbCritical, "Script generieren");
      dest.Columns().Clear();
      return false;
    }
    column->SourceColumn = CellText(gridTarget_, row, kAssigned);
    column->TargetColumn = target;
    column->DisplayName = target;
  }
  return true;
}

int JobMappingPage::SourceRowCount() const {
  return gridSource_->rowCount();
}
int JobMappingPage::TargetRowCount() const {
  return gridTarget_->rowCount();
}
std::string JobMappingPage::SourceText(int row) const {
  return CellText(gridSource_, row, 0);
}
std::string JobMappingPage::AssignedSource(int row) const {
  return CellText(gridTarget_, row, kAssigned);
}
std::string JobMappingPage::TargetName(int row) const {
  return CellText(gridTarget_, row, kTarget);
}

void JobMappingPage::CopySourceColumn2TargetColumn() {
  if (SelectedRow(gridSource_) < 0 && gridSource_->rowCount() > 0) {
    gridSource_->setCurrentCell(0, 0);
    gridSource_->selectRow(0);
  }
  const std::string sourceName = CellText(gridSource_, SelectedRow(gridSource_), 0);
  const int targetRow = SelectedRow(gridTarget_);
  if (targetRow < 0) {
    ui::Current().MsgBox(
        "Um Spalten von der Quelltabelle in die Zieltabelle zu kopieren, \r\n"
        "markieren Sie bitte zuerst eine Spalte in der Liste der Zielfelder",
        ui::vbOKOnly,
        job_ != nullptr && job_->Converter != nullptr ? job_->Converter->ProductName() : "");
    return;
  }
  SetAssigned(targetRow, sourceName);
  emit mappingChanged();
}

void JobMappingPage::CopyAllSourceColumn2AllTargetColumn() {
  const int rows = std::min(gridSource_->rowCount(), gridTarget_->rowCount());
  for (int row = 0; row < rows; ++row) SetAssigned(row, CellText(gridSource_, row, 0));
  emit mappingChanged();
}

void JobMappingPage::ClearTargetColumn() {
  int row = SelectedRow(gridTarget_);
  if (row < 0) row = 0;
  if (row < gridTarget_->rowCount()) SetAssigned(row, {});
  emit mappingChanged();
}

void JobMappingPage::ClearAllTargetColumn() {
  for (int row = 0; row < gridTarget_->rowCount(); ++row) SetAssigned(row, {});
  emit mappingChanged();
}

void JobMappingPage::SetAssigned(int row, const std::string& text) {
  SetCell(gridTarget_, row, kAssigned, text);
}

}  // namespace ketrova::dialogs
