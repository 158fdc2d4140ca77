#include "view/node_edit.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <tuple>

#include "view/common_form.h"
#include "view/window_state.h"

namespace vexa {

namespace {

bool IsEntry(NodeKind kind) {
  return kind == NodeKind::kFavouriteTvEntry || kind == NodeKind::kFavouriteRadioEntry;
}

GroupKind HalfOf(NodeKind entry) {
  return entry == NodeKind::kFavouriteTvEntry ? GroupKind::kTv : GroupKind::kRadio;
}

StaticDatabase* DatabaseOf(Document& document, const NodeRef& node) {
  return node.sdb < document.sdbs.size() ? document.sdbs[node.sdb].database.get() : nullptr;
}

// Rows of one list have the same key: kind, owner, and group of an entry.
bool InOneList(const NodeRef& one, const NodeRef& other) {
  if (one.kind != other.kind || one.sdb != other.sdb) return false;
  if (IsEntry(one.kind)) return one.group == other.group;
  if (one.kind == NodeKind::kCarrier) return one.satellite == other.satellite;
  if (one.kind == NodeKind::kService) return one.carrier == other.carrier;
  return true;
}

bool AreInOneList(const std::vector<NodeRef>& nodes) {
  return std::all_of(nodes.begin(), nodes.end(),
                     [&](const NodeRef& node) { return InOneList(nodes[0], node); });
}

bool CheckOneList(const Messages& messages, const std::vector<NodeRef>& nodes) {
  if (AreInOneList(nodes)) return true;
  Tell(messages, Icon::kStop, "Invalid Sequence. Can not continue.");
  return false;
}

Rows RowsOf(const std::vector<NodeRef>& nodes) {
  Rows rows;
  for (const NodeRef& node : nodes) rows.push_back(node.index);
  std::sort(rows.begin(), rows.end());
  return rows;
}

NodeRef MadeNode(NodeKind kind, uint32_t sdb, size_t index) {
  NodeRef node;
  node.kind = kind;
  node.sdb = sdb;
  node.index = static_cast<uint32_t>(index);
  return node;
}

template <class T>
size_t PositionIn(const std::vector<T*>& list, const T* record) {
  return static_cast<size_t>(std::find(list.begin(), list.end(), record) - list.begin());
}

NodeRef NodeOfSatellite(const StaticDatabase& database, uint32_t sdb, Satellite& satellite) {
  NodeRef node = MadeNode(NodeKind::kSatellite, sdb, PositionIn(database.satellites, &satellite));
  node.satellite = &satellite;
  return node;
}

NodeRef NodeOfCarrier(uint32_t sdb, Carrier& carrier) {
  NodeRef node = MadeNode(NodeKind::kCarrier, sdb, PositionIn(carrier.satellite->carriers, &carrier));
  node.satellite = carrier.satellite;
  node.carrier = &carrier;
  return node;
}

NodeRef NodeOfService(uint32_t sdb, Service& service) {
  NodeRef node = MadeNode(NodeKind::kService, sdb, PositionIn(service.carrier->services, &service));
  node.satellite = service.carrier->satellite;
  node.carrier = service.carrier;
  node.service = &service;
  return node;
}

}  // namespace

bool NodeTakes(NodeKind kind, NodeAction action) {
  switch (kind) {
    case NodeKind::kSdb:
    case NodeKind::kLnb:
    case NodeKind::kUbi:
      return action == NodeAction::kEdit || action == NodeAction::kAdd || action == NodeAction::kDelete;
    case NodeKind::kSatellite:
    case NodeKind::kCarrier:
    case NodeKind::kService:
      return true;
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      return action != NodeAction::kInsert;
    case NodeKind::kTvGroup:
    case NodeKind::kRadioGroup:
      return action == NodeAction::kEdit || action == NodeAction::kAdd;
    case NodeKind::kLnbLevel:
    case NodeKind::kSatelliteLevel:
    case NodeKind::kUbiLevel:
      return action == NodeAction::kAdd;
    default:
      return false;
  }
}

std::optional<ServiceType> TypeShown(ListView view) {
  if (view == ListView::kTvServices) return kTv;
  return view == ListView::kRadioServices ? std::optional(kRadio) : std::nullopt;
}

NodeRef NodeToAddAt(const NodeRef& tree, const NodeRef& row) {
  if (row.kind == NodeKind::kService && tree.kind != NodeKind::kCarrier) return row;
  if (row.kind != NodeKind::kCarrier || tree.kind == NodeKind::kSatellite) return tree;
  NodeRef satellite = row;
  satellite.kind = NodeKind::kSatellite;
  satellite.carrier = nullptr;
  return satellite;
}

std::optional<NodeRef> AddAtNode(const Messages& messages, Document& document, const NodeRef& at,
                                 const DefaultRecords& defaults, std::optional<ServiceType> type) {
  if (at.kind == NodeKind::kUbiLevel || at.kind == NodeKind::kUbi) {
    if (!AddUbi(messages, document)) return std::nullopt;
    return MadeNode(NodeKind::kUbi, 0, document.ubis.size() - 1);
  }
  if (at.kind == NodeKind::kSdb) {
    if (!AddSdb(messages, document, defaults)) return std::nullopt;
    const size_t last = document.sdbs.size() - 1;
    return MadeNode(NodeKind::kSdb, static_cast<uint32_t>(last), last);
  }
  StaticDatabase* database = DatabaseOf(document, at);
  if (!database) return std::nullopt;
  switch (at.kind) {
    case NodeKind::kLnbLevel:
    case NodeKind::kLnb:
      if (!AddLnb(messages, *database, defaults)) return std::nullopt;
      return MadeNode(NodeKind::kLnb, at.sdb, database->lnb_count - 1);
    case NodeKind::kSatelliteLevel:
      if (Satellite* added = AddSatellite(messages, *database, defaults))
        return NodeOfSatellite(*database, at.sdb, *added);
      return std::nullopt;
    case NodeKind::kSatellite:
      if (Carrier* added = AddCarrier(messages, *database, *at.satellite, defaults))
        return NodeOfCarrier(at.sdb, *added);
      return std::nullopt;
    case NodeKind::kCarrier:
    case NodeKind::kService:
      if (Service* added = AddService(messages, *database, *at.carrier, defaults, type))
        return NodeOfService(at.sdb, *added);
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

std::optional<NodeRef> InsertAtRows(const Messages& messages, Document& document,
                                    const std::vector<NodeRef>& rows, const DefaultRecords& defaults,
                                    std::optional<ServiceType> type) {
  StaticDatabase* database = rows.empty() ? nullptr : DatabaseOf(document, rows[0]);
  if (!database) return std::nullopt;
  const NodeRef& at = rows[0];
  const Rows places = RowsOf(rows);
  switch (at.kind) {
    case NodeKind::kSatellite:
      if (Satellite* added = InsertSatellite(messages, *database, defaults, places))
        return NodeOfSatellite(*database, at.sdb, *added);
      return std::nullopt;
    case NodeKind::kCarrier:
      if (Carrier* added = InsertCarrier(messages, *database, *at.satellite, defaults, places))
        return NodeOfCarrier(at.sdb, *added);
      return std::nullopt;
    case NodeKind::kService:
      if (Service* added = InsertService(messages, *database, *at.carrier, defaults, places, type))
        return NodeOfService(at.sdb, *added);
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

namespace {

void DeleteCarriersOf(StaticDatabase& database, const std::vector<NodeRef>& rows) {
  std::map<Satellite*, Rows> lists;
  for (const NodeRef& row : rows) lists[row.satellite].push_back(row.index);
  for (auto& [satellite, places] : lists) {
    std::sort(places.begin(), places.end());
    DeleteCarriers(database, *satellite, places);
  }
}

void DeleteEntries(StaticDatabase& database, const std::vector<NodeRef>& rows) {
  for (const NodeKind kind : {NodeKind::kFavouriteTvEntry, NodeKind::kFavouriteRadioEntry}) {
    std::map<uint32_t, Rows> groups;
    for (const NodeRef& row : rows) {
      if (row.kind == kind && row.group < kFavouriteGroups) groups[row.group].push_back(row.index);
    }
    for (auto& [group, places] : groups) {
      std::sort(places.begin(), places.end());
      DeleteFavourites(database.favourites[group], HalfOf(kind), places);
    }
  }
}

}  // namespace

bool DeleteNodes(const Messages& messages, Document& document, const std::vector<NodeRef>& rows) {
  if (rows.empty()) return false;
  const NodeRef& first = rows[0];
  if (first.kind == NodeKind::kUbi) {
    const Rows places = RowsOf(rows);
    for (auto place = places.rbegin(); place != places.rend(); ++place) DeleteUbi(document, *place);
    return true;
  }
  StaticDatabase* database = DatabaseOf(document, first);
  if (!database) return false;
  switch (first.kind) {
    case NodeKind::kSdb:
      return DeleteSdb(messages, document, first.sdb);
    case NodeKind::kLnb:
      return DeleteLnbs(messages, *database, RowsOf(rows));
    case NodeKind::kSatellite:
      DeleteSatellites(*database, RowsOf(rows));
      return true;
    case NodeKind::kCarrier:
      DeleteCarriersOf(*database, rows);
      return true;
    case NodeKind::kService:
      DeleteServices(*database, ServicesOf(rows));
      return true;
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      DeleteEntries(*database, rows);
      return true;
    default:
      return false;
  }
}

std::vector<Service*> ServicesOf(const std::vector<NodeRef>& rows) {
  std::vector<Service*> services;
  for (const NodeRef& row : rows) {
    if (row.service) services.push_back(row.service);
  }
  return services;
}

namespace {

// The records at these places come to stand there in this order.
template <class Record>
bool PutInOrder(std::vector<Record*>& list, const Rows& order) {
  const std::vector<Record*> before = list;
  Rows places = order;
  std::sort(places.begin(), places.end());
  for (size_t i = 0; i < places.size(); ++i) list[places[i]] = before[order[i]];
  return list != before;
}

}  // namespace

bool UseOrder(Document& document, const std::vector<NodeRef>& rows) {
  // By SDB, kind, group and owner.
  std::map<std::tuple<uint32_t, NodeKind, uint32_t, void*>, Rows> lists;
  for (const NodeRef& row : rows) {
    if (!DatabaseOf(document, row) || !NodeTakes(row.kind, NodeAction::kMove)) continue;
    void* owner = row.kind == NodeKind::kCarrier   ? static_cast<void*>(row.satellite)
                  : row.kind == NodeKind::kService ? static_cast<void*>(row.carrier)
                                                   : nullptr;
    lists[{row.sdb, row.kind, row.group, owner}].push_back(row.index);
  }
  bool changed = false;
  for (const auto& [key, list] : lists) {
    const auto& [sdb, kind, group, owner] = key;
    StaticDatabase& database = *document.sdbs[sdb].database;
    if (kind == NodeKind::kSatellite) changed |= PutInOrder(database.satellites, list);
    if (kind == NodeKind::kCarrier) changed |= PutInOrder(static_cast<Satellite*>(owner)->carriers, list);
    if (kind == NodeKind::kService) changed |= PutInOrder(static_cast<Carrier*>(owner)->services, list);
    if (IsEntry(kind)) changed |= PutInOrder(EntriesOf(database.favourites[group], HalfOf(kind)), list);
  }
  if (!changed) return false;
  for (OpenSdb& sdb : document.sdbs) {
    NumberSatellites(*sdb.database);
    for (Satellite* satellite : sdb.database->satellites) NumberCarriers(*satellite);
    RefillAll(*sdb.database);
  }
  return true;
}

Carrier* ProposedDestination(const StaticDatabase& database, const Carrier& source) {
  const auto& siblings = source.satellite->carriers;
  const size_t place = PositionIn(siblings, &source);
  if (place + 1 < siblings.size()) return siblings[place + 1];
  if (siblings.size() > 1) return siblings[siblings.size() - 2];
  for (const Satellite* satellite : database.satellites) {
    if (satellite != source.satellite && !satellite->carriers.empty()) return satellite->carriers[0];
  }
  return nullptr;
}

bool CheckMoveNodes(const Messages& messages, const std::vector<NodeRef>& rows, bool swap) {
  const bool services = rows.empty() || rows[0].kind == NodeKind::kService;
  if (services && swap) {
    if (rows.size() == 2) return true;
    Tell(messages, Icon::kStop, "Select two services to be swapped.");
    return false;
  }
  if (services) return CheckServiceMove(messages, ServicesOf(rows)) && CheckOneList(messages, rows);
  if (!CheckOneList(messages, rows)) return false;
  const Rows places = RowsOf(rows);
  return swap ? CheckSwapRows(messages, places) : CheckMoveRows(messages, places);
}

bool MayDragRows(const Messages& messages, const std::vector<NodeRef>& rows, bool control) {
  // Services and entries may go to a favourite group, wherever they come from, and a copy has no sequence to
  // keep.
  const bool any = rows.size() == 1 || rows[0].kind == NodeKind::kService || IsEntry(rows[0].kind) || control;
  return any || CheckMoveNodes(messages, rows, false);
}

namespace {

struct MoveTexts {
  NodeKind kind;  // of the records; kNone: all others
  const char *title, *from, *click;
};
constexpr MoveTexts kMoveTexts[] = {
    {NodeKind::kSatellite, "Move Satellite Information", "Move Satellite Information from \"%d\" to ",
     "Click to move satellite record."},
    {NodeKind::kCarrier, "Move Carrier Information", "Move Carrier Information from \"%d\" to ",
     "Click to move carrier record."},
    {NodeKind::kNone, "Move Information", "Move Information from \"%d\" to ", "Click to move record."}};
constexpr MoveTexts kSwapTexts[] = {
    {NodeKind::kSatellite, "Swap Satellite Information", "Swap Satellite Information \"%d\" with ",
     "Click to swap satellite record."},
    {NodeKind::kCarrier, "Swap Carrier Information", "Swap Carrier Information \"%d\" with ",
     "Click to swap carrier record."},
    {NodeKind::kNone, "Swap Information", "Swap Information \"%d\" with ", "Click to swap record."}};

}  // namespace

MoveDialogTexts MoveTextsOf(const std::vector<NodeRef>& rows, bool swap) {
  const size_t number = rows.empty() ? 1 : RowsOf(rows)[0] + 1;
  const auto& texts = swap ? kSwapTexts : kMoveTexts;
  const MoveTexts* found = std::find_if(std::begin(texts), std::end(texts) - 1, [&](const MoveTexts& row) {
    return !rows.empty() && row.kind == rows[0].kind;
  });
  std::string from = found->from;
  from.replace(from.find("%d"), 2, std::to_string(number));
  return {found->title, from, found->click};
}

bool MoveNodes(const Messages& messages, Document& document, const std::vector<NodeRef>& rows, bool swap,
               const std::string& target) {
  StaticDatabase* database = rows.empty() ? nullptr : DatabaseOf(document, rows[0]);
  if (!database || !CheckOneList(messages, rows)) return false;
  const NodeRef& first = rows[0];
  const Rows places = RowsOf(rows);
  switch (first.kind) {
    case NodeKind::kSatellite:
      return swap ? SwapSatellites(messages, *database, places, target).has_value()
                  : MoveSatellites(messages, *database, places, target).has_value();
    case NodeKind::kCarrier:
      return swap ? SwapCarriers(messages, *database, *first.satellite, places, target).has_value()
                  : MoveCarriers(messages, *database, *first.satellite, places, target).has_value();
    case NodeKind::kService:
      return !swap && MoveServices(messages, *database, *first.carrier, places, target).has_value();
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry: {
      if (first.group >= kFavouriteGroups) return false;
      FavouriteGroup& group = database->favourites[first.group];
      const GroupKind half = HalfOf(first.kind);
      return swap ? SwapFavourites(messages, group, half, places, target).has_value()
                  : MoveFavourites(messages, group, half, places, target).has_value();
    }
    default:
      return false;
  }
}

DropMark DropMarkOf(const std::vector<NodeRef>& rows, const NodeRef& target) {
  if (ListDroppedOn(rows, target)) return {true, false, true};
  if (rows.empty() || !NodeTakes(target.kind, NodeAction::kMove) || !AreInOneList(rows)) return {};
  const NodeRef& first = rows[0];
  if (InOneList(first, target)) return {true, first.index < target.index, false};
  return {target.kind == NodeKind::kService && first.kind == target.kind && first.sdb == target.sdb, false,
          false};
}

bool DropNodes(const Messages& messages, Document& document, const std::vector<NodeRef>& rows,
               const NodeRef& target) {
  StaticDatabase* database = rows.empty() ? nullptr : DatabaseOf(document, rows[0]);
  if (!database || std::find(rows.begin(), rows.end(), target) != rows.end()) return false;
  if (const auto list = ListDroppedOn(rows, target)) {
    const auto addition = AddRowsToGroup(messages, document, rows, target.index, list);
    return addition && addition->added > 0;
  }
  if (!CheckOneList(messages, rows)) return false;
  const NodeRef& first = rows[0];
  if (DropMarkOf(rows, target).fits) {
    if (InOneList(first, target))
      return MoveNodes(messages, document, rows, false, Format("%d", static_cast<int>(target.index) + 1));
    std::vector<NodeRef> sorted = rows;
    std::sort(sorted.begin(), sorted.end(),
              [](const NodeRef& one, const NodeRef& other) { return one.index < other.index; });
    return MoveServicesToCarrier(messages, *database, ServicesOf(sorted), *target.carrier, target.index);
  }
  const bool carriers = first.kind == NodeKind::kCarrier && target.kind == first.kind;
  Tell(messages, Icon::kStop,
       carriers && target.sdb == first.sdb ? "Carrier move between satellites is not supported."
                                           : "Can not drop in mismatched record type.");
  return false;
}

namespace {

// Access keys: 1 to 9, then A to G.
std::string LnbChoice(uint32_t index) {
  const int number = static_cast<int>(index) + 1;
  return index < 9 ? Format("LNB&%d", number)
                   : Format("&%c  LNB%d", static_cast<char>('A' + static_cast<int>(index) - 9), number);
}

}  // namespace

const std::vector<FieldChoice>& FieldChoices() {
  static const std::vector<FieldChoice> kChoices = [] {
    std::vector<FieldChoice> choices;
    const auto satellite = [&](const char* title, std::string text, SatelliteField field, uint32_t value) {
      choices.push_back({title, std::move(text), NodeKind::kSatellite, field, {}, {}, value});
    };
    const auto carrier = [&](const char* title, std::string text, CarrierField field, uint32_t value) {
      choices.push_back({title, std::move(text), NodeKind::kCarrier, {}, field, {}, value});
    };
    const auto service = [&](const char* title, std::string text, ServiceField field, uint32_t value) {
      choices.push_back({title, std::move(text), NodeKind::kService, {}, {}, field, value});
    };
    for (uint32_t i = 0; i < kMaximumLnbs; ++i)
      satellite("LNB Inde&x", LnbChoice(i), SatelliteField::kLnbIndex, i);
    satellite("&EastWest Flag", "&East", SatelliteField::kEast, 1);
    satellite("&EastWest Flag", "&West", SatelliteField::kEast, 0);
    satellite("&Factory Default", "&Yes", SatelliteField::kFactoryDefault, 1);
    satellite("&Factory Default", "&No", SatelliteField::kFactoryDefault, 0);
    for (uint32_t i = 0; i < 4; ++i)
      carrier("&Polarization", "&" + PolarizationName(i), CarrierField::kPolarization, i);
    static constexpr const char* kFecs[] = {"&Auto", "&1/2", "&2/3", "&3/4", "&5/6", "&7/8"};
    for (uint32_t i = 0; i < 6; ++i) carrier("F&EC", kFecs[i], CarrierField::kFec, i);
    carrier("&Factory Default", "&Yes", CarrierField::kFactoryDefault, 1);
    carrier("&Factory Default", "&No", CarrierField::kFactoryDefault, 0);
    service("&Scrambled", "&Yes", ServiceField::kScrambled, 1);
    service("&Scrambled", "&No", ServiceField::kScrambled, 0);
    service("Service &Type", "&TV", ServiceField::kTv, 1);
    service("Service &Type", "&Radio", ServiceField::kTv, 0);
    service("P&IDs", "No &video PID", ServiceField::kNoVideo, 1);
    service("P&IDs", "No &audio PID", ServiceField::kNoAudio, 1);
    service("P&IDs", "No &PCR PID", ServiceField::kNoPcr, 1);
    for (uint32_t i = 0; i < kMaximumLnbs; ++i)
      service("LNB Inde&x", LnbChoice(i), ServiceField::kLnbIndex, i);
    return choices;
  }();
  return kChoices;
}

size_t MarkNodes(Document& document, const std::vector<NodeRef>& rows, const FieldChoice& choice) {
  std::map<StaticDatabase*, std::vector<Service*>> services;
  for (const NodeRef& row : rows) {
    StaticDatabase* database = DatabaseOf(document, row);
    if (!database || row.kind != choice.kind) continue;
    if (row.kind == NodeKind::kCarrier)
      MarkCarriers(*row.satellite, {row.index}, choice.carrier_field, choice.value);
    if (row.kind == NodeKind::kSatellite)
      MarkSatellites(*database, {row.index}, choice.satellite_field, choice.value);
    if (row.kind == NodeKind::kService) services[database].push_back(row.service);
  }
  size_t gone = 0;
  for (const auto& [database, chosen] : services) {
    const size_t before = CountEntries(*database);
    MarkServices(*database, chosen, choice.service_field, choice.value);
    gone += before - CountEntries(*database);
  }
  return gone;
}

namespace {

bool Matches(const ServiceRecord& record, uint32_t lnb_index, const FieldChoice& choice) {
  const bool wanted = choice.value != 0;
  switch (choice.service_field) {
    case ServiceField::kScrambled:
      return (record.free == 0) == wanted;
    case ServiceField::kTv:
      return (record.type == kTv) == wanted;
    case ServiceField::kNoVideo:
      return record.video_pid == kNoPid;
    case ServiceField::kNoAudio:
      return record.audio_pid == kNoPid;
    case ServiceField::kNoPcr:
      return record.pcr_pid == kNoPid;
    default:
      return lnb_index == choice.value;
  }
}

bool Matches(const NodeRef& row, const FieldChoice& choice) {
  if (row.kind != choice.kind) return false;
  if (row.kind == NodeKind::kService)
    return Matches(row.service->record, row.satellite->record.lnb_index, choice);
  if (row.kind == NodeKind::kCarrier) {
    const CarrierRecord& record = row.carrier->record;
    if (choice.carrier_field == CarrierField::kPolarization) return record.polarization == choice.value;
    if (choice.carrier_field == CarrierField::kFec) return record.fec == choice.value;
    return (record.user == 0) == (choice.value != 0);
  }
  const SatelliteRecord& record = row.satellite->record;
  if (choice.satellite_field == SatelliteField::kLnbIndex) return record.lnb_index == choice.value;
  if (choice.satellite_field == SatelliteField::kEast) return record.east == choice.value;
  return (record.user == 0) == (choice.value != 0);
}

}  // namespace

Rows MatchingRows(const std::vector<NodeRef>& rows, const FieldChoice& choice) {
  Rows matching;
  for (size_t i = 0; i < rows.size(); ++i) {
    if (Matches(rows[i], choice)) matching.push_back(i);
  }
  return matching;
}

std::optional<GroupAddition> AddRowsToGroup(const Messages& messages, Document& document,
                                            const std::vector<NodeRef>& rows, uint32_t group,
                                            std::optional<GroupKind> list) {
  StaticDatabase* database = rows.empty() ? nullptr : DatabaseOf(document, rows[0]);
  if (!database || group >= kFavouriteGroups) return std::nullopt;
  FavouriteGroup& lists = database->favourites[group];
  const FavouriteGroup before = lists;
  const std::vector<Service*> services = ServicesOf(rows);
  GroupAddition addition;
  size_t fit = 0;
  for (const GroupKind kind : {GroupKind::kTv, GroupKind::kRadio}) {
    if (list && *list != kind) continue;
    for (const Service* service : services) fit += (service->record.type == kTv) == (kind == GroupKind::kTv);
    if (!AddFavourites(messages, lists, kind, services, NamesPage(document))) {
      lists = before;
      return std::nullopt;
    }
  }
  addition.added = lists.tv.size() + lists.radio.size() - before.tv.size() - before.radio.size();
  addition.present = fit - addition.added;
  addition.unfit = services.size() - fit;
  return addition;
}

std::string AdditionText(const GroupAddition& addition) {
  return Format("%zu added, %zu there before, %zu did not fit", addition.added, addition.present,
                addition.unfit);
}

std::optional<GroupKind> ListDroppedOn(const std::vector<NodeRef>& rows, const NodeRef& target) {
  const bool tv = target.kind == NodeKind::kTvGroup;
  const bool services = !rows.empty() && std::all_of(rows.begin(), rows.end(), [&](const NodeRef& row) {
    return row.service && row.sdb == target.sdb;
  });
  if (!services || (!tv && target.kind != NodeKind::kRadioGroup)) return std::nullopt;
  return tv ? GroupKind::kTv : GroupKind::kRadio;
}

DropKind DropKindOf(const std::vector<NodeRef>& rows, const NodeRef& target, bool control) {
  if (rows.empty() || target.kind == NodeKind::kNone) return DropKind::kNothing;
  if (control && target.sdb != rows[0].sdb && !IsAmongUbis(target) && !IsAmongUbis(rows[0]))
    return DropKind::kCopy;
  return ListDroppedOn(rows, target) ? DropKind::kToList : DropKind::kMove;
}

bool SetEntries(const Messages& messages, FavouriteGroup& group, GroupKind kind,
                const std::vector<Service*>& all, const std::set<const Service*>& chosen,
                const CodePage& page) {
  std::vector<Service*>& entries = EntriesOf(group, kind);
  const std::vector<Service*> before = entries;
  std::vector<Service*> wanted;
  std::copy_if(all.begin(), all.end(), std::back_inserter(wanted),
               [&](const Service* service) { return chosen.contains(service); });
  std::erase_if(entries, [&](const Service* service) { return !chosen.contains(service); });
  if (AddFavourites(messages, group, kind, wanted, page)) return true;
  entries = before;
  return false;
}

bool CheckSeparateSdb(const Messages& messages, const StaticDatabase& database) {
  if (database.satellites.empty()) {
    TellWhy(messages, Icon::kStop, "It has no satellite. Add one, with a carrier, and save again.",
            "Invalid SDB. \nNOTE: Valid SDB should contain atleast one satellite record.");
  } else if (database.carriers.empty()) {
    TellWhy(messages, Icon::kStop, "None of its satellites has a carrier. Add one, and save again.",
            "Invalid SDB. \nNOTE: Valid SDB should contain atleast one Carrier record.");
  } else if (database.lnb_count > kMaximumLnbs) {
    TellWhy(messages, Icon::kStop,
            Format("It has %u LNBs. Delete some, and save again.", unsigned{database.lnb_count}),
            "Invalid SDB. LNB count exceecds the limit 16.");
  } else {
    return true;
  }
  return false;
}

Rows SatelliteRows(const Document& document, const std::vector<NodeRef>& rows,
                   const std::vector<NodeRef>& selected, const std::vector<NodeRef>* filtered) {
  Rows places;
  const auto take = [&](const std::vector<NodeRef>& nodes) {
    for (const NodeRef& node : nodes) {
      if (node.kind == NodeKind::kSatellite) places.push_back(node.index);
    }
  };
  take(rows);
  if (rows.size() == 1 && rows[0].kind == NodeKind::kSatelliteLevel) {
    take(selected);
    // A list of carriers or services leaves no satellite out.
    const bool leaves = filtered && (filtered->empty() || (*filtered)[0].kind == NodeKind::kSatellite);
    if (places.empty()) take(leaves ? *filtered : ChildNodes(document, rows[0]));
  }
  std::sort(places.begin(), places.end());
  return places;
}

}  // namespace vexa
