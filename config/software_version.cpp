#include "config/software_version.h"

#include <charconv>

namespace vexa {

namespace {

bool ReadPart(const std::string& text, unsigned largest, uint8_t& part) {
  unsigned number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number > largest) return false;
  part = static_cast<uint8_t>(number);
  return true;
}

}  // namespace

std::optional<SoftwareFault> ReadSoftwareVersion(const std::string& major, const std::string& minor,
                                                 SoftwareVersion& version) {
  SoftwareVersion read;
  if (!ReadPart(major, kLargestSoftwareMajor, read.major)) {
    return SoftwareFault{kSoftwareMajorField, "The major software version is a number from 0 to 255."};
  }
  if (!ReadPart(minor, kLargestSoftwareMinor, read.minor)) {
    return SoftwareFault{kSoftwareMinorField, "The minor software version is a number from 0 to 15."};
  }
  version = read;
  return std::nullopt;
}

}  // namespace vexa
