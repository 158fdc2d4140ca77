#include "core/sort.h"

#include <algorithm>
#include <array>

#include "core/bin_file.h"
#include "core/edit.h"
#include "core/field_texts.h"

namespace vexa {

namespace {

// A key as numbers that compare like it: a name as its bytes, first byte highest; any other value in the
// first number.
using KeyNumbers = std::array<uint64_t, 3>;

KeyNumbers NumbersOfName(std::string_view name, bool fold) {
  KeyNumbers numbers{};
  for (size_t i = 0; i < name.size() && i < sizeof numbers; ++i) {
    auto byte = static_cast<uint8_t>(name[i]);
    if (fold && byte >= 'A' && byte <= 'Z') byte = static_cast<uint8_t>(byte + ('a' - 'A'));
    numbers[i / 8] |= static_cast<uint64_t>(byte) << (56 - 8 * (i % 8));
  }
  return numbers;
}

// `exact` gives what must be equal for a later key to count, else what the order follows.
KeyNumbers NumbersOf(const Satellite& satellite, SatelliteKey key, bool exact) {
  switch (key) {
    case SatelliteKey::kFlag:
      return {satellite.record.east ? 0u : 1u};
    case SatelliteKey::kAngle:
      return {satellite.record.angle};
    default:
      return NumbersOfName(NameOf(satellite.record.name), !exact);
  }
}

KeyNumbers NumbersOf(const Carrier& carrier, CarrierKey key, bool exact) {
  switch (key) {
    case CarrierKey::kFrequency:
      return {carrier.record.frequency};
    case CarrierKey::kSymbolRate:
      return {carrier.record.symbol_rate};
    default:
      return NumbersOfName(NameOf(carrier.record.name), !exact);
  }
}

// A type is compared as it stands for equality; for the order, all but TV are alike.
KeyNumbers NumbersOf(const Service& service, ServiceKey key, bool exact) {
  switch (key) {
    case ServiceKey::kStatus:
      return {service.record.free ? 0u : 1u};
    case ServiceKey::kType:
      return {exact ? service.record.type : service.record.type == kTv ? 0u : 1u};
    default:
      return NumbersOfName(NameOf(service.record.name), !exact);
  }
}

bool LeavesOrder(SatelliteKey, bool) {
  return false;
}
bool LeavesOrder(ServiceKey, bool) {
  return false;
}
bool LeavesOrder(CarrierKey key, bool descending) {
  return key == CarrierKey::kSymbolRate && descending;
}

// Records that only come before each other within a class: equal in all earlier keys.
uint32_t FirstClass(const Satellite& satellite) {
  return satellite.carriers.empty() ? 1 : 0;
}
uint32_t FirstClass(const Carrier&) {
  return 0;
}
uint32_t FirstClass(const Service&) {
  return 0;
}

struct Item {
  KeyNumbers key;
  uint32_t group = 0;  // class
  uint32_t place = 0;  // in the list before the pass
  bool operator<(const Item& other) const {
    if (group != other.group) return group < other.group;
    if (const auto order = key <=> other.key; order != 0) return order < 0;
    return place < other.place;
  }
};

template <class T>
struct Entry {
  T* record;
  uint32_t group;
};

template <class T, class Key>
std::vector<Item> ItemsOf(const std::vector<Entry<T>>& list, Key key, bool exact, bool descending) {
  std::vector<Item> items(list.size());
  for (uint32_t place = 0; place < list.size(); ++place) {
    items[place] = {NumbersOf(*list[place].record, key, exact), list[place].group, place};
    if (descending)
      for (uint64_t& number : items[place].key) number = ~number;
  }
  std::sort(items.begin(), items.end());
  return items;
}

// One pass as the header describes it, without moving records one by one. Where a place holds a record, all
// records of its class that come before it are brought forward to it first, in their final order. So each
// class is a queue in its final order, and every place lets its queue out up to its own record.
template <class T>
void BringForward(std::vector<Entry<T>>& list, const std::vector<Item>& items) {
  // By place in the list: where the record stands in `items`, which holds the queues one behind the other,
  // and where its queue starts there. By that start: the first record of the queue that has not left it.
  std::vector<uint32_t> rank(list.size()), start(list.size()), next(list.size());
  for (uint32_t i = 0, begin = 0; i < items.size(); ++i) {
    if (items[i].group != items[begin].group) begin = i;
    rank[items[i].place] = i;
    start[items[i].place] = begin;
    next[begin] = begin;
  }
  std::vector<Entry<T>> result;
  result.reserve(list.size());
  for (uint32_t place = 0; place < list.size(); ++place)
    for (uint32_t& queue = next[start[place]]; queue <= rank[place]; ++queue)
      result.push_back(list[items[queue].place]);
  list = std::move(result);
}

// True when records that stand alike in the order are equal for the later keys as well.
bool OrderIsExact(SatelliteKey key) {
  return key != SatelliteKey::kName;
}
bool OrderIsExact(CarrierKey key) {
  return key != CarrierKey::kName;
}
bool OrderIsExact(ServiceKey key) {
  return key == ServiceKey::kStatus;
}

template <class T>
void NumberClasses(std::vector<Entry<T>>& list, const std::vector<Item>& items) {
  uint32_t group = 0;
  for (size_t i = 0; i < items.size(); ++i) {
    if (i > 0 && (items[i].group != items[i - 1].group || items[i].key != items[i - 1].key)) ++group;
    list[items[i].place].group = group;
  }
}

template <class T, class Key>
void SortList(std::vector<T*>& records, const SortKeys<Key>& options) {
  if (records.size() < 2) return;
  std::vector<Entry<T>> list(records.size());
  for (size_t i = 0; i < list.size(); ++i) list[i] = {records[i], FirstClass(*records[i])};
  for (size_t i = 0; i < options.keys.size(); ++i) {
    const Key key = options.keys[i];
    const bool last = i + 1 == options.keys.size();
    const std::vector<Item> items = ItemsOf(list, key, false, options.descending);
    // This pass has its classes in `items`, so the list may get those of the next pass before it is moved.
    if (!last && OrderIsExact(key)) NumberClasses(list, items);
    if (!last && !OrderIsExact(key)) NumberClasses(list, ItemsOf(list, key, true, false));
    if (!LeavesOrder(key, options.descending)) BringForward(list, items);
  }
  for (size_t i = 0; i < list.size(); ++i) records[i] = list[i].record;
}

}  // namespace

void SortDatabase(StaticDatabase& database, const SortOptions& options) {
  SortList(database.satellites, options.satellites);
  NumberSatellites(database);
  for (Satellite* satellite : database.satellites) {
    SortList(satellite->carriers, options.carriers);
    NumberCarriers(*satellite);
    for (Carrier* carrier : satellite->carriers) SortList(carrier->services, options.services);
  }
  RefillAll(database);
}

bool SortSdbs(const Messages& messages, Document& document, const std::vector<size_t>& sdbs,
              const SortOptions& options) {
  std::string invalid;
  for (const size_t sdb : sdbs) {
    if (!document.sdbs.at(sdb).database->satellites.empty()) continue;
    if (!invalid.empty()) invalid += ", ";
    invalid += NameText(document, document.sdbs[sdb].name);
  }
  if (!invalid.empty()) {
    Tell(messages, Icon::kStop,
         "Invalid SDB(s) - %s. \nNOTE: Valid SDB should contain atleast one satellite record.",
         invalid.c_str());
    return false;
  }
  for (const size_t sdb : sdbs) SortDatabase(*document.sdbs[sdb].database, options);
  return true;
}

std::optional<uint64_t> SortToFile(const Context& context, const Document& document,
                                   const std::vector<size_t>& sdbs, const SortOptions& options,
                                   const Path& path, const BinVersion& version,
                                   const BinSelection& selected) {
  Document copy = CopyDocument(document);
  if (!SortSdbs(context.messages, copy, sdbs, options)) return std::nullopt;
  Context silent = context;  // the failure has one text of its own
  std::string why;
  silent.messages.tell = [&why](const Message& message) { why = message.detail; };
  const auto size = SaveBin(silent, copy, path, version, selected);
  if (!size) TellWhy(context.messages, Icon::kStop, why, "Save as operation failed!!.");
  return size;
}

std::optional<uint64_t> SortToSeparateFile(const Context& context, const Document& document,
                                           const std::vector<size_t>& sdbs, const SortOptions& options,
                                           const Path& path, const BinVersion& version) {
  BinSelection sorted{0, 0};
  for (const size_t sdb : sdbs) sorted.sdbs |= 1u << sdb;
  return SortToFile(context, document, sdbs, options, path, version, sorted);
}

Document CopyDocument(const Document& document) {
  Document copy;
  for (const OpenSdb& sdb : document.sdbs)
    copy.sdbs.push_back({sdb.slot, sdb.name, CopyDatabase(*sdb.database)});
  copy.ubis = document.ubis;
  copy.slot_mask = document.slot_mask;
  copy.compress_payload = document.compress_payload;
  copy.compress_ubis = document.compress_ubis;
  copy.settings_block = document.settings_block;
  copy.names = document.names;
  return copy;
}

}  // namespace vexa
