// Databases as JSON documents and back. Field names are those of core/fields.h; every bit of every record has
// one.
//
//   {"schema": "vexa-database/1", "name", "lnbs": [..], "satellites": [{.., "carriers": [{.., "place",
//   "services":
//    [{"number", "order", ..}]}]}], "favourites": [8 x {"tv_name", "radio_name", .., "tv_count", "tv":
//    [numbers], "radio_count", "radio": [numbers]}]}
//   {"schema": "vexa-databases/1", "compressed", "ubi_compressed", "sdbs": [{"name", "compressed", "lnbs",
//   ..}],
//    "ubis": [..]}
//
// Numbers are one-based: `number` of a service in the SDB's own order, `order` in the running order, `place`
// of a carrier in the SDB's array. Flags are 0 or 1. Texts are UTF-8; in the database they stand in `page`.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/database.h"
#include "import/sdb_builder.h"
#include "platform/code_page.h"

namespace vexa {

// The document of one SDB, UTF-8 with a line end behind it. `page` is that of the names in the database.
std::string JsonOfSdb(const OpenSdb& sdb, const CodePage& page);
// The same of all SDBs and user box records, with the flags of the file.
std::string JsonOfDocument(const Document& document, const CodePage& page);

// What is wrong in the beginning of a document, as ReadJsonDocument would say it: that it is no JSON, or no
// object.
std::optional<Misfit> JudgeJsonStart(std::string_view start);

// Fills an empty document. What does not fit is answered, with its line where the text is no JSON, else with
// its path (RFC 6901); `document` then means nothing. `schema` and `place` may be missing, counts and indices
// that follow from places too.
std::optional<Misfit> ReadJsonDocument(std::string_view text, const CodePage& page, Document& document);

}  // namespace vexa
