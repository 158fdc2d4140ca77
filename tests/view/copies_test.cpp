// Copies of receivers: what a folder lists, which are refused, and what goes back.
#include "serial/copies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "image/adb.h"
#include "image/decoder.h"
#include "image/receiver_layout.h"
#include "image/verify.h"
#include "serial/backup.h"
#include "tests/image/image_maker.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "view/copy_list.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct Copies : testing::Test {
  Recorder recorder;
  Path folder = recorder.context.temporary_folder / "copies";
  Document document = NewDocument();

  Copies() {
    std::filesystem::create_directory(folder);
    std::mt19937 random(5);
    document.sdbs[0].database = MakeRandomDatabase(random, {2, 3, 6, 20, 2, false, false});
    for (size_t i = 0; i < document.settings_block.size(); ++i)
      document.settings_block[i] = static_cast<uint8_t>(i * 7);
  }
  // As a backup of a receiver that holds the document leaves it; `change` is what the receiver did to it.
  AdbImages Put(
      const std::string& name, uint8_t index,
      const std::function<void(AdbImages&)>& change = [](AdbImages&) {}) {
    const ProjectConfig config = MakeImageConfig(index);
    AdbImages images = BuildAdbImages(recorder.context, document, 0, config).value();
    images.adb.resize(config.regions[1].end - config.regions[1].start, 0x55);  // the image header
    change(images);
    const auto decoded = DecodeImage(recorder.context, config, images.adb, images.e2p, UserBoxInfo{});
    PutFile(folder / (name + ".bin"), decoded.value().file);
    PutFile(folder / (name + "-1.raw"), images.adb);
    if (index == 1) PutFile(folder / (name + "-2.raw"), images.e2p);
    return images;
  }
  CopyContent Read(const std::string& name, uint8_t index, CopyToSend* back = nullptr) {
    return ReadCopy(recorder.context, MakeImageConfig(index), folder, {name, {}, ""}, back);
  }
};

TEST_F(Copies, AFolderListsThemTheNewestFirst) {
  for (const char* file : {"20240506-070809.bin", "20240506-070809-1.raw", "20240506-070809-A-1.bin",
                           "20240506-070809-A-1-2.bin", "20240506-070809-2.bin", "20240506-070809-B-2.bin",
                           "20250101-000000-1.raw", "20240506-070809x.bin", "20241306-070809.bin",
                           "20240506 070809.bin", "other.bin", "20240506-0708.bin", "20240506-070810.txt"})
    PutFile(folder / file, {});
  std::vector<ReceiverCopy> copies;
  ASSERT_TRUE(ListCopies(folder, copies));
  std::vector<std::string> seen;
  for (const ReceiverCopy& copy : copies)
    seen.push_back(copy.name + Format(" %d:%d:%d ", copy.time.year, copy.time.month, copy.time.second) +
                   copy.serial);
  EXPECT_THAT(seen, ElementsAre("20250101-000000 2025:1:0 ", "20240506-070809-B-2 2024:5:9 B-2",
                                "20240506-070809-A-1-2 2024:5:9 A-1", "20240506-070809-A-1 2024:5:9 A-1",
                                "20240506-070809-2 2024:5:9 ", "20240506-070809 2024:5:9 "));
  EXPECT_TRUE(ListCopies(folder / "none", copies));
  EXPECT_TRUE(copies.empty());
  EXPECT_FALSE(ListCopies(folder / "other.bin", copies));
}

// The receiver that gets the copy back holds what it held then, its own settings included, to the byte: also
// what no database tells.
TEST_F(Copies, WhatGoesBackIsWhatTheReceiverHeld) {
  for (const uint8_t index : {uint8_t{0}, uint8_t{1}}) {
    const AdbLayout layout = LayoutOf(MakeImageConfig(index));
    const AdbImages held = Put("name", index, [&](AdbImages& images) {
      images.adb[kSatelliteTable + 84 * kSatelliteEntry + 3] = 0x10;  // a satellite with an unused one's name
      images.adb[static_cast<size_t>(layout.tables) + 30000] = 0x42;  // between services and carriers
      if (index == 1) return;
      const size_t first = static_cast<size_t>(layout.settings) + kMarker;  // settings that were changed
      std::copy_n(images.adb.begin() + static_cast<std::ptrdiff_t>(first), kSettingsBlock,
                  images.adb.begin() + static_cast<std::ptrdiff_t>(first + kSettingsBlock));
      images.adb[first + 50] ^= 0xFF;
      images.adb[first - kMarker + 3] = 0x3F;
    });
    CopyToSend back;
    const CopyContent content = Read("name", index, &back);
    EXPECT_EQ(content.refusal, "");
    EXPECT_EQ(content.satellites, 3u);
    EXPECT_EQ(content.carriers, 6u);
    EXPECT_EQ(content.services, 20u);
    EXPECT_GT(content.bytes, held.adb.size() + held.e2p.size());
    const ProjectConfig config = MakeImageConfig(index);
    const auto sent = BuildAdbImages(recorder.context, back.document, 0, config, &back.held);
    ASSERT_TRUE(sent.has_value());
    const auto end = static_cast<std::ptrdiff_t>(held.adb.size() - AdbHeaderSize(config));
    EXPECT_TRUE(std::equal(sent->adb.begin(), sent->adb.begin() + end, held.adb.begin())) << int{index};
    EXPECT_EQ(sent->e2p, held.e2p);
    const StaticDatabase& database = *back.document.sdbs[0].database;
    const auto difference = CompareImages(config, database, *sent, held.adb, held.e2p);
    EXPECT_FALSE(difference.has_value()) << difference->record << " " << difference->bytes;
    ProjectConfig other = config;  // of a receiver with another layout, which gets the database alone
    other.partition_sizes[3] += 4;
    other.partition_sizes[4] -= 4;
    const auto laid_out = BuildAdbImages(recorder.context, back.document, 0, other, &back.held);
    ASSERT_TRUE(laid_out.has_value());
    EXPECT_EQ(laid_out->adb, BuildAdbImages(recorder.context, back.document, 0, other)->adb);
  }
  EXPECT_TRUE(recorder.Texts().empty());
}

TEST_F(Copies, HalfAndDamagedOnesAreRefusedWithTheReason) {
  struct {
    const char* file;
    void (*harm)(const Path&);
    const char* refusal;
  } const rows[] = {
      {"name.bin", [](const Path& p) { std::filesystem::remove(p); },
       "Half a copy: its file .bin is missing."},
      {"name-1.raw", [](const Path& p) { std::filesystem::remove(p); },
       "Half a copy: its file -1.raw is missing."},
      {"name-2.raw", [](const Path& p) { std::filesystem::remove(p); },
       "Half a copy, or of a receiver with another configuration: its file -2.raw is missing."},
      {"name.bin", [](const Path& p) { PutFile(p, BytesOf("Qx")); },
       "Damaged: its file .bin holds no database. Invalid or unknown file format."},
      {"name.bin", [](const Path& p) { PutFile(p, {}); },
       "Damaged: its file .bin holds no database. It is empty."},
      {"name-1.raw", [](const Path& p) { std::filesystem::resize_file(p, 300); }, "Damaged, or of"},
      {"name-1.raw",
       [](const Path& p) {
         Bytes bytes = ReadWholeFile(p).value();
         bytes[130] ^= 1;  // of a satellite
         PutFile(p, bytes);
       },
       "Damaged, or of"},
  };
  for (const auto& row : rows) {
    Put("name", 1);
    row.harm(folder / row.file);
    CopyToSend back;
    const CopyContent content = Read("name", 1, &back);
    EXPECT_THAT(content.refusal, StartsWith(row.refusal)) << row.file;
    EXPECT_TRUE(back.document.sdbs.empty());
    EXPECT_GT(content.bytes, 0u);
  }
  Put("name", 0);
  EXPECT_THAT(Read("name", 1).refusal, StartsWith("Damaged, or of a receiver with another configuration"));
  EXPECT_TRUE(recorder.Texts().empty()) << "silent";
}

TEST_F(Copies, TheDialogShowsARowForEachAndJudgesItAnew) {
  Put("20240506-070809-A", 0);
  PutFile(folder / "20240506-070810-1.raw", Bytes(1025));
  CopyList list = OpenCopyList(recorder.context, MakeImageConfig(0), folder);
  EXPECT_EQ(CopyCountText(list), "2 copies in " + Utf8FromPath(folder));
  const auto row = [&](size_t place) {
    std::vector<std::string> cells;
    for (size_t i = 0; i < kCopyColumns.size(); ++i) cells.push_back(CopyCell(list, place, i));
    return cells;
  };
  EXPECT_THAT(row(0), ElementsAre("2024-05-06", "07:08:10", "", "0", "0", "0", "2 KB",
                                  "Half a copy: its file .bin is missing."));
  const auto whole = row(1);
  EXPECT_THAT((std::vector(whole.begin(), whole.begin() + 6)),
              ElementsAre("2024-05-06", "07:08:09", "A", "3", "6", "20"));
  EXPECT_EQ(whole[7], "Whole");
  CopyToSend back;
  EXPECT_EQ(TakeCopy(list, std::nullopt, back)->text, "Choose a copy.");
  const auto refusal = TakeCopy(list, 0, back);
  EXPECT_EQ(refusal->text + "|" + refusal->detail,
            "This copy cannot be sent back.|Half a copy: its file .bin is missing.");
  std::filesystem::remove(folder / "20240506-070809-A-1.raw");
  EXPECT_TRUE(TakeCopy(list, 1, back).has_value()) << "it went while the list was shown";
  EXPECT_THAT(CopyCell(list, 1, 7), HasSubstr("is missing"));
  Put("20240506-070809-A", 0);
  EXPECT_FALSE(TakeCopy(list, 1, back).has_value());
  EXPECT_EQ(back.document.sdbs.size(), 1u);
  EXPECT_TRUE(OpenCopyList(recorder.context, {}, folder / "none").copies.empty());
  EXPECT_TRUE(recorder.Texts().empty());
  OpenCopyList(recorder.context, {}, folder / "20240506-070810-1.raw");
  EXPECT_THAT(recorder.Texts(), ElementsAre("The folder of the copies cannot be read."));
}

}  // namespace
}  // namespace vexa
