#include "import/csv_table.h"

#include <gtest/gtest.h>

#include <cstring>

#include "import/json_document.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

struct CsvTable : testing::Test {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  Recorder recorder;
  // Two LNBs; Sat1 with carriers A (services P1, P2, P3) and B (P1); Sat2 without.
  void SetUp() override {
    database.lnb_count = 2;
    for (const char* name : {"Sat1", "=2"}) AddTestSatellite(database, name)->record.angle = 192;
    for (const char* name : {"A", "B"}) SetName(AddTestCarrier(database, 0)->record.name, name);
    for (const int place : {0, 0, 0, 1}) {
      Carrier* carrier = database.carriers[static_cast<size_t>(place)];
      Service* service = AddTestService(database, carrier);
      service->record.program_number = static_cast<uint16_t>(carrier->services.size());
      SetName(service->record.name, Format("P%zu", carrier->services.size()));
    }
    database.services[1]->record.type = 0;
    std::swap(database.service_order[0], database.service_order[3]);
    database.favourites[0].tv = {database.services[2], database.services[0]};
    database.favourites[0].radio = {database.services[1]};
  }
  std::string Written(TableKind kind) { return TableOfSdb(database, kind, Windows1252()); }
  std::string Json() { return JsonOfSdb(document.sdbs[0], Windows1252()); }
  // The table with pieces replaced, read and applied: what does not fit, else the missing rows.
  std::string Update(TableKind kind, const std::string& text, bool delete_missing = false) {
    TableUpdate update;
    if (const auto misfit = ReadTable(text, kind, Windows1252(), database, update))
      return misfit->where + ": " + misfit->what;
    std::string missing;
    for (const MissingRow& row : update.missing) missing += row.text + ";";
    if (!ApplyTable(recorder.context.messages, database, update, delete_missing)) missing += "refused";
    EXPECT_EQ(CheckLinks(database), "");
    return missing;
  }
  // Names of satellites, carriers and services in tree order.
  std::string Tree() {
    std::string text;
    for (const Satellite* satellite : database.satellites) {
      text += std::string(NameOf(satellite->record.name)) + "(";
      for (const Carrier* carrier : satellite->carriers) {
        text += std::string(NameOf(carrier->record.name)) + "(";
        for (const Service* service : carrier->services)
          text += std::string(NameOf(service->record.name)) + " ";
        text += ")";
      }
      text += ")";
    }
    return text;
  }
};

TEST_F(CsvTable, EveryKindAsItIsWritten) {
  LnbRecord& lnb = database.lnbs[0];
  lnb.switch_type = kSwitchDiseqc;
  lnb.diseqc_switch = 6;
  database.lnbs[1].plain_switch = 7;
  database.lnbs[1].tone_22khz = 3;
  database.services[0]->record.video_pid = 33;
  SetName(database.services[2]->record.name, "'@\xE9,");
  EXPECT_EQ(Written(TableKind::kLnbs),
            "lnb,frequency1,frequency2,type,power,tone_22khz,switch_type,switch,motor\r\n"
            "1,9750,10600,Universal,On,Auto,DiSEqC 1.0,6,Fixed\r\n"
            "2,9750,10600,Universal,On,3,None,7,Fixed\r\n");
  EXPECT_EQ(Written(TableKind::kSatellites),
            "satellite,name,angle,east,position,lnb,user,carriers\r\n1,Sat1,19.2,West,0,1,No,2\r\n"
            "2,'=2,19.2,West,0,1,No,0\r\n");
  EXPECT_EQ(Written(TableKind::kCarriers),
            "satellite,satellite_name,carrier,name,frequency,symbol_rate,polarization,fec,user,services\r\n"
            "1,Sat1,1,A,10700,27500,Horizontal,Auto,No,3\r\n1,Sat1,2,B,10700,27500,Horizontal,Auto,No,1\r\n");
  EXPECT_EQ(
      Written(TableKind::kServices),
      "satellite,satellite_name,carrier,carrier_name,frequency,polarization,service,number,order,name,"
      "program_number,type,free,video_pid,audio_pid,pcr_pid\r\n"
      "1,Sat1,1,A,10700,Horizontal,1,1,4,P1,1,TV,Yes,33,,\r\n1,Sat1,1,A,10700,Horizontal,2,2,2,P2,2,Radio,"
      "Yes,,,\r\n1,Sat1,1,A,10700,Horizontal,3,3,3,\"''@\xC3\xA9,\",3,TV,Yes,,,\r\n"
      "1,Sat1,2,B,10700,Horizontal,1,4,1,P1,1,TV,Yes,,,\r\n");
  EXPECT_EQ(Written(TableKind::kFavourites),
            "group,list,group_name,entry,number,name\r\n1,TV,Favourite1,1,3,\"''@\xC3\xA9,\"\r\n"
            "1,TV,Favourite1,2,1,P1\r\n1,Radio,Favourite1,1,2,P2\r\n");
}

// A table that nobody changed changes nothing, whatever the records hold.
TEST(CsvTables, UnchangedTablesChangeNothing) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::mt19937 random(seed);
    Document document = MakeRandomDocument(random);
    const std::string before = JsonOfDocument(document, Windows1252());
    for (const std::string& name : TableNames()) {
      const TableKind kind = TableNamed(name).value();
      for (const OpenSdb& sdb : document.sdbs) {
        TableUpdate update;
        const auto misfit = ReadTable(TableOfSdb(*sdb.database, kind, Windows1252()), kind, Windows1252(),
                                      *sdb.database, update);
        ASSERT_FALSE(misfit) << name << ' ' << misfit->where << ' ' << misfit->what << " seed " << seed;
        EXPECT_TRUE(update.missing.empty()) << name;
        const auto outcome = ApplyTable({}, *sdb.database, update, true);
        ASSERT_TRUE(outcome.has_value());
        EXPECT_EQ(TableOutcomeText(*outcome), "0 changed") << name;
      }
      ASSERT_EQ(JsonOfDocument(document, Windows1252()), before) << name << " seed " << seed;
    }
  }
}

TEST_F(CsvTable, RowsChangeAndOrderTheirRecords) {
  EXPECT_EQ(Update(TableKind::kSatellites,
                   "satellite;angle;name;east;lnb\n2;7,35;'-x;east;2\n1;19.2;Sat1;West;1\n"),
            "");
  EXPECT_EQ(Update(TableKind::kCarriers, "satellite,carrier,fec,polarization\n2,2,3/4,3\n2,1,7,Vertical\n"),
            "");
  EXPECT_EQ(Update(TableKind::kServices,
                   "satellite\tcarrier\tservice\tname\torder\n2\t1\t1\tP1\t2\n2\t2\t3\tP3\t3\n"
                   "2\t2\t1\tQ\t1\n2\t2\t2\tP2\t4\n"),
            "");
  EXPECT_EQ(Tree(), "-x()Sat1(B(P1 )A(P3 Q P2 ))");
  const SatelliteRecord& satellite = database.satellites[0]->record;
  EXPECT_EQ(std::tuple(satellite.angle, satellite.east, satellite.lnb_index), std::tuple(73u, 1u, 1u));
  const CarrierRecord& b = database.carriers[0]->record;
  const CarrierRecord& a = database.carriers[1]->record;
  EXPECT_EQ(std::tuple(b.fec, b.polarization, a.fec), std::tuple(3u, 3u, 7u));
  EXPECT_EQ(NameOf(database.service_order[0]->record.name), "Q");
  EXPECT_EQ(
      Update(TableKind::kFavourites, "list,group,entry,number,group_name\nTV,1,2,1,New\nTV,1,1,1,New\n"),
      "radio group 1 entry 1 P2;");
  EXPECT_EQ(NameOf(database.favourites[0].record.tv_name), "New");
  EXPECT_EQ(database.favourites[0].tv, (std::vector<Service*>{database.services[0], database.services[0]}));
}

TEST_F(CsvTable, GuardedNamesComeBack) {
  for (const char* name : {"=a", "'=a", "''=a", "'a", "-", "'", "\t", "a=", ""}) {
    SetName(database.services[0]->record.name, name);
    SetName(database.favourites[0].record.tv_name, name);
    const std::string before = Json(), services = Written(TableKind::kServices);
    Update(TableKind::kServices, services);
    Update(TableKind::kFavourites, Written(TableKind::kFavourites));
    EXPECT_EQ(Json(), before) << name;
    SetName(database.services[0]->record.name, "other");
    Update(TableKind::kServices, services);
    if (std::string_view(name) == "''=a") continue;  // two apostrophes are not guarded, and one is taken off
    EXPECT_EQ(Json(), before) << name;
  }
}

TEST_F(CsvTable, TheSwitchIsThatOfItsType) {
  database.lnbs[0].plain_switch = 9;
  database.lnbs[0].tone_burst_switch = 3;
  const LnbRecord& lnb = database.lnbs[0];
  EXPECT_EQ(Update(TableKind::kLnbs, "lnb,switch_type,switch\n2,None,None\n1,None,9\n"), "");
  EXPECT_EQ(std::tuple(lnb.plain_switch, lnb.tone_burst_switch), std::tuple(9u, 3u)) << "nothing changed";
  EXPECT_EQ(Update(TableKind::kLnbs, "lnb,switch_type,switch\n2,None,None\n1,DiSEqC 1.0,B\n"), "");
  EXPECT_EQ(std::tuple(lnb.switch_type, lnb.diseqc_switch, lnb.plain_switch, lnb.tone_burst_switch),
            std::tuple(kSwitchDiseqc, 2u, 0u, 0u));
}

TEST_F(CsvTable, MissingRowsStayOrGo) {
  const std::string services = "satellite,carrier,service\n1,1,3\n1,1,1\n";
  EXPECT_EQ(Update(TableKind::kServices, services),
            "satellite 1 carrier 1 service 2 P2;satellite 1 carrier 2 service 1 P1;");
  EXPECT_EQ(Tree(), "Sat1(A(P3 P1 P2 )B(P1 ))=2()");
  Update(TableKind::kServices, services, true);
  EXPECT_EQ(Tree(), "Sat1(A(P2 P3 )B())=2()");
  EXPECT_EQ(Update(TableKind::kCarriers, "satellite,carrier\n1,2\n", true), "satellite 1 carrier 1 A;");
  EXPECT_EQ(Update(TableKind::kSatellites, "satellite\n2\n", true), "satellite 1 Sat1;");
  EXPECT_EQ(Tree(), "=2()");
  EXPECT_EQ(Update(TableKind::kLnbs, "lnb,type\n1,Normal\n"), "LNB 2;");
  EXPECT_EQ(Update(TableKind::kLnbs, "lnb\n", true), "LNB 1;LNB 2;refused");
  EXPECT_EQ(recorder.Texts(), std::vector<std::string>{"Cannot delete. Minimum one LNB is required."});
  EXPECT_EQ(Update(TableKind::kLnbs, "lnb\n2\n", true), "LNB 1;");
  EXPECT_EQ(database.lnb_count, 1u);
}

TEST_F(CsvTable, ServicesLeaveTheListsOfTheirOldType) {
  database.services[0]->record.video_pid = database.services[2]->record.video_pid = 33;
  EXPECT_EQ(Update(TableKind::kServices,
                   "satellite,carrier,service,type,video_pid\n1,1,1,Radio,33\n1,1,2,TV,44\n1,1,3,radio,55\n1,"
                   "2,1,TV,\n"),
            "");
  EXPECT_TRUE(database.favourites[0].tv.empty() && database.favourites[0].radio.empty());
  const auto pid = [&](size_t i) { return database.services[i]->record.video_pid; };
  EXPECT_EQ(std::tuple(pid(0), pid(1), pid(2)), std::tuple(kNoPid, 44u, 55u));
}

// Services 1 and 4 are TV and free, 3 and 1 stand in the TV list; 2 is radio.
TEST_F(CsvTable, EntriesKeepTheRulesOfTheirLists) {
  database.favourites[1].tv = {database.services[1], database.services[0], database.services[0]};
  const std::string columns = "group,list,entry,number\n";
  const struct {
    const char *rows, *detail;
    MissingRows missing = MissingRows::kKeep;
  } cases[] = {
      {"1,TV,1,2\n", "x, line 2: number \"2\" is no TV service"},
      {"1,TV,2,1\n1,Radio,1,4\n", "x, line 3: number \"4\" is no radio service"},
      {"1,TV,1,1\n", "x, line 2: number \"1\" is in the list already"},
      {"1,TV,1,4\n1,TV,2,4\n", "x, line 3: number \"4\" is in the list already"},
      {"2,TV,1,1\n", "x, line 2: number \"1\" is in the list already"},
      {"1,TV,1,1\n", "", MissingRows::kDelete},
      {"2,TV,1,2\n2,TV,3,1\n2,TV,2,1\n", ""},  // as the list has them
      {"2,TV,1,4\n", ""},
      {"1,TV,1,1\n1,TV,2,3\n", ""},
  };
  const auto before = database.favourites;
  for (const auto& c : cases) {
    recorder.shown.clear();
    database.favourites = before;
    const auto outcome = UpdateFromTableText(recorder.context.messages, "x", columns + c.rows, Windows1252(),
                                             database, [&](const std::string&) { return c.missing; });
    const auto details = recorder.Details();
    EXPECT_EQ(details.empty() ? "" : details[0], c.detail) << c.rows;
    EXPECT_EQ(outcome.has_value(), details.empty()) << c.rows;
    EXPECT_TRUE(outcome || database.favourites[0].tv == before[0].tv) << c.rows;
  }
  EXPECT_EQ(database.favourites[0].tv, (std::vector<Service*>{database.services[0], database.services[2]}));
}

TEST_F(CsvTable, TellsWhatItDid) {
  const auto told = [&](const std::string& text, MissingRows missing = MissingRows::kKeep) {
    const auto outcome = UpdateFromTableText(recorder.context.messages, "x", text, Windows1252(), database,
                                             [&](const std::string&) { return missing; });
    return !outcome ? "refused" : TableOutcomeText(*outcome) + Format(" left %zu", outcome->left_lists);
  };
  // Beside and below what a spreadsheet marked too widely.
  EXPECT_EQ(told("satellite\tname\t\t\r\n1\tSat1\t\t\r\n2\tNew\t\t\r\n\t\t\t\r\n"), "1 changed left 0");
  EXPECT_EQ(told("satellite,name,\n1,Sat1,x\n"), "refused");
  EXPECT_EQ(told("satellite,,name\n1,,Sat1\n"), "refused");
  EXPECT_EQ(recorder.Details(), (std::vector<std::string>{"x, line 2: has a cell too many",
                                                          "x, line 1: column \"\" is unknown"}));
  EXPECT_EQ(told("lnb,power\n1,Off\n2,On\n"), "1 changed left 0");
  EXPECT_EQ(told("satellite,carrier,service,type\n1,1,3,Radio\n1,1,2,TV\n1,2,1,Radio\n"),
            "3 changed, order changed left 2");
  EXPECT_EQ(told("satellite,carrier,service,order\n1,1,1,1\n1,2,1,4\n"), "0 changed, order changed left 0");
  EXPECT_EQ(told("satellite,carrier,name\n1,2,C\n", MissingRows::kDelete), "1 changed, 1 deleted left 0");
  database.favourites[0].tv = database.favourites[0].radio = {};
  database.favourites[0].radio = {database.services[0]};
  EXPECT_EQ(told("group,list,entry,number,group_name\n1,Radio,1,1,New\n"), "0 changed, 1 renamed left 0");
}

TEST_F(CsvTable, ATableOfAnotherDatabaseIsAskedAbout) {
  const struct {
    TableKind kind;
    const char *cell, *other;
    bool asked = true;
  } cases[] = {
      {TableKind::kServices, "1,Sat1,2,B,10700,Horizontal,1,4,1,P1,", "1,Sat1,2,X,10700,Horizontal,1,4,1,Q,"},
      {TableKind::kServices, "1,Sat1,2,B,10700,Horizontal,1,4,1,Q,", "1,,2,B,9,Left,1,9,1,R,", false},
      {TableKind::kFavourites, "1,2,1,P1", "1,2,1,P9"},
      {TableKind::kFavourites, "1,2,1,P1", "1,2,4,P1", false},
      {TableKind::kCarriers, "1,Sat1,2,B,", "1,Sat9,2,C,"},
  };
  const auto keep = [](const std::string&) { return MissingRows::kKeep; };
  for (const auto& c : cases) {
    std::string text = Written(c.kind);
    const size_t place = text.find(c.cell);
    ASSERT_NE(place, std::string::npos) << text;
    text.replace(place, std::strlen(c.cell), c.other);
    const std::string before = Json();
    recorder.answer = false;
    const auto outcome =
        UpdateFromTableText(recorder.context.messages, "x", text, Windows1252(), database, keep);
    EXPECT_EQ(outcome.has_value(), !c.asked) << c.other;
    EXPECT_EQ(Json() == before, c.asked) << c.other;
    EXPECT_EQ(recorder.Texts().size(), c.asked ? 1u : 0u) << c.other;
    recorder.answer = true;
    EXPECT_TRUE(UpdateFromTableText(recorder.context.messages, "x", text, Windows1252(), database, keep));
    recorder.shown.clear();
  }
}

TEST_F(CsvTable, WhatDoesNotFit) {
  const struct {
    TableKind kind;
    const char *text, *misfit;
  } cases[] = {
      {TableKind::kLnbs, "", "line 1: names no columns"},
      {TableKind::kLnbs, "lnb,name\n", "line 1: column \"name\" is unknown"},
      {TableKind::kLnbs, "lnb,type,type\n", "line 1: column \"type\" is there twice"},
      {TableKind::kCarriers, "carrier\n1\n", "line 1: column \"satellite\" is missing"},
      {TableKind::kLnbs, "lnb\n1,2\n", "line 2: has a cell too many"},
      {TableKind::kLnbs, "lnb\n\n3\n", "line 3: lnb \"3\" is not there"},
      {TableKind::kLnbs, "lnb\n1\n1\n", "line 3: is there twice"},
      {TableKind::kLnbs, "lnb,type\n1,Wide\n", "line 2: type \"Wide\" does not fit"},
      {TableKind::kSatellites, "satellite,angle\n1,409.6\n", "line 2: angle \"409.6\" does not fit"},
      {TableKind::kSatellites, "satellite,angle\n1,1.x\n", "line 2: angle \"1.x\" does not fit"},
      {TableKind::kSatellites, "satellite,lnb\n1,17\n", "line 2: lnb \"17\" does not fit"},
      {TableKind::kSatellites, "satellite,lnb\n1,0\n", "line 2: lnb \"0\" does not fit"},
      {TableKind::kSatellites, "satellite,user\n1,2\n", "line 2: user \"2\" does not fit"},
      {TableKind::kSatellites, "satellite,name\n1,123456789012345678901\n",
       "line 2: name is longer than 20 characters"},
      {TableKind::kSatellites, "satellite,name\n1,\xD0\x96\n",
       "line 2: name has characters that Windows-1252 lacks"},
      {TableKind::kServices, "satellite,carrier,service,order\n1,1,1,2\n1,1,2,2\n",
       "line 1: order 2 is there twice"},
      {TableKind::kServices, "satellite,carrier,service,video_pid\n1,1,1,16384\n",
       "line 2: video_pid \"16384\" does not fit"},
      {TableKind::kFavourites, "group,list,entry,number\n1,tv,1,1\n",
       "line 2: list \"tv\" is neither TV nor Radio"},
      {TableKind::kFavourites, "group,list,entry,number\n1,TV,1,9\n", "line 2: number \"9\" is not there"},
      {TableKind::kFavourites, "group,list,entry,number,group_name\n1,TV,1,1,a\n1,TV,2,1,b\n",
       "line 3: group_name is another one above"},
  };
  const std::string before = Json();
  for (const auto& c : cases) EXPECT_EQ(Update(c.kind, c.text), c.misfit);
  EXPECT_EQ(Json(), before);
}

TEST_F(CsvTable, AFileThatCameBackIsTakenOver) {
  const Path path = recorder.context.temporary_folder / "t.csv";
  std::string question;
  const auto update = [&](const std::string& text, MissingRows missing) {
    PutFile(path, BytesOf(text));
    return UpdateFromTableFile(recorder.context.messages, path, Windows1252(), database,
                               [&](const std::string& asked) {
                                 question = asked;
                                 return missing;
                               });
  };
  for (const TableKind kind : {TableKind::kLnbs, TableKind::kSatellites, TableKind::kCarriers,
                               TableKind::kServices, TableKind::kFavourites})
    EXPECT_EQ(KindOfTable(Written(kind)), kind);
  EXPECT_TRUE(update("satellite,carrier,name\n1,2,New\n1,1,A\n", MissingRows::kCancel));
  EXPECT_EQ(Tree(), "Sat1(New(P1 )A(P1 P2 P3 ))=2()");
  EXPECT_EQ(question, "");
  const std::string one = "satellite,carrier,name\n1,2,Last\n";
  EXPECT_FALSE(update(one, MissingRows::kCancel));
  EXPECT_EQ(Tree(), "Sat1(New(P1 )A(P1 P2 P3 ))=2()");
  EXPECT_EQ(question.substr(0, question.find("\n\nDelete")),
            "The table has no row for 1 records:\n\nsatellite 1 carrier 1 New");
  EXPECT_TRUE(update(one, MissingRows::kDelete));
  EXPECT_EQ(Tree(), "Sat1(Last(P1 P2 P3 ))=2()");
  // As spreadsheets leave them.
  EXPECT_TRUE(update("name;carrier;satellite\r\nLast; 1;1 \r\n;;\r\n;;\r\n", MissingRows::kCancel));
  EXPECT_TRUE(recorder.shown.empty());
  EXPECT_FALSE(update("satellite,name\n1,K\xF6ln\n", MissingRows::kKeep));
  EXPECT_NE(recorder.Details().at(0).find("UTF-8"), std::string::npos);
  recorder.shown.clear();
  EXPECT_FALSE(update("a,b\n1,2\n", MissingRows::kKeep));
  EXPECT_FALSE(update("satellite,angle\n1,x\n", MissingRows::kKeep));
  EXPECT_FALSE(
      UpdateFromTableFile(recorder.context.messages, path / "none", Windows1252(), database, nullptr));
  const auto details = recorder.Details();
  ASSERT_EQ(details.size(), 3u);
  EXPECT_NE(details[1].find("t.csv, line 2: angle"), std::string::npos);
}

}  // namespace
}  // namespace vexa
