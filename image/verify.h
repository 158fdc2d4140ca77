// Whether the receiver holds what was sent: its memory, read back, beside the images that were built for it.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "config/project_config.h"
#include "core/database.h"
#include "image/adb.h"

namespace vexa {

struct ImageDifference {
  uint64_t bytes = 0;    // how many differ, in both regions; missing ones count
  uint32_t address = 0;  // of the first: in the receiver's memory, or from 0 in the second region
  // What stands there: "LNB N", "satellite N", "carrier N", "service N", "TV group N", "radio group N", from
  // 1, in the receiver's tables (an entry of the service order is its service's); "settings", "selection" or
  // "fill".
  std::string record;
};

// `sent`: as BuildAdbImages gave it for `database` and `config`. `adb` and `e2p`: the content of the two
// regions from their start on, the second for configuration index 1 only. Nothing when they agree. What the
// receiver writes by itself is passed over: the image header, and of the settings and selection partitions
// all but the copy in force, which is compared with the one that was in force in what was sent.
std::optional<ImageDifference> CompareImages(const ProjectConfig& config, const StaticDatabase& database,
                                             const AdbImages& sent, std::span<const uint8_t> adb,
                                             std::span<const uint8_t> e2p);

}  // namespace vexa
