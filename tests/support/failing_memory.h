// Memory that runs out once: while an object lives, the n-th allocation (from 1) of this thread fails, or the
// n-th of all other threads together.
#pragma once

namespace vexa {

enum class FailingThreads { kThis, kOthers };

struct FailingMemory {
  explicit FailingMemory(int n, FailingThreads threads = FailingThreads::kThis);
  ~FailingMemory();
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;
  bool Reached() const;  // the n-th allocation was asked for
  FailingThreads threads;
};

}  // namespace vexa
