#include <algorithm>
#include <unordered_set>

#include "core/edit.h"
#include "core/field_texts.h"

namespace vexa {

namespace {

constexpr uint32_t kLowestIf = 950, kHighestIf = 2150;  // MHz

bool HasLnb(const Messages& messages, const StaticDatabase& database) {
  if (database.lnb_count > 0) return true;
  TellWhy(messages, Icon::kStop, "The SDB has no LNB: add one to its list of LNBs first.",
          "Add atleast one LNB to add a satellite.");
  return false;
}

bool OneRowAtMost(const Messages& messages, const Rows& selected) {
  if (selected.size() < 2) return true;
  TellWhy(messages, Icon::kStop,
          Format("%zu rows are selected: select the one before which the new row goes, or none.",
                 selected.size()),
          "Cannot insert during multiple selection.");
  return false;
}

// `what`: the records of a full table, `where` it is. What there is and what to do.
std::string FullText(size_t count, const char* what, const char* where) {
  return Format("%s has %zu %s, which is the limit: delete some first.", where, count, what);
}

// Of a list of favourites of this name.
std::string FullListText(const std::string& name, size_t entries, size_t added) {
  return Format("\"%s\" has %zu entries, %zu more do not fit: add fewer, or delete some first.", name.c_str(),
                entries, added);
}

std::string GroupName(const CodePage& page, const FavouriteGroup& group, GroupKind kind) {
  return NameText(page, kind == GroupKind::kTv ? group.record.tv_name : group.record.radio_name);
}

size_t InsertPlace(const Rows& selected, size_t count) {
  return selected.empty() ? count : std::min(selected[0], count);
}

Satellite* NewSatellite(StaticDatabase& database, const DefaultRecords& defaults, size_t place) {
  SatelliteRecord record = defaults.satellite;
  SetName(record.name, Format("Satellite%d", static_cast<int>(place) + 1));
  return PutSatellite(database, record, place);
}

Carrier* NewCarrier(StaticDatabase& database, Satellite& satellite, const DefaultRecords& defaults,
                    size_t place) {
  CarrierRecord record = defaults.carrier;
  if (LnbOf(database, satellite).type == kLnbIfInput &&
      (record.frequency < kLowestIf || record.frequency > kHighestIf))
    record.frequency = kLowestIf;
  if (satellite.record.user) record.user = 1;
  SetName(record.name, Format("Carrier%d", static_cast<int>(satellite.carriers.size()) + 1));
  return PutCarrier(database, satellite, record, place);
}

Service* NewService(StaticDatabase& database, Carrier& carrier, const DefaultRecords& defaults,
                    std::optional<ServiceType> type, size_t place) {
  ServiceRecord record = defaults.service;
  record.program_number = FreeProgramNumber(carrier) & 0xFFFF;
  if (type) record.type = *type & 3;
  SetName(record.name, Format("Service%d", static_cast<int>(carrier.services.size()) + 1));
  Service* service = PutService(database, carrier, record, place);
  database.service_order.push_back(service);
  return service;
}

}  // namespace

OpenSdb* AddSdb(const Messages& messages, Document& document, const DefaultRecords& defaults) {
  const int number = static_cast<int>(document.sdbs.size()) + 1;
  OpenSdb* sdb = AppendSdb(document, Format("SDB%d", number), defaults);
  if (!sdb)
    TellWhy(messages, Icon::kStop, FullText(document.sdbs.size(), "SDBs", "The database"),
            "SDB count exceeds the allowed numbers.Cannot add more SDB's.");
  return sdb;
}

bool AddLnb(const Messages& messages, StaticDatabase& database, const DefaultRecords& defaults) {
  if (database.lnb_count >= kMaximumLnbs) {
    TellWhy(messages, Icon::kStop, FullText(database.lnb_count, "LNBs", "The SDB"),
            "Can't add LNB Information. It exceeds the limit 16.");
    return false;
  }
  database.lnbs[database.lnb_count++] = defaults.lnb;
  return true;
}

Satellite* AddSatellite(const Messages& messages, StaticDatabase& database, const DefaultRecords& defaults) {
  if (database.satellites.size() >= kMaximumSatellites) {
    TellWhy(messages, Icon::kStop, FullText(database.satellites.size(), "satellites", "The SDB"),
            "Can't add SATELLITE Information. It exceeds the limit.");
    return nullptr;
  }
  if (!HasLnb(messages, database)) return nullptr;
  return NewSatellite(database, defaults, database.satellites.size());
}

Satellite* InsertSatellite(const Messages& messages, StaticDatabase& database, const DefaultRecords& defaults,
                           const Rows& selected) {
  if (!OneRowAtMost(messages, selected)) return nullptr;
  if (database.satellites.size() >= kMaximumSatellites) {
    TellWhy(messages, Icon::kStop, FullText(database.satellites.size(), "satellites", "The SDB"),
            "Satellite records exceed the limit. Can not add.");
    return nullptr;
  }
  if (!HasLnb(messages, database)) return nullptr;
  return NewSatellite(database, defaults, InsertPlace(selected, database.satellites.size()));
}

Carrier* AddCarrier(const Messages& messages, StaticDatabase& database, Satellite& satellite,
                    const DefaultRecords& defaults) {
  if (database.carriers.size() >= kMaximumCarriers) {
    TellWhy(messages, Icon::kStop, FullText(database.carriers.size(), "carriers", "The SDB"),
            "Can't add carrier information. It exceeds the limit.");
    return nullptr;
  }
  return NewCarrier(database, satellite, defaults, satellite.carriers.size());
}

Carrier* InsertCarrier(const Messages& messages, StaticDatabase& database, Satellite& satellite,
                       const DefaultRecords& defaults, const Rows& selected) {
  if (!OneRowAtMost(messages, selected)) return nullptr;
  if (database.carriers.size() >= kMaximumCarriers) {
    TellWhy(messages, Icon::kStop, FullText(database.carriers.size(), "carriers", "The SDB"),
            "Carrier records exceed the limit. Can not add.");
    return nullptr;
  }
  return NewCarrier(database, satellite, defaults, InsertPlace(selected, satellite.carriers.size()));
}

Service* AddService(const Messages& messages, StaticDatabase& database, Carrier& carrier,
                    const DefaultRecords& defaults, std::optional<ServiceType> type) {
  if (database.services.size() >= kMaximumServices) {
    TellWhy(messages, Icon::kStop, FullText(database.services.size(), "services", "The SDB"),
            "Can't add service information. It exceeds the limit.");
    return nullptr;
  }
  return NewService(database, carrier, defaults, type, carrier.services.size());
}

Service* InsertService(const Messages& messages, StaticDatabase& database, Carrier& carrier,
                       const DefaultRecords& defaults, const Rows& selected,
                       std::optional<ServiceType> type) {
  if (!OneRowAtMost(messages, selected)) return nullptr;
  if (database.services.size() >= kMaximumServices) {
    TellWhy(messages, Icon::kStop, FullText(database.services.size(), "services", "The SDB"),
            "Service records exceed the limit. Can not add.");
    return nullptr;
  }
  return NewService(database, carrier, defaults, type, InsertPlace(selected, carrier.services.size()));
}

OpenUbi* AddUbi(const Messages& messages, Document& document) {
  if (document.ubis.size() >= kMaximumUbis) {
    TellWhy(messages, Icon::kStop, FullText(document.ubis.size(), "user box records", "The database"),
            "Can't add USER BOX information. It exceeds the limit %d.", static_cast<int>(kMaximumUbis));
    return nullptr;
  }
  OpenUbi ubi;
  ubi.name = Format("UBI%d", static_cast<int>(document.ubis.size()) + 1);
  ubi.record.rf_channel = 21;
  for (char& digit : ubi.record.lock_code) digit = '0';
  document.ubis.push_back(ubi);
  return &document.ubis.back();
}

bool AddFavourites(const Messages& messages, FavouriteGroup& group, GroupKind kind,
                   const std::vector<Service*>& services, const CodePage& page) {
  std::vector<Service*>& entries = EntriesOf(group, kind);
  std::unordered_set<const Service*> present(entries.begin(), entries.end());
  std::vector<Service*> added;
  for (Service* service : services) {
    const bool fits = (service->record.type == kTv) == (kind == GroupKind::kTv);
    if (fits && present.insert(service).second) added.push_back(service);
  }
  if (added.empty()) return true;
  const std::string limit = GroupLimitText(page, group, kind, entries.size() + added.size());
  if (!limit.empty()) {
    TellWhy(messages, Icon::kStop, FullListText(GroupName(page, group, kind), entries.size(), added.size()),
            "%s", limit.c_str());
    return false;
  }
  entries.insert(entries.end(), added.begin(), added.end());
  return true;
}

std::string GroupLimitText(const CodePage& page, const FavouriteGroup& group, GroupKind kind,
                           size_t entries) {
  const std::string name = GroupName(page, group, kind);
  if (kind == GroupKind::kTv)
    return entries <= kMaximumTvEntries
               ? ""
               : Format("This service cannot be added in %s group since it exceeds more than 2500 records",
                        name.c_str());
  return entries <= kMaximumRadioEntries
             ? ""
             : Format("This service cannot be added in %s\tgroup since it exceeds more than 1000 records",
                      name.c_str());
}

uint32_t FreeProgramNumber(const Carrier& carrier) {
  std::vector<bool> used(carrier.services.size() + 2);
  for (const Service* service : carrier.services)
    if (service->record.program_number < used.size()) used[service->record.program_number] = true;
  uint32_t number = 1;
  while (number < used.size() && used[number]) ++number;
  return number;
}

}  // namespace vexa
