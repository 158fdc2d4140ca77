// What the reader accepts, corrects and refuses, on files laid out and damaged by hand.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <functional>

#include "core/bin_file.h"
#include "tests/core/bin_bytes.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

constexpr const char* kInvalid = "Invalid or unknown file format.";

struct Opened {
  bool good = false;
  Document document;
  std::vector<ShownMessage> shown;
  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (const auto& message : shown) texts.push_back(message.text);
    return texts;
  }
};

// Reads through a block of exactly the file's size, so that a tool sees any read beyond it.
Opened Open(const Bytes& file, Document document = {}) {
  Opened opened;
  opened.document = std::move(document);
  Context context;  // without a Recorder's folder: there are thousands of these
  context.messages.tell = [&](Icon icon, const std::string& text, const std::string& title) {
    opened.shown.push_back({icon, text, title});
  };
  const std::vector<uint8_t> exact(file.begin(), file.end());
  opened.good = OpenBinBytes(context, exact, opened.document);
  for (const OpenSdb& sdb : opened.document.sdbs) EXPECT_EQ(CheckLinks(*sdb.database), "");
  EXPECT_EQ(static_cast<size_t>(std::popcount(opened.document.slot_mask)), opened.document.sdbs.size());
  return opened;
}

std::vector<std::string> Names(const std::vector<Service*>& list) {
  std::vector<std::string> names;
  for (const Service* service : list) names.emplace_back(NameOf(service->record.name));
  return names;
}
using List = std::vector<std::string>;

TEST(BinRead, BareStream) {
  const Opened opened = Open(SampleStream().Join());
  ASSERT_TRUE(opened.good);
  ASSERT_TRUE(opened.shown.empty());
  ASSERT_EQ(opened.document.sdbs.size(), 1u);
  EXPECT_EQ(opened.document.sdbs[0].name, "SDB1");
  const StaticDatabase& d = *opened.document.sdbs[0].database;
  EXPECT_EQ(d.lnb_count, 1u);
  EXPECT_EQ(d.lnbs[0].kept_20, 0xAB0u);
  EXPECT_EQ(d.lnbs[1].frequency1, 9750u);  // the default
  ASSERT_EQ(d.satellites.size(), 2u);
  EXPECT_EQ(NameOf(d.satellites[1]->record.name), "Hot Bird");
  EXPECT_EQ(d.satellites[1]->record.position, 255u);
  EXPECT_EQ(d.satellites[1]->record.lnb_index, 3u);  // beyond the count, and kept
  EXPECT_EQ(d.satellites[0]->record.kept_14, 1u << 17);
  ASSERT_EQ(d.carriers.size(), 3u);
  EXPECT_EQ(d.carriers[0]->satellite, d.satellites[1]);
  EXPECT_EQ(d.satellites[0]->carriers, (std::vector<Carrier*>{d.carriers[1], d.carriers[2]}));
  EXPECT_EQ(NameOf(d.carriers[2]->record.name), "12345678901234567890");
  EXPECT_EQ(d.carriers[0]->record.kept_16, 0xABCDu);
  EXPECT_EQ(Names(d.carriers[1]->services), (List{"Zwei", "Drei"}));
  EXPECT_EQ(Names(d.service_order), (List{"Drei", "Eins", "Zwei"}));
  EXPECT_EQ(Names(d.favourites[0].tv), (List{"Zwei"}));
  EXPECT_EQ(Names(d.favourites[1].radio), (List{"Drei", "Zwei"}));
  EXPECT_EQ(NameOf(d.favourites[7].record.radio_name), "R8");
  EXPECT_EQ(d.favourites[0].record.kept_28, 5u);
}

TEST(BinRead, ContainerOfEveryCompression) {
  for (unsigned flags = 0; flags < 8; ++flags) {
    PlainContainer container = SampleContainer();
    container.sdbs.push_back({"Two", SampleStream().Join(), (flags & 1) == 0});
    container.sdbs[0].compressed = flags & 1;
    container.compress_ubis = flags & 2;
    container.compress_payload = flags & 4;
    Bytes file = container.Join();
    if (flags & 4) file.insert(file.end(), 100, 0xEE);  // what follows a packed payload is not looked at
    Document document;
    document.compress_payload = document.compress_ubis = true;
    const Opened opened = Open(file, std::move(document));
    ASSERT_TRUE(opened.good);
    ASSERT_TRUE(opened.shown.empty());
    EXPECT_EQ(opened.document.compress_payload, (flags & 4) != 0);
    EXPECT_EQ(opened.document.compress_ubis, (flags & 2) != 0);
    ASSERT_EQ(opened.document.sdbs.size(), 2u);
    EXPECT_EQ(opened.document.sdbs[0].database->compressed, (flags & 1) != 0);
    EXPECT_EQ(opened.document.sdbs[1].database->compressed, (flags & 1) == 0);
    EXPECT_EQ(opened.document.sdbs[1].name, "Two");
    EXPECT_EQ(opened.document.sdbs[0].database->satellites.size(), 85u);
    ASSERT_EQ(opened.document.ubis.size(), 1u);
    EXPECT_EQ(opened.document.ubis[0].name, "UBI1");
    EXPECT_EQ(opened.document.ubis[0].record.lock_code[3], 28);
  }
}

TEST(BinRead, BareStreamLeavesTheCompressionSetting) {
  Document document;
  document.compress_payload = true;
  EXPECT_TRUE(Open(SampleStream().Join(), std::move(document)).document.compress_payload);
}

TEST(BinRead, ContainersMagicIsNotChecked) {
  Bytes file = SampleContainer().Join();
  file[0] = file[1] = 0;
  EXPECT_TRUE(Open(file).good);
}

TEST(BinRead, EmptyAndFullNames) {
  PlainContainer container = SampleContainer();
  container.sdbs[0].name = "";
  container.sdbs.push_back({"1234567", SampleStream().Join()});
  const Bytes box(28);
  container.ubis = UbiStream({{"", box}, {"12345678", box}});
  container.ubi_count = 2;
  const Opened opened = Open(container.Join());
  ASSERT_TRUE(opened.good);
  EXPECT_EQ(opened.document.sdbs[0].name, "SDB1");
  EXPECT_EQ(opened.document.sdbs[1].name, "1234567");
  EXPECT_EQ(opened.document.ubis[0].name, "UBI1");
  EXPECT_EQ(opened.document.ubis[1].name, "12345678");
}

// What the stream reader corrects in silence.
struct StreamCase {
  const char* name;
  std::function<void(PlainStream&)> change;
  std::function<void(const StaticDatabase&)> check;
};

class StreamAccepts : public testing::TestWithParam<StreamCase> {};

TEST_P(StreamAccepts, AndCorrects) {
  PlainStream stream = SampleStream();
  GetParam().change(stream);
  const Opened opened = Open(stream.Join());
  ASSERT_TRUE(opened.good);
  EXPECT_TRUE(opened.shown.empty());
  GetParam().check(*opened.document.sdbs.at(0).database);
}

void HasIdentityOrder(const StaticDatabase& d) {
  EXPECT_EQ(d.service_order, d.services);
}
void HasDefaultGroups(const StaticDatabase& d) {
  EXPECT_EQ(NameOf(d.favourites[0].record.tv_name), "Favourite1");
  EXPECT_TRUE(d.favourites[0].tv.empty());
}
void HasGroups(const StaticDatabase& d) {
  EXPECT_EQ(NameOf(d.favourites[0].record.tv_name), "Mine");
}

INSTANTIATE_TEST_SUITE_P(
    Reader, StreamAccepts,
    testing::Values(
        StreamCase{"lnb_index_16", [](PlainStream& s) { s.satellites[1].lnb = 16; },
                   [](const StaticDatabase& d) { EXPECT_EQ(d.satellites[1]->record.lnb_index, 0u); }},
        StreamCase{"lnb_index_15", [](PlainStream& s) { s.satellites[1].lnb = 15; },
                   [](const StaticDatabase& d) { EXPECT_EQ(d.satellites[1]->record.lnb_index, 15u); }},
        StreamCase{
            "satellite_without_name", [](PlainStream& s) { s.satellites[1].name = ""; },
            [](const StaticDatabase& d) { EXPECT_EQ(NameOf(d.satellites[1]->record.name), "Satellite2"); }},
        StreamCase{"wrong_carrier_count", [](PlainStream& s) { s.satellites[0].carriers = 60000; },
                   [](const StaticDatabase& d) { EXPECT_EQ(d.satellites[0]->record.carrier_count, 2u); }},
        StreamCase{"carrier_indices_mean_nothing",
                   [](PlainStream& s) {
                     for (auto& service : s.services) service.carrier = 60000;
                     for (auto& carrier : s.carriers) carrier.first_service = 9;
                   },
                   [](const StaticDatabase& d) { EXPECT_EQ(Names(d.carriers[0]->services), List{"Eins"}); }},
        StreamCase{"no_order", [](PlainStream& s) { s.has_order = false; }, HasIdentityOrder},
        StreamCase{"no_order_but_groups", [](PlainStream& s) { s.has_order = false; }, HasGroups},
        StreamCase{"order_repeats",
                   [](PlainStream& s) {
                     s.order = {1, 1, 0};
                   },
                   HasIdentityOrder},
        StreamCase{"order_beyond",
                   [](PlainStream& s) {
                     s.order = {2, 1, 3};
                   },
                   HasIdentityOrder},
        StreamCase{"order_shorter",
                   [](PlainStream& s) {
                     s.order = {1, 0};
                   },
                   HasIdentityOrder},
        StreamCase{"groups_behind_shorter_order", [](PlainStream& s) { s.order = {1}; }, HasGroups},
        StreamCase{"groups_behind_longer_order",
                   [](PlainStream& s) {
                     s.order = {2, 1, 0, 0, 0};
                   },
                   HasGroups},
        StreamCase{"order_longer",
                   [](PlainStream& s) {
                     s.order = {2, 1, 0, 0, 0};
                   },
                   HasIdentityOrder},
        StreamCase{"version_5", [](PlainStream& s) { s.header = StreamHeader(5); }, HasDefaultGroups},
        StreamCase{"version_7", [](PlainStream& s) { s.header = StreamHeader(7); }, HasDefaultGroups},
        StreamCase{"version_65535", [](PlainStream& s) { s.header = StreamHeader(0xFFFF); },
                   HasDefaultGroups},
        StreamCase{"no_groups", [](PlainStream& s) { s.groups.clear(); }, HasDefaultGroups},
        StreamCase{"favourite_of_no_service",
                   [](PlainStream& s) {
                     s.groups[0] = {{3, 2, 65535}, {7}, "Mine", ""};
                   },
                   [](const StaticDatabase& d) {
                     EXPECT_EQ(Names(d.favourites[0].tv), List{"Drei"});
                     EXPECT_TRUE(d.favourites[0].radio.empty());
                     EXPECT_EQ(NameOf(d.favourites[1].record.tv_name), "Even");
                   }},
        StreamCase{"longest_lists",
                   [](PlainStream& s) {
                     s.groups[0].tv.assign(2500, 1);
                     s.groups[0].radio.assign(1000, 2);
                   },
                   [](const StaticDatabase& d) {
                     EXPECT_EQ(d.favourites[0].tv.size(), 2500u);
                     EXPECT_EQ(d.favourites[0].radio.size(), 1000u);
                   }},
        StreamCase{
            "sixteen_lnbs",
            [](PlainStream& s) { s.lnbs = Plain{}.Add(BlockHeader("any", 12, 16)).Fill(128, 0x55).bytes; },
            [](const StaticDatabase& d) { EXPECT_EQ(d.lnb_count, 16u); }},
        StreamCase{"nothing_in_it",
                   [](PlainStream& s) {
                     s.lnbs = BlockHeader("lnb", 8, 0);
                     s.satellites.clear();
                     s.carriers.clear();
                     s.services.clear();
                     s.order.clear();
                     s.groups.clear();
                   },
                   [](const StaticDatabase& d) { EXPECT_TRUE(d.satellites.empty()); }}),
    [](const auto& row) { return row.param.name; });

TEST(BinRead, PadAtTheEndMayBeMissing) {
  PlainStream stream = SampleStream();
  stream.groups.clear();
  Bytes bytes = stream.Join();
  bytes.resize(bytes.size() - 2);
  const Opened opened = Open(bytes);
  ASSERT_TRUE(opened.good);
  EXPECT_EQ(Names(opened.document.sdbs[0].database->service_order), (List{"Drei", "Eins", "Zwei"}));
  // Cut short: the identity, and nothing refused.
  bytes.resize(bytes.size() - 1);
  const Opened shorter = Open(bytes);
  ASSERT_TRUE(shorter.good);
  HasIdentityOrder(*shorter.document.sdbs[0].database);
  stream.groups = {8, {{}, {}, "a", "b"}};
  stream.groups[7].tv = {1};
  bytes = stream.Join();
  bytes.resize(bytes.size() - 2);
  EXPECT_TRUE(Open(bytes).good);
}

// What is refused, with the one message of it.
struct RefusedCase {
  const char* name;
  std::function<Bytes()> make;
  std::string text;
};

Bytes Changed(std::function<void(PlainStream&)> change) {
  PlainStream stream = SampleStream();
  change(stream);
  return stream.Join();
}
Bytes Cut(Bytes bytes, size_t size) {
  bytes.resize(size);
  return bytes;
}
Bytes Set(Bytes bytes, size_t place, uint8_t value) {
  bytes.at(place) = value;
  return bytes;
}
Bytes SetWord(Bytes bytes, size_t place, uint32_t value) {
  for (size_t i = 0; i < 4; ++i) bytes.at(place + i) = static_cast<uint8_t>(value >> (8 * i));
  return bytes;
}
Bytes PackedContainer(bool sdb, bool payload) {
  PlainContainer container = SampleContainer();
  container.sdbs[0].compressed = sdb;
  container.compress_payload = payload;
  return container.Join();
}
uint32_t WordAt(const Bytes& bytes, size_t place) {
  return bytes[place] | bytes[place + 1] << 8 | bytes[place + 2] << 16 |
         static_cast<uint32_t>(bytes[place + 3]) << 24;
}

class ReaderRefuses : public testing::TestWithParam<RefusedCase> {};

TEST_P(ReaderRefuses, WithOneMessage) {
  const Opened opened = Open(GetParam().make());
  EXPECT_FALSE(opened.good);
  EXPECT_EQ(opened.Texts(), List{GetParam().text});
  ASSERT_EQ(opened.shown.size(), 1u);
  EXPECT_EQ(opened.shown[0].icon, Icon::kStop);
  EXPECT_EQ(opened.shown[0].title, kApplicationTitle);
  EXPECT_TRUE(opened.document.sdbs.empty());
  EXPECT_TRUE(opened.document.ubis.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Stream, ReaderRefuses,
    testing::Values(
        RefusedCase{"empty", [] { return Bytes{}; }, kInvalid},
        RefusedCase{"short_header", [] { return Cut(SampleStream().Join(), 23); }, kInvalid},
        RefusedCase{"header_alone", [] { return Cut(SampleStream().Join(), 24); }, kInvalid},
        RefusedCase{"magic", [] { return Set(SampleStream().Join(), 1, 'Z'); },
                    "StaticDB file magic ID mismatch. Input a valid SDB."},
        RefusedCase{"lnbs_17",
                    [] {
                      return Changed([](PlainStream& s) {
                        s.lnbs = Plain{}.Add(BlockHeader("lnb", 8, 17)).Fill(17 * 8, 0).bytes;
                      });
                    },
                    "LNB records exceeds the limit 16. Can not continue."},
        RefusedCase{"satellites_86",
                    [] { return Changed([](PlainStream& s) { s.satellites.resize(86, s.satellites[1]); }); },
                    "Satellite records exceed the limit. Can not add."},
        RefusedCase{"carrier_of_no_satellite",
                    [] { return Changed([](PlainStream& s) { s.carriers[2].satellite = 2; }); }, kInvalid},
        RefusedCase{"carrier_of_satellite_1023",
                    [] { return Changed([](PlainStream& s) { s.carriers[2].satellite = 1023; }); }, kInvalid},
        RefusedCase{"services_too_many",
                    [] { return Changed([](PlainStream& s) { s.carriers[2].services = 1; }); }, kInvalid},
        RefusedCase{"services_too_few",
                    [] { return Changed([](PlainStream& s) { s.carriers[1].services = 1; }); }, kInvalid},
        RefusedCase{"tv_list_2501",
                    [] { return Changed([](PlainStream& s) { s.groups[0].tv.assign(2501, 0); }); }, kInvalid},
        RefusedCase{"radio_list_1001",
                    [] { return Changed([](PlainStream& s) { s.groups[7].radio.assign(1001, 0); }); },
                    kInvalid},
        RefusedCase{"seven_groups", [] { return Changed([](PlainStream& s) { s.groups.pop_back(); }); },
                    kInvalid}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Container, ReaderRefuses,
    testing::Values(
        RefusedCase{"byte_5", [] { return Set(SampleContainer().Join(), 5, 1); },
                    "Unsupport file version. can not open!."},
        RefusedCase{"no_sdb", [] { return Set(SampleContainer().Join(), 20, 0); }, kInvalid},
        RefusedCase{"header_alone", [] { return Cut(SampleContainer().Join(), 24); }, kInvalid},
        RefusedCase{"directory_cut", [] { return Cut(SampleContainer().Join(), 24 + 55); }, kInvalid},
        RefusedCase{"directory_beyond", [] { return Set(SampleContainer().Join(), 21, 0xFF); }, kInvalid},
        RefusedCase{"offset_beyond", [] { return SetWord(SampleContainer().Join(), 24 + 16, 0x7FFFFFFF); },
                    kInvalid},
        RefusedCase{"offset_at_end",
                    [] {
                      const Bytes file = SampleContainer().Join();
                      return SetWord(file, 24 + 16, static_cast<uint32_t>(file.size()));
                    },
                    kInvalid},
        RefusedCase{"streams_magic", [] { return Set(SampleContainer().Join(), 24 + 56, 'q'); },
                    "StaticDB file magic ID mismatch. Input a valid SDB."},
        RefusedCase{"stored_payload_beyond",
                    [] {
                      const Bytes file = PackedContainer(false, true);
                      return SetWord(file, 16, WordAt(file, 16) + 1);
                    },
                    kInvalid},
        RefusedCase{"stored_payload_huge", [] { return SetWord(PackedContainer(false, true), 16, ~0u); },
                    kInvalid},
        RefusedCase{"payload_size_huge", [] { return SetWord(PackedContainer(false, true), 12, ~0u); },
                    kInvalid},
        RefusedCase{"payload_size_128_mib",
                    [] { return SetWord(PackedContainer(false, true), 12, 128u << 20); }, kInvalid},
        RefusedCase{"payload_size_one_more",
                    [] {
                      const Bytes file = PackedContainer(false, true);
                      return SetWord(file, 12, WordAt(file, 12) + 1);
                    },
                    kInvalid},
        RefusedCase{"payload_size_one_less",
                    [] {
                      const Bytes file = PackedContainer(false, true);
                      return SetWord(file, 12, WordAt(file, 12) - 1);
                    },
                    "Decompression failed."},
        RefusedCase{"payload_damaged", [] { return Set(PackedContainer(false, true), 24, 0); },
                    "Decompression failed."},
        RefusedCase{"stored_payload_short",
                    [] {
                      const Bytes file = PackedContainer(false, true);
                      return SetWord(file, 16, WordAt(file, 16) - 1);
                    },
                    "Decompression failed."},
        RefusedCase{"stream_damaged", [] { return Set(PackedContainer(true, false), 24 + 56, 0xFF); },
                    "Decompression failed."},
        RefusedCase{"stream_size_one_more",
                    [] {
                      const Bytes file = PackedContainer(true, false);
                      return SetWord(file, 24 + 8, WordAt(file, 24 + 8) + 1);
                    },
                    kInvalid},
        RefusedCase{"stored_stream_huge",
                    [] { return SetWord(PackedContainer(true, false), 24 + 12, 0x40000000); }, kInvalid}),
    [](const auto& row) { return row.param.name; });

TEST(BinRead, PlainSizesAreNotLookedAt) {
  Bytes file = SampleContainer().Join();
  for (const size_t place : {12, 16, 24 + 8, 24 + 12, 24 + 20, 24 + 24})
    file = SetWord(file, place, 0xFFFFFFFF);
  EXPECT_TRUE(Open(file).good);
  EXPECT_TRUE(Open(Set(file, 24 + 7, 0)).good);
}

TEST(BinRead, EveryCutOfEveryKindIsRefusedOrWhole) {
  for (const bool packed : {false, true}) {
    const Bytes whole = packed ? PackedContainer(true, true) : SampleStream().Join();
    for (size_t size = 0; size < whole.size(); ++size) {
      const Opened opened = Open(Cut(whole, size));
      ASSERT_EQ(opened.shown.size(), opened.good ? 0u : 1u) << "cut at " << size;
      ASSERT_EQ(opened.document.sdbs.size(), opened.good ? 1u : 0u) << "cut at " << size;
    }
  }
}

TEST(BinRead, GoodSdbsBeforeADamagedOneStay) {
  PlainContainer container = SampleContainer();
  for (const char* name : {"Two", "Three"}) container.sdbs.push_back({name, SampleStream().Join()});
  container.sdbs[1].stream[0] = 'x';
  const Opened opened = Open(container.Join());
  EXPECT_FALSE(opened.good);
  EXPECT_EQ(opened.Texts(), List{"StaticDB file magic ID mismatch. Input a valid SDB."});
  ASSERT_EQ(opened.document.sdbs.size(), 1u);
  EXPECT_TRUE(opened.document.ubis.empty());
}

TEST(BinRead, MoreSdbsThanSlots) {
  PlainContainer container = SampleContainer();
  container.sdbs.resize(3, container.sdbs[0]);
  Document document;
  while (document.sdbs.size() < kMaximumSdbs - 2) AppendSdb(document, "x");
  Opened opened = Open(container.Join(), std::move(document));
  EXPECT_TRUE(opened.good);
  ASSERT_EQ(opened.Texts(), List{"Can not open more than 16 SDBs (Opened 2 of 3 SDBs in the bin)."});
  EXPECT_EQ(opened.shown[0].icon, Icon::kInformation);
  EXPECT_EQ(opened.document.sdbs.size(), 16u);
  EXPECT_EQ(opened.document.ubis.size(), 1u);
  opened = Open(container.Join(), std::move(opened.document));
  EXPECT_EQ(opened.Texts(), List{"Can not open more than 16 SDBs (Opened 0 of 3 SDBs in the bin)."});
  EXPECT_EQ(opened.document.ubis.size(), 1u);  // none without an SDB
  opened = Open(SampleStream().Join(), std::move(opened.document));
  EXPECT_EQ(opened.Texts(), List{"Can not open more than 16 SDBs (opened 0 of 1 SDBs in the bin)."});
  EXPECT_EQ(opened.shown[0].icon, Icon::kInformation);
}

TEST(BinRead, SlotsAreTheLowestFreeOnes) {
  Document document = NewDocument();
  AppendSdb(document, "b");
  AppendSdb(document, "c");
  ReleaseSlot(document, 1);
  document.sdbs.erase(document.sdbs.begin() + 1);
  const Opened opened = Open(SampleStream().Join(), std::move(document));
  ASSERT_EQ(opened.document.sdbs.size(), 3u);
  EXPECT_EQ(opened.document.sdbs[2].slot, 1u);
  EXPECT_EQ(opened.document.sdbs[2].name, "SDB3");
}

// The user box streams of containers.
struct UbiCase {
  const char* name;
  std::function<void(PlainContainer&)> change;
  bool good;
  List texts;
  size_t ubis;
};

class UbiStreams : public testing::TestWithParam<UbiCase> {};

TEST_P(UbiStreams, AreRead) {
  PlainContainer container = SampleContainer();
  GetParam().change(container);
  const Opened opened = Open(container.Join());
  EXPECT_EQ(opened.good, GetParam().good);
  EXPECT_EQ(opened.Texts(), GetParam().texts);
  EXPECT_EQ(opened.document.sdbs.size(), 1u);
  ASSERT_EQ(opened.document.ubis.size(), GetParam().ubis);
  for (const OpenUbi& ubi : opened.document.ubis) EXPECT_FALSE(ubi.name.empty());
}

std::vector<std::pair<std::string, Bytes>> Boxes(size_t count, size_t size) {
  return {count, {"Box", Bytes(size, 7)}};
}

INSTANTIATE_TEST_SUITE_P(
    Reader, UbiStreams,
    testing::Values(UbiCase{"old_records",
                            [](PlainContainer& c) {
                              c.ubis = UbiStream(Boxes(3, 24), 24);
                              c.ubi_count = 3;
                            },
                            true,
                            {"Older version static binary!!. Does not contain parental lock code."},
                            3},
                    UbiCase{"size_20",
                            [](PlainContainer& c) { c.ubis = UbiStream(Boxes(1, 20), 20); },
                            false,
                            {"Project type mismatch!!. Can not open user box information."},
                            0},
                    UbiCase{"size_29",
                            [](PlainContainer& c) { c.ubis = UbiStream(Boxes(1, 29), 29); },
                            false,
                            {"Project type mismatch!!. Can not open user box information."},
                            0},
                    UbiCase{"containers_count_governs",
                            [](PlainContainer& c) {
                              c.ubis = UbiStream(Boxes(5, 28));
                              c.ubi_count = 2;
                            },
                            true,
                            {},
                            2},
                    UbiCase{"other_block", [](PlainContainer& c) { c.ubis[0] = 'u'; }, true, {}, 0},
                    UbiCase{"header_cut", [](PlainContainer& c) { c.ubis.resize(15); }, false, {kInvalid}, 0},
                    UbiCase{"record_cut", [](PlainContainer& c) { c.ubis.pop_back(); }, false, {kInvalid}, 0},
                    UbiCase{
                        "count_beyond", [](PlainContainer& c) { c.ubi_count = 65535; }, false, {kInvalid}, 0},
                    UbiCase{"above_the_limit",
                            [](PlainContainer& c) {
                              c.ubis = UbiStream(Boxes(19, 28));
                              c.ubi_count = 19;
                            },
                            true,
                            {"Can't add USER BOX Information. It exceeds the limit 16."},
                            16}),
    [](const auto& row) { return row.param.name; });

TEST(BinRead, OldBoxHasNoLockCode) {
  PlainContainer container = SampleContainer();
  container.ubis = UbiStream(Boxes(2, 24), 24);
  container.ubi_count = 2;
  const Opened opened = Open(container.Join());
  ASSERT_EQ(opened.document.ubis.size(), 2u);
  EXPECT_EQ(opened.shown[0].icon, Icon::kInformation);
  EXPECT_EQ(opened.document.ubis[1].record.kept[15], 7);
  for (const char digit : opened.document.ubis[1].record.lock_code) EXPECT_EQ(digit, 0);
}

// What stands behind a bare stream.
struct BareCase {
  const char* name;
  Bytes behind;
  bool good;
  List texts;
  size_t ubis;
};

TEST(BinRead, BoxBehindABareStream) {
  const auto box = [](const char* name, unsigned size, size_t bytes) {
    return Plain{}.Add(BlockHeader(name, size, 1, 0xFF)).Fill(bytes, 9).bytes;
  };
  const BareCase cases[] = {
      {"one", box("UserBox", 28, 28), true, {}, 1},
      {"old",
       box("UserBox", 24, 24),
       true,
       {"Older version static binary!!. Does not contain parental lock code."},
       1},
      {"mismatch",
       box("UserBox", 30, 30),
       false,
       {"Project type mismatch!!. Can not open user box information."},
       0},
      {"cut", box("UserBox", 28, 27), false, {kInvalid}, 0},
      {"other", box("Userbox", 28, 28), true, {}, 0},
      {"short_header", Bytes(15, 'U'), true, {}, 0},
      {"more_behind", box("UserBox", 28, 400), true, {}, 1},
  };
  for (const BareCase& row : cases) {
    const Opened opened = Open(Plain{}.Add(SampleStream().Join()).Add(row.behind).bytes);
    EXPECT_EQ(opened.good, row.good) << row.name;
    EXPECT_EQ(opened.Texts(), row.texts) << row.name;
    EXPECT_EQ(opened.document.sdbs.size(), 1u) << row.name;
    ASSERT_EQ(opened.document.ubis.size(), row.ubis) << row.name;
    if (row.ubis > 0) {
      EXPECT_EQ(opened.document.ubis[0].name, "UBI1") << row.name;
    }
  }
  Document full;
  full.ubis.resize(kMaximumUbis);
  const Opened opened = Open(Plain{}.Add(SampleStream().Join()).Add(cases[0].behind).bytes, std::move(full));
  EXPECT_FALSE(opened.good);
  EXPECT_EQ(opened.Texts(), List{"Can't add USER BOX Information. It exceeds the limit 16."});
  EXPECT_EQ(opened.document.sdbs.size(), 1u);
  EXPECT_EQ(opened.document.ubis.size(), 16u);
}

TEST(BinRead, FileThatIsNotThere) {
  Recorder recorder;
  Document document;
  EXPECT_FALSE(OpenBin(recorder.context, recorder.context.temporary_folder / "none.bin", document));
  EXPECT_EQ(recorder.Texts(), List{"Error No: -3 \n File Access Error!!!"});
  const Path path = recorder.context.temporary_folder / "some.bin";
  PutFile(path, SampleContainer().Join());
  EXPECT_TRUE(OpenBin(recorder.context, path, document));
  EXPECT_EQ(document.sdbs.size(), 1u);
}

TEST(BinRead, RandomDamageNeverHarms) {
  const unsigned seed = std::random_device{}();
  std::mt19937 random(seed);
  for (int round = 0; round < 3000; ++round) {
    Bytes file = round % 2 ? SampleStream().Join() : PackedContainer(false, false);
    for (unsigned hits = 1 + random() % 4; hits > 0; --hits)
      file[random() % file.size()] = static_cast<uint8_t>(random());
    const Opened opened = Open(file);
    if (!opened.good) {
      ASSERT_FALSE(opened.shown.empty()) << "seed " << seed << " round " << round;
    }
  }
}

}  // namespace
}  // namespace vexa
