#include "support/ini_file.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/files.h"
#include "support/text.h"
#include "support/utf8.h"

namespace ketrova {

namespace fs = std::filesystem;

namespace {

std::string StripQuotes(std::string value) {
  if (value.size() >= 2 && ((value.front() == '"' && value.back() == '"') ||
                            (value.front() == '\'' && value.back() == '\'')))
    return value.substr(1, value.size() - 2);
  return value;
}

std::string TrimWhite(std::string_view s) {
  std::size_t a = s.find_first_not_of(" \t\r");
  if (a == std::string_view::npos) return {};
  std::size_t b = s.find_last_not_of(" \t\r");
  return std::string(s.substr(a, b - a + 1));
}

}  // namespace

IniDocument IniDocument::Load(const std::string& path) {
  IniDocument doc;
  std::ifstream in(path, std::ios::binary);
  std::string raw;
  std::string section;
  while (in && std::getline(in, raw)) {
    if (!raw.empty() && raw.back() == '\r') raw.pop_back();
    Line line;
    line.text = raw;
    std::string t = TrimWhite(raw);
    if (t.size() >= 2 && t.front() == '[' && t.find(']') != std::string::npos) {
      section = TrimWhite(t.substr(1, t.find(']') - 1));
      line.section = section;
    } else if (!t.empty() && t[0] != ';' && t[0] != '#' && t.find('=') != std::string::npos) {
      std::size_t eq = t.find('=');
      line.entry = TrimWhite(t.substr(0, eq));
      line.value = StripQuotes(TrimWhite(t.substr(eq + 1)));
      line.section = section;
    }
    // Non-entry lines keep the section they stand in, for appending.
    if (line.entry.empty() && !(t.size() >= 2 && t.front() == '[')) line.section.clear();
    doc.lines_.push_back(std::move(line));
  }
  return doc;
}

std::string IniDocument::Text() const {
  std::string out;
  for (const auto& line : lines_) out += line.text + "\n";
  return out;
}

bool IniDocument::Save(const std::string& path) const {
  std::error_code ec;
  fs::path p(path);
  if (p.has_parent_path()) fs::create_directories(p.parent_path(), ec);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) return false;
  out << Text();
  return static_cast<bool>(out);
}

std::ptrdiff_t IniDocument::FindSection(std::string_view section) const {
  for (std::size_t i = 0; i < lines_.size(); ++i)
    if (lines_[i].entry.empty() && !lines_[i].section.empty() &&
        IsEqual(lines_[i].section, section))
      return static_cast<std::ptrdiff_t>(i);
  return -1;
}

std::ptrdiff_t IniDocument::FindEntry(std::string_view section, std::string_view entry) const {
  for (std::size_t i = 0; i < lines_.size(); ++i)
    if (!lines_[i].entry.empty() && IsEqual(lines_[i].section, section) &&
        IsEqual(lines_[i].entry, entry))
      return static_cast<std::ptrdiff_t>(i);
  return -1;
}

std::optional<std::string> IniDocument::Get(std::string_view section,
                                            std::string_view entry) const {
  auto i = FindEntry(section, entry);
  if (i < 0) return std::nullopt;
  return lines_[static_cast<std::size_t>(i)].value;
}

void IniDocument::Set(std::string_view section, std::string_view entry, std::string_view value) {
  Line line;
  line.text = std::string(entry) + "=" + std::string(value);
  line.section = std::string(section);
  line.entry = std::string(entry);
  line.value = std::string(value);
  auto i = FindEntry(section, entry);
  if (i >= 0) {
    line.entry = lines_[static_cast<std::size_t>(i)].entry;
    line.text = line.entry + "=" + std::string(value);
    lines_[static_cast<std::size_t>(i)] = std::move(line);
    return;
  }
  auto s = FindSection(section);
  if (s < 0) {
    if (!lines_.empty() && !TrimWhite(lines_.back().text).empty()) lines_.push_back(Line{});
    Line header;
    header.text = "[" + std::string(section) + "]";
    header.section = std::string(section);
    lines_.push_back(std::move(header));
    lines_.push_back(std::move(line));
    return;
  }
  // Behind the last entry of the section.
  std::size_t at = static_cast<std::size_t>(s) + 1;
  for (std::size_t k = at; k < lines_.size(); ++k) {
    if (lines_[k].entry.empty() && !lines_[k].section.empty()) break;
    if (!lines_[k].entry.empty()) at = k + 1;
  }
  lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(at), std::move(line));
}

bool IniDocument::Remove(std::string_view section, std::string_view entry) {
  auto i = FindEntry(section, entry);
  if (i < 0) return false;
  lines_.erase(lines_.begin() + i);
  return true;
}

bool IniDocument::RemoveSection(std::string_view section) {
  auto s = FindSection(section);
  if (s < 0) return false;
  std::size_t end = static_cast<std::size_t>(s) + 1;
  while (end < lines_.size() && !(lines_[end].entry.empty() && !lines_[end].section.empty())) ++end;
  lines_.erase(lines_.begin() + s, lines_.begin() + static_cast<std::ptrdiff_t>(end));
  return true;
}

bool IniDocument::HasSection(std::string_view section) const {
  return FindSection(section) >= 0;
}

std::vector<std::string> IniDocument::Sections() const {
  std::vector<std::string> out;
  for (const auto& line : lines_)
    if (line.entry.empty() && !line.section.empty()) out.push_back(line.section);
  return out;
}

std::vector<std::string> IniDocument::Entries(std::string_view section) const {
  std::vector<std::string> out;
  for (const auto& line : lines_)
    if (!line.entry.empty() && IsEqual(line.section, section)) out.push_back(line.entry);
  return out;
}

std::vector<std::string> IniDocument::EntryLines(std::string_view section) const {
  std::vector<std::string> out;
  for (const auto& line : lines_)
    if (!line.entry.empty() && IsEqual(line.section, section))
      out.push_back(line.entry + "=" + line.value);
  return out;
}

// ---- CIniFile ----

std::string CIniFile::WinIniPath() {
  const char* xdg = std::getenv("XDG_CONFIG_HOME");
  std::string base;
  if (xdg && *xdg)
    base = xdg;
  else if (const char* home = std::getenv("HOME"))
    base = std::string(home) + "/.config";
  else
    base = ".config";
  return base + "/ketrova/win.ini";
}

void CIniFile::SetPrivPath(std::string_view path) {
  privPath_ = std::string(path);
  fullPath_ = privPath_;
  filePath_ = ExtractPath(path);
  fileExt_ = ExtractName(path, 2);
}

void CIniFile::SetUseWinINI(bool use) {
  useWinIni_ = use;
  if (use)
    winIni_ = WinIniPath();
  else
    SetPrivPath(privPath_);
}

std::string CIniFile::GetString(std::string_view entry, std::string_view defaultValue) const {
  auto v = IniDocument::Load(File()).Get(SectionName, entry);
  return v ? *v : std::string(defaultValue);
}

std::int32_t CIniFile::GetInt(std::string_view entry, std::int32_t defaultValue) const {
  auto v = IniDocument::Load(File()).Get(SectionName, entry);
  if (!v) return defaultValue;
  std::int64_t n = 0;
  std::size_t i = 0;
  bool negative = i < v->size() && (*v)[i] == '-';
  if (negative) ++i;
  for (; i < v->size() && (*v)[i] >= '0' && (*v)[i] <= '9'; ++i) n = n * 10 + ((*v)[i] - '0');
  return static_cast<std::int32_t>(negative ? -n : n);
}

bool CIniFile::GetTF(std::string_view entry, bool defaultValue) const {
  std::string v = UpperCase(Trim(GetString(entry)));
  for (const char* t : {"YES", "Y", "TRUE", "T", "ON", "1", "-1"})
    if (v == t) return true;
  for (const char* f : {"NO", "N", "FALSE", "F", "OFF", "0"})
    if (v == f) return false;
  return defaultValue;
}

bool CIniFile::PutString(std::string_view entry, std::string_view value) {
  if (File().empty() || SectionName.empty()) return false;
  IniDocument doc = IniDocument::Load(File());
  doc.Set(SectionName, entry, value);
  return doc.Save(File());
}

bool CIniFile::PutInt(std::string_view entry, std::int32_t value) {
  return PutString(entry, std::to_string(value));
}

bool CIniFile::PutTF(std::string_view entry, bool value) {
  return PutString(entry, value ? "True" : "False");
}

std::vector<std::string> CIniFile::GetSections() const {
  return IniDocument::Load(File()).Sections();
}

std::vector<std::string> CIniFile::GetSectionsEx() const {
  std::vector<std::string> out;
  for (auto& s : GetSections()) out.push_back("[" + s + "]");
  return out;
}

std::vector<std::string> CIniFile::GetSectEntries() const {
  return IniDocument::Load(File()).Entries(SectionName);
}

std::vector<std::string> CIniFile::GetSectEntriesEx() const {
  return IniDocument::Load(File()).EntryLines(SectionName);
}

bool CIniFile::DeleteStrEntry(std::string_view entry) {
  IniDocument doc = IniDocument::Load(File());
  return doc.Remove(SectionName, entry) && doc.Save(File());
}

bool CIniFile::DeleteNumEntry(std::string_view entry) {
  return DeleteStrEntry(entry);
}

bool CIniFile::DeleteSection() {
  IniDocument doc = IniDocument::Load(File());
  return doc.RemoveSection(SectionName) && doc.Save(File());
}

bool CIniFile::Exists(std::string_view name) const {
  if (name.find('.') != std::string_view::npos) return FileExists(name);
  // Without an extension any extension matches (name + ".*").
  std::string folder = ketrova::FilePath(name);
  std::string base = ketrova::FileName(name);
  std::error_code ec;
  for (const auto& e : fs::directory_iterator(folder.empty() ? "." : folder, ec)) {
    std::string file = e.path().filename().string();
    if (e.is_regular_file(ec) && file.size() > base.size() &&
        IsEqual(file.substr(0, base.size()), base) && file[base.size()] == '.')
      return true;
  }
  return false;
}

bool CIniFile::SectExist(std::string_view section) const {
  return IniDocument::Load(File()).HasSection(section);
}

std::string CIniFile::ExtractName(std::string_view path, int mode) {
  std::size_t cut = path.find_last_of("\\/");
  std::string name;
  if (cut != std::string_view::npos)
    name = std::string(path.substr(cut + 1));
  else if (path.size() >= 2 && path[1] == ':')
    name = std::string(path.substr(2));
  else
    name = std::string(path);
  std::size_t dot = name.rfind('.');
  if (mode == 1) return dot == std::string::npos ? name : name.substr(0, dot);
  if (mode == 2) return dot == std::string::npos ? std::string() : name.substr(dot + 1);
  return name;
}

std::string CIniFile::ExtractPath(std::string_view path) {
  std::size_t cut = path.find_last_of("\\/");
  if (cut != std::string_view::npos) return std::string(path.substr(0, cut + 1));
  if (path.size() >= 2 && path[1] == ':') return std::string(path.substr(0, 2));
  return {};
}

}  // namespace ketrova
