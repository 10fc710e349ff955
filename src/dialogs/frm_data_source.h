// The data-store dialog: where the user chooses the type of one store of a
// project and the parameters its connection is built from.
#pragma once

namespace ketrova {
class CConverter;
class CDatabase;
}  // namespace ketrova

namespace ketrova::dialogs {

// The data-store dialog on `database` of `project`; `direction` is the store's
// direction (1 source, 2 target). Answers what ConverterDialogs::SelectDatabase
// answers.
bool RunDataSourceDialog(CConverter& project, int direction, CDatabase& database);

}  // namespace ketrova::dialogs
