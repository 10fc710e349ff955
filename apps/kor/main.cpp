// kor: the desktop host shell. Starts the plug-ins of its plugins folder and
// shows their navigator, toolbars and documents.
//
//   kor [PROJEKT.CPF]            opens the project after the start
//   kor --grab BILD.png [...]    renders the main window into a PNG file once
//                                the start (and the project's opening) is
//                                done, prints the information line, and ends
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QTimer>
#include <iostream>

#include "application_folder.h"
#include "kor_application.h"
#include "main_window.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("kor");
  QApplication::setApplicationDisplayName("Ketrova");

  QCommandLineParser parser;
  parser.setApplicationDescription("Ketrova: Datenkonvertierung");
  parser.addHelpOption();
  QCommandLineOption grab("grab", "Hauptfenster als PNG-Bild speichern und beenden.", "bild");
  parser.addOption(grab);
  parser.addPositionalArgument("projekt", "Projektdatei (.CPF), die geöffnet wird.");
  parser.process(app);

  kor::KorOptions options;
  options.home = QDir::homePath();
  options.dataFolder = kor::DataFolder();
  options.pluginFolder = kor::PluginFolder();
  if (!parser.positionalArguments().isEmpty())
    options.projectFile = parser.positionalArguments().first();
  options.splash = !parser.isSet(grab);

  kor::KorApplication host(options);
  QTimer::singleShot(0, [&] {
    host.Start();
    if (parser.isSet(grab)) {
      QApplication::processEvents();
      host.Window().grab().save(parser.value(grab), "PNG");
      std::cout << host.Window().ExtendedInfo().toStdString() << std::endl;
      QApplication::quit();
    }
  });
  int result = app.exec();
  host.End();
  return result;
}
