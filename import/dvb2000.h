// DVB2000 lists (".dvb"): binary records of 64 bytes, numbers big-endian; there is no file header.
//
//     4 u16 program number     8 u16 frequency MHz    10 u16 symbol rate kS/s
//    12 u8 FEC: 2 1/2, 3 2/3, 4 3/4, 6 5/6, 7 7/8     14 u8 polarisation (two bits)
//    16 u16 video PID         18 u16 audio PID        20 u16 PCR PID (14 bits each)
//    27 u8 service type: 1 TV, 2 radio
//    32 text: service name (18), or satellite name, '-', position, degree sign 0xB0, hemisphere letter
//
// A record without frequency, symbol rate and PIDs is a satellite; the services behind it are its own.
#pragma once

#include <span>

#include "import/list_losses.h"
#include "import/list_names.h"
#include "import/work_files.h"

namespace vexa {

// Fills `work` (emptied first). Satellites without '-' and services before any satellite are skipped. Each
// service stores the index of its carrier plus one, which the owners' counts make harmless.
void ReadDvb2000(std::span<const uint8_t> list, const DefaultRecords& defaults, WorkRecords& work,
                 const Progress& progress = {}, const ListPages& pages = {}, ListLosses* losses = nullptr);

}  // namespace vexa
