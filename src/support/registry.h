// CRegistry: the registry as the old code used it, kept on ini files.
//
// HKEY_CURRENT_USER is $XDG_CONFIG_HOME/ketrova/registry.ini (default
// ~/.config), one section per key path ("[Software\Halvorn\Ketrova]");
// HKEY_LOCAL_MACHINE and the other hives have a file of their own beside it
// (machine.ini, hive-<number>.ini). The ODBC keys are answered from unixODBC's
// own files: "Software\ODBC\ODBC.INI\<DSN>" from ~/.odbc.ini for the user and
// from $ODBCINI (else $ODBCSYSINI/odbc.ini, else /etc/odbc.ini) for the
// machine, the DSN's section holding its values; the key
// "Software\ODBC\ODBC.INI\ODBC Data Sources" answers a DSN's driver (its
// "[ODBC Data Sources]" entry, else the DSN section's "Driver").
// "Software\ODBC\ODBCINST.INI\<driver>" likewise reads odbcinst.ini.
//
// A missing file, key or value gives the default, never a failure; a status is
// 0 for success and a Windows error code otherwise (2 not found, 5 refused).
// Values are held as text; a number (type 4) as its decimal text. A read value
// must fit the old 256-byte buffer (255 characters), or the default comes back.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ketrova {

inline constexpr std::uint32_t HKEY_CLASSES_ROOT = 0x80000000u;
inline constexpr std::uint32_t HKEY_CURRENT_USER = 0x80000001u;
inline constexpr std::uint32_t HKEY_LOCAL_MACHINE = 0x80000002u;
inline constexpr std::uint32_t HKEY_USERS = 0x80000003u;

inline constexpr std::int32_t KEY_READ = 0x20019;
inline constexpr std::int32_t KEY_WRITE = 0x20006;
inline constexpr std::int32_t KEY_ALL_ACCESS = 0xF003F;

inline constexpr std::int32_t REG_SZ = 1;
inline constexpr std::int32_t REG_DWORD = 4;

inline constexpr std::int32_t ERROR_SUCCESS = 0;
inline constexpr std::int32_t ERROR_FILE_NOT_FOUND = 2;
inline constexpr std::int32_t ERROR_ACCESS_DENIED = 5;
inline constexpr std::int32_t ERROR_INVALID_HANDLE = 6;

using RegKeyHandle = std::int64_t;  // 0 is no key

class CRegistry {
 public:
  // The value as trimmed text; `defaultValue` when the key or value is
  // missing. Opens the key (hive, subKey) itself when no handle is given.
  std::string GetRegSetting(std::string_view valueName, RegKeyHandle keyHandle = 0,
                            std::uint32_t hive = HKEY_CURRENT_USER, std::string_view subKey = {},
                            std::string_view defaultValue = {});
  // Writes a value into an existing key; the status.
  std::int32_t SetRegSetting(std::string_view valueName, std::string_view value,
                             std::int32_t valType = REG_SZ, RegKeyHandle keyHandle = 0,
                             std::uint32_t hive = HKEY_CURRENT_USER, std::string_view subKey = {});
  // Creates the key when it is missing and writes the value; errors ignored.
  void WriteRegistry(std::uint32_t group, std::string_view section, std::string_view valueName,
                     std::int32_t valType, std::string_view value);
  // A handle on an existing key (the hive itself for an empty subkey); 0 when
  // there is none.
  RegKeyHandle OpenRegKey(std::uint32_t hive, std::string_view subKey = {},
                          std::int32_t access = KEY_READ);
  void CloseRegKey(RegKeyHandle keyHandle);
  // Removes a key that has no subkeys; the status.
  std::int32_t DeleteSubkey(std::uint32_t hive, std::string_view subKey);
  std::int32_t DeleteValue(std::uint32_t hive, std::string_view subKey, std::string_view valueName);

  // The ini file that holds a key, and the section in it (for tests and
  // diagnostics).
  static std::string FileOfKey(std::uint32_t hive, std::string_view subKey,
                               std::string* section = nullptr);
};

}  // namespace ketrova
