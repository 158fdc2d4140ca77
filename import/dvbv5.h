// Transponder lists of the DVB tools of Linux ("scan files"): text, a file a satellite, no services. The
// format is public with those tools (libdvbv5).
//
//   [ANY NAME]                          begins a transponder
//       DELIVERY_SYSTEM = DVBS          DVBS2; all others are left out
//       FREQUENCY = 11739000            kHz; below 100,000 MHz
//       POLARIZATION = VERTICAL         HORIZONTAL, LEFT, RIGHT
//       SYMBOL_RATE = 27500000          symbols a second
//       INNER_FEC = 3/4                 what a record cannot name, and none, is Auto
//       ...                             other keys do not count
//
//   S 11739000 V 27500000 3/4 ...       an older file; "S2": DVB-S2. Other letters are other systems
//
// '#' begins a comment. The satellite's name is the file's, without folder and extension; its orbital
// position stands at the end of that, behind the last '-' or '_': "Astra-19.2E".
#pragma once

#include <span>
#include <string>

#include "import/channel_collector.h"
#include "import/list_format.h"

namespace vexa {

// Fills `work` (emptied first); what the receiver cannot have, and what cannot be read, is counted. `name`:
// the file's, UTF-8, without its folder. Without a position in it: 0, West, and a warning.
void ReadDvbv5(std::span<const uint8_t> list, const std::string& name, const DefaultRecords& defaults,
               WorkRecords& work, const Progress& progress, const ListOptions& options, ListLosses& losses);

// Whether a file may be such a list by its first characters.
bool LooksLikeDvbv5(const Path& path, std::string_view start);

}  // namespace vexa
