#include "import/import_command.h"

#include <gtest/gtest.h>

#include "import/wizard.h"
#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

struct CheckCase {
  const char *file, *content;
  std::optional<ListFormat> format;
};

TEST(ImportCommand, ExtensionAndFirstBytesMustAgree) {
  const CheckCase cases[] = {
      {"a.sdx", "SATCODX03", ListFormat::kSatcodx},
      {"a.SDX", "satCODx", ListFormat::kSatcodx},
      {"b.sdx", "SATCOD", std::nullopt},
      {"b.sdx", "", std::nullopt},
      {"a.dvb", "dvso", ListFormat::kDvb2000},
      {"b.dvb", "DVS", std::nullopt},
      {"a.Dat", ":sat \"", ListFormat::kLyngsat},
      {"b.dat", "SATCODX", std::nullopt},
      {"a.txt", "SATCODX", std::nullopt},
      {"sdx", "SATCODX", std::nullopt},
  };
  Recorder recorder;
  for (const CheckCase& c : cases) {
    const Path path = recorder.context.temporary_folder / c.file;
    PutFile(path, BytesOf(c.content));
    EXPECT_EQ(CheckListFile(recorder.context, path), c.format) << c.file << ' ' << c.content;
    const auto expected =
        c.format ? std::vector<std::string>{} : std::vector<std::string>{"Error - Invalid File"};
    EXPECT_EQ(recorder.Texts(), expected);
  }
}

TEST(ImportCommand, FileThatCannotBeOpened) {
  Recorder recorder;
  const std::vector<std::string> text = {"Unable to open the given file."};
  EXPECT_FALSE(CheckListFile(recorder.context, recorder.context.temporary_folder / "none.sdx"));
  EXPECT_EQ(recorder.Texts(), text);
  EXPECT_FALSE(CheckListFile(recorder.context, recorder.context.temporary_folder));
  EXPECT_EQ(recorder.Texts(), text);
}

struct FailureCase {
  ListFormat format;
  bool read;
  std::vector<std::string> texts;
};

TEST(ImportCommand, UnreadableLists) {
  const std::vector<std::string> dat = {"Error in opening file", "Invalid or unsupported DAT file format."};
  const FailureCase cases[] = {{ListFormat::kSatcodx, true, {}},
                               {ListFormat::kDvb2000, false, dat},
                               {ListFormat::kLyngsat, false, dat}};
  Recorder recorder;
  for (const FailureCase& c : cases) {
    WorkFiles work;
    EXPECT_EQ(ReadList(recorder.context, recorder.context.temporary_folder / "none", c.format, {}, work),
              c.read);
    EXPECT_EQ(recorder.Texts(), c.texts);
  }
}

std::string ManySatellites(int count) {
  std::vector<SdxRecord> records(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    records[static_cast<size_t>(i)].position = Format("%04d", i + 1);
    records[static_cast<size_t>(i)].frequency = Format("%06d", 10700 + i);
  }
  return SdxList(records);
}

TEST(ImportCommand, WithoutFilterTheDialogsStayAway) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "list.sdx";
  PutFile(path, BytesOf(ManySatellites(85)));
  recorder.answer = false;
  Document document;
  const FilterDialogs never = [](WorkFiles&) -> bool { throw std::logic_error("asked"); };
  EXPECT_TRUE(ImportListFile(recorder.context, path, {}, never, document));
  EXPECT_EQ(recorder.Texts(), std::vector<std::string>{"Do you want to generate Bin file with filter mode"});
  ASSERT_EQ(document.sdbs.size(), 1u);
  EXPECT_EQ(document.sdbs[0].database->satellites.size(), 85u);
}

TEST(ImportCommand, FilterModeTakesWhatTheDialogsLeave) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "list.sdx";
  PutFile(path, BytesOf(ManySatellites(90)));
  Document document;
  const FilterDialogs two = [](WorkFiles& work) {
    Wizard wizard(work);
    ChooseSatellite(wizard, 3, true);
    ChooseSatellite(wizard, 88, true);
    SetCarrierOption(wizard, std::nullopt, kAllCarriers, true);
    SetServiceOption(wizard, std::nullopt, kAllServices, true);
    CompactWorkFiles(wizard);
    return true;
  };
  EXPECT_TRUE(ImportListFile(recorder.context, path, {}, two, document));
  const StaticDatabase& database = *document.sdbs.at(0).database;
  ASSERT_EQ(database.satellites.size(), 2u);
  EXPECT_EQ(database.satellites[1]->record.angle, 89u);
  EXPECT_EQ(database.services.size(), 2u);
  Document closed;
  EXPECT_FALSE(ImportListFile(
      recorder.context, path, {}, [](WorkFiles&) { return false; }, closed));
  EXPECT_TRUE(closed.sdbs.empty());
}

TEST(ImportCommand, TooManySatellites) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "list.sdx";
  PutFile(path, BytesOf(ManySatellites(86)));
  recorder.answer = false;
  Document document;
  EXPECT_FALSE(ImportListFile(recorder.context, path, {}, {}, document));
  EXPECT_EQ(recorder.Texts().back(), "Satellite records exceed the limit. Can not add.");
}

TEST(WorkFilesOnDisk, RoundTripAndFailures) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder / "new";
  WorkFiles work;
  work.satellites.resize(2);
  work.carriers.resize(3);
  work.carriers[1].frequency = 11000;
  work.services.resize(5);
  ASSERT_TRUE(WriteWorkFiles(recorder.context, work, folder));
  EXPECT_EQ(ReadWholeFile(folder / "~001sat.bin")->size(), 56u);
  EXPECT_EQ(ReadWholeFile(folder / "~001car.bin")->size(), 108u);
  EXPECT_EQ(ReadWholeFile(folder / "~001ser.bin")->size(), 160u);
  PutFile(folder / "~001ser.bin", Bytes(63, 1));
  const WorkFiles back = ReadWorkFiles(folder);
  EXPECT_EQ(BytesOfRecords(back.carriers), BytesOfRecords(work.carriers));
  EXPECT_EQ(back.services.size(), 1u);
  EXPECT_TRUE(ReadWorkFiles(folder / "none").satellites.empty());
  recorder.FailStep(1);
  EXPECT_FALSE(WriteWorkFiles(recorder.context, work, folder));
  EXPECT_EQ(recorder.Texts(), std::vector<std::string>{"Could not creat file \"" +
                                                       Utf8FromPath(folder / "~001sat.bin") + "\"."});
}

}  // namespace
}  // namespace vexa
