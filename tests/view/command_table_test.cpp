// The command table is one piece of data that four parts of the window program lean on: these rules keep it
// sound.
#include "view/command_table.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "tests/support/access_key.h"

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

TEST(CommandTable, EveryIdentifierAndKeyStandsOnce) {
  std::set<int> ids;
  std::set<std::pair<int, int>> keys;
  for (const CommandInfo& command : Commands()) {
    EXPECT_TRUE(ids.insert(command.id).second) << command.id;
    EXPECT_NE(std::string(command.tip), "") << command.id;
    if (command.key.code) {
      EXPECT_TRUE(keys.insert({command.key.code, command.key.modifiers}).second) << command.text;
    }
  }
}

TEST(CommandTable, HoldsTheWholeVocabulary) {
  for (int id = 40000; id <= 40138; ++id) {
    const bool gap =
        id == 40004 || id == 40005 || (id >= 40017 && id <= 40019) || (id >= 40045 && id <= 40136);
    EXPECT_EQ(FindCommand(static_cast<uint32_t>(id)) == nullptr, gap) << id;
  }
}

// Code and modifiers of "Ctrl+N", "F12", "Esc".
std::pair<int, int> KeyNamed(std::string name) {
  int modifiers = 0;
  const std::pair<std::string, int> prefixes[] = {{"Ctrl+", kCtrl}, {"Shift+", kShift}, {"Alt+", kAlt}};
  for (const auto& [prefix, modifier] : prefixes) {
    if (!name.starts_with(prefix)) continue;
    name.erase(0, prefix.size());
    modifiers |= modifier;
  }
  if (name == "Esc") return {kKeyEscape, modifiers};
  return {name.size() > 1 ? KeyF(std::stoi(name.substr(1))) : name[0], modifiers};
}

// The key in a text is the one that works. One text names a key that is bound to nothing, two keys are bound
// elsewhere.
TEST(CommandTable, TextsNameTheKeysThatWork) {
  // The keys of tree and list, one that is shared, one that never worked.
  const std::set<int> unbound = {kCmdEdit,           kCmdAdd,
                                 kCmdInsert,         kCmdDelete,
                                 kCmdMove,           kCmdSelectAll,
                                 kCmdConsoleSaveLog, kCmdTextFile,
                                 kCmdConsoleFind,    kCmdConsoleFindNext,
                                 kCmdConsoleCopy,    kCmdConsoleSelectAll};
  for (const CommandInfo& command : Commands()) {
    const std::string text = command.text;
    const size_t tab = text.find('\t');
    if (unbound.contains(command.id) || tab == std::string::npos || tab + 1 == text.size()) {
      EXPECT_EQ(command.key.code, 0) << text;
      continue;
    }
    const auto key = KeyNamed(text.substr(tab + 1));
    EXPECT_EQ(command.key.code, key.first) << text;
    EXPECT_EQ(command.key.modifiers, key.second) << text;
  }
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
