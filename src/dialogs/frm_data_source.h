// frmDataSource: the data-store dialog, where the user picks the type of one
// store of a project (the source or the destination) and fills in the
// parameters its connection string is built from. It is the only place where
// a store's text parameters are written from the screen.
//
// On the left the explorer bar "Datenbanken" (vbaExplorer) lists one item per
// store type, its item data the TDataBaseType; on the right the page of the
// chosen type (data_source_pages.h) stands in the stack picContent; at the
// bottom the status line LabelStatusMessage and the buttons ButtonOK and
// ButtonCancel. XML and Watcom stores have no item and no page.
//
// Fields are written into the store only by OK: a page switch reloads the
// page from the store and so discards what was typed on the page left. OK
// validates the page, writes the fields (all eight parameters are cleared
// first), and tries the connection at once; a store that does not open shows
// its error text and keeps the dialog open, with the new parameters already
// in the store. Cancel, Escape, F6 and the window's close button hide the
// dialog; only Cancel counts as cancelling, so Escape on a dialog where OK
// was never pressed answers True with the store unchanged. Return does
// nothing.
//
// Requires a QApplication; boxes and the folder chooser go through
// ui::Current().
#pragma once

#include <QDialog>
#include <functional>
#include <map>
#include <string>

#include "core/enums.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QPushButton;
class QStackedWidget;

namespace ketrova {
class CConverter;
class CDatabase;
}  // namespace ketrova

namespace ketrova::dialogs {

class frmDataSource : public QDialog {
  Q_OBJECT

 public:
  explicit frmDataSource(QWidget* parent = nullptr);
  ~frmDataSource() override;

  // The direction of the store under edit, as CDatabase::DatabaseDirection
  // numbers it: 1 (dbdSource) shows the source's header and help text
  // ("Quelldatenspeicher wählen"), 2 (dbdTarget) the destination's
  // ("Zieldatenspeicher wählen"). 0, the source's number in the old code,
  // also counts as the source. To be set before Execute or Prepare.
  int DSType = dbdSource;
  // The project; must be set (non-null) before Execute or Prepare.
  CConverter* Converter = nullptr;
  // Called by OK on the Outlook page with the contact folder typed there,
  // before the store is tried, so that the caller keeps it where the store
  // reads it (no store parameter holds it). Not set: the folder is not kept.
  std::function<void(const std::string& folder)> OnContactRoot;

  // Runs the dialog modally on `database`, which must outlive the call.
  // Answers True unless the user pressed Cancel. A store whose type has no
  // item (XML, Watcom) shows "Der gewählte Datenspeicher konnte nicht
  // ermittelt werden." instead and answers True.
  bool Execute(CDatabase& database);

  // What Execute does before showing the form: fills the ODBC lists, sets the
  // headers, chooses the type (ODBC for a new project or a type below 2) and
  // shows its page. False when the type has no item. With ShowPage, lets a
  // caller render any page without running the dialog.
  bool Prepare(CDatabase& database);
  // Shows the page of a store type with its fields loaded from the store, and
  // selects its explorer item; a type without an item is ignored. Requires a
  // prepared dialog.
  void ShowPage(int databaseType);

  int PageType() const { return m_PageType; }
  // 1 after Cancel, 0 after a good OK and in a new form.
  int Cancelled() const { return m_Cancelled; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void BuildForm();
  QListWidgetItem* ItemOfType(int databaseType) const;
  void UpdateODBCEnabling();
  void ChooseFile(int databaseType);
  void ChooseFolder(int databaseType);
  // The first failing test's message, later tests overriding earlier ones;
  // "" when the page passes. May ask the "create a new file?" question.
  std::string Validate();
  void StoreFields();
  void OnOK();
  void OnCancel();

  CDatabase* m_Database = nullptr;
  QListWidgetItem* m_SelectedItem = nullptr;
  int m_PageType = 0;
  int m_Cancelled = 0;
  bool m_CreateAccessFile = false;
  bool m_CreateExcelFile = false;

  QLabel* lblContext_ = nullptr;
  QLabel* labelHeaderBig_ = nullptr;
  QListWidget* vbaExplorer_ = nullptr;
  QStackedWidget* picContent_ = nullptr;
  std::map<int, QWidget*> pages_;  // by store type
  QComboBox* cboDSNList_ = nullptr;
  QComboBox* cboDrivers_ = nullptr;
  QLabel* labelStatusMessage_ = nullptr;
  QPushButton* buttonOK_ = nullptr;
  QPushButton* buttonCancel_ = nullptr;
};

// The data-store dialog on `database` of `project`; `direction` is the store's
// direction (1 source, 2 target), which picks the header and help texts.
// Answers what ConverterDialogs::SelectDatabase answers: True unless the user
// cancelled. The dialog opens over the active window. A contact folder chosen
// on the Outlook page is kept as "ContactRoot" in the section "Ketrova" of the
// registry ini, where the contact store reads it.
bool RunDataSourceDialog(CConverter& project, int direction, CDatabase& database);

}  // namespace ketrova::dialogs
