#include "view/command_needs.h"

#include <gtest/gtest.h>

#include "tests/support/ecf_maker.h"
#include "tests/support/recorder.h"
#include "view/command_table.h"

namespace vexa {
namespace {

using Texts = std::vector<std::string>;

TEST(CommandNeeds, CommandsAreRefusedWithAReasonNotGreyed) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "test.ecf";
  constexpr const char* kMagic = "Config magic id mismatch - AddConfigurationListToComboBox";
  constexpr const char* kNone =
      "Configuration settings not found to process.\nUpdate configuration file and continue";
  const EcfConfigurationSpec images{.regions = {{"A", 3, 0, 1}}},
      partitions{.partitions = {{0, 0, 0, 0, 0, 1}}};
  EcfConfigurationSpec both = images;
  both.partitions = partitions.partitions;
  const Path magic = path.string() + "m", only_images = path.string() + "i",
             only_partitions = path.string() + "p";
  PutFile(path, MakeEcf({{1, {{.configurations = {both}}}}}));
  PutFile(only_images, MakeEcf({{1, {{.configurations = {images}}}}}));
  PutFile(only_partitions, MakeEcf({{1, {{.configurations = {partitions}}}}}));
  PutFile(magic, BytesOf("MZ"));
  struct {
    uint32_t command;
    bool needs_images, needs_partitions;
  } const rows[] = {{kCmdUploadAdb, true, true},    {kCmdDownload, true, true},
                    {kCmdUploadSdb, true, false},   {kCmdUploadThisSdb, true, false},
                    {kCmdSingleImage, true, false}, {kCmdMultipleImage, true, false},
                    {kCmdBin2Urt, true, false},     {kCmdCompression, false, false},
                    {kCmdSettings, false, false},   {kCmdConsoleUpload, false, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.command);
    const auto expect = [&](const Path& ecf, uint8_t product, const char* text) {
      EXPECT_EQ(ConfigurationServes(recorder.context, ecf, product, row.command), !text);
      EXPECT_TRUE(!text || recorder.shown.at(0).icon == Icon::kStop);
      EXPECT_EQ(recorder.Texts(), text ? Texts{text} : Texts{});
    };
    expect(path, 0, nullptr);
    expect(path, 1, row.needs_images ? kNone : nullptr);
    expect(only_images, 0, row.needs_partitions ? kNone : nullptr);
    expect(only_partitions, 0, row.needs_images ? kNone : nullptr);
    expect(path / "none", 0, row.needs_images ? kNone : nullptr);
    expect(magic, 0, row.needs_images ? kMagic : nullptr);
    const uint32_t there = row.command == kCmdConsoleUpload ? ~0u : kNeedsEditor | kNeedsSdb;
    EXPECT_TRUE(CommandEnabled(*FindCommand(row.command), there));
  }
}

}  // namespace
}  // namespace vexa
