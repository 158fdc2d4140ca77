// The receiver's memory: two address spaces of 32 bits, 0xFF where nothing was stored. The first holds the
// images, the second the settings memory, which region 2 of a download reads.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <span>

#include "platform/files.h"

namespace vexa {

inline constexpr uint64_t kLargestRegion = uint64_t{64} << 20;  // bytes that one download region may ask for

struct LoaderMemory {
  // By start address; pieces never overlap.
  std::array<std::map<uint32_t, Bytes>, 2> spaces;
};

// Stores over whatever stood there; what would go beyond the last address is cut off.
void StoreBytes(LoaderMemory& memory, size_t space, uint32_t address, std::span<const uint8_t> bytes);
// `size` bytes from `address` on, at most kLargestRegion; 0xFF where nothing was stored.
Bytes LoadBytes(const LoaderMemory& memory, size_t space, uint32_t address, uint64_t size);

// One file a piece, "space1-00010000.bin" (space from 1, address in hexadecimal); files of other pieces go.
// Not done when the folder or a file in it cannot be written.
Outcome SaveMemory(const LoaderMemory& memory, const Path& folder);
// What SaveMemory wrote to the folder; empty when it is not there. Nothing when the folder or a file of it
// cannot be read: `why` names it, with the system's reason.
std::optional<LoaderMemory> OpenMemory(const Path& folder, std::string& why);

}  // namespace vexa
