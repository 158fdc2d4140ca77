// The configuration of one receiver, chosen from an ECF file, with the user's choices for the line and the
// images.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/context.h"

namespace vexa {

// One memory region of the receiver that an image can be loaded into. Addresses: end is exclusive.
struct RegionEntry {
  std::string name;  // single-byte text, up to 50 characters
  uint8_t type = 0;  // 3: holds the ADB image
  uint32_t start = 0, end = 0;
};

struct LoaderParameters {
  uint8_t header_tag = 0, packet_tag = 0;  // first byte of the header frame and of every data frame
  uint16_t block_kib = 0;                  // KiB of the image that one CRC covers
  uint16_t packet_size = 0;                // bytes of the image in a data frame
};

struct PartitionEntry {
  uint32_t start = 0, end = 0;  // end includes the rounded bitmap
  uint8_t number = 0;           // from 1
  uint8_t type = 0;
};

using LanguageRecord = std::array<uint8_t, 36>;
using ProductTableRecord = std::array<uint8_t, 20>;
using ProductTable = std::vector<ProductTableRecord>;

struct LanguageBlock {
  std::array<uint8_t, 8> header{};
  std::vector<LanguageRecord> records;
};

inline constexpr size_t kMaximumPartitions = 6;
inline constexpr size_t kPartitionTypes = 7;

// What the serial line can be set to; the indices of `ProjectConfig` are places in these lists.
// Bits a second. The first ones are offered; those behind them are kept, used and shown where they are
// stored.
inline constexpr std::array<uint32_t, 15> kLineSpeeds = {
    110, 300, 600, 1200, 2400, 4800, 9600, 14400, 19200, 38400, 56000, 57600, 115200, 128000, 256000};
inline constexpr size_t kOfferedLineSpeeds = 13;
inline constexpr std::array kDataBits = {"4", "5", "6", "7", "8"};
inline constexpr std::array kParities = {"None", "Even", "Odd", "Mark", "Space"};
inline constexpr std::array kStopBits = {"1", "1.5", "2"};

struct ProjectConfig {
  std::string port_name = "COM1";
  uint8_t manufacturer_id = 0;
  uint8_t version_a = 0, version_b = 0;
  uint8_t software_major = 1, software_minor = 0;
  uint8_t manufacturer_index = 0, product_index = 0, configuration_index = 0;
  uint8_t partition_count = 0;  // as the configuration states it
  uint8_t image_type_index = 0;
  bool image_type_chosen = false;  // by the user; else SDB data has a default of its own
  uint8_t baud_index = 12, parity_index = 0, data_bits_index = 4, stop_bits_index = 0;
  bool compressed_image = false;
  uint8_t compression_type = 0;   // 0 Zlib, 1 Bin2Cod
  uint8_t compression_level = 5;  // index: level less one
  uint8_t sdb_format = 1;         // 0 single, 1 multiple
  uint8_t product_byte = 0;
  uint8_t database_variant = 0;  // 0: the LNB dialog stores all of word 1
  uint8_t product_table_count = 0;
  std::string product_name, configuration_name;  // single-byte text
  uint8_t image_entry_count = 0;                 // only says whether there are any; the list is `regions`
  std::vector<RegionEntry> regions;
  LoaderParameters loader;
  std::vector<PartitionEntry> partitions;  // at most kMaximumPartitions
  std::array<uint32_t, kPartitionTypes> partition_sizes{};
  std::array<uint8_t, 8> extra{};
  LanguageBlock first_languages, second_languages;
  ProductTable product_table;
  bool partitions_loaded = false;
  bool configuration_found = false;  // the file has a configuration at the three indices
};

// The configuration as messages name it, UTF-8: "configuration PRODUCT/CONFIGURATION"; the positions where
// the file has none there.
std::string ConfigurationName(const ProjectConfig& config);

// Tells that a job needs settings which the configuration does not have; `lack`, a sentence, says which. The
// answer is false.
bool RefuseSettings(const Context& context, const ProjectConfig& config, const std::string& lack);

}  // namespace vexa
