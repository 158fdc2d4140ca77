#include "import/sdb_builder.h"

#include <algorithm>
#include <utility>

#include "core/edit.h"

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
  return PutSatellite(database, record, database.satellites.size());
}

Carrier* AppendCarrier(StaticDatabase& database, Satellite& satellite, const CarrierRecord& record) {
  if (database.carriers.size() >= kMaximumCarriers) return nullptr;
  return PutCarrier(database, satellite, record, satellite.carriers.size());
}

Service* AppendService(StaticDatabase& database, Carrier& carrier, const ServiceRecord& record) {
  if (database.services.size() >= kMaximumServices) return nullptr;
  return PutService(database, carrier, record, carrier.services.size());
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
