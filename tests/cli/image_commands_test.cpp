#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "core/bin_file.h"
#include "image/urt.h"
#include "tests/support/ecf_maker.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "tests/support/run_vexa.h"

namespace vexa {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

struct ImageCommands : testing::Test {
  Recorder recorder;
  Path folder = recorder.context.temporary_folder;
  std::string In(const std::string& name) { return Utf8FromPath(folder / PathFromUtf8(name)); }
  Bytes Read(const std::string& name) { return ReadWholeFile(PathFromUtf8(In(name))).value_or(Bytes{}); }

  // Configuration 0 with its settings in the image, 1 with an E2P file, 2 without a region for the image.
  std::string MakeConfiguration() {
    const auto configuration = [](uint32_t settings, uint32_t selection, uint8_t type) {
      EcfConfigurationSpec spec;
      spec.version_a = 3;
      spec.version_b = 4;
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
    PutFile(folder / "test.ecf", MakeEcf({{0x2A, {product}}}));
    return In("test.ecf");
  }
  std::string MakeDatabase() {
    std::mt19937 random(6);
    Document document = NewDocument();
    for (int i = 0; i < 2; ++i) {
      if (i > 0) AppendSdb(document, "SDB2");
      document.sdbs.back().database = MakeRandomDatabase(random, {4, 5, 20, 60, 9, false, false});
    }
    EXPECT_TRUE(SaveBin(recorder.context, document, folder / "base.bin"));
    return In("base.bin");
  }
};

TEST_F(ImageCommands, BuildThenDecodeGivesTheSdbBack) {
  const std::string ecf = MakeConfiguration(), base = MakeDatabase();
  for (const std::string select : {"0/0/0", "0/0/1"}) {
    const std::string made = "made" + select.substr(4);
    for (const std::string again : {"", "-again"}) {
      const ProgramResult build =
          RunVexa({"adb", "build", base, "-o", In(made + again), "--sdb", "2", "--ecf", ecf, "--select",
                   select, "--software", "7.5", "--time", "2003-12-09 08:05:59"});
      ASSERT_EQ(build.status, 0) << build.errors;
    }
    const bool e2p = select == "0/0/1";
    for (const char* name : {"/~001adb.bin", "/~001adb.urt", "/~001e2p.bin", "/~001e2p.urt"}) {
      EXPECT_EQ(Read(made + name), Read(made + "-again" + name));
      EXPECT_EQ(Read(made + name).empty(), !e2p && name[5] == 'e') << name;
    }
    const UrtContent urt = ReadUrt(Read(made + "/~001adb.urt"));
    EXPECT_THAT(urt.findings, IsEmpty());
    EXPECT_EQ(std::tuple(urt.manufacturer_id, urt.software_major, urt.software_minor, urt.version_a,
                         urt.version_b, urt.time.second),
              std::tuple(0x2A, 7, 5, 3, 4, 59));
    const ProgramResult decode =
        RunVexa({"adb", "decode", In(made), "-o", In("back.bin"), "--ecf", ecf, "--select", select});
    ASSERT_EQ(decode.status, 0) << decode.errors;
    Document before, after;
    ASSERT_TRUE(OpenBin(recorder.context, folder / "base.bin", before));
    ASSERT_TRUE(OpenBin(recorder.context, folder / "back.bin", after));
    EXPECT_EQ(DatabaseDifference(*before.sdbs[1].database, *after.sdbs[0].database), "");
    EXPECT_NE(DatabaseDifference(*before.sdbs[0].database, *after.sdbs[0].database), "");
  }
}

TEST_F(ImageCommands, RequestFollowsTheConfiguration) {
  const std::string ecf = MakeConfiguration();
  ASSERT_EQ(RunVexa({"adb", "request", "-o", In("one"), "--ecf", ecf}).status, 0);
  ASSERT_EQ(RunVexa({"adb", "request", "-o", In("two"), "--ecf", ecf, "--select", "0/0/1"}).status, 0);
  EXPECT_EQ(Read("one").size(), 31u);
  EXPECT_EQ(Read("two").size(), 56u);
  const ProgramResult none =
      RunVexa({"adb", "request", "-o", In("three"), "--ecf", ecf, "--select", "0/0/2"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.errors, "error: Vexa Editor is not configured for ADB image download.\n");
  EXPECT_FALSE(std::filesystem::exists(folder / "three"));
}

TEST_F(ImageCommands, UrtBuildThenShow) {
  const std::string ecf = MakeConfiguration();
  Bytes image = BytesOf("an image with repeated repeated repeated words");
  PutFile(folder / "image.bin", image);
  for (const std::vector<std::string>& compress :
       std::vector<std::vector<std::string>>{{}, {"--compress", "zlib:9"}, {"--compress", "bin2cod"}}) {
    std::vector<std::string> arguments = {"urt",
                                          "build",
                                          In("image.bin"),
                                          "-o",
                                          In("image.urt"),
                                          "--type",
                                          "4",
                                          "--kind",
                                          "3",
                                          "--flag",
                                          "1",
                                          "--name",
                                          "Gr\xC3\xBC\xC3\x9F",
                                          "--start",
                                          "0x1000",
                                          "--end",
                                          "0x20000",
                                          "--ecf",
                                          ecf,
                                          "--time",
                                          "2003-12-09 08:05:59"};
    arguments.insert(arguments.end(), compress.begin(), compress.end());
    const ProgramResult build = RunVexa(arguments);
    ASSERT_EQ(build.status, 0) << build.errors;
    EXPECT_EQ(build.output, "");
    const UrtContent urt = ReadUrt(Read("image.urt"));
    EXPECT_THAT(urt.findings, IsEmpty());
    EXPECT_EQ(urt.name, "Gr\xFC\xDF");
    EXPECT_EQ(OriginalImage(urt), image);
    EXPECT_EQ(urt.image[0] == 0x78, compress == std::vector<std::string>({"--compress", "zlib:9"}));
    const ProgramResult show = RunVexa({"urt", "show", In("image.urt")});
    EXPECT_EQ(show.status, 0);
    EXPECT_THAT(show.output, HasSubstr("Gr\xC3\xBC\xC3\x9F"));
    EXPECT_THAT(show.output, EndsWith("Every checksum and CRC holds.\n"));
    const ProgramResult json = RunVexa({"urt", "show", In("image.urt"), "--json"});
    const auto parsed = nlohmann::json::parse(json.output);
    EXPECT_EQ(parsed["valid"], true);
    EXPECT_EQ(parsed["time"], "2003-12-09 08:05:59");
    EXPECT_EQ(parsed["image_header"]["size"], image.size());
    EXPECT_EQ(parsed["blocks"].size(), 1u);
  }
}

TEST_F(ImageCommands, ShowPrintsItsFindingsWithStatusOne) {
  const std::string ecf = MakeConfiguration();
  PutFile(folder / "image.bin", BytesOf("image"));
  ASSERT_EQ(RunVexa({"urt", "build", In("image.bin"), "-o", In("image.urt"), "--type", "3", "--kind", "5",
                     "--flag", "0", "--name", "N", "--start", "0", "--end", "5", "--ecf", ecf})
                .status,
            0);
  Bytes urt = Read("image.urt");
  urt[urt.size() - 6] ^= 1;
  PutFile(folder / "bad.urt", urt);
  const ProgramResult show = RunVexa({"urt", "show", In("bad.urt")});
  EXPECT_EQ(show.status, 1);
  EXPECT_THAT(show.output, HasSubstr("At byte "));
  const ProgramResult json = RunVexa({"urt", "show", In("bad.urt"), "--json"});
  EXPECT_EQ(json.status, 1);
  EXPECT_EQ(nlohmann::json::parse(json.output)["valid"], false);
  const ProgramResult missing = RunVexa({"urt", "show", In("missing.urt")});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.output, "");
}

TEST_F(ImageCommands, RefusalsKeepOldFilesAndNameTheirReason) {
  const std::string ecf = MakeConfiguration(), base = MakeDatabase();
  PutFile(folder / "image.bin", Bytes(100));
  PutFile(folder / "old", BytesOf("old"));
  std::filesystem::create_directory(folder / "empty");
  const auto urt = [&](const char* input, const char* type, const char* end) {
    return std::vector<std::string>{"urt",    "build", In(input), "-o",    In("old"), "--type", type,
                                    "--kind", "3",     "--flag",  "0",     "--name",  "N",      "--start",
                                    "0",      "--end", end,       "--ecf", ecf};
  };
  const struct {
    std::vector<std::string> arguments;
    const char* text;
  } rows[] = {
      {urt("missing", "3", "100"), "error: Error No: -3 \n File Access Error!!!\n"},
      {urt("image.bin", "3", "99"), "error: Image exceeds the allowed memory space.\n"},
      {urt("image.bin", "1", "163"), "error: Image exceeds the allowed memory space.\n"},
      {{"adb", "decode", In("empty"), "-o", In("old"), "--ecf", ecf}, "error: File access error\n"},
      {{"adb", "build", base, "-o", In("none"), "--sdb", "3", "--ecf", ecf},
       "error: Number 3 is beyond the 2 that there are.\n"},
      {{"adb", "build", base, "-o", In("old"), "--ecf", ecf}, nullptr},  // its folder is a file
  };
  for (const auto& row : rows) {
    const ProgramResult result = RunVexa(row.arguments);
    EXPECT_EQ(result.status, 1) << testing::PrintToString(row.arguments);
    EXPECT_EQ(result.output, "");
    if (row.text) {
      EXPECT_EQ(result.errors, row.text);
    } else {
      EXPECT_NE(result.errors, "");
    }
    EXPECT_EQ(Read("old"), BytesOf("old"));
  }
  EXPECT_FALSE(std::filesystem::exists(folder / "none"));
}

TEST_F(ImageCommands, WrongUsage) {
  const std::string ecf = MakeConfiguration();
  const std::vector<std::string> good = {"urt",    "build", In("i"),  "-o",    In("o"),  "--type", "3",
                                         "--kind", "5",     "--flag", "0",     "--name", "N",      "--start",
                                         "0",      "--end", "5",      "--ecf", ecf};
  const struct {
    size_t at;
    const char* value;
  } rows[] = {{6, "16"}, {8, "16"}, {10, "256"}, {14, "-1"}, {16, "0x100000000"}, {6, "x"}};
  for (const auto& row : rows) {
    auto arguments = good;
    arguments[row.at] = row.value;
    EXPECT_EQ(RunVexa(arguments).status, 2) << arguments[row.at - 1] << " " << row.value;
  }
  for (size_t missing = 5; missing < 17; missing += 2) {
    auto arguments = good;
    arguments.erase(arguments.begin() + static_cast<std::ptrdiff_t>(missing),
                    arguments.begin() + static_cast<std::ptrdiff_t>(missing) + 2);
    EXPECT_EQ(RunVexa(arguments).status, 2) << good[missing];
  }
  for (const char* method : {"zlib", "zlib:0", "zlib:10", "lzma", ""}) {
    auto arguments = good;
    arguments.insert(arguments.end(), {"--compress", method});
    EXPECT_EQ(RunVexa(arguments).status, 2) << method;
  }
  EXPECT_EQ(RunVexa({"adb"}).status, 2);
  EXPECT_EQ(RunVexa({"adb", "build", "x", "-o", "y", "--sdb", "0"}).status, 2);
  EXPECT_EQ(RunVexa({"urt", "show"}).status, 2);
}

TEST_F(ImageCommands, NumbersThatStartWithZeroAreDecimal) {
  const std::string ecf = MakeConfiguration(), base = MakeDatabase();
  const auto build = [&](const std::string& sdb, const std::string& select) {
    return RunVexa({"adb", "build", base, "-o", In("out"), "--sdb", sdb, "--ecf", ecf, "--select", select});
  };
  EXPECT_EQ(build("002", "0x0/0/01").status, 0);
  EXPECT_EQ(build("0x2", "0/0/1").status, 0);
  EXPECT_THAT(build("012", "0/0/1").errors, HasSubstr("Number 12 "));
  EXPECT_THAT(build("09", "0/0/1").errors, HasSubstr("Number 9 "));
  EXPECT_EQ(build("1", "0/0/0x100").status, 2);
}

}  // namespace
}  // namespace vexa
