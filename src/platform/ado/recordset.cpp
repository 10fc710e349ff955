#include "platform/ado/recordset.h"

#include <algorithm>
#include <cassert>
#include <cctype>
#include <utility>

#include "platform/ado/ado_errors.h"
#include "platform/ado/sql_tokens.h"
#include "support/collection.h"
#include "support/vb_error.h"

namespace ketrova::ado {
namespace {

constexpr std::size_t kBlockRows = 64;

// Asserts what the moves rely on: BOF is -1, EOF one past the rows read, the
// rows let go (only of a result read from a store) lie before them, and a
// record has no changed flags (a row as read) or one per column.
template <typename Records>
void CheckPosition(std::int64_t position, std::int64_t dropped, bool inMemory,
                   const Records& records, std::size_t columns) {
  assert(position >= -1 && position <= static_cast<std::int64_t>(records.size()));
  assert(dropped >= 0 && (dropped == 0 || !inMemory));
  assert(records.empty() || records.back().changed.empty() ||
         records.back().changed.size() == columns);
  (void)position, (void)dropped, (void)inMemory, (void)records, (void)columns;
}

[[noreturn]] void NoCurrentRecord() {
  ThrowAdoError(AdoError::kNoCurrentRecord, "ADODB.Recordset");
}

[[noreturn]] void NotUpdatable() {
  ThrowAdoError(AdoError::kNotUpdatable, "ADODB.Recordset");
}

// A name may be joined by "." (owner.table, file.csv) and "$" (Tabelle1$).
bool JoinsName(const SqlToken& t) {
  return t.kind == SqlTokenKind::kWord || t.Is('.') || t.Is('$');
}

// Reads an identifier ([x], "x", `x` or a word) at `i`; empty when there is none.
std::string ReadIdentifier(std::string_view s, std::size_t& i) {
  std::size_t p = i;
  SqlToken t;
  do {
    if (p >= s.size()) return {};
    i = p;
    t = NextSqlToken(s, p);
  } while (t.kind == SqlTokenKind::kSpace);
  if (t.kind == SqlTokenKind::kBracketed || t.kind == SqlTokenKind::kQuoted) {
    if (!t.closed) return {};
    std::string name = t.Content();
    i = p;
    // The text driver's `folder`\file.TXT names one table: folder and file.
    if (t.text[0] == '`' && i < s.size() && s[i] == '\\') {
      std::size_t start = i;
      while (i < s.size() && !std::isspace(static_cast<unsigned char>(s[i]))) ++i;
      name += std::string(s.substr(start, i - start));
    }
    return name;
  }
  std::size_t start = i;
  while (JoinsName(t)) {
    i = p;
    if (p >= s.size()) break;
    t = NextSqlToken(s, p);
  }
  return std::string(s.substr(start, i - start));
}

// Position of a keyword at top level (outside quotes, brackets, parentheses).
std::size_t FindKeyword(std::string_view s, std::string_view keyword, std::size_t from = 0) {
  int depth = 0;
  for (std::size_t i = from; i < s.size();) {
    std::size_t start = i;
    SqlToken t = NextSqlToken(s, i);
    if (t.Is('('))
      ++depth;
    else if (t.Is(')'))
      --depth;
    else if (depth == 0 && t.IsWord(keyword) &&
             (start == 0 || (s[start - 1] != '.' && s[start - 1] != '$')) &&
             (i == s.size() || (s[i] != '.' && s[i] != '$')))
      return start;
  }
  return std::string_view::npos;
}

// The base table of "SELECT list FROM table [alias] [WHERE ...] [ORDER BY ...]";
// empty when the statement is anything else.
std::string SingleTableOf(std::string_view sql) {
  std::size_t i = sql.find_first_not_of(" \t\r\n");
  if (i == std::string_view::npos || sql.size() - i < 6 || !KeyEquals(sql.substr(i, 6), "SELECT"))
    return {};
  std::size_t from = FindKeyword(sql, "FROM", i + 6);
  if (from == std::string_view::npos) return {};
  std::string_view list = sql.substr(i + 6, from - i - 6);
  if (list.find('(') != std::string_view::npos ||
      FindKeyword(list, "DISTINCT") != std::string_view::npos)
    return {};
  std::size_t p = from + 4;
  std::string table = ReadIdentifier(sql, p);
  if (table.empty()) return {};
  std::string_view rest = sql.substr(p);
  std::size_t where = FindKeyword(rest, "WHERE");
  std::size_t order = FindKeyword(rest, "ORDER");
  std::size_t head = std::min(where, order);
  std::string_view between = rest.substr(0, std::min(head, rest.size()));
  if (between.find(',') != std::string_view::npos ||
      FindKeyword(between, "JOIN") != std::string_view::npos ||
      FindKeyword(rest, "GROUP") != std::string_view::npos ||
      FindKeyword(rest, "UNION") != std::string_view::npos)
    return {};
  // At most an alias before WHERE/ORDER.
  std::size_t q = 0;
  std::string alias = ReadIdentifier(between, q);
  if (!alias.empty() && KeyEquals(alias, "AS")) alias = ReadIdentifier(between, q);
  if (between.substr(q).find_first_not_of(" \t\r\n;") != std::string_view::npos) return {};
  return table;
}

// Where the literal begins that a statement ends with after "=": a whole
// number or a string in quotes ("... WHERE [Nr] = 5", "... = 'A''B'"); npos
// when it ends otherwise. Only the ending is looked at.
std::size_t TrailingLiteralAt(std::string_view sql) {
  std::size_t end = sql.find_last_not_of(" \t\r\n;");
  if (end == std::string_view::npos || end == 0) return std::string_view::npos;
  std::size_t start = end;
  if (sql[end] == '\'') {
    start = StringStartBefore(sql, end);
    if (start == std::string_view::npos) return std::string_view::npos;
    // Read forward, the literal is one string that runs to its end.
    std::size_t i = start;
    SqlToken t = NextSqlToken(sql, i);
    if (t.kind != SqlTokenKind::kString || !t.closed || i != end + 1) return std::string_view::npos;
  } else {
    while (start > 0 && std::isdigit(static_cast<unsigned char>(sql[start - 1]))) --start;
    if (!std::isdigit(static_cast<unsigned char>(sql[start]))) return std::string_view::npos;
    if (start > 0 && std::isdigit(static_cast<unsigned char>(sql[start - 1])))
      return std::string_view::npos;
  }
  std::size_t eq = start == 0 ? std::string_view::npos : sql.find_last_not_of(" \t\r\n", start - 1);
  if (eq == std::string_view::npos || sql[eq] != '=') return std::string_view::npos;
  return start;
}

// Whether a token of `sql`, read from its start, begins at `at`.
bool TokenStartsAt(std::string_view sql, std::size_t at) {
  std::size_t i = 0;
  while (i < at) NextSqlToken(sql, i);
  return i == at;
}

bool IsLongOrBinary(DataTypeEnum t) {
  return t == adLongVarBinary || t == adVarBinary || t == adBinary || t == adLongVarChar ||
         t == adLongVarWChar;
}

int FieldAttributes(const ColumnInfo& c, bool updatable) {
  int a = 0;
  if (updatable)
    a |= adFldUpdatable;
  else
    a |= adFldUnknownUpdatable;
  if (c.nullable) a |= adFldIsNullable | adFldMayBeNull;
  switch (c.type) {
    case adChar:
    case adWChar:
    case adBinary:
    case adSmallInt:
    case adInteger:
    case adTinyInt:
    case adUnsignedTinyInt:
    case adBigInt:
    case adSingle:
    case adDouble:
    case adBoolean:
    case adDBDate:
    case adDBTime:
    case adDBTimeStamp:
    case adNumeric:
    case adCurrency:
    case adGUID:
      a |= adFldFixed;
      break;
    default:
      break;
  }
  if (IsLongOrBinary(c.type) && c.type != adBinary && c.type != adVarBinary) a |= adFldLong;
  if (c.keyColumn) a |= adFldKeyColumn;
  return a;
}

}  // namespace

Recordset::Recordset() : fields_(std::make_shared<Fields>(this)) {}

Recordset::~Recordset() {
  cursor_.reset();
  fields_->Detach();
}

void Recordset::SetActiveConnection(ConnectionPtr connection) {
  if (open_) ThrowAdoError(AdoError::kObjectOpen, "ADODB.Recordset");
  connection_ = std::move(connection);
}

void Recordset::SetMaxRecords(std::int32_t n) {
  if (open_) ThrowAdoError(AdoError::kObjectOpen, "ADODB.Recordset");
  maxRecords_ = std::max(n, 0);
}

void Recordset::Open(const Variant& source, const Variant& activeConnection, int cursorType,
                     int lockType, int options) {
  if (open_) ThrowAdoError(AdoError::kObjectOpen, "ADODB.Recordset");
  if (!activeConnection.IsMissing() && !activeConnection.IsEmpty() && !activeConnection.IsNull()) {
    if (activeConnection.IsObject()) {
      auto c = std::dynamic_pointer_cast<Connection>(activeConnection.AsObject());
      if (!c) ThrowAdoError(AdoError::kArguments, "ADODB.Recordset");
      connection_ = c;
    } else {
      auto c = std::make_shared<Connection>();
      c->Open(activeConnection.ToText());
      connection_ = c;
    }
  }
  if (cursorType != adOpenUnspecified) cursorType_ = static_cast<CursorTypeEnum>(cursorType);
  if (lockType != adLockUnspecified) lockType_ = static_cast<LockTypeEnum>(lockType);
  if (!source.IsMissing() && !source.IsEmpty() && !source.IsNull()) {
    // The same text again (once per record) is not copied again.
    if (!source.IsString())
      source_ = source.ToText();
    else if (source.AsString() != source_)
      source_ = source.AsString();
  }

  records_.clear();
  position_ = 0;
  dropped_ = 0;
  editMode_ = adEditNone;
  target_.reset();

  if (source_.empty() && (source.IsMissing() || source.IsEmpty())) {
    if (connection_ && fields_->Count() == 0)
      ThrowAdoError(AdoError::kArguments, "ADODB.Recordset");
    // The in-memory record set, over the appended fields.
    inMemory_ = true;
    reopen_.valid = false;
    columns_.clear();
    attributes_.clear();
    for (const auto& f : *fields_) {
      columns_.push_back(f->Info());
      attributes_.push_back(f->Attributes());
    }
    open_ = true;
    return;
  }
  if (!connection_) ThrowAdoError(AdoError::kObjectClosed, "ADODB.Recordset");
  provider_ = connection_->SharedProvider();
  if (IsDdlStatement(source_)) connection_->ForgetTableShapes();
  bool updatable = lockType_ > adLockReadOnly;
  // A record set to write through reads each row's own identity beside it,
  // where the store has one, so that an UPDATE finds exactly that row.
  const std::string* sent = &source_;
  identity_ = {};
  if (updatable) {
    // Worked out once for a text opened again and again (once per record),
    // and once for texts that differ only in the literal they end with (an
    // update by key): the text before the literal decides, and a literal is
    // one token that holds no keyword, comma or parenthesis.
    WithIdentity& w = withIdentity_;
    if (provider_.get() == w.provider && w.literalAt != std::string::npos && source_ != w.source &&
        source_.size() > w.literalAt &&
        source_.compare(0, w.literalAt, w.source, 0, w.literalAt) == 0 &&
        TrailingLiteralAt(source_) == w.literalAt) {
      if (!w.sent.empty()) w.sent.replace(w.sentLiteralAt, std::string::npos, source_, w.literalAt);
      w.source = source_;
    }
    if (source_ != w.source || provider_.get() != w.provider) {
      w = {source_, provider_.get(), {}, {}, SingleTableOf(source_)};
      w.literalAt = TrailingLiteralAt(source_);
      if (w.literalAt != std::string::npos && !TokenStartsAt(source_, w.literalAt))
        w.literalAt = std::string::npos;
      Provider::RowIdentity id = provider_->RowIdentityOf();
      std::size_t from = FindKeyword(source_, "FROM");
      if (!id.column.empty() && from != std::string::npos && !w.table.empty()) {
        w.identity = id;
        w.sent = source_.substr(0, from) + ", " + id.column + " " + source_.substr(from);
        if (w.literalAt != std::string::npos) {
          assert(from < w.literalAt);
          w.sentLiteralAt = w.literalAt + (w.sent.size() - source_.size());
        }
      }
    }
    if (!withIdentity_.sent.empty()) {
      identity_ = withIdentity_.identity;
      sent = &withIdentity_.sent;
    }
  }
  if (sent_ != *sent) sent_ = *sent;
  // A record set to write through is opened per record: its statement is
  // prepared and checked now, and runs only when something asks for rows.
  std::shared_ptr<const std::vector<ColumnInfo>> described;
  std::unique_ptr<Cursor> cursor;
  auto open = [&] {
    if (updatable) described = provider_->Prepare(sent_);
    if (!described || described->empty())
      cursor = provider_->Execute(sent_, {}, maxRecords_).cursor;
  };
  try {
    open();
  } catch (const VbError&) {
    // A table without the identity (a view, a table without rowid): the
    // statement as written, whose error is the open's if it has one.
    if (identity_.column.empty()) throw;
    identity_ = {};
    sent_ = source_;
    described.reset();
    open();
  }
  pendingRun_ = described && !described->empty();
  unread_ = false;
  if (pendingRun_ && Reopened(described)) return;
  reopen_.valid = false;
  if (pendingRun_) {
    columns_ = *described;
  } else {
    if (!cursor) {
      // A statement without a result leaves the record set closed, as in ADO.
      provider_.reset();
      return;
    }
    cursor_ = std::move(cursor);
    columns_ = cursor_->Columns();
  }
  // The identity is read with each row, behind its fields.
  if (!identity_.column.empty()) {
    assert(!columns_.empty());
    columns_.pop_back();
  }
  inMemory_ = false;
  if (updatable) {
    ResolveTarget();
    updatable = target_ != nullptr;
  }
  attributes_.clear();
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (target_ && target_->tableColumn[i] >= 0) {
      const ColumnInfo& base = target_->columns[static_cast<std::size_t>(target_->tableColumn[i])];
      columns_[i].keyColumn = base.keyColumn;
      columns_[i].autoIncrement = columns_[i].autoIncrement || base.autoIncrement;
      if (columns_[i].baseTable.empty()) columns_[i].baseTable = target_->table;
      if (columns_[i].baseColumn.empty()) columns_[i].baseColumn = base.name;
    }
    attributes_.push_back(FieldAttributes(columns_[i], updatable));
  }
  fields_->Reset(columns_, attributes_);
  open_ = true;
  if (pendingRun_ && target_) {
    reopen_.valid = true;
    reopen_.described = described;
    reopen_.provider = provider_.get();
    reopen_.identity = identity_.column;
    reopen_.lockType = lockType_;
  }
  if (!pendingRun_) FetchMore();
}

bool Recordset::Reopened(const std::shared_ptr<const std::vector<ColumnInfo>>& described) {
  // Everything the open derives from the description, the target and the
  // lock type is what the last open derived, and the fields kept aside at
  // its Close are still those.
  // An update by key opens another text per record on the same table, with
  // the same columns: the target resolved for the last text stands for it.
  Target* last = lastTarget_.get();
  if (!reopen_.valid || reopen_.columns.empty() || described != reopen_.described ||
      provider_.get() != reopen_.provider || lockType_ != reopen_.lockType ||
      fields_->Version() != reopen_.fieldsVersion || identity_.column != reopen_.identity ||
      !last || last->shapeGeneration != connection_->ShapeGeneration() ||
      last->connection.lock() != connection_)
    return false;
  if (last->source != source_) {
    assert(withIdentity_.source == source_);
    if (withIdentity_.table.empty() || last->named != withIdentity_.table) return false;
    last->source = source_;
  }
  columns_ = std::move(reopen_.columns);
  reopen_.columns.clear();
  target_ = lastTarget_;
  inMemory_ = false;
  fields_->Restore();
  open_ = true;
  return true;
}

void Recordset::OpenOnCursor(ConnectionPtr connection, std::string source,
                             std::unique_ptr<Cursor> cursor) {
  connection_ = std::move(connection);
  provider_ = connection_->SharedProvider();
  reopen_.valid = false;
  source_ = std::move(source);
  sent_ = source_;
  identity_ = {};
  cursorType_ = adOpenForwardOnly;
  lockType_ = adLockReadOnly;
  cursor_ = std::move(cursor);
  columns_ = cursor_->Columns();
  attributes_.clear();
  for (const auto& c : columns_) attributes_.push_back(FieldAttributes(c, false));
  fields_->Reset(columns_, attributes_);
  records_.clear();
  position_ = 0;
  dropped_ = 0;
  editMode_ = adEditNone;
  inMemory_ = false;
  open_ = true;
  FetchMore();
}

void Recordset::OpenInMemory(const std::vector<ColumnInfo>& columns, std::vector<Row> rows) {
  reopen_.valid = false;
  columns_ = columns;
  attributes_.clear();
  for (const auto& c : columns_) attributes_.push_back(FieldAttributes(c, true));
  fields_->Reset(columns_, attributes_);
  records_.clear();
  for (auto& r : rows) {
    Record rec;
    rec.values = std::move(r);
    records_.push_back(std::move(rec));
  }
  position_ = 0;
  dropped_ = 0;
  editMode_ = adEditNone;
  inMemory_ = true;
  cursorType_ = adOpenStatic;
  lockType_ = adLockBatchOptimistic;
  open_ = true;
}

void Recordset::Close() {
  if (!open_) ThrowAdoError(AdoError::kObjectClosed, "ADODB.Recordset");
  // Pending changes of a batch are thrown away, as ADO does on Close.
  cursor_.reset();
  pendingRun_ = false;
  provider_.reset();
  if (!records_.empty()) {
    spare_.values = std::move(records_.back().values);
    spare_.changed = std::move(records_.back().changed);
  }
  records_.clear();
  dropped_ = 0;
  open_ = false;
  editMode_ = adEditNone;
  target_.reset();
  if (!inMemory_) {
    fields_->Reset({}, {});
    // Kept for an open on the same statement (a record loop's next record).
    if (reopen_.valid) {
      reopen_.columns = std::move(columns_);
      reopen_.fieldsVersion = fields_->Version();
    }
    columns_.clear();
  }
}

void Recordset::CheckOpen() const {
  if (!open_) ThrowAdoError(AdoError::kObjectClosed, "ADODB.Recordset");
}

void Recordset::RunPending() {
  pendingRun_ = false;
  ExecuteResult result = provider_->Execute(sent_, {}, maxRecords_);
  cursor_ = std::move(result.cursor);
}

bool Recordset::FetchMore() {
  if (pendingRun_) RunPending();
  if (!cursor_) return false;
  DropPassedRows();
  // The first read takes one row, enough to answer EOF after an open; the
  // blocks follow when the caller moves on.
  std::size_t want = records_.empty() ? 1 : kBlockRows;
  if (maxRecords_ > 0) {
    std::size_t have = records_.size() + static_cast<std::size_t>(dropped_);
    if (have >= static_cast<std::size_t>(maxRecords_)) {
      cursor_.reset();
      return false;
    }
    want = std::min(want, static_cast<std::size_t>(maxRecords_) - have);
  }
  std::vector<Row> rows;
  std::size_t got = cursor_->Fetch(rows, want);
  assert(got <= want && rows.size() == got);
  for (auto& r : rows) {
    // A value per column, and the row's identity behind them when it is read.
    assert(r.size() == columns_.size() + (identity_.column.empty() ? 0 : 1));
    Record rec;
    rec.values = std::move(r);
    records_.push_back(std::move(rec));
  }
  // A finished result gives its statement back at once, so that a write on the
  // same connection does not wait behind an open read.
  if (got < want || (maxRecords_ > 0 && records_.size() + static_cast<std::size_t>(dropped_) >=
                                            static_cast<std::size_t>(maxRecords_)))
    cursor_.reset();
  CheckPosition(position_, dropped_, inMemory_, records_, columns_.size());
  return got > 0;
}

void Recordset::DropPassedRows() {
  // A window of blocks stays behind the current row for short moves back.
  constexpr std::int64_t kKeepBehind = 16 * kBlockRows;
  std::int64_t drop = position_ - kKeepBehind;
  if (inMemory_ || drop < static_cast<std::int64_t>(kBlockRows)) return;
  for (std::int64_t i = 0; i < drop; ++i) {
    const Record& r = records_[static_cast<std::size_t>(i)];
    if (r.pending || r.isNew) return;
  }
  records_.erase(records_.begin(), records_.begin() + drop);
  position_ -= drop;
  dropped_ += drop;
  CheckPosition(position_, dropped_, inMemory_, records_, columns_.size());
}

void Recordset::Requery(std::int64_t row) {
  cursor_.reset();
  pendingRun_ = false;
  unread_ = false;
  records_.clear();
  position_ = 0;
  dropped_ = 0;
  ExecuteResult result = provider_->Execute(sent_, {}, maxRecords_);
  cursor_ = std::move(result.cursor);
  FetchMore();
  while (dropped_ + position_ < row && !Eof()) ++position_;
  CheckPosition(position_, dropped_, inMemory_, records_, columns_.size());
}

void Recordset::FetchAll() {
  while ((cursor_ || pendingRun_) && FetchMore()) {
  }
}

bool Recordset::Eof() {
  CheckOpen();
  while (position_ >= static_cast<std::int64_t>(records_.size()) && (cursor_ || pendingRun_))
    if (!FetchMore()) break;
  return position_ >= static_cast<std::int64_t>(records_.size());
}

bool Recordset::Bof() {
  CheckOpen();
  if (position_ < 0) return true;
  return records_.empty() && Eof();
}

Recordset::Record& Recordset::Current() {
  // The position is checked where it moves; this runs for every value.
  if (Eof() || position_ < 0) NoCurrentRecord();
  return records_[static_cast<std::size_t>(position_)];
}

void Recordset::MoveFirst() {
  CheckOpen();
  if (editMode_ != adEditNone) Update();
  const bool pending =
      std::any_of(records_.begin(), records_.end(), [](const Record& r) { return r.pending; });
  if (dropped_ > 0 || (unread_ && !pending)) return Requery(0);
  position_ = 0;
}

void Recordset::MoveNext() {
  CheckOpen();
  if (editMode_ != adEditNone) Update();
  if (Eof()) NoCurrentRecord();
  ++position_;
  CheckPosition(position_, dropped_, inMemory_, records_, columns_.size());
}

void Recordset::MovePrevious() {
  CheckOpen();
  if (editMode_ != adEditNone) Update();
  if (position_ < 0) NoCurrentRecord();
  if (position_ == 0 && dropped_ > 0) return Requery(dropped_ - 1);
  --position_;
  CheckPosition(position_, dropped_, inMemory_, records_, columns_.size());
}

void Recordset::MoveLast() {
  CheckOpen();
  if (editMode_ != adEditNone) Update();
  FetchAll();
  position_ = static_cast<std::int64_t>(records_.size()) - 1;
  if (records_.empty()) position_ = 0;
}

std::int32_t Recordset::RecordCount() {
  CheckOpen();
  if (!inMemory_ && (cursorType_ == adOpenForwardOnly || cursorType_ == adOpenDynamic)) return -1;
  FetchAll();
  return static_cast<std::int32_t>(records_.size() + static_cast<std::size_t>(dropped_));
}

Variant Recordset::FieldValue(std::size_t index) {
  CheckOpen();
  Record& r = Current();
  return index < r.values.size() ? r.values[index] : Variant::Null();
}

void Recordset::CurrentValues(std::vector<Variant>& values) {
  CheckOpen();
  const Record& r = Current();
  const auto count = static_cast<std::size_t>(fields_->Count());
  values.resize(count);
  for (std::size_t i = 0; i < count; ++i)
    values[i] = i < r.values.size() ? r.values[i] : Variant::Null();
}

Variant Recordset::FieldOriginalValue(std::size_t index) {
  CheckOpen();
  Record& r = Current();
  if (r.isNew) return Variant::Null();
  const Row& row = r.original.empty() ? r.values : r.original;
  return index < row.size() ? row[index] : Variant::Null();
}

void Recordset::SetFieldValue(std::size_t index, Variant value) {
  CheckOpen();
  EnsureUpdatable();
  Record& r = Current();
  if (r.values.size() < columns_.size()) r.values.resize(columns_.size(), Variant::Null());
  if (r.changed.size() < columns_.size()) r.changed.resize(columns_.size(), false);
  // The values as read are kept only once a record changes.
  if (!r.isNew && r.original.empty()) r.original = r.values;
  r.values[index] = std::move(value);
  r.changed[index] = true;
  if (editMode_ == adEditNone) editMode_ = r.isNew ? adEditAdd : adEditInProgress;
}

void Recordset::EnsureUpdatable() const {
  if (inMemory_) return;
  if (lockType_ > adLockReadOnly && provider_) provider_->CheckWritable();
  if (lockType_ <= adLockReadOnly || !target_) NotUpdatable();
}

void Recordset::ResolveTarget() {
  target_.reset();
  if (!connection_) return;
  // The last target stands for a statement on the same table with the same
  // result columns while no table changed shape (an update by key opens a
  // new statement text per record).
  Target* last = lastTarget_.get();
  bool lastStands =
      last && last->connection.lock() == connection_ &&
      last->shapeGeneration == connection_->ShapeGeneration() &&
      std::equal(columns_.begin(), columns_.end(), last->resultColumns.begin(),
                 last->resultColumns.end(),
                 [](const ColumnInfo& c, const std::string& name) { return c.name == name; });
  if (lastStands && last->source == source_) {
    target_ = lastTarget_;
    return;
  }
  // Open worked the table out with the row identity.
  assert(withIdentity_.source == source_);
  const std::string& table = withIdentity_.table;
  if (table.empty()) return;
  if (lastStands && last->named == table) {
    last->source = source_;
    target_ = lastTarget_;
    return;
  }
  const std::vector<ColumnInfo>* base = nullptr;
  try {
    base = &connection_->BaseTableColumns(table);
  } catch (const VbError&) {
    return;
  }
  Target t;
  t.columns = *base;
  t.table = base->empty() || base->front().baseTable.empty() ? table : base->front().baseTable;
  for (const auto& c : columns_) {
    int found = -1;
    for (std::size_t k = 0; k < t.columns.size(); ++k)
      if (KeyEquals(t.columns[k].name, c.name)) found = static_cast<int>(k);
    t.tableColumn.push_back(found);
  }
  for (const auto& c : t.columns) t.hasKey = t.hasKey || c.keyColumn;
  t.connection = connection_;
  t.shapeGeneration = connection_->ShapeGeneration();
  t.source = source_;
  t.named = table;
  for (const auto& c : columns_) t.resultColumns.push_back(c.name);
  target_ = std::make_shared<Target>(std::move(t));
  lastTarget_ = target_;
}

std::string Recordset::Quote(const std::string& name) const {
  std::string q = provider_ ? provider_->IdentifierQuote() : "\"";
  std::string close = q == "[" ? "]" : q;
  return q + name + close;
}

void Recordset::AddNew() {
  CheckOpen();
  EnsureUpdatable();
  if (editMode_ != adEditNone) Update();
  // The engine opens a whole table per record only to add one: rows not read
  // yet are not read at all. The new record goes behind those already read.
  cursor_.reset();
  // A statement that never ran has rows nobody read; a move to the first
  // record reads them after all.
  unread_ = unread_ || pendingRun_;
  pendingRun_ = false;
  Record rec;
  rec.values = std::move(spare_.values);
  rec.values.assign(columns_.size(), Variant::Null());
  rec.changed = std::move(spare_.changed);
  rec.changed.assign(columns_.size(), false);
  rec.isNew = true;
  records_.push_back(std::move(rec));
  position_ = static_cast<std::int64_t>(records_.size()) - 1;
  editMode_ = adEditAdd;
}

void Recordset::Update() {
  CheckOpen();
  if (editMode_ == adEditNone) return;
  Record& r = Current();
  if (inMemory_) {
    r.original.clear();
    std::fill(r.changed.begin(), r.changed.end(), false);
    r.isNew = false;
    r.pending = false;
    editMode_ = adEditNone;
    return;
  }
  r.pending = true;
  editMode_ = adEditNone;
  if (lockType_ != adLockBatchOptimistic) WriteRecord(r);
}

void Recordset::UpdateBatch(int affectRecords) {
  CheckOpen();
  if (editMode_ != adEditNone) Update();
  if (inMemory_) return;
  if (affectRecords == adAffectCurrent) {
    Record& r = Current();
    if (r.pending) WriteRecord(r);
    return;
  }
  for (auto& r : records_)
    if (r.pending) WriteRecord(r);
}

void Recordset::CancelUpdate() {
  CheckOpen();
  if (editMode_ == adEditNone) return;
  Record& r = Current();
  if (editMode_ == adEditAdd && r.isNew && !r.pending) {
    records_.erase(records_.begin() + position_);
    position_ = std::max<std::int64_t>(0, static_cast<std::int64_t>(records_.size()) - 1);
  } else {
    if (r.isNew)
      r.values.assign(columns_.size(), Variant::Null());
    else if (!r.original.empty())
      r.values = r.original;
    r.original.clear();
    std::fill(r.changed.begin(), r.changed.end(), false);
  }
  editMode_ = adEditNone;
}

void Recordset::WriteRecord(Record& r) {
  if (!target_) NotUpdatable();
  Provider& provider = *provider_;
  Target& t = *target_;
  std::string sql;
  const std::string* text = &sql;  // the INSERT built last is not copied
  std::vector<Variant>& params = writeParams_;
  std::vector<std::size_t>& set = writeSet_;
  params.clear();
  set.clear();
  for (std::size_t i = 0; i < columns_.size(); ++i)
    if (i < r.changed.size() && r.changed[i] && t.tableColumn[i] >= 0) set.push_back(i);
  // The values as they stand where the record's first columns are all it
  // writes (an insert of every column): they need no copy.
  std::span<const Variant> values;

  if (r.isNew) {
    if (set.empty()) {
      sql = provider.Dialect() == "mysql" ? "INSERT INTO " + Quote(t.table) + " () VALUES ()"
                                          : "INSERT INTO " + Quote(t.table) + " DEFAULT VALUES";
    } else if (set == t.insertColumns && !t.insertSql.empty()) {
      text = &t.insertSql;
      if (set.back() + 1 == set.size() && set.size() <= r.values.size())
        values = std::span<const Variant>(r.values.data(), set.size());
      else
        for (std::size_t i : set) params.push_back(r.values[i]);
    } else {
      std::string names, marks;
      for (std::size_t i : set) {
        if (!names.empty()) {
          names += ", ";
          marks += ", ";
        }
        names += Quote(t.columns[static_cast<std::size_t>(t.tableColumn[i])].name);
        marks += "?";
        params.push_back(r.values[i]);
      }
      sql = "INSERT INTO " + Quote(t.table) + " (" + names + ") VALUES (" + marks + ")";
      t.insertColumns = set;
      t.insertSql = sql;
    }
  } else {
    if (set.empty()) {
      r.pending = false;
      return;
    }
    const Row& original = r.original.empty() ? r.values : r.original;
    // The row is found by its own identity where it was read with the row,
    // else by its key when every key column is in the record set, otherwise
    // by all original values that can be compared.
    const bool byIdentity = !identity_.column.empty() && original.size() > columns_.size();
    for (std::size_t i : set) params.push_back(r.values[i]);
    if (byIdentity && set == t.updateColumns && identity_.condition == t.updateCondition &&
        !t.updateSql.empty()) {
      // One text per set of columns: an update by key sends it per record.
      text = &t.updateSql;
      params.push_back(original.back());
    } else {
      sql = "UPDATE " + Quote(t.table) + " SET ";
      for (std::size_t n = 0; n < set.size(); ++n) {
        if (n) sql += ", ";
        sql += Quote(t.columns[static_cast<std::size_t>(t.tableColumn[set[n]])].name) + " = ?";
      }
    }
    if (byIdentity && text == &sql) {
      sql += " WHERE " + identity_.condition;
      params.push_back(original.back());
      t.updateColumns = set;
      t.updateCondition = identity_.condition;
      t.updateSql = sql;
    } else if (!byIdentity) {
      std::vector<std::size_t> where;
      bool keyComplete = t.hasKey;
      if (t.hasKey) {
        for (std::size_t k = 0; k < t.columns.size(); ++k) {
          if (!t.columns[k].keyColumn) continue;
          auto it = std::find(t.tableColumn.begin(), t.tableColumn.end(), static_cast<int>(k));
          if (it == t.tableColumn.end())
            keyComplete = false;
          else
            where.push_back(static_cast<std::size_t>(it - t.tableColumn.begin()));
        }
      }
      if (!keyComplete) {
        // A float read back rarely equals what the store compares it with
        // (MariaDB's FLOAT is single precision): floats are compared only
        // when nothing else is.
        where.clear();
        std::vector<std::size_t> floats;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
          if (t.tableColumn[i] < 0 || IsLongOrBinary(columns_[i].type)) continue;
          if (columns_[i].type == adSingle || columns_[i].type == adDouble)
            floats.push_back(i);
          else
            where.push_back(i);
        }
        if (where.empty()) where = floats;
      }
      sql += " WHERE ";
      for (std::size_t n = 0; n < where.size(); ++n) {
        if (n) sql += " AND ";
        std::size_t i = where[n];
        std::string name = Quote(t.columns[static_cast<std::size_t>(t.tableColumn[i])].name);
        if (original[i].IsNull() || original[i].IsEmpty()) {
          sql += name + " IS NULL";
        } else {
          sql += name + " = ?";
          params.push_back(original[i]);
        }
      }
    }
  }
  if (values.empty()) values = params;
  ExecuteResult result = provider.Execute(*text, values);
  params.clear();  // the copies go, the room stays
  if (!r.isNew && result.rowsAffected == 0)
    ThrowAdoError(AdoError::kRowNotFound, "ADODB.Recordset");
  r.original.clear();
  std::fill(r.changed.begin(), r.changed.end(), false);
  r.isNew = false;
  r.pending = false;
}

}  // namespace ketrova::ado
