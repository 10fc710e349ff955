// The fixture of the engine's end-to-end tests: a project in memory whose
// destination is the back-end under test (an SQLite file through the SQLite3
// ODBC driver, or a server database of the test's own), whose source is an
// SQLite file or a folder of CSV files that the test writes, a scripted user
// interface, and helpers that run the project and read the log and the
// target's rows.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "backend.h"
#include "core/converter.h"
#include "engine/engine.h"
#include "jobs/job.h"
#include "platform/ui/scripted_ui.h"

namespace ketrova::testing {

class EngineTest : public ado::testing::BackendTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  // The source: an SQLite file filled by `statements`, or CSV files.
  void SourceSQLite(const std::vector<std::string>& statements);
  void SourceCsv(const std::string& fileName, const std::string& content);
  // A source table `name` (Nr INTEGER key, Name TEXT, Betrag REAL) with rows 1..count.
  void SourceNumbers(const std::string& name, int count);
  // An enabled job from `sourceTable` into `destTable` with a hand-written
  // script; the target's columns are Nr (key), Name and Betrag.
  CJob& AddJob(const std::string& caption, const std::string& sourceTable,
               const std::string& destTable, const std::string& script);

  // Runs the project as the run dialog does, each job from its source record
  // `firstRecord`; the engine stays for asserts.
  std::string Run(std::int32_t firstRecord = 1);
  // The log file, byte for byte, with the times of "Start ->" and "End ->"
  // and the test's folder masked.
  std::string Log() const;
  // Compares the log with tests/data/engine/<name>.log (SQLite only: the
  // servers' logs name other store types). KETROVA_UPDATE_EXPECTED=1 writes
  // the file instead.
  void ExpectLog(const std::string& name) const;
  // The rows of a query on the destination, each as "a|b|c".
  std::vector<std::string> Rows(const std::string& sql);
  std::string Messages() const;

  std::filesystem::path work;
  std::unique_ptr<CConverter> project;
  std::unique_ptr<CEngine> engine;
  std::shared_ptr<ui::ScriptedUserInterface> screen;
  std::string result;
};

// The source and destination scripts of a plain copy of Nr, Name and Betrag.
std::string CopyScript();

}  // namespace ketrova::testing
