// System helpers: GUIDs, the temporary folder, the computer's name, look-ups
// in a list of entries (the combo boxes of the dialogs implement ComboList),
// the old object test whose sense is reversed, and mail into the outbox.
//
// Mail: SendMail writes an RFC 5322 message into the outbox, a Maildir folder
// (tmp/, new/, cur/) that a mail client or a sync tool picks up. The outbox is
// $XDG_DATA_HOME/ketrova/outbox (default ~/.local/share/ketrova/outbox) unless
// SetOutboxFolder named another; the message lands in its new/ folder.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/variant.h"

namespace ketrova {

// A fresh random GUID in upper case without curly brackets
// ("0F8FAD5B-D9CB-469F-A165-70867728950E"); "" when none can be made.
std::string CreateGUID();
// The same into `text`, whose buffer is used again (once per record).
void CreateGUID(std::string& text);
// The temporary folder ($TMPDIR, else /tmp) with a trailing "/".
std::string GetTempDirectory();
// The host name, the default server of a new data store.
std::string GetComputerName();

// The entries of a list control, as the look-ups below need them.
class ComboList {
 public:
  virtual ~ComboList() = default;
  virtual int ListCount() const = 0;
  virtual std::string List(int index) const = 0;  // 0-based
  virtual std::int64_t ItemData(int index) const = 0;
};
// Index of the first entry IsEqual to the text (blanks and case do not
// count); -1 when none.
int ComboFindText(std::string_view text, const ComboList& combo);
// Index of the first entry whose item data equals the number; -1 when none.
int ComboFindItemData(std::int64_t value, const ComboList& combo);

// True when the value is an object variable that holds nothing, False when it
// holds an object: the reverse of what the name says, and callers rely on it.
bool IsObjectValid(const Variant& object);

// Filters a key typed into a field of the given ADO type: 39, 37, 27, 13, 9
// and 8 always pass; integer types take digits, other numbers also "." and
// ",", dates also "/", ")", "(" and "#"; types below 3 or above 135 and any
// other type take every key. A refused key is set to 0 and the result is
// false; the caller beeps (ui::CheckKeyForType does).
bool CheckKeyForType(int& keyCode, int adoType);

// The outbox folder (a Maildir) that SendMail writes into.
std::string OutboxFolder();
void SetOutboxFolder(std::string folder);
// Writes a plain-text message to `to` into the outbox's new/ folder; "" when
// it is there, "Kein Outlook installiert." when the outbox cannot be made.
std::string SendMail(std::string_view to, std::string_view subject, std::string_view body);

// What an errno value means, in German for the failures a user meets with
// files (no permission, no such folder, read-only, disk full, a folder in the
// way); the system's own text for the rest.
std::string SystemErrorText(int error);

}  // namespace ketrova
