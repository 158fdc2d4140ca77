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
struct Values {
  std::string exact, order;
};

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
  Values values = NumberValues(key == CarrierKey::kFrequency ? record.frequency : record.symbol_rate);
  if (key == CarrierKey::kSymbolRate && descending) values.order.clear();
  return values;
}
Values ValuesOf(const Service& service, ServiceKey key, bool) {
  const ServiceRecord& record = service.record;
  if (key == ServiceKey::kName) return NameValues(NameOf(record.name));
  if (key == ServiceKey::kStatus) return NumberValues(1u - record.free);
  return {Format("%u", record.type), record.type == kTv ? "0" : "1"};
}

template <class T, class Key>
std::vector<T*> LiteralSort(std::vector<T*> list, const SortKeys<Key>& options) {
  for (size_t pass = 0; pass < options.keys.size(); ++pass) {
    for (size_t i = 0; i < list.size(); ++i) {
      size_t best = i;
      const auto values = [&](size_t row, size_t key) {
        return ValuesOf(*list[row], options.keys[key], options.descending);
      };
      const auto considered = [&](size_t row) {
        if constexpr (std::is_same_v<T, Satellite>)
          if (list[row]->carriers.empty() != list[best]->carriers.empty()) return false;
        size_t key = 0;
        while (key < pass && values(row, key).exact == values(best, key).exact) ++key;
        return key == pass;
      };
      for (size_t j = i + 1; j < list.size(); ++j) {
        const std::string mine = values(j, pass).order, its = values(best, pass).order;
        if (considered(j) && (options.descending ? mine > its : mine < its)) best = j;
      }
      std::rotate(list.begin() + static_cast<std::ptrdiff_t>(i),
                  list.begin() + static_cast<std::ptrdiff_t>(best),
                  list.begin() + static_cast<std::ptrdiff_t>(best) + 1);
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

// The places of `all` that `held` stands in, in their order, take the records of `list`.
template <class T>
void Refill(std::vector<T*>& all, const std::vector<T*>& held, const std::vector<T*>& list) {
  size_t next = 0;
  for (T*& record : all)
    if (std::find(held.begin(), held.end(), record) != held.end()) record = list[next++];
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
    const auto sorted = CopyDatabase(*database);
    SortDatabase(*sorted, options);
    ASSERT_EQ(CheckLinks(*sorted), "");
    // The lists by hand; what is refilled in their order are the places in the arrays that each held.
    database->satellites = LiteralSort(database->satellites, options.satellites);
    NumberSatellites(*database);
    for (Satellite* satellite : database->satellites) {
      const auto held = satellite->carriers;
      satellite->carriers = LiteralSort(held, options.carriers);
      Refill(database->carriers, held, satellite->carriers);
      for (Carrier* carrier : satellite->carriers) {
        const auto services = carrier->services;
        carrier->services = LiteralSort(services, options.services);
        Refill(database->services, services, carrier->services);
      }
    }
    ASSERT_EQ(DatabaseDifference(*sorted, *database, true), "");
  }
}

TEST(Sort, SdbsWithoutSatellitesAreNamedAndNothingIsSorted) {
  Recorder recorder;
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

TEST(Sort, SortedFileLeavesTheDocumentAlone) {
  Recorder recorder;
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
  DefaultRecords defaults;
  defaults.lnb.frequency1 = 1234;
  recorder.context.defaults = &defaults;
  EXPECT_TRUE(SortToFile(recorder.context, document, {0}, options, path, {7, 3, "abc"}));
  Document sorted;
  ASSERT_TRUE(OpenBin(recorder.context, path, sorted));
  EXPECT_EQ(NameOf(sorted.sdbs[0].database->satellites[0]->record.name), "A");
  EXPECT_EQ(NameOf(sdb.satellites[0]->record.name), "B");
  const Bytes file = *ReadWholeFile(path);
  EXPECT_EQ(std::string(file.begin() + 2, file.begin() + 4), "\x07\x03");
  EXPECT_EQ(std::string(file.begin() + 8, file.begin() + 11), "abc");
  EXPECT_EQ(sorted.sdbs[0].database->lnbs[1].frequency1, 1234u);
}

TEST(Sort, ASeparateFileHoldsTheSortedSdbsAlone) {
  Recorder recorder;
  Document document;
  for (const char* name : {"ONE", "TWO", "SIX"}) AppendSdb(document, name);
  document.ubis.push_back({"UBI1", {}});
  for (const size_t sdb : {size_t{1}, size_t{2}}) {
    StaticDatabase& database = *document.sdbs[sdb].database;
    database.lnb_count = 1;
    for (const char* name : {"B", "A"}) AddTestSatellite(database, name);
  }
  const SortOptions options{{{SatelliteKey::kName}, false}, {}, {}};
  const Path path = recorder.context.temporary_folder / "sorted.bin";
  EXPECT_TRUE(SortToSeparateFile(recorder.context, document, {1, 2}, options, path));
  Document sorted;
  ASSERT_TRUE(OpenBin(recorder.context, path, sorted));
  std::string held;
  for (const OpenSdb& sdb : sorted.sdbs)
    (held += sdb.name) += NameOf(sdb.database->satellites[0]->record.name);
  EXPECT_EQ(held, "TWOASIXA");
  EXPECT_TRUE(sorted.ubis.empty());
}

}  // namespace
}  // namespace vexa
