// Long random sequences of operations: the links hold after each, what is saved opens again as it was, and
// every step can be undone and redone to the bit.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "core/bin_file.h"
#include "core/edit.h"
#include "core/sort.h"
#include "core/undo.h"
#include "core/validation.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

template <class T>
std::vector<size_t> PlacesIn(const std::vector<T*>& all, const std::vector<T*>& list) {
  std::vector<size_t> places;
  for (const T* record : list)
    places.push_back(static_cast<size_t>(std::find(all.begin(), all.end(), record) - all.begin()));
  return places;
}

// Beyond the links: the arrays of the SDB hold each list in its own order.
std::string ArraysFollowLists(const StaticDatabase& database) {
  std::map<const Satellite*, size_t> next_carrier;
  std::map<const Carrier*, size_t> next_service;
  for (const Carrier* carrier : database.carriers)
    if (carrier->satellite->carriers[next_carrier[carrier->satellite]++] != carrier) return "carrier array";
  for (const Service* service : database.services)
    if (service->carrier->services[next_service[service->carrier]++] != service) return "service array";
  return {};
}

// Every bit and every order, as places.
std::string Difference(const StaticDatabase& one, const StaticDatabase& other) {
  std::string difference = DatabaseDifference(one, other);
  if (!difference.empty()) return difference;
  if (std::memcmp(&one.lnbs, &other.lnbs, sizeof one.lnbs) != 0) return "LNB table";
  if (one.compressed != other.compressed) return "compressed";
  for (size_t i = 0; i < one.carriers.size(); ++i)
    if (std::memcmp(&one.carriers[i]->record, &other.carriers[i]->record, sizeof(CarrierRecord)) != 0)
      return Format("bits of carrier %zu", i);
  for (size_t i = 0; i < one.services.size(); ++i)
    if (std::memcmp(&one.services[i]->record, &other.services[i]->record, sizeof(ServiceRecord)) != 0)
      return Format("bits of service %zu", i);
  for (size_t i = 0; i < kFavouriteGroups; ++i)
    if (std::memcmp(&one.favourites[i].record, &other.favourites[i].record, sizeof(FavouriteRecord)) != 0)
      return Format("bits of group %zu", i);
  if (PlacesIn(one.services, one.service_order) != PlacesIn(other.services, other.service_order))
    return "order";
  return {};
}

std::string Difference(const Document& one, const Document& other) {
  if (one.sdbs.size() != other.sdbs.size()) return "SDB count";
  for (size_t i = 0; i < one.sdbs.size(); ++i) {
    if (one.sdbs[i].slot != other.sdbs[i].slot || one.sdbs[i].name != other.sdbs[i].name)
      return "SDB name or slot";
    const std::string difference = Difference(*one.sdbs[i].database, *other.sdbs[i].database);
    if (!difference.empty()) return one.sdbs[i].name + ": " + difference;
  }
  if (one.ubis.size() != other.ubis.size()) return "UBI count";
  for (size_t i = 0; i < one.ubis.size(); ++i)
    if (one.ubis[i].name != other.ubis[i].name ||
        std::memcmp(&one.ubis[i].record, &other.ubis[i].record, sizeof(UserBoxInfo)) != 0)
      return "UBI";
  const bool same = one.slot_mask == other.slot_mask && one.compress_payload == other.compress_payload &&
                    one.compress_ubis == other.compress_ubis && one.settings_block == other.settings_block;
  return same ? "" : "flags";
}

struct Player {
  std::mt19937 random;
  Recorder recorder;
  Document document;
  DefaultRecords defaults;

  explicit Player(unsigned seed) : random(seed), document(MakeRandomDocument(random)) {}
  const Messages& messages() { return recorder.context.messages; }
  size_t Upto(size_t highest) { return std::uniform_int_distribution<size_t>(0, highest)(random); }
  template <class T>
  T* Any(const std::vector<T*>& list) {
    return list.empty() ? nullptr : list[Upto(list.size() - 1)];
  }
  StaticDatabase& Database() { return *document.sdbs[Upto(document.sdbs.size() - 1)].database; }
  Rows Run(size_t count) {
    if (count == 0) return {};
    Rows rows = {Upto(count - 1)};
    while (Upto(1) == 0 && rows.back() + 1 < count) rows.push_back(rows.back() + 1);
    return rows;
  }
  std::string Target(size_t count) { return std::to_string(Upto(count + 1)); }
  std::vector<Service*> Services(const StaticDatabase& database) {
    std::vector<Service*> services;
    for (size_t i = Upto(4); i-- > 0 && !database.services.empty();)
      services.push_back(Any(database.services));
    return services;
  }

  void Add(StaticDatabase& database) {
    Satellite* satellite = Any(database.satellites);
    Carrier* carrier = Any(database.carriers);
    const auto filter = static_cast<ServiceFilter>(Upto(2));
    switch (Upto(8)) {
      case 0:
        AddLnb(messages(), database, defaults);
        break;
      case 1:
        AddSatellite(messages(), database, defaults);
        break;
      case 2:
        InsertSatellite(messages(), database, defaults, Run(database.satellites.size()));
        break;
      case 3:
        if (satellite) AddCarrier(messages(), database, *satellite, defaults);
        break;
      case 4:
        if (satellite)
          InsertCarrier(messages(), database, *satellite, defaults, Run(satellite->carriers.size()));
        break;
      case 5:
        if (carrier) AddService(messages(), database, *carrier, defaults, filter);
        break;
      case 6:
        if (carrier)
          InsertService(messages(), database, *carrier, defaults, Run(carrier->services.size()), filter);
        break;
      case 7:
        Upto(1) ? (void)AddSdb(messages(), document) : (void)AddUbi(messages(), document);
        break;
      default:
        AddFavourites(messages(), database.favourites[Upto(7)], static_cast<GroupKind>(Upto(1)),
                      Services(database));
    }
  }

  void Delete(StaticDatabase& database) {
    Satellite* satellite = Any(database.satellites);
    switch (Upto(6)) {
      case 0:
        DeleteLnbs(messages(), database, Run(database.lnb_count));
        break;
      case 1:
        if (Upto(3) == 0) DeleteSatellites(database, Run(database.satellites.size()));
        break;
      case 2:
        if (satellite) DeleteCarriers(database, *satellite, Run(satellite->carriers.size()));
        break;
      case 3:
        DeleteServices(database, Services(database));
        break;
      case 4:
        DeleteUbi(document, Upto(2));
        break;
      case 5: {
        FavouriteGroup& group = database.favourites[Upto(7)];
        DeleteFavourites(group, GroupKind::kTv, Run(group.tv.size()));
        break;
      }
      default:
        if (Upto(4) == 0) DeleteSdb(messages(), document, Upto(document.sdbs.size() - 1));
    }
  }

  void Move(StaticDatabase& database) {
    Satellite* satellite = Any(database.satellites);
    Carrier* carrier = Any(database.carriers);
    FavouriteGroup& group = database.favourites[Upto(7)];
    const size_t satellites = database.satellites.size(),
                 carriers = satellite ? satellite->carriers.size() : 0;
    const size_t services = carrier ? carrier->services.size() : 0;
    switch (Upto(7)) {
      case 0:
        MoveSatellites(messages(), database, Run(satellites), Target(satellites));
        break;
      case 1:
        SwapSatellites(messages(), database, Run(satellites), Target(satellites));
        break;
      case 2:
        if (satellite) MoveCarriers(messages(), database, *satellite, Run(carriers), Target(carriers));
        break;
      case 3:
        if (satellite) SwapCarriers(messages(), database, *satellite, Run(carriers), Target(carriers));
        break;
      case 4:
        if (carrier) MoveServices(messages(), database, *carrier, Run(services), Target(services));
        break;
      case 5:
        SwapServices(messages(), database, Services(database));
        break;
      case 6:
        if (carrier) MoveServicesToCarrier(messages(), database, Services(database), *carrier);
        break;
      default:
        MoveFavourites(messages(), group, GroupKind::kTv, Run(group.tv.size()), Target(group.tv.size()));
    }
  }

  void Edit(StaticDatabase& database) {
    Satellite* satellite = Any(database.satellites);
    switch (Upto(4)) {
      case 0:
        MarkSatellites(database, Run(database.satellites.size()), static_cast<SatelliteField>(Upto(2)),
                       static_cast<uint32_t>(Upto(15)));
        break;
      case 1:
        if (satellite)
          MarkCarriers(*satellite, Run(satellite->carriers.size()), static_cast<CarrierField>(Upto(2)),
                       static_cast<uint32_t>(Upto(3)));
        break;
      case 2:
        StoreSdbName(Upto(1) ? "New" : "Old", document.sdbs[0]);
        break;
      case 3:
        StoreGroupName("News", database.favourites[Upto(7)], Upto(1) == 1);
        break;
      default:
        document.compress_payload = !document.compress_payload;
    }
  }

  DropNode Node() { return {static_cast<DropKind>(Upto(8)), Upto(1), Upto(3), Upto(3), Upto(7), Upto(4)}; }

  // True when it was a sort.
  bool Step() {
    StaticDatabase& database = Database();
    switch (Upto(9)) {
      case 0:
      case 1:
      case 2:
      case 3:
        Add(database);
        return false;
      case 4:
        Delete(database);
        return false;
      case 5:
      case 6:
        Move(database);
        return false;
      case 7: {
        DropNode from = Node(), to = Node();
        if (Upto(3) > 0) to.kind = from.kind, to.sdb = from.sdb = 0;
        DropRecord(messages(), document, from, to);
        return false;
      }
      case 8:
        Edit(database);
        return false;
      default: {
        const bool descending = Upto(1) == 1;
        SortDatabase(database, {{{static_cast<SatelliteKey>(Upto(2))}, descending},
                                {{static_cast<CarrierKey>(Upto(2)), CarrierKey::kName}, descending},
                                {{static_cast<ServiceKey>(Upto(2)), ServiceKey::kName}, descending}});
        return true;
      }
    }
  }

  void CheckAll() {
    uint32_t mask = 0;
    for (const OpenSdb& sdb : document.sdbs) {
      ASSERT_EQ(CheckLinks(*sdb.database), "");
      ASSERT_EQ(ArraysFollowLists(*sdb.database), "");
      mask |= 1u << sdb.slot;
    }
    ASSERT_EQ(document.slot_mask, mask);
  }
};

TEST(RandomEdits, LinksHoldAndEveryStepIsUndoneAndRedone) {
  for (unsigned seed = 1; seed <= 25; ++seed) {
    SCOPED_TRACE(seed);
    Player player(seed);
    UndoHistory history;
    StartHistory(history, player.document);
    std::vector<Document> states;
    states.push_back(CopyDocument(player.document));
    std::vector<bool> sorts;
    for (int i = 0; i < 120; ++i) {
      const bool sort = player.Step();
      player.CheckAll();
      if (testing::Test::HasFatalFailure()) return;
      const std::string change = Difference(states.back(), player.document);
      ASSERT_EQ(RecordChange(history, player.document, sort), !change.empty()) << change;
      if (change.empty()) continue;
      states.push_back(CopyDocument(player.document));
      sorts.push_back(sort);
    }
    ASSERT_GT(states.size(), 40u);
    for (size_t i = states.size() - 1; i-- > 0;) {
      EXPECT_STREQ(UndoText(history), sorts[i] ? "&Undo Sorting\tCtrl+Z" : "&Undo\tCtrl+Z");
      ASSERT_TRUE(Undo(history, player.document));
      player.CheckAll();
      ASSERT_EQ(Difference(states[i], player.document), "") << "step " << i;
      ASSERT_EQ(IsChanged(history), i != 0);
    }
    ASSERT_FALSE(Undo(history, player.document));
    for (size_t i = 1; i < states.size(); ++i) {
      ASSERT_TRUE(Redo(history, player.document));
      ASSERT_EQ(Difference(states[i], player.document), "") << "step " << i;
    }
    ASSERT_FALSE(Redo(history, player.document));
  }
}

TEST(RandomEdits, WhatIsSavedOpensAsItWas) {
  int opened = 0;
  for (unsigned seed = 100; seed < 140; ++seed) {
    SCOPED_TRACE(seed);
    Player player(seed);
    for (int i = 0; i < 60; ++i) player.Step();
    player.recorder.Texts();
    const auto file = BuildBin(player.recorder.context, player.document, {}, {});
    ASSERT_TRUE(file);
    Document reopened;
    ASSERT_TRUE(OpenBinBytes(player.recorder.context, *file, reopened));
    ++opened;
    ASSERT_EQ(reopened.sdbs.size(), player.document.sdbs.size());
    for (size_t i = 0; i < reopened.sdbs.size(); ++i) {
      const StaticDatabase& before = *player.document.sdbs[i].database;
      StaticDatabase& after = *reopened.sdbs[i].database;
      ASSERT_EQ(CheckLinks(after), "");
      after.satellites.resize(before.satellites.size());  // a file holds 85 and 16
      after.lnb_count = before.lnb_count;
      EXPECT_EQ(DatabaseDifference(before, after), "");
    }
  }
  EXPECT_EQ(opened, 40);
}

TEST(RandomEdits, ARefusedOperationChangesNothing) {
  int refused = 0;
  for (unsigned seed = 200; seed < 215; ++seed) {
    SCOPED_TRACE(seed);
    Player player(seed);
    for (int i = 0; i < 150; ++i) {
      const Document before = CopyDocument(player.document);
      player.Step();
      if (player.recorder.Texts().empty()) continue;
      ++refused;
      ASSERT_EQ(Difference(before, player.document), "");
    }
  }
  EXPECT_GT(refused, 200);
}

}  // namespace
}  // namespace vexa
