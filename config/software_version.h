// The software version that goes into URT files, as the user types it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/messages.h"

namespace vexa {

inline constexpr unsigned kLargestSoftwareMajor = 255;  // a byte of the file
inline constexpr unsigned kLargestSoftwareMinor = 15;   // four bits of it

struct SoftwareVersion {
  uint8_t major = 0, minor = 0;
};
enum SoftwareField : int { kSoftwareMajorField, kSoftwareMinorField };

// Reads two decimal numbers without sign or blanks. A refusal names the range of the first text that is none,
// its field a SoftwareField; `version` is then as it was.
std::optional<Refusal> ReadSoftwareVersion(const std::string& major, const std::string& minor,
                                           SoftwareVersion& version);

}  // namespace vexa
