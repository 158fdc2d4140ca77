#include "view/sort_form.h"

#include <algorithm>

namespace vexa {

namespace {

template <class Key>
SortKeys<Key> KeysOf(const SortChoice& choice) {
  SortKeys<Key> keys{{}, choice.descending};
  for (const int place : choice.keys) {
    if (place < 1 || place > static_cast<int>(kMaximumSortKeys)) continue;
    const auto key = static_cast<Key>(place - 1);
    if (std::find(keys.keys.begin(), keys.keys.end(), key) == keys.keys.end()) keys.keys.push_back(key);
  }
  return keys;
}

}  // namespace

SortOptions SortOptionsOf(const SortForm& form) {
  return {KeysOf<SatelliteKey>(form.satellites), KeysOf<CarrierKey>(form.carriers),
          KeysOf<ServiceKey>(form.services)};
}

bool CanSort(const SortForm& form) {
  const SortOptions options = SortOptionsOf(form);
  const bool keys =
      !options.satellites.keys.empty() || !options.carriers.keys.empty() || !options.services.keys.empty();
  return keys && !form.sdbs.empty();
}

}  // namespace vexa
