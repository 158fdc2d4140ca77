// What the commands of the table do. A command without a function is not built: it is greyed everywhere.
#pragma once

#include <span>
#include <string>

#include "ui/application.h"
#include "view/command_table.h"

namespace vexa {

// A command and what runs it. Each file of commands gives its own rows; commands.cpp lists the files.
struct CommandRow {
  CommandId id;
  void (*run)(Application&);
};

std::span<const CommandRow> FileCommands();      // commands.cpp: files, views, windows
std::span<const CommandRow> RecordCommands();    // record_commands.cpp
std::span<const CommandRow> OptionCommands();    // options.cpp
std::span<const CommandRow> MergeCommands();     // merger_dialog.cpp
std::span<const CommandRow> TransferCommands();  // transfer_commands.cpp
std::span<const CommandRow> ConsoleCommands();   // console_commands.cpp
std::span<const CommandRow> ImageCommands();     // image_commands.cpp

// Runs the command when it can run; true when the table knows it.
bool RunCommand(Application& app, UINT id);
bool CanRun(Application& app, UINT id);
bool IsChecked(Application& app, UINT id);
// The item's text where it follows the state ("&Undo"); empty: the table's.
std::string ChangedText(Application& app, UINT id);
// Runs a command of the rows that a pop-up menu fills by itself; false when `id` is none.
bool RunRowCommand(Application& app, UINT id);
// Whether such a command has something to act on.
bool CanRunRow(Application& app, UINT id);
// What is there, as `Need` bits.
uint32_t PresentNeeds(Application& app);
// Help for the status line: what it does, or what it lacks.
std::string CommandHelp(Application& app, UINT id);

}  // namespace vexa
