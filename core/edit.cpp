// What the operations share, and those that touch single fields.
#include "core/edit.h"

#include <algorithm>
#include <unordered_map>

namespace vexa {

namespace {

template <class T, class Owner>
void Refill(std::vector<T*>& all, const std::vector<T*>& list, const Owner& belongs) {
  size_t next = 0;
  for (T*& place : all)
    if (next < list.size() && belongs(place)) place = list[next++];
}

}  // namespace

// A place belongs to the list as long as its old holder does, so ownership is asked before the place is
// refilled.
void RefillCarriers(StaticDatabase& database, const Satellite& satellite) {
  Refill(database.carriers, satellite.carriers,
         [&](const Carrier* carrier) { return carrier->satellite == &satellite; });
}

void RefillServices(StaticDatabase& database, const Carrier& carrier) {
  Refill(database.services, carrier.services,
         [&](const Service* service) { return service->carrier == &carrier; });
}

Satellite* PutSatellite(StaticDatabase& database, const SatelliteRecord& record, size_t place) {
  Satellite* satellite = database.satellite_pool.Take();
  satellite->record = record;
  satellite->record.carrier_count = 0;
  const bool at_end = place == database.satellites.size();
  database.satellites.insert(database.satellites.begin() + static_cast<std::ptrdiff_t>(place), satellite);
  if (!at_end) NumberSatellites(database);
  return satellite;
}

Carrier* PutCarrier(StaticDatabase& database, Satellite& satellite, const CarrierRecord& record,
                    size_t place) {
  Carrier* carrier = database.carrier_pool.Take();
  carrier->record = record;
  carrier->record.service_count = 0;
  carrier->record.lnb_index = satellite.record.lnb_index;
  const auto index = std::find(database.satellites.begin(), database.satellites.end(), &satellite);
  carrier->record.satellite_index = static_cast<uint32_t>(index - database.satellites.begin()) & 0x3FF;
  carrier->satellite = &satellite;
  const bool at_end = place == satellite.carriers.size();
  satellite.carriers.insert(satellite.carriers.begin() + static_cast<std::ptrdiff_t>(place), carrier);
  satellite.record.carrier_count = static_cast<uint16_t>(satellite.carriers.size());
  database.carriers.push_back(carrier);
  if (!at_end) {
    RefillCarriers(database, satellite);
    NumberCarriers(satellite);
  }
  return carrier;
}

Service* PutService(StaticDatabase& database, Carrier& carrier, const ServiceRecord& record, size_t place) {
  Service* service = database.service_pool.Take();
  service->record = record;
  service->carrier = &carrier;
  // Mostly the newest carrier: it is looked for from the end.
  const auto& siblings = carrier.satellite->carriers;
  const auto index = std::find(siblings.rbegin(), siblings.rend(), &carrier);
  service->carrier_position = static_cast<uint16_t>(siblings.rend() - index - 1);
  const bool at_end = place == carrier.services.size();
  carrier.services.insert(carrier.services.begin() + static_cast<std::ptrdiff_t>(place), service);
  carrier.record.service_count = static_cast<uint16_t>(carrier.services.size());
  database.services.push_back(service);
  if (!at_end) RefillServices(database, carrier);
  return service;
}

void RefillAll(StaticDatabase& database) {
  // How many records of each owner are in their places. Neighbours mostly have one owner, whose counter is
  // kept at hand.
  std::unordered_map<const void*, size_t> counters;
  const void* owner = nullptr;
  size_t* next = nullptr;
  const auto next_of = [&](const void* list) -> size_t& {
    if (list != owner) next = &counters[owner = list];
    return *next;
  };
  for (Carrier*& place : database.carriers) {
    const Satellite* satellite = place->satellite;
    place = satellite->carriers[next_of(satellite)++];
  }
  for (Service*& place : database.services) {
    const Carrier* carrier = place->carrier;
    place = carrier->services[next_of(carrier)++];
  }
}

void NumberSatellites(StaticDatabase& database) {
  for (size_t i = 0; i < database.satellites.size(); ++i)
    for (Carrier* carrier : database.satellites[i]->carriers)
      carrier->record.satellite_index = static_cast<uint32_t>(i) & 0x3FF;
}

void NumberCarriers(Satellite& satellite) {
  for (size_t i = 0; i < satellite.carriers.size(); ++i)
    for (Service* service : satellite.carriers[i]->services)
      service->carrier_position = static_cast<uint16_t>(i);
}

std::vector<Service*>& EntriesOf(FavouriteGroup& group, GroupKind kind) {
  return kind == GroupKind::kTv ? group.tv : group.radio;
}

const std::vector<Service*>& EntriesOf(const FavouriteGroup& group, GroupKind kind) {
  return kind == GroupKind::kTv ? group.tv : group.radio;
}

size_t LeaveListsOfOldType(StaticDatabase& database, const std::unordered_set<const Service*>& changed) {
  size_t left = 0;
  for (FavouriteGroup& group : database.favourites) {
    left += std::erase_if(group.tv, [&](const Service* service) {
      return changed.contains(service) && service->record.type != kTv;
    });
    left += std::erase_if(group.radio, [&](const Service* service) {
      return changed.contains(service) && service->record.type == kTv;
    });
  }
  return left;
}

FrequencyRange RangeOf(uint32_t lnb_type) {
  static constexpr FrequencyRange kRanges[] = {{3000, 4200}, {3000, 4800}, {10700, 12750}, {950, 2150}};
  return kRanges[lnb_type & 3];
}

const LnbRecord& LnbOf(const StaticDatabase& database, const Satellite& satellite) {
  const size_t index = satellite.record.lnb_index;
  return database.lnbs[index < database.lnbs.size() ? index : 0];
}

void MarkSatellites(StaticDatabase& database, const Rows& rows, SatelliteField field, uint32_t value) {
  for (const size_t row : rows) {
    if (row >= database.satellites.size()) continue;
    SatelliteRecord& record = database.satellites[row]->record;
    if (field == SatelliteField::kLnbIndex && value < kMaximumLnbs) record.lnb_index = value & 0xFF;
    if (field == SatelliteField::kEast) record.east = value != 0;
    if (field == SatelliteField::kFactoryDefault) record.user = value == 0;
  }
}

void MarkCarriers(Satellite& satellite, const Rows& rows, CarrierField field, uint32_t value) {
  for (const size_t row : rows) {
    if (row >= satellite.carriers.size()) continue;
    CarrierRecord& record = satellite.carriers[row]->record;
    if (field == CarrierField::kPolarization) record.polarization = value & 3;
    if (field == CarrierField::kFec) record.fec = value & 7;
    if (field == CarrierField::kFactoryDefault) record.user = value == 0;
  }
}

namespace {

// False when it is of that type already.
bool SetType(ServiceRecord& record, bool tv) {
  if ((record.type == kTv) == tv) return false;
  record.type = tv ? uint32_t{kTv} & 3 : uint32_t{kRadio} & 3;
  if (!tv) record.video_pid = kNoPid & 0x3FFF;
  return true;
}

}  // namespace

void MarkServices(StaticDatabase& database, const std::vector<Service*>& services, ServiceField field,
                  uint32_t value) {
  std::unordered_set<const Service*> changed;
  for (Service* service : services) {
    ServiceRecord& record = service->record;
    if (field == ServiceField::kScrambled) record.free = value == 0;
    if (field == ServiceField::kTv && SetType(record, value != 0)) changed.insert(service);
    if (field == ServiceField::kNoVideo) record.video_pid = kNoPid & 0x3FFF;
    if (field == ServiceField::kNoAudio) record.audio_pid = kNoPid & 0x3FFF;
    if (field == ServiceField::kNoPcr) record.pcr_pid = kNoPid & 0x3FFF;
    if (field == ServiceField::kLnbIndex && value < kMaximumLnbs)
      service->carrier->satellite->record.lnb_index = value & 0xFF;
  }
  if (!changed.empty()) LeaveListsOfOldType(database, changed);
}

}  // namespace vexa
