// Brings what differs (compare.h) from one database into the other, difference by difference.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "core/compare.h"
#include "core/database.h"
#include "core/messages.h"

namespace vexa {

struct TakenOver {
  size_t taken = 0;
  size_t left_out = 0;    // favourite entries whose service is not in the database
  size_t left_lists = 0;  // favourite entries of services that changed between TV and radio
};

// Changes `document` as the chosen ones (places) of `differences` say, which are those of
// CompareDocuments(document, sdb, other, other_sdb) as both are. Added records come with all that is below
// them, behind the record that they follow in the other database (services in the running order, too), and
// removed ones go with it; moved ones take their place behind that record. Fields, names, flags and the
// running order become the other's. Services that change between TV and radio leave the favourite lists of
// their old type. Satellites that are added take the room of unused places. Nothing after a message, with
// nothing changed: a table would be too full, or the last LNB would go.
std::optional<TakenOver> TakeOver(const Messages& messages, Document& document, size_t sdb,
                                  const Document& other, size_t other_sdb,
                                  const std::vector<Difference>& differences,
                                  const std::vector<size_t>& chosen);

}  // namespace vexa
