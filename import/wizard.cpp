#include "import/wizard.h"

#include <algorithm>

#include "platform/text.h"

namespace vexa {

namespace {

constexpr uint32_t kBandLimit = 5000;

WorkRange Clamp(size_t first, size_t count, size_t size) {
  first = std::min(first, size);
  return {first, std::min(count, size - first)};
}

bool Holds(CarrierOption option, const WorkCarrier& carrier) {
  switch (option) {
    case kAllCarriers:
      return true;
    case kCBand:
      return carrier.frequency <= kBandLimit;
    case kKuBand:
      return carrier.frequency > kBandLimit;
    case kVerticalPolar:
      return carrier.polarization == kVertical;
    case kHorizontalPolar:
      return carrier.polarization == kHorizontal;
  }
  return false;
}

bool Holds(ServiceOption option, const WorkService& service) {
  switch (option) {
    case kAllServices:
      return true;
    case kFreeServices:
      return service.free != 0;
    case kScrambled:
      return service.free == 0;
    case kTvServices:
      return service.type == kTv;
    case kRadioServices:
      return service.type == kRadio;
  }
  return false;
}

// The step's two levels, so that carriers and services share one set of rules.
struct CarrierLevel {
  using Option = CarrierOption;
  using Item = WorkCarrier;
  static constexpr uint8_t kAll = kAllCarriers;
  static std::vector<WorkCarrier>& Items(WorkRecords& work) { return work.carriers; }
  static WorkRange Range(const WorkRecords& work, size_t owner) { return CarriersOf(work, owner); }
  static uint32_t Options(const WorkRecords& work, size_t owner) {
    return work.satellites[owner].carrier_options;
  }
  static void SetOptions(WorkRecords& work, size_t owner, uint32_t options) {
    work.satellites[owner].carrier_options = options & 31;
  }
  static void ChooseOwner(WorkRecords& work, size_t owner) { work.satellites[owner].chosen = 1; }
};

struct ServiceLevel {
  using Option = ServiceOption;
  using Item = WorkService;
  static constexpr uint8_t kAll = kAllServices;
  static std::vector<WorkService>& Items(WorkRecords& work) { return work.services; }
  static WorkRange Range(const WorkRecords& work, size_t owner) { return ServicesOf(work, owner); }
  static uint32_t Options(const WorkRecords& work, size_t owner) {
    return work.carriers[owner].service_options;
  }
  static void SetOptions(WorkRecords& work, size_t owner, uint32_t options) {
    work.carriers[owner].service_options = options & 31;
  }
  static void ChooseOwner(WorkRecords& work, size_t owner) { work.carriers[owner].chosen = 1; }
};

constexpr uint32_t kOptionBits[] = {1, 2, 4, 8, 16};

template <class Level>
bool AnyHolds(uint32_t options, const typename Level::Item& item) {
  return std::any_of(std::begin(kOptionBits), std::end(kOptionBits), [&](uint32_t bit) {
    return (options & bit) != 0 && Holds(static_cast<typename Level::Option>(bit), item);
  });
}

template <class Level>
void SetOption(WorkRecords& work, size_t owner, uint32_t option, bool ticked) {
  const uint32_t before = Level::Options(work, owner);
  const uint32_t options = ticked ? before | option : before & ~option;
  Level::SetOptions(work, owner, options);
  const WorkRange range = Level::Range(work, owner);
  for (size_t i = range.first; i < range.first + range.count; ++i) {
    auto& item = Level::Items(work)[i];
    if (ticked) {
      // Ticking only adds: what was chosen by hand stays.
      if (Holds(static_cast<typename Level::Option>(option), item)) item.chosen = 1;
    } else {
      item.chosen = AnyHolds<Level>(options, item);
    }
  }
}

// What "Next" does with the options remembered from an earlier visit: only an option that finds something is
// ticked.
template <class Level>
void ApplyRemembered(WorkRecords& work, size_t owner, uint32_t options) {
  const WorkRange range = Level::Range(work, owner);
  uint32_t found = 0;
  for (const uint32_t bit : kOptionBits) {
    if ((options & bit) == 0) continue;
    if (bit == Level::kAll) {
      Level::ChooseOwner(work, owner);
      found |= bit;
    }
    for (size_t i = range.first; i < range.first + range.count; ++i) {
      auto& item = Level::Items(work)[i];
      if (!Holds(static_cast<typename Level::Option>(bit), item)) continue;
      item.chosen = 1;
      found |= bit;
    }
  }
  Level::SetOptions(work, owner, Level::Options(work, owner) | found);
}

template <class Item>
size_t CountChosen(const std::vector<Item>& items, WorkRange range) {
  size_t count = 0;
  for (size_t i = range.first; i < range.first + range.count; ++i) count += items[i].chosen;
  return count;
}

// For every item its owner, or none.
template <class GetRange>
std::vector<uint32_t> Owners(size_t items, size_t owners, uint32_t none, GetRange get_range) {
  std::vector<uint32_t> owner_of(items, none);
  for (size_t owner = 0; owner < owners; ++owner) {
    const WorkRange range = get_range(owner);
    for (size_t i = range.first; i < range.first + range.count; ++i) {
      if (owner_of[i] == none) owner_of[i] = static_cast<uint32_t>(owner);
    }
  }
  return owner_of;
}

constexpr uint32_t kNobody = ~0u;

std::vector<bool> KeptItems(const std::vector<uint32_t>& owner_of, const std::vector<bool>& owner_kept,
                            const std::vector<bool>& chosen) {
  std::vector<bool> kept(owner_of.size());
  for (size_t i = 0; i < owner_of.size(); ++i)
    kept[i] = chosen[i] && owner_of[i] != kNobody && owner_kept[owner_of[i]];
  return kept;
}

// Entry i: how many are kept before the i-th; one more entry than items.
std::vector<uint32_t> KeptBefore(const std::vector<bool>& kept) {
  std::vector<uint32_t> before(kept.size() + 1);
  for (size_t i = 0; i < kept.size(); ++i) before[i + 1] = before[i] + (kept[i] ? 1 : 0);
  return before;
}

// First index and count of each owner's kept items.
std::vector<WorkRange> KeptRanges(size_t owners, const std::vector<uint32_t>& owner_of,
                                  const std::vector<bool>& kept, const std::vector<uint32_t>& before,
                                  const std::vector<size_t>& old_first) {
  std::vector<WorkRange> ranges(owners);
  for (size_t owner = 0; owner < owners; ++owner) ranges[owner].first = before[old_first[owner]];
  for (size_t i = 0; i < kept.size(); ++i) {
    if (!kept[i]) continue;
    WorkRange& range = ranges[owner_of[i]];
    if (range.count++ == 0) range.first = before[i];
  }
  return ranges;
}

template <class Record>
void Keep(std::vector<Record>& records, const std::vector<bool>& kept) {
  size_t used = 0;
  for (size_t i = 0; i < records.size(); ++i) {
    if (kept[i]) records[used++] = records[i];
  }
  records.resize(used);
}

template <class Record>
std::vector<bool> ChosenOf(const std::vector<Record>& records, bool all) {
  std::vector<bool> chosen(records.size());
  for (size_t i = 0; i < records.size(); ++i) chosen[i] = all || records[i].chosen;
  return chosen;
}

void CompactServices(WorkRecords& work, const std::vector<bool>& carrier_kept) {
  const auto owner_of = Owners(work.services.size(), work.carriers.size(), kNobody,
                               [&](size_t carrier) { return ServicesOf(work, carrier); });
  const auto kept = KeptItems(owner_of, carrier_kept, ChosenOf(work.services, false));
  const auto before = KeptBefore(kept), carriers_before = KeptBefore(carrier_kept);
  std::vector<size_t> old_first;
  for (size_t i = 0; i < work.carriers.size(); ++i) old_first.push_back(ServicesOf(work, i).first);
  const auto ranges = KeptRanges(work.carriers.size(), owner_of, kept, before, old_first);
  for (size_t i = 0; i < work.carriers.size(); ++i) {
    work.carriers[i].first_service = ranges[i].first & 0xFFFF;
    work.carriers[i].service_count = ranges[i].count & 0xFFFF;
  }
  for (size_t i = 0; i < kept.size(); ++i) {
    if (!kept[i]) continue;
    // Falls by the carriers dropped before its own, so that an index that was one too high stays so.
    const uint32_t dropped = owner_of[i] - carriers_before[owner_of[i]];
    work.services[i].carrier_index = (work.services[i].carrier_index - dropped) & 0xFFFF;
  }
  Keep(work.services, kept);
}

void CompactCarriers(WorkRecords& work, const std::vector<uint32_t>& owner_of, const std::vector<bool>& kept,
                     const std::vector<bool>& satellite_kept) {
  const auto before = KeptBefore(kept), satellites_before = KeptBefore(satellite_kept);
  std::vector<size_t> old_first;
  for (size_t i = 0; i < work.satellites.size(); ++i) old_first.push_back(CarriersOf(work, i).first);
  const auto ranges = KeptRanges(work.satellites.size(), owner_of, kept, before, old_first);
  for (size_t i = 0; i < work.satellites.size(); ++i) {
    work.satellites[i].first_carrier = ranges[i].first & 0xFFFF;
    work.satellites[i].carrier_count = ranges[i].count & 0xFFFF;
  }
  for (size_t i = 0; i < kept.size(); ++i) {
    if (!kept[i]) continue;
    const uint32_t dropped = owner_of[i] - satellites_before[owner_of[i]];
    work.carriers[i].satellite_index = (work.carriers[i].satellite_index - dropped) & 0x3FF;
  }
  Keep(work.carriers, kept);
  Keep(work.satellites, satellite_kept);
}

void ClearCarriers(WorkRecords& work, WorkRange carriers) {
  for (size_t i = carriers.first; i < carriers.first + carriers.count; ++i) {
    WorkCarrier& carrier = work.carriers[i];
    carrier.chosen = 0;
    carrier.service_options = 0;
    carrier.unused_24b = 0;
    const WorkRange services = ServicesOf(work, i);
    for (size_t j = services.first; j < services.first + services.count; ++j) {
      work.services[j].chosen = 0;
      work.services[j].unused_23 = 0;
    }
  }
}

}  // namespace

WorkRange CarriersOf(const WorkRecords& work, size_t satellite) {
  const WorkSatellite& record = work.satellites[satellite];
  return Clamp(record.first_carrier, record.carrier_count, work.carriers.size());
}

WorkRange ServicesOf(const WorkRecords& work, size_t carrier) {
  const WorkCarrier& record = work.carriers[carrier];
  return Clamp(record.first_service, record.service_count, work.services.size());
}

void ChooseSatellite(Wizard& wizard, size_t satellite, bool chosen) {
  wizard.work.satellites[satellite].chosen = chosen;
  if (!chosen) ClearCarriers(wizard.work, CarriersOf(wizard.work, satellite));
}

void ChooseEverySatellite(Wizard& wizard, bool chosen) {
  for (size_t i = 0; i < wizard.work.satellites.size(); ++i) ChooseSatellite(wizard, i, chosen);
}

size_t ChosenSatelliteCount(const Wizard& wizard) {
  return CountChosen(wizard.work.satellites, {0, wizard.work.satellites.size()});
}

bool IsEverySatelliteChosen(const Wizard& wizard) {
  return !wizard.work.satellites.empty() && ChosenSatelliteCount(wizard) == wizard.work.satellites.size();
}

std::vector<size_t> ChosenSatellites(const Wizard& wizard) {
  std::vector<size_t> chosen;
  for (size_t i = 0; i < wizard.work.satellites.size(); ++i) {
    if (wizard.work.satellites[i].chosen) chosen.push_back(i);
  }
  return chosen;
}

std::vector<size_t> ChosenCarriers(const Wizard& wizard) {
  std::vector<size_t> chosen;
  for (const size_t satellite : ChosenSatellites(wizard)) {
    const WorkRange range = CarriersOf(wizard.work, satellite);
    for (size_t i = range.first; i < range.first + range.count; ++i) {
      // Damaged files may let two satellites share a carrier; it is listed once.
      if (wizard.work.carriers[i].chosen && (chosen.empty() || chosen.back() < i)) chosen.push_back(i);
    }
  }
  return chosen;
}

void BeginCarrierStep(Wizard& wizard) {
  for (const size_t i : ChosenSatellites(wizard))
    ApplyRemembered<CarrierLevel>(wizard.work, i, wizard.carrier_options);
}

void BeginServiceStep(Wizard& wizard) {
  for (const size_t i : ChosenCarriers(wizard))
    ApplyRemembered<ServiceLevel>(wizard.work, i, wizard.service_options);
}

uint8_t CarrierOptions(const Wizard& wizard, std::optional<size_t> satellite) {
  if (!satellite) return wizard.carrier_options;
  return static_cast<uint8_t>(wizard.work.satellites[*satellite].carrier_options);
}

uint8_t ServiceOptions(const Wizard& wizard, std::optional<size_t> carrier) {
  if (!carrier) return wizard.service_options;
  return static_cast<uint8_t>(wizard.work.carriers[*carrier].service_options);
}

namespace {

uint8_t WithOption(uint8_t options, uint8_t option, bool ticked) {
  return static_cast<uint8_t>(ticked ? options | option : options & ~option);
}

}  // namespace

void SetCarrierOption(Wizard& wizard, std::optional<size_t> satellite, CarrierOption option, bool ticked) {
  if (satellite) return SetOption<CarrierLevel>(wizard.work, *satellite, option, ticked);
  wizard.carrier_options = WithOption(wizard.carrier_options, option, ticked);
  for (const size_t i : ChosenSatellites(wizard)) SetOption<CarrierLevel>(wizard.work, i, option, ticked);
}

void SetServiceOption(Wizard& wizard, std::optional<size_t> carrier, ServiceOption option, bool ticked) {
  if (carrier) return SetOption<ServiceLevel>(wizard.work, *carrier, option, ticked);
  wizard.service_options = WithOption(wizard.service_options, option, ticked);
  for (const size_t i : ChosenCarriers(wizard)) SetOption<ServiceLevel>(wizard.work, i, option, ticked);
}

void ChooseCarrier(Wizard& wizard, size_t carrier, bool chosen) {
  wizard.work.carriers[carrier].chosen = chosen;
}

void ChooseService(Wizard& wizard, size_t service, bool chosen) {
  wizard.work.services[service].chosen = chosen;
}

void CompactWorkRecords(Wizard& wizard) {
  WorkRecords& work = wizard.work;
  if (IsEverySatelliteChosen(wizard) && (wizard.carrier_options & kAllCarriers) != 0) {
    CompactServices(work, std::vector<bool>(work.carriers.size(), true));
    return;
  }
  const auto satellite_kept = ChosenOf(work.satellites, false);
  const auto owner_of = Owners(work.carriers.size(), work.satellites.size(), kNobody,
                               [&](size_t satellite) { return CarriersOf(work, satellite); });
  const auto carrier_kept = KeptItems(owner_of, satellite_kept, ChosenOf(work.carriers, false));
  CompactServices(work, carrier_kept);
  CompactCarriers(work, owner_of, carrier_kept, satellite_kept);
}

std::string SatelliteInformation(const WorkSatellite& satellite) {
  const double degrees = satellite.angle / 10.0;
  return satellite.east ? Format("Angle - %05.1f\tEast/West Flag - East", degrees)
                        : Format("Angle - %05.1f\tEast/West Flag - West", degrees);
}

std::string TotalSatellitesText(const Wizard& wizard) {
  return Format("Total Satellite(s) - %d", static_cast<int>(wizard.work.satellites.size()));
}

std::string SelectedSatellitesText(const Wizard& wizard) {
  return Format("   Selected satellite(s) - %d", static_cast<int>(ChosenSatelliteCount(wizard)));
}

std::string CarrierInformation(const WorkCarrier& carrier) {
  constexpr const char* kTexts[] = {"Horizontal", "Vertical", "Left", "Right"};
  return Format("Frequency - %-8dSymbol rate - %-8dPolarization - %s", static_cast<int>(carrier.frequency),
                static_cast<int>(carrier.symbol_rate), kTexts[carrier.polarization]);
}

std::string SelectedCarriersText(const Wizard& wizard, std::optional<size_t> satellite) {
  const WorkRecords& work = wizard.work;
  size_t chosen = 0, total = 0;
  for (const size_t owner : satellite ? std::vector<size_t>{*satellite} : ChosenSatellites(wizard)) {
    const WorkRange range = CarriersOf(work, owner);
    chosen += CountChosen(work.carriers, range);
    total += range.count;
  }
  const std::string name =
      satellite ? Utf8FromPage(wizard.page, NameOf(work.satellites[*satellite].name)) : "All satellites";
  return Format("%s selected carrier(s) - %d/%d", name.c_str(), static_cast<int>(chosen),
                static_cast<int>(total));
}

std::string TotalSelectedCarriersText(const Wizard& wizard) {
  return Format("Total selected carriers - %d", static_cast<int>(ChosenCarriers(wizard).size()));
}

std::string ServiceInformation(const WorkService& service) {
  std::string text = service.type == kTv ? "TV   \t" : "Radio\t";
  return text + Format("Video PID - %-8d Audio PID - %-8d PCR PID - %-8d %s",
                       static_cast<int>(service.video_pid), static_cast<int>(service.audio_pid),
                       static_cast<int>(service.pcr_pid), service.free ? "" : "Scrambled");
}

std::string SelectedServicesText(const Wizard& wizard, std::optional<size_t> carrier) {
  const WorkRecords& work = wizard.work;
  size_t chosen = 0, total = 0;
  for (const size_t owner : carrier ? std::vector<size_t>{*carrier} : ChosenCarriers(wizard)) {
    const WorkRange range = ServicesOf(work, owner);
    chosen += CountChosen(work.services, range);
    total += range.count;
  }
  const std::string name =
      carrier ? Utf8FromPage(wizard.page, NameOf(work.carriers[*carrier].name)) : "All carriers";
  return Format("%s selected service(s) - %d/%d", name.c_str(), static_cast<int>(chosen),
                static_cast<int>(total));
}

std::string TotalSelectedServicesText(const Wizard& wizard) {
  size_t count = 0;
  for (const size_t carrier : ChosenCarriers(wizard)) {
    count += CountChosen(wizard.work.services, ServicesOf(wizard.work, carrier));
  }
  return Format("Total selected services - %d", static_cast<int>(count));
}

}  // namespace vexa
