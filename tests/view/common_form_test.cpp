// One dialog for several records, beside a slow model that stores each record by itself.
#include "view/common_form.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "view/tree_path.h"

namespace vexa {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Commons : testing::Test {
  Recorder recorder;
  const Messages& messages = recorder.context.messages;
  Document document = SmallDocument();
  StaticDatabase& database = *document.sdbs[0].database;

  std::vector<NodeRef> Below(const TreePath& path) {
    return ListBelow(document, NodesAlong(document, path).back(), ListView::kBelow, false).rows;
  }
};

// Two records: `differing` gives the fields in which they differ, `empty` what those show together, `shared`
// the others, of which the first one is refused when it is empty or `wrong`.
template <class Show, class Differing, class Empty, class Shared, class Values>
void ExpectWhatDiffersStays(Document& document, const std::vector<NodeRef>& rows, Show show,
                            Differing differing, const Empty& empty, Shared shared, const Values& values,
                            const char* wrong) {
  const auto own = [&](size_t row) { return differing(show({rows[row]}).form); };
  const auto before = std::pair(own(0), own(1));
  const auto shown = show(rows);
  EXPECT_EQ(differing(shown.form), empty);
  auto entered = shown;
  shared(entered.form) = values;
  EXPECT_FALSE(StoreCommon(document, rows, shown, entered));
  for (const char* text : {"", wrong}) {
    std::get<0>(shared(entered.form)) = text;
    EXPECT_TRUE(StoreCommon(document, rows, shown, entered).has_value()) << text;
  }
  EXPECT_EQ(std::pair(own(0), own(1)), before);
  auto after = show(rows);
  EXPECT_EQ(after.differing, shown.differing);
  EXPECT_TRUE(shared(after.form) == values);
}

TEST_F(Commons, WhatDiffersIsEmptyAndStays) {
  const auto rows = Below({0, 1, 0});
  rows[1].carrier->record.fec = 4;
  rows[1].carrier->record.user = 1;
  ASSERT_TRUE(CommonCarriers(rows).Differs(&CarrierForm::factory_default));
  ExpectWhatDiffersStays(
      document, rows, [](const std::vector<NodeRef>& all) { return CommonCarriers(all); },
      [](const CarrierForm& form) { return std::tuple(form.name, form.frequency, form.fec); },
      std::tuple("", "", kNoCode),
      [](CarrierForm& form) { return std::tie(form.symbol_rate, form.polarization); },
      std::tuple("22000", uint32_t{kVertical}), "999");
  document.ubis.push_back(document.ubis[0]);
  document.ubis[0].name = "One";
  document.ubis[0].record.time_zone = 2;
  document.ubis[1].record.flags = 0x40;
  ASSERT_TRUE(CommonUbis(document, Below({1})).Differs(&UbiForm::parental_lock));
  ExpectWhatDiffersStays(
      document, Below({1}), [&](const std::vector<NodeRef>& all) { return CommonUbis(document, all); },
      [](const UbiForm& form) { return std::tuple(form.name, form.time_zone); }, std::tuple("", kNoZone),
      [](UbiForm& form) { return std::tie(form.rf_channel, form.screen); }, std::tuple("68", 2u), "70");
}

TEST_F(Commons, OneThatIsRefusedLeavesAllAsTheyWere) {
  const auto rows = Below({0, 1, 0});
  database.lnbs[0].type = kLnbUniversal;
  rows[1].carrier->record.frequency = 3;
  const auto shown = CommonCarriers(rows);
  auto entered = shown;
  entered.form.name = "Both";
  const auto refusal = StoreCommon(document, rows, shown, entered);
  ASSERT_TRUE(refusal.has_value());
  EXPECT_EQ(refusal->text, "[ 2 ] S1C2:\nCarrier frequency should be in the range of 10700 - 12750");
  EXPECT_EQ(refusal->field, kFieldFrequency);
  EXPECT_EQ(NameOf(rows[0].carrier->record.name), "S1C1");
  const auto services = Below({0, 1, 0, 0});
  const auto shown_services = CommonServices(services, false);
  auto numbers = shown_services;
  numbers.form.program_number = "7";
  EXPECT_EQ(StoreCommon(messages, document, services, shown_services, numbers, false)->text,
            "[ 2 ] S1C1P2:\nService program number already exists.");
  EXPECT_EQ(services[0].service->record.program_number, 1u);
  const CodePage& page = *FindCodePage("Windows-1251");
  SetName(database.satellites[0]->record.name, "\xDF");
  const auto satellites = Below({0, 1});
  const auto shown_satellites = CommonSatellites(satellites, page);
  auto positions = shown_satellites;
  positions.form.position = "65";
  EXPECT_EQ(StoreCommon(messages, satellites, shown_satellites, positions, page)->text.substr(0, 10),
            "[ 1 ] Я:\n");
}

TEST_F(Commons, ServicesAreAskedOnceAndLeaveTheirListsWithAWord) {
  const auto rows = Below({0, 1, 0, 0});
  database.favourites[0].tv = {database.services[0], database.services[5]};
  database.favourites[3].tv = {database.services[1], database.services[0]};
  const auto shown = CommonServices(rows, false);
  auto entered = shown;
  entered.form.audio_pid = "9";
  entered.form.type = kRadio;
  EXPECT_FALSE(StoreCommon(messages, document, rows, shown, entered, false));
  EXPECT_THAT(
      recorder.Texts(),
      ElementsAre("Invalid Audio PID.\nDo you want to update default PID ?",
                  "Removed from favourite lists: 3.\nA service that changes between TV and radio leaves "
                  "the lists of its old type."));
  EXPECT_THAT(database.favourites[0].tv, ElementsAre(database.services[5]));
  EXPECT_THAT(database.favourites[3].tv, IsEmpty());
  for (const NodeRef& row : rows) EXPECT_EQ(row.service->record.audio_pid, kNoPid);
  // What is refused gives them back.
  recorder.answer = false;
  const auto second = Below({0, 1, 0, 1});
  const auto shown_second = CommonServices(second, false);
  entered = shown_second;
  entered.form.type = kRadio;
  entered.form.pcr_pid = "1";
  EXPECT_TRUE(StoreCommon(messages, document, second, shown_second, entered, false).has_value());
  EXPECT_THAT(database.favourites[0].tv, ElementsAre(database.services[5]));
  EXPECT_EQ(second[0].service->record.type, kTv);
}

TEST_F(Commons, SatellitesAndLnbs) {
  const auto satellites = Below({0, 1});
  const auto shown = CommonSatellites(satellites);
  EXPECT_FALSE(shown.Differs(&SatelliteForm::east));
  auto entered = shown;
  entered.form.east = false;
  entered.form.lnb_index = 1;
  EXPECT_FALSE(StoreCommon(messages, satellites, shown, entered));
  for (const NodeRef& row : satellites) {
    EXPECT_EQ(row.satellite->record.east, 0u);
    EXPECT_EQ(row.satellite->record.lnb_index, 1u);
  }
  EXPECT_EQ(satellites[1].satellite->record.angle, 130u);
  entered.form.angle = "0";
  EXPECT_FALSE(StoreCommon(messages, satellites, shown, entered));
  EXPECT_THAT(recorder.Texts(), ElementsAre("Invalid satellite angle.")) << "once";
  const auto lnbs = Below({0, 0});
  database.lnbs[1].switch_type = kSwitchDiseqc;
  database.lnbs[1].diseqc_switch = 2;
  const auto shown_lnbs = CommonLnbs(document, lnbs);
  auto power = shown_lnbs;
  power.form.power = 0;
  EXPECT_FALSE(StoreCommon(document, lnbs, shown_lnbs, power, 0));
  EXPECT_EQ(database.lnbs[0].power + database.lnbs[1].power, 0u);
  EXPECT_EQ(database.lnbs[1].diseqc_switch, 2u);
  EXPECT_EQ(database.lnbs[0].switch_type, kSwitchNone);
}

// Random forms for random services: the same as storing each by itself, field by field.
TEST(RandomCommons, DoWhatStoringEachDoes) {
  std::mt19937 random(12);
  Recorder recorder;
  for (int round = 0; round < 80; ++round) {
    Document document = MakeRandomDocument(random), model;
    for (OpenSdb& sdb : document.sdbs)
      model.sdbs.push_back({sdb.slot, sdb.name, CopyDatabase(*sdb.database)});
    const auto rows_of = [](const Document& of) {
      return ListBelow(of, RootNodes(of)[0], ListView::kServices, false).rows;
    };
    auto rows = rows_of(document), model_rows = rows_of(model);
    if (rows.size() < 2) continue;
    const auto shown = CommonServices(rows, false);
    auto entered = shown;
    if (random() % 2) entered.form.name = "Same";
    if (random() % 2) entered.form.audio_pid = std::to_string(random() % 9000);
    if (random() % 2) entered.form.type = random() % 2 ? uint32_t{kTv} : uint32_t{kRadio};
    if (random() % 2) entered.form.free = !entered.form.free, entered.differing.clear();
    const bool done = !StoreCommon(recorder.context.messages, document, rows, shown, entered, false);
    bool model_done = true;
    for (NodeRef& row : model_rows) {
      ServiceForm form = ServiceFormOf(row.service->record, false);
      if (entered.form.name != shown.form.name) form.name = entered.form.name;
      if (entered.form.audio_pid != shown.form.audio_pid) form.audio_pid = entered.form.audio_pid;
      if (entered.form.type != shown.form.type && !(entered.form.type == kRadio && form.type != kTv))
        form.type = entered.form.type;
      if (entered.differing != shown.differing || entered.form.free != shown.form.free)
        form.free = entered.form.free;
      if (StoreService(recorder.context.messages, form, false, *model.sdbs[0].database, *row.service)) {
        model_done = false;
        break;
      }
    }
    EXPECT_EQ(done, model_done) << round;
    if (done) {
      EXPECT_EQ(DatabaseDifference(*document.sdbs[0].database, *model.sdbs[0].database), "") << round;
    }
    EXPECT_EQ(CheckLinks(*document.sdbs[0].database), "");
  }
}

}  // namespace

}  // namespace vexa
