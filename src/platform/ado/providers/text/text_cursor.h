// A result of the file SQL engine as record access reads it: column
// descriptions from the declared types of the file tables, values converted to
// Variants block by block.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/ado/file_engine/file_engine.h"
#include "platform/ado/provider.h"

namespace ketrova::text_provider {

class TextCursor : public ado::Cursor {
 public:
  // Takes a statement that has not been stepped; steps its first row at once
  // to learn the types of computed columns.
  TextCursor(std::unique_ptr<file_engine::Statement> statement, std::int64_t maxRows);

  const std::vector<ado::ColumnInfo>& Columns() const override { return columns_; }
  std::size_t Fetch(std::vector<ado::Row>& rows, std::size_t count) override;

 private:
  Variant Value(int column) const;

  std::unique_ptr<file_engine::Statement> statement_;
  std::vector<ado::ColumnInfo> columns_;
  std::int64_t remaining_;  // rows still allowed, -1 for no limit
  bool has_row_ = false;
};

// The ADO description of a column declared with a file engine type name.
ado::ColumnInfo ColumnFromDeclaredType(const std::string& name, const char* declared);

}  // namespace ketrova::text_provider
