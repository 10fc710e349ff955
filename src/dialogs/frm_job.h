// frmJob: the job editor, the modal dialog in which one job of type
// jtDBOperation is edited. CConverter::JobEdit opens it through
// QtConverterDialogs::EditJob.
//
// The frame: on the left the explorer bar "Einstellungen" (vbaExplorer) with
// the entries "Allgemein", "Quelle", "Ziel", "Feldzuweisungen" and
// "Konvertieren"; on the right the header picHeader (LabelHeaderSmall, the
// text under it LabelHeaderText, lblContextDetail and LabelFieldMergeInfo)
// over the page stack panelPages, or, while CheckDemoData is ticked, the
// preview panelDemoData; at the bottom the status line: ImageError (the error
// picture, hidden until SetLastError), LabelInfo, ProgressBar, CheckDemoData,
// ButtonOK and ButtonCancel. The pages are JobGeneralPage, JobSourcePage,
// JobTargetPage, JobMappingPage and JobScriptPage; each names its controls.
//
// What the dialog writes when:
// - Many controls write into the job at once, and what they write stays when
//   the dialog is cancelled: on "Allgemein" cboJobType, cboTriggerType,
//   cboScriptLanguage (which also regenerates the script) and CheckActive; on
//   "Quelle" cboJobItemTypeSource, cboImportDBObjects (new columns),
//   OptionFilterOn/Off, "Auswahl" and "Bezeichnung" of GridSourceFields and
//   cmdChangeSourceDB (another store for the source); on "Ziel"
//   cboJobItemTypeDest, cboExportDBTables (new target columns),
//   CheckExportCreateTable and CheckExportDeletBeforeInsert.
// - Everything else is written by SaveJob, after the dialog was left with OK.
//   SaveJob also sets the job's ObjectName to the text of cboImportDBObjects,
//   and its LogFile to the text of EditLogFileName, which LoadJob does not
//   fill: OK empties a job's LogFile unless a log file was chosen anew.
//
// OK runs CheckInput and leaves the dialog only when it passes; Cancel and
// Escape leave without SaveJob. Boxes go through ui::Current(). The caller
// sets Converter before Execute or Load, and keeps the project and the job
// alive as long as the window. A QApplication must exist; GUI thread only.
#pragma once

#include <QDialog>
#include <cstdint>
#include <string>

class QCheckBox;
class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;
class QStackedWidget;

namespace ketrova {
class CConverter;
class CJob;
}  // namespace ketrova

namespace ketrova::dialogs {

class JobGeneralPage;
class JobMappingPage;
class JobScriptPage;
class JobSourcePage;
class JobTargetPage;

class frmJob : public QDialog {
  Q_OBJECT

 public:
  // The page numbers of ShowPage.
  enum Page : int { kGeneral = 0, kSource = 1, kTarget = 2, kMapping = 3, kScript = 4 };

  // The form start: builds the explorer bar, the pages, their combo entries
  // and grid columns; the three filter rows' cboFilterAndOr hold "AND", "OR"
  // and an empty entry, row 0 preset to "AND".
  explicit frmJob(QWidget* parent = nullptr);
  ~frmJob() override;

  CConverter* Converter() const { return converter_; }
  void SetConverter(CConverter* converter) { converter_ = converter; }
  // The job under edit; null before Execute or Load.
  CJob* Job() const { return job_; }

  // Loads `objJob`, shows the dialog modally and, when OK ended it, runs
  // SaveJob. True exactly when the user left with OK. The window is hidden
  // when it returns.
  bool Execute(CJob& objJob);
  // What Execute does before showing the window: keeps the job, runs LoadJob
  // and shows page 0. With ShowPage, lets a caller render any page (grab())
  // without running the dialog.
  void Load(CJob& objJob);

  // Job to controls, with the change events of every control suppressed.
  void LoadJob();
  // Controls to job, in the documented order; may show the box about a
  // filter flag without a valid filter.
  void SaveJob();
  // The checks of OK. A disabled job passes at once. Each failed check
  // replaces the message of an earlier one; the last is shown in one box
  // (title ProductName) and the answer is false.
  bool CheckInput();

  // Shows a page (kGeneral .. kScript). Page kTarget needs a target store: with
  // a destination of type dbtUndefined the box "Sie müssen zuerst eine
  // Zieldatenbank definieren !." appears and the page before it is shown.
  // Sets the headers and lblContextDetail, closes the large editor, and runs
  // SetControls and ReloadSourceDB(false).
  void ShowPage(int page);
  int CurrentPage() const { return page_; }

  // Which source controls are usable for the source's kind.
  void SetControls();
  // Refreshes what the pages show of both sides (object list, source columns,
  // mapping grids, target table); with bReload the source's columns are read
  // from the store first. Does nothing when called while it runs.
  void ReloadSourceDB(bool bReload);

  // The status line.
  void SetInfo(const std::string& text);
  // Keeps the message and shows ImageError (an empty text hides it).
  void SetLastError(const std::string& text);
  const std::string& LastError() const { return lastError_; }
  // The kept message in a box, then cleared. A click on ImageError runs it.
  void ShowLastError();

  // True while LoadJob fills the form: change handlers do nothing then.
  bool Loading() const { return loading_; }
  // True until OK ended the dialog.
  bool Cancelled() const { return cancelled_; }

  JobGeneralPage& GeneralPage() const { return *general_; }
  JobSourcePage& SourcePage() const { return *source_; }
  JobTargetPage& TargetPage() const { return *target_; }
  JobMappingPage& MappingPage() const { return *mapping_; }
  JobScriptPage& ScriptPage() const { return *script_; }
  QProgressBar& ProgressBar() const { return *progressBar_; }
  // The text of ProductName, or "Ketrova" without a Converter.
  std::string Title() const;

 public slots:
  void ButtonOK();
  void ButtonCancel();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void BuildForm();
  void UpdateHeaderInfo();
  // Shows the preview instead of the pages while CheckDemoData is ticked.
  void DemoDataToggled(bool checked);

  CConverter* converter_ = nullptr;
  CJob* job_ = nullptr;
  bool cancelled_ = true;
  bool loading_ = false;
  bool reloading_ = false;
  int page_ = 0;
  std::string lastError_;

  QListWidget* vbaExplorer_;
  QLabel* labelHeaderSmall_;
  QLabel* labelHeaderText_;
  QLabel* lblContextDetail_;
  QLabel* labelFieldMergeInfo_;
  QStackedWidget* content_;  // panelPages or panelDemoData
  QStackedWidget* panelPages_;
  QLabel* imageError_;
  QLabel* labelInfo_;
  QProgressBar* progressBar_;
  QCheckBox* checkDemoData_;
  QPushButton* buttonOK_;
  QPushButton* buttonCancel_;
  JobGeneralPage* general_;
  JobSourcePage* source_;
  JobTargetPage* target_;
  JobMappingPage* mapping_;
  JobScriptPage* script_;
};

}  // namespace ketrova::dialogs
