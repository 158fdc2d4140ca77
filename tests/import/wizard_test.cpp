#include "import/wizard.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

// Satellites with the given carriers; each carrier has four services: free TV, scrambled TV, free radio,
// scrambled radio, named by carrier and place.
struct CarrierSketch {
  uint32_t frequency, polarization;
};

WorkFiles MakeWork(const std::vector<std::vector<CarrierSketch>>& satellites) {
  WorkFiles work;
  for (const auto& carriers : satellites) {
    WorkSatellite satellite{};
    SetName(satellite.name, std::string(1, static_cast<char>('A' + work.satellites.size())));
    satellite.first_carrier = work.carriers.size() & 0xFFFF;
    satellite.carrier_count = carriers.size() & 0xFFFF;
    work.satellites.push_back(satellite);
    for (const CarrierSketch& sketch : carriers) {
      WorkCarrier carrier{};
      SetName(carrier.name, std::to_string(work.carriers.size()));
      carrier.frequency = sketch.frequency;
      carrier.polarization = sketch.polarization & 3;
      carrier.satellite_index = (work.satellites.size() - 1) & 0x3FF;
      carrier.first_service = work.services.size() & 0xFFFF;
      carrier.service_count = 4;
      for (uint32_t i = 0; i < 4; ++i) {
        WorkService service{};
        SetName(service.name, std::to_string(work.carriers.size()) + "tTrR"[i]);
        service.carrier_index = work.carriers.size() & 0xFFFF;
        service.type = i < 2 ? 1 : 2;
        service.free = i % 2 == 0;
        work.services.push_back(service);
      }
      work.carriers.push_back(carrier);
    }
  }
  return work;
}

// A: C band horizontal, Ku vertical, Ku horizontal. B: C vertical at the limit. C: Ku left.
WorkFiles Standard() {
  return MakeWork({{{4000, 0}, {11000, 1}, {12000, 0}}, {{5000, 1}}, {{5001, 2}}});
}

template <class Record>
std::string Chosen(const std::vector<Record>& records) {
  std::string names;
  for (const Record& record : records) names += record.chosen ? Name(record.name) + ' ' : "";
  return names;
}

struct RuleCase {
  uint8_t options;
  const char* chosen;
  std::vector<uint32_t> ticked;  // by satellite, where something was found
};

TEST(Wizard, RememberedCarrierOptions) {
  const RuleCase cases[] = {
      {0, "", {0, 0, 0}},
      {kAllCarriers, "0 1 2 3 4 ", {1, 1, 1}},
      {kCBand, "0 3 ", {2, 2, 0}},
      {kKuBand, "1 2 4 ", {4, 0, 4}},
      {kVerticalPolar, "1 3 ", {8, 8, 0}},
      {kHorizontalPolar, "0 2 ", {16, 0, 0}},
      {kCBand | kVerticalPolar, "0 1 3 ", {10, 10, 0}},  // either rule suffices
  };
  for (const RuleCase& c : cases) {
    WorkFiles work = Standard();
    Wizard wizard(work);
    ChooseEverySatellite(wizard, true);
    wizard.carrier_options = c.options;
    BeginCarrierStep(wizard);
    EXPECT_EQ(Chosen(work.carriers), c.chosen) << int{c.options};
    for (size_t i = 0; i < 3; ++i)
      EXPECT_EQ(CarrierOptions(wizard, i), c.ticked[i]) << int{c.options} << ' ' << i;
  }
}

TEST(Wizard, RememberedServiceOptions) {
  const RuleCase cases[] = {
      {0, "", {0}},
      {kAllServices, "1t 1T 1r 1R ", {1}},
      {kFreeServices, "1t 1r ", {2}},
      {kScrambled, "1T 1R ", {4}},
      {kTvServices, "1t 1T ", {8}},
      {kRadioServices, "1r 1R ", {16}},
      {kFreeServices | kTvServices, "1t 1T 1r ", {10}},
  };
  for (const RuleCase& c : cases) {
    WorkFiles work = Standard();
    Wizard wizard(work);
    ChooseSatellite(wizard, 0, true);
    ChooseCarrier(wizard, 1, true);
    ChooseCarrier(wizard, 3, true);  // of a satellite that is not chosen
    wizard.service_options = c.options;
    BeginServiceStep(wizard);
    EXPECT_EQ(Chosen(work.services), c.chosen) << int{c.options};
    EXPECT_EQ(ServiceOptions(wizard, 1), c.ticked[0]);
  }
}

// Marks stand at fixed bits, so that work files can be looked at from outside.
TEST(Wizard, MarksInTheRecords) {
  WorkFiles work = MakeWork({{{4000, 1}}});
  Wizard wizard(work);
  ChooseSatellite(wizard, 0, true);
  SetCarrierOption(wizard, 0, kVerticalPolar, true);
  SetServiceOption(wizard, 0, kFreeServices, true);
  EXPECT_EQ(BytesOfRecords(work.satellites)[5], 0x02 | 0x20);
  EXPECT_EQ(BytesOfRecords(work.carriers)[10], 0x04 | 0x10);
  EXPECT_EQ(BytesOfRecords(work.services)[6], 0x40);
}

TEST(Wizard, TickingAddsAndUntickingRecomputes) {
  WorkFiles work = Standard();
  Wizard wizard(work);
  ChooseSatellite(wizard, 0, true);
  ChooseCarrier(wizard, 1, true);
  SetCarrierOption(wizard, 0, kCBand, true);
  EXPECT_EQ(Chosen(work.carriers), "0 1 ");
  SetCarrierOption(wizard, 0, kHorizontalPolar, true);
  EXPECT_EQ(Chosen(work.carriers), "0 1 2 ");
  SetCarrierOption(wizard, 0, kCBand, false);
  EXPECT_EQ(Chosen(work.carriers), "0 2 ");  // the one ticked by hand is lost
  EXPECT_EQ(wizard.carrier_options, 0);
  ChooseSatellite(wizard, 1, true);
  SetCarrierOption(wizard, std::nullopt, kVerticalPolar, true);
  EXPECT_EQ(Chosen(work.carriers), "0 1 2 3 ");
  EXPECT_EQ(wizard.carrier_options, kVerticalPolar);
  SetCarrierOption(wizard, std::nullopt, kVerticalPolar, false);
  EXPECT_EQ(Chosen(work.carriers), "0 2 ");
  EXPECT_EQ(CarrierOptions(wizard, std::nullopt), 0);
}

TEST(Wizard, UntickingASatelliteClearsWhatIsBelow) {
  WorkFiles work = Standard();
  Wizard wizard(work);
  ChooseEverySatellite(wizard, true);
  SetCarrierOption(wizard, std::nullopt, kAllCarriers, true);
  SetServiceOption(wizard, std::nullopt, kAllServices, true);
  ChooseSatellite(wizard, 0, false);
  EXPECT_EQ(Chosen(work.satellites), "B C ");
  EXPECT_EQ(Chosen(work.carriers), "3 4 ");
  EXPECT_EQ(Chosen(work.services), "3t 3T 3r 3R 4t 4T 4r 4R ");
  EXPECT_EQ(ServiceOptions(wizard, 0), 0);
  EXPECT_EQ(CarrierOptions(wizard, 0), kAllCarriers);
  EXPECT_FALSE(IsEverySatelliteChosen(wizard));
  EXPECT_EQ(ChosenSatelliteCount(wizard), 2u);
}

TEST(Wizard, AllRows) {
  WorkFiles work = Standard();
  Wizard wizard(work);
  ChooseSatellite(wizard, 0, true);
  ChooseCarriersOf(wizard, 0, true);
  EXPECT_EQ(Chosen(work.carriers), "0 1 2 ");
  ChooseServicesOf(wizard, 2, true);
  ChooseService(wizard, 9, false);
  EXPECT_EQ(Chosen(work.services), "2t 2r 2R ");
  EXPECT_EQ(SelectedServicesText(wizard, 2), "2 selected service(s) - 3/4");
  EXPECT_EQ(TotalSelectedServicesText(wizard), "Total selected services - 3");
  WorkFiles none;
  EXPECT_FALSE(IsEverySatelliteChosen(Wizard(none)));
}

TEST(Wizard, CompactionRenumbers) {
  WorkFiles work = Standard();
  Wizard wizard(work);
  ChooseSatellite(wizard, 0, true);
  ChooseSatellite(wizard, 2, true);
  ChooseCarrier(wizard, 1, true);
  ChooseCarrier(wizard, 3, true);  // its satellite is not chosen
  ChooseCarrier(wizard, 4, true);
  ChooseService(wizard, 0, true);  // its carrier is not chosen
  ChooseService(wizard, 5, true);
  ChooseService(wizard, 7, true);
  CompactWorkFiles(wizard);
  EXPECT_EQ(Names(work.satellites), "A|C");
  EXPECT_EQ(Names(work.carriers), "1|4");
  EXPECT_EQ(Names(work.services), "1T|1R");
  EXPECT_EQ(work.satellites[0].first_carrier, 0u);
  EXPECT_EQ(work.satellites[0].carrier_count, 1u);
  EXPECT_EQ(work.satellites[1].first_carrier, 1u);
  EXPECT_EQ(work.carriers[1].satellite_index, 1u);
  EXPECT_EQ(work.carriers[0].service_count, 2u);
  EXPECT_EQ(work.carriers[1].first_service, 2u);  // number of services before it
  EXPECT_EQ(work.carriers[1].service_count, 0u);
  EXPECT_EQ(work.services[0].carrier_index, 0u);
}

TEST(Wizard, EverythingChosenKeepsCarriersUntickedByHand) {
  for (const bool remembered : {true, false}) {
    WorkFiles work = Standard();
    Wizard wizard(work);
    ChooseEverySatellite(wizard, true);
    wizard.carrier_options = remembered ? kAllCarriers : kCBand | kKuBand;
    BeginCarrierStep(wizard);
    ChooseCarrier(wizard, 1, false);
    wizard.service_options = kTvServices;
    BeginServiceStep(wizard);
    CompactWorkFiles(wizard);
    EXPECT_EQ(Names(work.carriers), remembered ? "0|1|2|3|4" : "0|2|3|4");
    EXPECT_EQ(Names(work.services), "0t|0T|2t|2T|3t|3T|4t|4T");
    EXPECT_EQ(work.carriers[1].first_service, 2u);
    EXPECT_EQ(work.carriers[1].service_count, remembered ? 0u : 2u);
  }
}

// Lists whose services name the carrier behind their own keep doing so.
TEST(Wizard, CompactionKeepsIndicesThatAreOneTooHigh) {
  WorkFiles work = Standard();
  for (WorkService& service : work.services) service.carrier_index = (service.carrier_index + 1) & 0xFFFF;
  Wizard wizard(work);
  ChooseSatellite(wizard, 1, true);
  ChooseCarriersOf(wizard, 1, true);
  ChooseServicesOf(wizard, 3, true);
  CompactWorkFiles(wizard);
  ASSERT_EQ(work.services.size(), 4u);
  EXPECT_EQ(work.services[0].carrier_index, 1u);
}

// Random choices: what is left is what an item-by-item walk keeps, and all ranges fit together.
TEST(Wizard, RandomChoices) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    std::vector<std::vector<CarrierSketch>> sketch(random() % 6);
    for (auto& carriers : sketch) {
      carriers.resize(random() % 5);
      for (auto& carrier : carriers)
        carrier = {static_cast<uint32_t>(random() % 10000), static_cast<uint32_t>(random() % 4)};
    }
    WorkFiles work = MakeWork(sketch);
    Wizard wizard(work);
    for (auto& record : work.satellites) record.chosen = random() % 3 != 0;
    for (auto& record : work.carriers) record.chosen = random() % 2;
    for (auto& record : work.services) record.chosen = random() % 2;
    std::string satellites, carriers, services;
    for (const WorkSatellite& satellite : work.satellites)
      satellites += satellite.chosen ? Name(satellite.name) : "";
    for (const WorkCarrier& carrier : work.carriers) {
      if (!carrier.chosen || !work.satellites[carrier.satellite_index].chosen) continue;
      carriers += Name(carrier.name) + ' ';
      for (uint32_t i = 0; i < 4; ++i) {
        const WorkService& service = work.services[carrier.first_service + i];
        services += service.chosen ? Name(service.name) + ' ' : "";
      }
    }
    CompactWorkFiles(wizard);
    std::string kept_satellites, kept_carriers, kept_services;
    size_t carrier_number = 0, service_number = 0;
    for (size_t i = 0; i < work.satellites.size(); ++i) {
      kept_satellites += Name(work.satellites[i].name);
      EXPECT_EQ(work.satellites[i].first_carrier, carrier_number);
      for (uint32_t j = 0; j < work.satellites[i].carrier_count; ++j, ++carrier_number) {
        const WorkCarrier& carrier = work.carriers.at(carrier_number);
        kept_carriers += Name(carrier.name) + ' ';
        EXPECT_EQ(carrier.satellite_index, i);
        EXPECT_EQ(carrier.first_service, service_number);
        for (uint32_t k = 0; k < carrier.service_count; ++k, ++service_number) {
          kept_services += Name(work.services.at(service_number).name) + ' ';
          EXPECT_EQ(work.services[service_number].carrier_index, carrier_number);
        }
      }
    }
    ASSERT_EQ(kept_satellites, satellites) << round;
    ASSERT_EQ(kept_carriers, carriers) << round;
    ASSERT_EQ(kept_services, services) << round;
    ASSERT_EQ(work.services.size(), service_number) << round;
  }
}

TEST(Wizard, DamagedRangesStayInsideTheFiles) {
  WorkFiles work = Standard();
  for (WorkSatellite& satellite : work.satellites) {
    satellite.first_carrier = 2;
    satellite.carrier_count = 65535;
  }
  for (WorkCarrier& carrier : work.carriers) {
    carrier.first_service = 65535;
    carrier.service_count = 9;
  }
  Wizard wizard(work);
  ChooseEverySatellite(wizard, true);
  SetCarrierOption(wizard, std::nullopt, kKuBand, true);
  SetServiceOption(wizard, std::nullopt, kAllServices, true);
  EXPECT_EQ(TotalSelectedCarriersText(wizard), "Total selected carriers - 2");
  CompactWorkFiles(wizard);
  EXPECT_EQ(Names(work.carriers), "2|4");
  EXPECT_EQ(work.satellites[0].carrier_count, 2u);
  EXPECT_EQ(work.satellites[1].carrier_count, 0u);
  EXPECT_TRUE(work.services.empty());
}

TEST(Wizard, Texts) {
  WorkFiles work = Standard();
  Wizard wizard(work);
  work.satellites[0].angle = 192;
  work.satellites[0].east = 1;
  SetName(work.satellites[0].name, "T\xFCrk");
  ChooseSatellite(wizard, 0, true);
  ChooseCarrier(wizard, 1, true);
  EXPECT_EQ(SatelliteInformation(work.satellites[0]), "Angle - 019.2\tEast/West Flag - East");
  EXPECT_EQ(SatelliteInformation(work.satellites[1]), "Angle - 000.0\tEast/West Flag - West");
  EXPECT_EQ(TotalSatellitesText(wizard), "Total Satellite(s) - 3");
  EXPECT_EQ(SelectedSatellitesText(wizard), "   Selected satellite(s) - 1");
  work.carriers[1].symbol_rate = 27500;
  EXPECT_EQ(CarrierInformation(work.carriers[1]),
            "Frequency - 11000   Symbol rate - 27500   Polarization - Vertical");
  EXPECT_EQ(SelectedCarriersText(wizard, 0), "T\xC3\xBCrk selected carrier(s) - 1/3");
  EXPECT_EQ(TotalSelectedCarriersText(wizard), "Total selected carriers - 1");
  work.services[1].video_pid = 401;
  work.services[1].audio_pid = 402;
  work.services[1].pcr_pid = 8192;
  EXPECT_EQ(ServiceInformation(work.services[1]),
            "TV   \tVideo PID - 401      Audio PID - 402      PCR PID - 8192     Scrambled");
  EXPECT_EQ(ServiceInformation(work.services[2]),
            "Radio\tVideo PID - 0        Audio PID - 0        PCR PID - 0        ");
}

}  // namespace
}  // namespace vexa
