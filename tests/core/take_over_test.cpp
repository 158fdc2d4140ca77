// What is taken over from one database into another, judged by comparing them again.
#include "core/take_over.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "core/complete.h"
#include "core/edit.h"
#include "core/match.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Lines(const Document& document, const Document& other) {
  std::vector<std::string> lines;
  for (const Difference& difference : CompareDocuments(document, 0, other, 0))
    lines.push_back(DifferenceLine(difference));
  return lines;
}

struct Takes : testing::Test {
  Recorder recorder;
  Document document = SmallDocument(), other = SmallDocument();
  StaticDatabase& own() { return *document.sdbs[0].database; }
  StaticDatabase& others() { return *other.sdbs[0].database; }

  std::optional<TakenOver> Take(const std::vector<std::string>& lines) {
    const auto differences = CompareDocuments(document, 0, other, 0);
    std::vector<size_t> chosen;
    for (size_t i = 0; i < differences.size(); ++i) {
      if (std::count(lines.begin(), lines.end(), DifferenceLine(differences[i])) > 0) chosen.push_back(i);
    }
    EXPECT_EQ(chosen.size(), lines.size());
    const auto taken = TakeOver(recorder.context.messages, document, 0, other, 0, differences, chosen);
    EXPECT_EQ(CheckLinks(own()), "");
    return taken;
  }
  std::optional<TakenOver> TakeAll() {
    const auto differences = CompareDocuments(document, 0, other, 0);
    std::vector<size_t> chosen(differences.size());
    std::iota(chosen.begin(), chosen.end(), size_t{0});
    return TakeOver(recorder.context.messages, document, 0, other, 0, differences, chosen);
  }
};

TEST_F(Takes, SingleDifferencesComeToTheirPlaces) {
  Service* more = PutService(others(), *others().carriers[0], others().services[0]->record, 1);
  more->record.program_number = 50;
  SetName(more->record.name, "More");
  others().service_order.push_back(more);
  DeleteServices(others(), {others().satellites[1]->carriers[0]->services[2]});
  others().carriers[1]->record.fec = 4;
  others().favourites[1].tv = {more, others().carriers[0]->services[0]};
  ASSERT_THAT(Lines(document, other),
              ElementsAre("+ SDB1 satellite 1 carrier 1 service 2 More",
                          "~ SDB1 satellite 1 carrier 2 S1C2: fec 0 -> 4",
                          "- SDB1 satellite 2 carrier 1 service 3 S2C1P3", "+ SDB1 TV group 2 entry 1 More",
                          "+ SDB1 TV group 2 entry 2 S1C1P1"));
  // Its service is not there yet.
  auto taken = Take({"+ SDB1 TV group 2 entry 1 More"});
  ASSERT_TRUE(taken.has_value());
  EXPECT_EQ(taken->taken, 0u);
  EXPECT_EQ(taken->left_out, 1u);
  Take({"+ SDB1 satellite 1 carrier 1 service 2 More", "+ SDB1 TV group 2 entry 2 S1C1P1"});
  EXPECT_EQ(NamesOf(own().carriers[0]->services),
            (std::vector<std::string>{"S1C1P1", "More", "S1C1P2", "S1C1P3"}));
  EXPECT_EQ(own().service_order.back(), own().carriers[0]->services[1]) << "the last there, too";
  Take({"+ SDB1 TV group 2 entry 1 More"});
  EXPECT_EQ(NamesOf(own().favourites[1].tv), (std::vector<std::string>{"More", "S1C1P1"}));
  Take({"- SDB1 satellite 2 carrier 1 service 3 S2C1P3"});
  EXPECT_THAT(Lines(document, other), ElementsAre("~ SDB1 satellite 1 carrier 2 S1C2: fec 0 -> 4"));
  Take({"~ SDB1 satellite 1 carrier 2 S1C2: fec 0 -> 4"});
  EXPECT_THAT(Lines(document, other), IsEmpty());
}

TEST_F(Takes, ASatelliteComesWithAllBelowIt) {
  others().satellites[0]->record.angle = 777;
  SetName(others().satellites[0]->record.name, "New");
  EXPECT_TRUE(TakeAll().has_value());
  EXPECT_THAT(Lines(document, other), IsEmpty());
  EXPECT_EQ(NamesOf(own().satellites), (std::vector<std::string>{"New", "S2"}));
  EXPECT_EQ(own().services.size(), 12u);
}

TEST_F(Takes, AServiceThatBecomesRadioLeavesTheTvLists) {
  own().favourites[0].tv = {own().services[0]};
  others().services[0]->record.type = kRadio;
  others().favourites[0].tv = {};
  EXPECT_EQ(Take({"~ SDB1 satellite 1 carrier 1 service 1 S1C1P1: type 1 -> 2"})->left_lists, 1u);
  EXPECT_THAT(own().favourites[0].tv, IsEmpty());
}

TEST_F(Takes, AServiceThatBecomesRadioComesIntoTheRadioLists) {
  own().favourites[0].tv = {own().services[0]};
  others().services[0]->record.type = kRadio;
  others().favourites[0].radio = {others().services[0]};
  const auto taken = TakeAll();
  EXPECT_TRUE(taken && taken->left_out == 0);
  EXPECT_THAT(Lines(document, other), IsEmpty());
}

TEST_F(Takes, ATvServiceComesIntoNoRadioList) {
  others().services[0]->record.type = kRadio;
  others().favourites[0].radio = {others().services[0]};
  Take({"+ SDB1 radio group 1 entry 1 S1C1P1"});
  EXPECT_THAT(own().favourites[0].radio, IsEmpty());
}

// A saved file has all its places.
TEST_F(Takes, SatellitesTakeTheRoomOfUnusedPlaces) {
  AddEmptySlots(own(), FactoryDefaults());
  AddTestSatellite(others(), "More")->record.angle = 900;
  DeleteSatellites(others(), {0});
  EXPECT_EQ(Take({"+ SDB1 satellite 2 More"})->taken, 1u);
  std::vector<std::string> names = {"S1", "S2", "More"};
  for (unsigned number = 1; number < kMaximumSatellites - 2; ++number) names.push_back(EmptySlotName(number));
  EXPECT_EQ(NamesOf(own().satellites), names);
}

TEST_F(Takes, LimitsRefuseBeforeAnythingChanges) {
  while (own().satellites.size() < kMaximumSatellites)
    AddTestSatellite(own(), Format("X%zu", own().satellites.size()));
  AddTestSatellite(others(), "More")->record.angle = 900;
  const Document before = [&] {
    Document copy;
    copy.sdbs.push_back({0, "SDB1", CopyDatabase(own())});
    return copy;
  }();
  EXPECT_FALSE(Take({"+ SDB1 satellite 3 More"}).has_value());
  EXPECT_THAT(recorder.Texts(), ElementsAre("Satellite records exceed the limit. Can not add."));
  EXPECT_EQ(DatabaseDifference(own(), *before.sdbs[0].database, true), "");
  others().lnb_count = 0;
  EXPECT_FALSE(Take({"- SDB1 LNB 1", "- SDB1 LNB 2"}).has_value());
  EXPECT_THAT(recorder.Texts(), ElementsAre("Cannot delete. Minimum one LNB is required."));
}

// Records of a copy are changed, added, deleted and moved at random.
void Change(std::mt19937& random, Document& document) {
  const Messages silent{[](const Message&) {},
                        [](const std::string&, const std::string&, bool) { return true; }};
  StaticDatabase& database = *document.sdbs[0].database;
  const auto any = [&](auto& list) { return list[random() % list.size()]; };
  for (int step = 0; step < 12; ++step) {
    const auto which = random() % 12;
    if (which == 0) AddSatellite(silent, database, {})->record.angle = random() & 0xFFF;
    if (database.satellites.size() < 2 || database.carriers.empty() || database.services.size() < 2) continue;
    if (which == 1)
      AddCarrier(silent, database, *any(database.satellites), {})->record.frequency =
          static_cast<uint32_t>(3000 + random() % 9000);
    if (which == 2)
      SetName(AddService(silent, database, *any(database.carriers), {})->record.name,
              Format("N%d", static_cast<int>(random() % 99)));
    if (which == 3) DeleteServices(database, {any(database.services)});
    if (which == 4) {
      Satellite* satellite = any(database.satellites);
      if (!satellite->carriers.empty())
        DeleteCarriers(database, *satellite, {random() % satellite->carriers.size()});
    }
    if (which == 5) DeleteSatellites(database, {random() % database.satellites.size()});
    if (which == 6) MoveSatellites(silent, database, {random() % database.satellites.size()}, "1");
    if (which == 7) any(database.services)->record.audio_pid = random() & 0x1FFF;
    if (which == 8) std::swap(database.service_order.front(), database.service_order.back());
    if (which == 9) {
      Carrier* carrier = any(database.carriers);
      if (carrier->services.size() > 1) MoveServices(silent, database, *carrier, {0}, "2");
    }
    if (which == 10) {
      FavouriteGroup& group = database.favourites[random() % kFavouriteGroups];
      Service* service = any(database.services);
      AddFavourites(silent, group, service->record.type == kTv ? GroupKind::kTv : GroupKind::kRadio,
                    {service});
      if (group.tv.size() > 1) std::swap(group.tv.front(), group.tv.back());
    }
    if (which == 11) {
      document.sdbs[0].name[0] = static_cast<char>('A' + random() % 26);
      database.lnbs[0].frequency1 = random() & 0x3FFF;
      document.compress_payload = !document.compress_payload;
      document.ubis.push_back({"U", {}});
    }
  }
}

TEST(RandomTakes, AllAtOnceOrOneByOneLeaveNothingDifferent) {
  std::mt19937 random(3);
  Recorder recorder;
  for (int round = 0; round < 80; ++round) {
    Document document;
    document.sdbs.push_back({0, "SDB1", MakeRandomDatabase(random)});
    Document other;
    other.sdbs.push_back({0, "SDB1", CopyDatabase(*document.sdbs[0].database)});
    Change(random, document);
    Change(random, other);
    const bool all = round % 2 == 0;
    for (int step = 0; step < 400; ++step) {
      const auto differences = CompareDocuments(document, 0, other, 0);
      if (differences.empty()) break;
      std::vector<size_t> chosen(differences.size());
      std::iota(chosen.begin(), chosen.end(), size_t{0});
      if (!all) chosen = {random() % differences.size()};
      const auto taken = TakeOver(recorder.context.messages, document, 0, other, 0, differences, chosen);
      ASSERT_TRUE(taken.has_value()) << recorder.Texts().at(0);
      ASSERT_EQ(CheckLinks(*document.sdbs[0].database), "") << round;
      if (all) break;
    }
    ASSERT_THAT(Lines(document, other), IsEmpty()) << round;
  }
}

}  // namespace

}  // namespace vexa
