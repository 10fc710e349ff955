// The project document on pugixml, written and read the way the Windows
// original's XML document object did it.
//
// A project document starts with two processing instructions: `xml` with
// `version="1.0"` and a separate `encoding` instruction with `iso-8859-1`.
// Saving writes every top-level node followed by CR LF, with no indentation,
// empty elements as <NAME/>, attributes in double quotes, and the text as UTF-8.
//
// pugixml keeps every node inside its document, while the node layer creates
// elements before it attaches them. Such elements wait under a hidden holding
// element at the top level, which DocumentElement, the XPath searches from the
// root element and the writer never see.
#pragma once

#include <memory>
#include <pugixml.hpp>
#include <string>

namespace ketrova {

// A new, empty project document with its two processing instructions.
std::unique_ptr<pugi::xml_document> CreateProjectDocument();

// The root element (the first element that is not the holding element), or
// an empty node.
pugi::xml_node DocumentElement(const pugi::xml_document& doc);

// A new element that belongs to the document but hangs nowhere yet.
pugi::xml_node CreateDetachedElement(pugi::xml_document& doc, const std::string& name);

// The text of a node as the document object's `text` gives it: the text and
// CDATA of all its descendants, in document order.
std::string NodeText(pugi::xml_node node);

// The markup of a node (the document object's `xml`), in the layout of Save.
std::string NodeXml(pugi::xml_node node);

// The whole document as Save writes it.
std::string SerializeDocument(const pugi::xml_document& doc);

// Writes the document to a file; false when the file cannot be written.
bool SaveDocument(const pugi::xml_document& doc, const std::string& fileName);

// Reads a file into the document. On failure `srcText` holds the source line
// where parsing stopped (empty when the file could not be read at all).
struct DocumentLoadResult {
  bool ok = false;
  std::string srcText;
};
DocumentLoadResult LoadDocument(pugi::xml_document& doc, const std::string& fileName);

}  // namespace ketrova
