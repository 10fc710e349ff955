// ketrova run PROJECT.CPF [--job N[,M...]] [--from N] [--yes] [--quiet] [--no-grouping]:
// runs a project as the run dialog's start button does. The project is loaded into
// a CConverter, a new CEngine gets it with three display controls that print
// to stderr, and Execute runs every enabled job. Afterwards the dialog's text
// is printed on stdout: "Konvertierung beendet !" for a clean run, otherwise
// the run's log.
//
// Exit status 0 for a clean run; 1 when the run returned an error text,
// counted failed records, or the destination refused records (or the project
// did not load); 2 for bad usage; 130 when Ctrl-C stopped the run.
//
// Besides the log, stderr says what the log does not keep: how many records
// the destination refused and in which file they are (reject_file.h), how
// many records a job that failed had written before (and how to go on from
// there with --from), the place of a script error, and why the log file could
// not be written (engine/run_notes.h).
//
// --job runs only the jobs named (by number or caption, separated by commas):
// the others are disabled for this run, in memory only, so the log still
// counts all jobs. --from N starts the one job that runs at its source record
// N: the records before are passed over and keep their numbers, so
// "Datensätze -> a / b" counts the whole source and so does "Es wurden n
// Datensätze konvertiert." (n is the last record's number). It refuses a job
// that empties its target first, which would wipe what the earlier run wrote.
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
#include <optional>
#include <set>

#include "commands.h"
#include "core/converter.h"
#include "engine/engine.h"
#include "engine/run_notes.h"
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "jobs/jobs.h"
#include "platform/ado/provider.h"
#include "platform/ui/console_ui.h"
#include "project_loading.h"
#include "run_display.h"
#include "support/files.h"
#include "support/text.h"
#include "support/utf8.h"

namespace ketrova::cli {

namespace {

constexpr const char* kUsage =
    "Aufruf: ketrova run PROJEKT.CPF [--job N[,M...]] [--from N] [--yes] [--quiet] "
    "[--no-grouping]\n";

// The messages the closing box points to; the desktop shows them as its
// event log.
void PrintEventLog(const CLogs& logs) {
  if (logs.Count() == 0) return;
  std::cerr << "Ereignisprotokoll:\n";
  for (std::int32_t i = 1; i <= logs.Count(); ++i)
    std::cerr << ReplaceAll(RTrim(logs.Item(i).Message), "\r\n", "\n") << "\n";
}

std::optional<std::int32_t> Number(const std::string& text) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos || text.size() > 9)
    return std::nullopt;
  return std::stoi(text);
}

// Leaves enabled only the jobs of `list`; "" or the German reason.
std::string SelectJobs(CJobs& jobs, const std::string& list) {
  std::set<std::int32_t> chosen;
  std::size_t start = 0;
  while (start <= list.size()) {
    std::size_t end = list.find(',', start);
    if (end == std::string::npos) end = list.size();
    const std::string name = Trim(list.substr(start, end - start));
    start = end + 1;
    if (name.empty()) continue;
    std::int32_t found = 0;
    if (auto n = Number(name); n && *n >= 1 && *n <= jobs.Count()) found = *n;
    for (std::int32_t i = 1; found == 0 && i <= jobs.Count(); ++i)
      if (IsEqual(jobs.Item(i).Caption, name)) found = i;
    if (found == 0) {
      return "Keine Aufgabe \"" + name + "\" im Projekt (" + std::to_string(jobs.Count()) +
             " Aufgabe(n))";
    }
    chosen.insert(found);
  }
  if (chosen.empty()) return "--job nennt keine Aufgabe";
  for (std::int32_t i = 1; i <= jobs.Count(); ++i) jobs.Item(i).Enabled = chosen.contains(i);
  return {};
}

}  // namespace

int RunProject(const Args& args) {
  std::string file;
  std::string jobList;
  std::int32_t from = 1;
  ui::ConsoleUserInterface::Options options;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool hasValue = i + 1 < args.size();
    if (arg == "--yes") {
      options.assumeYes = true;
    } else if (arg == "--quiet") {
      options.quiet = true;
    } else if (arg == "--no-grouping") {
      // Every write committed on its own (slower; nothing lost on a kill).
      ado::SetGroupedCommits(false);
    } else if (arg == "--job" && hasValue) {
      jobList = args[++i];
    } else if (arg == "--from" && hasValue) {
      auto n = Number(args[++i]);
      if (!n || *n < 1) {
        std::cerr << "ketrova run: --from braucht eine Datensatznummer ab 1: " << args[i] << "\n"
                  << kUsage;
        return 2;
      }
      from = *n;
    } else if (file.empty() && !arg.starts_with("--")) {
      file = arg;
    } else {
      std::cerr << kUsage;
      return 2;
    }
  }
  if (file.empty()) {
    std::cerr << kUsage;
    return 2;
  }
  options.interactive = isatty(STDIN_FILENO) != 0;
  options.catchInterrupt = true;
  auto console = std::make_shared<ui::ConsoleUserInterface>(options);
  ui::SetCurrent(console);

  CConverter project;
  if (!LoadProjectFile(project, file, std::cerr)) return 1;
  CJobs& jobs = project.Jobs();
  if (jobs.Count() == 0) {
    std::cerr << "Das Projekt enthält keine Aufgabe.\n";
    return 1;
  }
  if (!jobList.empty()) {
    if (std::string error = SelectJobs(jobs, jobList); !error.empty()) {
      std::cerr << "ketrova run: " << error << "\n";
      return 2;
    }
  }
  if (from > 1) {
    std::vector<CJob*> running;
    for (CJob& job : jobs)
      if (job.Enabled) running.push_back(&job);
    if (running.size() != 1) {
      std::cerr << "ketrova run: --from gilt für genau eine Aufgabe; wählen Sie sie mit --job\n";
      return 2;
    }
    if (running.front()->JobDest().DeleteBeforeInsert) {
      std::cerr << "ketrova run: Aufgabe \"" << running.front()->Caption
                << "\" leert ihr Ziel vor dem Einfügen; --from würde die schon geschriebenen "
                   "Datensätze löschen\n";
      return 2;
    }
  }

  CEngine engine;
  RunDisplay display(*console, std::cerr, isatty(STDERR_FILENO) != 0, options.quiet);
  engine.Converter = &project;
  engine.FirstRecord = from;
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
  for (const std::string& note : RunNotes(engine, file)) std::cerr << note << "\n";

  const bool clean = engine.ErrorCount() < 1 && result.empty();
  if (clean && !engine.Cancel) {
    std::cout << "Konvertierung beendet !\n";
  } else {
    std::string log = engine.LogfileName().empty() ? "" : ReadTextFile(engine.LogfileName());
    std::cout << (log.empty() ? result + "\n" : log) << std::flush;
  }
  if (engine.Cancel) {
    std::cerr << "ketrova: abgebrochen\n";
    return 130;
  }
  return clean && engine.Rejects().Count() == 0 ? 0 : 1;
}

}  // namespace ketrova::cli
