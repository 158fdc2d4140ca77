#include "view/start_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/access_key.h"

namespace vexa {

namespace {

TEST(StartPage, OffersNewOpenImportAndTheRecentFiles) {
  RecentFiles recent;
  for (const char* path : {"old.bin", "C:\\R&D\\list.bin"}) AddRecentFile(recent, path);
  std::vector<std::string> texts;
  std::vector<int> commands;
  for (const StartEntry& entry : StartEntries(recent)) {
    texts.push_back(entry.text);
    commands.push_back(entry.command);
    EXPECT_EQ(entry.menu, entry.command == kNoCommand ? MenuName::kImport : MenuName::kFrame);
    // A letter here would take the menu bar's key.
    const char key = AccessKey(entry.text);
    EXPECT_TRUE(key == 0 || (key >= '1' && key <= '9')) << entry.text;
  }
  EXPECT_THAT(texts, testing::ElementsAre("New (Ctrl+N)", "Open (Ctrl+O)", "Import", "&1 C:\\R&&D\\list.bin",
                                          "&2 old.bin"));
  EXPECT_THAT(commands, testing::ElementsAre(kCmdNew, kCmdOpen, kNoCommand, kCmdRecent1, kCmdRecent2));
}

TEST(StartPage, HasARowForEachRecentFileAndNoMore) {
  RecentFiles recent;
  for (const char* path : {"1", "2", "3", "4", "5"}) AddRecentFile(recent, path);
  EXPECT_EQ(StartEntries(recent).size(), kStartEntries);
  EXPECT_EQ(StartEntries({}).size(), 3u);
}

}  // namespace

}  // namespace vexa
