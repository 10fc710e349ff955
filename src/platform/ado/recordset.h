// Recordset: ADO's Recordset. Create it with std::make_shared.
//
// Opened on a connection, it streams rows from a provider cursor in blocks as
// the caller moves; it never reads the whole result at open. Opened to write
// through (a lock type above adLockReadOnly) on a provider that can prepare
// without running, it only prepares and checks its statement; the statement
// runs when something asks for rows (EOF, BOF, RecordCount, a value, a move),
// and AddNew alone never runs it. Opened with a lock
// type above adLockReadOnly on a single-table SELECT it is updatable: AddNew,
// field assignment and Update/UpdateBatch become INSERT or UPDATE statements on
// the base table with bound parameters; an UPDATE finds its row by the row's
// own identity where the store has one (read with each row, not a field), else
// by the primary key, else by all original values. With
// adLockBatchOptimistic, Update only keeps the change and UpdateBatch sends it;
// with the other lock types Update sends it at once.
//
// Without a connection it is the in-memory record set: Fields.Append defines
// the columns, Open with no source opens it, AddNew/Update keep the rows.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ado/connection.h"
#include "platform/ado/enums.h"
#include "platform/ado/fields.h"
#include "platform/ado/provider.h"
#include "support/object.h"

namespace ketrova::ado {

class Recordset : public Object {
 public:
  Recordset();
  ~Recordset() override;
  std::string TypeName() const override { return "Recordset"; }

  // `source`: SQL text, or Missing/Empty for the in-memory record set.
  // `activeConnection`: a Connection object, a connection string, or Missing to
  // use ActiveConnection. Raises 3705 when already open.
  void Open(const Variant& source = Variant::Missing(),
            const Variant& activeConnection = Variant::Missing(),
            int cursorType = adOpenUnspecified, int lockType = adLockUnspecified, int options = -1);
  void Close();
  ObjectStateEnum State() const { return open_ ? adStateOpen : adStateClosed; }
  const std::string& Source() const { return source_; }
  void SetSource(std::string source) { source_ = std::move(source); }

  ConnectionPtr ActiveConnection() const { return connection_; }
  void SetActiveConnection(ConnectionPtr connection);

  std::int32_t MaxRecords() const { return maxRecords_; }
  void SetMaxRecords(std::int32_t n);
  CursorTypeEnum CursorType() const { return cursorType_; }
  void SetCursorType(int type) { cursorType_ = static_cast<CursorTypeEnum>(type); }
  LockTypeEnum LockType() const { return lockType_; }
  void SetLockType(int type) { lockType_ = static_cast<LockTypeEnum>(type); }

  // ADO's EOF and BOF (EOF is a macro of the C library, hence the spelling).
  bool Eof();
  bool Bof();
  void MoveFirst();
  void MoveNext();
  void MoveLast();
  void MovePrevious();
  // -1 for a forward-only or dynamic cursor; otherwise the number of records,
  // which reads the rest of the result.
  std::int32_t RecordCount();

  Fields& GetFields() { return *fields_; }
  std::shared_ptr<Fields> FieldsPtr() const { return fields_; }

  void AddNew();
  void Update();
  void UpdateBatch(int affectRecords = adAffectAll);
  void CancelUpdate();
  EditModeEnum EditMode() const { return editMode_; }

  // For Connection: opens over a cursor that a statement already produced.
  void OpenOnCursor(ConnectionPtr connection, std::string source, std::unique_ptr<Cursor> cursor);
  // For Connection.OpenSchema: opens an in-memory record set with these rows.
  void OpenInMemory(const std::vector<ColumnInfo>& columns, std::vector<Row> rows);

  // The values of the current record, field by field, into `values` (what
  // each Field's Value answers); its elements are assigned, so that texts
  // already there lend their room. Raises as Value does.
  void CurrentValues(std::vector<Variant>& values);

  // Used by Field.
  Variant FieldValue(std::size_t index);
  Variant FieldOriginalValue(std::size_t index);
  void SetFieldValue(std::size_t index, Variant value);

 private:
  struct Record {
    Row values;
    Row original;  // the values as read, once the record is changed; else empty
    std::vector<bool> changed;
    bool isNew = false;    // not yet in the store
    bool pending = false;  // changed and not yet sent
  };
  struct Target {
    std::string table;                // base table as the store spells it
    std::vector<int> tableColumn;     // record set column -> base column index, -1 none
    std::vector<ColumnInfo> columns;  // base table columns
    bool hasKey = false;
    // What it was resolved for: a statement on the same table with the same
    // result columns, on the same connection with no change of shape since,
    // resolves to the same target.
    std::weak_ptr<Connection> connection;
    std::uint64_t shapeGeneration = 0;
    std::string source;  // the last statement it served
    std::string named;   // the table as that statement names it
    std::vector<std::string> resultColumns;
    // The INSERT last built, by the record set columns it sets.
    std::vector<std::size_t> insertColumns;
    std::string insertSql;
    // The UPDATE by row identity last built, by the columns it sets.
    std::vector<std::size_t> updateColumns;
    std::string updateCondition;
    std::string updateSql;
  };

  void CheckOpen() const;
  Record& Current();
  bool FetchMore();
  // Runs the statement that an open only prepared.
  void RunPending();
  // Forgets the rows well behind the current one while the result streams.
  void DropPassedRows();
  // Runs the statement again and moves to the row at `row` of the result, for
  // a move back to rows that were dropped.
  void Requery(std::int64_t row);
  void FetchAll();
  void EnsureUpdatable() const;
  void WriteRecord(Record& record);
  void ResolveTarget();
  std::string Quote(const std::string& name) const;

  ConnectionPtr connection_;
  std::shared_ptr<Fields> fields_;
  std::string source_;
  bool open_ = false;
  bool inMemory_ = false;
  CursorTypeEnum cursorType_ = adOpenForwardOnly;
  LockTypeEnum lockType_ = adLockReadOnly;
  std::int32_t maxRecords_ = 0;

  std::vector<ColumnInfo> columns_;
  std::vector<int> attributes_;
  std::deque<Record> records_;
  std::unique_ptr<Cursor> cursor_;
  bool pendingRun_ = false;  // prepared at open, not run yet
  bool unread_ = false;      // AddNew came before the statement ran
  // The statement sent: Source, with the row identity added where it is read.
  std::string sent_;
  Provider::RowIdentity identity_;
  // The statement with the identity for the last source and provider.
  struct WithIdentity {
    std::string source;
    const Provider* provider = nullptr;
    std::string sent;  // empty when the identity is not read
    Provider::RowIdentity identity;
    std::string table;  // the single table of the source; empty for none
    // Where the literal the source ends with ("... = 5") begins, in the
    // source and in `sent`; npos where it does not end so.
    std::size_t literalAt = std::string::npos;
    std::size_t sentLiteralAt = std::string::npos;
  } withIdentity_;
  std::shared_ptr<Provider> provider_;  // keeps the cursor's provider alive
  std::int64_t position_ = 0;           // index into records_; -1 is BOF, size() is EOF
  // Rows of the result before records_[0]: a walk forward keeps only a window
  // of the rows behind it, so that memory does not grow with the result.
  std::int64_t dropped_ = 0;
  EditModeEnum editMode_ = adEditNone;
  std::shared_ptr<Target> target_;
  // The target of the last open, kept over Close: a record set opened again
  // on the same statement (once per record) need not resolve it again.
  std::shared_ptr<Target> lastTarget_;
  // What the last open to write through found, kept over Close: opened again
  // on the same statement, prepared as then (the provider answers the same
  // description), with the same target and fields untouched since, the
  // record set has the same columns and fields (a record loop's target).
  struct Reopen {
    bool valid = false;
    std::shared_ptr<const std::vector<ColumnInfo>> described;
    const Provider* provider = nullptr;
    std::string identity;  // the identity column read
    LockTypeEnum lockType = adLockReadOnly;
    std::vector<ColumnInfo> columns;  // while closed
    std::uint64_t fieldsVersion = 0;
  } reopen_;
  bool Reopened(const std::shared_ptr<const std::vector<ColumnInfo>>& described);
  // The storage of the last record before a Close, for the next AddNew: a
  // record loop opens its target, adds one record and closes it per record.
  Record spare_;
  // WriteRecord's lists, kept for their room: it runs once per record.
  std::vector<std::size_t> writeSet_;
  std::vector<Variant> writeParams_;
};

}  // namespace ketrova::ado
