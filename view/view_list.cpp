// The list of a database window: which rows and columns, and the text of each cell.
#include <algorithm>
#include <iterator>
#include <unordered_set>

#include "core/messages.h"
#include "platform/text.h"
#include "view/view_model.h"

namespace vexa {

namespace {

const char* YesNo(bool yes) {
  return yes ? "Yes" : "No";
}
const char* EastWest(uint32_t east) {
  return east ? "East" : "West";
}
const char* TypeName(const ServiceRecord& record) {
  return record.type == kTv ? "TV" : "Radio";
}

std::string SwitchText(const LnbRecord& lnb) {
  const auto letter = [](uint32_t place) { return std::string(1, static_cast<char>('A' + place - 1)); };
  switch (lnb.switch_type) {
    case kSwitchToneBurst:
      return lnb.tone_burst_switch ? "Tone Burst " + letter(lnb.tone_burst_switch) : "Tone Burst";
    case kSwitchDiseqc:
      return lnb.diseqc_switch ? "DiSEqC 1.0 " + letter(lnb.diseqc_switch) : "DiSEqC 1.0";
    default:
      return lnb.plain_switch ? std::to_string(lnb.plain_switch) : "None";
  }
}

std::string ToneText(uint32_t tone) {
  static constexpr const char* kNames[] = {"Off", "On", "Auto"};
  return tone < std::size(kNames) ? kNames[tone] : "";
}

std::string PidTitle(const char* what, bool hexadecimal) {
  return Format(hexadecimal ? "%s (Hex)" : "%s (Dec)", what);
}

using Columns = std::vector<ListColumn>;

Columns LnbColumns() {
  return {{"No.", 44, true},       {"LNB freq 1", 80, true},     {"LNB freq 2", 80, true},
          {"LNB Type", 80, false}, {"Power Control", 90, false}, {"22 kHz", 60, false},
          {"Switch", 100, false},  {"Motor", 60, false}};
}

Columns SatelliteColumns() {
  return {{"No.", 44, true},
          {"Satellite Name", 150, false},
          {"LNB Index", 70, false},
          {"EastWest Flag", 100, false},
          {"Angle", 60, true},
          {"Position", 64, true},
          {"Factory Default", 108, false},
          {"Total Carrier", 92, true}};
}

Columns CarrierColumns() {
  return {{"No.", 56, true},       {"Carrier Name", 150, false},    {"Satellite Name", 150, false},
          {"Frequency", 76, true}, {"SymbolRate", 80, true},        {"Polarization", 84, false},
          {"FEC", 50, false},      {"Factory Default", 108, false}, {"Service Count", 96, true}};
}

Columns ServiceColumns(bool hexadecimal) {
  return {{"No.", 56, true},
          {"Service Name", 150, false},
          {"Carrier Name", 130, false},
          {"Program No", 80, true},
          {"Service Type", 96, false},
          {PidTitle("Video", hexadecimal), 80, true},
          {PidTitle("Audio", hexadecimal), 80, true},
          {PidTitle("PCR", hexadecimal), 80, true},
          {"Scrambled", 72, false}};
}

// Of services of many satellites.
constexpr size_t kWidePlace = 3;  // of the first column more
Columns WideServiceColumns(bool hexadecimal) {
  Columns columns = ServiceColumns(hexadecimal);
  columns.insert(columns.begin() + kWidePlace, {{"Satellite Name", 150, false}, {"Frequency", 76, true}});
  return columns;
}
bool IsWide(const Columns& columns) {
  return columns.size() > kWidePlace && columns[1].title == "Service Name" &&
         columns[kWidePlace].title == "Satellite Name";
}

Columns FavouriteColumns(bool radio) {
  if (radio) return {{"No.", 44, true}, {"Radio List", 150, false}, {"Radio Services", 100, true}};
  return {{"No.", 44, true}, {"TV List", 150, false}, {"TV Services", 100, true}};
}

Columns UbiColumns() {
  return {{"No.", 44, true},
          {"UBI Name", 120, false},
          {"RF Channel", 90, true},
          {"Start Volume", 100, true},
          {"Start Programme", 124, true}};
}

bool Shown(const Service& service, ListView view) {
  if (view == ListView::kTvServices) return service.record.type == kTv;
  if (view == ListView::kRadioServices) return service.record.type != kTv;
  return true;
}

void AddServices(ListModel& list, const Carrier& carrier, uint32_t sdb, ListView view) {
  for (size_t i = 0; i < carrier.services.size(); ++i) {
    Service* service = carrier.services[i];
    if (!Shown(*service, view)) continue;
    NodeRef node;
    node.kind = NodeKind::kService;
    node.sdb = sdb;
    node.index = static_cast<uint32_t>(i);
    node.satellite = carrier.satellite;
    node.carrier = service->carrier;
    node.service = service;
    list.rows.push_back(node);
  }
}

// The satellites, and through them the carriers, that a view of `node` takes in.
std::vector<Satellite*> SatellitesOf(const StaticDatabase& database, const NodeRef& node) {
  if (node.satellite) return {node.satellite};
  return database.satellites;
}

void AddCarriers(const Document& document, ListModel& list, const NodeRef& node) {
  for (Satellite* satellite : SatellitesOf(*document.sdbs[node.sdb].database, node)) {
    NodeRef parent = node;
    parent.kind = NodeKind::kSatellite;
    parent.satellite = satellite;
    const auto carriers = ChildNodes(document, parent);
    list.rows.insert(list.rows.end(), carriers.begin(), carriers.end());
  }
}

ListModel ListOfView(const Document& document, const NodeRef& node, ListView view, bool hexadecimal) {
  ListModel list;
  list.title = NodeLabel(document, node);
  if (view == ListView::kCarriers) {
    list.columns = CarrierColumns();
    AddCarriers(document, list, node);
    return list;
  }
  list.columns = node.satellite ? ServiceColumns(hexadecimal) : WideServiceColumns(hexadecimal);
  const StaticDatabase& database = *document.sdbs[node.sdb].database;
  if (node.carrier) {
    AddServices(list, *node.carrier, node.sdb, view);
    return list;
  }
  if (!node.satellite) list.rows.reserve(database.services.size());
  for (const Satellite* satellite : SatellitesOf(database, node)) {
    for (const Carrier* carrier : satellite->carriers) AddServices(list, *carrier, node.sdb, view);
  }
  return list;
}

// The satellites that an LNB feeds.
void AddFedSatellites(const Document& document, ListModel& list, const NodeRef& lnb) {
  NodeRef level = lnb;
  level.kind = NodeKind::kSatelliteLevel;
  for (const NodeRef& node : ChildNodes(document, level)) {
    if (node.satellite->record.lnb_index == lnb.index) list.rows.push_back(node);
  }
}

void AddEntries(ListModel& list, const NodeRef& group, const std::vector<Service*>& services, NodeKind kind) {
  for (size_t i = 0; i < services.size(); ++i) {
    NodeRef node;
    node.kind = kind;
    node.sdb = group.sdb;
    node.index = static_cast<uint32_t>(i);
    node.group = group.index;
    node.service = services[i];
    node.carrier = services[i]->carrier;
    node.satellite = node.carrier ? node.carrier->satellite : nullptr;
    list.rows.push_back(node);
  }
}

ListModel FavouriteEntries(const Document& document, const NodeRef& node, bool hexadecimal) {
  ListModel list;
  list.title = NodeLabel(document, node);
  list.columns = ServiceColumns(hexadecimal);
  const FavouriteGroup& group = document.sdbs[node.sdb].database->favourites[node.index];
  if (node.kind == NodeKind::kTvGroup) AddEntries(list, node, group.tv, NodeKind::kFavouriteTvEntry);
  if (node.kind == NodeKind::kRadioGroup) AddEntries(list, node, group.radio, NodeKind::kFavouriteRadioEntry);
  return list;
}

Columns ColumnsBelow(NodeKind kind, bool hexadecimal) {
  switch (kind) {
    case NodeKind::kLnbLevel:
      return LnbColumns();
    case NodeKind::kSdb:
    case NodeKind::kLnb:
    case NodeKind::kSatelliteLevel:
      return SatelliteColumns();
    case NodeKind::kSatellite:
      return CarrierColumns();
    case NodeKind::kCarrier:
      return ServiceColumns(hexadecimal);
    case NodeKind::kTvGroupLevel:
    case NodeKind::kRadioGroupLevel:
      return FavouriteColumns(kind == NodeKind::kRadioGroupLevel);
    case NodeKind::kUbiLevel:
      return UbiColumns();
    default:
      return {};
  }
}

}  // namespace

bool HasViews(NodeKind kind) {
  return kind == NodeKind::kSdb || kind == NodeKind::kSatelliteLevel || kind == NodeKind::kSatellite ||
         kind == NodeKind::kCarrier;
}

bool HasView(NodeKind kind, ListView view) {
  return HasViews(kind) && (kind != NodeKind::kCarrier || view != ListView::kCarriers);
}

ListView ViewShown(NodeKind kind, ListView view) {
  if (view != ListView::kBelow) return view;
  if (kind == NodeKind::kSatellite) return ListView::kCarriers;
  return kind == NodeKind::kCarrier ? ListView::kServices : view;
}

ListModel ListBelow(const Document& document, const NodeRef& node, ListView view, bool hexadecimal) {
  if (node.kind == NodeKind::kNone) return {};
  if (node.kind == NodeKind::kService || node.kind == NodeKind::kUbi)
    return DetailsOf(document, node, hexadecimal);
  if (node.kind != NodeKind::kUbiLevel && node.sdb >= document.sdbs.size()) return {};
  if (node.kind == NodeKind::kTvGroup || node.kind == NodeKind::kRadioGroup)
    return FavouriteEntries(document, node, hexadecimal);
  if (view != ListView::kBelow && HasViews(node.kind)) return ListOfView(document, node, view, hexadecimal);
  ListModel list;
  list.title = NodeLabel(document, node);
  list.columns = ColumnsBelow(node.kind, hexadecimal);
  if (node.kind == NodeKind::kLnb) {
    AddFedSatellites(document, list, node);
  } else if (node.kind == NodeKind::kSdb) {
    NodeRef satellites = node;
    satellites.kind = NodeKind::kSatelliteLevel;
    list.rows = ChildNodes(document, satellites);
  } else {
    list.rows = ChildNodes(document, node);
  }
  return list;
}

namespace {

std::string LnbCell(const LnbRecord& lnb, size_t column) {
  switch (column) {
    case 1:
      return std::to_string(lnb.frequency1);
    case 2:
      return std::to_string(lnb.frequency2);
    case 3:
      return LnbTypeName(lnb.type);
    case 4:
      return lnb.power ? "On" : "Off";
    case 5:
      return ToneText(lnb.tone_22khz);
    case 6:
      return SwitchText(lnb);
    default:
      return lnb.motor ? "Motor" : "Fixed";
  }
}

std::string SatelliteCell(const CodePage& page, const Satellite& satellite, size_t column) {
  const SatelliteRecord& record = satellite.record;
  switch (column) {
    case 1:
      return NameText(page, record.name);
    case 2:
      return Format("LNB%d", static_cast<int>(record.lnb_index) + 1);
    case 3:
      return EastWest(record.east);
    case 4:
      return ViewAngleText(record.angle);
    case 5:
      return std::to_string(record.position);
    case 6:
      return YesNo(!record.user);
    default:
      return std::to_string(satellite.carriers.size());
  }
}

std::string CarrierCell(const CodePage& page, const Carrier& carrier, size_t column) {
  const CarrierRecord& record = carrier.record;
  switch (column) {
    case 1:
      return NameText(page, record.name);
    case 2:
      return carrier.satellite ? NameText(page, carrier.satellite->record.name) : "";
    case 3:
      return std::to_string(record.frequency);
    case 4:
      return std::to_string(record.symbol_rate);
    case 5:
      return PolarizationName(record.polarization);
    case 6:
      return FecName(record.fec);
    case 7:
      return YesNo(!record.user);
    default:
      return std::to_string(carrier.services.size());
  }
}

std::string ServiceCell(const CodePage& page, const Service& service, size_t column, bool hexadecimal) {
  const ServiceRecord& record = service.record;
  switch (column) {
    case 1:
      return NameText(page, record.name);
    case 2:
      return service.carrier ? NameText(page, service.carrier->record.name) : "";
    case 3:
      return std::to_string(record.program_number);
    case 4:
      return TypeName(record);
    case 5:
      return PidText(record.video_pid, hexadecimal);
    case 6:
      return PidText(record.audio_pid, hexadecimal);
    case 7:
      return PidText(record.pcr_pid, hexadecimal);
    default:
      return record.free ? "---" : "Yes";
  }
}

std::string WideServiceCell(const CodePage& page, const Service& service, size_t column, bool hexadecimal) {
  if (column < kWidePlace) return ServiceCell(page, service, column, hexadecimal);
  if (column >= kWidePlace + 2) return ServiceCell(page, service, column - 2, hexadecimal);
  return service.carrier ? CarrierCell(page, *service.carrier, column - 1) : "";
}

std::string FavouriteCell(const CodePage& page, const FavouriteGroup& group, bool radio, size_t column) {
  if (column == 1) return NameText(page, radio ? group.record.radio_name : group.record.tv_name);
  return std::to_string(radio ? group.radio.size() : group.tv.size());
}

std::string UbiCell(const CodePage& page, const OpenUbi& ubi, size_t column) {
  switch (column) {
    case 1:
      return Utf8FromPage(page, ubi.name);
    case 2:
      return std::to_string(ubi.record.rf_channel);
    case 3:
      return std::to_string(ubi.record.start_volume);
    default:
      return std::to_string(ubi.record.start_programme);
  }
}

}  // namespace

std::string CellText(const Document& document, const ListModel& list, size_t row, size_t column,
                     bool hexadecimal) {
  if (row >= list.size() || column >= list.columns.size()) return "";
  if (!list.details.empty()) return column == 0 ? list.details[row].first : list.details[row].second;
  const NodeRef& node = list.rows[row];
  const CodePage& page = NamesPage(document);
  if (column == 0) return std::to_string(node.index + 1);
  switch (node.kind) {
    case NodeKind::kLnb:
      return LnbCell(document.sdbs[node.sdb].database->lnbs[node.index], column);
    case NodeKind::kSatellite:
      return SatelliteCell(page, *node.satellite, column);
    case NodeKind::kCarrier:
      return CarrierCell(page, *node.carrier, column);
    case NodeKind::kService:
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      return IsWide(list.columns) ? WideServiceCell(page, *node.service, column, hexadecimal)
                                  : ServiceCell(page, *node.service, column, hexadecimal);
    case NodeKind::kTvGroup:
    case NodeKind::kRadioGroup:
      return FavouriteCell(page, document.sdbs[node.sdb].database->favourites[node.index],
                           node.kind == NodeKind::kRadioGroup, column);
    case NodeKind::kUbi:
      return UbiCell(page, document.ubis[node.index], column);
    default:
      return "";
  }
}

namespace {

using Details = std::vector<std::pair<std::string, std::string>>;

Details LnbDetails(const LnbRecord& lnb) {
  return {{"LNB freq 1", std::to_string(lnb.frequency1)},
          {"LNB freq 2", std::to_string(lnb.frequency2)},
          {"LNB Type", LnbTypeName(lnb.type)},
          {"Power Control", lnb.power ? "On" : "Off"}};
}

Details SatelliteDetails(const CodePage& page, const Satellite& satellite) {
  static constexpr const char* kTitles[] = {"Satellite Name", "LNB Index",       "EastWest Flag", "Angle",
                                            "Position",       "Factory Default", "Total Carrier"};
  Details details;
  for (size_t i = 0; i < std::size(kTitles); ++i)
    details.emplace_back(kTitles[i], SatelliteCell(page, satellite, i + 1));
  return details;
}

Details CarrierDetails(const CodePage& page, const Carrier& carrier) {
  const std::string angle = carrier.satellite ? ViewAngleText(carrier.satellite->record.angle) : "";
  return {{"Satellite Name", CarrierCell(page, carrier, 2)}, {"Angle", angle},
          {"Carrier Name", CarrierCell(page, carrier, 1)},   {"Frequency", CarrierCell(page, carrier, 3)},
          {"SymbolRate", CarrierCell(page, carrier, 4)},     {"Polarization", CarrierCell(page, carrier, 5)}};
}

// The names of the favourite lists that name the service, in the order of the groups.
std::string ListsOf(const CodePage& page, const StaticDatabase& database, const Service& service) {
  std::string names;
  const auto add = [&](const std::vector<Service*>& entries, const std::string& name, const char* list) {
    if (std::find(entries.begin(), entries.end(), &service) == entries.end()) return;
    names += (names.empty() ? "" : ", ") + name + " (" + list + ")";
  };
  for (const FavouriteGroup& group : database.favourites) {
    add(group.tv, NameText(page, group.record.tv_name), "TV");
    add(group.radio, NameText(page, group.record.radio_name), "Radio");
  }
  return names.empty() ? "---" : names;
}

Details ServiceDetails(const CodePage& page, const StaticDatabase& database, const Service& service,
                       bool hexadecimal) {
  const auto columns = ServiceColumns(hexadecimal);
  Details details;
  for (size_t i = 1; i < columns.size(); ++i)
    details.emplace_back(columns[i].title, ServiceCell(page, service, i, hexadecimal));
  details.emplace_back("Favourite Groups", ListsOf(page, database, service));
  return details;
}

Details UbiDetails(const CodePage& page, const OpenUbi& ubi) {
  static constexpr const char* kStandards[] = {"PAL", "NTSC", "Auto", ""};
  static constexpr const char* kScreens[] = {"4:3", "16:9", "Letterbox", ""};
  const UserBoxInfo& record = ubi.record;
  return {{"UBI Name", Utf8FromPage(page, ubi.name)},
          {"Menu Language", std::to_string(record.menu_language)},
          {"Audio Language", std::to_string(record.audio_language)},
          {"Time Zone", Format("%+.1f", record.time_zone / 2.0)},
          {"Summer Time", YesNo(record.flags & 1)},
          {"RF Output", record.flags & 2 ? "On" : "Off"},
          {"TV Standard", kStandards[record.flags >> 2 & 3]},
          {"Screen", kScreens[record.flags >> 4 & 3]},
          {"RF Channel", std::to_string(record.rf_channel)},
          {"Start Volume", std::to_string(record.start_volume)},
          {"Start Programme", std::to_string(record.start_programme)},
          {"Parental Lock", record.flags & 64 ? "On" : "Off"}};
}

}  // namespace

bool HasDetails(NodeKind kind) {
  switch (kind) {
    case NodeKind::kLnb:
    case NodeKind::kSatellite:
    case NodeKind::kCarrier:
    case NodeKind::kService:
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
    case NodeKind::kUbi:
      return true;
    default:
      return false;
  }
}

ListModel DetailsOf(const Document& document, const NodeRef& node, bool hexadecimal) {
  const CodePage& page = NamesPage(document);
  ListModel list;
  std::string name;
  switch (node.kind) {
    case NodeKind::kLnb:
      name = Format("LNB%d", static_cast<int>(node.index) + 1);
      list.details = LnbDetails(document.sdbs[node.sdb].database->lnbs[node.index]);
      break;
    case NodeKind::kSatellite:
      name = NameText(page, node.satellite->record.name);
      list.details = SatelliteDetails(page, *node.satellite);
      break;
    case NodeKind::kCarrier:
      name = NameText(page, node.carrier->record.name);
      list.details = CarrierDetails(page, *node.carrier);
      break;
    case NodeKind::kService:
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      name = NameText(page, node.service->record.name);
      list.details = ServiceDetails(page, *document.sdbs[node.sdb].database, *node.service, hexadecimal);
      break;
    case NodeKind::kUbi:
      name = NameText(document, document.ubis[node.index].name);
      list.details = UbiDetails(page, document.ubis[node.index]);
      break;
    default:
      return list;
  }
  list.title = Format("Info - %s", name.c_str());
  list.columns = {{list.title, 170, false}, {"Value", 220, false}};
  return list;
}

const char* UnreadableText(const Document& document, const NodeRef& node) {
  const bool service = node.kind == NodeKind::kService || node.kind == NodeKind::kFavouriteTvEntry ||
                       node.kind == NodeKind::kFavouriteRadioEntry;
  if (!service && node.kind != NodeKind::kSatellite && node.kind != NodeKind::kCarrier) return nullptr;
  const auto holds = [](const auto& records, const auto* record) {
    return std::find(records.begin(), records.end(), record) != records.end();
  };
  if (node.sdb < document.sdbs.size()) {
    const StaticDatabase& database = *document.sdbs[node.sdb].database;
    if (service                             ? holds(database.services, node.service)
        : node.kind == NodeKind::kSatellite ? holds(database.satellites, node.satellite)
                                            : holds(database.carriers, node.carrier))
      return nullptr;
  }
  return service ? "Error No: -10 \n( Invalid Process ) Display Service Information"
                 : "Error reading satellite information. Cannot proceed.";
}

ListModel GroupCandidates(const Document& document, const NodeRef& group, bool radio) {
  const StaticDatabase& database = *document.sdbs[group.sdb].database;
  const FavouriteGroup& lists = database.favourites[group.index];
  const std::vector<Service*>& entries = radio ? lists.radio : lists.tv;
  const std::unordered_set<const Service*> named(entries.begin(), entries.end());
  ListModel list;
  list.columns = WideServiceColumns(false);
  for (Service* service : database.service_order) {
    if ((service->record.type != kTv) != radio && !named.contains(service)) continue;
    NodeRef node;
    node.kind = NodeKind::kService;
    node.sdb = group.sdb;
    node.service = service;
    node.carrier = service->carrier;
    node.satellite = service->carrier->satellite;
    list.rows.push_back(node);
  }
  return list;
}

ColumnSet ColumnSetOf(const ListModel& list) {
  if (list.columns.size() < 2 || !list.details.empty()) return ColumnSet::kDetails;
  if (IsWide(list.columns)) return ColumnSet::kSdbServices;
  struct Row {
    const char* title;  // of the second column
    ColumnSet set;
  };
  static constexpr Row kSets[] = {
      {"LNB freq 1", ColumnSet::kLnbs},       {"Satellite Name", ColumnSet::kSatellites},
      {"Carrier Name", ColumnSet::kCarriers}, {"Service Name", ColumnSet::kServices},
      {"TV List", ColumnSet::kFavourites},    {"Radio List", ColumnSet::kFavourites},
      {"UBI Name", ColumnSet::kUbis}};
  for (const Row& row : kSets) {
    if (list.columns[1].title == row.title) return row.set;
  }
  return ColumnSet::kDetails;
}

}  // namespace vexa
