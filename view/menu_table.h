// Menus and toolbar of the editor, made from the rows of the commands.
#pragma once

#include <cstdint>
#include <vector>

#include "view/command_table.h"

namespace vexa {

// Menus as rows; `depth` 0 are the titles of the bar (of a pop-up menu: its only top level).
enum class MenuRowKind : uint8_t {
  kPopup,
  kCommand,
  kSeparator,
  // What the window puts there:
  kRecentFiles,      // a pop-up of the files
  kMarkFields,       // for each field of the records a pop-up of its values
  kSelectFields,     // the same, to select by
  kFavouriteGroups,  // the favourite groups of the SDB
};
struct MenuRow {
  uint8_t depth;
  MenuRowKind kind;
  const char* text;  // of a pop-up
  CommandId command;
};

// The rows of a menu from top to bottom.
std::vector<MenuRow> MenuRows(MenuName menu);

// Commands of the rows that the window fills, by place; they stand in no table.
inline constexpr uint32_t kFirstMarkCommand = 41000, kFirstSelectCommand = 41200, kFirstGroupCommand = 41400,
                          kEndOfRowCommands = 41500;

// From left to right; nullptr: a gap.
std::vector<const CommandInfo*> ToolbarButtons();

}  // namespace vexa
