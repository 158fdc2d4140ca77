#include "import/list_gatherer.h"

#include "import/list_reader.h"

namespace vexa {

size_t ListGatherer::AddCarrier(const WorkSatellite& satellite, const WorkCarrier& carrier) {
  const std::string name(satellite.angle == 0 ? NameOf(satellite.name) : std::string_view());
  const auto [place, is_new_satellite] =
      satellite_places_.try_emplace({satellite.angle, satellite.east, name}, satellites_.size());
  if (is_new_satellite) satellites_.push_back({satellite, {}});
  const auto [at, is_new_carrier] = carrier_places_.try_emplace(
      {place->second, carrier.frequency, carrier.polarization, carrier.symbol_rate}, carriers_.size());
  if (is_new_carrier) {
    satellites_[place->second].carriers.push_back(carriers_.size());
    carriers_.push_back({carrier, {}, {}});
  }
  return at->second;
}

bool ListGatherer::AddService(size_t carrier, const WorkService& service, std::string_view listed_name) {
  Carrier& owner = carriers_[carrier];
  if (!owner.listed.emplace(service.program_number, listed_name).second) return false;
  owner.services.push_back(service);
  return true;
}

void ListGatherer::Finish(const DefaultRecords& defaults, WorkRecords& work) const {
  work = {};
  ListReader reader(work, defaults);
  for (const Satellite& found : satellites_) {
    WorkSatellite satellite = found.record;
    if (satellite.name[0] == '\0') SetSatelliteNumberName(satellite.name, reader.satellites());
    reader.Add(satellite);
    for (const size_t place : found.carriers) {
      WorkCarrier carrier = carriers_[place].record;
      reader.NameByNumber(carrier);
      reader.Add(carrier);
      for (WorkService service : carriers_[place].services) {
        service.carrier_index = (reader.carriers() - 1) & 0xFFFF;
        service.program_number = reader.ids.Unique(service.program_number) & 0xFFFF;
        if (service.name[0] == '\0')
          SetListName(service.name, "Service" + std::to_string(work.carriers.back().service_count + 1));
        reader.Add(service);
      }
    }
  }
}

}  // namespace vexa
