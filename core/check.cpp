#include "core/check.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "core/duplicates.h"
#include "core/edit.h"
#include "core/field_texts.h"
#include "core/match.h"
#include "core/rules.h"
#include "platform/text.h"

namespace vexa {

namespace {

struct Findings {
  bool duplicates = false;
  std::vector<Finding> list;
  FindingPlace place;  // of the record that is being judged
  // An empty text is a rule that holds.
  void Add(const std::string& name, std::string text) {
    if (text.empty()) return;
    std::replace(text.begin(), text.end(), '\n', ' ');
    list.push_back({place, name, std::move(text)});
  }
};

// While one lives, the findings are those of the record at this place of its list.
class At {
 public:
  At(int& place, size_t value) : place_(place) { place_ = static_cast<int>(value); }
  ~At() { place_ = -1; }
  At(const At&) = delete;
  At& operator=(const At&) = delete;

 private:
  int& place_;
};

// "Same name as service 4."
std::string SameText(const char* what, const char* kind, size_t first) {
  return std::string("Same ") + what + " as " + kind + " " + std::to_string(first + 1) + ".";
}

void CheckEntries(const std::vector<Service*>& entries, const std::string& place, Findings& findings) {
  if (!findings.duplicates) return;
  const Repeats repeats = RepeatedEntries(entries);
  for (size_t i = 0; i < repeats.size(); ++i) {
    if (repeats[i])
      findings.Add(place, "Entry " + std::to_string(i + 1) + " is the same as entry " +
                              std::to_string(*repeats[i] + 1) + ".");
  }
}

void CheckServices(const Carrier& carrier, const std::string& place, Findings& findings) {
  std::unordered_set<uint32_t> numbers;
  const Repeats repeats = findings.duplicates ? RepeatedServices(carrier.services) : Repeats();
  for (size_t i = 0; i < carrier.services.size(); ++i) {
    const ServiceRecord& record = carrier.services[i]->record;
    const std::string here = RecordName(place, "service", i);
    const At at(findings.place.record.service, i);
    findings.Add(here, ServiceNameText(NameOf(record.name)));
    if (!numbers.insert(record.program_number).second) findings.Add(here, kProgramNumberText);
    findings.Add(here, VideoPidText(record.type, record.video_pid));
    findings.Add(here, AudioPidText(record.audio_pid));
    findings.Add(here, PcrPidText(record.pcr_pid));
    if (findings.duplicates && repeats[i]) findings.Add(here, SameText("name", "service", *repeats[i]));
  }
}

void CheckSatellite(const StaticDatabase& database, const Satellite& satellite, const std::string& place,
                    const std::string& same, Findings& findings) {
  const SatelliteRecord& record = satellite.record;
  findings.Add(place, SatelliteNameText(NameOf(record.name)));
  findings.Add(place, SatellitePositionText(record.position));
  findings.Add(place, SatelliteAngleText(record.angle / 10));
  findings.Add(place, SatelliteZeroAngleText(record.angle));
  findings.Add(place, same);
  const Repeats repeats = findings.duplicates ? RepeatedCarriers(satellite.carriers) : Repeats();
  for (size_t i = 0; i < satellite.carriers.size(); ++i) {
    const Carrier& carrier = *satellite.carriers[i];
    const std::string here = RecordName(place, "carrier", i);
    const At at(findings.place.record.carrier, i);
    findings.Add(here, CarrierNameText(NameOf(carrier.record.name)));
    findings.Add(here, CarrierFrequencyText(LnbOf(database, satellite).type, carrier.record.frequency));
    findings.Add(here, CarrierSymbolRateText(carrier.record.symbol_rate));
    if (findings.duplicates && repeats[i])
      findings.Add(here, SameText("frequency and polarization", "carrier", *repeats[i]));
    CheckServices(carrier, here, findings);
  }
}

void CheckSatellites(const StaticDatabase& database, const std::string& place, Findings& findings) {
  const Repeats repeats = findings.duplicates ? RepeatedSatellites(database.satellites) : Repeats();
  for (size_t i = 0; i < database.satellites.size(); ++i) {
    const Satellite& satellite = *database.satellites[i];
    if (IsUnusedPlace(satellite)) continue;
    const At at(findings.place.record.satellite, i);
    std::string same;
    if (findings.duplicates && repeats[i]) same = SameText("orbital position", "satellite", *repeats[i]);
    CheckSatellite(database, satellite, RecordName(place, "satellite", i), same, findings);
  }
}

void CheckLimits(const StaticDatabase& database, const std::string& place, Findings& findings) {
  if (database.lnb_count > kMaximumLnbs)
    findings.Add(place, "Can't add LNB Information. It exceeds the limit 16.");
  if (database.satellites.size() > kMaximumSatellites)
    findings.Add(place, "Can't add SATELLITE Information. It exceeds the limit.");
  if (!database.satellites.empty() && database.lnb_count == 0)
    findings.Add(place, "Add atleast one LNB to add a satellite.");
  if (database.carriers.size() > kMaximumCarriers)
    findings.Add(place, "Can't add carrier information. It exceeds the limit.");
  if (database.services.size() > kMaximumServices)
    findings.Add(place, "Can't add service information. It exceeds the limit.");
}

void CheckGroup(const CodePage& page, const FavouriteGroup& group, GroupKind kind, const std::string& place,
                size_t index, Findings& findings) {
  const bool tv = kind == GroupKind::kTv;
  const At at(tv ? findings.place.tv_group : findings.place.radio_group, index);
  const std::string here = RecordName(place, tv ? "TV group" : "radio group", index);
  const std::vector<Service*>& entries = EntriesOf(group, kind);
  findings.Add(here, GroupNameText(NameOf(tv ? group.record.tv_name : group.record.radio_name)));
  findings.Add(here, GroupLimitText(page, group, kind, entries.size()));
  CheckEntries(entries, here, findings);
}

}  // namespace

std::string RecordName(const std::string& parent, const char* kind, size_t place) {
  return parent + " " + kind + " " + std::to_string(place + 1);
}

std::vector<Finding> FindFaults(const Document& document, bool duplicates) {
  Findings findings;
  findings.duplicates = duplicates;
  for (size_t n = 0; n < document.sdbs.size(); ++n) {
    const OpenSdb& sdb = document.sdbs[n];
    const StaticDatabase& database = *sdb.database;
    const std::string place = NameText(document, sdb.name);
    const At at(findings.place.record.sdb, n);
    findings.Add(place, SdbNameText(sdb.name));
    CheckLimits(database, place, findings);
    CheckSatellites(database, place, findings);
    for (size_t i = 0; i < kFavouriteGroups; ++i) {
      for (const GroupKind kind : {GroupKind::kTv, GroupKind::kRadio})
        CheckGroup(NamesPage(document), database.favourites[i], kind, place, i, findings);
    }
  }
  for (size_t i = 0; i < document.ubis.size(); ++i) {
    const At at(findings.place.ubi, i);
    findings.Add(NameText(document, document.ubis[i].name), UbiNameText(document.ubis[i].name));
  }
  return std::move(findings.list);
}

}  // namespace vexa
