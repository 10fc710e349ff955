#include "jobs/jobs.h"

#include "core/converter.h"
#include "core/work_form.h"
#include "core/xml_node.h"
#include "platform/ui/user_interface.h"
#include "stores/database.h"
#include "support/text.h"

namespace ketrova {

CJobs::~CJobs() {
  for (CJob& job : items_) job.Clear();
  items_.Clear();
}

void CJobs::SetConverter(CConverter* converter) {
  Converter = converter;
  for (CJob& job : items_) job.SetConverter(converter);
}

std::unique_ptr<CJob> CJobs::NumberedJob() const {
  auto job = std::make_unique<CJob>();
  job->SetConverter(Converter);
  job->Clear();
  job->SetConverter(Converter);
  job->Index = Count() + 1;
  job->Key = std::to_string(job->Index);
  return job;
}

CJob& CJobs::Add() {
  std::unique_ptr<CJob> job = NumberedJob();
  std::string key = job->Key;
  CJob& added = items_.Add(std::move(job), key);
  RenumberJobs();
  return added;
}

bool CJobs::MoveJob(std::int32_t& liFromIndex, std::int32_t& liToIndex) {
  try {
    std::unique_ptr<CJob> moving;
    std::vector<std::unique_ptr<CJob>> others;
    while (items_.Count() > 0) {
      std::unique_ptr<CJob> job = items_.Remove(1);
      if (job->Index == liFromIndex && !moving)
        moving = std::move(job);
      else
        others.push_back(std::move(job));
    }
    if (liToIndex > static_cast<std::int32_t>(others.size()))
      liToIndex = static_cast<std::int32_t>(others.size());
    std::int32_t counter = 1;
    auto append = [&](std::unique_ptr<CJob> job) {
      job->Index = Count() + 1;
      job->Key = std::to_string(job->Index);
      std::string key = job->Key;
      items_.Add(std::move(job), key);
    };
    for (auto& job : others) {
      // The job put aside goes in only in front of another one, so it can
      // never reach the last place; kept as the list always behaved.
      if (counter == liToIndex && moving) append(std::move(moving));
      append(std::move(job));
      ++counter;
    }
  } catch (...) {
    // A failing step beeps and leaves the list as far as the steps have come.
    ui::Current().Beep();
  }
  return false;
}

std::unique_ptr<CJob> CJobs::NewJob() {
  std::unique_ptr<CJob> job = NumberedJob();
  std::int32_t type = jitTableView;
  if (Converter) {
    switch (Converter->SourceDataBase().DatabaseType) {
      case dbtExcel:
        type = jitExcel;
        break;
      case dbtOutlook:
        type = jitOutlook;
        break;
      case dbtText:
        type = jitText;
        break;
      case dbtXML:
        type = jitXML;
        break;
      default:
        break;
    }
  }
  job->JobSource().JobType = type;
  job->JobDest().JobType = type;
  RenumberJobs();
  return job;
}

void CJobs::Remove(std::int32_t Index) {
  items_.Remove(Index);
  RenumberJobs();
}

void CJobs::Remove(std::string_view Key) {
  items_.Remove(Key);
  RenumberJobs();
}

CJob& CJobs::Insert(std::unique_ptr<CJob> objJob, std::int32_t IndexAfter) {
  std::string key = objJob->Key;
  CJob& added = IndexAfter > 0 ? items_.Add(std::move(objJob), key, 0, IndexAfter)
                               : items_.Add(std::move(objJob), key, Count() > 0 ? 1 : 0);
  RenumberJobs();
  return added;
}

void CJobs::SelectAll() {
  for (CJob& job : items_) job.Enabled = true;
  RenumberJobs();
}

void CJobs::DeSelectAll() {
  for (CJob& job : items_) job.Enabled = false;
  RenumberJobs();
}

void CJobs::Clear() {
  for (CJob& job : items_) job.Clear();
  while (items_.Count() > 0) items_.Remove(1);
  RenumberJobs();
}

std::string CJobs::Save(pugi::xml_node objRootNode, bool bShowMessage) {
  CXMLADO& xml = Converter->XMLLib();
  xml.WriteNodeAttribute(objRootNode, "COUNT", std::to_string(Count()));
  if (bShowMessage) WorkFormProgress(0, Count() + 1, 0);
  std::int32_t step = 0;
  for (CJob& job : items_) {
    if (bShowMessage) {
      WorkFormText("", job.Caption);
      WorkFormProgress(0, Count() + 1, ++step);
    }
    pugi::xml_node node = xml.CreateElement("JOB");
    job.Save(node);
    xml.AppendChild(objRootNode, node);
  }
  return {};
}

std::string CJobs::Load(const std::string& szTreeNode, pugi::xml_node objNode, bool bShowMessage) {
  CXMLADO& xml = Converter->XMLLib();
  std::string error;
  pugi::xml_node node = xml.FindNode(szTreeNode, objNode);
  if (node) {
    std::int32_t count = 0;
    if (bShowMessage) {
      count = Variant(xml.ReadAttribute(node, "COUNT", "0")).ToLong();
      WorkFormProgress(0, count + 1, 0);
    }
    std::int32_t step = 0;
    for (pugi::xml_node child : node.children()) {
      if (child.type() != pugi::node_element) continue;
      CJob& job = Add();
      error = job.Load("", child);
      if (bShowMessage) {
        WorkFormText("", job.Caption);
        WorkFormProgress(0, count + 1, std::min(++step, count + 1));
      }
      if (!error.empty()) break;
    }
  }
  RenumberJobs();
  return error;
}

void CJobs::RenumberJobs() {
  jobsEnabled_ = 0;
  jobsDisabled_ = 0;
  std::int32_t counter = 1;
  for (CJob& job : items_) {
    job.Index = counter;
    job.Key = std::to_string(counter);
    if (job.Enabled)
      ++jobsEnabled_;
    else
      ++jobsDisabled_;
    ++counter;
  }
}

void CJobs::RenameDestinationObject(const std::string& szOldName, const std::string& szNewName) {
  for (CJob& job : items_)
    if (IsEqual(job.JobDest().ItemObjectName, szOldName)) job.JobDest().ItemObjectName = szNewName;
}

CJob* CJobs::FindJobByObjectName(const std::string& szName, bool bSource) const {
  for (CJob& job : items_) {
    const std::string& name =
        bSource ? job.JobSource().ItemObjectName : job.JobDest().ItemObjectName;
    if (IsEqual(name, szName)) return &job;
  }
  return nullptr;
}

}  // namespace ketrova
