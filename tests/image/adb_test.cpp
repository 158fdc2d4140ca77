#include "image/adb.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "image/receiver_layout.h"
#include "image/transfer_files.h"
#include "image/urt.h"
#include "tests/image/image_maker.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kVerifyCounts = "Unable to upload\nPlease verify carrier and service record count.";

struct Adb : testing::Test {
  Recorder recorder;
  Document document = NewDocument();
  ProjectConfig config = MakeImageConfig(0);
  StaticDatabase& database() { return *document.sdbs[0].database; }

  void Grow(size_t carriers, size_t services) {
    if (database().satellites.empty()) AddTestSatellite(database(), "Astra");
    while (database().carriers.size() < carriers) AddTestCarrier(database(), 0);
    while (database().services.size() < services) {
      AddTestService(database(), database().carriers[database().services.size() % carriers]);
    }
  }
  AdbImages Build() {
    auto images = BuildAdbImages(recorder.context, document, 0, config);
    EXPECT_TRUE(images.has_value()) << testing::PrintToString(recorder.Texts());
    return images ? *images : AdbImages{};
  }
  // `what`: what the detail names besides the SDB.
  void ExpectRefused(const std::string& text, const std::string& what = "") {
    EXPECT_FALSE(BuildAdbImages(recorder.context, document, 0, config));
    ASSERT_EQ(recorder.shown.size(), 1u);
    EXPECT_THAT(recorder.shown[0].detail,
                AnyOf(EndsWith("divide them between SDBs."), EndsWith("choose another configuration."),
                      EndsWith("Choose another configuration."), EndsWith("or another file.")));
    EXPECT_THAT(recorder.shown[0].detail, HasSubstr(what));
    const bool of_an_sdb = !config.partitions.empty() && AdbRegion(config);
    EXPECT_EQ(recorder.shown[0].detail.starts_with("SDB 1 \"SDB1\": "), of_an_sdb);
    EXPECT_THAT(recorder.Texts(), ElementsAre(text));
  }
};

uint32_t WordAt(std::span<const uint8_t> bytes, uint64_t offset) {
  return ReadField(bytes.subspan(static_cast<size_t>(offset), 4), 0, 0, 32);
}
std::string TextAt(std::span<const uint8_t> bytes, uint64_t offset, size_t size) {
  const auto part = bytes.subspan(static_cast<size_t>(offset), size);
  return {part.begin(), part.end()};
}
std::string Padded(std::string text, size_t size) {
  text += '\0';
  text.resize(size, '\xFF');
  return text;
}

TEST_F(Adb, DefaultLnbAndUnusedSlots) {
  const Bytes adb = Build().adb;
  for (uint32_t i = 0; i < 16; ++i) {
    EXPECT_EQ(WordAt(adb, i * 8), 0xEA5A2616u) << i;
    EXPECT_EQ(WordAt(adb, i * 8 + 4), 0xE8002000u) << i;
  }
  for (uint32_t i = 0; i < 85; ++i) {
    EXPECT_EQ(WordAt(adb, 128 + i * 28), 0x16FFFFFFu);
    EXPECT_EQ(WordAt(adb, 132 + i * 28), 0xFFFFF000u);
    EXPECT_EQ(TextAt(adb, 136 + i * 28, 20), Padded("NewSat " + std::to_string(i + 1), 20));
  }
}

TEST_F(Adb, EveryLnbFieldHasItsPlace) {
  LnbRecord lnb{.frequency1 = 9750,
                .frequency2 = 10600,
                .type = 2,
                .power = 1,
                .kept_31 = 0,
                .cleared_0 = 3,
                .diseqc_switch = 3,
                .plain_switch = 17,
                .tone_burst_switch = 2,
                .cleared_12 = 7,
                .tone_22khz = 1,
                .switch_type = 2,
                .motor = 0,
                .kept_20 = 0xA5C};
  uint8_t entry[8];
  const auto words = [&] {
    PackLnb(lnb, entry);
    return std::pair(WordAt(entry, 0), WordAt(entry, 4));
  };
  const uint32_t word0 = 0xEA5A2616, word1 = 0xED169A5C;
  EXPECT_EQ(words(), std::pair(word0, word1));
  for (size_t i = 0; i < sizeof lnb; ++i) reinterpret_cast<uint8_t*>(&lnb)[i] ^= 0xFF;
  EXPECT_EQ(words(), std::pair(word0 ^ 0x3FFFFFFF, word1 ^ 0x1FFFFFFF));
  lnb.motor = 0;
  EXPECT_EQ(words().second, word1 ^ 0x1FFEFFFF);
}

TEST_F(Adb, RecordsByHand) {
  const char* name = "ABCDEFGHIJKLMNOPQRST";  // fills its field
  uint8_t entry[44];
  // Carriers, LNB, position; user, east, angle, kept.
  SatelliteRecord satellite{3, 5, 7, 0, 1, 192, 0, "Astra 1"};
  PackSatellite(satellite, entry);
  EXPECT_EQ(WordAt(entry, 0), 0x50070003u);
  EXPECT_EQ(WordAt(entry, 4), 0x000050C0u);
  EXPECT_EQ(TextAt(entry, 8, 20), Padded("Astra 1", 20));
  satellite.kept_14 = 0x3FFFF;
  satellite.user = 1;
  PackSatellite(satellite, entry);
  EXPECT_EQ(WordAt(entry, 0), 0xD3070003u);
  EXPECT_EQ(WordAt(entry, 4), 0xFFFF50C0u);

  // Symbol rate, LNB; first service, services; satellite, polarization, FEC, user, kept; frequency.
  CarrierRecord carrier{27500, 9, 0, 2, 5, kRight, 3, 1, 0xBEEF, "", 11778};
  std::memcpy(carrier.name, name, 20);
  PackCarrier(carrier, entry);
  EXPECT_EQ(WordAt(entry, 0), 0x5F006B6Cu);
  EXPECT_EQ(WordAt(entry, 4), 11778u);
  EXPECT_EQ(WordAt(entry, 8), 0x00020000u);
  EXPECT_EQ(WordAt(entry, 12), 0xBEEFFC05u);
  EXPECT_EQ(TextAt(entry, 16, 20), name);
  for (uint32_t code = 0; code < 4; ++code) {
    carrier.polarization = code & 3;
    PackCarrier(carrier, entry);
    EXPECT_EQ(WordAt(entry, 0) >> 30, code & 1) << code;
    EXPECT_EQ(WordAt(entry, 0) >> 24 & 3, code) << code;
  }

  // Program number, carrier; video, audio, kept; PCR, type, free, kept.
  ServiceRecord service{1234, 9, 100, 200, 5, kNoPid, kTv, 1, 1, ""};
  std::memcpy(service.name, name, 20);
  PackService(service, entry);
  EXPECT_EQ(WordAt(entry, 0), 0x50320064u);
  EXPECT_EQ(WordAt(entry, 4), 0x00026000u);
  EXPECT_EQ(WordAt(entry, 8), 0xF00904D2u);
  EXPECT_EQ(TextAt(entry, 12, 32), Padded(name, 32));
  service.free = 0;
  PackService(service, entry);
  EXPECT_EQ(WordAt(entry, 4), 0x00036000u);
}

TEST_F(Adb, TablesGrowTowardsEachOther) {
  Grow(3, 0);
  auto& carriers = database().carriers;
  // The SDB's own order, not the satellite's, is the order in the receiver.
  std::swap(carriers[0], carriers[2]);
  for (size_t i = 0; i < 3; ++i) SetName(carriers[i]->record.name, "C" + std::to_string(i));
  for (const size_t carrier : {2u, 0u, 2u, 0u, 0u}) {
    SetName(AddTestService(database(), carriers[carrier])->record.name, "S" + std::to_string(carrier));
  }
  const AdbLayout layout = LayoutOf(config);
  const Bytes adb = Build().adb;
  const uint32_t first_and_count[] = {3u << 16, 3, 2u << 16 | 3};
  for (uint32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(TextAt(adb, layout.tables_end - 36 * (i + 1) + 16, 3),
              std::string("C") + static_cast<char>('0' + i) + '\0');
    EXPECT_EQ(WordAt(adb, layout.tables_end - 36 * (i + 1) + 8), first_and_count[i]);
  }
  const char* names[] = {"S0", "S0", "S0", "S2", "S2"};
  for (uint32_t i = 0; i < 5; ++i) {
    EXPECT_EQ(TextAt(adb, layout.tables + 44 * i + 12, 2), names[i]);
    EXPECT_EQ(WordAt(adb, layout.tables + 44 * i + 8) >> 16, 0xF000u | (i < 3 ? 0 : 2));
  }
  // In the order of making: S2 S0 S2 S0 S0.
  const uint16_t order[] = {3, 0, 4, 1, 2, 0xFFFF};
  const uint8_t* entries = &adb[static_cast<size_t>(layout.tables_end)];
  for (uint32_t i = 0; i < 6; ++i) EXPECT_EQ(entries[2 * i] | entries[2 * i + 1] << 8, order[i]) << i;
}

TEST_F(Adb, FavouritesAndTheirHeaders) {
  Grow(1, 3);
  auto& services = database().services;
  FavouriteGroup& group = database().favourites[6];
  group.tv = {services[2], services[0]};
  group.radio = {services[1]};
  group.record.kept_0 = 9;
  group.record.kept_28 = 6;
  SetName(group.record.tv_name, "Films");
  const Bytes adb = Build().adb;
  const uint64_t at = LayoutOf(config).favourites + 6 * 7044;
  EXPECT_EQ(TextAt(adb, at, 20), std::string("Films").append(15, '\0'));
  EXPECT_EQ(WordAt(adb, at + 40), 0x60019002u);
  EXPECT_EQ(WordAt(adb, at + 44), 2u);
  EXPECT_EQ(WordAt(adb, at + 48), 0xFFFFFFFFu);
  EXPECT_EQ(WordAt(adb, at + 44 + 5000), 0xFFFF0001u);
}

TEST_F(Adb, SettingsBlockKeepsWhatItDoesNotSet) {
  const auto block_of = [&](uint8_t index) {
    config = MakeImageConfig(index);
    const AdbImages images = Build();
    const uint64_t at = LayoutOf(config).settings;
    if (index == 1) return Bytes(images.e2p.begin(), images.e2p.begin() + 96);
    EXPECT_EQ(WordAt(images.adb, at), 0x7FFFFFFFu);
    EXPECT_EQ(WordAt(images.adb, at + 4), 0xFFFFFFFFu);
    const auto start = images.adb.begin() + static_cast<std::ptrdiff_t>(at) + 8;
    return Bytes(start, start + 96);
  };
  for (const uint8_t fill : std::initializer_list<uint8_t>{0, 0xFF}) {
    document.settings_block.fill(fill);
    const uint32_t word = fill * 0x01010101u;
    const Bytes adb = block_of(0), e2p = block_of(1), later = block_of(2);
    EXPECT_EQ(WordAt(adb, 4), (word & 0x80003FFFu) | 0x2AA00000u);  // no services: bits 15 and 16 clear
    EXPECT_EQ(WordAt(e2p, 4), WordAt(adb, 4) | 1u << 14);
    EXPECT_EQ(later, adb);
    EXPECT_EQ(WordAt(adb, 0), word & 0x8007E000u);
    for (uint32_t i = 2; i < 24; ++i) EXPECT_EQ(WordAt(adb, 4 * i), word) << i;
    EXPECT_EQ(document.settings_block[0], fill);
  }
  document.settings_block.fill(0);
  Grow(5, 3);
  for (Service* service : database().services) service->record.type = kRadio;
  EXPECT_EQ(WordAt(block_of(0), 4), 0x2AA10000u);
  database().services[2]->record.type = kTv;
  EXPECT_EQ(WordAt(block_of(0), 4), 0x2AA08000u);
  EXPECT_EQ(WordAt(block_of(0), 0), 5u << 19 | 3);
  database().favourites[3].record.kept_0 = 1;
  database().favourites[5].record.kept_0 = 3;
  const Bytes block = block_of(0);
  EXPECT_EQ(WordAt(block, 24), 3u << 16);
  EXPECT_EQ(WordAt(block, 40), 3u << 16);
  EXPECT_EQ(WordAt(block, 32), 5u);
  UserBoxInfo box{};
  std::memset(&box, 0xAB, sizeof box);
  document.ubis = {{"U", box}, {"V", {}}};
  EXPECT_EQ(TextAt(block_of(1), 68, 28), std::string(28, '\xAB'));
}

TEST_F(Adb, SelectionBlockStandsBehindTheSettings) {
  Grow(1, 3);
  database().favourites[1].tv = {database().services[0], database().services[2]};
  database().favourites[1].radio = {database().services[1]};
  database().favourites[1].record.kept_0 = 5;
  for (const uint8_t index : std::initializer_list<uint8_t>{0, 1}) {
    config = MakeImageConfig(index);
    const AdbImages images = Build();
    const Bytes& file = index == 1 ? images.e2p : images.adb;
    uint64_t at = index == 1 ? 96 : LayoutOf(config).selection;
    if (index == 0) {
      EXPECT_EQ(WordAt(file, at), 0x7FFFFFFFu);
      EXPECT_EQ(WordAt(file, at + 4), 0xFFFFFFFFu);
      at += 8;
    }
    EXPECT_EQ(WordAt(file, at), 0u);
    EXPECT_EQ(WordAt(file, at + 8), 0x00010002u);
    EXPECT_EQ(WordAt(file, at + 12), 5u);
    EXPECT_EQ(images.e2p.size(), index == 1 ? 160u : 0u);
  }
}

TEST_F(Adb, LimitsInTheirOrderWithTheirFigures) {
  Grow(1, 1);
  database().lnb_count = 16;
  while (database().satellites.size() < 85) AddTestSatellite(database(), "S");
  Grow(4096, 5000);
  EXPECT_GT(36 * 4096 + 44 * 5000, 220000);
  AddTestSatellite(database(), "One more");
  database().lnb_count = 17;
  ExpectRefused("Upload as ADB process failed.\nLNB record count exceeds the limit 16 [ 17 ]");
  database().lnb_count = 12;
  ExpectRefused("Upload as ADB process failed.\nSatellite record count exceeds the limit 85 [ 86 ]");
  database().satellites.pop_back();
  ExpectRefused("Upload as ADB process failed.\nCarrier record count exceeds the limit 16 [ 12 ]");
  database().carriers.resize(4095);
  ExpectRefused("Upload as ADB process failed.\nService record count exceeds the limit 85 [ 85 ]");
  database().services.resize(4999);
  ExpectRefused(kVerifyCounts);
}

TEST_F(Adb, TablesUpToTheirLimitPass) {
  Grow(5, 4995);  // 36 * 5 + 44 * 4995 = 219,960
  Build();
  Grow(7, 4995);
  ExpectRefused(kVerifyCounts);
  document.source = "x.bin";
  document.sdbs[0].name = "\xC4";
  EXPECT_FALSE(BuildAdbImages(recorder.context, document, 0, config));
  EXPECT_EQ(recorder.Details().at(0).substr(0, 19), "x.bin: SDB 1 \"\xC3\x84\": ");
}

TEST_F(Adb, PartitionsAndRegionMustHoldTheirContent) {
  Grow(2, 3);
  const struct {
    size_t type;
    uint32_t smallest[2];  // for configuration indices 0 and 1
    const char* what;
  } rows[] = {{3, {2508, 2508}, "LNBs and satellites"},
              {4, {204, 204}, "carriers and services"},
              {5, {6, 6}, "service index"},
              {6, {56352, 56352}, "favourites"},
              {0, {104, 96}, "settings"},
              {2, {72, 64}, "selected favourites"}};
  for (const uint8_t index : std::initializer_list<uint8_t>{0, 1}) {
    for (const auto& row : rows) {
      config = MakeImageConfig(index);
      config.partition_sizes[row.type] = row.smallest[index];
      Build();
      --config.partition_sizes[row.type];
      const uint32_t smallest = row.smallest[index];
      ExpectRefused(kVerifyCounts, Format("%u bytes of %s, room for %u. ", smallest, row.what, smallest - 1));
    }
    config = MakeImageConfig(index);
    const AdbLayout layout = LayoutOf(config);
    const auto length = static_cast<uint32_t>(index == 1 ? layout.settings : layout.end);
    config.regions[1].end = config.regions[1].start + length;
    Build();
    --config.regions[1].end;
    ExpectRefused(kVerifyCounts, Format("%u bytes of all partitions, room for %u. ", length, length - 1));
    config.regions[1].end = config.regions[1].start - 1;
    ExpectRefused(kVerifyCounts, Format("%u bytes of all partitions, room for 0. ", length));
  }
  // The image header takes the last 64 bytes of the region at configuration index 0: nothing may stand there.
  config = MakeImageConfig(0);
  config.partition_sizes[2] = 72 + 64;
  config.regions[1].end =
      config.regions[1].start + static_cast<uint32_t>(LayoutOf(config).selection) + 72 + 64;
  Build();
  --config.partition_sizes[2];
  --config.regions[1].end;
  ExpectRefused(kVerifyCounts, "no room for the image header");
}

TEST_F(Adb, FavouriteListsMustFitTheirGroups) {
  Grow(1, 1);
  const std::pair<size_t, size_t> rows[] = {{2501, 0}, {0, 1001}};
  for (const auto& [tv, radio] : rows) {
    database().favourites[2].tv.assign(tv, database().services[0]);
    database().favourites[2].radio.assign(radio, database().services[0]);
    ExpectRefused(kVerifyCounts, tv != 0 ? "5002 bytes of TV list of a favourite group, room for 5000. "
                                         : "2002 bytes of radio list of a favourite group, room for 2000. ");
  }
  database().favourites[2].tv.assign(2500, database().services[0]);
  database().favourites[2].radio.assign(1000, database().services[0]);
  Build();
}

TEST_F(Adb, ConfigurationComesBeforeTheLimits) {
  database().lnb_count = 17;
  const char* text = "Configuration settings not found to process.\nUpdate configuration file and continue";
  config.partitions.clear();
  ExpectRefused(text);
  config = MakeImageConfig(0);
  config.regions.clear();
  ExpectRefused(text);
}

TEST_F(Adb, RegionIsTheLastOfTypeThreeElseTheFirst) {
  EXPECT_EQ(AdbRegion(config)->name, "Application data");
  config.regions[2].type = 3;
  EXPECT_EQ(AdbRegion(config)->name, "Other");
  config.regions[2].type = config.regions[1].type = 0;
  EXPECT_EQ(AdbRegion(config)->name, "Boot");
}

TEST_F(Adb, FilesAndTheirUrtFiles) {
  Grow(4, 9);
  const LocalTime time{2003, 12, 9, 8, 5, 59};
  for (const uint8_t index : std::initializer_list<uint8_t>{0, 1, 2}) {
    config = MakeImageConfig(index);
    config.compressed_image = index != 0;  // where no image has a header, none is compressed
    RemoveTransferFiles(recorder.context.temporary_folder);
    int files = -1;
    ASSERT_TRUE(CreateAdbPartitionFiles(recorder.context, document, 0, config, time, files));
    EXPECT_EQ(files, index == 1 ? 2 : 1);
    const AdbImages images = Build();
    const Path& folder = recorder.context.temporary_folder;
    EXPECT_EQ(ReadWholeFile(folder / kAdbImageFile), images.adb);
    const UrtContent adb = ReadUrt(*ReadWholeFile(folder / kAdbUrtFile));
    EXPECT_THAT(adb.findings, IsEmpty());
    EXPECT_EQ(
        std::tuple(adb.type, adb.kind, adb.name, adb.start, adb.end, adb.configuration_flag),
        std::tuple(0, 4, "Application data", config.regions[1].start, config.regions[1].end, index != 0));
    EXPECT_EQ(adb.header.has_value(), index == 0);
    EXPECT_EQ(adb.image.size(), images.adb.size());
    const size_t same = images.adb.size() - (index == 0 ? 64 : 0);
    EXPECT_TRUE(std::equal(adb.image.begin(), adb.image.begin() + static_cast<std::ptrdiff_t>(same),
                           images.adb.begin()));
    ASSERT_EQ(std::filesystem::exists(folder / kE2pUrtFile), index == 1);
    if (index != 1) continue;
    EXPECT_EQ(ReadWholeFile(folder / kE2pImageFile), images.e2p);
    const UrtContent e2p = ReadUrt(*ReadWholeFile(folder / kE2pUrtFile));
    EXPECT_THAT(e2p.findings, IsEmpty());
    EXPECT_EQ(std::tuple(e2p.type, e2p.kind, e2p.name, e2p.start, e2p.end),
              std::tuple(3, 5, "E2P Data", 0u, 160u));
    EXPECT_EQ(e2p.image, images.e2p);
  }
}

TEST_F(Adb, EveryFailingStepHasItsMessage) {
  config = MakeImageConfig(1);
  const char *create = "File access error - Vexa_CreateADBPartitionFiles.",
             *lsd = "File write access error :- LSD Partition", *table = "File write-access error",
             *nodvb = "File write access error :- Nodvb Partition";
  // ADB image: create, three pieces, finish; E2P image: create, one piece, finish; each URT: create, write,
  // finish, replace.
  const char* expected[] = {create, lsd,   table, table, table,  create, nodvb, nodvb,
                            create, table, table, table, create, table,  table, table};
  int step = 0;
  for (const char* text : expected) {
    recorder.FailStep(++step);
    int files = -1;
    EXPECT_FALSE(CreateAdbPartitionFiles(recorder.context, document, 0, config, {}, files)) << step;
    const char* name = step <= 5    ? kAdbImageFile
                       : step <= 8  ? kE2pImageFile
                       : step <= 12 ? kAdbUrtFile
                                    : kE2pUrtFile;
    ASSERT_EQ(recorder.shown.size(), 1u) << step;
    EXPECT_EQ(recorder.shown[0].detail, Recorder::FullDisk(recorder.context.temporary_folder / name)) << step;
    EXPECT_THAT(recorder.Texts(), ElementsAre(text)) << step;
    EXPECT_EQ(files, step > 12 ? 1 : 0) << step;
  }
  recorder.FailStep(0);
  int files = 0;
  EXPECT_TRUE(CreateAdbPartitionFiles(recorder.context, document, 0, config, {}, files));
  EXPECT_EQ(recorder.steps, step);
  config = MakeImageConfig(0);
  recorder.FailStep(4);
  EXPECT_FALSE(CreateAdbPartitionFiles(recorder.context, document, 0, config, {}, files));
  EXPECT_THAT(recorder.Texts(), ElementsAre(nodvb));
}

TEST_F(Adb, DownloadRequest) {
  config.regions[1].start = 0x01020304;
  config.regions[1].end = 0xFFFEFDFC;
  const Bytes one = {
      'M', 'Z', 0, 0,    0,    1,    2,    0, 0, 16, 0, 0, 0, 1, 1, 1,
      2,   3,   4, 0xFF, 0xFE, 0xFD, 0xFC, 0, 0, 0,  0, 0, 4, 2, 3};  // 1 + 1 + 10 + 1014 = 0x402
  EXPECT_EQ(BuildDownloadRequest(recorder.context, config), one);
  Bytes two = {'M',  'Z',  0,    0,    0, 2, 2, 0, 0, 16,  0, 0, 0, 2, 1, 1,  2,   3, 4,
               0xFF, 0xFE, 0xFD, 0xFC, 0, 0, 0, 0, 0, 4,   3, 3, 2, 0, 0, 16, 0,   0, 0,
               2,    2,    0,    0,    0, 0, 0, 0, 0, 160, 0, 0, 0, 0, 0, 0,  164, 3};
  for (const uint8_t index : std::initializer_list<uint8_t>{1, 2}) {
    config.configuration_index = index;
    EXPECT_EQ(BuildDownloadRequest(recorder.context, config), two);
  }
  EXPECT_TRUE(WriteDownloadRequest(recorder.context, config));
  EXPECT_EQ(ReadWholeFile(recorder.context.temporary_folder / kRequestFile), two);
  recorder.FailStep(1);
  EXPECT_FALSE(WriteDownloadRequest(recorder.context, config));
  EXPECT_EQ(recorder.shown.at(0).detail,
            Recorder::FullDisk(recorder.context.temporary_folder / kRequestFile));
  EXPECT_THAT(recorder.Texts(), ElementsAre("Error No: -3 \n File Access Error!!!"));
  RemoveTransferFiles(recorder.context.temporary_folder);
  config.regions[1].type = 2;
  EXPECT_FALSE(WriteDownloadRequest(recorder.context, config));
  EXPECT_THAT(recorder.Texts(), ElementsAre("Vexa Editor is not configured for ADB image download."));
  EXPECT_TRUE(std::filesystem::is_empty(recorder.context.temporary_folder));
}

}  // namespace
}  // namespace vexa
