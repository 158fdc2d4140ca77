// What every face says when an allocation fails; the program ends then.
#pragma once

namespace vexa {

inline constexpr const char* kOutOfMemoryText =
    "Memory allocation failure. Cannot continue. \nClose one or more applications and continue.";

}  // namespace vexa
