#include "platform/ado/providers/xbase/xbase_provider.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <regex>

#include "platform/ado/file_engine/create_table.h"
#include "platform/ado/file_engine/engine_access.h"
#include "platform/ado/file_engine/sql_rewrite.h"
#include "platform/ado/file_engine/store_folder.h"
#include "platform/ado/providers/xbase/dbf_module.h"
#include "platform/ado/providers/xbase/paradox_file.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova::xbase_provider {

namespace {

constexpr const char* kSource = "Ketrova.xBase";

bool IsDbf(const std::filesystem::path& p) {
  return AsciiUpper(p.extension().string()) == ".DBF";
}

bool IsParadox(const std::filesystem::path& p) {
  return AsciiUpper(p.extension().string()) == ".DB";
}

// A table's file as the format of its name reads it.
std::unique_ptr<TableFile> ReadTableFile(const std::filesystem::path& file) {
  if (IsParadox(file)) return std::make_unique<ParadoxFile>(ParadoxFile::Open(file));
  return std::make_unique<DbfFile>(DbfFile::Read(file));
}

// The file name a new table gets: "." and blanks would confuse readers that
// take the name up to the first "." as the table's.
std::string FileStemOf(std::string name) {
  for (char& c : name)
    if (c == '.' || c == ' ') c = '_';
  return name;
}

std::string FirstWords(std::string_view sql) {
  std::string out;
  std::size_t i = 0;
  for (int words = 0; words < 2; ++words) {
    while (i < sql.size() && std::isspace(static_cast<unsigned char>(sql[i]))) ++i;
    while (i < sql.size() && std::isalpha(static_cast<unsigned char>(sql[i])))
      out.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(sql[i++]))));
    out.push_back(' ');
  }
  return out;
}

// Splits "TEXT(20)" into the upper-case type ("TEXT") and the size (20, or 0
// without one).
int SplitDeclared(std::string& declared) {
  int width = 0;
  if (auto paren = declared.find('('); paren != std::string::npos) {
    width = std::atoi(declared.c_str() + paren + 1);
    declared.resize(paren);
  }
  declared = AsciiUpper(declared);
  while (!declared.empty() && declared.back() == ' ') declared.pop_back();
  return width;
}

// The field a declared engine type gives in a new dBase III table.
TableField FieldOf(const std::string& name, std::string declared) {
  const int width = SplitDeclared(declared);
  TableField f;
  f.name = name;
  if (declared == "INTEGER" || declared == "LONG" || declared == "SHORT" || declared == "BYTE")
    f.type = 'N', f.width = 11;
  else if (declared == "DOUBLE" || declared == "SINGLE" || declared == "FLOAT")
    f.type = 'N', f.width = 20, f.decimals = 8;
  else if (declared == "CURRENCY")
    f.type = 'N', f.width = 20, f.decimals = 4;
  else if (declared == "DATETIME" || declared == "DATE")
    f.type = 'D', f.width = 8;
  else if (declared == "BIT")
    f.type = 'L', f.width = 1;
  else if (declared == "MEMO")
    f.type = 'M', f.width = 10;
  else
    f.type = 'C', f.width = width > 0 && width <= 254 ? width : 254;
  return f;
}

// The field a declared engine type gives in a new Paradox table: TEXT(n)
// alpha of n (255 without a size), whole numbers long, floating numbers and
// currency as Paradox's number and money, dates as timestamps (a Paradox
// date holds no time), memos with a 10-byte leading part.
TableField ParadoxFieldOf(const std::string& name, std::string declared) {
  const int width = SplitDeclared(declared);
  TableField f;
  f.name = name;
  if (declared == "INTEGER" || declared == "LONG")
    f.type = 'I', f.width = 4;
  else if (declared == "SHORT" || declared == "SMALLINT" || declared == "BYTE")
    f.type = 'S', f.width = 2;
  else if (declared == "COUNTER" || declared == "AUTOINCREMENT")
    f.type = '+', f.width = 4;
  else if (declared == "DOUBLE" || declared == "SINGLE" || declared == "FLOAT" ||
           declared == "REAL" || declared == "NUMERIC" || declared == "DECIMAL")
    f.type = 'N', f.width = 8;
  else if (declared == "CURRENCY" || declared == "MONEY")
    f.type = '$', f.width = 8;
  else if (declared == "DATETIME" || declared == "DATE" || declared == "TIMESTAMP")
    f.type = '@', f.width = 8;
  else if (declared == "BIT")
    f.type = 'L', f.width = 1;
  else if (declared == "MEMO" || declared == "LONGTEXT")
    f.type = 'M', f.width = 20;
  else if (declared == "BLOB" || declared == "LONGBINARY" || declared == "IMAGE" ||
           declared == "OLEOBJECT")
    f.type = 'B', f.width = 20;
  else
    f.type = 'A', f.width = width > 0 && width <= 255 ? width : 255;
  return f;
}

// A table's alias that holds a "." (the target of a job on a table named
// after a file, "FROM [orte.csv] orte.csv") in brackets, so that the
// engine reads it as one name.
std::string QuoteDottedAliases(const std::string& sql) {
  static const std::regex alias(R"((\]\s+)([^\s\[\]"'.,()]+\.[^\s\[\]"',()]+))");
  return std::regex_replace(sql, alias, "$1[$2]");
}

}  // namespace

void RegisterXbaseProvider() {
  ado::RegisterProvider(ado::ProviderKind::kXbase, [](const ado::ConnectionSpec& spec) {
    return std::unique_ptr<ado::Provider>(std::make_unique<XbaseProvider>(spec));
  });
}

XbaseProvider::XbaseProvider(const ado::ConnectionSpec& spec) {
  folder_ = file_engine::StoreFolder(spec.dataSource, "dBase-Tabellen", kSource);
  const std::string asked = AsciiUpper(spec.Get("Extended Properties") + " " + spec.Get("Driver") +
                                       " " + spec.Get("FIL"));
  paradox_ = asked.find("PARADOX") != std::string::npos;
  engine_ = std::make_unique<file_engine::FileEngine>(
      [this](const std::string& name) -> std::optional<file_engine::TableSource> {
        auto file = FileOf(name);
        if (file.empty()) return std::nullopt;
        return file_engine::TableSource{kDbfModuleName, {file.string()}};
      },
      kSource);
  loader_ = [this](const std::string& file) -> LoadedTable& {
    auto key = AsciiUpper(file);
    auto it = tables_.find(key);
    if (it == tables_.end()) {
      auto loaded = std::make_unique<LoadedTable>(LoadedTable{ReadTableFile(file), {}, false});
      loaded->live.assign(loaded->file->rows().size(), true);
      it = tables_.emplace(key, std::move(loaded)).first;
    }
    return *it->second;
  };
  RegisterDbfModule(engine_->db(), &loader_);
}

XbaseProvider::~XbaseProvider() {
  try {
    Flush();
  } catch (const VbError& e) {
    // A destructor cannot raise: the failure is reported where it is seen.
    std::cerr << e.Description << "\n";
  }
}

void XbaseProvider::Flush() {
  try {
    unsaved_.Save([this] {
      for (auto& [key, table] : tables_) {
        if (!table->changed) continue;
        auto& rows = table->file->rows();
        std::vector<ado::Row> kept;
        for (std::size_t i = 0; i < rows.size(); ++i)
          if (table->live[i]) kept.push_back(rows[i]);
        table->file->Write(kept);
        table->changed = false;
      }
    });
  } catch (const VbError&) {
    ForgetUnsaved();
    throw;
  }
}

void XbaseProvider::ForgetUnsaved() {
  // The files were written through temporary files, so each still holds what
  // the last good save left; the tables become that again, in place, since
  // the engine's tables point at them.
  for (auto& [key, table] : tables_) {
    if (!table->changed) continue;
    try {
      table->file = ReadTableFile(table->file->file());
    } catch (const VbError&) {
      table->file->rows().clear();  // a new table whose file never was written
    }
    table->live.assign(table->file->rows().size(), true);
    table->changed = false;
  }
}

std::filesystem::path XbaseProvider::FileOf(const std::string& name) const {
  std::string wanted = AsciiUpper(name);
  std::string sanitized = AsciiUpper(FileStemOf(name));
  std::error_code ec;
  std::filesystem::path paradox;
  for (const auto& entry : std::filesystem::directory_iterator(folder_, ec)) {
    const auto& p = entry.path();
    if (!IsDbf(p) && !IsParadox(p)) continue;
    const std::string stem = AsciiUpper(p.stem().string());
    if (stem != wanted && stem != sanitized && AsciiUpper(p.filename().string()) != wanted)
      continue;
    if (IsDbf(p)) return p;
    paradox = p;
  }
  return paradox;
}

ado::ExecuteResult XbaseProvider::Execute(const std::string& sql, std::span<const Variant> params,
                                          std::int64_t maxRows) {
  if (FirstWords(sql) == "CREATE TABLE ") {
    CreateTable(sql);
    ado::ExecuteResult result;
    result.rowsAffected = 0;
    return result;
  }
  ado::ExecuteResult result =
      file_engine::ExecuteStatement(*engine_, QuoteDottedAliases(sql), params, maxRows);
  unsaved_.Wrote(result.rowsAffected);
  return result;
}

std::vector<ado::TableInfo> XbaseProvider::Tables() {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& entry : std::filesystem::directory_iterator(folder_, ec))
    if (IsDbf(entry.path()) || IsParadox(entry.path()))
      names.push_back(entry.path().stem().string());
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  std::vector<ado::TableInfo> out;
  for (auto& n : names) out.push_back({"", "", std::move(n), "TABLE"});
  return out;
}

std::vector<ado::ColumnInfo> XbaseProvider::TableColumns(const std::string& table) {
  auto file = FileOf(table);
  if (file.empty()) {
    throw VbError(ado::kErrUnknownTable, "Die Tabelle '" + table + "' wurde nicht gefunden",
                  kSource);
  }
  std::vector<ado::ColumnInfo> out;
  for (const auto& f : loader_(file.string()).file->fields()) out.push_back(f.info);
  return out;
}

std::string XbaseProvider::ColumnTypeSql(const ado::ColumnInfo& column) const {
  return file_engine::EngineTypeSql(column.type);
}

// CREATE TABLE gives an empty Paradox or dBase III file at once.
void XbaseProvider::CreateTable(const std::string& sql) {
  const file_engine::DeclaredTable declared = file_engine::ParseCreateTable(sql, kSource);
  const std::string& table = declared.name;
  if (!FileOf(table).empty()) {
    throw VbError(ado::kErrStatementRefused, "Die Tabelle '" + table + "' existiert bereits",
                  kSource);
  }
  std::vector<TableField> fields;
  for (const auto& c : declared.columns) {
    if (paradox_) {
      fields.push_back(ParadoxFieldOf(c.name, c.declared));
      continue;
    }
    if (c.name.size() > 10) {
      throw VbError(ado::kErrStatementRefused,
                    "Der Feldname '" + c.name + "' ist für dBase länger als 10 Zeichen", kSource);
    }
    fields.push_back(FieldOf(c.name, c.declared));
  }
  if (paradox_) {
    const auto file = folder_ / (FileStemOf(table) + ".db");
    ParadoxFile::Create(file, std::move(fields)).Write({});
  } else {
    const auto file = folder_ / (FileStemOf(table) + ".dbf");
    DbfFile::Create(file, std::move(fields)).Write({});
  }
  engine_->ForgetTable(table);
}

}  // namespace ketrova::xbase_provider
