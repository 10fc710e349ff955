#include "platform/ado/providers/access/mdb_database.h"

#include <mdbtools.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>

#include "platform/ado/enums.h"
#include "support/collection.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova::access_provider {

namespace {

constexpr const char* kSource = "Ketrova.Access";

// Flags of a table's entry in MSysObjects: Jet's own system tables, and the
// tables that Access keeps for itself.
constexpr unsigned kJetSystemFlag = 0x80000000u;
constexpr unsigned kAccessSystemFlag = 0x00000002u;
// The kind of a query, in the upper bits of its flags: 0 select, 0x80 union
// (both give rows); crosstab 0x10 gives rows too, but its TRANSFORM has no
// counterpart in our engine. Action queries (0x20 to 0x70) are no views.
constexpr unsigned kQueryKindMask = 0xF0u;

[[noreturn]] void Fail(const std::string& file, const std::string& what) {
  throw VbError(ado::kErrGeneral, "Die Access-Datei '" + file + "' " + what, kSource);
}

std::int64_t Le(const unsigned char* p, int bytes) {
  std::uint64_t v = 0;
  for (int i = bytes - 1; i >= 0; --i) v = (v << 8) | p[i];
  // Sign-extend the narrower integers.
  if (bytes < 8 && (v >> (bytes * 8 - 1)) & 1) v |= ~std::uint64_t{0} << (bytes * 8);
  return static_cast<std::int64_t>(v);
}

double LeDouble(const unsigned char* p) {
  double d;
  std::uint64_t bits = static_cast<std::uint64_t>(Le(p, 8));
  std::memcpy(&d, &bits, sizeof d);
  return d;
}

float LeSingle(const unsigned char* p) {
  float f;
  auto bits = static_cast<std::uint32_t>(Le(p, 4));
  std::memcpy(&f, &bits, sizeof f);
  return f;
}

// Takes a string libmdb allocated with g_malloc.
std::string TakeGString(char* s) {
  std::string out = s ? s : "";
  g_free(s);
  return out;
}

MdbCatalogEntry* EntryOf(MdbHandle* mdb, const std::string& name, int type) {
  for (unsigned i = 0; i < mdb->num_catalog; ++i) {
    auto* e = static_cast<MdbCatalogEntry*>(g_ptr_array_index(mdb->catalog, i));
    if (e->object_type == type && KeyEquals(e->object_name, name)) return e;
  }
  return nullptr;
}

// A table definition with its columns, freed on every path.
struct TableDefOwner {
  MdbTableDef* table = nullptr;
  ~TableDefOwner() {
    if (table) mdb_free_tabledef(table);
  }
};

MdbTableDef* ReadTable(MdbHandle* mdb, const std::string& file, const std::string& name) {
  MdbCatalogEntry* entry = EntryOf(mdb, name, MDB_TABLE);
  if (!entry) {
    throw VbError(ado::kErrUnknownTable,
                  "Die Tabelle '" + name + "' gibt es in der Access-Datei '" + file + "' nicht",
                  kSource);
  }
  MdbTableDef* table = mdb_read_table(entry);
  if (!table) Fail(file, "ist beschädigt: die Tabelle '" + name + "' kann nicht gelesen werden");
  if (!mdb_read_columns(table)) {
    mdb_free_tabledef(table);
    Fail(file, "ist beschädigt: die Spalten der Tabelle '" + name + "' fehlen");
  }
  return table;
}

JetColumn DescribeColumn(MdbHandle* mdb, const std::string& file, const std::string& table,
                         MdbColumn* col) {
  JetColumn j;
  j.mdbType = col->col_type;
  j.scale = col->col_scale;
  j.precision = col->col_prec;
  ado::ColumnInfo& c = j.info;
  c.name = col->name;
  c.baseTable = table;
  c.baseColumn = col->name;
  c.autoIncrement = col->is_long_auto != 0;
  switch (col->col_type) {
    case MDB_BOOL:
      c.type = ado::adBoolean, c.definedSize = 2, c.typeName = "YESNO";
      c.nullable = false;
      break;
    case MDB_BYTE:
      c.type = ado::adUnsignedTinyInt, c.definedSize = 1, c.precision = 3, c.typeName = "BYTE";
      break;
    case MDB_INT:
      c.type = ado::adSmallInt, c.definedSize = 2, c.precision = 5, c.typeName = "SHORT";
      break;
    case MDB_LONGINT:
      c.type = ado::adInteger, c.definedSize = 4, c.precision = 10;
      c.typeName = c.autoIncrement ? "COUNTER" : "LONG";
      break;
    case MDB_COMPLEX:
      // An .accdb multi-value or attachment column: its value is the key of
      // its rows in a hidden table, a long integer.
      c.type = ado::adInteger, c.definedSize = 4, c.precision = 10, c.typeName = "COMPLEX";
      break;
    case MDB_FLOAT:
      c.type = ado::adSingle, c.definedSize = 4, c.precision = 7, c.typeName = "SINGLE";
      break;
    case MDB_DOUBLE:
      c.type = ado::adDouble, c.definedSize = 8, c.precision = 15, c.typeName = "DOUBLE";
      break;
    case MDB_MONEY:
      c.type = ado::adCurrency, c.definedSize = 8, c.precision = 19, c.typeName = "CURRENCY";
      break;
    case MDB_DATETIME:
      c.type = ado::adDate, c.definedSize = 8, c.typeName = "DATETIME";
      break;
    case MDB_REPID:
      c.type = ado::adGUID, c.definedSize = 16, c.typeName = "GUID";
      break;
    case MDB_NUMERIC:
      c.type = ado::adNumeric, c.definedSize = 19, c.typeName = "DECIMAL";
      c.precision = static_cast<std::uint8_t>(col->col_prec);
      c.numericScale = static_cast<std::uint8_t>(col->col_scale);
      break;
    case MDB_TEXT:
      c.type = ado::adVarWChar, c.typeName = "VARCHAR";
      // Jet 4 and ACE count the bytes of UCS-2 text.
      c.definedSize = IS_JET3(mdb) ? col->col_size : col->col_size / 2;
      break;
    case MDB_MEMO:
      c.type = ado::adLongVarWChar, c.definedSize = 536870910, c.typeName = "LONGTEXT";
      break;
    case MDB_BINARY:
      c.type = ado::adVarBinary, c.definedSize = col->col_size, c.typeName = "VARBINARY";
      break;
    case MDB_OLE:
      c.type = ado::adLongVarBinary, c.definedSize = 1073741823, c.typeName = "LONGBINARY";
      break;
    default:
      Fail(file, "enthält in der Tabelle '" + table + "' die Spalte '" + c.name +
                     "' mit dem unbekannten Feldtyp " + std::to_string(col->col_type));
  }
  return j;
}

std::vector<JetColumn> DescribeColumns(MdbHandle* mdb, const std::string& file,
                                       MdbTableDef* table) {
  std::vector<JetColumn> columns;
  for (unsigned i = 0; i < table->num_cols; ++i) {
    auto* col = static_cast<MdbColumn*>(g_ptr_array_index(table->columns, i));
    columns.push_back(DescribeColumn(mdb, file, table->name, col));
  }
  return columns;
}

MdbHandle* OpenHandle(const std::string& file) {
  struct stat st {};
  if (::stat(file.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) {
    Fail(file,
         "wurde nicht gefunden (Access-Dateien werden unter Linux nur gelesen, nicht angelegt)");
  }
  if (::access(file.c_str(), R_OK) != 0) Fail(file, "kann nicht gelesen werden");
  MdbHandle* mdb = mdb_open(file.c_str(), MDB_NOFLAGS);
  if (!mdb) Fail(file, "ist keine Access-Datenbank oder hat eine unbekannte Jet-Version");
  const auto page = static_cast<off_t>(mdb->fmt->pg_size);
  if (st.st_size < 2 * page || st.st_size % page != 0) {
    mdb_close(mdb);
    Fail(file, "ist unvollständig: ihre Länge (" + std::to_string(st.st_size) +
                   " Bytes) ist kein Vielfaches der Seitengröße " + std::to_string(page));
  }
  if (!mdb_read_catalog(mdb, MDB_ANY)) {
    mdb_close(mdb);
    Fail(file, "ist beschädigt: ihr Katalog kann nicht gelesen werden");
  }
  mdb_set_date_fmt(mdb, "%Y-%m-%d %H:%M:%S");
  return mdb;
}

MdbHandle* M(void* handle) {
  return static_cast<MdbHandle*>(handle);
}

}  // namespace

MdbDatabase::MdbDatabase(std::string file) : file_(std::move(file)) {
  mdb_ = OpenHandle(file_);
}

MdbDatabase::~MdbDatabase() {
  mdb_close(M(mdb_));
}

bool MdbDatabase::jet3() const {
  return IS_JET3(M(mdb_));
}

std::vector<CatalogueEntry> MdbDatabase::Catalogue() const {
  std::vector<CatalogueEntry> out;
  for (unsigned i = 0; i < M(mdb_)->num_catalog; ++i) {
    auto* e = static_cast<MdbCatalogEntry*>(g_ptr_array_index(M(mdb_)->catalog, i));
    const auto flags = static_cast<unsigned>(e->flags);
    std::string name = e->object_name;
    if (e->object_type == MDB_TABLE) {
      std::string type = (flags & kJetSystemFlag)      ? "SYSTEM TABLE"
                         : (flags & kAccessSystemFlag) ? "ACCESS TABLE"
                                                       : "TABLE";
      out.push_back({std::move(name), std::move(type)});
    } else if (e->object_type == MDB_QUERY && !name.starts_with("~")) {
      const unsigned kind = flags & kQueryKindMask;
      if (kind == 0x00 || kind == 0x10 || kind == 0x80) out.push_back({std::move(name), "VIEW"});
    }
  }
  return out;
}

std::optional<CatalogueEntry> MdbDatabase::Find(const std::string& name) const {
  auto entries = Catalogue();
  for (auto& e : entries)
    if (KeyEquals(e.name, name)) return e;
  // The count of a job names a source table as an identifier ("Order
  // Details" as Order_Details); such a name finds the one table it stands for.
  const CatalogueEntry* found = nullptr;
  for (auto& e : entries) {
    if (!KeyEquals(MakeIdentifier(e.name), name)) continue;
    if (found) return std::nullopt;
    found = &e;
  }
  if (found) return *found;
  return std::nullopt;
}

std::vector<JetColumn> MdbDatabase::Columns(const std::string& table) const {
  TableDefOwner owner{ReadTable(M(mdb_), file_, table)};
  return DescribeColumns(M(mdb_), file_, owner.table);
}

std::vector<ado::IndexInfo> MdbDatabase::Indexes(const std::string& table) const {
  TableDefOwner owner{ReadTable(M(mdb_), file_, table)};
  std::vector<ado::IndexInfo> out;
  // libmdb fills the table's list of indexes (its answer is not that list).
  mdb_read_indices(owner.table);
  GPtrArray* indices = owner.table->indices;
  if (!indices) return out;
  for (unsigned i = 0; i < indices->len; ++i) {
    auto* idx = static_cast<MdbIndex*>(g_ptr_array_index(indices, i));
    // Type 1 is the primary key; 2 marks the hidden index of a relation.
    if (idx->index_type == 2) continue;
    ado::IndexInfo info;
    info.name = idx->name;
    info.primaryKey = idx->index_type == 1;
    info.unique = info.primaryKey || (idx->flags & MDB_IDX_UNIQUE);
    info.ignoreNulls = (idx->flags & MDB_IDX_IGNORENULLS) != 0;
    for (unsigned k = 0; k < idx->num_keys && k < MDB_MAX_IDX_COLS; ++k) {
      int n = idx->key_col_num[k];
      if (n < 1 || static_cast<unsigned>(n) > owner.table->num_cols) continue;
      auto* col = static_cast<MdbColumn*>(g_ptr_array_index(owner.table->columns, n - 1));
      info.columns.emplace_back(col->name);
    }
    out.push_back(std::move(info));
  }
  return out;
}

std::vector<MdbDatabase::QueryRow> MdbDatabase::QueryRows(const std::string& query) const {
  MdbCatalogEntry* entry = EntryOf(M(mdb_), query, MDB_QUERY);
  if (!entry) {
    throw VbError(ado::kErrUnknownTable,
                  "Die Abfrage '" + query + "' gibt es in der Access-Datei '" + file_ + "' nicht",
                  kSource);
  }
  // The query's id is the object id of its entry in MSysObjects, which
  // libmdb does not keep; its rows in MSysQueries are found by that id, so
  // the id comes from MSysObjects by the query's name.
  std::int64_t id = 0;
  bool found = false;
  {
    MdbRowReader objects(*this, "MSysObjects");
    std::size_t idCol = 0, nameCol = 0, typeCol = 0;
    for (std::size_t i = 0; i < objects.columns().size(); ++i) {
      const auto& n = objects.columns()[i].info.name;
      if (n == "Id") idCol = i;
      if (n == "Name") nameCol = i;
      if (n == "Type") typeCol = i;
    }
    while (objects.Next()) {
      // Type 5 marks a query in MSysObjects.
      if (objects.Value(typeCol).integer != 5) continue;
      if (objects.Value(nameCol).bytes != entry->object_name) continue;
      id = objects.Value(idCol).integer;
      found = true;
      break;
    }
  }
  if (!found) Fail(file_, "ist beschädigt: die Abfrage '" + query + "' fehlt in MSysObjects");
  std::vector<QueryRow> rows;
  MdbRowReader queries(*this, "MSysQueries");
  std::size_t cols[6] = {};
  const char* names[6] = {"ObjectId", "Attribute", "Name1", "Name2", "Expression", "Flag"};
  for (std::size_t i = 0; i < queries.columns().size(); ++i)
    for (std::size_t k = 0; k < 6; ++k)
      if (queries.columns()[i].info.name == names[k]) cols[k] = i;
  while (queries.Next()) {
    if (queries.Value(cols[0]).integer != id) continue;
    QueryRow r;
    r.attribute = static_cast<int>(queries.Value(cols[1]).integer);
    r.name1 = queries.Value(cols[2]).bytes;
    r.name2 = queries.Value(cols[3]).bytes;
    r.expression = queries.Value(cols[4]).bytes;
    r.flag = static_cast<int>(queries.Value(cols[5]).integer);
    rows.push_back(std::move(r));
  }
  return rows;
}

MdbRowReader::MdbRowReader(const MdbDatabase& database, const std::string& table)
    : file_(database.file()) {
  // Owned locally until the reader is complete, so that a failure frees both.
  std::unique_ptr<MdbHandle, void (*)(MdbHandle*)> handle(OpenHandle(file_), mdb_close);
  TableDefOwner owner{ReadTable(handle.get(), file_, table)};
  columns_ = DescribeColumns(handle.get(), file_, owner.table);
  mdb_ = handle.release();
  table_ = owner.table;
  owner.table = nullptr;
  bound_.resize(columns_.size());
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const int type = columns_[i].mdbType;
    if (type != MDB_BOOL && type != MDB_OLE) continue;
    // libmdb writes its boolean text there, or the 12-byte header of an OLE
    // value, through which it then reads the value a page at a time.
    bound_[i].assign(std::max<std::size_t>(MDB_BIND_SIZE, 2 * M(mdb_)->fmt->pg_size), '\0');
    mdb_bind_column(table_, static_cast<int>(i) + 1, bound_[i].data(), nullptr);
  }
  mdb_rewind_table(table_);
}

MdbRowReader::~MdbRowReader() {
  mdb_free_tabledef(table_);
  mdb_close(M(mdb_));
}

bool MdbRowReader::Next() {
  if (!mdb_fetch_row(table_)) {
    if (row_number_ != static_cast<std::int64_t>(table_->num_rows)) {
      Fail(file_, "ist beschädigt: die Tabelle '" + std::string(table_->name) + "' hat " +
                      std::to_string(table_->num_rows) + " Zeilen, lesbar sind " +
                      std::to_string(row_number_));
    }
    return false;
  }
  ++row_number_;
  return true;
}

JetValue MdbRowReader::Value(std::size_t i) const {
  assert(i < columns_.size());
  auto* col = static_cast<MdbColumn*>(g_ptr_array_index(table_->columns, i));
  JetValue v;
  const int type = columns_[i].mdbType;
  if (type == MDB_BOOL) {
    v.kind = JetValue::Kind::kInteger;
    v.integer = std::strcmp(bound_[i].data(), M(mdb_)->boolean_true_value) == 0 ? 1 : 0;
    return v;
  }
  const int len = col->cur_value_len;
  if (len <= 0) return v;  // NULL (and a zero-length text, which libmdb cannot tell apart)
  const int start = col->cur_value_start;
  const unsigned char* p = M(mdb_)->pg_buf + start;
  auto fixed = [&](int need) {
    if (len < need) {
      Fail(file_, "ist beschädigt: Zeile " + std::to_string(row_number_) + " der Tabelle '" +
                      table_->name + "', Spalte '" + col->name + "'");
    }
  };
  switch (type) {
    case MDB_BYTE:
      fixed(1), v.kind = JetValue::Kind::kInteger, v.integer = p[0];
      break;
    case MDB_INT:
      fixed(2), v.kind = JetValue::Kind::kInteger, v.integer = Le(p, 2);
      break;
    case MDB_LONGINT:
    case MDB_COMPLEX:
      fixed(4), v.kind = JetValue::Kind::kInteger, v.integer = Le(p, 4);
      break;
    case MDB_FLOAT:
      fixed(4), v.kind = JetValue::Kind::kReal, v.real = LeSingle(p);
      break;
    case MDB_DOUBLE:
    case MDB_DATETIME:
      fixed(8), v.kind = JetValue::Kind::kReal, v.real = LeDouble(p);
      break;
    case MDB_MONEY:
      fixed(8), v.kind = JetValue::Kind::kReal, v.real = static_cast<double>(Le(p, 8)) / 10000.0;
      break;
    case MDB_REPID:
      fixed(16), v.kind = JetValue::Kind::kText;
      v.bytes = TakeGString(mdb_col_to_string(M(mdb_), M(mdb_)->pg_buf, start, MDB_REPID, len));
      break;
    case MDB_NUMERIC:
      fixed(17), v.kind = JetValue::Kind::kText;
      v.bytes = TakeGString(mdb_numeric_to_string(M(mdb_), start, col->col_scale, col->col_prec));
      break;
    case MDB_TEXT: {
      // UCS-2 (possibly compressed) or the code page of Jet 3, as UTF-8: at
      // most three bytes for each byte of the stored text.
      std::string text(static_cast<std::size_t>(len) * 3 + 16, '\0');
      int n = mdb_unicode2ascii(M(mdb_), reinterpret_cast<const char*>(p),
                                static_cast<std::size_t>(len), text.data(), text.size());
      text.resize(static_cast<std::size_t>(std::max(n, 0)));
      v.kind = JetValue::Kind::kText, v.bytes = std::move(text);
      break;
    }
    case MDB_MEMO: {
      fixed(MDB_MEMO_OVERHEAD);
      // libmdb converts a memo into a buffer of its bind size: make it large
      // enough for the whole value in UTF-8.
      const auto memoLen = static_cast<std::size_t>(Le(p, 4) & 0x3FFFFFFF);
      const std::size_t saved = M(mdb_)->bind_size;
      M(mdb_)->bind_size = std::max<std::size_t>(saved, memoLen * 3 + 16);
      v.bytes = TakeGString(mdb_col_to_string(M(mdb_), M(mdb_)->pg_buf, start, MDB_MEMO, len));
      M(mdb_)->bind_size = saved;
      v.kind = JetValue::Kind::kText;
      break;
    }
    case MDB_BINARY:
      v.kind = JetValue::Kind::kBlob;
      v.bytes.assign(reinterpret_cast<const char*>(p), static_cast<std::size_t>(len));
      break;
    case MDB_OLE: {
      fixed(MDB_MEMO_OVERHEAD);
      std::size_t size = 0;
      void* data = mdb_ole_read_full(M(mdb_), col, &size);
      v.kind = JetValue::Kind::kBlob;
      if (data) v.bytes.assign(static_cast<const char*>(data), size);
      std::free(data);
      break;
    }
    default:
      assert(false && "column types are checked when the columns are described");
  }
  return v;
}

}  // namespace ketrova::access_provider
