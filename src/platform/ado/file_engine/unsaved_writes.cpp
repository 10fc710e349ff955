#include "platform/ado/file_engine/unsaved_writes.h"

#include "support/vb_error.h"

namespace ketrova::file_engine {

UnsavedWrites::UnsavedWrites(std::string store)
    : group_(
          mutex_, [] {}, std::move(store)) {}

void UnsavedWrites::Wrote(std::int64_t rows) {
  std::lock_guard lock(mutex_);
  if (rows <= 0) return;
  if (!group_.IsOpen()) group_.Opened();
  group_.Wrote();
}

void UnsavedWrites::Save(const std::function<void()>& save) {
  std::lock_guard lock(mutex_);
  try {
    save();
  } catch (const VbError& error) {
    if (group_.IsOpen()) group_.Lost(error.Description);
    throw;
  }
  if (group_.IsOpen()) group_.Committed();
}

std::uint64_t UnsavedWrites::LastWrite() const {
  std::lock_guard lock(mutex_);
  return group_.LastWrite();
}

ado::Provider::GroupFate UnsavedWrites::Fate(std::uint64_t group, std::string& text) const {
  std::lock_guard lock(mutex_);
  return group_.Fate(group, text);
}

}  // namespace ketrova::file_engine
