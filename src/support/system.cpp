#include "support/system.h"

#include <pthread.h>
#include <pwd.h>
#include <sys/random.h>
#include <unistd.h>
#include <uuid/uuid.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "support/object.h"
#include "support/text.h"
#include "support/utf8.h"

namespace ketrova {

namespace fs = std::filesystem;

namespace {

// Random bytes drawn from the kernel a block at a time: a run asks for a GUID
// per record, and one system call per GUID was a good part of a record's cost.
struct RandomPool {
  unsigned char bytes[4096];
  std::size_t used = sizeof bytes;
};
thread_local RandomPool randomPool;

// A child process must not hand out the GUIDs its parent will.
void ForgetRandomPool() {
  randomPool.used = sizeof randomPool.bytes;
}

}  // namespace

std::string CreateGUID() {
  std::string text;
  CreateGUID(text);
  return text;
}

void CreateGUID(std::string& text) {
  static const bool atFork = pthread_atfork(nullptr, nullptr, ForgetRandomPool) == 0;
  (void)atFork;
  RandomPool& pool = randomPool;
  if (pool.used + 16 > sizeof pool.bytes) {
    std::size_t got = 0;
    while (got < sizeof pool.bytes) {
      ssize_t n = getrandom(pool.bytes + got, sizeof pool.bytes - got, 0);
      if (n <= 0) break;
      got += static_cast<std::size_t>(n);
    }
    if (got == sizeof pool.bytes) pool.used = 0;
  }
  uuid_t id;
  if (pool.used + sizeof id <= sizeof pool.bytes) {
    std::memcpy(id, pool.bytes + pool.used, sizeof id);
    pool.used += sizeof id;
    // Version 4 (random), variant 1, as uuid_generate_random makes them.
    id[6] = static_cast<unsigned char>((id[6] & 0x0F) | 0x40);
    id[8] = static_cast<unsigned char>((id[8] & 0x3F) | 0x80);
  } else {
    uuid_generate_random(id);
  }
  char unparsed[37] = {};
  uuid_unparse_upper(id, unparsed);
  text.assign(unparsed);
}

std::string GetTempDirectory() {
  const char* tmp = std::getenv("TMPDIR");
  std::string dir = tmp && *tmp ? tmp : "/tmp";
  return AddSuffixOnce(dir, "/");
}

std::string GetComputerName() {
  char name[256] = {};
  if (gethostname(name, sizeof name - 1) != 0) return {};
  return std::string(name);  // up to the first NUL
}

int ComboFindText(std::string_view text, const ComboList& combo) {
  for (int i = 0; i < combo.ListCount(); ++i)
    if (IsEqual(combo.List(i), text)) return i;
  return -1;
}

int ComboFindItemData(std::int64_t value, const ComboList& combo) {
  std::string wanted = std::to_string(value);
  for (int i = 0; i < combo.ListCount(); ++i)
    if (IsEqual(std::to_string(combo.ItemData(i)), wanted)) return i;
  return -1;
}

bool IsObjectValid(const Variant& object) {
  return object.IsNothing();
}

bool CheckKeyForType(int& keyCode, int adoType) {
  switch (keyCode) {
    case 39:
    case 37:
    case 27:
    case 13:
    case 9:
    case 8:
      return true;
    default:
      break;
  }
  if (adoType < 3 || adoType > 135) return true;
  bool digit = keyCode >= 48 && keyCode <= 57;
  bool pass = true;
  switch (adoType) {
    case 3:
    case 4:
    case 20:
      pass = digit;
      break;
    case 5:
    case 6:
    case 14:
    case 131:
      pass = digit || keyCode == '.' || keyCode == ',';
      break;
    case 7:
    case 133:
    case 134:
    case 135:
      pass = digit || keyCode == '/' || keyCode == '.' || keyCode == ',' || keyCode == ')' ||
             keyCode == '(' || keyCode == '#';
      break;
    default:
      return true;
  }
  if (!pass) keyCode = 0;
  return pass;
}

// ---- mail ----

namespace {

std::string& OutboxSlot() {
  static std::string folder;
  return folder;
}

std::string Base64(std::string_view data) {
  static const char* table = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  std::size_t i = 0;
  for (; i + 2 < data.size(); i += 3) {
    unsigned v = (static_cast<unsigned char>(data[i]) << 16) |
                 (static_cast<unsigned char>(data[i + 1]) << 8) |
                 static_cast<unsigned char>(data[i + 2]);
    for (int k = 18; k >= 0; k -= 6) out += table[(v >> k) & 63];
  }
  if (i < data.size()) {
    unsigned v = static_cast<unsigned char>(data[i]) << 16;
    if (i + 1 < data.size()) v |= static_cast<unsigned char>(data[i + 1]) << 8;
    out += table[(v >> 18) & 63];
    out += table[(v >> 12) & 63];
    out += i + 1 < data.size() ? table[(v >> 6) & 63] : '=';
    out += '=';
  }
  return out;
}

// A header value: as it is when plain ASCII, else an RFC 2047 encoded word.
std::string HeaderText(std::string_view text) {
  bool plain = true;
  for (char c : text)
    if (static_cast<unsigned char>(c) >= 0x80 || c == '\r' || c == '\n') plain = false;
  if (plain) return std::string(text);
  return "=?UTF-8?B?" + Base64(text) + "?=";
}

// Line ends as CR LF, whatever the body used.
std::string CrLf(std::string_view body) {
  std::string out;
  for (std::size_t i = 0; i < body.size(); ++i) {
    if (body[i] == '\r') {
      out += "\r\n";
      if (i + 1 < body.size() && body[i + 1] == '\n') ++i;
    } else if (body[i] == '\n') {
      out += "\r\n";
    } else {
      out += body[i];
    }
  }
  if (out.size() < 2 || out.compare(out.size() - 2, 2, "\r\n") != 0) out += "\r\n";
  return out;
}

std::string UserName() {
  if (const char* user = std::getenv("USER"); user && *user) return user;
  if (const passwd* pw = getpwuid(getuid())) return pw->pw_name;
  return "ketrova";
}

}  // namespace

std::string OutboxFolder() {
  if (!OutboxSlot().empty()) return OutboxSlot();
  std::string base;
  if (const char* data = std::getenv("XDG_DATA_HOME"); data && *data)
    base = data;
  else if (const char* home = std::getenv("HOME"))
    base = std::string(home) + "/.local/share";
  else
    base = ".local/share";
  return base + "/ketrova/outbox";
}

void SetOutboxFolder(std::string folder) {
  OutboxSlot() = std::move(folder);
}

std::string SendMail(std::string_view to, std::string_view subject, std::string_view body) {
  fs::path box(OutboxFolder());
  std::error_code ec;
  for (const char* sub : {"tmp", "new", "cur"}) fs::create_directories(box / sub, ec);
  if (!fs::is_directory(box / "new", ec) || !fs::is_directory(box / "tmp", ec))
    return "Kein Outlook installiert.";

  static std::atomic<unsigned> counter{0};
  std::string host = GetComputerName();
  if (host.empty()) host = "localhost";
  auto now = std::chrono::system_clock::now();
  std::time_t t = std::chrono::system_clock::to_time_t(now);
  auto micros =
      std::chrono::duration_cast<std::chrono::microseconds>(now.time_since_epoch()).count() %
      1000000;
  std::string unique = std::to_string(t) + ".M" + std::to_string(micros) + "P" +
                       std::to_string(getpid()) + "Q" + std::to_string(++counter) + "." + host;

  char date[64] = {};
  std::tm tm{};
  localtime_r(&t, &tm);
  // RFC 5322 wants English day and month names, whatever the locale says.
  static const char* days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  long offset = tm.tm_gmtoff / 60;
  std::snprintf(date, sizeof date, "%s, %02d %s %04d %02d:%02d:%02d %c%02ld%02ld", days[tm.tm_wday],
                tm.tm_mday, months[tm.tm_mon], tm.tm_year + 1900, tm.tm_hour, tm.tm_min, tm.tm_sec,
                offset < 0 ? '-' : '+', std::labs(offset) / 60, std::labs(offset) % 60);

  std::string message;
  message += "Date: " + std::string(date) + "\r\n";
  message += "From: " + UserName() + "@" + host + "\r\n";
  message += "To: " + HeaderText(to) + "\r\n";
  message += "Subject: " + HeaderText(subject) + "\r\n";
  message += "Message-ID: <" + CreateGUID() + "@" + host + ">\r\n";
  message += "MIME-Version: 1.0\r\n";
  message += "Content-Type: text/plain; charset=UTF-8\r\n";
  message += "Content-Transfer-Encoding: 8bit\r\n";
  message += "X-Mailer: Ketrova\r\n";
  message += "\r\n";
  message += CrLf(body);

  // Written in tmp/ and moved into new/, so that a reader never sees half a message.
  fs::path temp = box / "tmp" / unique;
  {
    std::ofstream out(temp, std::ios::binary);
    out << message;
    if (!out) return {};
  }
  fs::rename(temp, box / "new" / unique, ec);
  return {};
}

std::string SystemErrorText(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
      return "keine Berechtigung";
    case ENOENT:
      return "Datei oder Ordner nicht vorhanden";
    case ENOTDIR:
      return "ein Teil des Pfades ist kein Ordner";
    case EISDIR:
      return "ist ein Ordner";
    case EROFS:
      return "Dateisystem ist schreibgeschützt";
    case ENOSPC:
      return "kein Platz mehr auf dem Datenträger";
    case EDQUOT:
      return "Kontingent auf dem Datenträger erschöpft";
    default:
      return std::strerror(error);
  }
}

}  // namespace ketrova
