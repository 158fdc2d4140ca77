// Memory that runs out once: while an object lives, the n-th allocation (from 1) of this thread fails.
#pragma once

namespace vexa {

struct FailingMemory {
  explicit FailingMemory(int n);
  ~FailingMemory();
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;
  bool Reached() const;  // the n-th allocation was asked for
};

}  // namespace vexa
