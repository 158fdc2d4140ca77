// Databases of random content that keep all links, and a comparison by value.
#pragma once

#include <memory>
#include <random>
#include <string>

#include "core/database.h"

namespace vexa {

// Counts are exact; carriers fall on random satellites, services on random carriers.
struct RandomShape {
  size_t lnbs = 4, satellites = 6, carriers = 40, services = 120;
  size_t favourites = 12;   // up to so many entries a list, when there are services
  bool any_bits = false;    // false: values that the dialogs would store; true: every bit random
  bool long_names = false;  // some names fill their field without a NUL
};

std::unique_ptr<StaticDatabase> MakeRandomDatabase(std::mt19937& random, const RandomShape& shape = {});
// A shape with few of everything, sometimes nothing.
RandomShape MakeRandomShape(std::mt19937& random);
// One to four SDBs and up to three UBIs, flags random.
Document MakeRandomDocument(std::mt19937& random);

// Appends a carrier to the satellite, or a service to the carrier, with all links; the record is the
// default's.
Carrier* AddTestCarrier(StaticDatabase& database, size_t satellite);
Service* AddTestService(StaticDatabase& database, Carrier* carrier);
Satellite* AddTestSatellite(StaticDatabase& database, const std::string& name);

// One SDB of satellites "S1" 10.0 East and "S2" 13.0 East, two carriers each ("S1C1" ..), three services each
// ("S1C1P1" ..), and a UBI "Box".
Document SmallDocument();

template <class T>
std::vector<std::string> NamesOf(const std::vector<T*>& records) {
  std::vector<std::string> names;
  for (const T* record : records) names.emplace_back(NameOf(record->record.name));
  return names;
}

// What differs first in content, empty when nothing does. What a save sets (first service, carrier and LNB
// indices, counts of groups) is compared only when `exact`, and so are LNBs out of use, the order of the
// services' array and the compression.
std::string DatabaseDifference(const StaticDatabase& one, const StaticDatabase& other, bool exact = false);

}  // namespace vexa
