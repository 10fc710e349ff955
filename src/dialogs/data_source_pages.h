// The pages of the data-store dialog: for each store type of the explorer bar
// its caption, its help text and its fields, which store parameter each field
// shows and which one it writes, and the default an empty parameter shows.
//
// The table holds three asymmetries on purpose: a SQL Server or Interbase host
// goes into DataSourceName (where the connection string later looks for it);
// the MySQL host is stored in ServerName but shown from DataSourceName, so a
// reopened page shows "localhost" again; and the Interbase database field is
// neither shown from nor stored into the store, only checked for content.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stores/list_controls.h"

class QComboBox;
class QWidget;

namespace ketrova {
class CConverter;
class CDatabase;
}  // namespace ketrova

namespace ketrova::dialogs {

// What an empty parameter shows when its page is loaded.
// kContactRoot: the contact folder the Outlook store reads (contacts::ContactRoot),
// shown although no store parameter holds it.
enum class FieldDefault {
  kNone,
  kComputerName,
  kProjectDirectory,
  kLocalhost,
  kMySQLPort,
  kContactRoot
};

enum class FieldKind {
  kText,
  kPassword,
  kPath,        // a file or folder, with the page's chooser button beside it
  kChosenPath,  // as kPath, but only the button fills it: typing is refused
  kCombo,       // an editable combo box
};

struct StoreField {
  const char* name;       // object name of the input
  const char* labelName;  // object name of its caption
  const char* caption;
  std::string CDatabase::*load;   // null: never loaded
  std::string CDatabase::*store;  // null: never stored
  FieldDefault byDefault;
  FieldKind kind;
};

struct StorePage {
  int type;              // TDataBaseType
  const char* caption;   // the explorer item's text
  const char* helpName;  // object name of the help label
  const char* help;
  std::vector<StoreField> fields;  // in the order shown
  const char* chooserName;         // the "..." button beside a file or folder field; may be null
};

// The pages in the order of the explorer bar.
const std::vector<StorePage>& StorePages();
// The page of a store type; null for a type without one (XML, Watcom ...).
const StorePage* StorePageOf(int type);

// The first entry of the ODBC data-source list, which stands for "no data
// source": it is shown for an empty DataSourceName and stored as "".
inline constexpr const char* kNoDataSource = "(Keine)";

// Builds the page's widget (object name "picContent" + type): a title, the
// help text, the fields with their captions and the chooser button, all
// named as the table names them.
QWidget* BuildStorePage(const StorePage& page);

// Shows the store's parameters (or the defaults) in the page's fields; a
// field that loads no parameter shows its default, if it has one. File and
// folder fields get the caret behind their last character.
void LoadStorePage(const StorePage& page, QWidget& widget, const CDatabase& database,
                   const CConverter& project);
// Writes the page's fields into the store; parameters that no field stores
// are left as they are.
void StoreStorePage(const StorePage& page, const QWidget& widget, CDatabase& database);

// The text of the named line edit or combo box on `widget` ("" when none).
std::string FieldText(const QWidget& widget, const char* name);

}  // namespace ketrova::dialogs
