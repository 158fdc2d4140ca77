#include "view/wizard_step.h"

#include <gtest/gtest.h>

#include "tests/import/wizard_maker.h"

namespace vexa {
namespace {

std::string Ticks(const WizardStep& step) {
  std::string ticks;
  for (size_t row = 0; row < ItemRows(step); ++row) ticks += IsItemTicked(step, row) ? 'x' : '.';
  return ticks;
}

TEST(WizardStep, CarriersOfOneSatelliteAndOfAll) {
  WorkRecords work = MakeWork();
  SetName(work.satellites[0].name, "Sat \xFC");
  Wizard wizard(work);
  ChooseSatellite(wizard, 0, true);
  ChooseSatellite(wizard, 2, true);
  WizardStep step = CarrierStep(wizard);
  ASSERT_EQ(OwnerRows(step), 3u);
  EXPECT_EQ(OwnerText(step, 0), "All satellites");
  EXPECT_EQ(OwnerText(step, 1), "Sat \xC3\xBC");
  ASSERT_EQ(ItemRows(step), 5u) << "the carriers of both";
  EXPECT_EQ(ItemText(step, 0), "All Carriers");
  EXPECT_EQ(ItemText(step, 4), "4");
  EXPECT_EQ(ItemInformation(step, 0), "");
  EXPECT_EQ(ItemInformation(step, 4), "Frequency - 5001    Symbol rate - 0       Polarization - Left");
  EXPECT_EQ(ItemInformation(step, 5), "");

  HighlightOwner(step, 1);
  ASSERT_EQ(ItemRows(step), 4u);
  TickItem(step, 2, true);
  EXPECT_EQ(Ticks(step), "..x.");
  EXPECT_EQ(StepSelectedText(step), "Sat \xC3\xBC selected carrier(s) - 1/3");
  TickItem(step, 0, true);
  EXPECT_EQ(Ticks(step), "xxxx");
  EXPECT_EQ(StepTotalText(step), "Total selected carriers - 3");
  HighlightOwner(step, 0);
  EXPECT_EQ(Ticks(step), ".xxx.");
  EXPECT_EQ(StepSelectedText(step), "All satellites selected carrier(s) - 3/4");
  TickItem(step, 0, true);
  EXPECT_EQ(Ticks(step), "xxxxx");
  EXPECT_FALSE(work.carriers[3].chosen) << "of a satellite that is not chosen";
  HighlightOwner(step, 7);
  EXPECT_EQ(step.owner_row, 0u);
}

TEST(WizardStep, OptionsOfOneOwnerAreNotThoseOfAll) {
  WorkRecords work = MakeWork();
  Wizard wizard(work);
  ChooseEverySatellite(wizard, true);
  WizardStep step = CarrierStep(wizard);
  HighlightOwner(step, 1);
  SetStepOption(step, kCBand, true);
  EXPECT_EQ(StepOptions(step), kCBand);
  EXPECT_EQ(Ticks(step), ".x..");
  HighlightOwner(step, 0);
  EXPECT_EQ(StepOptions(step), 0) << "nothing is remembered from one satellite";
  EXPECT_EQ(Ticks(step), ".x....");
  SetStepOption(step, kKuBand, true);
  EXPECT_EQ(wizard.carrier_options, kKuBand);
  EXPECT_EQ(Ticks(step), ".xxx.x");
  HighlightOwner(step, 1);
  EXPECT_EQ(StepOptions(step), kCBand | kKuBand);
}

TEST(WizardStep, ServicesOfChosenCarriers) {
  WorkRecords work = MakeWork();
  Wizard wizard(work);
  ChooseSatellite(wizard, 0, true);
  ChooseCarrier(wizard, 1, true);
  ChooseCarrier(wizard, 4, true);  // its satellite is not chosen
  WizardStep step = ServiceStep(wizard);
  ASSERT_EQ(OwnerRows(step), 2u);
  EXPECT_EQ(OwnerText(step, 0), "All carriers");
  EXPECT_EQ(OwnerText(step, 1), "1");
  ASSERT_EQ(ItemRows(step), 5u);
  EXPECT_EQ(ItemText(step, 0), "All services");
  EXPECT_EQ(ItemText(step, 4), "1R");
  EXPECT_EQ(ItemInformation(step, 4),
            "Radio\tVideo PID - 0        Audio PID - 0        PCR PID - 0        Scrambled");
  SetStepOption(step, kRadioServices, true);
  EXPECT_EQ(wizard.service_options, kRadioServices);
  EXPECT_EQ(Ticks(step), "...xx");
  EXPECT_EQ(StepSelectedText(step), "All carriers selected service(s) - 2/4");
  HighlightOwner(step, 1);
  EXPECT_EQ(StepOptions(step), kRadioServices);
  TickItem(step, 1, true);
  EXPECT_EQ(Ticks(step), ".x.xx");
  EXPECT_EQ(StepSelectedText(step), "1 selected service(s) - 3/4");
  EXPECT_EQ(StepTotalText(step), "Total selected services - 3");
}

TEST(WizardStep, NothingChosenShowsTheRowsOfAll) {
  WorkRecords work;
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
  WorkRecords work = MakeWork();
  work.carriers[1].first_service = 0;
  work.carriers[1].service_count = 5;
  Wizard wizard(work);
  ChooseSatellite(wizard, 0, true);
  SetCarrierOption(wizard, 0, kAllCarriers, true);
  WizardStep step = ServiceStep(wizard);
  EXPECT_EQ(ItemRows(step), 1u + 5 + 4);
}

}  // namespace
}  // namespace vexa
