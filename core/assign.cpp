#include "core/assign.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <map>
#include <set>
#include <unordered_set>

#include "core/check.h"
#include "core/edit.h"
#include "core/fields.h"
#include "core/match.h"
#include "core/nearest_word.h"
#include "core/rules.h"
#include "platform/text.h"

namespace vexa {

namespace {

constexpr size_t kLongestName = kNameSize - 1;

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return lower;
}

std::optional<int64_t> WholeNumber(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  int64_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number, hexadecimal ? 16 : 10);
  if (text.empty() || text[0] == '-' || result.ec != std::errc{} || result.ptr != text.data() + text.size())
    return std::nullopt;
  return negative ? -number : number;
}

// An angle with its side, as in "19.2E".
struct SidedAngle {
  int64_t tenths = 0;
  bool east = false;
};
std::optional<SidedAngle> SidedAngleOf(std::string_view text) {
  if (text.size() < 2) return std::nullopt;
  const char side = Lower(text.substr(text.size() - 1))[0];
  if (side != 'e' && side != 'w') return std::nullopt;
  text.remove_suffix(1);
  const size_t point = text.find('.');
  std::string digits(text.substr(0, point));
  const std::string_view decimal = point == std::string_view::npos ? "0" : text.substr(point + 1);
  if (digits.empty() || decimal.size() != 1) return std::nullopt;
  digits += decimal;
  if (digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  const auto tenths = WholeNumber(digits);
  return tenths ? std::optional(SidedAngle{*tenths, side == 'e'}) : std::nullopt;
}

// A value for a number field: the number that the first record gets, and whether the records behind it count
// up from there.
struct NumberValue {
  int64_t first = 0;
  bool counts = false;
  std::optional<bool> east;  // an angle that names its side
};

template <class Record>
std::optional<NumberValue> NumberValueOf(const Field<Record>& field, const std::string& text) {
  const std::string_view key = field.key;
  if (text.ends_with("..")) {
    const auto first = WholeNumber(std::string_view(text).substr(0, text.size() - 2));
    if (!first) return std::nullopt;
    return NumberValue{*first, true, {}};
  }
  if (const auto number = WholeNumber(text)) return NumberValue{*number, false, {}};
  for (size_t code = 0; code < field.words.size(); ++code) {
    if (field.words[code] && Lower(field.words[code]) == Lower(text))
      return NumberValue{static_cast<int64_t>(code), false, {}};
  }
  if (key == "angle") {
    if (const auto angle = SidedAngleOf(text)) return NumberValue{angle->tenths, false, angle->east};
  }
  if (key == "lnb_index" && Lower(text).starts_with("lnb")) {
    if (const auto number = WholeNumber(std::string_view(text).substr(3)))
      return NumberValue{*number - 1, false, {}};
  }
  return std::nullopt;
}

template <class Record>
int64_t LargestOf(const Field<Record>& field) {
  const bool lnb = std::string_view(field.key) == "lnb_index";
  return lnb ? int64_t{kMaximumLnbs} - 1 : field.largest;
}

template <class Record>
bool Fits(const Field<Record>& field, int64_t number) {
  return number >= field.smallest && number <= LargestOf(field);
}

template <class Record>
const Field<Record>* SettableField(const std::string& key) {
  for (const Field<Record>& field : FieldsOf<Record>()) {
    if (field.key == key && !field.follows) return &field;
  }
  return nullptr;
}

// `values`: what the field takes. `words`: those that may have been meant.
std::string WrongText(const std::string& key, const std::string& value, const std::string& values,
                      const std::vector<std::string>& words = {}) {
  return "\"" + value + "\" is no value for " + key + NearestText(value, words) + "; it takes " + values;
}

// "0 to 4095 (tenths of a degree), or degrees with their side (19.2E)"; "0 to 3, or C-Band, Universal, ...".
template <class Record>
std::string ValuesText(const Field<Record>& field) {
  const std::string_view key = field.key;
  std::string text = std::to_string(field.smallest) + " to " + std::to_string(LargestOf(field));
  if (key == "angle") return text + " (tenths of a degree), or degrees with their side (19.2E)";
  if (key == "lnb_index") return text + Format(", or LNB1 to LNB%d", static_cast<int>(kMaximumLnbs));
  const char* before = ", or ";
  for (const char* word : field.words) {
    if (word) text += before + std::string(word), before = ", ";
  }
  return text;
}

// What can be set in records of a kind besides their number fields.
template <class Record>
std::vector<std::string> TextKeys() {
  if constexpr (std::is_same_v<Record, LnbRecord>) return {};
  if constexpr (std::is_same_v<Record, UserBoxInfo>) return {"name", "kept_byte8_23", "lock_code"};
  return {"name"};
}

template <class Record>
std::string WrongFieldText(const std::string& key, const std::string& value) {
  const Field<Record>* field = SettableField<Record>(key);
  if (!field) {
    std::vector<std::string> keys = TextKeys<Record>();
    for (const Field<Record>& known : FieldsOf<Record>()) {
      if (!known.follows) keys.emplace_back(known.key);
    }
    return "\"" + key + "\" is no field that can be set here" + NearestText(key, keys);
  }
  const auto number = NumberValueOf(*field, value);
  if (number && Fits(*field, number->first)) return "";
  std::vector<std::string> words;
  for (const char* word : field->words) {
    if (word && !number) words.emplace_back(word);
  }
  return WrongText(key, value, ValuesText(*field), words);
}

std::string WrongNameText(const std::string& value, size_t longest) {
  if (!FitsLatin(value)) return CharactersText(value);
  if (value.find('\0') != std::string::npos || LatinFromUtf8(value).size() > longest)
    return Format("name \"%s\" is longer than %zu characters", value.c_str(), longest);
  return "";
}

std::string WrongUbiText(const std::string& key, const std::string& value) {
  UserBoxInfo box;
  if (key == "kept_byte8_23")
    return SetKeptText(box, value) ? "" : WrongText(key, value, "32 hexadecimal digits");
  // Four characters; or, as documents have it, the hexadecimal digits of the four bytes.
  if (key == "lock_code") {
    const bool short_text = value.size() <= sizeof box.lock_code && !value.empty();
    return short_text || SetLockCodeText(box, value)
               ? ""
               : WrongText(key, value, "1 to 4 characters, or 8 hexadecimal digits");
  }
  return WrongFieldText<UserBoxInfo>(key, value);
}

// ---- The records, in tree order, and what happens to them.

// What assignments did to a record, for the rules that are judged at the end.
struct ChosenUbi {
  std::set<std::string> keys;  // that were set
  std::string name;            // before
};
struct ChosenService {
  bool was_tv = false;
  bool video_set = false;
};

struct Chosen {
  std::set<size_t> lnbs;
  std::set<const Satellite*> satellites;
  std::set<const Carrier*> carriers;
  std::map<const Service*, ChosenService> services;
  std::map<size_t, ChosenUbi> ubis;
  bool any() const {
    return !lnbs.empty() || !satellites.empty() || !carriers.empty() || !services.empty() || !ubis.empty();
  }
};

struct Refused {};  // thrown after a message
struct WrongCount {
  std::string text;
};

class Assigner {
 public:
  Assigner(const Messages& messages, Document& document, size_t sdb)
      : messages_(messages), document_(document), database_(*document.sdbs[sdb].database) {}

  void Apply(const Assignment& assignment) {
    counted_ = 0;
    switch (assignment.kind) {
      case RecordKind::kLnb:
        for (const size_t i : Places(assignment.path[0], database_.lnb_count, "LNB")) {
          chosen.lnbs.insert(i);
          SetFields(database_.lnbs[i], assignment);
        }
        return;
      case RecordKind::kUbi:
        for (const size_t i : Places(assignment.path[0], document_.ubis.size(), "user box record"))
          SetUbi(i, assignment);
        return;
      default:
        for (const size_t i : SatellitePlaces(assignment.path[0]))
          ApplyBelow(*database_.satellites[i], assignment);
    }
  }

  Chosen chosen;

 private:
  std::vector<size_t> Places(const RecordNumbers& numbers, size_t count, const char* what) const {
    std::vector<bool> taken(count, numbers.all);
    for (const auto& [first, last] : numbers.ranges) {
      if (!ExpectNumber(messages_, last, count, what)) throw Refused{};
      for (size_t i = first; i <= last; ++i) taken[i - 1] = true;
    }
    std::vector<size_t> places;
    for (size_t i = 0; i < count; ++i) {
      if (taken[i]) places.push_back(i);
    }
    return places;
  }

  std::vector<size_t> SatellitePlaces(const RecordNumbers& numbers) const {
    std::vector<size_t> places = Places(numbers, database_.satellites.size(), "satellite");
    if (numbers.all) std::erase_if(places, [&](size_t i) { return IsUnusedPlace(*database_.satellites[i]); });
    return places;
  }

  void ApplyBelow(Satellite& satellite, const Assignment& assignment) {
    if (assignment.kind == RecordKind::kSatellite) {
      chosen.satellites.insert(&satellite);
      SetNamedFields(satellite.record, assignment);
      return;
    }
    for (const size_t c : Places(assignment.path[1], satellite.carriers.size(), "carrier")) {
      Carrier& carrier = *satellite.carriers[c];
      if (assignment.kind == RecordKind::kCarrier) {
        chosen.carriers.insert(&carrier);
        SetNamedFields(carrier.record, assignment);
        continue;
      }
      for (const size_t s : Places(assignment.path[2], carrier.services.size(), "service"))
        SetService(*carrier.services[s], assignment);
    }
  }

  void SetService(Service& service, const Assignment& assignment) {
    const auto entry =
        chosen.services.try_emplace(&service, ChosenService{service.record.type == kTv, false}).first;
    for (const auto& [key, value] : assignment.fields) entry->second.video_set |= key == "video_pid";
    SetNamedFields(service.record, assignment);
  }

  void SetUbi(size_t place, const Assignment& assignment) {
    OpenUbi& ubi = document_.ubis[place];
    ChosenUbi& entry = chosen.ubis.try_emplace(place, ChosenUbi{{}, ubi.name}).first->second;
    for (const auto& [key, value] : assignment.fields) {
      entry.keys.insert(key);
      if (key == "name") {
        ubi.name = LatinFromUtf8(value);
      } else if (key == "kept_byte8_23") {
        SetKeptText(ubi.record, value);
      } else if (key == "lock_code") {
        if (value.size() > sizeof ubi.record.lock_code) {
          SetLockCodeText(ubi.record, value);
        } else {
          std::memset(ubi.record.lock_code, 0, sizeof ubi.record.lock_code);
          std::memcpy(ubi.record.lock_code, value.data(), value.size());
        }
      } else {
        SetField(ubi.record, key, value);
      }
    }
    ++counted_;
  }

  template <class Record>
  void SetField(Record& record, const std::string& key, const std::string& value) {
    const Field<Record>& field = *SettableField<Record>(key);
    const NumberValue number = *NumberValueOf(field, value);
    const int64_t stored = number.first + (number.counts ? counted_ : 0);
    if (!Fits(field, stored))
      throw WrongCount{WrongText(key, value, ValuesText(field)) + ", the count runs beyond it"};
    field.set(record, stored);
    if (number.east) SetField(record, "east", *number.east ? "1" : "0");
  }

  template <class Record>
  void SetFields(Record& record, const Assignment& assignment) {
    for (const auto& [key, value] : assignment.fields) SetField(record, key, value);
    ++counted_;
  }

  template <class Record>
  void SetNamedFields(Record& record, const Assignment& assignment) {
    for (const auto& [key, value] : assignment.fields) {
      if (key == "name") {
        SetName(record.name, LatinFromUtf8(value));
      } else {
        SetField(record, key, value);
      }
    }
    ++counted_;
  }

  const Messages& messages_;
  Document& document_;
  StaticDatabase& database_;
  int64_t counted_ = 0;  // records that the present assignment has set
};

std::string OneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

class Judge {
 public:
  Judge(const Messages& messages, Document& document, size_t sdb, const Chosen& chosen)
      : messages_(messages), document_(document), sdb_(document.sdbs[sdb]), chosen_(chosen) {}

  void Run() {
    const std::string root = Utf8FromLatin(sdb_.name);
    StaticDatabase& database = *sdb_.database;
    for (size_t s = 0; s < database.satellites.size(); ++s) {
      const Satellite& satellite = *database.satellites[s];
      const std::string place = RecordName(root, "satellite", s);
      if (chosen_.satellites.contains(&satellite)) JudgeSatellite(satellite.record, place);
      for (size_t c = 0; c < satellite.carriers.size(); ++c) {
        const Carrier& carrier = *satellite.carriers[c];
        const std::string here = RecordName(place, "carrier", c);
        if (chosen_.carriers.contains(&carrier)) JudgeCarrier(database, carrier, here);
        if (!chosen_.services.empty()) JudgeServices(carrier, here);
      }
    }
    for (const auto& [place, ubi] : chosen_.ubis) JudgeUbi(document_.ubis[place], ubi);
  }

 private:
  void Expect(const std::string& place, const std::string& text) {
    if (text.empty()) return;
    Tell(messages_, Icon::kStop, "%s: %s", place.c_str(), OneLine(text).c_str());
    throw Refused{};
  }

  void JudgeSatellite(const SatelliteRecord& record, const std::string& place) {
    Expect(place, SatelliteNameText(NameOf(record.name)));
    Expect(place, SatellitePositionText(record.position));
    Expect(place, SatelliteAngleText(record.angle / 10));
    const std::string zero = SatelliteZeroAngleText(record.angle);
    if (!zero.empty()) Tell(messages_, Icon::kWarning, "%s: %s", place.c_str(), OneLine(zero).c_str());
  }

  void JudgeCarrier(const StaticDatabase& database, const Carrier& carrier, const std::string& place) {
    Expect(place, CarrierNameText(NameOf(carrier.record.name)));
    Expect(place, CarrierFrequencyText(LnbOf(database, *carrier.satellite).type, carrier.record.frequency));
    Expect(place, CarrierSymbolRateText(carrier.record.symbol_rate));
  }

  void JudgeServices(const Carrier& carrier, const std::string& place) {
    std::map<uint32_t, std::vector<size_t>> numbers;  // places by program number
    for (size_t i = 0; i < carrier.services.size(); ++i)
      numbers[carrier.services[i]->record.program_number].push_back(i);
    for (size_t i = 0; i < carrier.services.size(); ++i) {
      if (!IsChosen(carrier, i)) continue;
      ServiceRecord& record = carrier.services[i]->record;
      const std::string here = RecordName(place, "service", i);
      Expect(here, ServiceNameText(NameOf(record.name)));
      if (RepeatsNumber(carrier, numbers[record.program_number], i)) Expect(here, kProgramNumberText);
      record.video_pid =
          PidByAnswer(here, VideoPidText(record.type, record.video_pid), record.video_pid) & 0x3FFF;
      record.audio_pid = PidByAnswer(here, AudioPidText(record.audio_pid), record.audio_pid) & 0x3FFF;
      record.pcr_pid = PidByAnswer(here, PcrPidText(record.pcr_pid), record.pcr_pid) & 0x3FFF;
    }
  }

  bool IsChosen(const Carrier& carrier, size_t place) const {
    return chosen_.services.contains(carrier.services[place]);
  }

  // Of two services with one number the later one is at fault, or the chosen one when the other was not
  // chosen.
  bool RepeatsNumber(const Carrier& carrier, const std::vector<size_t>& places, size_t place) const {
    return std::any_of(places.begin(), places.end(), [&](size_t other) {
      return other < place || (other > place && !IsChosen(carrier, other));
    });
  }

  uint32_t PidByAnswer(const std::string& place, const std::string& question, uint32_t pid) {
    if (question.empty()) return pid;
    if (!Ask(messages_, "%s: %s", place.c_str(), OneLine(question).c_str())) throw Refused{};
    return kNoPid;
  }

  void JudgeUbi(const OpenUbi& ubi, const ChosenUbi& chosen) {
    const std::set<std::string>& keys = chosen.keys;
    const std::string place = Utf8FromLatin(ubi.name.empty() ? chosen.name : ubi.name);
    const auto& code = ubi.record.lock_code;
    Expect(place, UbiNameText(ubi.name));
    if (keys.contains("lock_code") &&
        !std::all_of(std::begin(code), std::end(code), [](char c) { return c >= '0' && c <= '9'; }))
      Expect(place, "Lock code should have four digits.");
    if (keys.contains("rf_channel")) Expect(place, RangeText("RF channel", ubi.record.rf_channel, 21, 69));
    if (keys.contains("start_volume"))
      Expect(place, RangeText("Start volume", ubi.record.start_volume, 0, 63));
  }

  const Messages& messages_;
  Document& document_;
  OpenSdb& sdb_;
  const Chosen& chosen_;
};

// Services that have changed their type belong to the lists of their old one no longer.
void FollowTypes(StaticDatabase& database, const Chosen& chosen) {
  std::unordered_set<const Service*> changed;
  for (const auto& [service, before] : chosen.services) {
    if (before.was_tv != (service->record.type == kTv)) changed.insert(service);
  }
  for (Service* service : database.services) {
    const bool is_radio = changed.contains(service) && service->record.type != kTv;
    if (is_radio && !chosen.services.at(service).video_set) service->record.video_pid = kNoPid & 0x3FFF;
  }
  LeaveListsOfOldType(database, changed);
}

}  // namespace

std::string WrongValueText(RecordKind kind, const std::string& key, const std::string& value) {
  if (key == "name" && kind != RecordKind::kLnb)
    return WrongNameText(value, kind == RecordKind::kUbi ? kUbiNameLength : kLongestName);
  switch (kind) {
    case RecordKind::kLnb:
      return WrongFieldText<LnbRecord>(key, value);
    case RecordKind::kSatellite:
      return WrongFieldText<SatelliteRecord>(key, value);
    case RecordKind::kCarrier:
      return WrongFieldText<CarrierRecord>(key, value);
    case RecordKind::kService:
      return WrongFieldText<ServiceRecord>(key, value);
    default:
      return WrongUbiText(key, value);
  }
}

AssignResult AssignFields(const Messages& messages, Document& document, size_t sdb,
                          const std::vector<Assignment>& assignments, std::string& wrong) {
  try {
    Assigner assigner(messages, document, sdb);
    for (const Assignment& assignment : assignments) assigner.Apply(assignment);
    if (!assigner.chosen.any()) {
      Tell(messages, Icon::kStop, "No record was chosen.");
      return AssignResult::kRefused;
    }
    FollowTypes(*document.sdbs[sdb].database, assigner.chosen);
    Judge(messages, document, sdb, assigner.chosen).Run();
    return AssignResult::kDone;
  } catch (const Refused&) {
    return AssignResult::kRefused;
  } catch (const WrongCount& count) {
    wrong = count.text;
    return AssignResult::kWrongValue;
  }
}

}  // namespace vexa
