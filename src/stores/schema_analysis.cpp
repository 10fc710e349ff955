// The members of CDatabase that fill and use the catalogue: reading the
// store's tables and views, creating on the destination what the source has,
// finding an object by name, and making jobs from the catalogue.
#include "core/converter.h"
#include "core/error_text.h"
#include "core/work_form.h"
#include "jobs/job.h"
#include "jobs/jobs.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "platform/ui/ui_helpers.h"
#include "platform/ui/user_interface.h"
#include "stores/database.h"
#include "stores/field_types.h"
#include "stores/list_controls.h"
#include "stores/outlook/outlook.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

// Shows the range on the bar, when there is one.
void ShowBar(ProgressBarControl* bar, double max) {
  if (!bar) return;
  bar->SetMin(1);
  bar->SetMax(max);
  bar->SetValue(1);
  bar->SetVisible(true);
}

void ShowStep(bool bShowWorkForm, LabelControl* label, const std::string& text) {
  if (bShowWorkForm) WorkFormText(text, "");
  if (label) label->SetCaption(text);
}

void ShowProgress(bool bShowWorkForm, ProgressBarControl* bar, double max, double value) {
  if (bShowWorkForm) WorkFormProgress(1, max, value);
  if (bar) bar->SetValue(value);
}

std::string FieldText(ado::Recordset& rs, const char* name) {
  Variant value = rs.GetFields().Item(name).Value();
  return value.IsNull() ? std::string() : value.ToText();
}

// A job column made from a catalogue field, as the source and the target
// sides both take it.
CJobItemColumn& AddColumn(CJobItemColumns& columns, const CDatabaseObjectField& field) {
  CJobItemColumn& column = columns.Add();
  column.Name = field.Name;
  column.FieldType = field.FieldType;
  Variant unused;
  column.Quote = GetFieldDefault(field.FieldType, unused);
  column.SourceColumn = field.Name;
  column.TargetColumn = field.Name;
  return column;
}

}  // namespace

std::string CDatabase::Reload(bool bShowWorkForm, bool bShowErrors,
                              ProgressBarControl* objProgressBar, LabelControl* objLabel) {
  if (DatabaseType <= 1) return {};
  std::string result;
  std::string szStep;
  try {
    SetActive(true);
    if (errorNumber_ > 0) return lastErrorMessage_;
    // The schema is read anew: nothing remembered of a table's shape stands.
    if (DatabaseType != dbtOutlook && Connection) Connection->ForgetTableShapes();
    ui::ShowHourglass(true);
    szStep = "Öffne Datenbankschema";
    if (DatabaseType == dbtOutlook) {
      std::string szError;
      if (!m_OutLook) throw VbError(91, {}, "Database");
      recordset_ = m_OutLook->OpenSchema(2, szError);
      if (!szError.empty()) {
        ui::ShowHourglass(false);
        CloseRecordset(recordset_.get());
        if (bShowWorkForm) WorkFormClose();
        return szError;
      }
    } else {
      recordset_ = Connection->OpenSchema(ado::adSchemaTables);
    }
    std::int32_t count = recordset_->RecordCount();
    if (count == -1 && DatabaseType != dbtOutlook) count = 1000;
    if (bShowWorkForm) WorkFormOpen("Datenbank wird analysiert", "", "", 1, count, 1);
    if (objLabel) objLabel->SetCaption("Datenbank wird analysiert");
    ShowBar(objProgressBar, count);

    std::int32_t failures = 0;
    std::int32_t step = 1;
    while (!recordset_->Eof()) {
      ShowProgress(bShowWorkForm, objProgressBar, count, step);
      std::string name = RemoveString(FieldText(*recordset_, "TABLE_NAME"), "'");
      szStep = "Analysiere " + name;
      ShowStep(bShowWorkForm, objLabel, szStep);
      ui::Current().DoEvents();
      std::string type = FieldText(*recordset_, "TABLE_TYPE");
      if (IsEqual(type, "TABLE") || IsEqual(type, "VIEW")) {
        CDatabaseObject& object = objects_->Add();
        object.Name = name;
        object.ObjectType = dboTable;
        object.Visible = true;
        object.ObjectType = IsEqual(type, "TABLE") ? dboTable : dboView;
        std::string error = object.LoadColumns();
        if (!error.empty()) {
          ++failures;
          if (Converter) Converter->Logs().Add().Message = "Objekt [" + name + "] öffnen " + error;
          objects_->Remove(object.Index);
        }
      }
      ++step;
      recordset_->MoveNext();
    }
    CloseRecordset(recordset_.get());
    if (bShowWorkForm) WorkFormClose();
    if (objProgressBar) objProgressBar->SetVisible(false);
    ui::ShowHourglass(false);
    if (bShowErrors && failures > 0)
      ui::Current().MsgBox("Insgesammt konnten " + std::to_string(failures) +
                               " Tabellen oder Views nicht analysiert werden. Überprüfen Sie "
                               "das Ereignisprotokoll !",
                           ui::vbOKOnly | ui::vbExclamation,
                           Converter ? Converter->ProductName() : std::string());
  } catch (...) {
    // An unexpected failure of the analysis answers the error text of its step.
    SetPendingError(std::current_exception());
    result = BuildErrorText(1, std::string(), szStep);
    Err().Clear();
    ui::ShowHourglass(false);
    CloseRecordset(recordset_.get());
    if (bShowWorkForm) WorkFormClose();
  }
  return result;
}

std::string CDatabase::VerifyTables(bool bShowWorkForm, bool bShowErrors,
                                    ProgressBarControl* objProgressBar, LabelControl* objLabel) {
  if (DatabaseDirection != dbdTarget || !Converter) return {};
  std::string result;
  std::string szStep;
  try {
    CDatabaseObjects& sourceObjects = Converter->SourceDataBase().Objects();
    std::int32_t count = sourceObjects.Count();
    if (bShowWorkForm) WorkFormOpen("Tabellen werden verifiziert", "", "", 1, count, 1);
    if (objLabel) objLabel->SetCaption("Tabellen werden verifiziert");
    ShowBar(objProgressBar, count);
    bool reload = false;
    std::int32_t position = 0;
    for (CDatabaseObject& source : sourceObjects) {
      ShowProgress(bShowWorkForm, objProgressBar, count, ++position);
      std::string error;
      if (ObjectByName(source.Name, error, false)) continue;
      reload = true;
      std::string name = source.Name;
      std::string oldName = name;
      szStep = "Erzeuge Tabelle " + name;
      ShowStep(bShowWorkForm, objLabel, szStep);
      error = CreateTableFromSource(name);
      if (!error.empty()) {
        Converter->Logs().AddLog("Fehler bei Tabelle [" + name + "] erzeugen : \r\n" + error);
        continue;
      }
      if (!IsEqual(name, oldName)) {
        szStep = "Ändere Objektnamen " + name;
        Converter->Jobs().RenameDestinationObject(oldName, name);
      }
    }
    if (bShowWorkForm) WorkFormClose();
    if (reload) result = Reload(bShowWorkForm, true);
  } catch (...) {
    // A failure ends the table check; the text is made below.
    SetPendingError(std::current_exception());
  }
  if (!result.empty() || Err().Number != 0) {
    if (!szStep.empty()) result += "\\nAusgeführte Aktion : " + szStep;
    BuildErrorText(1, result, "");
  }
  Err().Clear();
  WorkFormClose();
  if (objProgressBar) objProgressBar->SetVisible(false);
  return result;
}

CDatabaseObject* CDatabase::ObjectByName(const std::string& szObjectName, std::string& szError,
                                         bool bSearchInSource,
                                         std::unique_ptr<CDatabaseObject>* clone) {
  szError.clear();
  try {
    bool fileBased = IsFileBased();
    std::string wanted = szObjectName;
    if (!fileBased) CheckTableName(wanted, true);
    wanted = MakeIdentifier(wanted);
    for (CDatabaseObject& object : *objects_) {
      std::string name = object.Name;
      if (!fileBased) CheckTableName(name, true);
      if (!IsEqual(MakeIdentifier(name), wanted)) continue;
      if (object.Fields().Count() == 0) szError = object.LoadColumns();
      return &object;
    }
    if (DatabaseDirection == dbdTarget && bSearchInSource && Converter &&
        &Converter->SourceDataBase() != this) {
      CDatabaseObject* found =
          Converter->SourceDataBase().ObjectByName(szObjectName, szError, false);
      if (szError.empty() && found && clone) {
        *clone = found->Clone();
        return clone->get();
      }
    }
  } catch (...) {
    // A name that cannot be looked up gives no object.
    Err().Clear();
  }
  return nullptr;
}

void CDatabase::DatabaseObjectsToList(ListControl& objList, std::int32_t inType) {
  objList.Clear();
  if (objects_->Count() == 0) Reload(true, true);
  for (const CDatabaseObject& object : *objects_) {
    if (object.ObjectType != inType && inType != jitUndefined) continue;
    objList.AddItem(object.Name);
    objList.SetItemData(objList.ListCount() - 1, object.Index);
  }
}

void CDatabase::CopyDataBaseObjectsToJobs() {
  if (!Converter) return;
  WorkFormOpen("Aufgaben werden erzeugt", "", "", 0, objects_->Count(), 0);
  try {
    CJobs& jobs = Converter->Jobs();
    jobs.Clear();
    CDatabase& dest = Converter->DestDataBase();
    bool target = DatabaseDirection == dbdTarget;
    bool fileBased = IsFileBased();
    bool destFileBased = dest.IsFileBased();
    std::int32_t n = 0;
    for (CDatabaseObject& object : *objects_) {
      ++n;
      WorkFormText("Bearbeite " + object.Name, "");
      WorkFormProgress(0, objects_->Count(), n);
      CJob& job = jobs.Add();
      std::string jobName = target && !fileBased ? MakeIdentifier(object.Name) : object.Name;
      job.ObjectName = jobName;
      job.CancelOnError = true;
      CJobItem& source = job.JobSource();
      CJobItem& destSide = job.JobDest();
      source.Name = jobName;
      source.ItemObjectName = object.Name;
      job.Caption = (object.ObjectType == dboTable ? "Konvertierung der Tabelle "
                                                   : "Konvertierung der View ") +
                    jobName;
      source.JobType = jitTableView;
      switch (DatabaseType) {
        case dbtExcel:
          source.JobType = jitExcel;
          break;
        case dbtOutlook:
          source.JobType = jitOutlook;
          break;
        case dbtText:
          source.JobType = jitText;
          break;
        case dbtXML:
          source.JobType = jitXML;
          break;
        default:
          break;
      }
      std::string error;
      CDatabaseObject* existing = dest.ObjectByName(object.Name, error, false);
      if (!target)
        destSide.CreateTable = existing == nullptr;
      else
        destSide.ItemObjectName = jobName;
      destSide.Name = jobName;
      destSide.JobType = source.JobType;
      destSide.ItemObjectName = destFileBased ? jobName : MakeIdentifier(jobName);
      if (!target) {
        for (const CDatabaseObjectField& field : object.Fields()) {
          CJobItemColumn& sourceColumn = AddColumn(source.Columns(), field);
          sourceColumn.DisplayName = ValidColumnName(field.Name);
          CJobItemColumn& destColumn = AddColumn(destSide.Columns(), field);
          destColumn.SourceColumn = sourceColumn.DisplayName;
          destColumn.TargetColumn = MakeIdentifier(field.Name);
          destColumn.DisplayName = ValidColumnName(destColumn.TargetColumn);
        }
      }
      std::string scriptError;
      job.GenerateScript(scriptError);
      job.CheckValidate();
    }
  } catch (...) {
    // Copying the catalogue into jobs ends silently with the jobs made so far.
    Err().Clear();
  }
  WorkFormClose();
}

void CDatabase::CopyOutlookObjectsToTargetJobs(CJob& objJob, bool bShowWorkForm,
                                               ProgressBarControl* ProgressBar) {
  if (objects_->Count() == 0) return;
  try {
    if (bShowWorkForm) WorkFormOpen("Aufgaben werden erzeugt", "", "");
    if (ProgressBar) ProgressBar->SetVisible(true);
    CDatabaseObject& object = objects_->Item(1);
    CJobItemColumns& columns = objJob.JobDest().Columns();
    columns.Clear();
    if (object.Fields().Count() == 0) object.LoadColumns();
    if (ProgressBar) ProgressBar->SetMax(object.Fields().Count());
    std::int32_t position = 0;
    for (const CDatabaseObjectField& field : object.Fields()) {
      ++position;
      if (bShowWorkForm) WorkFormText("Bearbeite " + objJob.Caption, std::to_string(position));
      if (ProgressBar) ProgressBar->SetValue(position);
      AddColumn(columns, field).DisplayName = ValidColumnName(field.Name);
    }
    std::string scriptError;
    objJob.GenerateScript(scriptError);
    objJob.CheckValidate();
  } catch (...) {
    // Copying the folder's columns ends silently with the columns made so far.
    Err().Clear();
  }
  if (ProgressBar) ProgressBar->SetVisible(false);
  if (bShowWorkForm) WorkFormClose();
}

}  // namespace ketrova
