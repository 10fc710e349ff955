#include "core/logs.h"

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

}  // namespace ketrova
