// A Paradox table (.DB of Paradox 3 to 7) with its BLOb file (.MB), streamed
// block by block or read whole into memory, and written back whole.
//
// The header gives record size, header size, block size, record count, the
// field types and sizes, the field names and (from Paradox 4 on) the DOS code
// page; records are read block by block along the data blocks' chain. Field
// types read: A alpha, D date, S short, I long, $ money, N number, L
// logical, M memo, F formatted memo, B binary, O OLE, G graphic, T time,
// @ timestamp, + autoincrement, # BCD, Y bytes. Numbers are stored big-endian
// with the sign bit flipped (negative floats with every bit flipped); all
// bytes zero is Null. BLOb fields hold a leading part of the value and a
// pointer into the .MB file; the value comes whole from the .MB file
// where it does not fit the record. Text is converted from the code page to
// UTF-8.
//
// Writing keeps the header as read (the field list, names, sort order, code
// page, passwords absent) and sets the block count, record count, first and
// last block and the autoincrement value; records go into blocks numbered in
// file order, each BLOb that does not fit its record into a block of its own
// in a new .MB file. A keyed table's records are written in key order. The
// primary and secondary index files are not rewritten: the header's change
// counter is advanced and its "index update required" byte set, so that
// Paradox finds the indexes out of date and rebuilds them.
//
// Failures raise VbError kErrGeneral with a German text naming the file: not
// a Paradox table (an index file, an unknown version), encrypted, truncated,
// a broken block chain, a record count that differs from the header's, an
// unknown field type, a missing or damaged .MB file; kErrStatementRefused for
// a value that does not fit its field. Nothing is written to a file that was
// not read completely.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/ado/providers/xbase/table_file.h"

namespace ketrova::xbase_provider {

class ParadoxFile : public TableFile {
 public:
  // Reads the header only; the rows are streamed or loaded later. Raises
  // kErrGeneral (above) for the header.
  static ParadoxFile Open(const std::filesystem::path& file);
  // Reads the whole table and its BLOb values. Raises kErrGeneral (above).
  static ParadoxFile Read(const std::filesystem::path& file);
  // A new, empty table of Paradox 7 without a key, in code page 1252; the
  // fields give type letter, name and (alpha, bytes, BLOb leading part)
  // width. Raises kErrStatementRefused for a field Paradox cannot hold.
  static ParadoxFile Create(const std::filesystem::path& file, std::vector<TableField> fields);

  const std::filesystem::path& file() const override { return file_; }
  const std::vector<TableField>& fields() const override { return fields_; }
  std::vector<ado::Row>& rows() override { return rows_; }
  bool loaded() const override { return loaded_; }
  void Load() override;
  std::unique_ptr<RowStream> Stream() const override;

  void CompleteNewRow(ado::Row& row) override;
  void Check(const ado::Row& row) const override;
  void Write(const std::vector<ado::Row>& rows) const override;

  int version() const { return version_; }
  const std::string& codePage() const { return codePage_; }

 private:
  std::filesystem::path file_;
  std::vector<TableField> fields_;
  std::vector<ado::Row> rows_;
  std::string header_;  // the header block as read or made, patched on write
  int blockSize_ = 0;   // bytes of one data block
  int keyFields_ = 0;   // leading fields that form the primary key
  int version_ = 0;     // the header's file version byte
  std::size_t headerSize_ = 0;
  std::uint32_t fileBlocks_ = 0, firstBlock_ = 0, expected_ = 0;  // as the header says
  bool loaded_ = true;
  std::string codePage_ = "CP437";
};

// The ADO description of a Paradox field type, as Jet reports it.
ado::ColumnInfo DescribeParadoxField(const std::string& name, char type, int width, int decimals);

}  // namespace ketrova::xbase_provider
