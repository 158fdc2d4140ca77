// What a save writes, compared to the byte with files laid out by hand.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

#include "core/bin_file.h"
#include "core/edit.h"
#include "core/messages.h"
#include "core/sort.h"
#include "core/undo_state.h"
#include "tests/core/bin_bytes.h"
#include "tests/support/failing_memory.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

const char* const kNotSaved = "Error No: -11 \n Save as BIN File";

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

TEST(BinWrite, WhatASaveSetsIsSetInTheBytesOnly) {
  Document document = SampleDocument();
  EXPECT_EQ(Built(document), SampleContainer().Join());
  StaticDatabase& d = *document.sdbs[0].database;
  d.carriers[1]->record.lnb_index = 9;
  d.carriers[1]->record.first_service = 77;
  d.services[1]->record.carrier_index = 500;
  d.favourites[0].record.tv_count = 99;
  EXPECT_EQ(Built(document), SampleContainer().Join());
  EXPECT_EQ(d.carriers[1]->record.lnb_index, 9u);
  EXPECT_EQ(d.services[1]->record.carrier_index, 500u);
}

// Every byte of the records of an SDB and of what stands beside them in memory.
Bytes MemoryOf(const StaticDatabase& database) {
  Bytes bytes;
  const auto add = [&](const auto& records) {
    for (const auto* record : records) {
      const auto* start = reinterpret_cast<const uint8_t*>(record);
      bytes.insert(bytes.end(), start, start + sizeof(*record));
    }
  };
  add(database.satellites);
  add(database.carriers);
  add(database.services);
  return bytes;
}

TEST(BinWrite, NothingThatOnlyLooksAtADocumentWritesIntoIt) {
  std::mt19937 random(31);
  Document document = NewDocument();
  OpenSdb& sdb = document.sdbs[0];
  sdb.database = MakeRandomDatabase(random);
  const StaticDatabase& database = *sdb.database;
  const Recorder recorder;
  const Path path = recorder.context.temporary_folder / "out.bin";
  const std::pair<const char*, std::function<void()>> looks[] = {
      {"some satellites",
       [&] {
         SaveSatellites(recorder.context, document, 0, {2, 1}, path);
       }},
      {"all", [&] { SaveBin(recorder.context, document, path); }},
      {"copy", [&] { CopyDatabase(database); }},
      {"undo", [&] { SdbState(sdb); }},
  };
  const Bytes before = MemoryOf(database);
  for (const auto& [name, look] : looks) {
    look();
    EXPECT_EQ(MemoryOf(database), before) << name;
  }
}

TEST(BinWrite, VersionAndInitialsStandInBothHeaders) {
  const struct {
    BinVersion version;
    const char* initials;
  } rows[] = {{{3, 17, "AB"}, "AB "}, {{255, 0, "WXYZ"}, "WXY"}, {{0, 9, ""}, "   "}};
  for (const auto& [version, initials] : rows) {
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

// The example at the head of core/bin_file.h.
TEST(BinWrite, TheExampleOfTheFormat) {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  database.lnb_count = 1;
  AddTestSatellite(database, "Sat");
  Carrier* carrier = AddTestCarrier(database, 0);
  for (int i = 0; i < 3; ++i) AddTestService(database, carrier);
  FavouriteGroup& group = database.favourites[0];
  group.tv = {database.services[2]};
  group.radio = {database.services[0], database.services[1]};
  SetName(group.record.tv_name, "Mine");
  SetName(group.record.radio_name, "Mine");
  const std::pair<size_t, const char*> parts[] = {
      {0,
       "51 7A 01 00 10 00 00 FF  20 20 20 00 54 0C 00 00  54 0C 00 00 01 00 00 00"
       "53 44 42 31 00 00 00 00  38 0C 00 00 38 0C 00 00  34 00 00 00 10 00 55 00  01 00 03 00"},
      {2780,
       "4F 53 4C 00 00 00 00 00  02 00 FF FF 03 00 FF FF  00 00 01 00 02 00 FF FF"
       "46 47 4C 62 6C 6B 00 00  00 00 FF FF 08 00 FF FF  10 00 02 00"
       "4D 69 6E 65 00 00 00 00  00 00 00 00 00 00 00 00  00 00 00 00"
       "4D 69 6E 65 00 00 00 00  00 00 00 00 00 00 00 00  00 00 00 00  02 00 00 00 01 00 FF FF"}};
  const Bytes file = Built(document);
  for (const auto& [offset, text] : parts) {
    std::string digits(text);
    std::erase(digits, ' ');
    std::string written;
    for (size_t i = 0; i < digits.size() / 2; ++i) written += Format("%02X", file.at(offset + i));
    EXPECT_EQ(written, digits) << offset;
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
  Document reopened;
  ASSERT_TRUE(OpenBinBytes(recorder.context, *bytes, reopened));
  const StaticDatabase& d = *reopened.sdbs[0].database;
  EXPECT_EQ(d.lnbs[15].frequency1, 5150u);
  const SatelliteRecord& filler = d.satellites[2]->record;
  EXPECT_EQ(filler.position, 9u);
  const size_t place = 24 + 2 * 28 + 24 + 16 + 16 * 8 + 16 + 2 * 28;  // of the first filler in the file
  EXPECT_EQ((*bytes)[place], 0) << "its carrier count, which a reader would correct";
  EXPECT_EQ(NameOf(filler.name), "NewSat 1");
}

TEST(BinWrite, SubsetKeepsChosenSatellitesAlone) {
  Document document = SampleDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  const Bytes groups = BytesOf("FGLblk");
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "subset.bin";
  for (const std::vector<size_t>& chosen : {std::vector<size_t>{0, 1}, {1}, {0}}) {
    // As a save without the other satellites, but for the version and the groups, which stand at the end.
    const auto reduced = CopyDatabase(database);
    if (chosen.size() == 1) DeleteSatellites(*reduced, {1 - chosen[0]});
    Bytes expected = WriteSdbStream(*reduced, {});
    expected.erase(std::search(expected.begin(), expected.end(), groups.begin(), groups.end()),
                   expected.end());
    expected[6] = 5;
    for (const bool compressed : {false, true}) {
      database.compressed = document.compress_payload = compressed;
      ASSERT_TRUE(SaveSatellites(recorder.context, document, 0, chosen, path));
      PlainContainer file;
      file.sdbs = {{"SDB1", expected, compressed, static_cast<unsigned>(reduced->carriers.size()),
                    static_cast<unsigned>(reduced->services.size())}};
      file.compress_payload = compressed;
      EXPECT_EQ(*ReadWholeFile(path), file.Join()) << testing::PrintToString(chosen) << compressed;
    }
    database.compressed = document.compress_payload = false;
  }
  // The database itself is as it was.
  EXPECT_EQ(Built(document), SampleContainer().Join());
}

TEST(BinWrite, SdbWithoutLnbOrSatelliteIsRefused) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "x.bin";
  Document document = NewDocument();
  const auto expect_refusal = [&](const std::optional<uint64_t>& saved) {
    EXPECT_FALSE(saved);
    EXPECT_EQ(recorder.Texts(),
              std::vector<std::string>{"Add atleast one LNB and Satellite to save as a bin"});
    EXPECT_FALSE(std::filesystem::exists(path));
  };
  expect_refusal(SaveBin(recorder.context, document, path));
  document.sdbs[0].database->lnb_count = 1;
  expect_refusal(SaveBin(recorder.context, document, path));
  AddTestSatellite(*document.sdbs[0].database, "S");
  AppendSdb(document, "SDB2");
  expect_refusal(SaveBin(recorder.context, document, path));
  expect_refusal(SaveBin(recorder.context, document, path, {}, {2, 0}));
  expect_refusal(SaveBin(recorder.context, document, path, {}, {0, 0}));
  expect_refusal(SaveSatellites(recorder.context, document, 0, {}, path));
  EXPECT_TRUE(SaveBin(recorder.context, document, path, {}, {1, 0}));
}

// An old file, alone in its folder, that a save which fails must leave.
struct OldFile : testing::Test {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder / "target";
  const Path path = folder / "caf\xC3\xA9.bin";
  const Bytes old = BytesOf("the old file");
  OldFile() { std::filesystem::create_directory(folder); }
  void ExpectContent(const Bytes& content) {
    EXPECT_EQ(*ReadWholeFile(path), content);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1) << "scratch left";
  }
};

TEST_F(OldFile, StaysWhenAnyStepFails) {
  const Document document = SampleDocument();
  const std::string cannot_create = "Could not creat file \"" + Utf8FromPath(path) + "\".";
  int step = 1;
  for (bool saved = false; !saved; ++step) {
    SCOPED_TRACE(step);
    ASSERT_LT(step, 20);
    PutFile(path, old);
    recorder.FailStep(step);
    saved = SaveBin(recorder.context, document, path).has_value();
    ExpectContent(saved ? SampleContainer().Join() : old);
    const std::string detail = recorder.shown.empty() ? "" : recorder.shown[0].detail;
    const auto texts = recorder.Texts();
    if (saved) {
      EXPECT_TRUE(texts.empty());
    } else {
      EXPECT_EQ(detail, Recorder::FullDisk(path));
      EXPECT_EQ(texts, std::vector<std::string>{step == 1 ? cannot_create : kNotSaved});
    }
  }
  EXPECT_EQ(step, 6);  // create, write, finish and replace failed once each
}

TEST_F(OldFile, StaysWhenMemoryRunsOut) {
  Document document = SampleDocument();
  document.sdbs[0].database->compressed = document.compress_ubis = true;
  const Bytes whole = Built(document);
  bool saved = false;
  for (int n = 1; !saved; ++n) {
    SCOPED_TRACE(n);
    PutFile(path, old);
    try {
      const FailingMemory failing(n);
      saved = SaveBin(recorder.context, document, path).has_value();
      ASSERT_TRUE(saved);
    } catch (const std::bad_alloc&) {
    }
    ExpectContent(saved ? whole : old);
    EXPECT_TRUE(recorder.shown.empty());
  }
}

TEST(BinSize, LimitIs131072Bytes) {
  Recorder recorder;
  EXPECT_TRUE(CheckBinSize(recorder.context, "a.bin", 131072));
  EXPECT_TRUE(recorder.shown.empty());
  EXPECT_FALSE(CheckBinSize(recorder.context, "a.bin", 131073));
  EXPECT_EQ(recorder.Texts(), std::vector<std::string>{"File size exceeds the limit. Can not continue."});
}

// Another program takes the file away as soon as it stands: it was saved all the same.
TEST(BinSize, IsKnownWithoutLookingAtTheFileAgain) {
  Recorder recorder;
  Document document = SampleDocument();
  const Path path = recorder.context.temporary_folder / "size.bin";
  uint64_t written = 0;
  FileOperations files = SystemFiles();
  files.replace = [&](const Path& from, const Path& to) {
    written = std::filesystem::file_size(from);
    return SystemFiles().replace(from, to) && std::filesystem::remove(to);
  };
  recorder.context.files = &files;
  const auto check = [&](std::optional<uint64_t> size) {
    ASSERT_TRUE(size);
    EXPECT_EQ(*size, written);
    EXPECT_TRUE(recorder.Texts().empty());
  };
  for (const bool packed : {false, true}) {
    document.compress_payload = packed;
    check(SaveBin(recorder.context, document, path));
    check(SaveSatellites(recorder.context, document, 0, {0}, path));
    check(SortToFile(recorder.context, document, {0}, {}, path));
  }
}

TEST(BinInformation, SizesAsASaveStoresThem) {
  Recorder recorder;
  Document document = SampleDocument();
  document.sdbs[0].name = "caf\xE9";
  const Bytes stream = FilledSampleStream().Join();
  const auto kilobytes = [](size_t size) { return static_cast<double>(size) / 1024; };
  const char* const format =
      "SDB     Comp\tLNB\tSat\tCar\tSer\tSize(KB/bytes)\n\ncaf\xC3\xA9    %s\t001\t002\t003\t003\t%5.2f/%03zu"
      "\n\nUBI size\t\t:  %s\nTotal bin size \t: %5.2fKB/%zubytes\n(%s)";
  const size_t plain = 24 + 2 * 28 + stream.size() + 16 + 36;
  EXPECT_EQ(BinInformation(recorder.context, document),
            Format(format, "No ", kilobytes(stream.size()), stream.size(), "0.05KB/52bytes", kilobytes(plain),
                   plain, "Uncompressed"));
  document.sdbs[0].database->compressed = document.compress_payload = true;
  document.ubis.clear();
  const size_t packed = PackPlain(stream).size(), total = Built(document).size();
  EXPECT_EQ(BinInformation(recorder.context, document),
            Format(format, "Yes", kilobytes(packed), packed, "0.00KB/0bytes", kilobytes(total), total,
                   "Compressed"));
}

}  // namespace
}  // namespace vexa
