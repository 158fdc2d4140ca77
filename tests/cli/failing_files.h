// Files that fail, or a program that is killed, at the n-th step of writing them: for a child process that a
// test has forked. A step is one opening for writing, write, flush to the disk or renaming of a file;
// standard streams do not count. Of other systems than POSIX there is none.
#pragma once

#if !defined(_WIN32)

namespace vexa {

enum class FileFault {
  kFullDisk,  // the step fails; a write leaves half of its bytes behind
  kKill,      // SIGKILL instead of the step; in the middle of a write
};

// From the call on, steps of this process are counted in `steps`, which the parent may share, and the one of
// that number (from 1) goes wrong, once.
void FailFileStep(FileFault fault, int number, int& steps);

}  // namespace vexa

#endif
