// A filter over the list of a database window: texts that stand in any column, and fields that are compared.
//
//   filter     terms between blanks, all of which must hold
//   term       [!] ( text | "text" | flag | field op value ); ! turns it round
//   op         = != > < >= <=
//   value      a number (decimal, or hexadecimal behind 0x; an angle in degrees), a text, or "a text"
//   flag       fta scrambled tv radio user factory east west
//   field      of satellites  sat angle side lnb pos carriers
//              of carriers    carrier freq sr pol fec services
//              of services    sid type vpid apid pcr
//              of all         name
//
// What has another record above it has that one's fields too: a service the frequency of its carrier. Texts
// are looked for anywhere, the words of codes from their start ("pol=v"), both without regard to case.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "view/view_model.h"

namespace vexa {

enum class FilterOperator : uint8_t { kEqual, kUnequal, kAbove, kBelow, kAtLeast, kAtMost };

struct FilterTerm {
  bool negated = false;
  int field = -1;  // place in the table of fields and flags; -1: a text in any column
  FilterOperator comparison = FilterOperator::kEqual;
  int64_t number = 0;
  std::string text;  // in small letters, UTF-8
};

struct ListFilter {
  std::vector<FilterTerm> terms;  // empty: all rows
  std::string error;              // why the text is no filter; `terms` is empty then
};

// Of UTF-8 text; a blank one is no filter.
ListFilter ParseFilter(std::string_view text);

// Leaves the rows of which all terms hold. A field that the list's records do not have is answered with a
// text, and all rows stay.
std::string FilterRows(const Document& document, ListModel& list, const ListFilter& filter, bool hexadecimal);

// What stands behind the field: what is wrong, else how many of `all` rows are shown; nothing without a
// filter.
std::string FilterStatus(const ListFilter& filter, const std::string& error, size_t shown, size_t all);

}  // namespace vexa
