#include "core/database.h"

#include <gtest/gtest.h>

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

TEST(Database, CheckLinksFindsEveryHarm) {
  using D = StaticDatabase;
  static const std::pair<const char*, void (*)(D&)> kHarms[] = {
      {"lnb_count", [](D& d) { d.lnb_count = 17; }},
      {"null_satellite", [](D& d) { d.satellites.push_back(nullptr); }},
      {"too_many_satellites",
       [](D& d) {
         while (d.satellites.size() <= 85) AddTestSatellite(d, "x");
       }},
      {"carrier_count", [](D& d) { ++d.satellites[1]->record.carrier_count; }},
      {"satellite_lnb", [](D& d) { d.satellites[0]->record.lnb_index = 16; }},
      {"carrier_twice_in_table", [](D& d) { d.carriers[1] = d.carriers[0]; }},
      {"carrier_not_in_table", [](D& d) { d.carriers.pop_back(); }},
      {"carrier_satellite_index", [](D& d) { d.carriers[0]->record.satellite_index ^= 1; }},
      {"carrier_satellite", [](D& d) { d.carriers[0]->satellite = nullptr; }},
      {"carrier_in_no_list",
       [](D& d) {
         d.carriers[0]->satellite->carriers.pop_back();
         --d.carriers[0]->satellite->record.carrier_count;
       }},
      {"carriers_swapped_under_services",
       [](D& d) {
         auto& list = CarrierWithServices(d)->satellite->carriers;
         std::rotate(list.begin(), list.begin() + 1, list.end());
       }},
      {"service_count", [](D& d) { ++CarrierWithServices(d)->record.service_count; }},
      {"service_carrier", [](D& d) { d.services[0]->carrier = nullptr; }},
      {"service_position", [](D& d) { ++d.services[0]->carrier_position; }},
      {"service_listed_twice",
       [](D& d) { CarrierWithServices(d)->services[1] = CarrierWithServices(d)->services[0]; }},
      {"service_unlisted", [](D& d) { d.services.pop_back(); }},
      {"order_short", [](D& d) { d.service_order.pop_back(); }},
      {"order_repeats", [](D& d) { d.service_order[0] = d.service_order[1]; }},
      {"favourite_gone", [](D& d) { d.favourites[3].tv.push_back(d.service_pool.Take()); }},
      {"radio_gone", [](D& d) { d.favourites[7].radio.push_back(nullptr); }},
      {"tv_too_long", [](D& d) { d.favourites[0].tv.assign(2501, d.services[0]); }},
      {"radio_too_long", [](D& d) { d.favourites[0].radio.assign(1001, d.services[0]); }},
  };
  for (const auto& [name, harm] : kHarms) {
    const auto database = Sample();
    ASSERT_EQ(CheckLinks(*database), "");
    harm(*database);
    EXPECT_NE(CheckLinks(*database), "") << name;
  }
}

TEST(Database, CopyIsEqualAndSharesNothing) {
  std::mt19937 random(20);
  for (int round = 0; round < 20; ++round) {
    const auto database = MakeRandomDatabase(random, MakeRandomShape(random));
    // The order of the tables is content too.
    std::shuffle(database->services.begin(), database->services.end(), random);
    const auto copy = CopyDatabase(*database);
    ASSERT_EQ(CheckLinks(*copy), "");
    ASSERT_EQ(DatabaseDifference(*database, *copy, true), "");
    for (Service* service : copy->services) service->record.free ^= 1;
    EXPECT_EQ(DatabaseDifference(*database, *copy), copy->services.empty() ? "" : "services");
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
  for (unsigned i = 0; i < 1000; ++i) ASSERT_EQ(taken[i]->record.program_number, i);
  pool.Give(taken[5]);
  const Service* again = pool.Take();
  EXPECT_EQ(again, taken[5]);
  EXPECT_EQ(again->record.program_number, 0u);
}

}  // namespace
}  // namespace vexa
