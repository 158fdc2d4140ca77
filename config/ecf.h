// The ECF file: which receivers there are. Read only; little-endian blocks linked by absolute offsets.
// Bytes that no row names have no meaning here.
//
// File header, 24 bytes
//   0 2 magic "Qx"    14 2 manufacturers
// Manufacturer, 8 bytes: the first at 24, each further one at its predecessor's `next`; its products follow
//   0 1 id    2 2 products    4 4 next
// Product, 48 bytes: its configurations follow
//   3 1 product byte    4 33 name    37 1 configurations    38 1 database variant
//   39 1 T: records of the product table    42 1 K: how many of them are in the second group    44 4 next
//   The product table ends at `next`: 8 bytes, T - K records of 20 bytes; when K > 0, 8 bytes and K records.
// Configuration, 148 bytes
//   0 128 name    128 1 version A    129 1 version B    132 1 extra block    133 1 partition block
//   134 1 image block    135 1 language blocks    144 4 next
//   Behind it, those that are there in this order; a block header has 16 bytes with the count at 9:
//   image block      header, count regions of 96 bytes, loader parameters of 8 bytes when count > 0
//   partition block  header, count partitions of 16 bytes
//   extra block      header, 8 bytes
//   language block   0 3 "LG"    3 1 count    4 1 list (not 0: first)    8 count records of 36 bytes
// Region
//   0 50 name    50 1 type    52 4 start    56 4 end (exclusive)
// Loader parameters
//   0 1 header tag    2 1 packet tag    4 2 block size in KiB    6 2 packet size in bytes
// Partition
//   0 1 type    1 1 number less one    2 1 has a bitmap    3 1 bits of the bitmap    8 4 start    12 4 length
//   The bitmap lengthens the partition by B - B % 4 + 4 bytes, B its whole bytes.
// Language record, a convention of the shipped file and the user box dialog
//   0 4 code (ISO 639-2), NUL-padded    4 32 name, NUL-padded
//
// A walk only moves forward: an offset that is read through and points behind what was read is damage.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "config/project_config.h"
#include "core/context.h"

namespace vexa {

inline constexpr uint64_t kMaximumEcfSize = uint64_t{64} << 20;

// Loads the manufacturer, product and configuration at the indices stored in `config` from the file.
// True: loaded (an index beyond the counts loads what there is of the levels above). False after a message;
// `config` is then as it was.
bool InitConfig(const Context& context, const Path& ecf, ProjectConfig& config);

// Everything listed, for the lists of the configuration dialog and `ecf show`.
struct EcfConfiguration {
  std::string name;  // single-byte text, as all names here
  std::vector<std::string> region_names;
  bool has_images = false, has_partitions = false, has_extra = false;
};
struct EcfProduct {
  std::string name;
  uint8_t database_variant = 0;
  std::vector<EcfConfiguration> configurations;
};
struct EcfManufacturer {
  uint8_t id = 0;
  std::vector<EcfProduct> products;
};
struct EcfTree {
  std::vector<EcfManufacturer> manufacturers;
};
// Nothing after a message.
std::optional<EcfTree> ReadEcfTree(const Context& context, const Path& ecf);
// The configuration at the three positions; nullptr when one of them is beyond its list.
const EcfConfiguration* FindConfiguration(const EcfTree& tree, size_t manufacturer, size_t product,
                                          size_t configuration);

// Which facilities a command needs of the configuration.
struct Facilities {
  bool images = false, partitions = false, extra = false;
  bool Any() const { return images || partitions || extra; }
};
// Looks at the product at `product_index` of every manufacturer, not only of the chosen one.
// Says nothing, except for a wrong magic.
bool IsConfigurationAvailable(const Context& context, const Path& ecf, uint8_t product_index,
                              Facilities needs);

// True when the file can be read and begins with the magic "Qx". Silent.
bool IsEcfFile(const Path& ecf);

// Name and code of a language, single-byte text.
std::string LanguageName(const LanguageRecord& record);
std::string LanguageCode(const LanguageRecord& record);

// Compiles the readable description (TOML) into an ECF file. Its grammar stands at the top of
// data/receivers.toml. Nothing after its errors, all of them, in the order of the text: "FILE(LINE,COLUMN):
// PATH: TEXT", PATH as in `configuration.flash.regions[2].end` with places from 0. A text that is no TOML has
// one error without a path. `name` stands for the file in messages.
std::optional<Bytes> CompileEcf(const Context& context, const Path& toml);
// The same of a description in memory.
std::optional<Bytes> CompileEcfText(const Context& context, const std::string& name, std::string_view text);

// The inverse: a description that compiles to the same bytes. When the file holds what no description states,
// or what the compiler refuses, warnings say what; then the text states what it can, and `compiles` is false.
// The lines that the compiler names are the text's.
std::string DescribeEcf(const Context& context, const std::string& name, std::span<const uint8_t> file,
                        bool& compiles);

// How many bytes a bitmap of so many bits lengthens its partition by: whole 32-bit words, one more than the
// bits need when their bytes are whole words already.
uint32_t BitmapSize(uint32_t bits);

inline constexpr uint16_t kMaximumPacketSize = 2979;  // the largest data packet a receiver sends back

}  // namespace vexa
