// The text provider: a folder of delimited text files as a store, opened by
// "Driver={Microsoft Text Driver (*.txt; *.csv)};DBQ=<folder>;...".
//
// Each file is a table (text_names.h); statements run on the file SQL engine
// (file_engine.h), which also takes the text driver's own forms. Values come
// back as Long or Double for numbers, Date for dates, Boolean for True/False
// columns and String for text. CREATE TABLE writes the header line of a new
// file and its section in schema.ini. Every statement commits on its own: an
// INSERT appends its lines when it ends, a DELETE or UPDATE rewrites the file.
//
// RegisterTextProvider() must be called once at program start (the programs
// and the tests do), so that ado::OpenProvider serves text-driver strings.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "platform/ado/file_engine/file_engine.h"
#include "platform/ado/provider.h"

namespace ketrova::text_provider {

void RegisterTextProvider();

class TextProvider : public ado::Provider {
 public:
  // Raises VbError kErrGeneral when the folder does not exist.
  explicit TextProvider(const ado::ConnectionSpec& spec);

  std::string Dialect() const override { return "text"; }
  std::string IdentifierQuote() const override { return "\""; }

  ado::ExecuteResult Execute(const std::string& sql, std::span<const Variant> params = {},
                             std::int64_t maxRows = 0) override;
  void BeginTrans() override;
  void CommitTrans() override;
  void RollbackTrans() override;

  std::vector<ado::TableInfo> Tables() override;
  std::vector<ado::ColumnInfo> TableColumns(const std::string& table) override;
  std::vector<ado::IndexInfo> TableIndexes(const std::string& table) override { return {}; }
  std::string ColumnTypeSql(const ado::ColumnInfo& column) const override;

  const std::filesystem::path& folder() const { return folder_; }

 private:
  void CreateTable(const std::string& sql);

  std::filesystem::path folder_;
  std::unique_ptr<file_engine::FileEngine> engine_;
};

}  // namespace ketrova::text_provider
