// The columns of tables for people (csv_table.h), and their cells to and from the fields of records.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "core/fields.h"
#include "import/csv_table.h"

namespace vexa {

enum class CellKind {
  kNumber,   // of the record, or of what it belongs to
  kFollows,  // from other records: not taken from a table
  kOrder,    // of a service in the running order
  kField,    // of the column's name: its word, or its number
  kName,
  kAngle,
  kLnb,
  kSwitch,
  kYesNo,
  kPid,
  kServiceType
};

struct TableColumn {
  const char* name;  // the title; of a kField the key of core/fields.h
  CellKind kind;
};

// The columns of a table from left to right; they belong to the program.
std::span<const TableColumn> ColumnsOf(TableKind kind);

// What the cell of a record's own column holds, UTF-8. Record: LnbRecord, SatelliteRecord, CarrierRecord or
// ServiceRecord.
template <class Record>
std::string CellText(const Record& record, const TableColumn& column, const CodePage& page);
// Why the record cannot hold what a cell says; empty: it does. A cell that says what the record holds changes
// nothing of it. Letter case of words does not count; numbers of codes, and commas in degrees, are taken too.
template <class Record>
std::string SetCell(Record& record, const TableColumn& column, const std::string& cell, const CodePage& page);
// A field's word, or its number where the code has none.
template <class Record>
std::string WordOf(std::string_view key, const Record& record);

// The list of a favourite group as a cell names it: "TV", "Radio".
const char* ListWord(GroupKind list);

// A cell as a table holds it, so that no spreadsheet takes it for a formula; and back. A text that begins
// with two apostrophes may not come back: compare guarded cells.
std::string GuardedCell(const std::string& cell);
std::string PlainCell(const std::string& cell);

}  // namespace vexa
