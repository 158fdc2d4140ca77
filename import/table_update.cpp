#include <algorithm>
#include <charconv>
#include <cstring>
#include <map>
#include <set>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

#include "core/messages.h"
#include "import/csv.h"
#include "import/csv_document.h"
#include "import/csv_table.h"
#include "import/table_cells.h"
#include "platform/text.h"

namespace vexa {

namespace {

class TableReader {
 public:
  TableReader(TableKind kind, const CodePage& page, const StaticDatabase& database, TableUpdate& update)
      : kind_(kind), page_(page), database_(database), update_(update) {}

  void Read(const std::vector<CsvRow>& table) {
    update_.kind = kind_;
    if (table.empty()) throw Misfit{"line 1", "names no columns"};
    ReadHeader(table[0]);
    for (size_t i = 1; i < table.size(); ++i) {
      row_ = &table[i];
      if (row_->cells.size() > columns_.size()) throw Misfit{Where(), "has a cell too many"};
      update_.rows.push_back(kind_ == TableKind::kFavourites ? EntryRow() : RecordRow());
      update_.rows.back().line = row_->line;
      if (!seen_.insert(update_.rows.back().path).second) throw Misfit{Where(), "is there twice"};
    }
    if (kind_ == TableKind::kServices) CheckOrders();
    FindMissing();
  }

 private:
  std::string Where() const { return "line " + std::to_string(row_->line); }

  void ReadHeader(const CsvRow& header) {
    for (const std::string& name : header.cells) {
      const auto known = ColumnsOf(kind_);
      const auto column =
          std::find_if(known.begin(), known.end(), [&](const auto& c) { return name == c.name; });
      if (column == known.end()) throw Misfit{"line 1", "column \"" + ShownText(name) + "\" is unknown"};
      if (!places_.emplace(name, columns_.size()).second)
        throw Misfit{"line 1", "column \"" + name + "\" is there twice"};
      columns_.push_back(&*column);
    }
    for (const TableColumn& column : ColumnsOf(kind_)) {
      if (column.kind == CellKind::kNumber && !places_.contains(column.name))
        throw Misfit{"line 1", std::string("column \"") + column.name + "\" is missing"};
    }
  }

  // As it stands in the table. Nothing when there is no such column; what is missing behind the last cell is
  // empty.
  std::optional<std::string> Cell(const char* column) const {
    const auto place = places_.find(column);
    if (place == places_.end()) return std::nullopt;
    return place->second < row_->cells.size() ? row_->cells[place->second] : std::string();
  }

  // Whether a cell that is filled gives the record another name.
  template <class Record>
  bool NamesOther(const char* column, const Record& record) const {
    const auto cell = Cell(column);
    return cell && !cell->empty() && *cell != GuardedCell(Utf8FromPage(page_, NameOf(record.name)));
  }

  // A number that is there, from 1 to `count`; from 0.
  size_t Place(const char* column, size_t count) const {
    const std::string whole = Cell(column).value();
    const std::string_view cell = Trimmed(whole);
    size_t number = 0;
    const auto result = std::from_chars(cell.data(), cell.data() + cell.size(), number);
    if (result.ec != std::errc{} || result.ptr != cell.data() + cell.size() || number < 1 || number > count)
      throw Misfit{Where(), std::string(column) + " \"" + ShownText(whole) + "\" is not there"};
    return number - 1;
  }

  template <class Record>
  Record Changed(Record record) const {
    for (const TableColumn& column : ColumnsOf(kind_)) {
      const bool own = column.kind != CellKind::kNumber && column.kind != CellKind::kFollows &&
                       column.kind != CellKind::kOrder;
      const auto cell = own ? Cell(column.name) : std::nullopt;
      if (!cell || *cell == GuardedCell(CellText(record, column, page_))) continue;
      const std::string why = SetCell(record, column, PlainCell(*cell), page_);
      if (!why.empty()) throw Misfit{Where(), std::string(column.name) + " " + why};
    }
    return record;
  }

  // Only the selection of the switch type is kept when one of the two changed.
  LnbRecord ChangedLnb(const LnbRecord& before) const {
    LnbRecord record = Changed(before);
    const auto selection = [&](const LnbRecord& lnb) {
      return std::pair(lnb.switch_type, CellText(lnb, {"switch", CellKind::kSwitch}, page_));
    };
    if (selection(record) == selection(before)) return record;
    if (record.switch_type != kSwitchDiseqc) record.diseqc_switch = 0;
    if (record.switch_type != kSwitchToneBurst) record.tone_burst_switch = 0;
    if (record.switch_type == kSwitchDiseqc || record.switch_type == kSwitchToneBurst)
      record.plain_switch = 0;
    return record;
  }

  TableRow RecordRow() {
    TableRow row;
    if (kind_ == TableKind::kLnbs) {
      row.path = {Place("lnb", database_.lnb_count)};
      row.record = ChangedLnb(database_.lnbs[row.path[0]]);
      return row;
    }
    row.path = {Place("satellite", database_.satellites.size())};
    const Satellite& satellite = *database_.satellites[row.path[0]];
    if (kind_ == TableKind::kSatellites) {
      row.record = Changed(satellite.record);
      return row;
    }
    row.path.push_back(Place("carrier", satellite.carriers.size()));
    const Carrier& carrier = *satellite.carriers[row.path[1]];
    const bool service = kind_ == TableKind::kServices;
    if (NamesOther("satellite_name", satellite.record) ||
        (service && NamesOther("carrier_name", carrier.record)))
      ++update_.strangers;
    if (kind_ == TableKind::kCarriers) {
      row.record = Changed(carrier.record);
      return row;
    }
    row.path.push_back(Place("service", carrier.services.size()));
    row.record = Changed(carrier.services[row.path[2]]->record);
    if (Cell("order")) row.order = static_cast<uint32_t>(Place("order", database_.services.size()) + 1);
    return row;
  }

  TableRow EntryRow() {
    const std::string list = Cell("list").value();
    TableRow row;
    const GroupKind half = list == ListWord(GroupKind::kTv) ? GroupKind::kTv : GroupKind::kRadio;
    if (list != ListWord(half))
      throw Misfit{Where(), "list \"" + ShownText(list) + "\" is neither TV nor Radio"};
    const size_t g = Place("group", kFavouriteGroups);
    const FavouriteGroup& group = database_.favourites[g];
    row.path = {g, static_cast<size_t>(half), Place("entry", EntriesOf(group, half).size())};
    row.service = database_.services[Place("number", database_.services.size())];
    // The name of another service follows in the database, not in the table.
    if (row.service == EntriesOf(group, half)[row.path[2]] && NamesOther("name", row.service->record))
      ++update_.strangers;
    TakeGroupName(g, half);
    return row;
  }

  // All rows of a list say the same name of it.
  void TakeGroupName(size_t g, GroupKind list) {
    const auto cell = Cell("group_name");
    if (!cell) return;
    const auto [said, is_first] = names_said_.emplace(std::pair(g, list), *cell);
    if (!is_first) {
      if (said->second != *cell) throw Misfit{Where(), "group_name is another one above"};
      return;
    }
    const FavouriteRecord& record = database_.favourites[g].record;
    const std::string_view before = NameOf(list == GroupKind::kTv ? record.tv_name : record.radio_name);
    if (GuardedCell(Utf8FromPage(page_, before)) == *cell) return;
    const auto bytes = PageFromUtf8(page_, PlainCell(*cell));
    if (!bytes || bytes->size() > kNameSize || bytes->find('\0') != std::string::npos)
      throw Misfit{Where(), "group_name \"" + ShownText(*cell) + "\" does not fit"};
    update_.group_names.push_back({g, list, *bytes});
  }

  void CheckOrders() const {
    if (!places_.contains("order")) return;
    std::set<uint32_t> orders;
    for (const TableRow& row : update_.rows) {
      if (!orders.insert(row.order).second)
        throw Misfit{"line 1", "order " + std::to_string(row.order) + " is there twice"};
    }
  }

  void Miss(std::vector<size_t> path, const std::string& text) {
    if (!seen_.contains(path)) update_.missing.push_back({std::move(path), text});
  }

  void FindMissing() {
    const auto named = [&](const char* what, size_t place, const auto& record) {
      return what + std::to_string(place + 1) + " " + Utf8FromPage(page_, NameOf(record.name));
    };
    const auto numbered = [](const char* what, size_t place) { return what + std::to_string(place + 1); };
    for (size_t i = 0; kind_ == TableKind::kLnbs && i < database_.lnb_count; ++i)
      Miss({i}, numbered("LNB ", i));
    if (kind_ == TableKind::kFavourites) FindMissingEntries();
    if (kind_ == TableKind::kLnbs || kind_ == TableKind::kFavourites) return;
    for (size_t s = 0; s < database_.satellites.size(); ++s) {
      const Satellite& satellite = *database_.satellites[s];
      if (kind_ == TableKind::kSatellites) Miss({s}, named("satellite ", s, satellite.record));
      for (size_t c = 0; kind_ != TableKind::kSatellites && c < satellite.carriers.size(); ++c) {
        const Carrier& carrier = *satellite.carriers[c];
        const std::string above = numbered("satellite ", s);
        if (kind_ == TableKind::kCarriers) Miss({s, c}, above + named(" carrier ", c, carrier.record));
        for (size_t i = 0; kind_ == TableKind::kServices && i < carrier.services.size(); ++i)
          Miss({s, c, i},
               above + numbered(" carrier ", c) + named(" service ", i, carrier.services[i]->record));
      }
    }
  }

  void FindMissingEntries() {
    for (size_t g = 0; g < kFavouriteGroups; ++g) {
      for (const GroupKind list : {GroupKind::kTv, GroupKind::kRadio}) {
        const auto& entries = EntriesOf(database_.favourites[g], list);
        for (size_t i = 0; i < entries.size(); ++i)
          Miss({g, static_cast<size_t>(list), i},
               (list == GroupKind::kTv ? "TV group " : "radio group ") + std::to_string(g + 1) + " entry " +
                   std::to_string(i + 1) + " " + Utf8FromPage(page_, NameOf(entries[i]->record.name)));
      }
    }
  }

  const TableKind kind_;
  const CodePage& page_;
  const StaticDatabase& database_;
  TableUpdate& update_;
  std::vector<const TableColumn*> columns_;
  std::map<std::string, size_t, std::less<>> places_;
  std::set<std::vector<size_t>> seen_;
  std::map<std::pair<size_t, GroupKind>, std::string> names_said_;
  const CsvRow* row_ = nullptr;
};

// The list in the order of its places in `rows`; what has no row stays behind the record that it followed.
template <class Record>
void Reorder(std::vector<Record*>& list, const std::vector<size_t>& rows) {
  std::vector<std::vector<size_t>> followers(list.size() + 1);  // [0]: of nobody
  std::vector<bool> has_row(list.size());
  for (const size_t place : rows) has_row[place] = true;
  size_t leader = 0;
  for (size_t i = 0; i < list.size(); ++i) {
    if (has_row[i]) leader = i + 1;
    if (!has_row[i]) followers[leader].push_back(i);
  }
  std::vector<Record*> ordered;
  for (const size_t place : followers[0]) ordered.push_back(list[place]);
  for (const size_t row : rows) {
    ordered.push_back(list[row]);
    for (const size_t place : followers[row + 1]) ordered.push_back(list[place]);
  }
  list = std::move(ordered);
}

template <class Record>
bool Differ(const Record& one, const Record& other) {
  return std::memcmp(&one, &other, sizeof(Record)) != 0;
}

class TableUpdater {
 public:
  TableUpdater(StaticDatabase& database, const TableUpdate& update) : database_(database), update_(update) {}

  std::optional<TableOutcome> Apply(const Messages& messages, bool delete_missing) {
    if (delete_missing) outcome_.deleted = update_.missing.size();
    if (update_.kind == TableKind::kLnbs)
      return ApplyLnbs(messages, delete_missing) ? std::optional(outcome_) : std::nullopt;
    if (update_.kind == TableKind::kFavourites) {
      ApplyFavourites(delete_missing);
      return outcome_;
    }
    SetRecords();
    // By address, since places move.
    std::unordered_set<const void*> missing;
    for (const MissingRow& row : update_.missing) missing.insert(RecordAt(row.path));
    ReorderRecords();
    if (delete_missing) Delete(missing);
    return outcome_;
  }

 private:
  const void* RecordAt(const std::vector<size_t>& path) const {
    const Satellite* satellite = database_.satellites[path[0]];
    if (path.size() == 1) return satellite;
    const Carrier* carrier = satellite->carriers[path[1]];
    return path.size() == 2 ? static_cast<const void*>(carrier) : carrier->services[path[2]];
  }

  bool ApplyLnbs(const Messages& messages, bool delete_missing) {
    const auto before = database_.lnbs;
    for (const TableRow& row : update_.rows)
      Set(database_.lnbs[row.path[0]], std::get<LnbRecord>(row.record));
    Rows gone;
    for (const MissingRow& row : update_.missing) gone.push_back(row.path[0]);
    if (!delete_missing || gone.empty() || DeleteLnbs(messages, database_, gone)) return true;
    database_.lnbs = before;
    return false;
  }

  template <class Record>
  void Set(Record& record, const Record& wanted) {
    if (Differ(record, wanted)) ++outcome_.changed;
    record = wanted;
  }

  void NoteOrder(const std::vector<size_t>& places) {
    outcome_.reordered |= !std::is_sorted(places.begin(), places.end());
  }

  void SetRecords() {
    std::unordered_set<const Service*> changed;
    for (const TableRow& row : update_.rows) {
      Satellite& satellite = *database_.satellites[row.path[0]];
      if (row.path.size() == 1) {
        Set(satellite.record, std::get<SatelliteRecord>(row.record));
      } else if (row.path.size() == 2) {
        Set(satellite.carriers[row.path[1]]->record, std::get<CarrierRecord>(row.record));
      } else {
        SetService(*satellite.carriers[row.path[1]]->services[row.path[2]], row, changed);
      }
    }
    outcome_.left_lists = LeaveListsOfOldType(database_, changed);
  }

  void SetService(Service& service, const TableRow& row, std::unordered_set<const Service*>& changed) {
    const ServiceRecord before = service.record;
    Set(service.record, std::get<ServiceRecord>(row.record));
    if ((before.type == kTv) == (service.record.type == kTv)) return;
    changed.insert(&service);
    if (before.type == kTv && service.record.video_pid == before.video_pid)
      service.record.video_pid = kNoPid & 0x3FFF;
  }

  void ReorderRecords() {
    OrderServices();
    std::map<std::vector<size_t>, std::vector<size_t>> rows_of;  // by the path of the parent
    for (const TableRow& row : update_.rows)
      rows_of[{row.path.begin(), row.path.end() - 1}].push_back(row.path.back());
    for (const auto& [parent, rows] : rows_of) {
      if (parent.empty()) {
        Reorder(database_.satellites, rows);
      } else if (parent.size() == 1) {
        Reorder(database_.satellites[parent[0]]->carriers, rows);
      } else {
        Reorder(database_.satellites[parent[0]]->carriers[parent[1]]->services, rows);
      }
      NoteOrder(rows);
    }
    NumberSatellites(database_);
    for (Satellite* satellite : database_.satellites) NumberCarriers(*satellite);
    RefillAll(database_);
  }

  // The running order by the rows' numbers; services without one stay behind the service that they followed.
  void OrderServices() {
    std::map<uint32_t, Service*> by_order;
    for (const TableRow& row : update_.rows) {
      if (row.order > 0)
        by_order[row.order] = database_.satellites[row.path[0]]->carriers[row.path[1]]->services[row.path[2]];
    }
    std::unordered_map<const Service*, size_t> places;
    for (const Service* service : database_.service_order) places.emplace(service, places.size());
    std::vector<size_t> rows;
    rows.reserve(by_order.size());
    for (const auto& [order, service] : by_order) rows.push_back(places.at(service));
    Reorder(database_.service_order, rows);
    NoteOrder(rows);
  }

  void Delete(const std::unordered_set<const void*>& missing) {
    const auto places_of = [&](const auto& list) {
      Rows rows;
      for (size_t i = 0; i < list.size(); ++i) {
        if (missing.contains(list[i])) rows.push_back(i);
      }
      return rows;
    };
    if (update_.kind == TableKind::kSatellites) {
      DeleteSatellites(database_, places_of(database_.satellites));
    } else if (update_.kind == TableKind::kCarriers) {
      for (Satellite* satellite : database_.satellites)
        DeleteCarriers(database_, *satellite, places_of(satellite->carriers));
    } else {
      std::vector<Service*> services;
      for (Service* service : database_.services) {
        if (missing.contains(service)) services.push_back(service);
      }
      DeleteServices(database_, services);
    }
  }

  void ApplyFavourites(bool delete_missing) {
    outcome_.renamed = update_.group_names.size();
    for (const TableUpdate::GroupName& name : update_.group_names) {
      FavouriteRecord& record = database_.favourites[name.group].record;
      char(&field)[kNameSize] = name.list == GroupKind::kTv ? record.tv_name : record.radio_name;
      std::memset(field, 0, kNameSize);
      std::memcpy(field, name.name.data(), std::min<size_t>(name.name.size(), kNameSize));
    }
    for (size_t g = 0; g < kFavouriteGroups; ++g) {
      for (const GroupKind list : {GroupKind::kTv, GroupKind::kRadio}) {
        std::vector<Service*>& entries = EntriesOf(database_.favourites[g], list);
        std::vector<size_t> rows;
        for (const TableRow& row : update_.rows) {
          if (row.path[0] != g || row.path[1] != static_cast<size_t>(list)) continue;
          rows.push_back(row.path[2]);
          if (entries[row.path[2]] != row.service) ++outcome_.changed;
          entries[row.path[2]] = row.service;
        }
        NoteOrder(rows);
        if (delete_missing) {
          std::vector<Service*> kept;
          kept.reserve(rows.size());
          for (const size_t place : rows) kept.push_back(entries[place]);
          entries = std::move(kept);
        } else {
          Reorder(entries, rows);
        }
      }
    }
  }

  StaticDatabase& database_;
  const TableUpdate& update_;
  TableOutcome outcome_;
};

// Empty columns at the right, as spreadsheets leave them beside what was marked.
void DropEmptyColumns(std::vector<CsvRow>& table) {
  if (table.empty()) return;
  const auto drop_empty = [](std::vector<std::string>& cells, size_t kept) {
    while (cells.size() > kept && cells.back().empty()) cells.pop_back();
  };
  drop_empty(table[0].cells, 0);
  for (CsvRow& row : table) drop_empty(row.cells, table[0].cells.size());
}

}  // namespace

std::optional<Misfit> ReadTable(std::string_view text, TableKind kind, const CodePage& page,
                                const StaticDatabase& database, TableUpdate& update) {
  try {
    std::vector<CsvRow> rows = ParseCsv(text);
    // As spreadsheets leave them below the last row.
    std::erase_if(rows, [](const CsvRow& row) {
      return std::all_of(row.cells.begin(), row.cells.end(),
                         [](const std::string& cell) { return cell.empty(); });
    });
    DropEmptyColumns(rows);
    TableReader(kind, page, database, update).Read(rows);
    return std::nullopt;
  } catch (const Misfit& misfit) {
    return misfit;
  }
}

std::string TableOutcomeText(const TableOutcome& outcome) {
  std::string text = Format("%zu changed", outcome.changed);
  if (outcome.reordered) text += ", order changed";
  if (outcome.renamed > 0) text += Format(", %zu renamed", outcome.renamed);
  if (outcome.deleted > 0) text += Format(", %zu deleted", outcome.deleted);
  return text;
}

std::optional<TableOutcome> ApplyTable(const Messages& messages, StaticDatabase& database,
                                       const TableUpdate& update, bool delete_missing) {
  return TableUpdater(database, update).Apply(messages, delete_missing);
}

std::optional<TableKind> KindOfTable(std::string_view text) {
  // The deepest column decides: a table of services numbers carriers and satellites too.
  static constexpr std::pair<const char*, TableKind> kNumbering[] = {{"group", TableKind::kFavourites},
                                                                     {"service", TableKind::kServices},
                                                                     {"carrier", TableKind::kCarriers},
                                                                     {"satellite", TableKind::kSatellites},
                                                                     {"lnb", TableKind::kLnbs}};
  const std::string first(text.substr(0, text.find_first_of("\r\n")));
  std::vector<CsvRow> rows;
  try {
    rows = ParseCsv(first);
  } catch (const Misfit&) {
  }
  if (rows.empty()) return std::nullopt;
  const auto& columns = rows.front().cells;
  for (const auto& [column, kind] : kNumbering)
    if (std::find(columns.begin(), columns.end(), column) != columns.end()) return kind;
  return std::nullopt;
}

namespace {

constexpr size_t kNamedMissing = 10;

std::string MissingQuestion(const std::vector<MissingRow>& missing) {
  std::string text = Format("The table has no row for %zu records:\n", missing.size());
  for (size_t i = 0; i < missing.size() && i < kNamedMissing; ++i) text += "\n" + missing[i].text;
  if (missing.size() > kNamedMissing) text += Format("\nand %zu more", missing.size() - kNamedMissing);
  return text + "\n\nDelete them? No keeps them behind the records that they follow.";
}

// Why the favourite lists cannot take the services that entries are to name: one of the other type than the
// list's, or one that is in the list already. Entries that stay as they are pass.
std::optional<Misfit> JudgeEntries(const StaticDatabase& database, const TableUpdate& update,
                                   bool delete_missing) {
  if (update.kind != TableKind::kFavourites) return std::nullopt;
  const auto service_at = [&](const std::vector<size_t>& path) -> const Service* {
    return EntriesOf(database.favourites[path[0]], static_cast<GroupKind>(path[1]))[path[2]];
  };
  // Of each list, what it names already; then what it is to name besides.
  std::set<std::tuple<size_t, size_t, const Service*>> named;
  const auto name = [&](const std::vector<size_t>& path, const Service* service) {
    return named.emplace(path[0], path[1], service).second;
  };
  for (const TableRow& row : update.rows)
    if (service_at(row.path) == row.service) name(row.path, row.service);
  for (const MissingRow& row : update.missing)
    if (!delete_missing) name(row.path, service_at(row.path));
  for (const TableRow& row : update.rows) {
    if (service_at(row.path) == row.service) continue;
    const bool tv = static_cast<GroupKind>(row.path[1]) == GroupKind::kTv;
    const char* why = nullptr;
    if ((row.service->record.type == kTv) != tv)
      why = tv ? "is no TV service" : "is no radio service";
    else if (!name(row.path, row.service))
      why = "is in the list already";
    if (!why) continue;
    const auto place = std::find(database.services.begin(), database.services.end(), row.service);
    return Misfit{
        Format("line %zu", row.line),
        Format("number \"%zu\" ", static_cast<size_t>(place - database.services.begin()) + 1) + why};
  }
  return std::nullopt;
}

constexpr const char* kTableRefused = "The table was not taken over.";

}  // namespace

std::optional<TableOutcome> UpdateFromTableText(
    const Messages& messages, const std::string& name, std::string_view text, const CodePage& page,
    StaticDatabase& database, const std::function<MissingRows(const std::string& question)>& ask) {
  const auto refuse = [&](const std::string& why) {
    TellWhy(messages, Icon::kStop, name + why, "%s", kTableRefused);
    return std::nullopt;
  };
  if (!IsUtf8(text)) return refuse(": It is no text in UTF-8. Save the table as \"CSV UTF-8\".");
  const std::optional<TableKind> kind = KindOfTable(text);
  TableUpdate update;
  const Misfit misfit{"line 1",
                      "no column numbers records; take a table that vexa export --format csv-table wrote"};
  auto found = kind ? ReadTable(text, *kind, page, database, update) : misfit;
  if (found) return refuse(", " + found->where + ": " + found->what);
  if (update.strangers > 0 &&
      !messages.ask(Format("Rows that name another satellite, carrier or service than stands here at their "
                           "numbers: %zu.\nThe table may be of another database. Take it over?",
                           update.strangers),
                    kApplicationTitle, false))
    return std::nullopt;
  const MissingRows missing =
      update.missing.empty() ? MissingRows::kKeep : ask(MissingQuestion(update.missing));
  if (missing == MissingRows::kCancel) return std::nullopt;
  const bool delete_missing = missing == MissingRows::kDelete;
  found = JudgeEntries(database, update, delete_missing);
  if (found) return refuse(", " + found->where + ": " + found->what);
  return ApplyTable(messages, database, update, delete_missing);
}

std::optional<TableOutcome> UpdateFromTableFile(
    const Messages& messages, const Path& path, const CodePage& page, StaticDatabase& database,
    const std::function<MissingRows(const std::string& question)>& ask) {
  Bytes file;
  const ReadResult read = ReadWholeFile(path, file, kLargestCsv);
  if (read != ReadResult::kDone) {
    TellWhy(messages, Icon::kStop, ReadReason(path, read.error), "%s", kTableRefused);
    return std::nullopt;
  }
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  return UpdateFromTableText(messages, Utf8FromPath(path), text, page, database, ask);
}

}  // namespace vexa
