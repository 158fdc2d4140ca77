// What the reader accepts, corrects and refuses, on files laid out and damaged by hand.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>

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
  std::vector<Message> shown;
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
  context.messages.tell = [&](const Message& message) { opened.shown.push_back(message); };
  const std::vector<uint8_t> exact(file.begin(), file.end());
  opened.good = OpenBinBytes(context, exact, opened.document);
  for (const OpenSdb& sdb : opened.document.sdbs) EXPECT_EQ(CheckLinks(*sdb.database), "");
  EXPECT_EQ(static_cast<size_t>(std::popcount(opened.document.slot_mask)), opened.document.sdbs.size());
  return opened;
}

using List = std::vector<std::string>;

// Fields of records stand where records_test.cpp says; here are the links between them.
TEST(BinRead, BareStream) {
  const Opened opened = Open(SampleStream().Join());
  ASSERT_TRUE(opened.good);
  ASSERT_TRUE(opened.shown.empty());
  ASSERT_EQ(opened.document.sdbs.size(), 1u);
  EXPECT_EQ(opened.document.sdbs[0].name, "SDB1");
  const StaticDatabase& d = *opened.document.sdbs[0].database;
  EXPECT_EQ(d.lnb_count, 1u);
  EXPECT_EQ(d.lnbs[1].frequency1, 9750u);  // the default
  ASSERT_EQ(d.satellites.size(), 2u);
  EXPECT_EQ(d.satellites[1]->record.lnb_index, 3u);  // beyond the count, and kept
  ASSERT_EQ(d.carriers.size(), 3u);
  EXPECT_EQ(d.carriers[0]->satellite, d.satellites[1]);
  EXPECT_EQ(d.satellites[0]->carriers, (std::vector<Carrier*>{d.carriers[1], d.carriers[2]}));
  EXPECT_EQ(NamesOf(d.carriers[1]->services), (List{"Zwei", "Drei"}));
  EXPECT_EQ(NamesOf(d.service_order), (List{"Drei", "Eins", "Zwei"}));
  EXPECT_EQ(NamesOf(d.favourites[0].tv), (List{"Zwei"}));
  EXPECT_EQ(NamesOf(d.favourites[1].radio), (List{"Drei", "Zwei"}));
  EXPECT_EQ(NameOf(d.favourites[7].record.radio_name), "R8");
}

TEST(BinRead, ContainerOfEveryCompressionIsWrittenAsItWas) {
  const Recorder recorder;
  for (unsigned flags = 0; flags < 8; ++flags) {
    SCOPED_TRACE(flags);
    PlainContainer container = SampleContainer();
    container.sdbs.push_back({"Two", FilledSampleStream().Join(), (flags & 1) == 0});
    container.sdbs[0].compressed = flags & 1;
    container.compress_ubis = flags & 2;
    container.compress_payload = flags & 4;
    const Bytes file = container.Join();
    Bytes longer = file;
    if (flags & 4) longer.resize(file.size() + 100, 0xEE);  // what follows a packed payload is not looked at
    // Any value but 0 sets a flag: the payload's, and in an open directory those of two SDBs and of the UBIs.
    for (const size_t flag : {11u, 31u, 59u, 87u})
      if ((flag == 11 || !(flags & 4)) && longer[flag]) longer[flag] = 0x80;
    Document document;
    document.compress_payload = document.compress_ubis = true;
    const Opened opened = Open(longer, std::move(document));
    ASSERT_TRUE(opened.good);
    ASSERT_TRUE(opened.shown.empty());
    EXPECT_EQ(BuildBin(recorder.context, opened.document, {}, {}), file);
  }
}

TEST(BinRead, BareStreamLeavesTheCompressionSetting) {
  Document document;
  document.compress_payload = true;
  EXPECT_TRUE(Open(SampleStream().Join(), std::move(document)).document.compress_payload);
}

TEST(BinRead, MagicIsNotCheckedAndNamesMayBeEmptyOrFull) {
  PlainContainer container = SampleContainer();
  container.sdbs[0].name = "";
  container.sdbs.push_back({"1234567", SampleStream().Join()});
  const Bytes box(28);
  container.ubis = UbiStream({{"", box}, {"12345678", box}});
  container.ubi_count = 2;
  Bytes file = container.Join();
  file[0] = file[1] = 0;
  const Opened opened = Open(file);
  ASSERT_TRUE(opened.good);
  EXPECT_EQ(opened.document.sdbs[0].name, "SDB1");
  EXPECT_EQ(opened.document.sdbs[1].name, "1234567");
  EXPECT_EQ(opened.document.ubis[0].name, "UBI1");
  EXPECT_EQ(opened.document.ubis[1].name, "12345678");
}

// The SDB of the sample stream with a change that the reader corrects or overlooks in silence.
template <class Change>
std::unique_ptr<StaticDatabase> Accepted(Change change) {
  PlainStream stream = SampleStream();
  change(stream);
  Opened opened = Open(stream.Join());
  EXPECT_TRUE(opened.good);
  EXPECT_TRUE(opened.shown.empty());
  return std::move(opened.document.sdbs.at(0).database);
}

TEST(BinRead, RecordsAreCorrected) {
  for (const unsigned index : {15u, 16u, 255u}) {
    const auto d = Accepted([&](auto& s) { s.satellites[1].lnb_index = index & 0xFF; });
    EXPECT_EQ(d->satellites[1]->record.lnb_index, index < 16 ? index : 0u);
  }
  const auto d = Accepted([](auto& s) {
    s.satellites[0].carrier_count = 60000;
    s.satellites[1].name[0] = 0;
    for (auto& service : s.services) service.carrier_index = 60000;
    for (auto& carrier : s.carriers) carrier.first_service = 9;
  });
  EXPECT_EQ(d->satellites[0]->record.carrier_count, 2u);
  EXPECT_EQ(NameOf(d->satellites[1]->record.name), "Satellite2");
  EXPECT_EQ(NamesOf(d->carriers[0]->services), List{"Eins"});
}

TEST(BinRead, AnOrderThatIsNoneBecomesTheIdentity) {
  const std::vector<unsigned> orders[] = {{1, 1, 0}, {2, 1, 3}, {1, 0}, {1}, {2, 1, 0, 0, 0}, {}};
  for (const auto& order : orders) {
    SCOPED_TRACE(testing::PrintToString(order));
    const auto d = Accepted([&](auto& s) {
      s.order = order;
      s.has_order = !order.empty();
    });
    EXPECT_EQ(d->service_order, d->services);
    EXPECT_EQ(NameOf(d->favourites[0].record.tv_name), "Mine") << "what follows is found";
  }
}

TEST(BinRead, GroupsAreThoseOfVersionSix) {
  for (const unsigned version : {5u, 7u, 0xFFFFu, 6u}) {
    const auto d = Accepted([&](auto& s) {
      s.header = StreamHeader(version);
      if (version == 6) s.groups.clear();
    });
    EXPECT_EQ(NameOf(d->favourites[0].record.tv_name), "Favourite1") << version;
    EXPECT_TRUE(d->favourites[0].tv.empty());
  }
  const auto cut = Accepted([](auto& s) { s.groups[0] = {{3, 2, 65535}, {7}, "Mine", ""}; });
  EXPECT_EQ(NamesOf(cut->favourites[0].tv), List{"Drei"}) << "entries that name no service";
  EXPECT_TRUE(cut->favourites[0].radio.empty());
  EXPECT_EQ(NameOf(cut->favourites[1].record.tv_name), "Even");
}

TEST(BinRead, LargestAndSmallestTables) {
  const auto d = Accepted([](auto& s) {
    s.groups[0].tv.assign(2500, 1);
    s.groups[0].radio.assign(1000, 2);
    s.lnbs = Plain{BlockHeader("any", 12, 16)}.Fill(128, 0x55).bytes;
  });
  EXPECT_EQ(d->favourites[0].tv.size(), 2500u);
  EXPECT_EQ(d->favourites[0].radio.size(), 1000u);
  EXPECT_EQ(d->lnb_count, 16u);
  const auto empty =
      Accepted([](PlainStream& s) { s = {s.header, BlockHeader("lnb", 8, 0), {}, {}, {}, {}, true, {}}; });
  EXPECT_TRUE(empty->satellites.empty());
}

template <class Change>
Bytes Changed(Change change) {
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
// The word at the place grows by `growth`.
Bytes Grow(const Bytes& bytes, size_t place, int growth) {
  const uint32_t word = bytes[place] | bytes[place + 1] * 0x100u | bytes[place + 2] * 0x10000u;
  return SetWord(bytes, place, word + static_cast<uint32_t>(growth));
}
Bytes PackedContainer(bool sdb, bool payload) {
  PlainContainer container = SampleContainer();
  container.sdbs[0].compressed = sdb;
  container.compress_payload = payload;
  return container.Join();
}

TEST(BinRead, PadAtTheEndMayBeMissing) {
  PlainStream stream = SampleStream();
  stream.groups.clear();
  const Bytes bytes = stream.Join();
  const Opened opened = Open(Cut(bytes, bytes.size() - 2));
  ASSERT_TRUE(opened.good);
  EXPECT_EQ(NamesOf(opened.document.sdbs[0].database->service_order), (List{"Drei", "Eins", "Zwei"}));
  // Cut short: the identity, and nothing refused.
  const Opened shorter = Open(Cut(bytes, bytes.size() - 3));
  ASSERT_TRUE(shorter.good);
  EXPECT_EQ(shorter.document.sdbs[0].database->service_order, shorter.document.sdbs[0].database->services);
  stream.groups = {8, {{}, {}, "a", "b"}};
  stream.groups[7].tv = {1};
  const Bytes groups = stream.Join();
  EXPECT_TRUE(Open(Cut(groups, groups.size() - 2)).good);
}

// What is refused, with the one message of it.
struct RefusedCase {
  const char* name;
  Bytes file;
  std::string text;
};

void ExpectRefusals(const std::vector<RefusedCase>& rows) {
  for (const RefusedCase& row : rows) {
    SCOPED_TRACE(row.name);
    const Opened opened = Open(row.file);
    EXPECT_FALSE(opened.good);
    EXPECT_EQ(opened.Texts(), List{row.text});
    EXPECT_THAT(opened.shown[0].detail, testing::EndsWith(".")) << "what is wrong, and what to do";
    ASSERT_EQ(opened.shown.size(), 1u);
    EXPECT_EQ(opened.shown[0].icon, Icon::kStop);
    EXPECT_EQ(opened.shown[0].title, kApplicationTitle);
    EXPECT_TRUE(opened.document.sdbs.empty());
    EXPECT_TRUE(opened.document.ubis.empty());
  }
}

constexpr const char* kMagic = "StaticDB file magic ID mismatch. Input a valid SDB.";
constexpr const char* kInflate = "Decompression failed.";

TEST(BinRead, RefusesStreams) {
  const Bytes good = SampleStream().Join();
  const Bytes many = Plain{BlockHeader("lnb", 8, 17)}.Fill(17 * 8, 0).bytes;
  ExpectRefusals({
      {"empty", {}, kInvalid},
      {"short_header", Cut(good, 23), kInvalid},
      {"header_alone", Cut(good, 24), kInvalid},
      {"magic", Set(good, 1, 'Z'), kMagic},
      {"lnbs_17", Changed([&](auto& s) { s.lnbs = many; }),
       "LNB records exceeds the limit 16. Can not continue."},
      {"satellites_86", Changed([](auto& s) { s.satellites.resize(86, s.satellites[1]); }),
       "Satellite records exceed the limit. Can not add."},
      {"carrier_of_no_satellite", Changed([](auto& s) { s.carriers[2].satellite_index = 2; }), kInvalid},
      {"carrier_of_satellite_1023", Changed([](auto& s) { s.carriers[2].satellite_index = 1023; }), kInvalid},
      {"services_too_many", Changed([](auto& s) { s.carriers[2].service_count = 1; }), kInvalid},
      {"services_too_few", Changed([](auto& s) { s.carriers[1].service_count = 1; }), kInvalid},
      {"tv_list_2501", Changed([](auto& s) { s.groups[0].tv.assign(2501, 0); }), kInvalid},
      {"radio_list_1001", Changed([](auto& s) { s.groups[7].radio.assign(1001, 0); }), kInvalid},
      {"seven_groups", Changed([](auto& s) { s.groups.pop_back(); }), kInvalid},
  });
}

TEST(BinRead, RefusesContainers) {
  const Bytes good = SampleContainer().Join();
  const Bytes packed = PackedContainer(false, true), stream = PackedContainer(true, false);
  ExpectRefusals({
      {"byte_5", Set(good, 5, 1), "Unsupport file version. can not open!."},
      {"no_sdb", Set(good, 20, 0), kInvalid},
      {"header_alone", Cut(good, 24), kInvalid},
      {"directory_cut", Cut(good, 24 + 55), kInvalid},
      {"directory_beyond", Set(good, 21, 0xFF), kInvalid},
      {"offset_beyond", SetWord(good, 24 + 16, 0x7FFFFFFF), kInvalid},
      {"offset_at_end", SetWord(good, 24 + 16, static_cast<uint32_t>(good.size())), kInvalid},
      {"streams_magic", Set(good, 24 + 56, 'q'), kMagic},
      {"stored_payload_beyond", Grow(packed, 16, 1), kInvalid},
      {"stored_payload_huge", SetWord(packed, 16, ~0u), kInvalid},
      {"payload_size_huge", SetWord(packed, 12, ~0u), kInvalid},
      {"payload_size_128_mib", SetWord(packed, 12, 128u << 20), kInvalid},
      {"payload_size_one_more", Grow(packed, 12, 1), kInvalid},
      {"payload_size_one_less", Grow(packed, 12, -1), kInflate},
      {"payload_damaged", Set(packed, 24, 0), kInflate},
      {"stored_payload_short", Grow(packed, 16, -1), kInflate},
      {"stream_damaged", Set(stream, 24 + 56, 0xFF), kInflate},
      {"stream_size_one_more", Grow(stream, 24 + 8, 1), kInvalid},
      {"stored_stream_huge", SetWord(stream, 24 + 12, 0x40000000), kInvalid},
  });
}

TEST(BinRead, PlainSizesAreNotLookedAt) {
  Bytes file = SampleContainer().Join();
  for (const size_t place : {12u, 16u, 24u + 8, 24u + 12, 24u + 20, 24u + 24})
    file = SetWord(file, place, 0xFFFFFFFF);
  EXPECT_TRUE(Open(file).good);
  EXPECT_TRUE(Open(Set(file, 24 + 7, 0)).good);
}

TEST(BinRead, GoodSdbsBeforeADamagedOneStay) {
  PlainContainer container = SampleContainer();
  for (const char* name : {"Two", "Three"}) container.sdbs.push_back({name, SampleStream().Join()});
  container.sdbs[1].stream[0] = 'x';
  const Opened opened = Open(container.Join());
  EXPECT_FALSE(opened.good);
  EXPECT_EQ(opened.Texts(), List{kMagic});
  ASSERT_EQ(opened.document.sdbs.size(), 1u);
  EXPECT_TRUE(opened.document.ubis.empty());
  EXPECT_FALSE(opened.document.read_whole);
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
  EXPECT_THAT(opened.shown[0].detail, testing::HasSubstr("The others are left out. Delete "));
  EXPECT_EQ(opened.document.sdbs.size(), 16u);
  EXPECT_EQ(opened.document.ubis.size(), 1u);
  EXPECT_FALSE(opened.document.read_whole);
  opened.document.read_whole = true;
  opened = Open(container.Join(), std::move(opened.document));
  EXPECT_EQ(opened.Texts(), List{"Can not open more than 16 SDBs (Opened 0 of 3 SDBs in the bin)."});
  EXPECT_EQ(opened.document.ubis.size(), 1u);  // none without an SDB
  EXPECT_FALSE(opened.document.read_whole);
  opened.document.read_whole = true;
  opened = Open(SampleStream().Join(), std::move(opened.document));
  EXPECT_EQ(opened.Texts(), List{"Can not open more than 16 SDBs (opened 0 of 1 SDBs in the bin)."});
  EXPECT_EQ(opened.shown[0].icon, Icon::kInformation);
  EXPECT_THAT(opened.shown[0].detail, testing::HasSubstr("The others are left out. Delete "));
  EXPECT_FALSE(opened.document.read_whole);
}

// The user box streams of containers.
std::vector<std::pair<std::string, Bytes>> Boxes(size_t count, size_t size) {
  return {count, {"Box", Bytes(size, 7)}};
}

constexpr const char* kOld = "Older version static binary!!. Does not contain parental lock code.";
constexpr const char* kMismatch = "Project type mismatch!!. Can not open user box information.";
constexpr const char* kBoxLimit = "Can't add USER BOX Information. It exceeds the limit 16.";

struct BoxCase {
  const char* name;
  Bytes file;
  bool good;
  List texts;
  size_t ubis;
};

void ExpectBoxes(const BoxCase& row) {
  SCOPED_TRACE(row.name);
  const Opened opened = Open(row.file);
  EXPECT_EQ(opened.good, row.good);
  EXPECT_EQ(opened.Texts(), row.texts);
  for (const Message& message : opened.shown)
    EXPECT_THAT(message.detail, testing::HasSubstr("ser box record"));
  EXPECT_EQ(opened.document.sdbs.size(), 1u);
  EXPECT_EQ(opened.document.read_whole, row.good && row.texts != List{kBoxLimit});
  ASSERT_EQ(opened.document.ubis.size(), row.ubis);
  for (const OpenUbi& ubi : opened.document.ubis) {
    EXPECT_FALSE(ubi.name.empty());
    const bool old = row.texts == List{kOld};
    EXPECT_EQ(std::string(ubi.record.lock_code, 4), std::string(4, old ? 0 : 7));
    EXPECT_EQ(ubi.record.kept[15], 7);
    EXPECT_TRUE(!old || opened.shown[0].icon == Icon::kInformation);
  }
}

TEST(BinRead, BoxesOfContainers) {
  const auto with = [](const Bytes& boxes, unsigned count) {
    PlainContainer container = SampleContainer();
    container.ubis = boxes;
    container.ubi_count = count;
    return container.Join();
  };
  const Bytes one = UbiStream(Boxes(1, 28));
  const BoxCase rows[] = {
      {"old_records", with(UbiStream(Boxes(3, 24), 24), 3), true, {kOld}, 3},
      {"size_20", with(UbiStream(Boxes(1, 20), 20), 1), false, {kMismatch}, 0},
      {"size_29", with(UbiStream(Boxes(1, 29), 29), 1), false, {kMismatch}, 0},
      {"containers_count_governs", with(UbiStream(Boxes(5, 28)), 2), true, {}, 2},
      {"other_block", with(Set(one, 0, 'u'), 1), true, {}, 0},
      {"header_cut", with(Cut(one, 15), 1), false, {kInvalid}, 0},
      {"record_cut", with(Cut(one, one.size() - 1), 1), false, {kInvalid}, 0},
      {"count_beyond", with(one, 65535), false, {kInvalid}, 0},
      {"entry_beyond", SetWord(with(one, 1), 24 + 28 + 16, 0x7FFFFFFF), false, {kInvalid}, 0},
      {"above_the_limit", with(UbiStream(Boxes(19, 28)), 19), true, {kBoxLimit}, 16},
  };
  for (const BoxCase& row : rows) ExpectBoxes(row);
}

TEST(BinRead, BoxBehindABareStream) {
  const auto before = [](const Bytes& behind) { return Plain{SampleStream().Join()}.Add(behind).bytes; };
  const auto box = [&](const char* name, unsigned size, size_t bytes) {
    return before(Plain{BlockHeader(name, size, 1, 0xFF)}.Fill(bytes, 7).bytes);
  };
  const BoxCase rows[] = {
      {"one", box("UserBox", 28, 28), true, {}, 1},
      {"old", box("UserBox", 24, 24), true, {kOld}, 1},
      {"mismatch", box("UserBox", 30, 30), false, {kMismatch}, 0},
      {"cut", box("UserBox", 28, 27), false, {kInvalid}, 0},
      {"other", box("Userbox", 28, 28), true, {}, 0},
      {"short_header", before(Bytes(15, 'U')), true, {}, 0},
      {"more_behind", box("UserBox", 28, 400), true, {}, 1},
  };
  for (const BoxCase& row : rows) ExpectBoxes(row);
  Document full;
  full.ubis.resize(kMaximumUbis);
  const Opened opened = Open(rows[0].file, std::move(full));
  EXPECT_FALSE(opened.good);
  EXPECT_EQ(opened.Texts(), List{kBoxLimit});
  EXPECT_EQ(opened.document.sdbs.size(), 1u);
  EXPECT_EQ(opened.document.ubis.size(), 16u);
  EXPECT_FALSE(opened.document.read_whole);
}

// The files are larger than any that is read whole: 3 GiB, which take no room on the disk.
TEST(BinRead, LargeFilesAreJudgedByTheirStart) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "large.bin";
  const Bytes good = SampleContainer().Join();
  const std::pair<Bytes, List> rows[] = {
      {Bytes(24), {kMagic}},
      {SetWord(good, 20, 0), {kInvalid}},
      {Set(good, 5, 1), {"Unsupport file version. can not open!."}},
      {SetWord(PackedContainer(true, true), 12, ~0u), {kInvalid}},
      {SampleStream().Join(), {}},
      {PackedContainer(true, true), {}},
  };
  for (const auto& [start, texts] : rows) {
    PutFile(path, start);
    std::filesystem::resize_file(path, uint64_t{3} << 30);
    Document document;
    EXPECT_EQ(OpenBin(recorder.context, path, document), texts.empty());
    EXPECT_EQ(recorder.Texts(), texts);
    EXPECT_EQ(document.sdbs.size(), texts.empty() ? 1u : 0u);
  }
  std::filesystem::resize_file(path, 23);
  Document document;
  EXPECT_FALSE(OpenBin(recorder.context, path, document));
  EXPECT_FALSE(OpenBin(recorder.context, path / "none", document));
  EXPECT_EQ(recorder.Texts(), (List{kInvalid, "Error No: -3 \n File Access Error!!!"}));
}

}  // namespace
}  // namespace vexa
