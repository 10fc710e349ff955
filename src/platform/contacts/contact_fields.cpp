#include "platform/contacts/contact_fields.h"

#include <algorithm>
#include <cassert>
#include <ctime>
#include <map>
#include <optional>
#include <set>

#include "support/ole_date.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova::contacts {

namespace {

// How a field reaches its card.
enum class Map {
  X,           // X-KETROVA-<NAME in capitals>, text
  Simple,      // the named property, text (TITLE, ROLE, NICKNAME)
  FullName,    // FN, derived from N when missing
  N,           // a part of N: 0 family, 1 given, 2 additional, 3 prefix, 4 suffix
  Org,         // a part of ORG: 0 organisation, 1 unit
  Tel,         // a TEL chosen by its types (TelSlot)
  Adr,         // a part of the ADR of a slot (AdrSlot): 0 post office box, 2 street,
               // 3 city, 4 state, 5 postal code, 6 country
  Label,       // the whole address of a slot: LABEL, else composed from the ADR
  Email,       // the n-th EMAIL
  EmailType,   // X-KETROVA-EMAILnADDRESSTYPE, "SMTP" for a plain address
  EmailShown,  // derived: "FullName (address)"
  Url,         // a URL by its type (AdrSlot)
  Birthday,    // BDAY
  Revision,    // REV, else the file's time
  Gender,      // X-GENDER (GENDER of 4.0 read): "0" none, "1" female, "2" male
  Importance,  // X-KETROVA-IMPORTANCE, "1" (normal) when missing
  FileAs,      // X-KETROVA-FILEAS, derived when missing
  Derived,     // computed from other fields, read only
};

enum TelSlot {
  kTelBusiness,
  kTelBusiness2,
  kTelHome,
  kTelHome2,
  kTelMobile,
  kTelBusinessFax,
  kTelHomeFax,
  kTelOtherFax,
  kTelCar,
  kTelIsdn,
  kTelOther,
  kTelSlots
};
enum AdrSlot { kWork, kHome, kOther, kAdrSlots };

struct FieldMap {
  ContactFieldInfo info;
  Map map;
  int slot;
  int part;
};

// clang-format off
constexpr std::array<FieldMap, kContactFieldCount> kFields = {{
  {{"AssistantName", "X-KETROVA-ASSISTANTNAME", false}, Map::X, 0, 0},
  {{"AssistantTelephoneNumber", "X-KETROVA-ASSISTANTTELEPHONENUMBER", false}, Map::X, 0, 0},
  {{"BillingInformation", "X-KETROVA-BILLINGINFORMATION", false}, Map::X, 0, 0},
  {{"Birthday", "BDAY", false}, Map::Birthday, 0, 0},
  {{"Business2TelephoneNumber", "TEL;TYPE=WORK,VOICE (the second)", false}, Map::Tel, kTelBusiness2, 0},
  {{"BusinessAddress", "LABEL;TYPE=WORK, else composed from ADR;TYPE=WORK", false}, Map::Label, kWork, 0},
  {{"BusinessAddressCity", "ADR;TYPE=WORK locality", false}, Map::Adr, kWork, 3},
  {{"BusinessAddressCountry", "ADR;TYPE=WORK country", false}, Map::Adr, kWork, 6},
  {{"BusinessAddressPostalCode", "ADR;TYPE=WORK postal code", false}, Map::Adr, kWork, 5},
  {{"BusinessAddressPostOfficeBox", "ADR;TYPE=WORK post office box", false}, Map::Adr, kWork, 0},
  {{"BusinessAddressState", "ADR;TYPE=WORK region", false}, Map::Adr, kWork, 4},
  {{"BusinessAddressStreet", "ADR;TYPE=WORK street", false}, Map::Adr, kWork, 2},
  {{"BusinessFaxNumber", "TEL;TYPE=WORK,FAX", false}, Map::Tel, kTelBusinessFax, 0},
  {{"BusinessHomePage", "URL;TYPE=WORK", false}, Map::Url, kWork, 0},
  {{"BusinessTelephoneNumber", "TEL;TYPE=WORK,VOICE", false}, Map::Tel, kTelBusiness, 0},
  {{"CallbackTelephoneNumber", "X-KETROVA-CALLBACKTELEPHONENUMBER", false}, Map::X, 0, 0},
  {{"CarTelephoneNumber", "TEL;TYPE=CAR", false}, Map::Tel, kTelCar, 0},
  {{"CompanyAndFullName", "derived: CompanyName and FullName", true}, Map::Derived, 0, 0},
  {{"CompanyMainTelephoneNumber", "X-KETROVA-COMPANYMAINTELEPHONENUMBER", false}, Map::X, 0, 0},
  {{"CompanyName", "ORG organisation", false}, Map::Org, 0, 0},
  {{"ComputerNetworkName", "X-KETROVA-COMPUTERNETWORKNAME", false}, Map::X, 0, 0},
  {{"CustomerID", "X-KETROVA-CUSTOMERID", false}, Map::X, 0, 0},
  {{"Department", "ORG unit", false}, Map::Org, 0, 1},
  {{"Email1Address", "EMAIL (the first)", false}, Map::Email, 0, 0},
  {{"Email1AddressType", "X-KETROVA-EMAIL1ADDRESSTYPE, SMTP when missing", false}, Map::EmailType, 0, 0},
  {{"Email1DisplayName", "derived: FullName (Email1Address)", true}, Map::EmailShown, 0, 0},
  {{"Email2Address", "EMAIL (the second)", false}, Map::Email, 1, 0},
  {{"Email2AddressType", "X-KETROVA-EMAIL2ADDRESSTYPE, SMTP when missing", false}, Map::EmailType, 1, 0},
  {{"Email2DisplayName", "derived: FullName (Email2Address)", true}, Map::EmailShown, 1, 0},
  {{"Email3Address", "EMAIL (the third)", false}, Map::Email, 2, 0},
  {{"Email3AddressType", "X-KETROVA-EMAIL3ADDRESSTYPE, SMTP when missing", false}, Map::EmailType, 2, 0},
  {{"Email3DisplayName", "derived: FullName (Email3Address)", true}, Map::EmailShown, 2, 0},
  {{"FileAs", "X-KETROVA-FILEAS, else LastName, FirstName", false}, Map::FileAs, 0, 0},
  {{"FirstName", "N given name", false}, Map::N, 0, 1},
  {{"FTPSite", "X-KETROVA-FTPSITE", false}, Map::X, 0, 0},
  {{"FullName", "FN, else composed from N", false}, Map::FullName, 0, 0},
  {{"FullNameAndCompany", "derived: FullName and CompanyName", true}, Map::Derived, 0, 0},
  {{"Gender", "X-GENDER (GENDER read)", false}, Map::Gender, 0, 0},
  {{"GovernmentIDNumber", "X-KETROVA-GOVERNMENTIDNUMBER", false}, Map::X, 0, 0},
  {{"Hobby", "X-KETROVA-HOBBY", false}, Map::X, 0, 0},
  {{"Home2TelephoneNumber", "TEL;TYPE=HOME,VOICE (the second)", false}, Map::Tel, kTelHome2, 0},
  {{"HomeAddress", "LABEL;TYPE=HOME, else composed from ADR;TYPE=HOME", false}, Map::Label, kHome, 0},
  {{"HomeAddressCity", "ADR;TYPE=HOME locality", false}, Map::Adr, kHome, 3},
  {{"HomeAddressCountry", "ADR;TYPE=HOME country", false}, Map::Adr, kHome, 6},
  {{"HomeAddressPostalCode", "ADR;TYPE=HOME postal code", false}, Map::Adr, kHome, 5},
  {{"HomeAddressPostOfficeBox", "ADR;TYPE=HOME post office box", false}, Map::Adr, kHome, 0},
  {{"HomeAddressState", "ADR;TYPE=HOME region", false}, Map::Adr, kHome, 4},
  {{"HomeAddressStreet", "ADR;TYPE=HOME street", false}, Map::Adr, kHome, 2},
  {{"HomeFaxNumber", "TEL;TYPE=HOME,FAX", false}, Map::Tel, kTelHomeFax, 0},
  {{"HomeTelephoneNumber", "TEL;TYPE=HOME,VOICE", false}, Map::Tel, kTelHome, 0},
  {{"Importance", "X-KETROVA-IMPORTANCE, 1 when missing", false}, Map::Importance, 0, 0},
  {{"Initials", "X-KETROVA-INITIALS", false}, Map::X, 0, 0},
  {{"ISDNNumber", "TEL;TYPE=ISDN", false}, Map::Tel, kTelIsdn, 0},
  {{"JobTitle", "TITLE", false}, Map::Simple, 0, 0},
  {{"Language", "X-KETROVA-LANGUAGE", false}, Map::X, 0, 0},
  {{"LastModificationTime", "REV, else the file's time", true}, Map::Revision, 0, 0},
  {{"LastName", "N family name", false}, Map::N, 0, 0},
  {{"LastNameAndFirstName", "derived: LastName, FirstName", true}, Map::Derived, 0, 0},
  {{"ManagerName", "X-KETROVA-MANAGERNAME", false}, Map::X, 0, 0},
  {{"MiddleName", "N additional names", false}, Map::N, 0, 2},
  {{"Mileage", "X-KETROVA-MILEAGE", false}, Map::X, 0, 0},
  {{"MobileTelephoneNumber", "TEL;TYPE=CELL", false}, Map::Tel, kTelMobile, 0},
  {{"NickName", "NICKNAME", false}, Map::Simple, 0, 0},
  {{"OfficeLocation", "X-KETROVA-OFFICELOCATION", false}, Map::X, 0, 0},
  {{"OrganizationalIDNumber", "X-KETROVA-ORGANIZATIONALIDNUMBER", false}, Map::X, 0, 0},
  {{"OtherAddress", "LABEL without WORK or HOME, else composed from that ADR", false}, Map::Label, kOther, 0},
  {{"OtherAddressCity", "ADR without WORK or HOME: locality", false}, Map::Adr, kOther, 3},
  {{"OtherAddressCountry", "ADR without WORK or HOME: country", false}, Map::Adr, kOther, 6},
  {{"OtherAddressPostalCode", "ADR without WORK or HOME: postal code", false}, Map::Adr, kOther, 5},
  {{"OtherAddressPostOfficeBox", "ADR without WORK or HOME: post office box", false}, Map::Adr, kOther, 0},
  {{"OtherAddressState", "ADR without WORK or HOME: region", false}, Map::Adr, kOther, 4},
  {{"OtherAddressStreet", "ADR without WORK or HOME: street", false}, Map::Adr, kOther, 2},
  {{"OtherFaxNumber", "TEL;TYPE=FAX without WORK or HOME", false}, Map::Tel, kTelOtherFax, 0},
  {{"OtherTelephoneNumber", "TEL without WORK, HOME or a device type", false}, Map::Tel, kTelOther, 0},
  {{"PersonalHomePage", "URL;TYPE=HOME", false}, Map::Url, kHome, 0},
  {{"PrimaryTelephoneNumber", "X-KETROVA-PRIMARYTELEPHONENUMBER", false}, Map::X, 0, 0},
  {{"Profession", "ROLE", false}, Map::Simple, 0, 0},
  {{"RadioTelephoneNumber", "X-KETROVA-RADIOTELEPHONENUMBER", false}, Map::X, 0, 0},
  {{"Suffix", "N honorific suffixes", false}, Map::N, 0, 4},
  {{"TelexNumber", "X-KETROVA-TELEXNUMBER", false}, Map::X, 0, 0},
  {{"Title", "N honorific prefixes", false}, Map::N, 0, 3},
  {{"TTYTDDTelephoneNumber", "X-KETROVA-TTYTDDTELEPHONENUMBER", false}, Map::X, 0, 0},
  {{"User1", "X-KETROVA-USER1", false}, Map::X, 0, 0},
  {{"User2", "X-KETROVA-USER2", false}, Map::X, 0, 0},
  {{"User3", "X-KETROVA-USER3", false}, Map::X, 0, 0},
  {{"User4", "X-KETROVA-USER4", false}, Map::X, 0, 0},
  {{"WebPage", "URL without WORK or HOME", false}, Map::Url, kOther, 0},
  {{"YomiCompanyName", "X-KETROVA-YOMICOMPANYNAME", false}, Map::X, 0, 0},
  {{"YomiFirstName", "X-KETROVA-YOMIFIRSTNAME", false}, Map::X, 0, 0},
  {{"YomiLastName", "X-KETROVA-YOMILASTNAME", false}, Map::X, 0, 0},
}};
// clang-format on

constexpr std::string_view kPropertyPrefix = "X-KETROVA-";

std::string XName(std::string_view field) {
  return std::string(kPropertyPrefix) + AsciiUpper(field);
}

const std::array<ContactFieldInfo, kContactFieldCount>& BuildInfoTable() {
  static const std::array<ContactFieldInfo, kContactFieldCount> table = [] {
    std::array<ContactFieldInfo, kContactFieldCount> out{};
    for (std::size_t i = 0; i < kFields.size(); ++i) out[i] = kFields[i].info;
    return out;
  }();
  return table;
}

int Index(std::string_view name) {
  int i = ContactFieldIndex(name);
  assert(i >= 0);
  return i;
}

std::string Text(const Variant& v) {
  return v.IsNull() || v.IsEmpty() ? std::string() : v.ToText();
}

bool SameFieldValue(const Variant& a, const Variant& b) {
  if (a.Type() == vbDate || b.Type() == vbDate) {
    if (a.IsNull() || b.IsNull() || a.IsEmpty() || b.IsEmpty()) return a.Type() == b.Type();
    try {
      return a.ToDouble() == b.ToDouble();
    } catch (const VbError&) {  // a text that is no date is simply another value
      return false;
    }
  }
  return Text(a) == Text(b);
}

// ---- choosing the property of a slot ----

bool HasAny(const std::vector<std::string>& types, std::initializer_list<std::string_view> words) {
  for (std::string_view w : words)
    if (std::find(types.begin(), types.end(), w) != types.end()) return true;
  return false;
}

bool TelFits(const VCardProperty& p, int slot) {
  const std::vector<std::string> t = p.ParameterValues("TYPE");
  const bool work = HasAny(t, {"work"});
  const bool home = HasAny(t, {"home"});
  const bool fax = HasAny(t, {"fax"});
  const bool device = HasAny(t, {"fax", "cell", "car", "isdn", "pager", "video", "text",
                                 "textphone", "msg", "modem", "bbs"});
  switch (slot) {
    case kTelBusiness:
    case kTelBusiness2:
      return work && !device;
    case kTelHome:
    case kTelHome2:
      return home && !device;
    case kTelMobile:
      return HasAny(t, {"cell"});
    case kTelBusinessFax:
      return fax && work;
    case kTelHomeFax:
      return fax && home;
    case kTelOtherFax:
      return fax && !work && !home;
    case kTelCar:
      return HasAny(t, {"car"});
    case kTelIsdn:
      return HasAny(t, {"isdn"});
    default:
      return !work && !home && !device;
  }
}

bool SlotFits(const VCardProperty& p, int slot) {
  const bool work = p.HasType("work");
  const bool home = p.HasType("home");
  if (slot == kWork) return work;
  if (slot == kHome) return home && !work;
  return !work && !home;
}

// The property index each slot holds: every slot takes the first property of
// `name` that fits it and that no earlier slot took; -1 for none.
template <typename Fits>
std::vector<int> Claim(const VCard& card, std::string_view name, int slots, Fits fits) {
  std::vector<int> claimed(static_cast<std::size_t>(slots), -1);
  std::set<int> taken;
  for (int slot = 0; slot < slots; ++slot)
    for (std::size_t i = 0; i < card.properties.size(); ++i) {
      const VCardProperty& p = card.properties[i];
      if (p.name != name || taken.contains(static_cast<int>(i)) || !fits(p, slot)) continue;
      claimed[static_cast<std::size_t>(slot)] = static_cast<int>(i);
      taken.insert(static_cast<int>(i));
      break;
    }
  return claimed;
}

std::vector<int> EmailClaims(const VCard& card) {
  std::vector<int> claimed(3, -1);
  std::size_t n = 0;
  for (std::size_t i = 0; i < card.properties.size() && n < 3; ++i)
    if (card.properties[i].name == "EMAIL") claimed[n++] = static_cast<int>(i);
  return claimed;
}

std::string PlainValue(const VCardProperty& p) {
  std::string v = UnescapeText(p.value);
  if (p.name == "TEL" && (v.starts_with("tel:") || v.starts_with("TEL:"))) v = v.substr(4);
  if (p.name == "EMAIL" && (v.starts_with("mailto:") || v.starts_with("MAILTO:"))) v = v.substr(7);
  return v;
}

// ---- dates ----

std::string Digits(std::string_view text) {
  std::string out;
  for (char c : text)
    if (c >= '0' && c <= '9') out += c;
  return out;
}

std::optional<double> ParseBirthday(std::string_view text) {
  if (auto t = text.find('T'); t != std::string_view::npos) text = text.substr(0, t);
  if (text.starts_with("--")) return std::nullopt;  // a day without a year
  std::string d = Digits(text);
  if (d.size() != 8) return std::nullopt;
  const int y = std::stoi(d.substr(0, 4)), m = std::stoi(d.substr(4, 2)),
            day = std::stoi(d.substr(6, 2));
  if (!IsValidDate(y, m, day)) return std::nullopt;
  return DateSerial(y, m, day);
}

std::optional<double> ParseRevision(std::string_view text) {
  std::string d = Digits(text);
  if (d.size() < 8) return std::nullopt;
  std::tm tm{};
  tm.tm_year = std::stoi(d.substr(0, 4)) - 1900;
  tm.tm_mon = std::stoi(d.substr(4, 2)) - 1;
  tm.tm_mday = std::stoi(d.substr(6, 2));
  if (d.size() >= 14) {
    tm.tm_hour = std::stoi(d.substr(8, 2));
    tm.tm_min = std::stoi(d.substr(10, 2));
    tm.tm_sec = std::stoi(d.substr(12, 2));
  }
  if (!IsValidDate(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday)) return std::nullopt;
  if (!text.empty() && (text.back() == 'Z' || text.back() == 'z')) {
    // UTC, shown in local time as the client showed it.
    std::time_t t = timegm(&tm);
    localtime_r(&t, &tm);
  }
  return CombineDateTime(DateSerial(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday),
                         TimeSerial(tm.tm_hour, tm.tm_min, tm.tm_sec));
}

std::string BirthdayText(const Variant& v) {
  const DateParts p = SplitDate(v.ToDouble());
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", p.year, p.month, p.day);
  return buffer;
}

// ---- composed texts ----

std::string JoinNonEmpty(std::initializer_list<std::string> parts, std::string_view separator) {
  std::string out;
  for (const std::string& p : parts) {
    if (p.empty()) continue;
    if (!out.empty()) out += separator;
    out += p;
  }
  return out;
}

std::string Value(const ContactValues& v, std::string_view name) {
  return Text(v[Index(name)]);
}

std::string ComposedFullName(const ContactValues& v) {
  return JoinNonEmpty({Value(v, "Title"), Value(v, "FirstName"), Value(v, "MiddleName"),
                       Value(v, "LastName"), Value(v, "Suffix")},
                      " ");
}

std::string ComposedFileAs(const ContactValues& v) {
  std::string name = JoinNonEmpty({Value(v, "LastName"), Value(v, "FirstName")}, ", ");
  return name.empty() ? Value(v, "CompanyName") : name;
}

// The whole address as the client composed it: street, postal code and city,
// state, country, a line each; post office box first.
std::string ComposedAddress(const std::vector<std::string>& adr) {
  return JoinNonEmpty({adr[0], adr[2], JoinNonEmpty({adr[5], adr[3]}, " "), adr[4], adr[6]},
                      "\r\n");
}

std::vector<std::string> AddressParts(const ContactValues& v, int slot) {
  std::vector<std::string> parts(7);
  for (std::size_t i = 0; i < kFields.size(); ++i)
    if (kFields[i].map == Map::Adr && kFields[i].slot == slot)
      parts[static_cast<std::size_t>(kFields[i].part)] = Text(v[i]);
  return parts;
}

std::string LineBreaksCrLf(std::string text) {
  text = ReplaceAll(text, "\r\n", "\n");
  return ReplaceAll(text, "\n", "\r\n");
}

std::vector<std::string> SlotTypes(int slot) {
  if (slot == kWork) return {"WORK"};
  if (slot == kHome) return {"HOME"};
  return {};
}

std::vector<std::string> TelTypes(int slot) {
  switch (slot) {
    case kTelBusiness:
    case kTelBusiness2:
      return {"WORK", "VOICE"};
    case kTelHome:
    case kTelHome2:
      return {"HOME", "VOICE"};
    case kTelMobile:
      return {"CELL"};
    case kTelBusinessFax:
      return {"WORK", "FAX"};
    case kTelHomeFax:
      return {"HOME", "FAX"};
    case kTelOtherFax:
      return {"FAX"};
    case kTelCar:
      return {"CAR"};
    case kTelIsdn:
      return {"ISDN"};
    default:
      return {"VOICE"};
  }
}

}  // namespace

const std::array<ContactFieldInfo, kContactFieldCount>& ContactFieldTable() {
  return BuildInfoTable();
}

int ContactFieldIndex(std::string_view name) {
  static const std::map<std::string, int> byName = [] {
    std::map<std::string, int> m;
    for (std::size_t i = 0; i < kFields.size(); ++i)
      m[AsciiLower(kFields[i].info.name)] = static_cast<int>(i);
    return m;
  }();
  auto it = byName.find(AsciiLower(name));
  return it == byName.end() ? -1 : it->second;
}

double NoDate() {
  return DateSerial(4501, 1, 1);
}

ContactValues ReadContactValues(const VCard& card, double fileTime) {
  ContactValues values;
  const std::vector<int> tel = Claim(card, "TEL", kTelSlots, TelFits);
  const std::vector<int> adr = Claim(card, "ADR", kAdrSlots, SlotFits);
  const std::vector<int> label = Claim(card, "LABEL", kAdrSlots, SlotFits);
  const std::vector<int> url = Claim(card, "URL", kAdrSlots, SlotFits);
  const std::vector<int> email = EmailClaims(card);
  auto at = [&](int index) -> const VCardProperty* {
    return index < 0 ? nullptr : &card.properties[static_cast<std::size_t>(index)];
  };
  auto plain = [&](const VCardProperty* p) { return p ? PlainValue(*p) : std::string(); };
  const VCardProperty* n = card.Find("N");
  const std::vector<std::string> nParts = SplitStructured(n ? n->value : "", 5);
  const VCardProperty* org = card.Find("ORG");
  const std::vector<std::string> orgParts = SplitStructured(org ? org->value : "", 2);

  for (std::size_t i = 0; i < kFields.size(); ++i) {
    const FieldMap& f = kFields[i];
    Variant& v = values[i];
    v = Variant("");
    switch (f.map) {
      case Map::X:
        v = Variant(plain(card.Find(XName(f.info.name))));
        break;
      case Map::Simple:
        v = Variant(plain(card.Find(f.info.vcard)));
        break;
      case Map::FullName:
        v = Variant(plain(card.Find("FN")));
        break;
      case Map::N:
        v = Variant(nParts[static_cast<std::size_t>(f.part)]);
        break;
      case Map::Org:
        v = Variant(orgParts[static_cast<std::size_t>(f.part)]);
        break;
      case Map::Tel:
        v = Variant(plain(at(tel[static_cast<std::size_t>(f.slot)])));
        break;
      case Map::Adr: {
        const VCardProperty* p = at(adr[static_cast<std::size_t>(f.slot)]);
        v = Variant(SplitStructured(p ? p->value : "", 7)[static_cast<std::size_t>(f.part)]);
        break;
      }
      case Map::Label: {
        const VCardProperty* p = at(label[static_cast<std::size_t>(f.slot)]);
        const VCardProperty* a = at(adr[static_cast<std::size_t>(f.slot)]);
        std::string text = p ? PlainValue(*p) : (a ? a->ParameterValue("LABEL") : "");
        if (text.empty() && a) text = ComposedAddress(SplitStructured(a->value, 7));
        v = Variant(LineBreaksCrLf(text));
        break;
      }
      case Map::Email:
        v = Variant(plain(at(email[static_cast<std::size_t>(f.slot)])));
        break;
      case Map::EmailType: {
        std::string type = plain(card.Find(XName(f.info.name)));
        if (type.empty() && at(email[static_cast<std::size_t>(f.slot)])) type = "SMTP";
        v = Variant(type);
        break;
      }
      case Map::Url:
        v = Variant(plain(at(url[static_cast<std::size_t>(f.slot)])));
        break;
      case Map::Birthday: {
        const VCardProperty* p = card.Find("BDAY");
        std::optional<double> date = p ? ParseBirthday(p->value) : std::nullopt;
        v = Variant::FromDate(date.value_or(NoDate()));
        break;
      }
      case Map::Revision: {
        const VCardProperty* p = card.Find("REV");
        std::optional<double> date = p ? ParseRevision(p->value) : std::nullopt;
        v = Variant::FromDate(date.value_or(fileTime));
        break;
      }
      case Map::Gender: {
        const VCardProperty* p = card.Find("X-GENDER");
        if (!p) p = card.Find("GENDER");
        const std::string g = AsciiLower(plain(p));
        v = Variant(g.starts_with("f") || g.starts_with("w") ? "1"
                    : g.starts_with("m")                     ? "2"
                                                             : "0");
        break;
      }
      case Map::Importance: {
        const std::string text = plain(card.Find(XName(f.info.name)));
        v = Variant(text.empty() ? std::string("1") : text);
        break;
      }
      case Map::FileAs:
        v = Variant(plain(card.Find(XName(f.info.name))));
        break;
      case Map::EmailShown:
      case Map::Derived:
        break;
    }
  }
  // Fields the card leaves out are what the client would have shown.
  if (Value(values, "FullName").empty())
    values[Index("FullName")] = Variant(ComposedFullName(values));
  if (Value(values, "FileAs").empty()) values[Index("FileAs")] = Variant(ComposedFileAs(values));
  DeriveContactValues(values);
  return values;
}

void DeriveContactValues(ContactValues& values) {
  const std::string full = Value(values, "FullName");
  const std::string company = Value(values, "CompanyName");
  values[Index("CompanyAndFullName")] = Variant(JoinNonEmpty({company, full}, " "));
  values[Index("FullNameAndCompany")] = Variant(JoinNonEmpty({full, company}, " "));
  values[Index("LastNameAndFirstName")] =
      Variant(JoinNonEmpty({Value(values, "LastName"), Value(values, "FirstName")}, ", "));
  for (int n = 1; n <= 3; ++n) {
    const std::string prefix = "Email" + std::to_string(n);
    const std::string address = Value(values, prefix + "Address");
    values[Index(prefix + "DisplayName")] = Variant(
        address.empty() ? std::string() : (full.empty() ? address : full + " (" + address + ")"));
  }
}

void ApplyContactValues(VCard& card, const ContactValues& original, const ContactValues& values) {
  // The slots are chosen once, on the card as it was read; properties made
  // here are appended and remembered, removals wait until the end, so that
  // every index stays valid.
  if (!card.Find("N")) card.properties.push_back({{}, "N", {}, ";;;;"});
  auto indexOf = [&card](std::string_view name) {
    const VCardProperty* p = card.Find(name);
    return p ? static_cast<int>(p - card.properties.data()) : -1;
  };
  const int nIndex = indexOf("N");
  const int orgIndex = indexOf("ORG");
  const std::vector<int> tel = Claim(card, "TEL", kTelSlots, TelFits);
  const std::vector<int> adr = Claim(card, "ADR", kAdrSlots, SlotFits);
  const std::vector<int> label = Claim(card, "LABEL", kAdrSlots, SlotFits);
  const std::vector<int> url = Claim(card, "URL", kAdrSlots, SlotFits);
  const std::vector<int> email = EmailClaims(card);
  std::map<std::pair<std::string, int>, int> made;  // (property, slot) -> index
  std::set<int> remove;

  // The property of a slot, made when missing and `create` is set; -1 when none.
  auto slotProperty = [&](const std::string& name, int slot, int claimed, bool create,
                          const std::vector<std::string>& types) -> int {
    if (claimed >= 0) return claimed;
    auto key = std::make_pair(name, slot);
    if (auto it = made.find(key); it != made.end()) return it->second;
    if (!create) return -1;
    VCardProperty p;
    p.name = name;
    if (!types.empty()) p.parameters.push_back({"TYPE", types});
    card.properties.push_back(std::move(p));
    return made[key] = static_cast<int>(card.properties.size()) - 1;
  };
  auto setSimple = [&](const std::string& name, const std::string& text) {
    card.RemoveAll(name);
    if (!text.empty()) card.properties.push_back({{}, name, {}, EscapeText(text)});
  };
  auto setSlot = [&](const std::string& name, int slot, int claimed,
                     const std::vector<std::string>& types, const std::string& text) {
    const int index = slotProperty(name, slot, claimed, !text.empty(), types);
    if (index < 0) return;
    card.properties[static_cast<std::size_t>(index)].value = EscapeText(text);
    if (text.empty()) remove.insert(index);
  };
  auto setPart = [&](const std::string& name, int slot, int claimed,
                     const std::vector<std::string>& types, std::size_t count, std::size_t part,
                     const std::string& text) {
    const int index = slotProperty(name, slot, claimed, !text.empty(), types);
    if (index < 0) return;
    VCardProperty& p = card.properties[static_cast<std::size_t>(index)];
    std::vector<std::string> parts = SplitStructured(p.value, count);
    parts[part] = text;
    p.value = JoinStructured(parts);
    bool empty = std::all_of(parts.begin(), parts.end(), [](const auto& s) { return s.empty(); });
    if (empty)
      remove.insert(index);
    else
      remove.erase(index);
  };
  auto x = [](std::string_view field) { return XName(field); };

  std::vector<std::size_t> labels;  // whole addresses are settled after their parts
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    const FieldMap& f = kFields[i];
    if (f.info.readOnly || SameFieldValue(original[i], values[i])) continue;
    const std::string text = Text(values[i]);
    const auto slot = static_cast<std::size_t>(f.slot);
    switch (f.map) {
      case Map::X:
      case Map::EmailType:
        setSimple(x(f.info.name), f.map == Map::EmailType && text == "SMTP" ? "" : text);
        break;
      case Map::Simple:
        setSimple(std::string(f.info.vcard), text);
        break;
      case Map::FullName:
        setSimple("FN", text);
        break;
      case Map::N:
        setPart("N", 0, nIndex, {}, 5, static_cast<std::size_t>(f.part), text);
        remove.erase(nIndex);  // a card always has N
        break;
      case Map::Org:
        setPart("ORG", 0, orgIndex, {}, 2, static_cast<std::size_t>(f.part), text);
        break;
      case Map::Tel:
        setSlot("TEL", f.slot, tel[slot], TelTypes(f.slot), text);
        break;
      case Map::Adr:
        setPart("ADR", f.slot, adr[slot], SlotTypes(f.slot), 7, static_cast<std::size_t>(f.part),
                text);
        break;
      case Map::Label:
        labels.push_back(i);
        break;
      case Map::Email:
        setSlot("EMAIL", f.slot, email[slot], {"INTERNET"}, text);
        break;
      case Map::Url:
        setSlot("URL", f.slot, url[slot], SlotTypes(f.slot), text);
        break;
      case Map::Birthday:
        if (values[i].IsNull() || values[i].IsEmpty() || text.empty() ||
            values[i].ToDouble() == NoDate())
          card.RemoveAll("BDAY");
        else
          setSimple("BDAY", BirthdayText(values[i]));
        break;
      case Map::Gender:
        card.RemoveAll("GENDER");
        setSimple("X-GENDER", text == "1" ? "Female" : text == "2" ? "Male" : "");
        break;
      case Map::Importance:
        setSimple(x(f.info.name), text == "1" ? "" : text);
        break;
      case Map::FileAs:
        setSimple(x(f.info.name), text == ComposedFileAs(values) ? "" : text);
        break;
      case Map::Revision:
      case Map::EmailShown:
      case Map::Derived:
        break;
    }
  }
  // A whole address that says no more than its parts is not kept.
  for (std::size_t i : labels) {
    const int slot = kFields[i].slot;
    std::string text = LineBreaksCrLf(Text(values[i]));
    if (text == ComposedAddress(AddressParts(values, slot))) text.clear();
    setSlot("LABEL", slot, label[static_cast<std::size_t>(slot)], SlotTypes(slot), text);
  }
  std::vector<VCardProperty> kept;
  for (std::size_t i = 0; i < card.properties.size(); ++i)
    if (!remove.contains(static_cast<int>(i))) kept.push_back(std::move(card.properties[i]));
  card.properties = std::move(kept);
  // A card has N and FN.
  if (!card.Find("FN") || card.Find("FN")->value.empty()) {
    std::string fn = Value(values, "FullName");
    if (fn.empty()) fn = ComposedFullName(values);
    if (fn.empty()) fn = Value(values, "CompanyName");
    if (fn.empty()) fn = Value(values, "Email1Address");
    card.RemoveAll("FN");
    card.properties.insert(card.properties.begin(), {{}, "FN", {}, EscapeText(fn)});
  }
}

}  // namespace ketrova::contacts
