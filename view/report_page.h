// One SDB as one HTML page for people: totals, the orbit, what the check finds, a band plan for each
// satellite with carriers, tables of satellites, carriers, services and favourites. The page is whole in
// itself: styles, script and pictures stand in it, and it loads nothing.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "core/database.h"
#include "platform/code_page.h"
#include "view/look_angle.h"

namespace vexa {

inline constexpr size_t kMostFindings = 1000;  // that the page lists; the rest is counted

// UTF-8. `sdb` is a place in the document; `page` that of the names in the database. From a `place` on the
// ground the orbit and the satellites say where to look. The same database gives the same page.
std::string ReportPage(const Document& document, size_t sdb, const CodePage& page,
                       const std::optional<Place>& place = {});

}  // namespace vexa
