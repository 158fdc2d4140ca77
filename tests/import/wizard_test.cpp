#include <gtest/gtest.h>

#include <random>

#include "tests/import/wizard_maker.h"

namespace vexa {
namespace {

template <class Record>
std::string Chosen(const std::vector<Record>& records) {
  std::string names;
  for (const Record& record : records) names += record.chosen ? Name(record.name) + ' ' : "";
  return names;
}

TEST(Wizard, RememberedCarrierOptions) {
  const struct {
    uint8_t options;
    const char* chosen;
    std::vector<uint8_t> ticked;  // by satellite, where something was found
  } cases[] = {
      {0, "", {0, 0, 0}},
      {kAllCarriers, "0 1 2 3 4 ", {1, 1, 1}},
      {kCBand, "0 3 ", {2, 2, 0}},
      {kKuBand, "1 2 4 ", {4, 0, 4}},
      {kVerticalPolar, "1 3 ", {8, 8, 0}},
      {kHorizontalPolar, "0 2 ", {16, 0, 0}},
      {kCBand | kVerticalPolar, "0 1 3 ", {10, 10, 0}},  // either rule suffices
  };
  for (const auto& c : cases) {
    WorkRecords work = MakeWork();
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
  const std::pair<uint8_t, const char*> cases[] = {
      {0, ""},
      {kAllServices, "1t 1T 1r 1R "},
      {kFreeServices, "1t 1r "},
      {kScrambled, "1T 1R "},
      {kTvServices, "1t 1T "},
      {kRadioServices, "1r 1R "},
      {kFreeServices | kTvServices, "1t 1T 1r "},
  };
  for (const auto& [options, chosen] : cases) {
    WorkRecords work = MakeWork();
    Wizard wizard(work);
    ChooseSatellite(wizard, 0, true);
    ChooseCarrier(wizard, 1, true);
    ChooseCarrier(wizard, 3, true);  // of a satellite that is not chosen
    wizard.service_options = options;
    BeginServiceStep(wizard);
    EXPECT_EQ(Chosen(work.services), chosen) << int{options};
    EXPECT_EQ(ServiceOptions(wizard, 1), options);
  }
}

// Marks stand at fixed bits, so that work files can be looked at from outside.
TEST(Wizard, MarksInTheRecords) {
  WorkRecords work = MakeWork({{{4000, 1}}});
  Wizard wizard(work);
  ChooseSatellite(wizard, 0, true);
  SetCarrierOption(wizard, 0, kVerticalPolar, true);
  SetServiceOption(wizard, 0, kFreeServices, true);
  EXPECT_EQ(BytesOfRecords(work.satellites)[5], 0x02 | 0x20);
  EXPECT_EQ(BytesOfRecords(work.carriers)[10], 0x04 | 0x10);
  EXPECT_EQ(BytesOfRecords(work.services)[6], 0x40);
}

TEST(Wizard, TickingAddsAndUntickingRecomputes) {
  WorkRecords work = MakeWork();
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
  WorkRecords work = MakeWork();
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

TEST(Wizard, NoSatelliteIsNotEverySatellite) {
  WorkRecords none;
  EXPECT_FALSE(IsEverySatelliteChosen(Wizard(none)));
}

TEST(Wizard, EverythingChosenKeepsCarriersUntickedByHand) {
  for (const bool remembered : {true, false}) {
    WorkRecords work = MakeWork();
    Wizard wizard(work);
    ChooseEverySatellite(wizard, true);
    wizard.carrier_options = remembered ? kAllCarriers : kCBand | kKuBand;
    BeginCarrierStep(wizard);
    ChooseCarrier(wizard, 1, false);
    wizard.service_options = kTvServices;
    BeginServiceStep(wizard);
    CompactWorkRecords(wizard);
    EXPECT_EQ(Names(work.carriers), remembered ? "0|1|2|3|4" : "0|2|3|4");
    EXPECT_EQ(Names(work.services), "0t|0T|2t|2T|3t|3T|4t|4T");
    EXPECT_EQ(work.carriers[1].first_service, 2u);
    EXPECT_EQ(work.carriers[1].service_count, remembered ? 0u : 2u);
  }
}

// Lists whose services name the carrier behind their own keep doing so.
TEST(Wizard, CompactionKeepsIndicesThatAreOneTooHigh) {
  WorkRecords work = MakeWork();
  for (WorkService& service : work.services) service.carrier_index = (service.carrier_index + 1) & 0xFFFF;
  Wizard wizard(work);
  ChooseSatellite(wizard, 1, true);
  SetCarrierOption(wizard, 1, kAllCarriers, true);
  SetServiceOption(wizard, 3, kAllServices, true);
  CompactWorkRecords(wizard);
  ASSERT_EQ(work.services.size(), 4u);
  EXPECT_EQ(work.services[0].carrier_index, 1u);
}

// Satellites with their carriers and these with their services, as the records name each other.
std::string Outline(const WorkRecords& work) {
  std::string outline;
  size_t carriers = 0, services = 0;
  for (size_t i = 0; i < work.satellites.size(); ++i) {
    const WorkSatellite& satellite = work.satellites[i];
    outline += Name(satellite.name);
    EXPECT_EQ(satellite.first_carrier, carriers);
    for (const size_t end = carriers + satellite.carrier_count; carriers < end; ++carriers) {
      const WorkCarrier& carrier = work.carriers.at(carriers);
      outline += ' ' + Name(carrier.name);
      EXPECT_EQ(carrier.satellite_index, i);
      EXPECT_EQ(carrier.first_service, services);
      for (const size_t last = services + carrier.service_count; services < last; ++services) {
        outline += ' ' + Name(work.services.at(services).name);
        EXPECT_EQ(work.services[services].carrier_index, carriers);
      }
    }
  }
  EXPECT_EQ(work.carriers.size(), carriers);
  EXPECT_EQ(work.services.size(), services);
  return outline;
}

// Random choices: what is left is what an item-by-item walk keeps, and all ranges fit together.
TEST(Wizard, CompactionOfRandomChoices) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    std::vector<std::vector<CarrierSketch>> sketch(random() % 6);
    for (auto& carriers : sketch) carriers.resize(random() % 5);
    WorkRecords work = MakeWork(sketch);
    Wizard wizard(work);
    for (auto& record : work.satellites) record.chosen = random() % 3 != 0;
    for (auto& record : work.carriers) record.chosen = random() % 2;
    for (auto& record : work.services) record.chosen = random() % 2;
    std::string kept;
    for (size_t s = 0, c = 0; s < sketch.size(); ++s) {
      const bool satellite = work.satellites[s].chosen;
      if (satellite) kept += Name(work.satellites[s].name);
      for (const size_t end = c + sketch[s].size(); c < end; ++c) {
        if (!satellite || !work.carriers[c].chosen) continue;
        kept += ' ' + Name(work.carriers[c].name);
        for (size_t i = 4 * c; i < 4 * c + 4; ++i)
          kept += work.services[i].chosen ? ' ' + Name(work.services[i].name) : "";
      }
    }
    CompactWorkRecords(wizard);
    ASSERT_EQ(Outline(work), kept) << round;
  }
}

TEST(Wizard, DamagedRangesStayInsideTheFiles) {
  WorkRecords work = MakeWork();
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
  CompactWorkRecords(wizard);
  EXPECT_EQ(Names(work.carriers), "2|4");
  EXPECT_EQ(work.satellites[0].carrier_count, 2u);
  EXPECT_EQ(work.satellites[1].carrier_count, 0u);
  EXPECT_TRUE(work.services.empty());
}

TEST(Wizard, Texts) {
  WorkRecords work = MakeWork();
  Wizard wizard(work);
  work.satellites[0].angle = 192;
  work.satellites[0].east = 1;
  ChooseSatellite(wizard, 0, true);
  EXPECT_EQ(SatelliteInformation(work.satellites[0]), "Angle - 019.2\tEast/West Flag - East");
  EXPECT_EQ(SatelliteInformation(work.satellites[1]), "Angle - 000.0\tEast/West Flag - West");
  EXPECT_EQ(TotalSatellitesText(wizard), "Total Satellite(s) - 3");
  EXPECT_EQ(SelectedSatellitesText(wizard), "   Selected satellite(s) - 1");
  work.carriers[1].symbol_rate = 27500;
  EXPECT_EQ(CarrierInformation(work.carriers[1]),
            "Frequency - 11000   Symbol rate - 27500   Polarization - Vertical");
  work.services[0].video_pid = 401;
  work.services[0].audio_pid = 402;
  work.services[0].pcr_pid = 8192;
  EXPECT_EQ(ServiceInformation(work.services[0]),
            "TV   \tVideo PID - 401      Audio PID - 402      PCR PID - 8192     ");
}

}  // namespace
}  // namespace vexa
