// What turns one run of bytes into another: pieces copied out of the first one, and bytes between them. What
// was put in, taken out or moved costs its own size, wherever it stands.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vexa {

// What makes `target` out of `source`. It may be larger than the target.
std::vector<uint8_t> MakeDelta(std::span<const uint8_t> source, std::span<const uint8_t> target);
// The target again, `size` bytes long. The delta must have been made from this source.
std::vector<uint8_t> ApplyDelta(std::span<const uint8_t> source, std::span<const uint8_t> delta, size_t size);

}  // namespace vexa
