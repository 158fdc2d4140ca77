#include "core/sort.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/bin_file.h"
#include "core/edit.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using testing::ElementsAre;

// The passes word for word, slow: what SortDatabase is measured against. Of a record by a key: what must be
// equal for a later key to count, and what the order follows.
using Values = std::pair<std::string, std::string>;

Values NameValues(std::string_view name) {
  std::string folded(name);
  for (char& c : folded)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return {std::string(name), folded};
}
Values NumberValues(uint32_t number) {
  return {Format("%010u", number), Format("%010u", number)};
}
Values ValuesOf(const Satellite& satellite, SatelliteKey key, bool) {
  const SatelliteRecord& record = satellite.record;
  if (key == SatelliteKey::kName) return NameValues(NameOf(record.name));
  return NumberValues(key == SatelliteKey::kAngle ? record.angle : 1u - record.east);
}
Values ValuesOf(const Carrier& carrier, CarrierKey key, bool descending) {
  const CarrierRecord& record = carrier.record;
  if (key == CarrierKey::kName) return NameValues(NameOf(record.name));
  if (key == CarrierKey::kFrequency) return NumberValues(record.frequency);
  return {NumberValues(record.symbol_rate).first, descending ? "" : NumberValues(record.symbol_rate).second};
}
Values ValuesOf(const Service& service, ServiceKey key, bool) {
  const ServiceRecord& record = service.record;
  if (key == ServiceKey::kName) return NameValues(NameOf(record.name));
  if (key == ServiceKey::kStatus) return NumberValues(1u - record.free);
  return {NumberValues(record.type).first, record.type == kTv ? "0" : "1"};
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
template <class T>
bool Comparable(const T& a, const T& b) {
  if constexpr (std::is_same_v<T, Satellite>) return a.carriers.empty() == b.carriers.empty();
  return true;
}

template <class T, class Key>
std::vector<T*> LiteralSort(std::vector<T*> list, const SortKeys<Key>& options) {
  for (size_t pass = 0; pass < options.keys.size(); ++pass) {
    for (size_t i = 0; i < list.size(); ++i) {
      size_t best = i;
      for (size_t j = i + 1; j < list.size(); ++j) {
        bool considered = Comparable(*list[j], *list[best]);
        const auto values = [&](size_t row, size_t k) {
          return ValuesOf(*list[row], options.keys[k], options.descending);
        };
        for (size_t k = 0; k < pass; ++k)
          considered = considered && values(j, k).first == values(best, k).first;
        const std::string mine = values(j, pass).second, its = values(best, pass).second;
        if (!considered || !(options.descending ? mine > its : mine < its)) continue;
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
