// The satellites of an SDB on the arc from West to East.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "core/database.h"
#include "platform/code_page.h"
#include "view/drawing.h"
#include "view/look_angle.h"

namespace vexa {

// The satellites that the arc shows: all but unused places of the table, from West to East, then in their
// order. Positions are tenths of a degree, West negative.
struct OrbitPlace {
  const Satellite* satellite = nullptr;
  int position = 0;
  size_t services = 0;  // of all its carriers
  size_t item = 0;      // in the table of satellites
};
// Tenths of a degree, West negative.
int OrbitalPositionOf(const Satellite& satellite);
std::vector<OrbitPlace> OrbitPlaces(const StaticDatabase& database);

// A disc for each satellite: its paint is its LNB, its area grows with the services; the ring around it grows
// with the carriers. Names with positions stand above, a leader leads to each. The arc shows the degrees that
// the satellites take, at least 60. Names stand in `page`. From a `place` the tips say where to look; what is
// below its horizon lies beneath. An item is the satellite's place in the table of satellites.
Drawing Orbit(const StaticDatabase& database, const CodePage& page, const std::optional<Place>& place = {});

}  // namespace vexa
