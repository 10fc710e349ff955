#include "kor_application.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPluginLoader>
#include <QTabWidget>
#include <QTextBrowser>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

#include "application_folder.h"
#include "dialogs/plugin/plugin_factory.h"
#include "document.h"
#include "main_window.h"
#include "message_pane.h"
#include "navigator_widget.h"
#include "platform/ui/file_filter.h"
#include "platform/ui/user_interface.h"
#include "splash.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"
#include "tool_bar.h"

namespace kor {

using ketrova::host::DocumentRecord;
using ketrova::host::EventSink;
using ketrova::host::IPlugin;

struct KorApplication::LoadedPlugin {
  QString file;
  std::unique_ptr<IPlugin> plugin;
  std::string name;
  bool started = false;
};

namespace {

// The plug-in whose project the documents show, and whose click event their
// buttons raise.
constexpr const char* kDocumentsPlugIn = "Ketrovator";

class OpenedDocument : public DocumentRecord {
 public:
  explicit OpenedDocument(std::string name) : name_(std::move(name)) {}
  std::string DocumentName() const override { return name_; }

 private:
  std::string name_;
};

// The page of a document that no component of this host provides yet.
QWidget* EmptyPage(const QString& title) {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  auto* label = new QLabel(title, page);
  label->setObjectName("DocumentTitle");
  QFont font = label->font();
  font.setPointSize(font.pointSize() + 4);
  font.setBold(true);
  label->setFont(font);
  layout->addWidget(label);
  layout->addStretch(1);
  return page;
}

QWidget* WebPage(const QString& path) {
  auto* browser = new QTextBrowser;
  browser->setOpenExternalLinks(true);
  browser->setSource(QUrl::fromLocalFile(path));
  return browser;
}

std::string Text(const QString& text) {
  return text.toStdString();
}

}  // namespace

KorApplication::KorApplication(KorOptions options) : options_(std::move(options)) {
  window_ = std::make_unique<MainWindow>(navigatorImages_);
  window_->itemClicked = [this](const std::string& name) { OpenDocument(name); };
  auto press = [this](const std::string& plugInName, const std::string& key) {
    RaiseClick(ketrova::host::kEventCodeToolbar, ketrova::host::kWindowTypeMain,
               plugInName + "." + ketrova::UpperCase(key), plugInName);
  };
  window_->MainToolbar().pressed = press;
  window_->SystemToolbar().pressed = press;
  splash_ = std::make_unique<kor::Splash>();
  QObject::connect(
      &window_->Documents(), &QTabWidget::currentChanged, window_.get(), [this](int index) {
        if (auto* document = qobject_cast<Document*>(window_->Documents().widget(index)))
          document->Refresh();
      });
}

KorApplication::~KorApplication() {
  End();
}

void KorApplication::Start() {
  if (options_.splash) {
    splash_->show();
    QApplication::processEvents();
  }
  ApplicationFolder folder = PrepareApplicationFolder(options_.home, options_.dataFolder);
  applicationPath_ = folder.path;
  variables_.Add("gszDIR_ApplicationPath", ketrova::Variant(applicationPath_), "", "");
  if (!folder.warnings.isEmpty()) ReportFailure(folder.warnings.trimmed());

  LoadPlugins();
  for (auto& plugin : plugins_) StartPlugin(*plugin);
  // The host builds each plug-in's toolbars and navigator after its start.
  for (auto& plugin : plugins_) {
    if (!plugin->started) continue;
    RaiseWindow(ketrova::host::kEventCodeWindow, ketrova::host::kWindowTypeMain, nullptr,
                plugin->name);
    RaiseClick(ketrova::host::kEventCodeNavigator, ketrova::host::kWindowTypeMain,
               plugin->name + ".NAVIGATOR", plugin->name);
    QAction* version = window_->HelpMenu().addAction(
        QStringLiteral("Version %1 ...").arg(QString::fromStdString(plugin->name)));
    version->setObjectName(QString::fromStdString("mnuVersion" + plugin->name));
    std::string name = plugin->name;
    QObject::connect(version, &QAction::triggered, window_.get(), [this, name] {
      RaiseClick(ketrova::host::kEventCodeNavigator, ketrova::host::kWindowTypeMain,
                 name + ".VERSION", name);
    });
  }

  window_->show();
  if (options_.splash)
    splash_->finish(window_.get());
  else
    splash_->close();

  if (!options_.projectFile.isEmpty()) {
    auto it =
        std::find_if(plugins_.begin(), plugins_.end(), [](const auto& p) { return p->started; });
    if (it != plugins_.end()) {
      pendingFileOpen_ = Text(QFileInfo(options_.projectFile).absoluteFilePath());
      RaiseClick(ketrova::host::kEventCodeToolbar, ketrova::host::kWindowTypeMain,
                 (*it)->name + ".PROJECTOPEN", (*it)->name);
      pendingFileOpen_.clear();
    }
  }
}

void KorApplication::End() {
  for (auto& plugin : plugins_) {
    if (!plugin->started) continue;
    plugin->started = false;
    try {
      plugin->plugin->ApplicationEnd();
    } catch (const std::exception& e) {
      ReportFailure(QString::fromStdString(e.what()));
    }
  }
  sinks_.clear();
}

void KorApplication::LoadPlugins() {
  QDir folder(options_.pluginFolder);
  const QStringList files = folder.entryList({"*.so"}, QDir::Files, QDir::Name);
  if (files.isEmpty())
    ReportFailure(QStringLiteral("Im Ordner %1 ist kein PlugIn vorhanden.")
                      .arg(QDir::toNativeSeparators(folder.absolutePath())));
  for (const QString& file : files) {
    QPluginLoader loader(folder.absoluteFilePath(file));
    QObject* root = loader.instance();
    auto* factory = qobject_cast<ketrova::host::PluginFactory*>(root);
    if (factory == nullptr) {
      ReportFailure(QStringLiteral("Das PlugIn %1 kann nicht geladen werden: %2")
                        .arg(file, loader.errorString()));
      continue;
    }
    auto loaded = std::make_unique<LoadedPlugin>();
    loaded->file = file;
    loaded->plugin = factory->CreatePlugin();
    loaded->name = loaded->plugin->PlugInName();
    plugins_.push_back(std::move(loaded));
  }
}

void KorApplication::StartPlugin(LoadedPlugin& plugin) {
  try {
    plugin.plugin->ApplicationStart(*this);
    plugin.started = true;
    return;
  } catch (const ketrova::VbError& e) {
    ReportFailure(QStringLiteral("Das PlugIn %1 konnte nicht gestartet werden.\n\nFehler Nr.: %2\n"
                                 "Beschreibung: %3")
                      .arg(QString::fromStdString(plugin.name))
                      .arg(e.Number)
                      .arg(QString::fromStdString(e.Description)));
  } catch (const std::exception& e) {
    ReportFailure(QStringLiteral("Das PlugIn %1 konnte nicht gestartet werden.\n\n%2")
                      .arg(QString::fromStdString(plugin.name), QString::fromUtf8(e.what())));
  }
  // What it set up before the failure goes again; it gets no events.
  try {
    plugin.plugin->ApplicationEnd();
  } catch (const std::exception&) {
  }
}

void KorApplication::ReportFailure(const QString& text) {
  window_->Messages().Add(Text(text), "KOR", true);
  QMessageBox box(QMessageBox::Critical, "Ketrova", text, QMessageBox::Ok,
                  window_->isVisible() ? window_.get() : nullptr);
  box.setObjectName("MsgBox");
  box.button(QMessageBox::Ok)->setObjectName("vbOK");
  box.exec();
}

std::string KorApplication::ShowFileOpen(const std::string& title, const std::string& filter,
                                         const std::string& /*defaultPattern*/,
                                         const std::string& invalidChoiceText,
                                         const std::string& initialFolder) {
  if (!pendingFileOpen_.empty()) return std::exchange(pendingFileOpen_, {});
  for (;;) {
    std::optional<std::string> chosen =
        ketrova::ui::Current().ChooseFile(title, filter, initialFolder);
    if (!chosen || chosen->empty()) return {};
    if (ketrova::ui::MatchesVbFilter(*chosen, filter)) return *chosen;
    ketrova::ui::Current().MsgBox(invalidChoiceText, ketrova::ui::vbExclamation, title);
  }
}

std::int32_t KorApplication::GetToolbarButtonIndex(const std::string& key,
                                                   const std::string& plugInName) {
  std::int32_t index = window_->MainToolbar().FindButton(key, plugInName);
  if (index == 0) throw ketrova::VbError(5);
  return index;
}

void KorApplication::Reload() {
  for (auto& plugin : plugins_)
    if (plugin->started)
      RaiseClick(ketrova::host::kEventCodeNavigator, ketrova::host::kWindowTypeMain,
                 plugin->name + ".NAVIGATOR", plugin->name);
}

void KorApplication::SetToolbarPicture(const std::string& path) {
  QString file = QString::fromStdString(path);
  window_->MainToolbar().SetBackgroundPicture(QFileInfo::exists(file) ? file : QString());
}

void KorApplication::SetCaption(const std::string& text) {
  window_->setWindowTitle(QString::fromStdString(text));
}

void KorApplication::AddObject(const std::string& name,
                               std::shared_ptr<ketrova::CConverter> object) {
  objects_[ketrova::UpperCase(name)] = std::move(object);
}

std::shared_ptr<ketrova::CConverter> KorApplication::Object(const std::string& name) const {
  auto it = objects_.find(ketrova::UpperCase(name));
  return it == objects_.end() ? nullptr : it->second;
}

std::int32_t KorApplication::AddButton(const std::string& plugInName, const std::string&,
                                       const std::vector<std::string>&, const std::string& key,
                                       const std::string& toolTip, std::int32_t imageIndex,
                                       const ketrova::Variant&, std::int32_t,
                                       const std::string& caption, std::int32_t, bool) {
  return window_->MainToolbar().AddButton(plugInName, key, caption, toolTip,
                                          toolbarImages_.Icon(imageIndex));
}

std::int32_t KorApplication::AddSystemButton(const std::string& plugInName, const std::string&,
                                             const std::vector<std::string>&,
                                             const std::string& key, const std::string& toolTip,
                                             std::int32_t imageIndex, const ketrova::Variant&,
                                             std::int32_t, const std::string& caption, std::int32_t,
                                             bool) {
  return window_->SystemToolbar().AddButton(plugInName, key, caption, toolTip,
                                            toolbarImages_.Icon(imageIndex));
}

ketrova::host::Navigator& KorApplication::Navigator() {
  return window_->Navigator();
}
ketrova::host::MainForm& KorApplication::MainForm() {
  return *window_;
}
ketrova::host::Toolbar& KorApplication::Toolbar() {
  return window_->MainToolbar();
}
ketrova::host::Toolbar& KorApplication::SystemToolbar() {
  return window_->SystemToolbar();
}
ketrova::host::Splash& KorApplication::Splash() {
  return *splash_;
}

void KorApplication::DebugMessage(const std::string& text, const std::string& plugInName) {
  window_->Messages().Add(text, plugInName, false);
}

void KorApplication::ErrorMessage(const std::string& text, const std::string& plugInName) {
  window_->Messages().Add(text, plugInName, true);
}

void KorApplication::Advise(EventSink* sink) {
  if (std::find(sinks_.begin(), sinks_.end(), sink) == sinks_.end()) sinks_.push_back(sink);
}

void KorApplication::Unadvise(EventSink* sink) {
  sinks_.erase(std::remove(sinks_.begin(), sinks_.end(), sink), sinks_.end());
}

void KorApplication::AddItem(const ketrova::host::NavigatorRecord& record) {
  records_.push_back(record);
}

bool KorApplication::RaiseClick(std::int32_t eventCode, std::int32_t windowType,
                                const std::string& button, const std::string& snapInName) {
  bool cancel = false;
  ++eventDepth_;
  for (EventSink* sink : std::vector<EventSink*>(sinks_)) {
    std::string buttonArg = button, snapIn = snapInName;
    ketrova::Variant userData;
    sink->ClickEvent(eventCode, windowType, buttonArg, snapIn, userData, cancel);
  }
  if (--eventDepth_ == 0) RefreshDocuments();
  return cancel;
}

DocumentContext KorApplication::DocumentContextFor() {
  DocumentContext context;
  context.converter = [this] { return Object("Converter"); };
  context.raiseClick = [this](const std::string& key) {
    RaiseClick(ketrova::host::kEventCodeToolbar, ketrova::host::kWindowTypeMain,
               std::string(kDocumentsPlugIn) + "." + key, kDocumentsPlugIn);
  };
  context.variable = [this](const std::string& name) { return variables_.GetVariable(name); };
  return context;
}

void KorApplication::RefreshDocuments() {
  for (int i = 0; i < window_->Documents().count(); ++i)
    if (auto* document = qobject_cast<Document*>(window_->Documents().widget(i)))
      document->Refresh();
}

bool KorApplication::RaiseWindow(std::int32_t eventCode, std::int32_t windowType,
                                 DocumentRecord* document, const std::string& snapInName) {
  bool cancel = false;
  ++eventDepth_;
  for (EventSink* sink : std::vector<EventSink*>(sinks_)) {
    std::string snapIn = snapInName;
    ketrova::Variant extend;
    std::int32_t returnMessage = 0;
    sink->WindowEvent(eventCode, windowType, document, extend, returnMessage, snapIn, cancel);
  }
  if (--eventDepth_ == 0) RefreshDocuments();
  return cancel;
}

void KorApplication::OpenDocument(const std::string& documentName) {
  // The newest record for the document tells which plug-in it belongs to and
  // whether it is a page.
  const ketrova::host::NavigatorRecord* record = nullptr;
  for (const auto& r : records_)
    if (ketrova::IsEqual(r.DocumentName, documentName)) record = &r;
  std::string snapIn = record ? record->ModuleName : documentName.substr(0, documentName.find('.'));
  OpenedDocument document(documentName);
  if (RaiseWindow(ketrova::host::kEventCodeWindow, ketrova::host::kWindowTypeDocument, &document,
                  snapIn))
    return;

  QString title = QString::fromStdString(record ? record->Label : documentName);
  if (NavigatorEntry* entry = window_->Navigator().FindEntry(documentName))
    title = entry->Item()->text();
  if (window_->Document(documentName)) {
    window_->ShowDocument(documentName, title, nullptr);
    return;
  }
  QWidget* page = MakeDocument(documentName, DocumentContextFor());
  if (page == nullptr)
    page = record && !record->PageAddress.empty()
               ? WebPage(QString::fromStdString(record->PageAddress))
               : EmptyPage(title);
  window_->ShowDocument(documentName, title, page);
}

std::vector<std::string> KorApplication::PlugInNames() const {
  std::vector<std::string> names;
  for (const auto& plugin : plugins_)
    if (plugin->started) names.push_back(plugin->name);
  return names;
}

}  // namespace kor
