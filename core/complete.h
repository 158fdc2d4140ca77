// What an imported list leaves open, completed: receiver positions, the side of orbital positions, LNBs. Each
// function is a part of one change of the open database; places that nobody uses are left alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/database.h"
#include "core/messages.h"

namespace vexa {

// Which of them are wanted.
struct Completion {
  bool number_positions = false, sides = false, lnbs_by_band = false, empty_slots = false;

  bool any() const { return number_positions || sides || lnbs_by_band || empty_slots; }
};

// Positions 1, 2, 3 ... in table order, as many as the rules of records allow. How many satellites kept
// theirs because there are more.
size_t NumberPositions(StaticDatabase& database);

// East or West as a table of known orbital positions has it. The places, from 0, of the satellites that it
// does not know, or on both sides; they stay as they are, and satellites at angle 0 too.
std::vector<size_t> SetKnownSides(StaticDatabase& database);

// The first LNBs become those that the carriers' bands need, in the order IF (950-2150 MHz), C (3000-4200
// MHz, oscillator 5150), Ku (10700-12750 MHz, universal 9750/10600); all else of them is as in `defaults`. A
// satellite gets the LNB of most of its carriers, of several the first; without one in a band it keeps its
// own.
void SetLnbsByBand(StaticDatabase& database, const DefaultRecords& defaults);

// The places of the table that are not used become satellites of the window's own, as they are in every file:
// the default satellite without carriers, "NewSat 1" and so on behind the others.
void AddEmptySlots(StaticDatabase& database, const DefaultRecords& defaults);

// All that is wanted; `says_sides`: the list told East from West. The warnings of what was not done, whole
// texts.
std::vector<std::string> Complete(StaticDatabase& database, const Completion& wanted, bool says_sides,
                                  const DefaultRecords& defaults);

// True: East. Nothing for a position in tenths of a degree that is known on neither side or on both; up to
// 0.2 degrees away from a known one counts where none is nearer.
std::optional<bool> KnownSide(uint32_t tenths);

}  // namespace vexa
