#include "core/duplicates.h"

#include <map>
#include <string_view>
#include <utility>

#include "core/match.h"

namespace vexa {

namespace {

// Remembers the first place of each key while records come one by one.
template <class Key>
class FirstPlaces {
 public:
  // The first place of the key when it came before; else this one is remembered.
  std::optional<size_t> Seen(const Key& key, size_t place) {
    const auto [entry, added] = places_.emplace(key, place);
    return added ? std::nullopt : std::optional(entry->second);
  }
  std::optional<size_t> Find(const Key& key) const {
    const auto entry = places_.find(key);
    return entry == places_.end() ? std::nullopt : std::optional(entry->second);
  }

 private:
  std::map<Key, size_t> places_;
};

}  // namespace

Repeats RepeatedSatellites(const std::vector<Satellite*>& satellites) {
  FirstPlaces<std::pair<uint32_t, uint32_t>> positions;
  Repeats repeats(satellites.size());
  for (size_t i = 0; i < satellites.size(); ++i) {
    const SatelliteRecord& record = satellites[i]->record;
    if (record.angle != 0 && !IsUnusedPlace(*satellites[i]))
      repeats[i] = positions.Seen({record.angle, record.east}, i);
  }
  return repeats;
}

Repeats RepeatedCarriers(const std::vector<Carrier*>& carriers) {
  FirstPlaces<std::pair<uint32_t, int64_t>> seen;
  Repeats repeats(carriers.size());
  for (size_t i = 0; i < carriers.size(); ++i) {
    const CarrierRecord& record = carriers[i]->record;
    for (int64_t step = -int64_t{kSameFrequency}; step <= int64_t{kSameFrequency}; ++step) {
      const auto found = seen.Find({record.polarization, int64_t{record.frequency} + step});
      if (found && (!repeats[i] || *found < *repeats[i])) repeats[i] = found;
    }
    seen.Seen({record.polarization, record.frequency}, i);
  }
  return repeats;
}

Repeats RepeatedServices(const std::vector<Service*>& services) {
  FirstPlaces<std::string_view> names;
  Repeats repeats(services.size());
  for (size_t i = 0; i < services.size(); ++i) {
    const std::string_view name = NameOf(services[i]->record.name);
    if (!name.empty()) repeats[i] = names.Seen(name, i);
  }
  return repeats;
}

Repeats RepeatedEntries(const std::vector<Service*>& entries) {
  FirstPlaces<const Service*> seen;
  Repeats repeats(entries.size());
  for (size_t i = 0; i < entries.size(); ++i) repeats[i] = seen.Seen(entries[i], i);
  return repeats;
}

}  // namespace vexa
