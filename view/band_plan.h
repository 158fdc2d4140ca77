// The band plan of a satellite: its carriers as blocks over the frequency axis.
#pragma once

#include <cstdint>
#include <vector>

#include "core/database.h"
#include "core/edit.h"
#include "platform/code_page.h"
#include "view/drawing.h"

namespace vexa {

// What a carrier takes of the band: its symbol rate times 1.35, the roll-off, around its frequency.
struct CarrierBlock {
  const Carrier* carrier = nullptr;
  int64_t start = 0, end = 0;         // Hz; the same for a symbol rate of 0
  bool outside = false;               // its frequency is none that the LNB's type receives
  const Carrier* overlaps = nullptr;  // a carrier of the same polarisation, part of whose band it takes
};

// The blocks of the satellite's carriers, in their order. Blocks that only touch do not overlap.
std::vector<CarrierBlock> BlocksOf(const StaticDatabase& database, const Satellite& satellite);

// One panel for each band that holds a carrier, and for that of the satellite's LNB: IF (950 to 2150 MHz), C
// (3000 to 4800 MHz), Ku (10700 to 12750 MHz). A panel has one lane a polarisation; a block's height grows
// with its services, its paint is its FEC. A carrier in no band stands at the edge of the nearest panel, at
// most 40 MHz outside. Blocks that overlap or that the LNB does not receive are faulty. The bar is what the
// LNB receives; the edge at 11700 MHz is where a universal LNB changes its oscillator. Names stand in `page`.
// Without carriers: no shapes.
Drawing BandPlan(const StaticDatabase& database, const Satellite& satellite, const CodePage& page);

// Where the axis of every panel begins and ends, in units of the drawing.
inline constexpr double kPlanLeft = 30, kPlanRight = 990;
inline constexpr uint32_t kPlanMargin = 40;  // MHz that a panel shows on either side of its band

}  // namespace vexa
