#include "core/complete.h"

#include <gtest/gtest.h>

#include "core/match.h"
#include "tests/support/random_database.h"

namespace vexa {
namespace {

struct Completed : testing::Test {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  Satellite& Add(uint32_t angle, const std::vector<uint32_t>& frequencies) {
    Satellite* satellite = AddTestSatellite(database, "S");
    satellite->record.angle = angle & 0xFFF;
    satellite->record.position = 255;
    for (const uint32_t frequency : frequencies)
      AddTestCarrier(database, database.satellites.size() - 1)->record.frequency = frequency;
    return *satellite;
  }
};

TEST_F(Completed, PositionsAreNumberedAsFarAsTheyGo) {
  for (int i = 0; i < 66; ++i) Add(1, {});
  SetName(database.satellites[2]->record.name, "NewSat 3");
  EXPECT_EQ(Complete(database, {.number_positions = true}, true, {}),
            std::vector<std::string>{"1 satellites keep their position: there are 64"});
  const auto position = [&](size_t i) { return database.satellites[i]->record.position; };
  EXPECT_EQ(std::tuple(position(0), position(1), position(2), position(3), position(64), position(65)),
            std::tuple(1u, 2u, 255u, 3u, 64u, 255u));
}

TEST_F(Completed, LnbsFollowTheBandsThatOccur) {
  database.lnb_count = 1;
  Add(1, {10700, 12750, 3000});
  Add(2, {10699, 12751, 4201, 2151, 949});  // in no band
  Add(3, {11000, 4200});                    // as many: the first band
  database.satellites[1]->record.lnb_index = 7;
  DefaultRecords defaults;
  defaults.lnb.motor = 1;
  Complete(database, {.lnbs_by_band = true}, true, defaults);
  const auto lnb = [&](size_t i) {
    const LnbRecord& record = database.lnbs[i];
    return std::tuple(record.type, record.frequency1, record.frequency2, record.motor);
  };
  EXPECT_EQ(database.lnb_count, 2u);
  EXPECT_EQ(lnb(0), std::tuple(kLnbNormal, 5150u, 0u, 1u));
  EXPECT_EQ(lnb(1), std::tuple(kLnbUniversal, 9750u, 10600u, 1u));
  const auto index = [&](size_t i) { return database.satellites[i]->record.lnb_index; };
  EXPECT_EQ(std::tuple(index(0), index(1), index(2)), std::tuple(1u, 7u, 0u));
  Add(4, {950, 2150});
  Complete(database, {.lnbs_by_band = true}, true, defaults);
  EXPECT_EQ(lnb(0), std::tuple(kLnbIfInput, 0u, 0u, 1u));
  EXPECT_EQ(std::tuple(index(0), index(2), index(3)), std::tuple(2u, 1u, 0u));
}

TEST_F(Completed, SidesAreThoseOfKnownPositions) {
  const struct {
    uint32_t tenths;
    std::optional<bool> east;
  } cases[] = {{192, true},  {130, true},          {300, false},       {8, false},    {131, true},
               {299, false}, {70, std::nullopt},   {282, true},        {1230, false}, {50, std::nullopt},
               {1800, true}, {2000, std::nullopt}, {120, std::nullopt}};
  for (const auto& c : cases) {
    EXPECT_EQ(KnownSide(c.tenths), c.east) << c.tenths;
    Add(c.tenths, {}).record.east = !c.east.value_or(true);
  }
  Add(0, {});
  EXPECT_TRUE(Complete(database, {.sides = true}, true, {}).empty()) << "the list told them";
  EXPECT_EQ(database.satellites[0]->record.east, 0u);
  EXPECT_EQ(Complete(database, {.sides = true}, false, {}),
            std::vector<std::string>{"East or West of 4 satellites is not known, the first is satellite 7"});
  for (size_t i = 0; i < std::size(cases); ++i)
    EXPECT_EQ(database.satellites[i]->record.east, cases[i].east.value_or(false)) << cases[i].tenths;
}

TEST_F(Completed, EmptySlotsAreThoseOfAFile) {
  Add(192, {11000});
  DefaultRecords defaults;
  defaults.satellite.position = 7;
  Complete(database, {.empty_slots = true}, true, defaults);
  ASSERT_EQ(database.satellites.size(), kMaximumSatellites);
  EXPECT_EQ(NameOf(database.satellites[1]->record.name), "NewSat 1");
  EXPECT_EQ(NameOf(database.satellites[84]->record.name), "NewSat 84");
  EXPECT_EQ(database.satellites[0]->record.position, 255u);
  EXPECT_EQ(database.satellites[84]->record.position, 7u);
  EXPECT_TRUE(IsUnusedPlace(*database.satellites[84]));
  EXPECT_EQ(CheckLinks(database), "");
}

}  // namespace
}  // namespace vexa
