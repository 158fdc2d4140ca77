// A configuration with room for every table, and the CRC bit by bit, as the tests of this room share them.
#pragma once

#include <span>

#include "config/project_config.h"
#include "image/receiver_layout.h"

namespace vexa {

// Partitions as large as their largest content; both journals 35 copies deep, one copy for configuration
// index 1.
inline ProjectConfig MakeImageConfig(uint8_t configuration_index) {
  ProjectConfig config;
  config.manufacturer_id = 0x2A;
  config.version_a = 3;
  config.version_b = 4;
  config.software_major = 7;
  config.software_minor = 5;
  config.configuration_index = configuration_index;
  config.loader = {0xF0, 0xF5, 64, 2979};
  const bool e2p = configuration_index == 1;
  config.partition_sizes = {
      e2p ? 96u : 8 + 35 * 96u, 0, e2p ? 64u : 8 + 35 * 64u, 2560, 220000, 9998, 8 * 7044};
  config.partitions.resize(6);
  const AdbLayout layout = LayoutOf(config);
  const auto length = static_cast<uint32_t>(e2p ? layout.settings : layout.end) + 64;
  config.regions = {
      {"Boot", 1, 0, 0x1000}, {"Application data", 3, 0x100000, 0x100000 + length}, {"Other", 2, 0, 16}};
  return config;
}

inline uint32_t SlowCrc(std::span<const uint8_t> bytes, uint32_t crc = 0xFFFFFFFF) {
  for (const uint8_t byte : bytes) {
    for (int bit = 7; bit >= 0; --bit) {
      const uint32_t out = crc >> 31 ^ (byte >> bit & 1u);
      crc = crc << 1 ^ (out ? 0x04C11DB7u : 0u);
    }
  }
  return crc;
}

}  // namespace vexa
