#include "view/clip.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>

#include "core/bin_file.h"
#include "core/match.h"
#include "import/csv.h"
#include "import/csv_table.h"

namespace vexa {

namespace {

constexpr std::string_view kMagic = "VexaClip";
constexpr size_t kClipHead = 11;  // bytes before the container

// In the order of their numbers in a clip.
constexpr NodeKind kClipKinds[] = {NodeKind::kSdb,     NodeKind::kLnb,     NodeKind::kSatellite,
                                   NodeKind::kCarrier, NodeKind::kService, NodeKind::kUbi};

NodeKind ClipKindOf(const NodeRef& node) {
  const bool entry = node.kind == NodeKind::kFavouriteTvEntry || node.kind == NodeKind::kFavouriteRadioEntry;
  return entry ? NodeKind::kService : node.kind;
}

// Copies records into another database, each below its own owner there.
class Copier {
 public:
  explicit Copier(StaticDatabase& to) : to_(to) {}

  Satellite& Owner(const Satellite& satellite) {
    Satellite*& copy = satellites_[&satellite];
    if (!copy) copy = PutSatellite(to_, satellite.record, to_.satellites.size());
    return *copy;
  }
  Carrier& Owner(const Carrier& carrier) {
    Carrier*& copy = carriers_[&carrier];
    if (!copy) {
      Satellite& owner = Owner(*carrier.satellite);
      copy = PutCarrier(to_, owner, carrier.record, owner.carriers.size());
    }
    return *copy;
  }
  void Put(const Service& service) {
    Carrier& owner = Owner(*service.carrier);
    to_.service_order.push_back(PutService(to_, owner, service.record, owner.services.size()));
  }
  void Put(const Carrier& carrier) {
    Owner(carrier);
    for (const Service* service : carrier.services) Put(*service);
  }
  void Put(const Satellite& satellite) {
    Owner(satellite);
    for (const Carrier* carrier : satellite.carriers) Put(*carrier);
  }

 private:
  StaticDatabase& to_;
  std::map<const Satellite*, Satellite*> satellites_;
  std::map<const Carrier*, Carrier*> carriers_;
};

struct Clip {
  NodeKind kind = NodeKind::kNone;
  Document document;  // one SDB, user boxes

  StaticDatabase& database() { return *document.sdbs[0].database; }
};

bool FillClip(Clip& clip, const Document& document, const std::vector<NodeRef>& rows) {
  clip.document = NewDocument();
  StaticDatabase& database = clip.database();
  Copier copier(database);
  std::set<const void*> seen;  // a service that two entries name is one
  for (const NodeRef& row : rows) {
    if (ClipKindOf(row) != clip.kind) continue;
    if (clip.kind == NodeKind::kUbi) {
      if (row.index < document.ubis.size()) clip.document.ubis.push_back(document.ubis[row.index]);
      continue;
    }
    if (row.sdb >= document.sdbs.size()) return false;
    const OpenSdb& sdb = document.sdbs[row.sdb];
    if (clip.kind == NodeKind::kSdb) {
      clip.document.sdbs[0].name = sdb.name;
      clip.document.sdbs[0].database = CopyDatabase(*sdb.database);
      return true;
    }
    if (clip.kind == NodeKind::kLnb) {
      database.lnbs[database.lnb_count++] = sdb.database->lnbs[row.index];
      continue;
    }
    database.lnbs = sdb.database->lnbs;
    database.lnb_count = sdb.database->lnb_count;
    if (clip.kind == NodeKind::kSatellite) copier.Put(*row.satellite);
    if (clip.kind == NodeKind::kCarrier) copier.Put(*row.carrier);
    if (clip.kind == NodeKind::kService && seen.insert(row.service).second) copier.Put(*row.service);
  }
  return true;
}

std::optional<Clip> ReadClip(const Context& context, std::span<const uint8_t> bytes) {
  const auto refuse = [&] {
    Tell(context.messages, Icon::kInformation, "There is nothing to paste.");
    return std::nullopt;
  };
  if (bytes.size() < kClipHead || std::memcmp(bytes.data(), kMagic.data(), kMagic.size()) != 0 ||
      bytes[8] >= std::size(kClipKinds))
    return refuse();
  Clip clip;
  clip.kind = kClipKinds[bytes[8]];
  if (!OpenBinBytes(context, bytes.subspan(kClipHead), clip.document)) return std::nullopt;
  if (clip.document.sdbs.size() != 1) return refuse();
  // A stream has all places filled; those that were not copied are taken off again.
  StaticDatabase& database = clip.database();
  database.lnb_count = std::min<uint32_t>(bytes[9], database.lnb_count);
  Rows unused;
  for (size_t i = bytes[10]; i < database.satellites.size(); ++i) unused.push_back(i);
  DeleteSatellites(database, unused);
  return clip;
}

StaticDatabase* DatabaseAt(Document& document, const NodeRef& node) {
  const bool box = node.kind == NodeKind::kUbi || node.kind == NodeKind::kUbiLevel;
  if (box || node.kind == NodeKind::kNone || node.sdb >= document.sdbs.size()) return nullptr;
  return document.sdbs[node.sdb].database.get();
}

class Paster {
 public:
  Paster(const Context& context, Document& document, const NodeRef& tree, const NodeRef& row, Clip& clip)
      : messages_(context.messages), document_(document), tree_(tree), row_(row), clip_(clip) {}

  std::optional<Pasted> Run() {
    switch (clip_.kind) {
      case NodeKind::kSdb:
        return PasteSdb();
      case NodeKind::kUbi:
        return PasteBoxes();
      case NodeKind::kLnb:
        return PasteLnbs();
      case NodeKind::kSatellite:
        return PasteSatellites();
      case NodeKind::kCarrier:
        return PasteCarriers();
      default:
        return PasteServices();
    }
  }

 private:
  std::optional<Pasted> Refuse(const char* text) const {
    Tell(messages_, Icon::kStop, "%s", text);
    return std::nullopt;
  }
  StaticDatabase* Target() { return DatabaseAt(document_, row_.kind == NodeKind::kNone ? tree_ : row_); }

  std::optional<Pasted> PasteSdb() {
    OpenSdb* sdb = AddSdb(messages_, document_);
    if (!sdb) return std::nullopt;
    sdb->name = clip_.document.sdbs[0].name;
    sdb->database = std::move(clip_.document.sdbs[0].database);
    return Pasted{1, 0};
  }

  std::optional<Pasted> PasteBoxes() {
    const auto& boxes = clip_.document.ubis;
    if (document_.ubis.size() + boxes.size() > kMaximumUbis) {
      Tell(messages_, Icon::kStop, "Can't add USER BOX information. It exceeds the limit %d.",
           static_cast<int>(kMaximumUbis));
      return std::nullopt;
    }
    document_.ubis.insert(document_.ubis.end(), boxes.begin(), boxes.end());
    return Pasted{boxes.size(), 0};
  }

  std::optional<Pasted> PasteLnbs() {
    StaticDatabase* to = Target();
    const uint32_t count = clip_.database().lnb_count;
    if (!to) return Refuse("Select the SDB that the records are to go to.");
    if (to->lnb_count + count > kMaximumLnbs)
      return Refuse("Can't add LNB Information. It exceeds the limit 16.");
    for (uint32_t i = 0; i < count; ++i) to->lnbs[to->lnb_count++] = clip_.database().lnbs[i];
    return Pasted{count, 0};
  }

  // Whether the tables take what the clip adds.
  bool Fits(const StaticDatabase& to, size_t satellites) const {
    const StaticDatabase& from = *clip_.document.sdbs[0].database;
    const char* text = nullptr;
    if (!PlacesToFree(to, to.satellites.size() + satellites))
      text = "Satellite records exceed the limit. Can not add.";
    else if (clip_.kind != NodeKind::kService && to.carriers.size() + from.carriers.size() > kMaximumCarriers)
      text = "Carrier records exceed the limit. Can not add.";
    else if (to.services.size() + from.services.size() > kMaximumServices)
      text = "Service records exceed the limit. Can not add.";
    if (text) Tell(messages_, Icon::kStop, "%s", text);
    return text == nullptr;
  }

  std::optional<Pasted> PasteSatellites() {
    StaticDatabase* to = Target();
    StaticDatabase& from = clip_.database();
    if (!to) return Refuse("Select the SDB that the records are to go to.");
    if (to->lnb_count == 0) return Refuse("Add atleast one LNB to add a satellite.");
    if (!Fits(*to, from.satellites.size())) return std::nullopt;
    size_t place = row_.kind == NodeKind::kSatellite ? row_.index + size_t{1} : EndOfSatellites(*to);
    const auto freed = PlacesToFree(*to, to->satellites.size() + from.satellites.size());
    place -=
        static_cast<size_t>(std::count_if(freed->begin(), freed->end(), [&](size_t i) { return i < place; }));
    DeleteSatellites(*to, *freed);
    Pasted pasted{from.satellites.size()};
    for (const Satellite* satellite : from.satellites) {
      Satellite* copy = PutSatellite(*to, satellite->record, place++);
      const uint32_t lnb = satellite->record.lnb_index;
      copy->record.lnb_index = LnbFor(*to, from, lnb) & 0xFF;
      pasted.other_lnbs += lnb < from.lnb_count && !SameLnb(*to, copy->record.lnb_index, from, lnb) ? 1 : 0;
      for (const Carrier* carrier : satellite->carriers)
        CopyCarrier(*to, *copy, *carrier, copy->carriers.size());
    }
    NumberSatellites(*to);
    return pasted;
  }

  static bool SameLnb(const StaticDatabase& to, uint32_t number, const StaticDatabase& from, uint32_t index) {
    return std::memcmp(&to.lnbs[number], &from.lnbs[index], sizeof(LnbRecord)) == 0;
  }

  // The number of an LNB that is set alike, else the same number if there is one, else the first.
  static uint32_t LnbFor(const StaticDatabase& to, const StaticDatabase& from, uint32_t index) {
    if (index >= kMaximumLnbs) return index;
    const auto same = [&](uint32_t number) { return SameLnb(to, number, from, index); };
    if (index < to.lnb_count && same(index)) return index;
    for (uint32_t number = 0; number < to.lnb_count; ++number)
      if (same(number)) return number;
    return index < to.lnb_count ? index : 0;
  }

  static void CopyCarrier(StaticDatabase& to, Satellite& satellite, const Carrier& carrier, size_t place) {
    Carrier* copy = PutCarrier(to, satellite, carrier.record, place);
    for (const Service* service : carrier.services)
      to.service_order.push_back(PutService(to, *copy, service->record, copy->services.size()));
  }

  std::optional<Pasted> PasteCarriers() {
    StaticDatabase* to = Target();
    Satellite* satellite = row_.satellite ? row_.satellite : tree_.satellite;
    if (!to || !satellite) return Refuse("Select the satellite that the carriers are to go to.");
    if (!Fits(*to, 0)) return std::nullopt;
    size_t place = row_.kind == NodeKind::kCarrier ? row_.index + size_t{1} : satellite->carriers.size();
    for (const Carrier* carrier : clip_.database().carriers) CopyCarrier(*to, *satellite, *carrier, place++);
    return Pasted{clip_.database().carriers.size(), 0};
  }

  std::optional<Pasted> PasteServices() {
    if (tree_.kind == NodeKind::kTvGroup || tree_.kind == NodeKind::kRadioGroup) return PasteEntries();
    StaticDatabase* to = Target();
    Carrier* carrier = row_.carrier ? row_.carrier : tree_.carrier;
    if (!to || !carrier) return Refuse("Select the carrier that the services are to go to.");
    if (!Fits(*to, 0)) return std::nullopt;
    std::set<uint32_t> taken;
    for (const Service* service : carrier->services) taken.insert(service->record.program_number);
    Pasted pasted;
    uint32_t next = 1;
    size_t place = row_.kind == NodeKind::kService ? row_.index + size_t{1} : carrier->services.size();
    for (const Service* service : clip_.database().services) {
      ServiceRecord record = service->record;
      if (!taken.insert(record.program_number).second) {
        while (taken.contains(next)) ++next;
        record.program_number = next & 0xFFFF;
        taken.insert(next);
        ++pasted.renumbered;
      }
      to->service_order.push_back(PutService(*to, *carrier, record, place++));
      ++pasted.records;
    }
    return pasted;
  }

  // Those of the clip that the SDB has.
  std::optional<Pasted> PasteEntries() {
    StaticDatabase* to = DatabaseAt(document_, tree_);
    if (!to) return std::nullopt;
    const StaticDatabase& from = clip_.database();
    const ServicePairs pairs = MatchedServices(from, *to, MatchDatabases(from, *to));
    std::vector<NodeRef> rows;
    for (const Service* service : from.service_order) {
      Service* match = pairs.Of(*service);
      if (!match) continue;
      NodeRef node;
      node.sdb = tree_.sdb;
      node.service = match;
      rows.push_back(node);
    }
    const auto list = tree_.kind == NodeKind::kTvGroup ? GroupKind::kTv : GroupKind::kRadio;
    if (rows.empty()) return Refuse("This SDB has none of these services.");
    auto addition = AddRowsToGroup(messages_, document_, rows, tree_.index, list);
    if (!addition) return std::nullopt;
    addition->unfit += from.service_order.size() - rows.size();
    return Pasted{.records = addition->added, .addition = addition};
  }

  const Messages& messages_;
  Document& document_;
  const NodeRef tree_, row_;
  Clip& clip_;
};

std::optional<TableKind> TableOf(NodeKind kind) {
  switch (kind) {
    case NodeKind::kLnb:
      return TableKind::kLnbs;
    case NodeKind::kSatellite:
      return TableKind::kSatellites;
    case NodeKind::kCarrier:
      return TableKind::kCarriers;
    case NodeKind::kService:
      return TableKind::kServices;
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      return TableKind::kFavourites;
    default:
      return std::nullopt;
  }
}

template <class T>
std::string NumberIn(const std::vector<T*>& list, const T* record) {
  return std::to_string(std::find(list.begin(), list.end(), record) - list.begin() + 1);
}

// What the first columns that number a row hold, as one text.
std::string KeyOf(const Document& document, const NodeRef& row) {
  const StaticDatabase& database = *document.sdbs[row.sdb].database;
  const std::string own = std::to_string(row.index + 1);
  switch (row.kind) {
    case NodeKind::kCarrier:
      return NumberIn(database.satellites, row.satellite) + "/" + own;
    case NodeKind::kService:
      return NumberIn(database.satellites, row.satellite) + "/" +
             NumberIn(row.satellite->carriers, row.carrier) + "/" + own;
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      return std::to_string(row.group + 1) + (row.kind == NodeKind::kFavouriteTvEntry ? "/TV/" : "/Radio/") +
             own;
    default:
      return own;
  }
}

// Places of the columns that number the rows of a table.
std::vector<size_t> KeyColumns(TableKind kind) {
  switch (kind) {
    case TableKind::kCarriers:
      return {0, 2};
    case TableKind::kServices:
      return {0, 2, 6};
    case TableKind::kFavourites:
      return {0, 1, 3};
    default:
      return {0};
  }
}

void AppendTabbedRow(std::string& text, const std::vector<std::string>& cells) {
  for (size_t i = 0; i < cells.size(); ++i) {
    if (i > 0) text += '\t';
    if (cells[i].find_first_of("\t\"\r\n") == std::string::npos) {
      text += cells[i];
      continue;
    }
    text += '"';
    for (const char c : cells[i]) text += c == '"' ? std::string("\"\"") : std::string(1, c);
    text += '"';
  }
  text += "\r\n";
}

}  // namespace

std::optional<Bytes> CopyNodes(const Context& context, const Document& document,
                               const std::vector<NodeRef>& rows) {
  if (rows.empty()) return std::nullopt;
  Clip clip;
  clip.kind = ClipKindOf(rows[0]);
  const auto* kind = std::find(std::begin(kClipKinds), std::end(kClipKinds), clip.kind);
  if (kind == std::end(kClipKinds) || !FillClip(clip, document, rows)) return std::nullopt;
  const auto container = BuildBin(context, clip.document);
  if (!container) return std::nullopt;
  Bytes bytes(kMagic.begin(), kMagic.end());
  bytes.push_back(static_cast<uint8_t>(kind - std::begin(kClipKinds)));
  bytes.push_back(static_cast<uint8_t>(clip.database().lnb_count));
  bytes.push_back(static_cast<uint8_t>(clip.database().satellites.size()));
  bytes.insert(bytes.end(), container->begin(), container->end());
  return bytes;
}

std::string TextOfNodes(const Document& document, const std::vector<NodeRef>& rows) {
  const auto kind = rows.empty() ? std::nullopt : TableOf(rows[0].kind);
  if (!kind || rows[0].sdb >= document.sdbs.size()) return "";
  std::set<std::string> chosen;
  for (const NodeRef& row : rows) chosen.insert(KeyOf(document, row));
  const StaticDatabase& database = *document.sdbs[rows[0].sdb].database;
  std::string text;
  bool head = true;
  for (const CsvRow& row : ParseCsv(TableOfSdb(database, *kind, NamesPage(document)))) {
    std::string key;
    for (const size_t column : KeyColumns(*kind)) key += (key.empty() ? "" : "/") + row.cells[column];
    if (head || chosen.contains(key)) AppendTabbedRow(text, row.cells);
    head = false;
  }
  return text;
}

std::optional<Pasted> PasteNodes(const Context& context, Document& document, const NodeRef& tree,
                                 const NodeRef& row, std::span<const uint8_t> clip) {
  auto read = ReadClip(context, clip);
  if (!read) return std::nullopt;
  return Paster(context, document, tree, row, *read).Run();
}

}  // namespace vexa
