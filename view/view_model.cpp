#include "view/view_model.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <unordered_map>

#include "core/messages.h"
#include "platform/text.h"

namespace vexa {

namespace {

const StaticDatabase* DatabaseOf(const Document& document, const NodeRef& node) {
  return node.sdb < document.sdbs.size() ? document.sdbs[node.sdb].database.get() : nullptr;
}

NodeRef Node(NodeKind kind, uint32_t sdb, size_t index = 0) {
  NodeRef node;
  node.kind = kind;
  node.sdb = sdb;
  node.index = static_cast<uint32_t>(index);
  return node;
}

NodeRef SatelliteNode(uint32_t sdb, size_t index, Satellite* satellite) {
  NodeRef node = Node(NodeKind::kSatellite, sdb, index);
  node.satellite = satellite;
  return node;
}

NodeRef CarrierNode(uint32_t sdb, size_t index, Carrier* carrier) {
  NodeRef node = Node(NodeKind::kCarrier, sdb, index);
  node.satellite = carrier->satellite;
  node.carrier = carrier;
  return node;
}

NodeRef ServiceNode(uint32_t sdb, size_t index, Service* service) {
  NodeRef node = Node(NodeKind::kService, sdb, index);
  node.carrier = service->carrier;
  node.satellite = service->carrier ? service->carrier->satellite : nullptr;
  node.service = service;
  return node;
}

}  // namespace

std::vector<NodeRef> RootNodes(const Document& document) {
  std::vector<NodeRef> roots;
  for (size_t i = 0; i < document.sdbs.size(); ++i)
    roots.push_back(Node(NodeKind::kSdb, static_cast<uint32_t>(i), i));
  roots.push_back(Node(NodeKind::kUbiLevel, 0));
  return roots;
}

namespace {

std::vector<NodeRef> Numbered(NodeKind kind, uint32_t sdb, size_t count) {
  std::vector<NodeRef> nodes;
  for (size_t i = 0; i < count; ++i) nodes.push_back(Node(kind, sdb, i));
  return nodes;
}

std::vector<NodeRef> SatelliteNodes(const StaticDatabase& database, uint32_t sdb) {
  std::vector<NodeRef> nodes;
  for (size_t i = 0; i < database.satellites.size(); ++i) {
    nodes.push_back(SatelliteNode(sdb, i, database.satellites[i]));
  }
  return nodes;
}

std::vector<NodeRef> CarrierNodes(const Satellite& satellite, uint32_t sdb) {
  std::vector<NodeRef> nodes;
  nodes.reserve(satellite.carriers.size());
  for (size_t i = 0; i < satellite.carriers.size(); ++i)
    nodes.push_back(CarrierNode(sdb, i, satellite.carriers[i]));
  return nodes;
}

std::vector<NodeRef> ServiceNodes(const Carrier& carrier, uint32_t sdb) {
  std::vector<NodeRef> nodes;
  nodes.reserve(carrier.services.size());
  for (size_t i = 0; i < carrier.services.size(); ++i)
    nodes.push_back(ServiceNode(sdb, i, carrier.services[i]));
  return nodes;
}

}  // namespace

std::vector<NodeRef> ChildNodes(const Document& document, const NodeRef& node) {
  if (node.kind == NodeKind::kUbiLevel) return Numbered(NodeKind::kUbi, 0, document.ubis.size());
  const StaticDatabase* database = DatabaseOf(document, node);
  if (!database) return {};
  switch (node.kind) {
    case NodeKind::kSdb:
      return {Node(NodeKind::kLnbLevel, node.sdb), Node(NodeKind::kSatelliteLevel, node.sdb),
              Node(NodeKind::kTvGroupLevel, node.sdb), Node(NodeKind::kRadioGroupLevel, node.sdb)};
    case NodeKind::kLnbLevel:
      return Numbered(NodeKind::kLnb, node.sdb, database->lnb_count);
    case NodeKind::kSatelliteLevel:
      return SatelliteNodes(*database, node.sdb);
    case NodeKind::kTvGroupLevel:
      return Numbered(NodeKind::kTvGroup, node.sdb, kFavouriteGroups);
    case NodeKind::kRadioGroupLevel:
      return Numbered(NodeKind::kRadioGroup, node.sdb, kFavouriteGroups);
    case NodeKind::kSatellite:
      return CarrierNodes(*node.satellite, node.sdb);
    case NodeKind::kCarrier:
      return ServiceNodes(*node.carrier, node.sdb);
    default:
      return {};
  }
}

bool HasChildNodes(const Document& document, const NodeRef& node) {
  const StaticDatabase* database = DatabaseOf(document, node);
  switch (node.kind) {
    case NodeKind::kUbiLevel:
      return !document.ubis.empty();
    case NodeKind::kSdb:
    case NodeKind::kTvGroupLevel:
    case NodeKind::kRadioGroupLevel:
      return true;
    case NodeKind::kLnbLevel:
      return database && database->lnb_count != 0;
    case NodeKind::kSatelliteLevel:
      return database && !database->satellites.empty();
    case NodeKind::kSatellite:
      return !node.satellite->carriers.empty();
    case NodeKind::kCarrier:
      return !node.carrier->services.empty();
    default:
      return false;
  }
}

std::string NodeLabel(const Document& document, const NodeRef& node) {
  const int number = static_cast<int>(node.index) + 1;
  const StaticDatabase* database = DatabaseOf(document, node);
  switch (node.kind) {
    case NodeKind::kSdb:
      return node.sdb < document.sdbs.size() ? NameText(document, document.sdbs[node.sdb].name) : "";
    case NodeKind::kLnbLevel:
      return "LNBs";
    case NodeKind::kSatelliteLevel:
      return "Satellites";
    case NodeKind::kTvGroupLevel:
      return "TV Groups";
    case NodeKind::kRadioGroupLevel:
      return "Radio Groups";
    case NodeKind::kLnb:
      return Format("[ %d ] LNB", number);
    case NodeKind::kSatellite:
      return Format("[ %d ] %s", number, NameText(document, node.satellite->record.name).c_str());
    case NodeKind::kCarrier:
      return Format("[ %d ] %s", number, NameText(document, node.carrier->record.name).c_str());
    case NodeKind::kService:
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      return Format("[ %d ] %s", number, NameText(document, node.service->record.name).c_str());
    case NodeKind::kTvGroup:
    case NodeKind::kRadioGroup: {
      if (!database) return "";
      const FavouriteRecord& record = database->favourites[node.index].record;
      return NameText(document, node.kind == NodeKind::kTvGroup ? record.tv_name : record.radio_name);
    }
    case NodeKind::kUbiLevel:
      return "Box Infos";
    case NodeKind::kUbi:
      return node.index < document.ubis.size() ? NameText(document, document.ubis[node.index].name) : "";
    default:
      return "";
  }
}

namespace {

// A satellite is active when any of its carriers has services.
bool HasServices(const Satellite& satellite) {
  return std::any_of(satellite.carriers.begin(), satellite.carriers.end(),
                     [](const Carrier* carrier) { return !carrier->services.empty(); });
}

}  // namespace

uint32_t TextColour(const EditorColourTable& colours, ColourRole role, const SystemColours& system) {
  if (role == ColourRole::kPlain) return system.text;
  const uint32_t colour = colours[static_cast<size_t>(role)];
  const bool chosen = colour != DefaultColours()[static_cast<size_t>(role)];
  return chosen ? colour : SeenColour(colour, system);
}

ColourRole NodeColour(const Document& document, const NodeRef& node) {
  const StaticDatabase* database = DatabaseOf(document, node);
  switch (node.kind) {
    case NodeKind::kSatellite:
      return HasServices(*node.satellite) ? ColourRole::kActiveSatellite : ColourRole::kInactiveSatellite;
    case NodeKind::kCarrier:
      return node.carrier->services.empty() ? ColourRole::kInactiveCarrier : ColourRole::kActiveCarrier;
    case NodeKind::kService:
      return node.service->record.type == kTv ? ColourRole::kTvService : ColourRole::kRadioService;
    case NodeKind::kTvGroup:
    case NodeKind::kRadioGroup: {
      if (!database) return ColourRole::kPlain;
      const FavouriteGroup& group = database->favourites[node.index];
      const bool empty = node.kind == NodeKind::kTvGroup ? group.tv.empty() : group.radio.empty();
      return empty ? ColourRole::kInactiveFavourite : ColourRole::kActiveFavourite;
    }
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      return ColourRole::kActiveFavourite;
    default:
      return ColourRole::kPlain;
  }
}

namespace {

// FNV-1a.
template <class Record>
uint64_t Digest(const Record& record) {
  uint8_t bytes[sizeof record];
  std::memcpy(bytes, &record, sizeof record);
  uint64_t digest = 0xCBF29CE484222325;
  for (const uint8_t byte : bytes) digest = (digest ^ byte) * 0x100000001B3;
  return digest;
}

// Without what follows from the record's place and from what is below it.
uint64_t ContentOf(const NodeRef& node) {
  if (node.service) {
    ServiceRecord record = node.service->record;
    record.carrier_index = 0;
    return Digest(record);
  }
  if (node.carrier) {
    CarrierRecord record = node.carrier->record;
    record.lnb_index = 0;
    record.first_service = 0;
    record.service_count = 0;
    record.satellite_index = 0;
    return Digest(record);
  }
  if (!node.satellite) return 0;
  SatelliteRecord record = node.satellite->record;
  record.carrier_count = 0;
  return Digest(record);
}

}  // namespace

std::vector<uint64_t> NodeContents(const std::vector<NodeRef>& siblings) {
  std::vector<uint64_t> contents;
  contents.reserve(siblings.size());
  std::unordered_map<uint64_t, uint64_t> seen;
  for (const NodeRef& node : siblings) {
    const uint64_t content = ContentOf(node);
    contents.push_back(content == 0 ? 0 : content + seen[content]++ * 0x9E3779B97F4A7C15);
  }
  return contents;
}

NodeIcon IconOf(const NodeRef& node) {
  switch (node.kind) {
    case NodeKind::kSdb:
      return NodeIcon::kSdb;
    case NodeKind::kLnb:
      return NodeIcon::kLnb;
    case NodeKind::kSatellite:
      return node.satellite->record.user ? NodeIcon::kUserSatellite : NodeIcon::kFactorySatellite;
    case NodeKind::kCarrier:
      return node.carrier->record.user ? NodeIcon::kUserCarrier : NodeIcon::kFactoryCarrier;
    case NodeKind::kService:
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      return node.service->record.type == kTv ? NodeIcon::kTv : NodeIcon::kRadio;
    case NodeKind::kTvGroup:
    case NodeKind::kRadioGroup:
      return NodeIcon::kFavourite;
    case NodeKind::kUbi:
      return NodeIcon::kUbi;
    default:
      return NodeIcon::kFolder;
  }
}

std::array<std::string, 5> PanelLabels(const Document& document, const NodeRef& node) {
  if (node.kind == NodeKind::kUbiLevel || node.kind == NodeKind::kUbi) {
    return {Format("No of UBIs:%d", static_cast<int>(document.ubis.size())), "", "", "", ""};
  }
  const StaticDatabase* database = node.kind == NodeKind::kNone ? nullptr : DatabaseOf(document, node);
  if (!database) return {};
  return {Format("SDB:%s  Index %d/%d", NameText(document, document.sdbs[node.sdb].name).c_str(),
                 static_cast<int>(node.sdb) + 1, static_cast<int>(document.sdbs.size())),
          Format("LNBs\t%d", static_cast<int>(database->lnb_count)),
          Format("Satellites  %d", static_cast<int>(database->satellites.size())),
          Format("Carriers\t%d", static_cast<int>(database->carriers.size())),
          Format("Services  %d", static_cast<int>(database->services.size()))};
}

}  // namespace vexa
