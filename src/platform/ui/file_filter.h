// VB's filter texts for file choosers: "Description|*.a;*.b|Description|*.c"
// (pairs of a description and a pattern list), or a bare pattern list such as
// "*.CPF". Patterns match without regard to case, as they did on Windows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ketrova::ui {

struct FileFilter {
  std::string description;            // the pattern list itself for a bare list
  std::vector<std::string> patterns;  // "*.CPF", "*.*" ...
};

// The filters of a VB filter text, in order; none for an empty text.
std::vector<FileFilter> ParseVbFilter(std::string_view vbFilter);

// Whether the file's name (any folder is ignored) matches a pattern of any of
// the filters; "*" and "?" are wildcards, "*.*" and "*" match every name. An
// empty filter text matches everything.
bool MatchesVbFilter(std::string_view fileName, std::string_view vbFilter);

}  // namespace ketrova::ui
