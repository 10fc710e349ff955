// frmProjekt, the project options ("Projektoptionen"): description, project
// file, log and error file, the record limit of a run, the number of sample
// rows and the script language of one project. The dialog collects; when it
// is left with OK, Execute writes the fields into the project.
//
// Controls carry their names as object names: EditProjektname, EditFileName
// and cmdOpenFile, EditLogFileName and cmdLogFile, EditErrorFileName and
// cmdErrorFile, EditRecordCount, EditRecordCountDeomodata,
// cboScriptLanguage (entries "VB-Script" and "Java-Script" with the item data
// 1 and 2), LabelInfo, ButtonOK, ButtonCancel.
//
// Keyboard: Return moves to the next field and never presses a button. No
// typing reaches EditFileName (each key beeps; Tab still leaves it); while it
// has the focus LabelInfo says how to choose the file. The two count fields
// take digits and the keys CheckKeyForType lets pass for ADO type 3: a typed
// character is filtered by its code point, Left and Right as 37 and 39; keys
// that type nothing (Delete, Home, End, Up, Down) pass, as they never reached
// the old key filter. A refused key beeps.
//
// Boxes go through ui::Current(). The caller sets Converter before Execute
// (or Load) and keeps the project alive as long as the window. A
// QApplication must exist; GUI thread only.
#pragma once

#include <QDialog>
#include <cstdint>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace ketrova {
class CConverter;
}  // namespace ketrova

namespace ketrova::dialogs {

class FrmProjekt : public QDialog {
  Q_OBJECT

 public:
  explicit FrmProjekt(QWidget* parent = nullptr);
  ~FrmProjekt() override;

  CConverter* Converter() const { return converter_; }
  void SetConverter(CConverter* converter) { converter_ = converter; }

  // Fills the controls from Converter without showing the window: each
  // member into its field, the script language selected by its number, and
  // cmdOpenFile enabled only for a project never saved or loaded (EditMode
  // edNew).
  void Load();
  // Load, the window modally, and on OK the fields written into Converter:
  // the texts as they stand; a count field left empty keeps the member's
  // value, otherwise the number its leading digits give. True exactly when
  // the user left with OK.
  bool Execute();

 public slots:
  // ButtonOK: validates; a message goes to a box and the dialog stays open.
  void ButtonOK();
  // ButtonCancel: leaves without writing anything.
  void ButtonCancel();
  // The three "..." buttons.
  void OpenFile();
  void LogFile();
  void ErrorFile();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  enum class FileKind { kProject, kLog, kError };
  void ChooseFile(FileKind kind);
  void Store();

  CConverter* converter_ = nullptr;
  std::int32_t m_Cancelled = -1;

  QLineEdit* editProjektname_;
  QLineEdit* editFileName_;
  QLineEdit* editLogFileName_;
  QLineEdit* editErrorFileName_;
  QLineEdit* editRecordCount_;
  QLineEdit* editRecordCountDeomodata_;
  QComboBox* cboScriptLanguage_;
  QPushButton* cmdOpenFile_;
  QLabel* labelInfo_;
};

}  // namespace ketrova::dialogs
