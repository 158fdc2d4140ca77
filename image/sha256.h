// SHA-256 (FIPS 180-4), by which a file is known wherever it is kept.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vexa {

// 64 hexadecimal digits in lower case.
std::string Sha256Text(std::span<const uint8_t> bytes);

}  // namespace vexa
