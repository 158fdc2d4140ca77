#include "image/verify.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/image/image_maker.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

struct Verify : testing::Test {
  Recorder recorder;
  Document document = NewDocument();
  ProjectConfig config;
  AdbImages sent, held;
  AdbLayout layout;

  void Build(uint8_t index) {
    std::mt19937 random(8);
    document.sdbs[0].database = MakeRandomDatabase(random, {3, 2, 4, 8, 2, false, false});
    config = MakeImageConfig(index);
    layout = LayoutOf(config);
    held = sent = BuildAdbImages(recorder.context, document, 0, config).value();
    held.e2p.resize(std::min<size_t>(held.e2p.size(), kE2pRequested));
  }
  std::string Result() {
    const auto found = CompareImages(config, *document.sdbs[0].database, sent, held.adb, held.e2p);
    return found ? Format("%d %08X %s", static_cast<int>(found->bytes), unsigned{found->address},
                          found->record.c_str())
                 : "same";
  }
};

TEST_F(Verify, TheFirstDifferenceIsNamedByItsRecord) {
  Build(0);
  EXPECT_EQ(Result(), "same");
  const StaticDatabase& database = *document.sdbs[0].database;
  const uint64_t services = database.services.size(), carriers = database.carriers.size();
  const uint64_t second_group = layout.favourites + kFavouriteEntry;
  const std::pair<uint64_t, std::string> rows[] = {
      {7, "LNB 1"},
      {8, "LNB 2"},
      {127, "LNB 16"},
      {128, "satellite 1"},
      {128 + 28, "satellite 2"},
      {128 + 85 * 28 - 1, "satellite 85"},
      {128 + 85 * 28, "fill"},
      {layout.tables, "service 1"},
      {layout.tables + 44 * services - 1, Format("service %d", static_cast<int>(services))},
      {layout.tables + 44 * services, "fill"},
      {layout.tables_end - 36 * carriers - 1, "fill"},
      {layout.tables_end - 36 * carriers, Format("carrier %d", static_cast<int>(carriers))},
      {layout.tables_end - 36, "carrier 1"},
      {layout.tables_end - 1, "carrier 1"},
      {layout.tables_end + 3, "service 2"},
      {layout.tables_end + 2 * services, "fill"},
      {layout.favourites, "TV group 1"},
      {second_group + 19, "TV group 2"},
      {second_group + 20, "radio group 2"},
      {second_group + 40, "TV group 2"},
      {second_group + 42, "radio group 2"},
      {second_group + 44, "TV group 2"},
      {second_group + 44 + 5000, "radio group 2"},
      {layout.settings + 8, "settings"},
      {layout.settings + 8 + 95, "settings"},
      {layout.selection + 8, "selection"},
  };
  for (const auto& [place, record] : rows) {
    held.adb[static_cast<size_t>(place)] ^= 1;
    EXPECT_EQ(Result(), Format("1 %08X ", static_cast<unsigned>(0x100000 + place)) + record) << place;
    held.adb[static_cast<size_t>(place)] ^= 1;
  }
  held.adb[static_cast<size_t>(layout.settings + 8)] ^= 1;
  held.adb[static_cast<size_t>(130)] ^= 1;
  EXPECT_EQ(Result(), "2 00100082 satellite 1");
}

// Of the last 64 bytes, the image header, none counts; the byte before them does.
TEST_F(Verify, TheImageHeaderIsTheReceiversOwn) {
  Build(0);
  const size_t size = sent.adb.size();
  held.adb.resize(size - 64);
  EXPECT_EQ(Result(), "same");
  held.adb.pop_back();
  config.partition_sizes[2] -= 64;  // room for a fill behind the last partition
  layout = LayoutOf(config);
  EXPECT_EQ(Result(), Format("1 %08X fill", static_cast<unsigned>(0x100000 + size - 65)));
}

TEST_F(Verify, OfAJournalTheCopyInForceCounts) {
  Build(0);
  const auto write_copy = [&](uint64_t partition, size_t slot, size_t size) {
    const auto from = held.adb.begin() + static_cast<std::ptrdiff_t>(partition + kMarker);
    std::copy_n(from, size, from + static_cast<std::ptrdiff_t>(slot * size));
    std::fill_n(from, size, uint8_t{0x55});  // an older copy
    held.adb[static_cast<size_t>(partition + 3)] = static_cast<uint8_t>(0x7F >> slot);
  };
  write_copy(layout.settings, 2, kSettingsBlock);
  write_copy(layout.selection, 3, kSelectionBlock);
  EXPECT_EQ(Result(), "same");
  const uint64_t changed = layout.settings + kMarker + 2 * kSettingsBlock + 5;
  held.adb[static_cast<size_t>(changed)] ^= 0x10;
  EXPECT_EQ(Result(), Format("1 %08X settings", static_cast<unsigned>(0x100000 + changed)));
  held.adb[static_cast<size_t>(changed)] ^= 0x10;
  // Room for two copies: the marker cannot mean a third.
  config.partition_sizes[0] = kMarker + 2 * kSettingsBlock;
  const auto first = static_cast<unsigned>(0x100000 + layout.settings + kMarker);
  EXPECT_NE(Result().find(Format(" %08X settings", first)), std::string::npos) << Result();
}

TEST_F(Verify, TheSecondRegionCountsFromZero) {
  Build(1);
  EXPECT_EQ(Result(), "same");
  held.e2p[95] ^= 1;
  held.e2p[96] ^= 1;
  EXPECT_EQ(Result(), "2 0000005F settings");
  held.e2p[95] ^= 1;
  EXPECT_EQ(Result(), "1 00000060 selection");
  held.e2p = {};
  EXPECT_EQ(Result(), "160 00000000 settings");
  held = sent;
  held.adb[static_cast<size_t>(layout.settings)] ^= 1;  // where the first configuration has its journal
  EXPECT_EQ(Result(), Format("1 %08X fill", static_cast<unsigned>(0x100000 + layout.settings)));
}

}  // namespace
}  // namespace vexa
