// The command line tool's side of messages, results and temporary files.
#pragma once

#include "cli/commands.h"

namespace vexa {

// Gives the state its context: messages go to standard error as "error: TEXT" and so on; questions are
// answered by
// --yes; a progress line when standard error is a terminal; no file is begun any more after an interruption.
void PrepareContext(CommandState& state);

// Writes the collected results to standard output, bytes as they are, and forgets them. False after a message
// with the system's reason, or without one when the program was interrupted, when they cannot be written.
bool PrintResults(CommandState& state);

}  // namespace vexa
