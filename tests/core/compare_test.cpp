// Comparing, ordering like another database, and setting fields.
#include "core/compare.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "core/assign.h"
#include "core/edit.h"
#include "core/match.h"
#include "core/order_like.h"
#include "core/sort.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> LinesOf(const Document& before, const Document& after) {
  std::vector<std::string> lines;
  for (const Difference& difference : CompareDocuments(before, 0, after, 0))
    lines.push_back(DifferenceLine(difference));
  return lines;
}

struct Edit {
  const char* name;
  void (*change)(Document& document, StaticDatabase& database);
  std::vector<std::string> lines;
};

Carrier& CarrierAt(StaticDatabase& database, size_t satellite, size_t carrier) {
  return *database.satellites[satellite]->carriers[carrier];
}

const Edit kEdits[] = {
    {"nothing", [](Document&, StaticDatabase&) {}, {}},
    {"fields",
     [](Document&, StaticDatabase& d) {
       d.lnbs[1].type = 0;
       d.satellites[0]->record.position = 9;
       SetName(d.satellites[0]->record.name, "Renamed");
       CarrierAt(d, 1, 0).record.fec = 4;
       CarrierAt(d, 1, 0).services[2]->record.free = 1;
     },
     {"~ SDB1 LNB 2: type 2 -> 0", "~ SDB1 satellite 1 Renamed: name \"S1\" -> \"Renamed\", position 1 -> 9",
      "~ SDB1 satellite 2 carrier 1 S2C1: fec 0 -> 4"}},
    {"far carrier",
     [](Document&, StaticDatabase& d) {
       CarrierAt(d, 0, 0).record.frequency += 3;
       CarrierAt(d, 0, 1).record.frequency += 4;
     },
     {"~ SDB1 satellite 1 carrier 1 S1C1: frequency 11000 -> 11003", "+ SDB1 satellite 1 carrier 2 S1C2",
      "- SDB1 satellite 1 carrier 2 S1C2"}},
    {"removed and added",
     [](Document&, StaticDatabase& d) {
       DeleteServices(d, {CarrierAt(d, 0, 0).services[0]});
       Service* s = AddTestService(d, &CarrierAt(d, 0, 0));
       s->record.program_number = 77;
       SetName(s->record.name, "New");
     },
     {"- SDB1 satellite 1 carrier 1 service 1 S1C1P1", "+ SDB1 satellite 1 carrier 1 service 3 New"}},
    {"moved",
     [](Document&, StaticDatabase& d) {
       auto& list = CarrierAt(d, 0, 0).services;
       std::rotate(list.begin(), list.begin() + 2, list.end());
     },
     {"> SDB1 satellite 1 carrier 1 service 1 S1C1P3: from SDB1 satellite 1 carrier 1 service 3"}},
    {"new number, same name",
     [](Document&, StaticDatabase& d) { CarrierAt(d, 0, 0).services[1]->record.program_number = 9; },
     {"~ SDB1 satellite 1 carrier 1 service 2 S1C1P2: program_number 2 -> 9"}},
    {"satellite gone",
     [](Document&, StaticDatabase& d) { DeleteSatellites(d, {0}); },
     {"- SDB1 satellite 1 S1"}},
    {"unused places",
     [](Document&, StaticDatabase& d) {
       AddTestSatellite(d, "NewSat 1");
       AddTestSatellite(d, "NewSat x");
     },
     {"+ SDB1 satellite 4 NewSat x"}},
    {"the SDB",
     [](Document& all, StaticDatabase& d) {
       all.sdbs[0].name = "Home";
       d.compressed = true;
       std::rotate(d.service_order.begin(), d.service_order.begin() + 1, d.service_order.end());
     },
     {"~ Home: name \"SDB1\" -> \"Home\"", "~ Home: compressed 0 -> 1", "~ Home: order, 1 moved"}},
    {"favourites",
     [](Document&, StaticDatabase& d) {
       SetName(d.favourites[1].record.tv_name, "News");
       d.favourites[1].record.kept_0 = 3;
       SetName(d.favourites[1].record.radio_name, "Music");
       d.favourites[1].tv = {CarrierAt(d, 1, 1).services[0]};
     },
     {"~ SDB1 TV group 2: name \"Favourite2\" -> \"News\", kept_word0_0_3 0 -> 3",
      "+ SDB1 TV group 2 entry 1 S2C2P1", "~ SDB1 radio group 2: name \"Favourite2\" -> \"Music\""}},
    {"boxes and flags",
     [](Document& all, StaticDatabase&) {
       all.ubis[0].name = "Case";
       all.ubis[0].record.time_zone = -3;
       all.ubis[0].record.lock_code[0] = '7';
       all.ubis.push_back({"Two", {}});
       all.compress_payload = true;
       all.compress_ubis = true;
     },
     {"~ UBI1 Case: name \"Box\" -> \"Case\", time_zone 0 -> -3, lock_code \"00000000\" -> \"37000000\"",
      "+ UBI2 Two", "~ compressed 0 -> 1", "~ ubi_compressed 0 -> 1"}},
};

TEST(Compare, TellsWhatAnEditHasChanged) {
  for (const Edit& edit : kEdits) {
    SCOPED_TRACE(edit.name);
    Document before = SmallDocument();
    for (Service* service : before.sdbs[0].database->services)
      service->record.free = edit.lines.size() == 3 && std::string(edit.name) == "fields";
    Document after = CopyDocument(before);
    edit.change(after, *after.sdbs[0].database);
    EXPECT_EQ(LinesOf(before, after), edit.lines);
  }
}

TEST(Compare, NamesStandInTheirPage) {
  Document before = SmallDocument(), after = SmallDocument();
  before.names = after.names = FindCodePage("Windows-1251");
  StaticDatabase& database = *after.sdbs[0].database;
  after.sdbs[0].name = after.ubis[0].name = "\xC4\xEE\xEC";
  SetName(database.satellites[0]->record.name, "\xDF");
  SetName(database.favourites[0].record.tv_name, "\xD2\xC2");
  database.favourites[0].tv = {database.services[0]};
  SetName(database.services[0]->record.name, "\xCC");
  EXPECT_THAT(
      LinesOf(before, after),
      ElementsAre("~ Дом satellite 1 Я: name \"S1\" -> \"Я\"",
                  "~ Дом satellite 1 carrier 1 service 1 М: name \"S1C1P1\" -> \"М\"",
                  "~ Дом: name \"SDB1\" -> \"Дом\"", "~ Дом TV group 1: name \"Favourite1\" -> \"ТВ\"",
                  "+ Дом TV group 1 entry 1 М", "~ UBI1 Дом: name \"Box\" -> \"Дом\""));
}

TEST(Compare, AMoveIsToldByTheFewestRecords) {
  std::mt19937 random(5);
  for (int round = 0; round < 200; ++round) {
    std::vector<size_t> numbers(1 + random() % 9);
    for (size_t i = 0; i < numbers.size(); ++i) numbers[i] = i;
    std::shuffle(numbers.begin(), numbers.end(), random);
    size_t longest = 0;  // of all choices, by trying each
    for (uint32_t choice = 0; choice < 1u << numbers.size(); ++choice) {
      std::vector<size_t> chosen;
      for (size_t i = 0; i < numbers.size(); ++i) {
        if (choice >> i & 1) chosen.push_back(numbers[i]);
      }
      if (std::is_sorted(chosen.begin(), chosen.end())) longest = std::max(longest, chosen.size());
    }
    const auto stays = LongestAscending(numbers);
    std::vector<size_t> kept;
    for (size_t i = 0; i < numbers.size(); ++i) {
      if (stays[i]) kept.push_back(numbers[i]);
    }
    EXPECT_TRUE(std::is_sorted(kept.begin(), kept.end()));
    EXPECT_EQ(kept.size(), longest);
  }
}

TEST(Compare, CarriersTakeTheNearestThatIsFreeInTheOrderOfTheirList) {
  Document first = NewDocument(), second = NewDocument();
  const auto fill = [](Document& document, const std::vector<uint32_t>& frequencies) {
    StaticDatabase& database = *document.sdbs[0].database;
    AddTestSatellite(database, "S");
    for (const uint32_t frequency : frequencies) AddTestCarrier(database, 0)->record.frequency = frequency;
  };
  fill(first, {100, 102, 100, 200, 300});
  fill(second, {103, 99, 101, 300, 204});
  const DatabaseMatch match = MatchDatabases(*first.sdbs[0].database, *second.sdbs[0].database);
  EXPECT_THAT(match.below[0].carriers.second_of, ElementsAre(1, 0, 2, kUnmatched, 3));
}

TEST(OrderLike, AShuffledDatabaseComesBackInTheOldOrder) {
  std::mt19937 random(11);
  for (int round = 0; round < 60; ++round) {
    Document old = SmallDocument();
    StaticDatabase& database = *old.sdbs[0].database;
    database.favourites[2].tv = {database.services[4], database.services[1]};
    Document now = CopyDocument(old);
    StaticDatabase& shuffled = *now.sdbs[0].database;
    for (Satellite* satellite : shuffled.satellites) {
      for (Carrier* carrier : satellite->carriers)
        std::shuffle(carrier->services.begin(), carrier->services.end(), random);
      std::shuffle(satellite->carriers.begin(), satellite->carriers.end(), random);
      NumberCarriers(*satellite);
    }
    std::shuffle(shuffled.satellites.begin(), shuffled.satellites.end(), random);
    std::shuffle(shuffled.service_order.begin(), shuffled.service_order.end(), random);
    shuffled.favourites[2].tv.clear();
    NumberSatellites(shuffled);
    RefillAll(shuffled);
    Satellite* more = AddTestSatellite(shuffled, "More");
    more->record.angle = 3;
    AddTestCarrier(shuffled, 2);
    OrderSummary summary;
    OrderLike(database, shuffled, true, summary);
    EXPECT_EQ(CheckLinks(shuffled), "");
    EXPECT_THAT(LinesOf(old, now), ElementsAre("+ SDB1 satellite 3 More"));
    EXPECT_EQ(summary.satellites, 2u);
    EXPECT_EQ(summary.all_satellites, 3u);
    EXPECT_EQ(summary.carriers, 4u);
    EXPECT_EQ(summary.all_carriers, 5u);
    EXPECT_EQ(summary.services, 12u);
    EXPECT_EQ(summary.entries_taken, 2u);
  }
}

TEST(OrderLike, EntriesWithoutAMatchOfTheirTypeAreLeftOut) {
  Document old = SmallDocument(), now = SmallDocument();
  StaticDatabase &from = *old.sdbs[0].database, &to = *now.sdbs[0].database;
  from.favourites[0].tv = {from.services[0], from.services[1], from.services[2]};
  SetName(from.favourites[0].record.tv_name, "Best");
  to.services[0]->record.type = kRadio;
  DeleteServices(to, {to.services[1]});
  to.favourites[0].tv = {to.services[5]};
  OrderSummary summary;
  OrderLike(from, to, true, summary);
  EXPECT_EQ(summary.entries_taken, 1u);
  EXPECT_EQ(summary.entries_left_out, 2u);
  EXPECT_EQ(NamesOf(to.favourites[0].tv), std::vector<std::string>{"S1C1P3"});
  EXPECT_EQ(NameOf(to.favourites[0].record.tv_name), "Best");
}

// ---- Setting fields.

struct Setting : testing::Test {
  Recorder recorder;
  Document document = SmallDocument(), before = SmallDocument();
  std::string wrong;

  static RecordNumbers Numbers(size_t first, size_t last) { return {false, {{first, last}}}; }
  AssignResult Assign(const std::vector<Assignment>& assignments) {
    for (const Assignment& assignment : assignments) {
      for (const auto& [key, value] : assignment.fields)
        EXPECT_EQ(WrongValueText(assignment.kind, key, value), "");
    }
    return AssignFields(recorder.context.messages, document, 0, assignments, wrong);
  }
  std::vector<std::string> Changes() { return LinesOf(before, document); }
};

TEST_F(Setting, ValuesAreNumbersWordsAnglesAndCounts) {
  EXPECT_EQ(
      Assign(
          {{RecordKind::kLnb, {Numbers(1, 1)}, {{"type", "universal"}, {"frequency1", "0x2650"}}},
           {RecordKind::kSatellite,
            {{true, {}}},
            {{"position", "5.."}, {"angle", "19.2W"}, {"lnb_index", "LNB2"}}},
           {RecordKind::kCarrier, {{true, {}}, Numbers(2, 2)}, {{"fec", "3/4"}, {"symbol_rate", "0x55F0"}}},
           {RecordKind::kUbi,
            {Numbers(1, 1)},
            {{"time_zone", "-2"}, {"lock_code", "4711"}, {"screen", "16:9"}}}}),
      AssignResult::kDone);
  EXPECT_THAT(
      Changes(),
      ElementsAre("~ SDB1 LNB 1: frequency1 9750 -> 9808",
                  "~ SDB1 satellite 1 S1: lnb_index 0 -> 1, position 1 -> 5, east 1 -> 0, angle 100 -> 192",
                  "~ SDB1 satellite 1 carrier 2 S1C2: symbol_rate 27500 -> 22000, fec 0 -> 3",
                  "~ SDB1 satellite 2 S2: lnb_index 0 -> 1, position 2 -> 6, east 1 -> 0, angle 130 -> 192",
                  "~ SDB1 satellite 2 carrier 2 S2C2: symbol_rate 27500 -> 22000, fec 0 -> 3",
                  "~ UBI1 Box: time_zone 0 -> -2, screen 0 -> 1, lock_code \"00000000\" -> \"34373131\""));
}

TEST_F(Setting, WhatFitsNoFieldIsWrongUsage) {
  const struct {
    RecordKind kind;
    const char *key, *value;
  } wrongs[] = {{RecordKind::kLnb, "frequency1", "16384"},
                {RecordKind::kLnb, "name", "x"},
                {RecordKind::kSatellite, "angle", "19.2"},
                {RecordKind::kSatellite, "lnb_index", "16"},
                {RecordKind::kSatellite, "lnb_index", "LNB0"},
                {RecordKind::kSatellite, "carrier_count", "1"},
                {RecordKind::kSatellite, "user", "Yes"},
                {RecordKind::kCarrier, "symbol_rate", ""},
                {RecordKind::kCarrier, "fec", "9/10"},
                {RecordKind::kCarrier, "satellite_index", "1"},
                {RecordKind::kService, "type", "4"},
                {RecordKind::kService, "number", "1"},
                {RecordKind::kService, "name", "12345678901234567890"},
                {RecordKind::kService, "free", "-1"},
                {RecordKind::kUbi, "time_zone", "128"},
                {RecordKind::kUbi, "name", "12345678"},
                {RecordKind::kUbi, "lock_code", "12345"},
                {RecordKind::kCarrier, "frequency", "1x"}};
  for (const auto& row : wrongs)
    EXPECT_NE(WrongValueText(row.kind, row.key, row.value), "") << row.key << "=" << row.value;
  EXPECT_EQ(Assign({{RecordKind::kSatellite, {{true, {}}}, {{"position", "255.."}}}}),
            AssignResult::kWrongValue);
}

TEST_F(Setting, TheFirstRefusalInTreeOrderIsTold) {
  EXPECT_EQ(
      Assign(
          {{RecordKind::kService, {Numbers(2, 2), Numbers(1, 1), Numbers(2, 3)}, {{"program_number", "1"}}},
           {RecordKind::kCarrier, {Numbers(2, 2), Numbers(1, 1)}, {{"symbol_rate", "999"}}}}),
      AssignResult::kRefused);
  EXPECT_THAT(
      recorder.Texts(),
      ElementsAre("SDB1 satellite 2 carrier 1: Carrier symbol rate should be in the range of 1000 - 45000."));
  document = SmallDocument();
  EXPECT_EQ(
      Assign(
          {{RecordKind::kService, {Numbers(1, 1), Numbers(1, 1), Numbers(1, 1)}, {{"program_number", "3"}}}}),
      AssignResult::kRefused);
  EXPECT_THAT(recorder.Texts(),
              ElementsAre("SDB1 satellite 1 carrier 1 service 1: Service program number already exists."));
  document = SmallDocument();
  EXPECT_EQ(Assign({{RecordKind::kSatellite, {Numbers(3, 3)}, {{"user", "1"}}}}), AssignResult::kRefused);
  EXPECT_THAT(recorder.Texts(), ElementsAre("Number 3 is beyond the 2 that there are."));
  document.sdbs[0].database = std::make_unique<StaticDatabase>();
  EXPECT_EQ(Assign({{RecordKind::kSatellite, {{true, {}}}, {{"user", "1"}}}}), AssignResult::kRefused);
}

TEST_F(Setting, AServiceThatBecomesRadioLeavesTheTvListsAndItsVideo) {
  for (Document* each : {&document, &before}) {
    StaticDatabase& database = *each->sdbs[0].database;
    database.favourites[0].tv = {database.services[0], database.services[1]};
  }
  EXPECT_EQ(
      Assign({{RecordKind::kService, {Numbers(1, 1), Numbers(1, 1), Numbers(1, 1)}, {{"type", "Radio"}}},
              {RecordKind::kService,
               {Numbers(1, 1), Numbers(1, 1), Numbers(2, 2)},
               {{"video_pid", "200"}, {"type", "Radio"}}}}),
      AssignResult::kDone);
  EXPECT_THAT(Changes(),
              ElementsAre("~ SDB1 satellite 1 carrier 1 service 1 S1C1P1: video_pid 100 -> 8192, type 1 -> 2",
                          "~ SDB1 satellite 1 carrier 1 service 2 S1C1P2: video_pid 100 -> 200, type 1 -> 2",
                          "- SDB1 TV group 1 entry 1 S1C1P1", "- SDB1 TV group 1 entry 2 S1C1P2"));
}

TEST_F(Setting, AnInvalidPidAsksAndAngleZeroWarns) {
  const Assignment pid{
      RecordKind::kService, {Numbers(1, 1), Numbers(1, 1), Numbers(1, 1)}, {{"audio_pid", "9000"}}};
  recorder.answer = false;
  EXPECT_EQ(Assign({pid}), AssignResult::kRefused);
  EXPECT_THAT(
      recorder.Texts(),
      ElementsAre(
          "SDB1 satellite 1 carrier 1 service 1: Invalid Audio PID. Do you want to update default PID ?"));
  recorder.answer = true;
  EXPECT_EQ(Assign({pid, {RecordKind::kSatellite, {Numbers(1, 1)}, {{"angle", "0"}}}}), AssignResult::kDone);
  EXPECT_EQ(document.sdbs[0].database->services[0]->record.audio_pid, kNoPid);
  EXPECT_THAT(recorder.Texts(), testing::Contains("SDB1 satellite 1: Invalid satellite angle."));
}

}  // namespace
}  // namespace vexa
