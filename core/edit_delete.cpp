#include <algorithm>
#include <unordered_set>

#include "core/edit.h"
#include "core/field_texts.h"

namespace vexa {

namespace {

using Marked = std::unordered_set<const void*>;

template <class T>
void Drop(std::vector<T*>& list, const Marked& marked) {
  std::erase_if(list, [&](const T* record) { return marked.count(record) > 0; });
}

// Takes the services out of every list of the database but their carriers', and gives them back.
void ForgetServices(StaticDatabase& database, const std::vector<Service*>& services) {
  if (services.empty()) return;
  const Marked marked(services.begin(), services.end());
  Drop(database.services, marked);
  Drop(database.service_order, marked);
  for (FavouriteGroup& group : database.favourites) {
    Drop(group.tv, marked);
    Drop(group.radio, marked);
  }
  for (Service* service : services) database.service_pool.Give(service);
}

// Takes the carriers with their services out of every list of the database but their satellites', and gives
// them back.
void ForgetCarriers(StaticDatabase& database, const std::vector<Carrier*>& carriers) {
  std::vector<Service*> services;
  for (Carrier* carrier : carriers)
    services.insert(services.end(), carrier->services.begin(), carrier->services.end());
  ForgetServices(database, services);
  Drop(database.carriers, Marked(carriers.begin(), carriers.end()));
  for (Carrier* carrier : carriers) database.carrier_pool.Give(carrier);
}

// Takes the rows out of the list; rows beyond its end count for nothing.
template <class T>
std::vector<T> TakeRows(std::vector<T>& list, const Rows& rows) {
  std::vector<bool> chosen(list.size());
  for (const size_t row : rows)
    if (row < list.size()) chosen[row] = true;
  std::vector<T> taken, left;
  for (size_t i = 0; i < list.size(); ++i) (chosen[i] ? taken : left).push_back(list[i]);
  list = std::move(left);
  return taken;
}

// Moves the LNBs behind the place up by one; the place that falls free at the end holds the default LNB
// again.
void CloseLnbPlace(StaticDatabase& database, size_t place) {
  std::move(database.lnbs.begin() + static_cast<std::ptrdiff_t>(place) + 1, database.lnbs.end(),
            database.lnbs.begin() + static_cast<std::ptrdiff_t>(place));
  database.lnbs.back() = FactoryDefaults().lnb;
  --database.lnb_count;
  for (Satellite* satellite : database.satellites) {
    const uint32_t index = satellite->record.lnb_index;
    if (index == place) satellite->record.lnb_index = 0;
    if (index > place) satellite->record.lnb_index = (index - 1) & 0xFF;
  }
}

}  // namespace

bool DeleteSdb(const Messages& messages, Document& document, size_t sdb) {
  if (sdb >= document.sdbs.size()) return false;
  if (document.sdbs.size() < 2) {
    TellWhy(messages, Icon::kStop,
            NameText(document, document.sdbs[sdb].name) + ": It is the only SDB. Add another one first.",
            "Cannot delete. Minimum one SDB is needed.");
    return false;
  }
  ReleaseSlot(document, document.sdbs[sdb].slot);
  document.sdbs.erase(document.sdbs.begin() + static_cast<std::ptrdiff_t>(sdb));
  return true;
}

bool DeleteLnbs(const Messages& messages, StaticDatabase& database, const Rows& rows) {
  const std::unordered_set<size_t> chosen(rows.begin(), rows.end());
  size_t deleted = 0;
  for (const size_t row : chosen) deleted += row < database.lnb_count;
  if (deleted >= database.lnb_count) {
    TellWhy(messages, Icon::kStop, "No LNB would be left. Keep one, or add another one first.",
            "Cannot delete. Minimum one LNB is required.");
    return false;
  }
  for (size_t place = database.lnb_count; place-- > 0;)
    if (chosen.count(place) > 0) CloseLnbPlace(database, place);
  return true;
}

void DeleteSatellites(StaticDatabase& database, const Rows& rows) {
  const std::vector<Satellite*> taken = TakeRows(database.satellites, rows);
  std::vector<Carrier*> carriers;
  for (Satellite* satellite : taken)
    carriers.insert(carriers.end(), satellite->carriers.begin(), satellite->carriers.end());
  ForgetCarriers(database, carriers);
  for (Satellite* satellite : taken) database.satellite_pool.Give(satellite);
  NumberSatellites(database);
}

void DeleteCarriers(StaticDatabase& database, Satellite& satellite, const Rows& rows) {
  ForgetCarriers(database, TakeRows(satellite.carriers, rows));
  satellite.record.carrier_count = static_cast<uint16_t>(satellite.carriers.size());
  NumberCarriers(satellite);
}

void DeleteServices(StaticDatabase& database, const std::vector<Service*>& services) {
  const Marked marked(services.begin(), services.end());
  std::unordered_set<Carrier*> carriers;
  for (const Service* service : services) carriers.insert(service->carrier);
  std::vector<Service*> taken;  // each once, whatever the caller named twice
  for (Carrier* carrier : carriers) {
    for (Service* service : carrier->services)
      if (marked.count(service) > 0) taken.push_back(service);
    Drop(carrier->services, marked);
    carrier->record.service_count = static_cast<uint16_t>(carrier->services.size());
  }
  ForgetServices(database, taken);
}

void DeleteUbi(Document& document, size_t ubi) {
  if (ubi < document.ubis.size())
    document.ubis.erase(document.ubis.begin() + static_cast<std::ptrdiff_t>(ubi));
}

void DeleteFavourites(FavouriteGroup& group, GroupKind kind, const Rows& rows) {
  TakeRows(EntriesOf(group, kind), rows);
}

}  // namespace vexa
