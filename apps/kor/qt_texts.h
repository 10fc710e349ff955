// Qt's own texts (the file dialogs' buttons, tool tips and warnings) in
// German, as every text of the product is.
#pragma once

namespace kor {

// Installs Qt's German translation when the system has it (Debian's
// qt6-translations-l10n); false when it has none, and Qt's texts stay English.
bool InstallGermanQtTexts();

}  // namespace kor
