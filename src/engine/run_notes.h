// What a run's user reads beside the run's own texts, which the log and the
// run's messages do not say: why the log could not be written, where a script
// failed, where a job stopped and how to go on from there, and where the
// refused records were kept. The command line prints the notes on stderr; the
// run dialog shows them below its text in EditInfo.
#pragma once

#include <string>
#include <vector>

namespace ketrova {

class CEngine;

// The notes of the run `engine` made of the project in `projectFile` (named
// in the command that goes on after a stopped job), one text per note, in
// German; empty after a run with nothing to note. A script error's note
// quotes the failing source line indented on a line of its own.
std::vector<std::string> RunNotes(const CEngine& engine, const std::string& projectFile);

}  // namespace ketrova
