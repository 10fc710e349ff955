// COutLook: the session, the folder search and the list of folders as tables.
#include "stores/outlook/outlook.h"

#include <cassert>
#include <filesystem>

#include "core/converter.h"
#include "core/error_text.h"
#include "platform/ado/recordset.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova {

namespace {

constexpr std::string_view kDeletedItems = "gelöschte objekte";

}  // namespace

COutLook::COutLook(std::string root)
    : Recordset(std::make_shared<ado::Recordset>()),
      root_(root.empty() ? contacts::ContactRoot() : std::move(root)) {}

COutLook::~COutLook() = default;

void COutLook::Action(const std::string& szText) {
  m_Action = szText;
  if (Converter) Converter->FireDebugEvent(szText);
}

void COutLook::ErrorEvent(const std::string& szText) {
  if (Converter) Converter->FireErrorEvent(szText);
}

std::string COutLook::OpenConnection() {
  if (Converter) Converter->FireDebugEvent("Outlook öffnen");
  // The contact root takes the place of the mail client: without a folder
  // there (or one that can be made) there is no client.
  std::error_code ec;
  std::filesystem::create_directories(root_, ec);
  if (!std::filesystem::is_directory(root_, ec)) {
    Err().Set(VbError(429, "Der Kontaktordner " + root_ + " fehlt und kann nicht angelegt werden.",
                      "Outlook.Application"));
    std::string text = BuildErrorText(1, std::string(), std::string());
    Err().Clear();
    ErrorEvent(text);
    return text;
  }
  if (Converter) Converter->FireDebugEvent("MAPI öffnen");
  m_Namespace = std::make_unique<contacts::Session>(
      root_, [this](const std::string& szText) { ErrorEvent(szText); });
  return {};
}

void COutLook::MoveFirst() {
  Recordset->MoveFirst();
}

void COutLook::MoveNext() {
  Recordset->MoveNext();
}

std::int32_t COutLook::RecordCount() {
  if (!m_Items) throw VbError(91, {}, "Outlook");
  return m_Items->Count();
}

std::shared_ptr<ado::Recordset> COutLook::OpenSchema(std::int32_t inItemType,
                                                     std::string& szError) {
  auto rs = std::make_shared<ado::Recordset>();
  try {
    Action("Start OpenSchema");
    rs->GetFields().Append("TABLE_NAME", ado::adWChar, 50, ado::adFldIsNullable);
    rs->GetFields().Append("TABLE_TYPE", ado::adWChar, 50, ado::adFldIsNullable);
    rs->Open();
    if (!m_Namespace) throw VbError(91, {}, "Outlook");
    for (const contacts::FolderPtr& store : m_Namespace->Folders())
      for (const contacts::FolderPtr& folder : store->Folders())
        AddFolderRows(inItemType, *rs, folder);
    if (!rs->Eof()) rs->MoveFirst();
    Action("Finished OpenSchema");
    return rs;
  } catch (const std::exception&) {
    SetPendingError(std::current_exception());
    szError = BuildErrorText(1, std::string(), m_Action);
    Err().Clear();
  }
  // A failure gives no rows.
  auto empty = std::make_shared<ado::Recordset>();
  empty->GetFields().Append("TABLE_NAME", ado::adWChar, 50, ado::adFldIsNullable);
  empty->GetFields().Append("TABLE_TYPE", ado::adWChar, 50, ado::adFldIsNullable);
  empty->Open();
  return empty;
}

void COutLook::AddFolderRows(std::int32_t inItemType, ado::Recordset& objRS,
                             const contacts::FolderPtr& objFolder) {
  auto addRow = [&objRS](const contacts::Folder& folder) {
    objRS.AddNew();
    objRS.GetFields().Item("TABLE_NAME").SetValue(Variant(folder.Name()));
    objRS.GetFields().Item("TABLE_TYPE").SetValue(Variant("TABLE"));
    objRS.Update();
  };
  Action("Read " + objFolder->Name());
  const std::vector<contacts::FolderPtr> subfolders = objFolder->Folders();
  // A folder with subfolders is handed here again for each of them that has
  // subfolders of its own, and then gives its row a second time.
  if (objFolder->DefaultItemType() == inItemType) addRow(*objFolder);
  for (const contacts::FolderPtr& subfolder : subfolders) {
    Action("Read " + subfolder->Name());
    if (subfolder->DefaultItemType() == inItemType) addRow(*subfolder);
    if (!subfolder->Folders().empty()) AddFolderRows(inItemType, objRS, subfolder);
  }
}

contacts::FolderPtr COutLook::FindObject(const contacts::FolderPtr& objParentFolder,
                                         const std::string& szFolderName, std::int32_t inItemType,
                                         bool& bFound) {
  if (bFound) return nullptr;
  if (!objParentFolder && !m_Namespace) throw VbError(91, {}, "Outlook");
  auto matches = [&](const contacts::Folder& folder) {
    return IsEqual(folder.Name(), szFolderName) && folder.DefaultItemType() == inItemType;
  };
  const std::vector<contacts::FolderPtr> start =
      objParentFolder ? objParentFolder->Folders() : m_Namespace->Folders();
  for (const contacts::FolderPtr& folder : start) {
    Action("Read " + folder->Name());
    // The deleted items are no candidate; on this level their subfolders are
    // still searched.
    if (!IsEqual(folder->Name(), kDeletedItems) && matches(*folder)) {
      bFound = true;
      return folder;
    }
    for (const contacts::FolderPtr& subfolder : folder->Folders()) {
      Action("Read " + subfolder->Name());
      // One level down the deleted items are passed over with all beneath.
      if (IsEqual(subfolder->Name(), kDeletedItems)) continue;
      if (matches(*subfolder)) {
        bFound = true;
        return subfolder;
      }
      contacts::FolderPtr hit = FindObject(subfolder, szFolderName, inItemType, bFound);
      if (bFound) return hit;
    }
  }
  return nullptr;
}

std::string COutLook::CreateFolder(const std::string& szFolderName) {
  try {
    if (!m_Namespace) throw VbError(91, {}, "Outlook");
    if (!m_Folder) m_Folder = m_Namespace->GetDefaultFolder(contacts::olFolderContacts);
    m_Folder->AddFolder(szFolderName);
    return {};
  } catch (const std::exception&) {
    SetPendingError(std::current_exception());
    std::string text = BuildErrorText(1, std::string(), m_Action);
    Err().Clear();
    return text;
  }
}

}  // namespace ketrova
