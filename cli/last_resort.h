// What the program does when an exception can go nowhere: out of a thread, a destructor, or before it has
// begun.
#pragma once

#include "platform/files.h"

namespace vexa {

// Writes kOutOfMemoryText to standard error without asking for memory.
void TellOutOfMemory();
// Removed then; nullptr for none. Must live until the next call.
void SetFolderOfLastResort(const Path* folder);

}  // namespace vexa
