// Lyngsat lists (".dat"): text lines, known by their first four characters, fields between single spaces.
//
//   :SAT "name" position hemisphere             degrees with a point; 'W' is west, all else east
//   :TRP frequency rateX field polarisation field FEC    MHz; kS/s and one character; H, V, L, else right
//   :CHN "name" number type                     program number; 'T' is TV, all else radio
//
// A line of more than 255 characters is taken in pieces of 255, each a line.
#pragma once

#include <span>

#include "import/list_losses.h"
#include "import/list_names.h"
#include "import/work_files.h"

namespace vexa {

// Fills `work` (emptied first). A line without its fields, a transponder before any satellite and a service
// before any transponder are skipped; a transponder's FEC may be missing (Auto).
void ReadLyngsat(std::span<const uint8_t> list, const DefaultRecords& defaults, WorkRecords& work,
                 const Progress& progress = {}, const ListPages& pages = {}, ListLosses* losses = nullptr);

}  // namespace vexa
