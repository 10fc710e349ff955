// The conversion scripts of a job: txConvertMain written from the column
// mapping, and the frames of txSQLSearchResult and txSQLDestinationUpdate that
// a user fills by hand. VBScript or JScript by the job's ScriptLanguage; every
// line ends in CR LF.
#include "core/converter.h"
#include "jobs/job.h"
#include "stores/database.h"
#include "stores/field_types.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

constexpr const char* kCrLf = "\r\n";

void AddLine(std::string& script, const std::string& line) {
  script += line;
  script += kCrLf;
}

// The text limit of a target field: the catalogue's size for a text field; an
// unknown field counts as text of 255.
struct FieldCut {
  bool cut = true;
  std::int32_t size = 255;
};

FieldCut CutOf(const CDatabaseObject* object, const std::string& target) {
  FieldCut result;
  if (!object) return result;
  if (const CDatabaseObjectField* field = object->ColumnByName(target)) {
    result.size = field->DefinedSize;
    result.cut = IsStringFieldType(field->FieldType);
  }
  return result;
}

}  // namespace

std::string CJob::GenerateScript(std::string& szError) {
  if (ScriptUserDefined) return {};
  CJobItem& source = JobSource();
  CJobItem& dest = JobDest();
  if (dest.Columns().Count() == 0) {
    if (!CheckValidate()) szError = ValidateError;
    return {};
  }
  try {
    if (!Converter) throw VbError(91);
    // The catalogue object that gives the target's field sizes.
    CDatabaseObject* object =
        Converter->DestDataBase().ObjectByName(dest.ItemObjectName, szError, false);
    if (!object)
      object = Converter->SourceDataBase().ObjectByName(dest.ItemObjectName, szError, false);
    if (!szError.empty()) {
      // The target cannot be read: its columns are rebuilt from the source.
      object = Converter->SourceDataBase().ObjectByName(source.ItemObjectName, szError, false);
      CopyColumns(true);
    }
    const bool vbscript = ScriptLanguage == sclVBScript;
    std::string script;
    if (vbscript) {
      AddLine(script, "' **********************************************************");
      AddLine(script, "'Visual Basic Konvertierungsscript");
      AddLine(script, "' **********************************************************");
      AddLine(script, "Function txConvertMain()");
    } else {
      AddLine(script, "// **********************************************************");
      AddLine(script, "//Java-Script Konvertierungsscript");
      AddLine(script, "// **********************************************************");
      AddLine(script, "function txConvertMain()");
      AddLine(script, "{");
    }
    // Field names in a script are never bracketed, whatever the stores use.
    CDatabase* sourceStore = source.Database();
    if (!sourceStore) throw VbError(91);
    const bool fileBased = sourceStore->IsFileBased();
    for (const CJobItemColumn& column : dest.Columns()) {
      if (column.SourceColumn.empty()) continue;
      const CJobItemColumn* fed = source.ColumnByTargetName(column.SourceColumn);
      if (!fed) {
        szError = "Das Quellfeld " + column.SourceColumn + " konnte nicht ermittelt werden !";
        return {};
      }
      // A file store's select list has no aliases, a server store's has.
      std::string src;
      if (fed->Visible) src = fileBased ? fed->Name : column.SourceColumn;
      const std::string& tgt = column.TargetColumn;
      if (src.empty() || tgt.empty()) continue;
      const FieldCut cut = CutOf(object, tgt);
      std::string line = "\tDestination.Fields(\"" + tgt + "\")";
      if (vbscript && cut.cut)
        line += " = Left(Source.Fields(\"" + src + "\")," + std::to_string(cut.size) + ")";
      else if (vbscript)
        line += " = Source.Fields(\"" + src + "\")";
      else if (cut.cut)
        line += ".Value = Source.Fields(\"" + src + "\").Value;";
      else
        line += ".Value = Source.Fields(\"" + src + "\").Value;;";
      AddLine(script, line);
    }
    AddLine(script, vbscript ? "End Function" : "}");
    Script = script;
    return script;
  } catch (...) {
    // A run-time error in the head or the loop gives the German message and no script.
    szError = std::string("Ein oder mehrere Feld(er) konnte(n) nicht ermittelt werden.") + kCrLf +
              "Weisen Sie bitte die Zielfelder nochmals zu.";
    return {};
  }
}

std::string CJob::GenerateScriptFilterUserDefined() {
  std::string script;
  if (ScriptLanguage == sclVBScript) {
    AddLine(script, "Function txSQLSearchResult");
    AddLine(script, "   Dim szSQL ");
    AddLine(script, "   szSQL = \"\"");
    AddLine(script, "");
    AddLine(script, "");
    AddLine(script, "   txSQLSearchResult = szSQL");
    AddLine(script, "End Function");
  } else {
    AddLine(script, "function txSQLSearchResult");
    AddLine(script, "{");
    AddLine(script, "   var szSQL ");
    AddLine(script, "   szSQL = \"\";");
    AddLine(script, "");
    AddLine(script, "");
    AddLine(script, "   return szSQL;");
    AddLine(script, "}");
  }
  JobDest().DestinationFilterUserDefinedScript = script;
  return script;
}

std::string CJob::GenerateScriptDestinationUpdate() {
  const std::string destKey = QuoteString(JobDest().KeyField);
  const std::string sourceKey = QuoteString(JobSource().KeyField);
  std::string script;
  if (ScriptLanguage == sclVBScript) {
    AddLine(script, "Function txSQLDestinationUpdate");
    AddLine(script, "   Dim szSQL ");
    AddLine(script, " szSQL = " + destKey + " = Source.Fields(" + sourceKey + ")");
    AddLine(script, "");
    AddLine(script, "");
    AddLine(script, "   txSQLDestinationUpdate = szSQL");
    AddLine(script, "End Function");
  } else {
    AddLine(script, "function txSQLDestinationUpdate");
    AddLine(script, "{");
    AddLine(script, "   var szSQL ");
    AddLine(script, "   szSQL = Destination.Fields(" + destKey + ")" + "         = Source.Fields(" +
                        sourceKey + ");");
    AddLine(script, "");
    AddLine(script, "");
    AddLine(script, "   return szSQL;");
    AddLine(script, "}");
  }
  return script;
}

}  // namespace ketrova
