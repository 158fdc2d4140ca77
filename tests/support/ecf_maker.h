// Makes ECF files byte by byte, independent of the compiler, so that tests can state what the reader must
// find.
#pragma once

#include <string>
#include <vector>

#include "config/ecf.h"
#include "core/bytes.h"
#include "platform/files.h"

namespace vexa {

struct EcfPartitionSpec {
  uint8_t type = 0, number_less_one = 0, has_bitmap = 0, bits = 0;
  uint32_t start = 0, length = 0;
};
struct EcfLanguageSpec {
  std::string name = "LG";
  uint8_t list = 1;                 // not 0: the first
  std::vector<uint8_t> fills = {};  // a record filled with each
};
struct EcfRegionSpec {
  std::string name = {};
  uint8_t type = 0;
  uint32_t start = 0, end = 0;
};
struct EcfConfigurationSpec {
  std::string name = "C";
  uint8_t version_a = 0, version_b = 0;
  std::vector<EcfRegionSpec> regions = {};
  std::vector<EcfPartitionSpec> partitions = {};
  std::vector<EcfLanguageSpec> languages = {};
  int image_flag = -1, partition_flag = -1;  // -1: the count
  uint8_t extra_flag = 0;
  uint8_t loader[8] = {};
};
struct EcfProductSpec {
  std::string name = "P";
  uint8_t byte = 0, variant = 0, first_records = 0, second_records = 0;  // record i is filled with i + 1
  std::vector<EcfConfigurationSpec> configurations = {};
};
struct EcfManufacturerSpec {
  uint8_t id = 0;
  std::vector<EcfProductSpec> products = {};
};

Bytes MakeEcf(const std::vector<EcfManufacturerSpec>& manufacturers);

// Everything that a load finds in a file, a line each: first and last byte of table records, code and last
// byte of languages.
std::string Listing(const ProjectConfig& config);

}  // namespace vexa
