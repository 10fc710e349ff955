// VB's MsgBox on a QMessageBox: the button sets, icons, default and escape
// buttons of the flags, with the German captions of Windows, answering VB's
// result codes.
#pragma once

#include <string>

class QWidget;

namespace ketrova::dialogs {

// Shows a modal box (object name "MsgBox") over `parent` (may be null) and
// answers one of ui::MsgBoxResult.
//
// Buttons, left to right in VB's order, each named after the constant of its
// answer: "vbOK", "vbCancel", "vbAbort", "vbRetry", "vbIgnore", "vbYes",
// "vbNo". The default button is the one ui::DefaultButton(flags) names; Escape
// and the window's close button answer Cancel where the set has it, OK in an
// OK-only box, and do nothing in the Yes/No and Abort/Retry/Ignore sets. The
// icon comes from flags & 0x70 (16 critical, 32 question, 48 exclamation,
// 64 information). The text is shown as plain text; CR LF and LF break lines.
// An empty title shows "Ketrova".
//
// Requires a QApplication. Should the box be closed without any button (a
// test rejecting it), the answer is the escape button's, else the default's.
int ShowMessageBox(QWidget* parent, const std::string& text, int flags, const std::string& title);

}  // namespace ketrova::dialogs
