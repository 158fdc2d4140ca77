#include "image/decoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>

#include "core/bin_file.h"
#include "core/bytes.h"
#include "image/adb.h"
#include "image/transfer_files.h"
#include "tests/image/image_maker.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Decoder : testing::Test {
  Recorder recorder;
  Document document = NewDocument();
  ProjectConfig config = MakeImageConfig(0);
  AdbImages images;
  StaticDatabase& database() { return *document.sdbs[0].database; }

  void Build() { images = BuildAdbImages(recorder.context, document, 0, config).value(); }
  std::optional<DecodedImage> Decode(const UserBoxInfo& box = {}) {
    return DecodeImage(recorder.context, config, images.adb, images.e2p, box);
  }
  Document Open(const DecodedImage& decoded) {
    Document opened;
    EXPECT_TRUE(OpenDecoded(recorder.context, decoded, opened)) << testing::PrintToString(recorder.Texts());
    return opened;
  }
  std::span<uint8_t> Settings() {
    return std::span(images.adb)
        .subspan(static_cast<size_t>(LayoutOf(config).settings) + kMarker, kSettingsBlock);
  }
};

// What of a database comes back: a save and load, less the bits that the receiver has no room for.
std::unique_ptr<StaticDatabase> Expected(const Context& context, const StaticDatabase& database) {
  auto expected = CopyDatabase(database);
  for (LnbRecord& lnb : expected->lnbs) lnb.cleared_0 = 0, lnb.cleared_12 = 0;
  const auto trim = [](char(&name)[kNameSize]) {
    for (size_t i = NameOf(name).size(); i < kNameSize; ++i) name[i] = 0;
  };
  for (Satellite* satellite : expected->satellites) trim(satellite->record.name);
  for (Service* service : expected->services) trim(service->record.name);
  for (size_t i = 0; i < expected->carriers.size(); ++i) {
    auto& name = expected->carriers[i]->record.name;
    trim(name);
    if (name[0] == 0) SetName(name, "Carrier_" + std::to_string(i));
  }
  for (size_t i = 0; i < expected->favourites.size(); ++i) {
    FavouriteRecord& record = expected->favourites[i].record;
    if (record.tv_name[0] != 0 || record.radio_name[0] != 0) continue;
    SetName(record.tv_name, "Favourite" + std::to_string(i + 1));
    SetName(record.radio_name, "Favourite" + std::to_string(i + 1));
  }
  const Bytes stream = WriteSdbStream(*expected, {});
  auto reopened = std::make_unique<StaticDatabase>();
  size_t used = 0;
  EXPECT_TRUE(ReadSdbStream(context, stream, *reopened, used));
  return reopened;
}

TEST_F(Decoder, WhateverFitsComesBack) {
  std::mt19937 random(4);
  for (int round = 0; round < 150; ++round) {
    RandomShape shape = MakeRandomShape(random);
    if (round % 30 == 0) shape = {16, 85, 1200, 4000, 900, false, false};
    shape.any_bits = round % 2 == 0;
    shape.long_names = round % 3 == 0;
    document.sdbs[0].database = MakeRandomDatabase(random, shape);
    for (uint8_t& byte : document.settings_block) byte = static_cast<uint8_t>(random());
    config = MakeImageConfig(static_cast<uint8_t>(round % 3));
    Build();
    const auto decoded = Decode();
    ASSERT_TRUE(decoded) << round;
    const Document opened = Open(*decoded);
    ASSERT_EQ(opened.sdbs.size(), 1u);
    EXPECT_EQ(CheckLinks(*opened.sdbs[0].database), "") << round;
    const auto expected = Expected(recorder.context, database());
    ASSERT_EQ(DatabaseDifference(*opened.sdbs[0].database, *expected), "") << round;

    // The image of what came back is the same image, but for the slots that are satellites now.
    Document again = NewDocument();
    again.sdbs[0].database = CopyDatabase(*opened.sdbs[0].database);
    again.settings_block = opened.settings_block;
    const AdbImages second = BuildAdbImages(recorder.context, again, 0, config).value();
    EXPECT_TRUE(
        std::equal(images.adb.begin() + 128 + 85 * 28, images.adb.end(), second.adb.begin() + 128 + 85 * 28))
        << round;
    EXPECT_TRUE(std::equal(images.adb.begin(), images.adb.begin() + 128, second.adb.begin())) << round;
    EXPECT_EQ(images.e2p, second.e2p) << round;
  }
}

TEST_F(Decoder, EveryRecordBitComesBack) {
  std::mt19937 random(5);
  // Packs and unpacks records of random bits in their first `bytes`, less those that `clear` takes away.
  const auto comes_back = [&](auto record, size_t bytes, auto clear, auto pack, auto unpack) {
    for (int round = 0; round < 2000; ++round) {
      auto* raw = reinterpret_cast<uint8_t*>(&record);
      for (size_t i = 0; i < bytes; ++i) raw[i] = static_cast<uint8_t>(random());
      clear(record);
      std::array<uint8_t, 44> entry;
      pack(record, entry);
      const auto back = unpack(entry);
      ASSERT_EQ(std::memcmp(&record, &back, sizeof record), 0) << sizeof record << ' ' << round;
    }
  };
  const auto lnb = [](LnbRecord& r) { r.cleared_0 = 0, r.cleared_12 = 0; };
  comes_back(LnbRecord{}, 8, lnb, PackLnb, UnpackLnb);
  comes_back(
      SatelliteRecord{}, 8, [](SatelliteRecord& r) { r.lnb_index &= 15; }, PackSatellite, UnpackSatellite);
  const auto carrier = [&](CarrierRecord& r) {
    r.lnb_index = 0;
    r.frequency = random() & 0xFFFFFFFF;
  };
  comes_back(CarrierRecord{}, 12, carrier, PackCarrier, UnpackCarrier);
  comes_back(
      ServiceRecord{}, 12, [](ServiceRecord& r) { r.carrier_index &= 0xFFF; }, PackService, UnpackService);
}

TEST_F(Decoder, EmptySlotsAreDefaultSatellites) {
  uint8_t entry[28];
  PackEmptySatellite(7, entry);
  SatelliteRecord expected{};
  SetName(expected.name, "NewSat 7");
  const SatelliteRecord record = UnpackSatellite(entry);
  EXPECT_EQ(std::memcmp(&record, &expected, sizeof record), 0);
}

TEST(Journal, AllLeadingBitCases) {
  for (int top = 0; top < 64; ++top) {
    const auto zeros = static_cast<size_t>(63 - top);
    const size_t slot = top == 0 || zeros == 0 || zeros - 1 >= 35 ? 0 : zeros - 1;
    for (const uint64_t below : {uint64_t{0}, ~uint64_t{0}}) {
      const uint64_t bit = uint64_t{1} << top;
      EXPECT_EQ(JournalSlot(bit | (below & (bit - 1))), slot) << top;
    }
  }
  EXPECT_EQ(JournalSlot(0), 0u);
  EXPECT_EQ(JournalSlot(uint64_t{1} << 28), 34u);
}

TEST_F(Decoder, TheCurrentCopyIsTaken) {
  AddTestSatellite(database(), "Astra");
  Build();
  const AdbLayout layout = LayoutOf(config);
  const Bytes first(Settings().begin(), Settings().end());
  for (uint32_t slot = 0; slot < 35; ++slot) {
    for (uint32_t i = 0; i < 35; ++i) {
      uint8_t* place = &images.adb[static_cast<size_t>(layout.settings) + kMarker + i * 96];
      std::copy(first.begin(), first.end(), place);
      place[95] = static_cast<uint8_t>(i + 1);
      images.adb[static_cast<size_t>(layout.selection) + kMarker + i * 64] = static_cast<uint8_t>(i + 1);
    }
    for (const uint64_t at : {layout.settings, layout.selection}) {
      const auto marker = std::span(images.adb).subspan(static_cast<size_t>(at), 8);
      const uint64_t value = kFirstMarker >> slot;
      WriteField(marker, 0, 0, 32, static_cast<uint32_t>(value >> 32));
      WriteField(marker, 1, 0, 32, static_cast<uint32_t>(value));
    }
    const auto decoded = Decode();
    ASSERT_TRUE(decoded) << slot;
    EXPECT_EQ(decoded->settings[95], slot + 1);
    EXPECT_EQ(decoded->selection[0], slot + 1);
  }
}

TEST_F(Decoder, FileByItsParts) {
  Satellite* satellite = AddTestSatellite(database(), "Astra");
  satellite->record.lnb_index = 6;
  Carrier* carrier = AddTestCarrier(database(), 0);
  for (int i = 0; i < 3; ++i) AddTestService(database(), carrier);
  database().favourites[0].tv = {database().services[1]};
  Build();
  UserBoxInfo box{};
  box.rf_channel = 36;
  const auto decoded = Decode(box);
  ASSERT_TRUE(decoded);
  const Bytes& file = decoded->file;
  Bytes expected(24, 0xFF);
  const uint8_t header[] = {'Q', 'z', 2, 0xFF, 0xFF, 0xFF, 6, 0};
  std::copy(std::begin(header), std::end(header), expected.begin());
  EXPECT_EQ(Bytes(file.begin(), file.begin() + 24), expected);
  const struct {
    const char* name;
    uint16_t size, count;
    size_t bytes;
  } blocks[] = {{"lnb", 8, 16, 128},    {"Satelli", 28, 85, 2380}, {"Carrier", 36, 1, 36},
                {"Service", 32, 3, 96}, {"OSL", 2, 3, 8},          {"FGLblk", 0, 8, 8 * 44 + 4},
                {"UserBox", 28, 1, 28}};
  size_t at = 24;
  for (const auto& block : blocks) {
    expected = BytesOf(block.name);
    expected.resize(8, 0);
    expected.insert(expected.end(), {static_cast<uint8_t>(block.size), 0, 0xFF, 0xFF,
                                     static_cast<uint8_t>(block.count), 0, 0xFF, 0xFF});
    ASSERT_LE(at + 16, file.size());
    EXPECT_EQ(Bytes(&file[at], &file[at] + 16), expected) << block.name;
    at += 16 + block.bytes;
  }
  EXPECT_EQ(at, file.size());
  const size_t groups = 16 + 8 * 44 + 4, box_block = 16 + 28;
  EXPECT_EQ(file[at - box_block - groups - 2], 0xFF) << "pad of an odd service count";
  EXPECT_EQ(file[at - box_block - groups - 1], 0xFF);
  const Document opened = Open(*decoded);
  EXPECT_EQ(opened.sdbs[0].database->carriers[0]->record.lnb_index, 6u);
  ASSERT_EQ(opened.ubis.size(), 1u);
  EXPECT_EQ(opened.ubis[0].record.rf_channel, 36);
}

TEST_F(Decoder, EmptyNamesAreFilledIn) {
  for (int i = 0; i < 4; ++i) AddTestSatellite(database(), i == 2 ? "" : "Named");
  for (int i = 0; i < 3; ++i) SetName(AddTestCarrier(database(), 0)->record.name, i == 1 ? "" : "Named");
  for (FavouriteGroup& group : database().favourites) {
    SetName(group.record.tv_name, "");
    SetName(group.record.radio_name, "");
  }
  SetName(database().favourites[4].record.radio_name, "Radio");
  Build();
  const Document opened = Open(Decode().value());
  const StaticDatabase& result = *opened.sdbs[0].database;
  EXPECT_EQ(NameOf(result.satellites[2]->record.name), "NewSat 3");
  EXPECT_EQ(NameOf(result.satellites[4]->record.name), "NewSat 1");
  EXPECT_EQ(NameOf(result.carriers[1]->record.name), "Carrier_1");
  EXPECT_EQ(NameOf(result.favourites[3].record.tv_name), "Favourite4");
  EXPECT_EQ(NameOf(result.favourites[3].record.radio_name), "Favourite4");
  EXPECT_EQ(NameOf(result.favourites[4].record.tv_name), "");
}

TEST_F(Decoder, FavouriteCountsOfAllOnesMeanNone) {
  Build();
  const auto header = std::span(images.adb).subspan(static_cast<size_t>(LayoutOf(config).favourites), 44);
  std::fill(header.begin(), header.end(), uint8_t{0xFF});
  const Document opened = Open(Decode().value());
  EXPECT_THAT(opened.sdbs[0].database->favourites[0].tv, IsEmpty());
  EXPECT_EQ(opened.sdbs[0].database->favourites[0].record.kept_0, 0u);
}

TEST_F(Decoder, FavouriteListsEndAtTheirCounts) {
  AddTestSatellite(database(), "Astra");
  Service* service = AddTestService(database(), AddTestCarrier(database(), 0));
  FavouriteGroup& group = database().favourites[0];
  group.tv = group.radio = {service, service};
  Build();
  const auto entry = std::span(images.adb).subspan(static_cast<size_t>(LayoutOf(config).favourites));
  for (const size_t list : {kFavouriteHeader, kFavouriteHeader + kTvList})
    std::fill_n(&entry[list + 4], 20, uint8_t{0});  // the same service, behind the end
  const Document opened = Open(Decode().value());
  const FavouriteGroup& result = opened.sdbs[0].database->favourites[0];
  EXPECT_EQ(std::pair(result.tv.size(), result.radio.size()), std::pair(size_t{2}, size_t{2}));
}

TEST_F(Decoder, DamageIsRefusedWithOneMessage) {
  AddTestSatellite(database(), "Astra");
  AddTestCarrier(database(), 0);
  const AdbLayout layout = LayoutOf(config);
  const auto first_group = [&] {
    return std::span(images.adb).subspan(static_cast<size_t>(layout.favourites), 44);
  };
  // Index 1 keeps the settings apart, so that a table alone can be out of place.
  const struct {
    const char* what;
    uint8_t index;
    std::function<void()> damage;
  } rows[] = {
      {"17 LNBs", 0, [&] { WriteField(Settings(), 1, 17, 6, 17); }},
      {"86 satellites", 0, [&] { WriteField(Settings(), 1, 23, 8, 86); }},
      {"services beyond the image", 0, [&] { WriteField(Settings(), 0, 0, 13, 8191); }},
      {"TV list longer than its room", 0, [&] { WriteField(first_group(), 10, 0, 12, 2501); }},
      {"radio list longer than its room", 0, [&] { WriteField(first_group(), 10, 16, 12, 1001); }},
      {"cut before the settings", 0, [&] { images.adb.resize(static_cast<size_t>(layout.settings)); }},
      {"settings never written", 0, [&] { std::fill(Settings().begin(), Settings().end(), uint8_t{0xFF}); }},
      {"empty", 0, [&] { images.adb.clear(); }},
      {"empty beside its settings", 1, [&] { images.adb.clear(); }},
      {"cut in the satellites", 1, [&] { images.adb.resize(128 + 85 * 28 - 1); }},
      {"cut in the carriers", 1, [&] { images.adb.resize(static_cast<size_t>(layout.tables_end) - 1); }},
      {"cut in the favourites", 1, [&] { images.adb.resize(static_cast<size_t>(layout.settings) - 1); }},
      {"carriers below the image", 1, [&] { config.partition_sizes[3] = config.partition_sizes[4] = 17; }},
      {"partitions beyond 32 bits", 1,
       [&] { config.partition_sizes[3] = config.partition_sizes[4] = 0x80000000; }},
  };
  for (const auto& row : rows) {
    config = MakeImageConfig(row.index);
    Build();
    ASSERT_TRUE(Decode());
    row.damage();
    EXPECT_FALSE(Decode()) << row.what;
    EXPECT_THAT(recorder.shown.at(0).detail, testing::EndsWith(" the configuration that it was made for."));
    EXPECT_THAT(recorder.Texts(), ElementsAre("File access error")) << row.what;
  }
}

TEST_F(Decoder, ImagesCutAnywhereAreRefusedOrOpen) {
  for (const uint8_t index : {uint8_t{0}, uint8_t{1}}) {
    config = MakeImageConfig(index);
    config.partition_sizes[4] = 512;
    config.partition_sizes[5] = 64;
    const AdbLayout layout = LayoutOf(config);
    document.sdbs[0].database = std::make_unique<StaticDatabase>();
    AddTestSatellite(database(), "Astra");
    AddTestService(database(), AddTestCarrier(database(), 0));
    Build();
    const Bytes whole = images.adb;
    const auto settings = static_cast<size_t>(layout.settings);
    // Behind the tables stand the copies of the settings, for index 0 alone.
    for (size_t size = 0; size < settings + 300; size += size < 3200 || size >= settings - 64 ? 1 : 61) {
      images.adb.assign(whole.begin(),
                        whole.begin() + static_cast<std::ptrdiff_t>(std::min(size, whole.size())));
      const auto decoded = Decode();
      const auto texts = recorder.Texts();
      ASSERT_EQ(texts.size(), decoded ? 0u : 1u) << size;
      const size_t counts = settings + (index == 0 ? kMarker + 8 : 0);  // the settings' first two words
      ASSERT_EQ(decoded.has_value(), size >= counts) << size;
      if (decoded) Open(*decoded);
    }
  }
}

// What the image's own bytes say about it, read apart from the decoder.
struct ImageTables {
  uint32_t services = 0, counted = 0;
  bool satellites_exist = true;
  std::vector<uint16_t> order;
  std::vector<std::vector<uint16_t>> lists;  // TV, radio, TV, ...

  ImageTables(const Bytes& adb, const AdbLayout& layout, std::span<const uint8_t> settings) {
    const auto u16 = [&](uint64_t at) {
      return static_cast<uint16_t>(adb[static_cast<size_t>(at)] | adb[static_cast<size_t>(at) + 1] << 8);
    };
    services = ReadField(settings, 0, 0, 13);
    for (uint64_t i = 0; i < ReadField(settings, 0, 19, 12); ++i) {
      const uint64_t entry = layout.tables_end - (i + 1) * 36;
      counted += u16(entry + 10);
      satellites_exist = satellites_exist && (u16(entry + 12) & 0x3FF) < ReadField(settings, 1, 23, 8);
    }
    for (uint64_t i = 0; i < services; ++i) order.push_back(u16(layout.tables_end + 2 * i));
    for (uint64_t list = 0; list < 16; ++list) {
      const uint64_t group = layout.favourites + list / 2 * 7044;
      const uint16_t word = u16(group + 40 + list % 2 * 2);
      lists.emplace_back();
      for (uint32_t i = 0; word != 0xFFFF && i < (word & 0xFFFu); ++i) {
        const uint16_t entry = u16(group + 44 + list % 2 * 5000 + 2 * i);
        if (entry < services) lists.back().push_back(entry);
      }
    }
  }
  bool Agree() const { return satellites_exist && counted == services; }
  std::vector<uint16_t> MendedOrder() const {
    std::vector<uint16_t> sorted = order, own(services);
    std::iota(own.begin(), own.end(), uint16_t{0});
    std::sort(sorted.begin(), sorted.end());
    return sorted == own ? order : own;
  }
};

struct Contradictions : Decoder {
  std::mt19937 random{13};
  size_t Below(size_t limit) { return random() % limit; }

  // Changes a count in the settings, or bytes of one of the tables.
  void Damage(const AdbLayout& layout, std::span<uint8_t> settings) {
    const auto damage = [&](uint64_t start, size_t size) {
      images.adb[static_cast<size_t>(start + Below(size))] =
          static_cast<uint8_t>(Below(3) ? Below(256) : 0xFF);
    };
    switch (Below(6)) {
      case 0:
        return WriteField(settings, 0, 0, 13, static_cast<uint32_t>(Below(60)));
      case 1:
        return WriteField(settings, 0, 19, 12, static_cast<uint32_t>(Below(24)));
      case 2:
        return WriteField(settings, 1, 23, 8, static_cast<uint32_t>(Below(8)));
      case 3:
        return damage(layout.tables_end - 12 * 36, 12 * 36);
      case 4:
        return damage(layout.tables_end, 60);
      default:
        damage(layout.favourites + Below(8) * 7044 + 44 + Below(2) * 5000, 12);
    }
  }

  // The lists of the decoded file are the image's, mended.
  void ExpectLists(const DecodedImage& decoded, const ImageTables& tables) {
    const Document opened = Open(decoded);
    StaticDatabase& result = *opened.sdbs.at(0).database;
    EXPECT_EQ(CheckLinks(result), "");
    ByteReader reader(decoded.file);
    reader.Seek(24 + 16 + 16 * 8 + 16 + result.satellites.size() * 28 + 16 + result.carriers.size() * 36 +
                16 + result.services.size() * 32 + 16);
    std::vector<uint16_t> written;
    for (uint32_t i = 0; i < tables.services; ++i) written.push_back(reader.U16());
    ASSERT_EQ(written, tables.MendedOrder());
    reader.Skip(tables.services % 2 * 2 + 16);
    for (size_t group = 0; group < 8; ++group) {
      FavouriteRecord record;
      ASSERT_TRUE(reader.Read(record));
      const auto &tv = tables.lists[2 * group], &radio = tables.lists[2 * group + 1];
      ASSERT_EQ(std::pair(size_t{record.tv_count}, size_t{record.radio_count}),
                std::pair(tv.size(), radio.size()));
      for (const uint16_t entry : tv) ASSERT_EQ(reader.U16(), entry);
      for (const uint16_t entry : radio) ASSERT_EQ(reader.U16(), entry);
      reader.Skip((tv.size() + radio.size()) % 2 * 2);
    }
  }
};

// Every file that is made opens, and its lists are mended in the file itself.
TEST_F(Contradictions, OfTablesGiveNoFile) {
  int made = 0, refused = 0;
  for (int round = 0; round < 400; ++round) {
    SCOPED_TRACE(round);
    document.sdbs[0].database = MakeRandomDatabase(random, {4, 6, 12, 30, 6, round % 2 == 0, false});
    config = MakeImageConfig(static_cast<uint8_t>(round % 2));
    Build();
    const AdbLayout layout = LayoutOf(config);
    const auto settings = round % 2 == 0 ? Settings() : std::span(images.e2p).first(kSettingsBlock);
    Damage(layout, settings);
    const ImageTables tables(images.adb, layout, settings);
    const auto decoded = Decode();
    ASSERT_EQ(decoded.has_value(), tables.Agree());
    ++(decoded ? made : refused);
    if (decoded) {
      ASSERT_NO_FATAL_FAILURE(ExpectLists(*decoded, tables));
    } else {
      EXPECT_THAT(recorder.Texts(), ElementsAre("Invalid or unknown file format."));
    }
  }
  EXPECT_GT(made, 100);
  EXPECT_GT(refused, 100);
}

TEST_F(Decoder, ShortE2pKeepsThePresets) {
  config = MakeImageConfig(1);
  AddTestSatellite(database(), "Astra");
  Build();
  images.e2p.resize(50);
  const auto decoded = Decode();
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->settings[95], 0xFF);
  EXPECT_EQ(decoded->selection, SelectionBlock{});
  images.e2p.resize(4);  // the counts of LNBs and satellites are gone
  EXPECT_FALSE(Decode());
}

TEST_F(Decoder, FilesAndTheirMessages) {
  config = MakeImageConfig(1);
  const Path& folder = recorder.context.temporary_folder;
  const UserBoxInfo box{};
  EXPECT_FALSE(DecodeDownload(recorder.context, config, box));
  EXPECT_THAT(recorder.Texts(), ElementsAre("File access error"));
  Build();
  PutFile(folder / kAdbImageFile, images.adb);
  EXPECT_FALSE(DecodeDownload(recorder.context, config, box));
  EXPECT_THAT(recorder.Texts(), ElementsAre("E2P File access error."));
  PutFile(folder / kE2pImageFile, images.e2p);
  const char* expected[] = {"File access error", "File write-access error", "File write-access error",
                            "File write-access error"};
  for (int step = 1; step <= 4; ++step) {
    recorder.FailStep(step);
    EXPECT_FALSE(DecodeDownload(recorder.context, config, box)) << step;
    EXPECT_EQ(recorder.shown.at(0).detail, Recorder::FullDisk(folder / kDecodedFile)) << step;
    EXPECT_THAT(recorder.Texts(), ElementsAre(expected[step - 1])) << step;
  }
  recorder.FailStep(0);
  const auto decoded = DecodeDownload(recorder.context, config, box);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(ReadWholeFile(folder / kDecodedFile), decoded->file);
  EXPECT_EQ(decoded->file, Decode()->file);
  config.partitions.clear();
  EXPECT_FALSE(DecodeDownload(recorder.context, config, box));
  EXPECT_THAT(
      recorder.Texts(),
      ElementsAre("Configuration settings not found to process.\nUpdate configuration file and continue"));
}

}  // namespace
}  // namespace vexa
