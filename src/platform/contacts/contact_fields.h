// The properties of a contact, by the names the mail client's contact items
// used, and where each lives in a vCard. The table in contact_fields.cpp is
// the one place that says it; its order is the column order of a contact
// folder read as a table.
//
// Values are Variants: text for all but Birthday (a date; 01.01.4501 for none,
// as the mail client reported it) and LastModificationTime (a date and time).
// Numbers of the client (Gender, Importance) are carried as their text.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "platform/contacts/vcard.h"
#include "support/variant.h"

namespace ketrova::contacts {

inline constexpr std::size_t kContactFieldCount = 90;

struct ContactFieldInfo {
  std::string_view name;   // the contact property
  std::string_view vcard;  // where it lives in a card, for the reader of the table
  bool readOnly;           // derived from other fields, never written into a card
};

// The 90 fields in column order.
const std::array<ContactFieldInfo, kContactFieldCount>& ContactFieldTable();
// The position of a field by name (case ignored); -1 when there is none.
int ContactFieldIndex(std::string_view name);

// The mark for "no date" of Birthday: 01.01.4501.
double NoDate();

using ContactValues = std::array<Variant, kContactFieldCount>;

// Every field of a card; the derived ones computed from the others as the mail
// client did (FileAs "Last, First", FullName from the parts of N, ...), and
// LastModificationTime from REV, else from `fileTime` (an OLE date).
ContactValues ReadContactValues(const VCard& card, double fileTime);

// Recomputes the read-only fields of `values` from the writable ones.
void DeriveContactValues(ContactValues& values);

// Writes into `card` the writable fields whose value differs from `original`
// (the values as read). A field emptied removes its property; every property
// the table does not name stays as it is. FN and N are always present after.
void ApplyContactValues(VCard& card, const ContactValues& original, const ContactValues& values);

}  // namespace ketrova::contacts
