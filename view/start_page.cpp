#include "view/start_page.h"

#include "view/menu_table.h"

namespace vexa {

namespace {

// A letter would be meant for the page and for the menu bar alike, so only digits are access keys here.
std::string WithoutAccessKey(std::string text) {
  std::erase(text, '&');
  return text;
}

StartEntry Entry(CommandId id) {
  const CommandInfo* command = FindCommand(id);
  const std::string key = ShownKey(*command);
  return {.command = id, .text = WithoutAccessKey(command->text) + (key.empty() ? "" : " (" + key + ")")};
}

// The menu's title in the menu bar stands before its first command.
StartEntry Entry(MenuName menu) {
  const CommandId first = MenuRows(menu).front().command;
  const std::vector<MenuRow> bar = MenuRows(MenuName::kFrame);
  StartEntry entry{.menu = menu, .text = ""};
  for (size_t i = 1; i < bar.size(); ++i) {
    if (bar[i].command == first && bar[i - 1].text) entry.text = WithoutAccessKey(bar[i - 1].text);
  }
  return entry;
}

}  // namespace

std::vector<StartEntry> StartEntries(const RecentFiles& recent) {
  std::vector<StartEntry> entries = {Entry(kCmdNew), Entry(kCmdOpen), Entry(MenuName::kImport)};
  for (size_t i = 0; i < recent.paths.size() && entries.size() < kStartEntries; ++i)
    entries.push_back(
        {.command = static_cast<CommandId>(kCmdRecent1 + i), .text = RecentFileItem(recent, i)});
  return entries;
}

}  // namespace vexa
