// The support address to which the run dialog mails a log, a setting of the
// deployment: the value "SupportMail" in the section "Ketrova" of the registry
// ini ($XDG_CONFIG_HOME/ketrova/registry.ini, default ~/.config), e.g.
//
//   [Ketrova]
//   SupportMail=support@example.com
//
// Read at each call, so a changed setting holds at the next mail.
#pragma once

#include <string>

namespace ketrova::dialogs {

inline constexpr const char* kSupportMailSection = "Ketrova";
inline constexpr const char* kSupportMailValue = "SupportMail";

// The trimmed setting; "" when it is not set.
std::string SupportMailAddress();

}  // namespace ketrova::dialogs
