// UnsavedWrites: the writes a file store holds in memory until it saves its
// files (at a job's end, before a run waits on the user, on close), kept as
// one group of writes for the record loop. The group is committed when the
// save succeeds and lost, with the save's error, when it fails: the records
// it held then go to the reject file instead of counting as written.
//
// Each call takes the object's own lock; no timer commits behind the owner.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

#include "platform/ado/provider.h"
#include "platform/ado/write_group.h"

namespace ketrova::file_engine {

class UnsavedWrites {
 public:
  // `store` names the store in the line stderr gets when a save fails.
  explicit UnsavedWrites(std::string store);

  // A statement changed `rows` rows (nothing when 0 or less).
  void Wrote(std::int64_t rows);
  // Runs `save`. When it raises VbError, the writes since the last save are
  // lost with its text, and the error is raised again.
  void Save(const std::function<void()>& save);

  // Provider::LastWriteGroup and FateOfGroup for the owning provider.
  std::uint64_t LastWrite() const;
  ado::Provider::GroupFate Fate(std::uint64_t group, std::string& text) const;

 private:
  mutable std::recursive_mutex mutex_;  // WriteGroup's; no timer runs
  ado::WriteGroup group_;
};

}  // namespace ketrova::file_engine
