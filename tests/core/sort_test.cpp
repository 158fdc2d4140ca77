#include "core/sort.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>

#include "core/bin_file.h"
#include "core/edit.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using testing::ElementsAre;

// The passes word for word, slow: what SortDatabase is measured against.
int CompareNames(std::string_view a, std::string_view b) {
  for (size_t i = 0; i < std::max(a.size(), b.size()); ++i) {
    const int x = i < a.size() ? static_cast<uint8_t>(a[i]) : 0,
              y = i < b.size() ? static_cast<uint8_t>(b[i]) : 0;
    const auto fold = [](int c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; };
    if (fold(x) != fold(y)) return fold(x) - fold(y);
  }
  return 0;
}

template <class T>
bool Earlier(const T& a, const T& b, bool descending) {
  return descending ? a > b : a < b;
}

bool EarlierName(std::string_view a, std::string_view b, bool descending) {
  const int order = CompareNames(a, b);
  return descending ? order > 0 : order < 0;
}

bool Before(const Satellite& a, const Satellite& b, SatelliteKey key, bool descending) {
  if (key == SatelliteKey::kName)
    return EarlierName(NameOf(a.record.name), NameOf(b.record.name), descending);
  if (key == SatelliteKey::kAngle) return Earlier<uint32_t>(a.record.angle, b.record.angle, descending);
  return descending ? !a.record.east && b.record.east : a.record.east && !b.record.east;
}
bool Before(const Carrier& a, const Carrier& b, CarrierKey key, bool descending) {
  if (key == CarrierKey::kName) return EarlierName(NameOf(a.record.name), NameOf(b.record.name), descending);
  if (key == CarrierKey::kFrequency)
    return Earlier<uint32_t>(a.record.frequency, b.record.frequency, descending);
  return !descending && a.record.symbol_rate < b.record.symbol_rate;
}
bool Before(const Service& a, const Service& b, ServiceKey key, bool descending) {
  if (key == ServiceKey::kName) return EarlierName(NameOf(a.record.name), NameOf(b.record.name), descending);
  if (key == ServiceKey::kStatus)
    return descending ? !a.record.free && b.record.free : a.record.free && !b.record.free;
  const bool a_tv = a.record.type == kTv, b_tv = b.record.type == kTv;
  return descending ? !a_tv && b_tv : a_tv && !b_tv;
}
bool Equal(const Satellite& a, const Satellite& b, SatelliteKey key) {
  if (key == SatelliteKey::kName) return NameOf(a.record.name) == NameOf(b.record.name);
  return key == SatelliteKey::kFlag ? a.record.east == b.record.east : a.record.angle == b.record.angle;
}
bool Equal(const Carrier& a, const Carrier& b, CarrierKey key) {
  if (key == CarrierKey::kName) return NameOf(a.record.name) == NameOf(b.record.name);
  return key == CarrierKey::kFrequency ? a.record.frequency == b.record.frequency
                                       : a.record.symbol_rate == b.record.symbol_rate;
}
bool Equal(const Service& a, const Service& b, ServiceKey key) {
  if (key == ServiceKey::kName) return NameOf(a.record.name) == NameOf(b.record.name);
  return key == ServiceKey::kStatus ? a.record.free == b.record.free : a.record.type == b.record.type;
}
bool TakesFirst(SatelliteKey key) {
  return key == SatelliteKey::kFlag;
}
bool TakesFirst(CarrierKey) {
  return false;
}
bool TakesFirst(ServiceKey key) {
  return key != ServiceKey::kName;
}
bool Comparable(const Satellite& a, const Satellite& b) {
  return a.carriers.empty() == b.carriers.empty();
}
bool Comparable(const Carrier&, const Carrier&) {
  return true;
}
bool Comparable(const Service&, const Service&) {
  return true;
}

template <class T, class Key>
std::vector<T*> LiteralSort(std::vector<T*> list, const SortKeys<Key>& options) {
  for (size_t pass = 0; pass < options.keys.size(); ++pass) {
    for (size_t i = 0; i < list.size(); ++i) {
      size_t best = i;
      for (size_t j = i + 1; j < list.size(); ++j) {
        bool considered = Comparable(*list[j], *list[best]);
        for (size_t k = 0; k < pass; ++k)
          considered = considered && Equal(*list[j], *list[best], options.keys[k]);
        if (!considered || !Before(*list[j], *list[best], options.keys[pass], options.descending)) continue;
        best = j;
        if (TakesFirst(options.keys[pass])) break;
      }
      T* record = list[best];
      list.erase(list.begin() + static_cast<std::ptrdiff_t>(best));
      list.insert(list.begin() + static_cast<std::ptrdiff_t>(i), record);
    }
  }
  return list;
}

template <class Key>
SortKeys<Key> RandomKeys(std::mt19937& random) {
  std::vector<Key> keys = {static_cast<Key>(0), static_cast<Key>(1), static_cast<Key>(2)};
  std::shuffle(keys.begin(), keys.end(), random);
  keys.resize(random() % 4);
  return {keys, random() % 2 == 1};
}

// Few different values, so that every kind of tie is met.
void MakeTies(std::mt19937& random, StaticDatabase& database) {
  static const char* const names[] = {"abc", "ABC", "aBd", "", "\xC4rd", "abc ", "Zeta", "_x", "[x"};
  const auto name = [&](auto& field) { SetName(field, names[random() % std::size(names)]); };
  for (Satellite* satellite : database.satellites) {
    name(satellite->record.name);
    satellite->record.angle = random() % 3 * 1000 & 0xFFF;
    satellite->record.east = random() % 2 & 1;
  }
  for (Carrier* carrier : database.carriers) {
    name(carrier->record.name);
    carrier->record.frequency = random() % 2 ? 0xFFFFFFFF : static_cast<uint32_t>(random() % 3);
    carrier->record.symbol_rate = random() % 3 & 3;
  }
  for (Service* service : database.services) {
    name(service->record.name);
    service->record.type = random() % 4 & 3;
    service->record.free = random() % 2 & 1;
  }
}

template <class T>
std::set<size_t> PlacesHeld(const std::vector<T*>& all, const std::vector<T*>& list) {
  std::set<size_t> places;
  for (const T* record : list)
    places.insert(static_cast<size_t>(std::find(all.begin(), all.end(), record) - all.begin()));
  return places;
}

TEST(Sort, GivesTheOrderOfTheLiteralPasses) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    SCOPED_TRACE(round);
    RandomShape shape;
    shape.satellites = 1 + random() % 12;
    shape.carriers = random() % 40;
    shape.services = random() % 200;
    const auto database = MakeRandomDatabase(random, shape);
    MakeTies(random, *database);
    const SortOptions options{RandomKeys<SatelliteKey>(random), RandomKeys<CarrierKey>(random),
                              RandomKeys<ServiceKey>(random)};
    const auto satellites = LiteralSort(database->satellites, options.satellites);
    std::vector<std::vector<Carrier*>> carriers;
    std::vector<std::vector<Service*>> services;
    std::vector<std::set<size_t>> places;
    for (const Satellite* satellite : satellites) {
      carriers.push_back(LiteralSort(satellite->carriers, options.carriers));
      places.push_back(PlacesHeld(database->carriers, satellite->carriers));
      for (const Carrier* carrier : carriers.back()) {
        services.push_back(LiteralSort(carrier->services, options.services));
        places.push_back(PlacesHeld(database->services, carrier->services));
      }
    }
    const auto order = database->service_order;
    const auto favourite = database->favourites[0].tv;
    SortDatabase(*database, options);
    ASSERT_EQ(CheckLinks(*database), "");
    ASSERT_EQ(database->satellites, satellites);
    size_t carrier_list = 0, service_list = 0, place = 0;
    for (const Satellite* satellite : database->satellites) {
      ASSERT_EQ(satellite->carriers, carriers[carrier_list++]);
      ASSERT_EQ(PlacesHeld(database->carriers, satellite->carriers), places[place++]);
      for (const Carrier* carrier : satellite->carriers) {
        ASSERT_EQ(carrier->services, services[service_list++]);
        ASSERT_EQ(PlacesHeld(database->services, carrier->services), places[place++]);
      }
    }
    EXPECT_EQ(database->service_order, order);
    EXPECT_EQ(database->favourites[0].tv, favourite);
  }
}

struct SortCases : testing::Test {
  Recorder recorder;
  std::unique_ptr<StaticDatabase> database = std::make_unique<StaticDatabase>();
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const Satellite* satellite : database->satellites)
      names.emplace_back(NameOf(satellite->record.name));
    return names;
  }
};

TEST_F(SortCases, SatellitesWithAndWithoutCarriersPassEachOther) {
  for (const char* name : {"A2", "B", "A1"}) AddTestSatellite(*database, name);
  AddTestCarrier(*database, 0);
  AddTestCarrier(*database, 2);
  SortDatabase(*database, {{{SatelliteKey::kName}, false}, {}, {}});
  EXPECT_THAT(Names(), ElementsAre("A1", "A2", "B"));
}

TEST_F(SortCases, AnEarlierNameKeySeparatesByCase) {
  const struct {
    const char* name;
    uint32_t angle;
  } rows[] = {{"abc", 300}, {"ABC", 200}, {"abc", 100}};
  for (const auto& row : rows) AddTestSatellite(*database, row.name)->record.angle = row.angle & 0xFFF;
  SortDatabase(*database, {{{SatelliteKey::kName, SatelliteKey::kAngle}, false}, {}, {}});
  std::vector<uint32_t> angles;
  for (const Satellite* satellite : database->satellites) angles.push_back(satellite->record.angle);
  EXPECT_THAT(angles, ElementsAre(100, 300, 200));
}

TEST_F(SortCases, DescendingSymbolRateMovesNothingButBindsTheNextKey) {
  AddTestSatellite(*database, "S");
  const struct { uint32_t symbol_rate, frequency; } rows[] = {{1000, 1}, {2000, 2}, {1000, 3}, {2000, 4}};
  for (const auto& row : rows) {
    CarrierRecord& record = AddTestCarrier(*database, 0)->record;
    record.symbol_rate = row.symbol_rate & 0xFFFFFF;
    record.frequency = row.frequency;
  }
  const auto frequencies = [&] {
    std::vector<uint32_t> list;
    for (const Carrier* carrier : database->satellites[0]->carriers)
      list.push_back(carrier->record.frequency);
    return list;
  };
  SortDatabase(*database, {{}, {{CarrierKey::kSymbolRate}, true}, {}});
  EXPECT_THAT(frequencies(), ElementsAre(1, 2, 3, 4));
  SortDatabase(*database, {{}, {{CarrierKey::kSymbolRate, CarrierKey::kFrequency}, true}, {}});
  EXPECT_THAT(frequencies(), ElementsAre(3, 1, 4, 2));
}

TEST_F(SortCases, SdbsWithoutSatellitesAreNamedAndNothingIsSorted) {
  Document document;
  for (const char* name : {"ONE", "TWO", "THREE"}) AppendSdb(document, name);
  AddTestSatellite(*document.sdbs[1].database, "B");
  AddTestSatellite(*document.sdbs[1].database, "A");
  const SortOptions options{{{SatelliteKey::kName}, false}, {}, {}};
  EXPECT_FALSE(SortSdbs(recorder.context.messages, document, {0, 1, 2}, options));
  EXPECT_THAT(recorder.Texts(),
              ElementsAre("Invalid SDB(s) - ONE, THREE. \nNOTE: Valid SDB should contain atleast one "
                          "satellite record."));
  EXPECT_EQ(NameOf(document.sdbs[1].database->satellites[0]->record.name), "B");
  EXPECT_TRUE(SortSdbs(recorder.context.messages, document, {1}, options));
  EXPECT_EQ(NameOf(document.sdbs[1].database->satellites[0]->record.name), "A");
}

TEST_F(SortCases, SortedFileLeavesTheDocumentAlone) {
  Document document;
  AppendSdb(document, "ONE");
  StaticDatabase& sdb = *document.sdbs[0].database;
  for (const char* name : {"B", "A"}) AddTestSatellite(sdb, name);
  const SortOptions options{{{SatelliteKey::kName}, false}, {}, {}};
  const Path path = recorder.context.temporary_folder / "sorted.bin";
  EXPECT_FALSE(SortToFile(recorder.context, document, {0}, options, path));  // no LNB yet
  EXPECT_THAT(recorder.Texts(), ElementsAre("Save as operation failed!!."));
  EXPECT_FALSE(std::filesystem::exists(path));
  sdb.lnb_count = 1;
  EXPECT_TRUE(SortToFile(recorder.context, document, {0}, options, path));
  Document sorted;
  ASSERT_TRUE(OpenBin(recorder.context, path, sorted));
  EXPECT_EQ(NameOf(sorted.sdbs[0].database->satellites[0]->record.name), "A");
  EXPECT_EQ(NameOf(sdb.satellites[0]->record.name), "B");
}

}  // namespace
}  // namespace vexa
