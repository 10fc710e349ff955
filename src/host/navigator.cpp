#include "host/navigator.h"

#include <array>
#include <string>
#include <vector>

#include "host/host_application.h"
#include "host/pictures.h"
#include "host/plugin_module.h"
#include "platform/ui/ui_helpers.h"
#include "support/vb_error.h"

namespace ketrova::host {
namespace {

struct NavigatorEntry {
  const char* bar;
  const char* caption;
  const char* toolTip;
  const char* document;
  const char* moduleName;
  const char* label;
  int kind;
};

// The entries in the order the navigator shows them. The first six name this
// plug-in as their module, though five of their documents belong to the
// documents component; only the last two name that component. Hosts rely on
// the records as they are.
constexpr std::array<NavigatorEntry, 8> kEntries{{
    {"Projekt", "Erste Schritte", "Erste Schritte", "KetrovatorCTL.frmFirstSteps", "Ketrovator",
     "Erste Schritte", 5},
    {"Projekt", "Quelle", "Quelle", "Ketrovator.frmProjectSource", "Ketrovator", "Quelle", 4},
    {"Projekt", "Ziel", "Ziel", "Ketrovator.frmProjectDestination", "Ketrovator", "Ziel", 4},
    {"Projekt", "Aufgaben", "Aufgaben", "KetrovatorCTL.frmJobs", "Ketrovator", "Aufgaben", 3},
    {"Projekt", "Ereignisprotokoll", "Ereignisprotokoll", "KetrovatorCTL.frmLogs", "Ketrovator",
     "Ereignisprotokoll", 3},
    {"Scripting", "Module / Funktionsbibliotheken", "Module", "KetrovatorCTL.frmModules",
     "Ketrovator", "Modules", 3},
    {"Scripting", "Beim Starten", "Ausführen beim starten", "KetrovatorCTL.frmOnStartProjekt",
     "KetrovatorCTL", "Scripting", 3},
    {"Scripting", "Beim Beenden", "Ausführen beim beenden", "KetrovatorCTL.frmOnEndProjekt",
     "KetrovatorCTL", "Scripting", 3},
}};

constexpr std::array<const char*, 2> kBars{"Projekt", "Scripting"};

struct ToolbarCommand {
  const char* key;
  const char* caption;
  const char* toolTip;
  const char* picture;
  bool enabled;
};

constexpr std::array<ToolbarCommand, 5> kCommands{{
    {"ProjectNew", "Neu", "Projekt Neu", "btn_AddNew.jpg", true},
    {"ProjectOpen", "Öffnen", "Projekt öffnen", "btn_FileOpen.gif", true},
    {"ProjectEdit", "Bearbeiten", "Projekt bearbeiten", "btn_Edit.gif", false},
    {"ProjectSave", "speichern", "Projekt speichern", "btn_Save.gif", false},
    {"ProjectRun", "ausführen", "Projekt ausführen", "btn_Sync.gif", false},
}};

constexpr const char* kToolbarName = "tbSystem";

HostApplication& App() {
  if (gApplication == nullptr) throw VbError(91);
  return *gApplication;
}

std::int32_t ColourNumber(const Variant& value) {
  return value.ToLong();
}

// The parameter list every button gets: fifteen names with empty values.
std::vector<std::string> ButtonParameters() {
  return {"Value=",      "TreeKey=",   "IconName=",    "ParentID=",     "ChildID=",
          "ChildLevel=", "Tooltip=",   "TargetFrame=", "DocumentName=", "DocumentParams=",
          "ModuleName=", "GroupName=", "GroupID=",     "IsGroup=",      "KeyName="};
}

}  // namespace

void LoadNavigator(const Variant& /*vUserData*/) {
  HostApplication& app = App();
  ImageHolder& images = app.NavigatorImages();
  Navigator& navigator = app.Navigator();
  app.Shell().DebugMessage("Start Load Navigator", kPlugInName);
  ui::ShowHourglass(true);

  navigator.SetRedraw(false);
  navigator.ClearBars();
  navigator.SetBackColorStart(ColourNumber(app.Variables().Item("BackColorStart")));
  navigator.SetBackColorEnd(ColourNumber(app.Variables().Item("BackColorEnd")));

  for (const char* barName : kBars) {
    NavigatorBar& bar = navigator.AddBar(barName, barName);
    bar.SetBackColorStart(navigator.BackColorStart());
    bar.SetBackColorEnd(navigator.BackColorEnd());
    bar.SetFontColor(ColourNumber(Variant(gszFontColor)));
    bar.SetBackgroundPicture(frmPictures.picRes());
    for (const NavigatorEntry& entry : kEntries) {
      if (std::string(entry.bar) != barName) continue;
      NavigatorBarItem& item = bar.AddItem(entry.document, entry.caption);
      item.SetIconIndex(AddPictureToImageList(gszImagesPath + "btn_Item.gif", images, kPlugInName));
      item.SetToolTipText(entry.toolTip);
      item.SetGroupName(barName);

      NavigatorRecord record = gNavigatorItems->NewItem();
      if (entry.kind == 5)
        record.PageAddress = app.Variables().GetVariable("gszDIR_HTMRoot") + "index.HTM";
      record.Number = 0;
      record.Kind = entry.kind;
      record.Label = entry.label;
      record.SecondLabel = "";
      record.DocumentName = entry.document;
      record.ParentKey = "Root";
      record.ModuleName = entry.moduleName;
      gNavigatorItems->AddItem(record);
    }
  }

  navigator.SetRedraw(true);
  app.Shell().DebugMessage("Finished Load Navigator", kPlugInName);
  ui::ShowHourglass(false);
}

void LoadToolbars() {
  HostApplication& app = App();
  ImageHolder& images = app.ToolbarImages();
  app.Shell().Splash().SetInfo("Anwendung wird initialisiert ...");
  const std::vector<std::string> parameters = ButtonParameters();

  Toolbar& systemToolbar = app.Shell().SystemToolbar();
  std::int32_t picture =
      AddPictureToImageList(gszImagesPath + "btn_Property.gif", images, kPlugInName);
  std::int32_t index = app.AddSystemButton(kPlugInName, kToolbarName, parameters, "Property",
                                           "Ketrova", picture, Variant(), 0, "Ketrova", 0, true);
  systemToolbar.SetButtonVisible(index, false);
  systemToolbar.SetVisible(false);

  Toolbar& toolbar = app.Toolbar();
  for (const ToolbarCommand& command : kCommands) {
    picture = AddPictureToImageList(gszImagesPath + command.picture, images, kPlugInName);
    index = app.AddButton(kPlugInName, kToolbarName, parameters, command.key, command.toolTip,
                          picture, Variant(), 0, command.caption, 0, true);
    if (!command.enabled) toolbar.SetButtonEnabled(index, false);
  }
}

}  // namespace ketrova::host
