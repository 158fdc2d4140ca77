// What the commands of the table do. A command without a function is not built: it is greyed everywhere.
#pragma once

#include <span>
#include <string>

#include "ui/controls/command_row.h"
#include "view/command_state.h"

namespace vexa {

std::span<const CommandRow> FrameCommands();  // frame_commands.cpp

// Of the window that is active.
CommandState StateOfCommands(const Application& app);
bool CanRun(const CommandState& state, UINT id);
// Runs the command when it can run; true when the table knows it.
bool RunCommand(Application& app, UINT id);
// Help for the status line: what it does, or what it lacks.
std::string CommandHelp(const Application& app, UINT id);

}  // namespace vexa
