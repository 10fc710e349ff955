#include "dialogs/support_mail.h"

#include "support/registry.h"

namespace ketrova::dialogs {

std::string SupportMailAddress() {
  return CRegistry().GetRegSetting(kSupportMailValue, 0, HKEY_CURRENT_USER, kSupportMailSection);
}

}  // namespace ketrova::dialogs
