// The user's script modules: shared code added to the script host before any
// job runs, so that job scripts and the start and end scripts can call it.
// Stored in the project file under SCRIPTMODULES; a loaded project always has
// at least one module ("Module1").
#pragma once

#include <cstdint>
#include <pugixml.hpp>
#include <string>

#include "support/numbered_list.h"

namespace ketrova {

class CConverter;

class CScriptModule {
 public:
  CScriptModule() = default;
  std::int32_t Index = 0;
  std::string Key;
  std::string Name;
  std::string FileName;  // not stored in the project file; Clear keeps it
  std::string ScriptText;
  CConverter* Converter = nullptr;

  void Clear();
  void Save(pugi::xml_node objRootNode);
  // "" or the error text.
  std::string Load(pugi::xml_node objRootNode);
};

class CScriptModules : public NumberedList<CScriptModule> {
 public:
  CConverter* Converter = nullptr;
  void SetConverter(CConverter* converter);

  CScriptModule& Add();
  std::string Save(pugi::xml_node objRootNode);
  // Does not clear first; searches `szTreeNode` from the root element.
  std::string Load(const std::string& szTreeNode);
};

}  // namespace ketrova
