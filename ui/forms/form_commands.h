// The commands of records, options, tools and lists.
#pragma once

#include <functional>
#include <optional>
#include <span>

#include "import/csv_table.h"
#include "ui/controls/command_row.h"
#include "ui/editor/editor.h"

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

// Runs `update` with a table that came back, as one step for Undo, and selects what it changed. The status
// line says what it did, and a message how many entries left the favourite lists.
void ChangeByTable(EditorWindow& editor, const std::function<std::optional<TableOutcome>()>& update);

}  // namespace vexa
