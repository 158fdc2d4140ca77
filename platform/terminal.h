// The console of a command line program.
#pragma once

namespace vexa {

bool StandardErrorIsTerminal();
// Standard output takes bytes as they are, without changes of line ends.
void SetBinaryOutput();
unsigned long ProcessNumber();

}  // namespace vexa
