#include "view/recovery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/edit.h"
#include "core/undo_state.h"
#include "platform/code_page.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "tests/support/test_folder.h"

namespace vexa {
namespace {

using testing::HasSubstr;

// What records hold only in files: counts of the favourites, and places.
void SetDerived(StaticDatabase& database) {
  for (FavouriteGroup& group : database.favourites) {
    group.record.tv_count = group.tv.size() & 0xFFF;
    group.record.radio_count = group.radio.size() & 0xFFF;
  }
  size_t services = 0;
  for (size_t i = 0; i < database.carriers.size(); ++i) {
    database.carriers[i]->record.first_service = static_cast<uint16_t>(services);
    for (Service* service : database.carriers[i]->services)
      service->record.carrier_index = static_cast<uint16_t>(i);
    services += database.carriers[i]->services.size();
  }
}

struct RecoveryTest : testing::Test {
  Recorder recorder;
  Path root = recorder.context.temporary_folder / "recovery";
  Document document = NewDocument();
  UnsavedWork work = {
      PathFromUtf8("/tmp/l\xC3\xA9.bin"), "", FileState{77, {}}, {3, 4, "XY"}, {2026, 5, 6, 7, 8, 9}};

  RecoveryTest() {
    std::mt19937 random(3);
    document.sdbs[0].database = MakeRandomDatabase(random, {});
  }
  std::unique_ptr<Recovery> Start() {
    std::string why;
    auto recovery = Recovery::Start(root, why);
    EXPECT_TRUE(recovery) << why;
    return recovery;
  }
  // Of a program that was killed with two windows, the second without a file.
  void LeaveWork() {
    const auto recovery = Start();
    EXPECT_TRUE(recovery->Keep(1, 5, work, document));
    UnsavedWork other = work;
    other.path.clear();
    other.name = "Untitled1";
    other.kept.year = 2025;
    EXPECT_TRUE(recovery->Keep(2, 5, other, document));
    EXPECT_TRUE(recovery->Keep(3, 5, other, document));
    recovery->Forget(3);
  }
  size_t FoldersLeft() const {
    std::vector<Path> names;
    ListFolder(root, names);
    return names.size();
  }
};

TEST_F(RecoveryTest, AKeptFileHoldsTheWholeWork) {
  for (const bool has_file : {true, false}) {
    if (!has_file) {
      work.path.clear();
      work.name = "Untitled7";
      work.state.reset();
      work.version.initials.clear();
    }
    const auto file = WriteRecovery(work, document);
    ASSERT_TRUE(file);
    const auto read = ReadRecovery(*file);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->work.path, work.path);
    EXPECT_EQ(read->work.name, work.name);
    EXPECT_EQ(read->work.state, work.state);
    EXPECT_EQ(read->work.version.major, 3);
    EXPECT_EQ(read->work.version.minor, 4);
    EXPECT_EQ(read->work.version.initials, work.version.initials);
    EXPECT_EQ(read->work.kept.second, 9);
    EXPECT_EQ(BuildBin(recorder.context, read->document), BuildBin(recorder.context, document));
  }
}

// A saved SDB has all LNBs and satellites that it can have; unsaved work has those that it has.
TEST_F(RecoveryTest, WorkComesBackAsItWasNotAsASavedFile) {
  RandomShape shape;
  shape.lnbs = 3;
  shape.satellites = 2;
  std::mt19937 random(4);
  document.sdbs[0].database = MakeRandomDatabase(random, shape);
  SetDerived(*document.sdbs[0].database);
  AppendSdb(document, "Empty");
  document.names = FindCodePage("ISO 8859-5");
  document.settings_block[0] = 0xA5;
  document.settings_block[95] = 0x0F;
  work.list = "/lists/channels.conf";
  const auto file = WriteRecovery(work, document);
  ASSERT_TRUE(file);
  const auto read = ReadRecovery(*file);
  ASSERT_TRUE(read);
  EXPECT_EQ(DocumentState(read->document), DocumentState(document));
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_TRUE(SdbState(read->document.sdbs[i]) == SdbState(document.sdbs[i])) << i;
    EXPECT_EQ(CheckLinks(*read->document.sdbs[i].database), "");
  }
  EXPECT_EQ(read->document.names, document.names);
  EXPECT_EQ(read->work.list, work.list);

  // Sizes that the database cannot have had, and settings of another length or none.
  const std::string text(file->begin(), file->end());
  const std::string sizes = "\n3 2 0 0 \n", settings = "000f" + sizes;
  for (const auto& [part, wrong] :
       std::vector<std::pair<std::string, std::string>>{{sizes, "\n3 1 0 0 \n"},
                                                        {sizes, "\n17 2 0 0 \n"},
                                                        {sizes, "\n3 86 0 0 \n"},
                                                        {sizes, "\n3 2 \n"},
                                                        {sizes, "\n3 2 0 0 0 \n"},
                                                        {settings, "00" + sizes},
                                                        {settings, "000f00" + sizes},
                                                        {settings, "000g" + sizes}}) {
    ASSERT_NE(text.find(part), std::string::npos);
    std::string damaged = text;
    damaged.replace(damaged.find(part), part.size(), wrong);
    EXPECT_FALSE(ReadRecovery(Bytes(damaged.begin(), damaged.end()))) << wrong;
  }
}

TEST_F(RecoveryTest, FullTablesComeBack) {
  document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  while (database.lnb_count < kMaximumLnbs) AddLnb(recorder.context.messages, database, {});
  while (database.satellites.size() < kMaximumSatellites)
    AddSatellite(recorder.context.messages, database, {});
  const auto file = WriteRecovery(work, document);
  ASSERT_TRUE(file);
  const auto read = ReadRecovery(*file);
  ASSERT_TRUE(read);
  EXPECT_TRUE(SdbState(read->document.sdbs[0]) == SdbState(document.sdbs[0]));
}

TEST_F(RecoveryTest, APartOfAKeptFileIsNone) {
  document = NewDocument();
  const auto file = WriteRecovery(work, document);
  ASSERT_TRUE(file);
  for (size_t size = 0; size < file->size(); ++size)
    EXPECT_FALSE(ReadRecovery(std::span(*file).first(size))) << size;
}

TEST_F(RecoveryTest, WorkOfAKilledProgramIsFoundOnceAndStaysUntilRemoved) {
  LeaveWork();
  const auto living = Start();
  EXPECT_TRUE(living->Keep(9, 1, work, document));
  {
    AbandonedWork found(root);
    ASSERT_EQ(found.works().size(), 2u);
    EXPECT_EQ(found.works()[0].work.name, "Untitled1");  // kept earlier
    EXPECT_EQ(found.works()[1].work.path, work.path);
    EXPECT_THAT(found.Question(),
                HasSubstr("\nUntitled1, 2025-05-06 07:08:09\n/tmp/l\xC3\xA9.bin, 2026-05-06"));
    EXPECT_TRUE(AbandonedWork(root).works().empty()) << "another start has them";
  }
  EXPECT_EQ(FoldersLeft(), 2u);
  {
    AbandonedWork again(root);
    EXPECT_EQ(again.works().size(), 2u);
    again.Remove();
  }
  EXPECT_EQ(FoldersLeft(), 1u);
  EXPECT_TRUE(std::filesystem::exists(living->path() / "9.recovery"));
}

TEST_F(RecoveryTest, OnlyWorkThatWasTakenIsRemoved) {
  LeaveWork();
  AbandonedWork(root).HandOver([](const RecoveredWork& work) { return work.work.name == "Untitled1"; });
  AbandonedWork again(root);
  ASSERT_EQ(again.works().size(), 1u);
  EXPECT_EQ(again.works()[0].work.path, work.path);
}

TEST_F(RecoveryTest, WhatCannotBeReadIsLeftAlone) {
  LeaveWork();
  const Path damaged = root / "work-1" / "1.recovery";
  const auto file = ReadWholeFile(damaged);
  ASSERT_TRUE(file);
  EXPECT_EQ(WriteWholeFile(damaged, std::span(*file).first(200)), WriteResult::kDone);
  {
    AbandonedWork found(root);
    EXPECT_EQ(found.works().size(), 1u);
    found.Remove();
  }
  EXPECT_EQ(std::filesystem::file_size(damaged), 200u);
}

TEST_F(RecoveryTest, OnlyAnotherStateIsWritten) {
  auto recovery = Start();
  const Path file = recovery->path() / "1.recovery";
  EXPECT_TRUE(recovery->Keep(1, 5, work, document));
  std::filesystem::remove(file);
  EXPECT_TRUE(recovery->Keep(1, 5, work, document));
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_TRUE(recovery->Keep(1, 6, work, document));
  EXPECT_TRUE(std::filesystem::exists(file));
  recovery->Forget(1);
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_TRUE(recovery->Keep(1, 6, work, document)) << "forgotten, and kept anew";
  EXPECT_TRUE(std::filesystem::exists(file));
  recovery->End();
  EXPECT_TRUE(std::filesystem::exists(file));
  recovery.reset();
  EXPECT_EQ(FoldersLeft(), 0u);
}

TEST_F(RecoveryTest, ThatNothingIsKeptIsToldOnceUntilItIsKeptAgain) {
  const auto recovery = Start();
  std::filesystem::create_directory(recovery->path() / "1.recovery");
  const Outcome refused = recovery->Keep(1, 5, work, document);
  EXPECT_FALSE(refused);
  EXPECT_TRUE(refused.error);
  const struct {
    bool kept, may_tell, tells;
  } rows[] = {{true, true, false},   {false, false, false}, {false, true, true}, {false, true, false},
              {false, false, false}, {true, false, false},  {false, true, true}};
  for (const auto& row : rows) EXPECT_EQ(recovery->MustTell(row.kept, row.may_tell), row.tells);
}

TEST_F(RecoveryTest, WithoutAFolderTheReasonIsTold) {
  PutFile(root, Bytes{1});
  std::string why;
  EXPECT_FALSE(Recovery::Start(root, why));
  EXPECT_THAT(why, HasSubstr("recovery"));
}

}  // namespace
}  // namespace vexa
