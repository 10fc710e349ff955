// The three display controls a run hands to CEngine (the records bar, the jobs
// bar and the status text), made for the terminal. Status texts go to stderr
// one per line; on a terminal a progress line below them shows the job and the
// records of the current job, drawn through the console user interface's work
// form so that a question during the run clears it first. The per-record
// status ("Datensatz n / m wird bearbeitet ...") is progress, not news: it only
// feeds the progress line and is dropped when stderr is no terminal. The
// engine names only every 20th record; the line takes the number from the
// records bar instead, so that it shows the record at hand up to the last.
//
// The caller keeps the RunDisplay alive for as long as the engine holds the
// controls.
#pragma once

#include <chrono>
#include <iosfwd>
#include <optional>
#include <string>

#include "platform/ui/user_interface.h"
#include "support/object.h"

namespace ketrova::cli {

class RunDisplay {
 public:
  struct Bar {
    double min = 0;
    double max = 100;
    double value = 0;
    bool visible = false;
  };

  // `quiet` shows nothing at all; `terminal` says whether `err` is one.
  RunDisplay(ui::UserInterface& ui, std::ostream& err, bool terminal, bool quiet);
  ~RunDisplay();

  // Controls with the members Min, Max, Value, Visible and Refresh (the bars)
  // and Text, Visible and Refresh (the status text).
  ObjectPtr RecordsBar();
  ObjectPtr JobsBar();
  ObjectPtr StatusText();

  // Called by the controls.
  void Changed();
  void SetStatus(const std::string& text);
  const std::string& Status() const { return status_; }
  Bar records, jobs;

  // Clears the progress line.
  void Finish();

 private:
  void Draw();
  void Erase();
  // The progress line's text: during the records of a job, the job and the
  // records bar's value ("Datensatz 37 / 93 wird bearbeitet ...").
  std::string RecordLine() const;

  ui::UserInterface& ui_;
  std::ostream& err_;
  bool terminal_;
  bool quiet_;
  std::string status_;    // the text as the engine set it
  std::string progress_;  // the record status shown in the progress line
  bool drawn_ = false;
  std::optional<std::string> recordJob_;  // the job's lines while its records run
  std::chrono::steady_clock::time_point lastDraw_;
};

}  // namespace ketrova::cli
