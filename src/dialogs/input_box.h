// VBScript's InputBox as a Qt dialog.
#pragma once

#include <optional>
#include <string>

class QWidget;

namespace ketrova::dialogs {

// Shows a modal dialog (object name "InputBox") over `parent` (may be null):
// the prompt in the label "lblPrompt" (plain text, CR LF breaks lines), the
// line edit "txtInput" holding `defaultText`, selected, and the buttons "vbOK"
// (the default) and "vbCancel". Answers the text entered, or nullopt when the
// dialog is cancelled (Abbrechen, Escape, the window's close button). An
// empty title shows "Ketrova". Requires a QApplication.
std::optional<std::string> ShowInputBox(QWidget* parent, const std::string& prompt,
                                        const std::string& title, const std::string& defaultText);

}  // namespace ketrova::dialogs
