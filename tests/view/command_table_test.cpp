// The command table is one piece of data that four parts of the window program lean on: these rules keep it
// sound.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "tests/support/access_key.h"
#include "tests/support/data_folder.h"
#include "view/menu_table.h"

namespace vexa {

namespace {

constexpr MenuName kMenus[] = {MenuName::kFrame,          MenuName::kEditor,      MenuName::kConsole,
                               MenuName::kConsoleLog,     MenuName::kImport,      MenuName::kMerge,
                               MenuName::kUpload,         MenuName::kUrt,         MenuName::kRecord,
                               MenuName::kService,        MenuName::kSdb,         MenuName::kLnbLevel,
                               MenuName::kSatelliteLevel, MenuName::kCarrierLevel};

std::string TextOf(const MenuRow& row) {
  if (row.kind != MenuRowKind::kCommand) return row.text ? row.text : "";
  const CommandInfo* command = FindCommand(row.command);
  return command ? command->text : "";
}

TEST(CommandTable, EveryRowIsWholeAndStandsOnce) {
  std::set<int> ids;
  for (const CommandInfo& command : Commands()) {
    EXPECT_TRUE(ids.insert(command.id).second) << command.id;
    EXPECT_NE(std::string(command.text), "") << command.id;
    EXPECT_NE(std::string(command.tip), "") << command.id;
    // The key's name is put behind the text; another text there is of no key.
    EXPECT_EQ(std::string(command.text).find('\t'), std::string::npos) << command.text;
    EXPECT_TRUE(!command.shown_key || command.key.code == 0) << command.text;
    EXPECT_EQ(command.other_text != nullptr, command.has_other_text != nullptr) << command.text;
  }
}

TEST(CommandTable, TipsNameTheCommandAndItsKey) {
  const std::pair<CommandId, const char*> rows[] = {
      {kCmdSave, "Save the database (Ctrl+S)"},
      {kCmdSaveAs, "Save the database under another name"},
      {kCmdViewTv, "Show the TV services (Alt+T)"},
      {kCmdConsoleSaveLog, "Save the log of the console (Ctrl+S)"},
  };
  for (const auto& [id, tip] : rows) EXPECT_EQ(ToolTip(*FindCommand(id)), tip);
}

// Whether one press of a key could be meant for both. A database window and the console are never active at
// once.
bool Meet(KeyScope one, KeyScope other) {
  const auto in_console = [](KeyScope scope) {
    return scope == KeyScope::kConsole || scope == KeyScope::kConsoleLog;
  };
  return one == KeyScope::kEverywhere || other == KeyScope::kEverywhere ||
         in_console(one) == in_console(other);
}

TEST(CommandTable, NoKeyTwiceWhereItWorks) {
  for (const CommandInfo& one : Commands()) {
    for (const CommandInfo& other : Commands()) {
      const bool same = one.key.code == other.key.code && one.key.modifiers == other.key.modifiers;
      if (one.key.code == 0 || &one == &other || !same) continue;
      EXPECT_FALSE(Meet(one.key.scope, other.key.scope)) << one.text << " and " << other.text;
    }
  }
}

TEST(CommandTable, EveryCommandIsReachable) {
  std::set<CommandId> reached;
  bool recent_files = false;
  for (const MenuName menu : kMenus) {
    for (const MenuRow& row : MenuRows(menu)) {
      reached.insert(row.command);
      recent_files = recent_files || row.kind == MenuRowKind::kRecentFiles;
    }
  }
  for (const CommandInfo& command : Commands()) {
    const bool reachable = command.block == Block::kRecentFiles ? recent_files : reached.contains(command.id);
    EXPECT_TRUE(reachable || command.key.code != 0 || command.button.place != 0) << command.text;
    // Where a row has a block, that block stands in a menu.
    EXPECT_TRUE(reachable || command.block == Block::kNone) << command.text;
  }
}

TEST(CommandTable, ConsoleCommandsTakeThePlaceOfOthers) {
  for (const CommandInfo& command : Commands()) {
    if (command.in_console == kNoCommand) continue;
    const CommandInfo* other = FindCommand(command.in_console);
    ASSERT_TRUE(other) << command.text;
    EXPECT_TRUE(other->needs & kNeedsConsole) << other->text;
    EXPECT_EQ(other->key.code, 0) << other->text;
    EXPECT_EQ(MenuText(*other), other->text + ('\t' + KeyName(command.key)));
  }
}

TEST(CommandTable, ToolbarButtonsHaveAPlaceAndAPictureEach) {
  std::set<int> places, pictures;
  int last = 0;
  const CommandInfo* before = nullptr;
  for (const CommandInfo* command : ToolbarButtons()) {
    if (command) {
      const CommandButton& button = command->button;
      EXPECT_GT(button.place, last) << command->text;
      EXPECT_EQ(button.place / 10 != last / 10, before == nullptr) << "no gap before " << command->text;
      EXPECT_TRUE(pictures.insert(button.picture).second) << command->text;
      EXPECT_TRUE(!button.has_other_picture || pictures.insert(button.other_picture).second) << command->text;
      last = button.place;
      // The button is the first row of its menu.
      if (button.drop_down != MenuName::kFrame) {
        EXPECT_EQ(MenuRows(button.drop_down).at(0).command, command->id);
      }
    }
    before = command;
  }
  // The strip is a bitmap of pictures as wide as it is high: its width and height stand behind 18 bytes.
  const auto strip = ReadWholeFile(DataFolder().parent_path() / "ui" / "controls" / "toolbar16.bmp");
  ASSERT_TRUE(strip && strip->size() > 26);
  const auto word = [&](size_t at) { return (*strip)[at] | (*strip)[at + 1] << 8; };
  EXPECT_EQ(pictures.size(), static_cast<size_t>(word(18) / word(22)));
  EXPECT_EQ(*pictures.rbegin() + 1, word(18) / word(22));
}

TEST(CommandTable, HoldsTheWholeVocabulary) {
  for (int id = 40000; id <= 40138; ++id) {
    const bool gap =
        id == 40004 || id == 40005 || (id >= 40017 && id <= 40019) || (id >= 40045 && id <= 40136);
    EXPECT_EQ(FindCommand(static_cast<uint32_t>(id)) == nullptr, gap) << id;
  }
}

TEST(CommandTable, TextsNameTheirKeys) {
  const std::pair<CommandId, const char*> cases[] = {
      {kCmdNew, "&New\tCtrl+N"},           {kCmdFindPrevious, "Find &Previous\tShift+F4"},
      {kCmdViewTv, "&TV Services\tAlt+T"}, {kCmdConsoleCancel, "Ca&ncel\tEsc"},
      {kCmdEdit, "&Edit\tEnter"},          {kCmdDelete, "&Delete\tDel"},
      {kCmdConsoleClear, "C&lear\t"},      {kCmdConsoleSaveLog, "&Save Log File\tCtrl+S"},
      {kCmdConnect, "Connec&t\tF10"}};
  for (const auto& [id, text] : cases) EXPECT_EQ(MenuText(*FindCommand(id)), text);
  EXPECT_EQ(CommandOfKey(KeyScope::kEverywhere, 0, 0), kNoCommand);
  EXPECT_EQ(CommandOfKey(KeyScope::kRecords, 'A', kCtrl), kNoCommand);
  EXPECT_EQ(CommandOfKey(KeyScope::kList, 'A', kCtrl), kCmdSelectAll);
  EXPECT_EQ(CommandOfKey(KeyScope::kConsoleLog, 'A', kCtrl), kCmdConsoleSelectAll);
}

TEST(CommandTable, MenusAreWellFormed) {
  for (const MenuName menu : kMenus) {
    int open = 0;  // depth that a row may have
    for (const MenuRow& row : MenuRows(menu)) {
      EXPECT_LE(row.depth, open) << TextOf(row);
      if (row.kind == MenuRowKind::kCommand) {
        EXPECT_NE(FindCommand(row.command), nullptr);
      }
      open = row.depth + (row.kind == MenuRowKind::kPopup ? 1 : 0);
    }
  }
}

TEST(CommandTable, NoAccessKeyTwiceInOneMenu) {
  // Texts that are fixed and meet in one menu.
  const std::set<std::string> twins = {"&SDB [ BIN ]"};
  for (const MenuName menu : kMenus) {
    std::vector<std::map<char, std::string>> used(1);
    for (const MenuRow& row : MenuRows(menu)) {
      used.resize(row.depth + size_t{1});
      const std::string text = TextOf(row);
      if (const char key = AccessKey(text); key && !twins.contains(text)) {
        const auto [place, fresh] = used.back().emplace(key, text);
        EXPECT_TRUE(fresh) << text << " and " << place->second << " in menu " << static_cast<int>(menu);
      }
      if (row.kind == MenuRowKind::kPopup) used.emplace_back();
    }
  }
}

// In the editor window Alt with these letters belongs to the view buttons.
TEST(CommandTable, EditorBarLeavesTheViewKeysFree) {
  for (const MenuRow& row : MenuRows(MenuName::kEditor)) {
    if (row.depth == 0) {
      EXPECT_EQ(std::string("TRACV").find(AccessKey(TextOf(row))), std::string::npos) << row.text;
    }
  }
}

TEST(CommandTable, NeedsDecideAndSayWhatIsMissing) {
  const CommandInfo& save = *FindCommand(kCmdSave);
  EXPECT_FALSE(CommandEnabled(save, kNeedsNothing));
  EXPECT_EQ(MissingNeeds(save, kNeedsNothing), "Needs an open database.");
  EXPECT_TRUE(CommandEnabled(save, kNeedsEditor | kNeedsSdb));
  EXPECT_EQ(MissingNeeds(save, kNeedsEditor), "");
  const CommandInfo& upload = *FindCommand(kCmdUploadAdb);
  EXPECT_TRUE(CommandEnabled(upload, kNeedsEditor));
  EXPECT_EQ(MissingNeeds(upload, kNeedsConsole), "Needs an open database.");
}

}  // namespace

}  // namespace vexa
