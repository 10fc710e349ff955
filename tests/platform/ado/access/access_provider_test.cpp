// The Access provider on databases written by Access itself (the shared test
// data), compared value by value with what mdbtools' own mdb-export prints.
#include "platform/ado/providers/access/access_provider.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>

#include "platform/ado/adox/catalog.h"
#include "platform/ado/command_output.h"
#include "platform/ado/connection.h"
#include "platform/ado/enums.h"
#include "platform/ado/fields.h"
#include "platform/ado/recordset.h"
#include "platform/ado/text/temp_folder.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::access_provider {
namespace {

using ado::Connection;
using ado::Recordset;

const std::filesystem::path kData = KETROVA_ACCESS_TESTDATA;
constexpr const char* kReadOnly =
    "' kann unter Linux nur gelesen werden. Als Ziel dienen eine ODBC-Datenquelle, SQLite oder "
    "PostgreSQL.";

std::string ConnectionString(const std::filesystem::path& file) {
  return "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + file.string();
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= text.size(); ++i) {
    if (i == text.size() || text[i] == separator) {
      parts.push_back(text.substr(start, i - start));
      start = i + 1;
    }
  }
  return parts;
}

// A value as mdb-export prints it with the options of ExportRows.
std::string AsExported(const Variant& v, ado::DataTypeEnum type) {
  if (v.IsNull()) return "";
  char buf[64];
  switch (type) {
    case ado::adDate: {
      ado::DateParts p = ado::PartsFromOleDate(v.AsDate().value);
      std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", p.year, p.month, p.day,
                    p.hour, p.minute, p.second);
      return buf;
    }
    case ado::adBoolean:
      return v.AsBool() ? "1" : "0";
    case ado::adCurrency:
      std::snprintf(buf, sizeof buf, "%.4f", v.ToDouble());
      return buf;
    case ado::adLongVarBinary:
    case ado::adVarBinary: {
      std::string hex;
      for (const auto& b : v.AsArray()->data) {
        std::snprintf(buf, sizeof buf, "%02X", static_cast<unsigned>(b.ToLong()));
        hex += buf;
      }
      return hex;
    }
    default:
      return v.ToString();
  }
}

class AccessProviderTest : public testing::TempFolderTest {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(kData / "nwind.mdb"))
      GTEST_SKIP() << "test data missing: " << kData;
    TempFolderTest::SetUp();
    RegisterAccessProvider();
  }

  static std::shared_ptr<Connection> Open(const std::string& file) {
    auto db = std::make_shared<Connection>();
    db->Open(ConnectionString(kData / file));
    return db;
  }

  // The rows of a table as mdb-export prints them: fields split at US, rows at
  // RS, no quotes, dates in ISO form, binary in hex.
  static std::vector<std::vector<std::string>> ExportRows(const std::string& file,
                                                          const std::string& table) {
    std::string out = testing::CommandOutput(
        "mdb-export -H -Q -d '\x1f' -R '\x1e' -b hex"
        " -D '%Y-%m-%d %H:%M:%S' -T '%Y-%m-%d %H:%M:%S' '" +
        (kData / file).string() + "' '" + table + "'");
    std::vector<std::vector<std::string>> rows;
    for (auto& line : Split(out, '\x1e'))
      if (!line.empty()) rows.push_back(Split(line, '\x1f'));
    return rows;
  }

  // Every value of every row of the table, read through record access, equals
  // mdb-export's; floats within their printed digits. Answers the row count.
  static std::size_t ExpectSameAsMdbExport(const std::string& file, const std::string& table) {
    auto exported = ExportRows(file, table);
    auto db = Open(file);
    auto rs = db->Execute("SELECT * FROM [" + table + "]");
    std::size_t row = 0;
    for (; !rs->Eof(); rs->MoveNext(), ++row) {
      if (row >= exported.size()) {
        ADD_FAILURE() << table << ": more rows than mdb-export prints";
        break;
      }
      auto& fields = rs->GetFields();
      for (std::int32_t i = 0; i < fields.Count(); ++i) {
        const auto type = fields.Item(i).Type();
        Variant v = fields.Item(i).Value();
        const std::string& expected = exported[row][static_cast<std::size_t>(i)];
        // mdb-export prints no date outside 1900 to 2700 (the date test below
        // reads those); floats it prints with 8 and 16 digits.
        if (type == ado::adDate && expected.starts_with("1900-01-00")) continue;
        if ((type == ado::adSingle || type == ado::adDouble) && !v.IsNull()) {
          EXPECT_NEAR(v.ToDouble(), std::stod(expected), std::abs(std::stod(expected)) * 1e-7)
              << table << " row " << row << " column " << fields.Item(i).Name();
          continue;
        }
        EXPECT_EQ(AsExported(v, type), expected)
            << table << " row " << row << " column " << fields.Item(i).Name();
      }
    }
    EXPECT_EQ(row, exported.size()) << table;
    return row;
  }
};

TEST_F(AccessProviderTest, CatalogueNamesTablesSystemTablesAndSelectQueries) {
  auto rs = Open("nwind.mdb")->OpenSchema(ado::adSchemaTables);
  std::map<std::string, std::string> types;
  for (; !rs->Eof(); rs->MoveNext()) {
    types[rs->GetFields().Item("TABLE_NAME").Value().ToText()] =
        rs->GetFields().Item("TABLE_TYPE").Value().ToText();
  }
  EXPECT_EQ(types["Orders"], "TABLE");
  EXPECT_EQ(types["Umsätze"], "TABLE");
  EXPECT_EQ(types["MSysObjects"], "SYSTEM TABLE");
  EXPECT_EQ(types["MSysModules"], "ACCESS TABLE");
  EXPECT_EQ(types["Current Product List"], "VIEW");
  EXPECT_EQ(types["Customers and Suppliers by City"], "VIEW");  // a union
  std::size_t tables = 0;
  for (auto& [name, type] : types) tables += type == "TABLE";
  EXPECT_EQ(tables, 9u);

  // An .accdb: its hidden form and report sources ("~sq_...") are no views.
  rs = Open("ASampleDatabase.accdb")->OpenSchema(ado::adSchemaTables);
  std::vector<std::string> views;
  for (; !rs->Eof(); rs->MoveNext())
    if (rs->GetFields().Item("TABLE_TYPE").Value().ToText() == "VIEW")
      views.push_back(rs->GetFields().Item("TABLE_NAME").Value().ToText());
  EXPECT_EQ(views, (std::vector<std::string>{"qryComputerHardwareInOwnerOrder",
                                             "qryCostsSummedByOwner", "qryGSTCalculations"}));
}

TEST_F(AccessProviderTest, ColumnsCarryTheTypesAndSizesJetReports) {
  AccessProvider provider(ado::ParseConnection(ConnectionString(kData / "nwind.mdb")));
  std::map<std::string, ado::ColumnInfo> c;
  for (auto& col : provider.TableColumns("products")) c[col.name] = col;
  EXPECT_EQ(c["ProductID"].type, ado::adInteger);
  EXPECT_TRUE(c["ProductID"].keyColumn);
  EXPECT_FALSE(c["ProductName"].keyColumn);
  EXPECT_EQ(c["ProductName"].type, ado::adVarWChar);
  EXPECT_EQ(c["ProductName"].definedSize, 40);
  EXPECT_EQ(c["UnitPrice"].type, ado::adCurrency);
  EXPECT_EQ(c["UnitsInStock"].type, ado::adSmallInt);
  EXPECT_EQ(c["Discontinued"].type, ado::adBoolean);
  for (auto& col : provider.TableColumns("Order Details")) c[col.name] = col;
  EXPECT_EQ(c["Discount"].type, ado::adSingle);
  for (auto& col : provider.TableColumns("Employees")) c[col.name] = col;
  EXPECT_EQ(c["Notes"].type, ado::adLongVarWChar);
  EXPECT_EQ(c["Notes"].definedSize, 536870910);
  EXPECT_EQ(c["Photo"].type, ado::adLongVarBinary);

  // Jet 4 and ACE count characters where the file counts bytes.
  AccessProvider ace(ado::ParseConnection(ConnectionString(kData / "ASampleDatabase.accdb")));
  for (auto& col : ace.TableColumns("Asset Items")) c[col.name] = col;
  EXPECT_EQ(c["Asset No"].definedSize, 5);
  EXPECT_EQ(c["Description"].definedSize, 40);
  EXPECT_EQ(c["Cost"].type, ado::adCurrency);
  EXPECT_EQ(c["Warranty"].type, ado::adInteger);

  // A record set's fields and values take the same types.
  auto rs = Open("nwind.mdb")
                ->Execute(
                    "SELECT [UnitsInStock], [Discount] FROM [Products] AS p "
                    "INNER JOIN [Order Details] AS d ON p.ProductID = "
                    "d.ProductID");
  EXPECT_EQ(rs->GetFields().Item("UnitsInStock").Type(), ado::adSmallInt);
  EXPECT_EQ(rs->GetFields().Item("UnitsInStock").Value().Type(), vbInteger);
  EXPECT_EQ(rs->GetFields().Item("Discount").Value().Type(), vbSingle);
}

TEST_F(AccessProviderTest, EveryTableReadsAsMdbExportPrintsIt) {
  const std::map<std::string, std::size_t> counts = {
      {"Categories", 8}, {"Customers", 91}, {"Employees", 9}, {"Order Details", 2155},
      {"Orders", 830},   {"Products", 77},  {"Shippers", 3},  {"Suppliers", 29}};
  for (auto& [table, count] : counts) EXPECT_EQ(ExpectSameAsMdbExport("nwind.mdb", table), count);
  ExpectSameAsMdbExport("nwind.mdb", "Umsätze");
  EXPECT_EQ(ExpectSameAsMdbExport("ASampleDatabase.accdb", "Asset Items"), 65u);
  EXPECT_EQ(ExpectSameAsMdbExport("DateTestDatabase.mdb", "DateTest"), 6u);
}

TEST_F(AccessProviderTest, DatesOutsideTheCommonRangeComeOutRight) {
  auto rs = Open("DateTestDatabase.mdb")->Execute("SELECT * FROM [DateTest] ORDER BY [IDCol]");
  std::vector<std::string> rows;
  for (; !rs->Eof(); rs->MoveNext()) {
    auto& f = rs->GetFields();
    rows.push_back(AsExported(f.Item("DateTimeCol").Value(), ado::adDate) + "|" +
                   AsExported(f.Item("DateCol").Value(), ado::adDate) + "|" +
                   AsExported(f.Item("TimeCol").Value(), ado::adDate) + "|" +
                   f.Item("ShortTextCol").Value().ToString());
  }
  // mdb-export prints "1900-01-00" for rows 2 to 4: libmdb's own formatting
  // takes no date before 1899-12-30 or after 2700.
  EXPECT_EQ(rows, (std::vector<std::string>{
                      "2021-12-02 00:00:00|2021-12-02 00:00:00|2021-12-02 00:00:00|Hello",
                      "9999-01-01 00:00:00|9999-01-01 00:00:00|9999-01-01 00:00:00|Year 1999",
                      "1898-01-01 00:00:00|1899-01-01 00:00:00|1900-01-01 00:00:00|Pre-1900 years",
                      "0632-01-01 00:00:00|0633-01-01 00:00:00|0634-01-01 00:00:00|Pre-1000 years",
                      "2021-12-02 00:00:00|2021-12-02 00:00:00|2021-12-02 00:00:00|Escaped new "
                      "line \\r\\n in field",
                      "2021-12-02 00:00:00|2021-12-02 00:00:00|2021-12-02 00:00:00|No new line"}));
  // The memo keeps its line break.
  rs = Open("DateTestDatabase.mdb")
           ->Execute("SELECT [LongTextCol] FROM [DateTest] WHERE [IDCol] = 6");
  EXPECT_EQ(rs->GetFields().Item(0).Value().ToString(), "New line\r\nin field");
}

TEST_F(AccessProviderTest, SelectQueriesAreViewsWhereTheirSqlTranslates) {
  auto db = Open("nwind.mdb");
  auto count = [&](const std::string& sql) {
    return db->Execute(sql)->GetFields().Item(0).Value().ToLong();
  };
  EXPECT_EQ(count("SELECT COUNT(*) FROM [Current Product List]"),
            count("SELECT COUNT(*) FROM [Products] WHERE [Discontinued] = 0"));
  auto rs = db->Execute("SELECT * FROM [Ten Most Expensive Products]");
  EXPECT_EQ(rs->GetFields().Item(0).Name(), "TenMostExpensiveProducts");
  EXPECT_EQ(rs->GetFields().Item("UnitPrice").Type(), ado::adCurrency);
  EXPECT_EQ(rs->GetFields().Item(0).Value().ToString(), "Côte de Blaye");
  EXPECT_EQ(count("SELECT COUNT(*) FROM [Ten Most Expensive Products]"), 10);
  EXPECT_EQ(count("SELECT COUNT(*) FROM [Customers and Suppliers by City]"), 91 + 29);

  // Jet's own functions have no counterpart: the view cannot be loaded.
  AccessProvider provider(ado::ParseConnection(ConnectionString(kData / "nwind.mdb")));
  try {
    provider.TableColumns("Sales by Year");
    FAIL() << "Format() in a query must not translate";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, ado::kErrStatementRefused);
    EXPECT_NE(e.Description.find("Sales by Year"), std::string::npos) << e.Description;
  }
}

TEST_F(AccessProviderTest, WritingIsRefusedWhereTheRecordLoopCountsIt) {
  auto db = Open("nwind.mdb");
  const std::string refusal = "Die Access-Datei '" + (kData / "nwind.mdb").string() + kReadOnly;
  auto rs = std::make_shared<Recordset>();
  rs->Open("SELECT * FROM [Shippers]", Variant(ObjectPtr(db)), ado::adOpenKeyset,
           ado::adLockOptimistic);
  try {
    rs->AddNew();
    FAIL() << "AddNew must fail";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Description, refusal);
  }
  try {
    rs->GetFields().Item("Phone").SetValue(Variant("0221 123"));
    FAIL() << "a field assignment must fail";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Description, refusal);
  }
  for (const char* sql : {"INSERT INTO [Shippers] ([CompanyName]) VALUES ('X')",
                          "DELETE FROM [Shippers]", "CREATE TABLE [Neu] ([A] TEXT)"}) {
    try {
      db->Execute(sql);
      FAIL() << sql;
    } catch (const VbError& e) {
      EXPECT_EQ(e.Number, ado::kErrStatementRefused);
      EXPECT_EQ(e.Description, refusal);
    }
  }
}

TEST_F(AccessProviderTest, MissingTruncatedAndForeignFilesAreNamedInTheError) {
  auto expectOpenFails = [](const std::filesystem::path& file, const std::string& what) {
    try {
      Connection db;
      db.Open(ConnectionString(file));
      ADD_FAILURE() << file << " must not open";
    } catch (const VbError& e) {
      EXPECT_EQ(e.Number, ado::kErrGeneral);
      EXPECT_EQ(e.Description.find("Die Access-Datei '" + file.string() + "' " + what), 0u)
          << e.Description;
    }
  };
  expectOpenFails(Path("fehlt.mdb"), "wurde nicht gefunden");
  // Catalog.Create, the step a new target goes through, cannot make one.
  try {
    adox::Catalog().Create(ConnectionString(Path("neu.mdb")));
    FAIL() << "an Access file cannot be created";
  } catch (const VbError& e) {
    EXPECT_NE(e.Description.find("nur gelesen, nicht angelegt"), std::string::npos);
  }
  std::ifstream in(kData / "nwind.mdb", std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  Write("halb.mdb", bytes.substr(0, bytes.size() / 2 + 100));
  expectOpenFails(Path("halb.mdb"), "ist unvollständig");
  Write("text.mdb", std::string(8192, 'x'));
  expectOpenFails(Path("text.mdb"), "ist keine Access-Datenbank");
}

}  // namespace
}  // namespace ketrova::access_provider
