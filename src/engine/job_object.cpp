#include "engine/job_object.h"

#include <cstdint>
#include <memory>
#include <type_traits>

#include "jobs/job.h"
#include "jobs/job_item.h"
#include "platform/ado/recordset.h"

namespace ketrova {

namespace {

template <typename T>
Variant ToVariant(const T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    return Variant(value);
  } else if constexpr (std::is_same_v<T, std::int32_t>) {
    return Variant::Long(value);
  } else {
    return Variant(value);
  }
}

template <typename T>
T FromVariant(const Variant& value) {
  if constexpr (std::is_same_v<T, bool>) {
    return value.ToBool();
  } else if constexpr (std::is_same_v<T, std::int32_t>) {
    return value.ToLong();
  } else {
    return value.ToString();
  }
}

// Adds data members of the viewed object as read-write properties.
template <typename Self, typename Target, Target& (Self::*Get)() const>
struct DataMembers {
  script::MemberTable<Self>& table;

  template <typename T>
  DataMembers& Add(std::string name, T Target::*member) {
    table.Property(
        std::move(name), [member](Self& s, script::Args) { return ToVariant((s.*Get)().*member); },
        [member](Self& s, script::Args, const Variant& v) {
          (s.*Get)().*member = FromVariant<T>(v);
        });
    return *this;
  }
  template <typename T>
  DataMembers& ReadOnly(std::string name, T Target::*member) {
    table.Property(std::move(name),
                   [member](Self& s, script::Args) { return ToVariant((s.*Get)().*member); });
    return *this;
  }
};

script::MemberTable<JobItemObject> MakeJobItemMembers() {
  script::MemberTable<JobItemObject> table;
  DataMembers<JobItemObject, CJobItem, &JobItemObject::Item>{table}
      .Add("Index", &CJobItem::Index)
      .Add("Name", &CJobItem::Name)
      .Add("Key", &CJobItem::Key)
      .Add("SQL", &CJobItem::SQL)
      .Add("SortFields", &CJobItem::SortFields)
      .Add("GroupFields", &CJobItem::GroupFields)
      .Add("FilterFields", &CJobItem::FilterFields)
      .Add("Filtered", &CJobItem::Filtered)
      .Add("DestinationFilterUserDefined", &CJobItem::DestinationFilterUserDefined)
      .Add("DestinationFilterUserDefinedScript", &CJobItem::DestinationFilterUserDefinedScript)
      .Add("DeleteBeforeInsert", &CJobItem::DeleteBeforeInsert)
      .Add("CreateTable", &CJobItem::CreateTable)
      .Add("FieldDelimiter", &CJobItem::FieldDelimiter)
      .Add("FieldSeparater", &CJobItem::FieldSeparater)
      .Add("KeyField", &CJobItem::KeyField)
      .Add("KeyFieldBracket", &CJobItem::KeyFieldBracket)
      .Add("FileName", &CJobItem::FileName)
      .Add("LastErrorNumber", &CJobItem::LastErrorNumber)
      .Add("LastErrorMessage", &CJobItem::LastErrorMessage)
      .Add("Direction", &CJobItem::Direction)
      .Add("ItemObjectName", &CJobItem::ItemObjectName)
      .Add("JobType", &CJobItem::JobType);
  table.Property("Recordset", [](JobItemObject& o, script::Args) {
    return Variant(ObjectPtr(o.Item().Recordset));
  });
  table.Property("DifferentDataBase", [](JobItemObject& o, script::Args) {
    return Variant(o.Item().DifferentDataBase());
  });
  table.Method("GetListFields", 0, 0,
               [](JobItemObject& o, script::Args) { return Variant(o.Item().GetListFields()); });
  table.Method("GetSourceSQL", 0, 0,
               [](JobItemObject& o, script::Args) { return Variant(o.Item().GetSourceSQL()); });
  table.Method("GenerateSQLCount", 0, 0,
               [](JobItemObject& o, script::Args) { return Variant(o.Item().GenerateSQLCount()); });
  table.Method("GenerateSQLDelete", 0, 0, [](JobItemObject& o, script::Args) {
    return Variant(o.Item().GenerateSQLDelete());
  });
  table.Method("GetColumnFieldType", 1, 1, [](JobItemObject& o, script::Args a) {
    return Variant::Long(o.Item().GetColumnFieldType(a[0].ToString()));
  });
  return table;
}

script::MemberTable<JobObject> MakeJobMembers() {
  script::MemberTable<JobObject> table;
  DataMembers<JobObject, CJob, &JobObject::Job>{table}
      .Add("Index", &CJob::Index)
      .Add("Caption", &CJob::Caption)
      .Add("Key", &CJob::Key)
      .Add("ObjectName", &CJob::ObjectName)
      .Add("Enabled", &CJob::Enabled)
      .Add("DestinationUpdate", &CJob::DestinationUpdate)
      .Add("CancelOnError", &CJob::CancelOnError)
      .Add("Validate", &CJob::Validate)
      .Add("ValidateError", &CJob::ValidateError)
      .Add("Script", &CJob::Script)
      .Add("ScriptFile", &CJob::ScriptFile)
      .Add("LogFile", &CJob::LogFile)
      .Add("ScriptUserDefined", &CJob::ScriptUserDefined)
      .Add("MaxRecords", &CJob::MaxRecords)
      .Add("TriggerType", &CJob::TriggerType)
      .Add("JobType", &CJob::JobType)
      .Add("ScriptLanguage", &CJob::ScriptLanguage)
      .Add("Cancel", &CJob::Cancel);
  table.Property("JobSource", [](JobObject& o, script::Args) {
    return Variant(ObjectPtr(std::make_shared<JobItemObject>(o.Job().JobSource())));
  });
  table.Property("JobDest", [](JobObject& o, script::Args) {
    return Variant(ObjectPtr(std::make_shared<JobItemObject>(o.Job().JobDest())));
  });
  table.Method("CheckValidate", 0, 0,
               [](JobObject& o, script::Args) { return Variant(o.Job().CheckValidate()); });
  table.Method("TriggerTypeToString", 0, 0,
               [](JobObject& o, script::Args) { return Variant(o.Job().TriggerTypeToString()); });
  table.Method("RefreshKeyBrackets", 0, 0, [](JobObject& o, script::Args) {
    o.Job().RefreshKeyBrackets();
    return Variant();
  });
  table.Method("GenerateScript", 0, 0, [](JobObject& o, script::Args) {
    std::string szError;
    return Variant(o.Job().GenerateScript(szError));
  });
  return table;
}

}  // namespace

const script::MemberTable<JobItemObject>& JobItemObject::Members() {
  static const auto table = MakeJobItemMembers();
  return table;
}

const script::MemberTable<JobObject>& JobObject::Members() {
  static const auto table = MakeJobMembers();
  return table;
}

}  // namespace ketrova
