#include "jobs/job.h"

#include "core/converter.h"
#include "core/project_values.h"
#include "core/xml_document.h"
#include "core/xml_node.h"
#include "support/text.h"

namespace ketrova {

CJob::CJob() : jobSource_(std::make_unique<CJobItem>()), jobDest_(std::make_unique<CJobItem>()) {
  jobSource_->Direction = jidSource;
  jobSource_->Job = this;
  jobDest_->Direction = jidTarget;
  jobDest_->Job = this;
}

CJob::~CJob() {
  Clear();
}

void CJob::SetConverter(CConverter* converter) {
  Converter = converter;
  jobSource_->SetConverter(converter);
  jobDest_->SetConverter(converter);
}

bool CJob::CheckValidate() {
  const char* failure = nullptr;
  CJobItem& source = *jobSource_;
  CJobItem& dest = *jobDest_;
  if (ObjectName.empty() || source.ItemObjectName.empty())
    failure = "Quelle: Objektname fehlt";
  else if (source.Columns().Count() < 1)
    failure = "Quelle: Spalten fehlen";
  else if (dest.ItemObjectName.empty())
    failure = "Ziel: Objektname fehlt";
  else if (dest.Columns().Count() < 1)
    failure = "Ziel: Keine Spalten definiert";
  else if (DestinationUpdate && !dest.DestinationFilterUserDefined &&
           (source.KeyField.empty() || dest.KeyField.empty()))
    failure = "DB-Update: Verbindungsfelder fehlen";
  else if (DestinationUpdate && dest.DestinationFilterUserDefined &&
           dest.DestinationFilterUserDefinedScript.empty())
    failure = "DB-Update: Benutzerdefiniertes Script fehlt";
  else if (Script.empty())
    failure = "Script: Kein Script definiert";
  else if (source.Filtered && source.Filters().Count() < 1)
    failure = "Filter: Keine Filter definiert";
  if (failure) ValidateError = failure;
  Validate = failure == nullptr;
  return Validate;
}

void CJob::Save(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  xml.WriteNodeAttribute(objRootNode, "INDEX", std::to_string(Index));
  xml.WriteNodeAttribute(objRootNode, "CAPTION", Caption);
  xml.WriteNodeAttribute(objRootNode, "KEY", Key);
  xml.WriteNodeAttribute(objRootNode, "OBJECTNAME", ObjectName);
  xml.WriteNodeAttribute(objRootNode, "ENABLED", BoolText(Enabled));
  xml.WriteNodeAttribute(objRootNode, "DESTINATIONUPDATE", BoolText(DestinationUpdate));
  xml.WriteNodeAttribute(objRootNode, "CANCELONERROR", BoolText(CancelOnError));
  xml.WriteNodeAttribute(objRootNode, "SCRIPTUSERDEFINED", BoolText(ScriptUserDefined));
  xml.WriteNodeAttribute(objRootNode, "MAXRECORDS", std::to_string(MaxRecords));
  xml.WriteNodeAttribute(objRootNode, "VALIDATE", BoolText(Validate));
  xml.WriteNodeAttribute(objRootNode, "VALIDATEERROR", ValidateError);
  xml.WriteNodeAttribute(objRootNode, "SCRIPTLANGUAGE", std::to_string(ScriptLanguage));
  std::string script = EscapeSpecialChars(ConvertUmlautsEscape(Script, true), true);
  xml.AppendChild(objRootNode, xml.CreateCData("SCRIPT", script));
  xml.WriteNodeAttribute(objRootNode, "SCRIPTFILE", ScriptFile);
  xml.WriteNodeAttribute(objRootNode, "LOGFILE", LogFile);
  xml.WriteNodeAttribute(objRootNode, "JOBTYPE", std::to_string(JobType));
  xml.WriteNodeAttribute(objRootNode, "TRIGGERTYPE", std::to_string(TriggerType));
  pugi::xml_node source = xml.CreateElement("ITEMSOURCE");
  jobSource_->Save(source);
  xml.AppendChild(objRootNode, source);
  pugi::xml_node dest = xml.CreateElement("ITEMDEST");
  jobDest_->Save(dest);
  xml.AppendChild(objRootNode, dest);
}

std::string CJob::Load(const std::string& szTreeNode, pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  pugi::xml_node node = szTreeNode.empty() ? objRootNode : xml.FindNode(szTreeNode, objRootNode);
  Caption = xml.ReadAttribute(node, "CAPTION");
  ObjectName = xml.ReadAttribute(node, "OBJECTNAME");
  Enabled = TextToBool(xml.ReadAttribute(node, "ENABLED", "TRUE"));
  DestinationUpdate = TextToBool(xml.ReadAttribute(node, "DESTINATIONUPDATE", "FALSE"));
  CancelOnError = TextToBool(xml.ReadAttribute(node, "CANCELONERROR", "FALSE"));
  ScriptUserDefined = TextToBool(xml.ReadAttribute(node, "SCRIPTUSERDEFINED", "FALSE"));
  MaxRecords = LeadingLong(xml.ReadAttribute(node, "MAXRECORDS", "0"));
  Validate = TextToBool(xml.ReadAttribute(node, "VALIDATE", "TRUE"));
  ValidateError = xml.ReadAttribute(node, "VALIDATEERROR");
  ScriptLanguage = TextToLong(xml.ReadAttribute(node, "SCRIPTLANGUAGE", "1"));
  if (pugi::xml_node script = xml.FindNode("SCRIPT", node))
    Script = EscapeSpecialChars(ConvertUmlautsEscape(NodeText(script), false), false);
  ScriptFile = xml.ReadAttribute(node, "SCRIPTFILE");
  LogFile = xml.ReadAttribute(node, "LOGFILE");
  JobType = TextToLong(xml.ReadAttribute(node, "JOBTYPE", "1"));
  TriggerType = TextToLong(xml.ReadAttribute(node, "TRIGGERTYPE", "4"));
  std::string error;
  if (xml.FindNode("ITEMSOURCE", node)) error = jobSource_->Load("ITEMSOURCE", node);
  if (error.empty() && xml.FindNode("ITEMDEST", node)) error = jobDest_->Load("ITEMDEST", node);
  // The stored VALIDATE has no lasting effect.
  CheckValidate();
  return error;
}

void CJob::Clear() {
  Index = 0;
  Caption.clear();
  Key.clear();
  ObjectName.clear();
  Enabled = true;
  DestinationUpdate = false;
  CancelOnError = false;
  Validate = false;
  ValidateError.clear();
  Script.clear();
  ScriptFile.clear();
  LogFile.clear();
  ScriptUserDefined = false;
  MaxRecords = 0;
  TriggerType = ttOnConvert;
  JobType = jtDBOperation;
  ScriptLanguage = sclVBScript;
  jobSource_->Clear();
  jobDest_->Clear();
}

std::string CJob::TriggerTypeToString() const {
  switch (TriggerType) {
    case ttOnStartProject:
      return "OnProjectStart";
    case ttOnEndProject:
      return "OnProjectEnd";
    case ttOnStartConvert:
      return "OnConvertStart";
    case ttOnConvert:
      return "OnConvert";
    case ttOnEndConvert:
      return "OnConvertEnd";
    case ttOnStartJob:
      return "OnJobStart";
    case ttOnEndJob:
      return "OnJobEnd";
    default:
      return "Undefined";
  }
}

void CJob::CopyColumns(bool bSource2Target) {
  CJobItemColumns& from = bSource2Target ? jobSource_->Columns() : jobDest_->Columns();
  CJobItemColumns& to = bSource2Target ? jobDest_->Columns() : jobSource_->Columns();
  to.Clear();
  for (std::int32_t i = 1; i <= from.Count(); ++i) {
    std::unique_ptr<CJobItemColumn> clone = from.Item(i).Clone();
    std::string key = clone->Key;
    to.Columns().Add(std::move(clone), key);
  }
}

void CJob::RefreshKeyBrackets() {
  jobSource_->RefreshKeyFieldBracket();
  jobDest_->RefreshKeyFieldBracket();
}

}  // namespace ketrova
