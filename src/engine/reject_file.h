// RejectFile: the records a run's target refused, kept beside the run's log.
//
// The run log keeps only the last refusal of a job (the next record's target
// empties the text), so every refused record is appended here with the job,
// its record number, the store's text and the source record's values. The
// file is CSV (RFC 4180: comma, fields quoted where needed, CR LF) in UTF-8.
// The first refused record of a job is preceded by a header row:
//
//   Aufgabe,Datensatz,Meldung,<the source's field names>
//
// so that a job's rows can be read, corrected and fed again as a table. The
// file is made only when something was refused; a stale one of an earlier
// run is removed when the next run starts (Reset). Nothing of this reaches the
// run log or the project's Logs.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ketrova {

class RejectFile {
 public:
  using Values = std::vector<std::pair<std::string, std::string>>;  // field name, value

  // Starts a run whose refused records go to `path`: the count goes to 0 and a
  // file of that name left by an earlier run is removed.
  void Reset(const std::string& path);

  // Appends one refused record. A file that cannot be written is not an
  // error of the run: the record is still counted and Note says why.
  void Add(const std::string& job, std::int32_t record, const std::string& text,
           const Values& values);

  std::int32_t Count() const { return count_; }
  const std::string& Path() const { return path_; }
  // The file's error ("" while every record could be written).
  const std::string& WriteError() const { return writeError_; }
  // "" when nothing was refused; otherwise what a user reads beside the run's
  // texts, e.g. "3 Datensätze wurden vom Ziel abgelehnt und in
  // /pfad/projekt-abgelehnt.csv gespeichert."
  std::string Note() const;

 private:
  std::string path_;
  std::string lastJob_;
  std::string writeError_;
  std::int32_t count_ = 0;
  bool created_ = false;
};

// One CSV field: quoted when it holds a comma, a quote, CR or LF, or begins or
// ends with a blank; quotes inside are doubled.
std::string CsvField(const std::string& value);

}  // namespace ketrova
