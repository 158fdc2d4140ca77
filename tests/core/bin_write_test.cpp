// What a save writes, compared to the byte with files laid out by hand.

#include <gtest/gtest.h>

#include <filesystem>

#include "core/bin_file.h"
#include "core/messages.h"
#include "tests/core/bin_bytes.h"
#include "tests/support/failing_memory.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

// The sample database with its service table in another order than the carriers'.
void FillSample(StaticDatabase& d) {
  size_t used = 0;
  const Recorder recorder;
  ASSERT_TRUE(ReadSdbStream(recorder.context, SampleStream().Join(), d, used));
  std::swap(d.services[0], d.services[2]);
}

Document SampleDocument() {
  Document document = NewDocument();
  FillSample(*document.sdbs[0].database);
  OpenUbi ubi{"UBI1", {}};
  for (unsigned i = 0; i < 28; ++i) reinterpret_cast<uint8_t*>(&ubi.record)[i] = static_cast<uint8_t>(i + 1);
  document.ubis.push_back(ubi);
  return document;
}

Bytes Built(const Document& document, const BinVersion& version = {}, const BinSelection& selection = {}) {
  const Recorder recorder;
  auto bytes = BuildBin(recorder.context, document, version, selection);
  EXPECT_TRUE(bytes.has_value());
  EXPECT_TRUE(recorder.shown.empty());
  return bytes.value_or(Bytes{});
}

TEST(BinWrite, PlainContainerToTheByte) {
  EXPECT_EQ(Built(SampleDocument()), SampleContainer().Join());
}

TEST(BinWrite, WhatASaveSetsIsSetInTheBytesOnly) {
  Document document = SampleDocument();
  StaticDatabase& d = *document.sdbs[0].database;
  d.carriers[1]->record.lnb_index = 9;
  d.carriers[1]->record.first_service = 77;
  d.services[1]->record.carrier_index = 500;
  d.favourites[0].record.tv_count = 99;
  EXPECT_EQ(Built(document), SampleContainer().Join());
  EXPECT_EQ(d.carriers[1]->record.lnb_index, 9u);
  EXPECT_EQ(d.services[1]->record.carrier_index, 500u);
}

TEST(BinWrite, EveryCombinationOfCompression) {
  for (unsigned flags = 0; flags < 8; ++flags) {
    Document document = SampleDocument();
    PlainContainer expected = SampleContainer();
    document.sdbs[0].database->compressed = expected.sdbs[0].compressed = flags & 1;
    document.compress_ubis = expected.compress_ubis = flags & 2;
    document.compress_payload = expected.compress_payload = flags & 4;
    EXPECT_EQ(Built(document), expected.Join()) << "flags " << flags;
  }
}

struct VersionCase {
  uint8_t major, minor;
  const char *given, *initials;
};

TEST(BinWrite, VersionAndInitialsStandInBothHeaders) {
  static const VersionCase cases[] = {{3, 17, "AB", "AB "}, {255, 0, "WXYZ", "WXY"}, {0, 9, "", "   "}};
  for (const auto& [major, minor, given, initials] : cases) {
    const BinVersion version{major, minor, given};
    PlainContainer expected = SampleContainer();
    PlainStream stream = FilledSampleStream();
    stream.header = StreamHeader(6, version.major, version.minor, initials);
    expected.sdbs[0].stream = stream.Join();
    expected.major = version.major;
    expected.minor = version.minor;
    expected.initials = initials;
    EXPECT_EQ(Built(SampleDocument(), version), expected.Join()) << initials;
  }
}

TEST(BinWrite, LongNamesAreCut) {
  Document document = SampleDocument();
  document.sdbs[0].name = "Seven77";
  document.ubis[0].name = "Eight888";
  PlainContainer expected = SampleContainer();
  expected.sdbs[0].name = "Seven7";
  const Bytes record(expected.ubis.end() - 28, expected.ubis.end());
  expected.ubis = UbiStream({{"Eight88", record}});
  EXPECT_EQ(Built(document), expected.Join());
}

TEST(BinWrite, MasksChooseByTreeOrder) {
  Document document = SampleDocument();
  for (const char* name : {"SDB2", "SDB3"}) FillSample(*AppendSdb(document, name)->database);
  document.sdbs[2].database->compressed = true;
  document.ubis.push_back({"UBI2", {}});
  const Bytes sample = SampleContainer().ubis, first(sample.end() - 28, sample.end());
  for (uint32_t sdbs = 1; sdbs < 8; ++sdbs) {
    for (uint32_t ubis = 0; ubis < 4; ++ubis) {
      PlainContainer expected;
      std::vector<std::pair<std::string, Bytes>> boxes;
      for (unsigned i = 0; i < 3; ++i) {
        if (sdbs >> i & 1)
          expected.sdbs.push_back({"SDB" + std::to_string(i + 1), FilledSampleStream().Join(), i == 2});
      }
      if (ubis & 1) boxes.push_back({"UBI1", first});
      if (ubis & 2) boxes.push_back({"UBI2", Bytes(28)});
      expected.ubi_count = static_cast<unsigned>(boxes.size());
      expected.ubis = UbiStream(boxes);
      EXPECT_EQ(Built(document, {}, {sdbs, ubis}), expected.Join()) << sdbs << " " << ubis;
    }
  }
}

TEST(BinWrite, UsersDefaultsFillUnusedPlaces) {
  DefaultRecords defaults;
  defaults.lnb.frequency1 = 5150;
  defaults.satellite.position = 9;
  defaults.satellite.carrier_count = 4;  // never written
  SetName(defaults.satellite.name, "ignored");
  Recorder recorder;
  recorder.context.defaults = &defaults;
  const auto bytes = BuildBin(recorder.context, SampleDocument(), {}, {});
  ASSERT_TRUE(bytes.has_value());
  const size_t stream = 24 + 2 * 28;
  const size_t lnb = stream + 24 + 16 + 15 * 8;
  EXPECT_EQ((*bytes)[lnb] | ((*bytes)[lnb + 1] & 0x3F) << 8, 5150);
  const size_t filler = stream + 24 + 16 + 128 + 16 + 2 * 28;
  EXPECT_EQ(
      Bytes(bytes->begin() + static_cast<long>(filler), bytes->begin() + static_cast<long>(filler) + 16),
      (Plain{}.U16(0).U8(0).U8(9).U32(0).Text("NewSat 1", 8).bytes));
}

TEST(BinWrite, SubsetKeepsChosenSatellitesAlone) {
  const auto subset = [] {
    PlainStream s = FilledSampleStream();
    s.header = StreamHeader(5);
    s.groups.clear();
    return s;
  };
  Document document = SampleDocument();
  PlainStream second = subset();
  second.satellites.erase(second.satellites.begin());
  second.satellites.push_back({0, 0, 0, 0, "NewSat 84"});
  second.carriers = {second.carriers[0]};
  second.carriers[0].satellite = 0;
  second.services = {second.services[0]};
  second.order = {0};
  EXPECT_EQ(WriteSatelliteStream(*document.sdbs[0].database, {}, {1}), second.Join());
  PlainStream first = subset();
  first.satellites.erase(first.satellites.begin() + 1);
  first.satellites.push_back({0, 0, 0, 0, "NewSat 84"});
  first.carriers.erase(first.carriers.begin());
  first.carriers[0].first_service = 0;
  first.carriers[1].first_service = 2;
  first.services.erase(first.services.begin());
  first.services[0].carrier = first.services[1].carrier = 0;
  first.order = {1, 0};
  EXPECT_EQ(WriteSatelliteStream(*document.sdbs[0].database, {}, {0}), first.Join());
  EXPECT_EQ(WriteSatelliteStream(*document.sdbs[0].database, {}, {0, 1}), subset().Join());

  Recorder recorder;
  document.sdbs[0].database->compressed = true;
  document.compress_payload = true;
  const Path path = recorder.context.temporary_folder / "subset.bin";
  ASSERT_TRUE(SaveSatellites(recorder.context, document, 0, {0}, path));
  PlainContainer expected;
  expected.sdbs = {{"SDB1", first.Join(), true, 2, 2}};
  expected.compress_payload = true;
  EXPECT_EQ(*ReadWholeFile(path), expected.Join());
  // The database itself is as it was.
  document.sdbs[0].database->compressed = document.compress_payload = false;
  EXPECT_EQ(Built(document), SampleContainer().Join());
}

TEST(BinWrite, SdbWithoutLnbOrSatelliteIsRefused) {
  const std::vector<std::string> refused = {"Add atleast one LNB and Satellite to save as a bin"};
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "x.bin";
  Document document = NewDocument();
  EXPECT_FALSE(SaveBin(recorder.context, document, path));
  EXPECT_EQ(recorder.Texts(), refused);
  document.sdbs[0].database->lnb_count = 1;
  EXPECT_FALSE(SaveBin(recorder.context, document, path));
  EXPECT_EQ(recorder.Texts(), refused);
  AddTestSatellite(*document.sdbs[0].database, "S");
  EXPECT_TRUE(SaveBin(recorder.context, document, path));
  std::filesystem::remove(path);
  AppendSdb(document, "SDB2");
  EXPECT_FALSE(SaveBin(recorder.context, document, path));
  EXPECT_FALSE(SaveBin(recorder.context, document, path, {}, {2, 0}));
  EXPECT_FALSE(SaveBin(recorder.context, document, path, {}, {0, 0}));
  EXPECT_FALSE(SaveSatellites(recorder.context, document, 0, {}, path));
  EXPECT_EQ(recorder.Texts().size(), 4u);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(SaveBin(recorder.context, document, path, {}, {1, 0}));
}

TEST(BinWrite, FailedStepLeavesTheOldFile) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder / "target";
  std::filesystem::create_directory(folder);
  const Path path = folder / "caf\xC3\xA9.bin";
  const Bytes old = BytesOf("the old file");
  const Document document = SampleDocument();
  int step = 1;
  for (bool saved = false; !saved; ++step) {
    ASSERT_LT(step, 20);
    PutFile(path, old);
    recorder.FailStep(step);
    saved = SaveBin(recorder.context, document, path);
    const auto texts = recorder.Texts();
    EXPECT_EQ(*ReadWholeFile(path), saved ? SampleContainer().Join() : old) << "step " << step;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1)
        << "scratch left at step " << step;
    if (saved) {
      EXPECT_TRUE(texts.empty());
    } else if (step == 1) {
      EXPECT_EQ(texts, std::vector<std::string>{"Could not creat file \"" + Utf8FromPath(path) + "\"."});
    } else {
      EXPECT_EQ(texts, std::vector<std::string>{"Error No: -11 \n Save as BIN File"});
    }
  }
  EXPECT_EQ(step, 6);  // create, write, finish and replace failed once each
}

TEST(BinWrite, MemoryThatRunsOutLeavesTheOldFile) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder / "target";
  std::filesystem::create_directory(folder);
  const Path path = folder / "a.bin";
  Document document = SampleDocument();
  document.sdbs[0].database->compressed = document.compress_ubis = true;
  const Bytes old = BytesOf("the old file"), whole = Built(document);
  bool saved = false;
  for (int n = 1; !saved; ++n) {
    PutFile(path, old);
    try {
      const FailingMemory failing(n);
      saved = SaveBin(recorder.context, document, path);
      ASSERT_TRUE(saved) << n;
    } catch (const std::bad_alloc&) {
    }
    EXPECT_EQ(*ReadWholeFile(path), saved ? whole : old) << n;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1) << "scratch left at " << n;
    EXPECT_TRUE(recorder.shown.empty()) << n;
  }
}

TEST(BinWrite, TargetThatCannotBeCreated) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "missing" / "x.bin";
  EXPECT_FALSE(SaveBin(recorder.context, SampleDocument(), path));
  ASSERT_EQ(recorder.shown.size(), 1u);
  EXPECT_EQ(recorder.shown[0].text, "Could not creat file \"" + Utf8FromPath(path) + "\".");
  EXPECT_EQ(recorder.shown[0].icon, Icon::kStop);
}

TEST(BinSize, LimitIs131072Bytes) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "size.bin";
  PutFile(path, Bytes(131072));
  EXPECT_TRUE(CheckBinSize(recorder.context, path));
  EXPECT_TRUE(recorder.shown.empty());
  PutFile(path, Bytes(131073));
  EXPECT_FALSE(CheckBinSize(recorder.context, path));
  EXPECT_EQ(recorder.Texts(), std::vector<std::string>{"File size exceeds the limit. Can not continue."});
  EXPECT_FALSE(CheckBinSize(recorder.context, path / "none"));
  EXPECT_EQ(recorder.Texts(), std::vector<std::string>{"Error No: -11 \n Save as BIN File"});
}

TEST(BinInformation, SizesAsASaveStoresThem) {
  Recorder recorder;
  Document document = SampleDocument();
  document.sdbs[0].name = "caf\xE9";
  const Bytes stream = FilledSampleStream().Join();
  const std::string head = "SDB     Comp\tLNB\tSat\tCar\tSer\tSize(KB/bytes)\n\ncaf\xC3\xA9    ";
  const size_t plain = 24 + 2 * 28 + stream.size() + 16 + 36;
  EXPECT_EQ(BinInformation(recorder.context, document),
            head + "No \t001\t002\t003\t003\t" +
                Format("%5.2f/%zu", static_cast<double>(stream.size()) / 1024, stream.size()) +
                "\n\nUBI size\t\t:  0.05KB/52bytes\nTotal bin size \t: " +
                Format("%5.2fKB/%zubytes\n(Uncompressed)", static_cast<double>(plain) / 1024, plain));
  document.sdbs[0].database->compressed = document.compress_payload = true;
  document.ubis.clear();
  const size_t packed = PackPlain(stream).size();
  const size_t total = Built(document).size();
  EXPECT_EQ(BinInformation(recorder.context, document),
            head + "Yes\t001\t002\t003\t003\t" +
                Format("%5.2f/%03zu", static_cast<double>(packed) / 1024, packed) +
                "\n\nUBI size\t\t:  0.00KB/0bytes\nTotal bin size \t: " +
                Format("%5.2fKB/%zubytes\n(Compressed)", static_cast<double>(total) / 1024, total));
}

}  // namespace
}  // namespace vexa
