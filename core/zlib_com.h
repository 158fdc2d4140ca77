// Whole buffers through zlib (RFC 1950), in one call each way, with the failure told to the user.
#pragma once

#include <cstdint>
#include <span>

#include "core/messages.h"

namespace vexa {

inline constexpr int kDefaultLevel = 6;

// Output room that CompressBuffer uses: size * 1.01 + 12, in double precision, truncated.
uint64_t CompressedCapacity(uint64_t size);

// Compresses into `destination` (capacity is its size, at most CompressedCapacity is used). `level` 0-9.
// Returns the compressed length; 0 after "Compression failed." An empty title becomes "Compression",
// nullptr is the application's own.
uint64_t CompressBuffer(const Messages& messages, std::span<const uint8_t> source,
                        std::span<uint8_t> destination, int level, const char* title);

// Inflates into `destination`. Returns 0 and sets `length` to the bytes made; zlib's status after
// "Decompression failed." when the data is damaged or does not fit.
int DecompressBuffer(const Messages& messages, std::span<const uint8_t> source,
                     std::span<uint8_t> destination, uint64_t& length, const char* title);

}  // namespace vexa
