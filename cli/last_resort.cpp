#include "cli/last_resort.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

#include "core/out_of_memory.h"

namespace vexa {

namespace {

std::atomic<const Path*> folder_to_remove{nullptr};

// A failed allocation ends the program in order, wherever it happens. Any other exception here is a fault of
// the program, and shows as one.
[[noreturn]] void EndAfterException() {
  try {
    if (const std::exception_ptr thrown = std::current_exception()) std::rethrow_exception(thrown);
  } catch (const std::bad_alloc&) {
    TellOutOfMemory();
    if (const Path* folder = folder_to_remove) RemoveFolder(*folder);
    std::_Exit(1);
  } catch (...) {
  }
  std::abort();
}

struct Installed {
  Installed() { std::set_terminate(EndAfterException); }
};
// Before the objects of other files are made, which allocate.
#if defined(__GNUC__)
__attribute__((init_priority(101)))
#endif
const Installed installed;

}  // namespace

void TellOutOfMemory() {
  std::fprintf(stderr, "error: %s\n", kOutOfMemoryText);
  std::fflush(stderr);
}

void SetFolderOfLastResort(const Path* folder) {
  folder_to_remove = folder;
}

}  // namespace vexa
