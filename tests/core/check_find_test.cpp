#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/check.h"
#include "core/edit.h"
#include "core/find.h"
#include "platform/code_page.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Two satellites; on the first one carrier with three services; on the second one carrier with one. Nothing
// wrong.
struct Looks : testing::Test {
  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    for (const Finding& finding : FindFaults(document)) lines.push_back(finding.line());
    return lines;
  }
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  Looks() {
    database.lnb_count = 1;
    for (const char* name : {"Astra", "Thor"}) AddTestSatellite(database, name)->record.angle = 192;
    for (size_t i = 0; i < 2; ++i) SetName(AddTestCarrier(database, i)->record.name, i ? "Beam" : "Low band");
    for (const uint32_t number : {1u, 2u, 3u, 1u}) {
      Service* service = AddTestService(database, database.carriers[database.services.size() / 3]);
      SetName(service->record.name, "Channel");
      service->record.program_number = number & 0xFFFF;
    }
  }
  Service& At(size_t service) { return *database.services[service]; }
};

TEST_F(Looks, NothingIsFoundInAGoodDatabase) {
  AddTestSatellite(database, "NewSat 3")->record.position = 255;
  document.ubis.push_back({"UBI1", {}});
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(Looks, FindingsStandInTreeOrderAndRuleOrder) {
  AddSdb({}, document)->name = "\xC4";
  document.sdbs[1].database->favourites[7].record.radio_name[0] = 0;
  database.satellites[0]->record.position = 65;
  database.satellites[0]->record.angle = 0;
  database.satellites[1]->record.angle = 3610;
  database.satellites[1]->record.name[0] = 0;
  CarrierRecord& carrier = database.carriers[1]->record;
  carrier.name[0] = 0;
  carrier.frequency = 10699;
  carrier.symbol_rate = 999;
  At(1).record.name[0] = 0;
  At(1).record.program_number = 1;
  At(1).record.video_pid = 31;
  At(2).record.program_number = 1;
  At(2).record.audio_pid = 8193;
  At(3).record.pcr_pid = 0;
  At(3).record.video_pid = 0;
  At(3).record.type = kRadio;
  database.favourites[0].record.tv_name[0] = 0;
  database.favourites[1].record.radio_name[0] = 0;
  AddTestSatellite(database, "NewSat 3x")->record.angle = 1;
  database.satellites[2]->record.position = 255;
  document.ubis.push_back({"", {}});
  EXPECT_THAT(
      Lines(),
      ElementsAre(
          "SDB1 satellite 1: Satellite Position should be less then 64.",
          "SDB1 satellite 1: Invalid satellite angle.",
          "SDB1 satellite 1 carrier 1 service 2: Service name can not be empty. Enter a valid name.",
          "SDB1 satellite 1 carrier 1 service 2: Service program number already exists.",
          "SDB1 satellite 1 carrier 1 service 2: Invalid Video PID. Do you want to update default value ?",
          "SDB1 satellite 1 carrier 1 service 3: Service program number already exists.",
          "SDB1 satellite 1 carrier 1 service 3: Invalid Audio PID. Do you want to update default PID ?",
          "SDB1 satellite 2: Satellite name can not be empty. Enter a valid name.",
          "SDB1 satellite 2: Satellite angle should be 0 - 360.",
          "SDB1 satellite 2 carrier 1: Carrier name can not be empty. Enter a valid name.",
          "SDB1 satellite 2 carrier 1: Carrier frequency should be in the range of 10700 - 12750",
          "SDB1 satellite 2 carrier 1: Carrier symbol rate should be in the range of 1000 - 45000.",
          "SDB1 satellite 2 carrier 1 service 1: Invalid PCR PID. Do you want to update default PID ?",
          "SDB1 satellite 3: Satellite Position should be less then 64.",
          "SDB1 TV group 1: FGL Name can not be empty. Enter a valid name.",
          "SDB1 radio group 2: FGL Name can not be empty. Enter a valid name.",
          "\xC3\x84 radio group 8: FGL Name can not be empty. Enter a valid name.",
          ": UBI name can not be empty. Enter a valid name."));
}

TEST_F(Looks, TheFrequencyRangeIsThatOfTheSatellitesPresentLnb) {
  database.lnb_count = 2;
  database.lnbs[1].type = kLnbIfInput;
  database.satellites[0]->record.lnb_index = 1;
  EXPECT_THAT(
      Lines(),
      ElementsAre("SDB1 satellite 1 carrier 1: Carrier frequency should be in the range of 950 - 2150"));
  database.lnb_count = 0;
  database.satellites[0]->record.lnb_index = 0;
  EXPECT_THAT(Lines(), ElementsAre("SDB1: Add atleast one LNB to add a satellite."));
}

TEST_F(Looks, EveryLimitThatIsExceededIsFound) {
  for (const uint32_t above : {0u, 1u}) {
    database.lnb_count = kMaximumLnbs + above;
    while (database.satellites.size() < kMaximumSatellites + above)
      AddTestSatellite(database, "NewSat " + std::to_string(database.satellites.size()));
    database.carriers.resize(kMaximumCarriers + above);
    database.services.resize(kMaximumServices + above);
    EXPECT_EQ(Lines().size(), 4 * above);
  }
  EXPECT_THAT(Lines(), ElementsAre("SDB1: Can't add LNB Information. It exceeds the limit 16.",
                                   "SDB1: Can't add SATELLITE Information. It exceeds the limit.",
                                   "SDB1: Can't add carrier information. It exceeds the limit.",
                                   "SDB1: Can't add service information. It exceeds the limit."));
}

TEST_F(Looks, FindGoesRoundInTreeOrder) {
  SetName(At(2).record.name,
          "\xC4"
          "STRA beam");
  SetName(At(3).record.name, "bEAM 2");
  const FindQuery query{FindBy::kName, "BEAM", false};
  const std::vector<RecordPlace> round = {{0, 0, 0, 2}, {0, 1, 0, -1}, {0, 1, 0, 0}};
  RecordPlace place;
  for (size_t i = 0; i < 6; ++i) {
    place = *FindNext(document, query, place);
    EXPECT_EQ(place, round[i % 3]) << i;
  }
  for (size_t i = 5; i > 0; --i) {
    place = *FindPrevious(document, query, place);
    EXPECT_EQ(place, round[(i - 1) % 3]) << i;
  }
  EXPECT_EQ(FindNext(document, {FindBy::kName, "\xC3\xA4stra", false}), (RecordPlace{0, 0, 0, 2}));
  EXPECT_FALSE(FindNext(document, {FindBy::kName, "nowhere", false}));
  EXPECT_FALSE(FindPrevious(document, {FindBy::kName, "", false}));
}

// Small and capital letters of the page that the names stand in.
TEST_F(Looks, FindByNamesOfThePage) {
  const struct {
    const char *page, *name, *query;
    bool found;
  } cases[] = {{"Windows-1252", "\x8Aport \xC4\x9F", "\xC5\xA1port \xC3\xA4\xC3\xBF", true},
               {"Windows-1251", "\xDF\xD7", "\xD1\x8F\xD1\x87", true},  // capital and small ya, che
               {"Windows-1252", "\xDF\xD7", "\xD1\x8F\xD1\x87", false},
               {"ISO 8859-2", "\xA3\xAC", "\xC5\x82\xC5\xBA", true},
               {"Windows-1253", "\xA2\xD9", "\xCE\xAC\xCF\x89", true},
               {"Windows-1253", "\xA2\xD9", "\xCE\xAC\xCF\x88", false}};
  for (const auto& c : cases) {
    document.names = FindCodePage(c.page);
    SetName(At(3).record.name, c.name);
    const auto found = FindNext(document, {FindBy::kName, c.query});
    EXPECT_EQ(found, c.found ? std::optional(RecordPlace{0, 1, 0, 0}) : std::nullopt) << c.query;
  }
}

TEST_F(Looks, FindByNumber) {
  At(1).record.pcr_pid = 0x100;
  At(2).record.audio_pid = 100;
  database.carriers[1]->record.frequency = 11000;
  const struct {
    FindBy by;
    const char* text;
    bool hexadecimal;
    int satellite, carrier, service;  // -2: nothing
  } rows[] = {
      {FindBy::kProgramNumber, "3", false, 0, 0, 2},  {FindBy::kProgramNumber, "0x2", false, 0, 0, 1},
      {FindBy::kProgramNumber, "9", false, -2, 0, 0}, {FindBy::kPid, "100", false, 0, 0, 2},
      {FindBy::kPid, "100", true, 0, 0, 1},           {FindBy::kPid, "0x100", false, 0, 0, 1},
      {FindBy::kPid, "100g", true, -2, 0, 0},         {FindBy::kPid, "", true, -2, 0, 0},
      {FindBy::kFrequency, "11000", true, 1, 0, -1},  {FindBy::kFrequency, "11001", false, -2, 0, 0},
      {FindBy::kFrequency, "-1", false, -2, 0, 0},
  };
  for (const auto& row : rows) {
    const auto place = FindNext(document, {row.by, row.text, row.hexadecimal});
    EXPECT_EQ(place.has_value(), row.satellite != -2) << row.text;
    if (place) {
      EXPECT_EQ(*place, (RecordPlace{0, row.satellite, row.carrier, row.service})) << row.text;
    }
  }
}

}  // namespace
}  // namespace vexa
