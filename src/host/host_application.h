// The host shell's side of the plug-in contract: everything a plug-in may ask of
// the host that loaded it. The desktop shell kor implements these interfaces
// with its windows; the plug-in's connector (connector.h) uses nothing else of
// the host. No Qt here: a host could be written with any toolkit.
//
// Objects handed out by HostApplication (Shell(), Navigator(), Toolbar() ...)
// belong to the host and live as long as the host application object. All
// calls are made on the host's interface thread.
//
// Failures are raised as VbError; the numbers a plug-in relies on are named
// below (35602 for a key already in an image list).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/variant.h"

namespace ketrova {
class CConverter;
}

namespace ketrova::host {

class EventSink;

// VB's error for an image list key that is already taken.
inline constexpr std::int32_t kErrKeyNotUnique = 35602;
// VB's error for a file that holds no picture.
inline constexpr std::int32_t kErrInvalidPicture = 481;

// The small window that shows a line of progress while the host starts.
class Splash {
 public:
  virtual ~Splash() = default;
  virtual void SetInfo(const std::string& text) = 0;
};

// A row of buttons. Indexes are those AddButton/AddSystemButton answered.
class Toolbar {
 public:
  virtual ~Toolbar() = default;
  // Raises 9 for an index that names no button.
  virtual void SetButtonEnabled(std::int32_t index, bool enabled) = 0;
  virtual bool ButtonEnabled(std::int32_t index) const = 0;
  virtual void SetButtonVisible(std::int32_t index, bool visible) = 0;
  virtual void SetVisible(bool visible) = 0;
};

// The host's shell object: messages, the splash, the system toolbar.
class Shell {
 public:
  virtual ~Shell() = default;
  // The toolbar "tbSystem".
  virtual Toolbar& SystemToolbar() = 0;
  virtual host::Splash& Splash() = 0;
  // A line in the host's message pane, with the time and the plug-in's name.
  virtual void DebugMessage(const std::string& text, const std::string& plugInName) = 0;
  // The same, marked as an error.
  virtual void ErrorMessage(const std::string& text, const std::string& plugInName) = 0;
};

// The pictures of the toolbars or of the navigator, addressed by key (compared
// without regard to case) or by their 1-based index.
class ImageList {
 public:
  virtual ~ImageList() = default;
  // Loads the picture at `path` and adds it under `key`; answers its index.
  // Raises kErrInvalidPicture when the file holds no picture (checked first,
  // as the picture is loaded before it is added) and kErrKeyNotUnique when the
  // key is taken; nothing is added then.
  virtual std::int32_t Add(const std::string& key, const std::string& path) = 0;
  // The index of the picture under `key`; raises 35601 when there is none.
  virtual std::int32_t Index(const std::string& key) const = 0;
  virtual std::int32_t Count() const = 0;
};

// An object that carries an image list (VB's ImageList control).
class ImageHolder {
 public:
  virtual ~ImageHolder() = default;
  virtual ImageList& ListImages() = 0;
};

// An entry of a navigator bar.
class NavigatorBarItem {
 public:
  virtual ~NavigatorBarItem() = default;
  // An index of the navigator's image list; -1 for no picture.
  virtual void SetIconIndex(std::int32_t index) = 0;
  virtual void SetToolTipText(const std::string& text) = 0;
  virtual void SetGroupName(const std::string& name) = 0;
};

// Colours are Windows colour numbers, 0x00BBGGRR.
class NavigatorBar {
 public:
  virtual ~NavigatorBar() = default;
  // Adds an entry under `key` (the name of the document it opens). Raises
  // kErrKeyNotUnique when the bar holds the key already.
  virtual NavigatorBarItem& AddItem(const std::string& key, const std::string& text) = 0;
  virtual std::int32_t ItemCount() const = 0;
  virtual void SetBackColorStart(std::int32_t colour) = 0;
  virtual void SetBackColorEnd(std::int32_t colour) = 0;
  // The colour of the bar's title and of its entries.
  virtual void SetFontColor(std::int32_t colour) = 0;
  // A picture file drawn behind the entries; empty for none.
  virtual void SetBackgroundPicture(const std::string& path) = 0;
};

// The navigator control on the left of the main window: bars of entries.
class Navigator {
 public:
  virtual ~Navigator() = default;
  // Off while the plug-in fills it; the host shows the result when it is
  // switched on again.
  virtual void SetRedraw(bool on) = 0;
  virtual void ClearBars() = 0;
  // Adds a bar; raises kErrKeyNotUnique for a key already used.
  virtual NavigatorBar& AddBar(const std::string& key, const std::string& text) = 0;
  virtual std::int32_t BarCount() const = 0;
  virtual void SetBackColorStart(std::int32_t colour) = 0;
  virtual std::int32_t BackColorStart() const = 0;
  virtual void SetBackColorEnd(std::int32_t colour) = 0;
  virtual std::int32_t BackColorEnd() const = 0;
};

// One record of the host's list that tells it how to open a navigator entry.
struct NavigatorRecord {
  std::string PageAddress;  // a page shown instead of a document, or empty
  std::int32_t Number = 0;
  std::int32_t Kind = 0;  // 5 a page, 4 a plug-in's own dialog, 3 a document
  std::string Label;
  std::string SecondLabel;
  std::string DocumentName;
  std::string ParentKey;
  std::string ModuleName;
};

class NavigatorItems {
 public:
  virtual ~NavigatorItems() = default;
  // A blank record.
  virtual NavigatorRecord NewItem() = 0;
  virtual void AddItem(const NavigatorRecord& record) = 0;
  virtual std::int32_t Count() const = 0;
};

// A document of the host's document area, as events name it.
class DocumentRecord {
 public:
  virtual ~DocumentRecord() = default;
  // "Component.frmName".
  virtual std::string DocumentName() const = 0;
};

class MainForm {
 public:
  virtual ~MainForm() = default;
  // Opens the document `documentName` as a click on its navigator entry would.
  virtual void ItemClick(const std::string& documentName) = 0;
  // The information line of the main window.
  virtual void SetExtendedInfo(const std::string& text) = 0;
};

// The host's named values, shared by all plug-ins. Names compare without
// regard to case.
class Variables {
 public:
  virtual ~Variables() = default;
  // Adds or replaces a value. The two last arguments are unused by this host.
  virtual void Add(const std::string& name, const Variant& value, const std::string& reserved1,
                   const std::string& reserved2) = 0;
  // The value; Empty for an unknown name.
  virtual Variant Item(const std::string& name) const = 0;
  // The value as text; "" for an unknown name.
  virtual std::string GetVariable(const std::string& name) const = 0;
};

// Where the three events come from: a plug-in's sink is advised once and
// receives every event until it is unadvised.
class EventSource {
 public:
  virtual ~EventSource() = default;
  virtual void Advise(EventSink* sink) = 0;
  virtual void Unadvise(EventSink* sink) = 0;
};

// The application object (`thisApp`) handed to IPlugin::ApplicationStart.
class HostApplication {
 public:
  virtual ~HostApplication() = default;

  // A file chooser: `title`, VB's `filter` ("*.CPF" or "Text|*.ext|..."), the
  // `defaultPattern`, the text shown when the chosen file does not match
  // (`invalidChoiceText`), the `initialFolder`. Patterns match without regard
  // to case. The chosen path, or "" when cancelled.
  virtual std::string ShowFileOpen(const std::string& title, const std::string& filter,
                                   const std::string& defaultPattern,
                                   const std::string& invalidChoiceText,
                                   const std::string& initialFolder) = 0;
  // The index of the button `key` of `plugInName` on the main toolbar; raises
  // 5 when there is none.
  virtual std::int32_t GetToolbarButtonIndex(const std::string& key,
                                             const std::string& plugInName) = 0;
  // Shows the navigator afresh: the host asks every plug-in for its bars again.
  virtual void Reload() = 0;
  virtual void SetToolbarPicture(const std::string& path) = 0;
  virtual void SetCaption(const std::string& text) = 0;
  // Publishes a plug-in's object for the documents of other components.
  virtual void AddObject(const std::string& name, std::shared_ptr<CConverter> object) = 0;
  // A button on `toolbarName` (the main toolbar is "tbSystem"). Arguments in
  // the order the plug-in contract fixes: the parameter list, the key, the tool
  // tip, an index of ToolbarImages (-1 none), an unused value, 0, the caption,
  // 0, True. Answers the button's index.
  virtual std::int32_t AddButton(const std::string& plugInName, const std::string& toolbarName,
                                 const std::vector<std::string>& parameters, const std::string& key,
                                 const std::string& toolTip, std::int32_t imageIndex,
                                 const Variant& unused, std::int32_t zero1,
                                 const std::string& caption, std::int32_t zero2, bool flag) = 0;
  // The same on the system toolbar.
  virtual std::int32_t AddSystemButton(const std::string& plugInName,
                                       const std::string& toolbarName,
                                       const std::vector<std::string>& parameters,
                                       const std::string& key, const std::string& toolTip,
                                       std::int32_t imageIndex, const Variant& unused,
                                       std::int32_t zero1, const std::string& caption,
                                       std::int32_t zero2, bool flag) = 0;

  virtual host::Shell& Shell() = 0;
  virtual host::EventSource& EventSource() = 0;
  virtual host::Navigator& Navigator() = 0;
  virtual host::MainForm& MainForm() = 0;
  virtual host::NavigatorItems& NavigatorItems() = 0;
  virtual ImageHolder& ToolbarImages() = 0;
  virtual ImageHolder& NavigatorImages() = 0;
  // The main toolbar.
  virtual host::Toolbar& Toolbar() = 0;
  virtual host::Variables& Variables() = 0;
};

}  // namespace ketrova::host
