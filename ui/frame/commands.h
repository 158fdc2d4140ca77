// What the commands of the table do: each row of the table has one function, each function a row.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "ui/controls/command_row.h"
#include "view/window_state.h"

namespace vexa {

std::span<const CommandRow> FrameCommands();  // frame_commands.cpp

// Of the window that is active.
WindowState StateOfCommands(const Application& app);
// Whether all is there that the command needs.
bool CanRun(const WindowState& state, UINT id);
// The identifiers that functions are given for, in no order; one named twice has two functions.
std::vector<UINT> CommandsWithFunction();
// Runs the command when it can run; true when the table knows it.
bool RunCommand(Application& app, UINT id);
// Help for the status line: what it does, or what it lacks.
std::string CommandHelp(const Application& app, UINT id);

}  // namespace vexa
