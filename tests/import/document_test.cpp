// Databases as JSON and CSV, there and back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "core/bin_file.h"
#include "import/csv_document.h"
#include "import/json_document.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using Json = nlohmann::ordered_json;

// Bytes behind the end of names are not kept by documents.
void CleanNames(Document& document) {
  const auto clean = [](auto& name) {
    const std::string text(NameOf(name));
    std::fill(std::begin(name), std::end(name), '\0');
    std::copy(text.begin(), text.end(), name);
  };
  for (OpenSdb& sdb : document.sdbs) {
    for (Satellite* satellite : sdb.database->satellites) clean(satellite->record.name);
    for (Carrier* carrier : sdb.database->carriers) clean(carrier->record.name);
    for (Service* service : sdb.database->services) clean(service->record.name);
    for (FavouriteGroup& group : sdb.database->favourites) {
      clean(group.record.tv_name);
      clean(group.record.radio_name);
    }
  }
}

Bytes Saved(const Document& document) {
  Recorder recorder;
  return BuildBin(recorder.context, document, {}, {}).value_or(Bytes{});
}

// Services stand carrier by carrier in a database that was read.
Bytes SavedAgain(const Document& document) {
  Recorder recorder;
  Document read;
  EXPECT_TRUE(OpenBinBytes(recorder.context, Saved(document), read));
  return Saved(read);
}

std::string Where(const std::optional<Misfit>& misfit) {
  return misfit ? misfit->where : "";
}

TEST(JsonDocument, HoldsEveryBitOfADocument) {
  std::mt19937 random(3);
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    Document document = MakeRandomDocument(random), read;
    CleanNames(document);
    // A file may have names that are longer than those that a save keeps.
    if (round % 2 == 1) document.sdbs[0].name = "1234567";
    if (round % 4 == 1 && !document.ubis.empty()) document.ubis[0].name = "12345678";
    const std::string json = JsonOfDocument(document, Windows1252());
    const auto misfit = ReadJsonDocument(json, Windows1252(), read);
    ASSERT_FALSE(misfit) << misfit->where << " " << misfit->what;
    for (const OpenSdb& sdb : read.sdbs) EXPECT_EQ(CheckLinks(*sdb.database), "");
    EXPECT_TRUE(Saved(read) == Saved(document));
  }
}

TEST(CsvDocument, HoldsEveryBitOfAnSdb) {
  std::mt19937 random(4);
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    Document document, read;
    AppendSdb(document, "SDB1")->database = MakeRandomDatabase(random, MakeRandomShape(random));
    CleanNames(document);
    const std::string csv = CsvOfSdb(document.sdbs[0], Windows1252());
    const auto misfit = ReadCsvDocument(csv, Windows1252(), read);
    ASSERT_FALSE(misfit) << misfit->where << " " << misfit->what;
    EXPECT_EQ(CheckLinks(*read.sdbs[0].database), "");
    const auto filled = [](const Carrier* carrier) { return !carrier->services.empty(); };
    const auto& carriers = document.sdbs[0].database->carriers;
    if (std::all_of(carriers.begin(), carriers.end(), filled)) {
      EXPECT_TRUE(SavedAgain(read) == SavedAgain(document));
    } else {  // what has no place in a table may stand elsewhere in the array
      EXPECT_EQ(read.sdbs[0].database->carriers.size(), carriers.size());
    }
    // As spreadsheets write it.
    if (csv.find(';') != csv.npos) continue;
    std::string other = "\xEF\xBB\xBF";
    bool quoted = false;
    for (size_t i = 0; i < csv.size(); ++i) {
      if (csv[i] == '"') quoted = !quoted;
      if (!quoted && csv.compare(i, 2, "\r\n") == 0) continue;
      other += csv[i] == ',' && !quoted ? ';' : csv[i];
    }
    Document again;
    EXPECT_EQ(Where(ReadCsvDocument(other, Windows1252(), again)), "");
    EXPECT_TRUE(CsvOfSdb(again.sdbs[0], Windows1252()) == CsvOfSdb(read.sdbs[0], Windows1252()));
  }
}

TEST(CsvDocument, CarriersStandByTheNumbersOfTheirServices) {
  Document document;
  StaticDatabase& database = *AppendSdb(document, "SDB1")->database;
  for (const char* name : {"A", "B", "C"}) AddTestSatellite(database, name);
  // A: empty, with services, empty; B: none with services; C: with services that stand first.
  std::vector<Carrier*> carriers;
  for (const size_t satellite : std::initializer_list<size_t>{0, 0, 0, 1, 2})
    carriers.push_back(AddTestCarrier(database, satellite));
  for (size_t i = 0; i < carriers.size(); ++i)
    SetName(carriers[i]->record.name, std::string(1, static_cast<char>('a' + i)));
  AddTestService(database, carriers[4]);
  AddTestService(database, carriers[1]);
  PlaceCarriersByServices(database);
  EXPECT_THAT(NamesOf(database.carriers), testing::ElementsAre("e", "a", "b", "c", "d"));
}

Json SmallJson() {
  Document document;
  StaticDatabase& database = *AppendSdb(document, "Home")->database;
  database.lnb_count = 1;
  AddTestSatellite(database, "Sat");
  for (int i = 0; i < 2; ++i) AddTestService(database, AddTestCarrier(database, 0));
  database.favourites[0].tv = {database.services[1]};
  return Json::parse(JsonOfSdb(document.sdbs[0], Windows1252()));
}

TEST(JsonDocument, SaysWhereADocumentDoesNotFit) {
  const struct {
    const char* path;
    Json value;
    const char* where;
  } cases[] = {
      {"/satellites/0/carriers/1/fec", 8, "/satellites/0/carriers/1/fec"},
      {"/satellites/0/carriers/1/fec", "3/4", "/satellites/0/carriers/1/fec"},
      {"/satellites/0/carriers/1/fec", 1.5, "/satellites/0/carriers/1/fec"},
      {"/satellites/0/position", -1, "/satellites/0/position"},
      {"/satellites/0/lnb_index", 16, "/satellites/0/lnb_index"},
      {"/satellites/0/name", "123456789012345678901", "/satellites/0/name"},
      {"/satellites/0/name", "\u0416", "/satellites/0/name"},
      {"/satellites/0/more", 1, "/satellites/0/more"},
      {"/name", "Seven77", "/name"},
      {"/schema", "other/1", "/schema"},
      {"/satellites/0/carriers/1/services/0/number", 1, "/satellites/0/carriers/1/services/0/number"},
      {"/satellites/0/carriers/0/services/0/order", 3, "/satellites/0/carriers/0/services/0/order"},
      {"/satellites/0/carriers/0/place", 0, "/satellites/0/carriers/0/place"},
      {"/favourites/0/tv/0", 3, "/favourites/0/tv/0"},
      {"/favourites/7", nullptr, "/favourites/7"},
      {"/lnbs", 3, "/lnbs"},
      {"/satellites/0/carriers/0/first_service", "anything", ""}};
  for (const auto& row : cases) {
    Json json = SmallJson();
    json[Json::json_pointer(row.path)] = row.value;
    Document document;
    EXPECT_EQ(Where(ReadJsonDocument(json.dump(), Windows1252(), document)), row.where) << row.path;
  }
  Document document;
  document.ubis.push_back({"Box", {}});
  AppendSdb(document, "Home");
  const Json whole = Json::parse(JsonOfDocument(document, Windows1252()));
  for (const char* path :
       {"/compressed", "/ubi_compressed", "/sdbs/0/compressed", "/sdbs/0/more", "/ubis/0/name",
        "/ubis/0/kept_byte8_23", "/ubis/0/lock_code", "/ubis/0/rf_output"}) {
    Json json = whole;
    json[Json::json_pointer(path)] = 2;  // neither a flag nor a text
    Document read;
    EXPECT_EQ(Where(ReadJsonDocument(json.dump(), Windows1252(), read)), path);
  }
  EXPECT_EQ(Where(ReadJsonDocument("{\"a\": 1,\n\"a\": 2}", Windows1252(), document)), "/a");
  EXPECT_EQ(Where(ReadJsonDocument("{\n\"a\" 1\n\n}", Windows1252(), document)), "line 2");
  EXPECT_EQ(Where(ReadJsonDocument("[]", Windows1252(), document)), "line 1");
}

TEST(JsonDocument, WhatFollowsFromPlacesMayBeMissing) {
  Json json = SmallJson();
  json.erase("schema");
  json["satellites"][0].erase("carrier_count");
  for (Json& carrier : json["satellites"][0]["carriers"]) {
    for (const char* key : {"place", "lnb_index", "first_service", "service_count", "satellite_index"})
      carrier.erase(key);
    carrier["services"][0].erase("carrier_index");
  }
  Document document;
  EXPECT_EQ(Where(ReadJsonDocument(json.dump(), Windows1252(), document)), "");
  json["satellites"][0]["carriers"][0]["place"] = 1;
  Document other;
  EXPECT_EQ(Where(ReadJsonDocument(json.dump(), Windows1252(), other)), "/satellites/0/carriers/1/place");
  json["satellites"][0]["carriers"][0].erase("place");
  json["satellites"][0]["carriers"][1]["place"] = 9;
  EXPECT_EQ(Where(ReadJsonDocument(json.dump(), Windows1252(), other)), "/satellites/0/carriers/0/place");
}

TEST(CsvDocument, SaysOnWhichLineATableDoesNotFit) {
  Document small;
  ASSERT_EQ(Where(ReadJsonDocument(SmallJson().dump(), Windows1252(), small)), "");
  const std::string good = CsvOfSdb(small.sdbs[0], Windows1252());
  const struct {
    const char *from, *to, *where;
  } cases[] = {{"record,", "record,record,", "line 1"},
               {"frequency1", "frequency9", "line 1"},
               {"satellite,,", "planet,,", "line 3"},
               {"\r\ncarrier,", "\r\ncarrier,9", "line 4"},
               {"\r\nservice,", "\r\nservice,x", "line 5"},
               {"Sat,", "123456789012345678901,", "line 3"},
               {"Sat,", "\"Sat\"x,", "line 3"},
               {"Sat,", "\"Sat,", "line 3"}};
  for (const auto& row : cases) {
    std::string text = good;
    const size_t at = text.find(row.from);
    ASSERT_NE(at, std::string::npos) << row.from;
    text.replace(at, strlen(row.from), row.to);
    Document document;
    EXPECT_EQ(Where(ReadCsvDocument(text, Windows1252(), document)), row.where)
        << row.from << " -> " << row.to;
  }
}

TEST(CodePages, EveryByteOfEveryPageComesBack) {
  for (const std::string& name : CodePageNames()) {
    const CodePage& page = *FindCodePage(name);
    for (int byte = 0; byte < 256; ++byte) {
      const std::string one(1, static_cast<char>(byte));
      const std::string text = Utf8FromPage(page, one);
      // Two bytes that mean one character: the first of them is written.
      const auto back = PageFromUtf8(page, text);
      ASSERT_TRUE(back) << name << " " << byte;
      EXPECT_EQ(Utf8FromPage(page, *back), text);
    }
  }
  EXPECT_EQ(FindCodePage("windows1251")->name, "Windows-1251");
  EXPECT_EQ(FindCodePage("iso-8859-15")->characters[0xA4], U'\u20AC');
  EXPECT_EQ(FindCodePage("klingon"), nullptr);
  EXPECT_EQ(PageFromUtf8(*FindCodePage("ISO 8859-5"), "\u0416"), std::string("\xB6"));
  size_t lacking = 0;
  EXPECT_EQ(PageFromUtf8(Windows1252(), "a\u0416\xFF", lacking), "a??");
  EXPECT_EQ(lacking, 2u);
  for (const char* bad : {"\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\x80"})
    EXPECT_FALSE(PageFromUtf8(Windows1252(), bad));
}

}  // namespace
}  // namespace vexa
