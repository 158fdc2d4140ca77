// Places in the tree of a database window that stay meaningful while records come and go: positions instead
// of pointers.
#pragma once

#include <cstdint>
#include <vector>

#include "core/check.h"
#include "core/find.h"
#include "view/view_model.h"

namespace vexa {

// Position among its siblings of each node on the way, from the root: {0, 1, 4} is the fifth satellite of the
// first SDB. Positions of the levels of an SDB:
inline constexpr uint32_t kLnbLevelPosition = 0, kSatelliteLevelPosition = 1, kTvGroupLevelPosition = 2,
                          kRadioGroupLevelPosition = 3;
using TreePath = std::vector<uint32_t>;

// The nodes along the path, as far as they exist; the last one may be an entry of a favourite list.
std::vector<NodeRef> NodesAlong(const Document& document, const TreePath& path);

// The way to a satellite, carrier or service by its places.
TreePath PathOf(const RecordPlace& place);
// The way to what a finding is about.
TreePath PathOf(const Document& document, const FindingPlace& place);
// The way to any node of the document's tree, and to an entry of a favourite list.
TreePath PathOf(const Document& document, const NodeRef& node);
// The satellite, carrier or service of the node; of a favourite entry: of the service that it names. Other
// nodes of an SDB stand before its first satellite.
RecordPlace PlaceOf(const Document& document, const NodeRef& node);

}  // namespace vexa
