#include "platform/script/objects/file_system_object.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <random>
#include <sstream>
#include <system_error>

namespace ketrova::script {

namespace fs = std::filesystem;

namespace {

std::string Slashes(std::string path) {
  for (char& c : path)
    if (c == '\\') c = '/';
  return path;
}

fs::path PathOf(const Variant& v) {
  return fs::path(Slashes(v.ToString()));
}

std::string Text(const fs::path& p) {
  return p.generic_string();
}

// A file error from the system's error code: not found, no such path, no
// permission, or the device error.
[[noreturn]] void RaiseFileError(const std::error_code& ec, bool isFile) {
  if (ec == std::errc::no_such_file_or_directory) throw VbError(isFile ? 53 : 76);
  if (ec == std::errc::permission_denied || ec == std::errc::operation_not_permitted)
    throw VbError(70);
  if (ec == std::errc::file_exists) throw VbError(58);
  throw VbError(75);
}

// Days since 1899-12-30 of a civil date (proleptic Gregorian).
double OleDays(int y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  const long days1970 = era * 146097L + static_cast<long>(doe) - 719468L;
  return static_cast<double>(days1970 + 25569);
}

// A file time as an OLE date in local time, to the second.
Variant OleDateOf(fs::file_time_type time) {
  auto system = std::chrono::time_point_cast<std::chrono::system_clock::duration>(
      time - fs::file_time_type::clock::now() + std::chrono::system_clock::now());
  std::time_t t = std::chrono::system_clock::to_time_t(system);
  std::tm local{};
  localtime_r(&t, &local);
  double days = OleDays(local.tm_year + 1900, static_cast<unsigned>(local.tm_mon + 1),
                        static_cast<unsigned>(local.tm_mday));
  double fraction = (local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec) / 86400.0;
  return Variant::FromDate(days + fraction);
}

bool OptionalBool(Args a, std::size_t i, bool fallback) {
  if (i >= a.size() || a[i].IsMissing() || a[i].IsEmpty()) return fallback;
  return a[i].ToBool();
}

std::int32_t OptionalLong(Args a, std::size_t i, std::int32_t fallback) {
  if (i >= a.size() || a[i].IsMissing() || a[i].IsEmpty()) return fallback;
  return a[i].ToLong();
}

Variant Done() {
  return Variant();
}

void CopyOne(const fs::path& from, const fs::path& to, bool overwrite) {
  fs::path target = to;
  if (fs::is_directory(target) || Text(to).ends_with("/")) target /= from.filename();
  if (!fs::exists(from)) throw VbError(53);
  if (fs::exists(target) && !overwrite) throw VbError(58);
  std::error_code ec;
  fs::copy_file(from, target, fs::copy_options::overwrite_existing, ec);
  if (ec) RaiseFileError(ec, true);
}

void MoveOne(const fs::path& from, const fs::path& to) {
  fs::path target = to;
  if (fs::is_directory(target) || Text(to).ends_with("/")) target /= from.filename();
  if (!fs::exists(from)) throw VbError(53);
  if (fs::exists(target)) throw VbError(58);
  std::error_code ec;
  fs::rename(from, target, ec);
  if (ec) RaiseFileError(ec, true);
}

Variant OpenText(const fs::path& path, Args a, std::size_t modeIndex, std::size_t createIndex) {
  int mode = OptionalLong(a, modeIndex, ForReading);
  bool create = OptionalBool(a, createIndex, false);
  return Variant(ObjectPtr(std::make_shared<TextStream>(path, mode, create)));
}

std::string TempName() {
  static std::mt19937 random{std::random_device{}()};
  static const char kHex[] = "0123456789ABCDEF";
  std::string name = "rad";
  for (int i = 0; i < 5; ++i) name += kHex[random() % 16];
  return name + ".tmp";
}

}  // namespace

std::string DecodeText(std::string bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
  bool valid = true;
  for (std::size_t i = 0; i < bytes.size() && valid;) {
    unsigned char c = static_cast<unsigned char>(bytes[i]);
    std::size_t extra = c < 0x80             ? 0
                        : (c & 0xE0) == 0xC0 ? 1
                        : (c & 0xF0) == 0xE0 ? 2
                        : (c & 0xF8) == 0xF0 ? 3
                                             : 99;
    valid = extra != 99 && i + extra < bytes.size();
    for (std::size_t k = 1; valid && k <= extra; ++k)
      valid = (static_cast<unsigned char>(bytes[i + k]) & 0xC0) == 0x80;
    i += extra + 1;
  }
  if (valid) return bytes;
  // Windows-1252: 0x80..0x9F have their own code points, the rest is Latin-1.
  static const char16_t kHigh[32] = {
      0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
  std::string out;
  out.reserve(bytes.size() + bytes.size() / 8);
  for (unsigned char c : bytes) {
    char32_t cp = c >= 0x80 && c < 0xA0 ? kHigh[c - 0x80] : c;
    if (cp < 0x80) {
      out += static_cast<char>(cp);
    } else if (cp < 0x800) {
      out += static_cast<char>(0xC0 | (cp >> 6));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
      out += static_cast<char>(0xE0 | (cp >> 12));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    }
  }
  return out;
}

// ---------------------------------------------------------------------------
// FileSystemObject

const MemberTable<FileSystemObject>& FileSystemObject::Members() {
  using T = FileSystemObject;
  static const auto table =
      MemberTable<T>()
          .Method("FileExists", 1, 1,
                  [](T&, Args a) { return Variant(fs::is_regular_file(PathOf(a[0]))); })
          .Method("FolderExists", 1, 1,
                  [](T&, Args a) { return Variant(fs::is_directory(PathOf(a[0]))); })
          .Method("GetFileName", 1, 1,
                  [](T&, Args a) { return Variant(Text(PathOf(a[0]).filename())); })
          .Method("GetBaseName", 1, 1,
                  [](T&, Args a) { return Variant(Text(PathOf(a[0]).stem())); })
          .Method("GetExtensionName", 1, 1,
                  [](T&, Args a) {
                    std::string ext = Text(PathOf(a[0]).extension());
                    return Variant(ext.empty() ? ext : ext.substr(1));
                  })
          .Method("GetParentFolderName", 1, 1,
                  [](T&, Args a) {
                    std::string path = Slashes(a[0].ToString());
                    while (path.size() > 1 && path.ends_with("/")) path.pop_back();
                    return Variant(Text(fs::path(path).parent_path()));
                  })
          .Method("BuildPath", 2, 2,
                  [](T&, Args a) {
                    std::string base = Slashes(a[0].ToString());
                    std::string name = Slashes(a[1].ToString());
                    if (!base.empty() && !base.ends_with("/") && !name.starts_with("/"))
                      base += "/";
                    return Variant(base + name);
                  })
          .Method("GetAbsolutePathName", 1, 1,
                  [](T&, Args a) {
                    return Variant(Text(fs::absolute(PathOf(a[0])).lexically_normal()));
                  })
          .Method("GetTempName", 0, 0, [](T&, Args) { return Variant(TempName()); })
          .Method("GetSpecialFolder", 1, 1,
                  [](T&, Args a) -> Variant {
                    // 2 is the temporary folder; 0 and 1 (Windows, System) have
                    // no counterpart and answer the root.
                    fs::path path = a[0].ToLong() == 2 ? fs::temp_directory_path() : fs::path("/");
                    return ObjectPtr(std::make_shared<Folder>(path));
                  })
          .Method("CreateFolder", 1, 1,
                  [](T&, Args a) -> Variant {
                    fs::path path = PathOf(a[0]);
                    if (fs::exists(path)) throw VbError(58);
                    std::error_code ec;
                    fs::create_directory(path, ec);
                    if (ec) RaiseFileError(ec, false);
                    return ObjectPtr(std::make_shared<Folder>(path));
                  })
          .Method("DeleteFile", 1, 2,
                  [](T&, Args a) {
                    fs::path path = PathOf(a[0]);
                    if (!fs::is_regular_file(path)) throw VbError(53);
                    std::error_code ec;
                    fs::remove(path, ec);
                    if (ec) RaiseFileError(ec, true);
                    return Done();
                  })
          .Method("DeleteFolder", 1, 2,
                  [](T&, Args a) {
                    fs::path path = PathOf(a[0]);
                    if (!fs::is_directory(path)) throw VbError(76);
                    std::error_code ec;
                    fs::remove_all(path, ec);
                    if (ec) RaiseFileError(ec, false);
                    return Done();
                  })
          .Method("CopyFile", 2, 3,
                  [](T&, Args a) {
                    CopyOne(PathOf(a[0]), PathOf(a[1]), OptionalBool(a, 2, true));
                    return Done();
                  })
          .Method("MoveFile", 2, 2,
                  [](T&, Args a) {
                    MoveOne(PathOf(a[0]), PathOf(a[1]));
                    return Done();
                  })
          .Method("CreateTextFile", 1, 3,
                  [](T&, Args a) -> Variant {
                    fs::path path = PathOf(a[0]);
                    if (!OptionalBool(a, 1, true) && fs::exists(path)) throw VbError(58);
                    return ObjectPtr(std::make_shared<TextStream>(path, ForWriting, true));
                  })
          .Method("OpenTextFile", 1, 4, [](T&, Args a) { return OpenText(PathOf(a[0]), a, 1, 2); })
          .Method("GetFile", 1, 1,
                  [](T&, Args a) -> Variant {
                    fs::path path = PathOf(a[0]);
                    if (!fs::is_regular_file(path)) throw VbError(53);
                    return ObjectPtr(std::make_shared<File>(fs::absolute(path)));
                  })
          .Method("GetFolder", 1, 1, [](T&, Args a) -> Variant {
            fs::path path = PathOf(a[0]);
            if (!fs::is_directory(path)) throw VbError(76);
            return ObjectPtr(std::make_shared<Folder>(fs::absolute(path)));
          });
  return table;
}

// ---------------------------------------------------------------------------
// TextStream

TextStream::TextStream(const fs::path& path, int mode, bool create) : mode_(mode) {
  if (mode != ForReading && mode != ForWriting && mode != ForAppending) throw VbError(5);
  bool exists = fs::exists(path);
  if (exists && fs::is_directory(path)) throw VbError(70);
  if (!exists && !create && mode != ForWriting) throw VbError(53);
  if (!path.parent_path().empty() && !fs::is_directory(path.parent_path())) throw VbError(76);
  if (mode == ForReading) {
    if (!exists) {
      std::ofstream touch(path, std::ios::binary);
      if (!touch) throw VbError(70);
      return;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) throw VbError(70);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    text_ = DecodeText(bytes.str());
    return;
  }
  out_.open(path, std::ios::binary | (mode == ForAppending ? std::ios::app : std::ios::trunc));
  if (!out_) throw VbError(70);
}

const MemberTable<TextStream>& TextStream::Members() {
  using T = TextStream;
  static const auto table =
      MemberTable<T>()
          .Method("ReadLine", 0, 0, [](T& t, Args) { return Variant(t.ReadLine()); })
          .Method("ReadAll", 0, 0, [](T& t, Args) { return Variant(t.ReadAll()); })
          .Method("Read", 1, 1, [](T& t, Args a) { return Variant(t.Read(a[0].ToLong())); })
          .Method("Skip", 1, 1,
                  [](T& t, Args a) {
                    t.Read(a[0].ToLong());
                    return Done();
                  })
          .Method("SkipLine", 0, 0,
                  [](T& t, Args) {
                    t.SkipLine();
                    return Done();
                  })
          .Method("Write", 1, 1,
                  [](T& t, Args a) {
                    t.Write(a[0].ToString());
                    return Done();
                  })
          .Method(
              "WriteLine", 0, 1,
              [](T& t, Args a) {
                t.Write((a.empty() || a[0].IsMissing() ? std::string() : a[0].ToString()) + "\r\n");
                return Done();
              })
          .Method("WriteBlankLines", 1, 1,
                  [](T& t, Args a) {
                    std::string lines;
                    for (std::int32_t i = 0; i < a[0].ToLong(); ++i) lines += "\r\n";
                    t.Write(lines);
                    return Done();
                  })
          .Method("Close", 0, 0,
                  [](T& t, Args) {
                    t.Close();
                    return Done();
                  })
          .Property("AtEndOfStream", [](T& t, Args) { return Variant(t.AtEndOfStream()); })
          .Property("AtEndOfLine", [](T& t, Args) { return Variant(t.AtEndOfLine()); })
          .Property("Line", [](T& t, Args) { return Variant::Long(t.Line()); })
          .Property("Column", [](T& t, Args) { return Variant::Long(t.Column()); });
  return table;
}

void TextStream::CheckReading() const {
  if (mode_ != ForReading) throw VbError(54);
  if (!open_) throw VbError(52);
}

void TextStream::CheckWriting() const {
  if (mode_ == ForReading) throw VbError(54);
  if (!open_) throw VbError(52);
}

void TextStream::Advance(std::size_t bytes) {
  for (std::size_t end = position_ + bytes; position_ < end; ++position_) {
    unsigned char c = static_cast<unsigned char>(text_[position_]);
    if (c == '\n') {
      ++line_;
      column_ = 1;
    } else if ((c & 0xC0) != 0x80) {
      ++column_;
    }
  }
}

std::string TextStream::ReadLine() {
  CheckReading();
  if (position_ >= text_.size()) throw VbError(62);
  std::size_t end = text_.find_first_of("\r\n", position_);
  if (end == std::string::npos) end = text_.size();
  std::string line = text_.substr(position_, end - position_);
  std::size_t next = end;
  if (next < text_.size()) next += text_.compare(next, 2, "\r\n") == 0 ? 2 : 1;
  position_ = next;
  ++line_;
  column_ = 1;
  return line;
}

std::string TextStream::ReadAll() {
  CheckReading();
  if (position_ >= text_.size() && !text_.empty()) throw VbError(62);
  std::string rest = text_.substr(position_);
  Advance(text_.size() - position_);
  return rest;
}

std::string TextStream::Read(std::int32_t characters) {
  CheckReading();
  if (characters < 0) throw VbError(5);
  if (position_ >= text_.size() && characters > 0) throw VbError(62);
  std::size_t end = position_;
  for (std::int32_t n = 0; n < characters && end < text_.size(); ++n) {
    ++end;
    while (end < text_.size() && (static_cast<unsigned char>(text_[end]) & 0xC0) == 0x80) ++end;
  }
  std::string part = text_.substr(position_, end - position_);
  Advance(end - position_);
  return part;
}

void TextStream::SkipLine() {
  ReadLine();
}

bool TextStream::AtEndOfStream() const {
  CheckReading();
  return position_ >= text_.size();
}

bool TextStream::AtEndOfLine() const {
  CheckReading();
  return position_ >= text_.size() || text_[position_] == '\r' || text_[position_] == '\n';
}

void TextStream::Write(const std::string& text) {
  CheckWriting();
  out_ << text;
  if (!out_) throw VbError(57);
  for (char c : text) {
    if (c == '\n') {
      ++line_;
      column_ = 1;
    } else if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) {
      ++column_;
    }
  }
}

void TextStream::Close() {
  if (out_.is_open()) out_.close();
  open_ = false;
}

// ---------------------------------------------------------------------------
// File, Folder and their collections

const MemberTable<File>& File::Members() {
  static const auto table =
      MemberTable<File>()
          .Property("Path", [](File& f, Args) { return Variant(Text(f.path_)); })
          .Property("Name", [](File& f, Args) { return Variant(Text(f.path_.filename())); })
          .Property(
              "Size",
              [](File& f, Args) { return Variant(static_cast<double>(fs::file_size(f.path_))); })
          .Property("DateLastModified",
                    [](File& f, Args) { return OleDateOf(fs::last_write_time(f.path_)); })
          .Property("ParentFolder",
                    [](File& f, Args) -> Variant {
                      return ObjectPtr(std::make_shared<Folder>(f.path_.parent_path()));
                    })
          .Method("Delete", 0, 1,
                  [](File& f, Args) {
                    std::error_code ec;
                    if (!fs::remove(f.path_, ec) || ec) RaiseFileError(ec, true);
                    return Done();
                  })
          .Method("Copy", 1, 2,
                  [](File& f, Args a) {
                    CopyOne(f.path_, PathOf(a[0]), OptionalBool(a, 1, true));
                    return Done();
                  })
          .Method("Move", 1, 1,
                  [](File& f, Args a) {
                    fs::path target = PathOf(a[0]);
                    if (fs::is_directory(target)) target /= f.path_.filename();
                    MoveOne(f.path_, target);
                    f.path_ = fs::absolute(target);
                    return Done();
                  })
          .Method("OpenAsTextStream", 0, 2,
                  [](File& f, Args a) { return OpenText(f.path_, a, 0, 99); })
          .Default("Path");
  return table;
}

const MemberTable<Folder>& Folder::Members() {
  static const auto table =
      MemberTable<Folder>()
          .Property("Path", [](Folder& f, Args) { return Variant(Text(f.path_)); })
          .Property("Name", [](Folder& f, Args) { return Variant(Text(f.path_.filename())); })
          .Property("IsRootFolder",
                    [](Folder& f, Args) { return Variant(f.path_ == f.path_.root_path()); })
          .Property("DateLastModified",
                    [](Folder& f, Args) { return OleDateOf(fs::last_write_time(f.path_)); })
          .Property("ParentFolder",
                    [](Folder& f, Args) -> Variant {
                      if (f.path_ == f.path_.root_path()) return Variant::Nothing();
                      return ObjectPtr(std::make_shared<Folder>(f.path_.parent_path()));
                    })
          .Property("Files",
                    [](Folder& f, Args) -> Variant {
                      return ObjectPtr(std::make_shared<FolderItems>(f.path_, false));
                    })
          .Property("SubFolders",
                    [](Folder& f, Args) -> Variant {
                      return ObjectPtr(std::make_shared<FolderItems>(f.path_, true));
                    })
          .Method("Delete", 0, 1,
                  [](Folder& f, Args) {
                    std::error_code ec;
                    fs::remove_all(f.path_, ec);
                    if (ec) RaiseFileError(ec, false);
                    return Done();
                  })
          .Default("Path");
  return table;
}

std::vector<Variant> FolderItems::Items() const {
  std::vector<fs::path> paths;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(folder_, ec)) {
    if (folders_ ? entry.is_directory() : entry.is_regular_file()) paths.push_back(entry.path());
  }
  if (ec) RaiseFileError(ec, false);
  std::sort(paths.begin(), paths.end());
  std::vector<Variant> items;
  for (const auto& path : paths) {
    if (folders_)
      items.emplace_back(ObjectPtr(std::make_shared<Folder>(path)));
    else
      items.emplace_back(ObjectPtr(std::make_shared<File>(path)));
  }
  return items;
}

const MemberTable<FolderItems>& FolderItems::Members() {
  static const auto table =
      MemberTable<FolderItems>()
          .Property("Count",
                    [](FolderItems& f, Args) {
                      return Variant::Long(static_cast<std::int32_t>(f.Items().size()));
                    })
          .Property("Item", 1, 1,
                    [](FolderItems& f, Args a) -> Variant {
                      fs::path path = f.folder_ / Slashes(a[0].ToString());
                      bool found = f.folders_ ? fs::is_directory(path) : fs::is_regular_file(path);
                      if (!found) throw VbError(f.folders_ ? 76 : 53);
                      if (f.folders_) return ObjectPtr(std::make_shared<Folder>(path));
                      return ObjectPtr(std::make_shared<File>(path));
                    })
          .Default("Item")
          .Enumeration([](FolderItems& f) -> std::unique_ptr<Enumerator> {
            return std::make_unique<VectorEnumerator>(f.Items());
          });
  return table;
}

}  // namespace ketrova::script
