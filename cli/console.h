// The command line tool's side of messages, results and temporary files.
#pragma once

#include "cli/commands.h"

namespace vexa {

// A folder of this process's own under the system's temporary path; gone when the object goes.
struct TemporaryFolder {
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  Path path;
};

// Messages to standard error as "error: TEXT" and so on; questions answered by --yes; a progress line when
// standard error is a terminal.
Context ConsoleContext(CommandState& state, const Path& temporary_folder);

// Writes the collected results to standard output, bytes as they are.
void PrintResults(const CommandState& state);

}  // namespace vexa
