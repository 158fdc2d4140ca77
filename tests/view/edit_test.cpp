#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "view/node_edit.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char* const kMultiple = "Cannot insert during multiple selection.";

struct Edits : testing::Test {
  Recorder recorder;
  const Messages& messages = recorder.context.messages;
  DefaultRecords defaults;
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;

  // One LNB, `satellites` satellites, on the first `carriers` carriers, on its first `services` services.
  void Make(size_t satellites, size_t carriers = 0, size_t services = 0) {
    ASSERT_TRUE(AddLnb(messages, database, defaults));
    for (size_t i = 0; i < satellites; ++i) ASSERT_TRUE(AddSatellite(messages, database, defaults));
    for (size_t i = 0; i < carriers; ++i)
      ASSERT_TRUE(AddCarrier(messages, database, *database.satellites[0], defaults));
    for (size_t i = 0; i < services; ++i)
      ASSERT_TRUE(AddService(messages, database, *database.carriers[0], defaults));
  }
  // Services beyond what a test wants to add one by one.
  void Fill(size_t services) {
    while (database.services.size() < services) AddTestService(database, database.carriers[0]);
  }
  Carrier& FirstCarrier() { return *database.satellites[0]->carriers[0]; }
  template <class Result>
  void ExpectRefusal(const Result& done, const std::string& text) {
    EXPECT_FALSE(done);
    EXPECT_THAT(recorder.Texts(), ElementsAre(text));
  }
  // The same of what could be done after a step of the user's, which is said below the text.
  template <class Result>
  void ExpectAdvice(const Result& done, const std::string& text) {
    EXPECT_TRUE(recorder.EachHasDetail()) << text;
    ExpectRefusal(done, text);
  }
  void TearDown() override { EXPECT_EQ(CheckLinks(database), ""); }
};

TEST_F(Edits, LnbsEndAtSixteenAndSatellitesAtEightyFive) {
  ExpectAdvice(AddSatellite(messages, database, defaults), "Add atleast one LNB to add a satellite.");
  ExpectAdvice(InsertSatellite(messages, database, defaults, {}), "Add atleast one LNB to add a satellite.");
  Make(85);
  for (int i = 1; i < 16; ++i) EXPECT_TRUE(AddLnb(messages, database, defaults));
  ExpectAdvice(AddLnb(messages, database, defaults), "Can't add LNB Information. It exceeds the limit 16.");
  ExpectAdvice(AddSatellite(messages, database, defaults),
               "Can't add SATELLITE Information. It exceeds the limit.");
  ExpectAdvice(InsertSatellite(messages, database, defaults, {3}),
               "Satellite records exceed the limit. Can not add.");
  ExpectAdvice(InsertSatellite(messages, database, defaults, {3, 4}), kMultiple);
}

TEST_F(Edits, CarriersAndServicesEndAt65535) {
  Make(1, 1);
  Satellite& satellite = *database.satellites[0];
  Carrier& carrier = FirstCarrier();
  Fill(65534);
  EXPECT_TRUE(AddService(messages, database, carrier, defaults));
  ExpectAdvice(AddService(messages, database, carrier, defaults),
               "Can't add service information. It exceeds the limit.");
  ExpectAdvice(InsertService(messages, database, carrier, defaults, {0}),
               "Service records exceed the limit. Can not add.");
  ExpectAdvice(InsertService(messages, database, carrier, defaults, {0, 1}), kMultiple);
  while (database.carriers.size() < 65535) AddTestCarrier(database, 0);
  ExpectAdvice(AddCarrier(messages, database, satellite, defaults),
               "Can't add carrier information. It exceeds the limit.");
  ExpectAdvice(InsertCarrier(messages, database, satellite, defaults, {0}),
               "Carrier records exceed the limit. Can not add.");
  ExpectAdvice(InsertCarrier(messages, database, satellite, defaults, {0, 2}), kMultiple);
}

TEST_F(Edits, SdbsAndUbisEndAtSixteen) {
  for (int i = 2; i <= 16; ++i) EXPECT_EQ(AddSdb(messages, document)->name, "SDB" + std::to_string(i));
  ExpectAdvice(AddSdb(messages, document), "SDB count exceeds the allowed numbers.Cannot add more SDB's.");
  for (int i = 1; i <= 16; ++i) EXPECT_EQ(AddUbi(messages, document)->name, "UBI" + std::to_string(i));
  ExpectAdvice(AddUbi(messages, document), "Can't add USER BOX information. It exceeds the limit 16.");
  EXPECT_EQ(document.ubis[3].record.rf_channel, 21);
  EXPECT_EQ(std::string(document.ubis[3].record.lock_code, 4), "0000");
}

TEST_F(Edits, ANewSdbTakesTheLowestSlotAndTheLastPlace) {
  AddSdb(messages, document);
  AddSdb(messages, document);
  EXPECT_TRUE(DeleteSdb(messages, document, 1));
  const OpenSdb& sdb = *AddSdb(messages, document);
  EXPECT_EQ(sdb.slot, 1u);
  EXPECT_EQ(&sdb, &document.sdbs.back());
  EXPECT_EQ(sdb.name, "SDB3");  // twice now: names follow the count
  EXPECT_EQ(document.slot_mask, 7u);
}

TEST_F(Edits, FavouriteListsTakeTheirTypeOnceUpToTheLimit) {
  Make(1, 1);
  Fill(3600);
  for (size_t i = 2600; i < 3600; ++i) database.services[i]->record.type = i % 2 ? 2 : 0;
  database.services[0]->record.type = kRadio;
  FavouriteGroup& group = database.favourites[2];
  SetName(group.record.tv_name, "Films");
  SetName(group.record.radio_name, "\xBC\xEE");
  const char* const radio_limit =
      "This service cannot be added in Мю\tgroup since it exceeds more than 1000 records";
  const char* const tv_limit =
      "This service cannot be added in Films group since it exceeds more than 2500 records";
  const struct {
    GroupKind kind;
    int from, to;
    size_t size;       // of the list then
    const char* text;  // nullptr: added
  } rows[] = {
      {GroupKind::kRadio, 2599, 3599, 999, nullptr},  // the first is a TV service
      {GroupKind::kRadio, 2598, 3600, 1000, nullptr}, {GroupKind::kRadio, 0, 1, 1000, radio_limit},
      {GroupKind::kRadio, 3000, 3100, 1000, nullptr},  // all there already
      {GroupKind::kTv, 1, 2500, 2499, nullptr},       {GroupKind::kTv, 2498, 2502, 2499, tv_limit},
      {GroupKind::kTv, 2500, 2501, 2500, nullptr},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.from);
    const auto first = database.services.begin();
    const bool added = AddFavourites(messages, group, row.kind, {first + row.from, first + row.to},
                                     *FindCodePage("ISO 8859-5"));
    EXPECT_EQ(added, row.text == nullptr);
    EXPECT_EQ((row.kind == GroupKind::kTv ? group.tv : group.radio).size(), row.size);
    if (row.text) {
      EXPECT_THAT(recorder.Texts(), ElementsAre(row.text));
    }
  }
  EXPECT_THAT(recorder.Texts(), IsEmpty());
}

TEST_F(Edits, NewRecordsAreNamedAndSetByTheirSurroundings) {
  Make(2, 2, 2);
  database.satellites[1]->record.user = 1;
  EXPECT_THAT(NamesOf(database.satellites), ElementsAre("Satellite1", "Satellite2"));
  EXPECT_EQ(AddCarrier(messages, database, *database.satellites[1], defaults)->record.user, 1u);
  defaults.carrier.user = 1;
  EXPECT_EQ(AddCarrier(messages, database, *database.satellites[0], defaults)->record.user, 1u);
  EXPECT_THAT(NamesOf(database.satellites[0]->carriers), ElementsAre("Carrier1", "Carrier2", "Carrier3"));
  // The middle one goes; a name may come a second time, its satellite takes the number of its place.
  InsertCarrier(messages, database, *database.satellites[0], defaults, {1});
  InsertService(messages, database, FirstCarrier(), defaults, {0});
  InsertSatellite(messages, database, defaults, {0});
  EXPECT_THAT(NamesOf(database.satellites), ElementsAre("Satellite1", "Satellite1", "Satellite2"));
  EXPECT_THAT(NamesOf(database.carriers),
              ElementsAre("Carrier1", "Carrier4", "Carrier1", "Carrier2", "Carrier3"));
  EXPECT_THAT(NamesOf(database.satellites[1]->carriers[0]->services),
              ElementsAre("Service3", "Service1", "Service2"));
  EXPECT_THAT(NamesOf(database.service_order), ElementsAre("Service1", "Service2", "Service3"));
}

TEST_F(Edits, OnlyIfInputCorrectsTheDefaultFrequency) {
  const struct {
    uint32_t type, frequency, expected;
  } rows[] = {{kLnbNormal, 10700, 10700}, {kLnbLnbf, 949, 949},    {kLnbUniversal, 1, 1},
              {kLnbIfInput, 949, 950},    {kLnbIfInput, 950, 950}, {kLnbIfInput, 2150, 2150},
              {kLnbIfInput, 2151, 950},   {kLnbIfInput, ~0u, 950}};
  Make(1);
  for (const auto& row : rows) {
    database.lnbs[0].type = row.type & 3;
    defaults.carrier.frequency = row.frequency;
    EXPECT_EQ(AddCarrier(messages, database, *database.satellites[0], defaults)->record.frequency,
              row.expected)
        << row.type << " " << row.frequency;
  }
}

TEST_F(Edits, ANewServiceFollowsTheFilterAndTakesAFreeNumber) {
  Make(1, 1, 3);
  defaults.service.type = 3;
  Carrier& carrier = FirstCarrier();
  const auto added = [&](std::optional<ServiceType> type) {
    return AddService(messages, database, carrier, defaults, type);
  };
  EXPECT_EQ(added({})->record.type, 3u);
  EXPECT_EQ(added(kTv)->record.type, kTv);
  EXPECT_EQ(added(kRadio)->record.type, kRadio);
  EXPECT_EQ(carrier.services.back()->record.program_number, 6u);
  DeleteServices(database, {carrier.services[1], carrier.services[3], carrier.services[1]});
  EXPECT_EQ(added({})->record.program_number, 2u);
  EXPECT_EQ(added({})->record.program_number, 4u);
  EXPECT_EQ(added({})->record.program_number, 7u);
}

TEST_F(Edits, TheLastLnbAndTheLastSdbStay) {
  Make(0);
  const char* const one_lnb = "Cannot delete. Minimum one LNB is required.";
  ExpectAdvice(DeleteLnbs(messages, database, {0}), one_lnb);
  AddLnb(messages, database, defaults);
  ExpectAdvice(DeleteLnbs(messages, database, {0, 1}), one_lnb);
  ExpectAdvice(DeleteSdb(messages, document, 0), "Cannot delete. Minimum one SDB is needed.");
  EXPECT_EQ(database.lnb_count, 2u);
  EXPECT_EQ(document.slot_mask, 1u);
}

TEST_F(Edits, DeletingLnbsMovesTheIndicesAboveThem) {
  Make(6);
  for (uint32_t i = 1; i < 5; ++i) {
    AddLnb(messages, database, defaults);
    database.lnbs[i].frequency1 = i & 0x3FFF;
  }
  for (uint32_t i = 0; i < 6; ++i) database.satellites[i]->record.lnb_index = i & 0xFF;
  EXPECT_TRUE(DeleteLnbs(messages, database, {1, 3}));
  std::vector<uint32_t> indices;
  for (const Satellite* satellite : database.satellites) indices.push_back(satellite->record.lnb_index);
  EXPECT_THAT(indices, ElementsAre(0, 0, 1, 0, 2, 3));
  EXPECT_EQ(database.lnb_count, 3u);
  EXPECT_EQ(database.lnbs[1].frequency1, 2u);
  EXPECT_EQ(database.lnbs[2].frequency1, 4u);
  EXPECT_EQ(database.lnbs[3].frequency1, 9750u);
  EXPECT_THAT(recorder.Texts(), IsEmpty());
}

TEST_F(Edits, WhatStandsBelowGoesWithARecord) {
  Make(3, 2, 2);
  Carrier& other = *AddCarrier(messages, database, *database.satellites[2], defaults);
  Service& service = *AddService(messages, database, other, defaults);
  Service* gone = FirstCarrier().services[1];
  AddFavourites(messages, database.favourites[0], GroupKind::kTv,
                {gone, &service, FirstCarrier().services[0]});
  DeleteServices(database, {gone});
  EXPECT_EQ(database.favourites[0].tv.size(), 2u);
  EXPECT_EQ(CheckLinks(database), "");
  DeleteSatellites(database, {0, 1});
  EXPECT_EQ(CheckLinks(database), "");
  EXPECT_EQ(other.record.satellite_index, 0u);
  EXPECT_THAT(database.service_order, ElementsAre(&service));
  EXPECT_THAT(database.favourites[0].tv, ElementsAre(&service));
  DeleteCarriers(database, *database.satellites[0], {0});
  EXPECT_EQ(CheckLinks(database), "");
  EXPECT_THAT(database.favourites[0].tv, IsEmpty());
  EXPECT_EQ(database.satellites.size(), 1u);
  for (const NodeRef& level : ChildNodes(document, RootNodes(document)[0]))
    EXPECT_FALSE(DeleteNodes(messages, document, {level})) << NodeLabel(document, level);
}

TEST_F(Edits, MarkAndSelectByEveryField) {
  Make(4, 4);
  const auto rows_below = [&](const TreePath& path) {
    return ListBelow(document, NodesAlong(document, path).back(), ListView::kBelow, false).rows;
  };
  const auto satellites = rows_below({0, 1}), carriers = rows_below({0, 1, 0});
  // A service on each satellite, as they share its LNB.
  for (size_t i = 0; i < 4; ++i) {
    Satellite& satellite = *database.satellites[i];
    Carrier* carrier = i == 0 ? satellite.carriers[0] : AddCarrier(messages, database, satellite, defaults);
    AddService(messages, database, *carrier, defaults);
  }
  const auto services = ListBelow(document, RootNodes(document)[0], ListView::kServices, false).rows;
  database.favourites[0].tv = database.services;
  // Marks two rows of both kinds with each choice of the menu: those, and those alone, are found by it then.
  for (const FieldChoice& choice : FieldChoices()) {
    const auto& rows = choice.kind == NodeKind::kCarrier   ? carriers
                       : choice.kind == NodeKind::kService ? services
                                                           : satellites;
    for (const FieldChoice& other : FieldChoices()) MarkNodes(document, rows, other);
    if (choice.text.starts_with("No "))
      for (Service* service : database.services)
        service->record.video_pid = service->record.audio_pid = service->record.pcr_pid = 99;
    const Rows all = MatchingRows(rows, choice);
    MarkNodes(document, {satellites[1], carriers[1], services[1], satellites[3], carriers[3], services[3]},
              choice);
    const bool last = all.size() == 4;  // of its field: what all were marked with
    EXPECT_EQ(MatchingRows(rows, choice), last ? Rows({0, 1, 2, 3}) : Rows({1, 3})) << choice.text;
    EXPECT_THAT(MatchingRows(&rows == &carriers ? satellites : carriers, choice), IsEmpty());
  }
  // The last choice of each field, in its bits.
  const SatelliteRecord& satellite = satellites[0].satellite->record;
  EXPECT_EQ(satellite.lnb_index, 15u);
  EXPECT_EQ(satellite.east, 0u);
  EXPECT_EQ(satellite.user, 1u);
  const CarrierRecord& carrier = carriers[0].carrier->record;
  EXPECT_EQ(carrier.polarization, kRight);
  EXPECT_EQ(carrier.fec, 5u);
  EXPECT_EQ(carrier.user, 1u);
  EXPECT_EQ(services[2].service->record.video_pid, kNoPid) << "none of radio";
  EXPECT_THAT(database.favourites[0].tv, IsEmpty()) << "radio leaves the TV lists";
}

// Rows added to a group, and dropped on one of its lists.
TEST_F(Edits, AdditionsToAGroupAreCounted) {
  Make(1, 1, 4);
  const auto rows =
      ListBelow(document, NodesAlong(document, {0, 1, 0, 0}).back(), ListView::kBelow, false).rows;
  database.services[3]->record.type = kRadio;
  FavouriteGroup& group = database.favourites[2];
  group.tv = {database.services[1]};
  const NodeRef tv = NodesAlong(document, {0, 2, 2}).back(), radio = NodesAlong(document, {0, 3, 2}).back();
  EXPECT_EQ(ListDroppedOn(rows, tv), GroupKind::kTv);
  EXPECT_EQ(ListDroppedOn(rows, radio), GroupKind::kRadio);
  EXPECT_EQ(ListDroppedOn({NodesAlong(document, {0, 1, 0, 0}).back()}, tv), std::nullopt);
  EXPECT_TRUE(DropMarkOf(rows, tv).onto);
  auto addition = AddRowsToGroup(messages, document, rows, 2, GroupKind::kTv);
  ASSERT_TRUE(addition.has_value());
  EXPECT_EQ(AdditionText(*addition), "2 added, 1 there before, 1 did not fit");
  EXPECT_EQ(NamesOf(group.tv), (std::vector<std::string>{"Service2", "Service1", "Service3"}));
  EXPECT_THAT(group.radio, IsEmpty());
  addition = AddRowsToGroup(messages, document, rows, 2);
  EXPECT_EQ(AdditionText(*addition), "1 added, 3 there before, 0 did not fit");
  EXPECT_FALSE(DropNodes(messages, document, rows, radio)) << "nothing is added";
  DeleteFavourites(group, GroupKind::kTv, {0, 1, 2});
  EXPECT_TRUE(DropNodes(messages, document, {rows[2], rows[0]}, tv));
  EXPECT_EQ(NamesOf(group.tv), (std::vector<std::string>{"Service3", "Service1"}));
  // What a group takes up knows it.
  const auto details = DetailsOf(document, rows[0], false).details;
  EXPECT_EQ(details.back(), (std::pair<std::string, std::string>("Favourite Groups", "Favourite3 (TV)")));
}

TEST_F(Edits, ChosenServicesOfAListKeepTheirOrder) {
  Make(1, 1, 5);
  const auto& all = database.services;
  FavouriteGroup& group = database.favourites[0];
  all[4]->record.type = kRadio;
  group.tv = {all[3], all[1], all[4], all[3]};  // as a file may have them
  EXPECT_TRUE(SetEntries(messages, group, GroupKind::kTv, all, {all[0], all[2], all[3], all[4]}));
  EXPECT_THAT(group.tv, ElementsAre(all[3], all[4], all[3], all[0], all[2]));
  // Both lists of a group, or neither.
  Fill(1200);
  for (size_t i = 5; i < 1010; ++i) all[i]->record.type = kRadio;
  const auto rows =
      ListBelow(document, NodesAlong(document, {0, 1, 0, 0}).back(), ListView::kBelow, false).rows;
  ExpectAdvice(AddRowsToGroup(messages, document, rows, 1),
               "This service cannot be added in Favourite2\tgroup since it exceeds more than 1000 records");
  EXPECT_THAT(database.favourites[1].tv, IsEmpty());
  EXPECT_TRUE(AddRowsToGroup(messages, document, {rows[0], rows[1], rows[4]}, 1).has_value());
  EXPECT_THAT(database.favourites[1].tv, ElementsAre(all[0], all[1]));
  EXPECT_THAT(database.favourites[1].radio, ElementsAre(all[4]));
}

TEST_F(Edits, AnSdbOfItsOwnFileNeedsASatelliteAndACarrier) {
  ExpectAdvice(CheckSeparateSdb(messages, database),
               "Invalid SDB. \nNOTE: Valid SDB should contain atleast one satellite record.");
  Make(1);
  ExpectAdvice(CheckSeparateSdb(messages, database),
               "Invalid SDB. \nNOTE: Valid SDB should contain atleast one Carrier record.");
  AddCarrier(messages, database, *database.satellites[0], defaults);
  EXPECT_TRUE(CheckSeparateSdb(messages, database));
  database.lnb_count = 17;
  ExpectAdvice(CheckSeparateSdb(messages, database), "Invalid SDB. LNB count exceecds the limit 16.");
  database.lnb_count = 1;
}

}  // namespace
}  // namespace vexa
