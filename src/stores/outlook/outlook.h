// COutLook: contact folders as tables and their contacts as records. A store
// of type dbtOutlook makes one at each open and routes its record calls here.
//
// The folders are those of the contact store (platform/contacts) under the
// root that contacts::ContactRoot names; the session is the logged-on user's,
// so the store's user, password and server are not used. Every step is told
// through the converter's debug event, and failures inside an operation go to
// its error event or its text result, as each member says. A record set that
// stands for a folder is an in-memory ADO record set with fixed columns.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/contacts/contact_store.h"
#include "support/variant.h"

namespace ketrova {

namespace ado {
class Recordset;
}

class CConverter;

class COutLook {
 public:
  // `root`: the contact root; empty for contacts::ContactRoot().
  explicit COutLook(std::string root = {});
  ~COutLook();
  COutLook(const COutLook&) = delete;
  COutLook& operator=(const COutLook&) = delete;

  CConverter* Converter = nullptr;
  // The contact root this adapter opens.
  const std::string& Root() const { return root_; }
  // The record set that stands for the open folder; a new, empty one is made
  // with the object, and RecordSetOpen takes the caller's.
  std::shared_ptr<ado::Recordset> Recordset;

  // Opens the session: "" or the error text (also fired as an error event).
  std::string OpenConnection();
  void MoveFirst();
  void MoveNext();
  // The cursor is behind the last item.
  bool Eof() const { return m_EOF; }
  // The number of items of the folder at hand (distribution lists included),
  // not of record set rows.
  std::int32_t RecordCount();
  // Every folder of that item type in every store, flat and by bare name, as
  // a record set shaped like the table schema (TABLE_NAME, TABLE_TYPE). A
  // failure lands in `szError`, and the record set then has no rows.
  std::shared_ptr<ado::Recordset> OpenSchema(std::int32_t inItemType, std::string& szError);
  // Depth-first search by name (case ignored) and item type, below
  // `objParentFolder` or over all stores; the first match wins. `bFound` is
  // in and out: arriving True, nothing is searched.
  contacts::FolderPtr FindObject(const contacts::FolderPtr& objParentFolder,
                                 const std::string& szFolderName, std::int32_t inItemType,
                                 bool& bFound);
  // Drops the rows of the record set; it stays open with its columns, so
  // that the next RecordSetOpen on the same folder fills it again.
  std::string RecordSetClose();
  // Fills `objRS` with the items of a folder (made when missing). "" or the
  // error text; a filter that does not parse is shown in a message box and
  // leaves the old record set.
  std::string RecordSetOpen(const std::string& szFolderName, std::int32_t liMaxRows,
                            std::shared_ptr<ado::Recordset>& objRS, std::int32_t inItemType,
                            const std::string& szFilter, std::string szSort, bool bSortAsc);
  void OutlookRSMoveFirst();
  // Moves to the next item and adds it to the record set.
  void OutlookRSMoveNext();
  bool RecordsetGetRecord();
  // A folder beneath the folder at hand (at first the default contacts
  // folder). "" or the error text.
  std::string CreateFolder(const std::string& szFolderName);
  // Removes the items of a folder that match; "ALL" or "" empties it.
  std::string DeleteItems(const std::string& szFolderName, const std::string& szFilter,
                          std::int32_t inItemType);
  // Writes the current record into the item at the cursor, or into a new
  // item behind the last. "" or the error text, also left in `szError`.
  // `szFilter` is not used.
  std::string RecordSetUpdate(std::shared_ptr<ado::Recordset>& objRecordSet, std::string& szError,
                              const std::string& szFilter);

  // Hears of every record whose contact could not be saved (RecordToItem
  // answering False), with the failure's text and the record set at that
  // record, so that the refusal can go to the run's reject file. Nothing
  // else changes for it: the record set and the result stay as they were.
  std::function<void(const std::string& szError, ado::Recordset& objRecord)> RecordRefused;

 private:
  void Action(const std::string& szText);
  void ErrorEvent(const std::string& szText);
  void AddFolderRows(std::int32_t inItemType, ado::Recordset& objRS,
                     const contacts::FolderPtr& objFolder);
  bool WriteField(ado::Recordset& objRS, const std::string& szName, std::int32_t inType,
                  std::int32_t inSize, std::int32_t inAttributes, bool bCreate,
                  const Variant& varValue);
  bool ItemToRecord(const contacts::ContactItemPtr& objItem, bool bCreate);
  bool RecordToItem(const contacts::ContactItemPtr& objItem);
  void BuildContactColumns();
  // Close, then Open again when the record set has columns; errors ignored.
  static void CloseRecordsetKeepingColumns(ado::Recordset* objRS);

  std::string root_;
  std::string m_Action;   // the step at hand, the action of any failure
  std::string m_Refusal;  // why the last RecordToItem could not save
  contacts::ContactItemPtr m_CurrentItem;
  contacts::FolderPtr m_Folder;
  std::string m_Filter;
  std::shared_ptr<contacts::Items> m_Items;
  // The mail client's application and namespace are one session here.
  std::unique_ptr<contacts::Session> m_Namespace;
  std::string m_FolderName;
  bool m_EOF = false;
  bool m_FolderEmpty = false;
};

}  // namespace ketrova
