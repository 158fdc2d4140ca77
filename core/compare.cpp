#include "core/compare.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "core/check.h"
#include "core/field_texts.h"
#include "core/fields.h"
#include "core/match.h"
#include "core/messages.h"
#include "platform/text.h"

namespace vexa {

namespace {

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

// The bits of a record that a comparison looks at: all but fields that follow from places.
template <class Record>
struct ComparedBits {
  static constexpr size_t kWords = sizeof(Record) / sizeof(uint32_t);
  std::array<uint32_t, kWords> mask;

  ComparedBits() {
    Record follows{};
    for (const Field<Record>& field : FieldsOf<Record>()) {
      if (field.follows) field.set(follows, field.largest);
    }
    std::memcpy(mask.data(), &follows, sizeof follows);
    for (uint32_t& word : mask) word = ~word;
  }
};

// Whether two records are the same to the last bit that counts, as most are; others may differ in what stands
// behind the end of a name alone.
template <class Record>
bool SameBits(const Record& before, const Record& after) {
  static const ComparedBits<Record> kBits;
  std::array<uint32_t, ComparedBits<Record>::kWords> first, second;
  std::memcpy(first.data(), &before, sizeof before);
  std::memcpy(second.data(), &after, sizeof after);
  uint32_t different = 0;
  for (size_t i = 0; i < first.size(); ++i) different |= (first[i] ^ second[i]) & kBits.mask[i];
  return different == 0;
}

template <class Record>
std::vector<FieldChange> NamedChanges(const CodePage& page, const Record& before, const Record& after) {
  std::vector<FieldChange> changes;
  if (SameBits(before, after)) return changes;
  AddChange(changes, "name", NameText(page, before.name), NameText(page, after.name));
  AddChanges(changes, before, after);
  return changes;
}

std::vector<FieldChange> UbiChanges(const CodePage& page, const OpenUbi& before, const OpenUbi& after) {
  std::vector<FieldChange> changes;
  AddChange(changes, "name", Utf8FromPage(page, before.name), Utf8FromPage(page, after.name));
  AddChanges(changes, before.record, after.record);
  AddChange(changes, "kept_byte8_23", KeptText(before.record), KeptText(after.record));
  AddChange(changes, "lock_code", LockCodeText(before.record), LockCodeText(after.record));
  return changes;
}

// The path of a record, which is made only when something is told of it.
struct RecordPath {
  const RecordPath* above = nullptr;  // nullptr: `root` alone
  const char* word = "";
  size_t place = 0;
  const std::string* root = nullptr;

  std::string text() const {
    std::string path;
    AppendTo(path);
    return path;
  }
  void AppendTo(std::string& path) const {
    if (!above) {
      path += *root;
      return;
    }
    above->AppendTo(path);
    path += ' ';
    path += word;
    path += ' ';
    path += std::to_string(place + 1);
  }
  RecordPath Below(const char* kind, size_t at) const { return {this, kind, at, nullptr}; }
};

// What two lists that are compared have in common: the kind of their records, and the words for them.
struct ListSides {
  DifferenceKind kind;
  const char* word;                  // "satellite"
  const RecordPath &first, &second;  // of what the lists belong to
  const Pairing* pairing = nullptr;
  size_t level = 0;  // of DifferencePlace
};

class Comparison {
 public:
  Comparison(const CodePage& names, bool with_equal) : page(names), equal(with_equal) {}

  const CodePage& page;  // of all names
  const bool equal;      // records that are the same are told too
  std::vector<Difference> differences;
  DifferencePlace first = kNowhere, second = kNowhere;  // of what is looked at

  // What is looked at next stands at these places of the level.
  void Look(size_t level, size_t first_place, size_t second_place) {
    first[level] = first_place == kUnmatched ? kNoPlace : static_cast<uint32_t>(first_place);
    second[level] = second_place == kUnmatched ? kNoPlace : static_cast<uint32_t>(second_place);
    moved_ = false;
  }

  void Tell(char sign, DifferenceKind kind, std::string path, std::string name = "", bool has_name = false,
            std::string from = "") {
    Difference difference;
    difference.sign = sign;
    difference.kind = kind;
    difference.path = std::move(path);
    difference.name = std::move(name);
    difference.has_name = has_name;
    difference.from = std::move(from);
    difference.first = first;
    difference.second = second;
    differences.push_back(std::move(difference));
  }
  // `path` and `name` give texts.
  template <class Path, class Name>
  void TellPair(DifferenceKind kind, Path path, Name name, std::vector<FieldChange> changes) {
    if (!changes.empty() || (equal && !moved_)) TellChanges(kind, path(), name(), true, std::move(changes));
  }
  void TellChanges(DifferenceKind kind, const std::string& path, const std::string& name, bool has_name,
                   std::vector<FieldChange> changes) {
    const bool record = has_name || kind == DifferenceKind::kLnb;
    if (changes.empty()) {
      if (equal && record && !moved_) Tell('=', kind, path, name, has_name);
      return;
    }
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
    if (pairing.ByPlace()) {
      for (size_t place = 0; place < pairing.same; ++place) {
        Look(sides.level, place, place);
        matched(place, place, sides.second.Below(sides.word, place));
      }
      Look(sides.level, kUnmatched, kUnmatched);
      return;
    }
    std::vector<size_t> order;
    order.reserve(pairing.first_of.size());
    for (const size_t place : pairing.first_of) {
      if (place != kUnmatched) order.push_back(place);
    }
    const bool in_order = std::is_sorted(order.begin(), order.end());
    const std::vector<bool> stays = in_order ? std::vector<bool>() : LongestAscending(order);
    const auto tell_removed = [&](size_t place) {
      Look(sides.level, place, kUnmatched);
      if (first_counts(place))
        Tell('-', sides.kind, sides.first.Below(sides.word, place).text(), first_name(place), true);
    };
    size_t pair = 0;
    for (size_t after = 0; after < pairing.first_of.size(); ++after) {
      const size_t before = pairing.first_of[after];
      const RecordPath path = sides.second.Below(sides.word, after);
      if (before == kUnmatched) {
        Look(sides.level, kUnmatched, after);
        if (second_counts(after)) Tell('+', sides.kind, path.text(), second_name(after), true);
        continue;
      }
      size_t removed = before;
      while (removed > 0 && pairing.second_of[removed - 1] == kUnmatched) --removed;
      for (; removed < before; ++removed) tell_removed(removed);
      Look(sides.level, before, after);
      if (!in_order && !stays[pair++]) {
        Tell('>', sides.kind, path.text(), second_name(after), true,
             sides.first.Below(sides.word, before).text());
        moved_ = true;
      }
      matched(before, after, path);
    }
    size_t rest = pairing.second_of.size();
    while (rest > 0 && pairing.second_of[rest - 1] == kUnmatched) --rest;
    for (; rest < pairing.second_of.size(); ++rest) tell_removed(rest);
    Look(sides.level, kUnmatched, kUnmatched);
  }

 private:
  bool moved_ = false;  // what is looked at was told as moved
};

template <class Record>
auto NamesOf(const CodePage& page, const std::vector<Record*>& list) {
  return [&](size_t place) { return NameText(page, list[place]->record.name); };
}

bool EveryPlace(size_t) {
  return true;
}

// "Universal 9750 / 10600".
std::string LnbText(const LnbRecord& lnb) {
  return LnbTypeName(lnb.type) + " " + std::to_string(lnb.frequency1) + " / " +
         std::to_string(lnb.frequency2);
}

void CompareLnbs(Comparison& out, const StaticDatabase& first, const StaticDatabase& second,
                 const std::string& from, const std::string& to) {
  for (uint32_t i = 0; i < std::max(first.lnb_count, second.lnb_count); ++i) {
    out.Look(0, i < first.lnb_count ? i : kUnmatched, i < second.lnb_count ? i : kUnmatched);
    if (i >= second.lnb_count) {
      out.Tell('-', DifferenceKind::kLnb, RecordName(from, "LNB", i), LnbText(first.lnbs[i]));
    } else if (i >= first.lnb_count) {
      out.Tell('+', DifferenceKind::kLnb, RecordName(to, "LNB", i), LnbText(second.lnbs[i]));
    } else {
      std::vector<FieldChange> changes;
      AddChanges(changes, first.lnbs[i], second.lnbs[i]);
      out.TellChanges(DifferenceKind::kLnb, RecordName(to, "LNB", i), LnbText(second.lnbs[i]), false,
                      std::move(changes));
    }
  }
  out.Look(0, kUnmatched, kUnmatched);
}

void CompareServices(Comparison& out, const Carrier& first, const Carrier& second, const Pairing& services,
                     const RecordPath& from, const RecordPath& to) {
  const auto names = NamesOf(out.page, second.services);
  out.WalkLists({DifferenceKind::kService, "service", from, to, &services, 2},
                NamesOf(out.page, first.services), names, EveryPlace, EveryPlace,
                [&](size_t before, size_t after, const RecordPath& path) {
                  out.TellPair(
                      DifferenceKind::kService, [&] { return path.text(); }, [&] { return names(after); },
                      NamedChanges(out.page, first.services[before]->record, second.services[after]->record));
                });
}

void CompareCarriers(Comparison& out, const Satellite& first, const Satellite& second,
                     const SatelliteMatch& match, const RecordPath& from, const RecordPath& to) {
  const auto names = NamesOf(out.page, second.carriers);
  out.WalkLists(
      {DifferenceKind::kCarrier, "carrier", from, to, &match.carriers, 1}, NamesOf(out.page, first.carriers),
      names, EveryPlace, EveryPlace, [&](size_t before, size_t after, const RecordPath& path) {
        const Carrier &old = *first.carriers[before], &now = *second.carriers[after];
        out.TellPair(
            DifferenceKind::kCarrier, [&] { return path.text(); }, [&] { return names(after); },
            NamedChanges(out.page, old.record, now.record));
        CompareServices(out, old, now, match.below[before].services, from.Below("carrier", before), path);
      });
}

void CompareSatellites(Comparison& out, const StaticDatabase& first, const StaticDatabase& second,
                       ServicePairs& pairs, const std::string& first_sdb, const std::string& second_sdb) {
  const Pairing satellites = MatchSatellites(first, second);
  const RecordPath from{nullptr, "", 0, &first_sdb}, to{nullptr, "", 0, &second_sdb};
  const auto names = NamesOf(out.page, second.satellites);
  out.WalkLists(
      {DifferenceKind::kSatellite, "satellite", from, to, &satellites, 0},
      NamesOf(out.page, first.satellites), names,
      [&](size_t place) { return !IsUnusedPlace(*first.satellites[place]); },
      [&](size_t place) { return !IsUnusedPlace(*second.satellites[place]); },
      [&](size_t before, size_t after, const RecordPath& path) {
        const Satellite &old = *first.satellites[before], &now = *second.satellites[after];
        out.TellPair(
            DifferenceKind::kSatellite, [&] { return path.text(); }, [&] { return names(after); },
            NamedChanges(out.page, old.record, now.record));
        // What belongs to one satellite is looked at together, as long as it is at hand.
        const SatelliteMatch match = MatchCarriers(old, now);
        AddServicePairs(old, now, match, pairs);
        CompareCarriers(out, old, now, match, from.Below("satellite", before), path);
      });
}

// How many matched services the running order of the second database has elsewhere.
size_t MovedInOrder(const StaticDatabase& first, const StaticDatabase& second, const ServicePairs& pairs) {
  const Places<Service> places(second.service_pool, second.service_order);
  std::vector<size_t> order;
  order.reserve(first.service_order.size());
  for (const Service* service : first.service_order) {
    if (const Service* match = pairs.Of(*service)) order.push_back(places.Of(*match));
  }
  const std::vector<bool> stays = LongestAscending(order);
  return static_cast<size_t>(std::count(stays.begin(), stays.end(), false));
}

void CompareEntries(Comparison& out, const std::vector<Service*>& first, const std::vector<Service*>& second,
                    const ServicePairs& pairs, const std::string& first_group,
                    const std::string& second_group) {
  const RecordPath from{nullptr, "", 0, &first_group}, to{nullptr, "", 0, &second_group};
  const Pairing pairing = PairEntries(first, second, pairs);
  const auto names = NamesOf(out.page, second);
  out.WalkLists({DifferenceKind::kFavourite, "entry", from, to, &pairing, 2}, NamesOf(out.page, first), names,
                EveryPlace, EveryPlace, [&](size_t, size_t after, const RecordPath& path) {
                  out.TellPair(
                      DifferenceKind::kFavourite, [&] { return path.text(); }, [&] { return names(after); },
                      {});
                });
}

void CompareGroups(Comparison& out, const StaticDatabase& first, const StaticDatabase& second,
                   const ServicePairs& pairs, const std::string& from, const std::string& to) {
  for (size_t i = 0; i < kFavouriteGroups; ++i) {
    const FavouriteGroup &old = first.favourites[i], &now = second.favourites[i];
    out.Look(0, i, i);
    out.Look(1, 0, 0);
    std::vector<FieldChange> changes;
    AddChange(changes, "name", NameText(out.page, old.record.tv_name),
              NameText(out.page, now.record.tv_name));
    AddChanges(changes, old.record, now.record);
    const std::string tv = RecordName(to, "TV group", i);
    out.TellChanges(DifferenceKind::kFavourite, tv, "", false, std::move(changes));
    CompareEntries(out, old.tv, now.tv, pairs, RecordName(from, "TV group", i), tv);
    changes.clear();
    out.Look(1, 1, 1);
    AddChange(changes, "name", NameText(out.page, old.record.radio_name),
              NameText(out.page, now.record.radio_name));
    const std::string radio = RecordName(to, "radio group", i);
    out.TellChanges(DifferenceKind::kFavourite, radio, "", false, std::move(changes));
    CompareEntries(out, old.radio, now.radio, pairs, RecordName(from, "radio group", i), radio);
  }
  out.first = out.second = kNowhere;
}

void CompareSdbs(Comparison& out, const OpenSdb& first, const OpenSdb& second) {
  const StaticDatabase &old = *first.database, &now = *second.database;
  const std::string from = Utf8FromPage(out.page, first.name), to = Utf8FromPage(out.page, second.name);
  ServicePairs pairs(old);
  CompareLnbs(out, old, now, from, to);
  CompareSatellites(out, old, now, pairs, from, to);
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
    out.Look(0, i < first.ubis.size() ? i : kUnmatched, i < second.ubis.size() ? i : kUnmatched);
    if (i >= second.ubis.size()) {
      out.Tell('-', DifferenceKind::kUbi, path, Utf8FromPage(out.page, first.ubis[i].name), true);
    } else if (i >= first.ubis.size()) {
      out.Tell('+', DifferenceKind::kUbi, path, Utf8FromPage(out.page, second.ubis[i].name), true);
    } else {
      out.TellChanges(DifferenceKind::kUbi, path, Utf8FromPage(out.page, second.ubis[i].name), true,
                      UbiChanges(out.page, first.ubis[i], second.ubis[i]));
    }
  }
  out.Look(0, kUnmatched, kUnmatched);
}

void CompareFlag(Comparison& out, const char* key, bool before, bool after) {
  if (before != after)
    out.TellChanges(DifferenceKind::kFile, "", "", false, {{key, int64_t{before}, int64_t{after}}});
}

}  // namespace

std::string ValueText(const std::variant<int64_t, std::string>& value) {
  if (const auto* number = std::get_if<int64_t>(&value)) return std::to_string(*number);
  return "\"" + std::get<std::string>(value) + "\"";
}

std::vector<Difference> CompareDocuments(const Document& first, size_t first_sdb, const Document& second,
                                         size_t second_sdb, bool equal) {
  Comparison comparison(NamesPage(first), equal);
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

std::string DifferenceLines(const std::vector<Difference>& differences) {
  std::string lines;
  for (const Difference& difference : differences) {
    if (difference.sign != '=') lines += DifferenceLine(difference) + "\n";
  }
  return lines;
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
