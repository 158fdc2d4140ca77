// Whether something can be told from what it stands on.
#pragma once

#include <cstdint>

namespace vexa {

// True for a dark colour on a dark surface. The program's own colours are made for light surfaces: such a one
// gives way to the text colour of the system. Both are 0x00BBGGRR.
bool IsLostOn(uint32_t colour, uint32_t surface);

}  // namespace vexa
