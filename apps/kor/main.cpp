// kor: the desktop host shell. Starts the plug-ins of its plugins folder and
// shows their navigator, toolbars and documents.
//
//   kor [PROJEKT.CPF]            opens the project after the start
//   kor --grab BILD.png [...]    renders the main window into a PNG file once
//                                the start (and the project's opening) is
//                                done, prints the information line, and ends
//   kor --grab-documents ORDNER  the same for each document of the navigator,
//                                into ORDNER/<document>.png
//   kor --grab-dialogs ORDNER    the run dialog, the project options and each
//                                page of the data-store dialog on the opened
//                                project, into ORDNER/<dialog>.png
//   kor --plugins                prints the names of the started plug-ins,
//                                one a line, and ends
//   kor --version                the version
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QTimer>
#include <iostream>

#include "application_folder.h"
#include "component_version.h"
#include "dialog_pictures.h"
#include "kor_application.h"
#include "main_window.h"
#include "qt_texts.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("kor");
  QApplication::setApplicationDisplayName("Ketrova");
  kor::InstallGermanQtTexts();
  QApplication::setApplicationVersion(QString::fromStdString(ketrova::ComponentVersion()));

  QCommandLineParser parser;
  parser.setApplicationDescription("Ketrova: Datenkonvertierung");
  parser.addHelpOption();
  parser.addVersionOption();
  QCommandLineOption grab("grab", "Hauptfenster als PNG-Bild speichern und beenden.", "bild");
  parser.addOption(grab);
  QCommandLineOption grabDocuments(
      "grab-documents", "Jedes Dokument als PNG-Bild in den Ordner speichern und beenden.",
      "ordner");
  parser.addOption(grabDocuments);
  QCommandLineOption grabDialogs(
      "grab-dialogs", "Jeden Dialog als PNG-Bild in den Ordner speichern und beenden.", "ordner");
  parser.addOption(grabDialogs);
  QCommandLineOption listPlugins("plugins", "Die gestarteten Plug-ins auflisten und beenden.");
  parser.addOption(listPlugins);
  parser.addPositionalArgument("projekt", "Projektdatei (.CPF), die geöffnet wird.");
  parser.process(app);

  kor::KorOptions options;
  options.home = QDir::homePath();
  options.dataFolder = kor::DataFolder();
  options.pluginFolder = kor::PluginFolder();
  if (!parser.positionalArguments().isEmpty())
    options.projectFile = parser.positionalArguments().first();
  options.splash = !parser.isSet(grab) && !parser.isSet(grabDocuments) &&
                   !parser.isSet(grabDialogs) && !parser.isSet(listPlugins);

  kor::KorApplication host(options);
  QTimer::singleShot(0, [&] {
    host.Start();
    if (parser.isSet(listPlugins)) {
      for (const std::string& name : host.PlugInNames()) std::cout << name << "\n";
      QApplication::quit();
    }
    if (parser.isSet(grab)) {
      QApplication::processEvents();
      host.Window().grab().save(parser.value(grab), "PNG");
      std::cout << host.Window().ExtendedInfo().toStdString() << std::endl;
      QApplication::quit();
    }
    if (parser.isSet(grabDocuments)) {
      QDir folder(parser.value(grabDocuments));
      for (const char* name :
           {"KetrovatorCTL.frmFirstSteps", "KetrovatorCTL.frmJobs", "KetrovatorCTL.frmLogs",
            "KetrovatorCTL.frmModules", "KetrovatorCTL.frmOnStartProjekt",
            "KetrovatorCTL.frmOnEndProjekt"}) {
        host.OpenDocument(name);
        QApplication::processEvents();
        QString file = QString::fromUtf8(name).section('.', 1) + ".png";
        host.Window().grab().save(folder.filePath(file), "PNG");
      }
      QApplication::quit();
    }
    if (parser.isSet(grabDialogs)) {
      if (auto project = host.Object("Converter"))
        kor::GrabDialogs(*project, QDir(parser.value(grabDialogs)));
      QApplication::quit();
    }
  });
  int result = app.exec();
  host.End();
  return result;
}
