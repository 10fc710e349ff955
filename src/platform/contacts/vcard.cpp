#include "platform/contacts/vcard.h"

#include <algorithm>
#include <cassert>

#include "support/text.h"

namespace ketrova::contacts {

namespace {

bool ValidUtf8(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    const auto c = static_cast<unsigned char>(text[i]);
    std::size_t extra = 0;
    if (c < 0x80)
      extra = 0;
    else if ((c & 0xE0) == 0xC0 && c >= 0xC2)
      extra = 1;
    else if ((c & 0xF0) == 0xE0)
      extra = 2;
    else if ((c & 0xF8) == 0xF0 && c <= 0xF4)
      extra = 3;
    else
      return false;
    if (extra > 0 && i + extra >= text.size()) return false;
    for (std::size_t k = 1; k <= extra; ++k)
      if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80) return false;
    i += extra + 1;
  }
  return true;
}

// The logical lines of a file: physical lines joined where the next begins
// with a blank or a tab. `numbers` holds the physical line each starts on.
std::vector<std::string> Unfold(std::string_view text, std::vector<int>& numbers) {
  std::vector<std::string> lines;
  int number = 0;
  std::size_t pos = 0;
  while (pos <= text.size()) {
    std::size_t end = text.find('\n', pos);
    if (end == std::string_view::npos) end = text.size();
    std::string_view line = text.substr(pos, end - pos);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    ++number;
    if (!line.empty() && (line.front() == ' ' || line.front() == '\t')) {
      if (lines.empty())
        throw VCardError("Zeile " + std::to_string(number) +
                         ": Fortsetzungszeile ohne vorangehende Zeile");
      lines.back().append(line.substr(1));
    } else if (!line.empty()) {
      lines.emplace_back(line);
      numbers.push_back(number);
    }
    if (end == text.size()) break;
    pos = end + 1;
  }
  return lines;
}

// Splits at `separator` outside double quotes.
std::vector<std::string> SplitOutsideQuotes(std::string_view text, char separator) {
  std::vector<std::string> parts(1);
  bool quoted = false;
  for (char c : text) {
    if (c == '"') {
      quoted = !quoted;
      parts.back() += c;
    } else if (c == separator && !quoted) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

std::string Unquote(std::string_view text) {
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"')
    return std::string(text.substr(1, text.size() - 2));
  return std::string(text);
}

VCardProperty ParseLine(const std::string& line, int number) {
  // The name and parameters end at the first colon outside quotes.
  std::size_t colon = std::string::npos;
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') quoted = !quoted;
    if (line[i] == ':' && !quoted) {
      colon = i;
      break;
    }
  }
  if (colon == std::string::npos || colon == 0)
    throw VCardError("Zeile " + std::to_string(number) +
                     ": kein Doppelpunkt: " + line.substr(0, 40));
  VCardProperty property;
  property.value = line.substr(colon + 1);
  std::vector<std::string> head = SplitOutsideQuotes(std::string_view(line).substr(0, colon), ';');
  std::string name = head[0];
  if (auto dot = name.find('.'); dot != std::string::npos) {
    property.group = name.substr(0, dot);
    name = name.substr(dot + 1);
  }
  if (name.empty() || name.find_first_of(" \t\"") != std::string::npos)
    throw VCardError("Zeile " + std::to_string(number) + ": ungültiger Name: " + head[0]);
  property.name = AsciiUpper(name);
  for (std::size_t i = 1; i < head.size(); ++i) {
    VCardParameter parameter;
    const std::string& text = head[i];
    auto equals = text.find('=');
    if (equals == std::string::npos) {
      // The old form without a name (";WORK;VOICE") is a type.
      parameter.name = "TYPE";
      parameter.values.push_back(text);
    } else {
      parameter.name = AsciiUpper(text.substr(0, equals));
      for (const std::string& v : SplitOutsideQuotes(text.substr(equals + 1), ','))
        parameter.values.push_back(Unquote(v));
    }
    if (parameter.name == "ENCODING") {
      std::string encoding = AsciiLower(parameter.values.empty() ? "" : parameter.values[0]);
      if (encoding != "b" && encoding != "base64" && encoding != "8bit")
        throw VCardError("Zeile " + std::to_string(number) + ": unbekannte Kodierung " +
                         (parameter.values.empty() ? "" : parameter.values[0]));
    }
    property.parameters.push_back(std::move(parameter));
  }
  return property;
}

bool NeedsQuotes(std::string_view value) {
  return value.find_first_of(":;,") != std::string_view::npos;
}

// Appends one logical line, folded at 75 octets, and CR LF.
void AppendFolded(std::string& out, std::string_view line) {
  std::size_t limit = 75;
  while (line.size() > limit) {
    std::size_t cut = limit;
    // Never inside a UTF-8 sequence.
    while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xC0) == 0x80) --cut;
    assert(cut > 0);
    out.append(line.substr(0, cut));
    out.append("\r\n ");
    line.remove_prefix(cut);
    limit = 74;  // the blank of the continuation counts
  }
  out.append(line);
  out.append("\r\n");
}

}  // namespace

std::vector<std::string> VCardProperty::ParameterValues(std::string_view parameter) const {
  std::vector<std::string> values;
  for (const VCardParameter& p : parameters)
    if (p.name == parameter)
      for (const std::string& v : p.values)
        for (const std::string& part : SplitOutsideQuotes(v, ','))
          values.push_back(AsciiLower(part));
  return values;
}

bool VCardProperty::HasType(std::string_view type) const {
  std::vector<std::string> types = ParameterValues("TYPE");
  return std::find(types.begin(), types.end(), AsciiLower(type)) != types.end();
}

std::string VCardProperty::ParameterValue(std::string_view parameter) const {
  for (const VCardParameter& p : parameters)
    if (p.name == parameter && !p.values.empty()) return p.values[0];
  return {};
}

void VCardProperty::SetParameter(std::string_view parameter, std::vector<std::string> values) {
  std::erase_if(parameters, [&](const VCardParameter& p) { return p.name == parameter; });
  if (!values.empty()) parameters.push_back({std::string(parameter), std::move(values)});
}

const VCardProperty* VCard::Find(std::string_view name) const {
  for (const VCardProperty& p : properties)
    if (p.name == name) return &p;
  return nullptr;
}

VCardProperty* VCard::Find(std::string_view name) {
  for (VCardProperty& p : properties)
    if (p.name == name) return &p;
  return nullptr;
}

void VCard::RemoveAll(std::string_view name) {
  std::erase_if(properties, [&](const VCardProperty& p) { return p.name == name; });
}

VCard ParseVCard(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  if (!ValidUtf8(text)) throw VCardError("Der Text ist kein UTF-8");
  std::vector<int> numbers;
  std::vector<std::string> lines = Unfold(text, numbers);
  VCard card;
  bool begun = false;
  bool ended = false;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (ended) throw VCardError("Zeile " + std::to_string(numbers[i]) + ": Text hinter END:VCARD");
    VCardProperty property = ParseLine(lines[i], numbers[i]);
    const bool vcardValue = AsciiUpper(property.value) == "VCARD";
    if (!begun) {
      if (property.name != "BEGIN" || !vcardValue)
        throw VCardError("Zeile " + std::to_string(numbers[i]) + ": BEGIN:VCARD fehlt");
      begun = true;
      continue;
    }
    if (property.name == "BEGIN")
      throw VCardError("Zeile " + std::to_string(numbers[i]) + ": END:VCARD fehlt vor BEGIN");
    if (property.name == "END" && vcardValue) {
      ended = true;
      continue;
    }
    if (property.name == "VERSION") {
      card.version = property.value;
      continue;
    }
    card.properties.push_back(std::move(property));
  }
  if (!begun) throw VCardError("BEGIN:VCARD fehlt");
  if (!ended) throw VCardError("END:VCARD fehlt");
  return card;
}

std::string WriteVCard30(const VCard& card) {
  std::string out = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
  for (const VCardProperty& p : card.properties) {
    std::string line;
    if (!p.group.empty()) line = p.group + ".";
    line += p.name;
    for (const VCardParameter& parameter : p.parameters) {
      line += ";" + parameter.name + "=";
      for (std::size_t i = 0; i < parameter.values.size(); ++i) {
        if (i > 0) line += ",";
        const std::string& v = parameter.values[i];
        // A type list quoted as one value (4.0) is a plain list in 3.0.
        const bool list = parameter.name == "TYPE" && v.find_first_of(":;\"") == std::string::npos;
        line += NeedsQuotes(v) && !list ? "\"" + v + "\"" : v;
      }
    }
    line += ":" + p.value;
    AppendFolded(out, line);
  }
  out += "END:VCARD\r\n";
  return out;
}

std::string UnescapeText(std::string_view raw) {
  std::string out;
  out.reserve(raw.size());
  for (std::size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] == '\\' && i + 1 < raw.size()) {
      const char next = raw[++i];
      out += (next == 'n' || next == 'N') ? '\n' : next;
    } else {
      out += raw[i];
    }
  }
  return out;
}

std::string EscapeText(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\\' || c == ',' || c == ';') {
      out += '\\';
      out += c;
    } else if (c == '\r') {
      out += "\\n";
      if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
    } else if (c == '\n') {
      out += "\\n";
    } else {
      out += c;
    }
  }
  return out;
}

std::vector<std::string> SplitStructured(std::string_view raw, std::size_t minimum) {
  std::vector<std::string> parts;
  std::string current;
  for (std::size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] == '\\' && i + 1 < raw.size()) {
      current += raw[i];
      current += raw[++i];
    } else if (raw[i] == ';') {
      parts.push_back(UnescapeText(current));
      current.clear();
    } else {
      current += raw[i];
    }
  }
  parts.push_back(UnescapeText(current));
  if (parts.size() < minimum) parts.resize(minimum);
  return parts;
}

std::string JoinStructured(const std::vector<std::string>& parts) {
  std::string out;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) out += ';';
    out += EscapeText(parts[i]);
  }
  return out;
}

}  // namespace ketrova::contacts
