// CJob: one conversion step of a project: what is read (JobSource), what is
// written (JobDest), by which script, and how failures and existing target
// rows are treated. It does no work by itself; the engine runs it and the
// editor edits it. The job owns its two sides; Converter is a back reference
// that SetConverter passes down to them.
#pragma once

#include <cstdint>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "core/enums.h"
#include "jobs/job_item.h"

namespace ketrova {

namespace ado {
class Recordset;
}  // namespace ado

class CConverter;

class CJob {
 public:
  // Only ScriptLanguage, JobType and Cancel are set here; the rest takes its
  // values from Clear, which CJobs.Add and NewJob run.
  CJob();
  ~CJob();
  CJob(const CJob&) = delete;
  CJob& operator=(const CJob&) = delete;

  std::int32_t Index = 0;
  std::string Caption;
  std::string Key;
  std::string ObjectName;
  bool Enabled = false;
  bool DestinationUpdate = false;
  bool CancelOnError = false;
  bool Validate = false;
  std::string ValidateError;
  std::string Script;
  std::string ScriptFile;
  std::string LogFile;
  bool ScriptUserDefined = false;
  std::int32_t MaxRecords = 0;

  std::int32_t TriggerType = 0;
  std::int32_t JobType = jtDBOperation;
  CConverter* Converter = nullptr;
  void SetConverter(CConverter* converter);
  CJobItem& JobSource() { return *jobSource_; }
  const CJobItem& JobSource() const { return *jobSource_; }
  CJobItem& JobDest() { return *jobDest_; }
  const CJobItem& JobDest() const { return *jobDest_; }
  std::int32_t ScriptLanguage = sclVBScript;
  bool Cancel = false;

  // Runs the checks in order; the first failure sets ValidateError (success
  // leaves it as it stood). Sets Validate and answers it.
  bool CheckValidate();
  void Save(pugi::xml_node objRootNode);
  // Reads the job at `szTreeNode` below `objRootNode` (or `objRootNode` itself
  // when the path is empty); "" or an error text. Ends with CheckValidate.
  std::string Load(const std::string& szTreeNode, pugi::xml_node objRootNode);
  // Converter, Cancel and the two sides themselves stay.
  void Clear();
  std::string TriggerTypeToString() const;
  // Copies the columns of one side over the other's, as clones.
  void CopyColumns(bool bSource2Target);
  void RefreshKeyBrackets();

  // Writes txConvertMain from the mapping into Script and answers it; "" with
  // szError set on failure, "" and nothing touched when ScriptUserDefined.
  std::string GenerateScript(std::string& szError);
  // The frame of txSQLSearchResult, kept as the target's search script.
  std::string GenerateScriptFilterUserDefined();
  // The frame of txSQLDestinationUpdate; not stored.
  std::string GenerateScriptDestinationUpdate();
  // One INSERT or UPDATE statement from the current record of the source.
  std::string GenerateUpdateInsertSQLFieldValues(ado::Recordset& objRSSource, bool bInsert,
                                                 std::int32_t iDatabaseType);

 private:
  std::unique_ptr<CJobItem> jobSource_;
  std::unique_ptr<CJobItem> jobDest_;
};

}  // namespace ketrova
