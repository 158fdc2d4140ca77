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
#pragma once

#include <span>

#include "import/work_files.h"

namespace vexa {

// Fills `work` (emptied first). Any bytes are a list; what is no number reads as 0.
void ReadSatcodx(std::span<const uint8_t> list, const DefaultRecords& defaults, WorkFiles& work,
                 const Progress& progress = {});

// 1; a file that cannot be opened is an empty list. 0 after a message: reading broke off.
int ImportSdxFile(const Context& context, const Path& path, const DefaultRecords& defaults, WorkFiles& work);

// Cuts a name before its first two consecutive spaces; false and unchanged when it has none.
bool TrimAtDoubleSpace(char (&name)[kNameSize]);

}  // namespace vexa
