// How the records of the database stand in the receiver's memory: its bit order, fixed bits and name fields.
//
//   LNB        8 bytes: two words                         satellite  28 bytes: two words, name of 20
//   carrier   36 bytes: four words, name of 20            service    44 bytes: three words, name of 32
//   favourite header 44 bytes: TV name of 20, radio name of 20, two 16-bit words of counts and flags
//
// One table of moves per record serves both directions (receiver_layout.cpp); what the receiver has no room
// for comes back as 0. Names: text, NUL where there is room, then 0xFF.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "config/project_config.h"
#include "config/receiver_tables.h"
#include "core/records.h"

namespace vexa {

inline constexpr uint32_t kSettingsUserBox = 68;  // place of the user box record in the settings block
inline constexpr uint64_t kFirstMarker = 0x7FFFFFFFFFFFFFFF;

using SettingsBlock = std::array<uint8_t, kSettingsBlock>;
using SelectionBlock = std::array<uint8_t, kSelectionBlock>;

// Each writes or reads exactly the entry's size, which `entry` must have. Favourites: the 44-byte header.
void PackLnb(const LnbRecord& record, std::span<uint8_t> entry);
void PackSatellite(const SatelliteRecord& record, std::span<uint8_t> entry);
void PackCarrier(const CarrierRecord& record, std::span<uint8_t> entry);
void PackService(const ServiceRecord& record, std::span<uint8_t> entry);
void PackFavourite(const FavouriteRecord& record, std::span<uint8_t> entry);
// A satellite slot that the database does not use; `number` counts them from 1.
void PackEmptySatellite(uint32_t number, std::span<uint8_t> entry);

// The record of an entry.
LnbRecord UnpackLnb(std::span<const uint8_t> entry);
SatelliteRecord UnpackSatellite(std::span<const uint8_t> entry);  // empty slot: all zero but its name
CarrierRecord UnpackCarrier(std::span<const uint8_t> entry);      // LNB index 0
ServiceRecord UnpackService(std::span<const uint8_t> entry);
FavouriteRecord UnpackFavourite(std::span<const uint8_t> entry);

// The `width` bits from bit `bit` on of the little-endian 32-bit word at place `word`: the fields of settings
// blocks. The word must lie in `bytes`; bits beyond it read as 0 and are not written, like bits of `value`
// beyond the width.
uint32_t ReadField(std::span<const uint8_t> bytes, size_t word, int bit, int width);
void WriteField(std::span<uint8_t> bytes, size_t word, int bit, int width, uint32_t value);

// Where the partitions lie in the region, in bytes from its start: LSD, carriers and services, service index,
// favourites, settings, selection.
struct AdbLayout {
  uint64_t tables = 0;      // s3: services upward
  uint64_t tables_end = 0;  // s3 + s4: carriers downward; the service index upward
  uint64_t favourites = 0;  // s3 + s4 + s5
  uint64_t settings = 0;    // s3 + s4 + s5 + s6: a journal, or in the E2P file
  uint64_t selection = 0;   // settings + size[0]
  uint64_t end = 0;         // selection + size[2]
};
// From the configuration's partition sizes; nothing is checked against the region.
AdbLayout LayoutOf(const ProjectConfig& config);

// The region that holds the ADB image: the last of type 3, else the first; nullptr without regions. It
// belongs to the configuration.
const RegionEntry* AdbRegion(const ProjectConfig& config);

}  // namespace vexa
