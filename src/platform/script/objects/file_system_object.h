// FileSystemObject: Scripting.FileSystemObject on std::filesystem, with its
// TextStream, File, Folder and the Files / SubFolders collections, so that
// scripts can test for files and folders, read and write text files and move
// files about. Paths take "\" and "/" alike and are answered with "/".
//
// Text files are read as UTF-8 (a byte order mark is skipped; a file that is
// not valid UTF-8 is read as Windows-1252) and written as UTF-8; WriteLine
// ends a line with CR LF, as the original did. ReadLine takes CR LF, LF and CR
// as line ends. Failures raise VB's file errors: 53 "Datei nicht gefunden", 76
// "Pfad nicht gefunden", 58 "Datei existiert bereits", 62 "Einlesen hinter
// Dateiende", 54 "Dateimodus falsch", 70 "Erlaubnis verweigert".
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/script/binding.h"

namespace ketrova::script {

// IOMode of OpenTextFile.
enum IOMode : int { ForReading = 1, ForWriting = 2, ForAppending = 8 };

class FileSystemObject : public BoundObject<FileSystemObject> {
 public:
  std::string TypeName() const override { return "FileSystemObject"; }
  static const MemberTable<FileSystemObject>& Members();
};

class TextStream : public BoundObject<TextStream> {
 public:
  // Opens `path`; raises the file errors above.
  TextStream(const std::filesystem::path& path, int mode, bool create);
  std::string TypeName() const override { return "TextStream"; }
  static const MemberTable<TextStream>& Members();

  std::string ReadLine();
  std::string ReadAll();
  std::string Read(std::int32_t characters);
  void SkipLine();
  bool AtEndOfStream() const;
  bool AtEndOfLine() const;
  void Write(const std::string& text);
  void Close();
  std::int32_t Line() const { return line_; }
  std::int32_t Column() const { return column_; }

 private:
  void CheckReading() const;
  void CheckWriting() const;
  void Advance(std::size_t bytes);

  int mode_;
  bool open_ = true;
  std::string text_;  // the whole file, when reading
  std::size_t position_ = 0;
  std::ofstream out_;
  std::int32_t line_ = 1;
  std::int32_t column_ = 1;
};

class File : public BoundObject<File> {
 public:
  explicit File(std::filesystem::path path) : path_(std::move(path)) {}
  std::string TypeName() const override { return "File"; }
  static const MemberTable<File>& Members();
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

class Folder : public BoundObject<Folder> {
 public:
  explicit Folder(std::filesystem::path path) : path_(std::move(path)) {}
  std::string TypeName() const override { return "Folder"; }
  static const MemberTable<Folder>& Members();
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// The files or the sub-folders of a folder, read when asked for.
class FolderItems : public BoundObject<FolderItems> {
 public:
  FolderItems(std::filesystem::path folder, bool folders)
      : folder_(std::move(folder)), folders_(folders) {}
  std::string TypeName() const override { return folders_ ? "Folders" : "Files"; }
  static const MemberTable<FolderItems>& Members();
  std::vector<Variant> Items() const;

 private:
  std::filesystem::path folder_;
  bool folders_;
};

// The text of a file as UTF-8: a byte order mark dropped, Windows-1252 turned
// into UTF-8 when the bytes are not valid UTF-8.
std::string DecodeText(std::string bytes);

}  // namespace ketrova::script
