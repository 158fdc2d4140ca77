#include "core/database.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "core/messages.h"
#include "tests/support/random_database.h"

namespace vexa {
namespace {

std::unique_ptr<StaticDatabase> Sample() {
  std::mt19937 random(7);
  RandomShape shape;
  shape.satellites = 3;
  shape.carriers = 12;
  shape.services = 30;
  return MakeRandomDatabase(random, shape);
}

Carrier* CarrierWithServices(StaticDatabase& database) {
  for (Carrier* carrier : database.carriers) {
    if (carrier->services.size() >= 2) return carrier;
  }
  return nullptr;
}

struct BrokenCase {
  const char* name;
  std::function<void(StaticDatabase&)> harm;
};

class CheckLinksFinds : public testing::TestWithParam<BrokenCase> {};

TEST_P(CheckLinksFinds, TheHarm) {
  const auto database = Sample();
  ASSERT_EQ(CheckLinks(*database), "");
  GetParam().harm(*database);
  EXPECT_NE(CheckLinks(*database), "");
}

INSTANTIATE_TEST_SUITE_P(
    Database, CheckLinksFinds,
    testing::Values(
        BrokenCase{"lnb_count", [](StaticDatabase& d) { d.lnb_count = 17; }},
        BrokenCase{"null_satellite", [](StaticDatabase& d) { d.satellites.push_back(nullptr); }},
        BrokenCase{"too_many_satellites",
                   [](StaticDatabase& d) {
                     while (d.satellites.size() <= kMaximumSatellites) AddTestSatellite(d, "x");
                   }},
        BrokenCase{"carrier_count", [](StaticDatabase& d) { ++d.satellites[1]->record.carrier_count; }},
        BrokenCase{"satellite_lnb", [](StaticDatabase& d) { d.satellites[0]->record.lnb_index = 16; }},
        BrokenCase{"carrier_twice_in_table", [](StaticDatabase& d) { d.carriers[1] = d.carriers[0]; }},
        BrokenCase{"carrier_not_in_table", [](StaticDatabase& d) { d.carriers.pop_back(); }},
        BrokenCase{"carrier_satellite_index",
                   [](StaticDatabase& d) { d.carriers[0]->record.satellite_index ^= 1; }},
        BrokenCase{"carrier_satellite", [](StaticDatabase& d) { d.carriers[0]->satellite = nullptr; }},
        BrokenCase{"carrier_in_no_list",
                   [](StaticDatabase& d) {
                     Satellite* satellite = d.carriers[0]->satellite;
                     satellite->carriers.pop_back();
                     satellite->record.carrier_count = static_cast<uint16_t>(satellite->carriers.size());
                   }},
        BrokenCase{"carriers_swapped_under_services",
                   [](StaticDatabase& d) {
                     auto& list = CarrierWithServices(d)->satellite->carriers;
                     std::rotate(list.begin(), list.begin() + 1, list.end());
                   }},
        BrokenCase{"service_count",
                   [](StaticDatabase& d) { ++CarrierWithServices(d)->record.service_count; }},
        BrokenCase{"service_carrier", [](StaticDatabase& d) { d.services[0]->carrier = nullptr; }},
        BrokenCase{"service_position", [](StaticDatabase& d) { ++d.services[0]->carrier_position; }},
        BrokenCase{"service_listed_twice",
                   [](StaticDatabase& d) {
                     Carrier* carrier = CarrierWithServices(d);
                     carrier->services[1] = carrier->services[0];
                   }},
        BrokenCase{"service_unlisted", [](StaticDatabase& d) { d.services.pop_back(); }},
        BrokenCase{"order_short", [](StaticDatabase& d) { d.service_order.pop_back(); }},
        BrokenCase{"order_repeats", [](StaticDatabase& d) { d.service_order[0] = d.service_order[1]; }},
        BrokenCase{"favourite_gone",
                   [](StaticDatabase& d) { d.favourites[3].tv.push_back(d.service_pool.Take()); }},
        BrokenCase{"radio_gone", [](StaticDatabase& d) { d.favourites[7].radio.push_back(nullptr); }},
        BrokenCase{
            "tv_too_long",
            [](StaticDatabase& d) { d.favourites[0].tv.assign(kMaximumTvEntries + 1, d.services[0]); }},
        BrokenCase{"radio_too_long",
                   [](StaticDatabase& d) {
                     d.favourites[0].radio.assign(kMaximumRadioEntries + 1, d.services[0]);
                   }}),
    [](const auto& row) { return row.param.name; });

TEST(Database, NewOneIsEmptyWithNamedGroups) {
  const StaticDatabase database;
  EXPECT_EQ(CheckLinks(database), "");
  EXPECT_EQ(database.lnb_count, 0u);
  EXPECT_EQ(database.lnbs[15].frequency2, 10600u);
  EXPECT_EQ(NameOf(database.favourites[0].record.tv_name), "Favourite1");
  EXPECT_EQ(NameOf(database.favourites[7].record.radio_name), "Favourite8");
}

TEST(Database, CopyIsEqualAndSharesNothing) {
  std::mt19937 random(20);
  for (int round = 0; round < 20; ++round) {
    const auto database = MakeRandomDatabase(random, MakeRandomShape(random));
    // The order of the tables is content too.
    std::shuffle(database->services.begin(), database->services.end(), random);
    const auto copy = CopyDatabase(*database);
    ASSERT_EQ(CheckLinks(*copy), "");
    ASSERT_EQ(DatabaseDifference(*database, *copy), "");
    for (size_t i = 0; i < database->services.size(); ++i) {
      ASSERT_NE(database->services[i], copy->services[i]);
      ASSERT_EQ(NameOf(database->services[i]->record.name), NameOf(copy->services[i]->record.name));
    }
    for (Service* service : copy->services) service->record.free ^= 1;
    if (!copy->services.empty()) {
      EXPECT_NE(DatabaseDifference(*database, *copy), "");
    }
  }
}

TEST(RecordPool, AddressesStayAndWhatComesBackIsEmpty) {
  RecordPool<Service> pool;
  pool.Reserve(3);
  std::vector<Service*> taken;
  for (unsigned i = 0; i < 1000; ++i) {
    taken.push_back(pool.Take());
    taken.back()->record.program_number = i & 0xFFFF;
  }
  EXPECT_EQ(std::set<Service*>(taken.begin(), taken.end()).size(), 1000u);
  for (unsigned i = 0; i < 1000; ++i) ASSERT_EQ(taken[i]->record.program_number, i);
  taken[5]->carrier_position = 9;
  pool.Give(taken[5]);
  const Service* again = pool.Take();
  EXPECT_EQ(again, taken[5]);
  EXPECT_EQ(again->record.program_number, 0u);
  EXPECT_EQ(again->carrier_position, 0u);
}

TEST(Slots, LowestFreeOneFirst) {
  Document document;
  for (uint32_t i = 0; i < kMaximumSdbs; ++i) {
    const OpenSdb* sdb = AppendSdb(document, Format("N%u", i));
    ASSERT_NE(sdb, nullptr);
    EXPECT_EQ(sdb->slot, i);
  }
  EXPECT_EQ(AppendSdb(document, "more"), nullptr);
  EXPECT_EQ(ClaimSlot(document), -1);
  EXPECT_EQ(document.sdbs.size(), 16u);
  ReleaseSlot(document, 9);
  ReleaseSlot(document, 2);
  document.sdbs.erase(document.sdbs.begin() + 9);
  document.sdbs.erase(document.sdbs.begin() + 2);
  // The lowest free slot, but the last place.
  const OpenSdb* sdb = AppendSdb(document, "new");
  EXPECT_EQ(sdb->slot, 2u);
  EXPECT_EQ(document.sdbs.back().name, "new");
  EXPECT_EQ(document.slot_mask, 0xFFFFu & ~(1u << 9));
}

TEST(Slots, NewDocumentHoldsOneEmptySdb) {
  const Document document = NewDocument();
  ASSERT_EQ(document.sdbs.size(), 1u);
  EXPECT_EQ(document.sdbs[0].name, "SDB1");
  EXPECT_EQ(document.slot_mask, 1u);
  EXPECT_TRUE(document.sdbs[0].database->satellites.empty());
  EXPECT_TRUE(document.ubis.empty());
}

}  // namespace
}  // namespace vexa
