// What SDB uploads send, and where to.
#include "serial/prepare.h"

#include <gtest/gtest.h>

#include "image/urt.h"
#include "tests/image/image_maker.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

TEST(SdbUpload, GoesToTheChosenRegionElseToTheFirstForSdbs) {
  const RegionEntry image{"Caf\xE9", 3, 0, 9}, other{"Other", 2, 0, 9}, one{"One", 4, 0, 9},
      two{"Two", 4, 0, 9};
  struct Row {
    const char* name;
    std::vector<RegionEntry> regions;
    int chosen;  // -1: none
    size_t place;
    bool replaces;
  };
  const Row rows[] = {{"no choice", {image, other, one, two}, -1, 2, false},
                      {"the first is chosen", {image, one}, 0, 0, true},
                      {"another is chosen", {image, one, two}, 2, 2, false},
                      {"a choice that is not there", {other, one}, 5, 1, false},
                      {"none for SDBs", {image, other}, -1, 0, true},
                      {"no regions", {}, -1, 0, false}};
  for (const Row& row : rows) {
    ProjectConfig config;
    config.regions = row.regions;
    config.image_type_chosen = row.chosen >= 0;
    config.image_type_index = static_cast<uint8_t>(std::max(0, row.chosen));
    EXPECT_EQ(SdbRegion(config), row.place) << row.name;
    for (const bool answer : {false, true}) {
      Recorder recorder;
      recorder.answer = answer;
      bool yes_is_default = false;
      const auto ask = recorder.context.messages.ask;
      recorder.context.messages.ask = [&](const std::string& text, const std::string& title, bool yes) {
        yes_is_default = yes;
        return ask(text, title, yes);
      };
      EXPECT_EQ(MayReplaceImage(recorder.context, config), answer || !row.replaces) << row.name;
      EXPECT_FALSE(yes_is_default);
      const std::vector<std::string> question{
          "SDB data would replace the image in \"Caf\xC3\xA9\".\nDo you want to continue ?"};
      EXPECT_EQ(recorder.Texts(), row.replaces ? question : std::vector<std::string>{}) << row.name;
    }
  }
}

TEST(SdbUpload, HoldsTheVersionTheInitialsAndTheDefaultsOfTheWindow) {
  ProjectConfig config = MakeImageConfig(0);
  config.regions = {{"Image", 3, 0, 0x40000}, {"Data", 4, 0x100, 0x30000}};
  Document document = NewDocument();
  std::mt19937 random(3);
  document.sdbs[0].database = MakeRandomDatabase(random, RandomShape{});
  DefaultRecords defaults;
  defaults.satellite.angle = 77;
  for (const uint8_t format : {uint8_t{0}, uint8_t{1}}) {
    config.sdb_format = format;
    Recorder recorder;
    recorder.context.defaults = &defaults;
    const BinVersion version{7, 3, "ab"};
    const auto files =
        PrepareSdbUpload(recorder.context, document, {1, 0}, config, {2024, 5, 6, 7, 8, 9}, version);
    ASSERT_TRUE(files);
    const UrtContent content = ReadUrt(*ReadWholeFile(files->front()));
    EXPECT_EQ(content.name, "Data");
    const Bytes expected = format == 0 ? WriteSdbStream(*document.sdbs[0].database, version, defaults)
                                       : *BuildBin(recorder.context, document, version, {1, 0});
    EXPECT_EQ(OriginalImage(content), expected);
    EXPECT_NE(expected, format == 0 ? WriteSdbStream(*document.sdbs[0].database, version)
                                    : *BuildBin(Context{}, document, version, {1, 0}));
  }
}

TEST(SdbUpload, WhatIsTooLargeIsTheDatabaseAndNoScratchFile) {
  ProjectConfig config = MakeImageConfig(0);
  config.regions = {{"Data", 4, 0x100, 0x200}};
  Document document = NewDocument();
  std::mt19937 random(3);
  document.sdbs[0].database = MakeRandomDatabase(random, RandomShape{});
  for (const char* source : {"list.bin", ""}) {
    document.source = source;
    for (const uint8_t format : {uint8_t{0}, uint8_t{1}}) {
      config.sdb_format = format;
      Recorder recorder;
      EXPECT_FALSE(PrepareSdbUpload(recorder.context, document, {1, 0}, config, {2024, 5, 6, 7, 8, 9}));
      ASSERT_EQ(recorder.shown.size(), 1u);
      EXPECT_EQ(recorder.shown[0].detail.find("The image takes "), *source ? 10u : 0u)
          << recorder.shown[0].detail;
    }
  }
}

TEST(SdbUpload, AnSdbThatIsNotThereIsNone) {
  Recorder recorder;
  const Document document = NewDocument();
  ProjectConfig config = MakeImageConfig(0);
  EXPECT_FALSE(PrepareSdbUpload(recorder.context, document, {2, 0}, config, {2024, 5, 6, 7, 8, 9}));
  EXPECT_EQ(recorder.Texts(), std::vector<std::string>{"Add atleast one SDB to upload."});
}

}  // namespace
}  // namespace vexa
