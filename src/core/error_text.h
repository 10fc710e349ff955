// The one formatter of failure texts. An operation that fails answers with a
// text built here from the pending error (Err()) and the action it was at; the
// caller shows it, logs it or passes it on. The text uses the two characters
// backslash and n for its line breaks, so that it fits a single-line literal;
// BuildErrorMessageText and BuildErrorText turn them into CR LF.
#pragma once

#include <string>

namespace ketrova {

// The core formatter: the pending error's block when an error is pending
// (the message is then dropped), otherwise the message itself appended to
// itself; then "Ausgeführte Aktion: " with the action; quotes become "´" and
// every line end becomes " \n ".
std::string BuildErrorMessage(std::string szMessage, const std::string& szAction);

// BuildErrorMessage, then each backslash-n becomes CR LF. Changes the argument.
std::string BuildErrorMessageText(std::string& szMessage, const std::string& szAction);

// Mode 1: BuildErrorMessageText, then any backslash-n left becomes CR LF. Any
// other mode: BuildErrorMessage only when the message is empty. Changes the
// argument and answers it.
std::string BuildErrorText(int inMode, std::string& szMessage, const std::string& szAction);
// The same for a message the caller does not keep.
std::string BuildErrorText(int inMode, const std::string& szMessage, const std::string& szAction);

}  // namespace ketrova
