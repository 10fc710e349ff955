// Contact folders on disk, shaped like the mail client's object model that
// the Outlook store was written against.
//
// The root folder holds the information stores (its sub-folders); a store
// holds folders, and folders nest. A folder holds one card per `.vcf` file
// (the vdir layout that vdirsyncer and khard keep). Its item type is contacts
// (olContactItem 2) unless a file `.ketrova-itemtype` in it names another
// ("mail", "calendar", "tasks", "journal", "notes"). Names starting with "."
// are not folders. Folders and items come in the order of their names.
//
// A card with KIND:group (or X-ADDRESSBOOKSERVER-KIND:group) is a
// distribution list ("DistListItem"); every other card is a "ContactItem". A
// file that is no card is left out and reported once through the session's
// error callback, naming the file.
//
// Failures are VbErrors with German descriptions and the source
// "Kontaktordner". Writes are atomic per card: a temporary file in the folder,
// renamed over the card, so that a sync tool never reads half a card.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/contacts/contact_fields.h"
#include "platform/contacts/vcard.h"
#include "support/variant.h"

namespace ketrova::contacts {

inline constexpr int olMailItem = 0;
inline constexpr int olContactItem = 2;
inline constexpr int olFolderContacts = 10;
// The name of the default contacts folder in the first store, and of the
// store made when the root holds none.
inline constexpr const char* kDefaultContactsFolder = "Kontakte";
inline constexpr const char* kDefaultStore = "Persönliche Ordner";
// The file that gives a folder another item type.
inline constexpr const char* kItemTypeFile = ".ketrova-itemtype";

// The root of the contact store: the override when one is set (the command
// line's), else "ContactRoot" in the section "Ketrova" of the registry ini,
// else $XDG_DATA_HOME/contacts (~/.local/share/contacts).
std::string ContactRoot();
void SetContactRootOverride(std::string root);

class Session;
class Folder;

struct UserProperty {
  std::string Name;
  Variant Value;
};

class ContactItem {
 public:
  // A new, unsaved item of the folder at `folderPath`.
  ContactItem(Session* session, std::string folderPath);
  // An item read from `path`.
  ContactItem(Session* session, std::string path, VCard card, double fileTime);

  // "ContactItem" or "DistListItem".
  std::string TypeName() const;
  // A field of the column table, else a user property (Empty when it has
  // none); an unknown name raises 438.
  Variant Get(std::string_view property) const;
  // Raises 438 for an unknown name and 440 for a read-only field.
  void Set(std::string_view property, const Variant& value);
  std::vector<UserProperty>& UserProperties() { return userProperties_; }
  const std::vector<UserProperty>& UserProperties() const { return userProperties_; }

  // Writes the card (REV set to now); raises when the file cannot be written.
  void Save();
  // Removes the file; an unsaved item has nothing to remove.
  void Delete();
  const std::string& Path() const { return path_; }
  bool Saved() const { return saved_; }

 private:
  Session* session_;
  std::string folderPath_;
  std::string path_;  // empty until saved
  VCard card_;
  ContactValues original_;
  ContactValues values_;
  std::vector<UserProperty> userProperties_;
  bool saved_ = false;
};

using ContactItemPtr = std::shared_ptr<ContactItem>;

// A folder's items, sorted or restricted; a cursor for GetFirst/GetNext.
class Items {
 public:
  Items(Session* session, std::string folderPath, std::vector<ContactItemPtr> items);
  std::int32_t Count() const { return static_cast<std::int32_t>(items_.size()); }
  // Null stands for Nothing.
  ContactItemPtr GetFirst();
  ContactItemPtr GetNext();
  ContactItemPtr Item(std::int32_t index) const;  // 1-based; raises 9 out of range
  // Sorts by a property ("[FileAs]" or "FileAs"); stable.
  void Sort(const std::string& property, bool descending);
  // The items that match; raises for a text that does not parse or names
  // neither a field nor a user property of any item.
  std::shared_ptr<Items> Restrict(const std::string& filter) const;
  // A new unsaved contact of the folder.
  ContactItemPtr Add();
  // Deletes the item at the 1-based position from the folder.
  void Remove(std::int32_t index);

 private:
  Session* session_;
  std::string folderPath_;
  std::vector<ContactItemPtr> items_;
  std::size_t cursor_ = 0;
};

class Folder {
 public:
  Folder(Session* session, std::string path);
  std::string Name() const;
  const std::string& Path() const { return path_; }
  int DefaultItemType() const;
  std::vector<std::shared_ptr<Folder>> Folders() const;
  // Makes a sub-folder; raises when it exists or cannot be made.
  std::shared_ptr<Folder> AddFolder(const std::string& name);
  // The items as the folder holds them now.
  std::shared_ptr<Items> GetItems();

 private:
  Session* session_;
  std::string path_;
};

using FolderPtr = std::shared_ptr<Folder>;

class Session {
 public:
  // `root` made when missing. `onError` hears of files that are no cards.
  explicit Session(std::string root, std::function<void(const std::string&)> onError = {});
  const std::string& Root() const { return root_; }
  // The information stores.
  std::vector<FolderPtr> Folders();
  // Only olFolderContacts (10) is known: "Kontakte" in the first store, made
  // when missing (and the store too, when the root holds none).
  FolderPtr GetDefaultFolder(int folderType);

  // The cards of a folder. The folder is listed at every call; a card is
  // read at its first sight in the session and after the session wrote it,
  // so a change that another program makes to a card while the store is
  // open is seen at the next open.
  std::vector<ContactItemPtr> ReadFolder(const std::string& folderPath);
  // The card at `path` is read again at the next look at its folder.
  void Forget(const std::string& path);
  void ReportError(const std::string& text) const {
    if (onError_) onError_(text);
  }

 private:
  struct Cached {
    ContactItemPtr item;  // null for a file that is no card
  };
  std::string root_;
  std::function<void(const std::string&)> onError_;
  std::map<std::string, Cached> cache_;
};

}  // namespace ketrova::contacts
