#include "core/take_over.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <unordered_map>
#include <unordered_set>

#include "core/edit.h"
#include "core/fields.h"
#include "core/match.h"

namespace vexa {

namespace {

// A record of a list in its new order: one of its own, or a copy of one of the other list, by its place.
struct Placed {
  bool copy;
  size_t place;
};

// `takes_second` says of a place in the second list that its record is added or moved, `drops_first` of a
// place in the first one that its record goes.
template <class TakesSecond, class DropsFirst>
std::vector<Placed> NewOrder(const Pairing& pairing, TakesSecond takes_second, DropsFirst drops_first) {
  // What comes behind each record that stays where it is; the last group stands before all of them.
  std::vector<std::vector<Placed>> behind(pairing.FirstSize() + 1);
  std::vector<bool> moved(pairing.FirstSize());
  size_t anchor = pairing.FirstSize();
  for (size_t second = 0; second < pairing.SecondSize(); ++second) {
    const size_t first = pairing.FirstOf(second);
    if (takes_second(second)) {
      behind[anchor].push_back({first == kUnmatched, first == kUnmatched ? second : first});
      if (first != kUnmatched) moved[first] = true;
    } else if (first != kUnmatched) {
      anchor = first;
    }
  }
  std::vector<Placed> order = behind.back();
  for (size_t first = 0; first < pairing.FirstSize(); ++first) {
    if (moved[first]) continue;
    if (!drops_first(first)) order.push_back({false, first});
    order.insert(order.end(), behind[first].begin(), behind[first].end());
  }
  return order;
}

template <class Record>
void CopyFields(const Record& from, Record& to) {
  for (const Field<Record>& field : FieldsOf<Record>()) {
    if (!field.follows) field.set(to, field.get(from));
  }
}

template <class Record>
void CopyNamed(const Record& from, Record& to) {
  std::copy(std::begin(from.name), std::end(from.name), to.name);
  CopyFields(from, to);
}

struct EntryPlace {
  size_t group, half, entry;
  bool operator==(const EntryPlace&) const = default;
};

size_t DeepCarriers(const Satellite& satellite) {
  return satellite.carriers.size();
}
size_t DeepServices(const Carrier& carrier) {
  return carrier.services.size();
}
size_t DeepServices(const Satellite& satellite) {
  size_t count = 0;
  for (const Carrier* carrier : satellite.carriers) count += carrier->services.size();
  return count;
}

class Taker {
 public:
  Taker(const Messages& messages, Document& document, size_t sdb, const Document& other, size_t other_sdb)
      : messages_(messages),
        document_(document),
        other_(other),
        sdb_(document.sdbs[sdb]),
        other_sdb_(other.sdbs[other_sdb]),
        to_(*sdb_.database),
        from_(*other_sdb_.database),
        match_(MatchDatabases(to_, from_)),
        pairs_(MatchedServices(to_, from_, match_)) {
    for (Service* own : to_.services) {
      if (const Service* match = pairs_.Of(*own)) own_of_[match] = own;
    }
  }

  void Choose(const Difference& difference) {
    switch (difference.kind) {
      case DifferenceKind::kLnb:
        (difference.sign == '-' ? lost_lnbs_ : lnbs_)
            .push_back(difference.sign == '-' ? difference.first[0] : difference.second[0]);
        return;
      case DifferenceKind::kSatellite:
      case DifferenceKind::kCarrier:
      case DifferenceKind::kService:
        ChooseRecord(difference);
        return;
      case DifferenceKind::kFavourite:
        ChooseEntry(difference);
        return;
      case DifferenceKind::kUbi:
        (difference.sign == '-' ? lost_boxes_ : boxes_)
            .push_back(difference.sign == '-' ? difference.first[0] : difference.second[0]);
        return;
      default:
        whole_.push_back(&difference);
    }
  }

  // Unused places make room for satellites.
  bool Fits() {
    const auto count = [&](size_t own, size_t more, size_t less) { return own + more - less; };
    const auto freed = PlacesToFree(to_, count(to_.satellites.size(), more_satellites_, less_satellites_));
    if (!freed) return Refuse("Satellite records exceed the limit. Can not add.");
    for (const size_t place : *freed) doomed_.insert(to_.satellites[place]);
    if (count(to_.carriers.size(), more_carriers_, less_carriers_) > kMaximumCarriers)
      return Refuse("Carrier records exceed the limit. Can not add.");
    if (count(to_.services.size(), more_services_, less_services_) > kMaximumServices)
      return Refuse("Service records exceed the limit. Can not add.");
    for (size_t group = 0; group < kFavouriteGroups; ++group) {
      const FavouriteGroup& lists = to_.favourites[group];
      if (count(lists.tv.size(), more_entries_[group][0], less_entries_[group][0]) > kMaximumTvEntries ||
          count(lists.radio.size(), more_entries_[group][1], less_entries_[group][1]) > kMaximumRadioEntries)
        return Refuse("The favourite list would hold more entries than its limit.");
    }
    const size_t new_boxes = static_cast<size_t>(std::count_if(
        boxes_.begin(), boxes_.end(), [&](size_t place) { return place >= document_.ubis.size(); }));
    if (count(document_.ubis.size(), new_boxes, lost_boxes_.size()) <= kMaximumUbis) return true;
    Tell(messages_, Icon::kStop, "Can't add USER BOX information. It exceeds the limit %d.",
         static_cast<int>(kMaximumUbis));
    return false;
  }

  // False after a message, with nothing changed.
  bool Run() {
    if (!lost_lnbs_.empty() && !DeleteLnbs(messages_, to_, lost_lnbs_)) return false;
    TakeLnbs();
    TakeLists();
    TakeFavourites();
    for (const Difference* difference : whole_) TakeWhole(*difference);
    Delete();
    TakeFields();
    TakeBoxes();
    return true;
  }

  size_t left_out = 0, left_lists = 0;

 private:
  bool Refuse(const char* text) const {
    Tell(messages_, Icon::kStop, "%s", text);
    return false;
  }

  // Records of both databases: the one that the difference is about, where it has one.
  template <class Database>
  static auto RecordAt(Database& database, DifferenceKind kind, const DifferencePlace& place) {
    struct Found {
      Satellite* satellite = nullptr;
      Carrier* carrier = nullptr;
      Service* service = nullptr;
    } found;
    found.satellite = database.satellites[place[0]];
    if (kind == DifferenceKind::kSatellite) return found;
    found.carrier = found.satellite->carriers[place[1]];
    if (kind == DifferenceKind::kService) found.service = found.carrier->services[place[2]];
    return found;
  }

  void ChooseRecord(const Difference& difference) {
    const DifferenceKind kind = difference.kind;
    if (difference.sign == '-') {
      const auto own = RecordAt(to_, kind, difference.first);
      Count(own, less_satellites_, less_carriers_, less_services_, kind);
      doomed_.insert(RecordOf(own, kind));
      return;
    }
    const auto others = RecordAt(from_, kind, difference.second);
    if (difference.sign == '+') Count(others, more_satellites_, more_carriers_, more_services_, kind);
    if (difference.sign != '~') {
      wanted_.insert(RecordOf(others, kind));
      return;
    }
    const auto own = RecordAt(to_, kind, difference.first);
    if (kind == DifferenceKind::kSatellite) changed_satellites_.emplace_back(own.satellite, others.satellite);
    if (kind == DifferenceKind::kCarrier) changed_carriers_.emplace_back(own.carrier, others.carrier);
    if (kind == DifferenceKind::kService) changed_services_.emplace_back(own.service, others.service);
  }

  template <class Found>
  static const void* RecordOf(const Found& found, DifferenceKind kind) {
    if (kind == DifferenceKind::kSatellite) return found.satellite;
    return kind == DifferenceKind::kCarrier ? static_cast<const void*>(found.carrier) : found.service;
  }

  // Adds the record and what is below it.
  template <class Found>
  static void Count(const Found& found, size_t& satellites, size_t& carriers, size_t& services,
                    DifferenceKind kind) {
    if (kind == DifferenceKind::kSatellite) {
      ++satellites;
      carriers += DeepCarriers(*found.satellite);
      services += DeepServices(*found.satellite);
    } else if (kind == DifferenceKind::kCarrier) {
      ++carriers;
      services += DeepServices(*found.carrier);
    } else {
      ++services;
    }
  }

  void ChooseEntry(const Difference& difference) {
    const bool removed = difference.sign == '-';
    const DifferencePlace& place = removed ? difference.first : difference.second;
    if (difference.sign == '~') {
      renamed_.push_back({place[0], place[1], 0});
      return;
    }
    if (removed) ++less_entries_[place[0]][place[1]];
    if (difference.sign == '+') ++more_entries_[place[0]][place[1]];
    (removed ? lost_entries_ : wanted_entries_)[place[0]][place[1]].insert(place[2]);
  }

  void TakeLnbs() {
    std::sort(lnbs_.begin(), lnbs_.end());
    for (const size_t place : lnbs_) {
      if (place < to_.lnb_count)
        to_.lnbs[place] = from_.lnbs[place];
      else if (to_.lnb_count < kMaximumLnbs)
        to_.lnbs[to_.lnb_count++] = from_.lnbs[place];
    }
  }

  // Puts a list into its new order, copies included; what goes stands at its end until it is deleted.
  template <class Record, class Copy>
  void TakeList(std::vector<Record*>& own, const std::vector<Record*>& others, const Pairing& pairing,
                Copy copy) {
    const auto wants = [&](size_t place) { return wanted_.contains(others[place]); };
    const auto drops = [&](size_t place) { return doomed_.contains(own[place]); };
    std::vector<Record*> ordered;
    // A copy enters the list behind the records that the order names.
    const std::vector<Record*> before = own;
    for (const Placed& placed : NewOrder(pairing, wants, drops))
      ordered.push_back(placed.copy ? copy(*others[placed.place]) : before[placed.place]);
    for (Record* record : before) {
      if (doomed_.contains(record)) ordered.push_back(record);
    }
    own = std::move(ordered);
  }

  void TakeLists() {
    for (size_t s = 0; s < match_.below.size(); ++s) {
      if (match_.satellites.second_of[s] == kUnmatched) continue;
      Satellite& own = *to_.satellites[s];
      const Satellite& others = *from_.satellites[match_.satellites.second_of[s]];
      const SatelliteMatch& below = match_.below[s];
      for (size_t c = 0; c < below.below.size(); ++c) {
        if (below.carriers.second_of[c] == kUnmatched) continue;
        Carrier& carrier = *own.carriers[c];
        TakeList(carrier.services, others.carriers[below.carriers.second_of[c]]->services,
                 below.below[c].services, [&](const Service& service) { return Copied(carrier, service); });
      }
      TakeList(own.carriers, others.carriers, below.carriers,
               [&](const Carrier& carrier) { return Copied(own, carrier); });
    }
    TakeList(to_.satellites, from_.satellites, match_.satellites,
             [&](const Satellite& satellite) { return Copied(satellite); });
    NumberSatellites(to_);
    for (Satellite* satellite : to_.satellites) NumberCarriers(*satellite);
    RefillAll(to_);
    PlaceCopies();
  }

  // In the running order, each copy stands behind the service that it follows in the other one.
  void PlaceCopies() {
    if (copies_.empty()) return;
    std::unordered_map<const Service*, std::vector<Service*>> behind;
    const Service* anchor = nullptr;
    for (const Service* others : from_.service_order) {
      const auto found = own_of_.find(others);
      if (found == own_of_.end()) continue;
      if (copies_.contains(found->second))
        behind[anchor].push_back(found->second);
      else
        anchor = found->second;
    }
    std::vector<Service*> ordered = behind[nullptr];
    for (Service* service : to_.service_order) {
      ordered.push_back(service);
      const auto found = behind.find(service);
      if (found != behind.end()) ordered.insert(ordered.end(), found->second.begin(), found->second.end());
    }
    to_.service_order = std::move(ordered);
  }

  Service* Copied(Carrier& carrier, const Service& service) {
    Service* copy = PutService(to_, carrier, service.record, carrier.services.size());
    copies_.insert(copy);
    own_of_[&service] = copy;
    return copy;
  }
  Carrier* Copied(Satellite& satellite, const Carrier& carrier) {
    Carrier* copy = PutCarrier(to_, satellite, carrier.record, satellite.carriers.size());
    for (const Service* service : carrier.services) Copied(*copy, *service);
    return copy;
  }
  Satellite* Copied(const Satellite& satellite) {
    Satellite* copy = PutSatellite(to_, satellite.record, to_.satellites.size());
    for (const Carrier* carrier : satellite.carriers) Copied(*copy, *carrier);
    return copy;
  }

  void TakeFavourites() {
    for (size_t group = 0; group < kFavouriteGroups; ++group) {
      for (const GroupKind half : {GroupKind::kTv, GroupKind::kRadio}) {
        const auto place = half == GroupKind::kTv ? size_t{0} : size_t{1};
        const auto &wanted = wanted_entries_[group][place], &lost = lost_entries_[group][place];
        if (wanted.empty() && lost.empty()) continue;
        TakeEntries(half, EntriesOf(to_.favourites[group], half), EntriesOf(from_.favourites[group], half),
                    wanted, lost);
      }
    }
    for (const EntryPlace& renamed : renamed_) {
      FavouriteRecord& own = to_.favourites[renamed.group].record;
      const FavouriteRecord& others = from_.favourites[renamed.group].record;
      if (renamed.half == 1) {
        std::copy(std::begin(others.radio_name), std::end(others.radio_name), own.radio_name);
      } else {
        std::copy(std::begin(others.tv_name), std::end(others.tv_name), own.tv_name);
        CopyFields(others, own);
      }
    }
  }

  using EntrySet = std::unordered_set<size_t>;

  // A service that here, unlike there, is none for this list stays out, as one that is not there. What it
  // will be counts, which it becomes after the lists.
  void TakeEntries(GroupKind half, std::vector<Service*>& own, const std::vector<Service*>& others,
                   const EntrySet& wanted, const EntrySet& lost) {
    std::unordered_map<const Service*, uint32_t> new_types;
    for (const auto& [service, other] : changed_services_) new_types[service] = other->record.type;
    const auto fits = [&](const Service& service, const Service& other) {
      const auto found = new_types.find(&service);
      const uint32_t type = found != new_types.end() ? found->second : service.record.type;
      return (type == kTv) == (half == GroupKind::kTv) || type == other.record.type;
    };
    std::vector<Service*> ordered;
    const Pairing pairing = PairEntries(own, others, pairs_);
    for (const Placed& placed : NewOrder(
             pairing, [&](size_t place) { return wanted.contains(place); },
             [&](size_t place) { return lost.contains(place); })) {
      if (!placed.copy) {
        ordered.push_back(own[placed.place]);
        continue;
      }
      const auto found = own_of_.find(others[placed.place]);
      if (found != own_of_.end() && fits(*found->second, *others[placed.place]))
        ordered.push_back(found->second);
      else
        ++left_out;
    }
    own = std::move(ordered);
  }

  void TakeWhole(const Difference& difference) {
    if (difference.moved > 0) {
      TakeRunningOrder();
      return;
    }
    const bool name = difference.fields.at(0).key == "name";
    const bool boxes = difference.fields.at(0).key == "ubi_compressed";
    if (difference.kind == DifferenceKind::kFile)
      (boxes ? document_.compress_ubis : document_.compress_payload) =
          boxes ? other_.compress_ubis : other_.compress_payload;
    else if (name)
      sdb_.name = other_sdb_.name;
    else
      to_.compressed = from_.compressed;
  }

  // Services without a match keep their places.
  void TakeRunningOrder() {
    std::vector<Service*> ordered;
    for (const Service* others : from_.service_order) {
      const auto found = own_of_.find(others);
      if (found != own_of_.end()) ordered.push_back(found->second);
    }
    const std::unordered_set<const Service*> matched(ordered.begin(), ordered.end());
    size_t next = 0;
    for (Service*& place : to_.service_order) {
      if (matched.contains(place)) place = ordered[next++];
    }
  }

  template <class Record>
  Rows DoomedRows(const std::vector<Record*>& list) const {
    Rows rows;
    for (size_t i = 0; i < list.size(); ++i) {
      if (doomed_.contains(list[i])) rows.push_back(i);
    }
    return rows;
  }

  void Delete() {
    std::vector<Service*> services;
    for (Service* service : to_.services) {
      if (doomed_.contains(service)) services.push_back(service);
    }
    DeleteServices(to_, services);
    for (Satellite* satellite : to_.satellites) {
      const Rows rows = DoomedRows(satellite->carriers);
      if (!rows.empty()) DeleteCarriers(to_, *satellite, rows);
    }
    const Rows rows = DoomedRows(to_.satellites);
    if (!rows.empty()) DeleteSatellites(to_, rows);
  }

  void TakeFields() {
    for (const auto& [own, others] : changed_satellites_) CopyNamed(others->record, own->record);
    for (const auto& [own, others] : changed_carriers_) CopyNamed(others->record, own->record);
    std::unordered_set<const Service*> changed;
    for (const auto& [own, others] : changed_services_) {
      if ((own->record.type == kTv) != (others->record.type == kTv)) changed.insert(own);
      CopyNamed(others->record, own->record);
    }
    if (!changed.empty()) left_lists = LeaveListsOfOldType(to_, changed);
  }

  void TakeBoxes() {
    std::sort(boxes_.begin(), boxes_.end());
    for (const size_t place : boxes_) {
      if (place < document_.ubis.size())
        document_.ubis[place] = other_.ubis[place];
      else
        document_.ubis.push_back(other_.ubis[place]);
    }
    std::sort(lost_boxes_.rbegin(), lost_boxes_.rend());
    for (const size_t place : lost_boxes_) DeleteUbi(document_, place);
  }

  const Messages& messages_;
  Document& document_;
  const Document& other_;
  OpenSdb& sdb_;
  const OpenSdb& other_sdb_;
  StaticDatabase& to_;
  const StaticDatabase& from_;
  const DatabaseMatch match_;
  const ServicePairs pairs_;                             // by own service
  std::unordered_map<const Service*, Service*> own_of_;  // the match, or copy, of a service of the other one

  std::unordered_set<const Service*> copies_;

  Rows lnbs_, lost_lnbs_, boxes_, lost_boxes_;
  std::unordered_set<const void*> wanted_;  // records of the other database that are added or moved
  std::unordered_set<const void*> doomed_;  // own records that go
  std::vector<std::pair<Satellite*, const Satellite*>> changed_satellites_;
  std::vector<std::pair<Carrier*, const Carrier*>> changed_carriers_;
  std::vector<std::pair<Service*, const Service*>> changed_services_;
  std::array<std::array<EntrySet, 2>, kFavouriteGroups> wanted_entries_, lost_entries_;
  std::array<std::array<size_t, 2>, kFavouriteGroups> more_entries_{}, less_entries_{};
  std::vector<EntryPlace> renamed_;
  std::vector<const Difference*> whole_;
  size_t more_satellites_ = 0, more_carriers_ = 0, more_services_ = 0;
  size_t less_satellites_ = 0, less_carriers_ = 0, less_services_ = 0;
};

}  // namespace

std::optional<TakenOver> TakeOver(const Messages& messages, Document& document, size_t sdb,
                                  const Document& other, size_t other_sdb,
                                  const std::vector<Difference>& differences,
                                  const std::vector<size_t>& chosen) {
  Taker taker(messages, document, sdb, other, other_sdb);
  size_t taken = 0;
  for (const size_t place : chosen) {
    if (place >= differences.size() || differences[place].sign == '=') continue;
    taker.Choose(differences[place]);
    ++taken;
  }
  if (!taker.Fits() || !taker.Run()) return std::nullopt;
  return TakenOver{taken - taker.left_out, taker.left_out, taker.left_lists};
}

}  // namespace vexa
