// JobSourcePage: the page "Quelle" of the job editor (frmJob): what a job
// reads, which columns under which titles, the filter, and the preview.
//
// Controls (object names, labels): in panelDBSource cboJobItemTypeSource
// ("Importtyp"), cboImportDBObjects ("Tabelle / View") and cmdChangeSourceDB;
// the tabs zsTab: "Abfrage" (EditSQL), "Spalten" (GridSourceFields with the
// columns "ID", "Name", "Auswahl", "Bezeichnung", and the cell editor
// EditGridSourceColumns) and "Filter" (OptionFilterOff "Alle Zeilen",
// OptionFilterOn "Nur Zeilen die den Kriterien entsprechen", panelFilter with
// three rows of cboFilterAndOr, cboFilterColumns ("Spalte"),
// cboFilterOperator ("Operator") and EditFilterValue, each carrying its row
// 0..2 in the property "Index", and cmdClearFilter). The preview
// panelDemoData with GridDemoData is placed by the frame, which shows it
// while CheckDemoData is ticked.
//
// The entries of cboJobItemTypeSource keep the user within the family of the
// source's kind: "Datenbanktabelle", "Abfrage über mehrere Tabellem (Lesen)"
// and "Änderungsabfrage (Insert / Update)" for the SQL kinds, else the one
// entry of the kind ("Textdatei", "MS-Excel", "MS-Outlook", "XML").
//
// Written at once: cboJobItemTypeSource (JobSource.JobType),
// cboImportDBObjects (ItemObjectName, new columns and filter rows, mapping
// cleared), OptionFilterOn/Off (Filtered), "Auswahl" (a column's Visible),
// "Bezeichnung" (its DisplayName) and cmdChangeSourceDB (a store of the
// source's own). The filter rows and EditSQL reach the job through SaveJob.
#pragma once

#include <QWidget>
#include <array>
#include <string>

class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QTableWidget;
class QTabWidget;

namespace ketrova::dialogs {

class frmJob;

class JobSourcePage : public QWidget {
  Q_OBJECT

 public:
  // The tabs of zsTab.
  enum Tab : int { kTabStatement = 0, kTabColumns = 1, kTabFilter = 2 };
  // The item role of a GridSourceFields "Auswahl" cell holding its picture's
  // name, "OKChecked" or "OKUnChecked".
  static constexpr int kPictureRole = 0x0101;

  explicit JobSourcePage(frmJob& form);

  // LoadJob's part: cboJobItemTypeSource, EditSQL, the source objects,
  // OptionFilterOn or OptionFilterOff, InitFilter.
  void Load();
  // The entries of cboJobItemTypeSource for the family of `jobType`, the
  // entry of `jobType` selected. Emits nothing.
  void FillSourceTypes(int jobType);
  // The source store's objects into cboImportDBObjects, or for jitUDFView
  // and jitSQLInsertUpdate their single entry; ItemObjectName selected. When
  // nothing is selected the first entry becomes ItemObjectName, so that a
  // statement's job names its entry ("Abfrage über mehrere Tabellen"), which
  // the preview then selects from and fails on.
  void FillObjectList();
  // Empties GridSourceFields.
  void ClearColumnGrid();
  // One row per source column, "Auswahl" showing "OKChecked" when Visible.
  void FillColumnGrid();
  // The source tabs and panels for the source's kind; the single entry of
  // cboImportDBObjects for jitUDFView and jitSQLInsertUpdate.
  void SetControls();

  // Fills the three filter rows from JobSource.Filters (operators by the
  // source's kind, columns by its columns).
  void InitFilter();
  // The complete rows into JobSource.Filters (emptied first). True when a
  // filter results.
  bool SaveFilter();
  // cmdClearFilter: empties the three rows and ticks OptionFilterOff.
  void ClearFilter();
  // The preview: at most Converter.MaxDemoData rows of "SELECT * FROM" the
  // source object, one grid column per visible source column. A source that
  // does not open shows its error through SetLastError.
  void GetDemoData();

  // cboJobItemTypeSource changed by the user.
  void SourceTypeChanged();
  // cboImportDBObjects changed by the user.
  void ImportObjectChanged(const std::string& name);
  // cmdChangeSourceDB: another store for this job's source, through the
  // data-store dialog.
  void ChangeSourceDB();
  // A click on "Auswahl" of a GridSourceFields row: the column read or not.
  void ToggleColumn(int row);
  // A click on "Bezeichnung": EditGridSourceColumns over the cell; ending
  // the edit writes the title into the cell and the column's DisplayName.
  void EditColumnTitle(int row);
  void EndColumnTitleEdit();

  QWidget* panelDBSource;
  QComboBox* cboJobItemTypeSource;
  QComboBox* cboImportDBObjects;
  QPushButton* cmdChangeSourceDB;
  QTabWidget* zsTab;
  QPlainTextEdit* EditSQL;
  QTableWidget* GridSourceFields;
  QLineEdit* EditGridSourceColumns;
  QRadioButton* OptionFilterOn;
  QRadioButton* OptionFilterOff;
  QWidget* panelFilter;
  std::array<QComboBox*, 3> cboFilterAndOr;
  std::array<QComboBox*, 3> cboFilterColumns;
  std::array<QComboBox*, 3> cboFilterOperator;
  std::array<QLineEdit*, 3> EditFilterValue;
  QPushButton* cmdClearFilter;
  QWidget* panelDemoData;  // owned by the frame once placed
  QTableWidget* GridDemoData;

 private:
  // The single entry of cboImportDBObjects for jitUDFView or
  // jitSQLInsertUpdate, selected. Emits what the caller does not block.
  void FillSingleEntry(int kind);
  void FilterChoiceMade(int row, QComboBox* combo);
  void TabChanged(int index);

  frmJob& form_;
  int editRow_ = -1;
  int lastTab_ = kTabColumns;
};

}  // namespace ketrova::dialogs
