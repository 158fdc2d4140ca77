// The parts of the receiver's command group.
#pragma once

#include "cli/commands.h"

namespace vexa {

void AddLoaderCommand(CLI::App& program, CommandState& state);

}  // namespace vexa
