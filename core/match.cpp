#include "core/match.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace vexa {

namespace {

constexpr std::string_view kEmptySlot = "NewSat ";

Pairing Unpaired(size_t first, size_t second) {
  return {std::vector<size_t>(first, kUnmatched), std::vector<size_t>(second, kUnmatched), 0};
}

// Whether each record can be paired with the one at its place: there are as many, and `same` holds of each
// two.
template <class Record, class Same>
bool PairByPlace(const std::vector<Record*>& first, const std::vector<Record*>& second, Same same) {
  if (first.size() != second.size()) return false;
  for (size_t i = 0; i < first.size(); ++i) {
    if (!same(first[i]->record, second[i]->record)) return false;
  }
  return true;
}

void Pair(Pairing& pairing, size_t first, size_t second) {
  pairing.second_of[first] = second;
  pairing.first_of[second] = first;
}

// A record that takes part, by key and then by place.
template <class Key>
using Keyed = std::vector<std::pair<Key, size_t>>;

// Pairs records of equal keys: the k-th of a key in the one list with the k-th in the other.
template <class Key>
void PairByKey(Keyed<Key> first, Keyed<Key> second, Pairing& pairing) {
  std::sort(first.begin(), first.end());
  std::sort(second.begin(), second.end());
  size_t i = 0, j = 0;
  while (i < first.size() && j < second.size()) {
    if (first[i].first < second[j].first) {
      ++i;
    } else if (second[j].first < first[i].first) {
      ++j;
    } else {
      Pair(pairing, first[i++].second, second[j++].second);
    }
  }
}

// The records of a list that are not paired yet and that `takes` passes.
template <class Key, class Record, class KeyOf, class Takes>
Keyed<Key> KeysOf(const std::vector<Record*>& list, const std::vector<size_t>& paired, KeyOf key_of,
                  Takes takes) {
  Keyed<Key> keys;
  for (size_t i = 0; i < list.size(); ++i) {
    if (paired[i] == kUnmatched && takes(*list[i])) keys.emplace_back(key_of(list[i]->record), i);
  }
  return keys;
}

template <class Key, class Record, class KeyOf, class Takes>
void PairLists(const std::vector<Record*>& first, const std::vector<Record*>& second, Pairing& pairing,
               KeyOf key_of, Takes takes) {
  PairByKey<Key>(KeysOf<Key>(first, pairing.second_of, key_of, takes),
                 KeysOf<Key>(second, pairing.first_of, key_of, takes), pairing);
}

Pairing PairSatelliteLists(const std::vector<Satellite*>& first, const std::vector<Satellite*>& second) {
  Pairing pairing = Unpaired(first.size(), second.size());
  const auto used = [](const Satellite& satellite) { return !IsUnusedPlace(satellite); };
  PairLists<uint32_t>(
      first, second, pairing, [](const SatelliteRecord& record) { return record.angle * 2u + record.east; },
      used);
  PairLists<std::string_view>(
      first, second, pairing, [](const SatelliteRecord& record) { return NameOf(record.name); }, used);
  return pairing;
}

// The carriers of the second list that are free, by polarisation and frequency; those of one key in list
// order.
class FreeCarriers {
 public:
  explicit FreeCarriers(const std::vector<Carrier*>& carriers) : taken_(carriers.size()) {
    for (size_t i = 0; i < carriers.size(); ++i)
      entries_.push_back({KeyOf(carriers[i]->record, carriers[i]->record.frequency), i});
    std::sort(entries_.begin(), entries_.end());
  }
  // The nearest one, of two at one distance the first in the list; it is free no longer.
  size_t TakeNearest(const CarrierRecord& record) {
    const int64_t frequency = record.frequency;
    for (int64_t distance = 0; distance <= kSameFrequency; ++distance) {
      const size_t below = StartOf(KeyOf(record, frequency - distance));
      const size_t above = StartOf(KeyOf(record, frequency + distance));
      const size_t start = std::min(FrontOf(below), FrontOf(above)) == FrontOf(below) ? below : above;
      const size_t place = FrontOf(start);
      if (place == kUnmatched) continue;
      ++taken_[start];
      return place;
    }
    return kUnmatched;
  }

 private:
  // Frequencies of one polarisation lie far from those of another.
  static int64_t KeyOf(const CarrierRecord& record, int64_t frequency) {
    return int64_t{record.polarization} * (int64_t{1} << 40) + frequency;
  }
  // Where the entries of the key begin; kUnmatched: there is none.
  size_t StartOf(int64_t key) const {
    const auto start = std::lower_bound(entries_.begin(), entries_.end(), std::pair{key, size_t{0}});
    if (start == entries_.end() || start->first != key) return kUnmatched;
    return static_cast<size_t>(start - entries_.begin());
  }
  // The place of the first free one of the entries that begin there.
  size_t FrontOf(size_t start) const {
    if (start == kUnmatched) return kUnmatched;
    const size_t at = start + taken_[start];
    return at < entries_.size() && entries_[at].first == entries_[start].first ? entries_[at].second
                                                                               : kUnmatched;
  }

  Keyed<int64_t> entries_;
  std::vector<size_t> taken_;  // by the start of a key's entries: how many of them
};

Pairing PairCarriers(const std::vector<Carrier*>& first, const std::vector<Carrier*>& second) {
  const auto same = [](const CarrierRecord& one, const CarrierRecord& other) {
    return one.frequency == other.frequency && one.polarization == other.polarization;
  };
  Pairing pairing = Unpaired(first.size(), second.size());
  if (PairByPlace(first, second, same)) {
    std::iota(pairing.second_of.begin(), pairing.second_of.end(), size_t{0});
    pairing.first_of = pairing.second_of;
    return pairing;
  }
  FreeCarriers free(second);
  for (size_t i = 0; i < first.size(); ++i) {
    const size_t place = free.TakeNearest(first[i]->record);
    if (place != kUnmatched) Pair(pairing, i, place);
  }
  return pairing;
}

Pairing PairServices(const std::vector<Service*>& first, const std::vector<Service*>& second) {
  const auto same = [](const ServiceRecord& one, const ServiceRecord& other) {
    return one.program_number == other.program_number;
  };
  if (PairByPlace(first, second, same)) return {{}, {}, first.size()};
  Pairing pairing = Unpaired(first.size(), second.size());
  const auto all = [](const Service&) { return true; };
  PairLists<uint32_t>(
      first, second, pairing, [](const ServiceRecord& record) { return uint32_t{record.program_number}; },
      all);
  PairLists<std::string_view>(
      first, second, pairing, [](const ServiceRecord& record) { return NameOf(record.name); }, all);
  return pairing;
}

}  // namespace

SatelliteMatch MatchCarriers(const Satellite& first, const Satellite& second) {
  SatelliteMatch match{PairCarriers(first.carriers, second.carriers), {}};
  match.below.resize(first.carriers.size());
  for (size_t i = 0; i < first.carriers.size(); ++i) {
    const size_t place = match.carriers.second_of[i];
    if (place != kUnmatched)
      match.below[i].services = PairServices(first.carriers[i]->services, second.carriers[place]->services);
  }
  return match;
}

std::string EmptySlotName(unsigned number) {
  return std::string(kEmptySlot) + std::to_string(number);
}

bool IsUnusedPlace(const Satellite& satellite) {
  const std::string_view name = NameOf(satellite.record.name);
  if (!satellite.carriers.empty() || !name.starts_with(kEmptySlot) || name.size() == kEmptySlot.size())
    return false;
  return name.find_first_not_of("0123456789", kEmptySlot.size()) == std::string_view::npos;
}

std::optional<std::vector<size_t>> PlacesToFree(const StaticDatabase& database, size_t satellites) {
  std::vector<size_t> places;
  for (size_t i = database.satellites.size(); i-- > 0 && satellites - places.size() > kMaximumSatellites;) {
    if (IsUnusedPlace(*database.satellites[i])) places.push_back(i);
  }
  if (satellites - places.size() > kMaximumSatellites) return std::nullopt;
  std::reverse(places.begin(), places.end());
  return places;
}

size_t EndOfSatellites(const StaticDatabase& database) {
  const auto& list = database.satellites;
  const auto last = std::find_if(list.rbegin(), list.rend(),
                                 [](const Satellite* satellite) { return !IsUnusedPlace(*satellite); });
  return static_cast<size_t>(list.rend() - last);
}

size_t Pairing::count() const {
  if (ByPlace()) return same;
  return second_of.size() - static_cast<size_t>(std::count(second_of.begin(), second_of.end(), kUnmatched));
}

Pairing MatchSatellites(const StaticDatabase& first, const StaticDatabase& second) {
  return PairSatelliteLists(first.satellites, second.satellites);
}

DatabaseMatch MatchDatabases(const StaticDatabase& first, const StaticDatabase& second) {
  DatabaseMatch match{MatchSatellites(first, second), {}};
  match.below.resize(first.satellites.size());
  for (size_t i = 0; i < first.satellites.size(); ++i) {
    const size_t place = match.satellites.second_of[i];
    if (place != kUnmatched) match.below[i] = MatchCarriers(*first.satellites[i], *second.satellites[place]);
  }
  return match;
}

void AddServicePairs(const Satellite& first, const Satellite& second, const SatelliteMatch& match,
                     ServicePairs& pairs) {
  for (size_t c = 0; c < match.below.size(); ++c) {
    const Pairing& services = match.below[c].services;
    if (services.FirstSize() == 0) continue;
    const Carrier &from = *first.carriers[c], &to = *second.carriers[match.carriers.second_of[c]];
    for (size_t i = 0; i < services.FirstSize(); ++i) {
      if (services.SecondOf(i) != kUnmatched) pairs.Set(*from.services[i], to.services[services.SecondOf(i)]);
    }
  }
}

ServicePairs MatchedServices(const StaticDatabase& first, const StaticDatabase& second,
                             const DatabaseMatch& match) {
  ServicePairs pairs(first);
  for (size_t s = 0; s < first.satellites.size(); ++s) {
    const size_t place = match.satellites.second_of[s];
    if (place != kUnmatched)
      AddServicePairs(*first.satellites[s], *second.satellites[place], match.below[s], pairs);
  }
  return pairs;
}

Pairing PairEntries(const std::vector<Service*>& first, const std::vector<Service*>& second,
                    const ServicePairs& pairs) {
  Pairing pairing{std::vector<size_t>(first.size(), kUnmatched),
                  std::vector<size_t>(second.size(), kUnmatched), 0};
  std::unordered_map<const Service*, std::vector<size_t>> places;
  for (size_t i = second.size(); i-- > 0;) places[second[i]].push_back(i);
  for (size_t i = 0; i < first.size(); ++i) {
    const Service* match = pairs.Of(*first[i]);
    const auto found = match ? places.find(match) : places.end();
    if (found == places.end() || found->second.empty()) continue;
    pairing.second_of[i] = found->second.back();
    pairing.first_of[found->second.back()] = i;
    found->second.pop_back();
  }
  return pairing;
}

std::vector<bool> LongestAscending(const std::vector<size_t>& numbers) {
  if (std::is_sorted(numbers.begin(), numbers.end())) return std::vector<bool>(numbers.size(), true);
  // ends[k]: among the ascending runs of k + 1 numbers, the place of the smallest last number. before[i]: the
  // place of the number in front of number i in its run.
  std::vector<size_t> ends, before(numbers.size(), kUnmatched);
  for (size_t i = 0; i < numbers.size(); ++i) {
    const auto end = std::lower_bound(ends.begin(), ends.end(), numbers[i],
                                      [&](size_t place, size_t number) { return numbers[place] < number; });
    if (end != ends.begin()) before[i] = *(end - 1);
    if (end == ends.end()) {
      ends.push_back(i);
    } else {
      *end = i;
    }
  }
  std::vector<bool> stands(numbers.size(), false);
  for (size_t i = ends.empty() ? kUnmatched : ends.back(); i != kUnmatched; i = before[i]) stands[i] = true;
  return stands;
}

}  // namespace vexa
