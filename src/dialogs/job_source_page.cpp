#include "dialogs/job_source_page.h"

#include <QComboBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>
#include <memory>

#include "core/converter.h"
#include "core/enums.h"
#include "dialogs/frm_job.h"
#include "dialogs/job_form_widgets.h"
#include "dialogs/job_mapping_page.h"
#include "dialogs/job_script_page.h"
#include "jobs/job.h"
#include "platform/ado/fields.h"
#include "platform/ado/recordset.h"
#include "platform/ui/ui_helpers.h"
#include "platform/ui/user_interface.h"
#include "stores/database.h"
#include "support/system.h"
#include "support/vb_error.h"

namespace ketrova::dialogs {

using namespace jobform;

namespace {

constexpr const char* kChecked = "OKChecked";
constexpr const char* kUnChecked = "OKUnChecked";

// The pictures of the "Auswahl" column: a box, ticked or empty.
QIcon SelectionPicture(bool checked, int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  const qreal m = size * 0.15;
  QRectF box(m, m, size - 2 * m, size - 2 * m);
  painter.setPen(QPen(QColor(90, 90, 90), size / 14.0));
  painter.setBrush(Qt::white);
  painter.drawRoundedRect(box, size / 10.0, size / 10.0);
  if (checked) {
    painter.setPen(QPen(QColor(20, 130, 40), size / 7.0, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(box.left() + box.width() * 0.2, box.center().y()),
                     QPointF(box.left() + box.width() * 0.42, box.bottom() - box.height() * 0.22));
    painter.drawLine(QPointF(box.left() + box.width() * 0.42, box.bottom() - box.height() * 0.22),
                     QPointF(box.right() - box.width() * 0.18, box.top() + box.height() * 0.2));
  }
  return QIcon(pixmap);
}

bool HasObjectList(int kind) {
  return kind != jitUDFView && kind != jitSQLInsertUpdate;
}

QTableWidget* Grid(const char* name, const QStringList& headers, QWidget* parent) {
  auto* grid = new QTableWidget(0, static_cast<int>(headers.size()), parent);
  grid->setObjectName(QLatin1String(name));
  grid->setHorizontalHeaderLabels(headers);
  grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
  grid->setSelectionBehavior(QAbstractItemView::SelectRows);
  grid->setSelectionMode(QAbstractItemView::SingleSelection);
  grid->verticalHeader()->setVisible(false);
  return grid;
}

QTableWidgetItem* Cell(const QString& text) {
  auto* item = new QTableWidgetItem(text);
  item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
  return item;
}

}  // namespace

JobSourcePage::JobSourcePage(frmJob& form) : form_(form) {
  setObjectName(QStringLiteral("panelSource"));
  const int chars = fontMetrics().averageCharWidth();

  panelDBSource = new QWidget(this);
  panelDBSource->setObjectName(QStringLiteral("panelDBSource"));
  cboJobItemTypeSource = Combo("cboJobItemTypeSource", panelDBSource);
  cboImportDBObjects = Combo("cboImportDBObjects", panelDBSource);
  cmdChangeSourceDB = Button("cmdChangeSourceDB", QStringLiteral("..."), panelDBSource);
  cmdChangeSourceDB->setToolTip(QStringLiteral("Datengrundlage ändern"));
  cmdChangeSourceDB->setFixedWidth(fontMetrics().horizontalAdvance(QStringLiteral("...")) +
                                   chars * 3);
  auto* top = new QGridLayout(panelDBSource);
  top->setContentsMargins(0, 0, 0, 0);
  top->addWidget(Label("LabelJobItemTypeSource", QStringLiteral("Importtyp"), panelDBSource), 0, 0);
  top->addWidget(cboJobItemTypeSource, 0, 1, Qt::AlignLeft);
  top->addWidget(Label("LabelImportDBObjects", QStringLiteral("Tabelle / View"), panelDBSource), 1,
                 0);
  auto* objectLine = new QHBoxLayout;
  objectLine->addWidget(cboImportDBObjects, 1);
  objectLine->addWidget(cmdChangeSourceDB);
  top->addLayout(objectLine, 1, 1);
  top->setColumnStretch(1, 1);

  zsTab = new QTabWidget(this);
  zsTab->setObjectName(QStringLiteral("zsTab"));
  EditSQL = new QPlainTextEdit;
  EditSQL->setObjectName(QStringLiteral("EditSQL"));
  EditSQL->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  zsTab->addTab(EditSQL, QStringLiteral("Abfrage"));

  auto* columnsTab = new QWidget;
  GridSourceFields = Grid("GridSourceFields",
                          {QStringLiteral("ID"), QStringLiteral("Name"), QStringLiteral("Auswahl"),
                           QStringLiteral("Bezeichnung")},
                          columnsTab);
  GridSourceFields->horizontalHeader()->setSectionResizeMode(3, QHeaderView::Stretch);
  GridSourceFields->setColumnWidth(0, chars * 6);
  GridSourceFields->setColumnWidth(1, chars * 24);
  GridSourceFields->setColumnWidth(2, chars * 9);
  EditGridSourceColumns = Edit("EditGridSourceColumns", GridSourceFields->viewport());
  EditGridSourceColumns->hide();
  auto* columnsLayout = new QVBoxLayout(columnsTab);
  columnsLayout->addWidget(GridSourceFields);
  zsTab->addTab(columnsTab, QStringLiteral("Spalten"));

  auto* filterTab = new QWidget;
  OptionFilterOff = new QRadioButton(QStringLiteral("Alle Zeilen"), filterTab);
  OptionFilterOff->setObjectName(QStringLiteral("OptionFilterOff"));
  OptionFilterOn =
      new QRadioButton(QStringLiteral("Nur Zeilen die den Kriterien entsprechen"), filterTab);
  OptionFilterOn->setObjectName(QStringLiteral("OptionFilterOn"));
  OptionFilterOff->setChecked(true);
  panelFilter = new QWidget(filterTab);
  panelFilter->setObjectName(QStringLiteral("panelFilter"));
  auto* rows = new QGridLayout(panelFilter);
  rows->addWidget(Label("LabelFilterColumns", QStringLiteral("Spalte"), panelFilter), 0, 1);
  rows->addWidget(Label("LabelFilterOperator", QStringLiteral("Operator"), panelFilter), 0, 2);
  for (int r = 0; r < 3; ++r) {
    cboFilterAndOr[r] = Combo("cboFilterAndOr", panelFilter);
    cboFilterColumns[r] = Combo("cboFilterColumns", panelFilter);
    cboFilterOperator[r] = Combo("cboFilterOperator", panelFilter);
    EditFilterValue[r] = Edit("EditFilterValue", panelFilter);
    for (QWidget* w :
         {static_cast<QWidget*>(cboFilterAndOr[r]), static_cast<QWidget*>(cboFilterColumns[r]),
          static_cast<QWidget*>(cboFilterOperator[r]), static_cast<QWidget*>(EditFilterValue[r])})
      w->setProperty("Index", r);
    cboFilterAndOr[r]->addItem(QStringLiteral("AND"));
    cboFilterAndOr[r]->addItem(QStringLiteral("OR"));
    cboFilterAndOr[r]->addItem(QString());
    cboFilterAndOr[r]->setCurrentIndex(r == 0 ? 0 : -1);
    cboFilterAndOr[r]->setMinimumWidth(chars * 8);
    cboFilterColumns[r]->setMinimumWidth(chars * 20);
    cboFilterOperator[r]->setMinimumWidth(chars * 22);
    rows->addWidget(cboFilterAndOr[r], r + 1, 0);
    rows->addWidget(cboFilterColumns[r], r + 1, 1);
    rows->addWidget(cboFilterOperator[r], r + 1, 2);
    rows->addWidget(EditFilterValue[r], r + 1, 3);
    for (QComboBox* combo : {cboFilterAndOr[r], cboFilterColumns[r]})
      connect(combo, &QComboBox::activated, this, [this, r, combo] { FilterChoiceMade(r, combo); });
  }
  rows->setColumnStretch(3, 1);
  cmdClearFilter = Button("cmdClearFilter", QStringLiteral("Filter löschen"), filterTab);
  auto* filterLayout = new QVBoxLayout(filterTab);
  filterLayout->addWidget(OptionFilterOff);
  filterLayout->addWidget(OptionFilterOn);
  filterLayout->addWidget(panelFilter);
  auto* clearLine = new QHBoxLayout;
  clearLine->addStretch(1);
  clearLine->addWidget(cmdClearFilter);
  filterLayout->addLayout(clearLine);
  filterLayout->addStretch(1);
  panelFilter->setEnabled(false);
  zsTab->addTab(filterTab, QStringLiteral("Filter"));

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(panelDBSource);
  layout->addWidget(zsTab, 1);

  panelDemoData = new QWidget;
  panelDemoData->setObjectName(QStringLiteral("panelDemoData"));
  GridDemoData = Grid("GridDemoData", {}, panelDemoData);
  auto* demoLayout = new QVBoxLayout(panelDemoData);
  demoLayout->setContentsMargins(0, 0, 0, 0);
  demoLayout->addWidget(GridDemoData);

  connect(cboJobItemTypeSource, &QComboBox::currentIndexChanged, this, [this] {
    if (!form_.Loading() && form_.Job()) SourceTypeChanged();
  });
  connect(cboImportDBObjects, &QComboBox::activated, this, [this](int index) {
    if (!form_.Loading() && form_.Job())
      ImportObjectChanged(S(cboImportDBObjects->itemText(index)));
  });
  connect(cmdChangeSourceDB, &QPushButton::clicked, this, [this] {
    if (form_.Job()) ChangeSourceDB();
  });
  connect(zsTab, &QTabWidget::currentChanged, this, &JobSourcePage::TabChanged);
  connect(OptionFilterOn, &QRadioButton::toggled, this, [this](bool on) {
    panelFilter->setEnabled(on);
    if (!form_.Loading() && form_.Job()) form_.Job()->JobSource().Filtered = on;
  });
  connect(cmdClearFilter, &QPushButton::clicked, this, &JobSourcePage::ClearFilter);
  connect(GridSourceFields, &QTableWidget::cellClicked, this, [this](int row, int column) {
    if (!form_.Job()) return;
    if (column == 2) ToggleColumn(row);
    if (column == 3) EditColumnTitle(row);
  });
  connect(EditGridSourceColumns, &QLineEdit::editingFinished, this,
          &JobSourcePage::EndColumnTitleEdit);
}

void JobSourcePage::FillSourceTypes(int jobType) {
  const QSignalBlocker blocker(cboJobItemTypeSource);
  cboJobItemTypeSource->clear();
  switch (jobType) {
    case jitTableView:
    case jitUDFView:
    case jitSQLInsertUpdate:
      AddEntry(*cboJobItemTypeSource, QStringLiteral("Datenbanktabelle"), jitTableView);
      AddEntry(*cboJobItemTypeSource, QStringLiteral("Abfrage über mehrere Tabellem (Lesen)"),
               jitUDFView);
      AddEntry(*cboJobItemTypeSource, QStringLiteral("Änderungsabfrage (Insert / Update)"),
               jitSQLInsertUpdate);
      break;
    case jitText:
      AddEntry(*cboJobItemTypeSource, QStringLiteral("Textdatei"), jitText);
      break;
    case jitExcel:
      AddEntry(*cboJobItemTypeSource, QStringLiteral("MS-Excel"), jitExcel);
      break;
    case jitOutlook:
      AddEntry(*cboJobItemTypeSource, QStringLiteral("MS-Outlook"), jitOutlook);
      break;
    case jitXML:
      AddEntry(*cboJobItemTypeSource, QStringLiteral("XML"), jitXML);
      break;
    default:
      break;
  }
  SelectItemData(*cboJobItemTypeSource, jobType);
}

void JobSourcePage::Load() {
  CJobItem& source = form_.Job()->JobSource();
  FillSourceTypes(source.JobType);
  EditSQL->setPlainText(Q(source.SQL));
  FillObjectList();
  (source.Filtered ? OptionFilterOn : OptionFilterOff)->setChecked(true);
  panelFilter->setEnabled(source.Filtered);
  InitFilter();
}

void JobSourcePage::FillObjectList() {
  CJobItem& source = form_.Job()->JobSource();
  const QSignalBlocker blocker(cboImportDBObjects);
  if (HasObjectList(source.JobType)) {
    ComboListControl list(*cboImportDBObjects);
    if (CDatabase* store = source.Database())
      store->DatabaseObjectsToList(list, jitUndefined);
    else
      list.Clear();
  } else {
    // A statement has no object: the single entry stands for it, and the
    // rule below makes it the name the preview selects from.
    FillSingleEntry(source.JobType);
  }
  if (SelectText(*cboImportDBObjects, source.ItemObjectName) < 0 && cboImportDBObjects->count()) {
    cboImportDBObjects->setCurrentIndex(0);
    source.ItemObjectName = S(cboImportDBObjects->itemText(0));
  }
}

void JobSourcePage::ClearColumnGrid() {
  EditGridSourceColumns->hide();
  editRow_ = -1;
  GridSourceFields->setRowCount(0);
}

void JobSourcePage::FillColumnGrid() {
  const int size = GridSourceFields->fontMetrics().height();
  GridSourceFields->setUpdatesEnabled(false);
  GridSourceFields->setRowCount(0);
  for (const CJobItemColumn& column : form_.Job()->JobSource().Columns()) {
    const int row = GridSourceFields->rowCount();
    GridSourceFields->insertRow(row);
    GridSourceFields->setItem(row, 0, Cell(QString::number(column.Index)));
    GridSourceFields->setItem(row, 1, Cell(Q(column.Name)));
    auto* picture = Cell(QString());
    picture->setIcon(SelectionPicture(column.Visible, size));
    picture->setData(kPictureRole, QLatin1String(column.Visible ? kChecked : kUnChecked));
    GridSourceFields->setItem(row, 2, picture);
    GridSourceFields->setItem(row, 3, Cell(Q(column.DisplayName)));
  }
  GridSourceFields->setUpdatesEnabled(true);
}

void JobSourcePage::SetControls() {
  const int kind = form_.Job() ? form_.Job()->JobSource().JobType : jitTableView;
  panelDBSource->setEnabled(true);
  if (!HasObjectList(kind)) {
    const QSignalBlocker blocker(cboImportDBObjects);
    FillSingleEntry(kind);
  }
  zsTab->setTabVisible(kTabStatement, !HasObjectList(kind));
  zsTab->setTabVisible(kTabColumns, kind != jitSQLInsertUpdate);
  zsTab->setTabVisible(kTabFilter, kind != jitSQLInsertUpdate);
}

void JobSourcePage::FillSingleEntry(int kind) {
  cboImportDBObjects->clear();
  cboImportDBObjects->addItem(kind == jitUDFView ? QStringLiteral("Abfrage über mehrere Tabellen")
                                                 : QStringLiteral("Änderungsabfrage"));
  cboImportDBObjects->setCurrentIndex(0);
}

void JobSourcePage::InitFilter() {
  if (!form_.Job()) return;
  CJobItem& source = form_.Job()->JobSource();
  for (int r = 0; r < 3; ++r) {
    const QSignalBlocker b1(cboFilterColumns[r]);
    const QSignalBlocker b2(cboFilterOperator[r]);
    cboFilterColumns[r]->clear();
    EditFilterValue[r]->clear();
    cboFilterOperator[r]->clear();
    if (source.JobType != jitOutlook) {
      AddEntry(*cboFilterOperator[r], QStringLiteral("enthält"), jftLike);
      AddEntry(*cboFilterOperator[r], QStringLiteral("enthält nicht"), jftNotLike);
    }
    const char* operators[] = {"ist gleich",      "ist nicht gleich",
                               "ist kleiner als", "ist kleiner oder gleich",
                               "ist größer",      "ist größer oder gleich"};
    for (int i = 0; i < 6; ++i)
      AddEntry(*cboFilterOperator[r], QString::fromUtf8(operators[i]), jftEqual + i);
    for (const CJobItemColumn& column : source.Columns())
      cboFilterColumns[r]->addItem(Q(column.Name));
    cboFilterColumns[r]->setCurrentIndex(-1);
    cboFilterOperator[r]->setCurrentIndex(-1);
  }
  int i = 0;
  for (const CJobItemFilter& filter : source.Filters()) {
    if (i >= 3) break;
    const QSignalBlocker b0(cboFilterAndOr[i]);
    SelectText(*cboFilterAndOr[i], filter.AndOr);
    SelectText(*cboFilterColumns[i], filter.Column);
    SelectItemData(*cboFilterOperator[i], filter.FilterType);
    EditFilterValue[i]->setText(Q(filter.Value));
    ++i;
  }
}

bool JobSourcePage::SaveFilter() {
  CJobItem& source = form_.Job()->JobSource();
  source.Filters().Clear();
  for (int r = 0; r < 3; ++r) {
    if (cboFilterAndOr[r]->currentIndex() < 0 || cboFilterColumns[r]->currentIndex() < 0 ||
        cboFilterOperator[r]->currentIndex() < 0 || EditFilterValue[r]->text().isEmpty())
      continue;
    CJobItemFilter& filter = source.Filters().Add();
    filter.AndOr = S(cboFilterAndOr[r]->currentText());
    filter.Column = S(cboFilterColumns[r]->currentText());
    filter.FilterType = static_cast<std::int32_t>(SelectedItemData(*cboFilterOperator[r], jftNone));
    filter.Value = S(EditFilterValue[r]->text());
    filter.FieldType = source.GetColumnFieldType(filter.Column);
  }
  return source.Filters().Count() > 0;
}

void JobSourcePage::ClearFilter() {
  for (int r = 0; r < 3; ++r) {
    for (QComboBox* combo : {cboFilterAndOr[r], cboFilterColumns[r], cboFilterOperator[r]}) {
      const QSignalBlocker blocker(combo);
      combo->setCurrentIndex(-1);
    }
    EditFilterValue[r]->clear();
  }
  OptionFilterOff->setChecked(true);
}

void JobSourcePage::FilterChoiceMade(int row, QComboBox* combo) {
  if (!combo->currentText().isEmpty()) return;
  // The empty entry empties the row.
  for (QComboBox* other : {cboFilterAndOr[row], cboFilterColumns[row], cboFilterOperator[row]}) {
    if (other == combo) continue;
    const QSignalBlocker blocker(other);
    other->setCurrentIndex(-1);
  }
  EditFilterValue[row]->clear();
}

void JobSourcePage::SourceTypeChanged() {
  CJobItem& source = form_.Job()->JobSource();
  source.JobType = static_cast<std::int32_t>(SelectedItemData(*cboJobItemTypeSource, jitTableView));
  form_.ReloadSourceDB(false);
  // SetControls leaves a kind without objects its single entry.
  form_.SetControls();
}

void JobSourcePage::ImportObjectChanged(const std::string& name) {
  CJobItem& source = form_.Job()->JobSource();
  if (name != source.ItemObjectName) {
    source.ItemObjectName = name;
    if (!source.ReloadColumns(true)) {
      form_.SetLastError(source.LastErrorMessage);
      source.ClearError();
    }
    InitFilter();
    form_.MappingPage().ClearAllTargetColumn();
  }
  form_.ReloadSourceDB(false);
  form_.SetControls();
  GetDemoData();
}

void JobSourcePage::ChangeSourceDB() {
  CConverter* converter = form_.Converter();
  if (!converter) return;
  CJobItem& source = form_.Job()->JobSource();
  // The dialog works on a store of its own: the side's own store's
  // parameters when it has one, else a new source store.
  auto store = std::make_unique<CDatabase>();
  store->SetConverter(converter);
  if (source.DifferentDataBase() && source.Database()) {
    const CDatabase& own = *source.Database();
    store->DataSourceName = own.DataSourceName;
    store->UserName = own.UserName;
    store->Password = own.Password;
    store->DatabaseName = own.DatabaseName;
    store->DriverName = own.DriverName;
    store->ServerName = own.ServerName;
    store->PortAdress = own.PortAdress;
    store->DatabaseFileName = own.DatabaseFileName;
    store->DatabaseType = own.DatabaseType;
  }
  store->DatabaseDirection = dbdSource;
  if (!converter->SelectDatabase(*store)) return;

  form_.SetLastError({});
  form_.SetInfo("Datengrundlage wird geändert ...");
  form_.ProgressBar().setRange(0, 0);
  form_.ProgressBar().setVisible(true);
  const int type = store->DatabaseType;
  source.ChangeDataBase(std::move(store), false);
  form_.ProgressBar().setVisible(false);
  form_.SetInfo({});

  int kind = jitTableView;
  if (type == dbtExcel) kind = jitExcel;
  if (type == dbtOutlook) kind = jitOutlook;
  if (type == dbtText) kind = jitText;
  if (type == dbtXML) kind = jitXML;
  source.JobType = kind;
  FillSourceTypes(kind);
  form_.ReloadSourceDB(true);
  form_.SetControls();
}

void JobSourcePage::ToggleColumn(int row) {
  QTableWidgetItem* picture = GridSourceFields->item(row, 2);
  QTableWidgetItem* name = GridSourceFields->item(row, 1);
  if (!picture || !name) return;
  CJobItemColumn* column = form_.Job()->JobSource().ColumnByName(S(name->text()));
  if (!column) return;
  const bool visible = picture->data(kPictureRole).toString() != QLatin1String(kChecked);
  picture->setData(kPictureRole, QLatin1String(visible ? kChecked : kUnChecked));
  picture->setIcon(SelectionPicture(visible, GridSourceFields->fontMetrics().height()));
  column->Visible = visible;
  if (!visible) form_.MappingPage().ClearAssignmentsOf(column->TargetColumn);
  form_.ScriptPage().GenerateScript();
  form_.MappingPage().InitTargetColumns();
}

void JobSourcePage::EditColumnTitle(int row) {
  QTableWidgetItem* cell = GridSourceFields->item(row, 3);
  if (!cell) return;
  editRow_ = row;
  EditGridSourceColumns->setGeometry(GridSourceFields->visualItemRect(cell));
  EditGridSourceColumns->setText(cell->text());
  EditGridSourceColumns->show();
  EditGridSourceColumns->setFocus();
  EditGridSourceColumns->selectAll();
}

void JobSourcePage::EndColumnTitleEdit() {
  if (editRow_ < 0 || !EditGridSourceColumns->isVisible()) return;
  const int row = editRow_;
  editRow_ = -1;
  const QString text = EditGridSourceColumns->text();
  EditGridSourceColumns->hide();
  QTableWidgetItem* cell = GridSourceFields->item(row, 3);
  QTableWidgetItem* name = GridSourceFields->item(row, 1);
  if (!cell || !name || !form_.Job()) return;
  cell->setText(text);
  if (CJobItemColumn* column = form_.Job()->JobSource().ColumnByName(S(name->text())))
    column->DisplayName = S(text);
  else
    ui::Current().MsgBox("Die Quellspalte " + S(name->text()) + " konnte nicht ermittelt werden.",
                         ui::vbOKOnly | ui::vbExclamation, form_.Title());
}

void JobSourcePage::GetDemoData() {
  if (!form_.Job() || !form_.Converter()) return;
  CJobItem& source = form_.Job()->JobSource();
  ui::ShowHourglass(true);
  GridDemoData->clear();
  GridDemoData->setRowCount(0);
  GridDemoData->setColumnCount(0);
  form_.SetInfo("Demodaten werden eingelesen ...");
  std::string left;
  std::string right;
  if (CDatabase* store = source.Database()) {
    if (store->ColBracketLeft().empty() && store->ColBracketRight().empty())
      store->SetColBrackets();
    left = store->ColBracketLeft();
    right = store->ColBracketRight();
  }
  const std::int32_t maxRows = form_.Converter()->MaxDemoData();
  source.OpenRecordSet(maxRows, false, "SELECT * FROM " + left + source.ItemObjectName + right);
  if (!source.ValidRecordset()) {
    form_.SetLastError(source.LastErrorMessage);
    CloseRecordset(source.Recordset.get());
    ui::ShowHourglass(false);
    return;
  }
  form_.SetInfo({});
  GridDemoData->setUpdatesEnabled(false);
  try {
    ado::Recordset& rs = *source.Recordset;
    rs.MoveLast();
    rs.MoveFirst();
    std::vector<std::string> columns;
    int rows = 0;
    while (!rs.Eof() && rows < maxRows) {
      if (rows == 0) {
        QStringList headers;
        for (const CJobItemColumn& column : source.Columns()) {
          if (!column.Visible) continue;
          columns.push_back(column.Name);
          headers << Q(column.DisplayName.empty() ? column.Name : column.DisplayName);
        }
        GridDemoData->setColumnCount(static_cast<int>(columns.size()));
        GridDemoData->setHorizontalHeaderLabels(headers);
      }
      GridDemoData->insertRow(rows);
      for (std::size_t c = 0; c < columns.size(); ++c) {
        QString text;
        if (ado::Field* field = rs.GetFields().Find(columns[c])) {
          const Variant value = field->Value();
          if (!value.IsNull()) text = Q(value.ToString());
        }
        GridDemoData->setItem(rows, static_cast<int>(c), Cell(text));
      }
      ++rows;
      rs.MoveNext();
    }
  } catch (const VbError& error) {
    form_.SetLastError(error.Description);
  }
  CloseRecordset(source.Recordset.get());
  GridDemoData->setUpdatesEnabled(true);
  ui::ShowHourglass(false);
}

void JobSourcePage::TabChanged(int index) {
  const int previous = lastTab_;
  lastTab_ = index;
  if (form_.Loading() || !form_.Job()) return;
  CJobItem& source = form_.Job()->JobSource();
  if (previous == kTabStatement && index != kTabStatement && source.JobType == jitUDFView) {
    source.SQL = S(EditSQL->toPlainText());
    form_.ReloadSourceDB(true);
  }
}

}  // namespace ketrova::dialogs
