// An ECF file as values, between the readable description and the bytes. Configurations and products stand
// once, however often they are referred to.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "config/project_config.h"
#include "core/bytes.h"

namespace vexa {

struct ContentPartition {
  uint8_t type = 0, number = 1;  // the number from 1
  std::optional<uint8_t> bitmap_bits;
  uint32_t start = 0, length = 0;
};

struct ContentConfiguration {
  std::string name;  // single-byte text, as all texts here
  uint8_t version_a = 0, version_b = 0;
  std::vector<RegionEntry> regions;
  LoaderParameters loader;  // only with regions
  std::vector<ContentPartition> partitions;
  std::optional<std::array<uint8_t, 8>> extra;
  std::optional<std::vector<LanguageRecord>> menu_languages, audio_languages;
};

struct ContentProduct {
  std::string name;
  uint8_t byte = 0, variant = 0;
  std::vector<size_t> configurations;  // places in EcfContent::configurations
  ProductTable table, second_table;
};

struct ContentManufacturer {
  uint8_t id = 0;
  std::vector<size_t> products;  // places in EcfContent::products
};

struct EcfContent {
  std::vector<ContentConfiguration> configurations;
  std::vector<ContentProduct> products;
  std::vector<ContentManufacturer> manufacturers;
};

// The file; nothing when it would be larger than kMaximumEcfSize.
std::optional<Bytes> WriteEcf(const EcfContent& content);

// What of the file a description can state, equal configurations and products once, but for those that one
// product or one manufacturer has twice. Only the blocks in their order count, no offset. Whether that is
// everything shows when it is written again.
EcfContent ReadEcfContent(std::span<const uint8_t> file);

}  // namespace vexa
