// The invariant of a database. Compares addresses before it follows any, so that a reference to a record
// that is gone is reported and not read.

#include <algorithm>

#include "core/database.h"
#include "core/messages.h"

namespace vexa {

namespace {

// The addresses of a table in order, to look references up in.
template <class T>
class AddressSet {
 public:
  explicit AddressSet(const std::vector<T*>& table) : sorted_(table) {
    std::sort(sorted_.begin(), sorted_.end());
  }
  bool Holds(T* record) const { return std::binary_search(sorted_.begin(), sorted_.end(), record); }
  bool HasNull() const { return !sorted_.empty() && sorted_.front() == nullptr; }
  bool Repeats() const { return std::adjacent_find(sorted_.begin(), sorted_.end()) != sorted_.end(); }
  bool SameAs(const AddressSet& other) const { return sorted_ == other.sorted_; }

 private:
  std::vector<T*> sorted_;
};

std::string CheckTables(const StaticDatabase& database) {
  if (database.lnb_count > kMaximumLnbs) return Format("%u LNBs", database.lnb_count);
  if (database.satellites.size() > kMaximumSatellites)
    return Format("%zu satellites", database.satellites.size());
  if (database.carriers.size() > kMaximumCarriers) return Format("%zu carriers", database.carriers.size());
  if (database.services.size() > kMaximumServices) return Format("%zu services", database.services.size());
  const AddressSet satellites(database.satellites);
  if (satellites.HasNull() || satellites.Repeats()) return "satellite table holds nothing or one twice";
  const AddressSet carriers(database.carriers);
  if (carriers.HasNull() || carriers.Repeats()) return "carrier table holds nothing or one twice";
  const AddressSet services(database.services);
  if (services.HasNull() || services.Repeats()) return "service table holds nothing or one twice";
  if (!AddressSet(database.service_order).SameAs(services))
    return "service order is no permutation of the services";
  return {};
}

std::string CheckSatellites(const StaticDatabase& database) {
  const AddressSet carriers(database.carriers);
  std::vector<Carrier*> listed;
  for (size_t i = 0; i < database.satellites.size(); ++i) {
    Satellite* satellite = database.satellites[i];
    if (satellite->record.carrier_count != satellite->carriers.size())
      return Format("satellite %zu counts %u carriers and lists %zu", i,
                    unsigned{satellite->record.carrier_count}, satellite->carriers.size());
    if (satellite->record.lnb_index >= kMaximumLnbs)
      return Format("satellite %zu names an LNB beyond the table", i);
    for (Carrier* carrier : satellite->carriers) {
      if (!carriers.Holds(carrier)) return Format("satellite %zu lists a carrier that is not there", i);
      if (carrier->satellite != satellite || carrier->record.satellite_index != i)
        return Format("a carrier of satellite %zu names another satellite", i);
      listed.push_back(carrier);
    }
  }
  if (!AddressSet(listed).SameAs(carriers)) return "a carrier stands in no satellite's list, or twice";
  return {};
}

std::string CheckCarriers(const StaticDatabase& database) {
  const AddressSet services(database.services);
  std::vector<Service*> listed;
  for (const Satellite* satellite : database.satellites) {
    for (size_t position = 0; position < satellite->carriers.size(); ++position) {
      Carrier* carrier = satellite->carriers[position];
      if (carrier->record.service_count != carrier->services.size())
        return Format("a carrier counts %u services and lists %zu", unsigned{carrier->record.service_count},
                      carrier->services.size());
      for (Service* service : carrier->services) {
        if (!services.Holds(service)) return "a carrier lists a service that is not there";
        if (service->carrier != carrier) return "a service names another carrier than lists it";
        if (service->carrier_position != position)
          return Format("a service takes its carrier for number %u where it is number %zu",
                        unsigned{service->carrier_position}, position);
        listed.push_back(service);
      }
    }
  }
  if (!AddressSet(listed).SameAs(services)) return "a service stands in no carrier's list, or twice";
  return {};
}

std::string CheckFavourites(const StaticDatabase& database) {
  const AddressSet services(database.services);
  const auto held = [&](Service* service) { return services.Holds(service); };
  for (size_t i = 0; i < kFavouriteGroups; ++i) {
    const FavouriteGroup& group = database.favourites[i];
    if (group.tv.size() > kMaximumTvEntries || group.radio.size() > kMaximumRadioEntries)
      return Format("favourite group %zu is too long", i);
    if (!std::all_of(group.tv.begin(), group.tv.end(), held) ||
        !std::all_of(group.radio.begin(), group.radio.end(), held))
      return Format("favourite group %zu names a service that is not there", i);
  }
  return {};
}

}  // namespace

std::string CheckLinks(const StaticDatabase& database) {
  for (const auto check : {CheckTables, CheckSatellites, CheckCarriers, CheckFavourites}) {
    std::string broken = check(database);
    if (!broken.empty()) return broken;
  }
  return {};
}

}  // namespace vexa
