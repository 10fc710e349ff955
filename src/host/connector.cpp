#include "host/connector.h"

#include <utility>
#include <vector>

#include "component_version.h"
#include "core/converter.h"
#include "core/error_text.h"
#include "core/project_check.h"
#include "host/host_application.h"
#include "host/navigator.h"
#include "host/pictures.h"
#include "host/plugin_module.h"
#include "jobs/jobs.h"
#include "platform/ui/ui_helpers.h"
#include "platform/ui/user_interface.h"
#include "support/files.h"
#include "support/registry.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova::host {
namespace {

// The text behind the first "."; the whole text when there is none.
std::string KeyOf(const std::string& name) {
  auto dot = name.find('.');
  return dot == std::string::npos ? name : name.substr(dot + 1);
}

// Keeps the action text of an event that another event interrupts.
class ActionScope {
 public:
  explicit ActionScope(std::string& step) : step_(step), saved_(std::exchange(step, {})) {}
  ~ActionScope() { step_ = std::move(saved_); }

 private:
  std::string& step_;
  std::string saved_;
};

// The host of the started plug-in; raises 91 before the start.
HostApplication& App() {
  if (gApplication == nullptr) throw VbError(91);
  return *gApplication;
}

constexpr const char* kHints =
    "Es sind Hinweise vorhanden, beachten Sie bitte das Ereignisprotokoll. ";

}  // namespace

Connector::Connector() = default;

Connector::~Connector() {
  if (m_Converter) ApplicationEnd();
}

void Connector::ApplicationStart(HostApplication& thisApp) {
  frmPictures.Load();
  gApplication = &thisApp;
  EventSource = &thisApp.EventSource();
  EventSource->Advise(this);
  gNavigatorItems = &thisApp.NavigatorItems();
  thisApp.Shell().Splash().SetInfo("Bilder werden gelesen ...");

  Variables& variables = thisApp.Variables();
  gszApplicationPath = variables.GetVariable("gszDIR_ApplicationPath");
  for (const char* word : {"Images", "HTMRoot", "Errors", "Projects"}) {
    std::string folder = GetFolder(gszApplicationPath + word);
    variables.Add(std::string("gszDIR_") + word, Variant(folder), "", "");
  }

  gszBackColorStart = "&HEFEBE7";
  gszBackColorEnd = "14270901";
  gszFontColor = "11428688";
  gszImagesPath = variables.GetVariable("gszDIR_Images");
  variables.Add("BackColorStart", Variant(gszBackColorStart), "", "");
  variables.Add("BackColorEnd", Variant(gszBackColorEnd), "", "");
  variables.Add("FontColor", Variant(gszFontColor), "", "");

  LoadPicturesFromFolder(gszImagesPath, thisApp.ToolbarImages(), kPlugInName);

  m_Registry = std::make_unique<CRegistry>();
  m_Registry->WriteRegistry(HKEY_CURRENT_USER, "Software\\Halvorn\\Ketrova", "DirWorking", REG_SZ,
                            gszApplicationPath);

  m_Converter = std::make_shared<CConverter>();
  m_Converter->DebugEvent = [](const std::string& szMessage) {
    if (gApplication) gApplication->Shell().DebugMessage(szMessage, kPlugInName);
  };
  m_Converter->ErrorEvent = [](const std::string& szMessage) {
    if (gApplication) gApplication->Shell().ErrorMessage(szMessage, kPlugInName);
  };
  m_Converter->WorkingDirectory = gszApplicationPath;
  m_Converter->SetProjectDirectory(variables.Item("gszDIR_Projects").ToString());
  m_Converter->SetErrorDirectory(variables.Item("gszDIR_Errors").ToString());

  thisApp.AddObject("Converter", m_Converter);
  thisApp.SetToolbarPicture(gszImagesPath + "Background_ToolBar.jpg");
  thisApp.SetCaption("Ketrova");
}

void Connector::ApplicationEnd() {
  frmPictures.Unload();
  if (EventSource) EventSource->Unadvise(this);
  EventSource = nullptr;
  if (m_Converter) {
    m_Converter->DebugEvent = nullptr;
    m_Converter->ErrorEvent = nullptr;
  }
  m_Converter.reset();
  m_Registry.reset();
  // The host's objects are not to be touched after the end.
  gApplication = nullptr;
  gNavigatorItems = nullptr;
}

std::string Connector::PlugInName() {
  return kPlugInName;
}

std::string Connector::PlugInVersion() {
  return ComponentVersion();
}

HostApplication* Connector::Application() {
  return gApplication;
}

template <typename F>
void Connector::Step(F&& statement) {
  try {
    statement();
  } catch (...) {
    // The one error handler of the click and window events: it sends the
    // failure to the host's error messages and resumes with the next step.
    SetPendingError(std::current_exception());
    ResumeNext([] { ui::ShowHourglass(false); });
    std::string text = BuildErrorText(1, Err().Description, szStep);
    Err().Clear();
    if (gApplication) {
      ResumeNext([&] { gApplication->Shell().ErrorMessage(text, kPlugInName); });
      Err().Clear();
    }
  }
}

CConverter& Connector::Project() const {
  // Events reach a connector only between its start and its end.
  if (!m_Converter || gApplication == nullptr) throw VbError(91);
  return *m_Converter;
}

void Connector::SetAction(const std::string& word, const std::string& key) {
  szStep = word + " [" + key + "]";
}

void Connector::ClickEvent(std::int32_t EventCode, std::int32_t WindowType, std::string& Button,
                           std::string& strSnapInName, Variant& vUserData, bool& bCancel) {
  if (!IsLoadEvent(strSnapInName, kPlugInName)) return;
  // An event may arrive while another one waits in a dialog: each has its own
  // action text.
  ActionScope scope(szStep);
  Step([] { ui::ShowHourglass(true); });
  // The host hands the key in upper case; it is compared as it comes.
  const std::string sKey = KeyOf(Button);
  Step([&] { App().Shell().DebugMessage("Retrieving Key " + sKey, kPlugInName); });

  if (EventCode == kEventCodeNavigator && WindowType == kWindowTypeMain) {
    if (sKey == "VERSION") {
      // The version shown here is fixed text, whatever the component's version.
      Step([] {
        ui::Current().MsgBox("Die Version dieses PlugIn (Ketrovator) ist: 1.0", 0, kPlugInName);
      });
    } else {
      SetAction("Load Navigator", sKey);
      Step([&] { LoadNavigator(vUserData); });
    }
  } else if (EventCode == kEventCodeToolbar) {
    ProjectCommand(sKey);
  }
  Step([] { ui::ShowHourglass(false); });
}

void Connector::ProjectCommand(const std::string& sKey) {
  if (sKey == "PROJECTNEW") {
    Step([] { ui::ShowHourglass(false); });
    SetAction("KOR Reload", sKey);
    bool created = false;
    Step([&] { created = Project().EditNew(); });
    if (!created) return;
    Step([] { App().Reload(); });
    EnableProjectButtons();
    SetAction("Open Jobs", sKey);
    OpenJobs();
    UpdateInformation();
  } else if (sKey == "PROJECTEDIT") {
    Step([] { ui::ShowHourglass(false); });
    SetAction("Edit Project", sKey);
    Step([&] { Project().EditProjekt(); });
    UpdateInformation();
    SetAction("Open Jobs", sKey);
    OpenJobs();
  } else if (sKey == "PROJECTOPEN") {
    Step([] { ui::ShowHourglass(false); });
    SetAction("KOR Reload", sKey);
    std::string path;
    Step([&] {
      path =
          App().ShowFileOpen("Projektdatei öffnen", "*.CPF", "*.CPF",
                             "Dies ist keine gültige Projektdatei", Project().ProjectDirectory());
    });
    if (path.empty()) return;
    Step([] { App().Reload(); });
    SetAction("Load Project", sKey);
    // The file is looked at first, as the command line does: a file that is
    // no project is answered with the reason and line, a binary one without
    // its bytes, a missing one with "nicht gefunden" beside the load's text.
    bool loaded = false;
    std::vector<std::string> notes;
    Step([&] { loaded = LoadCheckedProject(Project(), path, false, notes); });
    std::string text;
    for (const std::string& note : notes) text += (text.empty() ? "" : "\n\n") + note;
    if (loaded) {
      if (!text.empty())
        Step([&] { ui::Current().MsgBox(text, ui::vbExclamation, Project().ProductName()); });
      EnableProjectButtons();
      UpdateInformation();
      SetAction("Open Jobs", sKey);
      OpenJobs();
      Step([] { ui::Current().DoEvents(); });
    } else {
      Step([&] { ui::Current().MsgBox(text, ui::vbCritical, Project().ProductName()); });
    }
    ReportHints();
  } else if (sKey == "PROJECTSAVE") {
    Step([] { ui::ShowHourglass(false); });
    SetAction("Save Project", sKey);
    Step([&] { Project().SaveProject(""); });
  } else if (sKey == "PROJECTRUN") {
    Step([] { ui::ShowHourglass(false); });
    SetAction("Run Project", sKey);
    Step([&] { Project().Execute(); });
  } else if (sKey == "CMDSELECTALL" || sKey == "CMDDESELECTALL" || sKey == "ZSBUTTONEDIT" ||
             sKey == "ZSBUTTONDELETE" || sKey == "ZSBUTTONNEW") {
    // Buttons of the jobs document: each may change the job counts.
    Step([] { ui::ShowHourglass(false); });
    UpdateInformation();
  }
}

void Connector::RecordsetEvent(std::int32_t, std::int32_t, Variant&, std::string& strSnapInName,
                               bool&) {
  // Record-set events are of no use to this plug-in.
  if (!IsLoadEvent(strSnapInName, kPlugInName)) return;
}

void Connector::WindowEvent(std::int32_t EventCode, std::int32_t WindowType,
                            DocumentRecord* KORActiveForm, Variant& /*ExtendForm*/,
                            std::int32_t& /*lReturnMessage*/, std::string& strSnapInName,
                            bool& bCancel) {
  if (!IsLoadEvent(strSnapInName, kPlugInName)) return;
  ActionScope scope(szStep);
  Step([] { ui::ShowHourglass(true); });
  std::string sKey;
  if (KORActiveForm != nullptr)
    Step([&] { sKey = UpperCase(KeyOf(KORActiveForm->DocumentName())); });

  if (EventCode == 1 && WindowType == kWindowTypeMain) {
    Step([] { ui::Current().DoEvents(); });
  } else if (EventCode == kEventCodeWindow && WindowType == kWindowTypeMain) {
    Step([] { LoadToolbars(); });
  } else if (EventCode == kEventCodeWindow && WindowType == kWindowTypeDocument) {
    OpenPseudoDocument(sKey, bCancel);
  }
  Step([] { ui::ShowHourglass(false); });
}

void Connector::OpenPseudoDocument(const std::string& sKey, bool& bCancel) {
  const bool source = sKey == "FRMPROJECTSOURCE";
  if (!source && sKey != "FRMPROJECTDESTINATION") return;
  // These two have no document behind them: they open a dialog instead.
  bCancel = true;
  bool hasProject = false;
  Step([&] { hasProject = Project().HasProject(); });
  if (!hasProject) return;
  Step([] { ui::ShowHourglass(false); });
  SetAction(source ? "Edit Datasource" : "Edit DataDestination", sKey);
  bool selected = false;
  Step([&] {
    selected = source ? Project().SelectDatabaseSource() : Project().SelectDatabaseDest();
  });
  if (!selected) return;
  SetAction("KOR Reload", sKey);
  Step([] { App().Reload(); });
  SetAction("Open Jobs", sKey);
  OpenJobs();
  Step([] { ui::Current().DoEvents(); });
  ReportHints();
}

void Connector::EnableProjectButtons() {
  for (const char* key : {"ProjectSave", "ProjectEdit", "ProjectRun"}) {
    Step([&] {
      App().Toolbar().SetButtonEnabled(App().GetToolbarButtonIndex(key, kPlugInName), true);
    });
  }
}

void Connector::OpenJobs() {
  Step([] { App().MainForm().ItemClick("KetrovatorCTL.frmJobs"); });
}

void Connector::UpdateInformation() {
  Step([&] {
    CJobs& jobs = Project().Jobs();
    App().MainForm().SetExtendedInfo("Projekt : " + Project().ProjectName + " (" +
                                     std::to_string(jobs.JobsEnabled()) + " / " +
                                     std::to_string(jobs.Count()) + " Aufgaben )");
  });
}

void Connector::ReportHints() {
  Step([&] {
    if (Project().Logs().Count() >= 1)
      ui::Current().MsgBox(kHints, ui::vbInformation, Project().ProductName());
  });
}

}  // namespace ketrova::host
