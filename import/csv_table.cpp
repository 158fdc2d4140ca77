#include "import/csv_table.h"

#include <algorithm>
#include <unordered_map>

#include "import/csv.h"
#include "import/table_cells.h"

namespace vexa {

namespace {

constexpr const char* kTableNames[] = {"lnbs", "satellites", "carriers", "services", "favourites"};

std::vector<std::string> HeaderOf(TableKind kind) {
  std::vector<std::string> names;
  for (const TableColumn& column : ColumnsOf(kind)) names.emplace_back(column.name);
  return names;
}

class TableWriter {
 public:
  TableWriter(const StaticDatabase& database, TableKind kind, const CodePage& page)
      : database_(database), kind_(kind), page_(page) {
    AppendCsvRow(text, HeaderOf(kind));
    for (const Service* service : database.services) numbers_.emplace(service, numbers_.size() + 1);
    for (const Service* service : database.service_order) orders_.emplace(service, orders_.size() + 1);
  }

  void Write() {
    if (kind_ == TableKind::kFavourites) return WriteFavourites();
    if (kind_ == TableKind::kLnbs) {
      for (uint32_t i = 0; i < database_.lnb_count; ++i) Add({i + 1}, {}, database_.lnbs[i]);
      return;
    }
    for (size_t s = 0; s < database_.satellites.size(); ++s) WriteSatellite(*database_.satellites[s], s + 1);
  }

  std::string text;

 private:
  using Follows = std::unordered_map<std::string_view, std::string>;

  template <class Record>
  void Add(std::vector<size_t> numbers, const Follows& follows, const Record& record) {
    std::vector<std::string> cells;
    size_t number = 0;
    for (const TableColumn& column : ColumnsOf(kind_)) {
      std::string cell;
      if (column.kind == CellKind::kNumber) {
        cell = std::to_string(numbers[number++]);
      } else if (column.kind == CellKind::kFollows || column.kind == CellKind::kOrder) {
        cell = follows.at(column.name);
      } else {
        cell = CellText(record, column, page_);
      }
      cells.push_back(GuardedCell(cell));
    }
    AppendCsvRow(text, cells);
  }

  std::string Named(std::string_view name) const { return Utf8FromPage(page_, name); }

  void WriteSatellite(const Satellite& satellite, size_t s) {
    if (kind_ == TableKind::kSatellites)
      return Add({s}, {{"carriers", std::to_string(satellite.carriers.size())}}, satellite.record);
    const std::string satellite_name = Named(NameOf(satellite.record.name));
    for (size_t c = 0; c < satellite.carriers.size(); ++c) {
      const Carrier& carrier = *satellite.carriers[c];
      if (kind_ == TableKind::kCarriers) {
        Add({s, c + 1},
            {{"satellite_name", satellite_name}, {"services", std::to_string(carrier.services.size())}},
            carrier.record);
        continue;
      }
      Follows follows = {{"satellite_name", satellite_name},
                         {"carrier_name", Named(NameOf(carrier.record.name))},
                         {"frequency", std::to_string(carrier.record.frequency)},
                         {"polarization", WordOf<CarrierRecord>("polarization", carrier.record)}};
      for (size_t i = 0; i < carrier.services.size(); ++i) {
        const Service* service = carrier.services[i];
        follows["number"] = std::to_string(numbers_.at(service));
        follows["order"] = std::to_string(orders_.at(service));
        Add({s, c + 1, i + 1}, follows, service->record);
      }
    }
  }

  void WriteFavourites() {
    for (size_t g = 0; g < kFavouriteGroups; ++g) {
      const FavouriteGroup& group = database_.favourites[g];
      for (const GroupKind list : {GroupKind::kTv, GroupKind::kRadio}) {
        const bool tv = list == GroupKind::kTv;
        const std::string name = Named(NameOf(tv ? group.record.tv_name : group.record.radio_name));
        const std::vector<Service*>& entries = EntriesOf(group, list);
        for (size_t i = 0; i < entries.size(); ++i) {
          std::vector<std::string> cells = {std::to_string(g + 1),
                                            ListWord(list),
                                            name,
                                            std::to_string(i + 1),
                                            std::to_string(numbers_.at(entries[i])),
                                            Named(NameOf(entries[i]->record.name))};
          for (std::string& cell : cells) cell = GuardedCell(cell);
          AppendCsvRow(text, cells);
        }
      }
    }
  }

  const StaticDatabase& database_;
  const TableKind kind_;
  const CodePage& page_;
  std::unordered_map<const Service*, size_t> numbers_, orders_;
};

}  // namespace

std::vector<std::string> TableNames() {
  return {std::begin(kTableNames), std::end(kTableNames)};
}

std::optional<TableKind> TableNamed(std::string_view name) {
  const auto* found = std::find(std::begin(kTableNames), std::end(kTableNames), name);
  if (found == std::end(kTableNames)) return std::nullopt;
  return static_cast<TableKind>(found - std::begin(kTableNames));
}

std::string TableOfSdb(const StaticDatabase& database, TableKind kind, const CodePage& page) {
  TableWriter writer(database, kind, page);
  writer.Write();
  return std::move(writer.text);
}

}  // namespace vexa
