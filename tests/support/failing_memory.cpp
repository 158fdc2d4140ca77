#include "tests/support/failing_memory.h"

#include <cstdlib>
#include <new>

namespace {

thread_local int allocations_left = 0;  // until one fails; 0: none does

}  // namespace

void* operator new(std::size_t size) {
  if (allocations_left > 0 && --allocations_left == 0) throw std::bad_alloc();
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

FailingMemory::FailingMemory(int n) {
  allocations_left = n;
}

FailingMemory::~FailingMemory() {
  allocations_left = 0;
}

bool FailingMemory::Reached() const {
  return allocations_left == 0;
}

}  // namespace vexa
