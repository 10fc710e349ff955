// JobMappingPage: the page "Feldzuweisungen" of the job editor (frmJob), where
// the user says which source column feeds which target column.
//
// Controls (object names): GridFieldMergeSource (one column "Quellspalten":
// the TargetColumn of each visible source column), GridFieldMergeTarget
// (columns "Zuweisungen", the assigned source, and "Ziel", the TargetColumn
// of a target column), their titles GridFieldMergeSourceTitle and
// GridFieldMergeTargetTitle, and the buttons
// cmdCopySourceColumn2TargetColumn, cmdCopyAllSourceColumn2AllTargetColumn,
// cmdClearTargetColumn and cmdClearAllTargetColumn.
//
// The grid holds the mapping while the dialog is open; the job's
// JobDest.Columns take it over only when the script is generated
// (JobScriptPage::GenerateScript calls WriteMapping). Every change of a
// mapping by the user emits mappingChanged, which JobScriptPage (after
// BindMapping) answers by generating the script.
//
// What the frame calls, and when:
//   form start            SetJob(job) before LoadJob; the script page's
//                         BindMapping(this).
//   ReloadSourceDB        step 2: ClearGrids(); step 4: FillSourceColumns()
//                         (title ItemObjectName + "Quelle." and a row per
//                         visible source column); step 5: InitTargetColumns().
//   LoadJob               InitTargetColumns() at its place in the order.
//   cboExportDBTables     step 3: ClearAllTargetColumn(), InitTargetColumns(),
//                         then the script page's GenerateScript().
//   cboImportDBObjects    "all mappings are cleared": ClearAllTargetColumn().
//   GridSourceFields      a column made invisible: ClearAssignmentsOf(its
//   "Auswahl"             TargetColumn), then the script page's
//                         GenerateScript() and InitTargetColumns().
//   CheckInput            the script page's CheckTargetFields() (which asks
//                         this page's AnyAssigned()).
//
// Boxes go through ui::Current(). The job must outlive the page's use of it.
// GUI thread only.
#pragma once

#include <QWidget>
#include <string>

class QLabel;
class QPushButton;
class QTableWidget;

namespace ketrova {
class CJob;
}  // namespace ketrova

namespace ketrova::dialogs {

class JobMappingPage : public QWidget {
  Q_OBJECT

 public:
  explicit JobMappingPage(QWidget* parent = nullptr);
  ~JobMappingPage() override;

  // The job being edited; nullptr makes every operation a no-op.
  void SetJob(CJob* job) { job_ = job; }
  CJob* Job() const { return job_; }

  // Empties both grids.
  void ClearGrids();
  // Empties GridFieldMergeSource and adds one row, holding its TargetColumn,
  // for each Visible column of JobSource; the title becomes
  // JobSource.ItemObjectName + "Quelle.".
  void FillSourceColumns();
  // Empties GridFieldMergeTarget and adds one row per column of
  // JobDest.Columns: "Ziel" is its TargetColumn, "Zuweisungen" its
  // SourceColumn when JobSource.ColumnByTargetName finds a Visible column
  // for it, else empty. With a JobDest.ItemObjectName the title becomes it +
  // "Ziel.". A failure ends it silently.
  void InitTargetColumns();

  // True when some row of GridFieldMergeTarget has a text in "Zuweisungen".
  bool AnyAssigned() const;
  // Empties "Zuweisungen" in every row that holds `sourceName` (compared
  // without regard to case). No signal.
  void ClearAssignmentsOf(const std::string& sourceName);

  // Writes the grid into JobDest.Columns: for each row, the column that
  // JobDest.ColumnByTargetName finds for "Ziel" takes "Zuweisungen" as its
  // SourceColumn and "Ziel" as its TargetColumn and DisplayName. A row whose
  // target column is missing brings the critical box "Script generieren"
  // ("Die Zielspalte [name] konnte nicht ermittelt werden."), empties
  // JobDest.Columns and answers false; rows before it stay written.
  bool WriteMapping();

  // Read access for the script page and tests: the rows of the grids.
  int SourceRowCount() const;
  int TargetRowCount() const;
  std::string SourceText(int row) const;      // 0-based row
  std::string AssignedSource(int row) const;  // "Zuweisungen"
  std::string TargetName(int row) const;      // "Ziel"

 public slots:
  // cmdCopySourceColumn2TargetColumn and a double click in
  // GridFieldMergeSource: without a selection there, its first row is
  // selected; its text goes into "Zuweisungen" of the selected target row.
  // Without a selected target row a box asks the user to mark one first and
  // nothing changes.
  void CopySourceColumn2TargetColumn();
  // cmdCopyAllSourceColumn2AllTargetColumn: source row i into target row i,
  // by position, as far as both grids have rows.
  void CopyAllSourceColumn2AllTargetColumn();
  // cmdClearTargetColumn: empties "Zuweisungen" of the selected row, the
  // first without a selection. A double click in GridFieldMergeTarget empties
  // the row clicked; both emit mappingChanged.
  void ClearTargetColumn();
  // cmdClearAllTargetColumn: empties "Zuweisungen" of every row.
  void ClearAllTargetColumn();

 signals:
  // The user changed the mapping (each slot above, after its change).
  void mappingChanged();

 private:
  void SetAssigned(int row, const std::string& text);

  CJob* job_ = nullptr;
  QLabel* sourceTitle_;
  QLabel* targetTitle_;
  QTableWidget* gridSource_;
  QTableWidget* gridTarget_;
  QPushButton* cmdCopy_;
  QPushButton* cmdCopyAll_;
  QPushButton* cmdClear_;
  QPushButton* cmdClearAll_;
};

}  // namespace ketrova::dialogs
