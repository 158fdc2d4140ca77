// CRC-32/MPEG-2: polynomial 0x04C11DB7, most significant bit first, start value 0xFFFFFFFF, no final
// inversion.
#pragma once

#include <cstdint>
#include <span>

namespace vexa {

inline constexpr uint32_t kCrcStart = 0xFFFFFFFF;

// Continues `crc`, the CRC of all bytes before, over `bytes`.
uint32_t Crc32Mpeg2(std::span<const uint8_t> bytes, uint32_t crc = kCrcStart);

// The CRC of A followed by B, from the CRC of A, the CRC of B alone and the length of B in bytes.
uint32_t JoinCrc32Mpeg2(uint32_t crc_a, uint32_t crc_b, uint64_t length_b);

}  // namespace vexa
