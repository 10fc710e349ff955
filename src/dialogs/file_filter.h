// VB's filter texts ("Projekte|*.CPF|Alle Dateien|*.*", or a bare "*.CPF") as
// the name filters of a QFileDialog, and the check that a chosen name matches
// one of them.
//
// Patterns match without regard to case, as they did on Windows: "*.CPF"
// lists demo.cpf. The patterns keep the user's spelling; the matching is the
// dialog's, which ignores case as long as its filter flags do not hold
// QDir::CaseSensitive. A dialog that sets QFileDialog::HideNameFilterDetails
// shows each description as written, as Windows did.
#pragma once

#include <QStringList>
#include <string_view>

#include "platform/ui/file_filter.h"

namespace ketrova::dialogs {

// One Qt name filter per description and pattern list, in order:
// "Projekte|*.CPF;*.XML" gives "Projekte (*.CPF *.XML)", and a description
// that names its patterns keeps them ("Projekte (*.cpf)|*.cpf" gives
// "Projekte (*.cpf) (*.cpf)", shown as "Projekte (*.cpf)" with the details
// hidden). A bare pattern list gives the patterns alone ("*.txt *.csv"). "*.*" becomes "*", which
// on Linux also lists names without a dot, as "*.*" did on Windows. A description without patterns
// is dropped; an empty text gives no filters (every file).
QStringList NameFiltersFromVb(std::string_view vbFilter);

// Whether a file's name (any folder is ignored) matches a pattern of the
// filter, without regard to case; "*.*" and "*" match every name, and so does
// an empty filter.
using ui::MatchesVbFilter;

}  // namespace ketrova::dialogs
