#include "import/csv_document.h"

#include <charconv>
#include <cstring>
#include <initializer_list>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "core/fields.h"
#include "core/messages.h"
#include "import/csv.h"
#include "platform/text.h"

namespace vexa {

namespace {

// ---- Writing. One table for all kinds of records: a row leaves the columns of other kinds empty.
class CsvTable {
 public:
  using Row = std::vector<std::pair<std::string, std::string>>;
  // The first row of a kind brings its columns.
  void Add(Row row) {
    for (const auto& [column, value] : row) {
      if (places_.emplace(column, columns_.size()).second) columns_.push_back(column);
    }
    rows_.push_back(std::move(row));
  }
  std::string Text() const {
    std::string text;
    AppendCsvRow(text, columns_);
    for (const Row& row : rows_) {
      std::vector<std::string> cells(columns_.size());
      for (const auto& [column, value] : row) cells[places_.at(column)] = value;
      AppendCsvRow(text, cells);
    }
    return text;
  }

 private:
  std::vector<std::string> columns_;
  std::map<std::string, size_t> places_;
  std::vector<Row> rows_;
};

struct Writer {
  const CodePage& page;
  CsvTable table;
  Places<Service> number, order;  // one less than what the table says

  template <size_t N>
  std::string Text(const char (&name)[N]) const {
    return Utf8FromPage(page, NameOf(name));
  }
};

template <class Record>
void AddFields(CsvTable::Row& row, const Record& record) {
  for (const Field<Record>& field : FieldsOf<Record>())
    row.emplace_back(field.key, std::to_string(field.get(record)));
}

CsvTable::Row NewRow(const char* kind, std::initializer_list<std::pair<const char*, size_t>> places) {
  CsvTable::Row row = {{"record", kind}};
  for (const auto& [column, number] : places) row.emplace_back(column, std::to_string(number));
  return row;
}

void AddSatelliteRows(Writer& writer, const Satellite& satellite, size_t number) {
  auto row = NewRow("satellite", {{"satellite", number}});
  row.emplace_back("name", writer.Text(satellite.record.name));
  AddFields(row, satellite.record);
  writer.table.Add(std::move(row));
  for (size_t i = 0; i < satellite.carriers.size(); ++i) {
    const Carrier& carrier = *satellite.carriers[i];
    row = NewRow("carrier", {{"satellite", number}, {"carrier", i + 1}});
    row.emplace_back("name", writer.Text(carrier.record.name));
    AddFields(row, carrier.record);
    writer.table.Add(std::move(row));
    for (const Service* service : carrier.services) {
      row = NewRow("service", {{"satellite", number},
                               {"carrier", i + 1},
                               {"service", writer.number.Of(*service) + size_t{1}},
                               {"order", writer.order.Of(*service) + size_t{1}}});
      row.emplace_back("name", writer.Text(service->record.name));
      AddFields(row, service->record);
      writer.table.Add(std::move(row));
    }
  }
}

void AddFavouriteRows(Writer& writer, const FavouriteGroup& group, size_t number) {
  auto row = NewRow("favourite", {{"group", number}});
  row.emplace_back("tv_name", writer.Text(group.record.tv_name));
  row.emplace_back("radio_name", writer.Text(group.record.radio_name));
  row.emplace_back("tv_count", std::to_string(group.tv.size()));
  row.emplace_back("radio_count", std::to_string(group.radio.size()));
  AddFields(row, group.record);
  writer.table.Add(std::move(row));
  const auto add = [&](const char* kind, const std::vector<Service*>& services) {
    for (size_t i = 0; i < services.size(); ++i) {
      auto entry = NewRow(
          kind,
          {{"group", number}, {"entry", i + 1}, {"service", writer.number.Of(*services[i]) + size_t{1}}});
      entry.emplace_back("name", writer.Text(services[i]->record.name));
      writer.table.Add(std::move(entry));
    }
  };
  add("favourite_tv", group.tv);
  add("favourite_radio", group.radio);
}

// ---- Reading. What does not fit is thrown as a Misfit.

template <class Record>
std::set<std::string> ColumnsOf(std::initializer_list<const char*> others) {
  std::set<std::string> columns(others.begin(), others.end());
  for (const Field<Record>& field : FieldsOf<Record>()) columns.insert(field.key);
  return columns;
}

const std::map<std::string, std::set<std::string>>& KindColumns() {
  static const std::map<std::string, std::set<std::string>> columns = {
      {"lnb", ColumnsOf<LnbRecord>({"record", "lnb"})},
      {"satellite", ColumnsOf<SatelliteRecord>({"record", "satellite", "name"})},
      {"carrier", ColumnsOf<CarrierRecord>({"record", "satellite", "carrier", "name"})},
      {"service", ColumnsOf<ServiceRecord>({"record", "satellite", "carrier", "service", "order", "name"})},
      {"favourite",
       ColumnsOf<FavouriteRecord>({"record", "group", "tv_name", "radio_name", "tv_count", "radio_count"})},
      {"favourite_tv", {"record", "group", "entry", "service", "name"}},
      {"favourite_radio", {"record", "group", "entry", "service", "name"}}};
  return columns;
}

std::string LineOf(size_t line) {
  return "line " + std::to_string(line);
}

struct Header {
  std::vector<std::string> columns;
  std::map<std::string, size_t> places;

  explicit Header(const CsvRow& row) : columns(row.cells) {
    std::set<std::string> known;
    for (const auto& [kind, names] : KindColumns()) known.insert(names.begin(), names.end());
    for (size_t i = 0; i < columns.size(); ++i) {
      if (!known.contains(columns[i]))
        throw Misfit{LineOf(row.line), "column \"" + ShownText(columns[i]) + "\" is unknown"};
      if (!places.emplace(columns[i], i).second)
        throw Misfit{LineOf(row.line), "column \"" + columns[i] + "\" is there twice"};
    }
  }
};

class Row {
 public:
  Row(const Header& header, const CsvRow& row) : header_(header), row_(row) {}

  std::string where() const { return LineOf(row_.line); }
  // What is missing behind the last cell is empty.
  const std::string& Cell(const std::string& column) const {
    static const std::string empty;
    const auto place = header_.places.find(column);
    if (place == header_.places.end()) throw Misfit{"line 1", "column \"" + column + "\" is missing"};
    return place->second < row_.cells.size() ? row_.cells[place->second] : empty;
  }
  std::string Kind() const {
    const std::string& kind = Cell("record");
    const auto columns = KindColumns().find(kind);
    if (columns == KindColumns().end())
      throw Misfit{where(), "record \"" + ShownText(kind) + "\" is unknown"};
    for (size_t i = 0; i < row_.cells.size(); ++i) {
      const bool takes = i < header_.columns.size() && columns->second.contains(header_.columns[i]);
      if (i >= header_.columns.size() || (!takes && !row_.cells[i].empty()))
        throw Misfit{where(), "has a cell too many"};
    }
    return kind;
  }
  int64_t Number(const char* column, int64_t smallest, int64_t largest) const {
    const std::string& cell = Cell(column);
    int64_t number = 0;
    const auto result = std::from_chars(cell.data(), cell.data() + cell.size(), number);
    if (result.ec != std::errc{} || result.ptr != cell.data() + cell.size() || number < smallest ||
        number > largest)
      throw Misfit{where(),
                   Format("%s \"%s\" is no number from %lld to %lld", column, ShownText(cell).c_str(),
                          static_cast<long long>(smallest), static_cast<long long>(largest))};
    return number;
  }
  template <size_t N>
  void TakeName(const char* column, const CodePage& page, char (&field)[N]) const {
    const auto bytes = PageFromUtf8(page, Cell(column));
    if (!bytes || bytes->find('\0') != std::string::npos)
      throw Misfit{where(), std::string(column) + " has characters that " + page.name + " lacks"};
    if (bytes->size() > N) throw Misfit{where(), Format("%s is longer than %zu characters", column, N)};
    std::memcpy(field, bytes->data(), bytes->size());
  }
  template <class Record>
  void TakeFields(Record& record) const {
    for (const Field<Record>& field : FieldsOf<Record>()) {
      if (!field.follows) field.set(record, Number(field.key, field.smallest, field.largest));
    }
  }

 private:
  const Header& header_;
  const CsvRow& row_;
};

class SdbReader {
 public:
  SdbReader(const CodePage& page, StaticDatabase& database) : page_(page), database_(database) {}

  void Read(const std::vector<CsvRow>& table) {
    if (table.empty()) throw Misfit{"line 1", "names no columns"};
    const Header header(table[0]);
    if (!header.places.contains("record")) throw Misfit{"line 1", "column \"record\" is missing"};
    for (size_t i = 1; i < table.size(); ++i) {
      Row row(header, table[i]);
      rows_[row.Kind()].push_back(row);
    }
    ReadLnbs();
    ReadSatellites();
    ReadCarriers();
    ReadServices();
    PlaceCarriersByServices(database_);
    ReadGroups();
    ReadEntries("favourite_tv", kMaximumTvEntries, GroupHalf::kTv);
    ReadEntries("favourite_radio", kMaximumRadioEntries, GroupHalf::kRadio);
  }

 private:
  enum class GroupHalf { kTv, kRadio };

  const std::vector<Row>& RowsOf(const char* kind) { return rows_[kind]; }

  // The rows of a kind in the order of their numbers.
  std::vector<size_t> OrderOf(const char* kind, const char* column, size_t largest) {
    Numbering numbering(column);
    for (const Row& row : RowsOf(kind))
      numbering.Add(row.Number(column, 0, static_cast<int64_t>(largest)), row.where());
    return numbering.Order();
  }

  void ReadLnbs() {
    for (const size_t i : OrderOf("lnb", "lnb", kMaximumLnbs))
      RowsOf("lnb")[i].TakeFields(database_.lnbs[database_.lnb_count++]);
  }

  void ReadSatellites() {
    for (const size_t i : OrderOf("satellite", "satellite", kMaximumSatellites)) {
      const Row& row = RowsOf("satellite")[i];
      SatelliteRecord record{};
      row.TakeName("name", page_, record.name);
      row.TakeFields(record);
      row.Number("lnb_index", 0, kMaximumLnbs - 1);
      AppendSatellite(database_, record);
    }
  }

  // Rows of a kind by what they stand below; `Parent` gives that, and refuses what is not there.
  template <class Record>
  static Record& At(const std::vector<Record*>& list, const Row& row, const char* column) {
    const int64_t number = row.Number(column, 1, 0xFFFF);
    if (static_cast<size_t>(number) > list.size())
      throw Misfit{row.where(), Format("%s %d is not there", column, static_cast<int>(number))};
    return *list[static_cast<size_t>(number) - 1];
  }

  void ReadCarriers() {
    std::map<const Satellite*, std::pair<Numbering, std::vector<const Row*>>> below;
    for (const Row& row : RowsOf("carrier")) {
      auto& [numbering, rows] = below
                                    .try_emplace(&At(database_.satellites, row, "satellite"),
                                                 Numbering("carrier"), std::vector<const Row*>{})
                                    .first->second;
      numbering.Add(row.Number("carrier", 0, kMaximumCarriers), row.where());
      rows.push_back(&row);
    }
    for (Satellite* satellite : database_.satellites) {
      const auto found = below.find(satellite);
      if (found == below.end()) continue;
      for (const size_t i : found->second.first.Order()) {
        const Row& row = *found->second.second[i];
        CarrierRecord record{};
        row.TakeName("name", page_, record.name);
        row.TakeFields(record);
        if (!AppendCarrier(database_, *satellite, record))
          throw Misfit{row.where(), "is more than the carriers of an SDB"};
      }
    }
  }

  void ReadServices() {
    Numbering numbers("service"), orders("order");
    for (const Row& row : RowsOf("service")) {
      Carrier& carrier = At(At(database_.satellites, row, "satellite").carriers, row, "carrier");
      ServiceRecord record{};
      row.TakeName("name", page_, record.name);
      row.TakeFields(record);
      numbers.Add(row.Number("service", 0, kMaximumServices), row.where());
      orders.Add(row.Number("order", 0, kMaximumServices), row.where());
      if (!AppendService(database_, carrier, record))
        throw Misfit{row.where(), "is more than the services of an SDB"};
    }
    const std::vector<Service*> read = database_.services;
    database_.services.clear();
    for (const size_t i : numbers.Order()) database_.services.push_back(read[i]);
    for (const size_t i : orders.Order()) database_.service_order.push_back(read[i]);
  }

  void ReadGroups() {
    const std::vector<size_t> order = OrderOf("favourite", "group", kFavouriteGroups);
    if (order.size() != kFavouriteGroups) {
      const auto& rows = RowsOf("favourite");
      throw Misfit{rows.empty() ? "line 1" : rows.back().where(), "there are not eight favourite groups"};
    }
    for (size_t i = 0; i < kFavouriteGroups; ++i) {
      const Row& row = RowsOf("favourite")[order[i]];
      FavouriteRecord& record = database_.favourites[i].record;
      record = {};
      row.TakeName("tv_name", page_, record.tv_name);
      row.TakeName("radio_name", page_, record.radio_name);
      row.TakeFields(record);
    }
  }

  void ReadEntries(const char* kind, size_t largest, GroupHalf half) {
    std::map<int64_t, std::pair<Numbering, std::vector<Service*>>> groups;
    for (const Row& row : RowsOf(kind)) {
      auto& [numbering, services] = groups
                                        .try_emplace(row.Number("group", 1, kFavouriteGroups),
                                                     Numbering("entry"), std::vector<Service*>{})
                                        .first->second;
      numbering.Add(row.Number("entry", 0, static_cast<int64_t>(largest)), row.where());
      services.push_back(&At(database_.services, row, "service"));
    }
    for (const auto& [number, entries] : groups) {
      FavouriteGroup& group = database_.favourites[static_cast<size_t>(number) - 1];
      for (const size_t i : entries.first.Order())
        (half == GroupHalf::kTv ? group.tv : group.radio).push_back(entries.second[i]);
    }
  }

  const CodePage& page_;
  StaticDatabase& database_;
  std::map<std::string, std::vector<Row>> rows_;  // by kind
};

}  // namespace

std::string CsvOfSdb(const OpenSdb& sdb, const CodePage& page) {
  const StaticDatabase& database = *sdb.database;
  Writer writer{
      page, {}, {database.service_pool, database.services}, {database.service_pool, database.service_order}};
  for (uint32_t i = 0; i < database.lnb_count; ++i) {
    auto row = NewRow("lnb", {{"lnb", i + 1}});
    AddFields(row, database.lnbs[i]);
    writer.table.Add(std::move(row));
  }
  for (size_t i = 0; i < database.satellites.size(); ++i)
    AddSatelliteRows(writer, *database.satellites[i], i + 1);
  for (size_t i = 0; i < database.favourites.size(); ++i)
    AddFavouriteRows(writer, database.favourites[i], i + 1);
  return writer.table.Text();
}

std::optional<Misfit> JudgeCsvStart(std::string_view start) {
  try {
    const size_t end = start.find('\n');
    const auto rows = ParseCsv(start.substr(0, end == start.npos ? end : end + 1));
    if (!rows.empty()) static_cast<void>(Header(rows[0]));
    return std::nullopt;
  } catch (const Misfit& misfit) {
    return misfit;
  }
}

std::optional<Misfit> ReadCsvDocument(std::string_view text, const CodePage& page, Document& document) {
  try {
    SdbReader(page, *AppendSdb(document, "SDB1")->database).Read(ParseCsv(text));
    return std::nullopt;
  } catch (const Misfit& misfit) {
    return misfit;
  }
}

}  // namespace vexa
