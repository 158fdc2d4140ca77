#include "platform/heap.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace vexa {

void PrepareHeap() {
#if defined(__GLIBC__)
  constexpr size_t kReserve = 128 << 20, kLargePage = 2 << 20;
  mallopt(M_MMAP_THRESHOLD, 32 << 20);  // the highest that it takes
  mallopt(M_TRIM_THRESHOLD, 2 * kReserve);
  mallopt(M_TOP_PAD, kReserve);
  const auto first = (reinterpret_cast<uintptr_t>(sbrk(0)) + kLargePage - 1) / kLargePage * kLargePage;
  // More than is left, so that the heap takes its reserve, and little: a page that is in use is never part of
  // a large one.
  void* volatile block = std::malloc(160 << 10);
  std::free(block);
  const auto end = reinterpret_cast<uintptr_t>(sbrk(0));
  if (end > first) madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#endif
}

}  // namespace vexa
