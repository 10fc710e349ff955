// JobScriptPage: the page "Konvertieren" of the job editor (frmJob), showing
// the conversion script generated from the mapping, and the large editor
// panelEditorBig that serves this page's script and the search script of the
// page "Ziel".
//
// Controls (object names): CheckScriptUserDefined ("Benutzerdefiniertes
// Konvertierungsscript"), cmdCreateScript, cmdShowEditorUserScript, EditScript
// (a ScriptEditor, with its own "Prüfen"); and, over the host widget given to
// SetEditorBigHost (the dialog; the page itself until then), panelEditorBig
// with LabelUserdefinedScriptEditor, EditorBig (a ScriptEditor),
// cmdCloseEditor and cmdCancelEditor.
//
// The user's click on CheckScriptUserDefined enables cmdCreateScript while it
// is not ticked and cmdShowEditorUserScript while it is; unticked with an
// empty EditScript, CJob::GenerateScript fills it. Neither the box nor the
// editor's text reaches the job before Save.
//
// What the frame calls, and when:
//   form start        SetJob(job); BindMapping(mappingPage);
//                     SetEditorBigHost(dialog).
//   LoadJob           Load() at its place ("CheckScriptUserDefined,
//                     EditScript; and the enabling of cmdCreateScript and
//                     cmdShowEditorUserScript"). Load emits nothing.
//   SaveJob           step 6: CloseEditor() when EditorBigOpen();
//                     step 10: Save() (ScriptUserDefined, GenerateScript,
//                     Script = the text of EditScript).
//   CheckInput        first step for an enabled job: CloseEditor() when
//                     EditorBigOpen(); the mapping row: CheckTargetFields().
//   ShowPage          CloseEditor() when EditorBigOpen().
//   cboScriptLanguage after writing ScriptLanguage: ScriptLanguageChanged().
//   cboExportDBTables step 3, "Auswahl" of GridSourceFields: GenerateScript().
//   cmdShowEditorBig  (page "Ziel", enabled by CheckTargetFilterUserDefined):
//                     ShowEditorBig(text of EditDestinationUserdefinedFilter,
//                     a function that writes a text back into it).
//
// Boxes go through ui::Current(). The job and the mapping page must outlive
// the page's use of them. GUI thread only.
#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>
#include <string>

class QCheckBox;
class QLabel;
class QPushButton;

namespace ketrova {
class CJob;
}  // namespace ketrova

namespace ketrova::dialogs {

class JobMappingPage;
class ScriptEditor;

class JobScriptPage : public QWidget {
  Q_OBJECT

 public:
  // Whom the open large editor serves.
  enum class EditorBigFor { kNone, kScript, kSearch };

  explicit JobScriptPage(QWidget* parent = nullptr);
  ~JobScriptPage() override;

  // The job being edited; nullptr makes every operation a no-op.
  void SetJob(CJob* job) { job_ = job; }
  CJob* Job() const { return job_; }
  // The mapping page whose grid GenerateScript writes into the job; its
  // mappingChanged runs GenerateScript.
  void BindMapping(JobMappingPage* mapping);
  // The widget panelEditorBig covers when open (the dialog).
  void SetEditorBigHost(QWidget* host);

  // Job to controls: CheckScriptUserDefined = ScriptUserDefined, EditScript =
  // Script (in the job's ScriptLanguage), cmdCreateScript enabled while not
  // ticked, cmdShowEditorUserScript while ticked.
  void Load();
  // Controls to job: ScriptUserDefined, then GenerateScript, then Script =
  // the text of EditScript. Answers GenerateScript's szError.
  std::string Save();

  // CheckTargetFields: true when CheckScriptUserDefined is ticked, else when
  // the mapping page has an assignment.
  bool CheckTargetFields() const;
  // The form's script generation: nothing with a ticked
  // CheckScriptUserDefined; without assignments EditScript shows "Fehler in
  // Script:" + CR LF + TAB + "Es wurden keine Zielfelder definiert !" + CR LF
  // + CR LF; else the grid is written into the job (WriteMapping; on its
  // failure nothing more), CJob::GenerateScript runs and EditScript takes the
  // result (the job's Script too). The job's own ScriptUserDefined, which only
  // Save writes, does not stop the generation: the unticked box decides.
  // Answers szError; shows no box for it.
  std::string GenerateScript();
  // The job's ScriptLanguage changed: the editors take it and GenerateScript
  // runs (a hand-written script stays as it is).
  void ScriptLanguageChanged();

  bool ScriptUserDefined() const;
  std::string ScriptText() const;  // the text of EditScript

  // The large editor. ShowEditorBig opens it for the search script with
  // `text`; cmdCloseEditor hands the edited text to `writeBack`.
  void ShowEditorBig(const std::string& text, std::function<void(const std::string&)> writeBack);
  bool EditorBigOpen() const;
  EditorBigFor EditorBigServes() const { return serves_; }

 public slots:
  // cmdCreateScript: asks ("Warnung", Yes/No) before writing the script anew;
  // on Yes GenerateScript, and its szError in a box.
  void CreateScript();
  // cmdShowEditorUserScript: the large editor for EditScript.
  void ShowEditorUserScript();
  // cmdCloseEditor: writes the text back to whom it serves and closes.
  void CloseEditor();
  // cmdCancelEditor: closes without writing.
  void CancelEditor();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void UserDefinedToggled();
  void SetEnabling();
  void OpenEditorBig(EditorBigFor serves, const std::string& text);
  void HideEditorBig();

  CJob* job_ = nullptr;
  QPointer<JobMappingPage> mapping_;
  bool loading_ = false;
  QCheckBox* checkUserDefined_;
  QPushButton* cmdCreateScript_;
  QPushButton* cmdShowEditorUserScript_;
  ScriptEditor* editScript_;
  QPointer<QWidget> host_;
  QWidget* panelEditorBig_;
  QLabel* labelEditorBig_;
  ScriptEditor* editorBig_;
  EditorBigFor serves_ = EditorBigFor::kNone;
  std::function<void(const std::string&)> writeBack_;
};

}  // namespace ketrova::dialogs
