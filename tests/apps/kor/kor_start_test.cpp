// The host's start with the plug-in: variables, folders, registry, caption,
// splash, toolbars and navigator, as a user's first start leaves them.
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QListWidget>

#include "core/converter.h"
#include "host/pictures.h"
#include "image_list.h"
#include "kor_fixture.h"
#include "main_window.h"
#include "navigator_widget.h"
#include "splash.h"
#include "support/ini_file.h"
#include "tool_bar.h"

namespace kor::testing {
namespace {

using ketrova::host::NavigatorRecord;

TEST_F(KorTest, StartPublishesFoldersColoursAndTheProject) {
  KorApplication& host = StartHost();
  auto& vars = host.Variables();
  const std::string app = AppFolder().toStdString();
  EXPECT_EQ(vars.GetVariable("gszDIR_ApplicationPath"), app);
  EXPECT_EQ(vars.GetVariable("gszDIR_Images"), app + "Images/");
  EXPECT_EQ(vars.GetVariable("gszDIR_HTMRoot"), app + "HTMRoot/");
  EXPECT_EQ(vars.GetVariable("gszDIR_Errors"), app + "Errors/");
  EXPECT_EQ(vars.GetVariable("gszDIR_Projects"), app + "Projects/");
  for (const char* folder : {"Images", "HTMRoot", "Errors", "Projects"})
    EXPECT_TRUE(QFileInfo(AppFolder() + folder).isDir()) << folder;
  // Seeded from the installed data on the first start.
  EXPECT_TRUE(QFileInfo::exists(AppFolder() + "Images/btn_Item.gif"));
  EXPECT_TRUE(QFileInfo::exists(AppFolder() + "HTMRoot/index.HTM"));

  EXPECT_EQ(vars.GetVariable("BackColorStart"), "&HEFEBE7");
  EXPECT_EQ(vars.GetVariable("BackColorEnd"), "14270901");
  EXPECT_EQ(vars.GetVariable("FontColor"), "11428688");
  // "&HEFEBE7" is VB's hex notation: the navigator reads it as 0x00EFEBE7.
  EXPECT_EQ(host.Window().Navigator().BackColorStart(), 0xEFEBE7);
  EXPECT_EQ(host.Window().Navigator().BackColorEnd(), 14270901);

  QFile registry(temp_.path() + "/config/ketrova/registry.ini");
  ASSERT_TRUE(registry.open(QIODevice::ReadOnly));
  QString ini = QString::fromUtf8(registry.readAll());
  EXPECT_TRUE(ini.contains("[Software\\Halvorn\\Ketrova]")) << ini.toStdString();
  EXPECT_TRUE(ini.contains("DirWorking=" + AppFolder())) << ini.toStdString();

  EXPECT_EQ(host.Window().windowTitle(), "Ketrova");
  EXPECT_TRUE(host.Window().MainToolbar().styleSheet().contains("Background_ToolBar.jpg"));
  EXPECT_EQ(
      host.SplashWindow()->Lines(),
      (std::vector<std::string>{"Bilder werden gelesen ...", "Anwendung wird initialisiert ..."}));
  EXPECT_FALSE(host.SplashWindow()->isVisible());
  EXPECT_TRUE(host.Window().isVisible());

  auto converter = host.Object("Converter");
  ASSERT_NE(converter, nullptr);
  EXPECT_EQ(converter->WorkingDirectory, app);
  EXPECT_EQ(converter->ProjectDirectory(), app + "Projects/");
  EXPECT_EQ(converter->ErrorDirectory(), app + "Errors/");
  EXPECT_EQ(host.PlugInNames(), (std::vector<std::string>{"Ketrovator"}));
  EXPECT_TRUE(answerer_.Seen().empty());
}

TEST_F(KorTest, ToolbarsStartWithOnlyNewAndOpenEnabled) {
  KorApplication& host = StartHost();
  ToolBar& toolbar = host.Window().MainToolbar();
  ASSERT_EQ(toolbar.ButtonCount(), 5);
  const char* captions[] = {"Neu", "Öffnen", "Bearbeiten", "speichern", "ausführen"};
  const char* tips[] = {"Projekt Neu", "Projekt öffnen", "Projekt bearbeiten", "Projekt speichern",
                        "Projekt ausführen"};
  for (int i = 1; i <= 5; ++i) {
    EXPECT_EQ(toolbar.Button(i)->text().toStdString(), captions[i - 1]);
    EXPECT_EQ(toolbar.Button(i)->toolTip().toStdString(), tips[i - 1]);
    EXPECT_FALSE(toolbar.Button(i)->icon().isNull()) << captions[i - 1];
  }
  EXPECT_TRUE(Enabled("ProjectNew"));
  EXPECT_TRUE(Enabled("ProjectOpen"));
  EXPECT_FALSE(Enabled("ProjectEdit"));
  EXPECT_FALSE(Enabled("ProjectSave"));
  EXPECT_FALSE(Enabled("ProjectRun"));

  ToolBar& system = host.Window().SystemToolbar();
  ASSERT_EQ(system.ButtonCount(), 1);
  EXPECT_EQ(system.Button(1)->text(), "Ketrova");
  EXPECT_FALSE(system.Button(1)->isVisible());
  EXPECT_FALSE(system.isVisible());

  // Every picture of the folder is in the toolbar list once, although the
  // buttons added theirs again.
  QStringList files = QDir(AppFolder() + "Images").entryList(QDir::Files);
  EXPECT_EQ(host.ToolbarImageList().Count(), files.size());
}

TEST_F(KorTest, NavigatorTwiceGivesTwoBarsEightItemsAndSixteenRecords) {
  KorApplication& host = StartHost();
  NavigatorWidget& nav = host.Window().Navigator();
  auto check = [&] {
    ASSERT_EQ(nav.BarCount(), 2);
    EXPECT_EQ(nav.Bar(0).Key(), "Projekt");
    EXPECT_EQ(nav.Bar(1).Key(), "Scripting");
    ASSERT_EQ(nav.Bar(0).ItemCount(), 5);
    ASSERT_EQ(nav.Bar(1).ItemCount(), 3);
    EXPECT_EQ(nav.Bar(0).Entry(1).Key(), "Ketrovator.frmProjectSource");
    EXPECT_EQ(nav.Bar(0).Entry(1).Item()->text(), "Quelle");
    EXPECT_EQ(nav.Bar(1).Entry(1).Item()->toolTip(), "Ausführen beim starten");
    EXPECT_EQ(nav.Bar(1).Entry(0).GroupName(), "Scripting");
    for (int bar = 0; bar < 2; ++bar)
      for (int i = 0; i < nav.Bar(bar).ItemCount(); ++i)
        EXPECT_EQ(nav.Bar(bar).Entry(i).IconIndex(), 1);
    // One picture in the navigator's list, however often it was asked for.
    EXPECT_EQ(host.NavigatorImageList().Count(), 1);
  };
  check();
  ASSERT_EQ(host.Records().size(), 8u);
  const NavigatorRecord& first = host.Records()[0];
  EXPECT_EQ(first.PageAddress, AppFolder().toStdString() + "HTMRoot/index.HTM");
  EXPECT_EQ(first.Kind, 5);
  EXPECT_EQ(first.Label, "Erste Schritte");
  EXPECT_EQ(first.ParentKey, "Root");
  EXPECT_EQ(first.ModuleName, "Ketrovator");
  const NavigatorRecord& modules = host.Records()[5];
  EXPECT_EQ(modules.DocumentName, "KetrovatorCTL.frmModules");
  EXPECT_EQ(modules.Label, "Modules");
  EXPECT_EQ(modules.ModuleName, "Ketrovator");  // the documents' component is not named here
  EXPECT_EQ(modules.Kind, 3);
  EXPECT_TRUE(modules.PageAddress.empty());
  EXPECT_EQ(host.Records()[6].ModuleName, "KetrovatorCTL");
  EXPECT_EQ(host.Records()[2].Kind, 4);

  host.Reload();
  check();
  // The host's list is not cleared by the plug-in.
  EXPECT_EQ(host.Records().size(), 16u);
  std::string messages = MessageTexts();
  EXPECT_NE(messages.find("Ketrovator: Retrieving Key NAVIGATOR\nKetrovator: Start Load Navigator\n"
                          "Ketrovator: Finished Load Navigator\n"),
            std::string::npos)
      << messages;
}

TEST_F(KorTest, ItemPictureMissingGivesItemsWithoutPicture) {
  // A second start finds the folder; the user has deleted the item picture
  // and left a file that is no picture.
  QDir().mkpath(AppFolder() + "Images");
  QFile::copy(KETROVA_SOURCE_DIR "/data/Images/btn_Save.gif", AppFolder() + "Images/btn_Save.gif");
  QFile junk(AppFolder() + "Images/liesmich.txt");
  ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
  junk.write("kein Bild");
  junk.close();
  KorApplication& host = StartHost();
  NavigatorWidget& nav = host.Window().Navigator();
  ASSERT_EQ(nav.BarCount(), 2);
  EXPECT_EQ(nav.Bar(0).ItemCount() + nav.Bar(1).ItemCount(), 8);
  for (int bar = 0; bar < 2; ++bar)
    for (int i = 0; i < nav.Bar(bar).ItemCount(); ++i)
      EXPECT_EQ(nav.Bar(bar).Entry(i).IconIndex(), -1);
  EXPECT_EQ(host.NavigatorImageList().Count(), 0);
  // Only the one picture made it into the toolbar list.
  EXPECT_EQ(host.ToolbarImageList().Count(), 1);
  EXPECT_TRUE(host.Window().MainToolbar().Button(1)->icon().isNull());
  EXPECT_FALSE(host.Window().MainToolbar().Button(4)->icon().isNull());
}

TEST_F(KorTest, AHomeWithADotInItsPathIsReportedAndTheHostStaysUp) {
  KorOptions options;
  options.home = temp_.path() + "/max.muster";
  options.dataFolder = QStringLiteral(KETROVA_SOURCE_DIR "/data");
  options.pluginFolder = QStringLiteral(KOR_PLUGIN_FOLDER);
  host_ = std::make_unique<KorApplication>(options);
  answerer_.PressButton("vbOK");
  host_->Start();
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_NE(answerer_.Seen()[0].text.find("enthält einen Punkt"), std::string::npos)
      << answerer_.Seen()[0].text;
  EXPECT_EQ(answerer_.Seen()[0].icon, 16);
  EXPECT_EQ(host_->Variables().GetVariable("gszDIR_ApplicationPath"),
            (temp_.path() + "/max.muster/Ketrova/").toStdString());
  EXPECT_EQ(host_->Window().Navigator().BarCount(), 2);
  EXPECT_TRUE(host_->Window().isVisible());
}

TEST(Pictures, KeyIsCutAtTheFirstDotOfThePath) {
  using ketrova::host::PictureKey;
  EXPECT_EQ(PictureKey("/home/u/Ketrova/Images/btn_Item.gif", "Ketrovator"), "KETROVATOR_BTN_ITEM");
  EXPECT_EQ(PictureKey("C:\\Programme\\Images\\btn_Save.gif", "Ketrovator"), "KETROVATOR_BTN_SAVE");
  // A "." in a folder cuts the name there, and the key is made from the
  // folder's beginning.
  EXPECT_EQ(PictureKey("/home/u.v/Ketrova/Images/btn_Item.gif", "Ketrovator"), "KETROVATOR_U");
  EXPECT_EQ(PictureKey("ohne", "x"), "X_OHNE");
}

TEST_F(KorTest, PictureAddedTwiceKeepsOneImage) {
  KorApplication& host = StartHost();
  ImageList images;
  std::string path = AppFolder().toStdString() + "Images/btn_Item.gif";
  EXPECT_EQ(ketrova::host::AddPictureToImageList(path, images, "Ketrovator"), 1);
  std::string other = AppFolder().toStdString() + "Images/btn_Save.gif";
  EXPECT_EQ(ketrova::host::AddPictureToImageList(other, images, "Ketrovator"), 2);
  EXPECT_EQ(ketrova::host::AddPictureToImageList(path, images, "Ketrovator"), 1);
  EXPECT_EQ(images.Count(), 2);
  EXPECT_EQ(ketrova::host::AddPictureToImageList(path + ".fehlt", images, "Ketrovator"), -1);
  (void)host;
}

}  // namespace
}  // namespace kor::testing
