// ketrova new PROJECT.CPF --name TEXT --source TYPE [--source-OPTION VALUE]...
// --dest TYPE [--dest-OPTION VALUE]...: makes a new project without the
// desktop's dialogs. The source is opened and read as after its store dialog
// (one job per table or view, with its script), then the destination, and the
// project is saved. A store that cannot be read prints its text and ends the
// command with status 1.
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <map>
#include <optional>

#include "commands.h"
#include "core/converter.h"
#include "jobs/jobs.h"
#include "platform/ui/console_ui.h"
#include "stores/database.h"
#include "support/utf8.h"

namespace ketrova::cli {

namespace {

constexpr const char* kUsage =
    "Aufruf: ketrova new PROJEKT.CPF --name TEXT --source TYP [--source-OPTION WERT]...\n"
    "                    --dest TYP [--dest-OPTION WERT]...\n"
    "  TYP: 1 bis 13 oder access, sqlserver, interbase, oracle, paradox, mysql, excel,\n"
    "       odbc, outlook, text, xml, watcom\n"
    "  OPTION: dsn, user, password, database, driver, server, port, file\n";

// A store type by its number or its name.
std::optional<std::int32_t> StoreType(const std::string& text) {
  static const std::map<std::string, std::int32_t> names = {{"access", dbtAccess},
                                                            {"sqlserver", dbtSQLServer},
                                                            {"interbase", dbtInterbase},
                                                            {"oracle", dbtOracle},
                                                            {"paradox", dbtParadox},
                                                            {"mysql", dbtMySQL},
                                                            {"excel", dbtExcel},
                                                            {"odbc", dbtODBC},
                                                            {"outlook", dbtOutlook},
                                                            {"text", dbtText},
                                                            {"xml", dbtXML},
                                                            {"watcom", dbtWatcom}};
  if (auto it = names.find(LowerCase(text)); it != names.end()) return it->second;
  std::size_t used = 0;
  try {
    int number = std::stoi(text, &used);
    if (used == text.size() && number >= dbtUndefined && number <= dbtWatcom) return number;
  } catch (const std::exception&) {
  }
  return std::nullopt;
}

// The store's text field an option names, or null.
std::string* StoreField(CDatabase& store, const std::string& option) {
  if (option == "dsn") return &store.DataSourceName;
  if (option == "user") return &store.UserName;
  if (option == "password") return &store.Password;
  if (option == "database") return &store.DatabaseName;
  if (option == "driver") return &store.DriverName;
  if (option == "server") return &store.ServerName;
  if (option == "port") return &store.PortAdress;
  if (option == "file") return &store.DatabaseFileName;
  return nullptr;
}

int Usage(const std::string& complaint) {
  std::cerr << "ketrova new: " << complaint << "\n" << kUsage;
  return 2;
}

}  // namespace

int RunNew(const Args& args) {
  if (args.empty() || args[0].starts_with("--")) return Usage("Projektdatei fehlt");
  const std::string file = std::filesystem::absolute(args[0]).lexically_normal().string();
  CConverter project;
  std::string name;
  bool haveSource = false;
  bool haveDest = false;
  for (std::size_t i = 1; i < args.size(); i += 2) {
    const std::string& option = args[i];
    if (i + 1 >= args.size()) return Usage("Wert fehlt zu " + option);
    const std::string& value = args[i + 1];
    if (option == "--name") {
      name = value;
      continue;
    }
    const bool source = option.starts_with("--source");
    if (!source && !option.starts_with("--dest")) return Usage("unbekannte Option " + option);
    CDatabase& store = source ? project.SourceDataBase() : project.DestDataBase();
    const std::string rest = option.substr(source ? 8 : 6);
    if (rest.empty()) {
      std::optional<std::int32_t> type = StoreType(value);
      if (!type) return Usage("unbekannter Datenbanktyp " + value);
      store.DatabaseType = *type;
      (source ? haveSource : haveDest) = true;
    } else if (std::string* field =
                   rest.starts_with("-") ? StoreField(store, rest.substr(1)) : nullptr) {
      *field = value;
    } else {
      return Usage("unbekannte Option " + option);
    }
  }
  if (name.empty()) return Usage("--name fehlt");
  if (!haveSource) return Usage("--source fehlt");
  if (!haveDest) return Usage("--dest fehlt");

  ui::ConsoleUserInterface::Options options;
  options.interactive = isatty(STDIN_FILENO) != 0;
  ui::SetCurrent(std::make_shared<ui::ConsoleUserInterface>(options));

  project.ProjectName = name;
  project.FileName = file;
  project.SetProjectDirectory(std::filesystem::path(file).parent_path().string());
  project.SourceDataBase().DatabaseDirection = dbdSource;
  project.DestDataBase().DatabaseDirection = dbdTarget;
  // A store that does not open says why; reading its catalogue would only
  // report a closed connection.
  auto opened = [](CDatabase& store) {
    store.SetActive(true);
    return store.LastErrorMessage();
  };
  std::string error = opened(project.SourceDataBase());
  if (error.empty()) error = project.ApplyDatabaseSource(false);
  if (error.empty()) error = opened(project.DestDataBase());
  if (error.empty()) error = project.ApplyDatabaseDest(false);
  if (error.empty()) error = project.SaveProject(file);
  project.SourceDataBase().SetActive(false);
  project.DestDataBase().SetActive(false);
  if (!error.empty()) {
    std::cerr << error << "\n";
    return 1;
  }
  std::cout << file << ": " << project.Jobs().Count() << " Aufgabe(n)\n";
  return 0;
}

}  // namespace ketrova::cli
