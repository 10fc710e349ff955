#include "platform/contacts/contact_store.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/contacts/restriction.h"
#include "support/files.h"
#include "support/ole_date.h"
#include "support/registry.h"
#include "support/system.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova::contacts {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSource = "Kontaktordner";
constexpr std::string_view kUserProperty = "X-KETROVA-USERPROPERTY";

std::string& RootOverride() {
  static std::string root;
  return root;
}

double OleDateOf(std::time_t t) {
  std::tm tm{};
  localtime_r(&t, &tm);
  return CombineDateTime(DateSerial(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday),
                         TimeSerial(tm.tm_hour, tm.tm_min, tm.tm_sec));
}

std::string Revision() {
  const std::time_t now = std::time(nullptr);
  std::tm tm{};
  gmtime_r(&now, &tm);
  char buffer[32];
  std::strftime(buffer, sizeof buffer, "%Y%m%dT%H%M%SZ", &tm);
  return buffer;
}

bool IsGroup(const VCard& card) {
  for (const char* name : {"KIND", "X-ADDRESSBOOKSERVER-KIND"})
    if (const VCardProperty* p = card.Find(name); p && AsciiLower(p->value) == "group") return true;
  return false;
}

std::vector<fs::path> SortedEntries(const fs::path& folder, bool directories) {
  std::vector<fs::path> out;
  std::error_code ec;
  for (const fs::directory_entry& e : fs::directory_iterator(folder, ec)) {
    const std::string name = e.path().filename().string();
    if (name.starts_with(".")) continue;
    std::error_code typeError;
    if (directories
            ? e.is_directory(typeError)
            : (e.is_regular_file(typeError) && AsciiLower(e.path().extension().string()) == ".vcf"))
      out.push_back(e.path());
  }
  // By name; the folder is listed again at every look, so the plain text
  // comparison, not the path's component walk.
  std::sort(out.begin(), out.end(),
            [](const fs::path& a, const fs::path& b) { return a.native() < b.native(); });
  return out;
}

[[noreturn]] void RaiseFileError(const std::string& what, const std::string& path, int error) {
  throw VbError(-2147467259, what + " " + path + ": " + std::strerror(error), kSource);
}

// Writes the text through a temporary file in the same folder, renamed over
// the target.
void WriteAtomically(const std::string& path, const std::string& text) {
  std::string temp = (fs::path(path).parent_path() / ("." + CreateGUID() + ".tmp")).string();
  {
    std::ofstream out(temp, std::ios::binary | std::ios::trunc);
    if (!out) RaiseFileError("Die Karte kann nicht geschrieben werden:", path, errno);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.flush();
    if (!out) {
      const int error = errno;
      out.close();
      std::remove(temp.c_str());
      RaiseFileError("Die Karte kann nicht geschrieben werden:", path, error);
    }
  }
  if (std::rename(temp.c_str(), path.c_str()) != 0) {
    const int error = errno;
    std::remove(temp.c_str());
    RaiseFileError("Die Karte kann nicht geschrieben werden:", path, error);
  }
}

}  // namespace

std::string ContactRoot() {
  if (!RootOverride().empty()) return RootOverride();
  std::string root = CRegistry().GetRegSetting("ContactRoot", 0, HKEY_CURRENT_USER, "Ketrova");
  if (!root.empty()) return root;
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data && *data) return (fs::path(data) / "contacts").string();
  const char* home = std::getenv("HOME");
  return (fs::path(home ? home : "/") / ".local" / "share" / "contacts").string();
}

void SetContactRootOverride(std::string root) {
  RootOverride() = std::move(root);
}

// ---- ContactItem ----

ContactItem::ContactItem(Session* session, std::string folderPath)
    : session_(session), folderPath_(std::move(folderPath)) {
  card_.version = "3.0";
  card_.properties.push_back({{}, "UID", {}, CreateGUID()});
  original_ = ReadContactValues(card_, OleDateOf(std::time(nullptr)));
  values_ = original_;
}

ContactItem::ContactItem(Session* session, std::string path, VCard card, double fileTime)
    : session_(session),
      folderPath_(fs::path(path).parent_path().string()),
      path_(std::move(path)),
      card_(std::move(card)),
      saved_(true) {
  original_ = ReadContactValues(card_, fileTime);
  values_ = original_;
  for (const VCardProperty& p : card_.properties)
    if (p.name == kUserProperty)
      userProperties_.push_back({p.ParameterValue("NAME"), Variant(UnescapeText(p.value))});
}

std::string ContactItem::TypeName() const {
  return IsGroup(card_) ? "DistListItem" : "ContactItem";
}

Variant ContactItem::Get(std::string_view property) const {
  const int index = ContactFieldIndex(property);
  if (index >= 0) return values_[static_cast<std::size_t>(index)];
  for (const UserProperty& p : userProperties_)
    if (IsEqual(p.Name, property)) return p.Value;
  throw VbError(438, {}, kSource);
}

void ContactItem::Set(std::string_view property, const Variant& value) {
  const int index = ContactFieldIndex(property);
  if (index < 0) throw VbError(438, {}, kSource);
  if (ContactFieldTable()[static_cast<std::size_t>(index)].readOnly)
    throw VbError(440, "Die Eigenschaft " + std::string(property) + " ist schreibgeschützt.",
                  kSource);
  values_[static_cast<std::size_t>(index)] = value;
  DeriveContactValues(values_);
}

void ContactItem::Save() {
  VCard card = card_;
  ApplyContactValues(card, original_, values_);
  card.RemoveAll(std::string(kUserProperty));
  for (const UserProperty& p : userProperties_) {
    VCardProperty property{{}, std::string(kUserProperty), {{"NAME", {p.Name}}}, {}};
    property.value = EscapeText(p.Value.IsNull() || p.Value.IsEmpty() ? "" : p.Value.ToText());
    card.properties.push_back(std::move(property));
  }
  card.RemoveAll("REV");
  card.properties.push_back({{}, "REV", {}, Revision()});
  if (!card.Find("UID")) card.properties.push_back({{}, "UID", {}, CreateGUID()});
  std::string path = path_;
  if (path.empty()) {
    std::string uid = card.Find("UID")->value;
    std::string name = IsPlainName(uid) && !uid.empty() ? uid : CreateGUID();
    path = (fs::path(folderPath_) / (name + ".vcf")).string();
    if (fs::exists(path)) path = (fs::path(folderPath_) / (CreateGUID() + ".vcf")).string();
  }
  WriteAtomically(path, WriteVCard30(card));
  card.version = "3.0";
  card_ = std::move(card);
  path_ = path;
  saved_ = true;
  struct stat st {};
  const double fileTime = stat(path_.c_str(), &st) == 0 ? OleDateOf(st.st_mtime) : 0;
  original_ = ReadContactValues(card_, fileTime);
  values_ = original_;
  // The folder's next reading takes the card as written.
  if (session_) session_->Forget(path_);
}

void ContactItem::Delete() {
  if (path_.empty()) return;
  if (std::remove(path_.c_str()) != 0 && errno != ENOENT)
    RaiseFileError("Die Karte kann nicht gelöscht werden:", path_, errno);
  if (session_) session_->Forget(path_);
  path_.clear();
  saved_ = false;
}

// ---- Items ----

Items::Items(Session* session, std::string folderPath, std::vector<ContactItemPtr> items)
    : session_(session), folderPath_(std::move(folderPath)), items_(std::move(items)) {}

ContactItemPtr Items::GetFirst() {
  cursor_ = 0;
  return items_.empty() ? nullptr : items_[0];
}

ContactItemPtr Items::GetNext() {
  if (cursor_ + 1 >= items_.size()) {
    cursor_ = items_.size();
    return nullptr;
  }
  return items_[++cursor_];
}

ContactItemPtr Items::Item(std::int32_t index) const {
  if (index < 1 || index > Count()) throw VbError(9, {}, kSource);
  return items_[static_cast<std::size_t>(index - 1)];
}

void Items::Sort(const std::string& property, bool descending) {
  std::string name = property;
  if (name.starts_with("[") && name.ends_with("]")) name = name.substr(1, name.size() - 2);
  if (ContactFieldIndex(name) < 0)
    throw VbError(-2147352567, "Die Eigenschaft \"" + name + "\" ist unbekannt.", kSource);
  auto key = [&name](const ContactItemPtr& item) {
    Variant v = item->Get(name);
    return v.Type() == vbDate ? Variant(v.ToDouble())
                              : Variant(LowerCase(v.IsNull() ? "" : v.ToText()));
  };
  std::vector<std::pair<Variant, ContactItemPtr>> keyed;
  for (const ContactItemPtr& item : items_) keyed.emplace_back(key(item), item);
  std::stable_sort(keyed.begin(), keyed.end(), [descending](const auto& a, const auto& b) {
    const Variant& x = a.first;
    const Variant& y = b.first;
    const bool less = x.IsString() ? x.ToText() < y.ToText() : x.ToDouble() < y.ToDouble();
    const bool greater = x.IsString() ? y.ToText() < x.ToText() : y.ToDouble() < x.ToDouble();
    return descending ? greater : less;
  });
  for (std::size_t i = 0; i < keyed.size(); ++i) items_[i] = keyed[i].second;
  cursor_ = 0;
}

std::shared_ptr<Items> Items::Restrict(const std::string& filter) const {
  const Restriction restriction = Restriction::Parse(filter);
  for (const std::string& name : restriction.Properties()) {
    if (ContactFieldIndex(name) >= 0) continue;
    bool known = false;
    for (const ContactItemPtr& item : items_)
      for (const UserProperty& p : item->UserProperties()) known = known || IsEqual(p.Name, name);
    if (!known)
      throw VbError(-2147352567, "Die Eigenschaft \"" + name + "\" ist unbekannt.", kSource);
  }
  std::vector<ContactItemPtr> matches;
  for (const ContactItemPtr& item : items_) {
    auto value = [&item](const std::string& name) -> Variant {
      if (ContactFieldIndex(name) >= 0) return item->Get(name);
      for (const UserProperty& p : item->UserProperties())
        if (IsEqual(p.Name, name)) return p.Value;
      return Variant();
    };
    if (restriction.Matches(value)) matches.push_back(item);
  }
  return std::make_shared<Items>(session_, folderPath_, std::move(matches));
}

ContactItemPtr Items::Add() {
  return std::make_shared<ContactItem>(session_, folderPath_);
}

void Items::Remove(std::int32_t index) {
  ContactItemPtr item = Item(index);
  item->Delete();
  items_.erase(items_.begin() + (index - 1));
}

// ---- Folder ----

Folder::Folder(Session* session, std::string path) : session_(session), path_(std::move(path)) {}

std::string Folder::Name() const {
  return fs::path(path_).filename().string();
}

int Folder::DefaultItemType() const {
  const fs::path marker = fs::path(path_) / kItemTypeFile;
  std::ifstream in(marker);
  if (!in) return olContactItem;
  std::string word;
  in >> word;
  word = AsciiLower(word);
  if (word == "mail") return olMailItem;
  if (word == "calendar") return 1;
  if (word == "tasks") return 3;
  if (word == "journal") return 4;
  if (word == "notes") return 5;
  return olContactItem;
}

std::vector<FolderPtr> Folder::Folders() const {
  std::vector<FolderPtr> out;
  for (const fs::path& p : SortedEntries(path_, true))
    out.push_back(std::make_shared<Folder>(session_, p.string()));
  return out;
}

FolderPtr Folder::AddFolder(const std::string& name) {
  if (name.empty() || name.find('/') != std::string::npos || name.starts_with("."))
    throw VbError(-2147352567, "Der Ordnername \"" + name + "\" ist ungültig.", kSource);
  const fs::path p = fs::path(path_) / name;
  std::error_code ec;
  if (fs::exists(p, ec))
    throw VbError(-2147352567, "Der Ordner \"" + name + "\" existiert bereits.", kSource);
  if (!fs::create_directory(p, ec))
    RaiseFileError("Der Ordner kann nicht angelegt werden:", p.string(), ec.value());
  return std::make_shared<Folder>(session_, p.string());
}

std::shared_ptr<Items> Folder::GetItems() {
  return std::make_shared<Items>(session_, path_, session_->ReadFolder(path_));
}

// ---- Session ----

Session::Session(std::string root, std::function<void(const std::string&)> onError)
    : root_(std::move(root)), onError_(std::move(onError)) {
  std::error_code ec;
  fs::create_directories(root_, ec);
}

std::vector<FolderPtr> Session::Folders() {
  std::vector<FolderPtr> out;
  for (const fs::path& p : SortedEntries(root_, true))
    out.push_back(std::make_shared<Folder>(this, p.string()));
  return out;
}

FolderPtr Session::GetDefaultFolder(int folderType) {
  if (folderType != olFolderContacts) throw VbError(5, {}, kSource);
  std::vector<FolderPtr> stores = Folders();
  FolderPtr store = stores.empty() ? nullptr : stores.front();
  std::error_code ec;
  if (!store) {
    const fs::path p = fs::path(root_) / kDefaultStore;
    fs::create_directories(p, ec);
    store = std::make_shared<Folder>(this, p.string());
  }
  const fs::path folder = fs::path(store->Path()) / kDefaultContactsFolder;
  if (!fs::is_directory(folder) && !fs::create_directories(folder, ec))
    RaiseFileError("Der Ordner kann nicht angelegt werden:", folder.string(), ec.value());
  return std::make_shared<Folder>(this, folder.string());
}

std::vector<ContactItemPtr> Session::ReadFolder(const std::string& folderPath) {
  std::vector<ContactItemPtr> items;
  for (const fs::path& p : SortedEntries(folderPath, false)) {
    const std::string path = p.string();
    auto it = cache_.find(path);
    if (it == cache_.end()) {
      // A card is read once per session, and again after this session wrote
      // it; a file that is no card is reported once.
      struct stat st {};
      if (stat(path.c_str(), &st) != 0) continue;  // gone since the listing
      Cached cached;
      std::ifstream in(path, std::ios::binary);
      std::stringstream text;
      text << in.rdbuf();
      try {
        cached.item = std::make_shared<ContactItem>(this, path, ParseVCard(text.str()),
                                                    OleDateOf(st.st_mtime));
      } catch (const VCardError& error) {
        ReportError(path + ": " + error.what());
      }
      it = cache_.emplace(path, std::move(cached)).first;
    }
    if (it->second.item) items.push_back(it->second.item);
  }
  return items;
}

void Session::Forget(const std::string& path) {
  cache_.erase(path);
}

}  // namespace ketrova::contacts
