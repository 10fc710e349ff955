// ketrova: the command-line front end. Runs, creates, inspects and converts
// projects without a display.
#include <cstring>
#include <iostream>

#include "commands.h"
#include "component_version.h"
#include "platform/contacts/contact_store.h"

namespace ketrova::cli {

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      {"run", "run PROJEKT.CPF [--job N[,M...]] [--from N] [--yes] [--quiet]   Projekt ausführen",
       RunProject},
      {"script",
       "script DATEI [--language VBScript|JScript] [--timeout MS] [--run NAME [ARG...]]   "
       "Script ausführen",
       RunScript},
      {"resave", "resave EIN.CPF AUS.CPF   Projekt laden und neu speichern", RunResave},
      {"new",
       "new PROJEKT.CPF --name TEXT --source TYP [--source-OPTION WERT]... --dest TYP "
       "[--dest-OPTION WERT]...   neues Projekt aus Quelle und Ziel",
       RunNew},
      {"show", "show PROJEKT.CPF [--job N]   Abfragen, Tabellen und Scripts der Aufgaben zeigen",
       RunShow},
      {"dsn", "dsn   ODBC-Datenquellen und ihre Treiber auflisten", RunDsn},
      {"verify", "verify PROJEKT.CPF   fehlende Tabellen im Ziel anlegen und Projekt speichern",
       RunVerify},
  };
  return commands;
}

}  // namespace ketrova::cli

namespace {

void PrintHelp(std::ostream& out) {
  out << "Aufruf: ketrova [--contacts ORDNER] BEFEHL [ARGUMENTE]\n"
         "Ketrova konvertiert Daten zwischen Datenbanken, Textdateien und Tabellen\n"
         "nach einem Projekt (.CPF).\n\n"
         "Befehle:\n";
  for (const auto& command : ketrova::cli::Commands()) out << "  " << command.usage << "\n";
  out << "\n  --contacts ORDNER   Wurzel der Kontaktordner (statt ContactRoot im Abschnitt\n"
         "                     [Ketrova] der registry.ini, sonst $XDG_DATA_HOME/contacts)\n"
         "  --help      diese Hilfe\n"
         "  --version   die Version\n";
}

}  // namespace

int main(int argc, char** argv) {
  // The contact root given before the command overrides the setting.
  if (argc >= 3 && std::strcmp(argv[1], "--contacts") == 0) {
    ketrova::contacts::SetContactRootOverride(argv[2]);
    argv[2] = argv[0];
    argv += 2;
    argc -= 2;
  }
  if (argc < 2) {
    PrintHelp(std::cerr);
    return 2;
  }
  std::string first = argv[1];
  if (first == "--help" || first == "-h" || first == "help") {
    PrintHelp(std::cout);
    return 0;
  }
  if (first == "--version") {
    std::cout << "Ketrova " << ketrova::ComponentVersion() << "\n";
    return 0;
  }
  for (const auto& command : ketrova::cli::Commands()) {
    if (first == command.name) {
      ketrova::cli::Args args(argv + 2, argv + argc);
      return command.run(args);
    }
  }
  std::cerr << "ketrova: unbekannter Befehl \"" << first << "\"\n";
  PrintHelp(std::cerr);
  return 2;
}
