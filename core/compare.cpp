#include "core/compare.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/check.h"
#include "core/fields.h"
#include "core/match.h"
#include "core/messages.h"
#include "platform/text.h"

namespace vexa {

namespace {

template <size_t N>
std::string Shown(const char (&name)[N]) {
  return Utf8FromLatin(NameOf(name));
}

void AddChange(std::vector<FieldChange>& changes, const char* key, std::string before, std::string after) {
  if (before != after) changes.push_back({key, std::move(before), std::move(after)});
}

template <class Record>
void AddChanges(std::vector<FieldChange>& changes, const Record& before, const Record& after) {
  for (const Field<Record>& field : FieldsOf<Record>()) {
    if (field.follows || field.get(before) == field.get(after)) continue;
    changes.push_back({field.key, field.get(before), field.get(after)});
  }
}

template <class Record>
std::vector<FieldChange> NamedChanges(const Record& before, const Record& after) {
  std::vector<FieldChange> changes;
  AddChange(changes, "name", Shown(before.name), Shown(after.name));
  AddChanges(changes, before, after);
  return changes;
}

std::vector<FieldChange> UbiChanges(const OpenUbi& before, const OpenUbi& after) {
  std::vector<FieldChange> changes;
  AddChange(changes, "name", Utf8FromLatin(before.name), Utf8FromLatin(after.name));
  AddChanges(changes, before.record, after.record);
  AddChange(changes, "kept_byte8_23", KeptText(before.record), KeptText(after.record));
  AddChange(changes, "lock_code", LockCodeText(before.record), LockCodeText(after.record));
  return changes;
}

// What two lists that are compared have in common: the kind of their records, and the words for them.
struct ListSides {
  DifferenceKind kind;
  const char* word;           // "satellite"
  std::string first, second;  // paths of what the lists belong to
  const Pairing* pairing = nullptr;
};

class Comparison {
 public:
  std::vector<Difference> differences;

  void Tell(char sign, DifferenceKind kind, std::string path, std::string name = "", bool has_name = false,
            std::string from = "") {
    Difference difference;
    difference.sign = sign;
    difference.kind = kind;
    difference.path = std::move(path);
    difference.name = std::move(name);
    difference.has_name = has_name;
    difference.from = std::move(from);
    differences.push_back(std::move(difference));
  }
  void TellChanges(DifferenceKind kind, const std::string& path, const std::string& name, bool has_name,
                   std::vector<FieldChange> changes) {
    if (changes.empty()) return;
    Tell('~', kind, path, name, has_name);
    differences.back().fields = std::move(changes);
  }

  // Walks two lists: what is removed stands before the record that followed it. `first_name`, `second_name`
  // give the name at a place, `counts` whether what is there is a record at all, `matched` tells the rest of
  // a pair.
  template <class FirstName, class SecondName, class FirstCounts, class SecondCounts, class Matched>
  void WalkLists(const ListSides& sides, FirstName first_name, SecondName second_name,
                 FirstCounts first_counts, SecondCounts second_counts, Matched matched) {
    const Pairing& pairing = *sides.pairing;
    std::vector<size_t> order;
    for (const size_t first : pairing.first_of) {
      if (first != kUnmatched) order.push_back(first);
    }
    const std::vector<bool> stays = LongestAscending(order);
    const auto tell_removed = [&](size_t first) {
      if (first_counts(first))
        Tell('-', sides.kind, RecordName(sides.first, sides.word, first), first_name(first), true);
    };
    size_t pair = 0;
    for (size_t second = 0; second < pairing.first_of.size(); ++second) {
      const size_t first = pairing.first_of[second];
      const std::string path = RecordName(sides.second, sides.word, second);
      if (first == kUnmatched) {
        if (second_counts(second)) Tell('+', sides.kind, path, second_name(second), true);
        continue;
      }
      size_t removed = first;
      while (removed > 0 && pairing.second_of[removed - 1] == kUnmatched) --removed;
      for (; removed < first; ++removed) tell_removed(removed);
      if (!stays[pair++])
        Tell('>', sides.kind, path, second_name(second), true, RecordName(sides.first, sides.word, first));
      matched(first, second, path);
    }
    size_t rest = pairing.second_of.size();
    while (rest > 0 && pairing.second_of[rest - 1] == kUnmatched) --rest;
    for (; rest < pairing.second_of.size(); ++rest) tell_removed(rest);
  }
};

template <class Record>
auto NamesOf(const std::vector<Record*>& list) {
  return [&list](size_t place) { return Shown(list[place]->record.name); };
}

bool EveryPlace(size_t) {
  return true;
}

void CompareLnbs(Comparison& out, const StaticDatabase& first, const StaticDatabase& second,
                 const std::string& from, const std::string& to) {
  for (uint32_t i = 0; i < std::max(first.lnb_count, second.lnb_count); ++i) {
    if (i >= second.lnb_count) {
      out.Tell('-', DifferenceKind::kLnb, RecordName(from, "LNB", i));
    } else if (i >= first.lnb_count) {
      out.Tell('+', DifferenceKind::kLnb, RecordName(to, "LNB", i));
    } else {
      std::vector<FieldChange> changes;
      AddChanges(changes, first.lnbs[i], second.lnbs[i]);
      out.TellChanges(DifferenceKind::kLnb, RecordName(to, "LNB", i), "", false, std::move(changes));
    }
  }
}

void CompareServices(Comparison& out, const Carrier& first, const Carrier& second, const Pairing& services,
                     const std::string& from, const std::string& to) {
  const auto names = NamesOf(second.services);
  out.WalkLists({DifferenceKind::kService, "service", from, to, &services}, NamesOf(first.services), names,
                EveryPlace, EveryPlace, [&](size_t before, size_t after, const std::string& path) {
                  out.TellChanges(
                      DifferenceKind::kService, path, names(after), true,
                      NamedChanges(first.services[before]->record, second.services[after]->record));
                });
}

void CompareCarriers(Comparison& out, const Satellite& first, const Satellite& second,
                     const SatelliteMatch& match, const std::string& from, const std::string& to) {
  const auto names = NamesOf(second.carriers);
  out.WalkLists({DifferenceKind::kCarrier, "carrier", from, to, &match.carriers}, NamesOf(first.carriers),
                names, EveryPlace, EveryPlace, [&](size_t before, size_t after, const std::string& path) {
                  const Carrier &old = *first.carriers[before], &now = *second.carriers[after];
                  out.TellChanges(DifferenceKind::kCarrier, path, names(after), true,
                                  NamedChanges(old.record, now.record));
                  CompareServices(out, old, now, match.below[before].services,
                                  RecordName(from, "carrier", before), path);
                });
}

void CompareSatellites(Comparison& out, const StaticDatabase& first, const StaticDatabase& second,
                       const DatabaseMatch& match, const std::string& from, const std::string& to) {
  const auto names = NamesOf(second.satellites);
  out.WalkLists(
      {DifferenceKind::kSatellite, "satellite", from, to, &match.satellites}, NamesOf(first.satellites),
      names, [&](size_t place) { return !IsUnusedPlace(*first.satellites[place]); },
      [&](size_t place) { return !IsUnusedPlace(*second.satellites[place]); },
      [&](size_t before, size_t after, const std::string& path) {
        const Satellite &old = *first.satellites[before], &now = *second.satellites[after];
        out.TellChanges(DifferenceKind::kSatellite, path, names(after), true,
                        NamedChanges(old.record, now.record));
        CompareCarriers(out, old, now, match.below[before], RecordName(from, "satellite", before), path);
      });
}

// How many matched services the running order of the second database has elsewhere.
size_t MovedInOrder(const StaticDatabase& first, const StaticDatabase& second, const ServicePairs& pairs) {
  const Places<Service> places(second.service_pool, second.service_order);
  std::vector<size_t> order;
  order.reserve(pairs.size());
  for (const Service* service : first.service_order) {
    const auto pair = pairs.find(service);
    if (pair != pairs.end()) order.push_back(places.Of(*pair->second));
  }
  const std::vector<bool> stays = LongestAscending(order);
  return static_cast<size_t>(std::count(stays.begin(), stays.end(), false));
}

// The k-th entry of a service in the one list is the k-th of its match in the other.
Pairing PairEntries(const std::vector<Service*>& first, const std::vector<Service*>& second,
                    const ServicePairs& pairs) {
  Pairing pairing{std::vector<size_t>(first.size(), kUnmatched),
                  std::vector<size_t>(second.size(), kUnmatched)};
  std::unordered_map<const Service*, std::vector<size_t>> places;
  for (size_t i = second.size(); i-- > 0;) places[second[i]].push_back(i);
  for (size_t i = 0; i < first.size(); ++i) {
    const auto pair = pairs.find(first[i]);
    const auto found = pair == pairs.end() ? places.end() : places.find(pair->second);
    if (found == places.end() || found->second.empty()) continue;
    pairing.second_of[i] = found->second.back();
    pairing.first_of[found->second.back()] = i;
    found->second.pop_back();
  }
  return pairing;
}

void CompareEntries(Comparison& out, const std::vector<Service*>& first, const std::vector<Service*>& second,
                    const ServicePairs& pairs, const std::string& from, const std::string& to) {
  const Pairing pairing = PairEntries(first, second, pairs);
  out.WalkLists({DifferenceKind::kFavourite, "entry", from, to, &pairing}, NamesOf(first), NamesOf(second),
                EveryPlace, EveryPlace, [](size_t, size_t, const std::string&) {});
}

void CompareGroups(Comparison& out, const StaticDatabase& first, const StaticDatabase& second,
                   const ServicePairs& pairs, const std::string& from, const std::string& to) {
  for (size_t i = 0; i < kFavouriteGroups; ++i) {
    const FavouriteGroup &old = first.favourites[i], &now = second.favourites[i];
    std::vector<FieldChange> changes;
    AddChange(changes, "name", Shown(old.record.tv_name), Shown(now.record.tv_name));
    AddChanges(changes, old.record, now.record);
    const std::string tv = RecordName(to, "TV group", i);
    out.TellChanges(DifferenceKind::kFavourite, tv, "", false, std::move(changes));
    CompareEntries(out, old.tv, now.tv, pairs, RecordName(from, "TV group", i), tv);
    changes.clear();
    AddChange(changes, "name", Shown(old.record.radio_name), Shown(now.record.radio_name));
    const std::string radio = RecordName(to, "radio group", i);
    out.TellChanges(DifferenceKind::kFavourite, radio, "", false, std::move(changes));
    CompareEntries(out, old.radio, now.radio, pairs, RecordName(from, "radio group", i), radio);
  }
}

void CompareSdbs(Comparison& out, const OpenSdb& first, const OpenSdb& second) {
  const StaticDatabase &old = *first.database, &now = *second.database;
  const std::string from = Utf8FromLatin(first.name), to = Utf8FromLatin(second.name);
  const DatabaseMatch match = MatchDatabases(old, now);
  const ServicePairs pairs = MatchedServices(old, now, match);
  CompareLnbs(out, old, now, from, to);
  CompareSatellites(out, old, now, match, from, to);
  std::vector<FieldChange> changes;
  AddChange(changes, "name", from, to);
  out.TellChanges(DifferenceKind::kSdb, to, "", false, std::move(changes));
  changes.clear();
  if (old.compressed != now.compressed)
    changes.push_back({"compressed", int64_t{old.compressed}, int64_t{now.compressed}});
  out.TellChanges(DifferenceKind::kSdb, to, "", false, std::move(changes));
  if (const size_t moved = MovedInOrder(old, now, pairs)) {
    out.Tell('~', DifferenceKind::kSdb, to);
    out.differences.back().moved = moved;
  }
  CompareGroups(out, old, now, pairs, from, to);
}

void CompareUbis(Comparison& out, const Document& first, const Document& second) {
  for (size_t i = 0; i < std::max(first.ubis.size(), second.ubis.size()); ++i) {
    const std::string path = "UBI" + std::to_string(i + 1);
    if (i >= second.ubis.size()) {
      out.Tell('-', DifferenceKind::kUbi, path, Utf8FromLatin(first.ubis[i].name), true);
    } else if (i >= first.ubis.size()) {
      out.Tell('+', DifferenceKind::kUbi, path, Utf8FromLatin(second.ubis[i].name), true);
    } else {
      out.TellChanges(DifferenceKind::kUbi, path, Utf8FromLatin(second.ubis[i].name), true,
                      UbiChanges(first.ubis[i], second.ubis[i]));
    }
  }
}

void CompareFlag(Comparison& out, const char* key, bool before, bool after) {
  if (before != after)
    out.TellChanges(DifferenceKind::kFile, "", "", false, {{key, int64_t{before}, int64_t{after}}});
}

std::string ValueText(const std::variant<int64_t, std::string>& value) {
  if (const auto* number = std::get_if<int64_t>(&value)) return std::to_string(*number);
  return "\"" + std::get<std::string>(value) + "\"";
}

}  // namespace

std::vector<Difference> CompareDocuments(const Document& first, size_t first_sdb, const Document& second,
                                         size_t second_sdb) {
  Comparison comparison;
  CompareSdbs(comparison, first.sdbs[first_sdb], second.sdbs[second_sdb]);
  CompareUbis(comparison, first, second);
  CompareFlag(comparison, "compressed", first.compress_payload, second.compress_payload);
  CompareFlag(comparison, "ubi_compressed", first.compress_ubis, second.compress_ubis);
  return std::move(comparison.differences);
}

std::string DifferenceLine(const Difference& difference) {
  std::string line{difference.sign};
  if (!difference.path.empty()) line += " " + difference.path;
  if (difference.has_name) line += " " + difference.name;
  const char* separator = difference.path.empty() ? " " : ": ";
  if (!difference.from.empty()) line += ": from " + difference.from;
  if (difference.moved > 0) line += ": order, " + std::to_string(difference.moved) + " moved";
  for (const FieldChange& change : difference.fields) {
    line += separator + change.key + " " + ValueText(change.before) + " -> " + ValueText(change.after);
    separator = ", ";
  }
  return line;
}

std::string DifferenceSummary(const std::vector<Difference>& differences) {
  constexpr std::pair<DifferenceKind, const char*> kKinds[] = {{DifferenceKind::kLnb, "lnbs"},
                                                               {DifferenceKind::kSatellite, "satellites"},
                                                               {DifferenceKind::kCarrier, "carriers"},
                                                               {DifferenceKind::kService, "services"},
                                                               {DifferenceKind::kFavourite, "favourites"},
                                                               {DifferenceKind::kUbi, "ubis"}};
  std::string text;
  for (const auto& [kind, word] : kKinds) {
    std::array<size_t, 256> counts{};
    for (const Difference& difference : differences) {
      if (difference.kind == kind) ++counts[static_cast<uint8_t>(difference.sign)];
    }
    text += Format("%s: %zu added, %zu removed, %zu changed, %zu moved\n", word, counts['+'], counts['-'],
                   counts['~'], counts['>']);
  }
  return text;
}

}  // namespace vexa
