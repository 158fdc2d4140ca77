// The entry point of a command line program.
#pragma once

#include "platform/heap.h"
#include "platform/interrupt.h"
#include "platform/text.h"

// Defines it: run(count, arguments) gets the program's arguments in UTF-8 on every system and gives its exit
// status. A request to end is the program's own affair, by InterruptWatch, from its first step to its last.
#if defined(_WIN32)
#define VEXA_MAIN(run)                                 \
  int wmain(int count, wchar_t** wide) {               \
    vexa::PrepareHeap();                               \
    vexa::InterruptWatch::TakeToTheEnd();              \
    vexa::Utf8Arguments arguments(count, wide);        \
    return run(arguments.count(), arguments.values()); \
  }
#else
#define VEXA_MAIN(run)                    \
  int main(int count, char** arguments) { \
    vexa::PrepareHeap();                  \
    vexa::InterruptWatch::TakeToTheEnd(); \
    return run(count, arguments);         \
  }
#endif
