// The BIN file: the one file in which the editor keeps its work. All integers little-endian.
//
// Container header, 24 bytes
//   0 2 magic "Qz"            2 1 major version   3 1 minor version
//   4 1 0x10 (else the file is one bare SDB stream)   5 1 0 (else refused)   6 1 0   7 1 0xFF
//   8 3 initials              11 1 payload compressed
//   12 4 payload size         16 4 stored payload size   20 2 SDBs   22 2 UBIs (0: no UBI block)
// Directory at 24, 28 bytes an entry: each SDB, then "UBIblk" when there are UBIs
//   0 7 name, NUL-terminated  7 1 stream compressed   8 4 size   12 4 stored size
//   16 4 offset of the stream in the uncompressed layout   20 2 16  22 2 85  24 2 carriers  26 2 services
// Streams in directory order. An SDB stream is a 24-byte header and the blocks "lnb", "Satelli", "Carrier",
// "Service", "OSL" and, in version 6, "FGLblk", each behind a 16-byte block header
//   0 8 name, NUL-padded      8 2 record size     10 2 0xFFFF   12 2 record count   14 2 0xFFFF
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/context.h"
#include "core/database.h"

namespace vexa {

inline constexpr size_t kBinHeaderSize = 24;          // of the container, and of each stream
inline constexpr size_t kBinEntrySize = 28;           // of the directory
inline constexpr size_t kBinBlockHeaderSize = 16;     // of a stream's blocks
inline constexpr uint64_t kMaximumBinSize = 0x20000;  // what a receiver takes
inline constexpr uint64_t kMaximumStreamSize = uint64_t{128} << 20;

struct BinVersion {
  uint8_t major = 1, minor = 0;
  std::string initials;  // padded to three with spaces
};

// Which SDBs and UBIs of the document a save takes: bit i is the i-th in tree order.
struct BinSelection {
  uint32_t sdbs = ~0u;
  uint32_t ubis = ~0u;
};

// What fills the unused places of a stream.
const DefaultRecords& DefaultsOf(const Context& context);

// Adds every SDB and UBI of the file to `document`. True when the open succeeded; on false the document holds
// what was read before the failure (nothing when nothing was), and a message was shown.
//
// `document.read_whole` becomes false, on success as well, when something of the file was left out: a save
// must not put the document in the place of that file then. (On success a maximum left it out, message
// shown.)
//
// A file is judged by its first bytes and its size before the rest is read; what stands beyond
// kMaximumStreamSize is not looked at.
bool OpenBin(const Context& context, const Path& path, Document& document);
bool OpenBinBytes(const Context& context, std::span<const uint8_t> file, Document& document);

// False after a message: nothing is selected, or an SDB without LNB or satellite is.
bool MayBeSaved(const Context& context, const Document& document, const BinSelection& selection = {});
// The container as a save writes it, whether the document may be saved or not. Nothing after the message of a
// failed compression.
std::optional<Bytes> BuildBin(const Context& context, const Document& document,
                              const BinVersion& version = {}, const BinSelection& selection = {});
// As BuildBin, replacing `path` whole. The size of the file in bytes; nothing after a message, also when the
// document may not be saved, the old file being untouched then. A file above kMaximumBinSize is written all
// the same: CheckBinSize tells so afterwards, from the size alone, since the file may be gone or changed by
// then.
std::optional<uint64_t> SaveBin(const Context& context, const Document& document, const Path& path,
                                const BinVersion& version = {}, const BinSelection& selection = {});
// A container of one SDB, no UBI, with a version-5 stream of the chosen satellites (table positions,
// ascending).
std::optional<uint64_t> SaveSatellites(const Context& context, const Document& document, size_t sdb,
                                       const std::vector<size_t>& satellites, const Path& path,
                                       const BinVersion& version = {});

// True when a file of `size` bytes is one that a receiver takes; else shows the size message.
bool CheckBinSize(const Context& context, uint64_t size);

// One SDB as a stream. Sets the fields that a save sets (first service, carrier and LNB indices) in the bytes
// only. Unused LNB and satellite places are filled from `defaults`.
Bytes WriteSdbStream(const StaticDatabase& database, const BinVersion& version,
                     const DefaultRecords& defaults = FactoryDefaults());

// Reads one SDB stream into an empty database. `used` is where the stream ended. False after a message.
bool ReadSdbStream(const Context& context, std::span<const uint8_t> stream, StaticDatabase& database,
                   size_t& used);

// What a save now would write, in bytes: each SDB's stream and the user boxes' as they are stored, the whole
// file.
struct BinSizes {
  std::vector<size_t> sdbs;
  size_t ubis = 0, total = 0;
};
// Nothing after a failed compression (message shown).
std::optional<BinSizes> SizesWhenSaved(const Context& context, const Document& document);

// The text of the "Bin file information" box: sizes as a save now would store them.
std::string BinInformation(const Context& context, const Document& document);

}  // namespace vexa
