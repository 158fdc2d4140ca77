#include "platform/heap.h"

namespace vexa {

// The system's heap asks for its pages in steps of its own choice.
void PrepareHeap() {}

}  // namespace vexa
