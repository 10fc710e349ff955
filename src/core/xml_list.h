// A list of the project in its file: the list's element carries COUNT and holds
// one child element per item, in order, which the item writes and reads
// itself. The list needs Count(), iteration over its items and an Add() that
// answers a new item; an item needs Save(node) and Load(node).
#pragma once

#include <pugixml.hpp>
#include <string>

#include "core/xml_node.h"

namespace ketrova {

// COUNT on `objRootNode`, then an element named `szElement` per item.
template <typename List>
void SaveListItems(CXMLADO& xml, pugi::xml_node objRootNode, const List& list,
                   const char* szElement) {
  xml.WriteNodeAttribute(objRootNode, "COUNT", std::to_string(list.Count()));
  for (auto& item : list) {
    pugi::xml_node node = xml.CreateElement(szElement);
    item.Save(node);
    xml.AppendChild(objRootNode, node);
  }
}

// A new item per child element of the node at `szTreeNode`, searched below
// `objNode` (from the root element when it is empty). COUNT is not read; a
// missing node adds nothing.
template <typename List>
void LoadListItems(CXMLADO& xml, List& list, const std::string& szTreeNode,
                   pugi::xml_node objNode = {}) {
  pugi::xml_node node = xml.FindNode(szTreeNode, objNode);
  if (!node) return;
  for (pugi::xml_node child : node.children()) {
    if (child.type() != pugi::node_element) continue;
    list.Add().Load(child);
  }
}

}  // namespace ketrova
