// Bin2Cod: the receiver's own compression, an LZSS that its loader expands in a few hundred bytes of code.
//
// The stream is groups of a flag byte and up to eight items. Bit 0 of the flag byte belongs to the first
// item; a set bit is a literal (one byte, itself), a clear bit a match of two bytes:
//   byte 0       distance - 1, bits 0-7
//   byte 1 4-7   distance - 1, bits 8-11     byte 1 0-3   length - 3
// Distances are 1-4096 back from the next output byte, lengths 3-18; a match may reach into itself. The
// stream has no end mark: it ends with its last byte. Unused bits of the last flag byte are 0. As the first
// item is always a literal, the first byte is odd, so it is never the 0x78 that a zlib stream begins with.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/files.h"

namespace vexa {

// The stream of `source`, of any length. What does not compress grows by a byte in eight.
Bytes CompressBin2Cod(std::span<const uint8_t> source);

// The `size` bytes that `stream` stands for; nothing when it is damaged or does not give exactly as many.
std::optional<Bytes> ExpandBin2Cod(std::span<const uint8_t> stream, uint64_t size);

}  // namespace vexa
