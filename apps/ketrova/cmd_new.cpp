// ketrova new PROJECT.CPF --name TEXT --source TYPE [--source-OPTION VALUE]...
// --dest TYPE [--dest-OPTION VALUE]...: makes a new project without the
// desktop's dialogs. The source is opened and read as after its store dialog
// (one job per table or view, with its script), then the destination, and the
// project is saved. A store that cannot be read prints its text and ends the
// command with status 1; so does a table of the source that could not be
// analysed (it is named with its reason, the project is saved without it) and
// a source without any table. An option that the store type does not use is
// refused, so that it is never silently ignored. A folder of text files takes
// --source-delimiter and --source-header yes|no, which are written into the
// folder's schema.ini for each of its files; without them schema.ini is left
// as it is.
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <map>
#include <optional>

#include "commands.h"
#include "core/converter.h"
#include "core/logs.h"
#include "jobs/jobs.h"
#include "platform/ado/file_engine/schema_ini.h"
#include "platform/ado/providers/text/text_names.h"
#include "platform/ui/console_ui.h"
#include "stores/database.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova::cli {

namespace {

constexpr const char* kUsage =
    "Aufruf: ketrova new PROJEKT.CPF --name TEXT --source TYP [--source-OPTION WERT]...\n"
    "                    --dest TYP [--dest-OPTION WERT]...\n"
    "  TYP: 1 bis 13 oder access, sqlserver, interbase, oracle, paradox, mysql, excel,\n"
    "       odbc, outlook, text, xml, watcom\n"
    "  OPTION: dsn, user, password, database, driver, server, port, file;\n"
    "          bei text auch delimiter ZEICHEN und header yes|no (schreibt schema.ini)\n";

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

// The options a store type's connection uses; user, password and database are
// added to every connection string.
bool UsesOption(std::int32_t type, const std::string& option) {
  if (option == "user" || option == "password" || option == "database") return true;
  switch (type) {
    case dbtAccess:
    case dbtParadox:
    case dbtExcel:
      return option == "file";
    case dbtText:
      return option == "file" || option == "delimiter" || option == "header";
    case dbtSQLServer:
      return option == "server";
    case dbtMySQL:
      return option == "server" || option == "port";
    case dbtODBC:
      return option == "dsn" || option == "driver" || option == "server";
    default:
      return false;
  }
}

// The settings of a text folder that go into its schema.ini.
struct TextSettings {
  std::optional<char> delimiter;
  std::optional<bool> header;
};

// Writes the delimiter and the header line into the schema.ini section of
// every text file of the folder, keeping what else a section says. "" or the
// error.
std::string WriteTextSettings(const std::string& folder, const TextSettings& settings) {
  namespace fs = std::filesystem;
  std::error_code ec;
  if (!fs::is_directory(folder, ec)) return "Der Ordner " + folder + " existiert nicht";
  try {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
      const std::string name = entry.path().filename().string();
      if (!entry.is_regular_file() || !text_provider::IsTextTableFile(entry.path())) continue;
      file_engine::SchemaEntry section;
      if (auto existing = file_engine::ReadSchemaIni(folder, name)) section = *existing;
      section.file = name;
      if (settings.delimiter) section.delimiter = settings.delimiter;
      if (settings.header) section.header = settings.header;
      file_engine::WriteSchemaIni(folder, section);
    }
  } catch (const VbError& error) {
    return error.Description;
  } catch (const fs::filesystem_error& error) {
    return error.what();
  }
  return {};
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
  std::vector<std::pair<bool, std::string>> given;  // source?, option
  TextSettings text;
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
      given.emplace_back(source, rest.substr(1));
    } else if (source && rest == "-delimiter") {
      const std::string d = value == "\\t" || LowerCase(value) == "tab" ? "\t" : value;
      if (d.size() != 1 || d == "\"" || d == "\r" || d == "\n")
        return Usage("--source-delimiter braucht genau ein Zeichen: " + value);
      text.delimiter = d[0];
      given.emplace_back(true, "delimiter");
    } else if (source && rest == "-header") {
      if (value != "yes" && value != "no") return Usage("--source-header braucht yes oder no");
      text.header = value == "yes";
      given.emplace_back(true, "header");
    } else {
      return Usage("unbekannte Option " + option);
    }
  }
  if (name.empty()) return Usage("--name fehlt");
  if (!haveSource) return Usage("--source fehlt");
  if (!haveDest) return Usage("--dest fehlt");
  for (const auto& [source, option] : given) {
    CDatabase& store = source ? project.SourceDataBase() : project.DestDataBase();
    if (!UsesOption(store.DatabaseType, option)) {
      return Usage("Der Datenbanktyp " + store.DatabaseTypeString() + " verwendet --" +
                   (source ? "source-" : "dest-") + option + " nicht");
    }
  }
  if (text.delimiter || text.header) {
    if (std::string error = WriteTextSettings(project.SourceDataBase().DatabaseFileName, text);
        !error.empty()) {
      std::cerr << "schema.ini: " << error << "\n";
      return 1;
    }
  }

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
  // What the analysis could not read is in the event log, one entry per table.
  std::int32_t notAnalysed = error.empty() ? project.Logs().Count() : 0;
  if (error.empty()) error = opened(project.DestDataBase());
  if (error.empty()) error = project.ApplyDatabaseDest(false);
  if (error.empty()) error = project.SaveProject(file);
  project.SourceDataBase().SetActive(false);
  project.DestDataBase().SetActive(false);
  for (const CLog& log : project.Logs())
    std::cerr << ReplaceAll(RTrim(log.Message), "\r\n", "\n") << "\n";
  if (!error.empty()) {
    std::cerr << error << "\n";
    return 1;
  }
  std::cout << file << ": " << project.Jobs().Count() << " Aufgabe(n)\n";
  if (notAnalysed > 0) {
    std::cerr << notAnalysed << " Tabelle(n) der Quelle konnten nicht analysiert werden und "
              << "fehlen im Projekt.\n";
    return 1;
  }
  if (project.Jobs().Count() == 0) {
    std::cerr << "Das Projekt enthält keine Aufgabe: die Quelle hat keine Tabelle und keine "
                 "Sicht.\n";
    return 1;
  }
  return 0;
}

}  // namespace ketrova::cli
