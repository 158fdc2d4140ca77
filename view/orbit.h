// The satellites of an SDB on the arc from West to East.
#pragma once

#include <cstddef>
#include <vector>

#include "core/database.h"
#include "platform/code_page.h"
#include "view/drawing.h"

namespace vexa {

// The satellites that the arc shows: all but unused places of the table, from West to East, then in their
// order. Positions are tenths of a degree, West negative.
struct OrbitPlace {
  const Satellite* satellite = nullptr;
  int position = 0;
  size_t services = 0;  // of all its carriers
};
std::vector<OrbitPlace> OrbitPlaces(const StaticDatabase& database);

// A disc for each satellite: its paint is its LNB, its area grows with the services; the ring around it grows
// with the carriers. Names with positions stand above, a leader leads to each. The arc shows the degrees that
// the satellites take, at least 60. Names stand in `page`.
Drawing Orbit(const StaticDatabase& database, const CodePage& page);

}  // namespace vexa
