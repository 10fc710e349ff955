// Ini files as Windows' profile functions read and write them: "[Section]"
// lines, "Entry=Value" lines, names compared without regard to case, values
// trimmed (and freed of surrounding quotes), ";" comment lines kept. Writing
// keeps every other line of the file as it was.
//
// IniDocument is the file in memory; the registry stand-in and the ODBC
// lookups read through it. CIniFile is the general class of the old code: a
// current file (PrivPath, or the user's win.ini with UseWinINI) and a current
// section (SectionName), each call reading or writing the file at once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ketrova {

class IniDocument {
 public:
  // Reads a file; a missing or unreadable file is an empty document.
  static IniDocument Load(const std::string& path);
  // Writes the document to its file, creating the folders; false on error.
  bool Save(const std::string& path) const;

  std::optional<std::string> Get(std::string_view section, std::string_view entry) const;
  void Set(std::string_view section, std::string_view entry, std::string_view value);
  // True when something was removed.
  bool Remove(std::string_view section, std::string_view entry);
  bool RemoveSection(std::string_view section);
  bool HasSection(std::string_view section) const;
  std::vector<std::string> Sections() const;
  // Entry names of a section, in file order.
  std::vector<std::string> Entries(std::string_view section) const;
  // "Entry=Value" lines of a section, in file order.
  std::vector<std::string> EntryLines(std::string_view section) const;

  std::string Text() const;

 private:
  struct Line {
    std::string text;     // as read
    std::string section;  // set on a "[...]" line
    std::string entry;    // set on an "entry=value" line
    std::string value;
  };
  std::ptrdiff_t FindSection(std::string_view section) const;
  std::ptrdiff_t FindEntry(std::string_view section, std::string_view entry) const;
  std::vector<Line> lines_;
};

class CIniFile {
 public:
  // The folder + "win.ini" that stands in for Windows' WIN.INI:
  // $XDG_CONFIG_HOME/ketrova/win.ini.
  static std::string WinIniPath();

  // The file and its parts: FullPath is the path, FilePath its folder,
  // FileExt its extension.
  void SetPrivPath(std::string_view path);
  const std::string& PrivPath() const { return privPath_; }
  // True switches to win.ini; False goes back to the private path set before.
  void SetUseWinINI(bool use);
  bool UseWinINI() const { return useWinIni_; }
  std::string SectionName;
  const std::string& FullPath() const { return fullPath_; }
  const std::string& FilePath() const { return filePath_; }
  const std::string& FileExt() const { return fileExt_; }

  std::string GetString(std::string_view entry, std::string_view defaultValue = {}) const;
  // The leading digits of the value, as GetPrivateProfileInt reads them.
  std::int32_t GetInt(std::string_view entry, std::int32_t defaultValue = 0) const;
  // "YES", "Y", "TRUE", "T", "ON", "1", "-1" are True; "NO", "N", "FALSE", "F",
  // "OFF", "0" are False; anything else gives the default.
  bool GetTF(std::string_view entry, bool defaultValue = false) const;
  bool PutString(std::string_view entry, std::string_view value);
  bool PutInt(std::string_view entry, std::int32_t value);
  bool PutTF(std::string_view entry, bool value);  // "True" or "False"

  std::vector<std::string> GetSections() const;
  // The section names as "[Name]" lines.
  std::vector<std::string> GetSectionsEx() const;
  std::vector<std::string> GetSectEntries() const;
  // The entries of the current section as "Entry=Value".
  std::vector<std::string> GetSectEntriesEx() const;
  bool DeleteStrEntry(std::string_view entry);
  bool DeleteNumEntry(std::string_view entry);
  bool DeleteSection();
  // A file of that name exists; a name without "." matches any extension.
  bool Exists(std::string_view name) const;
  bool SectExist(std::string_view section) const;
  // Writes are immediate; nothing is pending.
  void FlushCache() {}

  // The name behind the last "\" or "/" (or behind a drive's ":"); mode 1
  // without its extension, mode 2 only the extension.
  static std::string ExtractName(std::string_view path, int mode = 0);
  static std::string ExtractPath(std::string_view path);

 private:
  const std::string& File() const { return useWinIni_ ? winIni_ : privPath_; }
  std::string privPath_, winIni_, fullPath_, filePath_, fileExt_;
  bool useWinIni_ = false;
};

}  // namespace ketrova
