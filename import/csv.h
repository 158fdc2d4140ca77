// Tables of text cells (RFC 4180), as programs and spreadsheets write them: cells parted by commas,
// semicolons or tabs, whichever the first line has; quoted where they must be; lines ending with CR LF or LF;
// perhaps a byte-order mark.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vexa {

struct CsvRow {
  size_t line = 0;  // on which the row begins, from 1
  std::vector<std::string> cells;
};

// Blank lines are no rows. Throws Misfit (sdb_builder.h) with the line where a quoted cell has no end, or has
// text behind it.
std::vector<CsvRow> ParseCsv(std::string_view text);

// One row with its CR LF, its cells parted by commas.
void AppendCsvRow(std::string& text, const std::vector<std::string>& cells);

}  // namespace vexa
