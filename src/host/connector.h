// Connector: the plug-in "Ketrovator" as its host sees it. It holds the one
// project (CConverter) from the host's start call to its end call, publishes
// the application's folders and colours as host variables, and turns toolbar
// clicks, navigator requests and documents being opened into calls on the
// project. What the project reports (its debug and error events) goes to the
// host's message pane unchanged.
//
// Events never throw: each event has one handler that sends a failure, with
// the action it was at, to the host's error messages and goes on with the next
// step, so that the remaining steps of a command still run. ApplicationStart
// has no handler: its failures reach the host as VbError.
#pragma once

#include <memory>
#include <string>

#include "host/plugin.h"

namespace ketrova {
class CConverter;
class CRegistry;
}  // namespace ketrova

namespace ketrova::host {

class EventSource;

class Connector : public IPlugin, public EventSink {
 public:
  Connector();
  ~Connector() override;
  Connector(const Connector&) = delete;
  Connector& operator=(const Connector&) = delete;

  void ApplicationStart(HostApplication& thisApp) override;
  void ApplicationEnd() override;
  std::string PlugInName() override;
  // The component's version as major.minor.revision.
  std::string PlugInVersion() override;
  HostApplication* Application() override;

  void ClickEvent(std::int32_t EventCode, std::int32_t WindowType, std::string& Button,
                  std::string& strSnapInName, Variant& vUserData, bool& bCancel) override;
  void RecordsetEvent(std::int32_t EventCode, std::int32_t RecordsetType, Variant& ThisRecordSet,
                      std::string& strSnapInName, bool& bCancel) override;
  void WindowEvent(std::int32_t EventCode, std::int32_t WindowType, DocumentRecord* KORActiveForm,
                   Variant& ExtendForm, std::int32_t& lReturnMessage, std::string& strSnapInName,
                   bool& bCancel) override;

  // The project; null before the start and after the end.
  const std::shared_ptr<CConverter>& Converter() const { return m_Converter; }

 private:
  // Runs one step of an event; a failure goes to the host as the error text
  // of the current action, and the event goes on.
  template <typename F>
  void Step(F&& statement);
  // The project; raises 91 outside the time between start and end.
  CConverter& Project() const;
  void SetAction(const std::string& word, const std::string& key);
  void ProjectCommand(const std::string& sKey);
  void OpenPseudoDocument(const std::string& sKey, bool& bCancel);
  void EnableProjectButtons();
  void OpenJobs();
  void UpdateInformation();
  void ReportHints();

  host::EventSource* EventSource = nullptr;
  std::shared_ptr<CConverter> m_Converter;
  std::unique_ptr<CRegistry> m_Registry;
  std::string szStep;
};

}  // namespace ketrova::host
