// The dialogs that CConverter opens: the project options, the run dialog, the
// job editor and the data-store dialog. The desktop application implements
// this interface with its own windows and sets it once at start; without one,
// every dialog answers as a cancelled dialog does and the run dialog does
// nothing.
#pragma once

#include <memory>
#include <string>

namespace ketrova {

class CConverter;
class CDatabase;
class CJob;

class ConverterDialogs {
 public:
  virtual ~ConverterDialogs() = default;
  // The project options dialog on `project`; true when confirmed.
  virtual bool EditProject(CConverter& project) = 0;
  // The run dialog on `project`, started with the project file `fileName`.
  virtual void Run(CConverter& project, const std::string& fileName) = 0;
  // The job editor on `job`; true when confirmed.
  virtual bool EditJob(CConverter& project, CJob& job) = 0;
  // The data-store dialog for `database` in `direction` (1 source, 2 target);
  // true when confirmed.
  virtual bool SelectDatabase(CConverter& project, int direction, CDatabase& database) = 0;
};

// The process's dialogs, or null when there are none.
ConverterDialogs* CurrentConverterDialogs();
// Sets the process's dialogs; null removes them.
void SetConverterDialogs(std::shared_ptr<ConverterDialogs> dialogs);

}  // namespace ketrova
