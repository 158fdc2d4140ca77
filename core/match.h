// Which records of two databases are the same thing: satellites by orbital position and side, then by name
// among those left; the carriers of matched satellites by polarisation and the nearest frequency within 3
// MHz; the services of matched carriers by program number, then by name. Each record is matched once at most,
// in the order of the lists; names are equal byte by byte up to their NUL. LNBs and favourite groups are
// matched by their place.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "core/database.h"

namespace vexa {

// A satellite named "NewSat %d" without carriers: a place of the table that nobody uses.
bool IsUnusedPlace(const Satellite& satellite);

inline constexpr size_t kUnmatched = ~size_t{0};
inline constexpr uint32_t kSameFrequency = 3;  // MHz: carriers no further apart are one and the same

// Of two lists: for each record of the one its place in the other, or kUnmatched.
struct Pairing {
  std::vector<size_t> second_of;  // by place in the first list
  std::vector<size_t> first_of;   // by place in the second list
  size_t count() const;           // of pairs
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
// Unused places of the satellite table match nothing. Both databases stay as they are.
DatabaseMatch MatchDatabases(const StaticDatabase& first, const StaticDatabase& second);

// The service of the second database for each matched one of the first.
using ServicePairs = std::unordered_map<const Service*, Service*>;
// `match` must have been made of these two databases as they are.
ServicePairs MatchedServices(const StaticDatabase& first, const StaticDatabase& second,
                             const DatabaseMatch& match);

// Which of the numbers, all different, stand in a longest ascending run of them: leaving all others out
// explains a new order by the fewest moves.
std::vector<bool> LongestAscending(const std::vector<size_t>& numbers);

}  // namespace vexa
