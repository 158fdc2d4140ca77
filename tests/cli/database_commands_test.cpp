#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/bin_file.h"
#include "tests/support/recorder.h"
#include "tests/support/run_vexa.h"

namespace vexa {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct DatabaseCommands : testing::Test {
  Recorder recorder;
  Path folder = recorder.context.temporary_folder;
  std::string In(const std::string& name) { return Utf8FromPath(folder / PathFromUtf8(name)); }

  // A database of `sdbs` SDBs, each with one LNB, three satellites and a carrier, and two user box records.
  std::string MakeDatabase(int sdbs = 2) {
    Document document;
    for (int i = 1; i <= sdbs; ++i) {
      StaticDatabase& database = *AppendSdb(document, "SDB" + std::to_string(i))->database;
      database.lnb_count = 1;
      for (const char* name : {"Astra", "Hotbird", "Thor"}) {
        Satellite* satellite = database.satellite_pool.Take();
        SetName(satellite->record.name, name);
        database.satellites.push_back(satellite);
      }
      Carrier* carrier = database.carrier_pool.Take();
      SetName(carrier->record.name, "Carrier1");
      carrier->satellite = database.satellites[1];
      carrier->record.satellite_index = 1;
      carrier->satellite->carriers.push_back(carrier);
      carrier->satellite->record.carrier_count = 1;
      database.carriers.push_back(carrier);
    }
    document.ubis = {{"UBI1", {}}, {"UBI2", {}}};
    const std::string file = In("base.bin");
    EXPECT_TRUE(SaveBin(recorder.context, document, PathFromUtf8(file)));
    return file;
  }
  Document Open(const std::string& file) {
    Document document;
    EXPECT_TRUE(OpenBin(recorder.context, PathFromUtf8(file), document)) << file;
    return document;
  }
};

TEST_F(DatabaseCommands, WrongUsageIsStatusTwoAndSaysNothingOnOutput) {
  const std::string file = MakeDatabase(), out = In("out.bin");
  const std::vector<std::vector<std::string>> rows = {
      {},
      {"nonsense"},
      {"info"},
      {"info", file, "--nonsense"},
      {"save", file},
      {"save", file, "-o", out, "--version", "256.0"},
      {"save", file, "-o", out, "--version", "1"},
      {"save", file, "-o", out, "--initials", "ABCD"},
      {"save", file, "-o", out, "--compress-bin", "maybe"},
      {"save", In("missing.bin"), "-o", out, "--sdb", "1,x"},
      {"export", file, "-o", out, "--sdb", "1-2"},
      {"save", file, "-o", out, "--sdb", "0"},
      {"save", file, "-o", out, "--sdb", "2-1"},
      {"save", file, "-o", out, "--satellites", "1"},
  };
  for (const auto& row : rows) {
    const ProgramResult result = RunVexa(row);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(row);
    EXPECT_EQ(result.output, "") << testing::PrintToString(row);
    EXPECT_NE(result.errors, "") << testing::PrintToString(row);
  }
  EXPECT_FALSE(std::filesystem::exists(PathFromUtf8(out)));
}

TEST_F(DatabaseCommands, RefusalsAreStatusOneWithTheBoxTextAndKeepTheOldOutput) {
  const std::string file = MakeDatabase(), out = In("out.bin");
  PutFile(PathFromUtf8(out), BytesOf("old"));
  PutFile(PathFromUtf8(In("bad.bin")), BytesOf("no database at all, but long enough"));
  const struct {
    std::vector<std::string> arguments;
    const char* text;
  } rows[] = {
      {{"info", In("missing.bin")}, "error: Error No: -3 \n File Access Error!!!\n"},
      {{"save", In("bad.bin"), "-o", out}, "error: StaticDB file magic ID mismatch. Input a valid SDB.\n"},
      {{"save", file, "-o", out, "--sdb", "3"}, "error: "},
      {{"save", file, "-o", out, "--sdb", "1", "--satellites", "86"}, "error: "},
      {{"save", file, "-o", In("no/such/folder.bin")}, "error: Could not creat file \""},
  };
  for (const auto& row : rows) {
    const ProgramResult result = RunVexa(row.arguments);
    EXPECT_EQ(result.status, 1) << row.text;
    EXPECT_EQ(result.output, "") << row.text;
    EXPECT_THAT(result.errors, StartsWith(row.text));
    EXPECT_EQ(ReadWholeFile(PathFromUtf8(out)), BytesOf("old")) << row.text;
  }
}

TEST_F(DatabaseCommands, SaveChoosesSdbsAndUbis) {
  const std::string file = MakeDatabase(3), out = In("\xC3\xBC out.bin");
  ASSERT_EQ(RunVexa({"save", file, "-o", out, "--sdb", "3,1", "--ubi", "2"}).status, 0);
  Document document = Open(out);
  ASSERT_EQ(document.sdbs.size(), 2u);
  EXPECT_EQ(document.sdbs[1].name, "SDB3");
  ASSERT_EQ(document.ubis.size(), 1u);
  EXPECT_EQ(document.ubis[0].name, "UBI2");
  ASSERT_EQ(RunVexa({"save", file, "-o", out, "--ubi", "none"}).status, 0);
  EXPECT_EQ(Open(out).ubis.size(), 0u);
}

TEST_F(DatabaseCommands, NumbersAreDecimalOrHexadecimal) {
  const std::string file = MakeDatabase(), out = In("out.bin");
  const struct {
    std::vector<std::string> arguments;
    int status;
  } cases[] = {
      {{"save", file, "-o", out, "--sdb", "0x1"}, 0},
      {{"save", file, "-o", out, "--sdb", "0X1-0x02,01"}, 0},
      {{"save", file, "-o", out, "--sdb", "0x"}, 2},
      {{"save", file, "-o", out, "--sdb", "1x"}, 2},
      {{"save", file, "-o", out, "--sdb", "1,"}, 2},
      {{"save", file, "-o", out, "--sdb", "0x1-"}, 2},
      {{"save", file, "-o", out, "--version", "0xFF.0x0A"}, 0},
      {{"save", file, "-o", out, "--version", "0x100.0"}, 2},
      {{"save", file, "-o", out, "--version", "1.0 "}, 2},
  };
  for (const auto& c : cases)
    EXPECT_EQ(RunVexa(c.arguments).status, c.status) << testing::PrintToString(c.arguments);
}

TEST_F(DatabaseCommands, InitialsAreCharactersOfTheFileNotOfTheTerminal) {
  const std::string file = MakeDatabase(), out = In("out.bin");
  EXPECT_EQ(RunVexa({"save", file, "-o", out, "--initials", "\xC3\xA4\xC3\xB6\xC3\xBC"}).status, 0);
  const Bytes saved = ReadWholeFile(PathFromUtf8(out)).value_or(Bytes{});
  ASSERT_GT(saved.size(), 24u);
  EXPECT_EQ(std::string(saved.begin() + 8, saved.begin() + 11), "\xE4\xF6\xFC");
  EXPECT_EQ(RunVexa({"save", file, "-o", out, "--initials", "\xE6\x97\xA5"}).status, 2);
}

TEST_F(DatabaseCommands, SaveSatellitesWritesASubset) {
  const std::string file = MakeDatabase(), out = In("subset.bin");
  ASSERT_EQ(RunVexa({"save", file, "-o", out, "--sdb", "2", "--satellites", "2-3"}).status, 0);
  const Document document = Open(out);
  ASSERT_EQ(document.sdbs.size(), 1u);
  const StaticDatabase& database = *document.sdbs[0].database;
  EXPECT_EQ(NameOf(database.satellites[0]->record.name), "Hotbird");
  EXPECT_EQ(NameOf(database.satellites[2]->record.name), "NewSat 1");
  EXPECT_EQ(database.carriers.at(0)->record.satellite_index, 0u);
}

TEST_F(DatabaseCommands, VersionInitialsAndCompressionReachTheFile) {
  const std::string file = MakeDatabase(), out = In("out.bin");
  ASSERT_EQ(RunVexa({"save", file, "-o", out, "--version", "255.7", "--initials", "AB", "--compress-bin",
                     "on", "--compress-sdb", "on"})
                .status,
            0);
  const Bytes bytes = *ReadWholeFile(PathFromUtf8(out));
  EXPECT_EQ(bytes[2], 255);
  EXPECT_EQ(bytes[3], 7);
  EXPECT_EQ(std::string(bytes.begin() + 8, bytes.begin() + 11), "AB ");
  EXPECT_EQ(bytes[11], 1);
  const ProgramResult info = RunVexa({"info", out});
  EXPECT_EQ(info.status, 0);
  EXPECT_THAT(info.output, HasSubstr("Yes\t016\t085\t001\t000\t"));
  EXPECT_THAT(info.output, HasSubstr("(Compressed)"));
}

}  // namespace
}  // namespace vexa
