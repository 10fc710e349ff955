// KorApplication: the desktop host. It prepares the application folder, loads
// the plug-ins of the plugins folder, starts them, raises their events when
// the user works with the toolbars, the navigator and the documents, and ends
// them when it closes. To the plug-ins it is `thisApp`, the host application
// with its shell, event source, navigator list and variables.
//
// Documents that a plug-in names but that no component of this host provides
// open as an empty page with their title; a navigator entry with a page
// address shows that page.
#pragma once

#include <QString>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "document.h"
#include "host/host_application.h"
#include "host/plugin.h"
#include "host_variables.h"
#include "image_list.h"

namespace kor {

class MainWindow;
class Splash;

struct KorOptions {
  QString home;          // where the application folder goes
  QString dataFolder;    // the pictures and pages to seed it from
  QString pluginFolder;  // where the plug-ins are
  QString projectFile;   // a project to open after the start, or empty
  bool splash = true;
};

class KorApplication : public ketrova::host::HostApplication,
                       public ketrova::host::Shell,
                       public ketrova::host::EventSource,
                       public ketrova::host::NavigatorItems {
 public:
  explicit KorApplication(KorOptions options);
  ~KorApplication() override;

  // Loads and starts the plug-ins, builds their toolbars and navigator and
  // shows the main window; then opens the project file of the options, if
  // any, through the project-open button of the plug-in. A plug-in that fails
  // to load or start is reported in a box; the host stays up.
  void Start();
  // Ends every started plug-in. Called by the destructor at the latest.
  void End();

  // HostApplication
  std::string ShowFileOpen(const std::string& title, const std::string& filter,
                           const std::string& defaultPattern, const std::string& invalidChoiceText,
                           const std::string& initialFolder) override;
  std::int32_t GetToolbarButtonIndex(const std::string& key,
                                     const std::string& plugInName) override;
  void Reload() override;
  void SetToolbarPicture(const std::string& path) override;
  void SetCaption(const std::string& text) override;
  void AddObject(const std::string& name, std::shared_ptr<ketrova::CConverter> object) override;
  std::int32_t AddButton(const std::string& plugInName, const std::string& toolbarName,
                         const std::vector<std::string>& parameters, const std::string& key,
                         const std::string& toolTip, std::int32_t imageIndex,
                         const ketrova::Variant& unused, std::int32_t zero1,
                         const std::string& caption, std::int32_t zero2, bool flag) override;
  std::int32_t AddSystemButton(const std::string& plugInName, const std::string& toolbarName,
                               const std::vector<std::string>& parameters, const std::string& key,
                               const std::string& toolTip, std::int32_t imageIndex,
                               const ketrova::Variant& unused, std::int32_t zero1,
                               const std::string& caption, std::int32_t zero2, bool flag) override;
  ketrova::host::Shell& Shell() override { return *this; }
  ketrova::host::EventSource& EventSource() override { return *this; }
  ketrova::host::Navigator& Navigator() override;
  ketrova::host::MainForm& MainForm() override;
  ketrova::host::NavigatorItems& NavigatorItems() override { return *this; }
  ketrova::host::ImageHolder& ToolbarImages() override { return toolbarImages_; }
  ketrova::host::ImageHolder& NavigatorImages() override { return navigatorImages_; }
  ketrova::host::Toolbar& Toolbar() override;
  ketrova::host::Variables& Variables() override { return variables_; }

  // Shell
  ketrova::host::Toolbar& SystemToolbar() override;
  ketrova::host::Splash& Splash() override;
  void DebugMessage(const std::string& text, const std::string& plugInName) override;
  void ErrorMessage(const std::string& text, const std::string& plugInName) override;

  // EventSource
  void Advise(ketrova::host::EventSink* sink) override;
  void Unadvise(ketrova::host::EventSink* sink) override;

  // NavigatorItems
  ketrova::host::NavigatorRecord NewItem() override { return {}; }
  void AddItem(const ketrova::host::NavigatorRecord& record) override;
  std::int32_t Count() const override { return static_cast<std::int32_t>(records_.size()); }

  // What the user does, as events to the plug-ins.
  // A click event to every plug-in; answers bCancel.
  bool RaiseClick(std::int32_t eventCode, std::int32_t windowType, const std::string& button,
                  const std::string& snapInName);
  // A window event to every plug-in; answers bCancel.
  bool RaiseWindow(std::int32_t eventCode, std::int32_t windowType,
                   ketrova::host::DocumentRecord* document, const std::string& snapInName);
  // Opens a document as a click on its navigator entry does: the plug-ins
  // hear of it first and may cancel it.
  void OpenDocument(const std::string& documentName);

  // For the tests and the screenshots.
  MainWindow& Window() const { return *window_; }
  kor::Splash* SplashWindow() const { return splash_.get(); }
  const std::vector<ketrova::host::NavigatorRecord>& Records() const { return records_; }
  const ImageList& ToolbarImageList() const { return toolbarImages_; }
  const ImageList& NavigatorImageList() const { return navigatorImages_; }
  std::shared_ptr<ketrova::CConverter> Object(const std::string& name) const;
  const std::string& ApplicationPath() const { return applicationPath_; }
  // The names of the started plug-ins.
  std::vector<std::string> PlugInNames() const;

 private:
  struct LoadedPlugin;
  DocumentContext DocumentContextFor();
  // Shows the project afresh in every open document.
  void RefreshDocuments();
  void LoadPlugins();
  void StartPlugin(LoadedPlugin& plugin);
  void ReportFailure(const QString& text);

  KorOptions options_;
  HostVariables variables_;
  ImageList toolbarImages_;
  ImageList navigatorImages_;
  std::unique_ptr<MainWindow> window_;
  std::unique_ptr<kor::Splash> splash_;
  std::vector<std::unique_ptr<LoadedPlugin>> plugins_;
  std::vector<ketrova::host::EventSink*> sinks_;
  std::vector<ketrova::host::NavigatorRecord> records_;
  std::map<std::string, std::shared_ptr<ketrova::CConverter>> objects_;
  std::string applicationPath_;
  // The answer of the next file chooser, when the command line named a file.
  std::string pendingFileOpen_;
  int eventDepth_ = 0;
};

}  // namespace kor
