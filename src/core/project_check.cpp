#include "core/project_check.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <pugixml.hpp>

#include "core/converter.h"
#include "support/system.h"
#include "support/text.h"

namespace ketrova {

namespace {

// The parser's reason in German.
std::string Reason(pugi::xml_parse_status status) {
  switch (status) {
    case pugi::status_no_document_element:
      return "kein Wurzelelement";
    case pugi::status_unrecognized_tag:
      return "unbekannte Markierung";
    case pugi::status_bad_pi:
      return "fehlerhafte Verarbeitungsanweisung";
    case pugi::status_bad_comment:
      return "fehlerhafter Kommentar";
    case pugi::status_bad_cdata:
      return "fehlerhafter CDATA-Abschnitt";
    case pugi::status_bad_doctype:
      return "fehlerhafte Dokumenttyp-Angabe";
    case pugi::status_bad_pcdata:
      return "fehlerhafter Text";
    case pugi::status_bad_start_element:
      return "fehlerhaftes öffnendes Element";
    case pugi::status_bad_attribute:
      return "fehlerhaftes Attribut";
    case pugi::status_bad_end_element:
      return "fehlerhaftes schließendes Element";
    case pugi::status_end_element_mismatch:
      return "schließendes Element passt nicht zum öffnenden";
    case pugi::status_append_invalid_root:
      return "ungültiges Wurzelelement";
    default:
      return "kein XML";
  }
}

// Text is what holds no NUL and no control character but tab and line ends
// in its first 64 KB; UTF-16 files start with their byte order mark.
bool LooksBinary(const std::string& buffer) {
  if (buffer.starts_with("\xFF\xFE") || buffer.starts_with("\xFE\xFF")) return false;
  const std::size_t n = std::min<std::size_t>(buffer.size(), 65536);
  for (std::size_t i = 0; i < n; ++i) {
    const auto c = static_cast<unsigned char>(buffer[i]);
    if (c < 0x20 && c != '\t' && c != '\r' && c != '\n') return true;
  }
  return false;
}

}  // namespace

ProjectFileCheck CheckProjectFile(const std::string& path) {
  using Kind = ProjectFileCheck::Kind;
  std::error_code ec;
  if (!std::filesystem::exists(path, ec))
    return {Kind::kMissing, "Projektdatei nicht gefunden: " + path};
  std::ifstream in(path, std::ios::binary);
  std::string buffer;
  if (in && !std::filesystem::is_directory(path, ec)) {
    buffer.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  if (!in || in.bad() || std::filesystem::is_directory(path, ec)) {
    const std::string why =
        std::filesystem::is_directory(path, ec) ? "ein Ordner" : SystemErrorText(errno);
    return {Kind::kUnreadable, "Die Projektdatei " + path + " kann nicht gelesen werden: " + why};
  }
  const std::string head = "Dies ist keine gültige Projektdatei: " + path + "\nGrund: ";
  if (LooksBinary(buffer)) return {Kind::kBinary, head + "die Datei enthält Binärdaten"};

  pugi::xml_document doc;
  pugi::xml_parse_result parsed =
      doc.load_buffer(buffer.data(), buffer.size(), pugi::parse_default, pugi::encoding_auto);
  if (!parsed) {
    const auto at = static_cast<std::size_t>(std::max<std::ptrdiff_t>(parsed.offset, 0));
    std::size_t line = 1;
    std::size_t lineStart = 0;
    for (std::size_t i = 0; i < at && i < buffer.size(); ++i) {
      if (buffer[i] == '\n') {
        ++line;
        lineStart = i + 1;
      }
    }
    return {Kind::kNotXml, head + Reason(parsed.status) + " (Zeile " + std::to_string(line) +
                               ", Spalte " + std::to_string(at - lineStart + 1) + ")"};
  }
  const std::string root = doc.document_element().name();
  if (!IsEqual(root, "Project")) {
    return {Kind::kNotProject, head + "das Wurzelelement heißt <" + root +
                                   ">, nicht <Project>; sie wird leer geladen"};
  }
  return {};
}

bool LoadCheckedProject(CConverter& project, const std::string& path, bool saves,
                        std::vector<std::string>& notes) {
  const ProjectFileCheck check = CheckProjectFile(path);
  using Kind = ProjectFileCheck::Kind;
  // Nor is a file of another kind overwritten by a project.
  if (check.kind == Kind::kBinary || (saves && check.kind == Kind::kNotProject)) {
    notes.push_back(check.text);
    return false;
  }
  if (check.kind == Kind::kNotXml || check.kind == Kind::kNotProject) notes.push_back(check.text);
  const std::string error = project.LoadProject(path);
  if (error.empty()) return true;
  notes.push_back(error);
  if (check.kind == Kind::kMissing || check.kind == Kind::kUnreadable) notes.push_back(check.text);
  return false;
}

}  // namespace ketrova
