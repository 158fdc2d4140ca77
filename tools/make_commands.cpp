// make_commands FILE: the help's page of all commands and keys, from the command table.
#include <algorithm>
#include <iostream>
#include <set>
#include <string>

#include "platform/files.h"
#include "platform/text.h"
#include "view/menu_table.h"

namespace vexa {
namespace {

// "Save &As" -> "Save As".
std::string Label(std::string_view text) {
  std::string label;
  for (const char letter : text) {
    if (letter != '&') label += letter;
  }
  return label;
}

std::string Line(const CommandInfo& command) {
  const std::string keys = command.shown_key ? "" : ShownKey(command);
  // The part's title says that its window is needed; "There is nothing to undo." is no need.
  const std::string needs = MissingNeeds(command, kNeedsEditor | kNeedsConsole);
  return "- **" + Label(command.text) + "**" + (keys.empty() ? "" : " (`" + keys + "`)") + ": " +
         command.tip + "." + (needs.starts_with("Needs") ? " " + needs : "") + "\n";
}

// The commands of a menu that were not told before, below the names of the menus that hold them.
std::string CommandsOf(MenuName menu, std::set<CommandId>& told) {
  std::vector<std::string> path;
  std::vector<std::pair<std::string, std::string>> parts;  // names of menus, lines
  for (const MenuRow& row : MenuRows(menu)) {
    path.resize(std::min<size_t>(path.size(), row.depth));
    if (row.kind == MenuRowKind::kPopup) path.push_back(Label(row.text));
    const CommandInfo* command = FindCommand(row.command);
    if (row.kind != MenuRowKind::kCommand || !command || !told.insert(row.command).second) continue;
    std::string title;
    for (const std::string& name : path) title += (title.empty() ? "" : " > ") + name;
    auto part =
        std::find_if(parts.begin(), parts.end(), [&](const auto& each) { return each.first == title; });
    if (part == parts.end()) part = parts.insert(parts.end(), {title, ""});
    part->second += Line(*command);
  }
  std::string text;
  for (const auto& [title, lines] : parts)
    text += (title.empty() ? "" : "\n### " + title + "\n") + "\n" + lines;
  return text;
}

// All keys, by the places where they work.
std::string Keys() {
  constexpr std::pair<KeyScope, const char*> kPlaces[] = {
      {KeyScope::kEverywhere, "In the whole program"},
      {KeyScope::kDatabase, "While a database window is active"},
      {KeyScope::kRecords, "In the tree and the list of a database window"},
      {KeyScope::kList, "In the list of a database window"},
      {KeyScope::kConsole, "In the uploader console"},
      {KeyScope::kConsoleLog, "In the log of the uploader console"}};
  const auto line = [](const Key& key, const CommandInfo& command) {
    return "- `" + KeyName(key) + "`: " + Label(command.text) + "\n";
  };
  std::string text =
      "\n## Keys\n\n- `F1`: Help on this window or dialog, or on the commands while a menu is open\n";
  for (const auto& [scope, place] : kPlaces) {
    std::string lines;
    for (const CommandInfo& command : Commands()) {
      if (command.key.code != 0 && command.key.scope == scope) lines += line(command.key, command);
      if (scope == KeyScope::kConsole && command.in_console)
        lines += line(command.key, *FindCommand(command.in_console));
    }
    if (!lines.empty()) text += std::string("\n### ") + place + "\n\n" + lines;
  }
  return text;
}

std::string Page() {
  std::string page =
      "# Commands and keys\n\nEvery command with its keys and what it does. A command that lacks what it "
      "needs "
      "is grey; the status line says what it lacks.\n";
  const std::pair<const char*, std::vector<MenuName>> parts[] = {
      {"The database window", {MenuName::kEditor}},
      {"The frame", {MenuName::kFrame}},
      {"The uploader console", {MenuName::kConsole, MenuName::kConsoleLog}},
      {"Pop-up menus of the database window",
       {MenuName::kRecord, MenuName::kService, MenuName::kSdb, MenuName::kLnbLevel, MenuName::kSatelliteLevel,
        MenuName::kCarrierLevel}}};
  std::set<CommandId> told;
  for (const auto& [title, menus] : parts) {
    std::string part;
    for (const MenuName menu : menus) part += CommandsOf(menu, told);
    if (!part.empty()) page += std::string("\n## ") + title + "\n" + part;
  }
  return page + Keys();
}

}  // namespace
}  // namespace vexa

int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: make_commands FILE\n";
    return 2;
  }
  const std::string page = vexa::Page();
  const std::span<const uint8_t> bytes(reinterpret_cast<const uint8_t*>(page.data()), page.size());
  if (vexa::WriteWholeFile(vexa::PathFromUtf8(arguments[1]), bytes) == vexa::WriteResult::kDone) return 0;
  std::cerr << "error: cannot write " << arguments[1] << '\n';
  return 1;
}
