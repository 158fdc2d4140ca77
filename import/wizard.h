// The import wizard's model: three steps that mark satellites, carriers and services in the work records, and
// the compaction that leaves only what was chosen.
//
// Marks live in the work records themselves, so a step that is opened again shows what was chosen. Carriers
// belong to a satellite, and services to a carrier, by the owner's first index and count; what lies outside
// the files or was claimed by an owner before it in the file belongs to nobody.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "import/work_files.h"
#include "platform/code_page.h"

namespace vexa {

// Option boxes as bits; an item is chosen when one ticked option holds for it.
enum CarrierOption : uint8_t {
  kAllCarriers = 1,
  kCBand = 2,   // 5000 MHz or below
  kKuBand = 4,  // above
  kVerticalPolar = 8,
  kHorizontalPolar = 16
};
enum ServiceOption : uint8_t {
  kAllServices = 1,
  kFreeServices = 2,
  kScrambled = 4,
  kTvServices = 8,
  kRadioServices = 16
};

struct Wizard {
  explicit Wizard(WorkRecords& files, const CodePage& names_page = Windows1252())
      : work(files), page(names_page) {}
  WorkRecords& work;
  const CodePage& page;         // that the names stand in
  uint8_t carrier_options = 0;  // remembered: the boxes ticked for all satellites
  uint8_t service_options = 0;  // remembered: the boxes ticked for all carriers
};

// Records that stand one behind the other. Here and below, records are named by their places in the lists of
// the work records, from 0, and must be there.
struct WorkRange {
  size_t first = 0, count = 0;
};
// The carriers of a satellite and the services of a carrier; what lies beyond the lists is cut off.
WorkRange CarriersOf(const WorkRecords& work, size_t satellite);
WorkRange ServicesOf(const WorkRecords& work, size_t carrier);

// Step 1. Unticking a satellite also unticks all carriers and services below it.
void ChooseSatellite(Wizard& wizard, size_t satellite, bool chosen);
void ChooseEverySatellite(Wizard& wizard, bool chosen);
size_t ChosenSatelliteCount(const Wizard& wizard);  // "Next" needs one
bool IsEverySatelliteChosen(const Wizard& wizard);  // state of "Select All"; false for an empty list
void BeginCarrierStep(Wizard& wizard);              // "Next": applies the remembered carrier options

// Step 2. No satellite stands for "All satellites".
std::vector<size_t> ChosenSatellites(const Wizard& wizard);  // rising
// The ticked boxes as CarrierOption bits: of the satellite, or the remembered ones.
uint8_t CarrierOptions(const Wizard& wizard, std::optional<size_t> satellite);
// Ticking chooses the carriers for which the option holds besides those that are chosen; unticking leaves
// those that the other ticked options choose.
void SetCarrierOption(Wizard& wizard, std::optional<size_t> satellite, CarrierOption option, bool ticked);
// One carrier by hand; the ticks of options stay.
void ChooseCarrier(Wizard& wizard, size_t carrier, bool chosen);
void BeginServiceStep(Wizard& wizard);  // "Next": applies the remembered service options

// Step 3. No carrier stands for "All carriers".
std::vector<size_t> ChosenCarriers(const Wizard& wizard);  // of chosen satellites, rising
// As CarrierOptions and SetCarrierOption, with ServiceOption bits.
uint8_t ServiceOptions(const Wizard& wizard, std::optional<size_t> carrier);
void SetServiceOption(Wizard& wizard, std::optional<size_t> carrier, ServiceOption option, bool ticked);
// One service by hand; the ticks of options stay.
void ChooseService(Wizard& wizard, size_t service, bool chosen);

// "Complete": leaves the chosen records, in their order and renumbered. With every satellite chosen and
// "Select All" among the remembered carrier options all satellites and carriers stay, also carriers unticked
// by hand.
void CompactWorkRecords(Wizard& wizard);

// Texts of the dialogs, UTF-8: a record's fields, how many records there are, and how many are chosen of a
// satellite's carriers or a carrier's services (no owner: of all chosen owners').
std::string SatelliteInformation(const WorkSatellite& satellite);
std::string TotalSatellitesText(const Wizard& wizard);
std::string SelectedSatellitesText(const Wizard& wizard);
std::string CarrierInformation(const WorkCarrier& carrier);
std::string SelectedCarriersText(const Wizard& wizard, std::optional<size_t> satellite);
std::string TotalSelectedCarriersText(const Wizard& wizard);
std::string ServiceInformation(const WorkService& service);
std::string SelectedServicesText(const Wizard& wizard, std::optional<size_t> carrier);
std::string TotalSelectedServicesText(const Wizard& wizard);

}  // namespace vexa
