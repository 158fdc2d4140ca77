#include <nlohmann/json.hpp>
#include <numeric>

#include "image/urt.h"
#include "tests/cli/cli_test.h"
#include "tests/support/ecf_maker.h"

namespace vexa {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

struct ImageCommands : CliTest {
  // test.ecf: configuration 0 with its settings in the image, 1 with an E2P file, 2 without a region for the
  // image. base.bin: two SDBs.
  ImageCommands() {
    const auto configuration = [](uint32_t settings, uint32_t selection, uint8_t type) {
      EcfConfigurationSpec spec{.version_a = 3, .version_b = 4};
      const uint32_t sizes[7] = {settings, 0, selection, 2560, 40000, 2000, 8 * 7044};
      for (const uint8_t i : std::initializer_list<uint8_t>{3, 4, 5, 6, 0, 2})
        spec.partitions.push_back({i, 0, 0, 0, 0, sizes[i]});
      spec.regions = {{"Application", type, 0x100000, 0x120000}};
      const uint8_t loader[8] = {0xF0, 0, 0xF5, 0, 64, 0, 0xA3, 0x0B};
      std::copy(loader, loader + 8, spec.loader);
      return spec;
    };
    EcfProductSpec product;
    product.configurations = {configuration(3368, 2248, 3), configuration(96, 64, 3),
                              configuration(3368, 2248, 1)};
    PutFile(At("test.ecf"), MakeEcf({{0x2A, {product}}}));
    std::mt19937 random(6);
    Document document = NewDocument();
    AppendSdb(document, "SDB2");
    for (auto& sdb : document.sdbs)
      sdb.database = MakeRandomDatabase(random, {4, 5, 20, 60, 9, false, false});
    Save(document, "base.bin");
  }
};

TEST_F(ImageCommands, BuildThenDecodeGivesTheSdbBack) {
  for (const std::string made : {"0/0/0", "0/0/1"}) {
    for (const std::string folder : {"made", "again"}) {
      std::filesystem::remove_all(At(folder));
      const ProgramResult build =
          Vexa("adb build @base.bin -o @" + folder + " --sdb 2 --ecf @test.ecf --select " + made +
               " --software 7.5 --time '2003-12-09 08:05:59'");
      ASSERT_EQ(build.status, 0) << build.errors;
    }
    for (const std::string name : {"/~001adb.bin", "/~001adb.urt", "/~001e2p.bin", "/~001e2p.urt"}) {
      EXPECT_EQ(Get("made" + name), Get("again" + name));
      EXPECT_EQ(Get("made" + name).empty(), made == "0/0/0" && name[5] == 'e') << name;
    }
    const UrtContent urt = ReadUrt(Get("made/~001adb.urt"));
    EXPECT_THAT(urt.findings, IsEmpty());
    EXPECT_EQ(std::tuple(urt.manufacturer_id, urt.software_major, urt.software_minor, urt.version_a,
                         urt.version_b, urt.time.second),
              std::tuple(0x2A, 7, 5, 3, 4, 59));
    const ProgramResult decode = Vexa("adb decode @made -o @back.bin --ecf @test.ecf --select " + made);
    ASSERT_EQ(decode.status, 0) << decode.errors;
    const Document before = Open("base.bin"), after = Open("back.bin");
    EXPECT_EQ(DatabaseDifference(*before.sdbs[1].database, *after.sdbs[0].database), "");
    EXPECT_NE(DatabaseDifference(*before.sdbs[0].database, *after.sdbs[0].database), "");
  }
}

TEST_F(ImageCommands, RequestFollowsTheConfiguration) {
  ASSERT_EQ(Vexa("adb request -o @one --ecf @test.ecf").status, 0);
  ASSERT_EQ(Vexa("adb request -o @two --ecf @test.ecf --select 0/0/1").status, 0);
  EXPECT_EQ(Get("one").size(), 31u);
  EXPECT_EQ(Get("two").size(), 56u);
  const ProgramResult none = Vexa("adb request -o @three --ecf @test.ecf --select 0/0/2");
  EXPECT_EQ(none.status, 1);
  EXPECT_THAT(
      none.errors,
      StartsWith("error: Vexa Editor is not configured for ADB image download.\ninfo: configuration P/C: "));
  EXPECT_FALSE(Exists("three"));
}

TEST_F(ImageCommands, UrtBuildThenShow) {
  const std::string image = "an image with repeated repeated repeated words";
  Put("image.bin", image);
  for (const std::string compress : {"", "--compress zlib:9", "--compress bin2cod"}) {
    const ProgramResult build = Vexa(
        "urt build @image.bin -o @image.urt --type 4 --kind 3 --flag 1 --name Gr\xC3\xBC\xC3\x9F "
        "--start 0x1000 --end 0x20000 --ecf @test.ecf --time '2003-12-09 08:05:59' " +
        compress);
    ASSERT_EQ(build.status, 0) << build.errors;
    EXPECT_EQ(build.output, "");
    const UrtContent urt = ReadUrt(Get("image.urt"));
    EXPECT_THAT(urt.findings, IsEmpty());
    EXPECT_EQ(urt.name, "Gr\xFC\xDF");
    EXPECT_EQ(OriginalImage(urt), BytesOf(image));
    EXPECT_EQ(urt.image[0] == 0x78, compress == "--compress zlib:9");
    const ProgramResult show = Vexa("urt show @image.urt");
    EXPECT_EQ(show.status, 0);
    EXPECT_THAT(show.output, HasSubstr("Gr\xC3\xBC\xC3\x9F"));
    EXPECT_THAT(show.output, EndsWith("Every checksum and CRC holds.\n"));
    const auto parsed = nlohmann::json::parse(Vexa("urt show @image.urt --json").output);
    EXPECT_EQ(parsed["valid"], true);
    EXPECT_EQ(parsed["time"], "2003-12-09 08:05:59");
    EXPECT_EQ(parsed["image_header"]["size"], image.size());
    EXPECT_EQ(parsed["blocks"].size(), 1u);
  }
  // One without an image header, damaged.
  ASSERT_EQ(Vexa("urt build @image.bin -o @image.urt --type 3 --kind 5 --flag 0 --name N --start 0 --end 99 "
                 "--ecf @test.ecf")
                .status,
            0);
  Bytes urt = Get("image.urt");
  urt[urt.size() - 6] ^= 1;
  PutFile(At("bad.urt"), urt);
  const ProgramResult bad = Vexa("urt show @bad.urt"), json = Vexa("urt show @bad.urt --json"),
                      missing = Vexa("urt show @missing.urt");
  EXPECT_EQ(bad.status, 1);
  EXPECT_THAT(bad.output, HasSubstr("At byte "));
  EXPECT_EQ(json.status, 1);
  EXPECT_EQ(nlohmann::json::parse(json.output)["valid"], false);
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.output, "");
}

TEST_F(ImageCommands, RefusalsKeepOldFilesAndNameTheirReason) {
  PutFile(At("image.bin"), Bytes(100));
  Put("old", "old");
  std::filesystem::create_directory(At("empty"));
  const std::string urt = "urt build -o @old --kind 3 --flag 0 --name N --start 0 ";
  const struct {
    std::string line;
    const char* text;
  } rows[] = {
      {urt + "@missing --type 3 --end 100", "error: Error No: -3 \n File Access Error!!!\ninfo: "},
      {urt + "@image.bin --type 3 --end 99", "error: Image exceeds the allowed memory space.\n"},
      {urt + "@image.bin --type 1 --end 163", "error: Image exceeds the allowed memory space.\n"},
      {"adb decode @empty -o @old", "error: File access error\n"},
      {"adb build @base.bin -o @none --sdb 3", "error: Number 3 is beyond the 2 that there are.\n"},
      {"adb build @base.bin -o @none --sdb 012", "error: Number 12 is beyond the 2 that there are.\n"},
      {"adb build @base.bin -o @none --sdb 09", "error: Number 9 is beyond the 2 that there are.\n"},
      {"adb build @base.bin -o @old", nullptr},  // its folder is a file
  };
  for (const auto& row : rows) {
    const ProgramResult result = Vexa(row.line + " --ecf @test.ecf");
    EXPECT_EQ(result.status, 1) << row.line;
    EXPECT_EQ(result.output, "") << row.line;
    EXPECT_NE(result.errors, "") << row.line;
    EXPECT_EQ(result.errors.find("error: ", 1), std::string::npos) << result.errors;
    if (row.text) {
      EXPECT_THAT(result.errors, testing::StartsWith(row.text));
    }
    EXPECT_EQ(Get("old"), BytesOf("old")) << row.line;
  }
  EXPECT_FALSE(Exists("none"));
}

TEST_F(ImageCommands, WrongUsage) {
  const std::vector<std::string> options = {" --type 3", " --kind 5",  " --flag 0",
                                            " --name N", " --start 0", " --end 5"};
  const std::string urt = "urt build @i -o @o --ecf @test.ecf";
  const auto refuses = [&](const std::string& line) { EXPECT_EQ(Vexa(line).status, 2) << line; };
  // One option spoilt, or left out where there is no value.
  const std::pair<size_t, const char*> rows[] = {{0, " --type 16"},
                                                 {0, " --type x"},
                                                 {1, " --kind 16"},
                                                 {2, " --flag 256"},
                                                 {4, " --start -1"},
                                                 {4, " --start ''"},
                                                 {4, " --start -18446744073709551615"},
                                                 {5, " --end ' 5'"},
                                                 {5, " --end +5"},
                                                 {0, ""},
                                                 {5, " --end 0x100000000"},
                                                 {1, ""},
                                                 {2, ""},
                                                 {3, ""},
                                                 {4, ""},
                                                 {5, ""}};
  for (const auto& [place, option] : rows) {
    std::string line = urt;
    for (size_t i = 0; i < options.size(); ++i) line += i == place ? option : options[i];
    refuses(line);
  }
  std::string line = urt;
  for (size_t i = 0; i < options.size(); ++i) line += i == 3 ? "" : options[i];
  EXPECT_THAT(Vexa(line + " --name " + std::string(50, 'n')).errors,
              AllOf(StartsWith("error: --name: \"nnnn"), HasSubstr("\" is longer than 49 characters\n")));
  EXPECT_THAT(Vexa(line + " --name " + std::string(49, 'n')).errors, StartsWith("error: Error No: -3"));
  EXPECT_THAT(Vexa(line + " --name n --compress zlb:3").errors,
              HasSubstr("is neither zlib:LEVEL nor bin2cod; the nearest is \"zlib:3\"\n"));
  for (const std::string method : {"zlib", "zlib:0", "zlib:10", "lzma", "''"})
    refuses(std::accumulate(options.begin(), options.end(), urt) + " --compress " + method);
  for (const char* line : {"adb", "adb build x -o y --sdb 0", "urt show",
                           "adb build @base.bin -o @out --ecf @test.ecf --select 0/0/0x100"})
    refuses(line);
}

TEST_F(ImageCommands, NumbersThatStartWithZeroAreDecimal) {
  for (const char* numbers : {"--sdb 002 --select 0x0/0/01", "--sdb 0x2 --select 0/0/1"})
    EXPECT_EQ(Vexa(std::string("adb build @base.bin -o @out --ecf @test.ecf ") + numbers).status, 0)
        << numbers;
}

TEST_F(CliTest, EcfShowWithoutAFileIsOfTheShippedOneAndGivesItsSourceBack) {
  const ProgramResult source = Vexa("ecf show --toml");
  ASSERT_EQ(source.status, 0) << source.errors;
  Put("s.toml", source.output);
  ASSERT_EQ(Vexa("ecf build @s.toml -o @s.ecf").status, 0);
  const ProgramResult shipped = Vexa("ecf show --select 1/1/1 --json"),
                      built = Vexa("ecf show @s.ecf --select 1/1/1 --json");
  EXPECT_EQ(shipped.status, 0) << shipped.errors;
  EXPECT_EQ(shipped.output, built.output);
  EXPECT_EQ(Vexa("ecf show --select '2c/with motor/EEPROM' --json").output, shipped.output);
  const ProgramResult several = Vexa("adb request -o @x --select eeprom"),
                      none = Vexa("ecf show --select Nobody");
  EXPECT_EQ(several.status, 2);
  EXPECT_THAT(several.errors, HasSubstr("may mean: 1A/Standard Receiver/Settings in EEPROM; "));
  EXPECT_EQ(none.status, 2);
  EXPECT_THAT(none.errors, HasSubstr("\"Nobody\" names no configuration; there are: 1A/"));
  Put("m", "MZ");
  EXPECT_EQ(Vexa("ecf show @m --toml").status, 1);
  // What is damaged, and what no description states: file and place.
  Bytes file = Get("s.ecf");
  PutFile(At("cut.ecf"), std::span(file).first(300));
  const ProgramResult cut = Vexa("ecf show @cut.ecf --toml");
  EXPECT_EQ(cut.status, 1);
  EXPECT_EQ(cut.errors, "error: Invalid Configuration file.\ninfo: " + In("cut.ecf") +
                            ": Damaged at byte 244: use another copy of the file.\n");
  file[5] = 1;
  file[80 + 129] = 16;
  PutFile(At("odd.ecf"), file);
  const ProgramResult odd = Vexa("ecf show @odd.ecf --toml");
  EXPECT_EQ(odd.status, 0);
  EXPECT_THAT(odd.errors, StartsWith("warning: " + In("odd.ecf") +
                                     ": No description states what this file holds at byte 5.\ninfo: Keep "));
  EXPECT_THAT(odd.errors, AllOf(HasSubstr("\nwarning: " + In("odd.ecf") + "("), Not(HasSubstr("error:")),
                                HasSubstr(".version[1]: \"version\" must be a number from 0 to 15.\n")));
  EXPECT_THAT(odd.output, HasSubstr("version = [1, 16]\n"));
  EXPECT_EQ(Vexa("ecf show --toml --json").status, 2);
  EXPECT_EQ(Vexa("ecf show --toml --select 0/0/0").status, 2);
}

}  // namespace
}  // namespace vexa
