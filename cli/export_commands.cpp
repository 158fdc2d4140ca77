// export: one SDB as the text report, or with every field as CSV or JSON.
#include <map>
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/usage.h"
#include "core/field_texts.h"
#include "import/text_export.h"
#include "platform/text.h"

namespace vexa {

namespace {

using Json = nlohmann::ordered_json;

struct ExportOptions {
  std::string file, output, format = "text";
  std::string sdb = "1";
};

// The fields of each record, by the names that both forms give them. Counts and indices that follow from the
// place in the list are left to the list.
template <class Take>
void ForEachField(const LnbRecord& lnb, Take take) {
  take("frequency1", lnb.frequency1);
  take("frequency2", lnb.frequency2);
  take("type", lnb.type);
  take("power", lnb.power);
  take("kept_word0_31", lnb.kept_31);
  take("kept_word1_0_1", lnb.cleared_0);
  take("diseqc_switch", lnb.diseqc_switch);
  take("plain_switch", lnb.plain_switch);
  take("tone_burst_switch", lnb.tone_burst_switch);
  take("kept_word1_12_14", lnb.cleared_12);
  take("tone_22khz", lnb.tone_22khz);
  take("switch_type", lnb.switch_type);
  take("motor", lnb.motor);
  take("kept_word1_20_31", lnb.kept_20);
}

template <class Take>
void ForEachField(const SatelliteRecord& satellite, Take take) {
  take("carrier_count", satellite.carrier_count);
  take("lnb_index", satellite.lnb_index);
  take("position", satellite.position);
  take("user", satellite.user);
  take("east", satellite.east);
  take("angle", satellite.angle);
  take("kept_word1_14_31", satellite.kept_14);
}

template <class Take>
void ForEachField(const CarrierRecord& carrier, Take take) {
  take("frequency", carrier.frequency);
  take("symbol_rate", carrier.symbol_rate);
  take("polarization", carrier.polarization);
  take("fec", carrier.fec);
  take("user", carrier.user);
  take("lnb_index", carrier.lnb_index);
  take("first_service", carrier.first_service);
  take("service_count", carrier.service_count);
  take("satellite_index", carrier.satellite_index);
  take("kept_word2_16_31", carrier.kept_16);
}

template <class Take>
void ForEachField(const ServiceRecord& service, Take take) {
  take("program_number", service.program_number);
  take("carrier_index", service.carrier_index);
  take("video_pid", service.video_pid);
  take("audio_pid", service.audio_pid);
  take("pcr_pid", service.pcr_pid);
  take("type", service.type);
  take("free", service.free);
  take("kept_word1_28_31", service.kept_28);
  take("kept_word2_17_31", service.kept_17);
}

template <class Take>
void ForEachField(const FavouriteRecord& group, Take take) {
  take("kept_word0_0_3", group.kept_0);
  take("kept_word0_28_31", group.kept_28);
}

// One-based places that the references of the output use.
struct Places {
  explicit Places(const StaticDatabase& database) {
    for (const Service* service : database.services) number.emplace(service, number.size() + 1);
    for (const Service* service : database.service_order) order.emplace(service, order.size() + 1);
  }
  std::map<const Service*, size_t> number;  // in the SDB's own order
  std::map<const Service*, size_t> order;   // in the service order list
};

template <class Record>
Json FieldsOf(const Record& record) {
  Json fields = Json::object();
  ForEachField(record, [&](const char* name, uint32_t value) { fields[name] = value; });
  return fields;
}

template <class Record>
Json NamedFieldsOf(const Record& record) {
  Json fields = {{"name", NameText(record.name)}};
  fields.update(FieldsOf(record));
  return fields;
}

Json ServiceJson(const Service& service, const Places& places) {
  Json fields = {{"number", places.number.at(&service)}, {"order", places.order.at(&service)}};
  fields.update(NamedFieldsOf(service.record));
  return fields;
}

Json SatelliteJson(const Satellite& satellite, const Places& places) {
  Json fields = NamedFieldsOf(satellite.record);
  fields["carriers"] = Json::array();
  for (const Carrier* carrier : satellite.carriers) {
    Json inner = NamedFieldsOf(carrier->record);
    inner["services"] = Json::array();
    for (const Service* service : carrier->services)
      inner["services"].push_back(ServiceJson(*service, places));
    fields["carriers"].push_back(std::move(inner));
  }
  return fields;
}

Json NumbersOf(const std::vector<Service*>& services, const Places& places) {
  Json numbers = Json::array();
  for (const Service* service : services) numbers.push_back(places.number.at(service));
  return numbers;
}

std::string JsonText(const OpenSdb& sdb) {
  const StaticDatabase& database = *sdb.database;
  const Places places(database);
  Json root = {{"name", Utf8FromLatin(sdb.name)}};
  root["lnbs"] = Json::array();
  for (uint32_t i = 0; i < database.lnb_count; ++i) root["lnbs"].push_back(FieldsOf(database.lnbs[i]));
  root["satellites"] = Json::array();
  for (const Satellite* satellite : database.satellites)
    root["satellites"].push_back(SatelliteJson(*satellite, places));
  root["favourites"] = Json::array();
  for (const FavouriteGroup& group : database.favourites) {
    Json fields = {{"tv_name", NameText(group.record.tv_name)},
                   {"radio_name", NameText(group.record.radio_name)}};
    fields.update(FieldsOf(group.record));
    fields["tv_count"] = group.tv.size();
    fields["tv"] = NumbersOf(group.tv, places);
    fields["radio_count"] = group.radio.size();
    fields["radio"] = NumbersOf(group.radio, places);
    root["favourites"].push_back(std::move(fields));
  }
  return root.dump(2) + "\n";
}

// One table for all kinds of records: a row leaves the columns of other kinds empty.
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
    AppendLine(text, columns_);
    for (const Row& row : rows_) {
      std::vector<std::string> cells(columns_.size());
      for (const auto& [column, value] : row) cells[places_.at(column)] = value;
      AppendLine(text, cells);
    }
    return text;
  }

 private:
  static void AppendLine(std::string& text, const std::vector<std::string>& cells) {
    for (size_t i = 0; i < cells.size(); ++i) {
      if (i != 0) text += ',';
      if (cells[i].find_first_of(",\"\r\n") == std::string::npos) {
        text += cells[i];
        continue;
      }
      text += '"';
      for (const char c : cells[i]) text.append(c == '"' ? 2 : 1, c);
      text += '"';
    }
    text += "\r\n";
  }
  std::vector<std::string> columns_;
  std::map<std::string, size_t> places_;
  std::vector<Row> rows_;
};

template <class Record>
void AddFields(CsvTable::Row& row, const Record& record) {
  ForEachField(record,
               [&](const char* name, uint32_t value) { row.emplace_back(name, std::to_string(value)); });
}

CsvTable::Row NewRow(const char* kind, std::initializer_list<std::pair<const char*, size_t>> places) {
  CsvTable::Row row = {{"record", kind}};
  for (const auto& [column, number] : places) row.emplace_back(column, std::to_string(number));
  return row;
}

void AddSatelliteRows(CsvTable& table, const Satellite& satellite, size_t number, const Places& places) {
  auto row = NewRow("satellite", {{"satellite", number}});
  row.emplace_back("name", NameText(satellite.record.name));
  AddFields(row, satellite.record);
  table.Add(std::move(row));
  for (size_t i = 0; i < satellite.carriers.size(); ++i) {
    const Carrier& carrier = *satellite.carriers[i];
    row = NewRow("carrier", {{"satellite", number}, {"carrier", i + 1}});
    row.emplace_back("name", NameText(carrier.record.name));
    AddFields(row, carrier.record);
    table.Add(std::move(row));
    for (const Service* service : carrier.services) {
      row = NewRow("service", {{"satellite", number},
                               {"carrier", i + 1},
                               {"service", places.number.at(service)},
                               {"order", places.order.at(service)}});
      row.emplace_back("name", NameText(service->record.name));
      AddFields(row, service->record);
      table.Add(std::move(row));
    }
  }
}

void AddFavouriteRows(CsvTable& table, const FavouriteGroup& group, size_t number, const Places& places) {
  auto row = NewRow("favourite", {{"group", number}});
  row.emplace_back("tv_name", NameText(group.record.tv_name));
  row.emplace_back("radio_name", NameText(group.record.radio_name));
  row.emplace_back("tv_count", std::to_string(group.tv.size()));
  row.emplace_back("radio_count", std::to_string(group.radio.size()));
  AddFields(row, group.record);
  table.Add(std::move(row));
  const auto add = [&](const char* kind, const std::vector<Service*>& services) {
    for (size_t i = 0; i < services.size(); ++i) {
      auto entry =
          NewRow(kind, {{"group", number}, {"entry", i + 1}, {"service", places.number.at(services[i])}});
      entry.emplace_back("name", NameText(services[i]->record.name));
      table.Add(std::move(entry));
    }
  };
  add("favourite_tv", group.tv);
  add("favourite_radio", group.radio);
}

std::string CsvText(const OpenSdb& sdb) {
  const StaticDatabase& database = *sdb.database;
  const Places places(database);
  CsvTable table;
  for (uint32_t i = 0; i < database.lnb_count; ++i) {
    auto row = NewRow("lnb", {{"lnb", i + 1}});
    AddFields(row, database.lnbs[i]);
    table.Add(std::move(row));
  }
  for (size_t i = 0; i < database.satellites.size(); ++i) {
    AddSatelliteRows(table, *database.satellites[i], i + 1, places);
  }
  for (size_t i = 0; i < database.favourites.size(); ++i) {
    AddFavouriteRows(table, database.favourites[i], i + 1, places);
  }
  return table.Text();
}

void Export(CommandState& state, const ExportOptions& options) {
  ExpectApart({{"FILE", PathFromUtf8(options.file)}}, {{"--output", PathFromUtf8(options.output)}});
  const Document document = OpenDocument(state, options.file);
  const auto chosen = ParseList(state, options.sdb, document.sdbs.size());
  const OpenSdb& sdb = document.sdbs[chosen.front()];
  if (sdb.database->satellites.empty()) {
    Tell(state.context.messages, Icon::kStop, "There is no information to export");
    Tell(state.context.messages, Icon::kInformation, "%s", options.file.c_str());
    throw CommandFailed{};
  }
  const std::string text = options.format == "json"  ? JsonText(sdb)
                           : options.format == "csv" ? CsvText(sdb)
                                                     : DatabaseReport(*sdb.database);
  WriteOutput(state, options.output, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

}  // namespace

void AddExportCommand(CLI::App& program, CommandState& state) {
  const auto options = std::make_shared<ExportOptions>();
  CLI::App& command = *program.add_subcommand("export", "Write one SDB as a text report, CSV or JSON");
  command.add_option("FILE", options->file, "Database file")->required();
  command.add_option("-o,--output", options->output, "File to write")->required();
  command.add_option("--sdb", options->sdb, "Which SDB, from 1 (default 1)")->check(CheckPlace);
  command.add_option("--format", options->format, "text, csv or json (default text)")
      ->check(OneOf({"text", "csv", "json"}));
  command.callback([&state, options] { Export(state, *options); });
}

}  // namespace vexa
