#include "support/files.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/text.h"
#include "support/utf8.h"

namespace ketrova {

namespace fs = std::filesystem;

namespace {

// A path with "\" separators read as "/".
fs::path ToPath(std::string_view path) {
  std::string p(path);
  for (char& c : p)
    if (c == '\\') c = '/';
  return fs::path(p);
}

std::size_t LastSeparator(std::string_view path) {
  return path.find_last_of("\\/");
}

}  // namespace

bool FileExists(std::string_view path) {
  std::error_code ec;
  if (path.empty()) return false;
  auto status = fs::status(ToPath(path), ec);
  return !ec && fs::exists(status) && !fs::is_directory(status);
}

bool FolderExists(std::string_view path) {
  std::error_code ec;
  if (path.empty()) return false;
  return fs::is_directory(ToPath(path), ec);
}

bool FolderCreate(std::string_view path) {
  std::error_code ec;
  if (path.empty()) return false;
  fs::create_directories(ToPath(path), ec);
  return !ec && FolderExists(path);
}

std::string GetFolder(std::string_view path) {
  if (!FolderExists(path)) FolderCreate(path);
  return AddBackslash(path);
}

std::string FileDelete(std::string_view path) {
  if (!FileExists(path)) return "File not found :" + ReplaceAll(path, "\\", "\\\\");
  std::error_code ec;
  fs::remove(ToPath(path), ec);
  return ec ? ec.message() : std::string();
}

bool DeleteFileWait(std::string_view path) {
  for (int tries = 0; FileExists(path) && tries < 1000; ++tries) {
    std::this_thread::yield();
    FileDelete(path);
  }
  return !FileExists(path);
}

std::string FileName(std::string_view path) {
  std::size_t pos = LastSeparator(path);
  return std::string(pos == std::string_view::npos ? path : path.substr(pos + 1));
}

std::string FilePath(std::string_view path) {
  std::size_t pos = LastSeparator(path);
  return pos == std::string_view::npos ? std::string() : std::string(path.substr(0, pos));
}

std::string FileExtension(std::string_view name) {
  std::size_t pos = name.find('.');
  return pos == std::string_view::npos ? std::string() : UpperCase(name.substr(pos + 1));
}

std::string ChangeFileExtension(std::string_view name, std::string_view extension) {
  std::size_t pos = name.find('.');
  if (pos == std::string_view::npos) return {};
  return std::string(name.substr(0, pos)) + std::string(extension);
}

std::string AddBackslash(std::string_view path) {
  if (path.empty() || path.back() == '\\' || path.back() == '/') return std::string(path);
  return std::string(path) + "/";
}

bool IsPlainName(std::string_view name) {
  return !(FindString(name, "*") >= 1);
}

std::string ReadTextFile(std::string_view path) {
  if (!FileExists(path)) return {};
  std::ifstream in(ToPath(path), std::ios::binary);
  if (!in) return {};
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string WriteTextFile(std::string_view path, std::string_view text) {
  if (FileExists(path)) DeleteFileWait(path);
  if (FileExists(path)) return "Bestehende Datei konnte nicht gelöscht werden!";
  std::ofstream out(ToPath(path), std::ios::binary | std::ios::trunc);
  if (!out) return std::strerror(errno);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.close();
  if (!out) return std::strerror(errno);
  return {};
}

}  // namespace ketrova
