// COutLook: the record side. A contact becomes one row of the in-memory
// record set with fixed columns, and a row goes back into a contact.
#include <array>
#include <cassert>
#include <string_view>

#include "core/converter.h"
#include "core/error_text.h"
#include "platform/ado/recordset.h"
#include "platform/contacts/contact_fields.h"
#include "platform/ui/user_interface.h"
#include "stores/field_types.h"
#include "stores/outlook/outlook.h"
#include "support/format.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

constexpr std::int32_t kTextSize = 250;

struct ColumnShape {
  std::int32_t type;
  std::int32_t size;
};

ColumnShape ShapeOf(std::string_view name) {
  if (name == "Birthday") return {ado::adDBDate, 15};
  if (name == "LastModificationTime") return {ado::adDate, 20};
  return {ado::adWChar, kTextSize};
}

// The reading order: the columns in order, with CompanyMainTelephoneNumber,
// CompanyName and ComputerNetworkName visited a second time right after
// ComputerNetworkName (their second Append fails on the column pass, and on a
// reading pass their values are set twice).
const std::vector<std::string_view>& ReadingOrder() {
  static const std::vector<std::string_view> order = [] {
    std::vector<std::string_view> out;
    for (const contacts::ContactFieldInfo& field : contacts::ContactFieldTable()) {
      out.push_back(field.name);
      if (field.name == "ComputerNetworkName") {
        out.push_back("CompanyMainTelephoneNumber");
        out.push_back("CompanyName");
        out.push_back("ComputerNetworkName");
      }
    }
    return out;
  }();
  return order;
}

// The writing order: the columns that are not read-only, with
// CompanyMainTelephoneNumber, CompanyName, ComputerNetworkName and CustomerID
// before CallbackTelephoneNumber, and the first three again after
// CarTelephoneNumber.
const std::vector<std::string_view>& WritingOrder() {
  static const std::vector<std::string_view> order = [] {
    constexpr std::array<std::string_view, 4> early = {"CompanyMainTelephoneNumber", "CompanyName",
                                                       "ComputerNetworkName", "CustomerID"};
    std::vector<std::string_view> out;
    for (const contacts::ContactFieldInfo& field : contacts::ContactFieldTable()) {
      if (field.readOnly) continue;
      if (field.name == "CallbackTelephoneNumber")
        out.insert(out.end(), early.begin(), early.end());
      if (field.name == "CompanyMainTelephoneNumber" || field.name == "CompanyName" ||
          field.name == "ComputerNetworkName" || field.name == "CustomerID")
        continue;
      out.push_back(field.name);
      if (field.name == "CarTelephoneNumber") out.insert(out.end(), early.begin(), early.end() - 1);
    }
    return out;
  }();
  return order;
}

}  // namespace

std::string COutLook::RecordSetClose() {
  // The engine closes the target before every open of it. The record set
  // that stands for a folder keeps its columns over that and stays open
  // without rows, so that the next RecordSetOpen on the same folder fills it.
  CloseRecordsetKeepingColumns(Recordset.get());
  return {};
}

void COutLook::CloseRecordsetKeepingColumns(ado::Recordset* objRS) {
  if (!objRS) return;
  try {
    if (objRS->State() == ado::adStateOpen) objRS->Close();
    if (objRS->GetFields().Count() > 0) objRS->Open();
  } catch (const std::exception&) {  // closing ignores every error
    Err().Clear();
  }
}

std::string COutLook::RecordSetOpen(const std::string& szFolderName, std::int32_t liMaxRows,
                                    std::shared_ptr<ado::Recordset>& objRS, std::int32_t inItemType,
                                    const std::string& szFilter, std::string szSort,
                                    bool bSortAsc) {
  auto step = [this](const std::string& szText) {
    m_Action = szText;
    if (Converter) Converter->FireDebugEvent("RecordsetOpen." + szText);
  };
  std::string result;
  try {
    Recordset = objRS;
    step("Start RecordsetOpen");
    step("Search Folder -> " + szFolderName);
    m_FolderEmpty = false;
    if (!IsEqual(szFolderName, m_FolderName)) {
      m_FolderName = szFolderName;
      m_Folder.reset();
      bool bFound = false;
      m_Folder = FindObject(nullptr, szFolderName, 2, bFound);
      if (!m_Folder) {
        // The folder is made, but the search found none: m_Folder stays
        // empty, and taking its items below fails for this open.
        result = CreateFolder(szFolderName);
        m_Folder.reset();
      }
      // The columns belong to the folder: all go (Fields.Delete needs a
      // closed record set).
      if (Recordset->State() == ado::adStateOpen) Recordset->Close();
      while (Recordset->GetFields().Count() > 0) Recordset->GetFields().Delete(Variant(0));
      if (!m_Folder) throw VbError(91, {}, "Outlook");
      m_Items = m_Folder->GetItems();
      m_FolderEmpty = m_Items->Count() == 0;
    }
    m_Filter = szFilter;
    if (szSort.empty()) szSort = "FileAs";
    szSort = AddSuffixOnce(AddPrefixOnce(szSort, "["), "]");
    step("Sort Folder -> " + szSort);
    if (!m_Items) throw VbError(91, {}, "Outlook");
    m_Items->Sort(szSort, !bSortAsc);
    if (!szFilter.empty()) {
      step("Filter Folder -> " + szFilter);
      try {
        // Taken anew, which drops the sort: a filtered result comes in the
        // folder's own order.
        if (!m_Folder) throw VbError(91, {}, "Outlook");
        m_Items = m_Folder->GetItems();
        m_Items = m_Items->Restrict(szFilter);
      } catch (const std::exception&) {  // the filter's own trap: a box, and the open ends
        SetPendingError(std::current_exception());
        ui::Current().MsgBox(BuildErrorText(1, std::string(), m_Action), ui::vbOKOnly, {});
        Err().Clear();
        return {};
      }
    }
    if (Recordset->GetFields().Count() == 0) BuildContactColumns();
    (void)inItemType;  // the columns are those of contacts, whatever the caller asks
    m_EOF = false;
    OutlookRSMoveFirst();
    if (liMaxRows != 0) {
      std::int32_t counter = 1;
      while (counter <= liMaxRows && !m_EOF) {
        if (!RecordsetGetRecord() && counter >= 1) --counter;
        ++counter;
        if (counter <= liMaxRows && !m_EOF) OutlookRSMoveNext();
      }
    } else {
      // OutlookRSMoveNext adds the item it moves to, and so does the loop:
      // every item but the first is added twice.
      while (!m_EOF) {
        RecordsetGetRecord();
        OutlookRSMoveNext();
      }
    }
    step("Recordset Position");
    if (!Recordset->Eof()) Recordset->MoveFirst();
    step("Finished RecordsetOpen");
  } catch (const std::exception&) {  // the operation's trap: the text is the result
    SetPendingError(std::current_exception());
    result = BuildErrorText(1, std::string(), m_Action);
    Err().Clear();
  }
  return result;
}

void COutLook::OutlookRSMoveFirst() {
  if (!m_Items) throw VbError(91, {}, "Outlook");
  m_CurrentItem = m_Items->GetFirst();
  if (!m_CurrentItem) m_EOF = true;
}

void COutLook::OutlookRSMoveNext() {
  if (!m_Items) throw VbError(91, {}, "Outlook");
  m_CurrentItem = m_Items->GetNext();
  if (!m_CurrentItem)
    m_EOF = true;
  else
    RecordsetGetRecord();
}

bool COutLook::RecordsetGetRecord() {
  return ItemToRecord(m_CurrentItem, false);
}

void COutLook::BuildContactColumns() {
  ItemToRecord(nullptr, true);
}

bool COutLook::ItemToRecord(const contacts::ContactItemPtr& objItem, bool bCreate) {
  if (objItem && !IsEqual(objItem->TypeName(), "ContactItem")) return false;
  contacts::ContactItemPtr item = objItem;
  contacts::ContactItemPtr dummy;  // deleted on every way out
  struct DummyGuard {
    contacts::ContactItemPtr& dummy;
    ~DummyGuard() {
      if (!dummy) return;
      try {
        dummy->Delete();
      } catch (const std::exception&) {  // the dummy's deletion ignores errors
        Err().Clear();
      }
    }
  } guard{dummy};
  try {
    if (!item) {
      if (m_FolderEmpty) {
        // An empty folder has no item to read the properties from: a dummy
        // in the default contacts folder stands in.
        if (!m_Namespace) throw VbError(91, {}, "Outlook");
        dummy = m_Namespace->GetDefaultFolder(contacts::olFolderContacts)->GetItems()->Add();
        dummy->Set("AssistantName", Variant("txcDummy"));
        dummy->Save();
        item = dummy;
      } else {
        if (!m_Folder) throw VbError(91, {}, "Outlook");
        item = m_Folder->GetItems()->Add();
      }
    }
    ado::Recordset& rs = *Recordset;
    // The column pass meets a closed record set, which has no record to add.
    if (rs.State() == ado::adStateOpen) rs.AddNew();
    for (std::string_view name : ReadingOrder()) {
      const ColumnShape shape = ShapeOf(name);
      WriteField(rs, std::string(name), shape.type, shape.size, ado::adFldIsNullable, bCreate,
                 item->Get(name));
    }
    for (contacts::UserProperty& property : item->UserProperties()) {
      if (bCreate) {
        WriteField(rs, property.Name, ado::adWChar, kTextSize, ado::adFldIsNullable, true,
                   property.Value);
      } else {
        // A reading pass writes into the user property; its value never
        // reaches the record set.
        ado::Field* field = rs.GetFields().Find(property.Name);
        property.Value = Variant(field ? Nvl(field->Value(), Variant("")) : std::string());
      }
    }
    if (bCreate)
      rs.Open(Variant::Missing(), Variant::Missing(), ado::adOpenUnspecified,
              ado::adLockUnspecified, -1);
    else
      rs.UpdateBatch(ado::adAffectAll);
    return true;
  } catch (const std::exception&) {  // a failure answers False
    Err().Clear();
    return false;
  }
}

bool COutLook::WriteField(ado::Recordset& objRS, const std::string& szName, std::int32_t inType,
                          std::int32_t inSize, std::int32_t inAttributes, bool bCreate,
                          const Variant& varValue) {
  try {
    if (bCreate) {
      Action("Create Field -> " + szName);
      objRS.GetFields().Append(szName, static_cast<ado::DataTypeEnum>(inType), inSize,
                               inAttributes);
      return true;
    }
    Action("Set Fieldvalue -> " + szName);
    Variant value = varValue;
    if (IsDateFieldType(inType)) {
      // 01.01.4501 is the client's mark for no date.
      if (!value.IsNull() && IsEqual(value.ToText(), "01.01.4501")) value = Variant::Null();
      if (!value.IsNull())
        value = Variant(Format(
            value, IsEqual(szName, "LastModificationTime") ? "dd.mm.yyyy hh:mm:ss" : "dd.mm.yyyy"));
    }
    objRS.GetFields().Item(szName).SetValue(value);
    return true;
  } catch (const std::exception&) {  // reported, and the next column goes on
    SetPendingError(std::current_exception());
    ErrorEvent(BuildErrorText(1, std::string(), m_Action));
    Err().Clear();
    return false;
  }
}

bool COutLook::RecordToItem(const contacts::ContactItemPtr& objItem) {
  m_Refusal.clear();
  if (objItem && !IsEqual(objItem->TypeName(), "ContactItem")) return false;
  try {
    if (!objItem) throw VbError(91, {}, "Outlook");
    const ado::Fields& fields = Recordset->GetFields();
    for (std::string_view name : WritingOrder()) {
      const Variant value = fields.Item(name).Value();
      if (name == "Birthday") {
        if (!value.IsNull()) objItem->Set(name, value);
        continue;
      }
      // The value of User4 goes into User2; User4 itself is never written.
      objItem->Set(name == "User4" ? "User2" : name, Variant(Nvl(value, Variant(""))));
    }
    objItem->Save();
    return true;
  } catch (const std::exception&) {  // a failure answers False
    SetPendingError(std::current_exception());
    m_Refusal = BuildErrorText(1, std::string(), m_Action);
    Err().Clear();
    return false;
  }
}

std::string COutLook::RecordSetUpdate(std::shared_ptr<ado::Recordset>& objRecordSet,
                                      std::string& szError, const std::string& szFilter) {
  (void)szFilter;
  szError.clear();
  try {
    Recordset = objRecordSet;
    if (Eof()) {
      if (!m_Folder) throw VbError(91, {}, "Outlook");
      m_CurrentItem = m_Folder->GetItems()->Add();
    }
    if (!RecordToItem(m_CurrentItem) && !m_Refusal.empty() && RecordRefused)
      RecordRefused(m_Refusal, *Recordset);
  } catch (const std::exception&) {  // the operation's trap: the text is the result
    SetPendingError(std::current_exception());
    szError = BuildErrorText(1, std::string(), m_Action);
    Err().Clear();
  }
  return szError;
}

std::string COutLook::DeleteItems(const std::string& szFolderName, const std::string& szFilter,
                                  std::int32_t inItemType) {
  try {
    bool bFound = false;
    contacts::FolderPtr folder = FindObject(nullptr, szFolderName, inItemType, bFound);
    std::shared_ptr<contacts::Items> items = folder ? folder->GetItems() : nullptr;
    if (items) {
      items->Sort("[FileAs]", false);
      if (!szFilter.empty() && szFilter != "ALL") {
        Action("Filter Folder -> " + szFilter);
        items = items->Restrict(szFilter);
      }
      // Counted once; the first item goes that many times.
      const std::int32_t count = items->Count();
      for (std::int32_t i = 0; i < count; ++i) {
        Action("Eintrag löschen");
        items->Remove(1);
      }
    }
    return {};
  } catch (const std::exception&) {  // the operation's trap: the text is the result
    SetPendingError(std::current_exception());
    std::string text = BuildErrorText(1, std::string(), m_Action);
    Err().Clear();
    return text;
  }
}

}  // namespace ketrova
