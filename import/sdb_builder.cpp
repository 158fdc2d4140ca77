#include "import/sdb_builder.h"

#include <algorithm>
#include <utility>

namespace vexa {

void Numbering::Add(int64_t number, std::string where) {
  numbers_.push_back(number);
  where_.push_back(std::move(where));
}

std::vector<size_t> Numbering::Order() const {
  std::vector<size_t> order(numbers_.size(), numbers_.size());
  for (size_t i = 0; i < numbers_.size(); ++i) {
    const int64_t number = numbers_[i];
    const std::string text = std::string(name_) + " " + std::to_string(number);
    if (number < 1 || number > static_cast<int64_t>(numbers_.size()))
      throw Misfit{where_[i], text + " lies outside 1 to " + std::to_string(numbers_.size())};
    size_t& place = order[static_cast<size_t>(number) - 1];
    if (place != numbers_.size()) throw Misfit{where_[i], text + " is there twice"};
    place = i;
  }
  return order;
}

Satellite* AppendSatellite(StaticDatabase& database, const SatelliteRecord& record) {
  if (database.satellites.size() >= kMaximumSatellites) return nullptr;
  Satellite* satellite = database.satellite_pool.Take();
  satellite->record = record;
  satellite->record.carrier_count = 0;
  database.satellites.push_back(satellite);
  return satellite;
}

Carrier* AppendCarrier(StaticDatabase& database, Satellite& satellite, const CarrierRecord& record) {
  if (database.carriers.size() >= kMaximumCarriers) return nullptr;
  Carrier* carrier = database.carrier_pool.Take();
  carrier->record = record;
  const auto place = std::find(database.satellites.begin(), database.satellites.end(), &satellite);
  carrier->record.satellite_index = static_cast<uint32_t>(place - database.satellites.begin()) & 0x3FF;
  carrier->record.lnb_index = satellite.record.lnb_index;
  carrier->record.service_count = 0;
  carrier->satellite = &satellite;
  satellite.carriers.push_back(carrier);
  satellite.record.carrier_count = static_cast<uint16_t>(satellite.carriers.size());
  database.carriers.push_back(carrier);
  return carrier;
}

Service* AppendService(StaticDatabase& database, Carrier& carrier, const ServiceRecord& record) {
  if (database.services.size() >= kMaximumServices) return nullptr;
  Service* service = database.service_pool.Take();
  service->record = record;
  service->carrier = &carrier;
  const auto& siblings = carrier.satellite->carriers;
  const auto place = siblings.back() == &carrier ? siblings.end() - 1
                                                 : std::find(siblings.begin(), siblings.end(), &carrier);
  service->carrier_position = static_cast<uint16_t>(place - siblings.begin());
  carrier.services.push_back(service);
  carrier.record.service_count = static_cast<uint16_t>(carrier.services.size());
  database.services.push_back(service);
  return service;
}

void PlaceCarriersByServices(StaticDatabase& database) {
  const Places<Service> places(database.service_pool, database.services);
  // A run stands together, by the lowest place of its one carrier with services; those above all such stand
  // first.
  struct Run {
    uint32_t place = 0;
    std::vector<Carrier*> carriers;
  };
  std::vector<Run> runs(1);
  for (const Satellite* satellite : database.satellites) {
    std::vector<Carrier*> above;  // without services, before the satellite's first carrier with some
    const bool any = std::any_of(satellite->carriers.begin(), satellite->carriers.end(),
                                 [](const Carrier* carrier) { return !carrier->services.empty(); });
    bool begun = !any;
    for (Carrier* carrier : satellite->carriers) {
      if (carrier->services.empty()) {
        (begun ? runs.back().carriers : above).push_back(carrier);
        continue;
      }
      Run run;
      run.place = kMaximumServices;
      for (const Service* service : carrier->services)
        run.place = std::min<uint32_t>(run.place, places.Of(*service));
      run.carriers = std::exchange(above, {});
      run.carriers.push_back(carrier);
      runs.push_back(std::move(run));
      begun = true;
    }
  }
  std::stable_sort(runs.begin() + 1, runs.end(),
                   [](const Run& one, const Run& other) { return one.place < other.place; });
  database.carriers.clear();
  for (const Run& run : runs)
    database.carriers.insert(database.carriers.end(), run.carriers.begin(), run.carriers.end());
}

}  // namespace vexa
