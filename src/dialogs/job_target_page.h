// JobTargetPage: the page "Ziel" of the job editor (frmJob): where the records
// go and how existing target rows are treated.
//
// Controls (object names, labels): cboJobItemTypeDest ("Exporttyp":
// "Datenbanktabelle", "Textdatei", "MS-Excel", "MS-Outlook", "XML", item data
// the TJobItemType), cboExportDBTables ("Zieltabelle": an object of the
// target store or a name typed), CheckExportCreateTable ("Tabelle erzeugen
// falls nicht vorhanden"), CheckExportDeletBeforeInsert ("Leeren vor dem
// Einfügen"), CheckCancelOnError ("Fehler bei dieser Aufgabe bricht das
// ganze Projekt ab"), CheckTargetDBUpdates ("Daten auf dem Zielsysten ändern /
// überschreiben"), which shows panelTargetDBUpdates with
// CheckTargetFilterUserDefined ("Benutzerdefiniertes Suchmuster"),
// cmdShowEditorBig and the stack TabTargetFilter: either the key combos
// cboDBUpdateSourceTableField ("Spalte in Quelltabelle") and
// cboDBUpdateTargetTableField ("Spalte in Zieltabelle"), each with a blank
// first entry, or the search script EditDestinationUserdefinedFilter.
//
// Written at once: cboJobItemTypeDest (JobDest.JobType), cboExportDBTables
// (see ExportTableChanged), CheckExportCreateTable (JobDest.CreateTable) and
// CheckExportDeletBeforeInsert (JobDest.DeleteBeforeInsert). The rest goes
// into the job through frmJob::SaveJob.
#pragma once

#include <QWidget>
#include <string>

class QCheckBox;
class QComboBox;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;

namespace ketrova::dialogs {

class frmJob;

class JobTargetPage : public QWidget {
  Q_OBJECT

 public:
  explicit JobTargetPage(frmJob& form);

  // LoadJob's first part: the target store's objects into cboExportDBTables,
  // and the key combos.
  void LoadLists();
  // LoadJob's later part: cboJobItemTypeDest, cboExportDBTables by
  // JobDest.ItemObjectName, the check boxes, then the changes of
  // CheckTargetDBUpdates and CheckTargetFilterUserDefined.
  void Load();
  // Both key combos from ColumnsToList of the two sides, a blank entry
  // first, each selecting its side's KeyField.
  void FillKeyCombos();
  // Selects the entry of cboExportDBTables with that name, else sets it as
  // the combo's text.
  void SelectExportTable(const std::string& name);

  // cboExportDBTables changed by the user. When `name` differs from
  // JobDest.ItemObjectName, or the target has no columns: the name (through
  // MakeIdentifier on a store that is not file based) becomes ItemObjectName;
  // an Outlook target is built by CopyOutlookObjectsToTargetJobs, a table of
  // the target store gives its columns (ReloadColumns), and a table that does
  // not exist ticks CheckExportCreateTable and takes the source's columns
  // (CopyColumns); then the key combos are refilled, the mapping cleared and
  // rebuilt and the script generated. In all cases ReloadSourceDB(false) and
  // SetControls follow.
  void ExportTableChanged(const std::string& name);
  // CheckTargetDBUpdates: shows or hides panelTargetDBUpdates.
  void TargetDBUpdatesChanged();
  // CheckTargetFilterUserDefined: the key combos or the editor in
  // TabTargetFilter, cmdShowEditorBig enabled with the editor; ticked with an
  // empty editor, the editor takes GenerateScriptFilterUserDefined.
  void TargetFilterUserDefinedChanged();

  QComboBox* cboJobItemTypeDest;
  QComboBox* cboExportDBTables;
  QCheckBox* CheckExportCreateTable;
  QCheckBox* CheckExportDeletBeforeInsert;
  QCheckBox* CheckCancelOnError;
  QCheckBox* CheckTargetDBUpdates;
  QWidget* panelTargetDBUpdates;
  QCheckBox* CheckTargetFilterUserDefined;
  QPushButton* cmdShowEditorBig;
  QStackedWidget* TabTargetFilter;
  QComboBox* cboDBUpdateSourceTableField;
  QComboBox* cboDBUpdateTargetTableField;
  QPlainTextEdit* EditDestinationUserdefinedFilter;

 private:
  frmJob& form_;
};

}  // namespace ketrova::dialogs
