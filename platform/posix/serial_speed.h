// Bit rates that termios has no name for.
#pragma once

#include <cstdint>

namespace vexa {

// Sets both directions of an open terminal; false when the system or the device cannot.
bool SetAnySpeed(int file, uint32_t baud);

}  // namespace vexa
