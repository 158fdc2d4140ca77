// The command line tool as a function: what its entry point and its tests call.
#pragma once

#include "platform/serial.h"

namespace vexa {

// The whole program: parses, runs one command, prints its results. Returns the exit status: 0 done, 1 refused
// or failed, 2 wrong usage. Arguments are UTF-8, the program's name first.
// `line`: what opens serial ports.
int RunProgram(int count, char** arguments, const CommApi& line = SystemCommApi());

}  // namespace vexa
