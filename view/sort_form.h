// The dialog "Sort SDB information" without its window.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "core/sort.h"

namespace vexa {

inline constexpr std::array kSatelliteKeyNames = {"Name", "Flag", "Angle"};
inline constexpr std::array kCarrierKeyNames = {"Name", "Frequency", "Symbol Rate"};
inline constexpr std::array kServiceKeyNames = {"Name", "Status", "Type"};

// One kind of record: a place in each of its lists of keys, 0 being none, i a name above.
struct SortChoice {
  std::array<int, kMaximumSortKeys> keys{1, 0, 0};
  bool descending = false;
};

struct SortForm {
  SortChoice satellites, carriers, services;
  std::vector<size_t> sdbs;  // places in the document
  bool separate_file = false;
};

// Keys in order of priority; what is none or stands before already is left out.
SortOptions SortOptionsOf(const SortForm& form);
// Something is chosen to sort, and by something.
bool CanSort(const SortForm& form);

}  // namespace vexa
