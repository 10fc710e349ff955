// CLogs: the messages that the user should look at after an action (the host's
// event log). Cleared by CConverter.Clear, by choosing a source and at the start
// of a run, so it always shows the last action's messages.
#pragma once

#include <cstdint>
#include <string>

#include "support/numbered_list.h"

namespace ketrova {

class CLog {
 public:
  CLog() = default;
  std::int32_t Index = 0;
  std::string Message;
  std::string Key;

  void Clear();
};

class CLogs : public NumberedList<CLog> {
 public:
  // Add, then the new entry's Message = szMessage.
  CLog& AddLog(const std::string& szMessage);
  CLog& Add() { return AddNumbered(); }
};

}  // namespace ketrova
