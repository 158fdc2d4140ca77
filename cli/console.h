// The command line tool's side of messages, results and temporary files.
#pragma once

#include <string>
#include <vector>

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

// The whole program: parses, runs one command, prints its results. Returns the exit status: 0 done, 1 refused
// or failed, 2 wrong usage. Arguments are UTF-8, the program's name first.
int RunProgram(int count, char** arguments);

// Windows gives UTF-16 arguments; the program works on UTF-8.
class Utf8Arguments {
 public:
  Utf8Arguments(int count, wchar_t** wide);
  int count() const { return static_cast<int>(texts_.size()); }
  char** values() { return pointers_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

}  // namespace vexa
