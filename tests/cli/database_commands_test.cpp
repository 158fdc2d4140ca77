#include "tests/cli/cli_test.h"

namespace vexa {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct DatabaseCommands : CliTest {
  // base.bin: SDBs of three satellites and a carrier at the second, and two user box records.
  void MakeDatabase(int sdbs = 2) {
    Document document;
    for (int i = 1; i <= sdbs; ++i) {
      StaticDatabase& database = *AppendSdb(document, "SDB" + std::to_string(i))->database;
      database.lnb_count = 1;
      for (const char* name : {"Astra", "Hotbird", "Thor"}) AddTestSatellite(database, name);
      AddTestCarrier(database, 1);
    }
    document.ubis = {{"UBI1", {}}, {"UBI2", {}}};
    Save(document, "base.bin");
  }
};

TEST_F(DatabaseCommands, WrongUsageIsStatusTwoAndSaysNothingOnOutput) {
  MakeDatabase();
  const std::string lines[] = {
      "",
      "nonsense",
      "info",
      "info @base.bin --nonsense",
      "save @base.bin",
      "save @missing.bin -o @out.bin --sdb 1,x",
      "export @base.bin -o @out.bin --sdb 1-2",
  };
  const std::string options[] = {"--version 256.0",
                                 "--version 1",
                                 "--version 0x100.0",
                                 "--version '1.0 '",
                                 "--initials ABCD",
                                 "--initials \xE6\x97\xA5",
                                 "--compress-bin maybe",
                                 "--sdb 0",
                                 "--sdb 2-1",
                                 "--sdb 0x",
                                 "--sdb 1x",
                                 "--sdb 1,",
                                 "--sdb 0x1-",
                                 "--satellites 1"};
  const auto refuses = [&](const std::string& line) {
    const ProgramResult result = Vexa(line);
    EXPECT_EQ(result.status, 2) << line;
    EXPECT_EQ(result.output, "") << line;
    EXPECT_NE(result.errors, "") << line;
  };
  for (const std::string& line : lines) refuses(line);
  for (const std::string& option : options) refuses("save @base.bin -o @out.bin " + option);
  EXPECT_FALSE(Exists("out.bin"));
}

TEST_F(DatabaseCommands, NumbersAreDecimalOrHexadecimal) {
  MakeDatabase();
  for (const std::string option : {"--sdb 0x1", "--sdb 0X1-0x02,01", "--version 0xFF.0x0A"})
    EXPECT_EQ(Vexa("save @base.bin -o @out.bin " + option).status, 0) << option;
}

TEST_F(DatabaseCommands, RefusalsAreStatusOneWithTheBoxTextAndKeepTheOldOutput) {
  MakeDatabase();
  Put("out.bin", "old");
  Put("bad.bin", "no database at all, but long enough");
  const struct {
    const char *line, *text;
  } rows[] = {
      {"info @missing.bin", "error: Error No: -3 \n File Access Error!!!\n"},
      {"save @bad.bin -o @out.bin", "error: StaticDB file magic ID mismatch. Input a valid SDB.\n"},
      {"save @base.bin -o @out.bin --sdb 3", "error: "},
      {"save @base.bin -o @out.bin --sdb 1 --satellites 86", "error: "},
      {"save @base.bin -o @no/such/folder.bin", "error: Could not creat file \""},
      {"set @base.bin -o @out.bin 'ubi 2' name=", "error: UBI2: UBI name can not be empty."},
  };
  for (const auto& row : rows) {
    const ProgramResult result = Vexa(row.line);
    EXPECT_EQ(result.status, 1) << row.line;
    EXPECT_EQ(result.output, "") << row.line;
    EXPECT_THAT(result.errors, StartsWith(row.text));
    EXPECT_EQ(Get("out.bin"), BytesOf("old")) << row.line;
  }
}

TEST_F(DatabaseCommands, SaveChoosesSdbsAndUbis) {
  MakeDatabase(3);
  const std::string out = "\xC3\xBC out.bin", save = "save @base.bin -o '@" + out + "' ";
  ASSERT_EQ(Vexa(save + "--sdb 3,1 --ubi 2").status, 0);
  const Document document = Open(out);
  ASSERT_EQ(document.sdbs.size(), 2u);
  EXPECT_EQ(document.sdbs[1].name, "SDB3");
  ASSERT_EQ(document.ubis.size(), 1u);
  EXPECT_EQ(document.ubis[0].name, "UBI2");
  ASSERT_EQ(Vexa(save + "--ubi none").status, 0);
  EXPECT_EQ(Open(out).ubis.size(), 0u);
}

TEST_F(DatabaseCommands, SaveSatellitesWritesASubset) {
  MakeDatabase();
  ASSERT_EQ(Vexa("save @base.bin -o @subset.bin --sdb 2 --satellites 2-3").status, 0);
  const Document document = Open("subset.bin");
  ASSERT_EQ(document.sdbs.size(), 1u);
  const StaticDatabase& database = *document.sdbs[0].database;
  EXPECT_EQ(NameOf(database.satellites[0]->record.name), "Hotbird");
  EXPECT_EQ(NameOf(database.satellites[2]->record.name), "NewSat 1");
  EXPECT_EQ(database.carriers.at(0)->record.satellite_index, 0u);
}

TEST_F(DatabaseCommands, VersionInitialsAndCompressionReachTheFile) {
  MakeDatabase();
  const std::string save = "save @base.bin -o @out.bin --version 255.7 --compress-bin on --compress-sdb on ";
  const std::pair<const char*, const char*> rows[] = {
      {"AB", "AB "}, {"\xC3\xA4\xC3\xB6\xC3\xBC", "\xE4\xF6\xFC"}};  // characters of the file
  for (const auto& [initials, stored] : rows) {
    ASSERT_EQ(Vexa(save + "--initials " + initials).status, 0);
    const Bytes bytes = Get("out.bin");
    ASSERT_GT(bytes.size(), 24u);
    EXPECT_EQ(Bytes(bytes.begin() + 2, bytes.begin() + 4), (Bytes{255, 7}));
    EXPECT_EQ(std::string(bytes.begin() + 8, bytes.begin() + 11), stored);
    EXPECT_EQ(bytes[11], 1);
  }
  const ProgramResult info = Vexa("info @out.bin");
  EXPECT_EQ(info.status, 0);
  EXPECT_THAT(info.output, HasSubstr("Yes\t016\t085\t001\t000\t"));
  EXPECT_THAT(info.output, HasSubstr("(Compressed)"));
}

}  // namespace
}  // namespace vexa
