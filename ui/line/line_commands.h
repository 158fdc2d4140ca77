// The commands of transfers and of the uploader console.
#pragma once

#include <span>

#include "ui/controls/command_row.h"

namespace vexa {

std::span<const CommandRow> TransferCommands();  // transfer_commands.cpp
std::span<const CommandRow> ConsoleCommands();   // console_commands.cpp

}  // namespace vexa
