// CJobs: the ordered job list of a project. It keeps each job's Index and Key
// in step with its place (RenumberJobs), counts enabled and disabled jobs and
// makes new jobs with defaults that fit the source store. The list owns its
// jobs; the keys inside the collection stay those given when a job was added.
#pragma once

#include <cstdint>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "jobs/job.h"
#include "support/collection.h"

namespace ketrova {

class CConverter;

class CJobs {
 public:
  CJobs() = default;
  ~CJobs();
  CJobs(const CJobs&) = delete;
  CJobs& operator=(const CJobs&) = delete;

  CConverter* Converter = nullptr;
  void SetConverter(CConverter* converter);
  std::int32_t JobsEnabled() const { return jobsEnabled_; }
  std::int32_t JobsDisabled() const { return jobsDisabled_; }

  CJob& Add();
  // Always false, also on success. Changes liToIndex when it is clamped.
  bool MoveJob(std::int32_t& liFromIndex, std::int32_t& liToIndex);
  // A job for the editor, not in the list; the caller owns it until Insert.
  std::unique_ptr<CJob> NewJob();
  void Remove(std::int32_t Index);
  void Remove(std::string_view Key);
  // Adds the job under its own Key behind the place `IndexAfter` (0: first).
  CJob& Insert(std::unique_ptr<CJob> objJob, std::int32_t IndexAfter);
  CJob& Item(std::int32_t Index) const { return items_.Item(Index); }
  CJob& Item(std::string_view Key) const { return items_.Item(Key); }
  std::int32_t Count() const { return items_.Count(); }
  void SelectAll();
  void DeSelectAll();
  void Clear();
  std::string Save(pugi::xml_node objRootNode, bool bShowMessage = false);
  std::string Load(const std::string& szTreeNode, pugi::xml_node objNode,
                   bool bShowMessage = false);

  void RenumberJobs();
  void RenameDestinationObject(const std::string& szOldName, const std::string& szNewName);
  CJob* FindJobByObjectName(const std::string& szName, bool bSource) const;

  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  // A cleared job with the Converter, numbered after the last one.
  std::unique_ptr<CJob> NumberedJob() const;

  Collection<CJob> items_;
  std::int32_t jobsEnabled_ = 0;
  std::int32_t jobsDisabled_ = 0;
};

}  // namespace ketrova
