#include "engine/script_modules.h"

#include "core/converter.h"
#include "core/error_text.h"
#include "core/xml_document.h"
#include "core/xml_node.h"
#include "platform/ui/user_interface.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova {

void CScriptModule::Clear() {
  Index = 0;
  Key.clear();
  Name.clear();
  ScriptText.clear();
}

void CScriptModule::Save(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  xml.WriteNodeAttribute(objRootNode, "INDEX", std::to_string(Index));
  xml.WriteNodeAttribute(objRootNode, "KEY", Key);
  xml.WriteNodeAttribute(objRootNode, "NAME", Name);
  std::string text = EscapeSpecialChars(ScriptText, true);
  xml.AppendChild(objRootNode, xml.CreateCData("SCRIPTTEXT", text));
}

std::string CScriptModule::Load(pugi::xml_node objRootNode) {
  std::string szStep;
  try {
    CXMLADO& xml = Converter->XMLLib();
    szStep = "Lese : " + std::string(objRootNode.name());
    Name = xml.ReadAttribute(objRootNode, "NAME");
    if (pugi::xml_node text = xml.FindNode("SCRIPTTEXT", objRootNode))
      ScriptText = EscapeSpecialChars(ConvertUmlautsEscape(NodeText(text), false), false);
    return {};
  } catch (...) {
    // A module that cannot be read answers the error text of its step.
    SetPendingError(std::current_exception());
    std::string message = "\\nAusgeführte Aktion : " + szStep;
    BuildErrorText(1, message, "");
    Err().Clear();
    return message;
  }
}

void CScriptModules::SetConverter(CConverter* converter) {
  Converter = converter;
  for (CScriptModule& module : items_) module.Converter = converter;
}

CScriptModule& CScriptModules::Add() {
  CScriptModule& module = AddNumbered();
  module.Converter = Converter;
  return module;
}

std::string CScriptModules::Save(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  xml.WriteNodeAttribute(objRootNode, "COUNT", std::to_string(Count()));
  for (CScriptModule& module : items_) {
    pugi::xml_node node = xml.CreateElement("MODULE");
    module.Save(node);
    xml.AppendChild(objRootNode, node);
    ui::Current().DoEvents();
  }
  return {};
}

std::string CScriptModules::Load(const std::string& szTreeNode) {
  CXMLADO& xml = Converter->XMLLib();
  std::string error;
  if (pugi::xml_node node = xml.FindNode(szTreeNode)) {
    for (pugi::xml_node child : node.children()) {
      if (child.type() != pugi::node_element) continue;
      CScriptModule& module = Add();
      error = module.Load(child);
      if (module.Name.empty()) module.Name = "Module" + std::to_string(Count());
      ui::Current().DoEvents();
      if (!error.empty()) return error;
    }
  }
  if (Count() == 0) {
    CScriptModule& module = Add();
    module.Name = "Module" + std::to_string(Count());
  }
  return error;
}

}  // namespace ketrova
