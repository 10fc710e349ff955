#include "platform/ado/providers/xbase/table_file.h"

namespace ketrova::xbase_provider {

ado::ColumnInfo DescribeField(std::span<const FieldKind> kinds, const std::string& name, char type,
                              int width, int decimals) {
  ado::ColumnInfo c;
  c.name = name;
  c.baseColumn = name;
  c.typeName = std::string(1, type);
  c.type = ado::adEmpty;
  for (const auto& kind : kinds) {
    if (kind.letter != type) continue;
    c.type = kind.type;
    c.definedSize = kind.size == FieldKind::kWidth ? width : kind.size;
    c.precision = kind.precision;
    if (kind.scaled) c.numericScale = static_cast<std::uint8_t>(decimals);
    c.autoIncrement = kind.autoIncrement;
    break;
  }
  return c;
}

}  // namespace ketrova::xbase_provider
