// Sizes, in bytes, of what the partitions of a receiver's memory hold: image/receiver_layout.h says what
// stands in them, and the compiler of the configuration refuses partitions that are too small.
//
//   type 3  16 LNBs, then 85 satellites                     type 5  the service index, two bytes a service
//   type 4  services from the front, carriers from behind   type 6  eight favourite groups
//   type 0  the settings block                              type 2  the selected favourites
//
// The blocks of types 0 and 2 stand alone in an EEPROM; elsewhere in a journal, a marker and copies behind
// it, of which the marker names the one in force.
#pragma once

#include <cstdint>

#include "core/records.h"

namespace vexa {

inline constexpr uint32_t kLnbEntry = 8, kSatelliteEntry = 28, kCarrierEntry = 36, kServiceEntry = 44;
inline constexpr uint32_t kSatelliteTable = kMaximumLnbs * kLnbEntry;  // offset
inline constexpr uint32_t kFavouriteHeader = 44, kTvList = 5000, kRadioList = 2000;
inline constexpr uint32_t kFavouriteEntry = kFavouriteHeader + kTvList + kRadioList;
inline constexpr uint32_t kSettingsBlock = 96, kSelectionBlock = 64;
inline constexpr uint32_t kMarker = 8, kJournalCopies = 35;

// The most that an image takes.
inline constexpr uint32_t kImageCarriers = 4095, kImageServices = 4999;  // counts
inline constexpr uint32_t kImageTables = 220000;                         // bytes of both together

}  // namespace vexa
