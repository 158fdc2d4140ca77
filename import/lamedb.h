// Service lists of Enigma2 receivers ("lamedb"), versions 4 and 5: UTF-8 text. The format is public with the
// receivers' software.
//
//   eDVB services /4/                          eDVB services /5/
//   transponders                               # comment
//   NAMESPACE:STREAM:NETWORK                   t:NAMESPACE:STREAM:NETWORK,s:FREQUENCY:...[,...]
//   <tab>s FREQUENCY:RATE:POL:FEC:POS:INV[:FLAGS[:SYSTEM[:...]]]
//   /
//   end
//   services                                   s:ID:NAMESPACE:STREAM:NETWORK:TYPE:NUMBER[:...],"NAME",p:...
//   ID:NAMESPACE:STREAM:NETWORK:TYPE:NUMBER[:...]
//   NAME                                       the name may be empty
//   p:PROVIDER,c:KKPPPP,C:CAID,f:FLAGS         in any order, none of them needed
//   end
//
//   ID NAMESPACE STREAM NETWORK  hexadecimal; the last three name the transponder
//   FREQUENCY, RATE              kHz, symbols a second
//   POL                          0 H, 1 V, 2 L, 3 R
//   FEC                          1 1/2, 2 2/3, 3 3/4, 4 5/6, 5 7/8, others Auto
//   POS                          tenths of a degree East; negative, and above 1800 less 3600, West
//   SYSTEM                       0 or none DVB-S, others DVB-S2
//   s; t, c and others           the delivery system: satellite; terrestrial, cable and so on
//   TYPE                         decimal: 1 17 22 25 28 31 32 television, 2 7 10 radio
//   c:KKPPPP                     a PID in hexadecimal, of one to four digits: kind 00 video, 01 audio, 03
//   PCR,
//                                04 AC3, taken when there is no other sound; other kinds do not count
//   C:CAID                       any number: the service is scrambled
//
// Lines behind the last "end" do not count. Satellites are named by their position.
#pragma once

#include <span>

#include "import/channel_collector.h"
#include "import/list_format.h"

namespace vexa {

// Fills `work` (emptied first); what the receiver cannot have, and what cannot be read, is counted. A
// list of another version has nothing.
void ReadLamedb(std::span<const uint8_t> list, const DefaultRecords& defaults, WorkRecords& work,
                const Progress& progress, const ListOptions& options, ListLosses& losses);

// Whether a file may be such a list by its first characters.
bool LooksLikeLamedb(const Path& path, std::string_view start);

}  // namespace vexa
