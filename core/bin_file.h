// The BIN file: the one file in which the editor keeps its work. All integers are little-endian. A row names
// the first byte, the number of bytes, and what stands there; records are those of core/records.h.
//
// The file is a container, or one bare SDB stream.
//
// Container header, 24 bytes
//    0  2  magic "Qz"; another one is opened as well
//    2  1  major version of the file
//    3  1  minor version
//    4  1  0x10; anything else: the file is a bare stream
//    5  1  0; anything else is refused
//    6  1  0
//    7  1  0xFF
//    8  3  initials, padded with spaces
//   11  1  1: everything behind this header is stored compressed
//   12  4  size of what is behind this header
//   16  4  its size as stored
//   20  2  number of SDBs
//   22  2  number of user box records; 0: there is no entry for them
// Directory, at 24: an entry of 28 bytes for each SDB, then one named "UBIblk" for the user box records
//    0  7  name, up to six characters, NUL-padded
//    7  1  1: the stream is stored compressed
//    8  4  size of the stream
//   12  4  its size as stored
//   16  4  offset of the stream from the start of the file, the payload not being compressed
//   20  2  16, the LNBs; this and what follows is 0 for the user box records
//   22  2  85, the satellites
//   24  2  number of carriers
//   26  2  number of services
// The streams follow in the order of the directory.
//
// SDB stream: a header of 24 bytes
//    0  2  magic "Qz"; another one is refused
//    2  1  2
//    3  3  0
//    6  2  stream version: 6; 5 in a file of selected satellites, which has no favourites
//    8  8  0
//   16  3  initials
//   19  1  0
//   20  1  major version of the file
//   21  1  minor version
//   22  1  0xFF
//   23  1  0
// and blocks in this order, a block header and that many entries
//   "lnb"      LnbRecord: 16, places out of use filled up from the defaults
//   "Satelli"  SatelliteRecord: 85, places out of use named "NewSat 1" and so on
//   "Carrier"  CarrierRecord, in the order of the SDB's array
//   "Service"  ServiceRecord, carrier by carrier
//   "OSL"      the service order: two bytes an entry, a place in the service block; behind an odd number of
//              entries two bytes 0xFF
//   "FGLblk"   in version 6: eight favourite groups; the record size in its header is 0
// Favourite group, T entries of the TV list and R of the radio list
//    0 44  FavouriteRecord, with T and R in it
//   44 2T  TV entries: two bytes each, a place in the service block
//      2R  radio entries
//       2  0xFF 0xFF, only when T + R is odd
// Stream of the user box records: a block header "UserBox", whose bytes 11 and 15 are 0, and for each record
//    0  8  name, up to seven characters, NUL-padded
//    8 28  UserBoxInfo; 24 bytes, without the lock code, in older files
// Behind a bare SDB stream stands at most one of them, without a name.
// Block header, 16 bytes
//    0  8  name, NUL-padded
//    8  2  bytes of an entry
//   10  2  0xFFFF
//   12  2  number of entries
//   14  2  0xFFFF
//
// A file of one SDB "SDB1" with one satellite, one carrier and three services, of which the third is the TV
// list of the first favourite group "Mine" and the first two are its radio list. At 0 stand header and
// directory
//   51 7A 01 00 10 00 00 FF  20 20 20 00 54 0C 00 00  54 0C 00 00 01 00 00 00
//   53 44 42 31 00 00 00 00  38 0C 00 00 38 0C 00 00  34 00 00 00 10 00 55 00  01 00 03 00
// at 2780 (its stream begins at 52) the service order and the first group
//   4F 53 4C 00 00 00 00 00  02 00 FF FF 03 00 FF FF  00 00 01 00 02 00 FF FF
//   46 47 4C 62 6C 6B 00 00  00 00 FF FF 08 00 FF FF  10 00 02 00
//   4D 69 6E 65 00 00 00 00  00 00 00 00 00 00 00 00  00 00 00 00
//   4D 69 6E 65 00 00 00 00  00 00 00 00 00 00 00 00  00 00 00 00  02 00 00 00 01 00 FF FF
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
// The same of a file that is in memory.
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

// True when the file at `path`, of `size` bytes, is one that a receiver takes; else shows the size message.
bool CheckBinSize(const Context& context, const Path& path, uint64_t size);
// Tells that a database was not written to `path`, with the text for how far it came.
void TellUnsaved(const Messages& messages, const Path& path, const WriteResult& written);

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
