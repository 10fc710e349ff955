// The objects through which scripts reach the job being run: JobObject is
// what they see as "Job" (Job.Cancel = True stops the job after the current
// record), JobItemObject its JobSource and JobDest. Both are views on the
// job: they hold a plain pointer to it, so the caller keeps the job alive as
// long as the script host holds the object (the engine resets the host
// before it lets go of a project).
#pragma once

#include <string>

#include "platform/script/binding.h"

namespace ketrova {

class CJob;
class CJobItem;

class JobItemObject : public script::BoundObject<JobItemObject> {
 public:
  explicit JobItemObject(CJobItem& item) : item_(&item) {}
  std::string TypeName() const override { return "CJobItem"; }
  static const script::MemberTable<JobItemObject>& Members();
  CJobItem& Item() const { return *item_; }

 private:
  CJobItem* item_;
};

class JobObject : public script::BoundObject<JobObject> {
 public:
  explicit JobObject(CJob& job) : job_(&job) {}
  std::string TypeName() const override { return "CJob"; }
  static const script::MemberTable<JobObject>& Members();
  CJob& Job() const { return *job_; }

 private:
  CJob* job_;
};

}  // namespace ketrova
