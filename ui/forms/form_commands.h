// The commands of records, options, tools and lists.
#pragma once

#include <span>

#include "ui/controls/command_row.h"

namespace vexa {

std::span<const CommandRow> RecordCommands();     // record_commands.cpp
std::span<const CommandRow> ClipboardCommands();  // clipboard_commands.cpp
std::span<const CommandRow> OptionCommands();     // options.cpp
std::span<const CommandRow> MergeCommands();      // merger_dialog.cpp
std::span<const CommandRow> ImageCommands();      // image_commands.cpp

// Runs a command of the rows that a pop-up menu fills by itself; false when `id` is none.
bool RunRowCommand(Application& app, UINT id);
// Whether such a command has something to act on.
bool CanRunRow(Application& app, UINT id);

}  // namespace vexa
