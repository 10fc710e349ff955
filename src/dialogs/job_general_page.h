// JobGeneralPage: the page "Allgemein" of the job editor (frmJob): what the
// job is and when it runs.
//
// Controls (object names, labels): EditJobCaption ("Beschreibung"),
// cboJobType ("Aufgabentyp": "DBOperation", "FileCopy", "Registry", "EMail",
// item data the TJobType), cboTriggerType ("Ausführen bei":
// "OnStartProject" .. "OnEndJob", item data the TTriggerType),
// EditRecordCount ("Anzahl Datensätze"), EditLogFileName and cmdOpenFile
// ("Logdatei"), CheckActive ("Aktiv"), cboScriptLanguage ("Scriptsprache":
// "VB-Script", "Java-Script", item data the TScriptLanguage).
//
// cboJobType, cboTriggerType, cboScriptLanguage and CheckActive write into the
// job as soon as the user changes them (not while the form is filled);
// cboScriptLanguage then lets the script page regenerate the script.
//
// The log file: cmdOpenFile offers "*.LOG" files in the project's working
// folder; a chosen file that exists must be confirmed for overwriting ("Die
// Datei existiert bereits, möchten Sie sie überschreiben ?", No keeps the
// field), a name that is not plain gives "Dies ist keine gültige Datei !"
// and empties the field. Leaving EditLogFileName with a name that is not plain
// gives "Dies ist keine gültige Logdatei !", with one that does not exist
// "Die Logdatei existiert nicht !"; both empty the field.
#pragma once

#include <QWidget>
#include <string>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;

namespace ketrova::dialogs {

class frmJob;

class JobGeneralPage : public QWidget {
  Q_OBJECT

 public:
  explicit JobGeneralPage(frmJob& form);

  // LoadJob's part, in its order: JobType, TriggerType, Caption, MaxRecords,
  // Enabled, ScriptLanguage. EditLogFileName is not filled.
  void Load();

  QLineEdit* EditJobCaption;
  QComboBox* cboJobType;
  QComboBox* cboTriggerType;
  QLineEdit* EditRecordCount;
  QLineEdit* EditLogFileName;
  QPushButton* cmdOpenFile;
  QCheckBox* CheckActive;
  QComboBox* cboScriptLanguage;

 public slots:
  // cmdOpenFile.
  void OpenFile();
  // Leaving EditLogFileName.
  void CheckLogFileName();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  frmJob& form_;
};

}  // namespace ketrova::dialogs
