// Flat tables for people: the records of one kind of an SDB, one row each, codes as words, angles as degrees;
// and what such a table says when it comes back from a spreadsheet.
//
//   lnbs        lnb,frequency1,frequency2,type,power,tone_22khz,switch_type,switch,motor
//   satellites  satellite,name,angle,east,position,lnb,user,carriers
//   carriers    satellite,satellite_name,carrier,name,frequency,symbol_rate,polarization,fec,user,services
//   services satellite,satellite_name,carrier,carrier_name,frequency,polarization,service,number,order,name,
//               program_number,type,free,video_pid,audio_pid,pcr_pid
//   favourites  group,list,group_name,entry,number,name
//
// Numbers of records are one-based places: of a service on its carrier, of an entry in its list. `number` and
// `order` of a service are its places in the SDB's own and in the running order, `number` of an entry names
// its service. `lnb` of a satellite counts from one. `switch` is the selection of the switch type. Flags are
// Yes and No, a PID of 8192 is empty, a code without a word is its number. Before a cell that begins with = +
// - @ or a tab, or with an apostrophe and one of these, stands one apostrophe more.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "core/database.h"
#include "core/edit.h"
#include "import/sdb_builder.h"
#include "platform/code_page.h"
#include "platform/files.h"

namespace vexa {

enum class TableKind { kLnbs, kSatellites, kCarriers, kServices, kFavourites };

// "lnbs" and so on, in the order of the kinds.
std::vector<std::string> TableNames();
std::optional<TableKind> TableNamed(std::string_view name);

// UTF-8; the database's names stand in `page`.
std::string TableOfSdb(const StaticDatabase& database, TableKind kind, const CodePage& page);

// One row of a table that came back: which record, and what it is to be.
struct TableRow {
  // Places from 0: satellite, carrier, service as far as the kind goes; group, GroupKind, entry.
  std::vector<size_t> path;
  size_t line = 0;  // on which it begins, from 1
  std::variant<std::monostate, LnbRecord, SatelliteRecord, CarrierRecord, ServiceRecord> record;
  uint32_t order = 0;          // of a service, from 1
  Service* service = nullptr;  // of an entry
};

struct MissingRow {
  std::vector<size_t> path;
  std::string text;  // "satellite 3 Astra", "TV group 1 entry 2 Arte": UTF-8
};

// What a table asks for. It belongs to the database as it was when the table was read.
struct TableUpdate {
  TableKind kind = TableKind::kLnbs;
  std::vector<TableRow> rows;       // in the new order
  std::vector<MissingRow> missing;  // records without a row, in tree order
  struct GroupName {
    size_t group;
    GroupKind list;
    std::string name;  // in the page of the database
  };
  std::vector<GroupName> group_names;
  size_t strangers = 0;  // rows that name what stands above their record, or an entry's service, otherwise
};

// Reads a table for the records of `database`, which its rows name by their numbers. Rows may stand in any
// order, columns too; all but those that number the records may be missing, and what follows from other
// records (names of parents, counts, `number` of a service) changes nothing. Cells that say what the record
// holds already change nothing; others must fit their field, whatever the dialogs think of them. Empty rows,
// and empty columns at the right, are none. What does not fit is answered with its line; `update` then means
// nothing.
std::optional<Misfit> ReadTable(std::string_view text, TableKind kind, const CodePage& page,
                                const StaticDatabase& database, TableUpdate& update);

// What a table that came back did.
struct TableOutcome {
  size_t changed = 0;      // records that say something else, entries that name another service
  size_t renamed = 0;      // favourite lists
  bool reordered = false;  // records stand in another order, in their lists or in the running order
  size_t deleted = 0;      // records that had no row
  size_t left_lists = 0;   // favourite entries of services that changed between TV and radio
};
// "3 changed", and behind commas what else was done but the last: "order changed", "1 deleted" ...
std::string TableOutcomeText(const TableOutcome& outcome);

// Changes the records, and puts those of one parent into the order of their rows; LNBs keep their places.
// Records without a row are deleted, or stay behind the record that they followed. A service that changed
// between TV and radio leaves the favourite lists of its old type; one that became radio has no video PID
// unless the table gives a new one. Nothing after a message, with nothing changed: the last LNB cannot go.
std::optional<TableOutcome> ApplyTable(const Messages& messages, StaticDatabase& database,
                                       const TableUpdate& update, bool delete_missing);

// The kind of a table, by the columns that number its records; nothing when its first line has none of them.
std::optional<TableKind> KindOfTable(std::string_view text);

// What becomes of the records that a table has no row for.
enum class MissingRows { kDelete, kKeep, kCancel };
// A table in UTF-8 that came back, which messages name `name`; else as the file below. `page`: of the
// database's names. When rows name another satellite, carrier or service than the database has at their
// numbers, a question asks whether the table is meant for it.
std::optional<TableOutcome> UpdateFromTableText(
    const Messages& messages, const std::string& name, std::string_view text, const CodePage& page,
    StaticDatabase& database, const std::function<MissingRows(const std::string& question)>& ask);
// A table's file that came back: read, asked about by `ask` when records have no row, judged and applied.
// Nothing, with nothing changed, after a message with the path and the line, or when `ask` gave kCancel.
std::optional<TableOutcome> UpdateFromTableFile(
    const Messages& messages, const Path& path, const CodePage& page, StaticDatabase& database,
    const std::function<MissingRows(const std::string& question)>& ask);

}  // namespace vexa
