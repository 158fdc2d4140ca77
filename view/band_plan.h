// The band plan of a satellite: its carriers as blocks over the frequency axis.
#pragma once

#include <cstdint>
#include <optional>
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

struct PlanPanel {
  double top = 0, foot = 0;  // in units of the drawing
  double low = 0, high = 0;  // MHz at kPlanLeft and kPlanRight
};
struct Plan {
  Drawing drawing;  // an item is the carrier's place among those of its satellite
  std::vector<PlanPanel> panels;
};
// One panel for each band that holds a carrier, and for that of the satellite's LNB: IF (950 to 2150 MHz), C
// (3000 to 4800 MHz), Ku (10700 to 12750 MHz). A panel has one lane a polarisation; a block's height grows
// with its services, its paint is its FEC. A carrier in no band stands at the edge of the nearest panel, at
// most 40 MHz outside. Blocks that overlap or that the LNB does not receive are faulty. The bar is what the
// LNB receives; the edge at 11700 MHz is where a universal LNB changes its oscillator.
// Names stand in `page`. With a `range` (MHz, the lowest below the highest) one panel shows that part alone.
// The carriers of `beneath`, which may be null, lie faint under the others: those of another database's
// satellite. Without carriers and range: no shapes.
Plan PlanOf(const StaticDatabase& database, const Satellite& satellite, const CodePage& page,
            const std::optional<FrequencyRange>& range = {}, const Satellite* beneath = nullptr);

// Where the axis of every panel begins and ends, in units of the drawing.
inline constexpr double kPlanLeft = 30, kPlanRight = 990;
inline constexpr uint32_t kPlanMargin = 40;  // MHz that a panel shows on either side of its band

// What a part of an axis shows, from one x to another in either order: whole MHz, at least kLeastRange, none
// outside the panel.
inline constexpr uint32_t kLeastRange = 20;
FrequencyRange RangeBetween(const PlanPanel& panel, double x1, double x2);

}  // namespace vexa
