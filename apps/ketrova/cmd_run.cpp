// ketrova run PROJECT.CPF [--yes] [--quiet]: runs a project as the run
// dialog's start button does. The project is loaded into a CConverter, a new
// CEngine gets it with three display controls that print to stderr, and
// Execute runs every enabled job. Afterwards the dialog's text is printed on
// stdout: "Konvertierung beendet !" for a clean run, otherwise the run's log.
// Exit status 0 for a clean run, 1 when the run returned an error text or
// counted failed records (or the project did not load), 2 for bad usage.
//
// Questions during the run (Ctrl-C asks whether to stop) are asked on the
// terminal; --yes answers them with yes, and without a terminal on stdin each
// takes its default button. --quiet prints neither progress nor status texts;
// the event log (the messages of CLogs) follows the run on stderr in any case.
// --no-grouping has every write committed on its own instead of in groups of
// at most 100 ms (see the README); the setting GroupedCommits=0 in the section
// Ketrova of the registry ini does the same for every run.
#include <unistd.h>

#include <iostream>

#include "commands.h"
#include "core/converter.h"
#include "engine/engine.h"
#include "platform/ado/provider.h"
#include "platform/ui/console_ui.h"
#include "run_display.h"
#include "support/files.h"
#include "support/utf8.h"

namespace ketrova::cli {

namespace {

constexpr const char* kUsage =
    "Aufruf: ketrova run PROJEKT.CPF [--yes] [--quiet] [--no-grouping]\n";

// The messages the closing box points to; the desktop shows them as its
// event log.
void PrintEventLog(const CLogs& logs) {
  if (logs.Count() == 0) return;
  std::cerr << "Ereignisprotokoll:\n";
  for (std::int32_t i = 1; i <= logs.Count(); ++i)
    std::cerr << ReplaceAll(RTrim(logs.Item(i).Message), "\r\n", "\n") << "\n";
}

}  // namespace

int RunProject(const Args& args) {
  std::string file;
  ui::ConsoleUserInterface::Options options;
  bool badUsage = false;
  for (const auto& arg : args) {
    if (arg == "--yes") {
      options.assumeYes = true;
    } else if (arg == "--quiet") {
      options.quiet = true;
    } else if (arg == "--no-grouping") {
      // Every write committed on its own (slower; nothing lost on a kill).
      ado::SetGroupedCommits(false);
    } else if (file.empty() && !arg.starts_with("--")) {
      file = arg;
    } else {
      badUsage = true;
    }
  }
  if (badUsage || file.empty()) {
    std::cerr << kUsage;
    return 2;
  }
  options.interactive = isatty(STDIN_FILENO) != 0;
  options.catchInterrupt = true;
  auto console = std::make_shared<ui::ConsoleUserInterface>(options);
  ui::SetCurrent(console);

  CConverter project;
  std::string loadError = project.LoadProject(file);
  if (!loadError.empty()) {
    std::cerr << loadError << "\n";
    return 1;
  }

  CEngine engine;
  RunDisplay display(*console, std::cerr, isatty(STDERR_FILENO) != 0, options.quiet);
  engine.Converter = &project;
  engine.ProgressBar = display.RecordsBar();
  engine.ProgressBarTotal = display.JobsBar();
  engine.EditInfo = display.StatusText();
  // Ctrl-C reaches the run at its next yield, where it asks whether to stop.
  console->onInterrupt = [&engine] { engine.Cancel = -1; };

  std::string noFile;
  std::string result = engine.Execute(noFile);
  console->onInterrupt = nullptr;
  display.Finish();
  PrintEventLog(project.Logs());

  if (engine.ErrorCount() < 1 && result.empty()) {
    std::cout << "Konvertierung beendet !\n";
    return 0;
  }
  std::string log = engine.LogfileName().empty() ? "" : ReadTextFile(engine.LogfileName());
  std::cout << (log.empty() ? result + "\n" : log) << std::flush;
  return 1;
}

}  // namespace ketrova::cli
