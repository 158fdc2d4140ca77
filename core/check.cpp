#include "core/check.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "core/edit.h"
#include "core/match.h"
#include "core/rules.h"
#include "platform/text.h"

namespace vexa {

namespace {

struct Findings {
  std::vector<Finding> list;
  TreePath place;  // of the record that is being judged
  // An empty text is a rule that holds.
  void Add(const std::string& name, std::string text) {
    if (text.empty()) return;
    std::replace(text.begin(), text.end(), '\n', ' ');
    list.push_back({place, name + ": " + text});
  }
};

// One level further down the tree while it lives.
class Below {
 public:
  Below(Findings& findings, size_t position) : place_(findings.place) {
    place_.push_back(static_cast<uint32_t>(position));
  }
  ~Below() { place_.pop_back(); }
  Below(const Below&) = delete;
  Below& operator=(const Below&) = delete;

 private:
  TreePath& place_;
};

std::string Numbered(const std::string& place, const char* kind, size_t index) {
  return place + " " + kind + " " + std::to_string(index + 1);
}

void CheckServices(const Carrier& carrier, const std::string& place, Findings& findings) {
  std::unordered_set<uint32_t> numbers;
  for (size_t i = 0; i < carrier.services.size(); ++i) {
    const ServiceRecord& record = carrier.services[i]->record;
    const std::string here = Numbered(place, "service", i);
    const Below below(findings, i);
    findings.Add(here, ServiceNameText(NameOf(record.name)));
    if (!numbers.insert(record.program_number).second) findings.Add(here, kProgramNumberText);
    findings.Add(here, VideoPidText(record.type, record.video_pid));
    findings.Add(here, AudioPidText(record.audio_pid));
    findings.Add(here, PcrPidText(record.pcr_pid));
  }
}

void CheckSatellite(const StaticDatabase& database, const Satellite& satellite, const std::string& place,
                    Findings& findings) {
  if (IsUnusedPlace(satellite)) return;
  const SatelliteRecord& record = satellite.record;
  findings.Add(place, SatelliteNameText(NameOf(record.name)));
  findings.Add(place, SatellitePositionText(record.position));
  findings.Add(place, SatelliteAngleText(record.angle / 10));
  findings.Add(place, SatelliteZeroAngleText(record.angle));
  for (size_t i = 0; i < satellite.carriers.size(); ++i) {
    const Carrier& carrier = *satellite.carriers[i];
    const std::string here = Numbered(place, "carrier", i);
    const Below below(findings, i);
    findings.Add(here, CarrierNameText(NameOf(carrier.record.name)));
    findings.Add(here, CarrierFrequencyText(LnbOf(database, satellite).type, carrier.record.frequency));
    findings.Add(here, CarrierSymbolRateText(carrier.record.symbol_rate));
    CheckServices(carrier, here, findings);
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

void CheckTvGroup(const FavouriteGroup& group, const std::string& place, size_t index, Findings& findings) {
  const Below level(findings, kTvGroupLevelPosition), below(findings, index);
  const std::string tv = Numbered(place, "TV group", index);
  const std::string_view tv_name = NameOf(group.record.tv_name);
  findings.Add(tv, GroupNameText(tv_name));
  if (group.tv.size() > kMaximumTvEntries)
    findings.Add(tv,
                 Format("This service cannot be added in %s group since it exceeds more than 2500 records",
                        Utf8FromLatin(tv_name).c_str()));
}

void CheckRadioGroup(const FavouriteGroup& group, const std::string& place, size_t index,
                     Findings& findings) {
  const Below level(findings, kRadioGroupLevelPosition), below(findings, index);
  const std::string radio = Numbered(place, "radio group", index);
  const std::string_view radio_name = NameOf(group.record.radio_name);
  findings.Add(radio, GroupNameText(radio_name));
  if (group.radio.size() > kMaximumRadioEntries)
    findings.Add(radio,
                 Format("This service cannot be added in %s\tgroup since it exceeds more than 1000 records",
                        Utf8FromLatin(radio_name).c_str()));
}

}  // namespace

std::vector<Finding> FindFaults(const Document& document) {
  Findings findings;
  for (size_t n = 0; n < document.sdbs.size(); ++n) {
    const OpenSdb& sdb = document.sdbs[n];
    const StaticDatabase& database = *sdb.database;
    const std::string place = Utf8FromLatin(sdb.name);
    const Below root(findings, n);
    findings.Add(place, SdbNameText(sdb.name));
    CheckLimits(database, place, findings);
    {
      const Below level(findings, kSatelliteLevelPosition);
      for (size_t i = 0; i < database.satellites.size(); ++i) {
        const Below below(findings, i);
        CheckSatellite(database, *database.satellites[i], Numbered(place, "satellite", i), findings);
      }
    }
    for (size_t i = 0; i < kFavouriteGroups; ++i) {
      CheckTvGroup(database.favourites[i], place, i, findings);
      CheckRadioGroup(database.favourites[i], place, i, findings);
    }
  }
  const Below boxes(findings, document.sdbs.size());
  for (size_t i = 0; i < document.ubis.size(); ++i) {
    const Below below(findings, i);
    findings.Add(Utf8FromLatin(document.ubis[i].name), UbiNameText(document.ubis[i].name));
  }
  return std::move(findings.list);
}

std::vector<std::string> CheckDatabase(const Document& document) {
  std::vector<std::string> lines;
  for (Finding& finding : FindFaults(document)) lines.push_back(std::move(finding.line));
  return lines;
}

}  // namespace vexa
