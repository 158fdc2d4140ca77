// The software version that goes into URT files, as the user types it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vexa {

inline constexpr unsigned kLargestSoftwareMajor = 255;  // a byte of the file
inline constexpr unsigned kLargestSoftwareMinor = 15;   // four bits of it

struct SoftwareVersion {
  uint8_t major = 0, minor = 0;
};
enum SoftwareField : int { kSoftwareMajorField, kSoftwareMinorField };

// The first of the two texts that is no number in its range; `text` says so, whole.
struct SoftwareFault {
  SoftwareField field;
  const char* text;
};
// Reads two decimal numbers without sign or blanks. Nothing when both were read; else `version` is as it was.
std::optional<SoftwareFault> ReadSoftwareVersion(const std::string& major, const std::string& minor,
                                                 SoftwareVersion& version);

}  // namespace vexa
