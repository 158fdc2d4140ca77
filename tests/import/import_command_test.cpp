#include "import/import_command.h"

#include <gtest/gtest.h>

#include "import/wizard.h"
#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using Texts = std::vector<std::string>;

TEST(ImportCommand, ExtensionAndFirstBytesMustAgree) {
  const struct {
    const char *file, *content;
    std::optional<ListFormat> format;
  } cases[] = {
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
  const Path& folder = recorder.context.temporary_folder;
  for (const auto& c : cases) {
    PutFile(folder / c.file, BytesOf(c.content));
    EXPECT_EQ(CheckListFile(recorder.context, folder / c.file), c.format) << c.file << ' ' << c.content;
    EXPECT_EQ(recorder.Texts(), c.format ? Texts{} : Texts{"Error - Invalid File"});
  }
  for (const Path& path : {folder / "none.sdx", folder}) {
    EXPECT_FALSE(CheckListFile(recorder.context, path));
    EXPECT_EQ(recorder.Texts(), Texts{"Unable to open the given file."});
  }
}

TEST(ImportCommand, UnreadableLists) {
  const Texts dat = {"Error in opening file", "Invalid or unsupported DAT file format."};
  Recorder recorder;
  for (const ListFormat format : {ListFormat::kSatcodx, ListFormat::kDvb2000, ListFormat::kLyngsat}) {
    const bool read = format == ListFormat::kSatcodx;
    WorkFiles work;
    work.services.resize(3);
    EXPECT_EQ(ReadList(recorder.context, recorder.context.temporary_folder / "none", format, {}, work), read);
    EXPECT_TRUE(!read || work.services.empty());
    EXPECT_EQ(recorder.Texts(), read ? Texts{} : dat);
  }
}

// Reading that breaks off is no end of the list: nothing is made of the part before it.
TEST(ImportCommand, ListsWhoseReadingBreaksOff) {
  const Path broken = "/proc/self/mem";  // can be opened, and nothing is mapped at its start
  if (!std::filesystem::exists(broken)) GTEST_SKIP() << "no file here breaks off";
  Recorder recorder;
  for (const ListFormat format : {ListFormat::kSatcodx, ListFormat::kDvb2000, ListFormat::kLyngsat}) {
    WorkFiles work;
    EXPECT_FALSE(ReadList(recorder.context, broken, format, {}, work));
    EXPECT_EQ(recorder.Texts(),
              (Texts{"Could not read file \"" + Utf8FromPath(broken) + "\".",
                     format == ListFormat::kSatcodx ? "Invalid or unsupported SDX file format."
                                                    : "Invalid or unsupported DAT file format."}));
  }
}

struct ImportManySatellites : testing::Test {
  bool Import(int satellites, const FilterDialogs& dialogs) {
    std::vector<SdxRecord> records;
    for (int i = 0; i < satellites; ++i)
      records.push_back({.frequency = Format("%06d", 10700 + i), .position = Format("%04d", i + 1)});
    const Path path = recorder.context.temporary_folder / "list.sdx";
    PutFile(path, BytesOf(SdxList(records)));
    return ImportListFile(recorder.context, path, {}, dialogs, document);
  }
  Recorder recorder;
  Document document;
};

TEST_F(ImportManySatellites, WithoutFilterTheDialogsStayAway) {
  const FilterDialogs never = [](WorkFiles&) -> bool { throw std::logic_error("asked"); };
  const std::string question = "Do you want to generate Bin file with filter mode";
  recorder.answer = false;
  EXPECT_FALSE(Import(86, never));
  EXPECT_EQ(recorder.Texts(), (Texts{question, "Satellite records exceed the limit. Can not add."}));
  EXPECT_TRUE(Import(85, never));
  EXPECT_EQ(recorder.Texts(), Texts{question});
  ASSERT_EQ(document.sdbs.size(), 1u);
  EXPECT_EQ(document.sdbs[0].database->satellites.size(), 85u);
}

TEST_F(ImportManySatellites, FilterModeTakesWhatTheDialogsLeave) {
  EXPECT_FALSE(Import(90, [](WorkFiles&) { return false; }));
  EXPECT_TRUE(document.sdbs.empty());
  EXPECT_TRUE(Import(90, [](WorkFiles& work) {
    Wizard wizard(work);
    ChooseSatellite(wizard, 3, true);
    ChooseSatellite(wizard, 88, true);
    SetCarrierOption(wizard, std::nullopt, kAllCarriers, true);
    SetServiceOption(wizard, std::nullopt, kAllServices, true);
    CompactWorkFiles(wizard);
    return true;
  }));
  const StaticDatabase& database = *document.sdbs.at(0).database;
  ASSERT_EQ(database.satellites.size(), 2u);
  EXPECT_EQ(database.satellites[1]->record.angle, 89u);
  EXPECT_EQ(database.services.size(), 2u);
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
  PutFile(folder / "~001ser.bin", Bytes(63, 1));
  const WorkFiles back = ReadWorkFiles(folder);
  EXPECT_EQ(BytesOfRecords(back.carriers), BytesOfRecords(work.carriers));
  EXPECT_EQ(back.services.size(), 1u);
  EXPECT_TRUE(ReadWorkFiles(folder / "none").satellites.empty());
  recorder.FailStep(1);
  EXPECT_FALSE(WriteWorkFiles(recorder.context, work, folder));
  EXPECT_EQ(recorder.Texts(),
            Texts{"Could not creat file \"" + Utf8FromPath(folder / "~001sat.bin") + "\"."});
}

}  // namespace
}  // namespace vexa
