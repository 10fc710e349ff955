// CLogs: the messages that the user should look at after an action (the host's
// event log). Cleared by CConverter.Clear, by choosing a source and at the start
// of a run, so it always shows the last action's messages.
#pragma once

#include <cstdint>
#include <string>

#include "support/collection.h"

namespace ketrova {

class CLog {
 public:
  CLog() = default;
  std::int32_t Index = 0;
  std::string Message;
  std::string Key;

  void Clear();
};

class CLogs {
 public:
  CLogs() = default;
  ~CLogs() { Clear(); }
  CLogs(const CLogs&) = delete;
  CLogs& operator=(const CLogs&) = delete;

  // Add, then the new entry's Message = szMessage.
  CLog& AddLog(const std::string& szMessage);
  // A new, cleared entry with Index = Count + 1 and Key = Index as text.
  CLog& Add();
  void Remove(std::int32_t Index) { items_.Remove(Index); }
  void Remove(std::string_view Key) { items_.Remove(Key); }
  CLog& Item(std::int32_t Index) const { return items_.Item(Index); }
  CLog& Item(std::string_view Key) const { return items_.Item(Key); }
  std::int32_t Count() const { return items_.Count(); }
  // Clear on every entry, then the entries are removed, always the first.
  void Clear();

  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  Collection<CLog> items_;
};

}  // namespace ketrova
