// One SDB as one CSV table and back: a row a record, named columns, the columns of other kinds empty. The
// column "record" names the kind: lnb, satellite, carrier, service, favourite, favourite_tv, favourite_radio.
// Numbers that place a record ("satellite", "carrier", "service", "order", "group", "entry") are one-based;
// field columns are those of core/fields.h. The SDB's name, its compression and the places of carriers in its
// array are not in the table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/database.h"
#include "import/sdb_builder.h"
#include "platform/code_page.h"

namespace vexa {

// The table of one SDB, UTF-8 with CR LF behind each row. `page` is that of the names in the database.
std::string CsvOfSdb(const OpenSdb& sdb, const CodePage& page);

inline constexpr uint64_t kLargestCsv = uint64_t{128} << 20;  // bytes; the most that an SDB gives takes half

// What is wrong in the first line of a table of which `start` is the beginning, as ReadCsvDocument would say
// it.
std::optional<Misfit> JudgeCsvStart(std::string_view start);

// Fills an empty document with one SDB, "SDB1". What does not fit is answered with its line; `document` then
// means nothing. Rows may stand in any order; those of one carrier's services stand in its order.
std::optional<Misfit> ReadCsvDocument(std::string_view text, const CodePage& page, Document& document);

}  // namespace vexa
