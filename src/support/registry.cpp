#include "support/registry.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <mutex>

#include "support/ini_file.h"
#include "support/text.h"
#include "support/utf8.h"

namespace ketrova {

namespace {

constexpr std::string_view kOdbcIni = "Software\\ODBC\\ODBC.INI";
constexpr std::string_view kOdbcInstIni = "Software\\ODBC\\ODBCINST.INI";
constexpr std::string_view kDataSources = "ODBC Data Sources";

std::string Env(const char* name) {
  const char* v = std::getenv(name);
  return v ? std::string(v) : std::string();
}

std::string Home() {
  std::string home = Env("HOME");
  if (!home.empty()) return home;
  if (const passwd* pw = getpwuid(getuid())) return pw->pw_dir;
  return ".";
}

std::string ConfigFolder() {
  std::string xdg = Env("XDG_CONFIG_HOME");
  return (xdg.empty() ? Home() + "/.config" : xdg) + "/ketrova";
}

std::string SystemFolder() {
  std::string sys = Env("ODBCSYSINI");
  return sys.empty() ? "/etc" : sys;
}

// Key paths compare without regard to case and to "/" versus "\".
std::string NormalKey(std::string_view key) {
  std::string k(TrimView(key));
  for (char& c : k)
    if (c == '/') c = '\\';
  while (!k.empty() && k.back() == '\\') k.pop_back();
  while (!k.empty() && k.front() == '\\') k.erase(0, 1);
  return k;
}

// The rest of `key` below `root`, or nullopt when it is not below it.
std::optional<std::string> Below(const std::string& key, std::string_view root) {
  if (key.size() <= root.size() || key[root.size()] != '\\') return std::nullopt;
  if (!IsEqual(key.substr(0, root.size()), root)) return std::nullopt;
  return key.substr(root.size() + 1);
}

struct Location {
  std::string file;
  std::string section;
  bool dataSources = false;  // the "ODBC Data Sources" key of an odbc.ini
  bool root = false;         // the hive itself, or a key above the files' sections
};

Location Locate(std::uint32_t hive, std::string_view subKey) {
  std::string key = NormalKey(subKey);
  Location loc;
  bool user = hive == HKEY_CURRENT_USER;
  if (auto dsn = Below(key, kOdbcIni); dsn && (user || hive == HKEY_LOCAL_MACHINE)) {
    std::string sysIni = Env("ODBCINI");
    loc.file = user             ? Home() + "/.odbc.ini"
               : sysIni.empty() ? SystemFolder() + "/odbc.ini"
                                : sysIni;
    loc.section = *dsn;
    loc.dataSources = IsEqual(*dsn, kDataSources);
    return loc;
  }
  if (auto driver = Below(key, kOdbcInstIni); driver && (user || hive == HKEY_LOCAL_MACHINE)) {
    std::string name = Env("ODBCINSTINI");
    if (name.empty()) name = "odbcinst.ini";
    loc.file = user ? Home() + "/.odbcinst.ini" : SystemFolder() + "/" + name;
    loc.section = *driver;
    return loc;
  }
  if (user)
    loc.file = ConfigFolder() + "/registry.ini";
  else if (hive == HKEY_LOCAL_MACHINE)
    loc.file = ConfigFolder() + "/machine.ini";
  else
    loc.file = ConfigFolder() + "/hive-" + std::to_string(hive) + ".ini";
  loc.section = key;
  loc.root = key.empty();
  return loc;
}

bool KeyExists(const Location& loc) {
  if (loc.root) return true;
  IniDocument doc = IniDocument::Load(loc.file);
  if (doc.HasSection(loc.section)) return true;
  if (loc.dataSources) return !doc.Sections().empty();
  // A key with subkeys exists too.
  for (const auto& s : doc.Sections())
    if (s.size() > loc.section.size() && IsEqual(s.substr(0, loc.section.size()), loc.section) &&
        s[loc.section.size()] == '\\')
      return true;
  return false;
}

std::optional<std::string> ReadValue(const Location& loc, std::string_view valueName) {
  IniDocument doc = IniDocument::Load(loc.file);
  if (auto v = doc.Get(loc.section, valueName)) return v;
  // unixODBC keeps no list of data sources: the DSN's own section names its driver.
  if (loc.dataSources && doc.HasSection(valueName)) return doc.Get(valueName, "Driver");
  return std::nullopt;
}

std::int32_t WriteValue(const Location& loc, std::string_view valueName, std::string_view value) {
  if (loc.root) return ERROR_ACCESS_DENIED;
  IniDocument doc = IniDocument::Load(loc.file);
  doc.Set(loc.section, valueName, value);
  return doc.Save(loc.file) ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

struct OpenKey {
  std::uint32_t hive;
  std::string subKey;
};

std::mutex& HandlesLock() {
  static std::mutex lock;
  return lock;
}
std::map<RegKeyHandle, OpenKey>& Handles() {
  static std::map<RegKeyHandle, OpenKey> handles;
  return handles;
}

std::optional<OpenKey> KeyOf(RegKeyHandle handle) {
  std::lock_guard guard(HandlesLock());
  auto it = Handles().find(handle);
  if (it == Handles().end()) return std::nullopt;
  return it->second;
}

// A value of type 4 is kept as the decimal text of its 32-bit number.
std::string ValueText(std::int32_t valType, std::string_view value) {
  if (valType != REG_DWORD) return std::string(value);
  return std::to_string(static_cast<std::int32_t>(std::atoll(std::string(value).c_str())));
}

}  // namespace

std::string CRegistry::FileOfKey(std::uint32_t hive, std::string_view subKey,
                                 std::string* section) {
  Location loc = Locate(hive, subKey);
  if (section) *section = loc.section;
  return loc.file;
}

RegKeyHandle CRegistry::OpenRegKey(std::uint32_t hive, std::string_view subKey,
                                   std::int32_t access) {
  if (!KeyExists(Locate(hive, subKey))) return 0;
  std::lock_guard guard(HandlesLock());
  static RegKeyHandle next = 0x1000;
  RegKeyHandle handle = ++next;
  Handles()[handle] = OpenKey{hive, std::string(subKey)};
  return handle;
}

void CRegistry::CloseRegKey(RegKeyHandle keyHandle) {
  std::lock_guard guard(HandlesLock());
  Handles().erase(keyHandle);
}

std::string CRegistry::GetRegSetting(std::string_view valueName, RegKeyHandle keyHandle,
                                     std::uint32_t hive, std::string_view subKey,
                                     std::string_view defaultValue) {
  bool opened = false;
  if (keyHandle == 0) {
    keyHandle = OpenRegKey(hive, subKey);
    opened = true;
  }
  std::string result(defaultValue);
  if (auto key = KeyOf(keyHandle)) {
    auto value = ReadValue(Locate(key->hive, key->subKey), valueName);
    // The old code read into a buffer of 256 bytes, its NUL included.
    if (value && value->size() < 256) result = Trim(*value);
  }
  if (opened && keyHandle != 0) CloseRegKey(keyHandle);
  return result;
}

std::int32_t CRegistry::SetRegSetting(std::string_view valueName, std::string_view value,
                                      std::int32_t valType, RegKeyHandle keyHandle,
                                      std::uint32_t hive, std::string_view subKey) {
  bool opened = false;
  if (keyHandle == 0) {
    keyHandle = OpenRegKey(hive, subKey, KEY_WRITE);
    if (keyHandle == 0) return ERROR_FILE_NOT_FOUND;
    opened = true;
  }
  std::int32_t status = ERROR_INVALID_HANDLE;
  if (auto key = KeyOf(keyHandle))
    status = WriteValue(Locate(key->hive, key->subKey), valueName, ValueText(valType, value));
  if (opened) CloseRegKey(keyHandle);
  return status;
}

void CRegistry::WriteRegistry(std::uint32_t group, std::string_view section,
                              std::string_view valueName, std::int32_t valType,
                              std::string_view value) {
  WriteValue(Locate(group, section), valueName, ValueText(valType, value));
}

std::int32_t CRegistry::DeleteSubkey(std::uint32_t hive, std::string_view subKey) {
  Location loc = Locate(hive, subKey);
  if (loc.root) return ERROR_ACCESS_DENIED;
  IniDocument doc = IniDocument::Load(loc.file);
  for (const auto& s : doc.Sections())
    if (s.size() > loc.section.size() && IsEqual(s.substr(0, loc.section.size()), loc.section) &&
        s[loc.section.size()] == '\\')
      return ERROR_ACCESS_DENIED;
  if (!doc.RemoveSection(loc.section)) return ERROR_FILE_NOT_FOUND;
  return doc.Save(loc.file) ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

std::int32_t CRegistry::DeleteValue(std::uint32_t hive, std::string_view subKey,
                                    std::string_view valueName) {
  Location loc = Locate(hive, subKey);
  IniDocument doc = IniDocument::Load(loc.file);
  if (!doc.Remove(loc.section, valueName)) return ERROR_FILE_NOT_FOUND;
  return doc.Save(loc.file) ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

}  // namespace ketrova
