// Which records of one list are there twice, as the check of a database and the editor's selection see it.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "core/database.h"

namespace vexa {

// For each record of the list the place, from 0, of the first one before it that it repeats; nothing for one
// that repeats none. The lists are in the order of the database, whole or with records left out.
using Repeats = std::vector<std::optional<size_t>>;

// By orbital position and side; unused places and satellites at angle 0 repeat nothing.
Repeats RepeatedSatellites(const std::vector<Satellite*>& satellites);
// Of one satellite: by polarisation and a frequency within 3 MHz.
Repeats RepeatedCarriers(const std::vector<Carrier*>& carriers);
// Of one carrier: by name, byte by byte; empty names repeat nothing.
Repeats RepeatedServices(const std::vector<Service*>& services);
// Of a favourite list: the same service.
Repeats RepeatedEntries(const std::vector<Service*>& entries);

}  // namespace vexa
