// The console of a command line program.
#pragma once

#include <cstddef>

namespace vexa {

// Whether somebody reads standard error as it is written.
bool StandardErrorIsTerminal();
// Columns of that terminal that a line may fill without going on to the next; 79 where it does not say.
size_t TerminalColumns();
// Standard output takes bytes as they are, without changes of line ends.
void SetBinaryOutput();
// A standard stream that was handed over closed refuses to be read, written and opened by a path that leads
// to it, as /dev/stdout does, and no file gets its number.
void KeepStandardStreams();
// This process's, unique among those that run.
unsigned long ProcessNumber();

}  // namespace vexa
