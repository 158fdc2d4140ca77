#include "tests/support/failing_memory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

thread_local int allocations_left = 0;  // until one fails; 0: none does
thread_local bool spared = false;       // this thread's do not count for the others'
std::atomic<int> others_left{0};        // likewise; below 0 once it failed

bool FailsNow() {
  if (allocations_left > 0 && --allocations_left == 0) return true;
  return !spared && others_left > 0 && others_left.fetch_sub(1) == 1;
}

}  // namespace

void* operator new(std::size_t size) {
  if (FailsNow()) throw std::bad_alloc();
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}

// Sanitizers bring one of their own, whose memory the delete below could not take.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace vexa {

FailingMemory::FailingMemory(int n, FailingThreads which) : threads(which) {
  spared = which == FailingThreads::kOthers;
  spared ? static_cast<void>(others_left = n) : static_cast<void>(allocations_left = n);
}

FailingMemory::~FailingMemory() {
  allocations_left = 0;
  others_left = 0;
  spared = false;
}

bool FailingMemory::Reached() const {
  return threads == FailingThreads::kOthers ? others_left <= 0 : allocations_left == 0;
}

}  // namespace vexa
