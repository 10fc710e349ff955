// File helpers that answer instead of failing: a test is False and a text
// result holds the error's description, never an exception. Paths may use "\"
// or "/" as separator; helpers that add a separator write "/".
//
// FileExtension and ChangeFileExtension look for the first "." of the whole
// text, so a "." in a folder name counts; they are meant for plain file names.
#pragma once

#include <string>
#include <string_view>

namespace ketrova {

bool FileExists(std::string_view path);
bool FolderExists(std::string_view path);
// Creates the folder (and its parents); False on error.
bool FolderCreate(std::string_view path);
// Creates the folder when it is missing; the path with a trailing separator.
std::string GetFolder(std::string_view path);
// "" when the file was deleted; "File not found :" + the path (backslashes
// doubled) when there is none; the error's description when it cannot be.
std::string FileDelete(std::string_view path);
// Tries up to 1000 times to delete the file, for a file that a process that is
// ending still holds; True when it is gone (at once for a missing file).
bool DeleteFileWait(std::string_view path);

// The text behind the last separator; the whole text when there is none.
std::string FileName(std::string_view path);
// The text before the last separator; "" when there is none.
std::string FilePath(std::string_view path);
// The text behind the first ".", in upper case ("a.b.c" gives "B.C").
std::string FileExtension(std::string_view name);
// The text before the first "." and the new extension; "" without a ".".
std::string ChangeFileExtension(std::string_view name, std::string_view extension);
// The path with a trailing separator ("/" added unless it ends in "\" or "/");
// an empty path stays empty.
std::string AddBackslash(std::string_view path);
// False when the name is empty or begins with "*" (what a file dialog returns
// when nothing was chosen); True otherwise, also for "a*.txt".
bool IsPlainName(std::string_view name);

// The whole file; "" when it is missing or cannot be read.
std::string ReadTextFile(std::string_view path);
// Writes the file anew, bytes as given; "" on success,
// "Bestehende Datei konnte nicht gelöscht werden!" when an existing file stays,
// otherwise the error's description.
std::string WriteTextFile(std::string_view path, std::string_view text);

}  // namespace ketrova
