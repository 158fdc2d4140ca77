// Puts a database into the order of an older one: records are the same by match.h.
#pragma once

#include <cstddef>
#include <string>

#include "core/database.h"

namespace vexa {

// What matched, and of how many; sums of several calls.
struct OrderSummary {
  size_t satellites = 0, all_satellites = 0;  // unused places are not counted
  size_t carriers = 0, all_carriers = 0;
  size_t services = 0, all_services = 0;
  size_t entries_taken = 0, entries_left_out = 0;  // of the old favourite lists
};

// "N of M satellites, N of M carriers, N of M services matched; N favourite entries taken, N left out"
std::string SummaryText(const OrderSummary& summary);

// Matched satellites, carriers and services of `database` take the order that `old` has them in and stand
// before the others, which keep theirs. With `favourites` the service order list follows likewise, and the
// favourite groups take the names and entries of the old ones; an entry is left out when its service has no
// match of the list's type. Adds to `summary`.
void OrderLike(const StaticDatabase& old, StaticDatabase& database, bool favourites, OrderSummary& summary);

}  // namespace vexa
