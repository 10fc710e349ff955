#include "jobs/job_item.h"

#include "core/converter.h"
#include "core/error_text.h"
#include "core/project_values.h"
#include "core/xml_document.h"
#include "core/xml_node.h"
#include "jobs/job.h"
#include "platform/ado/fields.h"
#include "platform/ado/recordset.h"
#include "stores/database.h"
#include "stores/field_types.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

// A CDATA element of a script or statement, escaped for the file.
pugi::xml_node EscapedCData(CXMLADO& xml, const char* name, const std::string& text) {
  std::string data = EscapeSpecialChars(text, true);
  return xml.CreateCData(name, data);
}

std::string Unescaped(const std::string& text) {
  return EscapeSpecialChars(ConvertUmlautsEscape(text, false), false);
}

}  // namespace

CJobItem::CJobItem()
    : Recordset(std::make_shared<ado::Recordset>()),
      columns_(std::make_unique<CJobItemColumns>()),
      filters_(std::make_unique<CJobItemFilters>()) {
  Clear();
}

CJobItem::~CJobItem() {
  Clear();
}

void CJobItem::SetConverter(CConverter* converter) {
  Converter = converter;
  columns_->SetConverter(converter);
  filters_->SetConverter(converter);
  if (ownDatabase_) ownDatabase_->SetConverter(converter);
}

CDatabase* CJobItem::Database() const {
  if (differentDataBase_) return ownDatabase_.get();
  if (!Converter) return nullptr;
  return Direction == jidSource ? &Converter->SourceDataBase() : &Converter->DestDataBase();
}

void CJobItem::Save(pugi::xml_node objRootNode) {
  CXMLADO& xml = Converter->XMLLib();
  xml.WriteNodeAttribute(objRootNode, "INDEX", std::to_string(Index));
  xml.WriteNodeAttribute(objRootNode, "NAME", Name);
  xml.WriteNodeAttribute(objRootNode, "KEY", Key);
  // SQL is read back from the first child, so it must be written first.
  xml.AppendChild(objRootNode, EscapedCData(xml, "SQL", SQL));
  xml.WriteNodeAttribute(objRootNode, "SORTFIELDS", SortFields);
  xml.WriteNodeAttribute(objRootNode, "GROUPFIELDS", GroupFields);
  xml.WriteNodeAttribute(objRootNode, "FILTERFIELDS", FilterFields);
  xml.WriteNodeAttribute(objRootNode, "FILTERED", BoolText(Filtered));
  xml.WriteNodeAttribute(objRootNode, "DESTINATIONFILTERUSERDEFINED",
                         BoolText(DestinationFilterUserDefined));
  xml.AppendChild(objRootNode, EscapedCData(xml, "DESTINATIONFILTERUSERDEFINEDSCRIPT",
                                            DestinationFilterUserDefinedScript));
  xml.WriteNodeAttribute(objRootNode, "ITEMOBJECTNAME", ItemObjectName);
  xml.WriteNodeAttribute(objRootNode, "DELETEBEFOREINSERT", BoolText(DeleteBeforeInsert));
  xml.WriteNodeAttribute(objRootNode, "CREATETABLE", BoolText(CreateTable));
  xml.WriteNodeAttribute(objRootNode, "FIELDDELIMITER", FieldDelimiter);
  xml.WriteNodeAttribute(objRootNode, "FIELDSEPARATER", FieldSeparater);
  xml.WriteNodeAttribute(objRootNode, "KEYFIELD", KeyField);
  xml.WriteNodeAttribute(objRootNode, "FILENAME", FileName);
  xml.WriteNodeAttribute(objRootNode, "JOBTYPE", std::to_string(JobType));
  xml.WriteNodeAttribute(objRootNode, "DIFFERENTDATABASE", BoolText(differentDataBase_));
  if (differentDataBase_ && ownDatabase_) {
    pugi::xml_node database = xml.CreateElement("DATABASE");
    ownDatabase_->Save(database);
    xml.AppendChild(objRootNode, database);
  }
  pugi::xml_node columns = xml.CreateElement("JOBITEMCOLUMNS");
  columns_->Save(columns);
  xml.AppendChild(objRootNode, columns);
  pugi::xml_node filters = xml.CreateElement("JOBITEMFILTERS");
  filters_->Save(filters);
  xml.AppendChild(objRootNode, filters);
}

std::string CJobItem::Load(const std::string& szTreeNode, pugi::xml_node objNode) {
  CXMLADO& xml = Converter->XMLLib();
  pugi::xml_node node = szTreeNode.empty() ? objNode : xml.FindNode(szTreeNode, objNode);
  Name = xml.ReadAttribute(node, "NAME");
  // The statement is the text of the first child, whatever it is named.
  if (node.first_child()) SQL = Unescaped(NodeText(node.first_child()));
  SortFields = xml.ReadAttribute(node, "SORTFIELDS");
  GroupFields = xml.ReadAttribute(node, "GROUPFIELDS");
  FilterFields = xml.ReadAttribute(node, "FILTERFIELDS");
  Filtered = TextToBool(xml.ReadAttribute(node, "FILTERED", "FALSE"));
  DestinationFilterUserDefined =
      TextToBool(xml.ReadAttribute(node, "DESTINATIONFILTERUSERDEFINED", "FALSE"));
  if (pugi::xml_node script = xml.FindNode("DESTINATIONFILTERUSERDEFINEDSCRIPT", node))
    DestinationFilterUserDefinedScript = Unescaped(NodeText(script));
  ItemObjectName = xml.ReadAttribute(node, "ITEMOBJECTNAME");
  DeleteBeforeInsert = TextToBool(xml.ReadAttribute(node, "DELETEBEFOREINSERT", "FALSE"));
  CreateTable = TextToBool(xml.ReadAttribute(node, "CREATETABLE", "FALSE"));
  FieldDelimiter = xml.ReadAttribute(node, "FIELDDELIMITER");
  FieldSeparater = xml.ReadAttribute(node, "FIELDSEPARATER");
  KeyField = xml.ReadAttribute(node, "KEYFIELD");
  // A missing file name reads as the text of True; kept as it always was.
  FileName = xml.ReadAttribute(node, "FILENAME", Variant(true).ToString());
  JobType = TextToLong(xml.ReadAttribute(node, "JOBTYPE", "1"));
  if (TextToBool(xml.ReadAttribute(node, "DIFFERENTDATABASE", "FALSE"))) {
    auto database = std::make_unique<CDatabase>();
    database->SetConverter(Converter);
    std::string error = database->Load("DATABASE", node);
    ownDatabase_ = std::move(database);
    differentDataBase_ = true;
    if (!error.empty()) return error;
  } else {
    ownDatabase_.reset();
    differentDataBase_ = false;
  }
  std::string error = columns_->Load("JOBITEMCOLUMNS", node);
  if (!error.empty()) return error;
  if (columns_->Count() == 0) ReloadColumns(true);
  return filters_->Load("JOBITEMFILTERS", node);
}

void CJobItem::Clear() {
  Index = 0;
  Name.clear();
  Key.clear();
  SQL.clear();
  SortFields.clear();
  GroupFields.clear();
  FilterFields.clear();
  Filtered = false;
  DestinationFilterUserDefined = false;
  DestinationFilterUserDefinedScript.clear();
  DeleteBeforeInsert = false;
  CreateTable = false;
  FieldDelimiter.clear();
  FieldSeparater.clear();
  KeyField.clear();
  FileName.clear();
  ItemObjectName.clear();
  JobType = jitTableView;
  columns_->Clear();
  filters_->Clear();
}

CJobItemColumn* CJobItem::ColumnByName(const std::string& szColumnName) const {
  for (CJobItemColumn& column : *columns_)
    if (IsEqual(column.Name, szColumnName)) return &column;
  return nullptr;
}

CJobItemColumn* CJobItem::ColumnByTargetName(const std::string& szColumnName) const {
  for (CJobItemColumn& column : *columns_)
    if (IsEqual(column.TargetColumn, szColumnName)) return &column;
  return nullptr;
}

CJobItemColumn* CJobItem::ColumnBySourceName(const std::string& szColumnName) const {
  for (CJobItemColumn& column : *columns_)
    if (IsEqual(column.SourceColumn, szColumnName)) return &column;
  return nullptr;
}

std::int32_t CJobItem::GetColumnFieldType(const std::string& szColumnName) const {
  CJobItemColumn* column = ColumnByName(szColumnName);
  return column ? column->FieldType : kFieldTypeUnknown;
}

bool CJobItem::ValidRecordset() const {
  try {
    return Recordset && Recordset->State() > ado::adStateClosed && !Recordset->Eof();
  } catch (...) {
    // Any error gives False.
    return false;
  }
}

bool CJobItem::OpenRecordSet(std::int32_t inMaxRecords, bool bForInsert,
                             const std::string& szUserSQL) {
  ClearError();
  CloseRecordset(Recordset.get());
  std::string sql;
  try {
    if (!Converter) throw VbError(91);
    // The project's store of the direction: a side's own store is for editing only.
    CDatabase& store =
        Direction == jidSource ? Converter->SourceDataBase() : Converter->DestDataBase();
    if (!store.Active() && !store.OnTransaction()) {
      store.SetActive(true);
      if (!store.LastErrorMessage().empty())
        throw VbError(store.ErrorNumber(), store.LastErrorMessage(), "Database");
    }
    if (store.DatabaseTypeNative() == dbtOutlook) {
      sql = GetFilter({});
      store.RecordSetOpen(Recordset, sql, ItemObjectName, inMaxRecords, ado::adOpenKeyset,
                          ado::adLockOptimistic);
      return true;
    }
    if (!Recordset) Recordset = std::make_shared<ado::Recordset>();
    Recordset->SetActiveConnection(nullptr);
    Recordset->SetActiveConnection(store.Connection);
    if (bForInsert) {
      std::string error;
      sql = GenerateSQLInsertRecord(error);
      if (!error.empty()) throw VbError(1000, error, "JobItem");
      Recordset->Open(Variant(sql), Variant::Missing(), ado::adOpenKeyset, ado::adLockOptimistic,
                      -1);
      Recordset->AddNew();
    } else {
      sql = szUserSQL.empty() ? GetSourceSQL() : szUserSQL;
      if (inMaxRecords > 0) Recordset->SetMaxRecords(inMaxRecords);
      Recordset->Open(Variant(sql), Variant::Missing(), ado::adOpenKeyset, ado::adLockOptimistic,
                      -1);
    }
    return true;
  } catch (...) {
    // Opening never raises: False, and the reason in LastErrorMessage.
    SetPendingError(std::current_exception());
    LastErrorNumber = Err().Number;
    LastErrorMessage = BuildErrorText(1, std::string(), std::string()) + "\r\nSQL:\r\n" + sql;
    Err().Clear();
    return false;
  }
}

bool CJobItem::ReloadColumns(bool bReload, std::int32_t inMaxRecords) {
  try {
    columns_->Clear();
    if (bReload && !OpenRecordSet(inMaxRecords, false)) return false;
    if (!Recordset || Recordset->GetFields().Count() == 0) return false;
    CDatabase* database = Database();
    if (!database) throw VbError(91);
    columns_->Clear();
    ado::Fields& fields = Recordset->GetFields();
    for (std::int32_t i = 0; i < fields.Count(); ++i) {
      const ado::Field& field = fields.Item(i);
      CJobItemColumn& column = columns_->Add();
      if (Direction == jidSource) {
        column.SourceColumn = field.Name();
      } else if (Job) {
        // Equal names make a first mapping by themselves.
        if (const CJobItemColumn* fed = Job->JobSource().ColumnByName(field.Name()))
          column.SourceColumn = fed->Name;
      }
      column.TargetColumn = database->ValidColumnName(MakeIdentifier(field.Name()));
      column.DisplayName = column.TargetColumn;
      column.Name = field.Name();
      column.FieldType = field.Type();
      Variant unused;
      column.Quote = GetFieldDefault(column.FieldType, unused);
    }
    return true;
  } catch (...) {
    // Any failure ends the reload with False and the columns built so far.
    return false;
  }
}

void CJobItem::ColumnsToList(std::vector<std::string>& objList, bool bInsertFirstBlank) const {
  objList.clear();
  if (bInsertFirstBlank) objList.emplace_back();
  for (const CJobItemColumn& column : *columns_) objList.push_back(column.Name);
}

void CJobItem::ClearError() {
  LastErrorMessage.clear();
  LastErrorNumber = 0;
}

std::string CJobItem::ChangeDataBase(std::unique_ptr<CDatabase> vValue, bool bShowWorkForm) {
  ownDatabase_ = std::move(vValue);
  if (ownDatabase_) ownDatabase_->SetConverter(Converter);
  ItemObjectName.clear();
  differentDataBase_ = true;
  columns_->Clear();
  filters_->Clear();
  if (ownDatabase_) ownDatabase_->Reload(bShowWorkForm, true);
  return Variant(ReloadColumns(true, 0)).ToString();
}

void CJobItem::RefreshKeyFieldBracket() {
  if (KeyField.empty()) return;
  Variant unused;
  KeyFieldBracket = GetFieldDefault(GetColumnFieldType(KeyField), unused);
}

}  // namespace ketrova
