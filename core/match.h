// Which records of two databases are the same thing: satellites by orbital position and side, then by name
// among those left; the carriers of matched satellites by polarisation and the nearest frequency within 3
// MHz; the services of matched carriers by program number, then by name. Each record is matched once at most,
// in the order of the lists; names are equal byte by byte up to their NUL. LNBs and favourite groups are
// matched by their place.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "core/database.h"

namespace vexa {

// A satellite named "NewSat %d" without carriers: a place of the table that nobody uses.
bool IsUnusedPlace(const Satellite& satellite);
// The name of such a place, by its number from 1.
std::string EmptySlotName(unsigned number);
// The unused places that go, the last ones first, so that no more than the table takes are left of
// `satellites`, which the database would have with them. Nothing when there are too few.
std::optional<std::vector<size_t>> PlacesToFree(const StaticDatabase& database, size_t satellites);
// The place behind the last satellite in use.
size_t EndOfSatellites(const StaticDatabase& database);

inline constexpr size_t kUnmatched = ~size_t{0};
inline constexpr uint32_t kSameFrequency = 3;  // MHz: carriers no further apart are one and the same

// Of two lists: for each record of the one its place in the other, or kUnmatched. Lists of services that are
// paired place by place, as most are, need no numbers: `same` says how many there are, and the numbers are
// empty.
struct Pairing {
  std::vector<size_t> second_of;  // by place in the first list
  std::vector<size_t> first_of;   // by place in the second list
  size_t same = 0;

  bool ByPlace() const { return second_of.empty() && first_of.empty(); }
  size_t FirstSize() const { return ByPlace() ? same : second_of.size(); }
  size_t SecondSize() const { return ByPlace() ? same : first_of.size(); }
  size_t SecondOf(size_t first) const { return ByPlace() ? first : second_of[first]; }
  size_t FirstOf(size_t second) const { return ByPlace() ? second : first_of[second]; }
  size_t count() const;  // of pairs
};

struct CarrierMatch {
  Pairing services;
};
struct SatelliteMatch {
  Pairing carriers;
  std::vector<CarrierMatch> below;  // by place in the first list; empty pairings where nothing is matched
};
struct DatabaseMatch {
  Pairing satellites;
  std::vector<SatelliteMatch> below;  // by place in the first list
};
// The parts of that, for a job that does them satellite by satellite. Of a satellite and its match:
Pairing MatchSatellites(const StaticDatabase& first, const StaticDatabase& second);
SatelliteMatch MatchCarriers(const Satellite& first, const Satellite& second);
// Unused places of the satellite table match nothing. Both databases stay as they are.
DatabaseMatch MatchDatabases(const StaticDatabase& first, const StaticDatabase& second);

// The service of the second database for each matched one of the first, as long as both last.
class ServicePairs {
 public:
  explicit ServicePairs(const StaticDatabase& first) : second_of_(first.service_pool.size()) {}
  void Set(const Service& first, Service* second) { second_of_[first.pool_number] = second; }
  // nullptr: it has no match.
  Service* Of(const Service& first) const {
    return first.pool_number < second_of_.size() ? second_of_[first.pool_number] : nullptr;
  }

 private:
  std::vector<Service*> second_of_;  // by pool number
};
// Adds those of the carriers of a satellite and its match.
void AddServicePairs(const Satellite& first, const Satellite& second, const SatelliteMatch& match,
                     ServicePairs& pairs);
// `match` must have been made of these two databases as they are.
ServicePairs MatchedServices(const StaticDatabase& first, const StaticDatabase& second,
                             const DatabaseMatch& match);

// Of two favourite lists: the k-th entry of a service in the one is the k-th of its match in the other.
Pairing PairEntries(const std::vector<Service*>& first, const std::vector<Service*>& second,
                    const ServicePairs& pairs);

// Which of the numbers, all different, stand in a longest ascending run of them: leaving all others out
// explains a new order by the fewest moves.
std::vector<bool> LongestAscending(const std::vector<size_t>& numbers);

}  // namespace vexa
