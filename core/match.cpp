#include "core/match.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace vexa {

namespace {

Pairing Unpaired(size_t first, size_t second) {
  return {std::vector<size_t>(first, kUnmatched), std::vector<size_t>(second, kUnmatched)};
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

Pairing PairSatellites(const std::vector<Satellite*>& first, const std::vector<Satellite*>& second) {
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
  Pairing pairing = Unpaired(first.size(), second.size());
  FreeCarriers free(second);
  for (size_t i = 0; i < first.size(); ++i) {
    const size_t place = free.TakeNearest(first[i]->record);
    if (place != kUnmatched) Pair(pairing, i, place);
  }
  return pairing;
}

Pairing PairServices(const std::vector<Service*>& first, const std::vector<Service*>& second) {
  Pairing pairing = Unpaired(first.size(), second.size());
  const auto all = [](const Service&) { return true; };
  PairLists<uint32_t>(
      first, second, pairing, [](const ServiceRecord& record) { return uint32_t{record.program_number}; },
      all);
  PairLists<std::string_view>(
      first, second, pairing, [](const ServiceRecord& record) { return NameOf(record.name); }, all);
  return pairing;
}

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

}  // namespace

bool IsUnusedPlace(const Satellite& satellite) {
  constexpr std::string_view kStart = "NewSat ";
  const std::string_view name = NameOf(satellite.record.name);
  if (!satellite.carriers.empty() || !name.starts_with(kStart) || name.size() == kStart.size()) return false;
  return name.find_first_not_of("0123456789", kStart.size()) == std::string_view::npos;
}

size_t Pairing::count() const {
  return second_of.size() - static_cast<size_t>(std::count(second_of.begin(), second_of.end(), kUnmatched));
}

DatabaseMatch MatchDatabases(const StaticDatabase& first, const StaticDatabase& second) {
  DatabaseMatch match{PairSatellites(first.satellites, second.satellites), {}};
  match.below.resize(first.satellites.size());
  for (size_t i = 0; i < first.satellites.size(); ++i) {
    const size_t place = match.satellites.second_of[i];
    if (place != kUnmatched) match.below[i] = MatchCarriers(*first.satellites[i], *second.satellites[place]);
  }
  return match;
}

ServicePairs MatchedServices(const StaticDatabase& first, const StaticDatabase& second,
                             const DatabaseMatch& match) {
  ServicePairs pairs;
  pairs.reserve(first.services.size());
  for (size_t s = 0; s < first.satellites.size(); ++s) {
    const SatelliteMatch& satellite = match.below[s];
    for (size_t c = 0; c < satellite.below.size(); ++c) {
      const std::vector<size_t>& second_of = satellite.below[c].services.second_of;
      if (second_of.empty()) continue;
      const Carrier& from = *first.satellites[s]->carriers[c];
      const Carrier& to =
          *second.satellites[match.satellites.second_of[s]]->carriers[satellite.carriers.second_of[c]];
      for (size_t i = 0; i < second_of.size(); ++i) {
        if (second_of[i] != kUnmatched) pairs.emplace(from.services[i], to.services[second_of[i]]);
      }
    }
  }
  return pairs;
}

std::vector<bool> LongestAscending(const std::vector<size_t>& numbers) {
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
