#include <algorithm>
#include <charconv>
#include <unordered_set>

#include "core/edit.h"

namespace vexa {

namespace {

// The target row, zero-based, of a move or swap dialog.
std::optional<size_t> TargetRow(const Messages& messages, const Rows& rows, const std::string& text,
                                size_t count, bool swap) {
  const size_t start = std::min(text.find_first_not_of(" \t"), text.size());
  const size_t digits = std::min(text.find_first_not_of("0123456789", start), text.size()) - start;
  unsigned number = 0;
  const auto parsed = std::from_chars(text.data() + start, text.data() + start + digits, number);
  if (parsed.ec == std::errc::result_out_of_range) number = ~0u;
  if (text.find_first_not_of(" \t", start + digits) != std::string::npos) number = 0;
  if (number < 1) {
    Tell(messages, Icon::kStop, "Invalid record index. Enter a index between 1 and %d",
         static_cast<int>(count));
    return std::nullopt;
  }
  if (number > count) {
    Tell(messages, Icon::kStop, "Record Index should not exceed %d", static_cast<int>(count));
    return std::nullopt;
  }
  const size_t target = number - 1;
  const bool inside = swap ? target == rows.front() : target > rows.front() && target <= rows.back();
  if (inside) {
    Tell(messages, Icon::kStop, "Invalid Index for current process");
    return std::nullopt;
  }
  return target;
}

bool Follows(const Rows& rows, size_t count) {
  if (rows.empty() || rows.back() >= count) return false;
  for (size_t i = 1; i < rows.size(); ++i)
    if (rows[i] != rows[i - 1] + 1) return false;
  return true;
}

bool CheckRows(const Messages& messages, const Rows& rows, size_t count, bool swap) {
  if (Follows(rows, count) && (!swap || rows.size() == 1)) return true;
  Tell(messages, Icon::kStop, "Invalid Sequence. Can not continue.");
  return false;
}

// Upwards the first row of the run lands on the target, downwards the last one; their order stays.
template <class T>
size_t MoveRun(std::vector<T>& list, const Rows& rows, size_t target) {
  const auto at = [&](size_t row) { return list.begin() + static_cast<std::ptrdiff_t>(row); };
  if (target <= rows.front()) {
    std::rotate(at(target), at(rows.front()), at(rows.back() + 1));
    return target;
  }
  std::rotate(at(rows.front()), at(rows.back() + 1), at(target + 1));
  return target + 1 - rows.size();
}

template <class T>
std::optional<size_t> Rearrange(const Messages& messages, std::vector<T>& list, const Rows& rows,
                                const std::string& text, bool swap) {
  if (!CheckRows(messages, rows, list.size(), swap)) return std::nullopt;
  const auto target = TargetRow(messages, rows, text, list.size(), swap);
  if (!target) return std::nullopt;
  if (!swap) return MoveRun(list, rows, *target);
  std::swap(list[rows[0]], list[*target]);
  return *target;
}

std::optional<size_t> RearrangeSatellites(const Messages& messages, StaticDatabase& database,
                                          const Rows& rows, const std::string& target, bool swap) {
  const auto row = Rearrange(messages, database.satellites, rows, target, swap);
  if (row) NumberSatellites(database);
  return row;
}

std::optional<size_t> RearrangeCarriers(const Messages& messages, StaticDatabase& database,
                                        Satellite& satellite, const Rows& rows, const std::string& target,
                                        bool swap) {
  const auto row = Rearrange(messages, satellite.carriers, rows, target, swap);
  if (!row) return row;
  RefillCarriers(database, satellite);
  NumberCarriers(satellite);
  return row;
}

// True when the carrier would hold a program number twice after taking in the services and giving away
// `leaving`.
bool Clashes(const Carrier& carrier, const std::vector<Service*>& incoming,
             const Service* leaving = nullptr) {
  std::unordered_set<uint32_t> numbers;
  for (const Service* service : carrier.services)
    if (service != leaving) numbers.insert(service->record.program_number);
  for (const Service* service : incoming)
    if (!numbers.insert(service->record.program_number).second) return true;
  return false;
}

bool CheckNumbers(const Messages& messages, const Carrier& carrier, const std::vector<Service*>& incoming,
                  const Service* leaving = nullptr) {
  if (!Clashes(carrier, incoming, leaving)) return true;
  Tell(messages, Icon::kStop, "Service program number already exists.");
  return false;
}

size_t PlaceOf(const Carrier& carrier, const Service* service) {
  return static_cast<size_t>(std::find(carrier.services.begin(), carrier.services.end(), service) -
                             carrier.services.begin());
}

}  // namespace

bool CheckMoveRows(const Messages& messages, const Rows& rows) {
  return CheckRows(messages, rows, SIZE_MAX, false);
}

bool CheckSwapRows(const Messages& messages, const Rows& rows) {
  return CheckRows(messages, rows, SIZE_MAX, true);
}

std::optional<size_t> MoveSatellites(const Messages& messages, StaticDatabase& database, const Rows& rows,
                                     const std::string& target) {
  return RearrangeSatellites(messages, database, rows, target, false);
}

std::optional<size_t> SwapSatellites(const Messages& messages, StaticDatabase& database, const Rows& rows,
                                     const std::string& target) {
  return RearrangeSatellites(messages, database, rows, target, true);
}

std::optional<size_t> MoveCarriers(const Messages& messages, StaticDatabase& database, Satellite& satellite,
                                   const Rows& rows, const std::string& target) {
  return RearrangeCarriers(messages, database, satellite, rows, target, false);
}

std::optional<size_t> SwapCarriers(const Messages& messages, StaticDatabase& database, Satellite& satellite,
                                   const Rows& rows, const std::string& target) {
  return RearrangeCarriers(messages, database, satellite, rows, target, true);
}

std::optional<size_t> MoveServices(const Messages& messages, StaticDatabase& database, Carrier& carrier,
                                   const Rows& rows, const std::string& target) {
  const auto row = Rearrange(messages, carrier.services, rows, target, false);
  if (row) RefillServices(database, carrier);
  return row;
}

std::optional<size_t> MoveFavourites(const Messages& messages, FavouriteGroup& group, GroupKind kind,
                                     const Rows& rows, const std::string& target) {
  return Rearrange(messages, EntriesOf(group, kind), rows, target, false);
}

std::optional<size_t> SwapFavourites(const Messages& messages, FavouriteGroup& group, GroupKind kind,
                                     const Rows& rows, const std::string& target) {
  return Rearrange(messages, EntriesOf(group, kind), rows, target, true);
}

bool SwapServices(const Messages& messages, StaticDatabase& database, const std::vector<Service*>& selected) {
  if (selected.size() != 2 || selected[0] == selected[1]) {
    Tell(messages, Icon::kStop, "Select two services to be swapped.");
    return false;
  }
  Service &first = *selected[0], &second = *selected[1];
  Carrier &first_carrier = *first.carrier, &second_carrier = *second.carrier;
  if (&first_carrier != &second_carrier && (!CheckNumbers(messages, first_carrier, {&second}, &first) ||
                                            !CheckNumbers(messages, second_carrier, {&first}, &second)))
    return false;
  std::swap(first_carrier.services[PlaceOf(first_carrier, &first)],
            second_carrier.services[PlaceOf(second_carrier, &second)]);
  std::swap(first.carrier, second.carrier);
  std::swap(first.carrier_position, second.carrier_position);
  std::swap(*std::find(database.services.begin(), database.services.end(), &first),
            *std::find(database.services.begin(), database.services.end(), &second));
  return true;
}

bool CheckServiceMove(const Messages& messages, const std::vector<Service*>& selected) {
  if (!selected.empty()) return true;
  Tell(messages, Icon::kStop, "Select  service(s) to  move");
  return false;
}

bool MoveServicesToCarrier(const Messages& messages, StaticDatabase& database,
                           const std::vector<Service*>& selected, Carrier& destination, size_t place) {
  if (!CheckServiceMove(messages, selected)) return false;
  for (const Service* service : selected) {
    if (service->carrier != &destination) continue;
    Tell(messages, Icon::kStop,
         "Both selected and destination carriers are same. Select a valid destination carrier.");
    return false;
  }
  if (!CheckNumbers(messages, destination, selected)) return false;
  std::unordered_set<Carrier*> sources;
  const std::unordered_set<const Service*> moved(selected.begin(), selected.end());
  const auto& siblings = destination.satellite->carriers;
  const auto position = std::find(siblings.begin(), siblings.end(), &destination) - siblings.begin();
  for (Service* service : selected) {
    sources.insert(service->carrier);
    service->carrier = &destination;
    service->carrier_position = static_cast<uint16_t>(position);
  }
  std::vector<Service*>& list = destination.services;
  list.insert(list.begin() + static_cast<std::ptrdiff_t>(std::min(place, list.size())), selected.begin(),
              selected.end());
  for (Carrier* source : sources) {
    std::erase_if(source->services, [&](const Service* service) { return moved.count(service) > 0; });
    source->record.service_count = static_cast<uint16_t>(source->services.size());
  }
  destination.record.service_count = static_cast<uint16_t>(destination.services.size());
  RefillServices(database, destination);
  return true;
}

}  // namespace vexa
