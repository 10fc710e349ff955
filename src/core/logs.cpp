#include "core/logs.h"

#include <memory>

namespace ketrova {

void CLog::Clear() {
  Index = 0;
  Message.clear();
  Key.clear();
}

CLog& CLogs::AddLog(const std::string& szMessage) {
  CLog& log = Add();
  log.Message = szMessage;
  return log;
}

CLog& CLogs::Add() {
  auto log = std::make_unique<CLog>();
  log->Clear();
  log->Index = Count() + 1;
  log->Key = std::to_string(log->Index);
  std::string key = log->Key;
  return items_.Add(std::move(log), key);
}

void CLogs::Clear() {
  for (CLog& log : items_) log.Clear();
  while (items_.Count() > 0) items_.Remove(1);
}

}  // namespace ketrova
