// Channel lists of VDR ("channels.conf"): UTF-8 text, a channel a line. The format is public: the program's
// manual page vdr(5).
//
//   NAME[,SHORT][;PROVIDER]:FREQUENCY:PARAMETERS:SOURCE:RATE:VIDEO:AUDIO:TELETEXT:CA:ID:NETWORK:STREAM:RADIO
//
//   NAME        ':' is written '|'; the last comma parts the short name
//   FREQUENCY   MHz; above 100,000 kHz
//   PARAMETERS  letters, each with a number or none: H V L R the polarisation; C the FEC (12 23 34 56 78,
//   other
//               numbers Auto); S the system (none and 0: DVB-S, others: DVB-S2). Other letters do not count
//   SOURCE      S19.2E: orbital position. T, C, A and other letters: another delivery system
//   RATE        kS/s
//   VIDEO       PID[+PCR][=CODEC]; 0 and 1 are none: a radio service when there is audio
//   AUDIO       PID[=LANGUAGE@TYPE],...[;PID...]: behind the semicolon Dolby, taken when there is none before
//   it CA          0: free; else hexadecimal numbers of the systems ID          program number, to 65535;
//   fields behind it may be missing
//
// Letters may be small. The PCR PID is the video PID where none is given. A line that begins with ':' is the
// title of a group. Satellites are named by their position.
#pragma once

#include <span>

#include "import/channel_collector.h"
#include "import/list_format.h"

namespace vexa {

// Fills `work` (emptied first); what the receiver cannot have, and what cannot be read, is counted.
void ReadVdr(std::span<const uint8_t> list, const DefaultRecords& defaults, WorkRecords& work,
             const Progress& progress, const ListOptions& options, ListLosses& losses);

// Whether a file may be such a list by its first characters.
bool LooksLikeVdr(const Path& path, std::string_view start);

}  // namespace vexa
