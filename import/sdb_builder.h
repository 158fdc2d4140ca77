// Builds an SDB out of records whose places are given by numbers, as documents and tables give them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "core/database.h"

namespace vexa {

// Why a document or table was refused: where ("line 7", "/satellites/2/name") and what is wrong there.
struct Misfit {
  std::string where, what;
};

// Numbers that must be 1 to n, each once.
class Numbering {
 public:
  explicit Numbering(const char* name) : name_(name) {}
  // The number of the next record, and where it stands in the document.
  void Add(int64_t number, std::string where);
  // The places in ascending order of their numbers: [k] is the one that was added with the number k + 1.
  // Throws Misfit with the first place whose number is beyond their count or was there before.
  std::vector<size_t> Order() const;

 private:
  const char* name_;
  std::vector<int64_t> numbers_;
  std::vector<std::string> where_;
};

// Records are added in the order of their lists; links and counts are set. nullptr: the table is full.
Satellite* AppendSatellite(StaticDatabase& database, const SatelliteRecord& record);
Carrier* AppendCarrier(StaticDatabase& database, Satellite& satellite, const CarrierRecord& record);
// `database.service_order` is left alone.
Service* AppendService(StaticDatabase& database, Carrier& carrier, const ServiceRecord& record);

// Puts the carriers of the SDB's array into the order that their services have in it: a carrier stands by the
// first of its services, one without services behind the carrier above it on its satellite; the first ones of
// a satellite before its next carrier with services; those of a satellite without services behind the carrier
// above them in the table.
void PlaceCarriersByServices(StaticDatabase& database);

}  // namespace vexa
