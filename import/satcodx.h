// SatcoDX lists (".sdx"): text records of one length, one service or transponder each.
//
// The record length is 128 when the byte at file offset 128 is 'S', else 129; 127 bytes of a record are read.
// '_' fills an empty column. Layout A: format version "02" or "03" in the file's first record; layout B: any
// other version.
//
//     0  7 "SATCODX"            8  2 format version       10 18 satellite name (A)
//    28  1 record type: T TV, R radio, _ transponder
//    33  6 frequency MHz       42  1 polarisation         43  8 service name
//    51  4 position, 0.1 deg   69  5 symbol rate kS/s     74  1 FEC
//    75  4 video PID           79  4 audio PID            83  4 PCR PID
//    87  5 program number     111  4 "____": free
//   115 12 rest of the service name (A), satellite name (B)
//
// Layout 105, as televisions write it: records of 132 bytes, often with CR LF or LF behind each, channels in
// any order, other data behind the last record, perhaps a byte-order mark before the first. It differs in
//     7  3 "105"               10 18 satellite name      115 17 rest of the service name
// Names may begin with a byte below 0x20 that names a character table.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>

#include "import/list_losses.h"
#include "import/list_names.h"
#include "import/work_files.h"

namespace vexa {

inline constexpr size_t kSatcodxReadLength = 127;       // bytes; no record is shorter
inline constexpr size_t kLongestSatcodxRecord = 65535;  // that can be asked for

enum class SatcodxLayout {
  kDefault,  // as the text above says
  kAuto,     // 105 for that version, else as above with the rest of a name always behind its start
  kA,        // by the rules of layout A or B, whatever the version
  kB,
  k105
};

struct SatcodxLayoutName {
  const char* name;  // as the user chooses it
  SatcodxLayout layout;
};
inline constexpr SatcodxLayoutName kSatcodxLayouts[] = {{"default", SatcodxLayout::kDefault},
                                                        {"auto", SatcodxLayout::kAuto},
                                                        {"a", SatcodxLayout::kA},
                                                        {"b", SatcodxLayout::kB},
                                                        {"105", SatcodxLayout::k105}};

struct SatcodxOptions {
  SatcodxLayout layout = SatcodxLayout::kDefault;
  // Bytes from record to record, at least kSatcodxReadLength. 0: kAuto and k105 take the length at which most
  // records begin with "SATCODX", the others go by the byte at offset 128.
  size_t record_length = 0;
  // Hears, before a file is read by the default layout and length, what speaks against them, as SatcodxDoubt
  // gives it. May be empty.
  std::function<void(const std::string& why)> doubt = {};

  // Whether what does not begin with "SATCODX" is no record, and a byte-order mark no part of the first.
  bool LooksForRecords() const { return layout == SatcodxLayout::kAuto || layout == SatcodxLayout::k105; }
};

// Fills `work` (emptied first). Any bytes are a list; what is no number reads as 0.
void ReadSatcodx(std::span<const uint8_t> list, const DefaultRecords& defaults, WorkRecords& work,
                 const Progress& progress = {}, const SatcodxOptions& options = {},
                 const ListPages& pages = {}, ListLosses* losses = nullptr);

// Bytes from record to record, as ReadSatcodx takes them from a list by these options.
size_t SatcodxRecordLength(std::span<const uint8_t> list, const SatcodxOptions& options);

// What SatcodxDoubt says of such a list.
inline constexpr const char* kByteOrderMarkDoubt = "a byte-order mark stands before its first record";
// What shows that the default options do not fit the list, as a clause such as "its version is 105"; empty
// when nothing does.
std::string SatcodxDoubt(std::span<const uint8_t> list);

// Cuts a name before its first two consecutive spaces; false and unchanged when it has none.
bool TrimAtDoubleSpace(char (&name)[kNameSize]);

}  // namespace vexa
