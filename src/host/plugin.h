// What a plug-in offers its host: IPlugin, called at start and end, and
// EventSink, through which the host reports what the user did.
//
// The host makes one plug-in object, calls ApplicationStart once, advises the
// plug-in's sink with its EventSource, raises events, and calls ApplicationEnd
// once before it lets the object go. A plug-in must not throw out of an event;
// ApplicationStart may raise VbError, which the host shows.
#pragma once

#include <cstdint>
#include <string>

#include "support/variant.h"

namespace ketrova::host {

class DocumentRecord;
class HostApplication;

// The three events. Texts are passed by reference as the host's contract has
// them; `bCancel` tells the host not to go on with its own handling.
class EventSink {
 public:
  virtual ~EventSink() = default;
  // A toolbar button or a navigator request. `Button` is "<plug-in>.<KEY>".
  virtual void ClickEvent(std::int32_t EventCode, std::int32_t WindowType, std::string& Button,
                          std::string& strSnapInName, Variant& vUserData, bool& bCancel) = 0;
  virtual void RecordsetEvent(std::int32_t EventCode, std::int32_t RecordsetType,
                              Variant& ThisRecordSet, std::string& strSnapInName,
                              bool& bCancel) = 0;
  // A window of the host: the toolbars being built (3/1), a document being
  // opened (3/2, `KORActiveForm` names it; null when there is no document).
  virtual void WindowEvent(std::int32_t EventCode, std::int32_t WindowType,
                           DocumentRecord* KORActiveForm, Variant& ExtendForm,
                           std::int32_t& lReturnMessage, std::string& strSnapInName,
                           bool& bCancel) = 0;
};

class IPlugin {
 public:
  virtual ~IPlugin() = default;
  virtual void ApplicationStart(HostApplication& thisApp) = 0;
  virtual void ApplicationEnd() = 0;
  virtual std::string PlugInName() = 0;
  virtual std::string PlugInVersion() = 0;
  // The application given to ApplicationStart; null before it.
  virtual HostApplication* Application() = 0;
};

// Event codes and window types the host raises.
inline constexpr std::int32_t kEventCodeNavigator = 1;  // click 1/1: the navigator
inline constexpr std::int32_t kEventCodeToolbar = 2;    // click 2: a toolbar button
inline constexpr std::int32_t kEventCodeWindow = 3;     // window 3/1 toolbars, 3/2 a document
inline constexpr std::int32_t kWindowTypeMain = 1;
inline constexpr std::int32_t kWindowTypeDocument = 2;

}  // namespace ketrova::host
