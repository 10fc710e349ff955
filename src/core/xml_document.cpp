#include "core/xml_document.h"

#include <fstream>
#include <iterator>
#include <sstream>

#include "support/xml_text.h"

namespace ketrova {

namespace {

// Elements made before they are attached wait under this top-level element. Its
// name is lower case, which the node layer's upper-cased names never are.
constexpr const char* kHoldingName = "ketrova-detached";

bool IsHolding(pugi::xml_node node) {
  return node.type() == pugi::node_element && std::string_view(node.name()) == kHoldingName;
}

void AppendCData(std::string& out, std::string_view data) {
  // A closing marker inside the data splits the section in two.
  out += "<![CDATA[";
  std::size_t pos = 0;
  for (;;) {
    std::size_t end = data.find("]]>", pos);
    if (end == std::string_view::npos) {
      out += data.substr(pos);
      break;
    }
    out += data.substr(pos, end + 2 - pos);
    out += "]]><![CDATA[";
    pos = end + 2;
  }
  out += "]]>";
}

void AppendNode(std::string& out, pugi::xml_node node) {
  switch (node.type()) {
    case pugi::node_element: {
      out += '<';
      out += node.name();
      for (pugi::xml_attribute a : node.attributes()) {
        out += ' ';
        out += a.name();
        out += "=\"";
        AppendXmlEscaped(out, a.value(), true);
        out += '"';
      }
      if (!node.first_child()) {
        out += "/>";
        break;
      }
      out += '>';
      for (pugi::xml_node child : node.children()) AppendNode(out, child);
      out += "</";
      out += node.name();
      out += '>';
      break;
    }
    case pugi::node_pcdata:
      AppendXmlEscaped(out, node.value(), false);
      break;
    case pugi::node_cdata:
      AppendCData(out, node.value());
      break;
    case pugi::node_comment:
      out += "<!--";
      out += node.value();
      out += "-->";
      break;
    case pugi::node_pi:
      out += "<?";
      out += node.name();
      if (*node.value()) {
        out += ' ';
        out += node.value();
      }
      out += "?>";
      break;
    case pugi::node_declaration:
      out += "<?";
      out += node.name();
      for (pugi::xml_attribute a : node.attributes()) {
        out += ' ';
        out += a.name();
        out += "=\"";
        out += a.value();
        out += '"';
      }
      out += "?>";
      break;
    case pugi::node_doctype:
      out += "<!DOCTYPE ";
      out += node.value();
      out += '>';
      break;
    default:
      break;
  }
}

// Iterative, so that a deeply nested file cannot exhaust the stack.
void AppendText(std::string& out, pugi::xml_node top) {
  pugi::xml_node node = top.first_child();
  while (node) {
    if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) out += node.value();
    if (node.type() == pugi::node_element && node.first_child()) {
      node = node.first_child();
      continue;
    }
    while (node && node != top && !node.next_sibling()) node = node.parent();
    if (!node || node == top) break;
    node = node.next_sibling();
  }
}

// The source line around a byte offset, without its line end.
std::string LineAt(const std::string& buffer, std::ptrdiff_t offset) {
  if (offset < 0) offset = 0;
  std::size_t at = std::min(static_cast<std::size_t>(offset), buffer.size());
  std::size_t begin = 0;
  if (at > 0) {
    std::size_t newline = buffer.rfind('\n', at - 1);
    if (newline != std::string::npos) begin = newline + 1;
  }
  std::size_t end = buffer.find_first_of("\r\n", at);
  if (end == std::string::npos) end = buffer.size();
  return buffer.substr(begin, end - begin);
}

}  // namespace

std::unique_ptr<pugi::xml_document> CreateProjectDocument() {
  auto doc = std::make_unique<pugi::xml_document>();
  pugi::xml_node xml = doc->append_child(pugi::node_pi);
  xml.set_name("xml");
  xml.set_value("version=\"1.0\"");
  // A processing instruction of its own, not an attribute of the first one.
  pugi::xml_node encoding = doc->append_child(pugi::node_pi);
  encoding.set_name("encoding");
  encoding.set_value("iso-8859-1");
  return doc;
}

pugi::xml_node DocumentElement(const pugi::xml_document& doc) {
  for (pugi::xml_node child : doc.children())
    if (child.type() == pugi::node_element && !IsHolding(child)) return child;
  return {};
}

pugi::xml_node CreateDetachedElement(pugi::xml_document& doc, const std::string& name) {
  pugi::xml_node holding;
  for (pugi::xml_node child : doc.children())
    if (IsHolding(child)) holding = child;
  if (!holding) holding = doc.append_child(kHoldingName);
  pugi::xml_node element = holding.append_child(pugi::node_element);
  if (!element.set_name(name.c_str())) {
    holding.remove_child(element);
    return {};
  }
  return element;
}

std::string NodeText(pugi::xml_node node) {
  if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) return node.value();
  std::string out;
  AppendText(out, node);
  return out;
}

std::string NodeXml(pugi::xml_node node) {
  std::string out;
  if (node.type() == pugi::node_document) {
    for (pugi::xml_node child : node.children()) {
      if (IsHolding(child)) continue;
      AppendNode(out, child);
      out += "\r\n";
    }
  } else {
    AppendNode(out, node);
  }
  return out;
}

std::string SerializeDocument(const pugi::xml_document& doc) {
  return NodeXml(doc);
}

bool SaveDocument(const pugi::xml_document& doc, const std::string& fileName) {
  std::ofstream out(fileName, std::ios::binary | std::ios::trunc);
  if (!out) return false;
  std::string text = SerializeDocument(doc);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.close();
  return static_cast<bool>(out);
}

DocumentLoadResult LoadDocument(pugi::xml_document& doc, const std::string& fileName) {
  DocumentLoadResult result;
  doc.reset();
  std::ifstream in(fileName, std::ios::binary);
  if (!in) return result;
  std::string buffer((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) return result;
  // Line ends are kept as they stand, so that script and SQL texts come back
  // byte for byte; attribute line ends are written as character references.
  unsigned options = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_wconv_attribute;
  pugi::xml_parse_result parsed =
      doc.load_buffer(buffer.data(), buffer.size(), options, pugi::encoding_auto);
  if (!parsed) {
    result.srcText = LineAt(buffer, parsed.offset);
    doc.reset();
    return result;
  }
  result.ok = true;
  return result;
}

}  // namespace ketrova
