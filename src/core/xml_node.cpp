#include "core/xml_node.h"

#include <string_view>
#include <vector>

#include "core/error_text.h"
#include "core/xml_document.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

std::string Encode(std::string text) {
  return ConvertUmlautsEscape(std::move(text), true);
}
std::string Decode(std::string text) {
  return ConvertUmlautsEscape(std::move(text), false);
}

std::vector<std::string> Split(const std::string& text, char delimiter) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (;;) {
    std::size_t end = text.find(delimiter, start);
    parts.push_back(text.substr(start, end == std::string::npos ? end : end - start));
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return parts;
}

}  // namespace

std::string CXMLADO::NameRule(const std::string& name) {
  return AsciiUpper(ConvertUmlautsAscii(name));
}

std::string CXMLADO::PathRule(const std::string& path) {
  return AsciiUpper(path);
}

pugi::xml_node CXMLADO::Root() const {
  return XMLDoc ? DocumentElement(*XMLDoc) : pugi::xml_node();
}

pugi::xml_node CXMLADO::Select(const std::string& path, pugi::xml_node from) const {
  if (!XMLDoc) return {};
  if (!from) from = Root();
  if (!from && !(path.size() > 0 && path[0] == '/')) return {};
  if (!from) from = *XMLDoc;
  try {
    return from.select_node(path.c_str()).node();
  } catch (const pugi::xpath_exception&) {
    return {};
  }
}

pugi::xml_node CXMLADO::AppendChild(pugi::xml_node parent, pugi::xml_node child) {
  if (!parent || !child) return {};
  return parent.append_move(child);
}

pugi::xml_node CXMLADO::CreateElement(std::string szName, std::string szAttributeName,
                                      std::string szText) {
  if (!XMLDoc) return {};
  pugi::xml_node element = CreateDetachedElement(*XMLDoc, NameRule(szName));
  if (!element) return {};
  if (!szAttributeName.empty())
    element.append_attribute("NAME").set_value(NameRule(szAttributeName).c_str());
  szText = Encode(std::move(szText));
  if (!szText.empty()) element.append_child(pugi::node_pcdata).set_value(szText.c_str());
  return element;
}

pugi::xml_node CXMLADO::CreateCData(std::string szName, std::string& szData) {
  if (!XMLDoc) return {};
  pugi::xml_node element = CreateDetachedElement(*XMLDoc, NameRule(szName));
  if (!element) return {};
  szData = Encode(std::move(szData));
  element.append_child(pugi::node_cdata).set_value(szData.c_str());
  return element;
}

std::string CXMLADO::ReadNode(std::string szNodeName, pugi::xml_node objNode,
                              const std::string& vDefaultValue) {
  pugi::xml_node node = Select(PathRule(szNodeName), objNode);
  if (!node) return vDefaultValue;
  std::string text = NodeText(node);
  if (text.empty()) return vDefaultValue;
  return Decode(std::move(text));
}

pugi::xml_node CXMLADO::FindNode(std::string szNodeName, pugi::xml_node objNode) {
  return Select(PathRule(szNodeName), objNode);
}

void CXMLADO::DebugItems(pugi::xml_node Nodes, int Indent) {
  // Kept from the original as a walk that reads and prints nothing.
  if (!Nodes) Nodes = Root();
  Indent += 2;
  for (pugi::xml_node child : Nodes.children()) {
    if (child.type() == pugi::node_pcdata) {
      std::string indentation(static_cast<std::size_t>(Indent), ' ');
      std::string parent = child.parent().name();
      std::string value = child.value();
      (void)indentation;
      (void)parent;
      (void)value;
    }
    DebugItems(child, Indent);
    Indent -= 2;
  }
}

std::string CXMLADO::ChildNodeValue(const std::string& szNodeName, pugi::xml_node objNode,
                                    const std::string& szDefaultValue) {
  if (!objNode) objNode = Root();
  for (pugi::xml_node child : objNode.children()) {
    if (!IsEqual(child.name(), szNodeName)) continue;
    std::string value;
    if (child.first_attribute())
      value = child.first_attribute().value();
    else
      value = NodeText(child);
    return Decode(std::move(value));
  }
  return szDefaultValue;
}

std::string CXMLADO::ReadNodeXML(std::string szNodeName) {
  pugi::xml_node node = Select(PathRule(szNodeName), Root());
  if (!node) throw VbError(91);
  return NodeXml(node);
}

void CXMLADO::WriteNode(std::string szNodeName, std::string szValue) {
  pugi::xml_node node = Select(PathRule(szNodeName), Root());
  if (!node || node.type() != pugi::node_element) return;
  szValue = Encode(std::move(szValue));
  // Setting the text replaces all children by one text node.
  while (node.first_child()) node.remove_child(node.first_child());
  if (!szValue.empty()) node.append_child(pugi::node_pcdata).set_value(szValue.c_str());
}

std::string CXMLADO::ReadAttribute(pugi::xml_node objNode, std::string strAttributeName,
                                   const std::string& Value) {
  if (!objNode) return Nvl(Value, "");
  pugi::xml_attribute attribute = objNode.attribute(PathRule(strAttributeName).c_str());
  if (!attribute) return Nvl(Value, "");
  return Decode(attribute.value());
}

void CXMLADO::WriteNodeAttribute(pugi::xml_node objNode, std::string strAttributeName,
                                 std::string szValue) {
  if (!objNode || objNode.type() != pugi::node_element) return;
  std::string name = NameRule(strAttributeName);
  if (name.empty()) return;
  pugi::xml_attribute attribute = objNode.attribute(name.c_str());
  if (!attribute) attribute = objNode.append_attribute(name.c_str());
  attribute.set_value(Encode(std::move(szValue)).c_str());
}

void CXMLADO::WriteAttribute(std::string szNodeName, std::string strName, std::string& szValue) {
  pugi::xml_node node = Select(NameRule(szNodeName), Root());
  szValue = Encode(std::move(szValue));
  if (!node || node.type() != pugi::node_element) return;
  std::string name = PathRule(strName);
  if (name.empty()) return;
  pugi::xml_attribute attribute = node.attribute(name.c_str());
  if (!attribute) attribute = node.append_attribute(name.c_str());
  attribute.set_value(szValue.c_str());
}

void CXMLADO::DeleteAttribute(std::string szNodeName, std::string strAttributeName) {
  pugi::xml_node node = Select(NameRule(szNodeName), Root());
  if (!node) throw VbError(91);
  node.remove_attribute(NameRule(strAttributeName).c_str());
}

void CXMLADO::DeleteNode(std::string szNodeName) {
  pugi::xml_node node = Select(NameRule(PathRule(szNodeName)), Root());
  if (!node || !node.parent()) return;
  node.parent().remove_child(node);
}

std::string CXMLADO::zsNiceXML(std::string sXML) {
  if (sXML.empty() && XMLDoc) sXML = NodeXml(*XMLDoc);
  return sXML;
}

pugi::xml_node CXMLADO::RecordsetToXML(const ObjectPtr& objRecordSet, std::string szNodeName,
                                       std::string szAttributeName, std::string& szError,
                                       const std::string& szAttributes) {
  szError.clear();
  pugi::xml_node element;
  try {
    element = CreateElement(szNodeName);
    if (!element) throw VbError(5);
    element.append_attribute("NAME").set_value(NameRule(szAttributeName).c_str());
    if (!objRecordSet) throw VbError(91);
    ObjectPtr fields = objRecordSet->Get("Fields").ToObject();
    std::int32_t count = fields->Get("Count").ToLong();
    for (std::int32_t i = 0; i < count; ++i) {
      Variant index(static_cast<int>(i));
      ObjectPtr field = fields->Get("Item", std::span<Variant>(&index, 1)).ToObject();
      std::string name = field->Get("Name").ToString();
      std::string value = Nvl(field->Get("Value"), "");
      std::string kind;
      if (!szAttributes.empty()) {
        for (const std::string& entry : Split(szAttributes, ';')) {
          std::vector<std::string> tokens = Split(entry, ',');
          if (IsEqual(tokens[0], name)) {
            kind = tokens.size() > 1 ? tokens[1] : std::string();
            break;
          }
        }
      }
      pugi::xml_node child =
          kind == "CDATA" ? CreateCData(name, value) : CreateElement(name, std::string(), value);
      AppendChild(element, child);
    }
  } catch (...) {
    // Writes swallow their failures into the error text.
    SetPendingError(std::current_exception());
    szError = BuildErrorMessage(szError, "");
    Err().Clear();
  }
  return element;
}

}  // namespace ketrova
