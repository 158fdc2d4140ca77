#include "core/database.h"

#include <algorithm>

#include "core/messages.h"

namespace vexa {

DefaultRecords::DefaultRecords() {
  lnb.frequency1 = 9750;
  lnb.frequency2 = 10600;
  lnb.type = kLnbUniversal;
  lnb.power = 1;
  lnb.tone_22khz = 2;
  carrier.frequency = 10700;
  carrier.symbol_rate = 27500;
  service.type = kTv;
  service.free = 1;
  service.video_pid = service.audio_pid = service.pcr_pid = kNoPid;
}

const DefaultRecords& FactoryDefaults() {
  static const DefaultRecords defaults;
  return defaults;
}

StaticDatabase::StaticDatabase(const DefaultRecords& defaults) {
  lnbs.fill(defaults.lnb);
  for (unsigned i = 0; i < kFavouriteGroups; ++i) {
    const std::string name = Format("Favourite%u", i + 1);
    SetName(favourites[i].record.tv_name, name);
    SetName(favourites[i].record.radio_name, name);
  }
}

namespace {

std::vector<Service*> TranslateServices(const std::vector<Service*>& from, const Places<Service>& places,
                                        const std::vector<Service*>& services) {
  std::vector<Service*> to;
  to.reserve(from.size());
  for (const Service* service : from) to.push_back(services[places.Of(*service)]);
  return to;
}

void CopyCarriers(const StaticDatabase& from, const Places<Carrier>& places, StaticDatabase& to) {
  to.carrier_pool.Reserve(from.carriers.size());
  to.carriers.reserve(from.carriers.size());
  for (const Carrier* old : from.carriers) {
    Carrier* carrier = to.carrier_pool.Take();
    carrier->record = old->record;
    carrier->satellite = to.satellites[old->record.satellite_index];
    to.carriers.push_back(carrier);
  }
  for (size_t i = 0; i < from.satellites.size(); ++i) {
    to.satellites[i]->carriers.reserve(from.satellites[i]->carriers.size());
    for (const Carrier* old : from.satellites[i]->carriers)
      to.satellites[i]->carriers.push_back(to.carriers[places.Of(*old)]);
  }
}

}  // namespace

std::unique_ptr<StaticDatabase> CopyDatabase(const StaticDatabase& from) {
  auto to = std::make_unique<StaticDatabase>();
  to->compressed = from.compressed;
  to->lnb_count = from.lnb_count;
  to->lnbs = from.lnbs;
  for (const Satellite* old : from.satellites) {
    to->satellites.push_back(to->satellite_pool.Take());
    to->satellites.back()->record = old->record;
  }
  const Places<Carrier> carriers(from.carrier_pool, from.carriers);
  CopyCarriers(from, carriers, *to);
  to->service_pool.Reserve(from.services.size());
  to->services.reserve(from.services.size());
  for (const Service* old : from.services) {
    Service* service = to->service_pool.Take();
    service->record = old->record;
    service->carrier = to->carriers[carriers.Of(*old->carrier)];
    service->carrier_position = old->carrier_position;
    to->services.push_back(service);
  }
  const Places<Service> places(from.service_pool, from.services);
  const auto translated = [&](const std::vector<Service*>& list) {
    return TranslateServices(list, places, to->services);
  };
  for (size_t i = 0; i < from.carriers.size(); ++i)
    to->carriers[i]->services = translated(from.carriers[i]->services);
  to->service_order = translated(from.service_order);
  for (size_t i = 0; i < kFavouriteGroups; ++i) {
    to->favourites[i].record = from.favourites[i].record;
    to->favourites[i].tv = translated(from.favourites[i].tv);
    to->favourites[i].radio = translated(from.favourites[i].radio);
  }
  return to;
}

int ClaimSlot(Document& document) {
  for (uint32_t slot = 0; slot < kMaximumSdbs; ++slot) {
    if (document.slot_mask >> slot & 1) continue;
    document.slot_mask |= 1u << slot;
    return static_cast<int>(slot);
  }
  return -1;
}

void ReleaseSlot(Document& document, uint32_t slot) {
  if (slot < 32) document.slot_mask &= ~(1u << slot);
}

OpenSdb* AppendSdb(Document& document, std::string name, const DefaultRecords& defaults) {
  const int slot = ClaimSlot(document);
  if (slot < 0) return nullptr;
  document.sdbs.push_back(
      {static_cast<uint32_t>(slot), std::move(name), std::make_unique<StaticDatabase>(defaults)});
  return &document.sdbs.back();
}

Document NewDocument(const DefaultRecords& defaults) {
  Document document;
  AppendSdb(document, "SDB1", defaults);
  return document;
}

}  // namespace vexa
