// export and import of documents, diff, set, sort --like, check and info as JSON.
#include <nlohmann/json.hpp>

#include "tests/cli/cli_test.h"

namespace vexa {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct DocumentCommands : CliTest {
  Document document = SmallDocument();
  void SetUp() override {
    document.ubis.clear();  // a document of one SDB has none
    Save(document, "a.bin");
  }
};

TEST_F(DocumentCommands, WhatIsExportedComesBackToTheByte) {
  ASSERT_EQ(Vexa("save @a.bin -o @saved.bin").status, 0);
  for (const char* const name : {"x.json", "x.csv"}) {
    const std::string format = std::string(name).substr(2);
    ASSERT_EQ(Vexa("export @a.bin --format " + format + " -o @" + name).status, 0);
    ASSERT_EQ(Vexa(std::string("import @") + name + " -o @back.bin").status, 0);
    EXPECT_EQ(Get("back.bin"), Get("saved.bin")) << name;
  }
  ASSERT_EQ(Vexa("export @a.bin --format json --sdb all -o @all.txt").status, 0);
  ASSERT_EQ(Vexa("import @all.txt --format json -o @back.bin").status, 0);
  EXPECT_EQ(Get("back.bin"), Get("saved.bin"));
}

TEST_F(DocumentCommands, ADocumentThatDoesNotFitMakesNothing) {
  Put("bad.csv", "record,lnb\r\nlnb,1\r\n");
  Put("bad.json", "{\"name\": 7}");
  const ProgramResult csv = Vexa("import @bad.csv -o @out.bin"), json = Vexa("import @bad.json -o @out.bin");
  EXPECT_EQ(csv.status, 1);
  EXPECT_THAT(csv.errors, StartsWith("error: line 1: "));
  EXPECT_THAT(csv.errors, HasSubstr("info: " + In("bad.csv")));
  EXPECT_EQ(json.status, 1);
  EXPECT_THAT(json.errors, StartsWith("error: /"));
  EXPECT_FALSE(Exists("out.bin"));
  EXPECT_EQ(Vexa("export @a.bin --bom -o @x").status, 2);
  EXPECT_EQ(Vexa("export @a.bin --sdb all -o @x").status, 2);
  for (const char* line : {"--sdb all", "--bom", "--what lnbs"})
    EXPECT_EQ(Vexa(std::string("export @a.bin --format html -o @x ") + line).status, 2) << line;
  EXPECT_EQ(Vexa("export @a.bin --code-page klingon -o @x").status, 2);
  EXPECT_EQ(Vexa("import @bad.csv --stream -o @x").status, 2);
}

// Two files of a gigabyte, without a byte on the disk: judged by their beginning, they are not read.
TEST_F(DocumentCommands, WhatIsNoDocumentIsRefusedByItsBeginning) {
  const std::string header = "record,lnb\r\n", zeros(60, '?');
  const std::tuple<const char*, std::string, std::string> rows[] = {
      {"z.csv", "", "line 1: column \"" + zeros + "...\" is unknown"},
      {"z.json", "", "line 1: is no JSON"},
      {"a.json", "\n[1, " + std::string(1 << 17, '2'), "line 1: is no object"},
      {"b.json", "{\n\n\"a\": b", "line 3: is no JSON"},
      {"h.csv", header, "Unable to open the given file."}};
  for (const auto& [name, start, text] : rows) {
    Put(name, start);
    std::filesystem::resize_file(At(name), uint64_t{1} << 30);
    const auto before = std::chrono::steady_clock::now();
    const ProgramResult result = Vexa(std::string("import @") + name + " -o @out.bin");
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1)) << name;
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, StartsWith("error: " + text + "\ninfo: " + In(name))) << name;
    std::filesystem::remove(At(name));
  }
  // Beginnings that are cut in the middle of anything are none the worse for it.
  Put("long.json", "{\"" + std::string(1 << 17, 'x') + "\": 1}");
  EXPECT_THAT(Vexa("import @long.json -o @out.bin").errors,
              StartsWith("error: /" + std::string(60, 'x') + "...: is unknown\n"));
  Put("quoted.csv", "record,lnb\r\n\"" + std::string(1 << 17, 'x') + "\",1\r\n");
  EXPECT_THAT(Vexa("import @quoted.csv -o @out.bin").errors,
              StartsWith("error: line 2: record \"" + std::string(60, 'x') + "...\" is unknown\n"));
}

TEST_F(DocumentCommands, SetThenDiffTellsTheAssignments) {
  ASSERT_EQ(Vexa("set @a.bin -o @b.bin 'satellite all' position=3.. 'satellite 2 carrier 1' fec=3/4").status,
            0);
  const ProgramResult diff = Vexa("diff @a.bin @b.bin");
  EXPECT_EQ(diff.status, 1);
  EXPECT_EQ(diff.output,
            "~ SDB1 satellite 1 S1: position 1 -> 3\n"
            "~ SDB1 satellite 2 S2: position 2 -> 4\n"
            "~ SDB1 satellite 2 carrier 1 S2C1: fec 0 -> 3\n");
  EXPECT_EQ(
      Vexa("diff @a.bin @b.bin --summary").output,
      "lnbs: 0 added, 0 removed, 0 changed, 0 moved\nsatellites: 0 added, 0 removed, 2 changed, 0 moved\n"
      "carriers: 0 added, 0 removed, 1 changed, 0 moved\nservices: 0 added, 0 removed, 0 changed, 0 moved\n"
      "favourites: 0 added, 0 removed, 0 changed, 0 moved\nubis: 0 added, 0 removed, 0 changed, 0 moved\n");
  const auto json = nlohmann::json::parse(Vexa("diff @a.bin @b.bin --json").output);
  EXPECT_EQ(json["schema"], "vexa-diff/1");
  EXPECT_EQ(json["differences"][1]["fields"]["position"], nlohmann::json({2, 4}));
  EXPECT_TRUE(json["differences"][1]["from"].is_null());
  EXPECT_EQ(Vexa("diff @b.bin @b.bin").status, 0);
}

TEST_F(DocumentCommands, SetRefusesAndMakesNothing) {
  const struct {
    const char* words;
    int status;
    const char* error;
  } rows[] = {
      {"'satellite 1' position=65", 1, "error: SDB1 satellite 1: Satellite Position should be less then 64."},
      {"'satellite 86' position=1", 1, "error: Number 86 is beyond the 85 that there are."},
      {"'satellite 1' place=1", 2, ""},
      {"'satellite 1 service 2' free=1", 2, ""},
      {"position=1", 2, ""},
      {"'satellite 1'", 2, ""},
      {"'satellite 0' position=1", 2, ""},
      {"'satellite all' position=255..", 2, ""}};
  for (const auto& row : rows) {
    const ProgramResult result = Vexa(std::string("set @a.bin -o @b.bin ") + row.words);
    EXPECT_EQ(result.status, row.status) << row.words;
    EXPECT_THAT(result.errors, StartsWith(row.error)) << row.words;
    EXPECT_FALSE(Exists("b.bin")) << row.words;
  }
}

TEST_F(DocumentCommands, SortLikeTakesAnOldOrder) {
  ASSERT_EQ(Vexa("sort @a.bin -o @b.bin --satellites name --descending").status, 0);
  const ProgramResult like = Vexa("sort --like @a.bin @b.bin -o @c.bin");
  EXPECT_EQ(like.status, 0);
  EXPECT_EQ(
      like.errors,
      "info: 2 of 2 satellites, 4 of 4 carriers, 12 of 12 services matched; 0 favourite entries taken, 0 "
      "left out\n");
  EXPECT_EQ(Vexa("diff @a.bin @c.bin").status, 0);
  EXPECT_EQ(Vexa("sort --like @a.bin @b.bin -o @a.bin").status, 2);
  EXPECT_EQ(Vexa("sort --like @a.bin @b.bin --services name -o @c.bin").status, 2);
}

TEST_F(DocumentCommands, DoublesAreFindingsWhenAskedFor) {
  StaticDatabase& database = *document.sdbs[0].database;
  database.satellites[1]->record.angle = 100;
  AddTestCarrier(database, 0)->record.frequency = 11003;
  SetName(database.satellites[0]->carriers[0]->services[1]->record.name, "S1C1P1");
  database.favourites[1].tv = {database.services[0], database.services[1], database.services[0]};
  Save(document, "a.bin");
  const std::string plain = Vexa("check @a.bin").output, all = Vexa("check @a.bin --duplicates").output;
  EXPECT_THAT(plain, Not(HasSubstr("Same ")));
  for (const char* const line :
       {"SDB1 satellite 2: Same orbital position as satellite 1.\n",
        "SDB1 satellite 1 carrier 3: Same frequency and polarization as carrier 1.\n",
        "SDB1 satellite 1 carrier 1 service 2: Same name as service 1.\n",
        "SDB1 TV group 2: Entry 3 is the same as entry 1.\n"})
    EXPECT_THAT(all, HasSubstr(line));
  const auto json = nlohmann::json::parse(Vexa("check @a.bin --json").output);
  EXPECT_EQ(json["findings"].size(), static_cast<size_t>(std::count(plain.begin(), plain.end(), '\n')));
  const auto info = nlohmann::json::parse(Vexa("info @a.bin --json").output);
  EXPECT_EQ(info["sdbs"][0]["carriers"], 5);
  EXPECT_EQ(info["bytes"], Get("a.bin").size());
}

}  // namespace
}  // namespace vexa
