// CEngine: one run of a project, from the project file to the closing report.
// The run dialog makes a fresh one for every press of its start button, hands
// it the project and three display controls, calls Execute and reads
// ErrorCount and LogfileName afterwards. Declared here with its members; the
// run itself is filled with the engine's own work.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engine/session.h"
#include "support/object.h"

namespace ketrova {

class CConverter;

class CEngine {
 public:
  CEngine() : runtime_(std::make_shared<CRuntime>()) {}

  // Display controls (Min, Max, Value, Visible / Text), set by the dialog.
  ObjectPtr ProgressBar;
  ObjectPtr ProgressBarTotal;
  ObjectPtr EditInfo;
  CConverter* Converter = nullptr;
  std::int32_t ErrorCount() const { return errorCount_; }
  const std::string& LogfileName() const { return logfileName_; }
  // -1 for true, as the program's truth values are.
  std::int32_t Cancel = 0;
  const std::shared_ptr<CRuntime>& Runtime() const { return runtime_; }

  // The last error text of the run, "" for a clean one. Until the run is
  // filled in it answers "" and runs nothing.
  std::string Execute(std::string& szFileName) {
    (void)szFileName;
    return {};
  }

 private:
  std::shared_ptr<CRuntime> runtime_;
  std::string logfileName_;
  std::int32_t errorCount_ = 0;
};

}  // namespace ketrova
