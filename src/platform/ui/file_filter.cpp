#include "platform/ui/file_filter.h"

#include <cctype>

namespace ketrova::ui {
namespace {

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (;;) {
    std::size_t end = text.find(separator, start);
    parts.emplace_back(text.substr(start, end - start));
    if (end == std::string_view::npos) break;
    start = end + 1;
  }
  return parts;
}

std::string Trim(std::string_view text) {
  auto begin = text.find_first_not_of(' ');
  if (begin == std::string_view::npos) return {};
  auto end = text.find_last_not_of(' ');
  return std::string(text.substr(begin, end - begin + 1));
}

std::vector<std::string> Patterns(std::string_view list) {
  std::vector<std::string> patterns;
  for (const std::string& part : Split(list, ';'))
    if (std::string pattern = Trim(part); !pattern.empty()) patterns.push_back(pattern);
  return patterns;
}

char Fold(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// Wildcard match of `name` against `pattern` without regard to ASCII case.
bool Matches(std::string_view name, std::string_view pattern) {
  std::size_t n = 0, p = 0, star = std::string_view::npos, resume = 0;
  while (n < name.size()) {
    if (p < pattern.size() && (pattern[p] == '?' || Fold(pattern[p]) == Fold(name[n]))) {
      ++n;
      ++p;
    } else if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      resume = n;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      n = ++resume;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

}  // namespace

std::vector<FileFilter> ParseVbFilter(std::string_view vbFilter) {
  std::vector<FileFilter> filters;
  if (Trim(vbFilter).empty()) return filters;
  if (vbFilter.find('|') == std::string_view::npos) {
    filters.push_back({Trim(vbFilter), Patterns(vbFilter)});
    return filters;
  }
  std::vector<std::string> parts = Split(vbFilter, '|');
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2)
    filters.push_back({parts[i], Patterns(parts[i + 1])});
  return filters;
}

bool MatchesVbFilter(std::string_view fileName, std::string_view vbFilter) {
  auto slash = fileName.find_last_of("/\\");
  if (slash != std::string_view::npos) fileName.remove_prefix(slash + 1);
  std::vector<FileFilter> filters = ParseVbFilter(vbFilter);
  if (filters.empty()) return true;
  for (const FileFilter& filter : filters)
    for (const std::string& pattern : filter.patterns)
      if (pattern == "*.*" || Matches(fileName, pattern)) return true;
  return false;
}

}  // namespace ketrova::ui
