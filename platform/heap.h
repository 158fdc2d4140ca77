// The heap of a program that reads a whole database, works through it once and ends.
#pragma once

namespace vexa {

// Once, at the start of a program: memory comes from the system in large pages and stays with the program
// until its end, where the system can do so. A database of the largest size otherwise costs thousands of page
// faults. Reserves addresses only; nothing changes where it is refused.
void PrepareHeap();

}  // namespace vexa
