#include "core/order_like.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

#include "core/edit.h"
#include "core/match.h"
#include "core/messages.h"

namespace vexa {

namespace {

// The matched records of `list` in the order of the other list, then the rest as it was.
template <class Record>
void TakeOrder(std::vector<Record*>& list, const Pairing& pairing) {
  if (pairing.ByPlace()) return;
  std::vector<Record*> ordered;
  ordered.reserve(list.size());
  for (const size_t place : pairing.second_of) {
    if (place != kUnmatched) ordered.push_back(list[place]);
  }
  for (size_t i = 0; i < list.size(); ++i) {
    if (pairing.first_of[i] == kUnmatched) ordered.push_back(list[i]);
  }
  list = std::move(ordered);
}

void OrderRecords(StaticDatabase& database, const DatabaseMatch& match, OrderSummary& summary) {
  // Below first: the match names carriers and services by their places before the move.
  for (size_t s = 0; s < match.below.size(); ++s) {
    if (match.satellites.second_of[s] == kUnmatched) continue;
    Satellite& satellite = *database.satellites[match.satellites.second_of[s]];
    const SatelliteMatch& below = match.below[s];
    for (size_t c = 0; c < below.below.size(); ++c) {
      if (below.carriers.second_of[c] == kUnmatched) continue;
      const Pairing& services = below.below[c].services;
      TakeOrder(satellite.carriers[below.carriers.second_of[c]]->services, services);
      summary.services += services.count();
    }
    TakeOrder(satellite.carriers, below.carriers);
    summary.carriers += below.carriers.count();
  }
  TakeOrder(database.satellites, match.satellites);
  summary.satellites += match.satellites.count();
  NumberSatellites(database);
  for (Satellite* satellite : database.satellites) NumberCarriers(*satellite);
  RefillAll(database);
}

void OrderServiceOrder(const StaticDatabase& old, StaticDatabase& database, const ServicePairs& pairs) {
  std::vector<Service*> ordered;
  std::unordered_set<const Service*> taken;
  for (const Service* service : old.service_order) {
    Service* match = pairs.Of(*service);
    if (!match) continue;
    ordered.push_back(match);
    taken.insert(match);
  }
  for (Service* service : database.service_order) {
    if (!taken.contains(service)) ordered.push_back(service);
  }
  database.service_order = std::move(ordered);
}

void TakeEntries(const std::vector<Service*>& old, bool tv, std::vector<Service*>& entries,
                 const ServicePairs& pairs, OrderSummary& summary) {
  entries.clear();
  for (const Service* service : old) {
    Service* match = pairs.Of(*service);
    if (match && (match->record.type == kTv) == tv) entries.push_back(match);
  }
  summary.entries_taken += entries.size();
  summary.entries_left_out += old.size() - entries.size();
}

void TakeFavourites(const StaticDatabase& old, StaticDatabase& database, const ServicePairs& pairs,
                    OrderSummary& summary) {
  for (size_t i = 0; i < kFavouriteGroups; ++i) {
    const FavouriteGroup& from = old.favourites[i];
    FavouriteGroup& to = database.favourites[i];
    std::copy(std::begin(from.record.tv_name), std::end(from.record.tv_name), to.record.tv_name);
    std::copy(std::begin(from.record.radio_name), std::end(from.record.radio_name), to.record.radio_name);
    TakeEntries(from.tv, true, to.tv, pairs, summary);
    TakeEntries(from.radio, false, to.radio, pairs, summary);
  }
}

}  // namespace

std::string SummaryText(const OrderSummary& summary) {
  return Format(
      "%zu of %zu satellites, %zu of %zu carriers, %zu of %zu services matched; %zu favourite entries "
      "taken, %zu left out",
      summary.satellites, summary.all_satellites, summary.carriers, summary.all_carriers, summary.services,
      summary.all_services, summary.entries_taken, summary.entries_left_out);
}

void OrderLike(const StaticDatabase& old, StaticDatabase& database, bool favourites, OrderSummary& summary) {
  const DatabaseMatch match = MatchDatabases(old, database);
  const ServicePairs pairs = MatchedServices(old, database, match);
  summary.all_satellites +=
      static_cast<size_t>(std::count_if(database.satellites.begin(), database.satellites.end(),
                                        [](const Satellite* s) { return !IsUnusedPlace(*s); }));
  summary.all_carriers += database.carriers.size();
  summary.all_services += database.services.size();
  OrderRecords(database, match, summary);
  if (!favourites) return;
  OrderServiceOrder(old, database, pairs);
  TakeFavourites(old, database, pairs, summary);
}

}  // namespace vexa
