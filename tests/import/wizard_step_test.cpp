#include "import/wizard_step.h"

#include <gtest/gtest.h>

#include "tests/support/recorder.h"

namespace vexa {
namespace {

// Three satellites with two carriers each, every carrier with two services: a free TV, a scrambled radio.
WorkFiles MakeWork() {
  WorkFiles work;
  for (uint32_t s = 0; s < 3; ++s) {
    WorkSatellite satellite{};
    SetName(satellite.name, std::string("Sat \xFC") + std::to_string(s));
    satellite.first_carrier = (s * 2) & 0xFFFF;
    satellite.carrier_count = 2;
    work.satellites.push_back(satellite);
  }
  for (uint32_t c = 0; c < 6; ++c) {
    WorkCarrier carrier{};
    SetName(carrier.name, "Carrier " + std::to_string(c));
    carrier.frequency = c % 2 ? 11778 : 4000;
    carrier.symbol_rate = 27500;
    carrier.polarization = kVertical;
    carrier.first_service = (c * 2) & 0xFFFF;
    carrier.service_count = 2;
    work.carriers.push_back(carrier);
  }
  for (uint32_t i = 0; i < 12; ++i) {
    WorkService service{};
    SetName(service.name, "Service " + std::to_string(i));
    service.type = i % 2 ? kRadio : kTv;
    service.free = i % 2 == 0;
    service.video_pid = 513;
    work.services.push_back(service);
  }
  return work;
}

std::string Ticks(const WizardStep& step) {
  std::string ticks;
  for (size_t row = 0; row < ItemRows(step); ++row) ticks += IsItemTicked(step, row) ? 'x' : '.';
  return ticks;
}

TEST(WizardStep, CarriersOfOneSatelliteAndOfAll) {
  WorkFiles work = MakeWork();
  Wizard wizard(work);
  ChooseSatellite(wizard, 0, true);
  ChooseSatellite(wizard, 2, true);
  WizardStep step = CarrierStep(wizard);
  ASSERT_EQ(OwnerRows(step), 3u);
  EXPECT_EQ(OwnerText(step, 0), "All satellites");
  EXPECT_EQ(OwnerText(step, 2),
            "Sat \xC3\xBC"
            "2");
  ASSERT_EQ(ItemRows(step), 5u) << "the carriers of both";
  EXPECT_EQ(ItemText(step, 0), "All Carriers");
  EXPECT_EQ(ItemText(step, 3), "Carrier 4");
  EXPECT_EQ(ItemInformation(step, 0), "");
  EXPECT_EQ(ItemInformation(step, 3), "Frequency - 4000    Symbol rate - 27500   Polarization - Vertical");
  EXPECT_EQ(ItemInformation(step, 5), "");

  HighlightOwner(step, 2);
  ASSERT_EQ(ItemRows(step), 3u);
  TickItem(step, 2, true);
  EXPECT_EQ(Ticks(step), "..x");
  EXPECT_EQ(StepSelectedText(step),
            "Sat \xC3\xBC"
            "2 selected carrier(s) - 1/2");
  TickItem(step, 0, true);
  EXPECT_EQ(Ticks(step), "xxx");
  EXPECT_EQ(StepTotalText(step), "Total selected carriers - 2");
  HighlightOwner(step, 0);
  EXPECT_EQ(Ticks(step), "...xx");
  EXPECT_EQ(StepSelectedText(step), "All satellites selected carrier(s) - 2/4");
  TickItem(step, 0, true);
  EXPECT_EQ(Ticks(step), "xxxxx");
  EXPECT_FALSE(work.carriers[2].chosen) << "of a satellite that is not chosen";
  HighlightOwner(step, 7);
  EXPECT_EQ(step.owner_row, 0u);
}

TEST(WizardStep, OptionsOfOneOwnerAreNotThoseOfAll) {
  WorkFiles work = MakeWork();
  Wizard wizard(work);
  ChooseEverySatellite(wizard, true);
  WizardStep step = CarrierStep(wizard);
  HighlightOwner(step, 2);
  SetStepOption(step, kCBand, true);
  EXPECT_EQ(StepOptions(step), kCBand);
  EXPECT_EQ(Ticks(step), ".x.");
  HighlightOwner(step, 0);
  EXPECT_EQ(StepOptions(step), 0) << "nothing is remembered from one satellite";
  EXPECT_EQ(Ticks(step), "...x...");
  SetStepOption(step, kKuBand, true);
  EXPECT_EQ(wizard.carrier_options, kKuBand);
  EXPECT_EQ(Ticks(step), "..xxx.x");
  HighlightOwner(step, 2);
  EXPECT_EQ(StepOptions(step), kCBand | kKuBand);
}

TEST(WizardStep, ServicesOfChosenCarriers) {
  WorkFiles work = MakeWork();
  Wizard wizard(work);
  ChooseSatellite(wizard, 0, true);
  ChooseCarrier(wizard, 1, true);
  ChooseCarrier(wizard, 4, true);  // its satellite is not chosen
  WizardStep step = ServiceStep(wizard);
  ASSERT_EQ(OwnerRows(step), 2u);
  EXPECT_EQ(OwnerText(step, 0), "All carriers");
  EXPECT_EQ(OwnerText(step, 1), "Carrier 1");
  ASSERT_EQ(ItemRows(step), 3u);
  EXPECT_EQ(ItemText(step, 0), "All services");
  EXPECT_EQ(ItemText(step, 2), "Service 3");
  EXPECT_EQ(ItemInformation(step, 2),
            "Radio\tVideo PID - 513      Audio PID - 0        PCR PID - 0        Scrambled");
  SetStepOption(step, kRadioServices, true);
  EXPECT_EQ(wizard.service_options, kRadioServices);
  EXPECT_EQ(Ticks(step), "..x");
  EXPECT_EQ(StepSelectedText(step), "All carriers selected service(s) - 1/2");
  HighlightOwner(step, 1);
  EXPECT_EQ(StepOptions(step), kRadioServices);
  TickItem(step, 1, true);
  EXPECT_EQ(Ticks(step), "xxx");
  EXPECT_EQ(StepSelectedText(step), "Carrier 1 selected service(s) - 2/2");
  EXPECT_EQ(StepTotalText(step), "Total selected services - 2");
}

TEST(WizardStep, NothingChosenShowsTheRowsOfAll) {
  WorkFiles work;
  Wizard wizard(work);
  for (WizardStep step : {CarrierStep(wizard), ServiceStep(wizard)}) {
    EXPECT_EQ(OwnerRows(step), 1u);
    EXPECT_EQ(Ticks(step), ".") << "nothing is not everything";
    TickItem(step, 0, true);
    SetStepOption(step, 1, true);
    EXPECT_EQ(Ticks(step), ".");
  }
}

// Two carriers that claim the same services: each is listed once.
TEST(WizardStep, SharedRecordsAreListedOnce) {
  WorkFiles work = MakeWork();
  work.carriers[1].first_service = 0;
  work.carriers[1].service_count = 3;
  Wizard wizard(work);
  ChooseSatellite(wizard, 0, true);
  ChooseCarriersOf(wizard, 0, true);
  WizardStep step = ServiceStep(wizard);
  EXPECT_EQ(ItemRows(step), 4u);
}

}  // namespace
}  // namespace vexa
