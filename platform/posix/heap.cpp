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
  void* volatile block = std::malloc(kLargePage);  // more than is left: the heap takes its reserve
  std::free(block);
  const auto end = reinterpret_cast<uintptr_t>(sbrk(0));
  if (end > first) madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#endif
}

}  // namespace vexa
