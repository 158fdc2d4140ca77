// The console of a command line program.
#pragma once

namespace vexa {

bool StandardErrorIsTerminal();
// Standard output takes bytes as they are, without changes of line ends.
void SetBinaryOutput();
// A standard stream that was handed over closed refuses what is written to it, and no file gets its number.
void KeepStandardStreams();
unsigned long ProcessNumber();

}  // namespace vexa
