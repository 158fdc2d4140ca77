// What the frame shows while no window is open: where to begin.
#pragma once

#include <string>
#include <vector>

#include "config/settings.h"
#include "view/command_table.h"

namespace vexa {

// A button: it runs its command, or opens a menu below itself.
struct StartEntry {
  CommandId command = kNoCommand;  // kNoCommand: `menu` it is
  MenuName menu = MenuName::kFrame;
  std::string text;  // UTF-8; '&' marks an access key, and is doubled where it is none
};

inline constexpr size_t kStartEntries = 3 + kRecentFiles;  // at most
inline constexpr const char* kStartHint = "or drop a file here";

// From top to bottom: New, Open and Import, named as in the menus, with their keys; then the recent files.
std::vector<StartEntry> StartEntries(const RecentFiles& recent);

}  // namespace vexa
