// CXMLADO: the node layer over the project document. Everything that reads or
// writes a project file goes through it, and it enforces the file's rules:
//
// - Name rule: a name given for an element or attribute passes
//   ConvertUmlautsAscii and is upper-cased ("Project" makes PROJECT).
// - Path rule: a search path (XPath) is only upper-cased; absolute paths start
//   with "/", others are relative to the given node or to the root element.
// - Text rule: a value written has its umlauts spelled out (ConvertUmlautsEscape
//   on), a value read has them turned back.
//
// Reads fall back to their defaults and writes swallow their failures, except
// ReadNodeXML and DeleteAttribute, which raise VbError. The caller sets XMLDoc
// (CConverter does, on every new document) and keeps the document alive.
#pragma once

#include <pugixml.hpp>
#include <string>

#include "support/object.h"

namespace ketrova {

class CXMLADO {
 public:
  pugi::xml_document* XMLDoc = nullptr;

  // An element named `szNodeName` with the attribute NAME, holding one child
  // element per field of a record set's current row (a late-bound Recordset
  // object: Fields, Count, Item, Name, Value). `szAttributes` ("name,CDATA;...")
  // marks fields whose value goes into a CDATA section. On a failure `szError`
  // takes the error text and the element built so far is returned.
  pugi::xml_node RecordsetToXML(const ObjectPtr& objRecordSet, std::string szNodeName,
                                std::string szAttributeName, std::string& szError,
                                const std::string& szAttributes = {});

  // An element, not attached to anything; a non-empty attribute name becomes
  // the attribute NAME, a non-empty text its text.
  pugi::xml_node CreateElement(std::string szName, std::string szAttributeName = {},
                               std::string szText = {});
  // An element holding one CDATA section; `szData` gets the text rule in place.
  pugi::xml_node CreateCData(std::string szName, std::string& szData);

  // The text of the node found at the path, or `vDefaultValue` when it is
  // missing, empty or anything fails.
  std::string ReadNode(std::string szNodeName, pugi::xml_node objNode = {},
                       const std::string& vDefaultValue = {});
  // The node at the path, or an empty node.
  pugi::xml_node FindNode(std::string szNodeName, pugi::xml_node objNode = {});
  // Walks the nodes without a visible effect (a debugging aid kept as it was).
  void DebugItems(pugi::xml_node Nodes = {}, int Indent = 0);
  // The value of the first child whose name is IsEqual to `szNodeName`: its
  // text, or the value of its first attribute when it has attributes.
  std::string ChildNodeValue(const std::string& szNodeName, pugi::xml_node objNode = {},
                             const std::string& szDefaultValue = {});
  // The markup of the node at the path; raises 91 when there is none.
  std::string ReadNodeXML(std::string szNodeName);
  void WriteNode(std::string szNodeName, std::string szValue);
  // An attribute's value, or `Value` when it is missing. Present but empty
  // gives the empty text.
  std::string ReadAttribute(pugi::xml_node objNode, std::string strAttributeName,
                            const std::string& Value = {});
  void WriteNodeAttribute(pugi::xml_node objNode, std::string strAttributeName,
                          std::string szValue);
  void WriteAttribute(std::string szNodeName, std::string strName, std::string& szValue);
  // Raises 91 when the node is missing.
  void DeleteAttribute(std::string szNodeName, std::string strAttributeName);
  void DeleteNode(std::string szNodeName);
  // The document's markup when `sXML` is empty; returned as it stands.
  std::string zsNiceXML(std::string sXML);

  // Attaches `child` as the last child of `parent` (the document object's
  // appendChild) and answers the attached node.
  pugi::xml_node AppendChild(pugi::xml_node parent, pugi::xml_node child);

  // The name rule and the path rule, for callers that build names themselves.
  static std::string NameRule(const std::string& name);
  static std::string PathRule(const std::string& path);

 private:
  pugi::xml_node Root() const;
  pugi::xml_node Select(const std::string& path, pugi::xml_node from) const;
};

}  // namespace ketrova
